#include "EditingFixture.h"

#include "editing/Markers.h"

namespace {

using Edits = Editing;

// ---- delete ---------------------------------------------------------------------------------

struct DeleteCase {
    const char* outline;
    QStringList selection;
    const char* after;
    const char* next;
};

class Delete : public Editing, public ::testing::WithParamInterface<DeleteCase> {};

TEST_P(Delete, RemovesTopmostLinesAndChoosesTheNextSelection)
{
    load(GetParam().outline);
    const QString before = tree();
    select(GetParam().selection);
    controller->deleteSelection();
    EXPECT_EQ(tree(), GetParam().after);
    EXPECT_EQ(selected(), GetParam().next);
    EXPECT_TRUE(controller->selectedNodeIDs().isEmpty());
    EXPECT_EQ(steps(), 1);
    undoManager.undo();
    EXPECT_EQ(tree(), before);
}

INSTANTIATE_TEST_SUITE_P(Selections, Delete,
                         ::testing::Values(
                             // The nearest following unselected sibling first,
                             DeleteCase{"T\n  a\n  b\n  c", {"b"}, "T(a, c)", "c"},
                             // then the nearest preceding one,
                             DeleteCase{"T\n  a\n  b\n  c", {"c", "b"}, "T(a)", "a"},
                             // then the parent.
                             DeleteCase{"T\n  a\n    only", {"only"}, "T(a)", "a"},
                             // Unselected siblings between selected ones are skipped over, never removed.
                             DeleteCase{"T\n  a\n  b\n  c\n  d", {"a", "c"}, "T(b, d)", "d"},
                             // A line and its descendant: only the line goes. The choice from the descendant (its
                             // sibling a2) went with the branch, so the branch's own next sibling is chosen.
                             DeleteCase{"T\n  a\n    a1\n    a2\n  b", {"a", "a1"}, "T(b)", "b"}));

TEST_F(Edits, DeleteRefusesTheTitleWithoutAStep)
{
    load("T\n  a\n  b");
    select(QStringList{"a", "T"});
    controller->deleteSelection();
    EXPECT_EQ(tree(), "T(a, b)");
    EXPECT_EQ(steps(), 0);
    EXPECT_FALSE(undoManager.canUndo());
}

TEST_F(Edits, UndoOfDeleteBringsBackTheSameIds)
{
    load("T\n  a\n    a1\n  b");
    const NodeID a1 = id("a1");
    select("a");
    controller->deleteSelection();
    undoManager.undo();
    EXPECT_TRUE(root()->find(a1));
    EXPECT_EQ(tree(), "T(a(a1), b)");
}

// ---- duplicate ------------------------------------------------------------------------------

TEST_F(Edits, DuplicatePutsEachCopyBehindItsOriginal)
{
    load("T\n  a\n    a1\n  b\n  c");
    select(QStringList{"a", "b", "c"});
    controller->duplicate();
    EXPECT_EQ(tree(), "T(a(a1), a(a1), b, b, c, c)");
    EXPECT_EQ(steps(), 1);
    // The copies, with fresh ids, are the new selection.
    const auto& kids = root()->children();
    EXPECT_EQ(controller->selectedNodeIDs(), (QSet<NodeID>{kids[1]->id(), kids[3]->id(), kids[5]->id()}));
    EXPECT_TRUE(controller->selectedNodeIDs().contains(*controller->selectedNodeID()));
    EXPECT_NE(kids[1]->children()[0]->id(), kids[0]->children()[0]->id());
}

// ---- move up and down -----------------------------------------------------------------------

struct MoveCase {
    QStringList selection;
    bool down;
    const char* after; // "-" when nothing may change
};

class MoveBlock : public Editing, public ::testing::WithParamInterface<MoveCase> {};

TEST_P(MoveBlock, OneSiblingJumpsAcrossTheBlock)
{
    load("T\n  a\n  b\n  c\n  d\n    d1");
    select(GetParam().selection);
    GetParam().down ? controller->moveDown() : controller->moveUp();
    const bool refused = QString(GetParam().after) == "-";
    EXPECT_EQ(tree(), refused ? "T(a, b, c, d(d1))" : GetParam().after);
    EXPECT_EQ(steps(), refused ? 0 : 1);
    EXPECT_EQ(selected(), GetParam().selection.first()) << "the selection moves with the lines";
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, MoveBlock,
    ::testing::Values(MoveCase{{"b", "c"}, true, "T(a, d(d1), b, c)"}, MoveCase{{"b", "c"}, false, "T(b, c, a, d(d1))"},
                      MoveCase{{"a", "c"}, true, "T(d(d1), a, b, c)"}, // b, between, moves with the block
                      MoveCase{{"d"}, true, "-"}, // no room below
                      MoveCase{{"a"}, false, "-"}, // no room above
                      MoveCase{{"a", "d1"}, true, "-"})); // not under one parent

// ---- promote and demote ---------------------------------------------------------------------

TEST_F(Edits, PromoteMovesTheBlockBehindItsParent)
{
    load("T\n  a\n    a1\n    a2\n      x\n    a3\n  b");
    select(QStringList{"a2", "a3"});
    controller->promote();
    EXPECT_EQ(tree(), "T(a(a1), a2(x), a3, b)");
    EXPECT_EQ(node("x")->depth(), 2);
    EXPECT_EQ(steps(), 1);
}

TEST_F(Edits, PromoteOfAChildOfTheTitleDoesNothing)
{
    load("T\n  a\n  b");
    select("a");
    controller->promote();
    EXPECT_EQ(tree(), "T(a, b)");
    EXPECT_EQ(steps(), 0);
}

TEST_F(Edits, DemoteGoesIntoTheSiblingBeforeAsItsLastChildren)
{
    load("T\n  a\n    a1\n  b\n    b1\n  c");
    select(QStringList{"b", "c"});
    controller->demote();
    EXPECT_EQ(tree(), "T(a(a1, b(b1), c))");
    EXPECT_EQ(node("b1")->depth(), 3);
}

TEST_F(Edits, DemoteOfTheFirstRowGoesIntoTheRowAfterAsItsFirstChildren)
{
    load("T\n  a\n  b\n  + c\n    c1");
    select(QStringList{"a", "b"});
    controller->demote();
    EXPECT_EQ(tree(), "T(c+(a, b, c1))") << "the new parent stays folded";
}

struct RefusedDemote {
    const char* outline;
    QStringList selection;
};

class DemoteRefusal : public Editing, public ::testing::WithParamInterface<RefusedDemote> {};

TEST_P(DemoteRefusal, LeavesTreeAndStacksAlone)
{
    load(GetParam().outline);
    const QString before = tree();
    select(GetParam().selection);
    controller->demote();
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(steps(), 0);
}

INSTANTIATE_TEST_SUITE_P(Cases, DemoteRefusal,
                         ::testing::Values(RefusedDemote{"T\n  a\n    only", {"only"}}, // no sibling at all
                                           RefusedDemote{"T\n  a\n  > q", {"a"}}, // first row, next is a quote
                                           RefusedDemote{"T\n  > q\n  a", {"a"}}, // previous is a quote
                                           RefusedDemote{"T\n  a", {"T"}})); // the title

// ---- dropping dragged lines ------------------------------------------------------------------

struct DropCase {
    const char* outline;
    QStringList moving; // the grabbed line first
    const char* parent;
    int index;
    const char* after;
};

class Drop : public Editing, public ::testing::WithParamInterface<DropCase> {};

TEST_P(Drop, MovesInOneStepAndKeepsSeveralSelected)
{
    const DropCase& c = GetParam();
    load(c.outline);
    const QString before = tree();
    QSet<NodeID> moving;
    for (const QString& text : c.moving)
        moving.insert(id(text));
    controller->dropNodes(id(c.moving.first()), moving, id(c.parent), c.index);
    EXPECT_EQ(tree(), c.after);
    EXPECT_EQ(steps(), 1) << "taken before knowing whether the move applies";
    EXPECT_EQ(controller->selectedNodeIDs(), moving.size() > 1 ? moving : QSet<NodeID>());
    for (const auto& n : root()->flattened()) {
        if (n != root()) {
            EXPECT_EQ(n->depth(), root()->parent(n->id())->depth() + 1) << n->text().toStdString();
        }
    }
    undoManager.undo();
    EXPECT_EQ(tree(), before);
}

INSTANTIATE_TEST_SUITE_P(Drops, Drop,
                         ::testing::Values(
                             // One line: the index isn't corrected for its own removal, so it lands one further down.
                             DropCase{"T\n  a\n  b\n  c", {"a"}, "T", 2, "T(b, c, a)"},
                             // Several: the index counts the list without them.
                             DropCase{"T\n  a\n  b\n  c\n  d", {"b", "a"}, "T", 3, "T(c, a, b, d)"},
                             // They arrive in tree order, renumbered below their new parent.
                             DropCase{"T\n  a\n    a1\n  b\n    b1", {"b", "a1"}, "a", 0, "T(a(a1, b(b1)))"},
                             // Nothing moves into a branch that moves.
                             DropCase{"T\n  a\n    a1\n  b", {"a", "b"}, "a1", 0, "T(a(a1), b)"},
                             DropCase{"T\n  a\n    a1\n  b", {"a"}, "a1", 0, "T(a(a1), b)"}));

// ---- fold and unfold ------------------------------------------------------------------------

TEST_F(Edits, FoldTakesOneStepForAllBranchesAndIgnoresLeaves)
{
    load("T\n  a\n    a1\n  b\n    b1\n  c");
    select(QStringList{"a", "b", "c"});
    controller->fold();
    EXPECT_EQ(tree(), "T(a+(a1), b+(b1), c)");
    EXPECT_EQ(steps(), 1);
    controller->unfold();
    EXPECT_EQ(tree(), "T(a(a1), b(b1), c)");
    EXPECT_EQ(steps(), 2);

    select("c");
    controller->fold();
    EXPECT_EQ(steps(), 2) << "a leaf alone: nothing to fold, no step";
}

// ---- new lines ------------------------------------------------------------------------------

TEST_F(Edits, NewLinesOpenASessionOnAnEmptyLine)
{
    load("T\n  > q\n  + b\n    b1");
    select("q");
    controller->newLineBelow();
    EXPECT_EQ(tree(), "T(>q, , b+(b1))") << "the new line is no quote";
    EXPECT_EQ(controller->editingNodeID(), controller->selectedNodeID());
    EXPECT_TRUE(controller->editingIsNew());
    EXPECT_EQ(controller->editingText(), "");

    controller->commit(true); // empty: the new line goes, with no step of its own
    select("q");
    controller->newLineAbove();
    EXPECT_EQ(tree(), "T(, >q, b+(b1))");
    controller->commit(true);

    select("b");
    controller->newLineUnder();
    EXPECT_EQ(tree(), "T(>q, b(b1, ))") << "a folded parent opens";
    EXPECT_EQ(steps(), 3);
}

TEST_F(Edits, NewLineBesideTheTitleIsRefused)
{
    load("T\n  a");
    select("T");
    controller->newLineBelow();
    controller->newLineAbove();
    EXPECT_EQ(tree(), "T(a)");
    EXPECT_EQ(steps(), 0);
    EXPECT_FALSE(controller->editingNodeID());
    controller->newLineUnder();
    EXPECT_EQ(tree(), "T(a, )");
}

// ---- quotes ---------------------------------------------------------------------------------

TEST_F(Edits, ToggleQuoteSwapsEachLineAndLeavesBranches)
{
    load("T\n  > q\n  a\n  b\n    b1");
    select(QStringList{"q", "a", "b"});
    controller->toggleQuote();
    EXPECT_EQ(tree(), "T(q, >a, b(b1))");
    EXPECT_EQ(steps(), 1);
}

// ---- markers --------------------------------------------------------------------------------

const QString red = Markers::all()[0].symbol;
const QString blue = Markers::all()[4].symbol;

TEST_F(Edits, SetMarkerReplacesAnotherAndRemovesItself)
{
    load("T\n  " + blue + " Point");
    select(blue + " Point");
    controller->setMarker(red);
    EXPECT_EQ(root()->children()[0]->text(), red + " Point");
    controller->setMarker(red);
    EXPECT_EQ(root()->children()[0]->text(), "Point");
    EXPECT_EQ(steps(), 2);
}

TEST_F(Edits, SetMarkerOnAMixedSelectionGivesEveryLineTheMarkerOnce)
{
    load("T\n  " + red + " one\n  two");
    select(QStringList{red + " one", "two"});
    controller->setMarker(red);
    EXPECT_EQ(tree(), "T(" + red + " one, " + red + " two)");
}

TEST_F(Edits, RemoveMarkerStripsOnlyMarkers)
{
    load("T\n  \u26AA  spaced\n  3 points\n  # tag");
    select(QStringList{"\u26AA  spaced", "3 points", "# tag"});
    controller->removeMarker();
    EXPECT_EQ(tree(), "T( spaced, 3 points, # tag)") << "one space goes with the marker";
}

struct StripCase {
    QString text;
    QString stripped;
};

class StripMarker : public ::testing::TestWithParam<StripCase> {};

TEST_P(StripMarker, RemovesALeadingEmojiFromU238DOn)
{
    EXPECT_EQ(Markers::stripMarker(GetParam().text), GetParam().stripped);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, StripMarker,
    ::testing::Values(StripCase{QStringLiteral("\U0001F534 Point"), "Point"},
                      StripCase{QStringLiteral("\U0001F534Point"), "Point"},
                      StripCase{QStringLiteral("\u2764\uFE0F love"), "love"}, // with its variation selector
                      StripCase{QStringLiteral("\U0001F44D\U0001F3FD ok"), "ok"}, // with a skin tone
                      StripCase{QStringLiteral("\u231A watch"), QStringLiteral("\u231A watch")}, // emoji below U+238D
                      StripCase{"1 Corinthians", "1 Corinthians"}, StripCase{"* star", "* star"}, StripCase{"", ""},
                      StripCase{"plain", "plain"}));

} // namespace
