#include "map/MapTestSupport.h"

#include "map/MapLayoutState.h"
#include "map/TreeLayout.h"

#include <QFontMetricsF>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

class TreeLayoutTest : public ::testing::Test {
protected:
    void SetUp() override { ensureApplication(); }

    static double lineHeight(int depth) { return TreeLayout::lineHeight(QFontMetricsF(TreeLayout::nodeFont(depth))); }
    static double width(const QString& line, int depth)
    {
        return std::ceil(QFontMetricsF(TreeLayout::nodeFont(depth)).horizontalAdvance(line)) + 32;
    }
};

TEST_F(TreeLayoutTest, FontsFollowDepth)
{
    struct Row {
        int depth;
        int pixels;
        QFont::Weight weight;
    };
    for (const Row& row :
         {Row{0, 16, QFont::Medium}, Row{1, 14, QFont::Medium}, Row{2, 13, QFont::Normal}, Row{7, 13, QFont::Normal}}) {
        const QFont font = TreeLayout::nodeFont(row.depth);
        EXPECT_EQ(font.pixelSize(), row.pixels) << row.depth;
        EXPECT_EQ(font.weight(), row.weight) << row.depth;
    }
}

TEST_F(TreeLayoutTest, LoneRootSitsAtTheOriginWithLeafHeight)
{
    auto root = SermonNode::make(QStringLiteral("The God Who Stays"), 0);
    const NodeLayouts layouts = TreeLayout::layout(*root);
    ASSERT_EQ(layouts.size(), 1u);
    const NodeLayout& l = layouts.at(root->id());
    EXPECT_EQ(l.origin, QPointF(40, 40));
    EXPECT_TRUE(l.isLeaf);
    EXPECT_FALSE(l.hasOnlyLeafChildren);
    EXPECT_DOUBLE_EQ(l.size.width(), width(root->text(), 0));
    EXPECT_DOUBLE_EQ(l.size.height(), lineHeight(0) + 6);
}

TEST_F(TreeLayoutTest, MeasuresLinesAtSoftAndHardBreaks)
{
    const QString sep(QChar(0x2028));
    struct Row {
        QString text;
        int lines;
        QString widest;
    };
    const std::vector<Row> rows{
        {QString(), 1, QStringLiteral(" ")},
        {QStringLiteral("Grace"), 1, QStringLiteral("Grace")},
        {QStringLiteral("Grace") + sep, 2, QStringLiteral("Grace")},
        {QStringLiteral("a") + sep + sep + QStringLiteral("Mercy endures"), 3, QStringLiteral("Mercy endures")},
        {QStringLiteral("Never will I leave you\nnor forsake you"), 2, QStringLiteral("Never will I leave you")},
    };
    for (const Row& row : rows) {
        for (bool isLeaf : {true, false}) {
            const QSizeF size = TreeLayout::measureNode(row.text, 2, isLeaf);
            EXPECT_DOUBLE_EQ(size.width(), width(row.widest, 2)) << row.text.toStdString();
            EXPECT_DOUBLE_EQ(size.height(), lineHeight(2) * row.lines + (isLeaf ? 6 : 16)) << row.text.toStdString();
        }
    }
}

TEST_F(TreeLayoutTest, FoldedParentKeepsBoxMarginsAndHidesDescendants)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    auto story = root->addChild(QStringLiteral("Story"));
    auto porch = story->addChild(QStringLiteral("My grandfather's porch."));
    auto deeper = porch->addChild(QStringLiteral("Deeper"));
    story->setQuote(true);
    story->setCollapsed(true);

    const NodeLayouts layouts = TreeLayout::layout(*root);
    ASSERT_EQ(layouts.size(), 2u);
    const NodeLayout& l = layouts.at(story->id());
    EXPECT_FALSE(l.isLeaf);
    EXPECT_TRUE(l.isQuote);
    EXPECT_DOUBLE_EQ(l.size.height(), lineHeight(1) + 16);
    EXPECT_EQ(layouts.count(porch->id()), 0u);
    EXPECT_EQ(layouts.count(deeper->id()), 0u);
}

