#include "MapTransitionAnimator.h"

#include "look/Look.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {
const std::shared_ptr<const MapGlide>& noGlide()
{
    static const auto none = std::make_shared<const MapGlide>();
    return none;
}
} // namespace

MapTransitionAnimator::MapTransitionAnimator(QObject* parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
    , m_glide(noGlide())
{
    m_timer->setTimerType(Qt::PreciseTimer);
    m_timer->setInterval(1000 / 60);
    connect(m_timer, &QTimer::timeout, this, &MapTransitionAnimator::tick);
    auto monotonic = std::make_shared<QElapsedTimer>();
    monotonic->start();
    m_clock = [monotonic] { return double(monotonic->nsecsElapsed()) / 1e9; };
}

bool MapTransitionAnimator::animateTransition(const NodeLayouts& oldLayouts,
                                              const std::unordered_map<NodeID, QString>& oldTexts,
                                              const NodeLayouts& newLayouts, double duration, const QRectF& region)
{
    const auto seen = [&region](const NodeLayout& l) { return region.isNull() || region.intersects(l.frame()); };
    auto glide = std::make_shared<MapGlide>();
    auto& offsets = glide->initialOffsets;
    auto& ghosts = glide->ghosts;
    for (const auto& [id, old] : oldLayouts) {
        const auto now = newLayouts.find(id);
        if (now != newLayouts.end()) {
            const QPointF d = old.origin - now->second.origin;
            if ((std::abs(d.x()) > 0.5 || std::abs(d.y()) > 0.5) && (seen(old) || seen(now->second))) {
                offsets.emplace(id, d);
                glide->largestOffset = std::max({glide->largestOffset, std::abs(d.x()), std::abs(d.y())});
            }
        } else if (const auto text = oldTexts.find(id); text != oldTexts.end() && seen(old)) {
            ghosts.emplace(id, GhostNode{old, text->second});
        }
    }
    auto& fresh = glide->fadeIn;
    for (const auto& entry : newLayouts)
        if (seen(entry.second) && !oldLayouts.count(entry.first))
            fresh.insert(entry.first);
    if (offsets.empty() && ghosts.empty() && fresh.empty())
        return false;

    // An interrupted transition starts over from the final layouts: nodes may jump by what was left.
    m_timer->stop();
    m_glide = std::move(glide);
    m_progress = 0;
    m_duration = duration;
    m_start = m_clock();
    m_timer->start();
    emit frame();
    return true;
}

bool MapTransitionAnimator::isRunning() const
{
    return m_timer->isActive();
}

std::unordered_map<NodeID, QPointF> MapTransitionAnimator::nodeAnimOffsets() const
{
    std::unordered_map<NodeID, QPointF> offsets;
    for (const auto& [id, initial] : m_glide->initialOffsets)
        offsets.emplace(id, initial * (1 - m_progress));
    return offsets;
}

void MapTransitionAnimator::apply(MapDrawState& state) const
{
    state.glide = m_glide == noGlide() ? nullptr : m_glide;
    state.animationProgress = m_progress;
}

void MapTransitionAnimator::setClock(std::function<double()> clock)
{
    if (clock)
        m_clock = std::move(clock);
}

void MapTransitionAnimator::tick()
{
    if (!m_timer->isActive())
        return;
    const double t = m_duration > 0 ? std::clamp((m_clock() - m_start) / m_duration, 0.0, 1.0) : 1.0;
    if (t >= 1) {
        finish();
        return;
    }
    const double e = Look::easeOutCubic(t);
    m_progress = e;
    emit frame();
}

void MapTransitionAnimator::finish()
{
    m_timer->stop();
    m_glide = noGlide();
    m_progress = 1.0;
    emit frame();
}
