#include "map/MapViewport.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

// A viewport whose animations are stepped by hand.
struct SteppedViewport {
    MapViewport viewport;
    double now = 0;
    int minimapShown = 0;

    SteppedViewport(QSizeF size, QRectF bounds)
    {
        viewport.setClock([this] { return now; });
        viewport.onShowMinimap = [this] { ++minimapShown; };
        viewport.setViewportSize(size);
        viewport.setContentBounds(bounds);
    }
    void finish()
    {
        now += 1.0;
        viewport.tick();
    }
};

TEST(MapViewport, ZoomCommandsStepThroughTheStops)
{
    struct Row {
        double scale;
        std::optional<double> in, out;
    };
    const std::vector<Row> rows{
        {1.1, 1.2, 1.0},
        {1.0005, 1.2, 0.8},
        {1.0, 1.2, 0.8},
        {3.0, std::nullopt, 2.0},
        {0.1, 0.2, std::nullopt},
        {0.15, 0.2, 0.1},
        {2.9995, std::nullopt, 2.0},
        {0.05, 0.1, std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(MapViewport::nextZoomStop(row.scale), row.in) << row.scale;
        EXPECT_EQ(MapViewport::previousZoomStop(row.scale), row.out) << row.scale;
    }
}

TEST(MapViewport, ZoomAnimatesToTheStopAboutTheViewsMiddle)
{
    SteppedViewport v({800, 600}, {40, 40, 2000, 2000});
    v.viewport.setScale(1.1);
    v.viewport.setPanOffset({-100, -50});
    const QPointF middle(400, 300);
    const QPointF fixed = v.viewport.canvasPoint(middle);
    v.viewport.zoomIn();
    EXPECT_TRUE(v.viewport.isAnimating());
    v.now = 0.1;
    v.viewport.tick();
    EXPECT_GT(v.viewport.scale(), 1.1);
    EXPECT_LT(v.viewport.scale(), 1.2);
    v.finish();
    EXPECT_FALSE(v.viewport.isAnimating());
    EXPECT_DOUBLE_EQ(v.viewport.scale(), 1.2);
    EXPECT_NEAR(v.viewport.canvasPoint(middle).x(), fixed.x(), 1e-9);
    EXPECT_NEAR(v.viewport.canvasPoint(middle).y(), fixed.y(), 1e-9);

    v.viewport.setScale(3.0);
    v.viewport.zoomIn();
    EXPECT_FALSE(v.viewport.isAnimating());
    v.viewport.setScale(0.1);
    v.viewport.zoomOut();
    EXPECT_FALSE(v.viewport.isAnimating());
}

TEST(MapViewport, ClampKeepsACornerOfTheTreeInView)
{
    const QSizeF view(800, 600);
    const QRectF bounds(40, 40, 1000, 500);
    struct Row {
        QPointF offset;
        double scale;
        QPointF expected;
    };
    const std::vector<Row> rows{
        {{0, 0}, 1.0, {0, 0}},
        {{5000, 5000}, 1.0, {800 - 40, 600 - 40}}, // the tree's top left touches the bottom right
        {{-5000, -5000}, 1.0, {-1040, -540}}, // its bottom right touches the top left
        {{5000, -5000}, 2.0, {800 - 80, -1080}},
        {{-100, 30}, 0.5, {-100, 30}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(MapViewport::clampedPan(row.offset, view, bounds, row.scale), row.expected);

    // No view or no tree: no clamp.
    EXPECT_EQ(MapViewport::clampedPan({9999, 9999}, {0, 600}, bounds, 1.0), QPointF(9999, 9999));
    EXPECT_EQ(MapViewport::clampedPan({9999, 9999}, view, QRectF(40, 40, 0, 300), 1.0), QPointF(9999, 9999));
}

TEST(MapViewport, ScrollAtTheLimitStaysAndStillShowsTheMinimap)
{
    SteppedViewport v({800, 600}, {40, 40, 1000, 500});
    v.viewport.onScroll(3, -7);
    EXPECT_EQ(v.viewport.panOffset(), QPointF(3, -7));
    v.viewport.setPanOffset({760, 560});
    v.viewport.onScroll(25, 40);
    EXPECT_EQ(v.viewport.panOffset(), QPointF(760, 560));
    EXPECT_EQ(v.minimapShown, 2);
}

TEST(MapViewport, PinchKeepsThePointUnderTheFingers)
{
    SteppedViewport v({800, 600}, {40, 40, 3000, 3000});
    v.viewport.setPanOffset({-200, -100});
    const QPointF anchor(300, 250);
    const QPointF under = v.viewport.canvasPoint(anchor);
    v.viewport.onMagnify(0.25, anchor);
    EXPECT_DOUBLE_EQ(v.viewport.scale(), 1.25);
    EXPECT_NEAR(v.viewport.canvasPoint(anchor).x(), under.x(), 1e-9);
    EXPECT_NEAR(v.viewport.canvasPoint(anchor).y(), under.y(), 1e-9);
    // Pinches stop at the ends of the range, between stops wherever they like.
    v.viewport.onMagnify(5.0, anchor);
    EXPECT_DOUBLE_EQ(v.viewport.scale(), 3.0);
    v.viewport.onMagnify(-0.99, anchor);
    EXPECT_DOUBLE_EQ(v.viewport.scale(), 0.1);
}

TEST(MapViewport, ResetReturnsToScaleOneAndTheOrigin)
{
    SteppedViewport v({800, 600}, {40, 40, 3000, 3000});
    v.viewport.setScale(2.0);
    v.viewport.setPanOffset({-500, -300});
    v.viewport.reset();
    v.finish();
    EXPECT_DOUBLE_EQ(v.viewport.scale(), 1.0);
    EXPECT_EQ(v.viewport.panOffset(), QPointF(0, 0));
}

TEST(MapViewport, RevealBringsANodeBackAtTheSideItLeft)
{
    struct Row {
        const char* name;
        QRectF frame;
        std::optional<QPointF> target; // none: no motion at all
        QRectF topCover = {}; // the find bar
        bool keepColumn = false; // after a click
    };
    // View 800 × 600 at scale 1, pan (0, 0).
    const std::vector<Row> rows{
        {"in view", {100, 100, 200, 30}, std::nullopt},
        {"left of the margin", {5, 100, 200, 30}, QPointF(5, 0)},
        {"past the right edge", {700, 100, 200, 30}, QPointF(-690, 0)},
        {"above", {100, -100, 200, 30}, QPointF(0, 150 - (-100 + 15))},
        {"below", {100, 595, 200, 30}, QPointF(0, 450 - (595 + 15))},
        {"under the bar", {100, 40, 200, 30}, QPointF(0, 50 + 550 * 0.25 - (40 + 15)), {250, 0, 300, 50}},
        {"just below the bar", {100, 61, 200, 30}, std::nullopt, {250, 0, 300, 50}},
        {"beside the bar", {100, 40, 200, 30}, std::nullopt, {350, 0, 300, 50}},
        {"clicked past the right edge", {700, 100, 200, 30}, std::nullopt, {}, true},
        {"clicked past the right edge and the bottom", {700, 595, 200, 30}, QPointF(0, 450 - (595 + 15)), {}, true},
        {"clicked but wholly left of the view", {-300, 100, 200, 30}, QPointF(310, 0), {}, true},
    };
    for (const Row& row : rows) {
        SteppedViewport v({800, 600}, {-1000, -1000, 5000, 5000});
        NodeLayout layout;
        layout.origin = row.frame.topLeft();
        layout.size = row.frame.size();
        v.viewport.setTopCover(row.topCover);
        v.viewport.reveal(layout, row.keepColumn);
        EXPECT_EQ(v.viewport.isAnimating(), row.target.has_value()) << row.name;
        v.finish();
        EXPECT_EQ(v.viewport.panOffset(), row.target.value_or(QPointF(0, 0))) << row.name;
    }
}

TEST(MapViewport, RevealOfANodeWiderThanTheViewSettlesAtTheLeftMargin)
{
    SteppedViewport v({800, 600}, {-1000, -1000, 5000, 5000});
    NodeLayout wide;
    wide.origin = {300, 100};
    wide.size = {1200, 30};
    v.viewport.reveal(wide);
    v.finish();
    EXPECT_EQ(v.viewport.panOffset(), QPointF(-290, 0));
    v.viewport.reveal(wide);
    EXPECT_FALSE(v.viewport.isAnimating());

    v.viewport.setViewportSize({0, 0});
    v.viewport.reveal(NodeLayout{{}, {-5000, -5000}, {10, 10}});
    EXPECT_FALSE(v.viewport.isAnimating());
}

TEST(MapViewport, CenterOnPutsACanvasPointInTheMiddle)
{
    SteppedViewport v({800, 600}, {0, 0, 5000, 5000});
    v.viewport.setScale(2.0);
    v.viewport.centerOn({1000, 700});
    EXPECT_EQ(v.viewport.panOffset(), QPointF(400 - 2000, 300 - 1400));
    EXPECT_EQ(v.minimapShown, 1);
}

} // namespace
