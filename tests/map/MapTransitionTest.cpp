// The glide of the map when the tree changes shape, stepped by a test clock.

#include "map/MapTestSupport.h"

#include "map/MapTransitionAnimator.h"
#include "map/MindMapCanvas.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"

#include <QTest>

#include <gtest/gtest.h>

namespace {

struct WithApplication {
    WithApplication() { ensureApplication(); }
};

NodeLayout at(const NodeID& id, QPointF origin)
{
    NodeLayout l;
    l.nodeID = id;
    l.origin = origin;
    l.size = {80, 20};
    return l;
}

TEST(MapTransitionAnimator, GlidesFadesAndEndsExactlyAtOne)
{
    ensureApplication();
    const NodeID stays = makeNodeID(), snaps = makeNodeID(), leaves = makeNodeID(), vanishes = makeNodeID(),
                 arrives = makeNodeID();
    const NodeLayouts before{{stays, at(stays, {0, 100})},
                             {snaps, at(snaps, {0, 200})},
                             {leaves, at(leaves, {0, 300})},
                             {vanishes, at(vanishes, {0, 400})}};
    const NodeLayouts after{
        {stays, at(stays, {0, 40})}, {snaps, at(snaps, {0.4, 199.6})}, {arrives, at(arrives, {0, 500})}};
    double now = 5;
    MapTransitionAnimator animator;
    animator.setClock([&] { return now; });
    ASSERT_TRUE(animator.animateTransition(before, {{leaves, QStringLiteral("Gone")}}, after, 0.3));

    // Under half a point the node snaps; without a text a departing node just vanishes.
    EXPECT_EQ(animator.nodeAnimOffsets().size(), 1u);
    EXPECT_EQ(animator.nodeAnimOffsets().at(stays), QPointF(0, 60));
    ASSERT_EQ(animator.fadeOutGhosts().size(), 1u);
    EXPECT_EQ(animator.fadeOutGhosts().at(leaves).text, QStringLiteral("Gone"));
    EXPECT_EQ(animator.fadeOutGhosts().at(leaves).layout.origin, QPointF(0, 300));
    EXPECT_EQ(animator.fadeInNodeIDs(), std::unordered_set<NodeID>{arrives});
    EXPECT_EQ(animator.animationProgress(), 0.0);

    now += 0.15; // half way in time: e = 1 - 0.5^3
    animator.tick();
    EXPECT_NEAR(animator.animationProgress(), 0.875, 1e-9);
    EXPECT_NEAR(animator.nodeAnimOffsets().at(stays).y(), 60 * 0.125, 1e-9);

    now += 0.2;
    animator.tick();
    EXPECT_EQ(animator.animationProgress(), 1.0);
    EXPECT_FALSE(animator.isRunning());
    EXPECT_TRUE(animator.nodeAnimOffsets().empty());
    EXPECT_TRUE(animator.fadeOutGhosts().empty());
    EXPECT_TRUE(animator.fadeInNodeIDs().empty());

    // Seen through a region, what neither stood nor stands in it takes its place at once.
    const NodeID below = makeNodeID();
    NodeLayouts regionBefore = before, regionAfter = after;
    regionBefore.emplace(below, at(below, {0, 2000}));
    regionAfter.emplace(below, at(below, {0, 2100}));
    ASSERT_TRUE(animator.animateTransition(regionBefore, {{leaves, QStringLiteral("Gone")}}, regionAfter, 0.3,
                                           QRectF(0, 0, 100, 350)));
    EXPECT_EQ(animator.nodeAnimOffsets().size(), 1u);
    EXPECT_EQ(animator.nodeAnimOffsets().count(stays), 1u);
    EXPECT_EQ(animator.fadeOutGhosts().size(), 1u);
    EXPECT_TRUE(animator.fadeInNodeIDs().empty()) << "arrives stands below the region";
}

TEST(MapTransitionAnimator, NothingToShowLeavesARunningTransitionAlone)
{
    ensureApplication();
    const NodeID a = makeNodeID();
    double now = 0;
    MapTransitionAnimator animator;
    animator.setClock([&] { return now; });
    ASSERT_TRUE(animator.animateTransition({{a, at(a, {0, 0})}}, {}, {{a, at(a, {0, 50})}}));
    now = 0.1;
    animator.tick();
    const double progress = animator.animationProgress();
    EXPECT_FALSE(animator.animateTransition({{a, at(a, {0, 50})}}, {}, {{a, at(a, {0.3, 50})}}));
    EXPECT_TRUE(animator.isRunning());
    EXPECT_EQ(animator.animationProgress(), progress);
}

class MapTransitionTest : public ::testing::Test, private WithApplication {
protected:
    void SetUp() override
    {
        auto point = document.root()->addChild(QStringLiteral("Point"));
        point->addChild(QStringLiteral("One"));
        point->addChild(QStringLiteral("Two"));
        document.root()->addChild(QStringLiteral("Next"));
        canvas.resize(900, 600);
        canvas.show();
        canvas.onTreeMutated();
        canvas.transitions().setClock([] { return 0.0; });
    }
    NodeID id(int i) { return document.root()->children().at(size_t(i))->id(); }
    const MapTransitionAnimator& transitions() { return canvas.transitions(); }

