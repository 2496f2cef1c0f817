#include "MapPointerInteraction.h"

#include "MapLayoutState.h"
#include "MindMapCanvas.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"
#include "editing/NodeActions.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

std::optional<NodeID> MapPointerInteraction::hitNode(const MapLayoutState& tables, QPointF p)
{
    for (const auto& [id, layout] : tables.cachedLayouts)
        if (layout.frame().contains(p))
            return id;
    return std::nullopt;
}

std::optional<NodeID> MapPointerInteraction::hitFoldButton(const MapLayoutState& tables, QPointF p)
{
    for (const auto& [id, layout] : tables.cachedLayouts) {
        if (layout.isLeaf)
            continue;
        const SermonNode* node = tables.node(id);
        if (!node || !node->hasChildren())
            continue;
        const double dx = p.x() - layout.maxX();
        const double dy = p.y() - layout.midY();
        if (dx * dx + dy * dy <= foldButtonReach * foldButtonReach)
            return id;
    }
    return std::nullopt;
}

std::optional<DropTarget> MapPointerInteraction::computeDropTarget(const MapLayoutState& tables,
                                                                   const std::unordered_set<NodeID>& dragNodeIDs,
                                                                   QPointF cursor)
{
    if (dragNodeIDs.empty() || !tables.root)
        return std::nullopt;
    // Nothing lands inside what is being moved, folded parts included. The members found below
    // another one move with it; the others are the tops.
    std::unordered_set<NodeID> excluded;
    std::unordered_set<NodeID> belowAnother;
    std::vector<std::pair<const SermonNode*, bool>> stack; // node, is a member where the walk starts
    for (const NodeID& id : dragNodeIDs)
        if (const SermonNode* node = tables.node(id))
            stack.emplace_back(node, true);
    while (!stack.empty()) {
        const auto [node, isStart] = stack.back();
        stack.pop_back();
        if (!isStart)
            belowAnother.insert(node->id());
        if (!excluded.insert(node->id()).second)
            continue;
        for (const auto& child : node->children())
            stack.emplace_back(child.get(), false);
    }

    const NodeLayout* nearest = nullptr;
    const SermonNode* nearestNode = nullptr;
    double best = std::numeric_limits<double>::infinity();
    for (const auto& [id, layout] : tables.cachedLayouts) {
        if (excluded.count(id))
            continue;
        const SermonNode* node = tables.node(id);
        // A quote takes no children, and offers no slot beside it either.
        if (!node || node->isQuote())
            continue;
        const double d = std::hypot(cursor.x() - layout.origin.x(), cursor.y() - layout.midY());
        if (d < best) {
            best = d;
            nearest = &layout;
            nearestNode = node;
        }
    }
    if (!nearest)
        return std::nullopt;

    const int count = int(nearestNode->children().size());
    DropTarget target{nearestNode->id(), count, cursor.y(), count};
    if (cursor.x() <= nearest->maxX()) {
        const SermonNodePtr parent = tables.root->parent(nearestNode->id());
        const int index = parent ? parent->indexOfChild(nearestNode->id()) : -1;
        if (parent && index >= 0) {
            const int at = cursor.y() >= nearest->midY() ? index + 1 : index;
            target = DropTarget{parent->id(), at, cursor.y(), at};
        }
    }
    // A single node is moved by an index that counts it in its old place, so dropped below that
    // place under the same parent it lands one slot further down: the indicator shows that slot.
    std::optional<NodeID> single;
    int tops = 0;
    for (const NodeID& id : dragNodeIDs)
        if (!belowAnother.count(id) && tables.node(id) && ++tops == 1)
            single = id;
    if (tops == 1 && target.parentID != *single) {
        const SermonNodePtr parent = tables.root->parent(*single);
        if (parent && parent->id() == target.parentID && parent->indexOfChild(*single) < target.index)
            target.landingIndex = std::min(target.index + 1, int(parent->children().size()));
    }
    return target;
}

std::vector<NodeID> MapPointerInteraction::visibleRange(const MapLayoutState& tables, const NodeID& a, const NodeID& b)
{
    std::vector<NodeID> shown;
    if (tables.root) {
        std::vector<const SermonNode*> stack{tables.root.get()};
        while (!stack.empty()) {
            const SermonNode* node = stack.back();
            stack.pop_back();
            shown.push_back(node->id());
            if (node->isCollapsed())
                continue;
            const auto& kids = node->children();
            for (auto it = kids.rbegin(); it != kids.rend(); ++it)
                stack.push_back(it->get());
        }
    }
    const auto i = std::find(shown.begin(), shown.end(), a);
    const auto j = std::find(shown.begin(), shown.end(), b);
    if (i == shown.end() || j == shown.end())
        return a == b ? std::vector<NodeID>{a} : std::vector<NodeID>{a, b};
    return i <= j ? std::vector<NodeID>(i, j + 1) : std::vector<NodeID>(j, i + 1);
}

