#include "DeliveryViewFixture.h"

#include "delivery/DeliveryCanvas.h"
#include "delivery/DeliveryCounterBlock.h"
#include "delivery/DeliveryCues.h"
#include "delivery/DeliveryFinishBy.h"
#include "delivery/DeliveryLegibility.h"
#include "delivery/DeliveryPreferences.h"
#include "delivery/DeliveryRehearsal.h"
#include "delivery/DeliverySections.h"
#include "delivery/DeliveryTimekeeperWindow.h"
#include "delivery/DeliveryView.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "core/WordCount.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QDateTime>
#include <QDialog>
#include <QElapsedTimer>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>

#include <functional>

namespace {

QPalette makePalette(bool dark)
{
    QPalette p;
    const QColor window = dark ? QColor(0x1e, 0x1c, 0x22) : QColor(0xf3, 0xef, 0xe8);
    const QColor base = dark ? QColor(0x17, 0x16, 0x1a) : QColor(0xfd, 0xfb, 0xf7);
    const QColor text = dark ? QColor(0xec, 0xe6, 0xdc) : QColor(0x2b, 0x22, 0x1c);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Text, text);
    return p;
}

class DeliveryPulpitTest : public DeliveryViewFixture {
protected:
    void SetUp() override
    {
        DeliveryViewFixture::SetUp();
        QApplication::setPalette(makePalette(false));
    }
    void TearDown() override { QApplication::setPalette(makePalette(false)); }

    static QImage draw(DeliveryView& view)
    {
        QCoreApplication::processEvents();
        return view.grab().toImage();
    }
};

// ---- Each setting, off, draws the view exactly as without it ---------------------------------

TEST_F(DeliveryPulpitTest, EverySettingTurnedOffLeavesTheDrawingAsItWas)
{
    for (bool dark : {false, true}) {
        SCOPED_TRACE(dark ? "dark" : "light");
        QApplication::setPalette(makePalette(dark));
        auto view = makeView(sectionedSermon(4, 6, 12));
        const QImage plain = draw(*view);
        struct Row {
            const char* name;
            std::function<void()> on;
            std::function<void()> off;
            bool drawsWhenOn;
        };
        const Row rows[] = {
            {"large clock", [&] { preferences->setLargeClock(true); }, [&] { preferences->setLargeClock(false); },
             true},
            {"cues", [&] { preferences->setEndCues(true); }, [&] { preferences->setEndCues(false); }, false},
            {"finish by", [&] { view->setFinishBy(QTime(23, 59)); }, [&] { view->setFinishBy(std::nullopt); }, true},
            {"dimmed", [&] { press(view->canvas(), Qt::Key_B); }, [&] { press(view->canvas(), Qt::Key_B); }, true},
            {"timekeeper", [&] { view->setTimekeeperShown(true); }, [&] { view->setTimekeeperShown(false); }, false},
            {"rehearse", [&] { view->pulpitActions().back()->setChecked(true); },
             [&] { view->pulpitActions().back()->setChecked(false); }, false},
        };
        for (const Row& row : rows) {
            SCOPED_TRACE(row.name);
            row.on();
            EXPECT_EQ(draw(*view) != plain, row.drawsWhenOn);
            row.off();
            EXPECT_TRUE(draw(*view) == plain);
        }
    }
}

// ---- The large clock is legible from a step back ---------------------------------------------

TEST_F(DeliveryPulpitTest, ContrastIsMeasuredAsTheGuidelinesDo)
{
    using DeliveryLegibility::contrastRatio;
    EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21, 1e-9);
    EXPECT_NEAR(contrastRatio(Qt::white, Qt::white), 1, 1e-9);
    // Half-transparent black over white is the grey it shows as.
    EXPECT_NEAR(contrastRatio(QColor(0, 0, 0, 128), Qt::white), contrastRatio(QColor(127, 127, 127), Qt::white), 0.05);
    // The orange of five minutes left fails on a light page as drawn normally; made legible it passes.
    const QColor page(0xfd, 0xfb, 0xf7);
    EXPECT_LT(contrastRatio(QColor(255, 149, 0), page), 4.5);
    EXPECT_GE(contrastRatio(DeliveryLegibility::legible(QColor(255, 149, 0), page), page), 4.5);
}

