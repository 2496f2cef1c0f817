#include "ShellTestSupport.h"

#include "documents/DiskWrite.h"
#include "documents/OpenDocument.h"
#include "documents/Opml.h"
#include "documents/PendingCreation.h"
#include "shell/AppMenus.h"
#include "shell/ContentView.h"
#include "shell/DocumentManager.h"
#include "shell/DocumentWindow.h"
#include "shell/RewriteBar.h"
#include "shell/StatusBarView.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

// Another program saving the file: new bytes, and a later time so that the change shows even
// within the file system's clock resolution.
void writeElsewhere(const QString& path, const QByteArray& bytes)
{
    ASSERT_TRUE(writeFile(path, bytes));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.setFileTime(QDateTime::currentDateTime().addSecs(5), QFileDevice::FileModificationTime);
}

// One change through the document's own undo step, as every edit makes it.
void renameRoot(OpenDocument* open, const QString& title)
{
    open->document()->captureUndo(std::nullopt, open->undoManager());
    open->document()->root()->setText(title);
}

class DocumentFilesTest : public ::testing::Test, protected ShellHarness {
protected:
    void SetUp() override
    {
        startShell();
        ASSERT_TRUE(dir.isValid());
        samplePath = dir.filePath(QStringLiteral("sample.md"));
        ASSERT_TRUE(writeFile(samplePath, "# Sample\n\n## Opening\n\nFirst line.\n"));
    }
    void TearDown() override { closeAllWindows(); }

    QString samplePath;
};

TEST_F(DocumentFilesTest, SaveWritesTheFileAndClearsTheMarkerUntilTheNextChange)
{
    DocumentWindow* window = manager->open(samplePath);
    ASSERT_NE(window, nullptr);
    OpenDocument* open = window->openDocument();
    EXPECT_FALSE(window->isWindowModified());

    renameRoot(open, QStringLiteral("Renamed"));
    EXPECT_TRUE(window->isWindowModified());
    EXPECT_TRUE(window->windowTitle().startsWith(QStringLiteral("sample.md")));

    ASSERT_TRUE(window->save());
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_EQ(readAll(samplePath), open->document()->fileContents());
    EXPECT_TRUE(readAll(samplePath).startsWith("# Renamed\n"));
    // A sermon's own file has nothing to warn about.
    EXPECT_TRUE(window->rewriteBar()->isHidden());
}

// A README-like file: saving it would rewrite its code and its list.
const QByteArray foreignFile = "# Tool\n\nBuild it:\n\n```sh\ncmake -B build\n# then\nmake\n```\n\n- fast\n- small\n";

TEST_F(DocumentFilesTest, AFileSavingWouldRewriteIsOnlyReadUntilTheUserChooses)
{
    ASSERT_TRUE(writeFile(samplePath, foreignFile));
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    RewriteBar* bar = window->rewriteBar();
    EXPECT_FALSE(bar->isHidden());
    EXPECT_TRUE(bar->message().startsWith(QStringLiteral("Saving will rewrite this file in sermon form; ")));
    EXPECT_TRUE(bar->message().endsWith(QStringLiteral(" lines would change")));
    EXPECT_TRUE(bar->saveAsNewButton()->isDefault());

    // Edits are allowed and show, but neither the autosave nor Save writes the file, and the
    // autosave holding back is no failure to report.
    QSignalSpy autosaveFailures(open, &OpenDocument::autosaveFailed);
    open->setAutosaveDelay(20);
    renameRoot(open, QStringLiteral("Edited"));
    EXPECT_TRUE(window->isWindowModified());
    QTest::qWait(150);
    EXPECT_FALSE(window->save()); // asks for a new file; the panel is cancelled
    EXPECT_EQ(prompts.proposedPaths.size(), 1);
    EXPECT_NE(QFileInfo(prompts.proposedPaths.value(0)).canonicalFilePath(), QFileInfo(samplePath).canonicalFilePath());
    EXPECT_EQ(readAll(samplePath), foreignFile);

    // Closing the bar is just reading; the next edit brings it back, still writing nothing.
    bar->closeButton()->click();
    EXPECT_TRUE(bar->isHidden());
    renameRoot(open, QStringLiteral("Edited again"));
    EXPECT_FALSE(bar->isHidden());
    QTest::qWait(150);
    EXPECT_EQ(readAll(samplePath), foreignFile);
    EXPECT_TRUE(prompts.errors.isEmpty());
    EXPECT_EQ(autosaveFailures.count(), 0);

    // Closing asks as for any modified document; Don't Save leaves the file as it was.
    prompts.saveChoices = {SaveChoice::dontSave};
    EXPECT_TRUE(window->close());
    EXPECT_EQ(prompts.questions.size(), 1);
    EXPECT_EQ(readAll(samplePath), foreignFile);
    EXPECT_FALSE(QFile::exists(samplePath + QLatin1Char('~')));
}

