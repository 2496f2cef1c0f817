#include "EditingFixture.h"

#include "editing/Markers.h"
#include "editing/NodeCommands.h"

namespace {

using namespace NodeCommands;
using C = NodeCommand;

class Commands : public Editing {
protected:
    void SetUp() override { load("T\n  a\n    a1\n    a2\n  + b\n    b1\n  > q\n  c"); }
    NodeActionState state() const { return NodeActionState::of(*controller); }
    QStringList contextLabels() const
    {
        QStringList labels;
        for (const MenuItem& item : contextMenu(state()))
            labels.append(item.isSeparator() ? QStringLiteral("|") : item.label);
        return labels;
    }
    bool key(int k, Qt::KeyboardModifiers mods = Qt::NoModifier)
    {
        return handleCanvasKey(k, mods, *controller, NodeActions::forController(*controller));
    }
};

TEST_F(Commands, WithTheTitleSelectedOnlyTheSelectionCountsAreTrue)
{
    select(QStringList{"T", "a"});
    NodeActionState expected;
    expected.hasAnySelection = true;
    expected.hasMultiSelection = true;
    EXPECT_EQ(state(), expected);

    select("T");
    EXPECT_EQ(
        contextLabels(),
        (QStringList{"Cut", "Copy", "Copy Branch", "Paste", "Duplicate", "|", "Delete", "|", "Mark", "|", "Move Up",
                     "Move Down", "Demote", "|", "Edit", "New Line Below", "New Line Above", "New Line Under"}));
}

TEST_F(Commands, StateGathersAnyAndAllOverTheSelection)
{
    select(QStringList{"a", "b"});
    NodeActionState s = state();
    EXPECT_TRUE(s.hasSelection);
    EXPECT_TRUE(s.canFold);
    EXPECT_TRUE(s.canUnfold);
    EXPECT_FALSE(s.canToggleQuote) << "a branch is neither quote nor leaf";
    EXPECT_FALSE(s.canPromote) << "children of the title";

    select(QStringList{"q", "c"});
    s = state();
    EXPECT_TRUE(s.canToggleQuote);
    EXPECT_FALSE(s.isQuote);
    select("q");
    EXPECT_TRUE(state().isQuote);

    select(QStringList{"a1", "a2"});
    EXPECT_TRUE(state().canPromote);
}

struct SplitHint {
    QString text;
    bool canSplit;
    bool canSplitSentences;
};

class SplitHints : public Commands, public ::testing::WithParamInterface<SplitHint> {};

TEST_P(SplitHints, AreOfferedOnlyWhenTheTextShowsThem)
{
    node("c")->setText(GetParam().text);
    controller->setSelectedNodeID(root()->children().back()->id());
    EXPECT_EQ(state().canSplit, GetParam().canSplit);
    EXPECT_EQ(state().canSplitSentences, GetParam().canSplitSentences);
}

INSTANTIATE_TEST_SUITE_P(Texts, SplitHints,
                         ::testing::Values(SplitHint{QStringLiteral("one\u2028two"), true, false},
                                           SplitHint{"one\ntwo", false, false}, // split would cut it, but isn't offered
                                           SplitHint{"one. two.", false, false}, // no capital after the mark
                                           SplitHint{"One. Two.", false, true}));

TEST_F(Commands, ContextMenuShowsWhatTheStateAllows)
{
    select(QStringList{"a1", "a2"});
    EXPECT_EQ(contextLabels(),
              (QStringList{"Cut",
                           "Copy",
                           "Copy Branch",
                           "Paste",
                           "Duplicate",
                           "|",
                           "Delete",
                           "|",
                           "Mark as Quote",
                           "|",
                           "Mark",
                           "|",
                           "Move Up",
                           "Move Down",
                           "Promote",
                           "Demote",
                           "|",
                           "Join",
                           "|",
                           "New Line Below",
                           "New Line Above"}));
    select("q");
    EXPECT_TRUE(contextLabels().contains("Unmark as Quote"));
    // A quote takes no lines under it: hidden here, off in the Edit menu.
    EXPECT_FALSE(contextLabels().contains("New Line Under"));
    EXPECT_FALSE(isEnabledInEditMenu(C::newLineUnder, state()));
    select("c");
    EXPECT_TRUE(contextLabels().contains("New Line Under"));
    EXPECT_TRUE(isEnabledInEditMenu(C::newLineUnder, state()));
    select("b");
    EXPECT_TRUE(contextLabels().contains("Unfold"));
    EXPECT_FALSE(contextLabels().contains("Fold"));
    EXPECT_FALSE(contextLabels().contains("Promote"));
    EXPECT_TRUE(contextLabels().contains("Demote"));
}

TEST_F(Commands, EditMenuWithoutARecordKeepsOnlyThePasteboardGroup)
{
    QStringList enabled;
    QStringList all;
    for (const MenuItem& item : editMenu(NodeActionState{})) {
        if (item.isSeparator())
            continue;
        all.append(item.label);
        if (item.enabled)
            enabled.append(item.label);
    }
    EXPECT_EQ(enabled, (QStringList{"Cut", "Copy", "Paste", "Select All"}));
    EXPECT_EQ(all.mid(0, 7),
              (QStringList{"Cut", "Copy", "Copy Branch", "Paste", "Select All", "Deselect All", "Duplicate"}));
    EXPECT_EQ(all.size(), 23);
}

TEST_F(Commands, EditMenuDisablesEditForAMultipleSelection)
{
    select(QStringList{"a1", "a2"});
    for (const MenuItem& item : editMenu(state())) {
        if (item.isSeparator())
            continue;
        if (item.command == C::edit || item.command == C::newLineUnder) {
            EXPECT_FALSE(item.enabled);
        }
        if (item.command == C::join || item.command == C::deleteSelection) {
            EXPECT_TRUE(item.enabled);
        }
    }
}

TEST(MarkMenu, HoldsNineMarkersThenRemoval)
{
    const auto& entries = markEntries();
    ASSERT_EQ(entries.size(), 10u);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(entries[i].marker, Markers::all()[i].symbol);
        EXPECT_EQ(entries[i].title, entries[i].marker);
        EXPECT_EQ(entries[i].key.toString(), QStringLiteral("Ctrl+Shift+%1").arg(i + 1));
        EXPECT_FALSE(entries[i].separatorBefore);
    }
    EXPECT_EQ(entries[0].marker, QStringLiteral("\U0001F534"));
    EXPECT_EQ(entries[8].marker, QStringLiteral("\u26AA"));
    EXPECT_EQ(entries[9].command, C::removeMarker);
    EXPECT_EQ(entries[9].key.toString(), "Ctrl+Shift+0");
    EXPECT_TRUE(entries[9].separatorBefore);
}

