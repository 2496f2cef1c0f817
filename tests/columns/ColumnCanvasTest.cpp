#include "columns/ColumnCanvas.h"
#include "columns/ColumnDrawing.h"
#include "columns/ColumnEditorOverlay.h"
#include "columns/ColumnStickyState.h"
#include "columns/ColumnWidthsStore.h"
#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "editing/DocumentController.h"
#include "look/Look.h"
#include "map/MapTestSupport.h"

#include <QImage>
#include <QKeyEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr double row = ColumnLayout::rowHeight;

// Title / Alpha (Alpha one, Alpha two) / Beta (Beta one), in a 1000 by 600 view.
class ColumnCanvasTest : public ::testing::Test {
public: // the rows of a table reach the fixture
    void SetUp() override
    {
        ensureApplication();
        // Rows of a table test start afresh: the old canvas goes before its document.
        canvas.reset();
        document.reset();
        undo.removeAllActions();
        auto top = SermonNode::make(QStringLiteral("Title"));
        alpha = top->addChild(QStringLiteral("Alpha"));
        alphaOne = alpha->addChild(QStringLiteral("Alpha one"));
        alphaTwo = alpha->addChild(QStringLiteral("Alpha two"));
        beta = top->addChild(QStringLiteral("Beta"));
        betaOne = beta->addChild(QStringLiteral("Beta one"));
        document = std::make_unique<SermonDocument>(top);
        canvas = std::make_unique<ColumnCanvas>(document.get());
        canvas->setUndoManager(&undo);
        canvas->resize(1000, 600);
        canvas->show();
        clock = 0;
        canvas->animator().setClock([this] { return clock; });
        canvas->scrollAnimator().setClock([this] { return clock; });
    }