TEST_F(DocumentFilesTest, TheChoiceForAFileSavingWouldRewriteIsCarriedOut)
{
    enum class Choice { saveAsNew, ctrlS, saveAsNewOntoItself, rewrite, rewriteBesideAnotherBackup };
    struct Case {
        const char* name;
        Choice choice;
        bool originalKept; // the file opened still holds its bytes
        bool backupBeside; // NAME.md~ holds them
    };
    const Case cases[] = {
        {"save as a new sermon", Choice::saveAsNew, true, false},
        {"Ctrl+S", Choice::ctrlS, true, false},
        {"a new sermon onto the file itself", Choice::saveAsNewOntoItself, false, true},
        {"rewrite", Choice::rewrite, false, true},
        {"rewrite with an older NAME.md~", Choice::rewriteBesideAnotherBackup, false, false},
    };
    for (const Case& c : cases) {
        const QString path = dir.filePath(QStringLiteral("%1.md").arg(c.name));
        const QString backup = path + QLatin1Char('~');
        const QString newPath = dir.filePath(QStringLiteral("%1 new.md").arg(c.name));
        ASSERT_TRUE(writeFile(path, foreignFile));
        if (c.choice == Choice::rewriteBesideAnotherBackup) {
            ASSERT_TRUE(writeFile(backup, "an editor's older copy\n"));
        }
        DocumentWindow* window = manager->open(path);
        OpenDocument* open = window->openDocument();
        renameRoot(open, QStringLiteral("Chosen"));
        prompts.savePaths = {c.choice == Choice::saveAsNewOntoItself ? path : newPath};
        switch (c.choice) {
        case Choice::saveAsNew:
        case Choice::saveAsNewOntoItself:
            window->rewriteBar()->saveAsNewButton()->click();
            break;
        case Choice::ctrlS:
            EXPECT_TRUE(window->save()) << c.name;
            break;
        case Choice::rewrite:
        case Choice::rewriteBesideAnotherBackup:
            window->rewriteBar()->rewriteButton()->click();
            break;
        }
        const bool isNew = !c.backupBeside && c.originalKept;
        EXPECT_FALSE(open->isRewriteHeld()) << c.name;
        EXPECT_FALSE(open->isModified()) << c.name;
        EXPECT_EQ(QFileInfo(open->filePath()).fileName(), QFileInfo(isNew ? newPath : path).fileName()) << c.name;
        EXPECT_EQ(readAll(open->filePath()), open->document()->fileContents()) << c.name;
        EXPECT_EQ(readAll(path) == foreignFile, c.originalKept) << c.name;
        EXPECT_EQ(readAll(backup) == foreignFile, c.backupBeside) << c.name;
        if (isNew) {
            EXPECT_TRUE(window->rewriteBar()->isHidden()) << c.name;
        } else {
            // The bar says where the original went, and whatever stood at NAME.md~ stays.
            EXPECT_FALSE(window->rewriteBar()->isAsking()) << c.name;
            const QString message = window->rewriteBar()->message();
            if (c.backupBeside) {
                EXPECT_TRUE(message.endsWith(QFileInfo(backup).fileName() + QLatin1Char('.'))) << c.name;
            } else {
                EXPECT_EQ(readAll(backup), "an editor's older copy\n") << c.name;
                const QString elsewhere = message.section(QStringLiteral(" in "), -1).chopped(1);
                EXPECT_TRUE(elsewhere.startsWith(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)))
                    << c.name << message.toStdString();
                EXPECT_EQ(readAll(elsewhere), foreignFile) << c.name;
                QFile::remove(elsewhere);
            }
        }
        // Afterwards it is a sermon like any other: edits are saved again.
        open->setAutosaveDelay(20);
        renameRoot(open, QStringLiteral("Autosaved"));
        EXPECT_TRUE(QTest::qWaitFor([&] { return readAll(open->filePath()).startsWith("# Autosaved"); }, 2000))
            << c.name;
        window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_TRUE(prompts.errors.isEmpty()) << prompts.errors.join(QLatin1Char('\n')).toStdString();
}

