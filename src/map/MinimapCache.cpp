#include "MinimapCache.h"

#include "PoolTask.h"

#include <QElapsedTimer>
#include <QFutureWatcher>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

MinimapCache::MinimapCache(QObject* parent)
    : QObject(parent)
    , m_render([](const MinimapRenderer::Input& input, const std::function<bool()>& isCancelled) {
        return MinimapRenderer::render(input, isCancelled);
    })
{
}

MinimapCache::~MinimapCache()
{
    // The task holds nothing of ours: flagged, it ends at its next poll, and its watcher goes
    // with us, so no result is delivered.
    cancelInFlight();
}

void MinimapCache::setRenderFunction(RenderFunction render)
{
    if (render)
        m_render = std::move(render);
}

void MinimapCache::cancelInFlight()
{
    abandonTask(m_cancel, m_inFlight, this);
}

void MinimapCache::requestRender(const MinimapCacheKey& key, MinimapRenderer::Input input)
{
    if (!wants(key))
        return;
    cancelInFlight();
    m_pendingKey = key;
    auto cancel = std::make_shared<std::atomic<bool>>(false);
    m_cancel = cancel;
    auto* watcher = new QFutureWatcher<Result>(this);
    m_inFlight = watcher;
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, key] { finish(watcher, key); });
    watcher->setFuture(
        QtConcurrent::run([render = m_render, delay = m_burstDelayMs, cancel, input = std::move(input)]() -> Result {
            QElapsedTimer waited;
            waited.start();
            while (waited.elapsed() < delay) {
                if (cancel->load())
                    return std::nullopt;
                QThread::msleep(ulong(std::clamp<qint64>(delay - waited.elapsed(), 1, 5)));
            }
            if (cancel->load())
                return std::nullopt;
            Result image = render(input, [&cancel] { return cancel->load(); });
            if (!image || cancel->load())
                return std::nullopt;
            return image;
        }));
}

void MinimapCache::finish(QFutureWatcher<Result>* watcher, const MinimapCacheKey& key)
{
    watcher->deleteLater();
    if (watcher != m_inFlight)
        return;
    m_inFlight = nullptr;
    m_cancel.reset();
    const Result result = watcher->future().resultCount() > 0 ? watcher->result() : Result();
    // An image for a key that is no longer wanted is dropped; a failed render leaves the old
    // image and the pending key, so the same key isn't tried again until it changes.
    if (!result || m_pendingKey != key)
        return;
    m_currentImage = *result;
    m_currentKey = key;
    m_pendingKey.reset();
    emit imageChanged();
}
