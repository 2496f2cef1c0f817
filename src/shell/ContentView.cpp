#include "ContentView.h"

#include "Preferences.h"
#include "StatusBarView.h"
#include "ZoomControlsView.h"
#include "documents/OpenDocument.h"

#include "columns/ColumnCanvas.h"
#include "columns/ColumnWidthsStore.h"
#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "delivery/DeliveryContentLayout.h"
#include "delivery/DeliveryPreferences.h"
#include "delivery/DeliveryView.h"
#include "editing/DocumentController.h"
#include "map/FocusOverlayView.h"
#include "map/FocusWindow.h"
#include "map/MindMapCanvas.h"

#include <QPointer>
#include <QSettings>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

ContentView::ContentView(OpenDocument* document, Preferences* preferences, QWidget* parent)
    : QWidget(parent)
    , m_document(document)
    , m_preferences(preferences)
    , m_stack(new QStackedWidget(this))
    , m_mapPage(new QWidget(m_stack))
    , m_columnWidths(new ColumnWidthsStore(this))
{
    setMinimumSize(normalMinimumWidth, 600);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_stack);

    auto* mapLayout = new QVBoxLayout(m_mapPage);
    mapLayout->setContentsMargins(0, 0, 0, 0);
    mapLayout->setSpacing(0);
    m_canvas = new MindMapCanvas(document->document(), m_mapPage);
    m_statusBar = new StatusBarView(document->document(), m_mapPage);
    mapLayout->addWidget(m_canvas, 1);
    mapLayout->addWidget(m_statusBar);
    m_stack->addWidget(m_mapPage);

    // Edits on the map are the window's undo steps; copies go to the system clipboard.
    m_canvas->setUndoManager(document->undoManager());
    m_canvas->setPasteboard(&m_pasteboard);
    DocumentController* controller = m_canvas->controller();
    connect(controller, &DocumentController::selectionChanged, this, &ContentView::commandsChanged);
    connect(controller, &DocumentController::editingChanged, this, &ContentView::commandsChanged);
    connect(controller, &DocumentController::searchChanged, this, &ContentView::commandsChanged);
    connect(controller, &DocumentController::edited, document, &OpenDocument::noteChange);
    // The undo step of an edit is taken before the change, so the count follows the edit itself.
    connect(controller, &DocumentController::edited, this, &ContentView::refreshStatus);

    m_canvas->setReadingPaceSource([preferences] { return preferences->readingPaceWPM(); });
    // The first switch to delivery then finds the lines of a long sermon already wrapped.
    if (preferences)
        DeliveryContentLayout::measureAhead(*document->document()->root(), preferences->delivery()->textWidth(),
                                            preferences->delivery()->fontSize(), this);
    m_canvas->onZoomFunctionsReady = [this](const ZoomFunctions& functions) {
        m_zoomFunctions = functions;
        emit commandsChanged();
    };
    m_statusBar->setReadingPaceWPM(preferences->readingPaceWPM());
    m_statusBar->onChooseReadingPace = [preferences](int wpm) { preferences->setReadingPaceWPM(wpm); };
    connect(preferences, &Preferences::readingPaceChanged, this, [this](int wpm) {
        m_statusBar->setReadingPaceWPM(wpm);
        m_canvas->update();
    });

    // The zoom buttons act through whatever the map has published.
    ZoomControlsView* zoom = m_statusBar->zoomControls();
    zoom->onZoomIn = [this] {
        if (m_zoomFunctions && m_zoomFunctions->zoomIn)
            m_zoomFunctions->zoomIn();
    };
    zoom->onZoomOut = [this] {
        if (m_zoomFunctions && m_zoomFunctions->zoomOut)
            m_zoomFunctions->zoomOut();
    };
    zoom->onReset = [this] {
        if (m_zoomFunctions && m_zoomFunctions->reset)
            m_zoomFunctions->reset();
    };
    connect(&m_canvas->viewport(), &MapViewport::scaleChanged, this,
            [this](double scale) { m_statusBar->setScale(scale); });
    m_statusBar->setScale(m_canvas->viewport().scale());

    SermonDocument* sermon = document->document();
    connect(sermon, &SermonDocument::rootChanged, this, &ContentView::refreshStatus);
    connect(sermon, &SermonDocument::undoRedoGenerationChanged, this, &ContentView::refreshStatus);
    connect(document->undoManager(), &UndoManager::stateChanged, this, &ContentView::refreshStatus);
    m_focusWindow = new FocusWindow(this);
    m_canvas->setFocus();

    // The columns' widths are the application's: a divider dragged in one window moves in all.
    if (preferences) {
        delete m_columnWidths;
        m_columnWidths =
            new ColumnWidthsStore([preferences] { return preferences->columnWidthsText(); },
                                  [preferences](const QString& text) { preferences->setColumnWidthsText(text); }, this);
        connect(preferences, &Preferences::changed, m_columnWidths, [store = m_columnWidths](const QString& key) {
            if (key == QLatin1String(Preferences::columnWidthsKey))
                store->noteChanged();
        });
    }
}

