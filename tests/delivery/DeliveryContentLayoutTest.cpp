#include "DeliveryTestSupport.h"

#include "delivery/DeliveryContentLayout.h"
#include "delivery/DeliveryText.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>

#include <atomic>
#include <cmath>
#include <thread>

namespace {

using Kind = DeliveryItem::Kind;

class DeliveryLayoutTest : public ::testing::Test {
protected:
    void SetUp() override { ensureApplication(); }

    static double lineHeight(const QFont& font) { return std::ceil(QFontMetricsF(font).lineSpacing()); }

    static const DeliveryItem* itemFor(const DeliveryContentLayout& layout, const NodeID& id)
    {
        for (const DeliveryItem& item : layout.items) {
            if ((item.kind == Kind::heading || item.kind == Kind::leaf) && item.id == id)
                return &item;
        }
        return nullptr;
    }
};

TEST_F(DeliveryLayoutTest, LoneRootIsOneLeafOpenedByLineSpacing)
{
    auto root = SermonNode::make(QStringLiteral("Amen"), 0);
    const double base = 15;
    const double spacing = 1.8;
    const auto layout = DeliveryContentLayout::compute(*root, 30, 700, base, spacing);
    const double half = (spacing - 1) * base * 0.5;
    const QFont font = deliveryFont(0, true, base);

    int leaves = 0;
    for (const DeliveryItem& item : layout.items)
        leaves += item.kind == Kind::leaf;
    ASSERT_EQ(leaves, 1);
    const DeliveryItem* leaf = itemFor(layout, root->id());
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->frame.x(), 150);
    EXPECT_DOUBLE_EQ(leaf->frame.y(), 40 + half);
    EXPECT_EQ(leaf->frame.width(), std::ceil(QFontMetricsF(font).horizontalAdvance(QStringLiteral("Amen"))));
    EXPECT_EQ(leaf->frame.height(), lineHeight(font));
    EXPECT_DOUBLE_EQ(layout.totalHeight, 40 + half + leaf->frame.height() + half + 40);
    EXPECT_TRUE(layout.headingYPositions.empty());
    EXPECT_EQ(layout.wordFractions.size(), 1u);
}

TEST_F(DeliveryLayoutTest, RememberedSizesFollowTheTextTheWidthAndTheFont)
{
    // A line's size is remembered between layouts; whatever changes it is measured afresh, and a
    // setting put back gives the first layout again.
    const QString text = QStringLiteral("Grace upon grace, and the law through Moses, and truth");
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    auto leaf = root->addChild(text);
    auto frameOf = [&](double width, double base) {
        return itemFor(DeliveryContentLayout::compute(*root, 30, width, base, 1.8), leaf->id())->frame;
    };
    const QRectF first = frameOf(700, 15);
    struct Row {
        const char* change;
        double width, base;
        QString text;
    };
    const std::vector<Row> rows{
        {"narrower", 120, 15, text},
        {"larger type", 700, 22, text},
        {"longer text", 700, 15, text + QStringLiteral(" came by Jesus Christ, full of grace and truth")},
    };
    for (const Row& row : rows) {
        leaf->setText(row.text);
        const QRectF changed = frameOf(row.width, row.base);
        EXPECT_NE(changed.size(), first.size()) << row.change;
        const double width = row.width - DeliveryContentLayout::leafIndent(1);
        EXPECT_EQ(changed.size(), DeliveryText::measure(row.text, deliveryFont(0, true, row.base), width))
            << row.change;
    }
    leaf->setText(text);
    EXPECT_EQ(frameOf(700, 15), first);

    // Sizes measured ahead on another thread are the ones a layout asks for, quotes and headings
    // of every depth too (told by sizes no text has), and give the layout a cold thread makes.
    root->addChild(QStringLiteral("Part"))->addChild(QStringLiteral("Point"))->addChild(text)->setQuote(true);
    enum class Sizes { none, told, measured };
    auto onFreshThread = [&](Sizes sizes) {
        DeliveryContentLayout made;
        std::thread([&] {
            const std::atomic<bool> stop{false};
            const auto asked = DeliveryContentLayout::wraps(*root, 400);
            if (sizes == Sizes::told)
                DeliveryContentLayout::rememberWraps(asked, std::vector<QSizeF>(asked.size(), QSizeF(3, 5)), 17);
            if (sizes == Sizes::measured)
                DeliveryContentLayout::rememberWraps(asked, DeliveryContentLayout::measureWraps(asked, 17, stop), 17);
            made = DeliveryContentLayout::compute(*root, 30, 400, 17, 1.5);
        }).join();
        return made;
    };
    for (const DeliveryItem& item : onFreshThread(Sizes::told).items) {
        if (item.kind == Kind::heading || item.kind == Kind::leaf) {
            EXPECT_EQ(item.frame.size(), QSizeF(3, 5)) << item.text.toStdString();
        }
    }
    EXPECT_EQ(onFreshThread(Sizes::measured).items, onFreshThread(Sizes::none).items);
}

