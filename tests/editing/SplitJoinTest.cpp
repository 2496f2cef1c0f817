#include "EditingFixture.h"

#include "editing/TextPieces.h"

#include <QLocale>

namespace {

using SplitJoin = Editing;

TEST_F(SplitJoin, JoinThenSplitGivesTheLinesBackWithNewIds)
{
    load("T\n  a\n  b\n  c\n  d");
    const NodeID b = id("b");
    select(QStringList{"a", "b", "c"});
    const auto survivor = controller->join();
    EXPECT_EQ(tree(), "T(a/b/c, d)");
    EXPECT_EQ(survivor, id(QStringLiteral("a\u2028b\u2028c")));
    EXPECT_EQ(controller->selectedNodeID(), survivor);
    EXPECT_TRUE(controller->selectedNodeIDs().isEmpty());
    EXPECT_EQ(steps(), 1);

    controller->split();
    EXPECT_EQ(tree(), "T(a, b, c, d)");
    EXPECT_NE(id("b"), b);
    EXPECT_EQ(selectedTexts(), (QStringList{"a", "b", "c"}));
    EXPECT_EQ(steps(), 2);
}

TEST_F(SplitJoin, JoinKeepsTheQuoteOnlyWhenAllAreQuotes)
{
    load("T\n  > q1\n  > q2\n  x\n    > q3\n    p");
    select(QStringList{"q1", "q2", "q3", "p"});
    controller->join();
    EXPECT_EQ(tree(), "T(>q1/q2, x(q3/p))");
}

TEST_F(SplitJoin, JoinNeedsNeighboursUnderOneParent)
{
    load("T\n  a\n  b\n  br\n    kid\n  c\n  d\n    e");
    select(QStringList{"a", "b", "br", "c"});
    controller->join();
    EXPECT_EQ(tree(), "T(a/b, br(kid), c, d(e))") << "a branch breaks the run; c stands alone";

    load("T\n  a\n  x\n    e");
    select(QStringList{"a", "e"});
    EXPECT_FALSE(controller->join());
    EXPECT_EQ(steps(), 0);
}

TEST_F(SplitJoin, SplitCutsAtEveryKindOfLineBreak)
{
    load("T\n  x");
    node("x")->setText(QStringLiteral("one\u2028two\nthree\r\n four \u2029\u2029five"));
    node("one\u2028two\nthree\r\n four \u2029\u2029five")->setQuote(true);
    select(QStringLiteral("one\u2028two\nthree\r\n four \u2029\u2029five"));
    controller->split();
    EXPECT_EQ(tree(), "T(>one, >two, >three, >four, >five)");
}

TEST_F(SplitJoin, NothingToSplitLeavesNoStepButSentencesDo)
{
    load("T\n  one line\n  br\n    kid");
    select(QStringList{"one line", "br"});
    controller->split();
    EXPECT_EQ(steps(), 0);
    controller->splitSentences();
    EXPECT_EQ(steps(), 1) << "the sentence split takes its step up front";
    EXPECT_EQ(tree(), "T(one line, br(kid))");
}

TEST_F(SplitJoin, SplitSentencesFollowsTheLocale)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    load("T\n  x\n  y");
    node("x")->setText("He said so. Then he left!  Did he?\u2028Yes.");
    select(QStringList{"He said so. Then he left!  Did he?\u2028Yes.", "y"});
    controller->splitSentences();
    EXPECT_EQ(tree(), "T(He said so., Then he left!, Did he?, Yes., y)");
    EXPECT_EQ(controller->selectedNodeIDs().size(), 4);
}

TEST(TextPieces, SentenceHintWantsACapitalAfterTheMark)
{
    EXPECT_TRUE(TextPieces::looksLikeSeveralSentences("One. Two."));
    EXPECT_TRUE(TextPieces::looksLikeSeveralSentences(QStringLiteral("Wie? \u00C4rger.")));
    EXPECT_FALSE(TextPieces::looksLikeSeveralSentences("one. two."));
    EXPECT_FALSE(TextPieces::looksLikeSeveralSentences("Mr.Smith"));
}

} // namespace
