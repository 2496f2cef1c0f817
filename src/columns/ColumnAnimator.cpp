#include "ColumnAnimator.h"

#include "look/Look.h"

#include <QTimer>

#include <algorithm>

namespace {

double mix(double from, double to, double e)
{
    return from + (to - from) * e;
}

} // namespace

ColumnAnimator::ColumnAnimator(QObject* parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
    , m_clock(Look::monotonicSeconds)
{
    // The timer belongs to this object, so no tick can outlive it.
    m_timer->setInterval(tickIntervalMs);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &ColumnAnimator::tick);
}

bool ColumnAnimator::isRunning() const
{
    return m_timer->isActive();
}

void ColumnAnimator::setClock(std::function<double()> clock)
{
    m_clock = std::move(clock);
}

void ColumnAnimator::animate(const ColumnFrames& frames)
{
    if (m_displayFrames.empty()) {
        m_displayFrames = frames;
        emit displayFramesChanged();
        return;
    }
    m_fromFrames = m_displayFrames;
    m_targetFrames = frames;
    m_startTime = m_clock();
    if (!m_timer->isActive())
        m_timer->start();
}

void ColumnAnimator::stop(const ColumnFrames& frames)
{
    m_timer->stop();
    m_displayFrames = frames;
    emit displayFramesChanged();
}

void ColumnAnimator::tick()
{
    const double t = std::clamp((m_clock() - m_startTime) / animationDuration, 0.0, 1.0);
    const double e = Look::easeOutCubic(t);
    ColumnFrames frames;
    frames.reserve(m_targetFrames.size());
    for (const auto& [id, target] : m_targetFrames) {
        const auto from = m_fromFrames.find(id);
        if (from == m_fromFrames.end()) {
            frames.emplace(id, target);
            continue;
        }
        const ColumnNodeFrame& a = from->second;
        ColumnNodeFrame frame = target;
        frame.origin = QPointF(mix(a.origin.x(), target.origin.x(), e), mix(a.origin.y(), target.origin.y(), e));
        frame.size = QSizeF(mix(a.size.width(), target.size.width(), e), mix(a.size.height(), target.size.height(), e));
        frame.subtreeYRange = ColumnYRange{mix(a.subtreeYRange.lower, target.subtreeYRange.lower, e),
                                           mix(a.subtreeYRange.upper, target.subtreeYRange.upper, e)};
        frames.emplace(id, frame);
    }
    m_displayFrames = std::move(frames);
    if (t >= 1)
        m_timer->stop();
    emit displayFramesChanged();
}
