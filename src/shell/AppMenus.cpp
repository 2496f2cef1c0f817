#include "AppMenus.h"

#include "ContentView.h"
#include "DocumentManager.h"
#include "DocumentWindow.h"
#include "ManuscriptExports.h"
#include "Preferences.h"
#include "ShortcutSheet.h"
#include "UpdateService.h"
#include "WindowSupervisor.h"
#include "documents/OpenDocument.h"
#include "map/MapContextMenu.h"

#include "core/UndoManager.h"
#include "delivery/DeliveryView.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextDocument>
#include <QTextEdit>

namespace {

// The key shown beside a node command. The canvas handles those keys itself, so the menu only
// shows them: bound here they would take Return, Space and Tab from every other widget.
QString withKeyText(const QString& label, const NodeCommands::KeyChord& key)
{
    if (key.isEmpty())
        return label;
    return label + QLatin1Char('\t') + QKeySequence(key.toString()).toString(QKeySequence::NativeText);
}

QString plainText(const QAction* action)
{
    QString text = action->text();
    text = text.left(text.indexOf(QLatin1Char('\t')) < 0 ? text.size() : text.indexOf(QLatin1Char('\t')));
    return text.remove(QLatin1Char('&'));
}

bool isPasteboardCommand(NodeCommand command)
{
    return command == NodeCommand::cut || command == NodeCommand::copy || command == NodeCommand::paste
        || command == NodeCommand::selectAll;
}

} // namespace

AppMenus::AppMenus(QMenuBar* bar, AppContext context, DocumentWindow* window)
    : QObject(window)
    , m_context(context)
    , m_window(window)
{
    buildFileMenu(bar);
    buildEditMenu(bar);
    buildViewMenu(bar);
    buildWindowMenu(bar);
    buildHelpMenu(bar);
    for (QMenu* menu : bar->findChildren<QMenu*>())
        connect(menu, &QMenu::aboutToShow, this, &AppMenus::refresh);
    if (m_window->openDocument())
        connect(m_window->openDocument()->undoManager(), &UndoManager::stateChanged, this, &AppMenus::refresh);
    refresh();
}

QAction* AppMenus::add(QMenu* menu, const QString& text, const QKeySequence& key, std::function<void()> run)
{
    QAction* action = menu->addAction(text);
    if (!key.isEmpty())
        action->setShortcut(key);
    connect(action, &QAction::triggered, this, [run = std::move(run)] {
        if (run)
            run();
    });
    m_allActions.push_back(action);
    return action;
}

QList<QAction*> AppMenus::shortcutActions() const
{
    return QList<QAction*>(m_allActions.begin(), m_allActions.end());
}

WindowCommands AppMenus::commands() const
{
    return m_window->contentView() ? m_window->contentView()->commands() : WindowCommands{};
}

QAction* AppMenus::action(const QString& text) const
{
    for (QAction* action : m_allActions)
        if (plainText(action) == text)
            return action;
    return nullptr;
}

