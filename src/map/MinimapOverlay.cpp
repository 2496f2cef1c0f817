#include "MinimapOverlay.h"

#include "MapLayoutState.h"
#include "MapPalette.h"
#include "look/Look.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

MinimapGeometry MinimapGeometry::forContent(const QRectF& b)
{
    MinimapGeometry g;
    g.contentBounds = b;
    // The larger direction gets all the room inside the padding.
    if (b.width() > 0 && b.height() > 0)
        g.mapScale = std::min((maxWidth - 2 * padding) / b.width(), (maxHeight - 2 * padding) / b.height());
    g.treeFrame = QRectF(padding, padding, b.width() * g.mapScale, b.height() * g.mapScale);
    g.size = QSizeF(g.treeFrame.width() + 2 * padding, g.treeFrame.height() + 2 * padding);
    return g;
}

QRectF MinimapGeometry::viewportRect(QSizeF viewport, QPointF pan, double scale) const
{
    if (!(scale > 0))
        return {};
    const QRectF inCanvas(-pan.x() / scale, -pan.y() / scale, viewport.width() / scale, viewport.height() / scale);
    const QRectF mapped((inCanvas.x() - contentBounds.x()) * mapScale + padding,
                        (inCanvas.y() - contentBounds.y()) * mapScale + padding, inCanvas.width() * mapScale,
                        inCanvas.height() * mapScale);
    const QRectF clipped = mapped.intersected(QRectF(QPointF(), size));
    return clipped.isEmpty() ? QRectF() : clipped;
}

QPointF MinimapGeometry::canvasPoint(QPointF q) const
{
    return {(q.x() - padding) / mapScale + contentBounds.x(), (q.y() - padding) / mapScale + contentBounds.y()};
}

void MinimapDrawing::draw(QPainter& painter, const MinimapGeometry& g, const QImage* image, const QRectF& viewportRect,
                          const MapPalette& palette)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QPainterPath panel;
    panel.addRoundedRect(QRectF(QPointF(), g.size), 6, 6);
    // A translucent panel stands for the platform's thin material.
    const QColor face =
        palette.isDark ? QColor::fromRgbF(0.16f, 0.15f, 0.18f, 0.78f) : QColor::fromRgbF(0.98f, 0.97f, 0.95f, 0.78f);
    painter.fillPath(panel, face);
    painter.save();
    painter.setClipPath(panel);
    if (image && !image->isNull())
        painter.drawImage(g.treeFrame, *image);
    if (!viewportRect.isEmpty()) {
        const QColor tone = palette.isDark ? QColor(Qt::white) : palette.accent;
        QPainterPath rect;
        rect.addRoundedRect(viewportRect, 2, 2);
        painter.fillPath(rect, Look::withAlpha(tone, 0.06));
        painter.strokePath(rect, QPen(Look::withAlpha(tone, palette.isDark ? 0.6 : 0.7), 1.5));
    }
    painter.restore();
    const QColor primary = palette.isDark ? QColor(Qt::white) : QColor(Qt::black);
    painter.strokePath(panel, QPen(Look::withAlpha(primary, 0.1), 0.5));
    painter.restore();
}

MinimapOverlay::MinimapOverlay(QWidget* parent)
    : QWidget(parent)
    , m_cache(this)
    , m_fade(showSeconds, false, this)
    , m_settleTimer(new QTimer(this))
{
    setObjectName(QStringLiteral("minimap"));
    // Within the renderer's own wait for a burst to end.
    m_settleTimer->setSingleShot(true);
    m_settleTimer->setInterval(40);
    connect(m_settleTimer, &QTimer::timeout, this, &MinimapOverlay::renderIfChanged);
    setAttribute(Qt::WA_NoSystemBackground);
    connect(&m_cache, &MinimapCache::imageChanged, this, qOverload<>(&QWidget::update));
    connect(&m_fade, &IdleFade::frame, this, qOverload<>(&QWidget::update));
    connect(&m_fade, &IdleFade::visibleChanged, this, &MinimapOverlay::updateMouseTransparency);
    updateMouseTransparency();
}

