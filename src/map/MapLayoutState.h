#pragma once

#include "NodeLayout.h"
#include "TreeLayout.h"

#include "core/SermonNode.h"

#include <unordered_map>

// The tables the map keeps beside its layout, all renewed together by recomputeLayout.
struct MapLayoutState {
    SermonNodePtr root;
    NodeLayouts cachedLayouts;
    QSizeF cachedCanvasSize;
    QRectF cachedContentBounds;
    TreeLayout::MeasureCache measureCache;

    void recomputeLayout(const SermonNodePtr& newRoot);

    const NodeLayout* layout(const NodeID& id) const;
    const SermonNode* node(const NodeID& id) const;
    // The node's own words plus all of its descendants', folded or not.
    int subtreeWordCount(const NodeID& id) const;
};
