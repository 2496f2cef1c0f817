#pragma once

#include "ColumnLayout.h"

#include <QObject>

#include <functional>

class QTimer;

// Glides every cell from where it is drawn to where the new layout puts it, on its own 120 Hz
// timer. A new node appears at its place at once; a node that left is gone from the first tick.
class ColumnAnimator : public QObject {
    Q_OBJECT
public:
    static constexpr double animationDuration = 0.2;
    static constexpr int tickIntervalMs = 8; // about 120 ticks a second

    explicit ColumnAnimator(QObject* parent = nullptr);

    const ColumnFrames& displayFrames() const { return m_displayFrames; }
    bool isRunning() const;

    // From the frames drawn now; the very first layout takes effect at once.
    void animate(const ColumnFrames& frames);
    // A layout without animation: the timer stops and these frames are drawn.
    void stop(const ColumnFrames& frames);

    // Seconds from a monotonic clock; replaceable so that tests step the glide.
    void setClock(std::function<double()> clock);
    void tick();

signals:
    void displayFramesChanged();

private:
    QTimer* m_timer;
    std::function<double()> m_clock;
    ColumnFrames m_displayFrames;
    ColumnFrames m_fromFrames;
    ColumnFrames m_targetFrames;
    double m_startTime = 0;
};
