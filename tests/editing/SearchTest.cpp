#include "EditingFixture.h"

#include "core/MarkdownCodec.h"

namespace {

const QString kSermon = QStringLiteral(R"(Romans road
  Opening
    Read Romans 8
  + Folded
    + Inner
      romans deep
    other
  Close
)");

class Search : public Editing {
protected:
    void SetUp() override
    {
        load(kSermon);
        controller->beginSearch();
    }
    QStringList matchTexts() const
    {
        QStringList texts;
        for (const NodeID& m : controller->searchMatches())
            texts.append(document->root()->find(m)->text());
        return texts;
    }
};

TEST_F(Search, MatchesIgnoreCaseInTreeOrderFoldedBranchesIncluded)
{
    controller->setSearchQuery("ROM");
    EXPECT_EQ(matchTexts(), (QStringList{"Romans road", "Read Romans 8", "romans deep"}));
    controller->setSearchQuery("");
    EXPECT_TRUE(controller->searchMatches().empty());
}

TEST_F(Search, OpensWhatHidesAMatchAndFoldsItBackAtTheEnd)
{
    controller->setSearchQuery("deep");
    EXPECT_EQ(tree(), "Romans road(Opening(Read Romans 8), Folded(Inner(romans deep), other), Close)");
    EXPECT_EQ(controller->autoExpandedNodeIDs(), (QSet<NodeID>{id("Folded"), id("Inner")}));
    EXPECT_EQ(shown.back(), id("romans deep"));
    EXPECT_FALSE(controller->selectedNodeID()) << "search shows a match without selecting it";

    controller->endSearch();
    EXPECT_EQ(tree(), "Romans road(Opening(Read Romans 8), Folded+(Inner+(romans deep), other), Close)");
    EXPECT_FALSE(controller->isSearching());
    EXPECT_EQ(controller->searchQuery(), "");
    EXPECT_EQ(canvasFocusRequests, 1);
    EXPECT_EQ(steps(), 0);
    EXPECT_FALSE(undoManager.canUndo());
}

TEST_F(Search, ABranchFoldedAndOpenedByHandDuringSearchIsFoldedAgain)
{
    controller->setSearchQuery("deep");
    select("Folded");
    controller->fold();
    controller->unfold();
    controller->endSearch();
    EXPECT_TRUE(node("Folded")->isCollapsed());
}

TEST_F(Search, AQueryWithoutMatchesFoldsBackAtOnceAndALetterLessOpensAgain)
{
    controller->setSearchQuery("deep");
    controller->setSearchQuery("deepx");
    EXPECT_TRUE(node("Folded")->isCollapsed());
    EXPECT_TRUE(node("Inner")->isCollapsed());
    EXPECT_TRUE(controller->savedCollapsedState().isEmpty());
    controller->setSearchQuery("deep");
    EXPECT_FALSE(node("Inner")->isCollapsed());
}

TEST_F(Search, OpenedAncestorsStayOpenForLaterQueries)
{
    controller->setSearchQuery("deep");
    controller->setSearchQuery("other");
    EXPECT_FALSE(node("Inner")->isCollapsed());
    controller->endSearch();
    EXPECT_TRUE(node("Inner")->isCollapsed());
}

TEST_F(Search, StepMatchWrapsBothWays)
{
    controller->setSearchQuery("rom");
    controller->stepMatch(false);
    EXPECT_EQ(controller->currentMatchIndex(), 2);
    EXPECT_EQ(shown.back(), id("romans deep"));
    controller->stepMatch(true);
    EXPECT_EQ(controller->currentMatchIndex(), 0);

    controller->setSearchQuery("close");
    controller->stepMatch(true);
    controller->stepMatch(false);
    EXPECT_EQ(controller->currentMatchIndex(), 0);
}

TEST_F(Search, TheCurrentMatchSurvivesTypingWhileItStillMatches)
{
    controller->setSearchQuery("r");
    controller->stepMatch(true);
    const NodeID current = controller->searchMatches()[controller->currentMatchIndex()];
    EXPECT_EQ(current, id("Read Romans 8"));
    controller->setSearchQuery("ro");
    EXPECT_EQ(controller->searchMatches()[controller->currentMatchIndex()], current);
    controller->setSearchQuery("road");
    EXPECT_EQ(controller->currentMatchIndex(), 0);
}

TEST_F(Search, ALineDeletedDuringSearchIsNotRestored)
{
    controller->setSearchQuery("deep");
    select("Inner");
    controller->deleteSelection();
    controller->endSearch();
    EXPECT_EQ(tree(), "Romans road(Opening(Read Romans 8), Folded+(other), Close)");
}

TEST_F(Search, HighlightMarksEveryOccurrenceAndTheCurrentMatch)
{
    const SermonNodePtr close = node("Close");
    close->setText("Oh no, NO, nO");
    controller->setSearchQuery("no");
    const auto mark = controller->highlight(close->id());
    ASSERT_TRUE(mark);
    EXPECT_TRUE(mark->isCurrent);
    EXPECT_EQ(mark->ranges, (std::vector<std::pair<int, int>>{{3, 5}, {7, 9}, {11, 13}}));
    EXPECT_FALSE(controller->highlight(id("Opening")));

    // Occurrences don't overlap, and are offsets in the text as it stands, even behind a letter
    // that lower-cases to two.
    struct Row {
        const char* text;
        const char* query;
        std::vector<std::pair<int, int>> ranges;
    };
    for (const Row& row : {Row{"aaaa", "aa", {{0, 2}, {2, 4}}}, Row{"aaa", "aa", {{0, 2}}},
                           Row{"\u0130stanbul \u0130STANBUL", "stan", {{1, 5}, {10, 14}}}}) {
        controller->setSearchQuery(QString());
        close->setText(QString::fromUtf8(row.text));
        controller->setSearchQuery(QString::fromUtf8(row.query));
        const auto rowMark = controller->highlight(*close);
        ASSERT_TRUE(rowMark) << row.text;
        EXPECT_EQ(rowMark->ranges, row.ranges) << row.text;
    }

    controller->endSearch();
    EXPECT_FALSE(controller->highlight(close->id()));
}

TEST_F(Search, SavedFlagsAreThoseAtTheMomentOfSaving)
{
    controller->setSearchQuery("deep");
    EXPECT_FALSE(document->snapshot().contains(MarkdownCodec::collapseMarker));
    controller->endSearch();
    EXPECT_TRUE(document->snapshot().contains(MarkdownCodec::collapseMarker));
}

} // namespace
