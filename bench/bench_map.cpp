// The map's layout and drawing over generated sermons, in a 1600 by 1000 view.
#include "BenchApplication.h"
#include "SermonGenerator.h"

#include "map/MapDrawing.h"
#include "map/MapLayoutState.h"
#include "map/MapPalette.h"
#include "map/MinimapOverlay.h"
#include "map/MinimapRenderer.h"
#include "map/TextBitmapCache.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

constexpr QSize viewSize(1600, 1000);

struct MapFixture {
    MapLayoutState tables;
    MapDrawState state;
    TextBitmapCache cache;
    MapPalette palette = MapPalette::forAppearance(false);
    QImage image{viewSize, QImage::Format_ARGB32_Premultiplied};

    explicit MapFixture(int lines)
    {
        ensureApplication();
        tables.recomputeLayout(generateSermon(lines));
        // Look at the middle of the tree, where the branches are densest.
        const QRectF bounds = tables.cachedContentBounds;
        state.panOffset = QPointF(0, -bounds.center().y() + viewSize.height() * 0.5);
    }

    MapDrawStats draw()
    {
        image.fill(Qt::white);
        QPainter painter(&image);
        return MapDrawing::drawCanvas(painter, QSizeF(viewSize), tables, state, palette, cache);
    }
};

void BM_DrawWarmCache(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    map.draw();
    MapDrawStats stats;
    for (auto _ : state)
        stats = map.draw();
    state.counters["drawn"] = stats.drawn;
}
BENCHMARK(BM_DrawWarmCache)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

void BM_DrawColdCache(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    for (auto _ : state) {
        map.cache.clear();
        map.draw();
    }
}
BENCHMARK(BM_DrawColdCache)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// A pan moves the view a little each frame; the text bitmaps stay valid.
void BM_PanFrame(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    const QPointF start = map.state.panOffset;
    for (int i = 0; i < 60; ++i) {
        map.state.panOffset = start + QPointF(0, -7.0 * i);
        map.draw();
    }
    int frame = 0;
    for (auto _ : state) {
        map.state.panOffset = start + QPointF(0, -7.0 * (frame++ % 60));
        map.draw();
    }
}
BENCHMARK(BM_PanFrame)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// One text edit, then the whole relayout with its tables.
void BM_RecomputeLayoutAfterEdit(benchmark::State& state)
{
    ensureApplication();
    const SermonNodePtr root = generateSermon(int(state.range(0)));
    const SermonNodePtr edited = root->flattened().at(size_t(state.range(0) / 2));
    const QString original = edited->text();
    MapLayoutState tables;
    tables.recomputeLayout(root);
    bool longer = false;
    for (auto _ : state) {
        longer = !longer;
        edited->setText(longer ? original + QStringLiteral(" and more") : original);
        tables.recomputeLayout(root);
    }
    state.counters["nodes"] = double(tables.cachedLayouts.size());
}
BENCHMARK(BM_RecomputeLayoutAfterEdit)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// The minimap's input as the main thread makes it on a change of the tree: the visible tree
// copied into a snapshot, and the layouts beside it.
MinimapRenderer::Input minimapInput(const MapLayoutState& tables, double devicePixelRatio = 1.0)
{
    const MinimapGeometry g = MinimapGeometry::forContent(tables.cachedContentBounds);
    return {TreeSnapshot::copy(*tables.root), tables.cachedLayouts, tables.cachedContentBounds,
            QSize(int(g.treeFrame.width() * devicePixelRatio), int(g.treeFrame.height() * devicePixelRatio)), false};
}

// Main thread, on each change of the tree: the key's walk over the visible tree.
void BM_MinimapKey(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(MinimapRenderer::cacheKey(*map.tables.root, map.tables.cachedLayouts,
                                                           map.tables.cachedContentBounds, QSize(164, 100), false));
    state.counters["nodes"] = double(map.tables.cachedLayouts.size());
}
BENCHMARK(BM_MinimapKey)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Main thread, when the key changed: the snapshot and the input handed to the render.
void BM_MinimapSnapshotCopy(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(minimapInput(map.tables));
    state.counters["nodes"] = double(map.tables.cachedLayouts.size());
}
BENCHMARK(BM_MinimapSnapshotCopy)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Off the main thread: the image at its largest, 164 points square, at one and at two device
// pixels a point. (A long sermon's own frame is far narrower than it is tall.)
void BM_MinimapRender(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    MinimapRenderer::Input input = minimapInput(map.tables);
    input.pixelSize = QSize(164, 164) * int(state.range(1));
    for (auto _ : state)
        benchmark::DoNotOptimize(MinimapRenderer::render(input));
    state.counters["nodes"] = double(map.tables.cachedLayouts.size());
}
BENCHMARK(BM_MinimapRender)
    ->ArgsProduct({{300, 5000, 20000, 100000}, {1}})
    ->Args({5000, 2})
    ->Unit(benchmark::kMillisecond);

// A pan frame with the minimap showing: the map, then the minimap's finished image and the live
// viewport rectangle in the corner. Nothing is rendered for the minimap here.
void BM_PanFrameWithMinimap(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    const MinimapGeometry g = MinimapGeometry::forContent(map.tables.cachedContentBounds);
    const QImage minimap = *MinimapRenderer::render(minimapInput(map.tables));
    const QPointF corner(viewSize.width() - MinimapGeometry::margin - g.size.width(),
                         viewSize.height() - MinimapGeometry::margin - g.size.height());
    const QPointF start = map.state.panOffset;
    int frame = 0;
    auto draw = [&] {
        map.state.panOffset = start + QPointF(0, -7.0 * (frame++ % 60));
        map.draw();
        QPainter painter(&map.image);
        painter.translate(corner);
        MinimapDrawing::draw(painter, g, &minimap,
                             g.viewportRect(QSizeF(viewSize), map.state.panOffset, map.state.scale), map.palette);
    };
    for (int i = 0; i < 60; ++i)
        draw();
    for (auto _ : state)
        draw();
}
BENCHMARK(BM_PanFrameWithMinimap)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// How long a render of 50,000 lines runs on after its cancel: the main thread never waits for it,
// and the pool thread is free again this soon.
void BM_MinimapCancelLatency(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    MinimapRenderer::Input input = minimapInput(map.tables);
    input.pixelSize = QSize(164, 164);
    for (auto _ : state) {
        std::atomic<bool> started{false}, cancelled{false};
        std::thread render([&] {
            MinimapRenderer::render(input, [&] {
                started = true;
                return cancelled.load();
            });
            started = true;
        });
        while (!started)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // well into the render
        const auto t0 = std::chrono::steady_clock::now();
        cancelled = true;
        render.join();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
    }
}
BENCHMARK(BM_MinimapCancelLatency)->Arg(50000)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
