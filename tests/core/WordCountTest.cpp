#include "core/WordCount.h"
#include "core/ReadingPace.h"

#include <gtest/gtest.h>

using namespace WordCount;

namespace {

TEST(WordCount, CountsPiecesBetweenUnicodeWhitespace)
{
    struct Row {
        const char* text;
        int words;
    } rows[] = {
        {"", 0},
        {"   ", 0},
        {"well-known", 1},
        {"a \u2014 b", 3},
        {"line\u2028break", 2},
        {"tab\tand\nnewline", 3},
        {"no\u00a0break\u3000ideographic", 3},
        {"  leading and trailing  ", 3},
        {"caf\u00e9 \U0001F534 point", 3},
    };
    for (const auto& row : rows)
        EXPECT_EQ(wordCount(QString::fromUtf8(row.text)), row.words) << row.text;
}

TEST(WordCount, NodeCountsIncludeHeadingsAndCollapsedParts)
{
    auto root = SermonNode::make(QStringLiteral("Two words"), 0);
    auto heading = root->addChild(QStringLiteral("three more words"));
    heading->addChild(QStringLiteral("one"));
    heading->setCollapsed(true);
    EXPECT_EQ(wordCount(*root), 6);
}

TEST(WordCount, EstimatedMinutesAreStepsOfFive)
{
    struct Row {
        int words, wpm, minutes;
    } rows[] = {{0, 130, 5},   {130, 130, 5},   {651, 130, 10}, {1000, 0, 5},
                {1000, -4, 5}, {3900, 130, 30}, {3901, 130, 35}};
    for (const auto& row : rows)
        EXPECT_EQ(estimatedMinutes(row.words, row.wpm), row.minutes) << row.words << " at " << row.wpm;
}

TEST(WordCount, StatusText)
{
    auto root = SermonNode::make(QString(), 0);
    EXPECT_EQ(statusText(*root, 120), "0 words");
    EXPECT_EQ(statusTextWithoutPace(*root, 120), "0 words");
    root->setText(QStringLiteral("one two three"));
    EXPECT_EQ(statusText(*root, 120), "3 words · 1 min @120wpm");
    QStringList many;
    for (int i = 0; i < 1234; ++i)
        many.append(QStringLiteral("w"));
    root->addChild(many.join(QLatin1Char(' ')));
    EXPECT_EQ(statusText(*root, 120), "1237 words · 11 min @120wpm");
    EXPECT_EQ(statusTextWithoutPace(*root, 140), "1237 words · 9 min");
}

std::vector<double> spans(const std::vector<NodeWordFraction>& table)
{
    std::vector<double> out;
    for (const auto& entry : table)
        out.push_back(entry.endFraction - entry.startFraction);
    return out;
}

TEST(WordFractions, RootAloneIsTheOnlyLeaf)
{
    auto root = SermonNode::make(QStringLiteral("Words here"), 0);
    const auto table = nodeWordFractions(*root);
    ASSERT_EQ(table.size(), 1u);
    EXPECT_EQ(table[0], (NodeWordFraction{root->id(), 0.0, 1.0}));
    root->setText(QString());
    EXPECT_TRUE(nodeWordFractions(*root).empty());
}

TEST(WordFractions, HeadingWordsTakeNoTime)
{
    auto root = SermonNode::make(QStringLiteral("Title words"), 0);
    root->addChild(QStringLiteral("Heading"))->addChild(QString());
    root->addChild(QString());
    EXPECT_GT(wordCount(*root), 0);
    EXPECT_TRUE(nodeWordFractions(*root).empty());
}

TEST(WordFractions, EqualLeavesShareEquallyAndEndAtExactlyOne)
{
    auto root = SermonNode::make(QStringLiteral("T"), 0);
    for (int i = 0; i < 3; ++i)
        root->addChild(QStringLiteral("word"));
    const auto table = nodeWordFractions(*root);
    ASSERT_EQ(table.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(table[i].nodeID, root->children()[i]->id());
        EXPECT_NEAR(table[i].endFraction - table[i].startFraction, 1.0 / 3, 1e-12);
    }
    EXPECT_EQ(table.front().startFraction, 0.0);
    EXPECT_EQ(table.back().endFraction, 1.0);
}

TEST(WordFractions, SmoothingReachesFivePlacesEachWay)
{
    auto root = SermonNode::make(QStringLiteral("T"), 0);
    QStringList hundred;
    for (int i = 0; i < 100; ++i)
        hundred.append(QStringLiteral("w"));
    for (int i = 0; i < 12; ++i)
        root->addChild(i == 5 ? hundred.join(QLatin1Char(' ')) : QString());
    const auto s = spans(nodeWordFractions(*root));
    ASSERT_EQ(s.size(), 12u);
    for (int i = 0; i < 11; ++i)
        EXPECT_GT(s[i], 0.0) << "leaf " << i;
    EXPECT_EQ(s[11], 0.0);
}

TEST(WordFractions, WalksCollapsedBranchesInReadingOrder)
{
    auto root = SermonNode::make(QStringLiteral("T"), 0);
    auto a = root->addChild(QStringLiteral("A"));
    auto a1 = a->addChild(QStringLiteral("one two"));
    a->setCollapsed(true);
    auto b = root->addChild(QStringLiteral("three"));
    const auto table = nodeWordFractions(*root);
    ASSERT_EQ(table.size(), 2u);
    EXPECT_EQ(table[0].nodeID, a1->id());
    EXPECT_EQ(table[1].nodeID, b->id());
    EXPECT_EQ(table[0].endFraction, table[1].startFraction);
}

TEST(ReadingPace, CasesAndLabels)
{
    EXPECT_EQ(ReadingPaces::allCases.size(), 4u);
    EXPECT_EQ(ReadingPaces::fromWordsPerMinute(140), ReadingPace::normal);
    EXPECT_FALSE(ReadingPaces::fromWordsPerMinute(130).has_value());
    EXPECT_EQ(ReadingPaces::label(ReadingPace::slow), "Slow (100 wpm)");
    EXPECT_EQ(ReadingPaces::label(ReadingPace::brisk), "Brisk (160 wpm)");
}

} // namespace
