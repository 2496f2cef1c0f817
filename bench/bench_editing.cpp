// One key's work in the controller, without any view: what every view pays before it draws.
#include "SermonGenerator.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"

#include <benchmark/benchmark.h>

namespace {

// A document with a leaf in the middle of the tree selected, one with a sibling after it.
struct Editor {
    SermonDocument document;
    DocumentController controller{&document};

    explicit Editor(int lines)
        : document(generateSermon(lines))
    {
        const auto nodes = document.root()->flattened();
        for (size_t i = nodes.size() / 2; i < nodes.size(); ++i) {
            const NodeID id = nodes[i]->id();
            const auto parent = document.root()->parent(id);
            if (!nodes[i]->hasChildren() && parent->indexOfChild(id) + 1 < int(parent->children().size())) {
                controller.setSelectedNodeID(id);
                break;
            }
        }
    }
};

// One key an iteration, the two directions taking turns from `first`.
template <typename Key>
void alternate(benchmark::State& state, bool first, Key&& key)
{
    bool forward = first;
    for (auto _ : state) {
        key(forward);
        forward = !forward;
    }
}

// Down then Up, one key an iteration.
void BM_MoveSelection(benchmark::State& state)
{
    Editor editor(int(state.range(0)));
    const auto start = editor.controller.selectedNodeID();
    editor.controller.moveSelection(true);
    if (editor.controller.selectedNodeID() == start)
        state.SkipWithError("Down moved nothing");
    alternate(state, false, [&](bool forward) { editor.controller.moveSelection(forward); });
}
BENCHMARK(BM_MoveSelection)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Shift+Down then Shift+Up: the range from the anchor is worked out anew for each.
void BM_ExtendSelection(benchmark::State& state)
{
    Editor editor(int(state.range(0)));
    alternate(state, true, [&](bool forward) { editor.controller.extendSelection(forward); });
}
BENCHMARK(BM_ExtendSelection)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

// Alt+Down then Alt+Up: a structural edit with its undo step.
void BM_MoveLine(benchmark::State& state)
{
    Editor editor(int(state.range(0)));
    alternate(state, true, [&](bool down) { down ? editor.controller.moveDown() : editor.controller.moveUp(); });
}
BENCHMARK(BM_MoveLine)->Apply(sermonSizes)->Unit(benchmark::kMillisecond);

} // namespace
