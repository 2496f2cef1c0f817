#include "map/MapTestSupport.h"

#include "map/MindMapCanvas.h"
#include "map/NodeEditorOverlay.h"
#include "map/SearchBarOverlay.h"
#include "map/TreeLayout.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"
#include "editing/NodeCommands.h"

#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

SermonNodePtr sermon()
{
    auto root = SermonNode::make(QStringLiteral("The God Who Stays"), 0);
    auto opening = root->addChild(QStringLiteral("Opening"));
    opening->addChild(QStringLiteral("Have you ever felt forgotten?"));
    for (int i = 0; i < 40; ++i)
        root->addChild(QStringLiteral("Point %1").arg(i))->addChild(QStringLiteral("A line"));
    return root;
}

void wheel(QWidget& widget, QPointF at, QPoint angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWheelEvent event(at, widget.mapToGlobal(at), QPoint(), angle, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&widget, &event);
}

// Made before the widgets of the fixture.
struct WithApplication {
    WithApplication() { ensureApplication(); }
};

class MindMapCanvasTest : public ::testing::Test, private WithApplication {
protected:
    void SetUp() override { canvas.resize(800, 600); }
    SermonDocument document{sermon()};
    MindMapCanvas canvas{&document};
};

TEST_F(MindMapCanvasTest, AppearsWithItsNameLayoutAndZoomCommands)
{
    int delivered = 0;
    canvas.onZoomFunctionsReady = [&](const ZoomFunctions& zoom) {
        ++delivered;
        EXPECT_TRUE(zoom.zoomIn && zoom.zoomOut && zoom.reset);
    };
    canvas.show();
    canvas.hide();
    canvas.show();
    EXPECT_EQ(delivered, 1);
    EXPECT_EQ(canvas.accessibleName(), QStringLiteral("mindMapCanvas"));
    EXPECT_EQ(canvas.layoutState().cachedLayouts.size(), 83u);
    EXPECT_EQ(canvas.viewport().viewportSize(), QSizeF(800, 600));
}

