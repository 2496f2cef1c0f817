#include "columns/ColumnLayout.h"
#include "columns/ColumnWidthsConfig.h"
#include "columns/WrappedLines.h"
#include "core/SermonNode.h"
#include "map/MapTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double row = ColumnLayout::rowHeight;

// Lines of `n` rows each: three words a row fit any column at the default width.
QString rows(int n)
{
    QStringList lines;
    for (int i = 0; i < n; ++i)
        lines << QStringLiteral("row %1").arg(i);
    return lines.join(QChar(0x2028));
}

class ColumnLayoutTest : public ::testing::Test {
protected:
    void SetUp() override { ensureApplication(); }
};

TEST_F(ColumnLayoutTest, LoneRootIsOneRowInOneDefaultColumn)
{
    const auto root = SermonNode::make(QStringLiteral("Title"));
    const ColumnLayout layout = ColumnLayout::compute(*root, {});
    ASSERT_EQ(layout.frames.size(), 1u);
    const ColumnNodeFrame& frame = layout.frames.at(root->id());
    EXPECT_EQ(frame.column, 0);
    EXPECT_EQ(frame.origin, QPointF(0, 0));
    EXPECT_EQ(frame.size, QSizeF(600, row));
    EXPECT_EQ(layout.columnCount, 1);
    EXPECT_EQ(layout.columnXEdges, (std::vector<double>{0, 600}));
    EXPECT_EQ(layout.totalSize, QSizeF(600, row));
}

// A known tree, worked out by hand:
//   root "Title"            rows 0..
//     a (3 rows)            y 0, its child a1 (1 row) at y 0; a's block 0..84
//       a1
//     b                     y 84; children b1 (1 row), b2 (5 rows): b1 84..112, b2 112..252
//       b1
//       b2 (5 rows)
//     c (collapsed)         y 252, its children have no frames; the root's block 0..280
//       c1
//         c11
TEST_F(ColumnLayoutTest, FramesRangesAndEdgesOfAKnownTree)
{
    const auto root = SermonNode::make(QStringLiteral("Title"));
    const auto a = root->addChild(rows(3));
    const auto a1 = a->addChild(QStringLiteral("a1"));
    const auto b = root->addChild(QStringLiteral("b"));
    const auto b1 = b->addChild(QStringLiteral("b1"));
    const auto b2 = b->addChild(rows(5));
    const auto c = root->addChild(QStringLiteral("c"));
    const auto c1 = c->addChild(QStringLiteral("c1"));
    c1->addChild(QStringLiteral("c11"));
    c->setCollapsed(true);

    const ColumnLayout layout = ColumnLayout::compute(*root, {300});
    struct Expected {
        SermonNodePtr node;
        int column;
        QPointF origin;
        double height;
        ColumnYRange range;
    };
    const Expected table[] = {
        {root, 0, {0, 0}, row, {0, 10 * row}},
        {a, 1, {300, 0}, 3 * row, {0, 3 * row}},
        {a1, 2, {900, 0}, row, {0, row}}, // a parent taller than its child keeps its height
        {b, 1, {300, 3 * row}, row, {3 * row, 9 * row}},
        {b1, 2, {900, 3 * row}, row, {3 * row, 4 * row}},
        {b2, 2, {900, 4 * row}, 5 * row, {4 * row, 9 * row}},
        {c, 1, {300, 9 * row}, row, {9 * row, 10 * row}},
    };
    EXPECT_EQ(layout.frames.size(), std::size(table)); // the collapsed branch has no frames
    for (const Expected& e : table) {
        SCOPED_TRACE(e.node->text().toStdString());
        ASSERT_TRUE(layout.frames.count(e.node->id()));
        const ColumnNodeFrame& frame = layout.frames.at(e.node->id());
        EXPECT_EQ(frame.column, e.column);
        EXPECT_EQ(frame.origin, e.origin);
        EXPECT_EQ(frame.size, QSizeF(e.column == 0 ? 300 : 600, e.height));
        EXPECT_EQ(frame.subtreeYRange, e.range);
    }
    EXPECT_EQ(layout.columnCount, 3);
    EXPECT_EQ(layout.columnXEdges, (std::vector<double>{0, 300, 900, 1500}));
    EXPECT_EQ(layout.totalSize, QSizeF(1500, 10 * row));

    // Folding the only branch that reaches column 2 takes the column away.
    a->setCollapsed(true);
    b->setCollapsed(true);
    EXPECT_EQ(ColumnLayout::compute(*root, {300}).columnCount, 2);
}

