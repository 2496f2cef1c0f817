#include "ColumnFrameIndex.h"

#include <limits>

void ColumnFrameIndex::rebuild(const ColumnFrames& frames, int columnCount)
{
    m_columns.assign(size_t(std::max(columnCount, 0)), Column{});
    for (const auto& entry : frames) {
        const int c = entry.second.column;
        if (c >= 0 && c < columnCount)
            m_columns[size_t(c)].frames.push_back(&entry.second);
    }
    for (Column& column : m_columns)
        order(column);
}

void ColumnFrameIndex::rebuild(const ColumnFrames& frames, const std::vector<std::vector<NodeID>>& columnOrder)
{
    m_columns.assign(columnOrder.size(), Column{});
    for (size_t c = 0; c < columnOrder.size(); ++c) {
        Column& column = m_columns[c];
        column.frames.reserve(columnOrder[c].size());
        for (const NodeID& id : columnOrder[c])
            if (const auto f = frames.find(id); f != frames.end() && f->second.column == int(c))
                column.frames.push_back(&f->second);
        order(column);
    }
}

void ColumnFrameIndex::refresh()
{
    for (Column& column : m_columns)
        order(column);
}

void ColumnFrameIndex::order(Column& column)
{
    const auto byTop = [](const ColumnNodeFrame* a, const ColumnNodeFrame* b) {
        return a->subtreeYRange.lower < b->subtreeYRange.lower;
    };
    // A glide keeps the order of a column unless lines trade places, so this is mostly a check.
    if (!std::is_sorted(column.frames.begin(), column.frames.end(), byTop))
        std::sort(column.frames.begin(), column.frames.end(), byTop);
    column.reach.resize(column.frames.size());
    double reach = -std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < column.frames.size(); ++i) {
        reach = std::max(reach, column.frames[i]->subtreeYRange.upper);
        column.reach[i] = reach;
    }
}