    SermonNodePtr root() const { return document->root(); }
    SermonNodePtr node(const SermonNodePtr& original) const { return root()->find(original->id()); }
    DocumentController* controller() const { return canvas->controller(); }
    void select(const SermonNodePtr& n) { controller()->setSelectedNodeID(n->id()); }
    std::optional<NodeID> selected() const { return controller()->selectedNodeID(); }
    void key(int k, Qt::KeyboardModifiers m = Qt::NoModifier) { QTest::keyClick(canvas.get(), Qt::Key(k), m); }
    void editorKey(int k, Qt::KeyboardModifiers m = Qt::NoModifier)
    {
        QTest::keyClick(canvas->editor(), Qt::Key(k), m);
    }
    void type(const QString& text) { QTest::keyClicks(canvas->editor(), text); }
    // Lets every glide land.
    void settle()
    {
        clock += 1;
        canvas->animator().tick();
        canvas->scrollAnimator().tick();
    }
    QImage render(bool isDark = false) const
    {
        QImage image(canvas->size(), QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        canvas->drawInto(painter, isDark);
        return image;
    }

    UndoManager undo;
    std::unique_ptr<SermonDocument> document;
    std::unique_ptr<ColumnCanvas> canvas;
    SermonNodePtr alpha, alphaOne, alphaTwo, beta, betaOne;
    double clock = 0;
};

// Pixels close to the ink of the text, inside a rectangle.
QRect inkBounds(const QImage& image, const QRect& area, const QColor& ink)
{
    QRect bounds;
    for (int y = std::max(area.top(), 0); y <= std::min(area.bottom(), image.height() - 1); ++y)
        for (int x = std::max(area.left(), 0); x <= std::min(area.right(), image.width() - 1); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (std::abs(c.red() - ink.red()) + std::abs(c.green() - ink.green()) + std::abs(c.blue() - ink.blue())
                < 90)
                bounds |= QRect(x, y, 1, 1);
        }
    return bounds;
}

// ---- Keys -------------------------------------------------------------------------------------

TEST_F(ColumnCanvasTest, ArrowKeysMoveTheSelectionWithinTheTable)
{
    struct Case {
        const char* name;
        SermonNodePtr ColumnCanvasTest::*from;
        int key;
        SermonNodePtr ColumnCanvasTest::*to; // null: the root
    };
    const Case cases[] = {
        {"left selects the parent", &ColumnCanvasTest::alphaOne, Qt::Key_Left, &ColumnCanvasTest::alpha},
        {"right selects the first child", &ColumnCanvasTest::alpha, Qt::Key_Right, &ColumnCanvasTest::alphaOne},
        {"right on a leaf stays", &ColumnCanvasTest::alphaOne, Qt::Key_Right, &ColumnCanvasTest::alphaOne},
        {"down goes to the next row in the column", &ColumnCanvasTest::alphaOne, Qt::Key_Down,
         &ColumnCanvasTest::alphaTwo},
        {"down crosses into the next branch", &ColumnCanvasTest::alphaTwo, Qt::Key_Down, &ColumnCanvasTest::betaOne},
        {"up stops at the top of the column", &ColumnCanvasTest::alphaOne, Qt::Key_Up, &ColumnCanvasTest::alphaOne},
        {"down stops at the bottom", &ColumnCanvasTest::beta, Qt::Key_Down, &ColumnCanvasTest::beta},
        {"up in the headings' column", &ColumnCanvasTest::beta, Qt::Key_Up, &ColumnCanvasTest::alpha},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        select(this->*c.from);
        key(c.key);
        EXPECT_EQ(selected(), (this->*c.to)->id());
    }
    select(alpha);
    key(Qt::Key_Escape);
    EXPECT_FALSE(selected()) << "Escape clears the selection";
    EXPECT_EQ(document->undoStack().size(), 0u) << "moving the selection is no edit";
}

TEST_F(ColumnCanvasTest, WithoutSelectionTheOutlineKeysPassThrough)
{
    controller()->setSelectedNodeID(std::nullopt);
    for (const int k :
         {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Tab, Qt::Key_Return, Qt::Key_Space}) {
        QKeyEvent press(QEvent::KeyPress, k, Qt::NoModifier);
        QCoreApplication::sendEvent(canvas.get(), &press);
        EXPECT_FALSE(press.isAccepted()) << k;
    }
    // Return on the title is taken and does nothing; Tab on it adds a first-level line.
    select(root());
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(canvas.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_EQ(root()->children().size(), 2u);
    EXPECT_FALSE(controller()->editingNodeID());
    key(Qt::Key_Tab);
    EXPECT_EQ(root()->children().size(), 3u);
    EXPECT_EQ(controller()->editingNodeID(), root()->children().back()->id());
}

// Each row is one edit from the keyboard; undoing `steps` times gives the tree back, and one
// undo fewer does not.
TEST_F(ColumnCanvasTest, EveryEditIsOneUndoStep)
{
    struct Case {
        const char* name;
        std::function<void(ColumnCanvasTest&)> edit;
        int steps;
    };
    const Case cases[] = {
        {"Tab adds a child typed in place",
         [](ColumnCanvasTest& t) {
             t.select(t.alpha);
             t.key(Qt::Key_Tab);
             t.type(QStringLiteral("New"));
             t.editorKey(Qt::Key_Backtab, Qt::ShiftModifier);
         },
         1},
        {"Return adds a sibling below",
         [](ColumnCanvasTest& t) {
             t.select(t.alpha);
             t.key(Qt::Key_Return);
             t.type(QStringLiteral("Between"));
             t.editorKey(Qt::Key_Backtab, Qt::ShiftModifier);
         },
         1},
        {"typing a chain of new lines is a step per line",
         [](ColumnCanvasTest& t) {
             t.select(t.alphaTwo);
             t.key(Qt::Key_Return);
             t.type(QStringLiteral("one"));
             t.editorKey(Qt::Key_Return);
             t.type(QStringLiteral("two"));
             t.editorKey(Qt::Key_Backtab, Qt::ShiftModifier);
         },
         2},
        {"Space edits the text of a line",
         [](ColumnCanvasTest& t) {
             t.select(t.alphaOne);
             t.key(Qt::Key_Space);
             t.type(QStringLiteral(" changed"));
             t.editorKey(Qt::Key_Return);
         },
         1},
        {"an existing line emptied is removed",
         [](ColumnCanvasTest& t) {
             t.select(t.alphaOne);
             t.key(Qt::Key_Space);
             t.editorKey(Qt::Key_A, Qt::ControlModifier);
             t.editorKey(Qt::Key_Backspace);
             t.editorKey(Qt::Key_Backtab, Qt::ShiftModifier);
         },
         1},
        {"Alt+Return splits at the cursor",
         [](ColumnCanvasTest& t) {
             t.select(t.alphaOne);
             t.key(Qt::Key_Space);
             t.editorKey(Qt::Key_Home);
             for (int i = 0; i < 5; ++i)
                 t.editorKey(Qt::Key_Right);
             t.editorKey(Qt::Key_Return, Qt::AltModifier);
             t.editorKey(Qt::Key_Escape);
         },
         1},
        {"Alt+Down moves a branch",
         [](ColumnCanvasTest& t) { t.select(t.alpha), t.key(Qt::Key_Down, Qt::AltModifier); }, 1},
        {"Alt+Right demotes", [](ColumnCanvasTest& t) { t.select(t.beta), t.key(Qt::Key_Right, Qt::AltModifier); }, 1},
        {"Alt+Left promotes", [](ColumnCanvasTest& t) { t.select(t.betaOne), t.key(Qt::Key_Left, Qt::AltModifier); },
         1},
        {"Ctrl+Left folds", [](ColumnCanvasTest& t) { t.select(t.alpha), t.key(Qt::Key_Left, Qt::ControlModifier); },
         1},
        {"Delete removes a branch", [](ColumnCanvasTest& t) { t.select(t.alpha), t.key(Qt::Key_Delete); }, 1},
        {"Ctrl+X cuts", [](ColumnCanvasTest& t) { t.select(t.alphaTwo), t.key(Qt::Key_X, Qt::ControlModifier); }, 1},
        {"Ctrl+V pastes what Ctrl+C copied",
         [](ColumnCanvasTest& t) {
             t.select(t.betaOne);
             t.key(Qt::Key_C, Qt::ControlModifier);
             t.select(t.alphaTwo);
             t.key(Qt::Key_V, Qt::ControlModifier);
         },
         1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SetUp();
        const QString before = document->snapshot();
        c.edit(*this);
        settle();
        ASSERT_FALSE(controller()->editingNodeID());
        const QString after = document->snapshot();
        ASSERT_NE(after, before);
        for (int i = 0; i < c.steps; ++i) {
            EXPECT_NE(document->snapshot(), before) << "undo " << i;
            key(Qt::Key_Z, Qt::ControlModifier);
        }
        EXPECT_EQ(document->snapshot(), before);
        ASSERT_TRUE(selected());
        EXPECT_TRUE(root()->find(*selected())) << "undo restores a selection in the tree";
        for (int i = 0; i < c.steps; ++i)
            key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_EQ(document->snapshot(), after) << "redo";
    }
}

TEST_F(ColumnCanvasTest, EditorKeysFollowTheOutlineRules)
{
    // A new line left empty goes again, with no step beyond the one that made it.
    select(alpha);
    key(Qt::Key_Tab);
    editorKey(Qt::Key_Escape);
    EXPECT_EQ(alpha->children().size(), 2u);
    EXPECT_EQ(document->undoStack().size(), 1u);
    EXPECT_EQ(selected(), alphaTwo->id()) << "the sibling before it";

    // Cancelling restores the text from before, and leaves no step.
    select(alphaOne);
    key(Qt::Key_Space);
    type(QStringLiteral("zzz"));
    EXPECT_EQ(alphaOne->text(), QStringLiteral("Alpha onezzz")) << "the cell follows each keystroke";
    EXPECT_FALSE(canvas->animator().isRunning()) << "a keystroke stops the glide";
    EXPECT_EQ(canvas->effectiveFrames(), canvas->layout().frames);
    editorKey(Qt::Key_Escape);
    EXPECT_EQ(alphaOne->text(), QStringLiteral("Alpha one"));
    EXPECT_EQ(document->undoStack().size(), 1u);

    // Tab on an existing line commits it and creates nothing.
    key(Qt::Key_Space);
    editorKey(Qt::Key_Tab);
    EXPECT_FALSE(controller()->editingNodeID());
    EXPECT_FALSE(alphaOne->hasChildren());

    // On a line just made, Tab goes on to a child and Ctrl+Return to a sibling above.
    select(beta);
    key(Qt::Key_Tab);
    type(QStringLiteral("first"));
    editorKey(Qt::Key_Tab);
    ASSERT_EQ(beta->children().size(), 2u);
    const SermonNodePtr first = beta->children().back();
    EXPECT_EQ(first->text(), QStringLiteral("first"));
    ASSERT_EQ(first->children().size(), 1u);
    EXPECT_EQ(controller()->editingNodeID(), first->children().front()->id());
    type(QStringLiteral("below"));
    editorKey(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_EQ(first->children().size(), 2u);
    EXPECT_EQ(controller()->editingNodeID(), first->children().front()->id());
    EXPECT_TRUE(canvas->editor()->modelText().isEmpty()) << "the editor re-targets to the empty line";

    // Shift+Return is a soft break, held as U+2028, and the cell grows a row.
    type(QStringLiteral("top"));
    editorKey(Qt::Key_Return, Qt::ShiftModifier);
    type(QStringLiteral("bottom"));
    EXPECT_EQ(canvas->layout(), ColumnLayout::compute(*root(), canvas->widthsStore()->config().widths()))
        << "a keystroke that adds a row relays";
    editorKey(Qt::Key_Backtab, Qt::ShiftModifier);
    const SermonNodePtr soft = first->children().front();
    EXPECT_EQ(soft->text(), QStringLiteral("top") + QChar(0x2028) + QStringLiteral("bottom"));
    EXPECT_EQ(canvas->layout().frames.at(soft->id()).size.height(), 2 * row);
}

// Each row types into one line so that it gains or loses rows; the table is then exactly what
// a whole new layout of the tree gives.
TEST_F(ColumnCanvasTest, AKeystrokeThatChangesRowsRelaysAsAWholeLayout)
{
    const QString three = QStringLiteral("one\u2028two\u2028three");
    struct Case {
        const char* name;
        std::function<SermonNodePtr(const ColumnCanvasTest&)> line;
        QString before;
        QString typed;
        bool collapseBeta;
    };
    const Case cases[] = {
        {"a leaf grows: its branch and all after it move", [](const auto& t) { return t.alphaOne; }, {}, three, false},
        {"a parent outgrows its children", [](const auto& t) { return t.alpha; }, {}, three, false},
        {"a parent grows within its children's rows",
         [](const auto& t) { return t.alpha; },
         {},
         QStringLiteral("a\u2028b"),
         false},
        {"the title grows past the whole table", [](const auto& t) { return t.root(); }, {}, three + three, false},
        {"the last leaf shrinks", [](const auto& t) { return t.betaOne; }, three, QStringLiteral("one"), false},
        {"a line above a folded branch", [](const auto& t) { return t.alphaTwo; }, {}, three, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SetUp();
        if (c.collapseBeta)
            beta->setCollapsed(true);
        const SermonNodePtr line = c.line(*this);
        if (!c.before.isEmpty())
            line->setText(c.before);
        canvas->recomputeLayout(false);
        canvas->beginEdit(line->id(), false);
        controller()->setEditingText(c.typed);
        ASSERT_EQ(line->text(), c.typed);
        EXPECT_EQ(canvas->layout(), ColumnLayout::compute(*root(), canvas->widthsStore()->config().widths()));
        EXPECT_EQ(canvas->effectiveFrames(), canvas->layout().frames);
    }
}

// ---- Pointer and scrolling --------------------------------------------------------------------

TEST_F(ColumnCanvasTest, ClicksHitWholeSubtreesAndDoubleClickEdits)
{
    // Alpha is one row; beside it its children fill two. The second row still answers Alpha.
    const QPointF besideTallChild(650, row + 10);
    EXPECT_EQ(canvas->hitTest(besideTallChild), alpha->id());
    QTest::mouseClick(canvas.get(), Qt::LeftButton, {}, besideTallChild.toPoint());
    EXPECT_EQ(selected(), alpha->id());
    QTest::mouseClick(canvas.get(), Qt::LeftButton, {}, QPoint(650, 500));
    EXPECT_EQ(selected(), alpha->id()) << "empty space below the tree keeps the selection";
    QTest::mouseDClick(canvas.get(), Qt::LeftButton, {}, QPoint(650, int(2 * row) + 10));
    EXPECT_EQ(controller()->editingNodeID(), beta->id());
    EXPECT_TRUE(canvas->editor()->isVisible());
    EXPECT_FALSE(controller()->editingIsNew());
}

TEST_F(ColumnCanvasTest, ScrollingIsClampedAndRevealBringsTheBranchTopIn)
{
    // The whole tree is shorter than the view: no vertical scroll at all.
    canvas->scrollBy(-50, -500);
    EXPECT_EQ(canvas->panOffset(), QPointF(-50, 0));
    canvas->scrollBy(-10000, 0);
    EXPECT_EQ(canvas->panOffset().x(), -canvas->layout().totalSize.width()) << "the whole width, not less the view";
    canvas->scrollBy(20000, 0);
    EXPECT_EQ(canvas->panOffset(), QPointF(0, 0));

    // A branch taller than the view: its top comes to 40 points from the top.
    SermonNodePtr tall;
    for (int i = 0; i < 30; ++i)
        tall = root()->addChild(QStringLiteral("Heading %1").arg(i));
    for (int i = 0; i < 40; ++i)
        tall->addChild(QStringLiteral("Line %1").arg(i));
    canvas->recomputeLayout(false);
    select(tall);
    EXPECT_TRUE(canvas->scrollAnimator().isRunning());
    settle();
    const double top = canvas->layout().frames.at(tall->id()).subtreeYRange.lower;
    EXPECT_EQ(top + canvas->panOffset().y(), ColumnCanvas::revealMargin);
}

// ---- Drawing ----------------------------------------------------------------------------------

TEST_F(ColumnCanvasTest, ACollapsedColumnDrawsItsTextTurnedAQuarter)
{
    const QColor ink = Look::ink(false);
    // At rest the title reads across the first column.
    const QRect across = inkBounds(render(), QRect(0, 0, 600, 28), ink);
    ASSERT_FALSE(across.isEmpty());
    EXPECT_GT(across.width(), 2 * across.height());

    // Scrolled past it, the title's column stands as a strip at the left edge, its text upright.
    canvas->setPanOffset(QPointF(-600, 0));
    const QImage strip = render();
    const QRect upright = inkBounds(strip, QRect(0, 0, 44, 600), ink);
    ASSERT_FALSE(upright.isEmpty());
    EXPECT_GT(upright.height(), 2 * upright.width());
    EXPECT_NEAR(upright.height(), across.width(), 2) << "the whole title, turned";
    EXPECT_NEAR(upright.top(), ColumnLayout::columnTextInset, 2) << "it ends 14 points below the top";
    EXPECT_NEAR(upright.center().x(), 22, 3) << "centred in the 44-point strip";

    // Leaves in a strip are dots, one per line.
    canvas->setPanOffset(QPointF(-1800, 0));
    QImage image(canvas->size(), QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    EXPECT_EQ(canvas->drawInto(painter, false).dots, 3);
}

TEST_F(ColumnCanvasTest, AHeadingStaysPinnedWhileItsBranchScrollsBy)
{
    for (int i = 0; i < 60; ++i)
        beta->addChild(QStringLiteral("Point %1").arg(i));
    canvas->recomputeLayout(false);
    const QColor ink = Look::ink(false);
    const QRect headingsTop(614, 0, 560, 28);
    canvas->setPanOffset(QPointF(0, -20 * row));
    EXPECT_FALSE(inkBounds(render(), headingsTop, ink).isEmpty()) << "Beta is pinned at the top";
    const QRect title = inkBounds(render(), QRect(0, 0, 600, 28), ink);
    EXPECT_FALSE(title.isEmpty()) << "and so is the title, a whole path along the top";

    // Every cell that meets the view is drawn, each once, pinned ones at the top; no other.
    canvas->resize(1900, 600); // the points' column in view too
    const QRectF view(0, 20 * row, canvas->width(), canvas->height());
    const auto pinned = ColumnStickyState::compute(canvas->layout().frames, view.top());
    int meeting = 0;
    for (const auto& [id, f] : canvas->effectiveFrames()) {
        const auto pin = pinned.find(f.column);
        const bool isPinned = pin != pinned.end() && pin->second.nodeID == id;
        meeting += QRectF(f.origin, f.size).intersects(view) && !isPinned;
    }
    QImage image(canvas->size(), QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    ASSERT_GT(meeting, 20);
    EXPECT_EQ(canvas->drawInto(painter, false).cells, meeting + int(pinned.size()));
}

TEST_F(ColumnCanvasTest, DarkAppearanceDrawsTheDarkInk)
{
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::WindowText, Qt::white);
    canvas->setPalette(dark);
    const QImage image = render(true);
    EXPECT_EQ(image.pixelColor(300, 300), QColor(30, 30, 30)) << "the text background";
    EXPECT_FALSE(inkBounds(image, QRect(0, 0, 600, 28), Look::ink(true)).isEmpty());
}

TEST_F(ColumnCanvasTest, CellsDrawTheMarkersInTheirColours)
{
    const QPalette light = canvas->palette();
    QPalette dark = light;
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    for (const MarkerColour& m : markerColours()) {
        node(alpha)->setText(m.marker);
        canvas->recomputeLayout(false);
        // White shows against the dark page, everything else against the light one.
        const bool onDark = std::string(m.name) == "white";
        canvas->setPalette(onDark ? dark : light);
        const QImage image = render(onDark);
        // Alpha's cell: column 1, its text 14 points in and 6 down.
        const QColor c = meanCoverColour(image, QRect(612, 2, 24, 26), image.pixelColor(990, 590));
        EXPECT_TRUE(c.isValid() && m.matches(c)) << m.name << ": " << c.name().toStdString();
    }
}

TEST_F(ColumnCanvasTest, TallFillsInBandsGiveTheSamePixels)
{
    QLinearGradient fade(QPointF(0, 13.4), QPointF(0, 700));
    fade.setColorAt(0, QColor(255, 250, 240, 0));
    fade.setColorAt(1, QColor(255, 250, 240, 255));
    const QBrush brushes[] = {QColor(0, 90, 200, 51), fade};
    const struct {
        QRectF rect;
        QPointF translation;
    } cases[] = {
        {{3, 0, 14, 1000}, {0, 0}},
        {{10.5, 13.4, 14, 686.6}, {0, 0}},
        {{0, -37.6, 600, 301.3}, {0, 17.25}},
        {{20, 5.5, 8, 64.5}, {-3.5, 0.75}},
    };
    for (const QBrush& brush : brushes)
        for (const auto& c : cases) {
            QImage plain(QSize(640, 1000), QImage::Format_ARGB32_Premultiplied);
            plain.fill(Qt::white);
            QImage banded = plain;
            for (QImage* image : {&plain, &banded}) {
                QPainter painter(image);
                painter.translate(c.translation);
                if (image == &plain)
                    painter.fillRect(c.rect, brush);
                else
                    ColumnDrawing::fillInBands(painter, c.rect, brush);
            }
            EXPECT_EQ(plain, banded) << c.rect.top() << " + " << c.rect.height();
        }
}

TEST_F(ColumnCanvasTest, ADeepChainIsLaidOutDrawnAndHitWithoutRecursion)
{
    auto top = SermonNode::make(QStringLiteral("Deep"));
    SermonNodePtr tip = top;
    for (int i = 0; i < 9000; ++i)
        tip = tip->addChild(QStringLiteral("level %1").arg(i));
    SermonDocument deep(top);
    ColumnCanvas deepCanvas(&deep);
    deepCanvas.resize(800, 600);
    deepCanvas.show();
    EXPECT_EQ(deepCanvas.layout().columnCount, 9001);
    deepCanvas.setPanOffset(QPointF(-1e9, 0));
    QImage image(deepCanvas.size(), QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    deepCanvas.drawInto(painter, false);
    EXPECT_TRUE(deepCanvas.hitTest(QPointF(790, 10)));
    deepCanvas.controller()->setSelectedNodeID(tip->id());
    EXPECT_EQ(deepCanvas.subtreeRightmost().at(top->id()), 9000);
}

} // namespace
