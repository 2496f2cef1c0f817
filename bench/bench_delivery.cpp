// The delivery page over a generated sermon of about 300 spoken lines, in a 1200 by 800 view:
// one runner frame, one full pass of the text layer, and the layout itself.
#include "SermonGenerator.h"

#include "delivery/DeliveryContentLayout.h"
#include "delivery/DeliveryPageDrawing.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

constexpr QSize viewSize(1200, 800);
constexpr double textWidth = 700;

void ensureApplication()
{
    static QGuiApplication* app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "bench_delivery";
        static char* argv[] = {name, nullptr};
        return new QGuiApplication(argc, argv);
    }();
    (void)app;
}

// A sermon with at least `leaves` spoken lines.
SermonNodePtr sermonWithLeaves(int leaves)
{
    for (int lines = leaves;; lines += 20) {
        SermonNodePtr root = generateSermon(lines);
        int count = 0;
        for (const auto& node : root->flattened())
            count += !node->hasChildren();
        if (count >= leaves)
            return root;
    }
}

struct PageFixture {
    SermonNodePtr root = sermonWithLeaves(300);
    DeliveryContentLayout layout;
    QImage textLayer{viewSize, QImage::Format_ARGB32_Premultiplied};
    QImage window{viewSize, QImage::Format_ARGB32_Premultiplied};
    double left = DeliveryPageDrawing::pageLeft(viewSize.width(), textWidth);
    double scrollY = 0;

    PageFixture()
    {
        ensureApplication();
        layout = DeliveryContentLayout::compute(*root, 30, textWidth, 15, 1.8);
        // Look at the middle of the sermon.
        scrollY = yForFraction(layout, 0.5) - viewSize.height() * 0.5;
        textLayer.fill(Qt::white);
        QPainter painter(&textLayer);
        DeliveryPageDrawing::drawTextLayer(painter, textPass());
    }

    DeliveryPageDrawing::TextPass textPass() const
    {
        DeliveryPageDrawing::TextPass pass;
        pass.layout = &layout;
        pass.size = viewSize;
        pass.left = left;
        pass.scrollY = scrollY;
        pass.viewportHeight = viewSize.height();
        pass.textWidth = textWidth;
        pass.hasStarted = true;
        return pass;
    }
};

PageFixture& fixture()
{
    static PageFixture f;
    return f;
}

// What a frame costs while the page stands still: the runner's strip is restored from the
// kept text layer and the runner drawn over it.
void BM_RunnerFrame(benchmark::State& state)
{
    PageFixture& f = fixture();
    const QRect strip = DeliveryPageDrawing::runnerBounds(f.left, viewSize.height()).toAlignedRect();
    double progress = 0.5;
    for (auto _ : state) {
        progress += 1.0 / (60 * 1800);
        QPainter painter(&f.window);
        painter.setClipRect(strip);
        painter.drawImage(strip.topLeft(), f.textLayer, strip);
        DeliveryPageDrawing::RunnerPass pass;
        pass.layout = &f.layout;
        pass.state = TimerState::running;
        pass.progress = progress;
        pass.now = progress * 1800;
        pass.left = f.left;
        pass.scrollY = f.scrollY;
        DeliveryPageDrawing::drawRunnerLayer(painter, pass);
    }
}
BENCHMARK(BM_RunnerFrame)->Unit(benchmark::kMicrosecond);

// A whole text layer: what a scroll, a resize or a following frame costs.
void BM_PagePass(benchmark::State& state)
{
    PageFixture& f = fixture();
    for (auto _ : state) {
        f.window.fill(Qt::white);
        QPainter painter(&f.window);
        DeliveryPageDrawing::drawTextLayer(painter, f.textPass());
    }
    state.counters["items"] = double(f.layout.items.size());
}
BENCHMARK(BM_PagePass)->Unit(benchmark::kMillisecond);

// The layout, run again on each change of a setting or of the target's minutes.
void BM_Layout(benchmark::State& state)
{
    PageFixture& f = fixture();
    for (auto _ : state)
        benchmark::DoNotOptimize(DeliveryContentLayout::compute(*f.root, 30, textWidth, 15, 1.8));
    state.counters["leaves"] = double(f.layout.nodeYPositions.size());
}
BENCHMARK(BM_Layout)->Unit(benchmark::kMillisecond);

} // namespace
