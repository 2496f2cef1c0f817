#include "CommandLine.h"

#include "Opml.h"
#include "SermonFile.h"

#include "core/ReadingPace.h"
#include "core/RewriteCheck.h"
#include "core/SermonDocument.h"
#include "core/SermonJson.h"
#include "core/WordCount.h"

#include <QFile>

#include <optional>

namespace CommandLine {

namespace {

constexpr int exitOK = 0;
constexpr int exitUnreadable = 1;
constexpr int exitUsage = 2;
constexpr int exitWouldRewrite = 3;

std::optional<SermonContents> load(const QString& path, QTextStream& err)
{
    auto fail = [&](const QString& why) {
        err << "orantium: " << path << ": " << why << Qt::endl;
        return std::nullopt;
    };
    QString why;
    const std::optional<QByteArray> bytes = SermonFile::readBytes(path, &why);
    if (!bytes)
        return fail(why);
    SermonReadError error{};
    auto contents = readSermon(*bytes, &error);
    if (!contents)
        return fail(describe(error));
    return contents;
}

// Sends what was printed on its way; a full disk or a closed pipe is a failure, not success.
int finish(QTextStream& out, QTextStream& err)
{
    out.flush();
    auto* file = qobject_cast<QFileDevice*>(out.device());
    const bool written =
        out.status() == QTextStream::Ok && (!file || (file->flush() && file->error() == QFileDevice::NoError));
    if (written)
        return exitOK;
    err << "orantium: the output could not be written" << Qt::endl;
    return exitUnreadable;
}

int usageError(const QString& message, QTextStream& err)
{
    err << "orantium: " << message << Qt::endl << usage();
    err.flush();
    return exitUsage;
}

// The value of `--name VALUE` or `--name=VALUE` at `i`, moving `i` past it; null if not that option.
std::optional<QString> option(const QStringList& args, qsizetype& i, QLatin1String name)
{
    if (args[i] == name && i + 1 < args.size())
        return args[++i];
    if (args[i].startsWith(QString(name) + QLatin1Char('=')))
        return args[i].mid(name.size() + 1);
    return std::nullopt;
}

// Options Qt reads from the windowed program's command line, and which of them take a value.
const QStringList toolkitValueOptions = {
    QStringLiteral("platform"),
    QStringLiteral("platformpluginpath"),
    QStringLiteral("platformtheme"),
    QStringLiteral("plugin"),
    QStringLiteral("qwindowgeometry"),
    QStringLiteral("geometry"),
    QStringLiteral("qwindowtitle"),
    QStringLiteral("title"),
    QStringLiteral("qwindowicon"),
    QStringLiteral("icon"),
    QStringLiteral("session"),
    QStringLiteral("display"),
    QStringLiteral("name"),
    QStringLiteral("style"),
    QStringLiteral("stylesheet"),
};
const QStringList toolkitFlags = {
    QStringLiteral("reverse"), QStringLiteral("testability"), QStringLiteral("nograb"),
    QStringLiteral("dograb"),  QStringLiteral("sync"),        QStringLiteral("widgetcount"),
};

// The first option that neither the app nor Qt knows, when the arguments open windows.
std::optional<QString> unknownOption(const QStringList& arguments)
{
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (!argument.startsWith(QLatin1Char('-')) || argument == QLatin1String("-"))
            continue; // a file
        if (argument == QLatin1String("--ui-test-fixture") || argument == QLatin1String("--columns"))
            continue;
        // Qt takes its options with one dash or two, and some as "name=value".
        QString name = argument.mid(argument.startsWith(QLatin1String("--")) ? 2 : 1);
        if (const qsizetype equals = name.indexOf(QLatin1Char('=')); equals > 0) {
            name.truncate(equals);
            if (toolkitValueOptions.contains(name) || name == QLatin1String("qmljsdebugger"))
                continue;
            return argument;
        }
        if (toolkitValueOptions.contains(name)) {
            ++i;
            continue;
        }
        if (!toolkitFlags.contains(name))
            return argument;
    }
    return std::nullopt;
}

bool isCommand(const QString& first)
{
    return first == QLatin1String("export") || first == QLatin1String("import") || first == QLatin1String("stats")
        || first == QLatin1String("--help") || first == QLatin1String("-h") || first == QLatin1String("--version");
}

int exportCommand(const QStringList& args, QTextStream& out, QTextStream& err, const PdfWriter& writePdf)
{
    QString format;
    QString path;
    QString output;
    bool check = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--check"))
            check = true;
        else if (auto to = option(args, i, QLatin1String("--to")))
            format = *to;
        else if (auto o = option(args, i, QLatin1String("-o")))
            output = *o;
        else if (path.isEmpty() && !args[i].startsWith(QLatin1Char('-')))
            path = args[i];
        else
            return usageError(QStringLiteral("unexpected argument \"%1\"").arg(args[i]), err);
    }
    const QStringList formats{QStringLiteral("json"), QStringLiteral("markdown"), QStringLiteral("opml"),
                              QStringLiteral("pdf")};
    if (!formats.contains(format))
        return usageError(QStringLiteral("export needs --to json, markdown, opml or pdf"), err);
    if (check && format != QLatin1String("markdown"))
        return usageError(QStringLiteral("--check goes with --to markdown"), err);
    const bool isPdf = format == QLatin1String("pdf");
    if (isPdf != !output.isEmpty())
        return usageError(isPdf ? QStringLiteral("--to pdf needs -o OUT.pdf") : QStringLiteral("-o goes with --to pdf"),
                          err);
    if (path.isEmpty())
        return usageError(QStringLiteral("export needs a file"), err);
    auto contents = load(path, err);
    if (!contents)
        return exitUnreadable;
    if (isPdf) {
        QString why = QStringLiteral("this build can't draw");
        if (writePdf && writePdf(*contents, output, &why))
            return exitOK;
        err << "orantium: " << output << ": " << why << Qt::endl;
        return exitUnreadable;
    }
    if (format == QLatin1String("opml")) {
        out << QString::fromUtf8(Opml::write(*contents->root));
        return finish(out, err);
    }
    if (check) {
        // Prints nothing for a file that saving keeps; else the first line it would change.
        QFile file(path);
        const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        const RewriteCheck::Result result =
            RewriteCheck::compare(bytes, SermonDocument(std::move(*contents)).fileContents());
        if (result.isClean())
            return finish(out, err);
        const RewriteCheck::LineChange& first = result.changes.first();
        out << path << ':' << first.line << ": " << RewriteCheck::describe(first) << '\n';
        const int written = finish(out, err);
        return written == exitOK ? exitWouldRewrite : written;
    }
    if (format == QLatin1String("json"))
        out << QString::fromUtf8(SermonJson::toJson(contents->metadata, *contents->root)) << '\n';
    else
        out << SermonDocument(std::move(*contents)).snapshot();
    return finish(out, err);
}