TEST_F(DocumentFilesTest, AFileTakenInFromAnotherProgramIsCheckedAgain)
{
    ASSERT_TRUE(writeFile(samplePath, foreignFile));
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    ASSERT_TRUE(open->isRewriteHeld());
    writeElsewhere(samplePath, "# Now a sermon\n\nFirst line.\n");
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return window->document()->root()->text() == QStringLiteral("Now a sermon"); }, 3000));
    EXPECT_FALSE(open->isRewriteHeld());
    EXPECT_TRUE(window->rewriteBar()->isHidden());
    writeElsewhere(samplePath, foreignFile);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return window->document()->root()->text() != QStringLiteral("Now a sermon"); }, 3000));
    EXPECT_TRUE(open->isRewriteHeld());
    EXPECT_FALSE(window->rewriteBar()->isHidden());
}

TEST_F(DocumentFilesTest, TheBarCountsTheLinesThatWouldChange)
{
    const struct {
        const char* file;
        const char* message;
    } rows[] = {
        {"# T\n\n- one\n", "Saving will rewrite this file in sermon form; 1 line would change"},
        {"# T\n\n- one\n- two\n", "Saving will rewrite this file in sermon form; 2 lines would change"},
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(writeFile(samplePath, row.file));
        DocumentWindow* window = manager->open(samplePath);
        EXPECT_EQ(window->rewriteBar()->message(), QString::fromUtf8(row.message));
        delete window;
    }
    RewriteCheck::Result many;
    many.isTruncated = true;
    many.changes.append(RewriteCheck::LineChange{});
    EXPECT_EQ(RewriteBar::summary(many),
              QStringLiteral("Saving will rewrite this file in sermon form; many lines would change"));
}

TEST_F(DocumentFilesTest, UndoBackToTheSavedStateClearsTheModifiedMarker)
{
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    renameRoot(open, QStringLiteral("One"));
    ASSERT_TRUE(open->isModified());
    open->undoManager()->undo();
    EXPECT_FALSE(open->isModified());
    EXPECT_FALSE(window->isWindowModified());
    open->undoManager()->redo();
    EXPECT_TRUE(open->isModified());

    // Saved, undone, then changed anew (as a sheet changes it, with no edit signal): unsaved at
    // once, the window's mark with it, though as many steps lead back as led to the save.
    ASSERT_TRUE(window->save());
    open->undoManager()->undo();
    renameRoot(open, QStringLiteral("Two"));
    EXPECT_TRUE(open->isModified());
    EXPECT_TRUE(window->isWindowModified());
}

