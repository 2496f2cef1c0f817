#include "columns/CollapseResolver.h"
#include "columns/ColumnAnimator.h"
#include "columns/ColumnFrameIndex.h"
#include "columns/ColumnStickyState.h"
#include "columns/ScrollAnimator.h"
#include "look/Look.h"
#include "map/MapTestSupport.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using CollapseResolver::AdjustedColumn;

ColumnNodeFrame frame(int column, double y, double height, double bottom)
{
    return ColumnNodeFrame{makeNodeID(), column, QPointF(column * 600.0, y), QSizeF(600, height),
                           ColumnYRange{y, bottom}};
}

TEST(ColumnStickyStateTest, PinsOnlyBranchesThatReachPastTheTop)
{
    const ColumnNodeFrame parent = frame(1, 0, 28, 280); // tall branch
    const ColumnNodeFrame leaf = frame(1, 280, 84, 364); // no subtree below its own text
    const ColumnNodeFrame child = frame(2, 28, 28, 200);
    const ColumnNodeFrame root = frame(0, 0, 28, 364);
    ColumnFrames frames;
    for (const auto& f : {parent, leaf, child, root})
        frames.emplace(f.nodeID, f);

    struct Case {
        double viewportTop;
        std::map<int, NodeID> pinned;
    };
    const Case cases[] = {
        {0, {}}, // top exactly on the origin: strict
        {28, {{0, root.nodeID}, {1, parent.nodeID}}}, // child's origin is the top: not pinned
        {100, {{0, root.nodeID}, {1, parent.nodeID}, {2, child.nodeID}}}, // a whole path pinned
        {280, {{0, root.nodeID}}}, // exactly on the parent's bottom; the leaf is never pinned
        {300, {{0, root.nodeID}}},
        {364, {}},
    };
    ColumnFrameIndex index;
    index.rebuild(frames, 3);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.viewportTop);
        const auto sticky = ColumnStickyState::compute(frames, c.viewportTop);
        EXPECT_EQ(ColumnStickyState::compute(frames, index, c.viewportTop), sticky) << "by the index alike";
        std::map<int, NodeID> pinned;
        for (const auto& [column, state] : sticky) {
            pinned[column] = state.nodeID;
            EXPECT_EQ(state.pinnedTextY, c.viewportTop);
            EXPECT_EQ(state.subtreeBottomY, frames.at(state.nodeID).subtreeYRange.upper);
        }
        EXPECT_EQ(pinned, c.pinned);
    }
}

TEST(ColumnFrameIndexTest, VisitsEveryFrameThatMeetsASpanOfRows)
{
    // Column 1 mid-glide: two branches trading places overlap, out of order.
    const ColumnNodeFrame a = frame(1, 0, 28, 56);
    const ColumnNodeFrame tall = frame(1, 56, 28, 400);
    const ColumnNodeFrame b = frame(1, 300, 28, 336);
    const ColumnNodeFrame c = frame(1, 336, 28, 364);
    const ColumnNodeFrame gone = frame(3, 0, 28, 28); // a column that has gone away
    ColumnFrames frames;
    for (const auto& f : {a, tall, b, c, gone})
        frames.emplace(f.nodeID, f);

    struct Case {
        double top;
        double bottom;
    };
    const Case cases[] = {{0, 0}, {56, 56}, {100, 200}, {350, 350}, {399, 1000}, {401, 1000}, {-50, -1}};
    ColumnFrameIndex index;
    index.rebuild(frames, 3);
    for (int pass = 0; pass < 2; ++pass) {
        for (const Case& r : cases) {
            SCOPED_TRACE(testing::Message() << "pass " << pass << " rows " << r.top << " to " << r.bottom);
            std::set<NodeID> expected;
            for (const auto& [id, f] : frames)
                if (f.column == 1 && f.subtreeYRange.lower <= r.bottom && f.subtreeYRange.upper >= r.top)
                    expected.insert(id);
            std::set<NodeID> visited;
            double lastTop = -1e9;
            index.forEachNear(1, r.top, r.bottom, [&](const ColumnNodeFrame& f) {
                EXPECT_GE(f.subtreeYRange.lower, lastTop) << "top to bottom";
                lastTop = f.subtreeYRange.lower;
                visited.insert(f.nodeID);
            });
            EXPECT_EQ(visited, expected);
        }
        // The glide moves the tall branch below the others, in place.
        ColumnNodeFrame& moved = frames.at(tall.nodeID);
        moved.origin.ry() = 500;
        moved.subtreeYRange = {500, 560};
        index.refresh();
    }
    int outside = 0;
    index.forEachNear(3, -1e9, 1e9, [&](const ColumnNodeFrame&) { ++outside; });
    EXPECT_EQ(outside, 0) << "a column past the count is left out";
}

