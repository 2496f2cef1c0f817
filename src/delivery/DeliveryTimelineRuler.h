#pragma once

#include "DeliveryCanvasState.h"
#include "DeliveryTimer.h"
#include "PulseClock.h"

#include <QWidget>

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
// Dragging over it scrolls the page and never the timer.
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
    // `text` if it fits `room`, else cut back one character at a time, trimmed, with "…";
    // empty if nothing fits.
    static QString shortenedLabel(const QString& text, const QFontMetricsF& metrics, double room);
    // Centre of a line of width `lineWidth` on the device pixel grid, kept inside the ruler.
    static double snap(double x, double lineWidth, double width, double scale);

    bool isFrameTicking() const;
    double currentWidth() const { return m_currentWidth; }

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
    void seekAt(double x);
    void drawSectionBand(QPainter& painter, double w, const std::vector<HeadingStop>& sections);
    void drawTicksAndHeadings(QPainter& painter, double w, const std::vector<HeadingStop>& sections);
    void drawViewportMarker(QPainter& painter, double w);
    void drawLabels(QPainter& painter, double w, const std::vector<HeadingStop>& sections);

    DeliveryTimer* m_timer;
    DeliveryCanvasState* m_state;
    PulseClock m_pulseClock;
    QTimer* m_displayLinkTimer = nullptr;
    double m_currentWidth = 0;
};