TEST(CommandTable, KeysReadAsShortcutText)
{
    EXPECT_EQ(info(C::copyBranch).key.toString(), "Ctrl+Shift+C");
    EXPECT_EQ(info(C::moveUp).key.toString(), "Alt+Up");
    EXPECT_EQ(info(C::toggleQuote).key.toString(), "Ctrl+'");
    EXPECT_EQ(info(C::newLineAbove).key.toString(), "Shift+Return");
}

TEST_F(Commands, EveryCommandButTheSubmenuReachesTheController)
{
    const NodeActions actions = NodeActions::forController(*controller);
    for (int c = 0; c <= int(C::removeMarker); ++c) {
        const auto command = NodeCommand(c);
        EXPECT_EQ(actions.perform(command, Markers::all()[0].symbol), command != C::markSubmenu) << c;
    }
}

// ---- canvas keys ----------------------------------------------------------------------------

TEST_F(Commands, CtrlShiftADeselectsWhatCtrlASelected)
{
    select("a");
    EXPECT_TRUE(key(Qt::Key_A, Qt::ControlModifier));
    EXPECT_EQ(controller->selectedNodeIDs().size(), 8); // every node, the title with them
    EXPECT_TRUE(key(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier));
    EXPECT_EQ(selected(), "<none>");
    EXPECT_TRUE(controller->selectedNodeIDs().isEmpty());
}

TEST_F(Commands, DeleteKeysAndEscape)
{
    select("c");
    EXPECT_TRUE(key(Qt::Key_Backspace));
    select("q");
    EXPECT_TRUE(key(Qt::Key_Delete));
    EXPECT_EQ(tree(), "T(a(a1, a2), b+(b1))");
    EXPECT_TRUE(key(Qt::Key_Escape));
    EXPECT_EQ(selected(), "<none>");
    EXPECT_FALSE(key(Qt::Key_Escape)) << "nothing selected: passed on";
}

