#include "MapLayoutState.h"

#include "TreeLayout.h"

#include "core/PerformanceLog.h"
#include "core/WordCount.h"

#include <algorithm>
#include <vector>

void MapLayoutState::recomputeLayout(const SermonNodePtr& newRoot, TreeLayout::PartialMeasure* partial)
{
    performanceLog::signpostInterval("RecomputeLayout", performanceLog::noMessage, [&] {
        root = newRoot;
        hasEstimates = false;
        measuredRegions = partial ? partial->regions : std::vector<QRectF>();
        if (!root) {
            cachedLayouts.clear();
            cachedCanvasSize = {80, 80};
            cachedContentBounds = {};
            return;
        }
        TreeLayout::layout(*root, cachedLayouts, &measureCache, partial);
        hasEstimates = partial && !partial->unmeasured.empty();
        takeBounds();
    });
}

bool MapLayoutState::measureInSight(const std::vector<QRectF>& regions)
{
    if (!root || !TreeLayout::measureInSight(*root, cachedLayouts, &measureCache, regions))
        return false;
    measuredRegions.insert(measuredRegions.end(), regions.begin(), regions.end());
    takeBounds();
    return true;
}

void MapLayoutState::takeBounds()
{
    // The root's branch covers every frame, so the bounds need no second walk.
    const NodeLayout& whole = cachedLayouts.at(root->id());
    cachedContentBounds = QRectF(whole.origin.x(), whole.branchTop, whole.branchRight - whole.origin.x(),
                                 whole.branchBottom - whole.branchTop);
    cachedCanvasSize = {whole.branchRight + 80, whole.branchBottom + 80};
}

bool MapLayoutState::isMeasured(const QRectF& rect) const
{
    return !hasEstimates || std::any_of(measuredRegions.begin(), measuredRegions.end(), [&](const QRectF& r) {
        return r.contains(rect);
    });
}

const NodeLayout* MapLayoutState::layout(const NodeID& id) const
{
    const auto it = cachedLayouts.find(id);
    return it == cachedLayouts.end() ? nullptr : &it->second;
}

const SermonNode* MapLayoutState::node(const NodeID& id) const
{
    // The whole tree, folded parts included; the tree keeps its own index.
    return root ? root->find(id).get() : nullptr;
}

int MapLayoutState::subtreeWordCount(const NodeID& id) const
{
    if (const NodeLayout* laidOut = layout(id))
        return laidOut->branchWords;
    // Under a fold: the layout counted the fold's words, not each line's below it.
    const SermonNode* hidden = node(id);
    return hidden ? WordCount::wordCount(*hidden) : 0;
}
