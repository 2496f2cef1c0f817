#include "TreeOutline.h"

#include "core/MarkdownCodec.h"
#include "core/SermonDocument.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

QString read(const char* body)
{
    return outline(*MarkdownCodec::parseBody(QString::fromUtf8(body).split(QLatin1Char('\n'))));
}

QString write(const SermonNode& root)
{
    return MarkdownCodec::serialize(SermonMetadata{}, root);
}

TEST(MarkdownCodec, TheSampleFileWritesBackByteForByte)
{
    QFile file(QStringLiteral("examples/the-god-who-stays.md"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    auto contents = readSermon(bytes);
    ASSERT_TRUE(contents);
    EXPECT_EQ(outline(*contents->root),
              "0 The God Who Stays | 1 Opening | 2 Have you ever felt forgotten? | 2q He will never leave you."
              " | 2c Story | 3 My grandfather's porch. | 1 Main idea | 2 What he promised | 3 Presence"
              " | 3q Never will I leave you/nor forsake you | 2 This is for today");
    EXPECT_EQ(contents->metadata.scripture, "Hebrews 13:5");
    EXPECT_EQ(contents->metadata.duration, 30);
    EXPECT_EQ(SermonDocument(std::move(*contents)).fileContents().toStdString(), bytes.toStdString());
}

TEST(MarkdownCodec, ReadsEachKindOfLine)
{
    struct Row {
        const char* body;
        const char* tree;
    } rows[] = {
        {"one\ntwo", "0 Untitled | 1 one | 1 two"},
        {"#Title\n####### x\n#\tx", "0 Untitled | 1 #Title | 1 ####### x | 1 #\tx"},
        {"# A\nx\n# B\ny", "0 B | 1 x | 1 y"},
        {"## A\n#### B\n### C", "0 Untitled | 1 A | 3 B | 2 C"},
        {"- a\n  - b\n      - c\n    - d", "0 Untitled | 1 a | 2 b | 3 c | 3 d"},
        {"- a\n\t- b", "0 Untitled | 1 a | 2 b"},
        {"* x\n+ y", "0 Untitled | 1 x | 1 y"},
        {"-x", "0 Untitled | 1 -x"},
        {"- ", "0 Untitled | 1 "},
        {"-", "0 Untitled | 1 -"},
        {"- a\n-", "0 Untitled | 1 a/-"},
        {"> a\n> b", "0 Untitled | 1q a/b"},
        {"> a\n\n> b", "0 Untitled | 1q a | 1q b"},
        {"> a\n>\n> b", "0 Untitled | 1q a/b"},
        {">a\n\n>  a", "0 Untitled | 1q a | 1q  a"},
        {"- > a\n  > b\n  c", "0 Untitled | 1q a/b | 1 c"},
        {"- >", "0 Untitled | 1q "},
        {"- a\n\n  b", "0 Untitled | 1 a/b"},
        {"- a\n\nb", "0 Untitled | 1 a/b"},
        {"- a\n## H", "0 Untitled | 1 a | 1 H"},
        {"- a\n  ## H", "0 Untitled | 1 a/## H"},
        {"- a\n      indented", "0 Untitled | 1 a/    indented"},
        {"[//]: # (collapsed)\n## A\nx", "0c Untitled | 1 A | 2 x"},
        {"## A\nx\n[//]: # (collapsed)", "0 Untitled | 1c A | 2 x"},
        {"- a\n  - b\n  [//]: # (collapsed)", "0 Untitled | 1 a | 2c b"},
        {"- a\n  - b\n   [//]: # (collapsed)  ", "0 Untitled | 1 a | 2c b"},
        {"- a\n  - b\n[//]: # (collapsed)", "0 Untitled | 1 a | 2c b"},
        {"---", "0 Untitled | 1 ---"},
        {"## \nx", "0 Untitled | 1 ## | 1 x"},
        {"#  Spaced Title  \n  plain  ", "0 Spaced Title | 1 plain"},
        {"\u00a0\u00a0text\u3000", "0 Untitled | 1 text"},
        {"carriage\r", "0 Untitled | 1 carriage\r"},
        {"> q\n- item\n> r", "0 Untitled | 1q q | 1 item | 1q r"},
        {"## H\n> q\n### I\nplain", "0 Untitled | 1 H | 2q q | 2 I | 3 plain"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.body), QString::fromUtf8(row.tree)) << row.body;
}

TEST(MarkdownCodec, FrontMatterIsSplitOffOnlyWhenClosed)
{
    auto closed = MarkdownCodec::splitFrontMatter(QStringLiteral(" --- \nduration: 5\n---\n\n# T"));
    EXPECT_EQ(closed.metadata.duration, 5);
    EXPECT_EQ(closed.body, QStringList({QString(), QStringLiteral("# T")}));

    auto open = MarkdownCodec::splitFrontMatter(QStringLiteral("---\nduration: 5\n# T"));
    EXPECT_EQ(open.metadata, SermonMetadata{});
    EXPECT_EQ(open.body.size(), 3);

    // A block that can't be read is dropped, never kept as text.
    auto broken = MarkdownCodec::splitFrontMatter(QStringLiteral("---\n: : [\n---\n# T"));
    EXPECT_EQ(broken.metadata, SermonMetadata{});
    EXPECT_EQ(broken.body, QStringList({QStringLiteral("# T")}));
}

TEST(MarkdownCodec, LogsBrokenAndUnclosedBlocks)
{
    static QStringList messages;
    messages.clear();
    auto previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext& context, const QString& text) {
        messages.append(QString::fromUtf8(context.category) + QLatin1Char(' ') + text);
    });
    QLoggingCategory::setFilterRules(QStringLiteral("app.orantium.MarkdownCodec.debug=true"));
    MarkdownCodec::splitFrontMatter(QStringLiteral("---\nx: [\n---\n"));
    MarkdownCodec::splitFrontMatter(QStringLiteral("---\nno end"));
    qInstallMessageHandler(previous);
    ASSERT_EQ(messages.size(), 2);
    EXPECT_TRUE(messages[0].startsWith(QLatin1String("app.orantium.MarkdownCodec Failed to decode frontmatter: ")));
    EXPECT_EQ(messages[1],
              "app.orantium.MarkdownCodec Opening --- found but no closing --- ; treating file as body only");
}

