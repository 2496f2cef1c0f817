#include "CollapseResolver.h"

#include <algorithm>

namespace CollapseResolver {

std::map<int, ColumnCollapseState> collapseStates(int columnCount, const std::vector<double>& edges, double scrollX)
{
    std::map<int, ColumnCollapseState> states;
    if (!(scrollX > 0))
        return states;
    for (int c = 0; c < columnCount && size_t(c) + 1 < edges.size(); ++c) {
        if (!(edges[size_t(c)] < scrollX))
            break;
        const double fullWidth = edges[size_t(c) + 1] - edges[size_t(c)];
        const double visibleWidth = std::max(rotatedColumnWidth, std::min(edges[size_t(c) + 1] - scrollX, fullWidth));
        states[c] = ColumnCollapseState{c, fullWidth, visibleWidth, visibleWidth <= rotatedColumnWidth};
    }
    return states;
}

std::vector<AdjustedColumn> adjustedColumns(int columnCount, const std::vector<double>& edges, double scrollX)
{
    const auto states = collapseStates(columnCount, edges, scrollX);
    std::vector<AdjustedColumn> columns;
    if (columnCount <= 0)
        return columns;
    columns.reserve(size_t(columnCount));
    double x = 0;
    for (int c = 0; c < columnCount && size_t(c) + 1 < edges.size(); ++c) {
        AdjustedColumn column{c, x, edges[size_t(c) + 1] - edges[size_t(c)], false};
        if (const auto state = states.find(c); state != states.end()) {
            column.isRotated = state->second.isRotated;
            column.displayWidth = column.isRotated ? rotatedColumnWidth : state->second.visibleWidth;
        }
        columns.push_back(column);
        x += column.displayWidth;
    }
    return columns;
}

} // namespace CollapseResolver