TEST_F(TreeLayoutTest, LeafListsPackTighterThanBranches)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    auto a = root->addChild(QStringLiteral("What he promised"));
    auto b = root->addChild(QStringLiteral("Presence"));
    auto only = SermonNode::make(QStringLiteral("Parent"), 0);
    auto single = only->addChild(QStringLiteral("Leaf"));

    const double rootRight = 40 + width(QStringLiteral("Root"), 0);
    NodeLayouts layouts = TreeLayout::layout(*root);
    EXPECT_TRUE(layouts.at(root->id()).hasOnlyLeafChildren);
    EXPECT_DOUBLE_EQ(layouts.at(a->id()).origin.x(), rootRight + 28);
    EXPECT_DOUBLE_EQ(layouts.at(b->id()).origin.y(), layouts.at(a->id()).maxY() + 2);

    // One leaf child still counts as a leaf list: indent 28.
    const NodeLayouts singleLayouts = TreeLayout::layout(*only);
    EXPECT_TRUE(singleLayouts.at(only->id()).hasOnlyLeafChildren);
    EXPECT_DOUBLE_EQ(singleLayouts.at(single->id()).origin.x(), 40 + width(QStringLiteral("Parent"), 0) + 28);

    // The last child gets a child of its own: every child moves out to 40 and apart by 8.
    auto c = b->addChild(QStringLiteral("Never will I leave you"));
    layouts = TreeLayout::layout(*root);
    EXPECT_FALSE(layouts.at(root->id()).hasOnlyLeafChildren);
    EXPECT_DOUBLE_EQ(layouts.at(a->id()).origin.x(), rootRight + 40);
    EXPECT_DOUBLE_EQ(layouts.at(b->id()).origin.x(), rootRight + 40);
    EXPECT_DOUBLE_EQ(layouts.at(c->id()).origin.y(), layouts.at(a->id()).maxY() + 8);
    // The box is taller than its one leaf, so it keeps the top of its slot.
    EXPECT_DOUBLE_EQ(layouts.at(b->id()).origin.y(), layouts.at(a->id()).maxY() + 8);
}

TEST_F(TreeLayoutTest, ParentIsCentredOnATallerBlockAndKeepsItsTopOtherwise)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    for (int i = 0; i < 4; ++i)
        root->addChild(QStringLiteral("Point %1").arg(i));
    NodeLayouts layouts = TreeLayout::layout(*root);
    const NodeLayout& first = layouts.at(root->children().front()->id());
    const NodeLayout& last = layouts.at(root->children().back()->id());
    const double blockMid = (first.origin.y() + last.maxY()) * 0.5;
    EXPECT_NEAR(layouts.at(root->id()).midY(), blockMid, 1e-9);
    EXPECT_DOUBLE_EQ(first.origin.y(), 40);

    // A two-line parent is taller than its one leaf: both share the top edge.
    auto tall = SermonNode::make(QStringLiteral("First line") + QChar(0x2028) + QStringLiteral("second"), 0);
    auto leaf = tall->addChild(QStringLiteral("Leaf"));
    layouts = TreeLayout::layout(*tall);
    EXPECT_DOUBLE_EQ(layouts.at(tall->id()).origin.y(), 40);
    EXPECT_DOUBLE_EQ(layouts.at(leaf->id()).origin.y(), 40);
}

TEST_F(TreeLayoutTest, QuoteWithAChildIsNoQuoteOnTheMap)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    auto quote = root->addChild(QStringLiteral("He will never leave you."));
    quote->setQuote(true);
    EXPECT_TRUE(TreeLayout::layout(*root).at(quote->id()).isQuote);

    quote->appendChild(SermonNode::make(QStringLiteral("Why")));
    const NodeLayouts layouts = TreeLayout::layout(*root);
    EXPECT_FALSE(layouts.at(quote->id()).isQuote);
    EXPECT_TRUE(quote->isQuote());
}

