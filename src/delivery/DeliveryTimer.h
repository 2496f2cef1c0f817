#pragma once

#include "DeliveryClock.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class QTimer;

enum class TimerState { idle, running, paused };

// The countdown a sermon is preached against. Spoken time always comes from the clock, never
// from counted ticks, so a late or missed tick loses nothing. Reaching zero ends nothing: the
// timer runs on into overrun until it is stopped.
class DeliveryTimer : public QObject {
    Q_OBJECT
public:
    explicit DeliveryTimer(int minutes, std::shared_ptr<DeliveryClock> clock = DeliveryClock::system(),
                           QObject* parent = nullptr);
    ~DeliveryTimer() override;

    TimerState state() const { return m_state; }
    double remainingSeconds() const { return m_remainingSeconds; }
    double targetSeconds() const { return m_targetSeconds; }
    double plannedTargetSeconds() const { return m_plannedTargetSeconds; }
    std::optional<double> startedAt() const { return m_startedAt; }
    double elapsedBeforePause() const { return m_elapsedBeforePause; }
    std::optional<double> firstStartedAt() const { return m_firstStartedAt; }
    bool isTicking() const;
    const std::shared_ptr<DeliveryClock>& clock() const { return m_clock; }

    void start();
    void pause();
    void stop();
    void setTargetMinutes(int minutes);
    void addMinutes(int minutes);

    // Fraction of the target spoken; above 1 in overrun, never clamped here.
    double progress() const;
    // "12:05", or "−1:01" in overrun.
    QString remainingText() const;
    // Wall time since the first start, pauses included: "4:09" or "1:02:03".
    QString totalElapsedText() const;

    // One firing of the one-second ticker; public so that tests can drive it with their clock.
    void tick();

signals:
    void stateChanged(TimerState state, TimerState previous);
    void remainingSecondsChanged(double seconds);
    void targetSecondsChanged(double seconds);
    void plannedTargetSecondsChanged(double seconds);
    void firstStartedAtChanged();
    // Any of the above.
    void changed();

private:
    void setState(TimerState state);
    void setRemainingSeconds(double seconds);
    void setTargetSeconds(double seconds);
    void setPlannedTargetSeconds(double seconds);
    void setFirstStartedAt(std::optional<double> at);
    void startTicker();
    void stopTicker();

    std::shared_ptr<DeliveryClock> m_clock;
    TimerState m_state = TimerState::idle;
    double m_remainingSeconds = 0;
    double m_targetSeconds = 0;
    double m_plannedTargetSeconds = 0;
    std::optional<double> m_startedAt;
    double m_elapsedBeforePause = 0;
    std::optional<double> m_firstStartedAt;
    QTimer* m_ticker = nullptr;
};