void AppMenus::buildFileMenu(QMenuBar* bar)
{
    QMenu* file = bar->addMenu(QStringLiteral("&File"));
    m_newSermon = add(file, QStringLiteral("New Sermon"), QKeySequence(Qt::CTRL | Qt::Key_N), [this] {
        if (m_context.supervisor)
            m_context.supervisor->showNewSermon();
    });
    add(file, QStringLiteral("Open\u2026"), QKeySequence::Open, [this] {
        if (m_context.documents)
            m_context.documents->openWithPanel(m_window);
    });
    m_recent = file->addMenu(QStringLiteral("Open Recent"));
    connect(m_recent, &QMenu::aboutToShow, this, &AppMenus::rebuildRecentMenu);
    add(file, QStringLiteral("Import OPML\u2026"), {}, [this] {
        if (m_context.documents)
            m_context.documents->importOpmlWithPanel(m_window);
    });
    file->addSeparator();
    add(file, QStringLiteral("Close"), QKeySequence::Close, [this] { m_window->close(); });
    m_save = add(file, QStringLiteral("Save"), QKeySequence::Save, [this] { m_window->save(); });
    m_saveAs = add(file, QStringLiteral("Save As\u2026"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
                   [this] { m_window->saveAs(); });
    add(file, QStringLiteral("Export as PDF\u2026"), {}, [this] { ManuscriptExports::exportPdf(m_window, m_context); });
    add(file, QStringLiteral("Export as OPML\u2026"), {},
        [this] { ManuscriptExports::exportOpml(m_window, m_context); });
    file->addSeparator();
    add(file, QStringLiteral("Print\u2026"), QKeySequence::Print,
        [this] { ManuscriptExports::print(m_window, m_context); });
    file->addSeparator();
    m_fileSettings =
        add(file, QStringLiteral("File Settings\u2026"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_I), [this] {
            if (auto record = commands().fileSettings)
                record->open();
        });
    file->addSeparator();
    QAction* quit = add(file, QStringLiteral("Quit"), QKeySequence::Quit, [this] {
        if (m_context.documents)
            m_context.documents->quit();
    });
    quit->setMenuRole(QAction::QuitRole);
}

void AppMenus::rebuildRecentMenu()
{
    m_recent->clear();
    if (!m_context.preferences)
        return;
    for (const QString& path : m_context.preferences->recentFiles()) {
        // A file name's "&" is shown, not taken as a shortcut; its path is shown, not obeyed.
        QAction* action =
            m_recent->addAction(QFileInfo(path).fileName().replace(QLatin1Char('&'), QStringLiteral("&&")));
        action->setToolTip(Qt::convertFromPlainText(path, Qt::WhiteSpacePre));
        connect(action, &QAction::triggered, this, [this, path] {
            if (m_context.documents)
                m_context.documents->open(path, m_window);
        });
    }
    m_recent->addSeparator();
    QAction* clear = m_recent->addAction(QStringLiteral("Clear Menu"));
    clear->setEnabled(!m_context.preferences->recentFiles().isEmpty());
    connect(clear, &QAction::triggered, this, [this] { m_context.preferences->setRecentFiles({}); });
}

void AppMenus::performPasteboardCommand(NodeCommand command, const std::optional<NodeActions>& actions)
{
    QWidget* focus = QApplication::focusWidget();
    auto* line = qobject_cast<QLineEdit*>(focus);
    auto* text = qobject_cast<QTextEdit*>(focus);
    auto* plain = qobject_cast<QPlainTextEdit*>(focus);
    // A spin box edits through a line edit of its own.
    if (auto* spin = qobject_cast<QAbstractSpinBox*>(focus))
        line = spin->findChild<QLineEdit*>();
    if (line || text || plain) {
        switch (command) {
        case NodeCommand::cut:
            line ? line->cut() : text ? text->cut() : plain->cut();
            break;
        case NodeCommand::copy:
            line ? line->copy() : text ? text->copy() : plain->copy();
            break;
        case NodeCommand::paste:
            line ? line->paste() : text ? text->paste() : plain->paste();
            break;
        default:
            line ? line->selectAll() : text ? text->selectAll() : plain->selectAll();
            break;
        }
        return;
    }
    if (actions)
        actions->perform(command);
}

void AppMenus::buildEditMenu(QMenuBar* bar)
{
    QMenu* edit = bar->addMenu(QStringLiteral("&Edit"));
    m_undo = add(edit, QStringLiteral("Undo"), QKeySequence::Undo, [this] {
        if (OpenDocument* document = m_window->openDocument())
            document->undoManager()->undo();
    });
    m_redo = add(edit, QStringLiteral("Redo"), QKeySequence::Redo, [this] {
        if (OpenDocument* document = m_window->openDocument())
            document->undoManager()->redo();
    });
    edit->addSeparator();
    for (const NodeCommands::MenuItem& item : NodeCommands::editMenu(NodeActionState{})) {
        if (item.isSeparator()) {
            edit->addSeparator();
            continue;
        }
        if (item.command == NodeCommand::markSubmenu) {
            m_markMenu = edit->addMenu(item.label);
            MapContextMenu::showEmojiInColour(*m_markMenu);
            for (const NodeCommands::MarkEntry& entry : NodeCommands::markEntries()) {
                if (entry.separatorBefore)
                    m_markMenu->addSeparator();
                const NodeCommand command = entry.command;
                const QString marker = entry.marker;
                add(m_markMenu, withKeyText(entry.title, entry.key), {}, [this, command, marker] {
                    if (auto actions = commands().nodeActions)
                        actions->perform(command, marker);
                });
            }
            continue;
        }
        const NodeCommand command = item.command;
        QAction* action = add(edit, withKeyText(item.label, item.key), {}, [this, command] {
            if (isPasteboardCommand(command))
                performPasteboardCommand(command, commands().nodeActions);
            else if (auto actions = commands().nodeActions)
                actions->perform(command);
        });
        m_nodeEntries.push_back({action, command});
    }
    edit->addSeparator();
    m_find = add(edit, QStringLiteral("Find..."), QKeySequence(Qt::CTRL | Qt::Key_F), [this] {
        if (auto record = commands().find)
            record->find();
    });
}

void AppMenus::buildViewMenu(QMenuBar* bar)
{
    QMenu* view = bar->addMenu(QStringLiteral("&View"));
    m_mindMap = add(view, QStringLiteral("Mind Map"), QKeySequence(Qt::CTRL | Qt::Key_1), [this] {
        if (auto record = commands().switchMode)
            record->action(AppMode::tree);
    });
    m_delivery = add(view, QStringLiteral("Delivery"), QKeySequence(Qt::CTRL | Qt::Key_2), [this] {
        if (auto record = commands().switchMode)
            record->action(AppMode::delivery);
    });
    view->addSeparator();
    m_zoomIn = add(view, QStringLiteral("Zoom In"), QKeySequence(Qt::CTRL | Qt::Key_Equal), [this] {
        if (auto zoom = commands().zoom; zoom && zoom->zoomIn)
            zoom->zoomIn();
    });
    m_zoomOut = add(view, QStringLiteral("Zoom Out"), QKeySequence(Qt::CTRL | Qt::Key_Minus), [this] {
        if (auto zoom = commands().zoom; zoom && zoom->zoomOut)
            zoom->zoomOut();
    });
    m_zoomIn->setShortcuts(ZoomFunctions::zoomInKeys());
    m_zoomOut->setShortcuts(ZoomFunctions::zoomOutKeys());
    m_actualSize = add(view, QStringLiteral("Actual Size"), QKeySequence(Qt::CTRL | Qt::Key_0), [this] {
        if (auto zoom = commands().zoom; zoom && zoom->reset)
            zoom->reset();
    });
    view->addSeparator();
    m_focusMode = add(view, QStringLiteral("Focus Mode"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F), [this] {
        if (auto record = commands().focusMode)
            record->toggle();
    });
    // The delivery view's own actions, while there is one: it owns them and their state.
    m_pulpitMenu = view->addMenu(QStringLiteral("At the Pulpit"));
    connect(m_pulpitMenu, &QMenu::aboutToShow, this, [this] {
        m_pulpitMenu->clear();
        if (DeliveryView* delivery = m_window->contentView() ? m_window->contentView()->deliveryView() : nullptr)
            m_pulpitMenu->addActions(delivery->pulpitActions());
    });
}

void AppMenus::buildWindowMenu(QMenuBar* bar)
{
    QMenu* window = bar->addMenu(QStringLiteral("&Window"));
    add(window, QStringLiteral("Minimize"), QKeySequence(Qt::CTRL | Qt::Key_M), [this] { m_window->showMinimized(); });
    window->addSeparator();
    // The open sermons go here each time the menu opens.
    m_windowMenu = window;
    m_windowListEnd = window->addSeparator();
    connect(window, &QMenu::aboutToShow, this, &AppMenus::rebuildWindowList);
    m_welcome = add(window, QStringLiteral("Welcome to Orantium"), {}, [this] {
        if (m_context.supervisor)
            m_context.supervisor->showWelcome();
    });
}

void AppMenus::rebuildWindowList()
{
    for (QAction* action : m_windowList)
        delete action;
    m_windowList.clear();
    // In the order they were opened, when the manager knows it.
    QList<DocumentWindow*> windows;
    if (m_context.documents)
        windows = m_context.documents->windows();
    else
        windows.append(m_window);
    for (DocumentWindow* other : windows) {
        if (!other->isVisible() || !other->openDocument())
            continue;
        // A file name's "&" is shown, not taken as a shortcut.
        auto* action = new QAction(other->openDocument()->displayName().replace(QLatin1Char('&'), QStringLiteral("&&")),
                                   m_windowMenu);
        action->setCheckable(true);
        action->setChecked(other == m_window);
        const QPointer<DocumentWindow> target(other);
        connect(action, &QAction::triggered, this, [target] {
            if (!target)
                return;
            if (target->isMinimized())
                target->showNormal();
            target->raise();
            target->activateWindow();
        });
        m_windowMenu->insertAction(m_windowListEnd, action);
        m_windowList.push_back(action);
    }
}

void AppMenus::buildHelpMenu(QMenuBar* bar)
{
    QMenu* help = bar->addMenu(QStringLiteral("&Help"));
    add(help, QStringLiteral("Keyboard Shortcuts"), {}, [this] {
        QDialog* sheet = ShortcutSheet::make(ShortcutSheet::rows(shortcutActions()), m_window);
        sheet->setAttribute(Qt::WA_DeleteOnClose);
        sheet->open();
    });
    help->addSeparator();
    m_about = add(help, QStringLiteral("About Orantium"), {}, [this] {
        if (m_context.supervisor)
            m_context.supervisor->showAbout();
    });
    m_about->setMenuRole(QAction::AboutRole);
    m_checkForUpdates = add(help, QStringLiteral("Check for Updates\u2026"), {}, [this] {
        if (m_context.updates)
            m_context.updates->checkForUpdates();
    });
}

void AppMenus::refresh()
{
    const WindowCommands records = commands();
    OpenDocument* document = m_window->openDocument();
    m_undo->setEnabled(document && document->undoManager()->canUndo());
    m_redo->setEnabled(document && document->undoManager()->canRedo());
    m_fileSettings->setEnabled(records.fileSettings.has_value());
    m_find->setEnabled(records.find.has_value());
    m_mindMap->setEnabled(records.switchMode.has_value());
    m_delivery->setEnabled(records.switchMode.has_value());
    for (QAction* zoom : {m_zoomIn, m_zoomOut, m_actualSize})
        zoom->setEnabled(records.zoom.has_value());
    m_focusMode->setEnabled(records.focusMode.has_value());
    m_pulpitMenu->setEnabled(m_window->contentView() && m_window->contentView()->deliveryView());
    m_checkForUpdates->setEnabled(m_context.updates && m_context.updates->canCheckForUpdates());
    m_newSermon->setEnabled(m_context.supervisor != nullptr);
    m_about->setEnabled(m_context.supervisor != nullptr);
    m_welcome->setEnabled(m_context.supervisor != nullptr);

    const NodeActionState state = records.nodeActions ? records.nodeActions->state : NodeActionState{};
    for (const NodeEntry& entry : m_nodeEntries) {
        entry.action->setEnabled(NodeCommands::isEnabledInEditMenu(entry.command, state));
        if (entry.command == NodeCommand::toggleQuote) {
            const NodeCommands::CommandInfo& info = NodeCommands::info(entry.command);
            entry.action->setText(withKeyText(NodeCommands::label(entry.command, state), info.key));
        }
    }
    if (m_markMenu)
        m_markMenu->setEnabled(NodeCommands::isEnabledInEditMenu(NodeCommand::markSubmenu, state));
}
