#pragma once

#include "TreeLayout.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

template <typename T>
class QFutureWatcher;

// Measures the texts a partial layout left out, on the background pool, one batch at a time. The
// task holds only its texts and a cancel flag; the widths come back through the main thread's
// event loop, and a cancelled batch never comes back.
class BackgroundMeasure : public QObject {
    Q_OBJECT
public:
    using Texts = std::vector<TreeLayout::Unmeasured>;
    using Extents = std::vector<TreeLayout::TextExtent>;
    // Called with the texts and their extents, in order; a batch stopped early has fewer extents.
    using Done = std::function<void(const Texts&, const Extents&)>;

    explicit BackgroundMeasure(Done done, QObject* parent = nullptr);
    ~BackgroundMeasure() override;

    bool isRunning() const { return m_inFlight != nullptr; }
    void start(Texts texts);
    void cancel();

private:
    struct Batch {
        Texts texts;
        Extents extents;
    };
    Done m_done;
    QFutureWatcher<std::shared_ptr<Batch>>* m_inFlight = nullptr;
    std::shared_ptr<std::atomic<bool>> m_cancel;
};
