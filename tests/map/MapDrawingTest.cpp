#include "map/MapTestSupport.h"

#include "map/MapDrawing.h"
#include "map/MapLayoutState.h"
#include "map/MapPalette.h"
#include "map/TextBitmapCache.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

// Paints a tree on white at scale 1 and keeps the picture for pixel checks.
struct Picture {
    MapLayoutState tables;
    MapDrawState state;
    TextBitmapCache cache;
    QImage image{QSize(900, 500), QImage::Format_ARGB32_Premultiplied};
    MapDrawStats stats;

    explicit Picture(const SermonNodePtr& root)
    {
        ensureApplication();
        tables.recomputeLayout(root);
    }
    void draw()
    {
        image.fill(Qt::white);
        QPainter painter(&image);
        stats = MapDrawing::drawCanvas(painter, QSizeF(image.size()), tables, state, MapPalette::forAppearance(false),
                                       cache);
    }
    const NodeLayout& at(const SermonNodePtr& node) const { return tables.cachedLayouts.at(node->id()); }

    // Whether anything was painted in a pixel (or the one above it: a 1-point line on a whole
    // coordinate covers two rows at half strength).
    bool inked(double x, double y) const
    {
        for (int dy : {-1, 0}) {
            const QColor c = image.pixelColor(int(std::floor(x)), int(std::floor(y)) + dy);
            if (c.red() < 245 || c.green() < 245 || c.blue() < 245)
                return true;
        }
        return false;
    }
    bool anyInk(double x0, double x1, double y) const
    {
        for (double x = x0; x <= x1; x += 1)
            if (inked(x, y))
                return true;
        return false;
    }
};

TEST(MapDrawing, LeafPairGetsABraceAndNoLines)
{
    auto root = SermonNode::make(QStringLiteral("What he promised"), 0);
    auto first = root->addChild(QStringLiteral("Presence"));
    auto second = root->addChild(QStringLiteral("Never will I leave you"));
    Picture p(root);
    p.draw();

    const double startX = p.at(root).maxX();
    const double x = startX + 14;
    const double top = p.at(first).origin.y() + 5;
    const double bottom = p.at(second).maxY() - 2;
    const double mid = (top + bottom) * 0.5;
    EXPECT_TRUE(p.inked(x, (top + 8 + mid - 8) * 0.5)) << "upper arm of the brace";
    EXPECT_TRUE(p.inked(x, (mid + 8 + bottom - 8) * 0.5)) << "lower arm of the brace";
    EXPECT_TRUE(p.inked(x + 7, top)) << "upper curl";
    // Between the brace's tips and the underlines nothing leads to either leaf.
    for (const auto& leaf : {first, second}) {
        const double underline = p.at(leaf).maxY() - 2;
        EXPECT_FALSE(p.anyInk(startX + 24, p.at(leaf).origin.x() + 3, underline));
        EXPECT_FALSE(p.anyInk(startX + 24, p.at(leaf).origin.x() + 3, p.at(leaf).midY()));
    }
    EXPECT_EQ(p.stats.connections, 1);
}

TEST(MapDrawing, OtherParentsLeadALineToEachChild)
{
    // One leaf: a straight line at its underline. A leaf beside a branch: elbows to both.
    auto single = SermonNode::make(QStringLiteral("Opening"), 0);
    auto only = single->addChild(QStringLiteral("Have you ever felt forgotten?"));
    Picture one(single);
    one.draw();
    const double underline = one.at(only).maxY() - 2;
    EXPECT_TRUE(one.anyInk(one.at(single).maxX() + 10, one.at(only).origin.x() + 3, underline));
    EXPECT_FALSE(one.inked(one.at(single).maxX() + 14, one.at(only).origin.y() + 5)) << "no brace";

    auto root = SermonNode::make(QStringLiteral("Main idea"), 0);
    auto leaf = root->addChild(QStringLiteral("This is for today"));
    auto branch = root->addChild(QStringLiteral("What he promised"));
    branch->addChild(QStringLiteral("Presence"));
    Picture mixed(root);
    mixed.draw();
    const double startX = mixed.at(root).maxX();
    const double childX = mixed.at(leaf).origin.x();
    EXPECT_TRUE(mixed.anyInk((startX + childX) * 0.5 + 8, childX + 3, mixed.at(leaf).maxY() - 2));
    EXPECT_TRUE(mixed.anyInk((startX + childX) * 0.5 + 8, childX - 1, mixed.at(branch).midY()));
    EXPECT_EQ(mixed.stats.connections, 2);
}

