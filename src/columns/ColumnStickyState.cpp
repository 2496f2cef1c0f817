#include "ColumnStickyState.h"

#include "ColumnFrameIndex.h"

#include <algorithm>

namespace {

// Offers one frame to the result: the rules of pinning, and which of two frames a column keeps.
void consider(std::map<int, ColumnStickyState>& result, const ColumnFrames& frames, const ColumnNodeFrame& frame,
              double viewportTop)
{
    const double lower = frame.subtreeYRange.lower;
    const double upper = frame.subtreeYRange.upper;
    if (!(lower < viewportTop && viewportTop < upper))
        return;
    // Nothing below its own text, or text still starting inside the viewport: not pinned.
    if (!(frame.origin.y() < viewportTop && frame.size.height() < upper - lower))
        return;
    if (const auto held = result.find(frame.column); held != result.end()) {
        const auto heldFrame = frames.find(held->second.nodeID);
        const double heldLower = heldFrame != frames.end() ? heldFrame->second.subtreeYRange.lower : 0;
        if (!(lower <= heldLower))
            return;
    }
    const double pinnedTextY = std::max(viewportTop, frame.origin.y());
    result[frame.column] =
        ColumnStickyState{frame.nodeID, frame.column, frame.origin.y(), frame.size.height(), upper, pinnedTextY};
}

} // namespace

std::map<int, ColumnStickyState> ColumnStickyState::compute(const ColumnFrames& frames, double viewportTop)
{
    std::map<int, ColumnStickyState> result;
    for (const auto& entry : frames)
        consider(result, frames, entry.second, viewportTop);
    return result;
}

std::map<int, ColumnStickyState> ColumnStickyState::compute(const ColumnFrames& frames, const ColumnFrameIndex& index,
                                                            double viewportTop)
{
    std::map<int, ColumnStickyState> result;
    for (int c = 0; c < index.columnCount(); ++c)
        index.forEachNear(c, viewportTop, viewportTop,
                          [&](const ColumnNodeFrame& frame) { consider(result, frames, frame, viewportTop); });
    return result;
}
