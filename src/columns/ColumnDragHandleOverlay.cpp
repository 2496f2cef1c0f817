#include "ColumnDragHandleOverlay.h"

#include "ColumnWidthsStore.h"

#include <QMouseEvent>
#include <QRegion>

#include <cmath>

ColumnDragHandleOverlay::ColumnDragHandleOverlay(ColumnWidthsStore* store, QWidget* parent)
    : QWidget(parent)
    , m_store(store)
{
    setObjectName(QStringLiteral("columnDragHandles"));
    setCursor(Qt::SizeHorCursor);
    setAttribute(Qt::WA_NoSystemBackground);
    hide();
}

void ColumnDragHandleOverlay::setColumns(const std::vector<double>& columnXEdges, int columnCount,
                                         double viewportHeight, double panOffsetX)
{
    if (m_edges == columnXEdges && m_columnCount == columnCount && m_viewportHeight == viewportHeight
        && m_panOffsetX == panOffsetX)
        return;
    m_edges = columnXEdges;
    m_columnCount = columnCount;
    m_viewportHeight = viewportHeight;
    m_panOffsetX = panOffsetX;
    updateMask();
}

std::vector<QRectF> ColumnDragHandleOverlay::handleRects() const
{
    std::vector<QRectF> rects;
    for (int i = 1; i <= m_columnCount && size_t(i) < m_edges.size(); ++i)
        rects.emplace_back(m_edges[size_t(i)] + m_panOffsetX - handleWidth / 2, 0, handleWidth, m_viewportHeight);
    return rects;
}

std::optional<int> ColumnDragHandleOverlay::depthAt(QPointF point) const
{
    const auto rects = handleRects();
    for (size_t i = 0; i < rects.size(); ++i)
        if (rects[i].contains(point))
            return int(i);
    return std::nullopt;
}

void ColumnDragHandleOverlay::updateMask()
{
    QRegion region;
    for (const QRectF& rect : handleRects())
        region += rect.toAlignedRect();
    // An empty mask would mean no mask at all: without strips the overlay steps aside.
    if (region.isEmpty() && !m_dragDepth) {
        hide();
        return;
    }
    if (!region.isEmpty())
        setMask(region);
    show();
}

void ColumnDragHandleOverlay::mousePressEvent(QMouseEvent* event)
{
    const auto depth = depthAt(event->position());
    if (!depth || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_dragDepth = depth;
    m_dragStartWidth.reset();
    m_pressX = event->globalPosition().x();
    event->accept();
}

void ColumnDragHandleOverlay::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_dragDepth) {
        event->ignore();
        return;
    }
    ColumnWidthsConfig config = m_store->config();
    if (!m_dragStartWidth)
        m_dragStartWidth = config.width(*m_dragDepth);
    // Measured from where the drag began, so that past a limit the width waits for the pointer.
    config.setWidth(*m_dragDepth, *m_dragStartWidth + (event->globalPosition().x() - m_pressX));
    m_store->setConfig(config);
    event->accept();
}

void ColumnDragHandleOverlay::mouseReleaseEvent(QMouseEvent* event)
{
    if (!m_dragDepth) {
        event->ignore();
        return;
    }
    m_dragDepth.reset();
    m_dragStartWidth.reset();
    updateMask();
    event->accept();
}
