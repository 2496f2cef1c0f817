#include "DeliveryCues.h"

DeliveryCues::DeliveryCues(DeliveryTimer* timer, QObject* parent)
    : QObject(parent)
    , m_timer(timer)
    , m_lastSeen(timer->remainingSeconds())
{
    connect(m_timer, &DeliveryTimer::remainingSecondsChanged, this, &DeliveryCues::onRemainingChanged);
    // Each start begins from what is left then, so marks already behind stay silent.
    connect(m_timer, &DeliveryTimer::stateChanged, this,
            [this](TimerState, TimerState) { m_lastSeen = m_timer->remainingSeconds(); });
}

bool DeliveryCues::setEnabled(bool on)
{
    if (m_enabled == on)
        return false;
    m_enabled = on;
    m_lastSeen = m_timer->remainingSeconds();
    return true;
}

void DeliveryCues::setMinutes(std::vector<int> minutes)
{
    m_minutes = std::move(minutes);
}

void DeliveryCues::onRemainingChanged(double seconds)
{
    const double before = m_lastSeen;
    m_lastSeen = seconds;
    if (!m_enabled || m_timer->state() != TimerState::running)
        return;
    for (int m : m_minutes) {
        if (before > m * 60.0 && seconds <= m * 60.0)
            emit cue(m);
    }
}
