// The delivery view over generated sermons of 300 to 100,000 lines, in a 1200 by 800 view with
// the target the view would estimate: one frame while the clock runs (the page following the
// runner, the runner, and what the ruler repaints), a whole ruler, a whole text layer, and the
// layout itself.
#include "BenchApplication.h"
#include "SermonGenerator.h"

#include "core/WordCount.h"
#include "delivery/DeliveryCanvasState.h"
#include "delivery/DeliveryContentLayout.h"
#include "delivery/DeliveryPageDrawing.h"
#include "delivery/DeliveryRunnerStrip.h"
#include "delivery/DeliveryTimelineRuler.h"
#include "delivery/DeliveryTimer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <thread>

namespace {

constexpr QSize viewSize(1200, 800);
constexpr double textWidth = 700;

// One sermon of `lines` lines laid out as the view does it, with the clock running at half
// time and the reader three minutes behind, so that the ruler's band pulses.
struct DeliveryFixture {
    SermonNodePtr root;
    int minutes = 1;
    std::shared_ptr<ManualDeliveryClock> clock = std::make_shared<ManualDeliveryClock>();
    std::unique_ptr<DeliveryTimer> timer;
    std::unique_ptr<DeliveryCanvasState> state;
    std::unique_ptr<DeliveryTimelineRuler> ruler;
    // The ruler and the runner strip over it, in a window of their own, as the view has them.
    std::unique_ptr<QWidget> topBar;
    DeliveryTimelineRuler* shownRuler = nullptr;
    int rulerPaints = 0;
    QImage textLayer{viewSize, QImage::Format_ARGB32_Premultiplied};
    QImage window{viewSize, QImage::Format_ARGB32_Premultiplied};
    QImage rulerImage;
    double left = DeliveryPageDrawing::pageLeft(viewSize.width(), textWidth);

    explicit DeliveryFixture(int lines)
    {
        ensureApplication();
        root = generateSermon(lines);
        minutes = WordCount::estimatedMinutes(WordCount::wordCount(*root), 130);
        timer = std::make_unique<DeliveryTimer>(minutes, clock);
        state = std::make_unique<DeliveryCanvasState>();
        state->setViewportHeight(viewSize.height());
        state->setLayout(std::make_shared<const DeliveryContentLayout>(
            DeliveryContentLayout::compute(*root, minutes, textWidth, 15, 1.8)));
        timer->start();
        clock->advance(timer->targetSeconds() * 0.5);
        const double behind = 0.5 - 180.0 / timer->targetSeconds();
        state->setScrollY(state->clampScroll(yForFraction(layout(), behind) - 100));

        ruler = std::make_unique<DeliveryTimelineRuler>(timer.get(), state.get());
        ruler->resize(viewSize.width(), DeliveryTimelineRuler::rowHeight);
        rulerImage = QImage(ruler->size(), QImage::Format_ARGB32_Premultiplied);

        topBar = std::make_unique<QWidget>();
        topBar->resize(viewSize.width(), 60);
        shownRuler = new DeliveryTimelineRuler(timer.get(), state.get(), topBar.get());
        shownRuler->setGeometry(0, 0, viewSize.width(), DeliveryTimelineRuler::rowHeight);
        // Counts the ruler's paints, so that a frame shown to paint nothing would be seen.
        struct PaintCounter : QObject {
            int* count;
            explicit PaintCounter(int* c, QObject* parent)
                : QObject(parent)
                , count(c)
            {
            }
            bool eventFilter(QObject*, QEvent* event) override
            {
                *count += event->type() == QEvent::Paint;
                return false;
            }
        };
        shownRuler->installEventFilter(new PaintCounter(&rulerPaints, shownRuler));
        auto* strip = new DeliveryRunnerStrip(timer.get(), shownRuler, topBar.get());
        QObject::connect(shownRuler, &DeliveryTimelineRuler::frameTicked, strip, &DeliveryRunnerStrip::moveDot);
        topBar->show();
        // Shown and exposed, with the first whole paint done.
        QCoreApplication::processEvents();
        paintPending();

        textLayer.fill(Qt::white);
        QPainter painter(&textLayer);
        DeliveryPageDrawing::drawTextLayer(painter, textPass());
    }

    const DeliveryContentLayout& layout() const { return *state->layout(); }

    // Paints what the widgets asked to repaint, and nothing else: no timer fires here.
    static void paintPending() { QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest); }

