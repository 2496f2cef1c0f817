#include "map/MapTestSupport.h"

#include "map/MapDrawing.h"
#include "map/MapLayoutState.h"
#include "map/MapPalette.h"
#include "map/TextBitmapCache.h"
#include "map/TreeLayout.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

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

    // Whether anything was painted in a pixel or the one above it (a line on a whole coordinate
    // takes the pixel row below it).
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

TEST(MapDrawing, FoldButtonsLieOverTheSelectionRing)
{
    auto root = SermonNode::make(QStringLiteral("Main idea"), 0);
    root->addChild(QStringLiteral("Presence"));
    Picture p(root);
    p.state.selectedNodeID = root->id();
    p.draw();
    // The ring runs 2 outside the frame, through the button's face below its sign.
    const NodeLayout& l = p.at(root);
    const QColor face = p.image.pixelColor(int(l.maxX() + 2), int(l.midY() + 4));
    const QColor accent = MapPalette::forAppearance(false).accent;
    EXPECT_GT(std::abs(face.blue() - accent.blue()) + std::abs(face.red() - accent.red()), 100)
        << face.name().toStdString();
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
    // The branches beyond the view's right edge are passed over, not walked.
    EXPECT_GE(p.stats.connections, 1);
    EXPECT_LT(p.stats.connections, 100);
    EXPECT_GE(p.stats.drawn, 1);
}

