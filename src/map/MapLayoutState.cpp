#include "MapLayoutState.h"

#include "TreeLayout.h"

#include "core/PerformanceLog.h"
#include "core/WordCount.h"

#include <vector>

std::unordered_map<NodeID, int> subtreeWordCounts(const SermonNode& root)
{
    // Pre-order, then summed in reverse so every child is done before its parent.
    std::vector<const SermonNode*> order;
    std::vector<const SermonNode*> stack{&root};
    while (!stack.empty()) {
        const SermonNode* n = stack.back();
        stack.pop_back();
        order.push_back(n);
        for (const auto& child : n->children())
            stack.push_back(child.get());
    }
    std::unordered_map<NodeID, int> counts;
    counts.reserve(order.size());
    for (auto it = order.rbegin(); it != order.rend(); ++it) {
        const SermonNode* n = *it;
        int total = WordCount::wordCount(n->text());
        for (const auto& child : n->children())
            total += counts[child->id()];
        counts[n->id()] = total;
    }
    return counts;
}

void MapLayoutState::recomputeLayout(const SermonNodePtr& newRoot)
{
    performanceLog::signpostInterval("RecomputeLayout", performanceLog::noMessage, [&] {
        root = newRoot;
        if (!root) {
            cachedLayouts.clear();
            nodeLookup.clear();
            cachedCanvasSize = {80, 80};
            cachedContentBounds = {};
            subtreeWordCounts.clear();
            return;
        }
        cachedLayouts = TreeLayout::layout(*root, &measureCache);
        nodeLookup = root->nodeIndex();
        cachedCanvasSize = TreeLayout::canvasSize(cachedLayouts);
        cachedContentBounds = TreeLayout::contentBounds(cachedLayouts);
        subtreeWordCounts = ::subtreeWordCounts(*root);
    });
}

const NodeLayout* MapLayoutState::layout(const NodeID& id) const
{
    const auto it = cachedLayouts.find(id);
    return it == cachedLayouts.end() ? nullptr : &it->second;
}

const SermonNode* MapLayoutState::node(const NodeID& id) const
{
    const auto it = nodeLookup.find(id);
    return it == nodeLookup.end() ? nullptr : it->second.get();
}

int MapLayoutState::subtreeWordCount(const NodeID& id) const
{
    const auto it = subtreeWordCounts.find(id);
    return it == subtreeWordCounts.end() ? 0 : it->second;
}
