#include "ColumnCanvas.h"

#include "CollapseResolver.h"
#include "ColumnDragHandleOverlay.h"
#include "ColumnEditorOverlay.h"
#include "ColumnWidthsStore.h"
#include "WrappedLines.h"
#include "look/Look.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "editing/DocumentController.h"
#include "editing/MemoryPasteboard.h"
#include "editing/TextPieces.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {
// A mouse wheel notch (15 degrees) moves the table 60 points; touchpads give their own pixels.
constexpr double pointsPerWheelEighthDegree = 0.5;
constexpr double inset = ColumnLayout::columnTextInset;
} // namespace

ColumnCanvas::ColumnCanvas(SermonDocument* document, ColumnWidthsStore* widths, QWidget* parent)
    : QWidget(parent)
    , m_document(document ? document : new SermonDocument(SermonNode::make(), {}, this))
    , m_widths(widths ? widths : new ColumnWidthsStore(this))
    , m_controller(new DocumentController(m_document, nullptr, this))
    , m_ownPasteboard(std::make_unique<MemoryPasteboard>())
    , m_handles(new ColumnDragHandleOverlay(m_widths, this))
    , m_editor(new ColumnEditorOverlay(this))
{
    setObjectName(QStringLiteral("columnCanvas"));
    setAccessibleName(QStringLiteral("columnCanvas"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_editor->hide();
    m_controller->setPasteboard(m_ownPasteboard.get());
    m_columnWidths = m_widths->config();
    m_lastDark = Look::isDarkAppearance();

    DocumentController* c = m_controller;
    c->onTreeMutated = [this] { recomputeLayout(true); };
    c->onSelectionRequestVisible = [this](const NodeID& id) { revealNode(id); };
    c->onRequestCanvasFocus = [this] { takeFocus(); };
    connect(c, &DocumentController::selectionChanged, this, qOverload<>(&QWidget::update));
    connect(c, &DocumentController::editingChanged, this, [this] {
        editingTextChanged();
        syncEditor();
    });
    connect(c, &DocumentController::edited, this, &ColumnCanvas::edited);

    // A width set in any window (or by another program) relays at once, without a glide.
    connect(m_widths, &ColumnWidthsStore::changed, this, [this] {
        m_columnWidths = m_widths->config();
        recomputeLayout(false);
    });
    // The tree was put in place whole (read again from its file, or undone).
    connect(m_document, &SermonDocument::rootChanged, this, [this] { recomputeLayout(true); });
    connect(&m_animator, &ColumnAnimator::displayFramesChanged, this, [this] {
        refreshEffective(false);
        placeOverlays();
        update();
    });

    m_editor->onTextChanged = [c](const QString& text) { c->setEditingText(text); };
    m_editor->onCancel = [this] { endEdit(false); };
    m_editor->onShiftTab = [this] { endEdit(true); };
    m_editor->onTab = [this] { editorCreate(Creation::child); };
    m_editor->onEnter = [this] { editorCreate(Creation::siblingBelow); };
    m_editor->onCommandEnter = [this] { editorCreate(Creation::siblingAbove); };
    m_editor->onOptionEnter = [this](int cursor) { editorSplit(cursor); };

    recomputeLayout(true);
}

ColumnCanvas::~ColumnCanvas()
{
    m_controller->disconnect(this);
    m_controller->onTreeMutated = nullptr;
    m_controller->onSelectionRequestVisible = nullptr;
    m_controller->onRequestCanvasFocus = nullptr;
    m_editor->disconnect(this);
    m_editor->onTextChanged = nullptr;
}

void ColumnCanvas::setUndoManager(UndoManager* manager)
{
    m_controller->setUndoManager(manager);
}

void ColumnCanvas::setPasteboard(Pasteboard* pasteboard)
{
    m_controller->setPasteboard(pasteboard ? pasteboard : m_ownPasteboard.get());
}

SermonNodePtr ColumnCanvas::root() const
{
    return m_document->root();
}

SermonNodePtr ColumnCanvas::find(const std::optional<NodeID>& id) const
{
    return id ? root()->find(*id) : SermonNodePtr();
}

// ---- Layout ---------------------------------------------------------------------------------

void ColumnCanvas::recomputeLayout(bool animated)
{
    ColumnLayout::compute(*root(), m_columnWidths.widths(), m_layout);
    walkTree();
    settleLayout(animated);
}

void ColumnCanvas::relayText(const SermonNode& node)
{
    // Frames hold rows, not text: while the edited cell keeps its row count (or is hidden) the
    // layout comes out as it was, and only the glide, if one runs, has to stop.
    const auto f = m_layout.frames.find(node.id());
    const double height = f == m_layout.frames.end()
        ? 0
        : wrappedLineCount(node.text(), false, f->second.size.width()) * ColumnLayout::rowHeight;
    if (f == m_layout.frames.end() || height == f->second.size.height()) {
        if (!m_displayIsLayout) {
            m_displayIsLayout = true;
            m_animator.stop(m_layout.frames);
        }
        update();
        return;
    }
    resizeCell(node, f->second, height);
    m_targetIndex.refresh();
    m_panOffset = clampedPan(m_panOffset);
    m_displayIsLayout = true;
    m_animator.stop(m_layout.frames);
    refreshEffective(true);
    placeOverlays();
    update();
}

void ColumnCanvas::resizeCell(const SermonNode& node, ColumnNodeFrame& cell, double height)
{
    // What a whole layout would give, worked out from the cell upwards: its branch's bottom
    // moves, the branches after it move down with it, and so on up to the root. Rows are whole
    // multiples of the row height, so the sums are exact.
    std::vector<const SermonNode*> path; // root to the cell's node, found without recursion
    {
        std::vector<std::pair<const SermonNode*, size_t>> stack{{root().get(), 0}};
        while (!stack.empty() && stack.back().first != &node) {
            auto& [at, next] = stack.back();
            if (next < at->children().size())
                stack.emplace_back(at->children()[next++].get(), 0);
            else
                stack.pop_back();
        }
        for (const auto& step : stack)
            path.push_back(step.first);
    }
    if (path.empty())
        return;
    const auto shiftBranch = [this](const SermonNode& top, double dy) {
        std::vector<const SermonNode*> pending{&top};
        while (!pending.empty()) {
            const SermonNode* n = pending.back();
            pending.pop_back();
            const auto f = m_layout.frames.find(n->id());
            if (f == m_layout.frames.end())
                continue;
            ColumnNodeFrame& frame = f->second;
            frame.origin.ry() += dy;
            frame.subtreeYRange.lower += dy;
            frame.subtreeYRange.upper += dy;
            if (!n->isCollapsed())
                for (const SermonNodePtr& child : n->children())
                    pending.push_back(child.get());
        }
    };
    cell.size.setHeight(height);
    for (size_t i = path.size(); i-- > 0;) {
        const SermonNode& at = *path[i];
        ColumnNodeFrame& frame = m_layout.frames.at(at.id());
        double bottom = frame.origin.y();
        if (!at.isCollapsed() && !at.children().empty())
            bottom = m_layout.frames.at(at.children().back()->id()).subtreeYRange.upper;
        bottom = std::max(bottom, frame.origin.y() + frame.size.height());
        const double dy = bottom - frame.subtreeYRange.upper;
        frame.subtreeYRange.upper = bottom;
        if (i == 0)
            m_layout.totalSize.setHeight(bottom);
        if (dy == 0 || i == 0)
            break;
        const auto& siblings = path[i - 1]->children();
        auto after = std::find_if(siblings.begin(), siblings.end(), [&](const auto& c) { return c.get() == &at; });
        for (++after; after != siblings.end(); ++after)
            shiftBranch(**after, dy);
    }
}

void ColumnCanvas::walkTree()
{
    const SermonNodePtr& top = root();
    // One walk of the whole tree, hidden nodes too, without recursion: the lookup and the next
    // siblings everywhere, and the deepest column of each visible subtree.
    m_subtreeRightmost.clear();
    m_nextSiblingID.clear();
    m_nodeLookup.clear();
    m_columnOrder.assign(size_t(std::max(m_layout.columnCount, 0)), {});
    m_nodeLookup.reserve(m_layout.frames.size());
    const auto columnOf = [this](const SermonNode& node) {
        const auto f = m_layout.frames.find(node.id());
        return f != m_layout.frames.end() ? f->second.column : 0;
    };
    struct Step {
        const SermonNodePtr* node;
        size_t nextChild;
        int rightmost;
        bool isVisible;
    };
    std::vector<Step> stack;
    stack.push_back({&top, 0, columnOf(*top), true});
    m_nodeLookup.emplace(top->id(), top);
    while (!stack.empty()) {
        Step& step = stack.back();
        const SermonNode& node = **step.node;
        const auto& children = node.children();
        if (step.nextChild == 0) {
            for (size_t i = 0; i + 1 < children.size(); ++i)
                m_nextSiblingID.emplace(children[i]->id(), children[i + 1]->id());
            // Nodes of one depth are met top to bottom.
            if (const auto f = m_layout.frames.find(node.id()); step.isVisible && f != m_layout.frames.end())
                m_columnOrder[size_t(f->second.column)].push_back(node.id());
        }
        if (step.nextChild < children.size()) {
            const SermonNodePtr& child = children[step.nextChild++];
            const bool visible = step.isVisible && !node.isCollapsed();
            m_nodeLookup.emplace(child->id(), child);
            stack.push_back({&child, 0, columnOf(*child), visible});
            continue;
        }
        const Step done = step;
        stack.pop_back();
        if (!done.isVisible)
            continue;
        m_subtreeRightmost.emplace(node.id(), done.rightmost);
        if (!stack.empty())
            stack.back().rightmost = std::max(stack.back().rightmost, done.rightmost);
    }
}

void ColumnCanvas::settleLayout(bool animated)
{
    m_targetIndex.rebuild(m_layout.frames, m_columnOrder);
    m_panOffset = clampedPan(m_panOffset);
    // A session on a line that has gone (undone, cut) ends with it.
    if (m_controller->editingNodeID() && !find(m_controller->editingNodeID()))
        m_controller->endSession();
    if (animated) {
        m_displayIsLayout = false;
        m_animator.animate(m_layout.frames);
        // Without a glide to run (the very first layout), the layout's frames are drawn as given.
        m_displayIsLayout = !m_animator.isRunning() && m_animator.showsTargetNodes();
    } else {
        m_displayIsLayout = true;
        m_animator.stop(m_layout.frames);
    }
    refreshEffective(true);
    placeOverlays();
    update();
}

void ColumnCanvas::refreshEffective(bool layoutChanged)
{
    if (m_displayIsLayout) {
        // The animator holds a copy of the layout's frames: the layout's own are drawn, through
        // the index already made for them.
        m_effectiveFrames = &m_layout.frames;
        m_mergedFrames.clear();
        return;
    }
    const ColumnFrames& display = m_animator.displayFrames();
    const int lastColumn = m_layout.columnCount - 1;
    if (!layoutChanged && m_effectiveFrames == &display && m_indexedGeneration == m_animator.displayGeneration()) {
        // A glide step: the same entries moved in place.
        m_effectiveIndex.refresh();
        return;
    }
    m_indexedGeneration = m_animator.displayGeneration();
    m_mergedFrames.clear();
    if (m_animator.showsTargetNodes()) {
        // The layout's nodes, all in present columns: drawn as they are.
        m_effectiveFrames = &display;
        m_effectiveIndex.rebuild(display, m_columnOrder);
        return;
    }
    m_mergedFrames.reserve(display.size());
    // A column that has just gone away is not drawn while the glide settles.
    for (const auto& [id, frame] : display)
        if (frame.column <= lastColumn)
            m_mergedFrames.emplace(id, frame);
    // A new node stands at its place at once, also before the glide's first tick.
    for (const auto& [id, frame] : m_layout.frames)
        m_mergedFrames.emplace(id, frame);
    m_effectiveFrames = &m_mergedFrames;
    m_effectiveIndex.rebuild(m_mergedFrames, m_layout.columnCount);
}

// ---- Scrolling ------------------------------------------------------------------------------

QPointF ColumnCanvas::clampedPan(QPointF offset) const
{
    const QSizeF total = m_layout.totalSize;
    // The whole width, not the width less the view: every column but the last may become a strip.
    const double minX = width() < total.width() ? -total.width() : 0;
    const double minY = std::min(height() - total.height(), 0.0);
    return QPointF(std::min(std::max(offset.x(), minX), 0.0), std::min(std::max(offset.y(), minY), 0.0));
}

void ColumnCanvas::setPanOffset(QPointF offset)
{
    offset = clampedPan(offset);
    if (offset == m_panOffset)
        return;
    m_panOffset = offset;
    placeOverlays();
    update();
}

void ColumnCanvas::scrollBy(double dx, double dy)
{
    setPanOffset(m_panOffset + QPointF(dx, dy));
}

void ColumnCanvas::revealNode(const NodeID& id)
{
    const auto f = m_layout.frames.find(id);
    if (f == m_layout.frames.end())
        return;
    const ColumnNodeFrame& frame = f->second;
    const double margin = revealMargin;
    // The whole subtree counts, not only the text; the left and top edges win.
    const double left = frame.origin.x() + m_panOffset.x();
    const double right = left + frame.size.width();
    const double top = frame.subtreeYRange.lower + m_panOffset.y();
    const double bottom = frame.subtreeYRange.upper + m_panOffset.y();
    double dx = 0;
    if (right > width() - margin)
        dx = (width() - margin) - right;
    if (left + dx < margin)
        dx = margin - left;
    double dy = 0;
    if (bottom > height() - margin)
        dy = (height() - margin) - bottom;
    if (top + dy < margin)
        dy = margin - top;
    if (dx == 0 && dy == 0)
        return;
    const QPointF target = clampedPan(m_panOffset + QPointF(dx, dy));
    m_scrollAnimator.animate(m_panOffset, target, [this](QPointF p) { setPanOffset(p); });
}

// ---- Hit testing ----------------------------------------------------------------------------

std::optional<NodeID> ColumnCanvas::hitTest(QPointF point) const
{
    const ColumnLayout& layout = m_layout;
    const double y = point.y() - m_panOffset.y();
    const auto adjusted = CollapseResolver::adjustedColumns(layout.columnCount, layout.columnXEdges, -m_panOffset.x());
    int column = -1;
    if (adjusted.empty()) {
        const double x = point.x() - m_panOffset.x();
        for (int c = 0; c < layout.columnCount; ++c)
            if (layout.columnXEdges[size_t(c)] <= x && x < layout.columnXEdges[size_t(c) + 1])
                column = c;
    } else {
        for (const auto& a : adjusted)
            if (a.xOrigin <= point.x() && point.x() < a.xOrigin + a.displayWidth) {
                column = a.column;
                break;
            }
    }
    if (column < 0)
        return std::nullopt;
    // A node answers over the whole height of its subtree.
    std::optional<NodeID> hit;
    effectiveIndex().forEachNear(column, y, y, [&](const ColumnNodeFrame& frame) {
        if (!hit && frame.subtreeYRange.contains(y))
            hit = frame.nodeID;
    });
    return hit;
}

// ---- Overlays -------------------------------------------------------------------------------

void ColumnCanvas::placeOverlays()
{
    m_handles->setGeometry(rect());
    m_handles->setColumns(m_layout.columnXEdges, m_layout.columnCount, height(), m_panOffset.x());
    if (!m_editor->isVisible() || !m_editorNodeID)
        return;
    const auto f = m_effectiveFrames->find(*m_editorNodeID);
    if (f == m_effectiveFrames->end())
        return;
    const ColumnNodeFrame& frame = f->second;
    const auto adjusted =
        CollapseResolver::adjustedColumns(m_layout.columnCount, m_layout.columnXEdges, -m_panOffset.x());
    const double columnX = size_t(frame.column) < adjusted.size() ? adjusted[size_t(frame.column)].xOrigin
                                                                  : frame.origin.x() + m_panOffset.x();
    const double x = columnX + inset;
    const double y = frame.origin.y() + m_panOffset.y() + ColumnEditorOverlay::offsetFromCellTop(frame.column == 0);
    const double w = std::max(frame.size.width() - 2 * inset, 1.0);
    m_editor->setGeometry(
        QRect(int(std::lround(x)), int(std::lround(y)), int(std::ceil(w)), int(std::ceil(frame.size.height()))));
    m_editor->raise();
}

void ColumnCanvas::syncEditor()
{
    const std::optional<NodeID> id = m_controller->editingNodeID();
    const bool hasFrame = id && m_effectiveFrames->count(*id);
    if (!hasFrame) {
        m_editorNodeID.reset();
        if (m_editor->isVisible()) {
            const bool hadFocus = m_editor->hasFocus();
            m_editor->hide();
            if (hadFocus)
                takeFocus();
        }
        return;
    }
    const ColumnNodeFrame& frame = m_effectiveFrames->at(*id);
    const bool isRoot = frame.column == 0;
    if (!m_editor->isVisible() || m_editorNodeID != id) {
        // Opened, or re-targeted to the next line: the same field goes on.
        m_editorNodeID = id;
        if (m_editOriginID != id) {
            // A session begun elsewhere (a menu command): its text so far is what Escape restores.
            m_editOriginalText = m_controller->editingText();
            m_editOriginID = id;
        }
        m_editor->open(m_controller->editingText(), frame.size.width(), isRoot);
        m_editor->show();
        placeOverlays();
        m_editor->setFocus();
        return;
    }
    m_editor->setRoot(isRoot);
    m_editor->setColumnWidth(frame.size.width());
    m_editor->setModelText(m_controller->editingText());
    placeOverlays();
}

void ColumnCanvas::editingTextChanged()
{
    // The layout follows every keystroke: the typed text stands in the node at once.
    const SermonNodePtr node = find(m_controller->editingNodeID());
    if (!node || node->text() == m_controller->editingText())
        return;
    node->setText(m_controller->editingText());
    relayText(*node);
    emit edited();
}

void ColumnCanvas::takeFocus()
{
    setFocus(Qt::OtherFocusReason);
}

// ---- Editing --------------------------------------------------------------------------------

void ColumnCanvas::captureUndo(const SermonNodePtr& editedNode, bool isNew)
{
    // Typing has already put the text in the node; the step must hold the text from before.
    if (editedNode && !isNew && editedNode->text() != m_editOriginalText) {
        const QString typed = editedNode->text();
        editedNode->setText(m_editOriginalText);
        m_document->captureUndo(m_controller->selectedNodeID(), m_controller->undoManager());
        editedNode->setText(typed);
        return;
    }
    m_document->captureUndo(m_controller->selectedNodeID(), m_controller->undoManager());
}

void ColumnCanvas::beginEdit(const NodeID& id, bool isNew)
{
    const SermonNodePtr node = find(id);
    if (!node)
        return;
    m_editOriginalText = node->text();
    m_editOriginID = id;
    m_controller->startSession(id, isNew);
}

void ColumnCanvas::commitEditing()
{
    if (m_controller->editingNodeID())
        endEdit(true);
}

void ColumnCanvas::removeEmptied(const SermonNodePtr& node, bool isNew)
{
    const SermonNodePtr parent = root()->parent(node->id());
    if (!parent)
        return;
    if (!isNew)
        captureUndo(node, false);
    // The sibling before it, else the one after it, else the parent.
    const auto& kids = parent->children();
    const int i = parent->indexOfChild(node->id());
    NodeID next = parent->id();
    if (i >= 1)
        next = kids[size_t(i) - 1]->id();
    else if (kids.size() >= 2)
        next = kids[size_t(i) + 1]->id();
    root()->removeNode(node->id());
    recomputeLayout(true);
    m_controller->setSelectedNodeID(find(next) ? next : root()->id());
    emit edited();
}

void ColumnCanvas::endEdit(bool commit)
{
    const SermonNodePtr node = find(m_controller->editingNodeID());
    if (!node) {
        m_controller->endSession();
        takeFocus();
        return;
    }
    const QString typed = m_controller->editingText();
    const bool isNew = m_controller->editingIsNew();
    m_controller->endSession();
    const QString text = commit ? typed.trimmed() : m_editOriginalText;
    if (text.isEmpty() && node != root()) {
        // An emptied line goes, whatever commit says; a new one leaves no step behind.
        removeEmptied(node, isNew);
    } else {
        if (text != m_editOriginalText && !isNew)
            captureUndo(node, false);
        node->setText(text);
        recomputeLayout(true);
        m_controller->setSelectedNodeID(node->id());
        emit edited();
    }
    takeFocus();
}

void ColumnCanvas::editorCreate(Creation creation)
{
    const SermonNodePtr node = find(m_controller->editingNodeID());
    if (!node) {
        m_controller->endSession();
        takeFocus();
        return;
    }
    const bool isNew = m_controller->editingIsNew();
    const QString trimmed = m_controller->editingText().trimmed();
    if (trimmed.isEmpty() && node != root()) {
        removeEmptied(node, isNew);
        m_controller->endSession();
        takeFocus();
        return;
    }
    const bool isRoot = node == root();
    if (!isNew || (isRoot && creation != Creation::child) || (creation == Creation::child && node->isQuote())) {
        // A plain commit: only a line just made chains on to the next one.
        if (trimmed != m_editOriginalText && !isNew)
            captureUndo(node, false);
        node->setText(trimmed);
        m_controller->endSession();
        recomputeLayout(true);
        m_controller->setSelectedNodeID(node->id());
        emit edited();
        takeFocus();
        return;
    }
    node->setText(trimmed);
    m_document->captureUndo(m_controller->selectedNodeID(), m_controller->undoManager());
    SermonNodePtr created;
    switch (creation) {
    case Creation::child:
        created = node->addChild(QString());
        break;
    case Creation::siblingBelow:
        created = root()->insertSiblingAfter(node->id(), QString());
        break;
    case Creation::siblingAbove:
        created = root()->insertSiblingBefore(node->id(), QString());
        break;
    }
    m_editOriginalText.clear();
    m_editOriginID = created->id();
    recomputeLayout(true);
    m_controller->startSession(created->id(), true);
    emit edited();
}

void ColumnCanvas::editorSplit(int cursor)
{
    const SermonNodePtr node = find(m_controller->editingNodeID());
    if (!node) {
        m_controller->endSession();
        takeFocus();
        return;
    }
    const SermonNodePtr parent = root()->parent(node->id());
    if (!parent)
        return; // the title is never split
    captureUndo(node, m_controller->editingIsNew());
    const QString whole = TextPieces::editorText(m_controller->editingText());
    const qsizetype cut = std::clamp<qsizetype>(cursor, 0, whole.size());
    const QString head = TextPieces::modelText(whole.left(cut)).trimmed();
    const QString tail = TextPieces::modelText(whole.mid(cut)).trimmed();
    const bool wasQuote = node->isQuote();
    const int index = parent->indexOfChild(node->id());
    node->setText(head.isEmpty() ? QStringLiteral(" ") : head);
    m_controller->endSession();
    SermonNodePtr second;
    if (head.isEmpty()) {
        // Nothing stood before the cursor: the text behind it takes the line's place.
        root()->removeNode(node->id());
        second = SermonNode::make(tail, node->depth());
        parent->insertChildKeepingDepths(index, second);
    } else {
        second = root()->insertSiblingAfter(node->id(), tail);
    }
    second->setQuote(wasQuote);
    m_editOriginalText = tail;
    m_editOriginID = second->id();
    recomputeLayout(true);
    m_controller->startSession(second->id(), tail.isEmpty());
    emit edited();
}

// ---- Keys and pointer -----------------------------------------------------------------------

std::optional<NodeID> ColumnCanvas::nearestInColumn(const NodeID& id, bool above) const
{
    const auto f = m_layout.frames.find(id);
    if (f == m_layout.frames.end())
        return std::nullopt;
    const ColumnNodeFrame& current = f->second;
    std::optional<NodeID> best;
    double bestY = 0;
    for (const auto& [otherID, frame] : m_layout.frames) {
        if (frame.column != current.column)
            continue;
        const double y = frame.origin.y();
        if (above ? (y < current.origin.y() && (!best || y > bestY))
                  : (y > current.origin.y() && (!best || y < bestY))) {
            best = otherID;
            bestY = y;
        }
    }
    return best;
}

bool ColumnCanvas::handleKey(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const int key = event->key();
    DocumentController* c = m_controller;
    if (modifiers == Qt::ControlModifier && key == Qt::Key_Z) {
        c->undoManager() ? c->undoManager()->undo() : m_document->undo();
        return true;
    }
    if (modifiers == (Qt::ControlModifier | Qt::ShiftModifier) && key == Qt::Key_Z) {
        c->undoManager() ? c->undoManager()->redo() : m_document->redo();
        return true;
    }
    if (modifiers == Qt::ControlModifier && (key == Qt::Key_X || key == Qt::Key_C || key == Qt::Key_V)) {
        key == Qt::Key_X ? c->cut() : key == Qt::Key_C ? c->copy() : c->paste();
        return true;
    }
    if (key == Qt::Key_Backspace || key == Qt::Key_Delete) {
        c->deleteSelection();
        return true;
    }
    if (key == Qt::Key_Escape) {
        c->setSelectedNodeID(std::nullopt);
        return true;
    }

    // The rest needs a selected line.
    const SermonNodePtr node = find(c->selectedNodeID());
    if (!node)
        return false;
    const bool alt = modifiers & Qt::AltModifier;
    const bool ctrl = modifiers & Qt::ControlModifier;
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab: {
        if (node->isQuote())
            return true; // a quote holds no lines under it
        m_document->captureUndo(c->selectedNodeID(), c->undoManager());
        const SermonNodePtr child = node->addChild(QString());
        recomputeLayout(true);
        emit edited();
        beginEdit(child->id(), true);
        return true;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        if (node == root())
            return true;
        m_document->captureUndo(c->selectedNodeID(), c->undoManager());
        const SermonNodePtr sibling = root()->insertSiblingAfter(node->id(), QString());
        recomputeLayout(true);
        emit edited();
        beginEdit(sibling->id(), true);
        return true;
    }
    case Qt::Key_Space:
        beginEdit(node->id(), false);
        return true;
    case Qt::Key_Left:
        if (alt)
            c->promote();
        else if (ctrl)
            c->fold();
        else if (const SermonNodePtr parent = root()->parent(node->id()))
            c->setSelectedNodeID(parent->id());
        return true;
    case Qt::Key_Right:
        if (alt)
            c->demote();
        else if (ctrl || node->isCollapsed())
            c->unfold();
        else if (node->hasChildren())
            c->setSelectedNodeID(node->children().front()->id());
        return true;
    case Qt::Key_Up:
        if (alt)
            c->moveUp();
        else if (const auto above = nearestInColumn(node->id(), true))
            c->setSelectedNodeID(above);
        return true;
    case Qt::Key_Down:
        if (alt)
            c->moveDown();
        else if (const auto below = nearestInColumn(node->id(), false))
            c->setSelectedNodeID(below);
        return true;
    default:
        return false;
    }
}

void ColumnCanvas::keyPressEvent(QKeyEvent* event)
{
    // While a line is open its editor has the keys.
    if (m_controller->editingNodeID() || !handleKey(event)) {
        event->ignore();
        return;
    }
    event->accept();
}

bool ColumnCanvas::focusNextPrevChild(bool)
{
    return false; // Tab adds a line
}

void ColumnCanvas::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    // A click elsewhere ends an open edit, keeping what was typed.
    commitEditing();
    if (const auto id = hitTest(event->position()))
        m_controller->setSelectedNodeID(id);
    takeFocus();
    event->accept();
}

