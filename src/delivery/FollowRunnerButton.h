#pragma once

#include <QAbstractButton>

class DeliveryCanvasState;

// The eye at the foot of the runner's track: turns following the runner on and off.
class FollowRunnerButton : public QAbstractButton {
    Q_OBJECT
public:
    static constexpr int diameter = 40;

    explicit FollowRunnerButton(DeliveryCanvasState* state, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {diameter, diameter}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();

    DeliveryCanvasState* m_state;
};