TEST_F(TreeLayoutTest, DeepChainLaysOutWithoutRecursion)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    SermonNode* tip = root.get();
    for (int i = 0; i < 9000; ++i)
        tip = tip->addChild(QStringLiteral("level")).get();
    const NodeLayouts layouts = TreeLayout::layout(*root);
    EXPECT_EQ(layouts.size(), 9001u);
    EXPECT_TRUE(layouts.at(tip->id()).isLeaf);
    // Each level stands right of its parent: one-leaf lists at indent 28, chains at 40.
    EXPECT_GT(layouts.at(tip->id()).origin.x(), 9000 * 28.0);
    MapLayoutState tables;
    tables.recomputeLayout(root);
    EXPECT_EQ(tables.subtreeWordCount(root->id()), 9001);
}

TEST_F(TreeLayoutTest, RememberedWidthsGiveTheSameLayoutAsAFreshOne)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    std::vector<SermonNodePtr> nodes{root};
    std::mt19937 random(3);
    for (int i = 0; i < 200; ++i) {
        auto parent = nodes[std::uniform_int_distribution<size_t>(0, nodes.size() - 1)(random)];
        nodes.push_back(parent->addChild(QStringLiteral("Line %1").arg(i)));
    }
    // Rewritten in place, run after run, as the map keeps it: folds and removals leave nothing.
    TreeLayout::MeasureCache cache;
    NodeLayouts kept;
    for (int step = 0; step < 30; ++step) {
        auto node = nodes[std::uniform_int_distribution<size_t>(0, nodes.size() - 1)(random)];
        node->setText(node->text() + QStringLiteral(" and more"));
        if (step % 7 == 0)
            node->setCollapsed(!node->isCollapsed());
        if (step % 5 == 0 && !node->children().empty())
            node->removeChild(0);
        // A line that gains its first child keeps its text but takes a branch's padding.
        if (step % 3 == 1)
            nodes[std::uniform_int_distribution<size_t>(0, nodes.size() - 1)(random)]->addChild(QStringLiteral("New"));
        TreeLayout::layout(*root, kept, &cache);
        EXPECT_EQ(kept, TreeLayout::layout(*root)) << step;
    }
}

