#pragma once

#include "MinimapRenderer.h"

#include <QImage>
#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

template <typename T>
class QFutureWatcher;

// The minimap's image and the one render under way. Touched on the main thread only; the render
// runs on the thread pool with nothing but its input and a cancel flag, and its image comes back
// through the main thread's event loop.
class MinimapCache : public QObject {
    Q_OBJECT
public:
    using RenderFunction =
        std::function<std::optional<QImage>(const MinimapRenderer::Input&, const std::function<bool()>& isCancelled)>;
    // A burst of changes (typing, a transition) costs one render.
    static constexpr int defaultBurstDelayMs = 60;

    explicit MinimapCache(QObject* parent = nullptr);
    ~MinimapCache() override;

    const std::optional<QImage>& currentImage() const { return m_currentImage; }
    const std::optional<MinimapCacheKey>& currentKey() const { return m_currentKey; }
    const std::optional<MinimapCacheKey>& pendingKey() const { return m_pendingKey; }
    bool isInFlight() const { return m_inFlight != nullptr; }
    // Whether a request with this key would start a render: it is neither shown nor under way.
    bool wants(const MinimapCacheKey& key) const { return m_currentKey != key && m_pendingKey != key; }

    // Cancels a render under way for another key and starts this one; returns at once.
    void requestRender(const MinimapCacheKey& key, MinimapRenderer::Input input);

    // For tests and benchmarks.
    void setRenderFunction(RenderFunction render);
    void setBurstDelay(int milliseconds) { m_burstDelayMs = milliseconds; }

signals:
    void imageChanged();

private:
    using Result = std::optional<QImage>;
    void finish(QFutureWatcher<Result>* watcher, const MinimapCacheKey& key);
    void cancelInFlight();

    std::optional<QImage> m_currentImage;
    std::optional<MinimapCacheKey> m_currentKey;
    std::optional<MinimapCacheKey> m_pendingKey;
    QFutureWatcher<Result>* m_inFlight = nullptr;
    std::shared_ptr<std::atomic<bool>> m_cancel;
    RenderFunction m_render;
    int m_burstDelayMs = defaultBurstDelayMs;
};
