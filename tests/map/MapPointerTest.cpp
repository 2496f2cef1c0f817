// Clicks, double clicks, fold buttons, multiple selection, the lasso and dragging nodes on the map.

#include "map/MapTestSupport.h"

#include "map/MapPointerInteraction.h"
#include "map/MindMapCanvas.h"
#include "map/NodeEditorOverlay.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"

#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>

namespace {

struct WithApplication {
    WithApplication() { ensureApplication(); }
};

// Title
//   Opening: Question, Story
//   Middle: One, Two, Three
//   Quote (a quote leaf)
SermonNodePtr sermon()
{
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    auto opening = root->addChild(QStringLiteral("Opening"));
    opening->addChild(QStringLiteral("Question"));
    opening->addChild(QStringLiteral("Story"));
    auto middle = root->addChild(QStringLiteral("Middle"));
    for (const char* t : {"One", "Two", "Three"})
        middle->addChild(QString::fromLatin1(t));
    root->addChild(QStringLiteral("Quote"))->setQuote(true);
    return root;
}

class MapPointerTest : public ::testing::Test, private WithApplication {
protected:
    void SetUp() override
    {
        canvas.resize(1000, 700);
        canvas.show();
        canvas.pointer().setClock([this] { return now; });
        canvas.transitions().setClock([this] { return now; });
    }

    DocumentController& controller() { return *canvas.controller(); }
    SermonNodePtr node(const QString& text)
    {
        for (const auto& n : document.root()->flattened())
            if (n->text() == text)
                return n;
        return nullptr;
    }
    NodeID id(const QString& text) { return node(text)->id(); }
    const NodeLayout& layout(const QString& text) { return *canvas.layoutState().layout(id(text)); }
    QPointF toView(QPointF canvasPoint)
    {
        return canvasPoint * canvas.viewport().scale() + canvas.viewport().panOffset();
    }
    QPointF centre(const QString& text) { return toView(layout(text).frame().center()); }

    void send(QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons held, Qt::KeyboardModifiers mods)
    {
        QMouseEvent event(type, at, canvas.mapToGlobal(at), button, held, mods);
        QCoreApplication::sendEvent(&canvas, &event);
    }
    void click(QPointF at, Qt::KeyboardModifiers mods = Qt::NoModifier)
    {
        send(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, mods);
        send(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton, mods);
    }
    void drag(QPointF from, QPointF to, Qt::KeyboardModifiers mods = Qt::NoModifier)
    {
        send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton, mods);
        send(QEvent::MouseMove, (from + to) / 2, Qt::NoButton, Qt::LeftButton, mods);
        send(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, mods);
        send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton, mods);
    }
    QStringList children(const QString& text)
    {
        QStringList out;
        for (const auto& c : node(text)->children())
            out << c->text();
        return out;
    }
    QSet<NodeID> ids(std::initializer_list<const char*> texts)
    {
        QSet<NodeID> out;
        for (const char* t : texts)
            out.insert(id(QString::fromLatin1(t)));
        return out;
    }

    double now = 100;
    SermonDocument document{sermon()};
    MindMapCanvas canvas{&document};
};

TEST_F(MapPointerTest, TwoClicksOpenTheEditorOnlyWithinTheInterval)
{
    struct Case {
        double gap;
        bool opens;
    };
    const QPointF empty = toView(QPointF(layout("Title").origin.x(), layout("Title").maxY() + 150));
    for (const Case c : {Case{0.2, true}, Case{0.34, true}, Case{0.35, false}, Case{0.6, false}}) {
        controller().commit(true);
        now = -10;
        click(empty);
        now = 0;
        click(centre("Two"));
        now = c.gap;
        click(centre("Two"));
        EXPECT_EQ(controller().editingNodeID().has_value(), c.opens) << "gap " << c.gap;
        EXPECT_EQ(canvas.editorOverlay()->isOpen(), c.opens) << "gap " << c.gap;
        EXPECT_EQ(controller().selectedNodeID(), id("Two"));
    }
}

