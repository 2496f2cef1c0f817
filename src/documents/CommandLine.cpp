#include "CommandLine.h"

#include "SermonFile.h"

#include "core/ReadingPace.h"
#include "core/RewriteCheck.h"
#include "core/SermonDocument.h"
#include "core/SermonJson.h"
#include "core/WordCount.h"

#include <QFile>

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

int exportCommand(const QStringList& args, QTextStream& out, QTextStream& err)
{
    QString format;
    QString path;
    bool check = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--check"))
            check = true;
        else if (args[i] == QLatin1String("--to") && i + 1 < args.size())
            format = args[++i];
        else if (args[i].startsWith(QLatin1String("--to=")))
            format = args[i].mid(5);
        else if (path.isEmpty() && !args[i].startsWith(QLatin1String("--")))
            path = args[i];
        else
            return usageError(QStringLiteral("unexpected argument \"%1\"").arg(args[i]), err);
    }
    if (format != QLatin1String("json") && format != QLatin1String("markdown"))
        return usageError(QStringLiteral("export needs --to json or --to markdown"), err);
    if (check && format != QLatin1String("markdown"))
        return usageError(QStringLiteral("--check goes with --to markdown"), err);
    if (path.isEmpty())
        return usageError(QStringLiteral("export needs a file"), err);
    auto contents = load(path, err);
    if (!contents)
        return exitUnreadable;
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
    const QString& first = arguments[1];
    return first == QLatin1String("export") || first == QLatin1String("stats") || first == QLatin1String("--help")
        || first == QLatin1String("-h") || first == QLatin1String("--version");
}

int run(const QStringList& arguments, QTextStream& out, QTextStream& err)
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
        return exportCommand(rest, out, err);
    if (command == QLatin1String("stats"))
        return statsCommand(rest, out, err);
    return usageError(QStringLiteral("unknown command \"%1\"").arg(command), err);
}

} // namespace CommandLine