TEST_F(DeliveryLayoutTest, HeadingsFollowTheDepthTables)
{
    // A chain of headings from depth 0 to 5 ending in a leaf.
    struct Row {
        int depth;
        double indent, gapBefore, gapAfter, sizeOffset;
        QFont::Weight weight;
        bool inTables;
    };
    const Row rows[] = {
        {0, 0, 0, 24, 13, QFont::Bold, false},  {1, 0, 28, 12, 5, QFont::DemiBold, true},
        {2, 24, 16, 6, 1, QFont::Medium, true}, {3, 48, 12, 4, -1, QFont::Medium, true},
        {4, 48, 8, 4, 0, QFont::Normal, false}, {5, 48, 8, 4, 0, QFont::Normal, false},
    };
    const double base = 17;
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    std::vector<SermonNodePtr> chain{root};
    for (int d = 1; d <= 6; ++d)
        chain.push_back(chain.back()->addChild(QStringLiteral("Level %1").arg(d)));
    const auto layout = DeliveryContentLayout::compute(*root, 1, 600, base, 2.0);

    double expectedY = 40;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.depth);
        const DeliveryItem* item = itemFor(layout, chain[size_t(row.depth)]->id());
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->kind, Kind::heading);
        const QFont font = deliveryFont(row.depth, false, base);
        EXPECT_EQ(font.pixelSize(), int(base + row.sizeOffset));
        EXPECT_EQ(font.weight(), row.weight);
        EXPECT_EQ(item->frame.x(), 150 + row.indent);
        // Headings never get the line spacing, only their own gaps.
        EXPECT_DOUBLE_EQ(item->frame.y(), expectedY + row.gapBefore);
        expectedY = item->frame.bottom() + (row.depth == 1 ? 6 : 0) + row.gapAfter;
        EXPECT_EQ(layout.headingYPositions.count(item->id) == 1, row.inTables);
        EXPECT_EQ(layout.headingDepths.count(item->id) == 1, row.inTables);
    }
    // The leaf at depth 6 takes the deepest leaf indent.
    const DeliveryItem* leaf = itemFor(layout, chain[6]->id());
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->frame.x(), 150 + 48);

    // Only depth 1 gets a divider, 6 below its frame, as wide as the text column.
    int dividers = 0;
    for (const DeliveryItem& item : layout.items) {
        if (item.kind != Kind::headingDivider)
            continue;
        ++dividers;
        EXPECT_EQ(item.width, 600);
        EXPECT_DOUBLE_EQ(item.y, itemFor(layout, chain[1]->id())->frame.bottom() + 6);
    }
    EXPECT_EQ(dividers, 1);
}