TEST_F(ColumnLayoutTest, DeepChainIsLaidOutWithoutRecursion)
{
    const auto root = SermonNode::make(QStringLiteral("Title"));
    SermonNodePtr node = root;
    for (int i = 0; i < 9000; ++i)
        node = node->addChild(QStringLiteral("x"));
    const ColumnLayout layout = ColumnLayout::compute(*root, {});
    EXPECT_EQ(layout.columnCount, 9001);
    EXPECT_EQ(layout.frames.at(node->id()).origin.x(), 9000 * 600.0);
}

struct WrapCase {
    const char* name;
    QString text;
    double width;
    std::vector<WrappedLine> expected; // empty: only the row grid and line count are checked
    int lineCount;
};

TEST_F(ColumnLayoutTest, WrappingFollowsTheLineRules)
{
    const QString longWord(500, QChar('w'));
    const WrapCase cases[] = {
        {"empty text is one empty row", QString(), 600, {{QString(), 0}}, 1},
        {"short text", QStringLiteral("Grace"), 600, {{QStringLiteral("Grace"), 0}}, 1},
        {"soft break",
         QStringLiteral("one\u2028two"),
         600,
         {{QStringLiteral("one"), 0}, {QStringLiteral("two"), row}},
         2},
        {"trailing break adds an empty row",
         QStringLiteral("one\u2028"),
         600,
         {{QStringLiteral("one"), 0}, {QString(), row}},
         2},
        {"two breaks leave an empty row between",
         QStringLiteral("one\u2028\u2028two"),
         600,
         {{QStringLiteral("one"), 0}, {QString(), row}, {QStringLiteral("two"), 2 * row}},
         3},
        {"a long word stays one line", longWord, 180, {{longWord, 0}}, 1},
        {"words wrap in a narrow column", QStringLiteral("grace and peace to you from God our Father"), 180, {}, 0},
    };
    for (const WrapCase& c : cases) {
        SCOPED_TRACE(c.name);
        const auto lines = wrappedLinesUncached(c.text, false, c.width);
        if (!c.expected.empty()) {
            EXPECT_EQ(lines, c.expected);
            continue;
        }
        ASSERT_GT(lines.size(), 1u);
        QString joined;
        for (size_t i = 0; i < lines.size(); ++i) {
            EXPECT_EQ(lines[i].yOffset, double(i) * row);
            EXPECT_FALSE(lines[i].string.isEmpty());
            joined += lines[i].string;
        }
        EXPECT_EQ(joined, c.text); // broken at spaces, nothing lost
    }
    // A node's height follows its wrapped lines.
    const auto root = SermonNode::make(QStringLiteral("one\u2028"));
    EXPECT_EQ(ColumnLayout::compute(*root, {}).totalSize.height(), 2 * row);
}

