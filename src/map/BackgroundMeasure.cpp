#include "BackgroundMeasure.h"

#include "PoolTask.h"

#include "core/BackgroundPool.h"

#include <QFutureWatcher>
#include <QtConcurrent/QtConcurrentRun>

BackgroundMeasure::BackgroundMeasure(Done done, QObject* parent)
    : QObject(parent)
    , m_done(std::move(done))
{
}

BackgroundMeasure::~BackgroundMeasure()
{
    cancel();
}

void BackgroundMeasure::cancel()
{
    abandonTask(m_cancel, m_inFlight, this);
}

void BackgroundMeasure::start(Texts texts)
{
    cancel();
    auto stop = std::make_shared<std::atomic<bool>>(false);
    m_cancel = stop;
    auto* watcher = new QFutureWatcher<std::shared_ptr<Batch>>(this);
    m_inFlight = watcher;
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher != m_inFlight)
            return;
        m_inFlight = nullptr;
        m_cancel.reset();
        if (watcher->future().resultCount() == 0)
            return;
        const std::shared_ptr<Batch> batch = watcher->result();
        m_done(batch->texts, batch->extents);
    });
    watcher->setFuture(QtConcurrent::run(&backgroundPool(), [stop, texts = std::move(texts)]() mutable {
        auto batch = std::make_shared<Batch>();
        batch->extents = TreeLayout::measure(texts, *stop);
        batch->texts = std::move(texts);
        return batch;
    }));
}
