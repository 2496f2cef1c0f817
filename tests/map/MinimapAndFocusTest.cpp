#include "map/MapTestSupport.h"

#include "map/FocusOverlayView.h"
#include "map/FocusWindow.h"
#include "map/MindMapCanvas.h"
#include "map/MinimapOverlay.h"
#include "map/NodeEditorOverlay.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "editing/DocumentController.h"

#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSemaphore>
#include <QTest>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <atomic>

namespace {

SermonNodePtr sermon()
{
    auto root = SermonNode::make(QStringLiteral("The God Who Stays"), 0);
    auto opening = root->addChild(QStringLiteral("Opening"));
    opening->addChild(QStringLiteral("Have you ever felt forgotten?"));
    opening->addChild(QStringLiteral("He will never leave you."));
    auto main = root->addChild(QStringLiteral("Main idea"));
    for (int i = 0; i < 30; ++i)
        main->addChild(QStringLiteral("Point %1").arg(i))->addChild(QStringLiteral("A line"));
    return root;
}

struct WithApplication {
    WithApplication() { ensureApplication(); }
};

// A shown map on a small sermon, with a clock for its minimap's timers.
class MinimapTest : public ::testing::Test, private WithApplication {
public:
    void SetUp() override
    {
        canvas.resize(800, 600);
        canvas.show();
        minimap().fade().setClock([this] { return now; });
    }
    // The map lays a change out a turn later; the minimap follows that pass a moment after.
    MinimapOverlay& minimap() const
    {
        canvas.layoutState();
        canvas.minimap()->settle();
        return *canvas.minimap();
    }
    SermonNodePtr child(int part, int index = -1) const
    {
        const SermonNodePtr p = document.root()->children().at(size_t(part));
        return index < 0 ? p : p->children().at(size_t(index));
    }

