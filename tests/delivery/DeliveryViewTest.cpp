#include "DeliveryViewFixture.h"

#include "delivery/DeliveryCanvas.h"
#include "delivery/DeliveryCounterBlock.h"
#include "delivery/DeliveryPreferences.h"
#include "delivery/DeliveryRunnerStrip.h"
#include "delivery/DeliveryTimelineRuler.h"
#include "delivery/DeliveryTopBar.h"
#include "delivery/DeliveryView.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QSettings>
#include <QSlider>
#include <QTemporaryDir>
#include <QToolBar>
#include <QWheelEvent>

namespace {

using DeliveryViewTest = DeliveryViewFixture;

TEST_F(DeliveryViewTest, SpaceAndEscapeDriveTheTimer)
{
    auto view = makeView(sectionedSermon(4, 8, 20));
    DeliveryCanvas* canvas = view->canvas();
    DeliveryTimer* timer = view->timer();
    press(canvas, Qt::Key_Space);
    EXPECT_EQ(timer->state(), TimerState::running);
    EXPECT_TRUE(canvas->isFrameTicking());
    press(canvas, Qt::Key_Space);
    EXPECT_EQ(timer->state(), TimerState::paused);
    EXPECT_FALSE(canvas->isFrameTicking()); // paused, the page and runner rest
    press(canvas, Qt::Key_Space);
    press(canvas, Qt::Key_Escape);
    EXPECT_EQ(timer->state(), TimerState::idle);
    EXPECT_FALSE(canvas->isFrameTicking());
}

TEST_F(DeliveryViewTest, FullScreenAsAskedFromStartToStopOrLeavingTheView)
{
    QWidget host;
    host.resize(1000, 700);
    host.show();
    auto view = makeView(sectionedSermon(2, 3, 5));
    view->setParent(&host);
    view->show();
    ASSERT_TRUE(preferences->setFullscreen(true));

    press(view->canvas(), Qt::Key_Space);
    EXPECT_TRUE(host.isFullScreen());
    press(view->canvas(), Qt::Key_Escape);
    EXPECT_FALSE(host.isFullScreen());

    press(view->canvas(), Qt::Key_Space);
    ASSERT_TRUE(host.isFullScreen());
    view.reset();
    EXPECT_FALSE(host.isFullScreen());

    // A window the user made full screen stays so when an idle view goes.
    host.showFullScreen();
    auto idle = makeView(sectionedSermon(2, 3, 5));
    idle->setParent(&host);
    ASSERT_TRUE(preferences->fullscreen());
    idle.reset();
    EXPECT_TRUE(host.isFullScreen());
}

TEST_F(DeliveryViewTest, ScrollKeysUnfollowAndAnimate)
{
    auto view = makeView(sectionedSermon(6, 10, 20));
    DeliveryCanvas* canvas = view->canvas();
    DeliveryCanvasState* state = view->canvasState();
    const double page = std::max(state->viewportHeight() - 60, 100.0);
    ASSERT_GT(state->maxScrollY(), 2 * page);

    struct Row {
        int key;
        double from;
        double expected;
    };
    const double end = state->maxScrollY();
    const Row rows[] = {
        {Qt::Key_PageDown, 0, page},      {Qt::Key_PageDown, end - 10, end}, // clamped at the end
        {Qt::Key_PageUp, 2 * page, page}, {Qt::Key_PageUp, 10, 0},           {Qt::Key_End, 0, end},
        {Qt::Key_Home, end, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.key);
        state->setScrollY(row.from);
        state->setFollowRunner(true);
        press(canvas, row.key);
        EXPECT_FALSE(state->followRunner());
        finishScroll(canvas);
        EXPECT_DOUBLE_EQ(state->scrollY(), row.expected);
    }
}

TEST_F(DeliveryViewTest, ReturnTogglesFollowingButNotFromTheDurationField)
{
    auto view = makeView(sectionedSermon(2, 4, 10));
    DeliveryCanvasState* state = view->canvasState();
    press(view->canvas(), Qt::Key_Return);
    EXPECT_TRUE(state->followRunner());
    press(view->canvas(), Qt::Key_Return);
    EXPECT_FALSE(state->followRunner());

    view->counterBlock()->beginEditing();
    auto* field = view->counterBlock()->findChild<QLineEdit*>();
    field->setText(QStringLiteral("25"));
    press(field, Qt::Key_Return);
    EXPECT_FALSE(state->followRunner());
    EXPECT_EQ(document->metadata().duration, 25);
}

TEST_F(DeliveryViewTest, EscapeAtTheViewStopsOnlyARunningTimer)
{
    auto view = makeView(sectionedSermon(2, 4, 10));
    view->timer()->start();
    press(view.get(), Qt::Key_Escape);
    EXPECT_EQ(view->timer()->state(), TimerState::idle);
}

TEST_F(DeliveryViewTest, FrameTickLeavesTheTextAloneUnlessFollowing)
{
    auto view = makeView(sectionedSermon(6, 10, 20));
    DeliveryCanvas* canvas = view->canvas();
    DeliveryCanvasState* state = view->canvasState();
    view->timer()->start();
    canvas->repaint();
    const int before = canvas->textLayerRenderCount();
    for (int i = 0; i < 5; ++i) {
        clock->advance(1.0 / 60);
        canvas->frameTick();
        canvas->repaint();
    }
    EXPECT_EQ(canvas->textLayerRenderCount(), before);

    // Following, the page moves with the runner, which stands in the window's middle.
    clock->advance(600); // half of the 20 minutes
    state->setFollowRunner(true);
    canvas->frameTick();
    canvas->repaint();
    EXPECT_GT(canvas->textLayerRenderCount(), before);
    const double y = yForFraction(*state->layout(), view->timer()->progress());
    EXPECT_DOUBLE_EQ(state->scrollY(), state->clampScroll(y - state->viewportHeight() * 0.5));
}

TEST_F(DeliveryViewTest, SeekMovesThePageNeverTheTimer)
{
    auto view = makeView(sectionedSermon(6, 10, 20));
    DeliveryCanvasState* state = view->canvasState();
    view->timer()->start();
    clock->advance(30);
    state->setFollowRunner(true);
    const double progress = view->timer()->progress();
    view->canvas()->seek(0.5);
    EXPECT_FALSE(state->followRunner());
    EXPECT_DOUBLE_EQ(state->scrollY(), state->clampScroll(yForFraction(*state->layout(), 0.5) - 100));
    EXPECT_DOUBLE_EQ(view->timer()->progress(), progress);

    // The wheel also unfollows, and never scrolls past the ends.
    state->setFollowRunner(true);
    view->canvas()->handleScrollDelta(1e6);
    EXPECT_FALSE(state->followRunner());
    EXPECT_EQ(state->scrollY(), 0);
}

TEST_F(DeliveryViewTest, TargetFromTheDocumentOrTheEstimate)
{
    // 1300 words at the default 130 a minute: 10 minutes.
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    for (int i = 0; i < 13; ++i)
        root->addChild(wordsText(100));
    const int titleWords = 1;
    root->children()[0]->setText(wordsText(100 - titleWords));
    auto view = makeView(root, std::nullopt);
    EXPECT_EQ(view->timer()->remainingText(), "10:00");
    preferences->setWPM(100);
    EXPECT_EQ(view->timer()->remainingText(), "15:00");

    auto fixed = makeView(sectionedSermon(2, 2, 5), 35);
    EXPECT_EQ(fixed->timer()->remainingText(), "35:00");
    preferences->setWPM(50);
    EXPECT_EQ(fixed->timer()->remainingText(), "35:00");
}

TEST_F(DeliveryViewTest, DurationIsWrittenAsOneUndoStep)
{
    auto view = makeView(sectionedSermon(2, 2, 5), 20);
    view->onDurationChanged(20); // the same value: no step
    EXPECT_FALSE(undo.canUndo());
    view->onDurationChanged(40);
    EXPECT_EQ(document->metadata().duration, 40);
    ASSERT_TRUE(undo.canUndo());
    undo.undo();
    EXPECT_EQ(document->metadata().duration, 20);
    EXPECT_FALSE(undo.canUndo());
    // The view shows what the document now holds, without leaving the mode.
    EXPECT_EQ(view->timer()->remainingText(), "20:00");
    undo.redo();
    EXPECT_EQ(view->timer()->remainingText(), "40:00");
}

TEST_F(DeliveryViewTest, MaxTextWidthFollowsTheWindow)
{
    const std::pair<double, double> rows[] = {{0, 1000},    {1000, 850}, {900, 750}, {1150, 1000},
                                              {1500, 1000}, {560, 400},  {1049, 850}};
    for (const auto& [available, expected] : rows)
        EXPECT_EQ(DeliveryView::maxTextWidth(available), expected) << available;
}

TEST_F(DeliveryViewTest, TheViewStaysWideEnoughForTheColumn)
{
    auto view = makeView(sectionedSermon(2, 2, 5));
    EXPECT_EQ(view->minimumWidth(), 850);
    preferences->setTextWidth(1000);
    EXPECT_EQ(view->minimumWidth(), 1150);
    EXPECT_GE(view->width(), 1150);
}

TEST_F(DeliveryViewTest, FullScreenHidesTheWindowsToolbarsUntilItEnds)
{
    QMainWindow host;
    auto* toolbar = host.addToolBar(QStringLiteral("Document"));
    toolbar->addAction(QStringLiteral("Settings"));
    host.resize(1000, 700);
    host.show();
    auto view = makeView(sectionedSermon(2, 3, 5));
    host.setCentralWidget(view.release());
    auto* shown = static_cast<DeliveryView*>(host.centralWidget());
    QCoreApplication::processEvents(); // the view learns its new window a turn later
    ASSERT_TRUE(preferences->setFullscreen(true));

    press(shown->canvas(), Qt::Key_Space);
    ASSERT_TRUE(host.isFullScreen());
    EXPECT_FALSE(toolbar->isVisible());
    press(shown->canvas(), Qt::Key_Escape);
    EXPECT_FALSE(host.isFullScreen());
    EXPECT_TRUE(toolbar->isVisible());

    // Left by other means than the view's own: the toolbar still comes back.
    press(shown->canvas(), Qt::Key_Space);
    ASSERT_FALSE(toolbar->isVisible());
    host.showNormal();
    EXPECT_TRUE(waitFor([&] { return toolbar->isVisible(); }));
    press(shown->canvas(), Qt::Key_Escape);
}

TEST_F(DeliveryViewTest, TheWheelScrollsThePageFromAnywhereInTheView)
{
    auto view = makeView(sectionedSermon(6, 10, 20));
    DeliveryCanvasState* state = view->canvasState();
    const double fontSize = preferences->fontSize();
    auto turn = [&](QWidget* target) {
        QWheelEvent wheel(QPointF(5, 5), target->mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(target, &wheel);
    };
    turn(view->canvas());
    const double afterCanvas = state->scrollY();
    EXPECT_GT(afterCanvas, 0);
    // Over a settings slider the page moves and the setting stays.
    QSlider* slider = view->findChild<QSlider*>();
    ASSERT_NE(slider, nullptr);
    turn(slider);
    EXPECT_GT(state->scrollY(), afterCanvas);
    EXPECT_EQ(preferences->fontSize(), fontSize);
    // Over the ruler too.
    const double afterSlider = state->scrollY();
    turn(view->topBar()->ruler());
    EXPECT_GT(state->scrollY(), afterSlider);
}

TEST_F(DeliveryViewTest, BadStoredPreferencesFallBackToDefaults)
{
    {
        QSettings settings(dir.filePath(QStringLiteral("prefs.ini")), QSettings::IniFormat);
        settings.setValue(QStringLiteral("deliveryFontSize"), QStringLiteral("huge"));
        settings.setValue(QStringLiteral("deliveryLineSpacing"), 2.5);
        settings.setValue(QStringLiteral("deliveryTextWidth"), -4);
        settings.setValue(QStringLiteral("deliveryWPM"), QStringLiteral("fast"));
        settings.setValue(QStringLiteral("deliveryFullscreen"), QStringLiteral("maybe"));
        settings.setValue(QStringLiteral("deliveryLargeClock"), QStringLiteral("maybe"));
        settings.setValue(QStringLiteral("deliveryEndCues"), 7);
        settings.setValue(QStringLiteral("deliveryPresenterKeys"), QStringLiteral("no way"));
        settings.setValue(QStringLiteral("deliveryCueMinutes"), QStringLiteral("5,soon,1"));
    }
    {
        // A fractional size reads as a whole one, the page's fonts being whole pixels.
        QSettings other(dir.filePath(QStringLiteral("other.ini")), QSettings::IniFormat);
        other.setValue(QStringLiteral("deliveryFontSize"), 17.6);
        other.sync();
        DeliveryPreferences fractional(std::make_unique<QSettings>(other.fileName(), QSettings::IniFormat));
        EXPECT_EQ(fractional.fontSize(), 18);
    }
    auto prefs = makePreferences();
    EXPECT_EQ(prefs->fontSize(), 15);
    EXPECT_EQ(prefs->lineSpacing(), 2.5);
    EXPECT_EQ(prefs->textWidth(), 700);
    EXPECT_EQ(prefs->wpm(), 130);
    EXPECT_FALSE(prefs->fullscreen());
    EXPECT_FALSE(prefs->largeClock());
    EXPECT_FALSE(prefs->endCues());
    EXPECT_TRUE(prefs->presenterKeys());
    EXPECT_EQ(prefs->cueMinutes(), DeliveryPreferences::defaultCueMinutes());
    // Cue minutes are kept largest first, each once; a list with nothing usable changes nothing.
    EXPECT_TRUE(prefs->setCueMinutes({1, 3, 3, 10}));
    EXPECT_EQ(makePreferences()->cueMinutes(), (std::vector<int>{10, 3, 1}));
    EXPECT_FALSE(prefs->setCueMinutes({0}));
    EXPECT_TRUE(prefs->setFullscreen(true));
    EXPECT_FALSE(prefs->setFullscreen(true));
    EXPECT_TRUE(makePreferences()->fullscreen());
}

} // namespace

TEST_F(DeliveryViewTest, RunnerDotHangsBelowTheRulerWhole)
{
    auto view = makeView(sectionedSermon(4, 8, 20));
    DeliveryRunnerStrip* strip = view->runnerStrip();
    QWidget* ruler = view->topBar()->ruler();
    const QPoint rulerOrigin = ruler->mapTo(view.get(), QPoint(0, 0));
    EXPECT_EQ(strip->geometry(), QRect(rulerOrigin.x() - 4, rulerOrigin.y() + 34, ruler->width() + 8, 12));

    auto redBelowTheRow = [&](double progressX) {
        const QImage image = view->grab().toImage();
        const int x = int(progressX);
        const int y = rulerOrigin.y() + ruler->height() + 2; // under the ruler's row and rule
        const QColor c = image.pixelColor(x, y);
        return c.red() > 180 && c.green() < 120 && c.blue() < 120;
    };
    const double quarter = rulerOrigin.x() + ruler->width() * 0.25;
    EXPECT_FALSE(redBelowTheRow(quarter)); // idle: no runner at all

    view->timer()->start();
    clock->advance(view->timer()->targetSeconds() / 4);
    EXPECT_NEAR(strip->mapTo(view.get(), strip->dotCentre().toPoint()).x(), quarter, 1.5);
    EXPECT_TRUE(redBelowTheRow(quarter));

    // The strip takes no clicks: the page beneath still gets them.
    EXPECT_TRUE(strip->testAttribute(Qt::WA_TransparentForMouseEvents));

    // It follows the ruler when the window narrows.
    view->resize(800, 700);
    QCoreApplication::processEvents();
    EXPECT_EQ(strip->width(), ruler->width() + 8);
}
