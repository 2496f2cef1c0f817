#include "EditingFixture.h"

#include <algorithm>
#include <random>

namespace {

const QString kSermon = QStringLiteral(R"(Title
  Opening
    Question
    Story
      Porch
      Rocking chair
  Main idea
    Presence
  + Folded
    Hidden
  Close
)");

class Selection : public Editing {
protected:
    void SetUp() override { load(kSermon); }
};

TEST_F(Selection, EffectiveSelectionJoinsPrimaryAndSet)
{
    select(QStringList{"Porch", "Story", "Close"});
    EXPECT_EQ(controller->effectiveSelection().size(), 3);
    // Tree order, and the descendant of a selected line is pruned.
    QStringList inOrder;
    for (const auto& n : controller->selectedNodesInOrder())
        inOrder.append(n->text());
    EXPECT_EQ(inOrder, (QStringList{"Story", "Close"}));
}

// Few lines are looked up one by one and many found by one walk: both give tree order, and the
// topmost prune what lies below another selected line.
TEST_F(Selection, SelectedLinesComeInTreeOrderHoweverMany)
{
    QString outline = QStringLiteral("T\n");
    for (int i = 0; i < 40; ++i)
        outline += QStringLiteral("  p%1\n    s%1\n      l%1\n    t%1\n").arg(i);
    load(outline);
    std::vector<SermonNodePtr> all = root()->flattened();
    all.erase(all.begin()); // not the title
    std::mt19937 random(5);
    for (size_t count : {size_t(1), size_t(3), size_t(20), size_t(100), all.size()}) {
        std::vector<SermonNodePtr> chosen = all;
        std::shuffle(chosen.begin(), chosen.end(), random);
        chosen.resize(count);
        QSet<NodeID> ids;
        for (const auto& n : chosen)
            ids.insert(n->id());
        ids.insert(makeNodeID()); // a line gone from the tree
        controller->setSelectedNodeID(chosen.front()->id());
        controller->setSelectedNodeIDs(ids);

        std::vector<SermonNodePtr> inOrder, topmost;
        for (const auto& n : all) {
            if (!ids.contains(n->id()))
                continue;
            inOrder.push_back(n);
            bool below = false;
            for (auto p = n->parentNode(); p; p = p->parentNode())
                below = below || ids.contains(p->id());
            if (!below)
                topmost.push_back(n);
        }
        EXPECT_EQ(controller->selectedNodes(), inOrder) << count;
        EXPECT_EQ(controller->selectedNodesInOrder(), topmost) << count;
    }
}

TEST_F(Selection, SelectedNodesSkipLinesGoneFromTheTree)
{
    select(QStringList{"Question", "Close"});
    root()->removeNode(id("Close"));
    EXPECT_EQ(controller->effectiveSelection().size(), 2);
    EXPECT_EQ(selectedTexts(), QStringList{"Question"});
}

TEST_F(Selection, ContiguousSelectionSpansSiblingsEvenWithGaps)
{
    select(QStringList{"Opening", "Close"});
    auto block = controller->contiguousSelection();
    ASSERT_TRUE(block);
    EXPECT_EQ(block->parent, root());
    EXPECT_EQ(block->first, 0);
    EXPECT_EQ(block->last, 3);

    select(QStringList{"Question", "Presence"});
    EXPECT_FALSE(controller->contiguousSelection()) << "different parents";
    select(QStringList{"Title", "Opening"});
    EXPECT_FALSE(controller->contiguousSelection()) << "the title is in it";
}

TEST_F(Selection, PlainChangeEndsAMultipleSelectionAndIsRecorded)
{
    select(QStringList{"Question", "Story"});
    controller->setSelectionAnchorID(id("Question"));
    controller->setSelectedNodeID(id("Close"));
    EXPECT_TRUE(controller->selectedNodeIDs().isEmpty());
    EXPECT_FALSE(controller->selectionAnchorID());
    EXPECT_EQ(document->currentSelectedNodeID(), id("Close"));
    EXPECT_EQ(shown.back(), id("Close"));
}

struct Move {
    const char* from;
    const char* keys; // u d l r: Up, Down, Left, Right
    const char* to;
};

class Navigation : public Selection, public ::testing::WithParamInterface<Move> {};

TEST_P(Navigation, LandsWhereExpected)
{
    select(GetParam().from);
    for (const char* k = GetParam().keys; *k; ++k) {
        switch (*k) {
        case 'u':
            controller->moveSelection(false);
            break;
        case 'd':
            controller->moveSelection(true);
            break;
        case 'l':
            controller->selectParent();
            break;
        case 'r':
            controller->selectFirstChild();
            break;
        }
    }
    EXPECT_EQ(selected(), GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(Keys, Navigation,
                         ::testing::Values(Move{"Close", "d", "Close"}, // last line: nothing below
                                           Move{"Opening", "u", "Opening"}, // first child of the title: nothing above
                                           Move{"Title", "d", "Title"}, // the title has no siblings
                                           Move{"Question", "d", "Story"},
                                           Move{"Story", "d", "Main idea"}, // leaves the branch at its own level
                                           Move{"Rocking chair", "d", "Main idea"}, // depth 0 remembered: no descent
                                           Move{"Folded", "r", "Folded"}, // Right doesn't open a folded line
                                           Move{"Opening", "r", "Question"},
                                           Move{"Porch", "ld",
                                                "Presence"}, // Left remembers depth 2 and Down descends to it
                                           Move{"Porch", "lld", "Main idea"}, // depth 1 after two Lefts
                                           Move{"Porch", "ldd", "Folded"})); // a folded branch stops the descent

TEST_F(Selection, StickyDepthStopsOnAFoldedBranch)
{
    controller->setNavigationDepth(3);
    select("Presence");
    controller->moveSelection(true);
    EXPECT_EQ(selected(), "Folded");
    controller->moveSelection(true);
    EXPECT_EQ(selected(), "Close");
}

TEST_F(Selection, NoPrimaryAnyArrowSelectsTheTitle)
{
    for (auto arrow : {&DocumentController::selectParent, &DocumentController::selectFirstChild}) {
        controller->deselectAll();
        (controller.get()->*arrow)();
        EXPECT_EQ(selected(), "Title");
    }
    controller->deselectAll();
    controller->moveSelection(true);
    EXPECT_EQ(selected(), "Title") << "and nothing else: not its first child";
}

TEST_F(Selection, ShiftDownThreeTimesSelectsFourLinesAndShiftUpShrinks)
{
    load("T\n  a\n  b\n  c\n  d\n  e");
    select("a");
    for (int i = 0; i < 3; ++i)
        controller->extendSelection(true);
    EXPECT_EQ(selected(), "d");
    EXPECT_EQ(selectedTexts(), (QStringList{"a", "b", "c", "d"}));
    EXPECT_EQ(controller->selectionAnchorID(), id("a"));

    controller->extendSelection(false);
    EXPECT_EQ(selectedTexts(), (QStringList{"a", "b", "c"}));

    controller->moveSelection(true);
    EXPECT_EQ(selectedTexts(), QStringList{"d"}) << "a plain move leaves one line";
}

TEST_F(Selection, RangeTakesInTheVisibleLinesBetween)
{
    struct Row {
        const char* anchor;
        const char* from;
        bool forward;
        QStringList range; // in tree order, whichever end comes first
    } rows[] = {
        {"Question", "Story", true, {"Question", "Story", "Porch", "Rocking chair", "Main idea"}},
        {"Close", "Close", false, {"Folded", "Close"}},
        {"Close", "Folded", false, {"Main idea", "Presence", "Folded", "Close"}},
        {"Presence", "Folded", true, {"Presence", "Folded", "Close"}}, // not the folded line's child
        {"Porch", "Main idea", false, {"Opening", "Question", "Story", "Porch"}},
    };
    for (const Row& row : rows) {
        select(row.from);
        controller->setSelectionAnchorID(id(row.anchor));
        controller->extendSelection(row.forward);
        EXPECT_EQ(selectedTexts(), row.range) << row.anchor << " " << row.from;
    }
}

TEST_F(Selection, RangeIntoHiddenLinesIsJustTheTwoEnds)
{
    select("Close");
    controller->setSelectionAnchorID(id("Hidden"));
    controller->extendSelection(false);
    EXPECT_EQ(controller->selectedNodeIDs(), (QSet<NodeID>{id("Hidden"), id("Folded")}));
}

TEST_F(Selection, ShiftLeftExtendsToTheParent)
{
    select("Porch");
    controller->extendToParent();
    controller->extendToParent();
    EXPECT_EQ(selected(), "Opening");
    EXPECT_EQ(selectedTexts(), (QStringList{"Opening", "Question", "Story", "Porch"}));
}

TEST_F(Selection, SelectAllHoldsTheTitleAndKeepsThePrimary)
{
    select("Story");
    controller->selectAll();
    EXPECT_EQ(selected(), "Story");
    EXPECT_EQ(controller->effectiveSelection().size(), int(root()->flattened().size()));
    EXPECT_TRUE(controller->deselectAll());
    EXPECT_TRUE(controller->effectiveSelection().isEmpty());
    EXPECT_FALSE(controller->deselectAll()) << "Escape goes on when nothing is selected";
}

TEST_F(Selection, UndoSelectsTheRestoredLine)
{
    select("Question");
    controller->deleteSelection();
    EXPECT_EQ(selected(), "Story");
    mutations = 0;
    undoManager.undo();
    EXPECT_EQ(selected(), "Question");
    EXPECT_EQ(mutations, 1);
    EXPECT_EQ(shown.back(), id("Question"));

    undoManager.redo();
    EXPECT_EQ(selected(), "Story") << "what was selected when the step was undone";
    EXPECT_EQ(document->undoRedoGeneration(), 2);
}

TEST_F(Selection, UndoSelectsTheTitleWhenTheRestoredLineIsGone)
{
    select("Question");
    document->captureUndo(makeNodeID());
    root()->setText("Renamed");
    document->undo();
    EXPECT_EQ(selected(), "Title");
    EXPECT_EQ(shown.back(), root()->id());
}

} // namespace
