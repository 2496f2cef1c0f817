#pragma once

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>

// The pool for work nobody waits on (measuring text ahead). Its threads run at idle priority,
// only on a core nothing else wants, and it is not the global pool, whose threads Qt's painting
// and the minimap need at once. Gone with the application, after its tasks, which their owners
// stop first.
inline QThreadPool& backgroundPool()
{
    static QThreadPool* pool = [] {
        auto* made = new QThreadPool(QCoreApplication::instance());
        made->setThreadPriority(QThread::IdlePriority);
        return made;
    }();
    return *pool;
}
