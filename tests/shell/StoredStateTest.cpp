#include "ShellTestSupport.h"

#include "documents/RecentSermonsStore.h"
#include "shell/StatusBarView.h"

#include "core/SermonDocument.h"

#include <QDir>
#include <QFile>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QToolButton>

#include <future>
#include <sys/stat.h>
#include <thread>

#include <gtest/gtest.h>

namespace {

// Preferences whose file holds whatever a person or a broken program left there.
TEST(Preferences, GarbageReadsAsTheDefaults)
{
    ensureApplication();
    struct Case {
        const char* appearance;
        const char* pace;
        const char* recent;
        AppAppearance wantAppearance;
        int wantPace;
        QStringList wantRecent;
    };
    const Case cases[] = {
        {"Dark", "140", "/a.md", AppAppearance::dark, 140, {QStringLiteral("/a.md")}},
        {"dark", "fast", "relative.md", AppAppearance::system, 120, {}},
        {"", "-5", "", AppAppearance::system, 120, {}},
        {"Light",
         "0",
         "/a.md, /a.md, , /b.md",
         AppAppearance::light,
         120,
         {QStringLiteral("/a.md"), QStringLiteral("/b.md")}},
        {"\x01\x02", "99999999999999", "@Invalid()", AppAppearance::system, 120, {}},
    };
    for (const Case& c : cases) {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("settings.ini"));
        {
            QFile raw(file);
            ASSERT_TRUE(raw.open(QIODevice::WriteOnly));
            raw.write(QByteArray("[General]\nappearance=") + c.appearance + "\nreadingPaceWPM=" + c.pace
                      + "\nrecentFiles=" + c.recent + "\n");
        }
        Preferences preferences(std::make_unique<QSettings>(file, QSettings::IniFormat));
        EXPECT_EQ(preferences.appearance(), c.wantAppearance) << c.appearance;
        EXPECT_EQ(preferences.readingPaceWPM(), c.wantPace) << c.pace;
        EXPECT_EQ(preferences.recentFiles(), c.wantRecent) << c.recent;
    }
}

TEST(Preferences, TheRecentListKeepsTenMostRecentFirst)
{
    ensureApplication();
    QTemporaryDir dir;
    auto preferences = temporaryPreferences(dir);
    for (int i = 0; i < 12; ++i)
        preferences->noteRecentFile(QStringLiteral("/s/%1.md").arg(i));
    preferences->noteRecentFile(QStringLiteral("/s/5.md"));
    const QStringList recent = preferences->recentFiles();
    ASSERT_EQ(recent.size(), Preferences::maxRecentFiles);
    EXPECT_EQ(recent.first(), QStringLiteral("/s/5.md"));
    EXPECT_EQ(recent.at(1), QStringLiteral("/s/11.md"));
    EXPECT_EQ(recent.count(QStringLiteral("/s/5.md")), 1);
    EXPECT_FALSE(recent.contains(QStringLiteral("/s/1.md")));
}

TEST(Preferences, ASettingsFileThatIsALinkOrAPipeIsNeverWrittenThrough)
{
    ensureApplication();
    const QString path = Preferences::userStorePath();
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
    QTemporaryDir elsewhere;
    const QString target = elsewhere.filePath(QStringLiteral("target.conf"));
    const QByteArray targetBytes = "[General]\nappearance=Dark\n";
    struct Case {
        const char* name;
        bool pipe;
        AppAppearance readsAs;
    };
    const Case cases[] = {
        {"a link to another file", false, AppAppearance::dark},
        {"a named pipe", true, AppAppearance::system},
    };
    for (const Case& c : cases) {
        QFile::remove(path);
        ASSERT_TRUE(writeFile(target, targetBytes));
        if (c.pipe)
            ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0) << c.name;
        else
            ASSERT_TRUE(QFile::link(target, path)) << c.name;
        {
            // Reading a pipe would wait for ever: a deadline turns that into a failure.
            auto made = std::make_shared<std::promise<Preferences*>>();
            std::future<Preferences*> ready = made->get_future();
            std::thread([made] { made->set_value(new Preferences); }).detach();
            ASSERT_EQ(ready.wait_for(std::chrono::seconds(30)), std::future_status::ready) << c.name;
            std::unique_ptr<Preferences> preferences(ready.get());
            preferences->moveToThread(QThread::currentThread());
            EXPECT_EQ(preferences->appearance(), c.readsAs) << c.name;
            preferences->setAppearance(AppAppearance::light);
            preferences->settings().sync();
            EXPECT_EQ(preferences->appearance(), AppAppearance::light) << c.name;
        }
        const QFileInfo after(path);
        EXPECT_EQ(after.isSymLink(), !c.pipe) << c.name;
        EXPECT_EQ(readAll(target), targetBytes) << c.name;
    }
    QFile::remove(path);
}