TEST_F(ColumnLayoutTest, RememberedWorkEqualsFreshWork)
{
    const QString texts[] = {
        QStringLiteral("In the beginning was the Word, and the Word was with God"),
        QStringLiteral(
            "🙏🏽 Pray 👨‍👩‍👧‍👦 together ✝️ always 🕊️🕊️🕊️ and give thanks in "
            "everything"),
        QStringLiteral("e\u0301e\u0301 combining ma\u0308rks a\u030A\u0323 over letters in a line of words"),
        QString(300, QChar('m')),
        QStringLiteral("Ἐν ἀρχῇ ἦν ὁ λόγος, καὶ ὁ λόγος ἦν πρὸς τὸν θεόν בְּרֵאשִׁית בָּרָא"),
        QStringLiteral("line\u2028\u2028after two breaks\u2028"),
    };
    for (const QString& text : texts)
        for (const bool semibold : {false, true})
            for (const double width : {180.0, 333.5, 600.0, 1200.0}) {
                SCOPED_TRACE(text.toStdString());
                const auto uncached = wrappedLinesUncached(text, semibold, width);
                EXPECT_EQ(wrappedLines(text, semibold, width), uncached); // fills the cache
                EXPECT_EQ(wrappedLines(text, semibold, width), uncached); // answers from it
                EXPECT_EQ(size_t(wrappedLineCount(text, semibold, width)), uncached.size());
            }
    // A text changed where it stands, same address and length, is counted afresh: words that
    // wrap, then one long word of the same length that doesn't.
    QString words = QStringLiteral("word ").repeated(40);
    const int wrapped = wrappedLineCount(words, false, 180);
    ASSERT_GT(wrapped, 1);
    words.fill(QChar('w'));
    EXPECT_EQ(wrappedLineCount(words, false, 180), 1);

    // A layout rewritten in place, change after change, is the one made afresh: folds, removed
    // branches and new lines leave no frame behind.
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    std::vector<SermonNodePtr> nodes{root};
    for (int i = 0; i < 60; ++i)
        nodes.push_back(nodes[size_t(i * 7 % int(nodes.size()))]->addChild(QStringLiteral("Line %1").arg(i)));
    ColumnLayout kept;
    for (int step = 0; step < 12; ++step) {
        SermonNode& node = *nodes[size_t(1 + step * 5 % int(nodes.size() - 1))];
        if (step % 3 == 0)
            node.setCollapsed(!node.isCollapsed());
        else if (step % 3 == 1 && node.hasChildren())
            node.removeChild(0);
        else
            node.addChild(words.left(step * 20));
        ColumnLayout::compute(*root, {300}, kept);
        EXPECT_EQ(kept, ColumnLayout::compute(*root, {300})) << step;
    }
}

TEST_F(ColumnLayoutTest, WidthsConfigSetsClampsAndStores)
{
    ColumnWidthsConfig config;
    config.setWidth(3, 5000);
    EXPECT_EQ(config.widths(), (std::vector<double>{600, 600, 600, 1200}));
    config.setWidth(-1, 400);
    config.setWidth(1, 10);
    EXPECT_EQ(config.widths(), (std::vector<double>{600, 180, 600, 1200}));
    EXPECT_EQ(config.width(9), 600);
    EXPECT_EQ(config.rawValue(), QStringLiteral("[600,180,600,1200]"));
    EXPECT_EQ(ColumnWidthsConfig::fromRawValue(config.rawValue()), config);
    // Stored widths are not clamped on reading.
    EXPECT_EQ(ColumnWidthsConfig::fromRawValueOrDefault(QStringLiteral("[600,412.5,90]")).width(2), 90);
}

TEST_F(ColumnLayoutTest, BadStoredWidthsFallBackToTheDefault)
{
    QString million = QStringLiteral("[");
    for (int i = 0; i < 1000000; ++i)
        million += QStringLiteral("600,");
    million += QStringLiteral("600]");
    const QString texts[] = {QStringLiteral("not json"),  QStringLiteral("{\"a\":1}"),
                             QStringLiteral("[600,-5]"),  QStringLiteral("[600,NaN]"),
                             QStringLiteral("[\"600\"]"), QStringLiteral("[0]"),
                             QStringLiteral("[1e400]"),   million};
    for (const QString& text : texts) {
        SCOPED_TRACE(text.left(40).toStdString());
        EXPECT_FALSE(ColumnWidthsConfig::fromRawValue(text).has_value());
        EXPECT_TRUE(ColumnWidthsConfig::fromRawValueOrDefault(text).widths().empty());
    }
    ColumnWidthsConfig config;
    config.setWidth(2, std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(config.widths().empty());
}

} // namespace
