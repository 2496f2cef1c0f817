// Structural edits: each takes at most one undo step, before its first change, and ends with
// a relayout. A refusal comes before the step, so it leaves none.

#include "DocumentController.h"

#include "Markers.h"
#include "core/SermonDocument.h"

#include <algorithm>

void DocumentController::deleteSelection()
{
    const QSet<NodeID> ids = effectiveSelection();
    if (ids.isEmpty() || selectionHoldsRoot(ids))
        return;
    const std::vector<SermonNodePtr> doomed = topmostNodes(ids);
    if (doomed.empty())
        return; // nothing selected is in the tree any more

    captureUndo();

    // The next selection comes from the last selected line in tree order, pruned or not: its
    // nearest unselected sibling after it, else before it, else its parent.
    auto choiceAfter = [&](const SermonNodePtr& node) -> std::optional<NodeID> {
        const SermonNodePtr parent = node->parentNode();
        if (!parent)
            return std::nullopt;
        const auto& kids = parent->children();
        const int index = node->indexInParent();
        for (int i = index + 1; i < int(kids.size()); ++i)
            if (!ids.contains(kids[i]->id()))
                return kids[i]->id();
        for (int i = index - 1; i >= 0; --i)
            if (!ids.contains(kids[i]->id()))
                return kids[i]->id();
        return parent->id();
    };
    const std::vector<SermonNodePtr> all = selectedNodes();
    std::optional<NodeID> next = choiceAfter(all.back());
    // A choice inside a deleted branch would leave the selection on nothing: choose from the
    // last deleted branch itself instead.
    auto isDoomed = [&](const NodeID& id) {
        return std::any_of(doomed.begin(), doomed.end(),
                           [&](const SermonNodePtr& d) { return d->find(id) != nullptr; });
    };
    if (next && isDoomed(*next))
        next = choiceAfter(doomed.back());

    for (const auto& node : doomed)
        if (const SermonNodePtr parent = node->parentNode())
            parent->removeChild(node->indexInParent());

    treeMutated();
    setSelectedNodeIDs({});
    setSelectedNodeID(next);
    m_selectionAnchorID.reset();
}

void DocumentController::duplicate()
{
    const std::vector<SermonNodePtr> nodes = selectedNodesInOrder();
    if (nodes.empty() || std::any_of(nodes.begin(), nodes.end(), [&](const auto& n) { return n == root(); }))
        return;

    captureUndo();

    std::vector<NodeID> copies;
    for (auto it = nodes.rbegin(); it != nodes.rend(); ++it) {
        const SermonNodePtr parent = (*it)->parentNode();
        if (!parent)
            continue;
        // The copy stands beside its original at the original's levels.
        SermonNodePtr copy = (*it)->deepCopy(true);
        parent->insertChildKeepingDepths((*it)->indexInParent() + 1, copy);
        copies.insert(copies.begin(), copy->id());
    }
    treeMutated();
    selectNewNodes(copies);
}

void DocumentController::moveDown()
{
    const auto block = contiguousSelection();
    if (!block || block->last + 1 >= int(block->parent->children().size()))
        return;
    captureUndo();
    block->parent->moveChild(block->last + 1, block->first);
    treeMutated();
}

void DocumentController::moveUp()
{
    const auto block = contiguousSelection();
    if (!block || block->first == 0)
        return;
    captureUndo();
    block->parent->moveChild(block->first - 1, block->last);
    treeMutated();
}

void DocumentController::moveBlock(const ContiguousSelection& block, const SermonNodePtr& newParent, int at)
{
    captureUndo();
    for (const auto& node : block.nodes)
        block.parent->removeChild(block.parent->indexOfChild(node->id()));
    for (size_t k = 0; k < block.nodes.size(); ++k)
        newParent->insertChild(at + int(k), block.nodes[k]);
    treeMutated();
    requestVisible(m_selectedNodeID);
}

void DocumentController::promote()
{
    const auto block = contiguousSelection();
    if (!block || block->parent == root())
        return;
    SermonNodePtr grandparent = root()->parent(block->parent->id());
    if (!grandparent)
        return;
    const int at = grandparent->indexOfChild(block->parent->id()) + 1;

    moveBlock(*block, grandparent, at);
}

void DocumentController::demote()
{
    const auto block = contiguousSelection();
    if (!block)
        return;
    const auto& kids = block->parent->children();
    // The first row has no row before it: it goes into the row after, as its first children.
    SermonNodePtr newParent;
    int at = 0;
    if (block->first == 0) {
        if (block->last + 1 >= int(kids.size()))
            return;
        newParent = kids[block->last + 1];
    } else {
        newParent = kids[block->first - 1];
        at = int(newParent->children().size());
    }
    if (newParent->isQuote())
        return;

    moveBlock(*block, newParent, at);
}