class RecentSermonsStoreTest : public ::testing::Test {
protected:
    void SetUp() override { ensureApplication(); }
    QString write(const QString& name, const QByteArray& bytes)
    {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(writeFile(path, bytes));
        return path;
    }
    QTemporaryDir dir;
};

TEST_F(RecentSermonsStoreTest, TitlesAndOccasionsComeFromTheFilesAndBadFilesLeave)
{
    const QString titled = write(QStringLiteral("a.md"),
                                 "---\noccasions:\n  - date: 2026-01-04\n  - date: 2026-03-01\n    place: Hope Chapel\n"
                                 "---\n# Grace Enough\n\nLine.\n");
    const QString untitled = write(QStringLiteral("notes.md"), "Just a line.\n");
    const QString empty = write(QStringLiteral("empty.md"), "");
    const QString binary = write(QStringLiteral("bin.md"), QByteArray("\xff\xfe\x00\x01", 4));
    const QString gone = dir.filePath(QStringLiteral("gone.md"));

    const auto entries = RecentSermonsStore::readEntries({gone, titled, empty, untitled, binary}, {});
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries.at(0).path, titled);
    EXPECT_EQ(entries.at(0).title, QStringLiteral("Grace Enough"));
    ASSERT_TRUE(entries.at(0).occasionLine.has_value());
    // The latest occasion, with its place in front.
    EXPECT_TRUE(entries.at(0).occasionLine->startsWith(QStringLiteral("Hope Chapel \u00b7 ")));
    EXPECT_EQ(entries.at(1).title, QStringLiteral("notes"));
    EXPECT_FALSE(entries.at(1).occasionLine.has_value());
}

