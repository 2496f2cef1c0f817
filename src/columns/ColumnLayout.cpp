#include "ColumnLayout.h"

#include "WrappedLines.h"
#include "core/SermonNode.h"

#include <algorithm>
#include <atomic>

const ColumnLayout ColumnLayout::empty{};

double ColumnLayout::widthAt(const std::vector<double>& widths, int column)
{
    return column >= 0 && size_t(column) < widths.size() ? widths[size_t(column)] : defaultColumnWidth;
}

ColumnLayout ColumnLayout::compute(const SermonNode& root, const std::vector<double>& widths)
{
    ColumnLayout layout;
    compute(root, widths, layout);
    return layout;
}

void ColumnLayout::compute(const SermonNode& root, const std::vector<double>& widths, ColumnLayout& layout)
{
    static std::atomic<uint32_t> passes{0};
    const uint32_t pass = ++passes;
    size_t placed = 0;
    // Left edges by depth, grown as the walk goes deeper.
    std::vector<double> columnX{0};
    const auto xOf = [&](int depth) {
        while (columnX.size() <= size_t(depth))
            columnX.push_back(columnX.back() + widthAt(widths, int(columnX.size()) - 1));
        return columnX[size_t(depth)];
    };

    // An explicit stack: a node is entered (children pushed) and later finished, when all its
    // children have returned their bottoms.
    struct Step {
        const SermonNode* node;
        int depth;
        double startY;
        double bottom; // running bottom of the children placed so far
        size_t nextChild;
    };
    std::vector<Step> stack;
    stack.push_back({&root, 0, 0, 0, 0});
    double returned = 0;
    int maxColumn = -1;
    while (!stack.empty()) {
        Step& step = stack.back();
        const auto& children = step.node->children();
        if (!step.node->isCollapsed() && step.nextChild < children.size()) {
            const SermonNode* child = children[step.nextChild++].get();
            stack.push_back({child, step.depth + 1, step.bottom, step.bottom, 0});
            continue;
        }
        const double width = widthAt(widths, step.depth);
        const double height = double(wrappedLineCount(step.node->text(), false, width)) * rowHeight;
        const double bottom = std::max(step.bottom, step.startY + height);
        ColumnNodeFrame& frame = layout.frames[step.node->id()];
        placed += frame.pass != pass; // an id twice in one tree is one frame
        frame = ColumnNodeFrame{step.node->id(),
                                step.depth,
                                QPointF(xOf(step.depth), step.startY),
                                QSizeF(width, height),
                                ColumnYRange{step.startY, bottom},
                                pass};
        Q_ASSERT(frame.subtreeYRange.upper >= frame.subtreeYRange.lower);
        maxColumn = std::max(maxColumn, step.depth);
        returned = bottom;
        stack.pop_back();
        if (!stack.empty())
            stack.back().bottom = returned;
    }
    if (layout.frames.size() > placed)
        std::erase_if(layout.frames, [pass](const auto& kept) { return kept.second.pass != pass; });
    layout.columnCount = maxColumn + 1;
    layout.columnXEdges.clear();
    layout.columnXEdges.reserve(size_t(layout.columnCount) + 1);
    layout.columnXEdges.push_back(0);
    for (int i = 0; i < layout.columnCount; ++i)
        layout.columnXEdges.push_back(layout.columnXEdges.back() + widthAt(widths, i));
    layout.totalSize = QSizeF(layout.columnXEdges.back(), returned);
}