    double now = 0;
    SermonDocument document{sermon()};
    MindMapCanvas canvas{&document};
};

TEST_F(MinimapTest, TheKeyFollowsTextFoldsAndStructureButNotSelectionPanZoomOrHiddenText)
{
    struct Row {
        const char* change;
        std::function<void(MinimapTest&)> apply;
        bool changesKey;
    };
    const std::vector<Row> rows{
        {"text alone", [](MinimapTest& t) { t.child(1, 3)->setText(QStringLiteral("Point 8")); }, true},
        {"a fold", [](MinimapTest& t) { t.child(1)->setCollapsed(true); }, true},
        {"a new line", [](MinimapTest& t) { t.child(0)->addChild(QStringLiteral("Story")); }, true},
        {"a line moved", [](MinimapTest& t) { t.document.root()->moveNode(t.child(0, 1)->id(), t.child(1)->id(), 0); },
         true},
        {"the theme",
         [](MinimapTest& t) {
             QPalette dark = t.canvas.palette();
             dark.setColor(QPalette::Window, Qt::black);
             t.canvas.setPalette(dark);
         },
         true},
        {"the selection", [](MinimapTest& t) { t.canvas.controller()->setSelectedNodeID(t.child(1, 3)->id()); }, false},
        {"a pan", [](MinimapTest& t) { t.canvas.viewport().onScroll(-40, -300); }, false},
        {"a zoom", [](MinimapTest& t) { t.canvas.viewport().setScale(2.0); }, false},
        {"text under a fold",
         [](MinimapTest& t) {
             t.child(1)->setCollapsed(true);
             t.canvas.onTreeMutated();
             const MinimapCacheKey folded = t.minimap().currentKey();
             t.child(1, 4)->setText(QStringLiteral("Unseen"));
             t.canvas.onTreeMutated();
             EXPECT_EQ(t.minimap().currentKey(), folded);
         },
         true},
    };
    for (const Row& row : rows) {
        SetUp();
        const MinimapCacheKey before = minimap().currentKey();
        row.apply(*this);
        canvas.onTreeMutated();
        const MinimapCacheKey after = minimap().currentKey();
        EXPECT_EQ(after != before, row.changesKey) << row.change;
        // Whatever the key now is, its image is on show or under way: never asked for twice.
        EXPECT_FALSE(minimap().cache().wants(after)) << row.change;
        document.setRoot(sermon());
        canvas.setPalette(QPalette());
        canvas.viewport().setScale(1.0);
    }
}

TEST_F(MinimapTest, ShowsFiveSecondsAfterTheViewMovesAndLetsClicksThroughWhenHidden)
{
    EXPECT_FALSE(minimap().fade().isVisible());
    EXPECT_TRUE(minimap().testAttribute(Qt::WA_TransparentForMouseEvents));
    for (auto move : std::vector<std::function<void()>>{
             [&] { canvas.viewport().onScroll(0, -50); },
             [&] {
                 canvas.viewport().onMagnify(0.1, {100, 100});
             },
             [&] {
                 canvas.centerOn({200, 200});
             },
         }) {
        now += 10;
        move();
        EXPECT_TRUE(minimap().fade().isVisible());
        EXPECT_FALSE(minimap().testAttribute(Qt::WA_TransparentForMouseEvents));
        now += 4.9;
        minimap().fade().check();
        EXPECT_TRUE(minimap().fade().isVisible());
        now += 0.1;
        minimap().fade().check();
        EXPECT_FALSE(minimap().fade().isVisible());
        // Fading over 0.3 s, then gone.
        now += 0.15;
        EXPECT_GT(minimap().fade().opacity(), 0.0);
        EXPECT_LT(minimap().fade().opacity(), 1.0);
        now += 0.15;
        EXPECT_EQ(minimap().fade().opacity(), 0.0);
        EXPECT_TRUE(minimap().testAttribute(Qt::WA_TransparentForMouseEvents));
    }
    // It stands in the lower right corner, 12 points in from both edges.
    EXPECT_EQ(minimap().geometry().right() + 1, canvas.width() - 12);
    EXPECT_EQ(minimap().geometry().bottom() + 1, canvas.height() - 12);
}

TEST_F(MinimapTest, TheRectangleShowsTheViewAndAClickThereCentresTheMapOnIt)
{
    auto press = [&](QEvent::Type type, QPointF at) {
        QMouseEvent event(type, at, minimap().mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&minimap(), &event);
    };
    canvas.viewport().setScale(2.0);
    const QPointF middle = canvas.layoutState().cachedContentBounds.center();
    canvas.centerOn(middle);
    const QPointF pan = canvas.viewport().panOffset();
    const MinimapGeometry& g = minimap().minimapGeometry();
    const QRectF rect = minimap().viewportRect();
    // The view's 400 by 300 canvas points, at the minimap's scale, around the same middle.
    EXPECT_NEAR(rect.width(), 400 * g.mapScale, 1e-9);
    EXPECT_NEAR(rect.height(), 300 * g.mapScale, 1e-9);
    EXPECT_NEAR(g.canvasPoint(rect.center()).x(), middle.x(), 1.0);
    EXPECT_NEAR(g.canvasPoint(rect.center()).y(), middle.y(), 1.0);

    // Looking elsewhere, a click on where the rectangle was brings the same view back.
    canvas.centerOn(g.contentBounds.topLeft());
    ASSERT_NE(canvas.viewport().panOffset(), pan);
    press(QEvent::MouseButtonPress, rect.center());
    EXPECT_NEAR(canvas.viewport().panOffset().x(), pan.x(), 1.0);
    EXPECT_NEAR(canvas.viewport().panOffset().y(), pan.y(), 1.0);

    // A drag keeps the map centred under the pointer.
    const QPointF to = rect.center() + QPointF(10, 6);
    press(QEvent::MouseMove, to);
    const QPointF under = canvas.canvasPoint(QPointF(400, 300));
    EXPECT_NEAR(under.x(), g.canvasPoint(to).x(), 1e-6);
    EXPECT_NEAR(under.y(), g.canvasPoint(to).y(), 1e-6);
}

TEST(MinimapGeometry, AWideFlatTreeIsFullWidthAndTheViewIsClippedToIt)
{
    const MinimapGeometry wide = MinimapGeometry::forContent(QRectF(40, 40, 8000, 400));
    EXPECT_DOUBLE_EQ(wide.size.width(), 180);
    EXPECT_LT(wide.size.height(), 180);
    const QRectF view = wide.viewportRect({1600, 1000}, {0, 0}, 1.0);
    EXPECT_EQ(view.bottom(), wide.size.height());
    EXPECT_TRUE(wide.viewportRect({800, 600}, {-20000, 0}, 1.0).isEmpty());
    // One small node fills the 164 points inside the padding.
    EXPECT_DOUBLE_EQ(MinimapGeometry::forContent(QRectF(40, 40, 82, 20)).treeFrame.width(), 164);
    EXPECT_DOUBLE_EQ(MinimapGeometry::forContent(QRectF(40, 40, 0, 0)).mapScale, 1.0);
}

// A snapshot and frames for a tree of `parents` branches of `leaves` lines, without a text layout.
MinimapRenderer::Input syntheticInput(int parents, int leaves, bool isDark = false)
{
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    for (int p = 0; p < parents; ++p) {
        auto part = root->addChild(QStringLiteral("Part %1").arg(p));
        for (int l = 0; l < leaves; ++l)
            part->addChild(QStringLiteral("A spoken line %1").arg(l));
    }
    MinimapRenderer::Input input;
    input.root = TreeSnapshot::copy(*root);
    int row = 0;
    for (const TreeNodeSnapshot& node : input.root.nodes) {
        NodeLayout l;
        l.nodeID = node.id;
        l.depth = node.depth;
        l.isLeaf = node.isLeaf;
        l.hasOnlyLeafChildren = node.hasOnlyLeafChildren;
        l.origin = QPointF(40 + 200 * node.depth, 40 + 24 * (node.depth == 2 ? row++ : row));
        l.size = QSizeF(160, 20);
        input.layouts.emplace(node.id, l);
    }
    input.contentBounds = QRectF(40, 40, 560, 24.0 * row + 20);
    input.pixelSize = QSize(std::max(1, int(164 * input.contentBounds.width() / input.contentBounds.height())), 164);
    input.isDark = isDark;
    return input;
}

TEST(MinimapRenderer, DrawsInTheThemesInkAndStopsAtThePollAfterACancel)
{
    ensureApplication();
    for (bool dark : {false, true}) {
        const auto image = MinimapRenderer::render(syntheticInput(3, 4, dark));
        ASSERT_TRUE(image.has_value());
        EXPECT_EQ(image->height(), 164);
        // Stark ink, not the map's warm one: white on dark, black on light.
        int inked = 0;
        for (int y = 0; y < image->height(); ++y)
            for (int x = 0; x < image->width(); ++x) {
                const QColor c = image->pixelColor(x, y);
                if (c.alpha() > 0) {
                    ++inked;
                    EXPECT_EQ(c.red(), dark ? 255 : 0) << x << "," << y;
                }
            }
        EXPECT_GT(inked, 100) << dark;
    }
    EXPECT_FALSE(MinimapRenderer::render(MinimapRenderer::Input{}).has_value());

    // 50,000 lines: cancelled at its third poll, the render ends there, with nothing.
    const MinimapRenderer::Input big = syntheticInput(500, 99);
    ASSERT_EQ(big.layouts.size(), 50'001u);
    int polls = 0;
    const auto cancelled = MinimapRenderer::render(big, [&] { return ++polls >= 3; });
    EXPECT_FALSE(cancelled.has_value());
    EXPECT_EQ(polls, 3);
}

TEST(MinimapCache, ANewerRequestCancelsAWaitingRenderAndDropsAStaleImage)
{
    ensureApplication();
    MinimapCache cache;
    std::atomic<int> renders{0};
    std::atomic<bool> staleReturned{false};
    QSemaphore started, gate, newerGate;
    cache.setRenderFunction([&](const MinimapRenderer::Input& input, const std::function<bool()>&) {
        ++renders;
        if (input.pixelSize.width() == 1) {
            started.release();
            gate.acquire(); // finishes after a newer key was asked for, ignoring its cancel
            staleReturned = true;
        }
        if (input.pixelSize.width() == 4)
            newerGate.acquire(); // and before the newer one
        QImage image(input.pixelSize, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::black);
        return std::optional<QImage>(image);
    });
    int shown = 0;
    QObject::connect(&cache, &MinimapCache::imageChanged, [&] { ++shown; });
    auto key = [](int width) { return MinimapCacheKey{1, 2, 3, width, 1, false}; };
    auto input = [](int width) {
        MinimapRenderer::Input in;
        in.pixelSize = QSize(width, 1);
        return in;
    };
    auto settle = [] {
        QThreadPool::globalInstance()->waitForDone(10'000);
        QCoreApplication::processEvents();
    };

    // A request during the wait of the one before: only the newer renders.
    cache.setBurstDelay(60'000);
    cache.requestRender(key(3), input(3));
    cache.setBurstDelay(0);
    cache.requestRender(key(2), input(2));
    ASSERT_TRUE(QTest::qWaitFor([&] { return cache.currentKey() == key(2); }, 10'000));
    settle();
    EXPECT_EQ(renders, 1);
    EXPECT_EQ(shown, 1);

    // A render overtaken while drawing: its image never shows, the newer one does.
    cache.requestRender(key(1), input(1));
    ASSERT_TRUE(started.tryAcquire(1, 10'000));
    cache.requestRender(key(4), input(4));
    EXPECT_EQ(cache.pendingKey(), key(4));
    gate.release();
    ASSERT_TRUE(QTest::qWaitFor([&] { return staleReturned.load(); }, 10'000));
    QTest::qWait(50);
    EXPECT_EQ(shown, 1);
    newerGate.release();
    ASSERT_TRUE(QTest::qWaitFor([&] { return cache.currentKey() == key(4); }, 10'000));
    settle();
    EXPECT_EQ(cache.currentImage()->width(), 4);
    EXPECT_EQ(shown, 2);
    EXPECT_FALSE(cache.isInFlight());

    // The key on show is not rendered again.
    cache.requestRender(key(4), input(4));
    EXPECT_FALSE(cache.isInFlight());
}

// A document map in one window and the focus map over the screen, sharing one undo history.
class FocusModeTest : public ::testing::Test, private WithApplication {
protected:
    void SetUp() override
    {
        canvas.setUndoManager(&undo);
        canvas.resize(800, 600);
        canvas.show();
        canvas.activateWindow();
        focus = focusWindow.enter(
            &document, canvas.screen(), [this] { ++exits; },
            [this](FocusContentView& view) {
                view.canvas()->setUndoManager(&undo);
                view.overlay()->fade().setClock([this] { return now; });
            });
        ASSERT_NE(focus, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(focus));
    }

    double now = 0;
    SermonDocument document{sermon()};
    UndoManager undo;
    MindMapCanvas canvas{&document};
    FocusWindow focusWindow;
    FocusContentView* focus = nullptr;
    int exits = 0;
};

TEST_F(FocusModeTest, ShowsTheSameTreeAloneOnTheWholeScreenWithTheKeyboard)
{
    EXPECT_EQ(focus->geometry(), canvas.screen()->geometry());
    EXPECT_TRUE(focus->windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(focus->canvas()->layoutState().cachedLayouts, canvas.layoutState().cachedLayouts);
    EXPECT_NE(focus->canvas()->controller(), canvas.controller());
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == focus->canvas(); }, 2000));
    EXPECT_EQ(focus->overlay()->text(), QStringLiteral("137 words \u00b7 2 min"));

    // Its own selection; its edits are steps of the one history.
    DocumentController& c = *focus->canvas()->controller();
    c.setSelectedNodeID(document.root()->children().at(0)->children().at(0)->id());
    EXPECT_NE(canvas.controller()->selectedNodeID(), c.selectedNodeID());
    QTest::keyClick(focus->canvas(), Qt::Key_Delete);
    EXPECT_EQ(document.root()->children().at(0)->children().size(), 1u);
    EXPECT_EQ(focus->overlay()->text(), QStringLiteral("132 words \u00b7 2 min"));
    EXPECT_TRUE(undo.canUndo());
    undo.undo();
    EXPECT_FALSE(undo.canUndo());
    EXPECT_EQ(document.root()->children().at(0)->children().size(), 2u);

    focusWindow.leave();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(focusWindow.window(), nullptr);
    for (QWidget* w : QApplication::topLevelWidgets())
        EXPECT_EQ(qobject_cast<FocusContentView*>(w), nullptr);
}

TEST_F(FocusModeTest, EscapeLeavesButFirstCancelsAnOpenEditorAndTheFocusKeyLeavesToo)
{
    MindMapCanvas* map = focus->canvas();
    map->setFocus();
    map->controller()->setSelectedNodeID(document.root()->children().at(0)->id());
    QTest::keyClick(map, Qt::Key_Return); // a new line in its editor
    ASSERT_TRUE(map->editorOverlay()->isOpen());
    QTest::keyClick(map->editorOverlay()->field(), Qt::Key_Escape);
    EXPECT_FALSE(map->editorOverlay()->isOpen());
    EXPECT_EQ(exits, 0);
    QTest::keyClick(map, Qt::Key_Escape);
    EXPECT_EQ(exits, 1);
    QTest::keySequence(focus, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F));
    EXPECT_EQ(exits, 2);
}

TEST_F(FocusModeTest, TheStatisticsLineHidesAfterThreeStillSecondsAndComesBackOnAMove)
{
    IdleFade& fade = focus->overlay()->fade();
    EXPECT_TRUE(fade.isVisible());
    now = 2.9;
    fade.check();
    EXPECT_TRUE(fade.isVisible());
    // A move restarts the time, one turn later.
    QTest::mouseMove(focus->canvas(), QPoint(300, 300));
    QCoreApplication::processEvents();
    now = 5.8;
    fade.check();
    EXPECT_TRUE(fade.isVisible());
    now = 5.9;
    fade.check();
    EXPECT_FALSE(fade.isVisible());
    QTest::mouseMove(focus->canvas(), QPoint(320, 310));
    QCoreApplication::processEvents();
    EXPECT_TRUE(fade.isVisible());
}

} // namespace
