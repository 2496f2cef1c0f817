#pragma once

#include <QString>

#include <utility>

// Named events and intervals for a profiler. With ORANTIUM_TRACE=<file> set they are written as
// Chrome trace-event JSON (Perfetto, chrome://tracing); otherwise each call costs one check and
// no message is ever built. Events are written in batches; the trace is complete once close() has
// run, which happens at exit at the latest. Events made once per node drawn are detail, traced
// only with ORANTIUM_TRACE_DETAIL=1 as well, so that a default trace barely slows drawing.
namespace performanceLog {

bool isEnabled();
bool isDetailEnabled();
void emitEvent(const char* name, const QString& message);
void beginInterval(const char* name, const QString& message);
void endInterval(const char* name);
// Writes what is buffered and ends the JSON array; later events are dropped.
void close();

template <typename Message>
void signpostEvent(const char* name, Message&& message)
{
    if (isEnabled())
        emitEvent(name, message());
}

template <typename Message>
void signpostDetailEvent(const char* name, Message&& message)
{
    if (isDetailEnabled())
        emitEvent(name, message());
}

template <typename Message, typename Work>
decltype(auto) signpostInterval(const char* name, Message&& message, Work&& work)
{
    if (!isEnabled())
        return work();
    beginInterval(name, message());
    struct End {
        const char* name;
        ~End() { endInterval(name); }
    } end{name};
    return work();
}

inline QString noMessage()
{
    return {};
}

} // namespace performanceLog
