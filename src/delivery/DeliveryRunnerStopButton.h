#pragma once

#include <QAbstractButton>

class DeliveryTimer;
class QVariantAnimation;

// Stop / Reset under the play button, shown only while paused; it fades in and out.
class DeliveryRunnerStopButton : public QAbstractButton {
    Q_OBJECT
public:
    static constexpr int symbolSize = 32;

    explicit DeliveryRunnerStopButton(DeliveryTimer* timer, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {symbolSize, symbolSize}; }
    double opacity() const { return m_opacity; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void onStateChanged();

    DeliveryTimer* m_timer;
    QVariantAnimation* m_fade = nullptr;
    double m_opacity = 0;
};