TEST(MapDrawing, PassingOverBranchesOutOfViewChangesNoPixel)
{
    // A few hundred lines under a title with many points, seen from several places and zooms,
    // and mid-glide: a frame that skips the branches out of view paints what one that walks
    // every node does.
    auto root = SermonNode::make(QStringLiteral("Root"), 0);
    std::vector<SermonNodePtr> nodes{root};
    std::mt19937 random(11);
    for (int i = 0; i < 400; ++i) {
        auto parent = i < 60 ? root : nodes[std::uniform_int_distribution<size_t>(0, nodes.size() - 1)(random)];
        nodes.push_back(parent->addChild(QStringLiteral("Line %1 of the map").arg(i)));
    }
    nodes[5]->setCollapsed(true);
    Picture skipping(root);
    Picture walking(root);
    for (auto& [id, l] : walking.tables.cachedLayouts)
        l.branchTop = -INFINITY, l.branchBottom = l.branchRight = INFINITY;
    // Gliding in from far below the view: a quarter of the way, the line stands level with the
    // title's middle, where two rows look.
    const double rootMid = skipping.at(root).midY();
    auto glide = std::make_shared<MapGlide>();
    for (const auto& [id, l] : skipping.tables.cachedLayouts) {
        if (l.isLeaf && l.origin.y() > rootMid + 1500 && glide->initialOffsets.empty()) {
            const double d = (rootMid - l.origin.y()) / 0.75;
            glide->initialOffsets.emplace(id, QPointF(0, d));
            glide->largestOffset = std::abs(d);
        }
    }
    ASSERT_FALSE(glide->initialOffsets.empty());
    struct Row {
        double scale;
        QPointF pan;
        bool gliding;
    };
    const std::vector<Row> rows{{1.0, {0, 250 - rootMid}, false},
                                {1.0, {0, 250 - rootMid}, true},
                                {1.0, {-100, 100 - rootMid}, false},
                                {1.0, {0, 0}, false},
                                {1.0, {-300, -2000}, false},
                                {0.5, {0, -1500}, false},
                                {2.0, {-600, -900}, false},
                                {0.2, {0, 0}, false},
                                {1.0, {-200, -1200}, true},
                                {1.0, {0, -3000}, true},
                                // The title out of view below, then above, its points' lines across.
                                {1.0, {0, 1200 - rootMid}, false},
                                {1.0, {0, -700 - rootMid}, false}};
    for (const Row& row : rows) {
        for (Picture* p : {&skipping, &walking}) {
            p->state.scale = row.scale;
            p->state.panOffset = row.pan;
            p->state.glide = row.gliding ? glide : nullptr;
            p->state.animationProgress = row.gliding ? 0.25 : 1.0;
            p->draw();
        }
        EXPECT_EQ(skipping.image, walking.image) << row.scale << " " << row.pan.y();
        EXPECT_GT(skipping.stats.drawn, 0) << row.scale << " " << row.pan.y();
    }
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
        tables.root = SermonNode::make(QStringLiteral("Line"), 2);
        const NodeID id = tables.root->id();
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

TEST(MapDrawing, SearchHighlightStartsAtTheMatchedLetters)
{
    // The marks are the controller's, drawn where the matched letters stand in the face the
    // line is drawn in: on the right line, behind a letter that lower-cases to two, in italics.
    struct Row {
        const char* what;
        QString text, query;
        bool isQuote;
        int line;
        QString prefix; // the line's letters before the match
    };
    const QChar br(0x2028);
    const std::vector<Row> rows{
        {"empty line counted", QStringLiteral("one") + br + br + QStringLiteral("target"), QStringLiteral("TARGET"),
         false, 2, QString()},
        {"dotted capital", QStringLiteral("\u0130stanbul"), QStringLiteral("stan"), false, 0, QStringLiteral("\u0130")},
        {"italic quote", QStringLiteral("Whatever you did for one of the least of these"), QStringLiteral("least"),
         true, 0, QStringLiteral("Whatever you did for one of the ")},
    };
    for (const Row& row : rows) {
        auto root = SermonNode::make(QStringLiteral("Root"), 0);
        auto node = root->addChild(row.text);
        node->setQuote(row.isQuote);
        SermonDocument document(root, {});
        DocumentController controller(&document, nullptr);
        controller.beginSearch();
        controller.setSearchQuery(row.query);
        Picture p(root);
        p.state.isSearching = true;
        p.state.searchHighlight = [&](const SermonNode& n) { return controller.highlight(n); };
        p.draw();

        const NodeLayout& l = p.at(node);
        const QFont font = TreeLayout::mapFont(TreeLayout::nodeFontSize(1), TreeLayout::nodeFontWeight(1), row.isQuote);
        const double lineHeight = TreeLayout::lineHeight(QFontMetricsF(TreeLayout::nodeFont(1)));
        const double expected = l.origin.x() + 16 + std::ceil(QFontMetricsF(font).horizontalAdvance(row.prefix)) - 1;
        const int y = int(l.origin.y() + 3 + lineHeight * row.line + lineHeight * 0.5);
        int first = -1;
        for (int x = int(l.origin.x()) + 4; x < int(l.maxX()) && first < 0; ++x) { // past a quote's bar
            const QColor c = p.image.pixelColor(x, y);
            if (c.red() - c.blue() > 60 && c.green() > c.blue() + 20)
                first = x;
        }
        EXPECT_NEAR(first, expected, 1.0) << row.what;
    }
}

TEST(MapDrawing, ThinStrokesCoverWholeDevicePixels)
{
    // A line of one point is one device pixel at 100%, two on a double-density screen, and
    // whole pixels at any zoom: never two rows at half strength.
    struct Row {
        double scale, ratio;
    };
    auto root = SermonNode::make(QStringLiteral("Main idea"), 0);
    auto branch = root->addChild(QStringLiteral("What he promised"));
    auto leaf = branch->addChild(QStringLiteral("Presence"));
    for (const char* text : {"Provision", "Peace"})
        branch->addChild(QString::fromLatin1(text));
    root->addChild(QStringLiteral("Why it holds"))->addChild(QStringLiteral("Faithfulness"));
    for (const Row& row : {Row{1.0, 1}, Row{1.0, 2}, Row{1.5, 1}, Row{2.0, 1}, Row{0.8, 1}, Row{1.2, 2}}) {
        Picture p(root);
        p.state.scale = row.scale;
        p.state.panOffset = QPointF(0.3, 0.3); // off the grid on purpose
        p.image = QImage((QSizeF(900, 500) * row.ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
        p.image.setDevicePixelRatio(row.ratio);
        p.draw();
        const double k = row.scale * row.ratio;
        const int expected = std::max(1, int(std::lround(k)));
        auto device = [&](QPointF canvas) { return (canvas * row.scale + p.state.panOffset) * row.ratio; };
        // Device pixels on a short run across a stroke, from `at` along `step`, darker than a
        // level that a stroke at half strength still passes, and a fill behind it doesn't.
        auto across = [&](QPointF at, QPoint step, int level) {
            int count = 0;
            for (int i = -4; i <= 4; ++i)
                count += p.image.pixelColor(at.toPoint() + step * i).red() < level;
            return count;
        };
        const NodeLayout& u = p.at(leaf);
        const QPointF underline = device(QPointF(u.origin.x() + 30, u.maxY() - 2));
        EXPECT_EQ(across(underline, QPoint(0, 1), 250), expected) << "underline at " << row.scale << " x" << row.ratio;
        const NodeLayout& r = p.at(root);
        const QPointF top = device(QPointF(r.origin.x() + 40, r.origin.y()));
        // The title's outline is two points wide.
        EXPECT_EQ(across(top, QPoint(0, 1), 235), std::max(1, int(std::lround(2 * k))))
            << "outline at " << row.scale << " x" << row.ratio;
        const NodeLayout& b = p.at(branch);
        const QPointF trunk = device(QPointF((r.maxX() + b.origin.x()) * 0.5, (r.midY() + b.midY()) * 0.5));
        EXPECT_EQ(across(trunk, QPoint(1, 0), 250), expected) << "connector at " << row.scale << " x" << row.ratio;
    }
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
