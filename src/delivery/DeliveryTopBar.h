#pragma once

#include <QWidget>

class DeliveryCanvasState;
class DeliveryTimelineRuler;
class DeliveryTimer;

// The bar across the top of the delivery view: the timeline ruler and a rule under it.
class DeliveryTopBar : public QWidget {
    Q_OBJECT
public:
    static constexpr int barHeight = 40;

    DeliveryTopBar(DeliveryTimer* timer, DeliveryCanvasState* state, QWidget* parent = nullptr);
    DeliveryTimelineRuler* ruler() const { return m_ruler; }

signals:
    void seekRequested(double fraction);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    DeliveryTimelineRuler* m_ruler = nullptr;
};