TEST_F(DeliveryPulpitTest, LargeClockFiguresMeetContrastInLightAndDarkAndShowTheTimeOfDay)
{
    for (bool dark : {false, true}) {
        SCOPED_TRACE(dark ? "dark" : "light");
        QApplication::setPalette(makePalette(dark));
        auto view = makeView(sectionedSermon(3, 4, 10));
        DeliveryCounterBlock* block = view->counterBlock();
        const int normalHeight = block->height();
        EXPECT_FALSE(block->isClockRowVisible());
        preferences->setLargeClock(true);
        QCoreApplication::processEvents();
        EXPECT_TRUE(block->isClockRowVisible()); // the time of day, before the start
        for (QLabel* label : block->findChildren<QLabel*>()) {
            if (label->accessibleName() == QStringLiteral("Time remaining")) {
                EXPECT_GE(label->font().pixelSize(), 2 * 24);
            }
        }

        struct Row {
            const char* name;
            double advance; // seconds spoken, of 20 minutes
            bool pause;
        };
        const Row rows[] = {
            {"idle", 0, false},
            {"running", 60, false},
            {"five minutes left", 15 * 60, false},
            {"overrun", 21 * 60, false},
            {"paused in overrun", 21 * 60, true},
        };
        for (const Row& row : rows) {
            SCOPED_TRACE(row.name);
            view->timer()->stop();
            if (row.advance > 0) {
                view->timer()->start();
                clock->advance(row.advance);
                view->timer()->tick();
            }
            if (row.pause)
                view->timer()->pause();
            QCoreApplication::processEvents();
            int figures = 0;
            for (QLabel* label : block->findChildren<QLabel*>()) {
                if (label->isHidden() || label->text().isEmpty())
                    continue;
                ++figures;
                EXPECT_GE(DeliveryLegibility::contrastRatio(label->palette().color(QPalette::WindowText),
                                                            block->backgroundColor()),
                          4.5)
                    << label->text().toStdString();
            }
            EXPECT_GE(figures, 2);
        }
        EXPECT_GT(block->height(), normalHeight);
        preferences->setLargeClock(false);
    }
}

// ---- Cues before the end ---------------------------------------------------------------------

