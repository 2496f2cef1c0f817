#pragma once

#include "NodeLayout.h"

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

class QTimer;

// Where the map's plane sits in its view: view point = canvas point × scale + panOffset.
// Owns the one animation slot that every pan and zoom motion shares.
class MapViewport : public QObject {
    Q_OBJECT
public:
    static constexpr double minScale = 0.1;
    static constexpr double maxScale = 3.0;
    static constexpr std::array<double, 9> zoomStops{0.1, 0.2, 0.5, 0.8, 1.0, 1.2, 1.5, 2.0, 3.0};
    static constexpr double zoomDuration = 0.2;
    static constexpr double revealDuration = 0.25;

    // The stop a zoom command goes to from `scale`, or nothing at the end of the range.
    static std::optional<double> nextZoomStop(double scale);
    static std::optional<double> previousZoomStop(double scale);

    // Keeps some of the tree in view: at the limits its corner touches the opposite edge.
    static QPointF clampedPan(QPointF offset, QSizeF viewport, const QRectF& contentBounds, double scale);

    explicit MapViewport(QObject* parent = nullptr);

    double scale() const { return m_scale; }
    bool setScale(double scale);
    QPointF panOffset() const { return m_panOffset; }
    bool setPanOffset(QPointF offset);
    QSizeF viewportSize() const { return m_viewportSize; }
    bool setViewportSize(QSizeF size);
    QRectF contentBounds() const { return m_contentBounds; }
    bool setContentBounds(const QRectF& bounds);

    QPointF clampedPan(QPointF offset) const;
    QPointF canvasPoint(QPointF viewPoint) const;

    // Raw wheel or touchpad deltas in points, independent of zoom.
    void onScroll(double dx, double dy);
    // A pinch by `delta` as a fraction, about `anchor` in view points.
    void onMagnify(double delta, QPointF anchor);

    void zoomIn();
    void zoomOut();
    void reset();
    void animateZoom(double target);
    void animatePan(QPointF target, double duration);
    // What an overlay covers at the top of the view (the find bar), in view points; empty for none.
    QRectF topCover() const { return m_topCover; }
    void setTopCover(const QRectF& cover);
    // Brings a node back into view if it has left it; nothing for a node in view. A node across
    // from the top cover is in view only below it. With `keepColumn`, a node already partly in
    // view across keeps its place across: after a click, the map doesn't jump sideways under
    // the pointer.
    void reveal(const NodeLayout& layout, bool keepColumn = false);
    void centerOn(QPointF canvasPoint);

    bool isAnimating() const { return bool(m_update); }
    // The scale and pan the running animation ends at; the present ones when none runs.
    double endScale() const { return isAnimating() ? m_endScale : m_scale; }
    QPointF endPanOffset() const { return isAnimating() ? m_endPan : m_panOffset; }
    void stopAnimation();

    // Seconds from a monotonic clock; replaceable so that animations can be stepped in tests.
    void setClock(std::function<double()> clock);
    // One animation frame; the timer calls it at 60 Hz.
    void tick();

    // Asked to show the minimap after scrolls, pinches and jumps.
    std::function<void()> onShowMinimap;

signals:
    void scaleChanged(double scale);
    void panOffsetChanged(QPointF offset);

private:
    void animate(double duration, std::function<void(double)> update);
    void showMinimap();

    double m_scale = 1.0;
    QPointF m_panOffset;
    QSizeF m_viewportSize;
    QRectF m_contentBounds;
    QRectF m_topCover;

    QTimer* m_timer;
    std::function<double()> m_clock;
    double m_animStart = 0;
    double m_animDuration = 0;
    std::function<void(double)> m_update;
    double m_endScale = 1.0;
    QPointF m_endPan;
    uint64_t m_generation = 0;
};