TEST_F(MapPointerTest, AClickMovesNoNodeFromUnderThePointerBeforeADoubleClickCould)
{
    // A long line cut off at the right edge and at the bottom.
    const SermonNodePtr line = node("Three");
    line->setText(QStringLiteral("Three ") + QString(160, QLatin1Char('w')));
    canvas.recomputeLayout();
    const NodeLayout& three = *canvas.layoutState().layout(line->id());
    canvas.viewport().setPanOffset(QPointF(0, 695 - three.midY()));
    const QPointF pan = canvas.viewport().panOffset();
    ASSERT_GT(toView(QPointF(three.maxX(), 0)).x(), canvas.width());
    const QPointF at(toView(three.origin).x() + 40, 690);

    now = 0;
    click(at);
    EXPECT_EQ(controller().selectedNodeID(), line->id());
    EXPECT_EQ(canvas.viewport().panOffset(), pan);
    EXPECT_FALSE(canvas.viewport().isAnimating());
    now = 0.3;
    click(at);
    EXPECT_EQ(controller().editingNodeID(), line->id());

    // Afterwards it comes up from the bottom, and doesn't jump sideways.
    EXPECT_TRUE(QTest::qWaitFor([&] { return canvas.viewport().panOffset().y() < pan.y(); }, 5000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !canvas.viewport().isAnimating(); }, 5000));
    EXPECT_EQ(canvas.viewport().panOffset().x(), pan.x());
}

TEST_F(MapPointerTest, ClickingEmptySpaceTwiceOpensNothingAndClearsTheSelection)
{
    click(centre("One"));
    const QPointF empty = toView(QPointF(layout("Title").origin.x(), layout("Title").maxY() + 150));
    click(empty);
    now += 0.1;
    click(empty);
    EXPECT_FALSE(controller().selectedNodeID());
    EXPECT_FALSE(controller().editingNodeID());
}

TEST_F(MapPointerTest, AClickElsewhereCommitsTheOpenEdit)
{
    controller().startSession(id("One"), false);
    controller().setEditingText(QStringLiteral("One, edited"));
    click(centre("Story"));
    EXPECT_FALSE(controller().editingNodeID());
    EXPECT_TRUE(node("One, edited"));
    EXPECT_EQ(controller().selectedNodeID(), id("Story"));
}

TEST_F(MapPointerTest, OnlyALassoEndsAnOpenEditWhenItStarts)
{
    using Gesture = MapPointerInteraction::Gesture;
    struct Case {
        const char* what;
        std::function<QPointF()> from;
        Qt::KeyboardModifiers mods;
        Gesture gesture;
        bool keepsEditing;
    };
    auto emptySpace = [&] { return toView(QPointF(layout("Title").origin.x(), layout("Title").maxY() + 150)); };
    const Case cases[] = {
        {"pan from empty space", emptySpace, Qt::NoModifier, Gesture::panning, true},
        {"pan from the title", [&] { return centre("Title"); }, Qt::NoModifier, Gesture::panning, true},
        {"node drag", [&] { return centre("Story"); }, Qt::NoModifier, Gesture::nodeDrag, true},
        {"lasso", [&] { return centre("Story"); }, Qt::ShiftModifier, Gesture::lasso, false},
    };
    QApplication::setActiveWindow(&canvas);
    NodeEditorOverlay& editor = *canvas.editorOverlay();
    const NodeID two = id("Two");
    for (const Case& c : cases) {
        controller().commit(false);
        controller().startSession(two, false);
        controller().setEditingText(QStringLiteral("Two, edited"));
        ASSERT_TRUE(editor.field()->hasFocus()) << c.what;

        const QPointF from = c.from();
        const QPointF by(40, 30);
        const QPoint editorAt = editor.pos();
        const QPointF pan = canvas.viewport().panOffset();
        // As from the window system, so that the press moves the keyboard as a real one does.
        QTest::mousePress(&canvas, Qt::LeftButton, c.mods, from.toPoint());
        send(QEvent::MouseMove, from + by / 2, Qt::NoButton, Qt::LeftButton, c.mods);
        send(QEvent::MouseMove, from + by, Qt::NoButton, Qt::LeftButton, c.mods);
        ASSERT_EQ(canvas.pointer().gesture(), c.gesture) << c.what;
        EXPECT_EQ(controller().editingNodeID().has_value(), c.keepsEditing) << c.what;
        EXPECT_EQ(editor.isOpen(), c.keepsEditing) << c.what;
        if (c.keepsEditing) {
            // Typing goes on where it was, and the editor travels with the map.
            EXPECT_TRUE(editor.field()->hasFocus()) << c.what;
            EXPECT_EQ(editor.pos() - editorAt, (canvas.viewport().panOffset() - pan).toPoint()) << c.what;
        } else {
            EXPECT_TRUE(node("Two, edited")) << c.what;
        }
        QTest::mouseRelease(&canvas, Qt::LeftButton, c.mods, (from + by).toPoint());
        EXPECT_EQ(controller().editingNodeID().has_value(), c.keepsEditing) << c.what;
        if (c.keepsEditing) {
            EXPECT_EQ(controller().editingText(), QStringLiteral("Two, edited")) << c.what;
        }
    }
    // A plain click still ends the edit, keeping the text.
    controller().startSession(id("Three"), false);
    controller().setEditingText(QStringLiteral("Three, edited"));
    click(centre("One"));
    EXPECT_FALSE(controller().editingNodeID());
    EXPECT_TRUE(node("Three, edited"));
    EXPECT_TRUE(canvas.hasFocus());
}

