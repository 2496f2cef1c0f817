#include "TreeOutline.h"

#include "core/MarkdownCodec.h"
#include "core/RewriteCheck.h"
#include "core/SermonDocument.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <random>

namespace {

// What saving the file as read would write.
QByteArray savedForm(const QByteArray& bytes)
{
    auto contents = readSermon(bytes);
    return contents ? SermonDocument(std::move(*contents)).fileContents() : QByteArray();
}

RewriteCheck::Result checkFile(const QByteArray& bytes)
{
    return RewriteCheck::compare(bytes, savedForm(bytes));
}

TEST(RewriteCheck, MarkdownTheCodecCannotKeepIsForeign)
{
    struct Row {
        const char* name;
        const char* file;
        int firstLine;
        const char* firstChange; // RewriteCheck::describe of the first changed line
    } rows[] = {
        {"indented code in a fence", "# Tool\n\n```python\ndef f():\n    return 1\n```\n", 5,
         "\"    return 1\" would be rewritten as \"return 1\""},
        {"a comment in a fence becomes the title", "# Tool\n\n```sh\n# install\nmake\n```\n", 1,
         "\"# Tool\" would be rewritten as \"# install\""},
        {"a blank line in a fence", "# T\n\n```\na\n\nb\n```\n", 5, "\"\" would be lost"},
        {"text after a table joins it", "# T\n\n| a | b |\n|---|---|\n| 1 | 2 |\n\nAfter the table.\n", 7,
         "\"After the table.\" would read as a table row"},
        {"markdown inside an HTML block", "# T\n\n<details>\n<summary>More</summary>\n\nHidden text.\n\n</details>\n",
         6, "\"Hidden text.\" would read as HTML"},
        {"an HTML comment above the title moves", "<!-- badges -->\n# T\n\nText.\n", 1,
         "\"<!-- badges -->\" would be lost"},
        {"a front matter key the codec drops", "---\ntitle: Notes\nscripture: John 1\n---\n\n# Notes\n", 2,
         "\"title: Notes\" would be lost"},
        {"a comment in the front matter", "---\n# mine\nscripture: John 1\n---\n\n# T\n", 2,
         "\"# mine\" would be lost"},
        {"a key inside an occasion",
         "---\noccasions:\n- place: Hall\n  note: bring chairs\n  date: 2026-01-04\n---\n\n# T\n", 4,
         "\"  note: bring chairs\" would be lost"},
        {"a duration that isn't whole minutes", "---\nduration: 30.5\n---\n\n# T\n", 1, "\"---\" would be lost"},
        {"setext headings under no title", "Project\n=======\n\nIntro.\n", 1, "\"# Untitled\" would be added"},
        {"a paragraph over a setext heading", "# Notes\n\nIntro.\n\nPart\n----\n\nText.\n", 3,
         "\"Intro.\" would read as a heading"},
        {"an emphasised line over a rule", "# T\n\n*Note*\n\n---\n", 3, "\"*Note*\" would read as a heading"},
        {"a numbered list with a bullet inside", "# Steps\n\n1. First\n   - detail\n2. Second\n", 4,
         "\"   - detail\" would be rewritten as \"detail\""},
        {"a simple list loses its bullets", "# Groceries\n\n- milk\n- eggs\n", 3,
         "\"- milk\" would be rewritten as \"milk\""},
        {"a nested list becomes headings", "# T\n\n- a\n  - b\n", 3, "\"- a\" would be rewritten as \"## a\""},
        {"a heading with nothing under it", "# T\n\nText.\n\n## Later\n", 5,
         "\"## Later\" would be rewritten as \"Later\""},
        {"a rule of stars becomes a list item", "# T\n\nAbove\n\n* * *\n\nBelow\n", 5,
         "\"* * *\" would be rewritten as \"* *\""},
        {"a second title renames the first", "# Title\n\nText.\n\n# Other\n\nMore.\n", 1, "\"# Title\" would be lost"},
        {"no title at all", "Just a note.\n", 1, "\"# Untitled\" would be added"},
        {"a paragraph after a list", "# T\n\n- a\n  - b\n- c\n\nAfter the list.\n", 7,
         "\"After the list.\" would read as part of a list item"},
        {"indented code after a paragraph", "# T\n\nRun:\n\n    make all\n", 5,
         "\"    make all\" would read as plain text"},
    };
    for (const Row& row : rows) {
        const RewriteCheck::Result result = checkFile(row.file);
        ASSERT_FALSE(result.isClean()) << row.name;
        EXPECT_FALSE(result.isTruncated) << row.name;
        EXPECT_EQ(result.changes.first().line, row.firstLine) << row.name;
        EXPECT_EQ(RewriteCheck::describe(result.changes.first()), QString::fromUtf8(row.firstChange)) << row.name;
    }
}

TEST(RewriteCheck, LayoutAloneIsClean)
{
    struct Row {
        const char* name;
        const char* file;
    } rows[] = {
        {"blank lines", "# T\n\n\n\n## A\n\n\nline one\n\nline two\n\n\n"},
        {"trailing spaces", "# T  \n\n## A \n\ntext   \n\n## B\n\n- a\t\n  - b \n- c  \n"},
        {"star and plus markers", "# T\n\n* a\n  + b\n- c\n+ d\n"},
        {"wide list indentation", "# T\n\n- a\n    - b\n        - c\n    - d\n- e\n"},
        {"a tab before an item", "# T\n\n- a\n\t- b\n- c\n"},
        {"indented lines in an item", "# T\n\n* b\n    - c\n\n      more of c\n* a\n\n  more of a\n"},
        {"no final line end", "# T\n\ntext"},
        {"leading spaces on a line", "# T\n\n  text\n   ## Part\n\n body\n"},
        {"a blank line after a quote", "# T\n\n> He stays.\n\nSo do we.\n"},
        {"a fence with nothing to lose", "# T\n\nBuild:\n\n```\nmake\n```\n\nDone.\n"},
        {"a bare > inside a quote", "# T\n\n> a\n>\n> b\n"},
        {"a byte order mark", "\xEF\xBB\xBF# T\n\ntext\n"},
        {"front matter keys in another order", "---\nduration: 30\nseries: Advent\nscripture: John 1\n---\n\n# T\n"},
        {"front matter quoting and indentation",
         "---\noccasions:\n  - place: \"Grace Chapel\"\n    date: 2026-03-15\nscripture: \"John 3:16\"\n---\n# T\n"},
    };
    for (const Row& row : rows) {
        const RewriteCheck::Result result = checkFile(row.file);
        EXPECT_TRUE(result.isClean()) << row.name << ": line " << result.changes.value(0).line << " "
                                      << RewriteCheck::describe(result.changes.value(0)).toStdString();
    }
}

// Random sermons as the app writes them; the texts may hold markup after their first word.
SermonNodePtr randomTree(std::mt19937& random)
{
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    static const QStringList words = {QStringLiteral("grace"), QStringLiteral("1."),    QStringLiteral("| a |"),
                                      QStringLiteral("```"),   QStringLiteral("<div>"), QStringLiteral("*soft*"),
                                      QStringLiteral("> no"),  QStringLiteral("---"),   QStringLiteral("caf\u00e9")};
    auto text = [&] {
        QStringList out{QStringLiteral("Word%1").arg(pick(0, 99))};
        for (int i = pick(0, 4); i > 0; --i)
            out.append(words[pick(0, int(words.size()) - 1)]);
        return out.join(QLatin1Char(' '));
    };
    auto root = SermonNode::make(text(), 0);
    std::vector<SermonNodePtr> open{root};
    for (int i = pick(1, 50); i > 0; --i) {
        SermonNodePtr parent = open[pick(std::max(0, int(open.size()) - 4), int(open.size()) - 1)];
        if (parent->isQuote() || parent->depth() > 9)
            continue;
        auto child = parent->addChild(text());
        child->setQuote(pick(0, 5) == 0);
        child->setCollapsed(pick(0, 4) == 0);
        open.push_back(child);
    }
    return root;
}

SermonMetadata randomMetadata(std::mt19937& random)
{
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    SermonMetadata metadata;
    for (int i = pick(0, 2); i > 0; --i)
        metadata.occasions.append({QUuid::createUuid(), pick(0, 1) ? QStringLiteral("St. Mark's: hall") : QString(),
                                   QDate(2026, pick(1, 12), pick(1, 28))});
    if (pick(0, 1))
        metadata.scripture = QStringLiteral("John 3:16");
    if (pick(0, 1))
        metadata.series = QStringLiteral("yes");
    if (pick(0, 1))
        metadata.duration = pick(1, 90);
    return metadata;
}

// The same file laid out by another hand: blank lines, trailing blanks, other markers, wider
// list indentation.
QByteArray relaidOut(const QString& text, std::mt19937& random)
{
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    QStringList out;
    bool inBody = !text.startsWith(QLatin1String("---\n"));
    int fences = 0;
    for (QString line : text.split(QLatin1Char('\n'))) {
        if (line == QLatin1String("---") && ++fences == 2) {
            out.append(line);
            inBody = true;
            continue;
        }
        if (inBody) {
            if (auto item = MarkdownCodec::parseListItem(line)) {
                const QChar marker = QStringLiteral("-*+")[pick(0, 2)];
                line = QString(item->columns * 2, QLatin1Char(' ')) + marker + QLatin1Char(' ') + item->text;
            }
            if (pick(0, 3) == 0)
                out.append(QString());
        }
        out.append(line + QString(pick(0, 2), QLatin1Char(' ')));
    }
    return out.join(QLatin1Char('\n')).toUtf8();
}

TEST(RewriteCheck, FilesTheAppWritesAreCleanAsWrittenAndAsReLaidOut)
{
    std::mt19937 random(7);
    for (int i = 0; i < 300; ++i) {
        const auto tree = randomTree(random);
        const QString text = MarkdownCodec::serialize(randomMetadata(random), *tree);
        // Some trees don't survive a reading unchanged (a quote written in list form); what
        // matters is that saving such a file again is clean, as the app will do.
        const QByteArray saved = savedForm(text.toUtf8());
        const RewriteCheck::Result result = checkFile(saved);
        ASSERT_TRUE(result.isClean()) << text.toStdString() << "\n"
                                      << RewriteCheck::describe(result.changes.value(0)).toStdString();
        const QByteArray other = relaidOut(QString::fromUtf8(saved), random);
        const RewriteCheck::Result relaid = checkFile(other);
        ASSERT_TRUE(relaid.isClean()) << other.toStdString() << "\n line " << relaid.changes.value(0).line << " "
                                      << RewriteCheck::describe(relaid.changes.value(0)).toStdString();
    }
}

TEST(RewriteCheck, EveryExampleSermonIsClean)
{
    const QStringList names = QDir(QStringLiteral("examples")).entryList({QStringLiteral("*.md")}, QDir::Files);
    ASSERT_FALSE(names.isEmpty());
    for (const QString& name : names) {
        QFile file(QStringLiteral("examples/") + name);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        EXPECT_TRUE(checkFile(file.readAll()).isClean()) << name.toStdString();
    }
}

TEST(RewriteCheck, ChangesListEachLineOnceWithItsNumberAndWhatItBecomes)
{
    const RewriteCheck::Result result =
        RewriteCheck::compare("# T\n\nkeep\nold\ngone\nkeep too\n", "# T\n\nnew\nkeep\nnewer\nkeep too\nadded\n");
    using Kind = RewriteCheck::LineChange::Kind;
    const QList<RewriteCheck::LineChange> expected = {
        {Kind::added, 3, {}, QStringLiteral("new"), {}},
        {Kind::changed, 4, QStringLiteral("old"), QStringLiteral("newer"), {}},
        {Kind::vanishes, 5, QStringLiteral("gone"), {}, {}},
        {Kind::added, 7, {}, QStringLiteral("added"), {}},
    };
    EXPECT_EQ(result.changes, expected);

    // A line pairs with the one that keeps its words, not merely the next one.
    const RewriteCheck::Result regrouped =
        RewriteCheck::compare("# T\n\n- one\nx\ny\n- two\n", "# T\n\n## one\n\ntwo\nz\n");
    const QList<RewriteCheck::LineChange> pairedByWords = {
        {Kind::changed, 3, QStringLiteral("- one"), QStringLiteral("## one"), {}},
        {Kind::vanishes, 4, QStringLiteral("x"), {}, {}},
        {Kind::vanishes, 5, QStringLiteral("y"), {}, {}},
        {Kind::changed, 6, QStringLiteral("- two"), QStringLiteral("two"), {}},
        {Kind::added, 7, {}, QStringLiteral("z"), {}},
    };
    EXPECT_EQ(regrouped.changes, pairedByWords);
}

TEST(RewriteCheck, LongFilesListAFewChangesExactlyAndSayManyBeyondTheLimit)
{
    QByteArray original;
    QByteArray fewChanged;
    QByteArray allChanged;
    for (int i = 1; i <= 100000; ++i) {
        original += "line " + QByteArray::number(i) + '\n';
        fewChanged += (i % 25000 == 0 ? "changed " : "line ") + QByteArray::number(i) + '\n';
        allChanged += "other " + QByteArray::number(i) + '\n';
    }
    const RewriteCheck::Result few = RewriteCheck::compare(original, fewChanged);
    EXPECT_FALSE(few.isTruncated);
    ASSERT_EQ(few.changes.size(), 4);
    EXPECT_EQ(few.changes.first().line, 25000);

    const RewriteCheck::Result all = RewriteCheck::compare(original, allChanged);
    EXPECT_TRUE(all.isTruncated);
    ASSERT_EQ(all.changes.size(), 1);
    EXPECT_EQ(all.changes.first().line, 1);
    EXPECT_EQ(all.changes.first().rewritten, QStringLiteral("other 1"));
}

} // namespace
