#pragma once

#include "AppContext.h"
#include "WindowCommands.h"

#include "editing/NodeCommands.h"

#include <QObject>

#include <vector>

class DocumentWindow;
class QAction;
class QMenu;
class QMenuBar;

// The menu bar of a document window: File, Edit, View, Window, Help. Items act on the window's
// published records and are off while their record is absent; "Cut", "Copy", "Paste" and
// "Select All" are never off, because they serve text fields as well.
class AppMenus : public QObject {
    Q_OBJECT
public:
    AppMenus(QMenuBar* bar, AppContext context, DocumentWindow* window);

    // Reads the window's records again and enables the items to match.
    void refresh();
    // The item with this text (without its key), or null.
    QAction* action(const QString& text) const;

    // Every item the menus made, for the shortcut sheet.
    QList<QAction*> shortcutActions() const;

    // Sends a pasteboard command to the text field with the keyboard, else to the node commands.
    static void performPasteboardCommand(NodeCommand command, const std::optional<NodeActions>& actions);

private:
    void buildFileMenu(QMenuBar* bar);
    void buildEditMenu(QMenuBar* bar);
    void buildViewMenu(QMenuBar* bar);
    void buildWindowMenu(QMenuBar* bar);
    void buildHelpMenu(QMenuBar* bar);
    void rebuildRecentMenu();
    // The Window menu's list of open sermons; the chosen one comes to the front.
    void rebuildWindowList();
    QAction* add(QMenu* menu, const QString& text, const QKeySequence& key, std::function<void()> run);
    WindowCommands commands() const;

    AppContext m_context;
    DocumentWindow* m_window;
    QMenu* m_recent = nullptr;
    std::vector<QAction*> m_allActions;

    struct NodeEntry {
        QAction* action;
        NodeCommand command;
    };
    std::vector<NodeEntry> m_nodeEntries;
    QMenu* m_markMenu = nullptr;
    QMenu* m_pulpitMenu = nullptr;
    QMenu* m_windowMenu = nullptr;
    QAction* m_windowListEnd = nullptr;
    std::vector<QAction*> m_windowList;
    QAction *m_undo = nullptr, *m_redo = nullptr, *m_save = nullptr, *m_saveAs = nullptr;
    QAction *m_fileSettings = nullptr, *m_find = nullptr, *m_mindMap = nullptr, *m_delivery = nullptr;
    QAction *m_zoomIn = nullptr, *m_zoomOut = nullptr, *m_actualSize = nullptr, *m_focusMode = nullptr;
    QAction *m_checkForUpdates = nullptr, *m_newSermon = nullptr, *m_about = nullptr, *m_welcome = nullptr;
};
