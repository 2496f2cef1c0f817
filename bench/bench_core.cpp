// Reading, writing, undo capture and word fractions of generated sermons.
#include "SermonGenerator.h"

#include "core/MarkdownCodec.h"
#include "core/SermonDocument.h"
#include "core/WordCount.h"

#include <benchmark/benchmark.h>

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
BENCHMARK(BM_ReadSermon)->Arg(300)->Arg(5000)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_WriteSermon(benchmark::State& state)
{
    const auto root = generateSermon(int(state.range(0)));
    SermonMetadata metadata;
    metadata.scripture = QStringLiteral("Romans 8:28-39");
    metadata.duration = 30;
    for (auto _ : state)
        benchmark::DoNotOptimize(MarkdownCodec::serialize(metadata, *root));
}
BENCHMARK(BM_WriteSermon)->Arg(300)->Arg(5000)->Unit(benchmark::kMillisecond);

void BM_CaptureUndo(benchmark::State& state)
{
    SermonDocument document(generateSermon(int(state.range(0))));
    for (auto _ : state)
        document.captureUndo(std::nullopt);
}
BENCHMARK(BM_CaptureUndo)->Arg(300)->Arg(5000)->Unit(benchmark::kMillisecond);

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
BENCHMARK(BM_NodeWordFractions)->Arg(5000)->Unit(benchmark::kMillisecond);

} // namespace
