// What a user waits for on the map, from the key to the next frame, over generated sermons of
// 300 to 100,000 lines in a 1600 by 1000 window: opening a file (read, cold layout and the first
// paint), moving the selection, typing, Return, a commit, undo and a move with its glide.
#include "BenchApplication.h"
#include "SermonGenerator.h"

#include "core/MarkdownCodec.h"
#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "editing/DocumentController.h"
#include "map/MindMapCanvas.h"
#include "map/NodeEditorOverlay.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPlainTextEdit>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>

namespace {

constexpr QSize viewSize(1600, 1000);

// Counts paint events, so that a frame said to be drawn is seen to be.
struct PaintCounter : QObject {
    int count = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
};

// Runs what the event loop would run before the next frame, then paints what asked for it.
// Nothing that waits on a clock fires here, so a glide draws its first frame only.
void nextFrame()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
}

void press(QWidget* target, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {})
{
    QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(target, &down);
    QKeyEvent up(QEvent::KeyRelease, key, modifiers, text);
    QCoreApplication::sendEvent(target, &up);
}

QByteArray sermonBytes(int lines)
{
    return MarkdownCodec::serialize(SermonMetadata{}, *generateSermon(lines)).toUtf8();
}

// One open window on a sermon, with a leaf in the middle of the tree selected and in view.
struct CanvasFixture {
    std::unique_ptr<SermonDocument> document;
    UndoManager undoManager;
    std::unique_ptr<MindMapCanvas> canvas;
    PaintCounter paints;
    NodeID leaf;

    explicit CanvasFixture(int lines)
    {
        ensureApplication();
        document = std::make_unique<SermonDocument>(generateSermon(lines));
        canvas = std::make_unique<MindMapCanvas>(document.get());
        canvas->setUndoManager(&undoManager);
        canvas->resize(viewSize);
        canvas->show();
        QCoreApplication::processEvents();
        nextFrame();
        // Keys are measured on an exact layout, with nothing measuring in the background.
        canvas->finishMeasuring();
        const auto nodes = document->root()->flattened();
        // A leaf with a sibling after it, so that Alt+Down always moves it.
        for (size_t i = nodes.size() / 2; i < nodes.size(); ++i) {
            const NodeID id = nodes[i]->id();
            if (nodes[i]->hasChildren() || !canvas->layoutState().layout(id))
                continue;
            const auto parent = document->root()->parent(id);
            if (parent->indexOfChild(id) + 1 < int(parent->children().size())) {
                leaf = id;
                break;
            }
        }
        select(leaf);
        canvas->installEventFilter(&paints);
    }

    DocumentController& controller() { return *canvas->controller(); }
    QWidget* field() { return canvas->editorOverlay()->field(); }

    void select(const NodeID& id)
    {
        controller().setSelectedNodeID(id);
        canvas->centerOn(canvas->layoutState().layout(id)->frame().center());
        nextFrame();
    }

