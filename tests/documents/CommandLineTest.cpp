#include "documents/FileTestSupport.h"

#include "documents/CommandLine.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct Result {
    int status;
    QString out;
    QString err;
};

Result run(QStringList args, const CommandLine::PdfWriter& writePdf = {})
{
    args.prepend(QStringLiteral("orantium"));
    Result r{0, {}, {}};
    QTextStream out(&r.out);
    QTextStream err(&r.err);
    r.status = CommandLine::run(args, out, err, writePdf);
    return r;
}

class CommandLineTest : public ::testing::Test {
protected:
    QString file(const char* name, const QByteArray& bytes)
    {
        const QString path = dir.filePath(QString::fromUtf8(name));
        EXPECT_TRUE(writeFile(path, bytes));
        return path;
    }
    QTemporaryDir dir;
};

TEST_F(CommandLineTest, ExportsJsonInStoredOrderWithoutIds)
{
    const QString path = file("s.md",
                              "---\noccasions:\n- place: B\n  date: '2025-01-01'\n- place: \"A\\\"\"\n  date: "
                              "'2026-01-01'\nduration: 20\n---\n\n# T\n\n> q\n");
    const auto r = run({QStringLiteral("export"), QStringLiteral("--to"), QStringLiteral("json"), path});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(
        r.out.toStdString(),
        "{\"metadata\":{\"occasions\":[{\"place\":\"B\",\"date\":\"2025-01-01\"},{\"place\":\"A\\\"\",\"date\":"
        "\"2026-01-01\"}],\"scripture\":\"\",\"series\":\"\",\"duration\":20},\"root\":{\"text\":\"T\",\"depth\":0,"
        "\"isCollapsed\":false,\"isQuote\":false,\"children\":[{\"text\":\"q\",\"depth\":1,\"isCollapsed\":false,"
        "\"isQuote\":true,\"children\":[]}]}}\n");
}

TEST_F(CommandLineTest, ExportsMarkdownAsSavingWould)
{
    const QString path = file("s.md", "* a\n  + b\n* c");
    const auto r = run({QStringLiteral("export"), QStringLiteral("--to"), QStringLiteral("markdown"), path});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out.toStdString(), "# Untitled\n\n- a\n  - b\n- c\n");
}

TEST_F(CommandLineTest, CheckSaysWhetherSavingWouldChangeTheFile)
{
    const QString markdown = QStringLiteral("markdown");
    struct Row {
        const char* file;
        int status;
        const char* out; // after "PATH:"
    } rows[] = {
        {"# T\n\nline\n\n\n## Part\n\n* a\n  + b\n- c  \n", 0, ""},
        {"* a\n  + b\n* c", 3, "1: \"# Untitled\" would be added\n"},
        {"# T\n\n```python\ndef f():\n    return 1\n```\n", 3,
         "5: \"    return 1\" would be rewritten as \"return 1\"\n"},
    };
    for (const Row& row : rows) {
        const QString path = file("s.md", row.file);
        const auto r =
            run({QStringLiteral("export"), QStringLiteral("--to"), markdown, QStringLiteral("--check"), path});
        EXPECT_EQ(r.status, row.status) << row.file;
        EXPECT_EQ(r.out, row.status == 0 ? QString() : path + QLatin1Char(':') + QString::fromUtf8(row.out))
            << row.file;
        EXPECT_TRUE(r.err.isEmpty()) << row.file;
    }
}

