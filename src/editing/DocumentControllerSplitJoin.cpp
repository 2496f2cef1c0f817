// Split a drafted paragraph into lines, or join neighbouring lines into one. Joining puts soft
// line breaks between the texts, so splitting the result gives the lines back.

#include "DocumentController.h"

#include "TextPieces.h"
#include "core/SermonDocument.h"

#include <functional>

namespace {
// Cuts each selected leaf into pieces; `beforeFirstChange` runs once, just before the first cut.
std::vector<NodeID> splitLeaves(const SermonNodePtr& root, const std::vector<SermonNodePtr>& nodes,
                                const std::function<QStringList(const QString&)>& cut,
                                const std::function<void()>& beforeFirstChange)
{
    std::vector<NodeID> made;
    bool changed = false;
    for (const auto& node : nodes) {
        const SermonNodePtr owner = node->parentNode();
        if (node->hasChildren() || node == root || !owner)
            continue;
        const QStringList pieces = cut(node->text());
        if (pieces.size() < 2)
            continue;
        if (!changed) {
            beforeFirstChange();
            changed = true;
        }
        SermonNode& parent = *owner;
        const int i = node->indexInParent();
        parent.removeChild(i);
        for (int k = 0; k < int(pieces.size()); ++k) {
            // Each piece takes the line's place and its level.
            auto piece = SermonNode::make(pieces[k], node->depth());
            piece->setQuote(node->isQuote());
            parent.insertChildKeepingDepths(i + k, piece);
            made.push_back(piece->id());
        }
    }
    return made;
}
} // namespace

void DocumentController::split()
{
    const auto made = splitLeaves(root(), selectedNodes(), &TextPieces::lines, [this] { captureUndo(); });
    if (made.empty())
        return;
    treeMutated();
    selectNewNodes(made);
}

void DocumentController::splitSentences()
{
    const std::vector<SermonNodePtr> nodes = selectedNodes();
    if (nodes.empty())
        return;
    // Unlike split, the step is taken up front, even when no sentence boundary is found.
    captureUndo();
    const auto made = splitLeaves(root(), nodes, &TextPieces::sentences, [] {});
    if (made.empty())
        return;
    treeMutated();
    selectNewNodes(made);
}

std::optional<NodeID> DocumentController::join()
{
    const QSet<NodeID> ids = effectiveSelection();
    if (ids.size() < 2)
        return std::nullopt;

    // The parents of the selection, in tree order, so that the survivor is the first run.
    QSet<NodeID> parentIDs;
    for (const NodeID& id : ids)
        if (const SermonNodePtr node = root()->find(id); node && node->parentNode())
            parentIDs.insert(node->parentNode()->id());
    const std::vector<SermonNodePtr> parents = nodesInTreeOrder(parentIDs, false);

    std::optional<NodeID> survivor;
    bool captured = false;
    auto joinable = [&](const SermonNodePtr& n) { return ids.contains(n->id()) && !n->hasChildren(); };
    for (const auto& parent : parents) {
        const auto& kids = parent->children();
        for (size_t i = 0; i < kids.size(); ++i) {
            if (!joinable(kids[i]))
                continue;
            size_t end = i + 1;
            while (end < kids.size() && joinable(kids[end]))
                ++end;
            if (end - i < 2)
                continue;
            if (!captured) {
                captureUndo();
                captured = true;
            }
            QStringList texts;
            bool allQuotes = true;
            for (size_t k = i; k < end; ++k) {
                texts.append(kids[k]->text());
                allQuotes = allQuotes && kids[k]->isQuote();
            }
            kids[i]->setText(texts.join(TextPieces::softLineBreak));
            kids[i]->setQuote(allQuotes);
            if (!survivor)
                survivor = kids[i]->id();
            for (size_t k = end - 1; k > i; --k)
                parent->removeChild(int(k));
        }
    }
    if (!survivor)
        return std::nullopt;
    treeMutated();
    setSelectedNodeIDs({});
    m_selectionAnchorID.reset();
    setSelectedNodeID(*survivor);
    return survivor;
}
