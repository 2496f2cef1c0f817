#pragma once

#include "ColumnLayout.h"

class ColumnFrameIndex;

#include <map>

// The text of a node whose branch reaches past the top of the viewport, pinned at that top
// while its children scroll by. At most one per column.
struct ColumnStickyState {
    NodeID nodeID;
    int column = 0;
    double naturalOriginY = 0;
    double textHeight = 0;
    double subtreeBottomY = 0;
    double pinnedTextY = 0; // content coordinates

    // `viewportTop` is the negated vertical pan offset.
    static std::map<int, ColumnStickyState> compute(const ColumnFrames& frames, double viewportTop);
    // The same, visiting only the frames of `index` (built over `frames`) near the viewport top.
    static std::map<int, ColumnStickyState> compute(const ColumnFrames& frames, const ColumnFrameIndex& index,
                                                    double viewportTop);
    bool operator==(const ColumnStickyState&) const = default;
};
