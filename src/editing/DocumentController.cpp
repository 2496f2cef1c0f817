#include "DocumentController.h"

#include "core/SermonDocument.h"

#include <algorithm>

namespace {
// A selection this small is looked up id by id; a larger one costs one walk of the tree.
constexpr qsizetype fewIDs = 64;

// Where a node stands: its position among its siblings at every level, from the top down, so
// that comparing two gives their order in the tree.
std::vector<int> treePosition(const SermonNodePtr& node)
{
    std::vector<int> position;
    for (SermonNodePtr n = node, parent; (parent = n->parentNode()); n = parent)
        position.push_back(n->indexInParent());
    std::reverse(position.begin(), position.end());
    return position;
}

bool isShown(const SermonNodePtr& node)
{
    for (SermonNodePtr n = node->parentNode(); n; n = n->parentNode())
        if (n->isCollapsed())
            return false;
    return true;
}
} // namespace

DocumentController::DocumentController(SermonDocument* document, UndoManager* undoManager, QObject* parent)
    : QObject(parent)
    , m_document(document)
    , m_undoManager(undoManager)
{
    connect(m_document, &SermonDocument::undoRedoGenerationChanged, this,
            &DocumentController::restoreSelectionAfterUndo);
}

DocumentController::~DocumentController() = default;

// ---- Helpers shared by all operations -------------------------------------------------------

SermonNodePtr DocumentController::root() const
{
    return m_document->root();
}

SermonNodePtr DocumentController::findNode(const std::optional<NodeID>& id) const
{
    return id ? root()->find(*id) : SermonNodePtr();
}

bool DocumentController::selectionHoldsRoot(const QSet<NodeID>& ids) const
{
    return ids.contains(root()->id());
}

void DocumentController::captureUndo()
{
    m_document->captureUndo(m_selectedNodeID, m_undoManager);
}

void DocumentController::treeMutated(bool byEdit)
{
    // Every command ends here: a debug build checks that it left no depth out of step.
    Q_ASSERT_X(root()->depthsAreConsistent(), "DocumentController", "an edit left a depth out of step");
    if (onTreeMutated)
        onTreeMutated();
    if (byEdit)
        emit edited();
}

void DocumentController::requestVisible(const std::optional<NodeID>& id)
{
    if (id && onSelectionRequestVisible)
        onSelectionRequestVisible(*id);
}

void DocumentController::requestCanvasFocus()
{
    if (onRequestCanvasFocus)
        onRequestCanvasFocus();
}

// ---- Selection ------------------------------------------------------------------------------

bool DocumentController::setSelectedNodeID(std::optional<NodeID> id)
{
    if (m_selectedNodeID == id) {
        // The flag belongs to the very next change; an equal value must not leave it armed.
        m_isExtendingSelection = false;
        return false;
    }
    m_selectedNodeID = id;
    if (!m_isExtendingSelection) {
        m_selectedNodeIDs.clear();
        m_selectionAnchorID.reset();
    }
    m_isExtendingSelection = false;
    m_document->setCurrentSelectedNodeID(id);
    emit selectionChanged();
    requestVisible(id);
    return true;
}

bool DocumentController::setSelectedNodeIDs(const QSet<NodeID>& ids)
{
    if (m_selectedNodeIDs == ids)
        return false;
    m_selectedNodeIDs = ids;
    emit selectionChanged();
    return true;
}

QSet<NodeID> DocumentController::effectiveSelection() const
{
    QSet<NodeID> ids = m_selectedNodeIDs;
    if (m_selectedNodeID)
        ids.insert(*m_selectedNodeID);
    return ids;
}

std::vector<SermonNodePtr> DocumentController::selectedNodes() const
{
    return nodesInTreeOrder(effectiveSelection(), false);
}

std::vector<SermonNodePtr> DocumentController::selectedNodesInOrder() const
{
    return topmostNodes(effectiveSelection());
}

std::vector<SermonNodePtr> DocumentController::topmostNodes(const QSet<NodeID>& ids) const
{
    return nodesInTreeOrder(ids, true);
}

