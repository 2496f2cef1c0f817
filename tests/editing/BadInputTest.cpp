// Operations that cannot apply leave the document and both undo stacks exactly as they were:
// on an empty selection, on lines that have gone from the tree, on the title where refused.

#include "EditingFixture.h"

#include "editing/Markers.h"

#include <functional>

namespace {

struct Operation {
    const char* name;
    std::function<void(DocumentController&)> run;
};

void PrintTo(const Operation& op, std::ostream* os)
{
    *os << op.name;
}

const std::vector<Operation>& operations()
{
    using D = DocumentController;
    static const std::vector<Operation> all{
        {"delete", &D::deleteSelection},
        {"duplicate", &D::duplicate},
        {"moveUp", &D::moveUp},
        {"moveDown", &D::moveDown},
        {"promote", &D::promote},
        {"demote", &D::demote},
        {"fold", &D::fold},
        {"unfold", &D::unfold},
        {"newLineBelow", &D::newLineBelow},
        {"newLineAbove", &D::newLineAbove},
        {"newLineUnder", &D::newLineUnder},
        {"toggleQuote", &D::toggleQuote},
        {"setMarker", [](D& c) { c.setMarker(Markers::all()[0].symbol); }},
        {"removeMarker", &D::removeMarker},
        {"split", &D::split},
        {"splitSentences", &D::splitSentences},
        {"join", [](D& c) { c.join(); }},
        {"copy", &D::copy},
        {"copyBranch", &D::copyBranch},
        {"cut", &D::cut},
        {"paste", &D::paste},
        {"beginEditing", &D::beginEditing},
        {"commit", [](D& c) { c.commit(true); }},
        {"return", &D::editorReturn},
        {"insertLineAbove", &D::editorInsertLineAbove},
        {"splitAtCursor", [](D& c) { c.editorSplitAtCursor(1); }},
        {"tab", &D::editorTab},
        {"shiftTab", &D::editorShiftTab},
        {"escape", &D::editorEscape},
        {"up", [](D& c) { c.moveSelection(false); }},
        {"extendDown", [](D& c) { c.extendSelection(true); }},
        {"left", &D::selectParent},
        {"right", &D::selectFirstChild},
        {"stepMatch", [](D& c) { c.stepMatch(true); }},
    };
    return all;
}

const QString kOutline = QStringLiteral("T\n  a\n    a1\n  b\n  > q\n  c. D.");

class BadInput : public Editing, public ::testing::WithParamInterface<Operation> {
protected:
    void SetUp() override
    {
        load(kOutline);
        pasteboard.setString("# pasted\n- x");
        before = document->snapshot();
    }
    void expectUntouched()
    {
        EXPECT_EQ(document->snapshot(), before);
        EXPECT_EQ(steps(), 0);
        EXPECT_FALSE(undoManager.canUndo());
    }
    QString before;
};

TEST_P(BadInput, EmptySelectionChangesNothing)
{
    GetParam().run(*controller);
    expectUntouched();
}

TEST_P(BadInput, LinesGoneFromTheTreeChangeNothing)
{
    const NodeID gone = id("a1");
    const NodeID alsoGone = id("b");
    const NodeID edited = id("c. D.");
    controller->startSession(edited, false); // a session left on a line that goes as well
    for (const NodeID& line : {gone, alsoGone, edited})
        root()->removeNode(line);
    before = document->snapshot();
    controller->setSelectedNodeID(gone);
    controller->setSelectedNodeIDs({gone, alsoGone});

    GetParam().run(*controller);
    expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(Operations, BadInput, ::testing::ValuesIn(operations()),
                         [](const auto& test) { return std::string(test.param.name); });

// Where the title is refused, it is refused without a trace.
class TitleRefused : public BadInput {};

TEST_P(TitleRefused, LeavesNoStep)
{
    select("T");
    controller->beginEditing();
    GetParam().run(*controller);
    expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(Operations, TitleRefused, ::testing::ValuesIn([] {
                             std::vector<Operation> refused;
                             for (const Operation& op : operations())
                                 for (const char* name :
                                      {"delete", "duplicate", "moveUp", "moveDown", "promote", "demote", "newLineBelow",
                                       "newLineAbove", "split", "cut", "splitAtCursor", "insertLineAbove", "return"})
                                     if (std::string(op.name) == name)
                                         refused.push_back(op);
                             return refused;
                         }()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Editing, StartingASessionOnALineOutsideTheTreeDoesNothing)
{
    load(kOutline);
    auto stray = SermonNode::make("stray", 1);
    controller->startSession(stray->id(), true);
    EXPECT_FALSE(controller->editingNodeID());
    EXPECT_FALSE(controller->selectedNodeID());
}

} // namespace