TEST_F(DeliveryPulpitTest, CuesComeOnceAsTheRunningTimePassesEachMark)
{
    struct Row {
        const char* name;
        int targetMinutes;
        bool enabled;
        std::vector<double> steps; // seconds the clock moves before each tick
        std::vector<int> expected;
    };
    const Row rows[] = {
        {"each mark once", 10, true, {290, 20, 150, 60, 60, 60}, {5, 2, 1}},
        {"off", 10, false, {290, 20, 200, 100}, {}},
        {"started below a mark", 3, true, {30, 70}, {2}},
        {"one long step passes two marks", 6, true, {270}, {5, 2}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        DeliveryTimer timer(row.targetMinutes, clock);
        DeliveryCues cues(&timer);
        cues.setMinutes({5, 2, 1});
        cues.setEnabled(row.enabled);
        std::vector<int> heard;
        QObject::connect(&cues, &DeliveryCues::cue, [&](int m) { heard.push_back(m); });
        timer.start();
        for (double step : row.steps) {
            clock->advance(step);
            timer.tick();
            // Pausing and resuming gives no second cue.
            timer.pause();
            timer.start();
        }
        EXPECT_EQ(heard, row.expected);
    }
}

TEST_F(DeliveryPulpitTest, CuesFollowTheirSettingAndLightTheTopBarWithoutASound)
{
    auto view = makeView(sectionedSermon(2, 3, 10), 6);
    EXPECT_FALSE(view->cues()->isEnabled());
    preferences->setEndCues(true);
    EXPECT_TRUE(view->cues()->isEnabled());
    EXPECT_EQ(view->cues()->minutes(), (std::vector<int>{5, 2, 1}));
    const QImage before = draw(*view);
    view->timer()->start();
    clock->advance(61);
    view->timer()->tick();
    waitFor([] { return false; }); // let the light rise
    const QImage lit = view->grab().toImage();
    const QRect bar(0, 0, view->width(), 39);
    EXPECT_NE(lit.copy(bar), before.copy(bar));
}

// ---- Finish by a time of day -----------------------------------------------------------------

TEST_F(DeliveryPulpitTest, TheFinishByTargetFollowsTheClockAndStaysOutOfTheFile)
{
    const QDateTime ten(QDate(2024, 5, 5), QTime(10, 0));
    const double tenOClock = ten.toMSecsSinceEpoch() / 1000.0;
    clock->set(tenOClock);
    auto view = makeView(sectionedSermon(2, 3, 10), 20);
    const int undoBefore = undo.canUndo();
    DeliveryTimer* timer = view->timer();
    const auto texts = [&] {
        QStringList out;
        for (QLabel* label : view->counterBlock()->findChildren<QLabel*>())
            if (!label->isHidden())
                out << label->text();
        return out.join(QLatin1Char('|'));
    };

    // The end time is what is fixed: idle, running and paused, the target is what is left of
    // the slot plus what was spoken, in whole minutes rounded down; "+5" stays added.
    struct Row {
        const char* name;
        double advance; // seconds the clock moves first
        std::function<void()> act;
        int target; // minutes, pills included
        double remaining; // seconds shown
    };
    const auto follow = [&] { view->followFinishBy(); }; // what the second's timer does
    const auto tick = [&] {
        timer->tick();
        view->followFinishBy();
    };
    const Row rows[] = {
        {"set at 10:00", 0, [&] { view->setFinishBy(QTime(10, 30)); }, 30, 30 * 60},
        {"idle, a minute later", 61, follow, 28, 28 * 60}, // 28:59 left, rounded down
        {"started at 10:01:01", 0, [&] { timer->start(); }, 28, 28 * 60},
        {"running, the target stands", 120, tick, 28, 26 * 60},
        {"paused", 0, [&] { timer->pause(); }, 28, 26 * 60},
        {"resumed five minutes later", 300, [&] { timer->start(); }, 23, 21 * 60}, // 21:59 left
        {"running again", 60, tick, 23, 20 * 60},
        {"five minutes more", 0, [&] { timer->addMinutes(5); }, 28, 25 * 60},
        {"paused again", 0, [&] { timer->pause(); }, 28, 25 * 60},
        {"paused a minute, the five kept", 60, follow, 27, 24 * 60},
        {"past the end", 20 * 60, follow, 7, 4 * 60}, // 3:00 spoken, 0:01 past: 2, and the five
        {"resumed past the end, not tomorrow's", 0, [&] { timer->start(); }, 7, 4 * 60},
        {"running past the end", 60, tick, 7, 3 * 60},
        {"stopped: tomorrow's, capped", 0, [&] { timer->stop(); }, 180, 180 * 60},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        clock->advance(row.advance);
        row.act();
        EXPECT_EQ(timer->targetSeconds(), row.target * 60.0);
        EXPECT_EQ(timer->remainingSeconds(), row.remaining);
    }
    EXPECT_TRUE(texts().contains(QStringLiteral("ends 10:30")));

    // Hours away, the target stops at the longest duration, and the counters and field say so.
    clock->set(tenOClock);
    view->setFinishBy(QTime(14, 0));
    EXPECT_EQ(timer->targetSeconds(), DeliveryFinishBy::maxMinutes * 60.0);
    EXPECT_TRUE(texts().contains(QStringLiteral("%1 min at most").arg(DeliveryFinishBy::maxMinutes)))
        << texts().toStdString();
    view->setFinishBy(QTime(12, 0));
    EXPECT_EQ(timer->targetSeconds(), 120 * 60.0);
    EXPECT_FALSE(texts().contains(QStringLiteral("at most")));
    QInputDialog* field = nullptr;
    QObject::connect(view.get(), &DeliveryView::finishByDialogShown, [&](QInputDialog* shown) { field = shown; });
    view->pulpitActions()[2]->trigger();
    ASSERT_NE(field, nullptr);
    struct Typed {
        const char* text;
        const char* says;
    };
    const Typed typed[] = {{"14:00", "stops at 180 min"}, {"10:45", "45 min"}, {"ten", "such as 11:42"}};
    for (const Typed& t : typed) {
        field->setTextValue(QString::fromUtf8(t.text));
        EXPECT_TRUE(field->labelText().contains(QString::fromUtf8(t.says))) << field->labelText().toStdString();
    }
    field->setTextValue(QStringLiteral("14:00"));
    field->accept();
    EXPECT_EQ(view->finishBy(), QTime(14, 0));
    EXPECT_EQ(timer->targetSeconds(), DeliveryFinishBy::maxMinutes * 60.0);

    view->setFinishBy(std::nullopt);
    EXPECT_EQ(timer->targetSeconds(), 20 * 60);
    EXPECT_FALSE(texts().contains(QStringLiteral("ends")));
    EXPECT_EQ(document->metadata().duration, 20);
    EXPECT_EQ(undo.canUndo(), undoBefore);

    // A time already past today is tomorrow's; anything but a time is nothing.
    EXPECT_NEAR(DeliveryFinishBy::deadline(QTime(9, 0), tenOClock) - tenOClock, 23 * 3600, 1);
    for (const char* text : {"", "10", "25:00", "ten", "10:3"})
        EXPECT_FALSE(DeliveryFinishBy::parse(QString::fromUtf8(text)).has_value()) << text;
    EXPECT_EQ(DeliveryFinishBy::parse(QStringLiteral(" 9:05 ")), QTime(9, 5));
}

// ---- The timekeeper's screen -----------------------------------------------------------------

TEST_F(DeliveryPulpitTest, TheTimekeepersScreenFollowsTheViewsOwnTimer)
{
    auto view = makeView(sectionedSermon(4, 6, 12), 10);
    view->setTimekeeperShown(true);
    DeliveryTimekeeperWindow* keeper = view->timekeeperWindow();
    ASSERT_NE(keeper, nullptr);
    EXPECT_TRUE(keeper->isWindow());
    EXPECT_TRUE(keeper->windowFlags() & Qt::FramelessWindowHint);
    EXPECT_TRUE(keeper->findChildren<DeliveryTimer*>().isEmpty()); // no clock of its own

    view->timer()->start();
    clock->advance(125);
    view->timer()->tick();
    EXPECT_EQ(keeper->remainingText(), view->timer()->remainingText());
    EXPECT_TRUE(keeper->overrunText().isEmpty());
    clock->advance(10 * 60);
    view->timer()->tick();
    EXPECT_EQ(QChar(0x2212) + keeper->remainingText(), view->timer()->remainingText());
    EXPECT_FALSE(keeper->overrunText().isEmpty());

    // The section is the reader's; drift shows when the reader lags the runner.
    const auto sections = DeliverySections::inOrder(*view->canvasState()->layout());
    ASSERT_EQ(sections.size(), 4u);
    view->canvasState()->setScrollY(sections[1].y - 100);
    EXPECT_EQ(keeper->sectionText(), sections[1].text);
    EXPECT_EQ(keeper->drift(), DeliveryTimelineRuler::Drift::farBehind);

    keeper->close();
    QCoreApplication::processEvents();
    EXPECT_FALSE(view->pulpitActions()[3]->isChecked());

    // A page that fits cannot bring a heading to the reading line: the clock's section shows.
    view.reset();
    auto shortView = makeView(sectionedSermon(3, 1, 20), 9);
    DeliveryCanvasState* state = shortView->canvasState();
    ASSERT_EQ(state->maxScrollY(), 0);
    const auto shortSections = DeliverySections::inOrder(*state->layout());
    ASSERT_EQ(shortSections.size(), 3u);
    shortView->setTimekeeperShown(true);
    keeper = shortView->timekeeperWindow();
    struct Row {
        double spoken; // seconds of 9 minutes, 3 for each section's line; below 0 idle
        int section; // -1: above the first
    };
    const Row rows[] = {{-1, 0}, {0, -1}, {170, 0}, {190, 1}, {370, 2}, {600, 2}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.spoken);
        shortView->timer()->stop();
        if (row.spoken >= 0) {
            shortView->timer()->start();
            clock->advance(row.spoken);
            shortView->timer()->tick();
        }
        EXPECT_EQ(keeper->sectionText().toStdString(),
                  row.section < 0 ? std::string() : shortSections[row.section].text.toStdString());
        EXPECT_EQ(keeper->drift(), DeliveryTimelineRuler::Drift::calm);
    }
}

