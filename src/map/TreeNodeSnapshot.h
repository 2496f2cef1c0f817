#pragma once

#include "core/NodeID.h"

#include <QString>

#include <span>
#include <vector>

class SermonNode;

// One line of an immutable copy of the visible tree: plain values, safe to hand to another thread.
struct TreeNodeSnapshot {
    NodeID id;
    QString text;
    int depth = 0;
    bool isCollapsed = false;
    bool isLeaf = true; // the source has no children at all
    bool hasOnlyLeafChildren = false; // from the source's children, folded or not
    bool isQuote = false;
    // The children, as positions in the owning TreeSnapshot; none for a folded line.
    int firstChild = 0;
    int childCount = 0;
};

// The visible tree, copied on the main thread. Held flat, breadth first so that each line's
// children lie side by side: copying, walking and freeing it never recurse, however deep the
// file nests.
struct TreeSnapshot {
    std::vector<TreeNodeSnapshot> nodes; // nodes[0] is the root

    static TreeSnapshot copy(const SermonNode& root);

    const TreeNodeSnapshot* root() const { return nodes.empty() ? nullptr : &nodes.front(); }
    std::span<const TreeNodeSnapshot> children(const TreeNodeSnapshot& node) const
    {
        return {nodes.data() + node.firstChild, size_t(node.childCount)};
    }
};
