#include "EditingFixture.h"

#include "editing/TextPieces.h"

namespace {

using Session = Editing;

void type(DocumentController& c, const QString& text)
{
    c.setEditingText(text);
}

TEST_F(Session, TypingAnOutlineTakesOneStepPerNewLine)
{
    load("T\n  Intro");
    select("Intro");
    controller->newLineBelow();
    type(*controller, "First point");
    controller->editorReturn();
    type(*controller, "Second point");
    controller->editorTab();
    type(*controller, "Detail");
    controller->editorReturn();
    EXPECT_EQ(tree(), "T(Intro, First point, Second point(Detail, ))");
    EXPECT_EQ(steps(), 4) << "one for each line made, text included";

    // Shift-Tab on the empty line: it goes, and the session moves out to the parent.
    controller->editorShiftTab();
    EXPECT_EQ(tree(), "T(Intro, First point, Second point(Detail))");
    EXPECT_EQ(controller->editingNodeID(), id("Second point"));
    EXPECT_FALSE(controller->editingIsNew());
    EXPECT_EQ(steps(), 4);

    controller->editorEscape();
    EXPECT_FALSE(controller->editingNodeID());
    EXPECT_EQ(steps(), 4);
    EXPECT_GT(canvasFocusRequests, 0);

    undoManager.undo(); // the empty line's step: nothing visible to undo
    undoManager.undo();
    EXPECT_EQ(tree(), "T(Intro, First point, Second point)");
    undoManager.undo();
    undoManager.undo();
    EXPECT_EQ(tree(), "T(Intro)");
}

TEST_F(Session, ReturnOnANewEmptyLineEndsTheOutline)
{
    load("T\n  a\n  b");
    select("a");
    controller->newLineBelow();
    controller->editorReturn();
    EXPECT_EQ(tree(), "T(a, b)");
    EXPECT_EQ(selected(), "a") << "the sibling before it";
    EXPECT_FALSE(controller->editingNodeID());
}

TEST_F(Session, TwoReturnsAfterTypingThenEscapeUndoInTwoSteps)
{
    load("T\n  x");
    select("x");
    controller->newLineBelow();
    type(*controller, "a");
    controller->editorReturn();
    EXPECT_EQ(tree(), "T(x, a, )");
    EXPECT_TRUE(controller->editingIsNew());
    controller->editorEscape();
    EXPECT_EQ(tree(), "T(x, a)");
    undoManager.undo();
    undoManager.undo();
    EXPECT_EQ(tree(), "T(x)");
}

TEST_F(Session, ReturnOnAnExistingLineGivesTheKeyboardBack)
{
    load("T\n  a");
    select("a");
    controller->beginEditing();
    EXPECT_EQ(controller->editingText(), "a");
    type(*controller, "  changed\n");
    controller->editorReturn();
    EXPECT_EQ(tree(), "T(changed)") << "trimmed, line breaks included";
    EXPECT_EQ(steps(), 1);
    EXPECT_EQ(canvasFocusRequests, 1);
    EXPECT_EQ(selected(), "changed");
}

TEST_F(Session, CommitWithoutAChangeLeavesNoStep)
{
    load("T\n  a");
    select("a");
    controller->beginEditing();
    type(*controller, " a ");
    EXPECT_FALSE(controller->commit(true));
    EXPECT_EQ(steps(), 0);
    EXPECT_EQ(mutations, 0);
}

TEST_F(Session, EscapeKeepsTheStoredText)
{
    load("T\n  a");
    select("a");
    controller->beginEditing();
    type(*controller, "");
    controller->editorEscape();
    EXPECT_EQ(tree(), "T(a)") << "an emptied line survives Escape";
    EXPECT_EQ(steps(), 0);

    controller->newLineBelow();
    type(*controller, "typed");
    controller->editorEscape();
    EXPECT_EQ(tree(), "T(a)") << "a new line's stored text is still empty";
}

struct EmptiedCase {
    const char* outline;
    const char* line;
    const char* after;
    const char* next;
};

class EmptiedCommit : public Editing, public ::testing::WithParamInterface<EmptiedCase> {};

TEST_P(EmptiedCommit, RemovesTheLineAndSelectsItsNeighbour)
{
    load(GetParam().outline);
    select(GetParam().line);
    controller->beginEditing();
    type(*controller, QStringLiteral(" \t\u2028 "));
    EXPECT_TRUE(controller->commit(true));
    EXPECT_EQ(tree(), GetParam().after);
    EXPECT_EQ(selected(), GetParam().next);
    EXPECT_EQ(steps(), 1);
    EXPECT_EQ(canvasFocusRequests, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Neighbours, EmptiedCommit,
    ::testing::Values(EmptiedCase{"T\n  a\n  b\n  c", "b", "T(a, c)", "a"}, // the one before
                      EmptiedCase{"T\n  a\n  b\n  c", "a", "T(b, c)", "b"}, // the first: the one after
                      EmptiedCase{"T\n  a\n    a1", "a1", "T(a)", "a"})); // the only one: the parent

TEST_F(Session, EmptyingTheTitleRemovesNothing)
{
    load("T\n  a");
    select("T");
    controller->beginEditing();
    type(*controller, " ");
    controller->commit(true);
    EXPECT_EQ(tree(), "T(a)");
    EXPECT_EQ(selected(), "<none>");
    EXPECT_EQ(steps(), 0);
}

TEST_F(Session, CtrlReturnOpensALineBefore)
{
    load("T\n  a\n  b");
    select("b");
    controller->beginEditing();
    controller->editorInsertLineAbove();
    EXPECT_EQ(tree(), "T(a, , b)");
    EXPECT_TRUE(controller->editingIsNew());
    EXPECT_EQ(controller->editingNodeID(), root()->children()[1]->id());
}

TEST_F(Session, ShiftTabWalksOutWithoutChangingLevels)
{
    load("T\n  a\n    a1");
    select("a1");
    controller->beginEditing();
    controller->editorShiftTab();
    EXPECT_EQ(controller->editingNodeID(), id("a"));
    EXPECT_EQ(selected(), "a");
    controller->editorTab();
    EXPECT_EQ(tree(), "T(a(a1, ))");
    EXPECT_EQ(steps(), 1);
}

TEST_F(Session, TabOnAQuoteLeavesASessionOutsideTheTree)
{
    load("T\n  > q");
    select("q");
    controller->beginEditing();
    controller->editorTab();
    ASSERT_TRUE(controller->editingNodeID());
    EXPECT_FALSE(root()->find(*controller->editingNodeID()));
    type(*controller, "lost");
    EXPECT_FALSE(controller->commit(true));
    EXPECT_FALSE(controller->editingNodeID()) << "the commit finds no line and ends the session";
    EXPECT_EQ(tree(), "T(>q)");
}

// ---- Alt+Return: split at the cursor --------------------------------------------------------

struct CursorSplit {
    const char* text;
    int position;
    const char* after;
    bool sessionIsNew;
};

class AltReturn : public Editing, public ::testing::WithParamInterface<CursorSplit> {};

TEST_P(AltReturn, SplitsAtTheCursorInOneStep)
{
    load("T\n  before\n  x\n  after");
    select("x");
    controller->beginEditing();
    type(*controller, QString::fromUtf8(GetParam().text));
    controller->editorSplitAtCursor(GetParam().position);
    EXPECT_EQ(tree(), GetParam().after);
    EXPECT_EQ(steps(), 1);
    ASSERT_TRUE(controller->editingNodeID());
    EXPECT_EQ(controller->editingIsNew(), GetParam().sessionIsNew);
    EXPECT_EQ(controller->selectedNodeID(), controller->editingNodeID());
}

INSTANTIATE_TEST_SUITE_P(
    Cursor, AltReturn,
    ::testing::Values(CursorSplit{"one two", 3, "T(before, one, two, after)", false},
                      CursorSplit{"one two", 7, "T(before, one two, , after)", true}, // at the end
                      CursorSplit{"one two", 99, "T(before, one two, , after)", true}, // clamped
                      CursorSplit{"one two", 0, "T(before, one two, after)", false}, // the text takes the line's place
                      CursorSplit{"one two", -5, "T(before, one two, after)", false},
                      // A soft break counts one unit and stays inside its half.
                      CursorSplit{"a\u2028b c", 3, "T(before, a/b, c, after)", false},
                      // Emoji are two units each.
                      CursorSplit{"\U0001F534 red", 2, "T(before, \U0001F534, red, after)", false}));

TEST_F(Session, AltReturnInAQuoteGivesTwoQuotes)
{
    load("T\n  > to be or not");
    select("to be or not");
    controller->beginEditing();
    controller->editorSplitAtCursor(5);
    EXPECT_EQ(tree(), "T(>to be, >or not)");
}

TEST_F(Session, AltReturnOnEmptyTextRemovesTheLine)
{
    load("T\n  a\n  b");
    select("b");
    controller->beginEditing();
    type(*controller, "");
    controller->editorSplitAtCursor(0);
    EXPECT_EQ(tree(), "T(a)");
    EXPECT_EQ(selected(), "a");
    EXPECT_FALSE(controller->editingNodeID());
}

TEST(SoftLineBreak, EditorShowsItAsANewline)
{
    const QString model = QStringLiteral("one\u2028two");
    EXPECT_EQ(TextPieces::editorText(model), "one\ntwo");
    EXPECT_EQ(TextPieces::modelText(TextPieces::editorText(model)), model);
}

} // namespace