TEST_F(Commands, CtrlSpaceJoinsAsCtrlJDoes)
{
    select(QStringList{"a1", "a2"});
    EXPECT_TRUE(key(Qt::Key_Space, Qt::ControlModifier));
    EXPECT_EQ(tree(), "T(a(a1/a2), b+(b1), >q, c)");
    EXPECT_TRUE(key(Qt::Key_Z, Qt::ControlModifier));
    EXPECT_EQ(tree(), "T(a(a1, a2), b+(b1), >q, c)");
    EXPECT_TRUE(key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier));
    EXPECT_EQ(tree(), "T(a(a1/a2), b+(b1), >q, c)");
}

TEST_F(Commands, MarkerKeysArriveAsShiftedCharactersOrDigits)
{
    select("c");
    key(Qt::Key_Exclam, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(root()->children().back()->text(), Markers::all()[0].symbol + " c");
    key(Qt::Key_5, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(root()->children().back()->text(), Markers::all()[4].symbol + " c");
    key(Qt::Key_ParenRight, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(root()->children().back()->text(), "c");
    // Each of the three is a step of its own, the removal included.
    for (int marker : {4, 0}) {
        key(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(root()->children().back()->text(), Markers::all()[marker].symbol + " c");
    }
}

struct KeyCase {
    const char* name;
    int key;
    Qt::KeyboardModifiers modifiers;
    const char* start;
    const char* after;
    const char* selection;
};

class CanvasKey : public Commands, public ::testing::WithParamInterface<KeyCase> {};

TEST_P(CanvasKey, RunsItsCommand)
{
    select(GetParam().start);
    EXPECT_TRUE(key(GetParam().key, GetParam().modifiers));
    controller->commit(true); // a new line opened by the key goes again
    EXPECT_EQ(tree(), GetParam().after);
    EXPECT_EQ(selected(), GetParam().selection);
}

const auto ctrl = Qt::ControlModifier;
const auto alt = Qt::AltModifier;

INSTANTIATE_TEST_SUITE_P(
    Keys, CanvasKey,
    ::testing::Values(KeyCase{"AltDownMovesDown", Qt::Key_Down, alt, "a", "T(b+(b1), a(a1, a2), >q, c)", "a"},
                      KeyCase{"AltLeftPromotes", Qt::Key_Left, alt, "a2", "T(a(a1), a2, b+(b1), >q, c)", "a2"},
                      KeyCase{"AltRightDemotes", Qt::Key_Right, alt, "c", "T(a(a1, a2), b+(b1), >q, c)", "c"},
                      KeyCase{"CtrlLeftFolds", Qt::Key_Left, ctrl, "a", "T(a+(a1, a2), b+(b1), >q, c)", "a"},
                      KeyCase{"CtrlRightUnfolds", Qt::Key_Right, ctrl, "b", "T(a(a1, a2), b(b1), >q, c)", "b"},
                      KeyCase{"CtrlQuoteToggles", Qt::Key_Apostrophe, ctrl, "c", "T(a(a1, a2), b+(b1), >q, >c)", "c"},
                      KeyCase{"CtrlDDuplicates", Qt::Key_D, ctrl, "a1", "T(a(a1, a1, a2), b+(b1), >q, c)", "a1"},
                      KeyCase{"DownMoves", Qt::Key_Down, {}, "a", "T(a(a1, a2), b+(b1), >q, c)", "b"},
                      KeyCase{"RightEnters", Qt::Key_Right, {}, "a", "T(a(a1, a2), b+(b1), >q, c)", "a1"},
                      KeyCase{"ReturnAddsBelow", Qt::Key_Return, {}, "a1", "T(a(a1, a2), b+(b1), >q, c)", "a1"},
                      KeyCase{"KeypadEnterToo", Qt::Key_Enter, Qt::KeypadModifier, "a1", "T(a(a1, a2), b+(b1), >q, c)",
                              "a1"},
                      KeyCase{"SpaceEdits", Qt::Key_Space, {}, "c", "T(a(a1, a2), b+(b1), >q, c)", "c"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(Commands, UnboundKeysArePassedOn)
{
    select("a");
    EXPECT_FALSE(key(Qt::Key_Q));
    EXPECT_FALSE(key(Qt::Key_F, Qt::ControlModifier));
    EXPECT_FALSE(key(Qt::Key_C, Qt::AltModifier));
}

using A = CanvasKeyAction;

constexpr Qt::KeyboardModifiers noKeys = Qt::NoModifier;
constexpr Qt::KeyboardModifiers shift = Qt::ShiftModifier;

TEST(CanvasKeyTable, EachKeyMeansWhatTheTableSays)
{
    struct Row {
        const char* name;
        int key;
        Qt::KeyboardModifiers mods;
        A action;
        C command;
    };
    const Row rows[] = {
        {"Backspace deletes", Qt::Key_Backspace, noKeys, A::command, C::deleteSelection},
        {"Delete with any modifier deletes", Qt::Key_Delete, ctrl | shift, A::command, C::deleteSelection},
        {"Escape clears", Qt::Key_Escape, noKeys, A::clearSelection, C::edit},
        {"Ctrl+A selects all", Qt::Key_A, ctrl, A::command, C::selectAll},
        {"Ctrl+Alt+A still selects all", Qt::Key_A, ctrl | alt, A::command, C::selectAll},
        {"Ctrl+Shift+A deselects all", Qt::Key_A, ctrl | shift, A::command, C::deselectAll},
        {"Ctrl+X", Qt::Key_X, ctrl, A::command, C::cut},
        {"Ctrl+;", Qt::Key_Semicolon, ctrl, A::command, C::splitSentences},
        {"Ctrl+Z", Qt::Key_Z, ctrl, A::undo, C::edit},
        {"Ctrl+Shift+Z", Qt::Key_Z, ctrl | shift, A::redo, C::edit},
        {"Ctrl+Shift+C", Qt::Key_C, ctrl | shift, A::command, C::copyBranch},
        {"Ctrl+'", Qt::Key_Apostrophe, ctrl, A::command, C::toggleQuote},
        {"Ctrl+Shift+! sets the first marker", Qt::Key_Exclam, ctrl | shift, A::command, C::setMarker},
        {"Ctrl+Shift+) removes", Qt::Key_ParenRight, ctrl | shift, A::command, C::removeMarker},
        {"Tab", Qt::Key_Tab, noKeys, A::command, C::newLineUnder},
        {"Shift+Tab is Tab too", Qt::Key_Backtab, shift, A::command, C::newLineUnder},
        {"Ctrl+Shift+Return splits", Qt::Key_Return, ctrl | shift, A::command, C::split},
        {"Shift+Return", Qt::Key_Return, shift, A::command, C::newLineAbove},
        {"Alt+Return is Return", Qt::Key_Return, alt, A::command, C::newLineBelow},
        {"Keypad Enter", Qt::Key_Enter, Qt::KeypadModifier, A::command, C::newLineBelow},
        {"Ctrl+Space joins", Qt::Key_Space, ctrl, A::command, C::join},
        {"Space edits", Qt::Key_Space, noKeys, A::command, C::edit},
        {"Alt wins over Ctrl on Up", Qt::Key_Up, alt | ctrl, A::command, C::moveUp},
        {"Shift+Down extends", Qt::Key_Down, shift, A::extendDown, C::edit},
        {"Alt+Left promotes", Qt::Key_Left, alt, A::command, C::promote},
        {"Ctrl+Left folds", Qt::Key_Left, ctrl, A::command, C::fold},
        {"Shift+Left", Qt::Key_Left, shift, A::extendLeft, C::edit},
        {"Right", Qt::Key_Right, noKeys, A::selectFirstChild, C::edit},
        {"Ctrl+Right unfolds", Qt::Key_Right, ctrl, A::command, C::unfold},
    };
    for (const Row& row : rows) {
        const auto binding = resolveCanvasKey(row.key, row.mods, true);
        ASSERT_TRUE(binding) << row.name;
        EXPECT_EQ(binding->action, row.action) << row.name;
        if (row.action == A::command) {
            EXPECT_EQ(binding->command, row.command) << row.name;
        }
    }
    EXPECT_EQ(resolveCanvasKey(Qt::Key_Exclam, ctrl | shift, true)->marker, QStringLiteral("\U0001F534"));
}

TEST(CanvasKeyTable, OtherKeysPassOn)
{
    struct Row {
        const char* name;
        int key;
        Qt::KeyboardModifiers mods;
        bool hasSelection;
    };
    const Row rows[] = {
        {"Escape with nothing selected", Qt::Key_Escape, noKeys, false},
        {"Ctrl+Alt+X is no cut", Qt::Key_X, ctrl | alt, true},
        {"Ctrl+Shift+J", Qt::Key_J, ctrl | shift, true},
        {"Ctrl+F belongs to the window", Qt::Key_F, ctrl, true},
        {"a plain letter", Qt::Key_Q, noKeys, true},
        {"Ctrl+! without Shift", Qt::Key_Exclam, ctrl, true},
    };
    for (const Row& row : rows)
        EXPECT_FALSE(resolveCanvasKey(row.key, row.mods, row.hasSelection)) << row.name;
}

} // namespace