TEST(MarkdownCodec, ChoosesListFormOnlyWhenHeadingsCannotHoldTheTree)
{
    struct Row {
        const char* body;
        const char* written;
    } rows[] = {
        // [branch, leaf] forces list form
        {"# T\n- a\n  - a1\n- b", "# T\n\n- a\n  - a1\n- b\n"},
        // [leaf, branch] doesn't
        {"# T\n\nx\n\n## a\n\na1\n", "# T\n\nx\n\n## a\n\na1\n"},
        // [leaf, leaf, branch, branch] doesn't
        {"# T\n\nx\ny\n\n## a\n\na1\n\n## b\n\nb1\n", "# T\n\nx\ny\n\n## a\n\na1\n\n## b\n\nb1\n"},
        // a depth-5 node with a branch child writes all its children as a list
        {"###### five\n- leaf\n- six\n  - seven", "# Untitled\n\n###### five\n\n- leaf\n- six\n  - seven\n"},
        // a collapsed branch inside a list keeps its marker
        {"# T\n- a\n  [//]: # (collapsed)\n  - a1\n- b", "# T\n\n- a\n  [//]: # (collapsed)\n  - a1\n- b\n"},
        // quotes in plain form stay two quotes; in list form a quote item
        {"# T\n> a\n\n> b", "# T\n\n> a\n\n> b\n"},
        {"# T\n- a\n  - > q\n    > r\n  - s\n    more\n- b", "# T\n\n- a\n  - > q\n    > r\n  - s\n    more\n- b\n"},
        {"# Title", "# Title\n"},
        {"", "# Untitled\n"},
    };
    for (const auto& row : rows) {
        auto root = MarkdownCodec::parseBody(QString::fromUtf8(row.body).split(QLatin1Char('\n')));
        EXPECT_EQ(write(*root).toStdString(), row.written) << row.body;
    }
}

