#include "TreeNodeSnapshot.h"

#include "core/SermonNode.h"

TreeSnapshot TreeSnapshot::copy(const SermonNode& root)
{
    TreeSnapshot snapshot;
    std::vector<const SermonNode*> sources{&root};
    for (size_t i = 0; i < sources.size(); ++i) {
        const SermonNode& node = *sources[i];
        TreeNodeSnapshot& copy = snapshot.nodes.emplace_back();
        copy.id = node.id();
        copy.text = node.text();
        copy.depth = node.depth();
        copy.isCollapsed = node.isCollapsed();
        copy.isLeaf = !node.hasChildren();
        copy.hasOnlyLeafChildren = node.hasOnlyLeafChildren();
        copy.isQuote = node.isQuote();
        if (node.isCollapsed())
            continue;
        copy.firstChild = int(sources.size());
        copy.childCount = int(node.children().size());
        for (const auto& child : node.children())
            sources.push_back(child.get());
    }
    return snapshot;
}
