#pragma once

#include <QObject>
#include <QPointF>

#include <functional>

class QTimer;

// Glides the pan offset to a target on its own 120 Hz timer, with the cells' duration and easing.
// A new glide replaces a running one; a user scroll meanwhile is overwritten by the next tick.
class ScrollAnimator : public QObject {
    Q_OBJECT
public:
    explicit ScrollAnimator(QObject* parent = nullptr);

    void animate(QPointF from, QPointF to, std::function<void(QPointF)> onUpdate);
    bool isRunning() const;

    void setClock(std::function<double()> clock);
    void tick();

private:
    QTimer* m_timer;
    std::function<double()> m_clock;
    QPointF m_from;
    QPointF m_to;
    double m_startTime = 0;
    std::function<void(QPointF)> m_onUpdate;
};
