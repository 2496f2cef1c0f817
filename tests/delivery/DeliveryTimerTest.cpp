#include "delivery/DeliveryTimer.h"

#include <gtest/gtest.h>

namespace {

struct TimerFixture : ::testing::Test {
    std::shared_ptr<ManualDeliveryClock> clock = std::make_shared<ManualDeliveryClock>();
    DeliveryTimer timer{30, clock};
};

TEST_F(TimerFixture, StartsIdleWithTheWholeTarget)
{
    EXPECT_EQ(timer.state(), TimerState::idle);
    EXPECT_EQ(timer.remainingSeconds(), 1800);
    EXPECT_EQ(timer.targetSeconds(), 1800);
    EXPECT_EQ(timer.plannedTargetSeconds(), 1800);
    EXPECT_EQ(timer.progress(), 0);
    EXPECT_EQ(timer.remainingText(), "30:00");
    EXPECT_EQ(timer.totalElapsedText(), "0:00");
}

TEST_F(TimerFixture, RemainingComesFromTheClockNotFromCountedTicks)
{
    timer.start();
    clock->advance(10.25);
    timer.tick(); // a single tick after ten seconds must know all ten of them
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), 1800 - 10.25);
    EXPECT_EQ(timer.remainingText(), "29:49");
    EXPECT_DOUBLE_EQ(timer.progress(), 10.25 / 1800);
}

TEST_F(TimerFixture, PauseKeepsSpokenTimeExactAndRemainingStale)
{
    timer.start();
    clock->advance(60);
    timer.tick();
    clock->advance(0.7);
    timer.pause();
    EXPECT_EQ(timer.state(), TimerState::paused);
    EXPECT_NEAR(timer.elapsedBeforePause(), 60.7, 1e-9);
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), 1740); // the last tick's value
    EXPECT_FALSE(timer.startedAt().has_value());
    EXPECT_FALSE(timer.isTicking());

    clock->advance(300); // a long pause doesn't count
    EXPECT_NEAR(timer.progress(), 60.7 / 1800, 1e-12);
    timer.start();
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), 1740); // still stale until the next tick
    clock->advance(1);
    timer.tick();
    EXPECT_NEAR(timer.remainingSeconds(), 1800 - 61.7, 1e-9);
    // Total time is wall time and includes the pause.
    EXPECT_EQ(timer.totalElapsedText(), "6:01");
}

TEST_F(TimerFixture, PauseAndStartAreHarmlessInTheWrongState)
{
    timer.pause();
    EXPECT_EQ(timer.state(), TimerState::idle);
    timer.start();
    const double firstStart = *timer.firstStartedAt();
    clock->advance(5);
    timer.start(); // already running: nothing restarts
    EXPECT_EQ(*timer.startedAt(), firstStart);
    timer.pause();
    clock->advance(5);
    timer.start();
    EXPECT_EQ(*timer.firstStartedAt(), firstStart);
}

TEST_F(TimerFixture, StopDropsExtraMinutesAndResetsEverything)
{
    timer.start();
    clock->advance(100);
    timer.addMinutes(5);
    EXPECT_EQ(timer.targetSeconds(), 2100);
    EXPECT_EQ(timer.plannedTargetSeconds(), 1800);
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), 2000); // recomputed at once
    timer.stop();
    EXPECT_EQ(timer.state(), TimerState::idle);
    EXPECT_EQ(timer.targetSeconds(), 1800);
    EXPECT_EQ(timer.remainingSeconds(), 1800);
    EXPECT_EQ(timer.elapsedBeforePause(), 0);
    EXPECT_FALSE(timer.firstStartedAt().has_value());
    timer.start();
    EXPECT_EQ(timer.targetSeconds(), 1800);
}