// ---- Presenter remotes -----------------------------------------------------------------------

TEST_F(DeliveryPulpitTest, RemoteKeysReachTheirCommands)
{
    auto view = makeView(sectionedSermon(5, 8, 20));
    DeliveryCanvas* canvas = view->canvas();
    DeliveryCanvasState* state = view->canvasState();
    const auto sections = DeliverySections::inOrder(*state->layout());
    ASSERT_EQ(sections.size(), 5u);
    auto at = [&](int i) { return state->clampScroll(sections[i].y - 100); };

    struct Row {
        int key;
        double expectedScroll;
    };
    const Row rows[] = {
        {Qt::Key_Right, at(0)}, {Qt::Key_Right, at(1)}, {Qt::Key_Right, at(2)},
        {Qt::Key_Left, at(1)},  {Qt::Key_Left, at(0)},  {Qt::Key_Left, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.key);
        press(canvas, row.key);
        finishScroll(canvas);
        EXPECT_DOUBLE_EQ(state->scrollY(), row.expectedScroll);
    }

    press(canvas, Qt::Key_B);
    EXPECT_TRUE(view->isDimmed());
    press(canvas, Qt::Key_Period);
    EXPECT_FALSE(view->isDimmed());
    press(canvas, Qt::Key_F5);
    EXPECT_EQ(view->timer()->state(), TimerState::running);
    press(canvas, Qt::Key_F5); // starts; never pauses
    EXPECT_EQ(view->timer()->state(), TimerState::running);

    preferences->setPresenterKeys(false);
    press(canvas, Qt::Key_Right);
    finishScroll(canvas);
    EXPECT_DOUBLE_EQ(state->scrollY(), 0);
    press(canvas, Qt::Key_B);
    EXPECT_FALSE(view->isDimmed());
    preferences->setPresenterKeys(true); // stored: the next view reads it

    // A page that fits cannot move: the keys name the section the timekeeper shows instead.
    view.reset();
    auto shortView = makeView(sectionedSermon(3, 1, 5));
    shortView->setTimekeeperShown(true);
    const auto shortSections = DeliverySections::inOrder(*shortView->canvasState()->layout());
    ASSERT_EQ(shortSections.size(), 3u);
    struct ShortRow {
        int key;
        int section; // -1: above the first
    };
    const ShortRow shortRows[] = {
        {Qt::Key_Right, 1}, {Qt::Key_Right, 2}, {Qt::Key_Right, 2}, {Qt::Key_Left, 1},
        {Qt::Key_Left, 0},  {Qt::Key_Left, -1}, {Qt::Key_Left, -1}, {Qt::Key_Right, 0},
    };
    for (const ShortRow& row : shortRows) {
        SCOPED_TRACE(row.section);
        press(shortView->canvas(), row.key);
        EXPECT_EQ(shortView->timekeeperWindow()->sectionText().toStdString(),
                  row.section < 0 ? std::string() : shortSections[row.section].text.toStdString());
        EXPECT_EQ(shortView->canvasState()->scrollY(), 0);
    }
    // Stopped, the named section is forgotten: idle, the nearest to the reading line shows.
    press(shortView->canvas(), Qt::Key_Right);
    shortView->timer()->start();
    shortView->timer()->stop();
    EXPECT_EQ(shortView->timekeeperWindow()->sectionText(), shortSections[0].text);
}