// However long the stored list has grown, the welcome window shows its first hundred distinct
// files, most recent first.
TEST(RecentList, RepeatsDropAfterTheirFirstAndTheListStopsAtItsCap)
{
    auto paths = [](int from, int to) {
        QStringList out;
        for (int i = from; i < to; ++i)
            out.append(QStringLiteral("/s/%1.md").arg(i));
        return out;
    };
    QStringList cycling;
    for (int i = 0; i < 100000; ++i)
        cycling.append(QStringLiteral("/s/%1.md").arg(2 - i % 3));
    const QStringList abc{QStringLiteral("/a.md"), QStringLiteral("/b.md"), QStringLiteral("/c.md")};
    const struct {
        QStringList stored;
        qsizetype limit;
        QStringList shown;
    } cases[] = {
        {{}, 100, {}},
        {{abc[0], abc[1], abc[0], abc[2], abc[1]}, 100, abc},
        {{abc[0], abc[0], abc[1], abc[2]}, 2, {abc[0], abc[1]}},
        {paths(0, 150), RecentSermonsStore::maxEntries, paths(0, 100)},
        {paths(0, 100) + paths(0, 100) + paths(100, 101), RecentSermonsStore::maxEntries, paths(0, 100)},
        {cycling, RecentSermonsStore::maxEntries, {"/s/2.md", "/s/1.md", "/s/0.md"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(RecentSermonsStore::distinctPaths(c.stored, c.limit), c.shown) << c.stored.size();
}

TEST_F(RecentSermonsStoreTest, TheCacheStandsUntilTheFileMovesBySecond)
{
    const QString path = write(QStringLiteral("a.md"), "# Fresh\n");
    const QDateTime mtime = QFileInfo(path).lastModified();
    RecentSermonsStore::Entry cached{path, QStringLiteral("Cached"), std::nullopt, mtime.addMSecs(-400)};
    const RecentSermonsStore::Cache cache{{path, cached}};
    EXPECT_EQ(RecentSermonsStore::readEntries({path}, cache).value(0).title, QStringLiteral("Cached"));

    cached.mtime = mtime.addMSecs(-1500);
    const RecentSermonsStore::Cache stale{{path, cached}};
    EXPECT_EQ(RecentSermonsStore::readEntries({path}, stale).value(0).title, QStringLiteral("Fresh"));
}

TEST_F(RecentSermonsStoreTest, RefreshFillsEntriesInOrderAndKeepsOldCacheEntries)
{
    const QString a = write(QStringLiteral("a.md"), "# A\n");
    const QString b = write(QStringLiteral("b.md"), "# B\n");
    RecentSermonsStore store;
    QSignalSpy spy(&store, &RecentSermonsStore::entriesChanged);
    store.refresh({b, a, b, a});
    ASSERT_TRUE(spy.wait(2000));
    ASSERT_EQ(store.entries().size(), 2);
    EXPECT_EQ(store.entries().at(0).title, QStringLiteral("B"));
    EXPECT_EQ(store.entries().at(1).title, QStringLiteral("A"));

    ASSERT_TRUE(QFile::remove(b));
    store.refresh({b, a});
    ASSERT_TRUE(spy.wait(2000));
    ASSERT_EQ(store.entries().size(), 1);
    EXPECT_EQ(store.entries().at(0).title, QStringLiteral("A"));
    EXPECT_TRUE(store.cache().contains(b));
}

// The pace menu under the map: one item per pace, a check on the stored one, none for a pace
// that is no item (only a hand-edited preference gives one); choosing hands the pace on.
TEST(StatusBar, ThePaceMenuMarksTheStoredPaceAndHandsOnTheChoice)
{
    ensureApplication();
    SermonDocument document(SermonNode::make(QStringLiteral("One two"), 0));
    document.root()->addChild(QStringLiteral("three four five"));
    StatusBarView bar(&document);
    std::vector<int> chosen;
    bar.onChooseReadingPace = [&](int wpm) { chosen.push_back(wpm); };
    auto items = [&] {
        QMenu* menu = bar.paceButton()->menu();
        emit menu->aboutToShow();
        return menu->actions();
    };
    const struct {
        int wpm;
        int checkedRow; // -1: none
    } cases[] = {{120, 1}, {160, 3}, {137, -1}};
    for (const auto& c : cases) {
        bar.setReadingPaceWPM(c.wpm);
        EXPECT_EQ(bar.paceButton()->text(), QStringLiteral("5 words \u00b7 1 min @%1wpm").arg(c.wpm));
        const QList<QAction*> actions = items();
        ASSERT_EQ(actions.size(), 4);
        EXPECT_EQ(actions[0]->text(), QStringLiteral("Slow (100 wpm)"));
        EXPECT_EQ(actions[3]->text(), QStringLiteral("Brisk (160 wpm)"));
        for (int row = 0; row < 4; ++row)
            EXPECT_EQ(!actions[row]->icon().isNull(), row == c.checkedRow) << c.wpm << " row " << row;
    }
    items()[2]->trigger();
    EXPECT_EQ(chosen, std::vector<int>{140});
    // The count follows the tree when told to.
    document.root()->addChild(QStringLiteral("six"));
    bar.refresh();
    EXPECT_TRUE(bar.paceButton()->text().startsWith(QStringLiteral("6 words")));
}

} // namespace
