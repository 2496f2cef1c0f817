#pragma once

#include <QFutureWatcher>
#include <QObject>

#include <atomic>
#include <memory>

// Lets a task on a thread pool go: its flag tells it to stop at its next look, and its watcher,
// disconnected from `receiver` and deleted, delivers nothing.
template <typename Result>
void abandonTask(std::shared_ptr<std::atomic<bool>>& cancel, QFutureWatcher<Result>*& watcher, QObject* receiver)
{
    if (cancel)
        cancel->store(true);
    cancel.reset();
    if (watcher) {
        watcher->disconnect(receiver);
        watcher->deleteLater();
        watcher = nullptr;
    }
}