TEST(MapDrawing, FoldButtonSignIsMonospacedElevenMedium)
{
    struct Case {
        bool collapsed;
        QString sign;
    };
    for (const Case& c : {Case{true, QStringLiteral("+")}, Case{false, QString(QChar(0x2212))}}) {
        auto root = SermonNode::make(QStringLiteral("Main idea"), 0);
        root->addChild(QStringLiteral("Presence"));
        root->setCollapsed(c.collapsed);
        Picture p(root);
        p.draw();
        EXPECT_TRUE(p.cache.contains({c.sign, 11, double(QFont::Medium), false, true})) << c.collapsed;
        EXPECT_FALSE(p.cache.contains({c.sign, 11, double(QFont::Medium), false, false})) << c.collapsed;
        // The sign stands out darker than the button's light face, inside its ring.
        const NodeLayout& l = p.at(root);
        int darkest = 255;
        for (int dy = -3; dy <= 3; ++dy)
            for (int dx = -3; dx <= 3; ++dx)
                darkest = std::min(darkest, p.image.pixelColor(int(l.maxX()) + dx, int(l.midY()) + dy).red());
        EXPECT_LT(darkest, 200) << c.collapsed;
    }
}

TEST(MapDrawing, NodeUnderEditIsLeftOutButItsConnectionStays)
{
    auto root = SermonNode::make(QStringLiteral("Opening"), 0);
    auto only = root->addChild(QStringLiteral("Have you ever felt forgotten?"));
    Picture p(root);
    p.draw();
    EXPECT_EQ(p.stats.drawn, 2);
    const NodeLayout l = p.at(only);
    EXPECT_TRUE(p.anyInk(l.origin.x() + 16, l.maxX() - 16, l.midY()));

    p.state.editingNodeID = only->id();
    p.draw();
    EXPECT_EQ(p.stats.drawn, 1);
    EXPECT_FALSE(p.anyInk(l.origin.x() + 16, l.maxX() - 16, l.midY())) << "text";
    EXPECT_FALSE(p.anyInk(l.origin.x() + 8, l.maxX() - 8, l.maxY() - 2)) << "underline";
    EXPECT_TRUE(p.anyInk(p.at(root).maxX() + 10, l.origin.x() + 3, l.maxY() - 2)) << "connection";
}

TEST(MapDrawing, DeepChainDrawsWithoutRecursion)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    SermonNode* tip = root.get();
    for (int i = 0; i < 9000; ++i)
        tip = tip->addChild(QStringLiteral("level")).get();
    Picture p(root);
    p.draw();
    EXPECT_EQ(p.stats.connections, 9000);
    EXPECT_GE(p.stats.drawn, 1);
}