void MinimapOverlay::setLayoutState(const MapLayoutState* tables)
{
    m_tables = tables;
    treeChanged();
}

MinimapCacheKey MinimapOverlay::currentKey() const
{
    if (!m_tables || !m_tables->root)
        return {};
    const double dpr = devicePixelRatioF();
    const QSize pixels(int(m_geometry.treeFrame.width() * dpr), int(m_geometry.treeFrame.height() * dpr));
    return MinimapRenderer::cacheKey(*m_tables->root, m_tables->cachedLayouts, m_tables->cachedContentBounds, pixels,
                                     Look::isDarkPalette(palette()));
}

void MinimapOverlay::treeChanged()
{
    if (!m_tables)
        return;
    const MinimapGeometry geometry = MinimapGeometry::forContent(m_tables->cachedContentBounds);
    if (geometry.size != m_geometry.size || geometry.contentBounds != m_geometry.contentBounds) {
        m_geometry = geometry;
        place(m_mapSize);
        update();
    }
    if (m_tables->root)
        m_settleTimer->start();
}

void MinimapOverlay::settle()
{
    if (!m_settleTimer->isActive())
        return;
    m_settleTimer->stop();
    renderIfChanged();
}

void MinimapOverlay::renderIfChanged()
{
    if (!m_tables || !m_tables->root)
        return;
    const MinimapCacheKey key = currentKey();
    if (!m_cache.wants(key))
        return;
    const double dpr = devicePixelRatioF();
    MinimapRenderer::Input input{
        TreeSnapshot::copy(*m_tables->root), m_tables->cachedLayouts, m_tables->cachedContentBounds,
        QSize(int(m_geometry.treeFrame.width() * dpr), int(m_geometry.treeFrame.height() * dpr)), key.isDark};
    m_cache.requestRender(key, std::move(input));
}

void MinimapOverlay::setView(QSizeF viewportSize, QPointF panOffset, double scale)
{
    if (viewportSize == m_viewportSize && panOffset == m_panOffset && scale == m_scale)
        return;
    m_viewportSize = viewportSize;
    m_panOffset = panOffset;
    m_scale = scale;
    if (m_fade.opacity() > 0)
        update();
}

QRectF MinimapOverlay::viewportRect() const
{
    return m_geometry.viewportRect(m_viewportSize, m_panOffset, m_scale);
}

void MinimapOverlay::place(QSize mapSize)
{
    m_mapSize = mapSize;
    const QSize size(int(std::ceil(m_geometry.size.width())), int(std::ceil(m_geometry.size.height())));
    const double m = MinimapGeometry::margin;
    setGeometry(
        QRect(QPoint(int(mapSize.width() - m - size.width()), int(mapSize.height() - m - size.height())), size));
}

void MinimapOverlay::showMinimap()
{
    m_fade.poke();
    settle();
}

void MinimapOverlay::updateMouseTransparency()
{
    // Hidden, it is only drawn at no opacity: clicks there belong to the map.
    setAttribute(Qt::WA_TransparentForMouseEvents, !m_fade.isVisible());
}

void MinimapOverlay::paintEvent(QPaintEvent*)
{
    const double opacity = m_fade.opacity();
    if (opacity <= 0)
        return;
    QPainter painter(this);
    painter.setOpacity(opacity);
    const QImage* image = m_cache.currentImage() ? &*m_cache.currentImage() : nullptr;
    MinimapDrawing::draw(painter, m_geometry, image, viewportRect(),
                         MapPalette::forAppearance(Look::isDarkPalette(palette())));
}

void MinimapOverlay::navigate(QPointF point)
{
    if (onNavigate)
        onNavigate(m_geometry.canvasPoint(point));
}

void MinimapOverlay::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    event->accept();
    navigate(event->position());
}

void MinimapOverlay::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        event->ignore();
        return;
    }
    event->accept();
    navigate(event->position());
}

void MinimapOverlay::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    // A theme change renders again with the other ink.
    if (event->type() == QEvent::PaletteChange)
        treeChanged();
}

void MinimapOverlay::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // The screen, and with it the pixel density, is known from here on.
    treeChanged();
}