TEST_F(DeliveryLayoutTest, LeafIndentsAndQuotes)
{
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    auto one = root->addChild(QStringLiteral("One"));
    auto quote = one->addChild(QStringLiteral("Quoted words"));
    quote->setQuote(true);
    auto two = one->addChild(QStringLiteral("Two"));
    auto plain = two->addChild(QStringLiteral("Plain at depth three"));
    auto three = two->addChild(QStringLiteral("Three"));
    auto deep = three->addChild(QStringLiteral("Depth four leaf"));
    const auto layout = DeliveryContentLayout::compute(*root, 5, 700, 15, 1.8);

    EXPECT_EQ(itemFor(layout, quote->id())->frame.x(), 150 + 0 + 20);
    EXPECT_TRUE(itemFor(layout, quote->id())->isQuote);
    EXPECT_EQ(itemFor(layout, plain->id())->frame.x(), 150 + 24); // depth 3
    EXPECT_EQ(itemFor(layout, deep->id())->frame.x(), 150 + 48); // depth 4
    // A leaf stores its middle for the runner.
    const DeliveryItem* leaf = itemFor(layout, plain->id());
    EXPECT_DOUBLE_EQ(layout.nodeYPositions.at(plain->id()), leaf->frame.center().y());
}

TEST_F(DeliveryLayoutTest, LineSpacingOpensSpaceAroundLeavesOnly)
{
    auto root = sectionedSermon(1, 2, 3);
    const auto tight = DeliveryContentLayout::compute(*root, 1, 700, 16, 1.0);
    const auto loose = DeliveryContentLayout::compute(*root, 1, 700, 16, 2.0);
    const double half = 8; // (2 - 1) * 16 / 2
    const auto& section = root->children()[0];
    EXPECT_EQ(itemFor(tight, section->id())->frame, itemFor(loose, section->id())->frame);
    const NodeID first = section->children()[0]->id();
    const NodeID second = section->children()[1]->id();
    EXPECT_DOUBLE_EQ(itemFor(loose, first)->frame.y() - itemFor(tight, first)->frame.y(), half);
    EXPECT_DOUBLE_EQ(itemFor(loose, second)->frame.y() - itemFor(tight, second)->frame.y(), 3 * half);
    EXPECT_DOUBLE_EQ(loose.totalHeight - tight.totalHeight, 4 * half);
}

TEST_F(DeliveryLayoutTest, MinuteMarksAreInterleavedByPosition)
{
    auto root = sectionedSermon(3, 6, 12);
    const auto none = DeliveryContentLayout::compute(*root, 1, 700, 15, 1.8);
    for (const DeliveryItem& item : none.items)
        EXPECT_NE(item.kind, Kind::timeMarker);

    const auto layout = DeliveryContentLayout::compute(*root, 30, 700, 15, 1.8);
    EXPECT_EQ(layout.items.size(), none.items.size() + 29);
    int m = 0;
    double lastTop = -1;
    for (size_t i = 0; i < layout.items.size(); ++i) {
        const DeliveryItem& item = layout.items[i];
        if (item.kind != Kind::timeMarker) {
            EXPECT_GE(item.top(), lastTop) << "items keep their page order";
            lastTop = item.top();
            continue;
        }
        ++m;
        EXPECT_EQ(item.text, QStringLiteral("%1 min").arg(m));
        EXPECT_DOUBLE_EQ(item.y, yForFraction(layout, m / 30.0));
        if (i > 0 && layout.items[i - 1].kind != Kind::timeMarker) {
            EXPECT_LE(layout.items[i - 1].top(), item.y);
        }
        if (i + 1 < layout.items.size() && layout.items[i + 1].kind != Kind::timeMarker) {
            EXPECT_GT(layout.items[i + 1].top(), item.y);
        }
    }
    EXPECT_EQ(m, 29);
}

