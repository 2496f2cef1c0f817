#pragma once

#include <QString>

#include <utility>

// Named events and intervals for a profiler. With ORANTIUM_TRACE=<file> set they are written as
// Chrome trace-event JSON (Perfetto, chrome://tracing); otherwise each call costs one check and
// no message is ever built.
namespace performanceLog {

bool isEnabled();
void emitEvent(const char* name, const QString& message);
void beginInterval(const char* name, const QString& message);
void endInterval(const char* name);

template <typename Message>
void signpostEvent(const char* name, Message&& message)
{
    if (isEnabled())
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