    // A key and the next frame, which must paint the map (the key itself may already have):
    // a key that changed nothing would measure nothing.
    void keyToFrame(benchmark::State& state, QWidget* target, int key, Qt::KeyboardModifiers modifiers = {})
    {
        const int before = paints.count;
        press(target, key, modifiers);
        nextFrame();
        // Qt may ask the window system for the frame instead of posting it; the user waits for
        // it all the same, so the wait counts.
        QElapsedTimer waited;
        waited.start();
        while (paints.count == before && waited.elapsed() < 1000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (paints.count == before)
            state.SkipWithError("the key drew no frame");
    }

    void setCounters(benchmark::State& state) const
    {
        state.counters["nodes"] = double(canvas->layoutState().cachedLayouts.size());
    }
};

CanvasFixture& fixture(int lines)
{
    // Kept to the end of the process, like the application's windows.
    static auto* made = new std::map<int, std::unique_ptr<CanvasFixture>>;
    auto& f = (*made)[lines];
    if (!f)
        f = std::make_unique<CanvasFixture>(lines);
    f->paints.count = 0;
    return *f;
}

// Opening a file: its bytes read, the document made, the window shown and its first frame
// painted, what is in sight measured cold.
void BM_OpenToFirstFrame(benchmark::State& state)
{
    ensureApplication();
    const QByteArray bytes = sermonBytes(int(state.range(0)));
    size_t nodes = 0;
    for (auto _ : state) {
        auto document = std::make_unique<SermonDocument>(std::move(*readSermon(bytes)));
        auto canvas = std::make_unique<MindMapCanvas>(document.get());
        PaintCounter paints;
        canvas->installEventFilter(&paints);
        canvas->resize(viewSize);
        canvas->show();
        QCoreApplication::processEvents();
        nextFrame();
        if (paints.count == 0)
            state.SkipWithError("the window was never painted");
        nodes = canvas->layoutState().cachedLayouts.size();
        state.PauseTiming();
        canvas.reset();
        document.reset();
        state.ResumeTiming();
    }
    state.counters["nodes"] = double(nodes);
}
BENCHMARK(BM_OpenToFirstFrame)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// The same until every line is measured and laid out again, in wall time: the lines out of
// sight are measured on another thread while the window already answers.
void BM_OpenToExactLayout(benchmark::State& state)
{
    ensureApplication();
    const QByteArray bytes = sermonBytes(int(state.range(0)));
    for (auto _ : state) {
        auto document = std::make_unique<SermonDocument>(std::move(*readSermon(bytes)));
        auto canvas = std::make_unique<MindMapCanvas>(document.get());
        canvas->resize(viewSize);
        canvas->show();
        QCoreApplication::processEvents();
        nextFrame();
        while (canvas->layoutState().hasEstimates)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
        state.PauseTiming();
        canvas.reset();
        document.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_OpenToExactLayout)->Apply(sermonSizes)->Unit(benchmark::kMillisecond)->UseRealTime();

// Down, then Up: the selection moves and the map repaints.
void BM_KeyDown(benchmark::State& state)
{
    CanvasFixture& f = fixture(int(state.range(0)));
    bool down = true;
    for (auto _ : state) {
        f.keyToFrame(state, f.canvas.get(), down ? Qt::Key_Down : Qt::Key_Up);
        down = !down;
    }
    f.select(f.leaf);
    f.setCounters(state);
}
BENCHMARK(BM_KeyDown)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// One character typed into the open editor of a line.
void BM_TypeCharacter(benchmark::State& state)
{
    CanvasFixture& f = fixture(int(state.range(0)));
    f.controller().startSession(f.leaf, false);
    nextFrame();
    for (auto _ : state) {
        press(f.field(), Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
        nextFrame();
    }
    press(f.field(), Qt::Key_Escape);
    f.select(f.leaf);
    f.setCounters(state);
}
BENCHMARK(BM_TypeCharacter)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// One character typed at the end of a very long line (the argument is its length in characters)
// in a short sermon: the editor grows to fit what was typed.
void BM_TypeCharacterInLongLine(benchmark::State& state)
{
    ensureApplication();
    SermonDocument document(generateSermon(300));
    const auto nodes = document.root()->flattened();
    QString text;
    for (size_t i = 0; text.size() < state.range(0); i = (i + 1) % nodes.size())
        text += nodes[i]->text() + QLatin1Char(' ');
    text.truncate(qsizetype(state.range(0)));
    const NodeID line = nodes.back()->id();
    nodes.back()->setText(text);
    MindMapCanvas canvas(&document);
    canvas.resize(viewSize);
    canvas.show();
    QCoreApplication::processEvents();
    canvas.controller()->startSession(line, false);
    nextFrame();
    for (auto _ : state) {
        press(canvas.editorOverlay()->field(), Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
        nextFrame();
    }
    state.counters["characters"] = double(canvas.controller()->editingText().size());
}
BENCHMARK(BM_TypeCharacterInLongLine)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Return on a selected line: an undo step, a new line below, the relayout and its editor.
void BM_Return(benchmark::State& state)
{
    CanvasFixture& f = fixture(int(state.range(0)));
    for (auto _ : state) {
        f.keyToFrame(state, f.canvas.get(), Qt::Key_Return);
        state.PauseTiming();
        press(f.field(), Qt::Key_Escape); // the empty line goes again
        f.select(f.leaf);
        state.ResumeTiming();
    }
    f.setCounters(state);
}
BENCHMARK(BM_Return)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Return in the editor of a line whose text changed: the commit, its relayout and the frame.
void BM_Commit(benchmark::State& state)
{
    CanvasFixture& f = fixture(int(state.range(0)));
    bool longer = false;
    for (auto _ : state) {
        state.PauseTiming();
        f.controller().startSession(f.leaf, false);
        nextFrame();
        longer = !longer;
        if (longer)
            press(f.field(), Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
        else
            press(f.field(), Qt::Key_Backspace);
        nextFrame();
        state.ResumeTiming();
        f.keyToFrame(state, f.field(), Qt::Key_Return);
    }
    f.setCounters(state);
}
BENCHMARK(BM_Commit)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Ctrl+Z after a move: the whole tree swapped back, relaid out, the glide started and drawn.
void BM_Undo(benchmark::State& state)
{
    CanvasFixture& f = fixture(int(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        press(f.canvas.get(), Qt::Key_Down, Qt::AltModifier);
        nextFrame();
        state.ResumeTiming();
        f.keyToFrame(state, f.canvas.get(), Qt::Key_Z, Qt::ControlModifier);
    }
    f.select(f.leaf);
    f.setCounters(state);
}
BENCHMARK(BM_Undo)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Alt+Down, then Alt+Up: an undo step, the move, the relayout, the glide started and drawn.
void BM_MoveDown(benchmark::State& state)
{
    CanvasFixture& f = fixture(int(state.range(0)));
    bool down = true;
    for (auto _ : state) {
        f.keyToFrame(state, f.canvas.get(), down ? Qt::Key_Down : Qt::Key_Up, Qt::AltModifier);
        down = !down;
    }
    f.setCounters(state);
}
BENCHMARK(BM_MoveDown)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

} // namespace