TEST_F(DeliveryLayoutTest, TimeToPlaceFollowsTheSegmentRules)
{
    auto root = sectionedSermon(2, 3, 10);
    const auto layout = DeliveryContentLayout::compute(*root, 10, 700, 15, 1.8);
    const auto& table = layout.wordFractions;
    ASSERT_EQ(table.size(), 6u);
    auto yOf = [&](size_t i) { return layout.nodeYPositions.at(table[i].nodeID); };

    EXPECT_DOUBLE_EQ(yForFraction(layout, 0), 40);
    // Entry 0 runs from the top margin to its own middle...
    EXPECT_DOUBLE_EQ(yForFraction(layout, table[0].endFraction / 2), (40 + yOf(0)) / 2);
    // ...and every later one from its middle to the next, so the stretch between the first
    // two middles is jumped.
    const double justPast = table[0].endFraction + 1e-9;
    EXPECT_NEAR(yForFraction(layout, justPast), yOf(1), 1e-3);
    const double mid3 = (table[3].startFraction + table[3].endFraction) / 2;
    EXPECT_DOUBLE_EQ(yForFraction(layout, mid3), (yOf(3) + yOf(4)) / 2);
    EXPECT_DOUBLE_EQ(yForFraction(layout, 1.0), yOf(5) + 20);
    EXPECT_DOUBLE_EQ(yForFraction(layout, 2.0), yForFraction(layout, 1.5));
    EXPECT_DOUBLE_EQ(yForFraction(layout, 1.5), yOf(5) + 0.5 * layout.totalHeight);

    // Place to time.
    EXPECT_EQ(fractionForY(layout, 39), 0);
    EXPECT_DOUBLE_EQ(fractionForY(layout, (40 + yOf(0)) / 2), table[0].endFraction / 2);
    EXPECT_DOUBLE_EQ(fractionForY(layout, (yOf(0) + yOf(1)) / 2), table[0].endFraction); // the gap
    EXPECT_DOUBLE_EQ(fractionForY(layout, (yOf(3) + yOf(4)) / 2), mid3);
    EXPECT_EQ(fractionForY(layout, layout.totalHeight + 500), 1);

    // A laid-out page is searched by bisection, and answers exactly as a scan of the table does.
    auto uneven = sectionedSermon(3, 4, 1);
    uneven->children()[1]->children()[2]->setText(wordsText(40));
    uneven->children()[2]->children()[0]->setText(QString());
    for (const SermonNodePtr& sermon : {root, uneven}) {
        const auto searched = DeliveryContentLayout::compute(*sermon, 10, 700, 15, 1.8);
        ASSERT_EQ(searched.entryYs.size(), searched.wordFractions.size());
        DeliveryContentLayout scanned = searched;
        scanned.entryYs.clear();
        for (double f = -0.1; f <= 1.6; f += 0.0025)
            EXPECT_EQ(yForFraction(searched, f), yForFraction(scanned, f)) << f;
        for (double y = -5; y <= searched.totalHeight + 40; y += 0.5)
            EXPECT_EQ(fractionForY(searched, y), fractionForY(scanned, y)) << y;
        // Right on the lines and the ends, where a search goes wrong first.
        for (size_t i = 0; i < searched.entryYs.size(); ++i) {
            for (double d : {-1e-9, 0.0, 1e-9}) {
                const double y = searched.entryYs[i] + d;
                const double f = searched.wordFractions[i].endFraction + d;
                EXPECT_EQ(fractionForY(searched, y), fractionForY(scanned, y)) << y;
                EXPECT_EQ(yForFraction(searched, f), yForFraction(scanned, f)) << f;
            }
        }
    }
}

TEST_F(DeliveryLayoutTest, NoSpokenWordsMeansTimeSpreadsOverThePage)
{
    auto root = SermonNode::make(QStringLiteral("Title words"), 0);
    auto heading = root->addChild(QStringLiteral("Heading"));
    heading->addChild(QString());
    const auto layout = DeliveryContentLayout::compute(*root, 5, 700, 15, 1.8);
    ASSERT_TRUE(layout.wordFractions.empty());
    EXPECT_DOUBLE_EQ(yForFraction(layout, 0.25), 0.25 * layout.totalHeight);
    EXPECT_EQ(fractionForY(layout, 0), 0);
    EXPECT_EQ(fractionForY(layout, layout.totalHeight / 2), 0);
}

TEST_F(DeliveryLayoutTest, SurvivesAVeryDeepTree)
{
    auto root = SermonNode::make(QStringLiteral("Deep"), 0);
    SermonNodePtr node = root;
    for (int d = 1; d < 9000; ++d)
        node = node->addChild(QStringLiteral("w"));
    const auto layout = DeliveryContentLayout::compute(*root, 10, 700, 15, 1.8);
    EXPECT_EQ(layout.nodeYPositions.size(), 1u);
    EXPECT_GT(layout.totalHeight, 9000);
}

} // namespace