TEST_F(CommandLineTest, ImportReadsWhatExportWrites)
{
    const QString md =
        file("s.md",
             "---\nscripture: John 1\nduration: 20\n---\n\n# T\n\n## A\n[//]: # (collapsed)\n\nline \u2B50\n"
             "> quote\n");
    const QString saved = run({QStringLiteral("export"), QStringLiteral("--to=markdown"), md}).out;
    const QString json = file(
        "s.json", run({QStringLiteral("export"), QStringLiteral("--to"), QStringLiteral("json"), md}).out.toUtf8());
    const auto fromJson = run({QStringLiteral("import"), QStringLiteral("--from"), QStringLiteral("json"), json});
    EXPECT_EQ(fromJson.status, 0) << fromJson.err.toStdString();
    EXPECT_EQ(fromJson.out, saved);

    // OPML keeps the lines, not the metadata or the folding.
    const QString opml = file(
        "s.opml", run({QStringLiteral("export"), QStringLiteral("--to"), QStringLiteral("opml"), md}).out.toUtf8());
    const auto fromOpml = run({QStringLiteral("import"), QStringLiteral("--from=opml"), opml});
    EXPECT_EQ(fromOpml.status, 0) << fromOpml.err.toStdString();
    EXPECT_EQ(fromOpml.out, "# T\n\n## A\n\nline \u2B50\n> quote\n");
}

TEST_F(CommandLineTest, PdfGoesToTheFileNamedByDashO)
{
    const QString md = file("s.md", "# T\n\nline\n");
    const QString pdf = dir.filePath(QStringLiteral("out.pdf"));
    const QStringList args{QStringLiteral("export"), md, QStringLiteral("--to"), QStringLiteral("pdf"),
                           QStringLiteral("-o"),     pdf};
    EXPECT_TRUE(CommandLine::needsFonts(QStringList{QStringLiteral("orantium")} + args));
    EXPECT_FALSE(CommandLine::needsFonts({QStringLiteral("orantium"), QStringLiteral("export"), QStringLiteral("--to"),
                                          QStringLiteral("json"), QStringLiteral("pdf")}));
    QString written;
    const auto ok = run(args, [&](const SermonContents& contents, const QString& path, QString*) {
        written = contents.root->text() + QLatin1Char(' ') + path;
        return true;
    });
    EXPECT_EQ(ok.status, 0);
    EXPECT_EQ(written, QStringLiteral("T ") + pdf);
    const auto failed = run(args, [](const SermonContents&, const QString&, QString* why) {
        *why = QStringLiteral("No space left on device");
        return false;
    });
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err, QStringLiteral("orantium: %1: No space left on device\n").arg(pdf));
}

TEST_F(CommandLineTest, StatsUsesThePace)
{
    const QString path = file("s.md", "# One two\n\nthree four five\n");
    EXPECT_EQ(run({QStringLiteral("stats"), path}).out, "5 words · 1 min @120wpm\n");
    EXPECT_EQ(run({QStringLiteral("stats"), path, QStringLiteral("--wpm"), QStringLiteral("2")}).out,
              "5 words · 3 min @2wpm\n");
    EXPECT_EQ(run({QStringLiteral("stats"), QStringLiteral("--wpm=2"), path}).out, "5 words · 3 min @2wpm\n");
}

