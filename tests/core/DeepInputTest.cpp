#include "core/MarkdownCodec.h"
#include "core/SermonDocument.h"
#include "core/SermonJson.h"
#include "core/WordCount.h"

#include <gtest/gtest.h>

#include <random>

namespace {

// Inputs no person writes but a file can hold: everything must read, walk, copy, write and
// close without overflowing the stack or taking long.

// One column more per level, written with tabs (four columns) where it can: about 10 MB.
QByteArray deepList(int levels)
{
    QByteArray text = "# Deep\n\n";
    for (int i = 0; i < levels; ++i)
        text += QByteArray(i / 4, '\t') + QByteArray(i % 4, ' ') + "- level\n";
    return text;
}

int chainDepth(const SermonNode& root)
{
    const SermonNode* node = &root;
    int depth = 0;
    while (node->hasChildren()) {
        node = node->children().front().get();
        ++depth;
    }
    return depth;
}

TEST(DeepInput, AListNineThousandLevelsDeepSurvivesEveryWalk)
{
    const QByteArray bytes = deepList(9000);
    EXPECT_LT(bytes.size(), 11'000'000);
    auto contents = readSermon(bytes);
    ASSERT_TRUE(contents);
    EXPECT_EQ(chainDepth(*contents->root), 9000);

    SermonDocument doc(std::move(*contents));
    doc.captureUndo(std::nullopt);
    doc.undo();
    // The writer indents two spaces a level, so the text grows to about 80 MB.
    EXPECT_GT(doc.fileContents().size(), 80'000'000);
    EXPECT_EQ(WordCount::wordCount(*doc.root()), 9001);
    EXPECT_EQ(WordCount::nodeWordFractions(*doc.root()).size(), 1u);
    EXPECT_EQ(doc.root()->flattened().size(), 9001u);
    EXPECT_FALSE(SermonJson::toJson(doc.metadata(), *doc.root()).isEmpty());
    auto copy = doc.root()->deepCopy(true);
    EXPECT_EQ(copy->nodeIndex().size(), 9001u);
    copy.reset(); // destruction is iterative too
}

TEST(DeepInput, ManyHeadingsALongItemAndRandomBytesRead)
{
    QByteArray headings;
    for (int i = 0; i < 5000; ++i)
        headings += QByteArray(1 + i % 7, '#') + " h\n";
    auto many = readSermon(headings);
    ASSERT_TRUE(many);
    EXPECT_FALSE(SermonDocument(std::move(*many)).snapshot().isEmpty());

    // Each later line of an item lengthens its text: copying the text per line never finishes.
    QByteArray item = "- first\n";
    for (int i = 0; i < 100'000; ++i)
        item += "  a later line of the same item\n";
    auto longItem = readSermon(item);
    ASSERT_TRUE(longItem);
    ASSERT_EQ(longItem->root->children().size(), 1u);
    EXPECT_EQ(longItem->root->children().front()->text().count(QLatin1Char('\n')), 100'000);

    std::mt19937 random(42);
    QByteArray noise(2'000'000, '\0');
    for (char& c : noise)
        c = char(std::uniform_int_distribution<int>(0, 127)(random));
    auto read = readSermon(noise);
    ASSERT_TRUE(read); // ASCII noise is valid UTF-8
    const QString written = SermonDocument(std::move(*read)).snapshot();
    EXPECT_TRUE(written.endsWith(QLatin1Char('\n')));
}

TEST(DeepInput, GarbageFrontMatterIsDroppedAndTheBodyKept)
{
    const char* blocks[] = {
        "---\n&a [*a, *a]\n---\nbody",
        "---\na: &x [*x]\n<<: *x\n---\nbody",
        "---\n!!binary x: y\n---\nbody",
        "---\n[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[\n---\nbody",
        "---\nscripture: \"\\ud800\"\n---\nbody",
        "---\noccasions: &o\n- <<: *o\n  date: 2026-01-01\n---\nbody",
    };
    for (const char* block : blocks) {
        auto contents = readSermon(QByteArray(block));
        ASSERT_TRUE(contents) << block;
        EXPECT_EQ(contents->root->children().back()->text(), "body") << block;
    }
    QByteArray nested = "---\nx: " + QByteArray(3'000'000, '[') + "\n---\nbody";
    EXPECT_TRUE(readSermon(nested));
    // An apostrophe in plain text opens no quote that could hide the brackets after it.
    QByteArray hidden = "---\nseries: it's\nx: " + QByteArray(3'000'000, '[') + "\n---\nbody";
    EXPECT_TRUE(readSermon(hidden));
}

TEST(DeepInput, BracketsInQuotesOrCommentsAreText)
{
    const QByteArray many(300, '[');
    const QByteArray blocks[] = {
        "---\nscripture: \"" + many + "\"\nseries: Advent\n---\n# T\n",
        "---\nscripture: '" + many + "'\nseries: Advent\n---\n# T\n",
        "---\n# " + many + "\nseries: Advent\n---\n# T\n",
        "---\nscripture: \"say \\\" " + many + "\"\nseries: Advent\n---\n# T\n",
    };
    for (const QByteArray& block : blocks) {
        auto contents = readSermon(block);
        ASSERT_TRUE(contents) << block.left(40).toStdString();
        EXPECT_EQ(contents->metadata.series, QStringLiteral("Advent")) << block.left(40).toStdString();
    }
}

} // namespace
