#include "MapContextMenu.h"

#include "editing/NodeActions.h"
#include "editing/NodeCommands.h"

#include <QKeySequence>
#include <QMenu>

namespace MapContextMenu {

namespace {
void addEntry(QMenu& menu, const QString& title, const NodeCommands::KeyChord& key, std::function<void()> run)
{
    QAction* action = menu.addAction(title);
    if (!key.isEmpty())
        action->setShortcut(QKeySequence(key.toString()));
    // Shown beside the entry only; the canvas's own keys do the work.
    action->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(action, &QAction::triggered, &menu, std::move(run));
}
} // namespace

void build(QMenu& menu, const NodeActions& actions)
{
    for (const NodeCommands::MenuItem& item : NodeCommands::contextMenu(actions.state)) {
        if (item.isSeparator()) {
            menu.addSeparator();
            continue;
        }
        if (item.command == NodeCommand::markSubmenu) {
            QMenu* marks = menu.addMenu(item.label);
            for (const NodeCommands::MarkEntry& entry : NodeCommands::markEntries()) {
                if (entry.separatorBefore)
                    marks->addSeparator();
                addEntry(*marks, entry.title, entry.key,
                         [actions, entry] { actions.perform(entry.command, entry.marker); });
            }
            continue;
        }
        const NodeCommand command = item.command;
        addEntry(menu, item.label, item.key, [actions, command] { actions.perform(command); });
    }
}

} // namespace MapContextMenu
