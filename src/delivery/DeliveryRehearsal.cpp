#include "DeliveryRehearsal.h"

#include "DeliveryCanvasState.h"
#include "DeliverySections.h"
#include "DeliveryTimer.h"

#include "core/SermonNode.h"
#include "core/WordCount.h"

#include <algorithm>
#include <cmath>

DeliveryRehearsal::DeliveryRehearsal(DeliveryTimer* timer, DeliveryCanvasState* state, QObject* parent)
    : QObject(parent)
    , m_timer(timer)
    , m_state(state)
{
    connect(m_timer, &DeliveryTimer::stateChanged, this, &DeliveryRehearsal::onStateChanged);
    connect(m_timer, &DeliveryTimer::remainingSecondsChanged, this, &DeliveryRehearsal::observe);
    connect(m_state, &DeliveryCanvasState::scrollYChanged, this, &DeliveryRehearsal::observe);
    connect(m_state, &DeliveryCanvasState::chosenSectionChanged, this, &DeliveryRehearsal::observe);
}

bool DeliveryRehearsal::setRecording(bool on)
{
    if (m_recording == on)
        return false;
    m_recording = on;
    if (on) {
        m_marks.clear();
        m_spoken = 0;
        observe();
    }
    return true;
}

void DeliveryRehearsal::observe()
{
    if (!m_recording || m_timer->state() != TimerState::running || !m_state->layout())
        return;
    m_spoken = std::max(m_timer->progress() * m_timer->targetSeconds(), 0.0);
    const auto section = DeliverySections::reader(*m_state, *m_timer)->section;
    const NodeID id = section ? section->id : NodeID();
    const bool seen = std::any_of(m_marks.begin(), m_marks.end(), [&](const Mark& mark) { return mark.id == id; });
    if (!seen)
        m_marks.push_back({id, section ? section->text : QString(), m_marks.empty() ? 0.0 : m_spoken});
}

void DeliveryRehearsal::onStateChanged(TimerState state, TimerState previous)
{
    if (!m_recording)
        return;
    if (state == TimerState::running && previous == TimerState::idle) {
        // A fresh start: a new rehearsal.
        m_marks.clear();
        m_spoken = 0;
    }
    observe();
    if (state == TimerState::idle && !m_marks.empty())
        emit finished();
}

std::vector<DeliveryRehearsal::SectionResult> DeliveryRehearsal::results(const SermonNode& root, int wpm) const
{
    std::vector<SectionResult> out;
    for (size_t i = 0; i < m_marks.size(); ++i) {
        const Mark& mark = m_marks[i];
        SectionResult result;
        result.text = mark.text;
        if (mark.id.isNull()) {
            // Before the first section: the lines directly under the title.
            for (const auto& child : root.children())
                if (child->children().empty())
                    result.words += WordCount::wordCount(*child);
        } else if (const auto node = root.find(mark.id)) {
            result.words = WordCount::wordCount(*node);
        }
        const double end = i + 1 < m_marks.size() ? m_marks[i + 1].spokenSeconds : m_spoken;
        result.realSeconds = std::max(end - mark.spokenSeconds, 0.0);
        result.estimatedSeconds = wpm > 0 ? result.words * 60.0 / wpm : 0;
        out.push_back(result);
    }
    return out;
}

int DeliveryRehearsal::measuredWPM(const std::vector<SectionResult>& results)
{
    int words = 0;
    double seconds = 0;
    for (const SectionResult& result : results) {
        words += result.words;
        seconds += result.realSeconds;
    }
    if (words == 0 || seconds < 30)
        return 0;
    return int(std::lround(words * 60.0 / seconds));
}
