#include "EditingFixture.h"

#include "core/MarkdownCodec.h"
#include "editing/ClipboardText.h"

#include <QRandomGenerator>

namespace {

using Clipboard = Editing;

QString board(const MemoryPasteboard& p)
{
    return p.string().value_or(QStringLiteral("<empty>"));
}

TEST_F(Clipboard, CopyTakesTheLinesOnlyWithoutMarks)
{
    load("T\n  a\n    a1\n  > q\n  b");
    select(QStringList{"a1", "q", "a"});
    controller->copy();
    EXPECT_EQ(board(pasteboard), "a\nq") << "a1 is pruned under its selected parent";
}

TEST_F(Clipboard, CopyBranchWritesMarkdownWithEachTopAsATitle)
{
    load("T\n  a\n    > q\n    + b\n      b1\n  leaf\n  > quote");
    node("quote")->setText("line one\nline two");
    select(QStringList{"a", "leaf", "line one\nline two"});
    controller->copyBranch();
    EXPECT_EQ(board(pasteboard),
              "# a\n\n> q\n\n## b\n" + MarkdownCodec::collapseMarker + "\n\nb1\nleaf\n> line one\n> line two");
}

TEST_F(Clipboard, CopiedBranchPastesBackWhole)
{
    load("T\n  Opening\n    Story\n      + Porch\n        chair\n    > Never\n  Close");
    select("Opening");
    controller->copyBranch();
    select("Close");
    controller->paste();
    EXPECT_EQ(tree(), "T(Opening(Story(Porch+(chair)), >Never), Close(Opening(Story(Porch+(chair)), >Never)))");
    EXPECT_EQ(node("Close")->children()[0]->depth(), 2);
    EXPECT_EQ(selected(), "Opening");
    EXPECT_EQ(controller->selectedNodeID(), node("Close")->children()[0]->id());
    EXPECT_EQ(shown.back(), *controller->selectedNodeID());
    EXPECT_EQ(steps(), 1);
}

TEST_F(Clipboard, CutCopiesTextThenDeletes)
{
    load("T\n  a\n    a1\n  b");
    select("a");
    controller->cut();
    EXPECT_EQ(board(pasteboard), "a");
    EXPECT_EQ(tree(), "T(b)");
    EXPECT_EQ(steps(), 1);

    pasteboard.setString("kept");
    select(QStringList{"b", "T"});
    controller->cut();
    EXPECT_EQ(board(pasteboard), "kept") << "with the title selected nothing is cut or copied";
    EXPECT_EQ(steps(), 1);
}

TEST_F(Clipboard, PasteGoesUnderTheSelectionAndOpensIt)
{
    load("T\n  + a\n    a1\n  > q");
    pasteboard.setString("new");
    select("a");
    controller->paste();
    EXPECT_EQ(tree(), "T(a(a1, new), >q)");

    select("q");
    controller->paste();
    pasteboard.setString(" \n\t\n");
    select("a");
    controller->paste();
    EXPECT_EQ(tree(), "T(a(a1, new), >q)") << "no paste onto a quote, none of blanks";
    EXPECT_EQ(steps(), 1);
}

struct PasteCase {
    const char* name;
    QString text;
    const char* result; // children pasted under "P", which stands at depth 1
};

class ParsePasted : public ::testing::TestWithParam<PasteCase> {};

TEST_P(ParsePasted, MakesTheExpectedLines)
{
    auto host = SermonNode::make("P", 1);
    for (const auto& node : ClipboardText::parsePasted(GetParam().text, 1))
        host->insertChildKeepingDepths(int(host->children().size()), node);
    EXPECT_EQ(shape(*host), GetParam().result);
    // Levels are renumbered from the host down, so gaps in pasted headings are closed.
    for (const auto& node : host->flattened()) {
        if (node != host) {
            EXPECT_EQ(node->depth(), host->parent(node->id())->depth() + 1) << node->text().toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ParsePasted,
    ::testing::Values(PasteCase{"Sentences", "One. Two. Three.", "P(One., Two., Three.)"},
                      PasteCase{"LinesWin", "First. Still first\nSecond!", "P(First. Still first, Second!)"},
                      PasteCase{"NestedList", "- a\n  - b", "P(a(b))"}, PasteCase{"Quote", "> a", "P(>a)"},
                      PasteCase{"TitleAlone", "# T", "P(T)"},
                      PasteCase{"TitledBranch", "# Title\n\nbody\n## Sub\nkid", "P(Title(body, Sub(kid)))"},
                      PasteCase{"TwoHeadings", "## A\n## B", "P(A, B)"},
                      PasteCase{"GapsClosed", "# T\n#### deep\nx", "P(T(deep(x)))"},
                      PasteCase{"NoFrontMatter", "---\nx: 1\n---", "P(---, x: 1, ---)"},
                      PasteCase{"CrLf", "- a\r\n- b\r\n", "P(a, b)"},
                      PasteCase{"Abbreviation", "See e.g. this", "P(See e.g., this)"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(SplitPlainText, CutsOneLineAtSentenceEndsOnly)
{
    EXPECT_EQ(ClipboardText::splitPlainText("Wait... what?! Yes"), (QStringList{"Wait...", "what?!", "Yes"}));
    EXPECT_EQ(ClipboardText::splitPlainText("v1.2 is out"), QStringList{"v1.2 is out"});
    EXPECT_EQ(ClipboardText::splitPlainText("  \n  "), QStringList{});
    EXPECT_EQ(ClipboardText::splitPlainText("  end.  "), QStringList{"end."});
}

// ---- text from anywhere never brings the editor down ----------------------------------------

TEST_F(Clipboard, PasteOfADeepListStaysIterative)
{
    load("T\n  host");
    const int levels = 5000;
    QString text;
    for (int i = 0; i < levels; ++i)
        text += QString(i / 4, QLatin1Char('\t')) + QString(i % 4, QLatin1Char(' ')) + QStringLiteral("- x\n");
    pasteboard.setString(text);
    select("host");
    controller->paste();
    int depth = 0;
    for (SermonNodePtr n = node("host"); n->hasChildren(); n = n->children().front())
        depth = n->children().front()->depth();
    EXPECT_EQ(depth, levels + 1);

    select("host");
    controller->copyBranch();
    EXPECT_TRUE(board(pasteboard).startsWith("# host\n\n## x\n\n### x\n"));
    controller->deleteSelection();
    undoManager.undo();
    EXPECT_EQ(root()->flattened().size(), size_t(levels + 2));
}

TEST_F(Clipboard, PasteOfJunkMakesLinesAndNeverFails)
{
    load("T\n  host");
    QByteArray bytes(1 << 20, '\0');
    QRandomGenerator generator(7);
    for (char& b : bytes)
        b = char(generator.bounded(256));
    select("host");
    pasteboard.setString(QString::fromUtf8(bytes));
    controller->paste();
    pasteboard.setString(QString::fromLatin1(bytes));
    select("host");
    controller->paste();
    const SermonNodePtr host = node("host");
    EXPECT_GE(host->children().size(), 2u);
    for (const auto& n : root()->flattened())
        if (n != root() && n != host) {
            EXPECT_GE(n->depth(), 2) << "every pasted line sits below the host";
        }
}

} // namespace
