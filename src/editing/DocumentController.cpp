#include "DocumentController.h"

#include "core/SermonDocument.h"

#include <algorithm>

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
    const QSet<NodeID> ids = effectiveSelection();
    std::vector<SermonNodePtr> nodes;
    if (ids.isEmpty())
        return nodes;
    for (const auto& node : root()->flattened())
        if (ids.contains(node->id()))
            nodes.push_back(node);
    return nodes;
}

std::vector<SermonNodePtr> DocumentController::selectedNodesInOrder() const
{
    return topmostNodes(effectiveSelection());
}

std::vector<SermonNodePtr> DocumentController::topmostNodes(const QSet<NodeID>& ids) const
{
    std::vector<SermonNodePtr> nodes;
    if (ids.isEmpty())
        return nodes;
    // Pre-order with a flag for "an ancestor is in the set"; a hit stops the descent, since
    // nothing below it can be topmost.
    std::vector<SermonNodePtr> stack{root()};
    while (!stack.empty()) {
        SermonNodePtr node = std::move(stack.back());
        stack.pop_back();
        if (ids.contains(node->id())) {
            nodes.push_back(node);
            continue;
        }
        const auto& kids = node->children();
        for (auto it = kids.rbegin(); it != kids.rend(); ++it)
            stack.push_back(*it);
    }
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
    const auto parents = root()->parentIndex();
    NodeID current = id;
    while (true) {
        const auto p = parents.find(current);
        if (p == parents.end())
            return std::nullopt; // the root, or a node gone from the tree
        const auto& kids = p->second->children();
        const int index = p->second->indexOfChild(current) + (forward ? 1 : -1);
        if (index >= 0 && index < int(kids.size())) {
            SermonNodePtr node = kids[index];
            while (node->depth() < m_navigationDepth && !node->isCollapsed() && node->hasChildren())
                node = forward ? node->children().front() : node->children().back();
            return node->id();
        }
        current = p->second->id();
    }
}

std::vector<NodeID> DocumentController::visibleRange(const NodeID& from, const NodeID& to) const
{
    std::vector<NodeID> visible;
    std::vector<SermonNode*> stack{root().get()};
    while (!stack.empty()) {
        SermonNode* node = stack.back();
        stack.pop_back();
        visible.push_back(node->id());
        if (node->isCollapsed())
            continue;
        const auto& kids = node->children();
        for (auto it = kids.rbegin(); it != kids.rend(); ++it)
            stack.push_back(it->get());
    }
    const auto a = std::find(visible.begin(), visible.end(), from);
    const auto b = std::find(visible.begin(), visible.end(), to);
    if (a == visible.end() || b == visible.end())
        return from == to ? std::vector<NodeID>{from} : std::vector<NodeID>{from, to};
    return a <= b ? std::vector<NodeID>(a, b + 1) : std::vector<NodeID>(b, a + 1);
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