ContentView::~ContentView()
{
    // The canvases, children, outlive this object's members: the focus map goes at once.
    delete m_focusWindow;
    m_focusWindow = nullptr;
    m_canvas->setPasteboard(nullptr);
    if (m_columnCanvas)
        m_columnCanvas->setPasteboard(nullptr);
}

double ContentView::scale() const
{
    return m_canvas->viewport().scale();
}

QWidget* ContentView::currentView() const
{
    return m_stack->currentWidget();
}

void ContentView::refreshStatus()
{
    m_statusBar->refresh();
}

void ContentView::commitPendingEdit(bool keepEditing)
{
    if (m_columnCanvas)
        m_columnCanvas->commitEditing();
    DocumentController* controller = m_canvas->controller();
    const std::optional<NodeID> id = controller->editingNodeID();
    if (!id)
        return;
    const bool wasNew = controller->editingIsNew();
    m_canvas->commitEditing();
    // Saving mid-line keeps the line open (unless the commit removed it), new as it was, so
    // that Return still goes on to the next line.
    if (keepEditing && m_mode == AppMode::tree)
        controller->startSession(*id, wasNew);
}

void ContentView::treeMutated()
{
    m_canvas->onTreeMutated();
    if (m_columnCanvas)
        m_columnCanvas->recomputeLayout(false);
    refreshStatus();
}

bool ContentView::setMode(AppMode mode)
{
    if (mode == m_mode)
        return false;
    if (mode != AppMode::tree && m_isFocusMode)
        leaveFocusMode();
    // The page shows the tree: a line still in the editor goes into it first.
    commitPendingEdit();
    const AppMode previous = m_mode;
    m_mode = mode;
    if (previous == AppMode::columns)
        dropColumns();
    if (mode == AppMode::columns) {
        if (m_deliveryView) {
            m_deliveryView->deleteLater();
            m_deliveryView = nullptr;
        }
        showColumns();
    } else if (mode == AppMode::delivery) {
        // Made anew at each entry, so that leaving ends a running delivery.
        m_deliveryView = makeDeliveryView();
        m_stack->addWidget(m_deliveryView);
        m_stack->setCurrentWidget(m_deliveryView);
        // Connected after the view's own handler, so its new minimum is there to read.
        connect(m_deliveryView->preferences(), &DeliveryPreferences::textWidthChanged, m_deliveryView,
                [this] { updateMinimumWidth(); });
        updateMinimumWidth();
        m_deliveryView->setFocus();
    } else {
        m_stack->setCurrentWidget(m_mapPage);
        if (m_deliveryView) {
            m_deliveryView->deleteLater();
            m_deliveryView = nullptr;
            updateMinimumWidth();
        }
        // The map comes back as a map freshly shown, as if it had never been away.
        if (previous != AppMode::tree)
            m_canvas->reappear();
        m_canvas->setFocus();
    }
    emit modeChanged(mode);
    emit commandsChanged();
    return true;
}

DeliveryView* ContentView::makeDeliveryView()
{
    // Without the application's preferences (a bare view in a test) the view keeps its own.
    DeliveryPreferences* preferences = m_preferences ? m_preferences->delivery() : nullptr;
    return new DeliveryView(m_document->document(), m_document->undoManager(), preferences, m_stack);
}

void ContentView::updateMinimumWidth()
{
    // The window's own minimum hides the delivery view's: this one takes the wider of the two.
    const int needed =
        m_deliveryView ? std::max(normalMinimumWidth, m_deliveryView->minimumWidth()) : normalMinimumWidth;
    if (minimumWidth() == needed)
        return;
    // Read before the new minimum stretches this view past the window's edge.
    const int shortBy = needed - width();
    setMinimumWidth(needed);
    // A narrower window widens at once where it stands; its layout takes up the new minimum.
    if (isVisible() && shortBy > 0) {
        QWidget* w = window();
        w->resize(w->width() + shortBy, w->height());
    }
}

void ContentView::showColumns()
{
    m_columnsPage = new QWidget(m_stack);
    auto* layout = new QVBoxLayout(m_columnsPage);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_columnCanvas = new ColumnCanvas(m_document->document(), m_columnWidths, m_columnsPage);
    m_columnCanvas->setUndoManager(m_document->undoManager());
    m_columnCanvas->setPasteboard(&m_pasteboard);
    layout->addWidget(m_columnCanvas, 1);
    layout->addWidget(m_statusBar); // the map's zoom stays in view, as in the map
    DocumentController* controller = m_columnCanvas->controller();
    connect(controller, &DocumentController::selectionChanged, this, &ContentView::commandsChanged);
    connect(controller, &DocumentController::editingChanged, this, &ContentView::commandsChanged);
    connect(m_columnCanvas, &ColumnCanvas::edited, m_document, &OpenDocument::noteChange);
    connect(m_columnCanvas, &ColumnCanvas::edited, this, &ContentView::refreshStatus);
    m_stack->addWidget(m_columnsPage);
    m_stack->setCurrentWidget(m_columnsPage);
    m_columnCanvas->setFocus();
}