    SermonDocument document{SermonNode::make(QStringLiteral("Title"), 0)};
    MindMapCanvas canvas{&document};
};

TEST_F(MapTransitionTest, UndoOfADeletionFadesTheLineBackAndRedoLeavesAGhost)
{
    canvas.controller()->setSelectedNodeID(id(1));
    canvas.performCommand(NodeCommand::deleteSelection);
    const NodeID gone = document.undoStack().back().root->children().at(1)->id();
    EXPECT_EQ(transitions().fadeOutGhosts().count(gone), 1u);

    QTest::keyClick(&canvas, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(transitions().fadeInNodeIDs(), std::unordered_set<NodeID>{gone});
    EXPECT_EQ(canvas.controller()->selectedNodeID(), gone);

    QTest::keyClick(&canvas, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(transitions().fadeOutGhosts().count(gone), 1u);
    EXPECT_EQ(transitions().fadeOutGhosts().at(gone).text, QStringLiteral("Next"));
}

TEST_F(MapTransitionTest, FoldingFadesTheChildrenOutAndUnfoldingFadesThemIn)
{
    canvas.controller()->setSelectedNodeID(id(0));
    QTest::keyClick(&canvas, Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(transitions().fadeOutGhosts().size(), 2u);
    EXPECT_EQ(transitions().nodeAnimOffsets().count(id(1)), 1u); // "Next" glides up
    QTest::keyClick(&canvas, Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(transitions().fadeInNodeIDs().size(), 2u);
    EXPECT_TRUE(transitions().fadeOutGhosts().empty());
    // Undo folds again: the lines it hides are still in the tree, and fade with their texts.
    QTest::keyClick(&canvas, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(transitions().fadeOutGhosts().size(), 2u);
}

TEST_F(MapTransitionTest, ATextCommitThatGrowsANodeStartsNoTransition)
{
    canvas.controller()->startSession(id(0), false);
    canvas.controller()->setEditingText(QStringLiteral("Point\u2028with a second line"));
    canvas.commitEditing();
    EXPECT_FALSE(transitions().isRunning());
}

TEST_F(MapTransitionTest, EmptyingAnExistingLineLetsTheOthersGlideUp)
{
    canvas.controller()->startSession(id(0), false);
    canvas.controller()->setEditingText(QString());
    canvas.commitEditing();
    EXPECT_EQ(document.root()->children().size(), 1u);
    EXPECT_TRUE(transitions().isRunning());
    EXPECT_TRUE(transitions().fadeOutGhosts().empty()); // no texts given: it vanishes
    EXPECT_EQ(transitions().nodeAnimOffsets().count(document.root()->children()[0]->id()), 1u);
}

} // namespace