TEST_F(DocumentFilesTest, AutosaveWritesInPlaceShortlyAfterAChange)
{
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    open->setAutosaveDelay(20);
    renameRoot(open, QStringLiteral("Autosaved"));
    EXPECT_TRUE(open->isAutosavePending());
    EXPECT_TRUE(QTest::qWaitFor([&] { return readAll(samplePath).startsWith("# Autosaved\n"); }, 2000));
    EXPECT_FALSE(open->isModified());
    // The default delay keeps the promise of "within about two seconds".
    EXPECT_LE(OpenDocument::defaultAutosaveDelayMs, 2000);

    // Changes coming faster than the delay put the save off, but not for ever: past four
    // delays of steady work it goes ahead.
    qint64 now = 0;
    open->setClock([&now] { return now; });
    open->setAutosaveDelay(60000);
    for (int step = 1; step <= 5; ++step) {
        renameRoot(open, QStringLiteral("Busy %1").arg(step));
        QCoreApplication::processEvents();
        EXPECT_EQ(readAll(samplePath).startsWith("# Busy"), step == 5) << step;
        now += 61000;
    }
}

TEST_F(DocumentFilesTest, ClosingAWindowSavesItsFileAndReopeningGivesTheSameSermon)
{
    DocumentWindow* window = manager->open(samplePath);
    renameRoot(window->openDocument(), QStringLiteral("Kept"));
    const QByteArray expected = window->document()->fileContents();
    EXPECT_TRUE(window->close());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(readAll(samplePath), expected);
    EXPECT_TRUE(prompts.questions.isEmpty());

    DocumentWindow* again = manager->open(preferences->recentFiles().value(0));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->document()->fileContents(), expected);
}

TEST_F(DocumentFilesTest, OpeningAFileThatIsOpenRaisesItsWindow)
{
    DocumentWindow* first = manager->open(samplePath);
    DocumentWindow* second = manager->open(dir.filePath(QStringLiteral("./sample.md")));
    EXPECT_EQ(first, second);
    EXPECT_EQ(manager->windows().size(), 1);
}

TEST_F(DocumentFilesTest, AFileThatCannotBeReadShowsAMessageAndOpensNothing)
{
    const QString empty = dir.filePath(QStringLiteral("empty.md"));
    ASSERT_TRUE(writeFile(empty, ""));
    const QString latin1 = dir.filePath(QStringLiteral("latin1.md"));
    ASSERT_TRUE(writeFile(latin1, "# Caf\xe9\n"));
    for (const QString& path : {empty, latin1, dir.filePath(QStringLiteral("missing.md")), dir.path()}) {
        prompts.errors.clear();
        EXPECT_EQ(manager->open(path), nullptr) << path.toStdString();
        ASSERT_EQ(prompts.errors.size(), 1) << path.toStdString();
        EXPECT_TRUE(prompts.errors.first().contains(QStringLiteral("could not be opened"))) << path.toStdString();
    }
    EXPECT_TRUE(manager->windows().isEmpty());
    EXPECT_TRUE(preferences->recentFiles().isEmpty());
}

TEST_F(DocumentFilesTest, AnOutlineOpensAsANewUntitledSermonAndExportsBack)
{
    const QString opml = dir.filePath(QStringLiteral("talk.opml"));
    ASSERT_TRUE(writeFile(opml,
                          "<opml><head><title>Psalm</title></head><body><outline text=\"Still waters\"/>"
                          "</body></opml>"));
    const QString bad = dir.filePath(QStringLiteral("bad.opml"));
    ASSERT_TRUE(writeFile(bad, "<html/>"));
    EXPECT_EQ(manager->open(bad), nullptr);
    ASSERT_EQ(prompts.errors.size(), 1);
    EXPECT_TRUE(prompts.errors.first().contains(QStringLiteral("not an OPML outline")));

    DocumentWindow* window = manager->open(opml);
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->openDocument()->isUntitled());
    EXPECT_TRUE(window->openDocument()->isModified()); // never saved as a sermon
    EXPECT_EQ(window->openDocument()->document()->root()->text(), QStringLiteral("Psalm"));

    const QString out = dir.filePath(QStringLiteral("out.opml"));
    prompts.savePaths.push_back(out);
    window->menus()->action(QStringLiteral("Export as OPML\u2026"))->trigger();
    EXPECT_EQ(readAll(out), Opml::write(*window->openDocument()->document()->root()));
    EXPECT_TRUE(window->menus()->action(QStringLiteral("Print\u2026")));
}