void DocumentController::dropNodes(const NodeID& grabbed, const QSet<NodeID>& moving, const NodeID& parentID, int index)
{
    captureUndo();
    const std::vector<SermonNodePtr> tops = topmostNodes(moving);
    bool moved = false;
    if (tops.size() == 1) {
        moved = root()->moveNode(grabbed, parentID, index);
    } else if (tops.size() > 1) {
        SermonNodePtr target = root()->find(parentID);
        const bool intoItself = std::any_of(tops.begin(), tops.end(),
                                            [&](const SermonNodePtr& top) { return top->find(parentID) != nullptr; });
        if (target && !intoItself) {
            for (const auto& top : tops)
                if (top->parentNode() == target && top->indexInParent() < index)
                    --index;
            for (const auto& top : tops)
                if (const SermonNodePtr parent = top->parentNode())
                    parent->removeChild(top->indexInParent());
            index = std::clamp(index, 0, int(target->children().size()));
            for (const auto& top : tops)
                target->insertChild(index++, top);
            moved = true;
        }
    }
    if (moved)
        treeMutated();
    setSelectedNodeIDs(moving.size() < 2 ? QSet<NodeID>() : moving);
}

void DocumentController::fold()
{
    std::vector<SermonNodePtr> nodes = selectedNodes();
    std::erase_if(nodes, [](const SermonNodePtr& n) { return !n->hasChildren(); });
    if (nodes.empty())
        return;
    captureUndo();
    for (const auto& node : nodes)
        node->setCollapsed(true);
    treeMutated();
}

void DocumentController::unfold()
{
    std::vector<SermonNodePtr> nodes = selectedNodes();
    std::erase_if(nodes, [](const SermonNodePtr& n) { return !n->hasChildren(); });
    if (nodes.empty())
        return;
    captureUndo();
    for (const auto& node : nodes)
        node->setCollapsed(false);
    treeMutated();
}

void DocumentController::startNewLineSession(const SermonNodePtr& node)
{
    // Set directly rather than through startSession: after newLineUnder on a quote the new
    // line is in no parent, and the session still runs until its commit finds nothing.
    setSelectedNodeID(node->id());
    setSession(node->id(), QString(), true);
}

void DocumentController::newSiblingLine(bool after)
{
    SermonNodePtr p = findNode(m_selectedNodeID);
    if (!p || p == root())
        return;
    captureUndo();
    SermonNodePtr node =
        after ? root()->insertSiblingAfter(p->id(), QString()) : root()->insertSiblingBefore(p->id(), QString());
    if (node) {
        treeMutated();
        startNewLineSession(node);
    }
}

void DocumentController::newLineBelow()
{
    newSiblingLine(true);
}

void DocumentController::newLineAbove()
{
    newSiblingLine(false);
}

void DocumentController::newLineUnder()
{
    SermonNodePtr p = findNode(m_selectedNodeID);
    if (!p)
        return;
    captureUndo();
    SermonNodePtr node = p->addChild(QString());
    treeMutated();
    startNewLineSession(node);
}

void DocumentController::toggleQuote()
{
    const std::vector<SermonNodePtr> nodes = selectedNodes();
    if (nodes.empty())
        return;
    captureUndo();
    for (const auto& node : nodes) {
        if (node->isQuote())
            node->setQuote(false);
        else if (!node->hasChildren())
            node->setQuote(true);
    }
    treeMutated();
}

void DocumentController::setMarker(const QString& marker)
{
    const std::vector<SermonNodePtr> nodes = selectedNodes();
    if (nodes.empty() || marker.isEmpty())
        return;
    const bool allHaveIt =
        std::all_of(nodes.begin(), nodes.end(), [&](const SermonNodePtr& n) { return n->text().startsWith(marker); });
    captureUndo();
    for (const auto& node : nodes) {
        const QString stripped = Markers::stripMarker(node->text());
        node->setText(allHaveIt ? stripped : marker + QLatin1Char(' ') + stripped);
    }
    treeMutated();
}

void DocumentController::removeMarker()
{
    const std::vector<SermonNodePtr> nodes = selectedNodes();
    if (nodes.empty())
        return;
    captureUndo();
    for (const auto& node : nodes)
        node->setText(Markers::stripMarker(node->text()));
    treeMutated();
}
