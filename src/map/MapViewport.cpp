#include "MapViewport.h"

#include "look/Look.h"

#include "core/PerformanceLog.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cmath>

std::optional<double> MapViewport::nextZoomStop(double scale)
{
    for (double stop : zoomStops)
        if (scale + 0.001 < stop)
            return stop;
    return std::nullopt;
}

std::optional<double> MapViewport::previousZoomStop(double scale)
{
    for (auto it = zoomStops.rbegin(); it != zoomStops.rend(); ++it)
        if (*it < scale - 0.001)
            return *it;
    return std::nullopt;
}

QPointF MapViewport::clampedPan(QPointF offset, QSizeF viewport, const QRectF& b, double scale)
{
    if (viewport.width() <= 0 || viewport.height() <= 0 || b.width() <= 0)
        return offset;
    const double x = std::max(std::min(offset.x(), viewport.width() - b.left() * scale), -b.right() * scale);
    const double y = std::max(std::min(offset.y(), viewport.height() - b.top() * scale), -b.bottom() * scale);
    return {x, y};
}

MapViewport::MapViewport(QObject* parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setTimerType(Qt::PreciseTimer);
    m_timer->setInterval(1000 / 60);
    connect(m_timer, &QTimer::timeout, this, &MapViewport::tick);
    auto monotonic = std::make_shared<QElapsedTimer>();
    monotonic->start();
    m_clock = [monotonic] { return double(monotonic->nsecsElapsed()) / 1e9; };
}

bool MapViewport::setScale(double scale)
{
    if (scale == m_scale || !(scale > 0))
        return false;
    m_scale = scale;
    emit scaleChanged(m_scale);
    return true;
}

bool MapViewport::setPanOffset(QPointF offset)
{
    if (offset.x() == m_panOffset.x() && offset.y() == m_panOffset.y())
        return false;
    m_panOffset = offset;
    emit panOffsetChanged(m_panOffset);
    return true;
}

bool MapViewport::setViewportSize(QSizeF size)
{
    if (size == m_viewportSize)
        return false;
    m_viewportSize = size;
    return true;
}

bool MapViewport::setContentBounds(const QRectF& bounds)
{
    if (bounds == m_contentBounds)
        return false;
    m_contentBounds = bounds;
    return true;
}

QPointF MapViewport::clampedPan(QPointF offset) const
{
    return clampedPan(offset, m_viewportSize, m_contentBounds, m_scale);
}

QPointF MapViewport::canvasPoint(QPointF p) const
{
    return (p - m_panOffset) / m_scale;
}

void MapViewport::showMinimap()
{
    if (onShowMinimap)
        onShowMinimap();
}

void MapViewport::onScroll(double dx, double dy)
{
    performanceLog::signpostEvent("Scroll", [&] { return QStringLiteral("dx=%1 dy=%2").arg(int(dx)).arg(int(dy)); });
    setPanOffset(clampedPan(m_panOffset + QPointF(dx, dy)));
    showMinimap();
}

void MapViewport::onMagnify(double delta, QPointF anchor)
{
    performanceLog::signpostEvent("Magnify", [&] { return QStringLiteral("mag=%1").arg(delta, 0, 'f', 3); });
    const double newScale = std::clamp((1 + delta) * m_scale, minScale, maxScale);
    const QPointF canvas = canvasPoint(anchor);
    setScale(newScale);
    setPanOffset(clampedPan(anchor - newScale * canvas));
    showMinimap();
}

void MapViewport::animate(double duration, std::function<void(double)> update)
{
    ++m_generation;
    m_animStart = m_clock();
    m_animDuration = duration;
    m_update = std::move(update);
    m_timer->start();
}

void MapViewport::stopAnimation()
{
    m_timer->stop();
    m_update = nullptr;
}

void MapViewport::setClock(std::function<double()> clock)
{
    if (clock)
        m_clock = std::move(clock);
}

