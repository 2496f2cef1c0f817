#pragma once

#include "IdleFade.h"
#include "MinimapCache.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QTimer>
#include <QWidget>

#include <functional>

class QPainter;
struct MapLayoutState;
struct MapPalette;

// Where the minimap's parts stand, in its own points, for a tree's content rectangle.
struct MinimapGeometry {
    static constexpr double maxWidth = 180;
    static constexpr double maxHeight = 180;
    static constexpr double padding = 8;
    static constexpr double margin = 12; // from the map's right and bottom edges

    QRectF contentBounds;
    double mapScale = 1.0;
    QRectF treeFrame;
    QSizeF size;

    static MinimapGeometry forContent(const QRectF& contentBounds);

    // The part of the canvas in view, in minimap points, clipped to the minimap; empty when
    // nothing of it falls inside.
    QRectF viewportRect(QSizeF viewportSize, QPointF panOffset, double scale) const;
    // The canvas point under a minimap point.
    QPointF canvasPoint(QPointF minimapPoint) const;
};

namespace MinimapDrawing {
// The panel, the tree's image stretched into its frame, and the viewport rectangle on top.
void draw(QPainter& painter, const MinimapGeometry& geometry, const QImage* image, const QRectF& viewportRect,
          const MapPalette& palette);
} // namespace MinimapDrawing

// The overview in the map's lower right corner: shown for five seconds after the viewport moves,
// its image rendered in the background whenever the tree's key changes, the viewport drawn live
// on it. A click or a drag in it centres the map there.
class MinimapOverlay : public QWidget {
    Q_OBJECT
public:
    static constexpr double showSeconds = 5.0;

    explicit MinimapOverlay(QWidget* parent);

    // The map's tables, read at each change of the tree; they outlive the overlay.
    void setLayoutState(const MapLayoutState* tables);
    // After a new layout: the key is evaluated and a render asked for when it changed, a moment
    // later, so that a burst of keys costs the main thread one walk of the tree, after its frames.
    void treeChanged();
    // Does now what a change left to do.
    void settle();
    // The live rectangle.
    void setView(QSizeF viewportSize, QPointF panOffset, double scale);
    // Keeps the overlay in the corner of a map of this size.
    void place(QSize mapSize);

    void showMinimap();

    std::function<void(QPointF canvasPoint)> onNavigate;

    const MinimapGeometry& minimapGeometry() const { return m_geometry; }
    QRectF viewportRect() const;
    MinimapCacheKey currentKey() const;
    MinimapCache& cache() { return m_cache; }
    IdleFade& fade() { return m_fade; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void navigate(QPointF point);
    void updateMouseTransparency();
    void renderIfChanged();

    const MapLayoutState* m_tables = nullptr;
    MinimapGeometry m_geometry;
    QSizeF m_viewportSize;
    QPointF m_panOffset;
    double m_scale = 1.0;
    QSize m_mapSize;
    MinimapCache m_cache;
    IdleFade m_fade;
    QTimer* m_settleTimer;
};
