#include "MindMapCanvas.h"

#include "BackgroundMeasure.h"
#include "MapContextMenu.h"
#include "MapDrawing.h"
#include "MapPalette.h"
#include "MinimapOverlay.h"
#include "NodeEditorOverlay.h"
#include "SearchBarOverlay.h"
#include "look/Look.h"

#include "core/ReadingPace.h"
#include "core/SermonDocument.h"
#include "editing/DocumentController.h"
#include "editing/MemoryPasteboard.h"
#include "editing/NodeCommands.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTimer>
#include <QWheelEvent>

#include <cmath>
#include <utility>

namespace {
// Pixels a mouse wheel notch moves the map; touchpads report their own pixel deltas.
constexpr double pointsPerWheelDegree = 4.0; // 15 degrees a notch: 60 points
// Ctrl+wheel: one notch zooms by a tenth.
constexpr double magnificationPerWheelDegree = 0.1 / 15.0;
constexpr int searchBarMargin = 12;
constexpr int searchBarWidth = 460;

} // namespace

MindMapCanvas::MindMapCanvas(SermonDocument* document, QWidget* parent)
    : QWidget(parent)
    , m_document(document ? document : new SermonDocument(SermonNode::make(), {}, this))
    , m_controller(nullptr)
    , m_ownPasteboard(std::make_unique<MemoryPasteboard>())
    , m_pointer(*this)
    , m_clickRevealTimer(new QTimer(this))
    , m_relayoutTimer(new QTimer(this))
    , m_measuring(new BackgroundMeasure(
          [this](const BackgroundMeasure::Texts& texts, const BackgroundMeasure::Extents& extents) {
              for (size_t i = 0; i < extents.size(); ++i)
                  m_layout.measureCache.insert(texts[i].depthClass, texts[i].text, extents[i]);
              m_layoutIsStale = true;
              m_relayoutTimer->start();
          },
          this))
{
    setObjectName(QStringLiteral("mindMapCanvas"));
    setAccessibleName(QStringLiteral("mindMapCanvas"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);

    connect(&m_viewport, &MapViewport::scaleChanged, this, [this] {
        placeOverlays();
        update();
    });
    connect(&m_viewport, &MapViewport::panOffsetChanged, this, [this] {
        placeOverlays();
        update();
    });
    connect(&m_transitions, &MapTransitionAnimator::frame, this, [this] { update(); });
    m_clickRevealTimer->setSingleShot(true);
    m_clickRevealTimer->setInterval(int(std::lround(MapPointerInteraction::doubleClickInterval * 1000)));
    connect(m_clickRevealTimer, &QTimer::timeout, this, [this] {
        const auto id = std::exchange(m_clickRevealID, std::nullopt);
        // Only while the clicked node is still the selection; a key may have moved on since.
        if (id && m_controller->selectedNodeID() == id) {
            ensureLayout();
            if (const NodeLayout* layout = m_layout.layout(*id))
                m_viewport.reveal(*layout, true);
        }
    });
    m_relayoutTimer->setSingleShot(true);
    m_relayoutTimer->setInterval(0);
    connect(m_relayoutTimer, &QTimer::timeout, this, &MindMapCanvas::ensureLayout);

    // Undo swaps the whole tree: the restored tree glides from what was shown, and every line
    // that leaves fades out with the text it had.
    connect(m_document, &SermonDocument::rootChanged, this, [this] {
        if (!m_glide || !m_glide->held)
            m_glide = PendingGlide{false, true, {}, false, {}, {}};
        else
            m_glide->ghostsFromOldTree = true;
        onTreeMutated();
    });

    m_controller = new DocumentController(m_document, nullptr, this);
    m_controller->setPasteboard(m_ownPasteboard.get());
    m_editor = new NodeEditorOverlay(this);
    m_searchBar = new SearchBarOverlay(this);
    // Last of the layers: the minimap stands over the editor and the search bar.
    m_minimap = new MinimapOverlay(this);
    m_minimap->setLayoutState(&m_layout);
    m_minimap->onNavigate = [this](QPointF p) { centerOn(p); };
    m_viewport.onShowMinimap = [this] { m_minimap->showMinimap(); };
    connectController();
    contextMenuPresenter = [](QMenu& menu, QPoint at) { menu.exec(at); };
    m_relayoutTimer->start();
}

MindMapCanvas::~MindMapCanvas()
{
    // The children outlive these members for a moment: cut every way back in first.
    m_controller->disconnect(this);
    m_controller->onTreeMutated = nullptr;
    m_controller->onSelectionRequestVisible = nullptr;
    m_controller->onRequestCanvasFocus = nullptr;
    delete m_editor;
    delete m_searchBar;
    delete m_minimap;
}

void MindMapCanvas::connectController()
{
    DocumentController* c = m_controller;
    c->onTreeMutated = [this] { onTreeMutated(); };
    c->onSelectionRequestVisible = [this](const NodeID& id) { reveal(id); };
    c->onRequestCanvasFocus = [this] { focusCanvas(); };
    connect(c, &DocumentController::selectionChanged, this, [this] { update(); });
    connect(c, &DocumentController::editingChanged, this, [this] {
        syncEditor();
        update();
    });
    connect(c, &DocumentController::searchChanged, this, [this] {
        syncSearchBar();
        update();
    });

    m_editor->onTextChanged = [c](const QString& text) { c->setEditingText(text); };
    m_editor->onCommit = [this, c] { runEditorKey([c] { c->commit(true); }); };
    m_editor->onTab = [this, c] { runEditorKey([c] { c->editorTab(); }); };
    m_editor->onShiftTab = [this, c] { runEditorKey([c] { c->editorShiftTab(); }); };
    m_editor->onEnter = [this, c] { runEditorKey([c] { c->editorReturn(); }); };
    m_editor->onCommandEnter = [this, c] { runEditorKey([c] { c->editorInsertLineAbove(); }); };
    m_editor->onOptionEnter = [this, c](int position) {
        runEditorKey([c, position] { c->editorSplitAtCursor(position); });
    };
    m_editor->onCancel = [this, c] { runEditorKey([c] { c->editorEscape(); }); };

    m_searchBar->onQueryChanged = [this, c](const QString& query) {
        c->setSearchQuery(query);
        syncSearchBar();
        update();
    };
    m_searchBar->onNext = [this, c] {
        c->stepMatch(true);
        syncSearchBar();
    };
    m_searchBar->onPrevious = [this, c] {
        c->stepMatch(false);
        syncSearchBar();
    };
    m_searchBar->onDismiss = [c] { c->endSearch(); };
}

void MindMapCanvas::setUndoManager(UndoManager* manager)
{
    if (m_controller->undoManager() != manager)
        m_controller->setUndoManager(manager);
}

void MindMapCanvas::setPasteboard(Pasteboard* pasteboard)
{
    if (!pasteboard)
        pasteboard = m_ownPasteboard.get();
    if (m_controller->pasteboard() != pasteboard)
        m_controller->setPasteboard(pasteboard);
}

const MapLayoutState& MindMapCanvas::layoutState() const
{
    // Laying out is no change anyone can see but the layout itself.
    const_cast<MindMapCanvas*>(this)->ensureLayout();
    return m_layout;
}

const MapDrawState& MindMapCanvas::drawState()
{
    ensureLayout();
    refreshDrawState();
    return m_drawState;
}

void MindMapCanvas::updateDrawState(const std::function<void(MapDrawState&)>& change)
{
    if (change)
        change(m_drawState);
    update();
}

void MindMapCanvas::refreshDrawState()
{
    const DocumentController& c = *m_controller;
    MapDrawState& s = m_drawState;
    s.scale = m_viewport.scale();
    s.panOffset = m_viewport.panOffset();
    s.readingPaceWPM = readingPaceWPM();
    s.selectedNodeID = c.selectedNodeID();
    s.selectedNodeIDs = std::unordered_set<NodeID>(c.selectedNodeIDs().begin(), c.selectedNodeIDs().end());
    // The editor stands in the node's place only while it is shown.
    s.editingNodeID = m_editor->isOpen() ? c.editingNodeID() : std::nullopt;
    s.isSearching = c.isSearching();
    s.searchHighlight = [&c](const SermonNode& node) { return c.highlight(node); };
    m_transitions.apply(s);
    m_pointer.apply(s);
}

void MindMapCanvas::setReadingPaceSource(std::function<int()> source)
{
    m_readingPace = std::move(source);
    update();
}

int MindMapCanvas::readingPaceWPM() const
{
    const int wpm = m_readingPace ? m_readingPace() : ReadingPaces::defaultWPM;
    return wpm > 0 ? wpm : ReadingPaces::defaultWPM;
}

ZoomFunctions MindMapCanvas::zoomFunctions()
{
    MapViewport* viewport = &m_viewport;
    return {[viewport] { viewport->zoomIn(); }, [viewport] { viewport->zoomOut(); }, [viewport] { viewport->reset(); }};
}

std::unordered_map<NodeID, QString> MindMapCanvas::selectionTexts(bool includeSelf) const
{
    std::unordered_map<NodeID, QString> texts;
    std::vector<const SermonNode*> stack;
    for (const auto& node : m_controller->selectedNodes()) {
        if (includeSelf)
            texts.emplace(node->id(), node->text());
        for (const auto& child : node->children())
            stack.push_back(child.get());
    }
    while (!stack.empty()) {
        const SermonNode* node = stack.back();
        stack.pop_back();
        texts.emplace(node->id(), node->text());
        for (const auto& child : node->children())
            stack.push_back(child.get());
    }
    return texts;
}

void MindMapCanvas::runWithTransition(const std::function<void()>& change,
                                      const std::unordered_map<NodeID, QString>& oldTexts, bool revealSelection)
{
    if (m_glide && m_glide->held)
        return change(); // inside another command, whose glide covers this one
    ensureLayout();
    m_glide = PendingGlide{true, false, oldTexts, false, {}, {}};
    change();
    ensureLayout();
    startGlide();
    if (revealSelection)
        if (const auto id = m_controller->selectedNodeID())
            reveal(*id);
}

void MindMapCanvas::startGlide()
{
    if (!m_glide)
        return;
    PendingGlide glide = std::move(*m_glide);
    m_glide.reset();
    if (!glide.hasBefore)
        return; // nothing was laid out again: nothing moved
    if (glide.ghostsFromOldTree) {
        for (const auto& [id, old] : glide.before) {
            if (m_layout.cachedLayouts.count(id))
                continue;
            auto node = glide.oldRoot ? glide.oldRoot->find(id) : nullptr;
            if (!node && m_layout.root)
                node = m_layout.root->find(id);
            if (node)
                glide.texts.emplace(id, node->text());
        }
    }
    m_transitions.animateTransition(glide.before, glide.texts, m_layout.cachedLayouts,
                                    MapTransitionAnimator::defaultDuration, nearRegion());
}

QRectF MindMapCanvas::nearRegion(double scale, QPointF panOffset) const
{
    // What is on screen and a screen's worth around it, which a reveal may scroll into view: it
    // glides and is measured at once; the rest of a long sermon just takes its place.
    const QSizeF view = m_viewport.viewportSize();
    if (view.isEmpty())
        return {};
    const QRectF seen = MapDrawing::visibleRect(view, panOffset, scale);
    return seen.adjusted(-seen.width(), -seen.height(), seen.width(), seen.height());
}

QRectF MindMapCanvas::nearRegion() const
{
    return nearRegion(m_viewport.scale(), m_viewport.panOffset());
}

std::vector<QRectF> MindMapCanvas::regionsToMeasure() const
{
    // Where a pan or zoom under way ends is measured too: the frames on the way pass in a blur,
    // but the view it comes to rest on must not shift once its lines are measured.
    std::vector<QRectF> regions{nearRegion()};
    if (m_viewport.isAnimating())
        regions.push_back(nearRegion(m_viewport.endScale(), m_viewport.endPanOffset()));
    return regions;
}

NodeActions MindMapCanvas::nodeActions()
{
    NodeActions actions = NodeActions::forController(*m_controller);
    QPointer<MindMapCanvas> self(this);
    enum class Ghosts { none, descendants, wholeBranches };
    auto glide = [self](std::function<void()>& action, Ghosts ghosts, bool revealAfter) {
        action = [self, op = action, ghosts, revealAfter] {
            if (!self)
                return;
            const auto texts = ghosts == Ghosts::none ? std::unordered_map<NodeID, QString>()
                                                      : self->selectionTexts(ghosts == Ghosts::wholeBranches);
            self->runWithTransition(op, texts, revealAfter);
        };
    };
    glide(actions.fold, Ghosts::descendants, true);
    glide(actions.unfold, Ghosts::none, true);
    glide(actions.deleteSelection, Ghosts::wholeBranches, false);
    glide(actions.cut, Ghosts::wholeBranches, false);
    glide(actions.moveUp, Ghosts::none, true);
    glide(actions.moveDown, Ghosts::none, true);
    glide(actions.join, Ghosts::none, false);
    // A quote takes no lines under it: Tab there would open an editor on a line that never
    // joins the tree, so the map leaves the key alone.
    actions.newLineUnder = [self, op = actions.newLineUnder] {
        if (!self)
            return;
        const auto id = self->m_controller->selectedNodeID();
        const SermonNodePtr primary = id ? self->m_document->root()->find(*id) : nullptr;
        if (!primary || !primary->isQuote())
            op();
    };
    for (auto* action : {&actions.toggleQuote, &actions.removeMarker, &actions.paste, &actions.duplicate,
                         &actions.promote, &actions.demote, &actions.split, &actions.splitSentences,
                         &actions.newLineBelow, &actions.newLineAbove, &actions.newLineUnder})
        glide(*action, Ghosts::none, true);
    actions.setMarker = [self, op = actions.setMarker](const QString& marker) {
        if (self)
            self->runWithTransition([&] { op(marker); }, {}, true);
    };
    return actions;
}

bool MindMapCanvas::performCommand(NodeCommand command, const QString& marker)
{
    return nodeActions().perform(command, marker);
}

void MindMapCanvas::runEditorKey(const std::function<void()>& key)
{
    const auto id = m_controller->editingNodeID();
    const bool wasNew = m_controller->editingIsNew();
    ensureLayout();
    m_glide = PendingGlide{true, false, {}, false, {}, {}};
    key();
    ensureLayout();
    // A line that was there before the edit and was emptied leaves; the others glide up.
    if (id && !wasNew && !m_document->root()->find(*id))
        startGlide();
    else
        m_glide.reset();
}

void MindMapCanvas::commitEditing()
{
    if (m_controller->editingNodeID())
        runEditorKey([this] { m_controller->commit(true); });
}

void MindMapCanvas::openSearch()
{
    m_controller->beginSearch();
    syncSearchBar();
    m_searchBar->focusField();
}

void MindMapCanvas::focusCanvas()
{
    setFocus(Qt::OtherFocusReason);
}

void MindMapCanvas::onTreeMutated()
{
    // The text bitmaps stay: they are keyed by text and style, so none can show an old text,
    // and a change then costs only the lines it touched instead of every line in view.
    m_layoutIsStale = true;
    m_relayoutTimer->start();
    update();
}

void MindMapCanvas::ensureLayout()
{
    if (m_layoutIsStale)
        recomputeLayout();
}

void MindMapCanvas::recomputeLayout()
{
    m_layoutIsStale = false;
    m_relayoutTimer->stop();
    ++m_layoutPasses;
    if (m_glide && !m_glide->hasBefore) {
        // The layout that was shown is what the glide starts from, as far as the glide reaches;
        // the new one replaces it.
        const QRectF region = nearRegion();
        if (region.isNull()) {
            m_glide->before = m_layout.cachedLayouts;
        } else {
            for (const auto& [id, l] : m_layout.cachedLayouts)
                if (region.intersects(l.frame()))
                    m_glide->before.emplace(id, l);
        }
        if (m_glide->ghostsFromOldTree)
            m_glide->oldRoot = m_layout.root;
        m_glide->hasBefore = true;
    }
    if (m_measureEverything) {
        m_measuring->cancel();
        m_layout.recomputeLayout(m_document->root());
    } else {
        TreeLayout::PartialMeasure partial;
        partial.regions = regionsToMeasure();
        // Once lines wait for the background, a few more measured here would only slow the pass.
        if (m_layout.hasEstimates)
            partial.budget = 0;
        m_layout.recomputeLayout(m_document->root(), &partial);
        // One batch at a time: the texts still unmeasured when it lands go with the next.
        if (!partial.unmeasured.empty() && !m_measuring->isRunning())
            m_measuring->start(std::move(partial.unmeasured));
    }
    followLayout();
    if (!m_isPainting)
        update();
    if (m_glide && !m_glide->held)
        startGlide();
}

void MindMapCanvas::followLayout()
{
    m_viewport.setContentBounds(m_layout.cachedContentBounds);
    syncEditor();
    if (m_minimap)
        m_minimap->treeChanged();
}

void MindMapCanvas::finishMeasuring()
{
    if (!m_layoutIsStale && !m_layout.hasEstimates)
        return;
    m_measureEverything = true;
    recomputeLayout();
    m_measureEverything = false;
}

void MindMapCanvas::syncEditor()
{
    if (!m_editor)
        return;
    ensureLayout();
    const auto id = m_controller->editingNodeID();
    const NodeLayout* layout = id ? m_layout.layout(*id) : nullptr;
    if (!layout) {
        if (m_editor->isOpen()) {
            const bool hadKeyboard = m_editor->field()->hasFocus();
            m_editor->close();
            if (hadKeyboard)
                focusCanvas();
        }
        return;
    }
    m_editor->setViewTransform(m_viewport.scale(), m_viewport.panOffset());
    if (!m_editor->isOpen() || m_editor->nodeLayout().nodeID != *id) {
        m_editor->open(m_controller->editingText(), *layout);
    } else {
        m_editor->setNodeLayout(*layout);
        m_editor->setText(m_controller->editingText());
    }
}

void MindMapCanvas::syncSearchBar()
{
    if (!m_searchBar)
        return;
    const DocumentController& c = *m_controller;
    if (!c.isSearching()) {
        if (m_searchBar->isVisible()) {
            const bool hadKeyboard = m_searchBar->field()->hasFocus();
            m_searchBar->hide();
            m_viewport.setTopCover(QRectF());
            m_searchBar->setQuery(QString());
            if (hadKeyboard)
                focusCanvas();
        }
        return;
    }
    m_searchBar->setQuery(c.searchQuery());
    m_searchBar->setMatches(int(c.searchMatches().size()), c.currentMatchIndex());
    if (!m_searchBar->isVisible()) {
        m_searchBar->show();
        m_searchBar->raise();
        placeOverlays();
    }
}

void MindMapCanvas::placeOverlays()
{
    if (m_editor && m_editor->isOpen())
        m_editor->setViewTransform(m_viewport.scale(), m_viewport.panOffset());
    if (m_searchBar) {
        const int w = std::max(0, std::min(width() - 2 * searchBarMargin, searchBarWidth));
        const int h = m_searchBar->sizeHint().height();
        m_searchBar->setGeometry((width() - w) / 2, searchBarMargin, w, h);
        // A match revealed lands below the bar, not under it.
        m_viewport.setTopCover(m_searchBar->isHidden() ? QRectF()
                                                       : QRectF(m_searchBar->x(), 0, w, searchBarMargin + h));
    }
    if (m_minimap) {
        m_minimap->place(size());
        m_minimap->setView(m_viewport.viewportSize(), m_viewport.panOffset(), m_viewport.scale());
    }
}

void MindMapCanvas::reveal(const NodeID& id)
{
    if (m_isClicking) {
        m_clickRevealID = id;
        m_clickRevealTimer->start();
        return;
    }
    ensureLayout();
    if (const NodeLayout* layout = m_layout.layout(id))
        m_viewport.reveal(*layout);
}

void MindMapCanvas::runClick(const std::function<void()>& click)
{
    const bool outer = !m_isClicking;
    m_isClicking = true;
    click();
    if (outer)
        m_isClicking = false;
}

void MindMapCanvas::centerOn(QPointF canvasPoint)
{
    m_viewport.centerOn(canvasPoint);
}

std::optional<NodeID> MindMapCanvas::hitNode(QPointF p) const
{
    return MapPointerInteraction::hitNode(layoutState(), p);
}

void MindMapCanvas::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool dark = Look::isDarkPalette(palette());
    painter.fillRect(rect(), palette().color(QPalette::Window));
    ensureLayout();
    if (!size().isEmpty()
        && !m_layout.isMeasured(
            MapDrawing::visibleRect(QSizeF(size()), m_viewport.endPanOffset(), m_viewport.endScale()))) {
        // Drawn from the new layout just below: no second frame for it.
        m_isPainting = true;
        if (m_layout.measureInSight(regionsToMeasure()))
            followLayout();
        else
            recomputeLayout();
        m_isPainting = false;
    }
    refreshDrawState();
    MapDrawing::drawCanvas(painter, QSizeF(size()), m_layout, m_drawState, MapPalette::forAppearance(dark),
                           m_textCache);
}

