#include "NodeCommands.h"

#include "DocumentController.h"
#include "Markers.h"
#include "core/SermonDocument.h"
#include "core/UndoManager.h"

#include <QtGlobal>

#include <array>
#include <optional>

namespace NodeCommands {

namespace {

constexpr Qt::KeyboardModifiers none = Qt::NoModifier;
constexpr Qt::KeyboardModifiers ctrl = Qt::ControlModifier;
constexpr Qt::KeyboardModifiers shift = Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers alt = Qt::AltModifier;
constexpr Qt::KeyboardModifiers ctrlShift = Qt::ControlModifier | Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers chordModifiers =
    Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier | Qt::MetaModifier;

bool hasAnySelection(const NodeActionState& s)
{
    return s.hasAnySelection;
}
bool hasSelection(const NodeActionState& s)
{
    return s.hasSelection;
}
bool hasSingleSelection(const NodeActionState& s)
{
    return s.hasSelection && !s.hasMultiSelection;
}
bool noMultiSelection(const NodeActionState& s)
{
    return !s.hasMultiSelection;
}
bool hasMultiSelection(const NodeActionState& s)
{
    return s.hasMultiSelection;
}
bool canToggleQuote(const NodeActionState& s)
{
    return s.canToggleQuote;
}
bool canFold(const NodeActionState& s)
{
    return s.canFold;
}
bool canUnfold(const NodeActionState& s)
{
    return s.canUnfold;
}
bool canPromote(const NodeActionState& s)
{
    return s.canPromote;
}
bool canSplit(const NodeActionState& s)
{
    return s.canSplit;
}
bool canSplitSentences(const NodeActionState& s)
{
    return s.canSplitSentences;
}
// A quote takes no lines under it.
bool canAddUnder(const NodeActionState& s)
{
    return !s.hasMultiSelection && !s.isQuote;
}
bool canAddUnderOne(const NodeActionState& s)
{
    return hasSingleSelection(s) && !s.isQuote;
}

using C = NodeCommand;

// Cut, Copy, Paste and Select All are never disabled: in the Edit menu they stand for the
// text fields' own commands too.
const std::vector<CommandInfo>& table()
{
    static const std::vector<CommandInfo> commands{
        {C::cut, QStringLiteral("Cut"), {}, {Qt::Key_X, ctrl}, nullptr, nullptr},
        {C::copy, QStringLiteral("Copy"), {}, {Qt::Key_C, ctrl}, nullptr, nullptr},
        {C::copyBranch, QStringLiteral("Copy Branch"), {}, {Qt::Key_C, ctrlShift}, nullptr, hasSelection},
        {C::paste, QStringLiteral("Paste"), {}, {Qt::Key_V, ctrl}, nullptr, nullptr},
        {C::selectAll, QStringLiteral("Select All"), {}, {Qt::Key_A, ctrl}, nullptr, nullptr},
        {C::deselectAll, QStringLiteral("Deselect All"), {}, {Qt::Key_A, ctrlShift}, nullptr, hasAnySelection},
        {C::duplicate, QStringLiteral("Duplicate"), {}, {Qt::Key_D, ctrl}, nullptr, hasSelection},
        {C::deleteSelection, QStringLiteral("Delete"), {}, {Qt::Key_Delete, none}, nullptr, hasSelection},
        {C::toggleQuote,
         QStringLiteral("Mark as Quote"),
         QStringLiteral("Unmark as Quote"),
         {Qt::Key_Apostrophe, ctrl},
         canToggleQuote,
         canToggleQuote},
        {C::markSubmenu, QStringLiteral("Mark"), {}, {}, nullptr, hasSelection},
        {C::fold, QStringLiteral("Fold"), {}, {Qt::Key_Left, ctrl}, canFold, canFold},
        {C::unfold, QStringLiteral("Unfold"), {}, {Qt::Key_Right, ctrl}, canUnfold, canUnfold},
        {C::moveUp, QStringLiteral("Move Up"), {}, {Qt::Key_Up, alt}, nullptr, hasSelection},
        {C::moveDown, QStringLiteral("Move Down"), {}, {Qt::Key_Down, alt}, nullptr, hasSelection},
        {C::promote, QStringLiteral("Promote"), {}, {Qt::Key_Left, alt}, canPromote, canPromote},
        {C::demote, QStringLiteral("Demote"), {}, {Qt::Key_Right, alt}, nullptr, hasSelection},
        {C::split, QStringLiteral("Split"), {}, {Qt::Key_Return, ctrl}, canSplit, canSplit},
        {C::splitSentences,
         QStringLiteral("Split Sentences"),
         {},
         {Qt::Key_Semicolon, ctrl},
         canSplitSentences,
         canSplitSentences},
        {C::join, QStringLiteral("Join"), {}, {Qt::Key_J, ctrl}, hasMultiSelection, hasMultiSelection},
        {C::edit, QStringLiteral("Edit"), {}, {Qt::Key_Space, none}, noMultiSelection, hasSingleSelection},
        {C::newLineBelow, QStringLiteral("New Line Below"), {}, {Qt::Key_Return, none}, nullptr, hasSelection},
        {C::newLineAbove, QStringLiteral("New Line Above"), {}, {Qt::Key_Return, shift}, nullptr, hasSelection},
        {C::newLineUnder, QStringLiteral("New Line Under"), {}, {Qt::Key_Tab, none}, canAddUnder, canAddUnderOne},
        {C::setMarker, QStringLiteral("Mark"), {}, {}, nullptr, hasSelection},
        {C::removeMarker, Markers::removalTitle, {}, {Qt::Key_0, ctrlShift}, nullptr, hasSelection},
    };
    return commands;
}

// Menu groups, separated wherever both sides have entries.
using Group = std::vector<NodeCommand>;
const std::vector<Group> contextGroups{
    {C::cut, C::copy, C::copyBranch, C::paste, C::duplicate},
    {C::deleteSelection},
    {C::toggleQuote},
    {C::markSubmenu},
    {C::fold, C::unfold},
    {C::moveUp, C::moveDown, C::promote, C::demote},
    {C::split, C::splitSentences, C::join},
    {C::edit, C::newLineBelow, C::newLineAbove, C::newLineUnder},
};
const std::vector<Group> editGroups{
    {C::cut, C::copy, C::copyBranch, C::paste, C::selectAll, C::deselectAll, C::duplicate},
    {C::deleteSelection},
    {C::toggleQuote},
    {C::markSubmenu},
    {C::fold, C::unfold},
    {C::moveUp, C::moveDown, C::promote, C::demote},
    {C::split, C::splitSentences, C::join},
    {C::edit, C::newLineBelow, C::newLineAbove, C::newLineUnder},
};

template <typename Keep, typename Enabled>
std::vector<MenuItem> buildMenu(const std::vector<Group>& groups, const NodeActionState& state, Keep keep,
                                Enabled enabled)
{
    std::vector<MenuItem> items;
    for (const Group& group : groups) {
        bool opened = false;
        for (NodeCommand command : group) {
            if (!keep(command))
                continue;
            if (!opened && !items.empty())
                items.push_back(MenuItem{});
            opened = true;
            const CommandInfo& entry = info(command);
            items.push_back({MenuItem::Kind::command, command, label(command, state), entry.key, enabled(command)});
        }
    }
    return items;
}

QString keyName(Qt::Key key)
{
    switch (key) {
    case Qt::Key_Return:
        return QStringLiteral("Return");
    case Qt::Key_Enter:
        return QStringLiteral("Enter");
    case Qt::Key_Tab:
        return QStringLiteral("Tab");
    case Qt::Key_Space:
        return QStringLiteral("Space");
    case Qt::Key_Left:
        return QStringLiteral("Left");
    case Qt::Key_Right:
        return QStringLiteral("Right");
    case Qt::Key_Up:
        return QStringLiteral("Up");
    case Qt::Key_Down:
        return QStringLiteral("Down");
    case Qt::Key_Delete:
        return QStringLiteral("Del");
    case Qt::Key_Backspace:
        return QStringLiteral("Backspace");
    case Qt::Key_Escape:
        return QStringLiteral("Esc");
    default:
        break;
    }
    // Printable keys carry their own (upper-case) character code.
    if (key >= Qt::Key_Space && key <= Qt::Key_AsciiTilde)
        return QString(QChar(char16_t(key)));
    return {};
}

CanvasKeyBinding command(int key, Qt::KeyboardModifiers mods, C c, QString marker = {})
{
    return {{Qt::Key(key), mods}, CanvasKeyAction::command, c, std::move(marker)};
}

CanvasKeyBinding action(int key, Qt::KeyboardModifiers mods, CanvasKeyAction a)
{
    return {{Qt::Key(key), mods}, a, C::edit, {}};
}

// Ctrl+Shift with a digit arrives as the shifted character on most layouts, as the digit on
// some: both are taken. Index = digit.
constexpr std::array<int, 10> shiftedDigits{
    Qt::Key_ParenRight, Qt::Key_Exclam,      Qt::Key_At,        Qt::Key_NumberSign, Qt::Key_Dollar,
    Qt::Key_Percent,    Qt::Key_AsciiCircum, Qt::Key_Ampersand, Qt::Key_Asterisk,   Qt::Key_ParenLeft,
};

std::optional<int> markerDigit(int key)
{
    for (int digit = 0; digit < 10; ++digit)
        if (key == shiftedDigits[size_t(digit)] || key == Qt::Key_0 + digit)
            return digit;
    return std::nullopt;
}

} // namespace

QString KeyChord::toString() const
{
    const QString name = keyName(key);
    if (name.isEmpty())
        return {};
    QString text;
    if (modifiers & Qt::ControlModifier)
        text += QStringLiteral("Ctrl+");
    if (modifiers & Qt::AltModifier)
        text += QStringLiteral("Alt+");
    if (modifiers & Qt::ShiftModifier)
        text += QStringLiteral("Shift+");
    if (modifiers & Qt::MetaModifier)
        text += QStringLiteral("Meta+");
    return text + name;
}

bool KeyChord::matches(int eventKey, Qt::KeyboardModifiers eventModifiers) const
{
    if (eventKey == Qt::Key_Enter)
        eventKey = Qt::Key_Return;
    return eventKey == key && (eventModifiers & chordModifiers) == modifiers;
}

const CommandInfo& info(NodeCommand command)
{
    for (const CommandInfo& entry : table())
        if (entry.command == command)
            return entry;
    Q_ASSERT_X(false, "NodeCommands::info", "command missing from the table");
    return info(NodeCommand::edit);
}

QString label(NodeCommand command, const NodeActionState& state)
{
    const CommandInfo& entry = info(command);
    return state.isQuote && !entry.labelWhenQuote.isEmpty() ? entry.labelWhenQuote : entry.label;
}

bool isShownInContextMenu(NodeCommand command, const NodeActionState& state)
{
    const StateTest test = info(command).shownWhen;
    return !test || test(state);
}

bool isEnabledInEditMenu(NodeCommand command, const NodeActionState& state)
{
    const StateTest test = info(command).enabledWhen;
    return !test || test(state);
}

std::vector<MenuItem> contextMenu(const NodeActionState& state)
{
    return buildMenu(
        contextGroups, state, [&](NodeCommand c) { return isShownInContextMenu(c, state); },
        [](NodeCommand) { return true; });
}

std::vector<MenuItem> editMenu(const NodeActionState& state)
{
    return buildMenu(
        editGroups, state, [](NodeCommand) { return true; },
        [&](NodeCommand c) { return isEnabledInEditMenu(c, state); });
}

const std::vector<MarkEntry>& markEntries()
{
    static const std::vector<MarkEntry> entries = [] {
        std::vector<MarkEntry> list;
        for (const Markers::Marker& m : Markers::all())
            list.push_back({m.symbol, C::setMarker, m.symbol, {Qt::Key(Qt::Key_0 + m.digit), ctrlShift}, false});
        list.push_back({Markers::removalTitle, C::removeMarker, {}, info(C::removeMarker).key, true});
        return list;
    }();
    return entries;
}

std::optional<CanvasKeyBinding> resolveCanvasKey(int key, Qt::KeyboardModifiers modifiers, bool hasAnySelection)
{
    using A = CanvasKeyAction;
    const Qt::KeyboardModifiers mods = modifiers & chordModifiers;
    const bool ctrl = mods & Qt::ControlModifier;
    const bool shift = mods & Qt::ShiftModifier;
    const bool alt = mods & Qt::AltModifier;
    const bool onlyCtrl = mods == Qt::ControlModifier;
    const bool onlyCtrlShift = mods == (Qt::ControlModifier | Qt::ShiftModifier);
    if (key == Qt::Key_Enter)
        key = Qt::Key_Return;

    switch (key) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        return command(key, mods, C::deleteSelection);
    case Qt::Key_Escape:
        if (!hasAnySelection)
            return std::nullopt;
        return action(key, mods, A::clearSelection);
    default:
        break;
    }
    // The Edit menu's Deselect All: the canvas sees its key before the menu does.
    if (key == Qt::Key_A && onlyCtrlShift)
        return command(key, mods, C::deselectAll);
    if (key == Qt::Key_A && ctrl)
        return command(key, mods, C::selectAll);
    if (onlyCtrl) {
        switch (key) {
        case Qt::Key_X:
            return command(key, mods, C::cut);
        case Qt::Key_C:
            return command(key, mods, C::copy);
        case Qt::Key_V:
            return command(key, mods, C::paste);
        case Qt::Key_D:
            return command(key, mods, C::duplicate);
        case Qt::Key_Semicolon:
            return command(key, mods, C::splitSentences);
        case Qt::Key_Z:
            return action(key, mods, A::undo);
        case Qt::Key_J:
            return command(key, mods, C::join);
        case Qt::Key_Apostrophe:
            return command(key, mods, C::toggleQuote);
        default:
            break;
        }
    }
    if (onlyCtrlShift) {
        if (key == Qt::Key_Z)
            return action(key, mods, A::redo);
        if (key == Qt::Key_C)
            return command(key, mods, C::copyBranch);
        if (const auto digit = markerDigit(key)) {
            if (*digit == Markers::removalDigit)
                return command(key, mods, C::removeMarker);
            for (const Markers::Marker& m : Markers::all())
                if (m.digit == *digit)
                    return command(key, mods, C::setMarker, m.symbol);
        }
    }
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab: // Shift+Tab arrives as its own key
        return command(key, mods, C::newLineUnder);
    case Qt::Key_Return:
        return command(key, mods, ctrl ? C::split : shift ? C::newLineAbove : C::newLineBelow);
    case Qt::Key_Space:
        return command(key, mods, ctrl ? C::join : C::edit);
    case Qt::Key_Up:
        return alt ? command(key, mods, C::moveUp) : action(key, mods, shift ? A::extendUp : A::selectUp);
    case Qt::Key_Down:
        return alt ? command(key, mods, C::moveDown) : action(key, mods, shift ? A::extendDown : A::selectDown);
    case Qt::Key_Left:
        if (alt)
            return command(key, mods, C::promote);
        if (ctrl)
            return command(key, mods, C::fold);
        return action(key, mods, shift ? A::extendLeft : A::selectParent);
    case Qt::Key_Right:
        if (alt)
            return command(key, mods, C::demote);
        if (ctrl)
            return command(key, mods, C::unfold);
        return action(key, mods, shift ? A::extendRight : A::selectFirstChild);
    default:
        return std::nullopt;
    }
}