std::vector<SermonNodePtr> DocumentController::nodesInTreeOrder(const QSet<NodeID>& ids, bool topmostOnly) const
{
    std::vector<SermonNodePtr> nodes;
    if (ids.isEmpty())
        return nodes;
    if (ids.size() > fewIDs) {
        // Pre-order; for the topmost, a hit stops the descent, since nothing below it can be.
        std::vector<SermonNodePtr> stack{root()};
        while (!stack.empty()) {
            SermonNodePtr node = std::move(stack.back());
            stack.pop_back();
            const bool hit = ids.contains(node->id());
            if (hit)
                nodes.push_back(node);
            if (hit && topmostOnly)
                continue;
            const auto& kids = node->children();
            for (auto it = kids.rbegin(); it != kids.rend(); ++it)
                stack.push_back(*it);
        }
        return nodes;
    }
    std::vector<std::pair<std::vector<int>, SermonNodePtr>> found;
    for (const NodeID& id : ids) {
        SermonNodePtr node = root()->find(id);
        if (!node)
            continue;
        bool below = false;
        for (SermonNodePtr n = node->parentNode(); n && topmostOnly && !below; n = n->parentNode())
            below = ids.contains(n->id());
        if (!below)
            found.emplace_back(treePosition(node), std::move(node));
    }
    std::sort(found.begin(), found.end(), [](const auto& x, const auto& y) { return x.first < y.first; });
    for (auto& [position, node] : found)
        nodes.push_back(std::move(node));
    return nodes;
}

std::optional<ContiguousSelection> DocumentController::contiguousSelection() const
{
    const QSet<NodeID> ids = effectiveSelection();
    if (ids.isEmpty() || selectionHoldsRoot(ids))
        return std::nullopt;
    ContiguousSelection result;
    result.nodes = selectedNodesInOrder();
    if (result.nodes.empty())
        return std::nullopt;
    result.parent = root()->parent(result.nodes.front()->id());
    if (!result.parent)
        return std::nullopt;
    QSet<NodeID> inBlock;
    for (const auto& node : result.nodes)
        inBlock.insert(node->id());
    int first = -1;
    int last = -1;
    int found = 0;
    const auto& kids = result.parent->children();
    for (int i = 0; i < int(kids.size()); ++i) {
        if (!inBlock.contains(kids[i]->id()))
            continue;
        if (first < 0)
            first = i;
        last = i;
        ++found;
    }
    // Every node must stand under that same parent.
    if (first < 0 || found != int(result.nodes.size()))
        return std::nullopt;
    result.first = first;
    result.last = last;
    return result;
}

// ---- Navigation -----------------------------------------------------------------------------

std::optional<NodeID> DocumentController::verticalTarget(const NodeID& id, bool forward) const
{
    SermonNodePtr current = root()->find(id);
    if (!current)
        return std::nullopt; // a node gone from the tree
    for (SermonNodePtr parent; (parent = current->parentNode()); current = parent) {
        const auto& kids = parent->children();
        const int index = current->indexInParent() + (forward ? 1 : -1);
        if (index >= 0 && index < int(kids.size())) {
            SermonNodePtr node = kids[index];
            while (node->depth() < m_navigationDepth && !node->isCollapsed() && node->hasChildren())
                node = forward ? node->children().front() : node->children().back();
            return node->id();
        }
    }
    return std::nullopt; // past the first or last line
}

