// The map's layout and drawing over a generated 5,000-line sermon, in a 1600 by 1000 view.
#include "SermonGenerator.h"

#include "map/MapDrawing.h"
#include "map/MapLayoutState.h"
#include "map/MapPalette.h"
#include "map/TextBitmapCache.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

constexpr QSize viewSize(1600, 1000);

// Fonts need an application; the offscreen platform needs no display.
void ensureApplication()
{
    static QGuiApplication* app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "bench_map";
        static char* argv[] = {name, nullptr};
        return new QGuiApplication(argc, argv);
    }();
    (void)app;
}

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
BENCHMARK(BM_DrawWarmCache)->Arg(5000)->Unit(benchmark::kMillisecond);

void BM_DrawColdCache(benchmark::State& state)
{
    MapFixture map(int(state.range(0)));
    for (auto _ : state) {
        map.cache.clear();
        map.draw();
    }
}
BENCHMARK(BM_DrawColdCache)->Arg(5000)->Unit(benchmark::kMillisecond);

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
BENCHMARK(BM_PanFrame)->Arg(5000)->Unit(benchmark::kMillisecond);

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
BENCHMARK(BM_RecomputeLayoutAfterEdit)->Arg(5000)->Unit(benchmark::kMillisecond);

} // namespace
