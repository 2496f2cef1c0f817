#include "ColumnStickyState.h"

#include <algorithm>

std::map<int, ColumnStickyState> ColumnStickyState::compute(const ColumnFrames& frames, double viewportTop)
{
    std::map<int, ColumnStickyState> result;
    for (const auto& [id, frame] : frames) {
        const double lower = frame.subtreeYRange.lower;
        const double upper = frame.subtreeYRange.upper;
        if (!(lower < viewportTop && viewportTop < upper))
            continue;
        // Nothing below its own text, or text still starting inside the viewport: not pinned.
        if (!(frame.origin.y() < viewportTop && frame.size.height() < upper - lower))
            continue;
        if (const auto held = result.find(frame.column); held != result.end()) {
            const auto heldFrame = frames.find(held->second.nodeID);
            const double heldLower = heldFrame != frames.end() ? heldFrame->second.subtreeYRange.lower : 0;
            if (!(lower <= heldLower))
                continue;
        }
        result[frame.column] = ColumnStickyState{
            id, frame.column, frame.origin.y(), frame.size.height(), upper, std::max(viewportTop, frame.origin.y())};
    }
    return result;
}