int importCommand(const QStringList& args, QTextStream& out, QTextStream& err)
{
    QString format;
    QString path;
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (auto from = option(args, i, QLatin1String("--from")))
            format = *from;
        else if (path.isEmpty() && !args[i].startsWith(QLatin1Char('-')))
            path = args[i];
        else
            return usageError(QStringLiteral("unexpected argument \"%1\"").arg(args[i]), err);
    }
    if (format != QLatin1String("json") && format != QLatin1String("opml"))
        return usageError(QStringLiteral("import needs --from json or --from opml"), err);
    if (path.isEmpty())
        return usageError(QStringLiteral("import needs a file"), err);
    QString why;
    const std::optional<QByteArray> bytes = SermonFile::readBytes(path, &why);
    std::optional<SermonContents> contents;
    if (bytes)
        contents = format == QLatin1String("json") ? SermonJson::fromJson(*bytes, &why) : Opml::read(*bytes, &why);
    if (!contents) {
        err << "orantium: " << path << ": " << why << Qt::endl;
        return exitUnreadable;
    }
    out << SermonDocument(std::move(*contents)).snapshot();
    return finish(out, err);
}

int statsCommand(const QStringList& args, QTextStream& out, QTextStream& err)
{
    int wpm = ReadingPaces::defaultWPM;
    QString path;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const bool joined = args[i].startsWith(QLatin1String("--wpm="));
        if ((args[i] == QLatin1String("--wpm") && i + 1 < args.size()) || joined) {
            bool ok = false;
            wpm = (joined ? args[i].mid(6) : args[++i]).toInt(&ok);
            if (!ok || wpm < 1)
                return usageError(QStringLiteral("--wpm needs a whole number above 0"), err);
        } else if (path.isEmpty() && !args[i].startsWith(QLatin1String("--"))) {
            path = args[i];
        } else {
            return usageError(QStringLiteral("unexpected argument \"%1\"").arg(args[i]), err);
        }
    }
    if (path.isEmpty())
        return usageError(QStringLiteral("stats needs a file"), err);
    auto contents = load(path, err);
    if (!contents)
        return exitUnreadable;
    out << WordCount::statusText(*contents->root, wpm) << '\n';
    return finish(out, err);
}

} // namespace

