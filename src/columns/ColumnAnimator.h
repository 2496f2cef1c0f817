#pragma once

#include "ColumnLayout.h"

#include <QObject>

#include <functional>
#include <vector>

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
    // Counts the times the drawn frames were replaced by a new set of nodes; between two
    // changes of it a glide moves the same entries in place.
    quint64 displayGeneration() const { return m_displayGeneration; }
    // The drawn frames are those of the last frames given, by node: always but between a glide's
    // start and its first tick, while the nodes that left are still drawn and new ones not yet.
    bool showsTargetNodes() const { return !m_awaitsFirstTick; }
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
    // A node that glides: where it started and where it goes, and its drawn entry once the
    // first tick has put the target's nodes in place.
    struct Glide {
        NodeID id;
        ColumnNodeFrame from;
        ColumnNodeFrame target;
        ColumnNodeFrame* shown = nullptr;
    };
    void replaceDisplay(ColumnFrames frames);

    QTimer* m_timer;
    std::function<double()> m_clock;
    ColumnFrames m_displayFrames;
    ColumnFrames m_targetFrames; // until the first tick takes them over
    std::vector<Glide> m_glides;
    bool m_awaitsFirstTick = false;
    quint64 m_displayGeneration = 0;
    double m_startTime = 0;
};
