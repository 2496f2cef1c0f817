#pragma once

#include "NodeActions.h"

#include <QString>
#include <QtCore/qnamespace.h>

#include <optional>
#include <vector>

class DocumentController;

// The command table: labels, keys, when an entry is shown or enabled, and how the menus are
// grouped. The map's context menu, the Edit menu and the canvas keys are all built from here,
// so that a command reads and behaves the same wherever it is reached.
namespace NodeCommands {

// A key with its modifiers, as data: views turn it into a QKeySequence or compare key events.
// Ctrl stands where a Mac has Command, Alt where it has Option.
struct KeyChord {
    Qt::Key key = Qt::Key_unknown;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;

    bool isEmpty() const { return key == Qt::Key_unknown; }
    // Portable text such as "Ctrl+Shift+C", as QKeySequence reads it.
    QString toString() const;
    // Whether a key event is this chord. Keypad Enter counts as Return; the keypad flag is ignored.
    bool matches(int key, Qt::KeyboardModifiers modifiers) const;

    friend bool operator==(const KeyChord& a, const KeyChord& b)
    {
        return a.key == b.key && a.modifiers == b.modifiers;
    }
};

using StateTest = bool (*)(const NodeActionState&);

struct CommandInfo {
    NodeCommand command;
    QString label;
    QString labelWhenQuote; // the toggle's other name; empty for all other commands
    KeyChord key; // shown beside the entry
    StateTest shownWhen; // in the context menu; null: always shown
    StateTest enabledWhen; // in the Edit menu; null: never disabled
};

// Unknown commands are a programming error: this asserts, then falls back to "edit".
const CommandInfo& info(NodeCommand command);
QString label(NodeCommand command, const NodeActionState& state);
bool isShownInContextMenu(NodeCommand command, const NodeActionState& state);
bool isEnabledInEditMenu(NodeCommand command, const NodeActionState& state);

struct MenuItem {
    enum class Kind { command, separator };
    Kind kind = Kind::separator;
    NodeCommand command = NodeCommand::edit; // for Kind::command; markSubmenu opens markEntries()
    QString label;
    KeyChord key;
    bool enabled = true;

    bool isSeparator() const { return kind == Kind::separator; }
};

// The context menu for this state: only the entries shown, all enabled (the actions refuse by
// themselves), with separators between the groups that have entries.
std::vector<MenuItem> contextMenu(const NodeActionState& state);
// The node part of the Edit menu: every entry, enabled or not for this state. With no canvas
// publishing a record, pass a default state.
std::vector<MenuItem> editMenu(const NodeActionState& state);

struct MarkEntry {
    QString title;
    NodeCommand command; // setMarker or removeMarker
    QString marker; // for setMarker
    KeyChord key;
    bool separatorBefore = false;
};
// The nine markers, then the removal after a separator.
const std::vector<MarkEntry>& markEntries();

// ---- Canvas keys ----------------------------------------------------------------------------

enum class CanvasKeyAction {
    command, // the binding's NodeCommand through the published NodeActions
    undo,
    redo,
    clearSelection, // Escape: passed on when nothing is selected
    selectUp,
    selectDown,
    extendUp,
    extendDown,
    selectParent,
    selectFirstChild,
    extendLeft,
    extendRight,
};

struct CanvasKeyBinding {
    KeyChord key;
    CanvasKeyAction action = CanvasKeyAction::command;
    NodeCommand command = NodeCommand::edit;
    QString marker;
};

// What a key press on the map means, row by row as the key table has them: Ctrl stands for the
// Mac's Command, Alt for Option; Backspace and Delete both delete. Nothing when the key should
// pass on to the menus (Escape with nothing selected among them).
std::optional<CanvasKeyBinding> resolveCanvasKey(int key, Qt::KeyboardModifiers modifiers, bool hasAnySelection);

// Runs a binding; false when the key should be passed on.
bool run(const CanvasKeyBinding& binding, DocumentController& controller, const NodeActions& actions);
// A key press on the canvas: finds and runs its binding; false when nothing took it.
bool handleCanvasKey(int key, Qt::KeyboardModifiers modifiers, DocumentController& controller,
                     const NodeActions& actions);

} // namespace NodeCommands
