#pragma once

#include <map>
#include <vector>

// A column that the horizontal scroll has reached: it narrows, then stands as a rotated strip.
struct ColumnCollapseState {
    int column = 0;
    double fullWidth = 0;
    double visibleWidth = 0; // never below the strip width
    bool isRotated = false;
    bool operator==(const ColumnCollapseState&) const = default;
};

// Where each column stands on screen for a horizontal scroll: strips at the left, at most one
// narrowing column, then full columns, in one gapless run from x = 0.
namespace CollapseResolver {

constexpr double rotatedColumnWidth = 44;

struct AdjustedColumn {
    int column = 0;
    double xOrigin = 0; // viewport coordinates
    double displayWidth = 0;
    bool isRotated = false;
    bool operator==(const AdjustedColumn&) const = default;
};

// `scrollX` is the negated horizontal pan offset: 0 at rest, growing as the view scrolls right.
std::map<int, ColumnCollapseState> collapseStates(int columnCount, const std::vector<double>& columnXEdges,
                                                  double scrollX);
std::vector<AdjustedColumn> adjustedColumns(int columnCount, const std::vector<double>& columnXEdges, double scrollX);

} // namespace CollapseResolver