TEST_F(MapPointerTest, ShiftAndCtrlClicksBuildAMultipleSelection)
{
    controller().setSelectedNodeID(std::nullopt);
    // With no anchor and no selection, the anchor is the node itself.
    click(centre("One"), Qt::ShiftModifier);
    EXPECT_EQ(controller().selectedNodeIDs(), ids({"One"}));
    // Shift extends over what is shown between, in reading order.
    click(centre("Three"), Qt::ShiftModifier);
    EXPECT_EQ(controller().selectedNodeIDs(), ids({"One", "Two", "Three"}));
    EXPECT_EQ(controller().selectedNodeID(), id("Three"));
    // Ctrl takes one out, and the primary moves to one that remains.
    click(centre("Three"), Qt::ControlModifier);
    EXPECT_EQ(controller().selectedNodeIDs(), ids({"One", "Two"}));
    ASSERT_TRUE(controller().selectedNodeID());
    EXPECT_TRUE(ids({"One", "Two"}).contains(*controller().selectedNodeID()));
    click(centre("Story"), Qt::ControlModifier);
    EXPECT_EQ(controller().selectedNodeIDs(), ids({"One", "Two", "Story"}));
    EXPECT_EQ(controller().selectedNodeID(), id("Story"));
    // A plain click ends it.
    click(centre("Opening"));
    EXPECT_TRUE(controller().selectedNodeIDs().isEmpty());
    EXPECT_EQ(controller().selectedNodeID(), id("Opening"));
}

TEST_F(MapPointerTest, CtrlClickOnTheOnlySelectedNodeLeavesNothingSelected)
{
    click(centre("Two"));
    click(centre("Two"), Qt::ControlModifier);
    EXPECT_TRUE(controller().selectedNodeIDs().isEmpty());
    EXPECT_FALSE(controller().selectedNodeID());
}

TEST_F(MapPointerTest, TheFoldButtonReachesTwelvePointsAroundItsCentre)
{
    const NodeLayout& middle = layout("Middle");
    const QPointF button(middle.maxX(), middle.midY());
    struct Case {
        QPointF offset;
        bool folds;
    };
    // The drawn circle has radius 7: a click 5 outside it still folds; one at 13 doesn't.
    for (const Case c : {Case{{12, 0}, true}, Case{{0, -12}, true}, Case{{8.4, 8.4}, true}, Case{{13, 0}, false},
                         Case{{9, 9}, false}}) {
        const bool before = node("Middle")->isCollapsed();
        now += 10;
        click(toView(button + c.offset));
        EXPECT_EQ(node("Middle")->isCollapsed() != before, c.folds) << c.offset.x() << "," << c.offset.y();
    }
}

TEST_F(MapPointerTest, FoldingByTheButtonSelectsAndFadesTheChildrenOut)
{
    const NodeLayout& middle = layout("Middle");
    click(toView(QPointF(middle.maxX(), middle.midY())));
    EXPECT_TRUE(node("Middle")->isCollapsed());
    EXPECT_EQ(controller().selectedNodeID(), id("Middle"));
    EXPECT_EQ(canvas.transitions().fadeOutGhosts().size(), 3u);
    EXPECT_EQ(canvas.transitions().fadeOutGhosts().at(id("Two")).text, QStringLiteral("Two"));
    // A fold button click is no tap: a click on the node right after is no double click.
    now += 0.1;
    click(centre("Middle"));
    EXPECT_FALSE(controller().editingNodeID());
}

