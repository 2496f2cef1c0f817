#include "IdleFade.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {
double easeInOutCubic(double t)
{
    const double c = std::clamp(t, 0.0, 1.0);
    return c < 0.5 ? 4 * c * c * c : 1 - std::pow(-2 * c + 2, 3) / 2;
}
} // namespace

IdleFade::IdleFade(double holdSeconds, bool initiallyVisible, QObject* parent)
    : QObject(parent)
    , m_hold(holdSeconds)
    , m_isVisible(initiallyVisible)
    , m_hideTimer(new QTimer(this))
    , m_frameTimer(new QTimer(this))
{
    auto monotonic = std::make_shared<QElapsedTimer>();
    monotonic->start();
    m_clock = [monotonic] { return double(monotonic->nsecsElapsed()) / 1e9; };
    m_hideTimer->setSingleShot(true);
    connect(m_hideTimer, &QTimer::timeout, this, &IdleFade::check);
    m_frameTimer->setTimerType(Qt::PreciseTimer);
    m_frameTimer->setInterval(1000 / 60);
    connect(m_frameTimer, &QTimer::timeout, this, [this] {
        if (!isFading())
            m_frameTimer->stop();
        emit frame();
    });
}

void IdleFade::setClock(std::function<double()> clock)
{
    if (clock)
        m_clock = std::move(clock);
}

void IdleFade::poke()
{
    m_lastPoke = now();
    setVisible(true);
    m_hideTimer->start(int(std::ceil(m_hold * 1000)));
}

void IdleFade::check()
{
    if (!m_isVisible)
        return;
    const double left = m_hold - (now() - m_lastPoke);
    if (left <= 0) {
        setVisible(false);
        return;
    }
    // Woken early (or by hand): wait for the rest.
    m_hideTimer->start(int(std::ceil(left * 1000)));
}

void IdleFade::stop()
{
    m_hideTimer->stop();
    m_frameTimer->stop();
    if (m_isVisible) {
        m_isVisible = false;
        m_fadeStart = -1e9;
        emit visibleChanged(false);
        emit frame();
    }
}

void IdleFade::setVisible(bool visible)
{
    if (visible == m_isVisible)
        return;
    // A fade turned round midway starts from where it stood.
    m_fadeFrom = opacity();
    m_fadeStart = now();
    m_isVisible = visible;
    if (!visible)
        m_hideTimer->stop();
    m_frameTimer->start();
    emit visibleChanged(visible);
    emit frame();
}

bool IdleFade::isFading() const
{
    return now() - m_fadeStart < fadeDuration;
}

double IdleFade::opacity() const
{
    const double target = m_isVisible ? 1.0 : 0.0;
    const double t = (now() - m_fadeStart) / fadeDuration;
    if (t >= 1)
        return target;
    return m_fadeFrom + (target - m_fadeFrom) * easeInOutCubic(t);
}