MapPointerInteraction::MapPointerInteraction(MindMapCanvas& canvas)
    : m_canvas(canvas)
{
    auto monotonic = std::make_shared<QElapsedTimer>();
    monotonic->start();
    m_clock = [monotonic] { return double(monotonic->nsecsElapsed()) / 1e9; };
}

void MapPointerInteraction::setClock(std::function<double()> clock)
{
    if (clock)
        m_clock = std::move(clock);
}

void MapPointerInteraction::press(QPointF viewPoint)
{
    m_pressPoint = viewPoint;
    m_gesture = Gesture::none;
}

void MapPointerInteraction::move(QPointF viewPoint, Qt::KeyboardModifiers modifiers)
{
    if (!m_pressPoint)
        return;
    const QPointF translation = viewPoint - *m_pressPoint;
    if (m_gesture == Gesture::none) {
        if (std::hypot(translation.x(), translation.y()) < dragDistance)
            return;
        begin(m_canvas.canvasPoint(*m_pressPoint), modifiers);
    }
    update(m_canvas.canvasPoint(*m_pressPoint), m_canvas.canvasPoint(viewPoint), translation);
}

void MapPointerInteraction::release(QPointF viewPoint, Qt::KeyboardModifiers modifiers)
{
    if (!m_pressPoint)
        return;
    const QPointF pressed = *m_pressPoint;
    if (m_gesture == Gesture::none) {
        m_pressPoint.reset();
        tap(m_canvas.canvasPoint(pressed), modifiers);
        return;
    }
    update(m_canvas.canvasPoint(pressed), m_canvas.canvasPoint(viewPoint), viewPoint - pressed);
    end();
}

void MapPointerInteraction::tap(QPointF p, Qt::KeyboardModifiers modifiers)
{
    m_canvas.runClick([&] { tapNow(p, modifiers); });
}

void MapPointerInteraction::tapNow(QPointF p, Qt::KeyboardModifiers modifiers)
{
    DocumentController& c = *m_canvas.controller();
    const MapLayoutState& tables = m_canvas.layoutState();
    const bool shift = modifiers & Qt::ShiftModifier;
    const bool command = modifiers & Qt::ControlModifier;

    if (const auto fold = hitFoldButton(tables, p)) {
        m_canvas.commitEditing();
        c.setSelectedNodeID(*fold);
        const SermonNode* node = m_canvas.layoutState().node(*fold);
        m_canvas.performCommand(node && node->isCollapsed() ? NodeCommand::unfold : NodeCommand::fold);
        m_canvas.focusCanvas();
        return;
    }

    const double now = m_clock();
    const std::optional<NodeID> hit = hitNode(tables, p);
    if (hit && m_lastTapTime && m_lastTapNodeID && *hit == *m_lastTapNodeID
        && now - *m_lastTapTime < doubleClickInterval && !shift && !command) {
        m_lastTapTime.reset();
        m_lastTapNodeID.reset();
        c.startSession(*hit, false);
        return;
    }

    m_canvas.commitEditing();
    if (!hit) {
        c.setSelectedNodeIDs({});
        c.setSelectionAnchorID(std::nullopt);
        c.setSelectedNodeID(std::nullopt);
    } else if (shift) {
        const NodeID anchor = c.selectionAnchorID().value_or(c.selectedNodeID().value_or(*hit));
        if (!c.selectionAnchorID())
            c.setSelectionAnchorID(c.selectedNodeID());
        const auto range = visibleRange(tables, anchor, *hit);
        c.setExtendingSelection(true);
        c.setSelectedNodeIDs(QSet<NodeID>(range.begin(), range.end()));
        c.setExtendingSelection(true);
        c.setSelectedNodeID(*hit);
    } else if (command) {
        QSet<NodeID> ids = c.selectedNodeIDs();
        if (ids.isEmpty() && c.selectedNodeID())
            ids.insert(*c.selectedNodeID());
        std::optional<NodeID> primary = c.selectedNodeID();
        if (!ids.contains(*hit)) {
            ids.insert(*hit);
            primary = *hit;
        } else {
            ids.remove(*hit);
            if (primary == hit)
                primary = ids.isEmpty() ? std::nullopt : std::optional<NodeID>(*ids.begin());
        }
        c.setExtendingSelection(true);
        c.setSelectedNodeIDs(ids);
        c.setExtendingSelection(true);
        c.setSelectedNodeID(primary);
        c.setSelectionAnchorID(std::nullopt);
    } else {
        c.setSelectedNodeIDs({});
        c.setSelectionAnchorID(std::nullopt);
        c.setSelectedNodeID(*hit);
    }
    if (hit)
        if (const SermonNode* node = tables.node(*hit))
            c.setNavigationDepth(node->depth());

    m_canvas.focusCanvas();
    m_lastTapTime = now;
    m_lastTapNodeID = hit;
}

