#include "ShellTestSupport.h"

#include "core/TreeOutline.h"

#include "documents/CommandLine.h"
#include "documents/OpenDocument.h"
#include "documents/SermonFile.h"
#include "shell/DialogPrompts.h"

#include "core/SermonDocument.h"

#include <QDir>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// A file that could hang the reader must fail the test, not hang the run: the call goes to a
// worker thread and the test waits only so long (generous: this is about never, not about
// fast). A thread left hanging is detached, since a future of std::async would wait for it.
template <typename Result>
std::optional<Result> withDeadline(std::function<Result()> work)
{
    auto promise = std::make_shared<std::promise<Result>>();
    std::future<Result> result = promise->get_future();
    std::thread([promise, work]() mutable {
        Result value = work();
        work = nullptr; // what the work holds is let go before the test goes on
        promise->set_value(std::move(value));
    }).detach();
    if (result.wait_for(std::chrono::seconds(10)) != std::future_status::ready)
        return std::nullopt;
    return result.get();
}

// Ten anchors, each merging the one before fifty times: 2 KB that would take 50^9 steps.
QByteArray mergeBomb()
{
    QByteArray yaml = "a0: &a0 {scripture: x, duration: 5}\n";
    for (int i = 1; i < 10; ++i) {
        yaml += "a" + QByteArray::number(i) + ": &a" + QByteArray::number(i) + "\n  <<: [";
        for (int j = 0; j < 50; ++j)
            yaml += (j ? ",*a" : "*a") + QByteArray::number(i - 1);
        yaml += "]\n";
    }
    return yaml + "<<: *a9\n";
}

// Aliases that would stand for 10^10 nodes if expanded, and thousands of anchors, each of which
// the YAML library looks up among all the anchors before it; the block is refused unread.
QByteArray aliasBomb()
{
    QByteArray yaml = "duration: 5\nl0: &l0 [x, x, x, x, x, x, x, x, x, x]\n";
    for (int i = 1; i < 10; ++i) {
        const QByteArray previous = "*l" + QByteArray::number(i - 1);
        yaml += "l" + QByteArray::number(i) + ": &l" + QByteArray::number(i) + " [" + previous
            + (", " + previous).repeated(9) + "]\n";
    }
    yaml += "many:\n";
    for (int i = 0; i < 3000; ++i)
        yaml += "- &m" + QByteArray::number(i) + " x\n";
    return yaml;
}

const QByteArray body = "# Title\n\nthe body stays\n";

struct Row {
    const char* name;
    std::function<bool(const QString& path)> make; // puts the hostile thing at the path
    const char* why; // the reason given; none: read, block dropped
};

bool replaceWith(const QString& path, const QByteArray& bytes)
{
    QFile::remove(path);
    return writeFile(path, bytes);
}

const Row rows[] = {
    {"merge bomb", [](const QString& p) { return replaceWith(p, "---\n" + mergeBomb() + "---\n\n" + body); }, nullptr},
    {"alias bomb", [](const QString& p) { return replaceWith(p, "---\n" + aliasBomb() + "---\n\n" + body); }, nullptr},
    {"/dev/zero",
     [](const QString& p) {
         QFile::remove(p);
         return ::symlink("/dev/zero", QFile::encodeName(p).constData()) == 0;
     },
     "It is a device, not a file."},
    {"FIFO",
     [](const QString& p) {
         QFile::remove(p);
         return ::mkfifo(QFile::encodeName(p).constData(), 0600) == 0;
     },
     "It is a pipe, not a file."},
    {"over the size limit",
     [](const QString& p) { return replaceWith(p, body) && QFile::resize(p, SermonFile::maxBytes + 1); },
     "too large to be a sermon"},
    {"symlink loop",
     [](const QString& p) {
         QFile::remove(p);
         return ::symlink(QFile::encodeName(p).constData(), QFile::encodeName(p).constData()) == 0;
     },
     "It is a link that leads back to itself."},
    {"folder",
     [](const QString& p) {
         QFile::remove(p);
         return QDir().mkdir(p);
     },
     "It is a folder, not a file."},
};

class HostileInputTest : public ::testing::Test {
protected:
    void SetUp() override { ensureApplication(); }

    QString pathFor(const Row& row, const char* suffix) const
    {
        return dir.filePath(QString::fromLatin1(row.name).replace(QLatin1Char('/'), QLatin1Char('_'))
                            + QLatin1String(suffix) + QLatin1String(".md"));
    }

    QTemporaryDir dir;
};