    DeliveryPageDrawing::TextPass textPass() const
    {
        DeliveryPageDrawing::TextPass pass;
        pass.layout = state->layout().get();
        pass.size = viewSize;
        pass.left = left;
        pass.scrollY = state->scrollY();
        pass.viewportHeight = viewSize.height();
        pass.textWidth = textWidth;
        pass.hasStarted = true;
        return pass;
    }

    void setCounters(benchmark::State& bench) const
    {
        bench.counters["leaves"] = double(layout().nodeYPositions.size());
        bench.counters["minutes"] = minutes;
    }
};

DeliveryFixture& fixture(int lines)
{
    // Kept to the end of the process, like the application: widgets must not outlive it.
    static auto* made = new std::map<int, std::unique_ptr<DeliveryFixture>>;
    auto& f = (*made)[lines];
    if (!f)
        f = std::make_unique<DeliveryFixture>(lines);
    return *f;
}

// One frame while the clock runs and the page stands still: where the runner stands, its strip
// restored from the kept text layer and drawn over, and the ruler and its runner strip repainted
// where a frame asks.
void BM_DeliveryFrame(benchmark::State& bench)
{
    DeliveryFixture& f = fixture(int(bench.range(0)));
    const QRect strip = DeliveryPageDrawing::runnerBounds(f.left, viewSize.height()).toAlignedRect();
    for (auto _ : bench) {
        f.clock->advance(1.0 / 60);
        benchmark::DoNotOptimize(yForFraction(f.layout(), std::min(f.timer->progress(), 1.0)));
        {
            QPainter painter(&f.window);
            painter.setClipRect(strip);
            painter.drawImage(strip.topLeft(), f.textLayer, strip);
            DeliveryPageDrawing::RunnerPass pass;
            pass.layout = &f.layout();
            pass.state = f.timer->state();
            pass.progress = f.timer->progress();
            pass.now = f.clock->now();
            pass.left = f.left;
            pass.scrollY = f.state->scrollY();
            DeliveryPageDrawing::drawRunnerLayer(painter, pass);
        }
        f.shownRuler->frameTick();
        DeliveryFixture::paintPending();
    }
    f.setCounters(bench);
    bench.counters["rulerPaints"] = benchmark::Counter(double(f.rulerPaints), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_DeliveryFrame)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// The whole ruler: what a resize or a new layout costs it.
void BM_RulerPaint(benchmark::State& bench)
{
    DeliveryFixture& f = fixture(int(bench.range(0)));
    for (auto _ : bench)
        f.ruler->render(&f.rulerImage);
    f.setCounters(bench);
}
BENCHMARK(BM_RulerPaint)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// A whole text layer: what a scroll, a resize or a following frame costs.
void BM_PagePass(benchmark::State& bench)
{
    DeliveryFixture& f = fixture(int(bench.range(0)));
    for (auto _ : bench) {
        f.window.fill(Qt::white);
        QPainter painter(&f.window);
        DeliveryPageDrawing::drawTextLayer(painter, f.textPass());
    }
    f.setCounters(bench);
    bench.counters["items"] = double(f.layout().items.size());
}
BENCHMARK(BM_PagePass)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// The layout, run again on each change of a setting or of the target's minutes.
void BM_Layout(benchmark::State& bench)
{
    DeliveryFixture& f = fixture(int(bench.range(0)));
    for (auto _ : bench)
        benchmark::DoNotOptimize(DeliveryContentLayout::compute(*f.root, f.minutes, textWidth, 15, 1.8));
    f.setCounters(bench);
}
BENCHMARK(BM_Layout)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// The first layout on switching to delivery, on a thread that has wrapped nothing yet: cold, as
// in a window that never measured ahead (argument 0), or after the window measured ahead on
// opening (argument 1), as it does.
void BM_FirstLayout(benchmark::State& bench)
{
    DeliveryFixture& f = fixture(int(bench.range(0)));
    const bool ahead = bench.range(1) != 0;
    for (auto _ : bench) {
        std::thread([&] {
            if (ahead) {
                const std::atomic<bool> stop{false};
                const auto asked = DeliveryContentLayout::wraps(*f.root, textWidth);
                DeliveryContentLayout::rememberWraps(asked, DeliveryContentLayout::measureWraps(asked, 15, stop), 15);
            }
            QElapsedTimer timer;
            timer.start();
            benchmark::DoNotOptimize(DeliveryContentLayout::compute(*f.root, f.minutes, textWidth, 15, 1.8));
            bench.SetIterationTime(double(timer.nsecsElapsed()) * 1e-9);
        }).join();
    }
}
BENCHMARK(BM_FirstLayout)
    ->ArgsProduct({{300, 5000, 20000, 100000}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(2);

} // namespace
