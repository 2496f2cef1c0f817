#include "ScrollAnimator.h"

#include "ColumnAnimator.h"
#include "look/Look.h"

#include <QTimer>

#include <algorithm>

ScrollAnimator::ScrollAnimator(QObject* parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
    , m_clock(Look::monotonicSeconds)
{
    m_timer->setInterval(ColumnAnimator::tickIntervalMs);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &ScrollAnimator::tick);
}

bool ScrollAnimator::isRunning() const
{
    return m_timer->isActive();
}

void ScrollAnimator::setClock(std::function<double()> clock)
{
    m_clock = std::move(clock);
}

void ScrollAnimator::animate(QPointF from, QPointF to, std::function<void(QPointF)> onUpdate)
{
    m_from = from;
    m_to = to;
    m_onUpdate = std::move(onUpdate);
    m_startTime = m_clock();
    m_timer->start(); // restarts a running one
}

void ScrollAnimator::tick()
{
    const double t = std::clamp((m_clock() - m_startTime) / ColumnAnimator::animationDuration, 0.0, 1.0);
    const double e = Look::easeOutCubic(t);
    // Taken before the call, which may start a new glide.
    auto onUpdate = m_onUpdate;
    if (t >= 1) {
        m_timer->stop();
        m_onUpdate = nullptr;
    }
    if (onUpdate)
        onUpdate(m_from + (m_to - m_from) * e);
}
