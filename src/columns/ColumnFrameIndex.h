#pragma once

#include "ColumnLayout.h"

#include <algorithm>
#include <vector>

// The frames of each column in order of their top, so that drawing, pinning and hit testing
// visit only the rows near a span of y instead of the whole sermon. Holds pointers into a frame
// dictionary, which must keep its entries while the index is used.
class ColumnFrameIndex {
public:
    // Frames outside columns 0 to columnCount - 1 are left out.
    void rebuild(const ColumnFrames& frames, int columnCount);
    // The frames of the nodes listed per column, top to bottom as the tree orders them, which
    // spares the sorting; a node without a frame is left out.
    void rebuild(const ColumnFrames& frames, const std::vector<std::vector<NodeID>>& columnOrder);
    // The same frames have moved (a glide step): restore their order.
    void refresh();

    int columnCount() const { return int(m_columns.size()); }
    // Each frame of `column` whose subtree range may meet [top, bottom]: every frame with
    // lower <= bottom and upper >= top is visited, in order of its top. Callers apply their own
    // exact test; mid-glide ranges may overlap, which the running reach allows for.
    template <typename Visit>
    void forEachNear(int column, double top, double bottom, Visit&& visit) const
    {
        if (column < 0 || column >= columnCount())
            return;
        const Column& c = m_columns[size_t(column)];
        // reach[i] is the furthest bottom among frames 0..i, so it never decreases; frames before the
        // first reach of `top` all end above it.
        auto i = size_t(std::lower_bound(c.reach.begin(), c.reach.end(), top) - c.reach.begin());
        for (; i < c.frames.size() && c.frames[i]->subtreeYRange.lower <= bottom; ++i)
            if (c.frames[i]->subtreeYRange.upper >= top)
                visit(*c.frames[i]);
    }

private:
    struct Column {
        std::vector<const ColumnNodeFrame*> frames;
        std::vector<double> reach;
    };
    void order(Column& column);

    std::vector<Column> m_columns;
};
