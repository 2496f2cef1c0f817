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
    // Whether the last run left lines outside `measuredRegions` with estimated widths.
    bool hasEstimates = false;
    std::vector<QRectF> measuredRegions;
    bool isMeasured(const QRectF& rect) const;
    // Measures the estimated lines that may reach `regions` without laying the tree out again;
    // false when it must be laid out again instead.
    bool measureInSight(const std::vector<QRectF>& regions);

    // Measures only what `partial` asks for when given, and lists the rest in it.
    void recomputeLayout(const SermonNodePtr& newRoot, TreeLayout::PartialMeasure* partial = nullptr);

    const NodeLayout* layout(const NodeID& id) const;
    const SermonNode* node(const NodeID& id) const;
    // The node's own words plus all of its descendants', folded or not.
    int subtreeWordCount(const NodeID& id) const;

private:
    void takeBounds();
};
