#include "FocusWindow.h"

#include "FocusOverlayView.h"
#include "MindMapCanvas.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"

#include <QAction>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>

FocusContentView::FocusContentView(SermonDocument* document, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_canvas(new MindMapCanvas(document, this))
    , m_overlay(new FocusOverlayView(document, this))
{
    setObjectName(QStringLiteral("focusWindow"));
    setWindowTitle(QStringLiteral("Focus Mode"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_canvas);
    m_overlay->raise();
    // Moves over the map count as life for the statistics line.
    m_canvas->setMouseTracking(true);
    m_canvas->installEventFilter(this);
    connect(m_canvas->controller(), &DocumentController::edited, m_overlay, &FocusOverlayView::refresh);

    // This window has no menu bar: the commands that matter here get their keys of their own.
    auto addCommand = [this](const QKeySequence& key, std::function<void()> run) {
        auto* action = new QAction(this);
        action->setShortcut(key);
        connect(action, &QAction::triggered, this, std::move(run));
        addAction(action);
    };
    addCommand(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F), [this] { exit(); });
    for (const QKeySequence& key : ZoomFunctions::zoomInKeys())
        addCommand(key, [this] { m_canvas->zoomFunctions().zoomIn(); });
    for (const QKeySequence& key : ZoomFunctions::zoomOutKeys())
        addCommand(key, [this] { m_canvas->zoomFunctions().zoomOut(); });
    addCommand(QKeySequence(Qt::CTRL | Qt::Key_0), [this] { m_canvas->zoomFunctions().reset(); });
}

void FocusContentView::exit()
{
    if (onExit)
        onExit();
}

bool FocusContentView::eventFilter(QObject* watched, QEvent* event)
{
    // Only the map's own Escape: an open editor or the find field takes it first, as a cancel.
    if (watched == m_canvas && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape && key->modifiers() == Qt::NoModifier) {
            exit();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void FocusContentView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_overlay->place(size());
}

void FocusContentView::closeEvent(QCloseEvent* event)
{
    // Closed from outside (a window manager's key): the same as leaving.
    event->accept();
    exit();
}

FocusWindow::FocusWindow(QObject* parent)
    : QObject(parent)
{
}

FocusWindow::~FocusWindow()
{
    delete m_window.data();
}

FocusContentView* FocusWindow::enter(SermonDocument* document, QScreen* screen, std::function<void()> onExit,
                                     const std::function<void(FocusContentView&)>& prepare)
{
    if (!screen || !document)
        return nullptr;
    leave();
    auto* window = new FocusContentView(document);
    window->onExit = std::move(onExit);
    if (prepare)
        prepare(*window);
    m_window = window;
    // Without a window manager full screen is only a request: the geometry makes it so anyway.
    window->setGeometry(screen->geometry());
    window->showFullScreen();
    window->raise();
    window->activateWindow();
    window->canvas()->setFocus(Qt::ActiveWindowFocusReason);
    return window;
}

void FocusWindow::leave()
{
    FocusContentView* window = m_window;
    if (!window)
        return;
    m_window = nullptr;
    window->onExit = nullptr;
    window->hide();
    window->deleteLater();
}