TEST_F(TimerFixture, StopInIdleDropsMinutesAddedWhileIdle)
{
    int stateChanges = 0;
    QObject::connect(&timer, &DeliveryTimer::stateChanged, [&] { ++stateChanges; });
    timer.addMinutes(10);
    EXPECT_EQ(timer.remainingSeconds(), 2400);
    timer.stop();
    EXPECT_EQ(timer.remainingSeconds(), 1800);
    EXPECT_EQ(timer.targetSeconds(), 1800);
    EXPECT_EQ(stateChanges, 0); // idle to idle is no change
}

TEST_F(TimerFixture, AddMinutesWhilePausedGivesTheExactValue)
{
    timer.start();
    clock->advance(30.5);
    timer.pause();
    timer.addMinutes(5);
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), 2100 - 30.5);
}

TEST_F(TimerFixture, SetTargetMinutesTouchesRemainingOnlyWhenIdle)
{
    timer.setTargetMinutes(45);
    EXPECT_EQ(timer.remainingSeconds(), 2700);
    timer.start();
    clock->advance(10);
    timer.tick();
    timer.setTargetMinutes(20);
    EXPECT_EQ(timer.targetSeconds(), 1200);
    EXPECT_EQ(timer.plannedTargetSeconds(), 1200);
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), 2690); // until the next tick
    timer.tick();
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), 1190);
    timer.pause();
    timer.setTargetMinutes(10);
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), 1190); // stale while paused
}

TEST_F(TimerFixture, OverrunRunsOnPastZero)
{
    timer.start();
    clock->advance(31 * 60);
    timer.tick();
    EXPECT_EQ(timer.state(), TimerState::running);
    EXPECT_DOUBLE_EQ(timer.remainingSeconds(), -60);
    EXPECT_EQ(timer.remainingText(), QString(QChar(0x2212)) + "1:00");
    EXPECT_NEAR(timer.progress(), 31.0 / 30.0, 1e-12);
}

TEST(DeliveryTimer, ZeroTargetHasNoProgressAndGoesNegativeAtOnce)
{
    auto clock = std::make_shared<ManualDeliveryClock>();
    DeliveryTimer timer(0, clock);
    timer.start();
    clock->advance(1);
    timer.tick();
    EXPECT_EQ(timer.progress(), 0);
    EXPECT_LT(timer.remainingSeconds(), 0);
}

TEST(DeliveryTimer, RemainingTextTruncatesTowardZero)
{
    struct Row {
        double elapsed;
        const char* text;
    };
    const Row rows[] = {
        {0.4, "0:59"}, // 59.6 left
        {60.5, "0:00"}, // -0.5: no sign
        {121, "\u22121:01"},
        {-5340, "90:00"}, // minutes are never split into hours
    };
    for (const Row& row : rows) {
        auto clock = std::make_shared<ManualDeliveryClock>();
        DeliveryTimer timer(1, clock);
        timer.start();
        clock->advance(row.elapsed);
        timer.tick();
        EXPECT_EQ(timer.remainingText(), QString::fromUtf8(row.text)) << row.elapsed;
    }
}

TEST(DeliveryTimer, TotalElapsedShowsHoursFromAnHour)
{
    auto clock = std::make_shared<ManualDeliveryClock>();
    DeliveryTimer timer(30, clock);
    timer.start();
    clock->advance(3599.9);
    EXPECT_EQ(timer.totalElapsedText(), "59:59");
    clock->advance(0.1 + 62);
    EXPECT_EQ(timer.totalElapsedText(), "1:01:02");
    clock->set(0); // a clock that went back shows 0, never a negative time
    EXPECT_EQ(timer.totalElapsedText(), "0:00");
}

TEST(DeliveryTimer, SettersNotifyOnlyOnRealChange)
{
    DeliveryTimer timer(30, std::make_shared<ManualDeliveryClock>());
    int changes = 0;
    QObject::connect(&timer, &DeliveryTimer::targetSecondsChanged, [&] { ++changes; });
    timer.setTargetMinutes(30);
    EXPECT_EQ(changes, 0);
    timer.setTargetMinutes(31);
    EXPECT_EQ(changes, 1);
}

} // namespace