QString usage()
{
    return QStringLiteral("Usage:\n"
                          "  orantium [FILE.md ...]                    open sermons in windows\n"
                          "  orantium --columns FILE.md ...            open them in the columns view\n"
                          "  orantium export --to json|markdown FILE   print the sermon as JSON or as saved Markdown\n"
                          "  orantium export --to opml FILE            print its outline as OPML\n"
                          "  orantium export --to pdf FILE -o OUT.pdf  write the printed manuscript\n"
                          "  orantium import --from json|opml FILE     print a sermon made from JSON or OPML as\n"
                          "                                            Markdown\n"
                          "  orantium export --to markdown --check FILE\n"
                          "                                            exit 3 and print the first line saving would\n"
                          "                                            change, if any\n"
                          "  orantium stats FILE [--wpm N]             print its word count and spoken minutes\n"
                          "  orantium --help | --version\n");
}

bool handles(const QStringList& arguments)
{
    if (arguments.size() < 2)
        return false;
    // An option nobody knows is wrong usage, told here rather than by opening the app.
    return isCommand(arguments[1]) || unknownOption(arguments).has_value();
}

bool needsFonts(const QStringList& arguments)
{
    if (arguments.value(1) != QLatin1String("export"))
        return false;
    for (qsizetype i = 2; i < arguments.size(); ++i)
        if (option(arguments, i, QLatin1String("--to")) == QLatin1String("pdf"))
            return true;
    return false;
}

int run(const QStringList& arguments, QTextStream& out, QTextStream& err, const PdfWriter& writePdf)
{
    const QString command = arguments.value(1);
    const QStringList rest = arguments.mid(2);
    if (command == QLatin1String("--help") || command == QLatin1String("-h")) {
        out << "Orantium prepares and delivers sermons written as Markdown outlines.\n\n" << usage();
        return finish(out, err);
    }
    if (command == QLatin1String("--version")) {
        out << "orantium " << ORANTIUM_VERSION << '\n';
        return finish(out, err);
    }
    if (command == QLatin1String("export"))
        return exportCommand(rest, out, err, writePdf);
    if (command == QLatin1String("import"))
        return importCommand(rest, out, err);
    if (command == QLatin1String("stats"))
        return statsCommand(rest, out, err);
    if (const std::optional<QString> option = unknownOption(arguments))
        return usageError(QStringLiteral("unknown option \"%1\"").arg(*option), err);
    return usageError(QStringLiteral("unknown command \"%1\"").arg(command), err);
}

} // namespace CommandLine