TEST(MarkdownCodec, RoundTripLossesAreThoseOfTheFormat)
{
    // Each row hangs one node under the title "T" (or, with a child text, a heading with that child).
    struct Row {
        const char* text;
        const char* child;
        bool quote;
        const char* readBack;
    } rows[] = {
        {"- looks like an item", nullptr, false, "0 T | 1 looks like an item"},
        {"> looks like a quote", nullptr, false, "0 T | 1q looks like a quote"},
        {"# looks like a title", nullptr, false, "0 looks like a title"},
        {"", nullptr, false, "0 T"},
        {"  padded  ", nullptr, false, "0 T | 1 padded"},
        {"two\nlines", nullptr, false, "0 T | 1 two | 1 lines"},
        {"quote\n\nwith gap", nullptr, true, "0 T | 1q quote/with gap"},
        {"", "under an empty heading", false, "0 T | 1 ## | 1 under an empty heading"},
        {"heading\nsecond line", "child", false, "0 T | 1 heading | 2 second line | 2 child"},
        {"quoted branch", "child", true, "0 T | 1 quoted branch | 2 child"},
    };
    for (const auto& row : rows) {
        auto root = SermonNode::make(QStringLiteral("T"), 0);
        auto node = root->addChild(QString::fromUtf8(row.text));
        if (row.child)
            node->addChild(QString::fromUtf8(row.child));
        node->setQuote(row.quote); // lost on a branch
        node->setCollapsed(!row.child); // lost on a leaf
        auto back = MarkdownCodec::parseBody(write(*root).split(QLatin1Char('\n')));
        EXPECT_EQ(outline(*back), QString::fromUtf8(row.readBack)) << row.text;
    }

    auto untitled = SermonNode::make(QString(), 0);
    EXPECT_EQ(read(write(*untitled).toUtf8().constData()), "0 Untitled | 1 #");
}

TEST(MarkdownCodec, ListFormKeepsWhatPlainFormLoses)
{
    auto root = SermonNode::make(QStringLiteral("T"), 0);
    auto branch = root->addChild(QStringLiteral("branch"));
    branch->addChild(QStringLiteral("child"));
    root->addChild(QString());
    root->addChild(QStringLiteral("two\n  indented"));
    auto q = root->addChild(QStringLiteral("a\n\nb"));
    q->setQuote(true);
    auto back = MarkdownCodec::parseBody(write(*root).split(QLatin1Char('\n')));
    EXPECT_EQ(outline(*back), "0 T | 1 branch | 2 child | 1  | 1 two/  indented | 1q a//b");
}

TEST(MarkdownCodec, BranchLinesStartsAtTheGivenLevel)
{
    auto root = MarkdownCodec::parseBody(
        QStringLiteral("# T\n## A\n[//]: # (collapsed)\nleaf\n> said\n### B\nb1").split(QLatin1Char('\n')));
    const auto a = root->children().front();
    QStringList lines;
    MarkdownCodec::branchLines(*a, 0, lines, true);
    EXPECT_EQ(lines.join(QLatin1Char('\n')).toStdString(), "# A\n[//]: # (collapsed)\n\nleaf\n> said\n\n## B\n\nb1");

    QStringList deep;
    MarkdownCodec::branchLines(*a, 6, deep, true);
    EXPECT_EQ(deep.join(QLatin1Char('\n')).toStdString(),
              "- A\n  [//]: # (collapsed)\n  - leaf\n  - > said\n  - B\n    - b1");
}

TEST(MarkdownCodec, BlanksAreSpaceSeparatorsAndTabsOnly)
{
    EXPECT_TRUE(MarkdownCodec::isBlank(QChar(0x2003)));
    EXPECT_TRUE(MarkdownCodec::isBlank(QLatin1Char('\t')));
    EXPECT_FALSE(MarkdownCodec::isBlank(QChar(0x2028)));
    EXPECT_FALSE(MarkdownCodec::isBlank(QLatin1Char('\n')));
    EXPECT_EQ(MarkdownCodec::trimmed(QStringLiteral("\u2028 x \u2029")), "\u2028 x \u2029");
    EXPECT_EQ(MarkdownCodec::indentation(QStringLiteral(" \t x")), 6);
}

} // namespace