bool run(const CanvasKeyBinding& binding, DocumentController& controller, const NodeActions& actions)
{
    using A = CanvasKeyAction;
    switch (binding.action) {
    case A::command:
        actions.perform(binding.command, binding.marker);
        return true;
    case A::undo:
    case A::redo:
        if (UndoManager* manager = controller.undoManager())
            binding.action == A::undo ? manager->undo() : manager->redo();
        else
            binding.action == A::undo ? controller.document()->undo() : controller.document()->redo();
        return true;
    case A::clearSelection:
        return controller.deselectAll();
    case A::selectUp:
        controller.moveSelection(false);
        return true;
    case A::selectDown:
        controller.moveSelection(true);
        return true;
    case A::extendUp:
        controller.extendSelection(false);
        return true;
    case A::extendDown:
        controller.extendSelection(true);
        return true;
    case A::selectParent:
        controller.selectParent();
        return true;
    case A::selectFirstChild:
        controller.selectFirstChild();
        return true;
    case A::extendLeft:
        controller.extendToParent();
        return true;
    case A::extendRight:
        controller.extendToFirstChild();
        return true;
    }
    return false;
}

bool handleCanvasKey(int key, Qt::KeyboardModifiers modifiers, DocumentController& controller,
                     const NodeActions& actions)
{
    const auto binding = resolveCanvasKey(key, modifiers, !controller.effectiveSelection().isEmpty());
    return binding && run(*binding, controller, actions);
}

} // namespace NodeCommands
