#include "DeliveryTestSupport.h"
#include "MarkerColours.h"

#include "delivery/DeliveryAppearance.h"
#include "delivery/DeliveryCanvasState.h"
#include "delivery/DeliveryCounterBlock.h"
#include "delivery/DeliveryText.h"
#include "delivery/DeliveryTimelineRuler.h"
#include "delivery/DeliveryTimer.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QRegion>

namespace {

class DeliveryControlsTest : public ::testing::Test {
protected:
    void SetUp() override { ensureApplication(); }
};

TEST_F(DeliveryControlsTest, DurationFieldParsing)
{
    struct Row {
        const char* text;
        std::optional<int> minutes;
    };
    const Row rows[] = {
        {"45", 45},          {"45:30", 46},           {"45:29", 45},         {":30", 30},
        {"12:30", 13},       {"abc", std::nullopt},   {"", std::nullopt},    {":", std::nullopt},
        {"0", std::nullopt}, {"1:2:3", std::nullopt}, {"5:x", std::nullopt}, {"-3", std::nullopt},
    };
    for (const Row& row : rows)
        EXPECT_EQ(DeliveryCounterBlock::parseDuration(QString::fromLatin1(row.text)), row.minutes) << row.text;
}

TEST_F(DeliveryControlsTest, CommittingTheFieldSetsTargetAndReportsIt)
{
    auto clock = std::make_shared<ManualDeliveryClock>();
    DeliveryTimer timer(30, clock);
    DeliveryCounterBlock block(&timer);
    std::vector<int> durations;
    int ended = 0;
    QObject::connect(&block, &DeliveryCounterBlock::durationChanged, [&](int m) { durations.push_back(m); });
    QObject::connect(&block, &DeliveryCounterBlock::editingEnded, [&] { ++ended; });

    block.tapRemaining(); // idle: edits
    ASSERT_TRUE(block.isEditingDuration());
    EXPECT_EQ(block.editText(), "30");
    block.findChild<QLineEdit*>()->setText(QStringLiteral("45"));
    block.commitEditing();
    EXPECT_FALSE(block.isEditingDuration());
    EXPECT_EQ(timer.plannedTargetSeconds(), 2700);
    EXPECT_EQ(timer.remainingSeconds(), 2700);
    EXPECT_EQ(durations, std::vector<int>{45});
    EXPECT_EQ(ended, 1);

    // A bad entry closes the field and changes nothing.
    block.beginEditing();
    block.findChild<QLineEdit*>()->setText(QStringLiteral("1:2:3"));
    block.commitEditing();
    EXPECT_EQ(timer.plannedTargetSeconds(), 2700);
    EXPECT_EQ(durations.size(), 1u);
    EXPECT_EQ(ended, 2);

    // Cancelling ends editing without touching the timer.
    block.beginEditing();
    block.findChild<QLineEdit*>()->setText(QStringLiteral("10"));
    block.cancelEditing();
    EXPECT_EQ(timer.plannedTargetSeconds(), 2700);
    EXPECT_EQ(ended, 3);
}

TEST_F(DeliveryControlsTest, TheTimeIsTappedByALeftClickAndTheFieldOutlivesAWindowSwitch)
{
    auto clock = std::make_shared<ManualDeliveryClock>();
    DeliveryTimer timer(30, clock);
    DeliveryCounterBlock block(&timer);
    block.show();
    EXPECT_EQ(block.width(), DeliveryCounterBlock::blockWidth);
    auto* remaining = block.findChild<QLabel*>();
    ASSERT_NE(remaining, nullptr);
    auto mouse = [&](QEvent::Type type, Qt::MouseButton button) {
        QMouseEvent event(type, QPointF(3, 3), remaining->mapToGlobal(QPointF(3, 3)), button,
                          type == QEvent::MouseButtonPress ? button : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(remaining, &event);
    };
    mouse(QEvent::MouseButtonPress, Qt::RightButton);
    mouse(QEvent::MouseButtonRelease, Qt::RightButton);
    EXPECT_FALSE(block.isEditingDuration());
    mouse(QEvent::MouseButtonPress, Qt::LeftButton);
    EXPECT_FALSE(block.isEditingDuration()); // not before the button comes up
    mouse(QEvent::MouseButtonRelease, Qt::LeftButton);
    ASSERT_TRUE(block.isEditingDuration());

    // Another window taking the keyboard leaves the edit open; a focus move within commits it.
    auto* field = block.findChild<QLineEdit*>();
    field->setText(QStringLiteral("40"));
    QFocusEvent away(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(field, &away);
    QCoreApplication::processEvents();
    EXPECT_TRUE(block.isEditingDuration());
    QFocusEvent within(QEvent::FocusOut, Qt::MouseFocusReason);
    QApplication::sendEvent(field, &within);
    QCoreApplication::processEvents();
    EXPECT_FALSE(block.isEditingDuration());
    EXPECT_EQ(timer.plannedTargetSeconds(), 2400);

    // The block keeps its width as rows come and go.
    timer.start();
    block.tapRemaining();
    EXPECT_EQ(block.width(), DeliveryCounterBlock::blockWidth);
}

TEST_F(DeliveryControlsTest, PillsOnlyWhileTheTimerRuns)
{
    auto clock = std::make_shared<ManualDeliveryClock>();
    DeliveryTimer timer(30, clock);
    DeliveryCounterBlock block(&timer);
    EXPECT_FALSE(block.isTotalRowVisible()); // one row before the first start

    timer.start();
    EXPECT_TRUE(block.isTotalRowVisible());
    block.tapRemaining(); // running: pills, never the field
    EXPECT_FALSE(block.isEditingDuration());
    EXPECT_TRUE(block.isPillsRowVisible());
    block.addMinutes(10);
    EXPECT_FALSE(block.showPills());
    EXPECT_EQ(DeliveryCounterBlock::extraMinutes(timer), 10);
    EXPECT_EQ(timer.plannedTargetSeconds(), 1800);

    block.tapRemaining();
    timer.stop();
    EXPECT_FALSE(block.showPills());
    EXPECT_EQ(DeliveryCounterBlock::extraMinutes(timer), 0);
    EXPECT_FALSE(block.isTotalRowVisible());
}

TEST_F(DeliveryControlsTest, RemainingColourThresholds)
{
    using namespace DeliveryAppearance;
    using namespace Look;
    struct Row {
        double seconds;
        TimerState state;
        QColor expected;
    };
    const Row rows[] = {
        {301, TimerState::running, primary()}, {300, TimerState::running, orange()},
        {0.5, TimerState::running, orange()},  {0, TimerState::running, red()},
        {-90, TimerState::running, red()},     {-90, TimerState::paused, withAlpha(red(), 0.45)},
        {1000, TimerState::idle, primary()},
    };
    for (const Row& row : rows)
        EXPECT_EQ(DeliveryCounterBlock::remainingColor(row.seconds, row.state), row.expected) << row.seconds;
}

TEST_F(DeliveryControlsTest, DriftThresholds)
{
    using Drift = DeliveryTimelineRuler::Drift;
    const std::pair<double, Drift> rows[] = {
        {-600, Drift::calm}, // reading ahead never warns
        {0, Drift::calm},     {119.9, Drift::calm},   {120, Drift::behind},
        {180, Drift::behind}, {239.9, Drift::behind}, {240, Drift::farBehind},
    };
    for (const auto& [seconds, level] : rows)
        EXPECT_EQ(DeliveryTimelineRuler::driftLevel(seconds), level) << seconds;
    // Drift is signed seconds of the whole target: three minutes behind in a 30 minute sermon.
    EXPECT_NEAR(DeliveryTimelineRuler::driftSeconds(0.5, 0.4, 1800), 180, 1e-9);
    EXPECT_NEAR(DeliveryTimelineRuler::driftSeconds(0.4, 0.5, 1800), -180, 1e-9);
    EXPECT_NEAR(DeliveryTimelineRuler::driftSeconds(0.5, 0.0, 0), 0.5, 1e-12); // target of at least 1
}

TEST_F(DeliveryControlsTest, RulerTickSetsByTarget)
{
    using Ticks = DeliveryTimelineRuler::Ticks;
    auto tens = [](int total, int skipEvery) {
        std::vector<int> out;
        for (int q = 10; q <= total; q += 10)
            if (q % skipEvery != 0)
                out.push_back(q);
        return out;
    };
    struct Row {
        int minutes;
        std::vector<int> minuteTicks, fiveMinuteTicks, figures;
    };
    const Row rows[] = {
        {4, {60, 120, 180}, {}, {60, 120, 180}},
        {5, {60, 120, 180, 240}, {}, {}}, // the one figure candidate equals the end
        {10, {60, 120, 180, 240, 360, 420, 480, 540}, {300}, {300}},
        {30, {}, {300, 600, 900, 1200, 1500}, {300, 600, 900, 1200, 1500}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.minutes);
        const int total = row.minutes * 60;
        const Ticks ticks = DeliveryTimelineRuler::ticks(total, 900, 2);
        EXPECT_EQ(ticks.tenSeconds, tens(total, 60));
        if (row.minutes == 30) {
            // Minute ticks: every minute that isn't a multiple of five.
            std::vector<int> expected;
            for (int q = 60; q < total; q += 60)
                if (q % 300 != 0)
                    expected.push_back(q);
            EXPECT_EQ(ticks.minutes, expected);
        } else {
            EXPECT_EQ(ticks.minutes, row.minuteTicks);
        }
        EXPECT_EQ(ticks.fiveMinutes, row.fiveMinuteTicks);
        EXPECT_EQ(DeliveryTimelineRuler::minuteFigureSeconds(total), row.figures);
    }
    // Too dense to tell apart: a 30 minute target on a narrow ruler at scale 1 drops the
    // ten-second ticks.
    EXPECT_TRUE(DeliveryTimelineRuler::ticks(1800, 300, 1).tenSeconds.empty());
    EXPECT_FALSE(DeliveryTimelineRuler::ticks(1800, 300, 1).minutes.empty());
}

TEST_F(DeliveryControlsTest, SnapLandsOnPixelCentresInsideTheRuler)
{
    EXPECT_DOUBLE_EQ(DeliveryTimelineRuler::snap(10.3, 1, 900, 2), 10.75);
    EXPECT_DOUBLE_EQ(DeliveryTimelineRuler::snap(0, 1.2, 900, 2), 0.6);
    EXPECT_DOUBLE_EQ(DeliveryTimelineRuler::snap(900, 1.2, 900, 2), 899.4);
}

TEST_F(DeliveryControlsTest, PageTextKeepsTheMarkersColours)
{
    for (const MarkerColour& m : markerColours()) {
        const QFont font = DeliveryText::makeFont(15, QFont::Normal);
        QImage image(QSize(40, 40), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        DeliveryText::draw(painter, m.marker, font, Qt::black, QPointF(4, 4), 36);
        painter.end();
        const QColor c = meanCoverColour(image, image.rect());
        EXPECT_TRUE(c.isValid() && m.matches(c)) << m.name << ": " << c.name().toStdString();
    }
}

TEST_F(DeliveryControlsTest, LabelsShortenWithoutTrailingSpace)
{
    const QFont font = QGuiApplication::font();
    const QFontMetricsF metrics(font);
    const QString text = QStringLiteral("Come and see");
    EXPECT_EQ(DeliveryTimelineRuler::shortenedLabel(text, font, metrics.horizontalAdvance(text)), text);

    // Room for "Come…" but not for "Come a…": the space before "and" must not survive.
    const QString come = QStringLiteral("Come") + QChar(0x2026);
    const double room = metrics.horizontalAdvance(come) + 0.5;
    ASSERT_LT(room, metrics.horizontalAdvance(QStringLiteral("Come a") + QChar(0x2026)));
    EXPECT_EQ(DeliveryTimelineRuler::shortenedLabel(text, font, room), come);

    const QString single = QStringLiteral("C") + QChar(0x2026);
    EXPECT_EQ(DeliveryTimelineRuler::shortenedLabel(text, font, metrics.horizontalAdvance(single)), single);
    EXPECT_TRUE(DeliveryTimelineRuler::shortenedLabel(text, font, 1).isEmpty());
}

TEST_F(DeliveryControlsTest, HeadingStopsAndNextHeadings)
{
    auto root = sectionedSermon(3, 4, 10);
    auto sub = root->children()[1]->addChild(QStringLiteral("Sub point"));
    sub->addChild(wordsText(10));
    DeliveryCanvasState state;
    EXPECT_TRUE(DeliveryTimelineRuler::headingStops(nullptr, 1).empty());
    auto layout =
        std::make_shared<const DeliveryContentLayout>(DeliveryContentLayout::compute(*root, 20, 700, 15, 1.8));
    state.setLayout(layout);

    const auto stops = DeliveryTimelineRuler::headingStops(layout.get(), 1);
    ASSERT_EQ(stops.size(), 3u);
    EXPECT_EQ(stops[0].text, "Section 1");
    EXPECT_LT(stops[0].fraction, stops[1].fraction);
    EXPECT_LT(stops[1].fraction, stops[2].fraction);
    EXPECT_EQ(DeliveryTimelineRuler::headingStops(layout.get(), 2).size(), 1u);

    // A window whose bottom is above everything: the first section and the only sub point.
    state.setViewportHeight(10);
    auto [l1, l2] = state.nextHeadings();
    ASSERT_TRUE(l1 && l2);
    EXPECT_EQ(l1->text, "Section 1");
    EXPECT_EQ(l2->text, "Sub point");
    // Past every heading: nothing left to offer.
    state.setViewportHeight(layout->totalHeight);
    auto [none1, none2] = state.nextHeadings();
    EXPECT_FALSE(none1 || none2);
}

// A frame repaints only what moves, and any part of the ruler painted alone has the very pixels
// of the whole ruler painted at once.
TEST_F(DeliveryControlsTest, TheRulerRepaintsOnlyWhatMovesAndAPartMatchesTheWhole)
{
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    for (int s = 0; s < 12; ++s) {
        auto section = root->addChild(QStringLiteral("Section number %1 of the sermon").arg(s + 1));
        for (int p = 0; p < 3; ++p) {
            auto point = section->addChild(QStringLiteral("Point %1").arg(p + 1));
            auto sub = point->addChild(QStringLiteral("Sub"));
            sub->addChild(wordsText(5 + 7 * ((s + p) % 4)));
            point->addChild(wordsText(12));
        }
    }
    auto clock = std::make_shared<ManualDeliveryClock>();
    DeliveryTimer timer(30, clock);
    DeliveryCanvasState state;
    state.setViewportHeight(600);
    state.setLayout(
        std::make_shared<const DeliveryContentLayout>(DeliveryContentLayout::compute(*root, 30, 700, 15, 1.8)));
    QWidget window;
    window.resize(900, 60);
    DeliveryTimelineRuler ruler(&timer, &state, &window);
    ruler.setGeometry(0, 0, 900, DeliveryTimelineRuler::rowHeight);
    timer.start();
    clock->advance(900); // half way, and the reader three minutes behind: the band pulses
    state.setScrollY(yForFraction(*state.layout(), 0.4) - 100);
    window.show();
    QCoreApplication::processEvents();

    QRegion painted;
    struct Recorder : QObject {
        QRegion* region;
        explicit Recorder(QRegion* r)
            : region(r)
        {
        }
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::Paint)
                *region += static_cast<QPaintEvent*>(event)->region();
            return false;
        }
    } recorder(&painted);
    ruler.installEventFilter(&recorder);
    auto frame = [&] {
        painted = QRegion();
        clock->advance(1.0 / 60);
        ruler.frameTick();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
        return painted.boundingRect();
    };
    const QRect pulsing = frame();
    EXPECT_GT(pulsing.width(), 0);
    EXPECT_LT(pulsing.width(), 900 / 4) << "the band of the present section, not the whole ruler";
    state.setScrollY(yForFraction(*state.layout(), 0.5) - 100); // caught up: the band rests
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
    EXPECT_TRUE(frame().isEmpty());

    const QImage whole = ruler.grab().toImage();
    for (int x = -3; x < 900; x += 37) {
        const QRect part = QRect(x, 0, 7, DeliveryTimelineRuler::rowHeight).intersected(ruler.rect());
        QImage alone(whole.size(), whole.format());
        alone.fill(Qt::transparent);
        ruler.render(&alone, part.topLeft(), QRegion(part));
        EXPECT_TRUE(alone.copy(part) == whole.copy(part)) << "part at " << x;
    }
}

TEST_F(DeliveryControlsTest, ScrollRange)
{
    DeliveryCanvasState state;
    EXPECT_EQ(state.maxScrollY(), 0);
    auto layout = std::make_shared<DeliveryContentLayout>();
    layout->totalHeight = 2000;
    state.setLayout(layout);
    state.setViewportHeight(800);
    EXPECT_EQ(state.maxScrollY(), 1920); // the last lines can reach the window's top
    state.setViewportHeight(2500);
    EXPECT_EQ(state.maxScrollY(), 0); // fits: no scrolling at all
    EXPECT_EQ(state.clampScroll(-5), 0);
}

} // namespace