TEST_F(MapPointerTest, AShiftDragLassoesAndMovesNothing)
{
    const QRectF span = layout("One").frame().united(layout("Two").frame());
    drag(toView(span.topLeft() + QPointF(5, 2)), toView(span.bottomRight() - QPointF(5, 2)), Qt::ShiftModifier);
    EXPECT_EQ(controller().selectedNodeIDs(), ids({"One", "Two"}));
    EXPECT_TRUE(ids({"One", "Two"}).contains(*controller().selectedNodeID()));
    EXPECT_EQ(children("Middle"), (QStringList{"One", "Two", "Three"}));
    EXPECT_FALSE(canvas.drawState().lassoRect);
}

TEST_F(MapPointerTest, ADragFromTheTitleOrEmptySpacePans)
{
    const QPointF pan = canvas.viewport().panOffset();
    drag(centre("Title"), centre("Title") + QPointF(40, 30));
    EXPECT_EQ(canvas.viewport().panOffset(), pan + QPointF(40, 30));
    EXPECT_EQ(document.root()->children().size(), 3u);
}

TEST_F(MapPointerTest, TheCursorTellsTheGestureWhileItRuns)
{
    struct Case {
        const char* from;
        Qt::KeyboardModifiers mods;
        Qt::CursorShape during;
    };
    const Case cases[] = {
        {"Title", Qt::NoModifier, Qt::ClosedHandCursor},
        {"Story", Qt::NoModifier, Qt::DragMoveCursor},
        {"Story", Qt::ShiftModifier, Qt::CrossCursor},
    };
    for (const Case& c : cases) {
        const QPointF from = centre(QString::fromLatin1(c.from));
        send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton, c.mods);
        send(QEvent::MouseMove, from + QPointF(30, 4), Qt::NoButton, Qt::LeftButton, c.mods);
        EXPECT_EQ(canvas.cursor().shape(), c.during) << c.from;
        send(QEvent::MouseButtonRelease, from, Qt::LeftButton, Qt::NoButton, c.mods);
        EXPECT_EQ(canvas.cursor().shape(), Qt::ArrowCursor) << c.from;
    }
}

TEST_F(MapPointerTest, DroppingRightOfANodeMakesItsLastChild)
{
    const NodeLayout& question = layout("Question");
    // Right of the frame, near its top: a child all the same, whatever the height.
    drag(centre("Two"), toView(QPointF(question.maxX() + 3, question.origin.y() + 1)));
    EXPECT_EQ(children("Question"), QStringList{"Two"});
    EXPECT_EQ(children("Middle"), (QStringList{"One", "Three"}));
    EXPECT_EQ(node("Two")->depth(), 3);
    EXPECT_TRUE(controller().selectedNodeIDs().isEmpty());
    // One undo step, which puts it back.
    document.undo();
    EXPECT_EQ(children("Middle"), (QStringList{"One", "Two", "Three"}));
}

TEST_F(MapPointerTest, DroppingOnANodesLowerHalfPutsItAfterThatNode)
{
    const NodeLayout& question = layout("Question");
    drag(centre("Three"), toView(QPointF(question.origin.x() + 2, question.midY() + 1)));
    EXPECT_EQ(children("Opening"), (QStringList{"Question", "Three", "Story"}));
    const NodeLayout& one = layout("One");
    drag(centre("Story"), toView(QPointF(one.origin.x() + 2, one.midY() - 1)));
    EXPECT_EQ(children("Middle"), (QStringList{"Story", "One", "Two"}));
}