void MapViewport::tick()
{
    if (!m_update) {
        m_timer->stop();
        return;
    }
    const double t = m_animDuration > 0 ? std::min((m_clock() - m_animStart) / m_animDuration, 1.0) : 1.0;
    // A copy, so that an update which starts another animation doesn't destroy itself.
    const uint64_t generation = m_generation;
    const auto update = m_update;
    update(Look::easeOutCubic(t));
    if (t >= 1 && generation == m_generation)
        stopAnimation();
}

void MapViewport::animatePan(QPointF target, double duration)
{
    stopAnimation();
    const QPointF to = clampedPan(target);
    const QPointF from = m_panOffset;
    animate(duration, [this, from, to](double e) { setPanOffset(from + (to - from) * e); });
    m_endScale = m_scale;
    m_endPan = to;
}

void MapViewport::animateZoom(double target)
{
    const double to = std::clamp(target, minScale, maxScale);
    if (to == m_scale)
        return;
    const double from = m_scale;
    const QPointF centre(m_viewportSize.width() * 0.5, m_viewportSize.height() * 0.5);
    const QPointF fixed = (centre - m_panOffset) / m_scale;
    animate(zoomDuration, [this, from, to, centre, fixed](double e) {
        setScale(from + (to - from) * e);
        setPanOffset(clampedPan(centre - m_scale * fixed));
    });
    m_endScale = to;
    m_endPan = clampedPan(centre - to * fixed, m_viewportSize, m_contentBounds, to);
}

void MapViewport::zoomIn()
{
    if (const auto stop = nextZoomStop(m_scale))
        animateZoom(*stop);
}

void MapViewport::zoomOut()
{
    if (const auto stop = previousZoomStop(m_scale))
        animateZoom(*stop);
}

void MapViewport::reset()
{
    const double from = m_scale;
    const QPointF fromPan = m_panOffset;
    animate(zoomDuration, [this, from, fromPan](double e) {
        setScale(from + (1 - from) * e);
        setPanOffset(clampedPan((1 - e) * fromPan));
    });
    m_endScale = 1;
    m_endPan = clampedPan({}, m_viewportSize, m_contentBounds, 1);
}

void MapViewport::setTopCover(const QRectF& cover)
{
    m_topCover = cover;
}

void MapViewport::reveal(const NodeLayout& l, bool keepColumn)
{
    const double w = m_viewportSize.width(), h = m_viewportSize.height();
    if (w <= 0 || h <= 0)
        return;
    const double left = l.origin.x() * m_scale + m_panOffset.x();
    const double top = l.origin.y() * m_scale + m_panOffset.y();
    const double right = l.maxX() * m_scale + m_panOffset.x();
    const double bottom = l.maxY() * m_scale + m_panOffset.y();
    // What an overlay covers at the top is out of view; the quarter is taken from what is left.
    const bool isAcrossCover = !m_topCover.isEmpty() && right > m_topCover.left() && left < m_topCover.right();
    const double inset = isAcrossCover ? std::clamp(m_topCover.bottom(), 0.0, h) : 0.0;
    QPointF target = m_panOffset;
    // The left margin is 10 and the right none: a node sticking out on the right comes to the left.
    const bool partlyInView = right > 0 && left < w;
    if ((left < 10 || right > w) && !(keepColumn && partlyInView))
        target.setX(10 - l.origin.x() * m_scale);
    if (top < inset + 10)
        target.setY(inset + (h - inset) * 0.25 - l.midY() * m_scale);
    else if (bottom > h - 10)
        target.setY(h * 0.75 - l.midY() * m_scale);
    if (target == m_panOffset)
        return;
    animatePan(target, revealDuration);
}

void MapViewport::centerOn(QPointF p)
{
    stopAnimation();
    setPanOffset(clampedPan(QPointF(m_viewportSize.width() * 0.5, m_viewportSize.height() * 0.5) - m_scale * p));
    showMinimap();
}
