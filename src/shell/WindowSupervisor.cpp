#include "WindowSupervisor.h"

#include "AboutView.h"
#include "DocumentManager.h"
#include "DocumentWindow.h"
#include "NewSermonSheet.h"
#include "RecoveryOffer.h"
#include "WelcomeView.h"
#include "documents/PendingCreation.h"
#include "documents/RecoveryStore.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <utility>

namespace {

QWidget* makeWindow(const QString& identifier, const QString& title, QSize size, bool resizable)
{
    auto* window = new QWidget(nullptr, Qt::Window);
    window->setObjectName(identifier);
    window->setWindowTitle(title);
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    auto* layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    if (resizable)
        window->resize(size);
    else
        window->setFixedSize(size);
    // Centred when made.
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        window->move(area.center() - QPoint(size.width() / 2, size.height() / 2));
    }
    return window;
}

} // namespace

WindowSupervisor::WindowSupervisor(DocumentManager* documents, Preferences* preferences, QObject* parent)
    : QObject(parent)
    , m_documents(documents)
    , m_preferences(preferences)
{
    onQuit = [] { QCoreApplication::quit(); };
    qApp->installEventFilter(this);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow* window) {
        if (window)
            update();
    });
    if (documents)
        documents->setSupervisor(this);
}

WindowSupervisor::~WindowSupervisor()
{
    if (qApp)
        qApp->removeEventFilter(this);
    delete m_welcome;
    delete m_newSermon;
    delete m_about;
}

void WindowSupervisor::finishLaunching()
{
    m_isLaunching = false;
    update();
}

void WindowSupervisor::present(QWidget* window)
{
    window->show();
    window->raise();
    window->activateWindow();
}

void WindowSupervisor::showWelcome()
{
    if (!m_isLaunching && visibleWindowCount() >= 1 && QApplication::activeWindow() != m_welcome)
        m_returnKeyboardTo = QApplication::activeWindow();
    if (!m_welcome) {
        m_welcome = makeWindow(QStringLiteral("welcome"), QStringLiteral("Welcome to Orantium"), QSize(500, 520), true);
        m_welcome->setMinimumSize(420, 420);
        m_welcomeView = new WelcomeView(m_preferences, m_welcome);
        m_recoveryOffer = new RecoveryOffer(m_welcome);
        m_welcome->layout()->addWidget(m_recoveryOffer);
        m_welcome->layout()->addWidget(m_welcomeView);
        m_recoveryOffer->onRestore = [this](const QString& path) {
            if (m_documents)
                m_documents->restoreCopy(path, m_welcome);
            refreshRecoveryOffer();
        };
        m_recoveryOffer->onDiscard = [this](const QString& path) {
            RecoveryStore::discard(path, RecoveryStore::Disposal::toTrash);
            refreshRecoveryOffer();
        };
        m_welcomeView->onNewSermon = [this] { showNewSermon(); };
        m_welcomeView->onOpenFile = [this] {
            if (m_documents)
                m_documents->openWithPanel(m_welcome);
        };
        m_welcomeView->onOpenRecent = [this](const QString& path) {
            if (m_documents)
                m_documents->open(path, m_welcome);
        };
        auto* open = new QShortcut(QKeySequence::Open, m_welcome);
        connect(open, &QShortcut::activated, this, [this] { m_welcomeView->onOpenFile(); });
        auto* quit = new QShortcut(QKeySequence::Quit, m_welcome);
        connect(quit, &QShortcut::activated, this, [this] {
            if (!m_documents || m_documents->closeAll())
                onQuit();
        });
    }
    refreshRecoveryOffer();
    present(m_welcome);
}

void WindowSupervisor::refreshRecoveryOffer()
{
    RecoveryStore* store = m_documents ? m_documents->recoveryStore() : nullptr;
    if (m_recoveryOffer)
        m_recoveryOffer->setCopies(store ? store->leftBehind() : QList<RecoveryStore::Copy>());
}

void WindowSupervisor::showNewSermon()
{
    if (!m_newSermon) {
        m_newSermon = makeWindow(QStringLiteral("new-sermon"), QStringLiteral("New Sermon"), QSize(620, 520), false);
        m_newSermonSheet = new NewSermonSheet(m_newSermon);
        m_newSermon->layout()->addWidget(m_newSermonSheet);
        m_newSermonSheet->onCreate = [this](const QString& title, const SermonMetadata& metadata) {
            PendingCreation::shared().store({title, metadata});
            if (m_documents)
                m_documents->newDocument();
            PendingCreation::shared().clear();
            m_newSermon->close();
        };
        m_newSermonSheet->onCancel = [this] { m_newSermon->close(); };
    }
    if (!m_newSermon->isVisible())
        m_newSermonSheet->reset();
    present(m_newSermon);
    m_newSermonSheet->focusTitle();
}

void WindowSupervisor::showAbout()
{
    if (!m_about) {
        m_about = makeWindow(QStringLiteral("about"), QStringLiteral("About Orantium"), QSize(460, 540), false);
        m_about->layout()->addWidget(new AboutView(m_about));
        auto* close = new QShortcut(QKeySequence(Qt::Key_Escape), m_about);
        connect(close, &QShortcut::activated, m_about, &QWidget::close);
    }
    present(m_about);
}

int WindowSupervisor::visibleWindowCount(const QWidget* excluding) const
{
    int count = 0;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window == excluding || !window->isVisible())
            continue;
        if (window->objectName() == QLatin1String("new-sermon") || qobject_cast<DocumentWindow*>(window))
            ++count;
    }
    return count;
}

void WindowSupervisor::update()
{
    if (m_isLaunching)
        return;
    if (visibleWindowCount() >= 1) {
        if (!m_welcome || !m_welcome->isVisible())
            return;
        m_welcome->hide();
        // Asked for while a document was open, welcome goes as soon as it comes, maybe before its
        // own activation has landed: the keyboard goes back to the window that had it.
        if (const QPointer<QWidget> target = std::exchange(m_returnKeyboardTo, nullptr); target && target->isVisible())
            present(target);
    } else {
        showWelcome();
    }
}

bool WindowSupervisor::eventFilter(QObject* watched, QEvent* event)
{
    // A window that closes after a question (a prompt's own event loop runs the check below
    // while the window still shows) is seen again when it hides.
    const bool hidden = event->type() == QEvent::Hide && !event->spontaneous();
    if (event->type() == QEvent::Close || hidden) {
        auto* widget = qobject_cast<QWidget*>(watched);
        // The welcome window hides whenever a document shows; only its closing may quit.
        if (widget && widget->isWindow() && !(hidden && widget == m_welcome)) {
            // Handled a turn later, when the window is on its way out (or has refused to go).
            QPointer<QWidget> window(widget);
            const QString identifier = widget->objectName();
            QTimer::singleShot(0, this, [this, window, identifier] { windowClosed(window, identifier); });
        }
    }
    return QObject::eventFilter(watched, event);
}

void WindowSupervisor::windowClosed(const QPointer<QWidget>& window, const QString& identifier)
{
    if (window && window->isVisible())
        return; // the close was cancelled
    if (identifier == QLatin1String("welcome")) {
        if (visibleWindowCount(window) == 0)
            onQuit();
        return;
    }
    if (identifier != QLatin1String("new-sermon") && identifier != QLatin1String("documentWindow")
        && identifier != QLatin1String("about"))
        return;
    if (m_isLaunching)
        return;
    if (visibleWindowCount(window) < 1)
        showWelcome();
    else if (m_welcome)
        m_welcome->hide();
}