TEST_F(CommandLineTest, OutputThatCannotBeWrittenIsAFailure)
{
    const QString path = file("s.md", "# One two\n");
    QFile full(QStringLiteral("/dev/full"));
    ASSERT_TRUE(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    QString errText;
    QTextStream out(&full);
    QTextStream err(&errText);
    for (const char* command : {"stats", "export"}) {
        QStringList args{QStringLiteral("orantium"), QString::fromLatin1(command)};
        if (args.last() == QLatin1String("export"))
            args << QStringLiteral("--to") << QStringLiteral("markdown");
        args << path;
        errText.clear();
        out.resetStatus();
        EXPECT_EQ(CommandLine::run(args, out, err), 1) << command;
        EXPECT_TRUE(errText.contains(QLatin1String("could not be written"))) << command;
    }
}

TEST_F(CommandLineTest, UnreadableFilesAndWrongUsage)
{
    const QString empty = file("empty.md", QByteArray());
    const QString binary = file("bin.md", QByteArray("\x89PNG\r\n\x1a\n\xff\x00", 10));
    struct Row {
        QStringList args;
        int status;
    } rows[] = {
        {{QStringLiteral("stats"), empty}, 1},
        {{QStringLiteral("stats"), binary}, 1},
        {{QStringLiteral("stats"), dir.filePath(QStringLiteral("missing.md"))}, 1},
        {{QStringLiteral("stats"), dir.path()}, 1},
        {{QStringLiteral("stats")}, 2},
        {{QStringLiteral("stats"), empty, QStringLiteral("--wpm"), QStringLiteral("fast")}, 2},
        {{QStringLiteral("export"), empty}, 2},
        {{QStringLiteral("export"), QStringLiteral("--to"), QStringLiteral("pdf"), empty}, 2},
        {{QStringLiteral("export"), QStringLiteral("--check"), QStringLiteral("--to"), QStringLiteral("json"), empty},
         2},
        {{QStringLiteral("export"), binary, QStringLiteral("--to"), QStringLiteral("markdown"),
          QStringLiteral("--check")},
         1},
        {{QStringLiteral("export"), empty, QStringLiteral("--to"), QStringLiteral("json"), QStringLiteral("-o"),
          QStringLiteral("x.pdf")},
         2},
        {{QStringLiteral("import"), empty}, 2},
        {{QStringLiteral("import"), QStringLiteral("--from"), QStringLiteral("json")}, 2},
        {{QStringLiteral("import"), binary, QStringLiteral("--from"), QStringLiteral("json")}, 1},
        {{QStringLiteral("import"), empty, QStringLiteral("--from"), QStringLiteral("opml")}, 1},
        {{QStringLiteral("frobnicate")}, 2},
    };
    for (const auto& row : rows) {
        const auto r = run(row.args);
        EXPECT_EQ(r.status, row.status) << row.args.join(QLatin1Char(' ')).toStdString();
        EXPECT_TRUE(r.out.isEmpty());
        EXPECT_FALSE(r.err.isEmpty());
        if (row.status == 1) {
            EXPECT_TRUE(r.err.contains(row.args.at(1)));
            EXPECT_EQ(r.err.count(QLatin1Char('\n')), 1) << r.err.toStdString();
        }
    }
}

TEST_F(CommandLineTest, HelpAndVersion)
{
    EXPECT_EQ(run({QStringLiteral("--help")}).status, 0);
    EXPECT_TRUE(run({QStringLiteral("--help")}).out.contains(QLatin1String("export --to json|markdown")));
    EXPECT_TRUE(run({QStringLiteral("--version")}).out.startsWith(QLatin1String("orantium ")));
}

// Files and Qt's own options open windows; commands, and options nobody knows, are answered here.
TEST_F(CommandLineTest, OnlyFilesAndToolkitOptionsOpenTheApp)
{
    const struct {
        const char* args;
        bool handled;
    } rows[] = {
        {"sermon.md", false},
        {"a.md b.md", false},
        {"-platform offscreen sermon.md", false},
        {"--style=Fusion -reverse sermon.md", false},
        {"--ui-test-fixture", false},
        {"--columns sermon.md", false},
        {"stats", true},
        {"--bogus", true},
        {"-v", true},
        {"sermon.md --bogus", true},
        {"-platform offscreen -x", true},
    };
    for (const auto& row : rows) {
        QStringList args = QString::fromLatin1(row.args).split(QLatin1Char(' '));
        args.prepend(QStringLiteral("orantium"));
        EXPECT_EQ(CommandLine::handles(args), row.handled) << row.args;
    }
    for (const char* option : {"--bogus", "-v"}) {
        const auto r = run({QStringLiteral("sermon.md"), QString::fromLatin1(option)});
        EXPECT_EQ(r.status, 2) << option;
        EXPECT_TRUE(r.err.contains(QLatin1String(option))) << option;
        EXPECT_TRUE(r.err.contains(QLatin1String("Usage:"))) << option;
    }
}

} // namespace
