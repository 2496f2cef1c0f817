#pragma once

#include <QWidget>

#include <optional>
#include <vector>

class ColumnWidthsStore;

// Invisible strips on each column's natural right edge: dragging one sets that column's width
// for every document. Only the strips take the pointer (the rest of the overlay is masked
// away), and over them the pointer is a left-right resize arrow. The divider line itself is the
// canvas's.
class ColumnDragHandleOverlay : public QWidget {
    Q_OBJECT
public:
    static constexpr double handleWidth = 8;

    ColumnDragHandleOverlay(ColumnWidthsStore* store, QWidget* parent = nullptr);

    // The layout's natural edges: a strip does not follow a column narrowing at the left edge.
    void setColumns(const std::vector<double>& columnXEdges, int columnCount, double viewportHeight, double panOffsetX);
    // The strips in this widget's coordinates; strip i resizes column i.
    std::vector<QRectF> handleRects() const;
    std::optional<int> depthAt(QPointF point) const;
    bool isDragging() const { return m_dragDepth.has_value(); }

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void updateMask();

    ColumnWidthsStore* m_store;
    std::vector<double> m_edges;
    int m_columnCount = 0;
    double m_viewportHeight = 0;
    double m_panOffsetX = 0;
    std::optional<int> m_dragDepth;
    std::optional<double> m_dragStartWidth;
    double m_pressX = 0;
};