void MindMapCanvas::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_viewport.setViewportSize(QSizeF(size()));
    placeOverlays();
}

void MindMapCanvas::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_viewport.setViewportSize(QSizeF(size()));
    if (!m_hasAppeared)
        appear();
}

void MindMapCanvas::appear()
{
    m_hasAppeared = true;
    ensureLayout();
    // The title is selected at once, so that typing can start without a click.
    if (!m_controller->selectedNodeID())
        m_controller->setSelectedNodeID(m_document->root()->id());
    if (QWidget* w = window(); w && !w->focusWidget())
        focusCanvas();
    if (onZoomFunctionsReady)
        onZoomFunctionsReady(zoomFunctions());
}

void MindMapCanvas::reappear()
{
    // All that lives with a map view goes; the document and the zoom stay.
    if (m_controller->editingNodeID())
        m_controller->commit(true);
    if (m_controller->isSearching())
        m_controller->endSearch();
    m_pointer.cancel();
    m_viewport.stopAnimation();
    m_viewport.setPanOffset(QPointF());
    m_controller->setSelectedNodeIDs({});
    m_controller->setSelectionAnchorID(std::nullopt);
    m_controller->setExtendingSelection(false);
    m_controller->setSelectedNodeID(std::nullopt);
    m_controller->setNavigationDepth(0);
    onTreeMutated();
    m_viewport.setViewportSize(QSizeF(size()));
    appear();
}

