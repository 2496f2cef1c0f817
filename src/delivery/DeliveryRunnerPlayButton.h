#pragma once

#include <QAbstractButton>

class DeliveryTimer;

// Play or pause at the head of the runner's track.
class DeliveryRunnerPlayButton : public QAbstractButton {
    Q_OBJECT
public:
    static constexpr int symbolSize = 32;

    explicit DeliveryRunnerPlayButton(DeliveryTimer* timer, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {symbolSize, symbolSize}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();

    DeliveryTimer* m_timer;
};