TEST_F(MindMapCanvasTest, WheelPansAndCtrlWheelZoomsAboutThePointer)
{
    canvas.show();
    wheel(canvas, {400, 300}, {0, -120});
    EXPECT_EQ(canvas.viewport().panOffset(), QPointF(0, -60));
    wheel(canvas, {400, 300}, {0, -120}, Qt::ShiftModifier);
    EXPECT_EQ(canvas.viewport().panOffset(), QPointF(-60, -60));

    const QPointF pointer(200, 150);
    const QPointF under = canvas.canvasPoint(pointer);
    wheel(canvas, pointer, {0, 120}, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(canvas.viewport().scale(), 1.1);
    EXPECT_NEAR(canvas.canvasPoint(pointer).x(), under.x(), 1e-9);
    EXPECT_NEAR(canvas.canvasPoint(pointer).y(), under.y(), 1e-9);
}

TEST_F(MindMapCanvasTest, PaintsInTheThemeOfItsPalette)
{
    canvas.show();
    const NodeLayout& root = canvas.layoutState().cachedLayouts.at(document.root()->id());
    canvas.centerOn(root.frame().center());
    const QPointF edgePoint = QPointF(root.origin.x() + 20, root.origin.y()) + canvas.viewport().panOffset();
    for (bool dark : {false, true}) {
        QPalette palette = canvas.palette();
        palette.setColor(QPalette::Window, dark ? QColor(30, 30, 30) : QColor(240, 240, 240));
        canvas.setPalette(palette);
        const QImage image = canvas.grab().toImage();
        // The root's box outline is ink: dark brown on light, cream on dark.
        const QColor edge = image.pixelColor(edgePoint.toPoint());
        EXPECT_EQ(edge.lightnessF() > palette.color(QPalette::Window).lightnessF(), dark);
    }
}

TEST_F(MindMapCanvasTest, ReappearingBeginsAsAFreshMapButKeepsTheZoom)
{
    int delivered = 0;
    canvas.onZoomFunctionsReady = [&](const ZoomFunctions&) { ++delivered; };
    canvas.show();
    ASSERT_EQ(delivered, 1);
    DocumentController& c = *canvas.controller();
    const SermonNodePtr opening = document.root()->children().at(0);
    const SermonNodePtr point = document.root()->children().at(5);
    opening->setCollapsed(true);
    canvas.onTreeMutated();

    // Zoomed, panned, a multiple selection, a search that opened a folded branch, an open edit,
    // and a pan still gliding.
    canvas.viewport().setScale(1.5);
    wheel(canvas, {400, 300}, {0, -240});
    c.setExtendingSelection(true);
    c.setSelectedNodeIDs({point->id(), document.root()->children().at(6)->id()});
    c.setExtendingSelection(true);
    c.setSelectedNodeID(point->id());
    c.setSelectionAnchorID(point->id());
    canvas.openSearch();
    c.setSearchQuery(QStringLiteral("forgotten"));
    ASSERT_FALSE(opening->isCollapsed());
    c.startSession(point->id(), false);
    c.setEditingText(QStringLiteral("Point five, rewritten"));
    double now = 0;
    canvas.viewport().setClock([&] { return now; });
    canvas.viewport().animatePan(QPointF(-300, -400), 0.25);

    canvas.reappear();
    EXPECT_EQ(canvas.viewport().panOffset(), QPointF(0, 0));

    EXPECT_FALSE(c.editingNodeID());
    EXPECT_FALSE(canvas.editorOverlay()->isOpen());
    EXPECT_EQ(point->text(), QStringLiteral("Point five, rewritten"));
    EXPECT_FALSE(c.isSearching());
    EXPECT_FALSE(canvas.searchBar()->isVisible());
    EXPECT_TRUE(opening->isCollapsed());
    EXPECT_EQ(c.selectedNodeID(), document.root()->id());
    EXPECT_TRUE(c.selectedNodeIDs().isEmpty());
    EXPECT_FALSE(c.selectionAnchorID());
    EXPECT_DOUBLE_EQ(canvas.viewport().scale(), 1.5);
    EXPECT_EQ(delivered, 2);
    EXPECT_FALSE(canvas.layoutState().layout(opening->children().at(0)->id())); // folded again

    // From there it moves as a map shown for the first time at that zoom does.
    MindMapCanvas fresh{&document};
    fresh.resize(canvas.size());
    fresh.viewport().setScale(1.5);
    fresh.viewport().setClock([&] { return now; });
    fresh.show();
    now += 1;
    for (MindMapCanvas* map : {&canvas, &fresh})
        if (map->viewport().isAnimating())
            map->viewport().tick();
    EXPECT_EQ(canvas.viewport().panOffset(), fresh.viewport().panOffset());
    EXPECT_EQ(c.selectedNodeID(), fresh.controller()->selectedNodeID());
}

TEST_F(MindMapCanvasTest, ReadingPaceComesFromItsSource)
{
    EXPECT_EQ(canvas.readingPaceWPM(), 120);
    int pace = 140;
    canvas.setReadingPaceSource([&] { return pace; });
    EXPECT_EQ(canvas.readingPaceWPM(), 140);
    pace = -3;
    EXPECT_EQ(canvas.readingPaceWPM(), 120);
}

TEST_F(MindMapCanvasTest, NewRootIsLaidOutAfresh)
{
    document.setRoot(SermonNode::make(QStringLiteral("Another"), 0));
    EXPECT_EQ(canvas.layoutState().cachedLayouts.size(), 1u);
}

TEST_F(MindMapCanvasTest, EachChangeIsLaidOutOnceHoweverOftenItIsAnnounced)
{
    struct Row {
        const char* change;
        std::function<void()> apply;
        size_t nodesAfter;
    };
    const std::vector<Row> rows{
        {"the first appearance", [this] { canvas.show(); }, 83},
        {"a new line", [this] { canvas.performCommand(NodeCommand::newLineBelow); }, 84},
        {"an undo", [this] { document.undo(); }, 83},
        {"a redo", [this] { document.redo(); }, 84},
        {"a change told twice",
         [this] {
             document.root()->addChild(QStringLiteral("Closing"));
             canvas.onTreeMutated();
             canvas.onTreeMutated();
         },
         85},
    };
    canvas.controller()->setSelectedNodeID(document.root()->children()[1]->id());
    int before = 0; // a new map, not laid out yet
    for (const Row& row : rows) {
        row.apply();
        QCoreApplication::processEvents();
        canvas.grab();
        EXPECT_EQ(canvas.layoutState().cachedLayouts.size(), row.nodesAfter) << row.change;
        EXPECT_EQ(canvas.layoutPasses() - before, 1) << row.change;
        before = canvas.layoutPasses();
    }
}

// The map alone, without the minimap that a scroll shows over it.
QImage mapPixels(MindMapCanvas& map)
{
    QImage image(map.size(), QImage::Format_ARGB32_Premultiplied);
    map.render(&image, {}, {}, QWidget::DrawWindowBackground);
    return image;
}

TEST_F(MindMapCanvasTest, ALongSermonShowsAtOnceAndSettlesWithoutMovingWhatIsInSight)
{
    auto root = SermonNode::make(QStringLiteral("A Year of Sundays"), 0);
    for (int week = 0; week < 52; ++week) {
        auto sunday = root->addChild(QStringLiteral("Week %1").arg(week));
        for (int line = 0; line < 80; ++line)
            sunday->addChild(QStringLiteral("Line %1 of week %2, with a few words more").arg(line).arg(week));
    }
    SermonDocument year(root);
    MindMapCanvas map(&year);
    map.resize(800, 600);
    map.show();
    QCoreApplication::processEvents();
    const QImage first = mapPixels(map);
    ASSERT_TRUE(map.layoutState().hasEstimates);

    // A far line selected before the rest is measured: the view the glide comes to rest on is
    // measured from its first frame.
    const NodeID far = root->children()[40]->children()[3]->id();
    const QPointF pan = map.viewport().panOffset();
    map.controller()->setSelectedNodeID(far);
    ASSERT_TRUE(map.viewport().isAnimating());
    map.grab();
    EXPECT_FALSE(map.layoutState().layout(far)->estimated);
    map.viewport().stopAnimation();
    map.viewport().setPanOffset(pan);

    // The rest lands from the thread pool; the limit only keeps a broken build from hanging.
    ASSERT_TRUE(QTest::qWaitFor([&] { return !map.layoutState().hasEstimates; }, 60000));
    EXPECT_EQ(mapPixels(map), first);
    EXPECT_EQ(map.layoutState().cachedLayouts, TreeLayout::layout(*root));
}

} // namespace
