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

void ColumnAnimator::replaceDisplay(ColumnFrames frames)
{
    m_displayFrames = std::move(frames);
    ++m_displayGeneration;
}

void ColumnAnimator::animate(const ColumnFrames& frames)
{
    if (m_displayFrames.empty()) {
        m_glides.clear();
        m_awaitsFirstTick = false;
        replaceDisplay(frames);
        emit displayFramesChanged();
        return;
    }
    // The pairs are found once here, so that a tick only moves numbers.
    m_glides.clear();
    m_glides.reserve(frames.size());
    for (const auto& [id, target] : frames)
        if (const auto from = m_displayFrames.find(id); from != m_displayFrames.end())
            m_glides.push_back(Glide{id, from->second, target});
    m_targetFrames = frames;
    m_awaitsFirstTick = true;
    m_startTime = m_clock();
    if (!m_timer->isActive())
        m_timer->start();
}

void ColumnAnimator::stop(const ColumnFrames& frames)
{
    m_timer->stop();
    m_glides.clear();
    m_awaitsFirstTick = false;
    m_targetFrames.clear();
    replaceDisplay(frames);
    emit displayFramesChanged();
}

void ColumnAnimator::tick()
{
    const double t = std::clamp((m_clock() - m_startTime) / animationDuration, 0.0, 1.0);
    const double e = Look::easeOutCubic(t);
    if (m_awaitsFirstTick) {
        // The target's nodes are drawn from now on: new ones at their place, gone ones not at all.
        m_awaitsFirstTick = false;
        replaceDisplay(std::move(m_targetFrames));
        m_targetFrames = {};
        for (Glide& glide : m_glides)
            glide.shown = &m_displayFrames.at(glide.id);
    }
    for (const Glide& glide : m_glides) {
        const ColumnNodeFrame& a = glide.from;
        const ColumnNodeFrame& target = glide.target;
        ColumnNodeFrame& frame = *glide.shown;
        frame.origin = QPointF(mix(a.origin.x(), target.origin.x(), e), mix(a.origin.y(), target.origin.y(), e));
        frame.size = QSizeF(mix(a.size.width(), target.size.width(), e), mix(a.size.height(), target.size.height(), e));
        frame.subtreeYRange = ColumnYRange{mix(a.subtreeYRange.lower, target.subtreeYRange.lower, e),
                                           mix(a.subtreeYRange.upper, target.subtreeYRange.upper, e)};
    }
    if (t >= 1)
        m_timer->stop();
    emit displayFramesChanged();
}