void ContentView::dropColumns()
{
    if (!m_columnsPage)
        return;
    static_cast<QVBoxLayout*>(m_mapPage->layout())->addWidget(m_statusBar);
    m_columnCanvas->setPasteboard(nullptr);
    m_columnsPage->deleteLater();
    m_columnsPage = nullptr;
    m_columnCanvas = nullptr;
}

void ContentView::openFileSettings()
{
    if (onOpenFileSettings)
        onOpenFileSettings();
}

WindowCommands ContentView::commands()
{
    WindowCommands commands;
    // A record may be called after the window has gone: then it does nothing.
    const QPointer<ContentView> self(this);
    commands.switchMode = SwitchModeAction{[self](AppMode mode) {
        if (self)
            self->setMode(mode);
    }};
    commands.fileSettings = FileSettingsAction{[self] {
        if (self)
            self->openFileSettings();
    }};
    if (m_mode == AppMode::tree)
        commands.focusMode = FocusModeAction{[self] {
            if (self)
                self->toggleFocusMode();
        }};
    // The map's own records, while it (or columns) shows.
    if (m_mode == AppMode::delivery)
        return commands;
    if (m_zoomFunctions)
        commands.zoom = m_zoomFunctions;
    if (m_mode == AppMode::columns && m_columnCanvas) {
        // The node commands act on the table's selection; there is no search in it.
        commands.nodeActions = NodeActions::forController(*m_columnCanvas->controller());
        return commands;
    }
    const QPointer<MindMapCanvas> canvas(m_canvas);
    commands.find = FindAction{[canvas] {
        if (canvas)
            canvas->openSearch();
    }};
    commands.nodeActions = m_canvas->nodeActions();
    return commands;
}

FocusContentView* ContentView::focusView() const
{
    return m_focusWindow ? m_focusWindow->window() : nullptr;
}

void ContentView::toggleFocusMode()
{
    if (m_mode != AppMode::tree)
        return;
    if (m_isFocusMode)
        leaveFocusMode();
    else
        enterFocusMode();
}

void ContentView::enterFocusMode()
{
    // Both maps show the line being typed here.
    commitPendingEdit();
    m_isFocusMode = true;
    QPointer<ContentView> self(this);
    auto onExit = [self] {
        if (self)
            self->leaveFocusMode();
    };
    m_focusWindow->enter(m_document->document(), window()->screen(), onExit, [this](FocusContentView& focus) {
        MindMapCanvas* canvas = focus.canvas();
        // Its edits are this window's undo steps, and mark and save the document as ours do.
        canvas->setUndoManager(m_document->undoManager());
        canvas->setPasteboard(&m_pasteboard);
        if (Preferences* preferences = m_preferences) {
            canvas->setReadingPaceSource([preferences] { return preferences->readingPaceWPM(); });
            focus.overlay()->setReadingPaceSource([preferences] { return preferences->readingPaceWPM(); });
        }
        DocumentController* controller = canvas->controller();
        connect(controller, &DocumentController::edited, m_document, &OpenDocument::noteChange);
        connect(controller, &DocumentController::edited, this, [this] {
            m_canvas->onTreeMutated();
            refreshStatus();
        });
        // One zoom for both maps.
        canvas->viewport().setScale(scale());
        connect(&canvas->viewport(), &MapViewport::scaleChanged, this,
                [this](double s) { m_canvas->viewport().setScale(s); });
        connect(&m_canvas->viewport(), &MapViewport::scaleChanged, canvas,
                [canvas](double s) { canvas->viewport().setScale(s); });
    });
    emit commandsChanged();
}

void ContentView::leaveFocusMode()
{
    if (!m_isFocusMode)
        return;
    m_isFocusMode = false;
    if (FocusContentView* focus = focusView())
        focus->canvas()->commitEditing();
    m_focusWindow->leave();
    // This map reads again what was changed there; a selected line that went is let go.
    m_canvas->onTreeMutated();
    DocumentController* controller = m_canvas->controller();
    const SermonNodePtr root = m_document->document()->root();
    if (const auto id = controller->selectedNodeID(); id && !root->find(*id))
        controller->setSelectedNodeID(root->id());
    refreshStatus();
    if (QWidget* w = window()) {
        w->raise();
        w->activateWindow();
    }
    m_canvas->setFocus(Qt::ActiveWindowFocusReason);
    emit commandsChanged();
}