TEST_F(DocumentFilesTest, UntitledChangesAskOnCloseAndFollowTheAnswer)
{
    struct Case {
        const char* name;
        SaveChoice choice;
        bool givesPath;
        bool closes;
        bool fileWritten;
    };
    const Case cases[] = {
        {"cancel keeps the window", SaveChoice::cancel, false, false, false},
        {"don't save closes without a file", SaveChoice::dontSave, false, true, false},
        {"save with a path writes and closes", SaveChoice::save, true, true, true},
        {"save cancelled in the panel keeps the window", SaveChoice::save, false, false, false},
    };
    for (const Case& c : cases) {
        PendingCreation::shared().store({QStringLiteral("Easter: Morning?"), {}});
        DocumentWindow* window = manager->newDocument();
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(window->document()->root()->text(), QStringLiteral("Easter: Morning?"));
        // Named after the title until it has a file; the ".md" comes with the file.
        EXPECT_EQ(window->openDocument()->displayName(), QStringLiteral("Easter Morning"));
        // A new sermon with no edits closes without a question.
        EXPECT_FALSE(window->openDocument()->isModified());
        renameRoot(window->openDocument(), QStringLiteral("Easter Morning"));

        const QString target = dir.filePath(QStringLiteral("%1.md").arg(c.name));
        prompts.questions.clear();
        prompts.proposedPaths.clear();
        prompts.saveChoices = {c.choice};
        prompts.savePaths.clear();
        if (c.givesPath)
            prompts.savePaths.push_back(target);
        const bool closed = window->close();
        EXPECT_EQ(closed, c.closes) << c.name;
        EXPECT_EQ(prompts.questions.size(), 1) << c.name;
        EXPECT_EQ(QFile::exists(target), c.fileWritten) << c.name;
        if (c.choice == SaveChoice::save) {
            // The first save proposes the title made safe for a file name.
            ASSERT_EQ(prompts.proposedPaths.size(), 1) << c.name;
            EXPECT_TRUE(prompts.proposedPaths.first().endsWith(QStringLiteral("/Easter Morning.md"))) << c.name;
        }
        if (!closed) {
            prompts.saveChoices = {SaveChoice::dontSave};
            EXPECT_TRUE(window->close());
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(DocumentFilesTest, QuitClosesNothingWhenOneWindowIsKept)
{
    // Every window is asked before any closes: a Cancel leaves the clean ones open too.
    DocumentWindow* clean = manager->open(samplePath);
    DocumentWindow* untitled = manager->newDocument();
    renameRoot(untitled->openDocument(), QStringLiteral("Draft"));
    prompts.saveChoices = {SaveChoice::cancel};
    EXPECT_FALSE(manager->closeAll());
    EXPECT_TRUE(untitled->isVisible());
    EXPECT_TRUE(clean->isVisible());
}

// A disk with room for `diskRoom` more bytes: writes come back short at the edge, then fail as a
// full disk does. Bytes written over a file's own take no room. A folder that refuses new
// files, when `folderRefuses`.
ssize_t diskRoom = 0;
bool folderRefuses = false;
ssize_t fullDiskWrite(int fd, const void* data, size_t size)
{
    struct stat info {};
    ::fstat(fd, &info);
    const off_t at = ::lseek(fd, 0, SEEK_CUR);
    const size_t over = at < info.st_size ? std::min<size_t>(size, static_cast<size_t>(info.st_size - at)) : 0;
    const size_t allowed = over + std::min<size_t>(size - over, static_cast<size_t>(std::max<ssize_t>(diskRoom, 0)));
    if (allowed == 0) {
        errno = ENOSPC;
        return -1;
    }
    const ssize_t written = ::write(fd, data, allowed);
    diskRoom -= std::max<ssize_t>(written - static_cast<ssize_t>(over), 0);
    return written;
}
int lockedFolderTemporary(char* pattern, int flags)
{
    if (folderRefuses) {
        errno = EACCES;
        return -1;
    }
    return ::mkostemp(pattern, flags);
}

class FullDisk {
public:
    FullDisk(ssize_t room, bool refuseNewFiles)
    {
        diskRoom = room;
        folderRefuses = refuseNewFiles;
        DiskWrite::setCalls({fullDiskWrite, lockedFolderTemporary});
    }
    ~FullDisk() { DiskWrite::setCalls({}); }
};

// Nothing but the files a test made: no temporary file is left behind.
QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

TEST_F(DocumentFilesTest, ASaveThatCannotFinishKeepsTheOldBytesAndSaysWhy)
{
    // A sermon of about 4.7 KB, so that a page-sized write comes back short.
    QByteArray original = "# Sample\n\n## Opening\n\n";
    while (original.size() < 4700)
        original += "A line long enough to fill the disk quickly, line after line.\n";
    struct Case {
        const char* name;
        ssize_t room;
        bool folderRefuses; // the save must write in place
        bool saves;
    };
    const Case cases[] = {
        {"no room at all", 0, false, false},
        {"room for one page: a short write, then full", 4096, false, false},
        {"room for most of it", 4699, false, false},
        {"room enough", 1 << 20, false, true},
        {"in place, no room for the longer text", 0, true, false},
        {"in place, room enough", 1 << 20, true, true},
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(writeFile(samplePath, original));
        QFile::setPermissions(samplePath, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup);
        DocumentWindow* window = manager->open(samplePath);
        ASSERT_NE(window, nullptr) << c.name;
        OpenDocument* open = window->openDocument();
        prompts.errors.clear();
        renameRoot(open, QStringLiteral("Changed"));
        // Opening may write the settings beside it; the save itself leaves nothing behind.
        const QStringList before = filesIn(dir.path());
        {
            FullDisk disk(c.room, c.folderRefuses);
            EXPECT_EQ(window->save(), c.saves) << c.name;
        }
        EXPECT_EQ(filesIn(dir.path()), before) << c.name;
        // Whatever happened, the file keeps its permissions.
        EXPECT_EQ(QFile::permissions(samplePath),
                  QFileDevice::ReadOwner | QFileDevice::ReadUser | QFileDevice::WriteOwner | QFileDevice::WriteUser
                      | QFileDevice::ReadGroup)
            << c.name;
        if (c.saves) {
            EXPECT_EQ(readAll(samplePath), open->document()->fileContents()) << c.name;
            EXPECT_FALSE(open->isModified()) << c.name;
        } else {
            EXPECT_EQ(readAll(samplePath), original) << c.name;
            EXPECT_TRUE(window->isWindowModified()) << c.name;
            ASSERT_EQ(prompts.errors.size(), 1) << c.name;
            EXPECT_EQ(prompts.errors.first(),
                      QStringLiteral("The document \u201csample.md\u201d could not be saved. The disk is full."))
                << c.name;
        }
        open->setAutosaveDelay(60000);
        prompts.saveChoices = {SaveChoice::dontSave};
        window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(DocumentFilesTest, AnAutosaveOntoAFullDiskLeavesTheFileWholeAndTheDocumentUnsaved)
{
    const QByteArray original = readAll(samplePath);
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    FullDisk disk(8, false);
    open->setAutosaveDelay(10);
    QSignalSpy failed(open, &OpenDocument::autosaveFailed);
    renameRoot(open, QStringLiteral("Changed"));
    ASSERT_TRUE(failed.wait(3000));
    EXPECT_EQ(readAll(samplePath), original);
    EXPECT_TRUE(window->isWindowModified());
    EXPECT_TRUE(
        window->contentView()->statusBar()->noticeLabel()->text().endsWith(QStringLiteral("The disk is full.")));

    // Closing says so, then asks; Cancel keeps the window and its changes.
    prompts.saveChoices = {SaveChoice::cancel};
    EXPECT_FALSE(window->close());
    EXPECT_EQ(prompts.errors.size(), 1);
    EXPECT_EQ(prompts.questions.size(), 1);
    EXPECT_TRUE(open->isModified());
}

TEST_F(DocumentFilesTest, AFileDeletedOrMovedWhileOpenIsNeverWrittenBackUnasked)
{
    struct Case {
        const char* name;
        bool moved;
        bool edited;
    };
    const Case cases[] = {
        {"deleted, no edits", false, false},
        {"deleted, edited", false, true},
        {"moved, no edits", true, false},
        {"moved, edited", true, true},
    };
    const QString movedPath = dir.filePath(QStringLiteral("moved.md"));
    for (const Case& c : cases) {
        ASSERT_TRUE(writeFile(samplePath, "# Sample\n\nFirst line.\n"));
        QFile::remove(movedPath);
        DocumentWindow* window = manager->open(samplePath);
        OpenDocument* open = window->openDocument();
        open->setAutosaveDelay(10);
        ASSERT_TRUE(c.moved ? QFile::rename(samplePath, movedPath) : QFile::remove(samplePath)) << c.name;
        // The watcher tells of it by itself.
        EXPECT_TRUE(QTest::qWaitFor([&] { return open->isFileGone(); }, 3000)) << c.name;
        const StatusBarView* status = window->contentView()->statusBar();
        EXPECT_TRUE(status->noticeLabel()->text().contains(QStringLiteral("moved or deleted"))) << c.name;
        ASSERT_EQ(status->noticeButtons().size(), 2) << c.name;
        EXPECT_EQ(status->noticeButtons().at(1)->text(), QStringLiteral("Save Here Again")) << c.name;

        if (c.edited)
            renameRoot(open, QStringLiteral("Edited"));
        QTest::qWait(60); // past the autosave delay
        prompts.questions.clear();
        prompts.saveChoices = {SaveChoice::dontSave};
        EXPECT_TRUE(window->close()) << c.name;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_FALSE(QFile::exists(samplePath)) << c.name;
        // Only unsaved changes are asked about.
        EXPECT_EQ(prompts.questions.size(), c.edited ? 1 : 0) << c.name;
        if (c.moved) {
            EXPECT_EQ(readAll(movedPath), QByteArray("# Sample\n\nFirst line.\n")) << c.name;
        }
    }

    // Saving there again is the user's choice, and the file is watched again after it.
    ASSERT_TRUE(writeFile(samplePath, "# Sample\n\nFirst line.\n"));
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    ASSERT_TRUE(QFile::remove(samplePath));
    open->updateFileState();
    renameRoot(open, QStringLiteral("Back"));
    window->contentView()->statusBar()->noticeButtons().at(1)->click();
    EXPECT_TRUE(readAll(samplePath).startsWith("# Back\n"));
    EXPECT_FALSE(open->isFileGone());
    EXPECT_TRUE(window->contentView()->statusBar()->noticeLabel()->isHidden());
}

TEST_F(DocumentFilesTest, AReadOnlyFileSaysSoFromTheStartAndIsOnlySavedElsewhere)
{
    const QByteArray original = readAll(samplePath);
    ASSERT_TRUE(QFile::setPermissions(samplePath, QFileDevice::ReadOwner | QFileDevice::ReadGroup));
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    EXPECT_TRUE(open->isReadOnly());
    EXPECT_TRUE(window->windowTitle().contains(QStringLiteral("[Read-Only]")));
    EXPECT_TRUE(window->contentView()->statusBar()->noticeLabel()->text().startsWith(QStringLiteral("Read-only")));

    open->setAutosaveDelay(10);
    renameRoot(open, QStringLiteral("Changed"));
    QTest::qWait(60);
    EXPECT_EQ(readAll(samplePath), original);
    EXPECT_TRUE(prompts.errors.isEmpty());

    // Save goes to a place the user names.
    const QString copy = dir.filePath(QStringLiteral("copy.md"));
    prompts.savePaths = {copy};
    EXPECT_TRUE(window->save());
    EXPECT_TRUE(readAll(copy).startsWith("# Changed\n"));
    EXPECT_EQ(readAll(samplePath), original);
    EXPECT_FALSE(open->isReadOnly());
    EXPECT_FALSE(window->windowTitle().contains(QStringLiteral("[Read-Only]")));
}

TEST_F(DocumentFilesTest, RecentFilesAreMostRecentFirstWithoutRepeats)
{
    const QString other = dir.filePath(QStringLiteral("other.md"));
    ASSERT_TRUE(writeFile(other, "# Other\n"));
    manager->open(samplePath);
    manager->open(other);
    manager->open(samplePath);
    EXPECT_EQ(preferences->recentFiles(),
              (QStringList{QFileInfo(samplePath).absoluteFilePath(), QFileInfo(other).absoluteFilePath()}));
}

TEST_F(DocumentFilesTest, AnotherProgramsChangeShowsByItselfWhenNothingHereIsUnsaved)
{
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    writeElsewhere(samplePath, "# Sample\n\n## Opening\n\nFirst line, edited elsewhere.\n");
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->document()->fileContents().contains("edited elsewhere"); }, 3000));
    EXPECT_TRUE(prompts.diskQuestions.isEmpty());
    EXPECT_FALSE(open->isModified());
    // The reload is a step: undo brings back what was shown, and that is then unsaved.
    open->undoManager()->undo();
    EXPECT_FALSE(window->document()->fileContents().contains("edited elsewhere"));
    EXPECT_TRUE(open->isModified());
}

TEST_F(DocumentFilesTest, UnsavedChangesAreNeverWrittenSilentlyOverAnotherProgramsChange)
{
    struct Case {
        const char* name;
        DiskChoice choice;
        bool throughSave; // Ctrl+S rather than the autosave
        const char* fileHas;
        const char* windowHas;
    };
    const Case cases[] = {
        {"autosave, keep mine", DiskChoice::keepMine, false, "# Mine", "# Mine"},
        {"autosave, reload", DiskChoice::reload, false, "# Theirs", "# Theirs"},
        {"save, keep mine", DiskChoice::keepMine, true, "# Mine", "# Mine"},
        {"save, reload", DiskChoice::reload, true, "# Theirs", "# Theirs"},
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(writeFile(samplePath, "# Sample\n\nFirst line.\n"));
        DocumentWindow* window = manager->open(samplePath);
        OpenDocument* open = window->openDocument();
        open->setAutosaveDelay(c.throughSave ? 60000 : 20);
        prompts.diskQuestions.clear();
        prompts.diskChoices = {c.choice};

        renameRoot(open, QStringLiteral("Mine"));
        writeElsewhere(samplePath, "# Theirs\n\nFirst line, and theirs.\n");
        if (c.throughSave) {
            EXPECT_EQ(window->save(), true) << c.name;
        }
        EXPECT_TRUE(QTest::qWaitFor([&] { return prompts.diskQuestions.size() == 1; }, 3000)) << c.name;
        QCoreApplication::processEvents();
        EXPECT_TRUE(readAll(samplePath).startsWith(c.fileHas)) << c.name;
        EXPECT_TRUE(window->document()->fileContents().startsWith(c.windowHas)) << c.name;
        EXPECT_FALSE(open->isModified()) << c.name;
        if (c.choice == DiskChoice::reload) {
            open->undoManager()->undo(); // our version is one undo away
            EXPECT_TRUE(window->document()->fileContents().startsWith("# Mine")) << c.name;
        }
        open->setAutosaveDelay(60000);
        prompts.saveChoices = {SaveChoice::dontSave};
        window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(DocumentFilesTest, AFileOnlyTouchedByAnotherProgramIsNoConflict)
{
    DocumentWindow* window = manager->open(samplePath);
    OpenDocument* open = window->openDocument();
    writeElsewhere(samplePath, readAll(samplePath)); // same bytes, new time
    renameRoot(open, QStringLiteral("Renamed"));
    EXPECT_FALSE(open->changedOnDisk());
    EXPECT_TRUE(window->save());
    EXPECT_TRUE(readAll(samplePath).startsWith("# Renamed"));
    EXPECT_TRUE(prompts.diskQuestions.isEmpty());
}

} // namespace
