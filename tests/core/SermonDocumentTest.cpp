#include "TreeOutline.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <unordered_map>
#include <vector>

namespace {

std::vector<const FrozenNode*> frozenNodes(const FrozenNodePtr& top)
{
    std::vector<const FrozenNode*> out;
    std::vector<const FrozenNode*> stack{top.get()};
    while (!stack.empty()) {
        const FrozenNode* node = stack.back();
        stack.pop_back();
        out.push_back(node);
        for (const auto& child : node->children())
            stack.push_back(child.get());
    }
    return out;
}

SermonDocument makeDocument()
{
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    root->addChild(QStringLiteral("first"));
    return SermonDocument(root);
}

void rename(SermonDocument& doc, const QString& text, UndoManager* manager = nullptr)
{
    doc.captureUndo(doc.root()->id(), manager);
    doc.root()->setText(text);
}

TEST(SermonDocument, KeepsFiftyStepsAndDropsTheOldest)
{
    auto doc = makeDocument();
    for (int i = 1; i <= 51; ++i)
        rename(doc, QString::number(i));
    EXPECT_EQ(doc.undoStack().size(), 50u);
    for (int i = 0; i < 50; ++i)
        doc.undo();
    EXPECT_EQ(doc.root()->text(), "1"); // the step back to "Title" was dropped
    EXPECT_TRUE(doc.undoStack().empty());
    const int generation = doc.undoRedoGeneration();
    doc.undo();
    EXPECT_EQ(doc.undoRedoGeneration(), generation);
    EXPECT_EQ(doc.root()->text(), "1");
}

TEST(SermonDocument, UndoRedoRestoresTreeMetadataAndSelection)
{
    auto doc = makeDocument();
    const auto first = doc.root()->children().front();
    const NodeID firstID = first->id();

    doc.captureUndo(firstID);
    SermonMetadata m;
    m.series = QStringLiteral("Advent");
    doc.setMetadata(m);
    doc.root()->removeNode(firstID);
    doc.setCurrentSelectedNodeID(doc.root()->id());

    doc.undo();
    EXPECT_EQ(doc.metadata(), SermonMetadata{});
    ASSERT_EQ(doc.root()->children().size(), 1u);
    EXPECT_EQ(doc.root()->children().front()->id(), firstID);
    EXPECT_EQ(doc.lastRestoredNodeID(), firstID);

    doc.redo();
    EXPECT_EQ(doc.metadata().series, "Advent");
    EXPECT_TRUE(doc.root()->children().empty());
    EXPECT_EQ(doc.lastRestoredNodeID(), doc.root()->id());
    EXPECT_EQ(doc.undoRedoGeneration(), 2);
}

TEST(SermonDocument, AStepKeepsTheTreeAsItWasAndSharesWhatDidNotChange)
{
    struct Row {
        const char* change;
        std::function<void(SermonNode& a)> apply; // changes only the first branch, if anything
        int made; // frozen lines the second step does not share with the first: the changed path
    };
    const std::vector<Row> rows{
        {"nothing", [](SermonNode&) {}, 0},
        {"a line's text", [](SermonNode& a) { a.children()[0]->setText(QStringLiteral("changed")); }, 3},
        {"a line's text and back",
         [](SermonNode& a) {
             a.children()[0]->setText(QStringLiteral("changed"));
             a.children()[0]->setText(QStringLiteral("a1"));
         },
         0},
        {"a line's level", [](SermonNode& a) { a.children()[1]->setDepth(3); }, 3},
        {"a fold", [](SermonNode& a) { a.setCollapsed(true); }, 2},
        {"a quote", [](SermonNode& a) { a.children()[1]->setQuote(true); }, 3},
        {"a line added", [](SermonNode& a) { a.addChild(QStringLiteral("new")); }, 3},
        {"a line added deep", [](SermonNode& a) { a.children()[1]->addChild(QStringLiteral("new")); }, 4},
        {"a line removed", [](SermonNode& a) { a.removeChild(0); }, 2},
        {"lines swapped", [](SermonNode& a) { a.moveChild(0, 1); }, 2},
        {"a line taken out and put back", [](SermonNode& a) { a.insertChildKeepingDepths(0, a.removeChild(0)); }, 0},
    };
    for (const Row& row : rows) {
        auto root = SermonNode::make(QStringLiteral("Title"), 0);
        const auto a = root->addChild(QStringLiteral("A"));
        a->addChild(QStringLiteral("a1"));
        a->addChild(QStringLiteral("a2"));
        root->addChild(QStringLiteral("B"))->addChild(QStringLiteral("b1"));
        SermonDocument doc(root);
        const QString before = outline(*root);

        doc.captureUndo(std::nullopt);
        row.apply(*a);
        const QString after = outline(*root);
        doc.captureUndo(std::nullopt);

        const FrozenNodePtr first = doc.undoStack()[0].root;
        const FrozenNodePtr second = doc.undoStack()[1].root;
        EXPECT_EQ(outline(*SermonNode::thaw(first)), before) << row.change;
        EXPECT_EQ(outline(*SermonNode::thaw(second)), after) << row.change;
        EXPECT_EQ(first->children()[1], second->children()[1]) << row.change; // the other branch
        EXPECT_EQ(first == second, before == after) << row.change;
        std::set<const FrozenNode*> shared;
        for (const FrozenNode* node : frozenNodes(first))
            shared.insert(node);
        const auto all = frozenNodes(second);
        EXPECT_EQ(std::count_if(all.begin(), all.end(), [&](const FrozenNode* n) { return !shared.contains(n); }),
                  row.made)
            << row.change;
        doc.undo();
        EXPECT_EQ(outline(*doc.root()), after) << row.change;
        EXPECT_EQ(doc.root()->children()[0]->id(), a->id()) << row.change;
        // A restored tree remembers the step it came from, until it changes.
        doc.captureUndo(std::nullopt);
        EXPECT_EQ(doc.undoStack().back().root, second) << row.change;
        doc.root()->children()[1]->children()[0]->setText(QStringLiteral("b1 changed"));
        doc.captureUndo(std::nullopt);
        EXPECT_EQ(doc.undoStack().back().root->children()[0], second->children()[0]) << row.change;
        EXPECT_NE(doc.undoStack().back().root->children()[1], second->children()[1]) << row.change;
    }
}

// Checks `live` against a plain thaw of `frozen`, node by node: what the user sees, the links, the
// lookups and the frozen forms remembered. Returns how many of its nodes are not in `earlier`.
int expectSameAsThaw(const SermonNodePtr& live, const FrozenNodePtr& frozen,
                     const std::set<const SermonNode*>& earlier, const char* what)
{
    EXPECT_EQ(outline(*live), outline(*SermonNode::thaw(frozen))) << what;
    EXPECT_EQ(live->parentNode(), nullptr) << what;
    const auto nodes = live->flattened();
    const auto forms = frozenNodes(frozen);
    std::vector<const FrozenNode*> inOrder; // frozenNodes visits the last child first
    std::vector<const FrozenNode*> stack{frozen.get()};
    while (!stack.empty()) {
        inOrder.push_back(stack.back());
        stack.pop_back();
        for (auto it = inOrder.back()->children().rbegin(); it != inOrder.back()->children().rend(); ++it)
            stack.push_back(it->get());
    }
    EXPECT_EQ(nodes.size(), forms.size()) << what;
    std::unordered_map<NodeID, SermonNodePtr> first; // a walk's answer: the first in tree order
    for (const auto& node : nodes)
        first.emplace(node->id(), node);
    int made = 0;
    for (size_t i = 0; i < nodes.size() && i < inOrder.size(); ++i) {
        const auto& node = nodes[i];
        EXPECT_EQ(node->id(), inOrder[i]->id()) << what;
        EXPECT_EQ(node->freeze().get(), inOrder[i]) << what; // the next step shares it
        EXPECT_EQ(live->find(node->id()), first.at(node->id())) << what;
        EXPECT_EQ(live->parent(node->id()), first.at(node->id())->parentNode()) << what;
        for (const auto& child : node->children())
            EXPECT_EQ(child->parentNode(), node) << what;
        made += !earlier.contains(node.get());
    }
    return made;
}

std::set<const SermonNode*> nodeSet(const SermonNodePtr& root)
{
    std::set<const SermonNode*> out;
    for (const auto& node : root->flattened())
        out.insert(node.get());
    return out;
}

TEST(SermonDocument, UndoAndRedoMakeOnlyWhatDiffersAndEqualAPlainThaw)
{
    struct Row {
        const char* change;
        std::function<void(SermonNode& root)> apply;
        int undoMade; // the lines back from the step that differ from the present: the path to them
        int redoMade;
    };
    auto at = [](SermonNode& root, std::initializer_list<int> path) {
        SermonNode* node = &root;
        for (int i : path)
            node = node->children()[size_t(i)].get();
        return node;
    };
    const std::vector<Row> rows{
        {"nothing", [](SermonNode&) {}, 1, 1},
        {"a deep line's text", [&](SermonNode& r) { at(r, {0, 1, 0})->setText(QStringLiteral("x")); }, 4, 4},
        {"a fold", [&](SermonNode& r) { at(r, {0})->setCollapsed(true); }, 2, 2},
        {"a quote", [&](SermonNode& r) { at(r, {1, 0})->setQuote(true); }, 3, 3},
        {"a line added deep", [&](SermonNode& r) { at(r, {0, 1})->addChild(QStringLiteral("new")); }, 3, 4},
        {"a line removed", [&](SermonNode& r) { at(r, {0})->removeChild(0); }, 3, 2},
        {"a line moved to another parent", [&](SermonNode& r) { r.moveNode(at(r, {1, 0})->id(), at(r, {0})->id(), 0); },
         3, 3},
        {"branches swapped", [](SermonNode& r) { r.moveChild(0, 2); }, 1, 1},
        {"a mix",
         [&](SermonNode& r) {
             at(r, {2})->setText(QStringLiteral("y"));
             at(r, {0, 1})->removeChild(0);
             r.moveChild(1, 0);
         },
         5, 4},
        // One id twice: the present is made anew; a step with it finds the first in tree order.
        {"a line copied with its id", [&](SermonNode& r) { at(r, {1})->appendChild(at(r, {2})->deepCopy(false)); },
         8, 3},
    };
    for (const Row& row : rows) {
        auto build = [] {
            auto root = SermonNode::make(QStringLiteral("Title"), 0);
            const auto a = root->addChild(QStringLiteral("A"));
            a->addChild(QStringLiteral("a1"));
            a->addChild(QStringLiteral("a2"))->addChild(QStringLiteral("a21"));
            root->addChild(QStringLiteral("B"))->addChild(QStringLiteral("b1"));
            root->addChild(QStringLiteral("C"));
            return root;
        };
        // Straight from a tree edited since its last freeze: a changed line is never taken.
        {
            const auto present = build();
            const FrozenNodePtr step = present->freeze();
            row.apply(*present);
            const auto earlier = nodeSet(present);
            present->find(present->id()); // an index to carry over
            EXPECT_EQ(expectSameAsThaw(SermonNode::thaw(step, *present), step, earlier, row.change), row.undoMade)
                << row.change;
        }

        SermonDocument doc(build());
        doc.root()->find(doc.root()->id());
        doc.captureUndo(std::nullopt);
        row.apply(*doc.root());
        const QString edited = outline(*doc.root());
        for (bool undo : {true, false}) {
            const FrozenNodePtr step = (undo ? doc.undoStack() : doc.redoStack()).back().root;
            const auto earlier = nodeSet(doc.root());
            std::vector<NodeID> ids;
            for (const auto& node : doc.root()->flattened())
                ids.push_back(node->id());
            undo ? doc.undo() : doc.redo();
            EXPECT_EQ(expectSameAsThaw(doc.root(), step, earlier, row.change), undo ? row.undoMade : row.redoMade)
                << row.change << undo;
            // The lines that left are gone from the lookups too.
            std::set<NodeID> present;
            for (const auto& node : doc.root()->flattened())
                present.insert(node->id());
            for (const NodeID& id : ids)
                EXPECT_EQ(doc.root()->find(id) != nullptr, present.contains(id)) << row.change << undo;
        }
        EXPECT_EQ(outline(*doc.root()), edited) << row.change;

        // No later edit reaches the history: every line of the present changes, the steps stay.
        doc.undo();
        std::vector<QString> steps;
        for (const auto* stack : {&doc.undoStack(), &doc.redoStack()})
            for (const UndoSnapshot& step : *stack)
                steps.push_back(outline(*SermonNode::thaw(step.root)));
        for (const auto& node : doc.root()->flattened())
            node->setText(node->text() + QLatin1Char('!'));
        doc.root()->children()[0]->addChild(QStringLiteral("later"));
        std::vector<QString> after;
        for (const auto* stack : {&doc.undoStack(), &doc.redoStack()})
            for (const UndoSnapshot& step : *stack)
                after.push_back(outline(*SermonNode::thaw(step.root)));
        EXPECT_EQ(after, steps) << row.change;
        doc.redo();
        EXPECT_EQ(outline(*doc.root()), edited) << row.change;
        EXPECT_EQ(doc.root()->find(doc.root()->children()[0]->id()), doc.root()->children()[0]) << row.change;
    }
}

TEST(SermonDocument, ANewEditEmptiesRedo)
{
    auto doc = makeDocument();
    rename(doc, QStringLiteral("a"));
    doc.undo();
    EXPECT_EQ(doc.redoStack().size(), 1u);
    rename(doc, QStringLiteral("b"));
    EXPECT_TRUE(doc.redoStack().empty());
    doc.redo();
    EXPECT_EQ(doc.root()->text(), "b");
}

TEST(SermonDocument, TheUndoManagerDrivesTheStacksAndTheModifiedState)
{
    auto doc = makeDocument();
    UndoManager manager;
    EXPECT_TRUE(manager.isClean());
    rename(doc, QStringLiteral("a"), &manager);
    rename(doc, QStringLiteral("b"), &manager);
    EXPECT_FALSE(manager.isClean());
    manager.markClean();

    manager.undo();
    EXPECT_EQ(doc.root()->text(), "a");
    EXPECT_FALSE(manager.isClean());
    EXPECT_TRUE(manager.canRedo());
    manager.redo();
    EXPECT_EQ(doc.root()->text(), "b");
    EXPECT_TRUE(manager.isClean());

    // An edit below the saved state can never lead back to it.
    manager.undo();
    rename(doc, QStringLiteral("c"), &manager);
    EXPECT_FALSE(manager.canRedo());
    manager.undo();
    EXPECT_EQ(doc.root()->text(), "a");
    EXPECT_FALSE(manager.isClean());

    // A capture without a manager fills the stacks but shows nothing to undo.
    UndoManager other;
    rename(doc, QStringLiteral("d"));
    EXPECT_FALSE(other.canUndo());
    EXPECT_EQ(doc.undoStack().size(), 2u);
}

TEST(SermonDocument, ReadingRefusesEmptyAndNonUtf8Bytes)
{
    SermonReadError error{};
    EXPECT_FALSE(readSermon(QByteArray(), &error));
    EXPECT_EQ(error, SermonReadError::empty);
    EXPECT_FALSE(readSermon(QByteArray("# T\n\xff\xfe broken\n"), &error));
    EXPECT_EQ(error, SermonReadError::notUtf8);
    EXPECT_FALSE(readSermon(QByteArray("\xc3"), &error));
    EXPECT_EQ(error, SermonReadError::notUtf8);

    auto blank = readSermon(QByteArray("\n"));
    ASSERT_TRUE(blank);
    EXPECT_EQ(outline(*blank->root), "0 Untitled");

    auto fenceOnly = readSermon(QByteArray("---\n---\n"));
    ASSERT_TRUE(fenceOnly);
    EXPECT_EQ(outline(*fenceOnly->root), "0 Untitled");
    EXPECT_EQ(SermonDocument(std::move(*fenceOnly)).snapshot(), "# Untitled\n");
}

TEST(SermonDocument, SettersNotifyOnlyRealChanges)
{
    auto doc = makeDocument();
    int metadataSignals = 0;
    int rootSignals = 0;
    QObject::connect(&doc, &SermonDocument::metadataChanged, [&] { ++metadataSignals; });
    QObject::connect(&doc, &SermonDocument::rootChanged, [&] { ++rootSignals; });
    EXPECT_FALSE(doc.setMetadata(SermonMetadata{}));
    EXPECT_FALSE(doc.setRoot(doc.root()));
    EXPECT_TRUE(doc.setRoot(doc.root()->deepCopy(false)));
    EXPECT_EQ(metadataSignals, 0);
    EXPECT_EQ(rootSignals, 1);
}

} // namespace