// ---- Rehearsal -------------------------------------------------------------------------------

TEST_F(DeliveryPulpitTest, RehearsalRecordsSectionsAndOffersTheMeasuredPace)
{
    enum class Move { scroll, keys, none };
    struct Row {
        const char* name;
        int leaves, words;
        Move move; // how the reader goes on to each section
    };
    const Row rows[] = {
        {"scrolled to each heading", 4, 30, Move::scroll},
        {"a page that fits, named with the remote", 1, 20, Move::keys},
        {"a page that fits, where the clock says", 1, 20, Move::none},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto view = makeView(sectionedSermon(3, row.leaves, row.words), 10);
        DeliveryCanvasState* state = view->canvasState();
        ASSERT_EQ(state->maxScrollY() > 0, row.move == Move::scroll);
        const auto sections = DeliverySections::inOrder(*state->layout());
        ASSERT_EQ(sections.size(), 3u);
        QWidget* sheet = nullptr;
        QObject::connect(view.get(), &DeliveryView::rehearsalSheetShown, [&](QWidget* shown) { sheet = shown; });

        view->pulpitActions().back()->setChecked(true);
        ASSERT_TRUE(view->rehearsal()->isRecording());
        view->timer()->start();
        const double spent[] = {120, 150, 90};
        if (row.move == Move::none) {
            for (int step = 0; step < 60; ++step) {
                clock->advance(10);
                view->timer()->tick();
            }
        } else {
            for (int i = 0; i < 3; ++i) {
                if (row.move == Move::scroll)
                    state->setScrollY(sections[i].y - 100);
                else
                    press(view->canvas(), Qt::Key_Right);
                clock->advance(spent[i]);
                view->timer()->tick();
            }
        }
        view->timer()->stop();

        const auto& marks = view->rehearsal()->marks();
        ASSERT_EQ(marks.size(), 4u); // the lines under the title, then each section
        EXPECT_TRUE(marks[0].id.isNull());
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(marks[i + 1].id, sections[i].id);
            EXPECT_EQ(marks[i + 1].text, sections[i].text);
        }
        const auto results = view->rehearsal()->results(*document->root(), preferences->wpm());
        ASSERT_EQ(results.size(), 4u);
        double seconds = results[0].realSeconds;
        for (int i = 0; i < 3; ++i) {
            seconds += results[i + 1].realSeconds;
            if (row.move == Move::none)
                EXPECT_GT(results[i + 1].realSeconds, 0);
            else
                EXPECT_DOUBLE_EQ(results[i + 1].realSeconds, spent[i]);
        }
        const int words = WordCount::wordCount(*document->root()->children()[0]);
        EXPECT_EQ(results[1].words, words);
        EXPECT_DOUBLE_EQ(results[1].estimatedSeconds, words * 60.0 / preferences->wpm());
        // Three sections' words over the time it all took.
        const int measured = DeliveryRehearsal::measuredWPM(results);
        EXPECT_EQ(measured, int(std::lround(3 * words * 60.0 / seconds)));

        // The sheet offers the pace; nothing changes until it is taken, and the file never.
        ASSERT_NE(sheet, nullptr);
        const int paceBefore = preferences->wpm();
        auto* use = sheet->findChild<QPushButton*>(QStringLiteral("useMeasuredPace"));
        ASSERT_NE(use, nullptr);
        EXPECT_NE(measured, paceBefore);
        use->click();
        EXPECT_EQ(preferences->wpm(), measured);
        EXPECT_FALSE(undo.canUndo());
        EXPECT_EQ(document->metadata().duration, 10);
    }
}

} // namespace