// Opening a file, in the app or from the command line, ends with either its body (a block that
// can't be read is dropped) or a plain reason.
TEST_F(HostileInputTest, EveryReaderEndsWithTheBodyOrAReason)
{
    const QString plain = dir.filePath(QStringLiteral("plain.md"));
    ASSERT_TRUE(writeFile(plain, body));
    const auto plainRead = SermonFile::read(plain, nullptr);
    ASSERT_TRUE(plainRead);
    QString plainStats;
    QTextStream plainStream(&plainStats);
    ASSERT_EQ(CommandLine::run({QStringLiteral("orantium"), QStringLiteral("stats"), plain}, plainStream, plainStream),
              0);

    for (const Row& row : rows) {
        const QString path = pathFor(row, "");
        ASSERT_TRUE(row.make(path)) << row.name;

        const auto opened = withDeadline<std::pair<std::optional<SermonContents>, QString>>([path] {
            QString error;
            auto contents = SermonFile::read(path, &error);
            return std::make_pair(std::move(contents), error);
        });
        ASSERT_TRUE(opened) << row.name << ": opening didn't end";
        const auto& [contents, error] = *opened;

        const auto stats = withDeadline<std::pair<int, QString>>([path] {
            QString out;
            QTextStream stream(&out);
            QTextStream err(&out);
            const int status =
                CommandLine::run({QStringLiteral("orantium"), QStringLiteral("stats"), path}, stream, err);
            return std::make_pair(status, out);
        });
        ASSERT_TRUE(stats) << row.name << ": stats didn't end";

        if (!row.why) {
            ASSERT_TRUE(contents) << row.name << ": " << error.toStdString();
            EXPECT_EQ(contents->metadata, SermonMetadata{}) << row.name;
            EXPECT_EQ(outline(*contents->root), outline(*plainRead->root)) << row.name;
            EXPECT_EQ(stats->first, 0) << row.name;
            EXPECT_EQ(stats->second, plainStats) << row.name;
        } else {
            EXPECT_FALSE(contents) << row.name;
            EXPECT_TRUE(error.contains(QString::fromUtf8(row.why))) << row.name << ": " << error.toStdString();
            EXPECT_TRUE(error.contains(QFileInfo(path).fileName())) << row.name;
            EXPECT_EQ(stats->first, 1) << row.name;
            EXPECT_TRUE(stats->second.contains(QString::fromUtf8(row.why)))
                << row.name << ": " << stats->second.toStdString();
        }
    }
}

// An open sermon whose file is replaced by any of these: the check for a change made elsewhere
// ends, and a file that can still be read is taken in whole.
TEST_F(HostileInputTest, AnOpenSermonSurvivesItsFileBeingReplaced)
{
    for (const Row& row : rows) {
        const QString path = pathFor(row, "-open");
        ASSERT_TRUE(writeFile(path, body));
        auto contents = SermonFile::read(path, nullptr);
        ASSERT_TRUE(contents);
        auto open = std::make_shared<OpenDocument>(std::make_unique<SermonDocument>(std::move(*contents)), path);
        ASSERT_TRUE(row.make(path)) << row.name;

        const auto changed = withDeadline<bool>([open] { return open->changedOnDisk(); });
        ASSERT_TRUE(changed) << row.name << ": the check didn't end";
        // A block that can't be read still leaves new bytes; anything else can't be read at all.
        EXPECT_EQ(*changed, !row.why) << row.name;
        // Taking the file in uses the timers of the window's thread; it goes there only once
        // its reading is known to end.
        ASSERT_TRUE(withDeadline<bool>([path] { return SermonFile::read(path, nullptr).has_value(); })) << row.name;
        if (!row.why) {
            EXPECT_TRUE(open->reloadFromDisk()) << row.name;
            EXPECT_EQ(open->document()->metadata(), SermonMetadata{}) << row.name;
        } else {
            EXPECT_FALSE(open->reloadFromDisk()) << row.name;
            EXPECT_TRUE(open->lastError().contains(QString::fromUtf8(row.why))) << row.name;
        }
    }
}

// A file's name is shown as it stands, even when it looks like markup.
TEST_F(HostileInputTest, TheReasonNamesTheFileAsItStands)
{
    const QString path = dir.filePath(QStringLiteral("<b>bold<b>.md"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    QString error;
    ASSERT_FALSE(SermonFile::read(path, &error));

    Qt::TextFormat format = Qt::RichText;
    QString shown;
    QTimer::singleShot(0, [&] {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* box = qobject_cast<QMessageBox*>(widget); box && box->isVisible()) {
                format = box->textFormat();
                shown = box->text();
                box->reject();
            }
    });
    DialogPrompts().showError(nullptr, error);
    EXPECT_EQ(format, Qt::PlainText);
    EXPECT_EQ(shown, "The document \u201c<b>bold<b>.md\u201d could not be opened. It is a pipe, not a file.");
}

} // namespace
