// Reading, writing, undo capture and word fractions of generated sermons.
#include "SermonGenerator.h"

#include "core/MarkdownCodec.h"
#include "core/SermonDocument.h"
#include "core/WordCount.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <random>

namespace {

QString sermonText(int lines)
{
    return MarkdownCodec::serialize(SermonMetadata{}, *generateSermon(lines));
}

void BM_ReadSermon(benchmark::State& state)
{
    const QString text = sermonText(int(state.range(0)));
    for (auto _ : state) {
        auto split = MarkdownCodec::splitFrontMatter(text);
        benchmark::DoNotOptimize(MarkdownCodec::parseBody(split.body));
    }
}
BENCHMARK(BM_ReadSermon)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

void BM_WriteSermon(benchmark::State& state)
{
    const auto root = generateSermon(int(state.range(0)));
    SermonMetadata metadata;
    metadata.scripture = QStringLiteral("Romans 8:28-39");
    metadata.duration = 30;
    for (auto _ : state)
        benchmark::DoNotOptimize(MarkdownCodec::serialize(metadata, *root));
}
BENCHMARK(BM_WriteSermon)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Bytes in use on the heap, for what a history holds.
size_t heapInUse()
{
    return mallinfo2().uordblks;
}

// One undo step as an edit takes it, after one line's text changed, and the memory that a full
// history of such steps holds: the counters are bytes a node for one step, and megabytes for all.
void BM_CaptureUndo(benchmark::State& state)
{
    const int lines = int(state.range(0));
    SermonDocument document(generateSermon(lines));
    const auto nodes = document.root()->flattened();
    std::mt19937 random(11);
    auto editOneLine = [&] {
        const auto& node = nodes[std::uniform_int_distribution<size_t>(0, nodes.size() - 1)(random)];
        node->setText(node->text() + QLatin1Char('.'));
    };
    for (auto _ : state) {
        state.PauseTiming();
        editOneLine();
        state.ResumeTiming();
        document.captureUndo(std::nullopt);
    }

    SermonDocument history(generateSermon(lines));
    const auto historyNodes = history.root()->flattened();
    const size_t before = heapInUse();
    for (int step = 0; step < SermonDocument::undoLimit; ++step) {
        const auto& node = historyNodes[std::uniform_int_distribution<size_t>(0, historyNodes.size() - 1)(random)];
        node->setText(node->text() + QLatin1Char('.'));
        history.captureUndo(std::nullopt);
    }
    const double held = double(heapInUse() - before);
    state.counters["bytesPerNode"] = held / SermonDocument::undoLimit / double(historyNodes.size());
    state.counters["historyMB"] = held / 1e6;
}
BENCHMARK(BM_CaptureUndo)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Undo then redo of one line's edit somewhere in the tree: what the restore itself costs, the
// step captured and the edit made outside the timing.
void BM_UndoRestore(benchmark::State& state)
{
    SermonDocument document(generateSermon(int(state.range(0))));
    std::vector<NodeID> ids;
    for (const auto& node : document.root()->flattened())
        ids.push_back(node->id());
    std::mt19937 random(13);
    for (auto _ : state) {
        state.PauseTiming();
        const NodeID id = ids[std::uniform_int_distribution<size_t>(1, ids.size() - 1)(random)];
        document.captureUndo(std::nullopt);
        const auto node = document.root()->find(id);
        node->setText(node->text() + QLatin1Char('.'));
        state.ResumeTiming();
        document.undo();
        document.redo();
    }
}
BENCHMARK(BM_UndoRestore)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

void BM_NodeWordFractions(benchmark::State& state)
{
    // Leaves only under the root, so the count is the number of leaves.
    auto root = SermonNode::make(QStringLiteral("Leaves"), 0);
    const auto source = generateSermon(int(state.range(0)) * 2);
    for (const auto& node : source->flattened()) {
        if (int(root->children().size()) >= state.range(0))
            break;
        root->addChild(node->text());
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(WordCount::nodeWordFractions(*root));
}
BENCHMARK(BM_NodeWordFractions)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

} // namespace