void MindMapCanvas::wheelEvent(QWheelEvent* event)
{
    event->accept();
    if (event->modifiers() & Qt::ControlModifier) {
        const double degrees = event->angleDelta().y() / 8.0;
        if (degrees != 0)
            m_viewport.onMagnify(degrees * magnificationPerWheelDegree, event->position());
        return;
    }
    QPointF delta = !event->pixelDelta().isNull() ? QPointF(event->pixelDelta())
                                                  : QPointF(event->angleDelta()) / 8.0 * pointsPerWheelDegree;
    // A plain mouse has one wheel: Shift turns it sideways.
    if ((event->modifiers() & Qt::ShiftModifier) && delta.x() == 0)
        delta = QPointF(delta.y(), 0);
    m_viewport.onScroll(delta.x(), delta.y());
}

bool MindMapCanvas::isTakingKeys() const
{
    return !m_controller->editingNodeID() && !m_controller->isSearching();
}

bool MindMapCanvas::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::NativeGesture: {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            m_viewport.onMagnify(gesture->value(), gesture->position());
            event->accept();
            return true;
        }
        break;
    }
    case QEvent::ShortcutOverride: {
        // The map's keys win over window shortcuts on the same keys while it has the keyboard.
        auto* key = static_cast<QKeyEvent*>(event);
        if (isTakingKeys()
            && NodeCommands::resolveCanvasKey(key->key(), key->modifiers(),
                                              !m_controller->effectiveSelection().isEmpty())) {
            event->accept();
            return true;
        }
        break;
    }
    case QEvent::KeyPress:
        // Before QWidget, which would spend Tab on moving the focus.
        keyPressEvent(static_cast<QKeyEvent*>(event));
        return true;
    default:
        break;
    }
    return QWidget::event(event);
}