void MapPointerInteraction::begin(QPointF start, Qt::KeyboardModifiers modifiers)
{
    DocumentController& c = *m_canvas.controller();
    if (modifiers & Qt::ShiftModifier) {
        m_gesture = Gesture::lasso;
        m_lassoOrigin = start;
        // A lasso makes a new selection, so the open edit ends first, keeping what was typed.
        // A pan or a node drag leaves it open: the editor moves along with the map.
        m_canvas.commitEditing();
        m_canvas.setCursor(Qt::CrossCursor);
        return;
    }
    const MapLayoutState& tables = m_canvas.layoutState();
    const auto hit = hitNode(tables, start);
    if (hit && tables.root && *hit != tables.root->id()) {
        m_gesture = Gesture::nodeDrag;
        m_dragNodeID = hit;
        m_dragStartLocation = start;
        if (c.selectedNodeIDs().contains(*hit)) {
            m_dragNodeIDs = std::unordered_set<NodeID>(c.selectedNodeIDs().begin(), c.selectedNodeIDs().end());
            c.setExtendingSelection(true);
        } else {
            m_dragNodeIDs = {*hit};
        }
        c.setSelectedNodeID(*hit);
        m_canvas.setCursor(Qt::DragMoveCursor);
        return;
    }
    // Empty space, or the title, which never moves.
    m_gesture = Gesture::panning;
    m_panStart = m_canvas.viewport().panOffset();
    m_canvas.setCursor(Qt::ClosedHandCursor);
}

void MapPointerInteraction::update(QPointF, QPointF current, QPointF viewTranslation)
{
    DocumentController& c = *m_canvas.controller();
    switch (m_gesture) {
    case Gesture::none:
        return;
    case Gesture::lasso: {
        const QRectF rect(QPointF(std::min(m_lassoOrigin.x(), current.x()), std::min(m_lassoOrigin.y(), current.y())),
                          QSizeF(std::abs(current.x() - m_lassoOrigin.x()), std::abs(current.y() - m_lassoOrigin.y())));
        m_lassoRect = rect;
        QSet<NodeID> ids;
        for (const auto& [id, layout] : m_canvas.layoutState().cachedLayouts)
            if (layout.frame().intersects(rect))
                ids.insert(id);
        c.setExtendingSelection(true);
        c.setSelectedNodeIDs(ids);
        if (!ids.isEmpty() && !(c.selectedNodeID() && ids.contains(*c.selectedNodeID()))) {
            c.setExtendingSelection(true);
            c.setSelectedNodeID(*ids.begin());
        }
        c.setExtendingSelection(false);
        break;
    }
    case Gesture::panning: {
        MapViewport& viewport = m_canvas.viewport();
        viewport.setPanOffset(viewport.clampedPan(m_panStart + viewTranslation));
        if (viewport.onShowMinimap)
            viewport.onShowMinimap();
        break;
    }
    case Gesture::nodeDrag:
        m_dragOffset = current - m_dragStartLocation;
        m_dropTarget = computeDropTarget(m_canvas.layoutState(), m_dragNodeIDs, current);
        break;
    }
    m_canvas.update();
}

void MapPointerInteraction::end()
{
    DocumentController& c = *m_canvas.controller();
    if (m_gesture == Gesture::lasso)
        c.setSelectionAnchorID(std::nullopt);
    if (m_gesture == Gesture::nodeDrag && m_dropTarget)
        drop(*m_dropTarget);
    resetDrag();
    m_canvas.update();
}

void MapPointerInteraction::drop(const DropTarget& target)
{
    if (!m_canvas.document() || !m_dragNodeID)
        return;
    // The tree jumps to its new shape: the controller's relayout runs no transition.
    const QSet<NodeID> moving(m_dragNodeIDs.begin(), m_dragNodeIDs.end());
    m_canvas.controller()->dropNodes(*m_dragNodeID, moving, target.parentID, target.index);
}

void MapPointerInteraction::cancel()
{
    resetDrag();
    m_lastTapTime.reset();
    m_lastTapNodeID.reset();
}

void MapPointerInteraction::resetDrag()
{
    if (m_gesture != Gesture::none)
        m_canvas.unsetCursor();
    m_pressPoint.reset();
    m_gesture = Gesture::none;
    m_dragNodeID.reset();
    m_dragNodeIDs.clear();
    m_dragOffset = QPointF();
    m_dropTarget.reset();
    m_lassoRect.reset();
}

void MapPointerInteraction::apply(MapDrawState& state) const
{
    state.dragNodeID = m_dragNodeID;
    state.dropTarget = m_dropTarget;
    state.lassoRect = m_lassoRect;
}