void ColumnCanvas::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (const auto id = hitTest(event->position()))
        beginEdit(*id, false);
    event->accept();
}

void ColumnCanvas::wheelEvent(QWheelEvent* event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        event->ignore(); // there is no zoom here
        return;
    }
    QPointF delta = event->pixelDelta();
    if (delta.isNull())
        delta = QPointF(event->angleDelta()) * pointsPerWheelEighthDegree;
    // A plain mouse wheel with Shift scrolls sideways.
    if ((event->modifiers() & Qt::ShiftModifier) && delta.x() == 0)
        delta = QPointF(delta.y(), 0);
    scrollBy(delta.x(), delta.y());
    event->accept();
}

// ---- Appearance and drawing -----------------------------------------------------------------

void ColumnCanvas::appear()
{
    m_hasAppeared = true;
    m_controller->setSelectedNodeID(root()->id());
    recomputeLayout(true);
    QTimer::singleShot(0, this, [this] { takeFocus(); });
}

void ColumnCanvas::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!m_hasAppeared)
        appear();
}

void ColumnCanvas::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_panOffset = clampedPan(m_panOffset);
    placeOverlays();
}

ColumnDrawInput ColumnCanvas::drawInput() const
{
    ColumnDrawInput in;
    in.layout = &m_layout;
    in.frames = m_effectiveFrames;
    in.index = &effectiveIndex();
    in.targetIndex = &m_targetIndex;
    in.subtreeRightmost = &m_subtreeRightmost;
    in.nextSiblingID = &m_nextSiblingID;
    in.nodeLookup = &m_nodeLookup;
    in.panOffset = m_panOffset;
    in.viewportSize = QSizeF(size());
    in.selectedNodeID = m_controller->selectedNodeID();
    in.editingNodeID = m_controller->editingNodeID();
    return in;
}

ColumnDrawing::Stats ColumnCanvas::drawInto(QPainter& painter, bool isDark) const
{
    const ColumnColors colors = ColumnColors::forAppearance(isDark, palette());
    painter.fillRect(QRectF(QPointF(0, 0), QSizeF(size())), colors.background);
    return ColumnDrawing::draw(painter, drawInput(), colors);
}

void ColumnCanvas::paintEvent(QPaintEvent*)
{
    const bool isDark = Look::isDarkAppearance();
    if (isDark != m_lastDark) {
        m_lastDark = isDark;
        m_editor->applyAppearance(isDark);
    }
    QPainter painter(this);
    drawInto(painter, isDark);
}
