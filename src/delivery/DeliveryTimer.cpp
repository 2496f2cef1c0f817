#include "DeliveryTimer.h"

#include <QTimer>

#include <cmath>
#include <cstdlib>

DeliveryTimer::DeliveryTimer(int minutes, std::shared_ptr<DeliveryClock> clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock ? std::move(clock) : DeliveryClock::system())
    , m_remainingSeconds(minutes * 60.0)
    , m_targetSeconds(minutes * 60.0)
    , m_plannedTargetSeconds(minutes * 60.0)
{
}

DeliveryTimer::~DeliveryTimer() = default;

bool DeliveryTimer::isTicking() const
{
    return m_ticker && m_ticker->isActive();
}

void DeliveryTimer::start()
{
    const double now = m_clock->now();
    if (!m_firstStartedAt)
        setFirstStartedAt(now);
    switch (m_state) {
    case TimerState::idle:
        m_startedAt = now;
        m_elapsedBeforePause = 0;
        setState(TimerState::running);
        startTicker();
        break;
    case TimerState::paused:
        m_startedAt = now;
        setState(TimerState::running);
        startTicker();
        break;
    case TimerState::running:
        break;
    }
}

void DeliveryTimer::pause()
{
    if (m_state != TimerState::running)
        return;
    const double now = m_clock->now();
    m_elapsedBeforePause += now - m_startedAt.value_or(now);
    m_startedAt.reset();
    setState(TimerState::paused);
    stopTicker();
    // remainingSeconds keeps the value of the last tick on purpose.
}

void DeliveryTimer::stop()
{
    stopTicker();
    setState(TimerState::idle);
    m_startedAt.reset();
    m_elapsedBeforePause = 0;
    setTargetSeconds(m_plannedTargetSeconds);
    setRemainingSeconds(m_plannedTargetSeconds);
    setFirstStartedAt(std::nullopt);
}

void DeliveryTimer::setTargetMinutes(int minutes)
{
    const double seconds = minutes * 60.0;
    setTargetSeconds(seconds);
    setPlannedTargetSeconds(seconds);
    if (m_state == TimerState::idle)
        setRemainingSeconds(seconds);
}

void DeliveryTimer::addMinutes(int minutes)
{
    setTargetSeconds(m_targetSeconds + minutes * 60.0);
    switch (m_state) {
    case TimerState::idle:
        setRemainingSeconds(m_targetSeconds);
        break;
    case TimerState::running: {
        const double now = m_clock->now();
        setRemainingSeconds(m_targetSeconds - (m_elapsedBeforePause + (now - m_startedAt.value_or(now))));
        break;
    }
    case TimerState::paused:
        setRemainingSeconds(m_targetSeconds - m_elapsedBeforePause);
        break;
    }
}

double DeliveryTimer::progress() const
{
    if (!(m_targetSeconds > 0))
        return 0;
    const double now = m_clock->now();
    switch (m_state) {
    case TimerState::idle:
        return 0;
    case TimerState::running:
        return (m_elapsedBeforePause + now - m_startedAt.value_or(now)) / m_targetSeconds;
    case TimerState::paused:
        return (m_elapsedBeforePause + (m_startedAt ? now - *m_startedAt : 0.0)) / m_targetSeconds;
    }
    return 0;
}

QString DeliveryTimer::remainingText() const
{
    const long long s = static_cast<long long>(m_remainingSeconds); // truncates toward zero
    const long long a = std::llabs(s);
    const QString text = QString::asprintf("%lld:%02lld", a / 60, a % 60);
    return s < 0 ? QString(QChar(0x2212)) + text : text;
}

QString DeliveryTimer::totalElapsedText() const
{
    const double seconds = m_firstStartedAt ? m_clock->now() - *m_firstStartedAt : 0.0;
    long long t = static_cast<long long>(seconds);
    if (t < 0)
        t = 0;
    if (t < 3600)
        return QString::asprintf("%lld:%02lld", t / 60, t % 60);
    return QString::asprintf("%lld:%02lld:%02lld", t / 3600, (t / 60) % 60, t % 60);
}

void DeliveryTimer::tick()
{
    if (m_state != TimerState::running || !m_startedAt)
        return;
    setRemainingSeconds(m_targetSeconds - (m_elapsedBeforePause + (m_clock->now() - *m_startedAt)));
}

void DeliveryTimer::startTicker()
{
    // A fresh ticker each time, so the first firing comes a full second after the (re)start.
    delete m_ticker;
    m_ticker = new QTimer(this);
    m_ticker->setTimerType(Qt::PreciseTimer);
    m_ticker->setInterval(1000);
    connect(m_ticker, &QTimer::timeout, this, &DeliveryTimer::tick);
    m_ticker->start();
}

void DeliveryTimer::stopTicker()
{
    if (m_ticker)
        m_ticker->stop();
}

void DeliveryTimer::setState(TimerState state)
{
    if (m_state == state)
        return;
    const TimerState previous = m_state;
    m_state = state;
    emit stateChanged(state, previous);
    emit changed();
}

void DeliveryTimer::setRemainingSeconds(double seconds)
{
    if (m_remainingSeconds == seconds)
        return;
    m_remainingSeconds = seconds;
    emit remainingSecondsChanged(seconds);
    emit changed();
}

void DeliveryTimer::setTargetSeconds(double seconds)
{
    if (m_targetSeconds == seconds)
        return;
    m_targetSeconds = seconds;
    emit targetSecondsChanged(seconds);
    emit changed();
}

void DeliveryTimer::setPlannedTargetSeconds(double seconds)
{
    if (m_plannedTargetSeconds == seconds)
        return;
    m_plannedTargetSeconds = seconds;
    emit plannedTargetSecondsChanged(seconds);
    emit changed();
}

void DeliveryTimer::setFirstStartedAt(std::optional<double> at)
{
    if (m_firstStartedAt == at)
        return;
    m_firstStartedAt = at;
    emit firstStartedAtChanged();
    emit changed();
}
