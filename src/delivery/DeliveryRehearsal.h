#pragma once

#include "DeliveryTimer.h"

#include "core/NodeID.h"

#include <QObject>
#include <QString>

#include <vector>

class DeliveryCanvasState;
class SermonNode;

// Rehearsal: while the clock runs, notes when each section is first reached, that is when the
// reader is first there (DeliverySections::reader), and at the end sets the real minutes
// beside the estimate.
// It only records; what is done with the measured pace is the user's choice.
class DeliveryRehearsal : public QObject {
    Q_OBJECT
public:
    struct Mark {
        NodeID id; // null for the lines before the first section
        QString text;
        double spokenSeconds = 0;
    };
    struct SectionResult {
        QString text;
        int words = 0;
        double realSeconds = 0;
        double estimatedSeconds = 0;
    };

    DeliveryRehearsal(DeliveryTimer* timer, DeliveryCanvasState* state, QObject* parent = nullptr);

    bool isRecording() const { return m_recording; }
    bool setRecording(bool on);
    // Looks where the reader is now; called as the page moves and each frame while running.
    void observe();

    const std::vector<Mark>& marks() const { return m_marks; }
    // Spoken seconds when last seen running; what the rehearsal took once it has stopped.
    double spokenSeconds() const { return m_spoken; }

    // Real and estimated time of each section reached, in the order reached.
    std::vector<SectionResult> results(const SermonNode& root, int wpm) const;
    // Words spoken a minute over the sections reached; 0 without a measure.
    static int measuredWPM(const std::vector<SectionResult>& results);

signals:
    // The clock was stopped after a recorded run.
    void finished();

private:
    void onStateChanged(TimerState state, TimerState previous);

    DeliveryTimer* m_timer;
    DeliveryCanvasState* m_state;
    bool m_recording = false;
    std::vector<Mark> m_marks;
    double m_spoken = 0;
};