void MindMapCanvas::keyPressEvent(QKeyEvent* event)
{
    if (isTakingKeys()
        && NodeCommands::handleCanvasKey(event->key(), event->modifiers(), *m_controller, nodeActions())) {
        event->accept();
        return;
    }
    // Find belongs to the window's menu; this serves a window without one. No shortcut
    // override here, so that a menu's Ctrl+F comes first.
    if (isTakingKeys() && event->matches(QKeySequence::Find)) {
        openSearch();
        event->accept();
        return;
    }
    event->ignore();
}

void MindMapCanvas::mousePressEvent(QMouseEvent* event)
{
    // The press has just taken the keyboard from an open editor. A pan or a drag leaves the edit
    // running, so typing goes on there; a click that commits moves the focus itself.
    if (m_editor->isOpen() && hasFocus())
        m_editor->field()->setFocus(Qt::MouseFocusReason);
    if (event->button() == Qt::LeftButton) {
        m_pointer.press(event->position());
        event->accept();
        return;
    }
    if (event->button() == Qt::RightButton) {
        event->accept();
        showContextMenu(event->position(), event->globalPosition().toPoint());
        return;
    }
    QWidget::mousePressEvent(event);
}

void MindMapCanvas::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        m_pointer.move(event->position(), event->modifiers());
}

void MindMapCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_pointer.release(event->position(), event->modifiers());
        event->accept();
        return;
    }
    QWidget::mouseReleaseEvent(event);
}

void MindMapCanvas::showContextMenu(QPointF viewPoint, QPoint globalPosition)
{
    const auto hit = hitNode(canvasPoint(viewPoint));
    if (!hit || *hit == m_document->root()->id())
        return;
    commitEditing();
    m_controller->setSelectedNodeID(*hit);
    focusCanvas();
    QMenu menu(this);
    MapContextMenu::build(menu, nodeActions());
    if (contextMenuPresenter)
        contextMenuPresenter(menu, globalPosition);
    focusCanvas();
}