std::vector<NodeID> DocumentController::visibleRange(const NodeID& from, const NodeID& to) const
{
    SermonNodePtr first = root()->find(from);
    SermonNodePtr last = root()->find(to);
    if (!first || !last || !isShown(first) || !isShown(last))
        return from == to ? std::vector<NodeID>{from} : std::vector<NodeID>{from, to};
    if (treePosition(last) < treePosition(first))
        std::swap(first, last);
    // The shown lines from the first to the last, in tree order: the walk keeps the path of
    // parents with the position under each, so that it costs the range, not the tree.
    std::vector<std::pair<const SermonNode*, size_t>> path;
    for (SermonNodePtr n = first, parent; (parent = n->parentNode()); n = parent)
        path.emplace_back(parent.get(), size_t(n->indexInParent()));
    std::reverse(path.begin(), path.end());
    std::vector<NodeID> visible;
    const SermonNode* node = first.get();
    while (node) {
        visible.push_back(node->id());
        if (node == last.get())
            break;
        if (!node->isCollapsed() && node->hasChildren()) {
            path.emplace_back(node, 0);
            node = node->children().front().get();
            continue;
        }
        node = nullptr;
        while (!node && !path.empty()) {
            auto& [parent, index] = path.back();
            if (++index < parent->children().size())
                node = parent->children()[index].get();
            else
                path.pop_back();
        }
    }
    return visible;
}

void DocumentController::extendTo(const NodeID& target)
{
    if (!m_selectionAnchorID)
        m_selectionAnchorID = m_selectedNodeID;
    m_isExtendingSelection = true;
    const auto range = visibleRange(*m_selectionAnchorID, target);
    setSelectedNodeIDs(QSet<NodeID>(range.begin(), range.end()));
    setSelectedNodeID(target);
}

void DocumentController::moveSelection(bool forward)
{
    if (!m_selectedNodeID) {
        setSelectedNodeID(root()->id());
        return;
    }
    if (auto target = verticalTarget(*m_selectedNodeID, forward))
        setSelectedNodeID(*target);
}

void DocumentController::extendSelection(bool forward)
{
    if (!m_selectedNodeID) {
        setSelectedNodeID(root()->id());
        return;
    }
    if (auto target = verticalTarget(*m_selectedNodeID, forward))
        extendTo(*target);
}

std::optional<NodeID> DocumentController::parentTarget()
{
    SermonNodePtr parent = root()->parent(*m_selectedNodeID);
    if (!parent)
        return std::nullopt;
    m_navigationDepth = parent->depth();
    return parent->id();
}

std::optional<NodeID> DocumentController::firstChildTarget()
{
    SermonNodePtr node = findNode(m_selectedNodeID);
    if (!node || node->isCollapsed() || !node->hasChildren())
        return std::nullopt;
    m_navigationDepth = node->children().front()->depth();
    return node->children().front()->id();
}

// With nothing selected, each of the four goes to the title.
void DocumentController::selectParent()
{
    if (!m_selectedNodeID)
        setSelectedNodeID(root()->id());
    else if (auto target = parentTarget())
        setSelectedNodeID(*target);
}

void DocumentController::selectFirstChild()
{
    if (!m_selectedNodeID)
        setSelectedNodeID(root()->id());
    else if (auto target = firstChildTarget())
        setSelectedNodeID(*target);
}

void DocumentController::extendToParent()
{
    if (!m_selectedNodeID)
        setSelectedNodeID(root()->id());
    else if (auto target = parentTarget())
        extendTo(*target);
}

void DocumentController::extendToFirstChild()
{
    if (!m_selectedNodeID)
        setSelectedNodeID(root()->id());
    else if (auto target = firstChildTarget())
        extendTo(*target);
}

void DocumentController::selectAll()
{
    QSet<NodeID> ids;
    for (const auto& node : root()->flattened())
        ids.insert(node->id());
    setSelectedNodeIDs(ids);
}

bool DocumentController::deselectAll()
{
    if (effectiveSelection().isEmpty())
        return false;
    setSelectedNodeIDs({});
    setSelectedNodeID(std::nullopt);
    return true;
}

void DocumentController::selectNewNodes(const std::vector<NodeID>& ids)
{
    if (ids.empty())
        return;
    m_isExtendingSelection = true;
    setSelectedNodeIDs(QSet<NodeID>(ids.begin(), ids.end()));
    setSelectedNodeID(ids.front());
}

void DocumentController::restoreSelectionAfterUndo()
{
    const auto restored = m_document->lastRestoredNodeID();
    const NodeID id = restored && root()->find(*restored) ? *restored : root()->id();
    treeMutated(false);
    if (!setSelectedNodeID(id))
        requestVisible(id); // the rule scrolls only on a change
}