TEST_F(TreeLayoutTest, APartialRunIsExactInItsRegionAndWholeOnceItsTextsAreMeasured)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    std::vector<SermonNodePtr> nodes{root};
    std::mt19937 random(5);
    const QStringList words{QStringLiteral("grace"), QStringLiteral("WAVE"), QStringLiteral("fi"),
                            QStringLiteral("été")};
    for (int i = 0; i < 400; ++i) {
        auto parent = nodes[std::uniform_int_distribution<size_t>(0, nodes.size() - 1)(random)];
        QString text = QString::number(i);
        for (int w = std::uniform_int_distribution<int>(0, 12)(random); w > 0; --w)
            text += (w % 5 == 0 ? QChar(0x2028) : QChar(' ')) + words[w % words.size()];
        nodes.push_back(parent->addChild(text));
    }
    nodes[3]->setCollapsed(true);
    const NodeLayouts full = TreeLayout::layout(*root);
    const QRectF whole = TreeLayout::contentBounds(full);
    // The middle one begins halfway down a line, which must count as seen.
    const NodeLayout* straddled = nullptr;
    for (const auto& [id, l] : full)
        if (l.isLeaf && l.origin.y() > whole.center().y() && (!straddled || l.origin.y() < straddled->origin.y()))
            straddled = &l;
    ASSERT_NE(straddled, nullptr);
    const QRectF topLeft(0, 0, 800, 600), middle(straddled->origin.x(), straddled->frame().center().y(), 500, 300);
    // What reaches the regions is exact; every y and word count is, wherever the line is.
    auto expectExactWhereSeen = [&](const NodeLayouts& table, const std::vector<QRectF>& regions, const char* name) {
        EXPECT_EQ(table.size(), full.size()) << name;
        size_t estimated = 0;
        for (const auto& [id, l] : table) {
            const auto found = full.find(id);
            if (found == full.end()) {
                ADD_FAILURE() << name;
                continue;
            }
            const NodeLayout& exact = found->second;
            EXPECT_EQ(l.origin.y(), exact.origin.y()) << name;
            EXPECT_EQ(l.size.height(), exact.size.height()) << name;
            EXPECT_EQ(l.branchTop, exact.branchTop) << name;
            EXPECT_EQ(l.branchBottom, exact.branchBottom) << name;
            EXPECT_EQ(l.branchWords, exact.branchWords) << name;
            if (std::any_of(regions.begin(), regions.end(),
                            [&](const QRectF& r) { return exact.frame().intersects(r); })) {
                EXPECT_FALSE(l.estimated) << name;
                EXPECT_EQ(l.frame(), exact.frame()) << name;
            }
            estimated += l.estimated;
        }
        return estimated;
    };
    struct Row {
        const char* name;
        std::vector<QRectF> regions;
        QRectF scrolledTo; // measured in place afterwards
    };
    for (const Row& row : {Row{"nothing", {QRectF()}, topLeft}, Row{"the top left", {topLeft}, middle},
                           Row{"the middle", {middle}, topLeft}, Row{"two places", {topLeft, middle}, whole},
                           Row{"everything", {whole}, QRectF()}}) {
        TreeLayout::MeasureCache cache;
        NodeLayouts table;
        TreeLayout::PartialMeasure partial;
        partial.regions = row.regions;
        partial.budget = 0;
        TreeLayout::layout(*root, table, &cache, &partial);
        const size_t estimated = expectExactWhereSeen(table, row.regions, row.name);
        EXPECT_EQ(estimated, partial.unmeasured.size()) << row.name;
        EXPECT_EQ(estimated == 0, row.regions.front() == whole) << row.name;

        // Scrolled elsewhere: measured in place, with what it moves.
        ASSERT_TRUE(TreeLayout::measureInSight(*root, table, &cache, {row.scrolledTo})) << row.name;
        std::vector<QRectF> both = row.regions;
        both.push_back(row.scrolledTo);
        const size_t still = expectExactWhereSeen(table, both, row.name);
        EXPECT_EQ(still == 0, row.scrolledTo == whole || row.regions.front() == whole) << row.name;
        const NodeLayout& top = table.at(root->id());
        EXPECT_EQ(top.branchRight == full.at(root->id()).branchRight, still == 0) << row.name;

        const std::atomic<bool> stop{false};
        const auto extents = TreeLayout::measure(partial.unmeasured, stop);
        ASSERT_EQ(extents.size(), partial.unmeasured.size());
        for (size_t i = 0; i < extents.size(); ++i)
            cache.insert(partial.unmeasured[i].depthClass, partial.unmeasured[i].text, extents[i]);
        TreeLayout::PartialMeasure again;
        again.regions = row.regions;
        again.budget = 0;
        TreeLayout::layout(*root, table, &cache, &again);
        EXPECT_TRUE(again.unmeasured.empty()) << row.name;
        EXPECT_EQ(table, full) << row.name;
    }
}

TEST_F(TreeLayoutTest, RecomputeFillsEveryTable)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    auto a = root->addChild(QStringLiteral("Two words"));
    auto hidden = a->addChild(QStringLiteral("one") + QChar(0x2028) + QStringLiteral("two three"));
    a->setCollapsed(true);

    MapLayoutState tables;
    tables.recomputeLayout(root);
    EXPECT_EQ(tables.cachedLayouts.size(), 2u);
    EXPECT_NE(tables.node(hidden->id()), nullptr);
    // Folded parts count, and a soft break separates words.
    EXPECT_EQ(tables.subtreeWordCount(hidden->id()), 3);
    EXPECT_EQ(tables.subtreeWordCount(a->id()), 5);
    EXPECT_EQ(tables.subtreeWordCount(root->id()), 6);

    const NodeLayout& r = tables.cachedLayouts.at(root->id());
    const NodeLayout& c = tables.cachedLayouts.at(a->id());
    EXPECT_DOUBLE_EQ(tables.cachedCanvasSize.width(), c.maxX() + 80);
    EXPECT_DOUBLE_EQ(tables.cachedCanvasSize.height(), std::max(r.maxY(), c.maxY()) + 80);
    EXPECT_EQ(tables.cachedContentBounds, r.frame().united(c.frame()));
    EXPECT_EQ(TreeLayout::contentBounds({}), QRectF());
}

} // namespace
