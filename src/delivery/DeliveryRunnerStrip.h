#pragma once

#include <QPointer>
#include <QWidget>

#include <optional>

class DeliveryTimer;

// The ruler's progress line and red dot. A widget of its own over the ruler's bottom edge, so
// that the dot may hang over the page below instead of being cut in half by the ruler's row.
// It follows the ruler's geometry and lets every click through to whatever lies beneath.
class DeliveryRunnerStrip : public QWidget {
    Q_OBJECT
public:
    static constexpr int stripHeight = 12;
    static constexpr int overhang = 4;
    // Top of the strip below the ruler row's top edge.
    static constexpr int offsetY = 34;

    // `parent` must be an ancestor of `ruler`.
    DeliveryRunnerStrip(DeliveryTimer* timer, QWidget* ruler, QWidget* parent);

    // Centre of the dot in the strip's own coordinates.
    QPointF dotCentre() const;
    // Repaints the stretch the dot moved over since it was last drawn, or the whole strip while
    // it beats in overrun: what a frame asks.
    void moveDot();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();

    void updateAll();

    DeliveryTimer* m_timer;
    QPointer<QWidget> m_ruler;
    std::optional<double> m_shownX; // where the dot was last asked to be drawn
};
