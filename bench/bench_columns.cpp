// The columns view over generated sermons (5,000 lines is the reference), in a 1600 by 1000 view:
// the layout, one frame while every cell glides, and a keystroke in the editor to the next frame.
#include "BenchApplication.h"
#include "SermonGenerator.h"

#include "columns/ColumnCanvas.h"
#include "columns/ColumnEditorOverlay.h"
#include "columns/ColumnLayout.h"
#include "core/SermonDocument.h"
#include "editing/DocumentController.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTextCursor>

#include <benchmark/benchmark.h>

namespace {

constexpr QSize viewSize(1600, 1000);

struct ColumnsFixture {
    SermonDocument document;
    ColumnCanvas canvas;
    QImage image{viewSize, QImage::Format_ARGB32_Premultiplied};
    double clock = 0;

    explicit ColumnsFixture(int lines)
        : document((ensureApplication(), generateSermon(lines)))
        , canvas(&document)
    {
        canvas.resize(viewSize);
        canvas.animator().setClock([this] { return clock; });
        // Look at the middle of the table, a little scrolled, where headings are pinned.
        canvas.setPanOffset(QPointF(0, -canvas.layout().totalSize.height() * 0.5));
    }

    void draw()
    {
        QPainter painter(&image);
        canvas.drawInto(painter, false);
    }
};

void BM_ColumnLayoutCompute(benchmark::State& state)
{
    ensureApplication();
    const SermonNodePtr root = generateSermon(int(state.range(0)));
    // Warm, as after any change: otherwise the largest sizes, run once, measure the first
    // wrapping of every line and the smaller ones do not. Into the last layout, as the view does.
    ColumnLayout layout;
    ColumnLayout::compute(*root, {}, layout);
    for (auto _ : state) {
        ColumnLayout::compute(*root, {}, layout);
        benchmark::DoNotOptimize(layout);
    }
}
BENCHMARK(BM_ColumnLayoutCompute)->Arg(300)->Arg(5000)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond);

// A frame with nothing moving, for comparison.
void BM_ColumnFrameStill(benchmark::State& state)
{
    ColumnsFixture f(int(state.range(0)));
    for (auto _ : state)
        f.draw();
}
BENCHMARK(BM_ColumnFrameStill)->Arg(300)->Arg(5000)->Unit(benchmark::kMillisecond);

// Every cell moves a row down (a line inserted at the top) and the glide is half way.
void BM_ColumnFrameWhileEveryCellGlides(benchmark::State& state)
{
    ColumnsFixture f(int(state.range(0)));
    f.document.root()->insertChild(0, SermonNode::make(QStringLiteral("A new first point"), 1));
    f.canvas.recomputeLayout(true);
    for (auto _ : state) {
        f.clock = 0.1;
        f.canvas.animator().tick();
        f.draw();
    }
}
BENCHMARK(BM_ColumnFrameWhileEveryCellGlides)
    ->Arg(300)
    ->Arg(5000)
    ->Arg(20000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);

// A letter typed into the editor, then taken back: the node takes the text, the table relays
// and the next frame is drawn.
void BM_ColumnEditorKeystrokeToFrame(benchmark::State& state)
{
    ColumnsFixture f(int(state.range(0)));
    const auto& children = f.document.root()->children();
    const SermonNodePtr line = children[children.size() / 2];
    f.canvas.beginEdit(line->id(), false);
    ColumnEditorOverlay* editor = f.canvas.editor();
    bool typing = true;
    for (auto _ : state) {
        QTextCursor cursor = editor->textCursor();
        if (typing)
            cursor.insertText(QStringLiteral("a"));
        else
            cursor.deletePreviousChar();
        typing = !typing;
        f.draw();
    }
    if (line->text().isEmpty())
        state.SkipWithError("the keystrokes did not reach the node");
}
BENCHMARK(BM_ColumnEditorKeystrokeToFrame)->Arg(300)->Arg(5000)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond);

// A line break typed into the editor, then taken back: the cell gains or loses a row on every
// keystroke, and the whole table is laid out again.
void BM_ColumnEditorKeystrokeAddingARow(benchmark::State& state)
{
    ColumnsFixture f(int(state.range(0)));
    const auto& children = f.document.root()->children();
    const SermonNodePtr line = children[children.size() / 2];
    f.canvas.beginEdit(line->id(), false);
    ColumnEditorOverlay* editor = f.canvas.editor();
    const double rows = f.canvas.layout().frames.at(line->id()).size.height();
    bool typing = true;
    for (auto _ : state) {
        QTextCursor cursor = editor->textCursor();
        if (typing)
            cursor.insertText(QStringLiteral("\n"));
        else
            cursor.deletePreviousChar();
        typing = !typing;
        f.draw();
    }
    if (typing)
        editor->textCursor().insertText(QStringLiteral("\n"));
    if (f.canvas.layout().frames.at(line->id()).size.height() != rows + ColumnLayout::rowHeight)
        state.SkipWithError("the line break did not add a row");
}
BENCHMARK(BM_ColumnEditorKeystrokeAddingARow)
    ->Arg(300)
    ->Arg(5000)
    ->Arg(20000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);

} // namespace