TEST(CollapseResolverTest, ColumnsNarrowThenStandAsStrips)
{
    const std::vector<double> two{0, 600, 1200};
    const std::vector<double> three{0, 600, 1200, 1800};
    struct Case {
        double scrollX;
        const std::vector<double>* edges;
        std::vector<AdjustedColumn> expected;
    };
    const Case cases[] = {
        {0, &two, {{0, 0, 600, false}, {1, 600, 600, false}}},
        {-50, &two, {{0, 0, 600, false}, {1, 600, 600, false}}},
        {100, &two, {{0, 0, 500, false}, {1, 500, 600, false}}},
        {556, &two, {{0, 0, 44, true}, {1, 44, 600, false}}},
        {700, &three, {{0, 0, 44, true}, {1, 44, 500, false}, {2, 544, 600, false}}},
        {1790, &three, {{0, 0, 44, true}, {1, 44, 44, true}, {2, 88, 44, true}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.scrollX);
        const int count = int(c.edges->size()) - 1;
        EXPECT_EQ(CollapseResolver::adjustedColumns(count, *c.edges, c.scrollX), c.expected);
        const auto states = CollapseResolver::collapseStates(count, *c.edges, c.scrollX);
        EXPECT_EQ(states.empty(), c.scrollX <= 0);
        for (const auto& [column, state] : states)
            EXPECT_EQ(state.isRotated, state.visibleWidth <= CollapseResolver::rotatedColumnWidth);
    }
    EXPECT_TRUE(CollapseResolver::adjustedColumns(0, {}, 100).empty());
}

TEST(ColumnAnimatorTest, GlidesFromWhatIsDrawnAndLandsOnTheTarget)
{
    ensureApplication();
    double now = 10;
    ColumnAnimator animator;
    animator.setClock([&] { return now; });
    const ColumnNodeFrame a = frame(1, 0, 28, 28);
    ColumnNodeFrame moved = a;
    moved.origin.ry() = 280;
    moved.subtreeYRange = {280, 308};
    const ColumnNodeFrame fresh = frame(2, 0, 28, 28);

    animator.animate({{a.nodeID, a}}); // the first layout takes effect at once
    EXPECT_FALSE(animator.isRunning());
    EXPECT_EQ(animator.displayFrames().at(a.nodeID), a);

    animator.animate({{a.nodeID, moved}, {fresh.nodeID, fresh}});
    EXPECT_TRUE(animator.isRunning());
    now += 0.1;
    animator.tick();
    const ColumnNodeFrame& half = animator.displayFrames().at(a.nodeID);
    EXPECT_NEAR(half.origin.y(), 280 * Look::easeOutCubic(0.5), 1e-6);
    EXPECT_LT(half.subtreeYRange.lower, half.subtreeYRange.upper);
    EXPECT_EQ(animator.displayFrames().at(fresh.nodeID), fresh); // new cells don't glide

    const ColumnNodeFrame between = half;
    animator.animate({{a.nodeID, a}, {fresh.nodeID, fresh}}); // back, from where it is drawn
    animator.tick();
    EXPECT_EQ(animator.displayFrames().at(a.nodeID), between);
    animator.animate({{a.nodeID, moved}, {fresh.nodeID, fresh}});

    now += 5; // a late tick lands exactly on the target
    animator.tick();
    EXPECT_EQ(animator.displayFrames().at(a.nodeID), moved);
    EXPECT_FALSE(animator.isRunning());

    animator.animate({}); // cells that left are gone at the first tick
    animator.tick();
    EXPECT_TRUE(animator.displayFrames().empty());
    animator.stop({{a.nodeID, a}});
    EXPECT_FALSE(animator.isRunning());
    EXPECT_EQ(animator.displayFrames().size(), 1u);
}

TEST(ScrollAnimatorTest, GlidesToTheTargetAndOverwritesUserScrolls)
{
    ensureApplication();
    double now = 0;
    ScrollAnimator animator;
    animator.setClock([&] { return now; });
    QPointF pan;
    animator.animate(QPointF(0, 0), QPointF(-100, -200), [&](QPointF p) { pan = p; });
    now = 0.1;
    animator.tick();
    EXPECT_NEAR(pan.y(), -200 * Look::easeOutCubic(0.5), 1e-6);
    pan = QPointF(5, 5); // the user scrolls meanwhile
    now = 1;
    animator.tick();
    EXPECT_EQ(pan, QPointF(-100, -200));
    EXPECT_FALSE(animator.isRunning());
}

} // namespace
