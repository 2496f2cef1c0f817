#pragma once

#include "DeliveryCanvasState.h"
#include "DeliveryTimer.h"
#include "PulseClock.h"

#include <QFont>
#include <QWidget>

#include <array>
#include <optional>
#include <vector>

class QFontMetricsF;
class QTimer;

// A heading's moment on the ruler.
struct HeadingStop {
    double fraction = 0;
    QString text;

    bool operator==(const HeadingStop&) const = default;
};

// The strip across the top of the delivery view: the whole sermon as one line of time, with
// its ticks, its sections and where the reader is; the runner lies over it in its own widget.
// Dragging over it scrolls the page and never the timer. The heading stops are found once per
// layout; a frame repaints only what moved: the section band and the viewport marker.
class DeliveryTimelineRuler : public QWidget {
    Q_OBJECT
public:
    static constexpr int rowHeight = 39;
    static constexpr double layerHeight = 41;

    enum class Drift { calm, behind, farBehind };

    // Seconds of each kind of tick, for a target of `total` seconds on a ruler `width` wide at
    // display scale `scale`. The two end ticks are always drawn and are not listed.
    struct Ticks {
        std::vector<int> tenSeconds;
        std::vector<int> minutes;
        std::vector<int> fiveMinutes;
    };

    DeliveryTimelineRuler(DeliveryTimer* timer, DeliveryCanvasState* state, QWidget* parent = nullptr);

    static std::vector<HeadingStop> headingStops(const DeliveryContentLayout* layout, int depth);
    static Ticks ticks(int total, double width, double scale);
    // Seconds at which minute figures stand, before any give way to heading lines.
    static std::vector<int> minuteFigureSeconds(int total);
    // How far the runner is ahead of the reader, in seconds; negative when the reader is ahead.
    static double driftSeconds(double progress, double viewFraction, double targetSeconds);
    static Drift driftLevel(double driftSeconds);
    // `text` if it fits `room` in `font`, else cut back one character at a time, trimmed, with
    // "…"; empty if nothing fits. Emoji measure as drawn, in the colour face.
    static QString shortenedLabel(const QString& text, const QFont& font, double room);
    // Centre of a line of width `lineWidth` on the device pixel grid, kept inside the ruler.
    static double snap(double x, double lineWidth, double width, double scale);

    // Minute figures in a colour that meets 4.5:1 against the ruler, for the large clock.
    bool setLegibleFigures(bool on);
    bool isFrameTicking() const;
    double currentWidth() const { return m_currentWidth; }
    // One firing of the frame timer; public so that tests and benchmarks can drive it.
    void frameTick();

signals:
    void seekRequested(double fraction);
    // Each frame while the timer runs; the runner strip beats with it.
    void frameTicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    // The band behind the present section, in layer coordinates, and how far the reader drifts.
    struct Band {
        QRectF rect;
        Drift level = Drift::calm;
        bool operator==(const Band&) const = default;
    };
    // What moves while the ruler stands: the band, and the viewport marker's x (0: none).
    struct Moving {
        std::optional<Band> band;
        double markerX = 0;
        bool operator==(const Moving&) const = default;
    };
    // Horizontal reach of a paint, in ruler x; whatever lies wholly outside it is not drawn.
    struct Reach {
        double from = 0;
        double to = 0;
        bool touches(double left, double right) const { return right >= from && left <= to; }
    };

    void seekAt(double x);
    const std::vector<HeadingStop>& stops(int depth);
    // Each section's label as it fits before the next, empty where none does.
    const std::vector<QString>& labels(double w, const QFont& font);
    std::optional<Band> band(double w);
    double markerX(double w) const;
    Moving moving(double w);
    // Repaints what moved since the last look; the whole ruler when `everything`.
    void updateMoving(bool everything = false);
    QRect widgetRect(const QRectF& layerRect) const;
    void drawSectionBand(QPainter& painter, double w, const Reach& reach);
    void drawTicksAndHeadings(QPainter& painter, double w, const Reach& reach);
    void drawViewportMarker(QPainter& painter, double w);
    void drawLabels(QPainter& painter, double w, const Reach& reach);

    DeliveryTimer* m_timer;
    DeliveryCanvasState* m_state;
    PulseClock m_pulseClock;
    QTimer* m_displayLinkTimer = nullptr;
    double m_currentWidth = 0;
    bool m_legibleFigures = false;
    DeliveryCanvasState::LayoutPtr m_stopsLayout;
    std::array<std::vector<HeadingStop>, 3> m_stops; // depths 1 to 3
    Moving m_shown;
    // Labels are measured again only for a new layout, width or font.
    struct Labels {
        DeliveryCanvasState::LayoutPtr layout;
        double w = 0;
        QFont font;
        std::vector<QString> texts;
    } m_labels;
};