TEST(MapDrawing, CullsBeyondTheMarginOfFiftyPoints)
{
    ensureApplication();
    const QSizeF view(800, 600);
    struct Row {
        const char* where;
        double scale;
        QRectF frame; // canvas points
        int drawn;
    };
    const std::vector<Row> rows{
        {"49 right", 1.0, {849, 100, 100, 20}, 1},      {"51 right", 1.0, {851, 100, 100, 20}, 0},
        {"49 left", 1.0, {-149, 100, 100, 20}, 1},      {"51 left", 1.0, {-151, 100, 100, 20}, 0},
        {"49 below", 1.0, {100, 649, 100, 20}, 1},      {"51 below", 1.0, {100, 651, 100, 20}, 0},
        {"49 above", 1.0, {100, -69, 100, 20}, 1},      {"51 above", 1.0, {100, -71, 100, 20}, 0},
        {"49 right at 2", 2.0, {449, 100, 100, 20}, 1}, {"51 right at 2", 2.0, {451, 100, 100, 20}, 0},
    };
    for (const Row& row : rows) {
        MapLayoutState tables;
        const NodeID id = makeNodeID();
        tables.cachedLayouts.emplace(id, NodeLayout{id, row.frame.topLeft(), row.frame.size(), 2, true});
        MapDrawState state;
        state.scale = row.scale;
        TextBitmapCache cache;
        QImage image(view.toSize(), QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        const MapDrawStats stats =
            MapDrawing::drawCanvas(painter, view, tables, state, MapPalette::forAppearance(false), cache);
        EXPECT_EQ(stats.drawn, row.drawn) << row.where;
    }
}

TEST(MapDrawing, SearchHighlightCountsEmptyLines)
{
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    auto node = root->addChild(QStringLiteral("one") + QChar(0x2028) + QChar(0x2028) + QStringLiteral("target"));
    Picture p(root);
    p.state.isSearching = true;
    p.state.searchQuery = QStringLiteral("TARGET");
    p.state.searchMatches = {node->id()};
    p.state.searchMatchSet = {node->id()};
    p.draw();

    const NodeLayout& l = p.at(node);
    const double lineHeight = (l.size.height() - 6) / 3;
    auto orangeIn = [&](int line) {
        const int y0 = int(l.origin.y() + 3 + lineHeight * line + 2);
        for (int y = y0; y < int(y0 + lineHeight - 4); ++y)
            for (int x = int(l.origin.x() + 16); x < int(l.origin.x() + 40); ++x) {
                const QColor c = p.image.pixelColor(x, y);
                if (c.red() - c.blue() > 80 && c.green() > c.blue())
                    return true;
            }
        return false;
    };
    EXPECT_FALSE(orangeIn(0));
    EXPECT_FALSE(orangeIn(1));
    EXPECT_TRUE(orangeIn(2));
}

TEST(MapDrawing, MatchRangesAreCaseInsensitiveAndDisjoint)
{
    using Ranges = std::vector<std::pair<qsizetype, qsizetype>>;
    struct Row {
        QString text, query;
        Ranges ranges;
    };
    const std::vector<Row> rows{
        {QStringLiteral("Romans 8"), QStringLiteral("ROM"), {{0, 3}}},
        {QStringLiteral("aaaa"), QStringLiteral("aa"), {{0, 2}, {2, 4}}},
        {QStringLiteral("aaa"), QStringLiteral("aa"), {{0, 2}}},
        {QStringLiteral("grace upon Grace"), QStringLiteral("grace"), {{0, 5}, {11, 16}}},
        {QStringLiteral("grace"), QString(), {}},
        {QStringLiteral("grace"), QStringLiteral("mercy"), {}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(MapDrawing::matchRanges(row.text, row.query), row.ranges) << row.text.toStdString();
}

TEST(MapDrawing, MarkersKeepTheirColours)
{
    ensureApplication();
    for (const bool dark : {false, true}) {
        for (const MarkerColour& m : markerColours()) {
            const auto b = TextBitmapCache::render({m.marker, 14, double(QFont::Medium), false}, 1.0, dark);
            ASSERT_TRUE(b) << m.name;
            const QColor c = meanCoverColour(b->image, b->image.rect());
            EXPECT_TRUE(c.isValid() && m.matches(c))
                << m.name << (dark ? " dark: " : " light: ") << c.name().toStdString() << " h=" << c.hsvHue()
                << " s=" << c.hsvSaturation() << " v=" << c.value();
        }
    }
}

TEST(MapDrawing, TimeBadgeRoundsMinutesUp)
{
    struct Row {
        int words, wpm;
        const char* text;
    };
    for (const Row& row : {Row{1, 120, "1 min"}, Row{120, 120, "1 min"}, Row{121, 120, "2 min"}, Row{0, 120, ""},
                           Row{300, 100, "3 min"}, Row{130, 0, "2 min"}})
        EXPECT_EQ(MapDrawing::timeBadgeText(row.words, row.wpm), QString::fromUtf8(row.text))
            << row.words << " at " << row.wpm;
}

} // namespace