TEST_F(MapPointerTest, TheDropIndicatorShowsWhereTheNodeLands)
{
    // Under Middle: One, Two, Three. The node lands right behind the child the indicator
    // stands under (first when none), also when dragged down within its own parent.
    struct Row {
        std::vector<const char*> moving; // the last is grabbed
        const char* over;
        bool lowerHalf;
    };
    const std::vector<Row> rows{
        {{"One"}, "Two", false},  {{"One"}, "Two", true},  {{"One"}, "Three", false}, {{"One"}, "Three", true},
        {{"Three"}, "One", true}, {{"Two"}, "One", false}, {{"Story"}, "Two", true},  {{"One", "Two"}, "Three", true},
    };
    for (const Row& row : rows) {
        const QString grabbed = QString::fromLatin1(row.moving.back());
        click(centre(QString::fromLatin1(row.moving.front())));
        for (size_t i = 1; i < row.moving.size(); ++i)
            click(centre(QString::fromLatin1(row.moving[i])), Qt::ShiftModifier);
        const NodeLayout& over = layout(QString::fromLatin1(row.over));
        const QPointF to = toView(QPointF(over.origin.x() + 2, over.midY() + (row.lowerHalf ? 1 : -1)));
        const QPointF from = centre(grabbed);
        send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        send(QEvent::MouseMove, (from + to) / 2, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        send(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        const auto target = canvas.drawState().dropTarget;
        ASSERT_TRUE(target) << row.over;
        const auto& siblings = document.root()->find(target->parentID)->children();
        const QString shownAfter =
            target->landingIndex > 0 ? siblings.at(size_t(target->landingIndex - 1))->text() : QString();
        send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);

        const SermonNodePtr parent = document.root()->find(target->parentID);
        const int landed = parent->indexOfChild(id(grabbed));
        const int first = int(row.moving.size()) - 1;
        EXPECT_EQ(landed - first, shownAfter.isEmpty() ? 0 : parent->indexOfChild(id(shownAfter)) + 1)
            << row.moving.front() << " over " << row.over << (row.lowerHalf ? " lower" : " upper");
        document.undo();
    }
}

TEST_F(MapPointerTest, DraggingPartOfAMultipleSelectionMovesTheWholeSelection)
{
    click(centre("One"));
    click(centre("Two"), Qt::ShiftModifier);
    const NodeLayout& story = layout("Story");
    drag(centre("Two"), toView(QPointF(story.origin.x() + 2, story.midY() + 1)));
    EXPECT_EQ(children("Opening"), (QStringList{"Question", "Story", "One", "Two"}));
    EXPECT_EQ(controller().selectedNodeIDs(), ids({"One", "Two"}));
}

TEST_F(MapPointerTest, DraggingANodeOutsideTheSelectionMovesItAlone)
{
    click(centre("One"));
    click(centre("Two"), Qt::ShiftModifier);
    const NodeLayout& question = layout("Question");
    drag(centre("Three"), toView(QPointF(question.origin.x() + 2, question.midY() - 1)));
    EXPECT_EQ(children("Opening"), (QStringList{"Three", "Question", "Story"}));
    EXPECT_EQ(children("Middle"), (QStringList{"One", "Two"}));
    EXPECT_TRUE(controller().selectedNodeIDs().isEmpty());
    EXPECT_EQ(controller().selectedNodeID(), id("Three"));
}

TEST(MapDropTarget, NeverInsideTheDraggedBranchNorBesideAQuote)
{
    ensureApplication();
    MapLayoutState tables;
    tables.recomputeLayout(sermon());
    auto find = [&](const QString& text) {
        for (const auto& n : tables.root->flattened())
            if (n->text() == text)
                return n;
        return SermonNodePtr();
    };
    const NodeLayout& story = *tables.layout(find("Story")->id());
    const NodeLayout& quote = *tables.layout(find("Quote")->id());
    const std::unordered_set<NodeID> opening{find("Opening")->id()};
    // Over its own child, the branch being dragged finds another node.
    const auto inside =
        MapPointerInteraction::computeDropTarget(tables, opening, QPointF(story.origin.x(), story.midY()));
    ASSERT_TRUE(inside);
    EXPECT_NE(inside->parentID, find("Opening")->id());
    // Right on the quote, the nearest node that takes children wins.
    const std::unordered_set<NodeID> one{find("One")->id()};
    const auto nearQuote =
        MapPointerInteraction::computeDropTarget(tables, one, QPointF(quote.maxX() + 5, quote.midY()));
    ASSERT_TRUE(nearQuote);
    EXPECT_NE(nearQuote->parentID, find("Quote")->id());
}

} // namespace
