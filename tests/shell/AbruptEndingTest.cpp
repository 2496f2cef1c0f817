#include "ShellTestSupport.h"

#include "documents/OpenDocument.h"
#include "documents/RecoveryStore.h"
#include "shell/DocumentManager.h"
#include "shell/DocumentWindow.h"
#include "shell/OrantiumApp.h"
#include "shell/RecoveryOffer.h"
#include "shell/WindowSupervisor.h"

#include "core/SermonDocument.h"

#include <QDirIterator>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

namespace {

const QString editedTitle = QStringLiteral("Typed just before the end");

// The application as a user runs it, in a process of its own: opens the file it is given, or a
// new untitled sermon, makes one edit, says "edited" and runs until it is ended. Run by the
// tests below, and by scripts/kill-during-autosave.sh.
TEST(DISABLED_AbruptEndingChild, Run)
{
    int argc = 1;
    char name[] = "orantium";
    char* argv[] = {name, nullptr};
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orantium"));
    QApplication::setOrganizationName(QStringLiteral("Orantium"));
    const QString file = qEnvironmentVariable("ORANTIUM_CHILD_FILE");
    QStringList arguments{QStringLiteral("orantium")};
    if (!file.isEmpty())
        arguments.append(file);
    OrantiumApp orantium(arguments);
    ASSERT_TRUE(orantium.start());
    QTimer::singleShot(0, &app, [&] {
        DocumentWindow* window =
            file.isEmpty() ? orantium.documents()->newDocument() : orantium.documents()->windows().value(0);
        OpenDocument* open = window->openDocument();
        open->setAutosaveDelay(qEnvironmentVariableIntValue("ORANTIUM_CHILD_AUTOSAVE_MS"));
        open->document()->captureUndo(std::nullopt, open->undoManager());
        open->document()->root()->setText(editedTitle);
        std::printf("edited\n");
        std::fflush(stdout);
        // For scripts/kill-during-autosave.sh: an edit every few milliseconds, so that a kill
        // lands in the middle of a save.
        if (qEnvironmentVariableIsSet("ORANTIUM_CHILD_KEEP_EDITING")) {
            auto* ticks = new QTimer(window);
            QObject::connect(ticks, &QTimer::timeout, window, [open, n = 0]() mutable {
                open->document()->captureUndo(std::nullopt, open->undoManager());
                open->document()->root()->setText(QStringLiteral("Edit %1").arg(++n));
            });
            ticks->start(3);
        }
    });
    app.exec();
}

class AbruptEndingTest : public ::testing::Test, protected ShellHarness {
protected:
    void SetUp() override { startShell(); }
    void TearDown() override
    {
        if (child.state() != QProcess::NotRunning) {
            child.kill();
            child.waitForFinished();
        }
        closeAllWindows();
    }

    // Starts the application in a child with its own home, and waits for its edit.
    void startChild(const QString& file, int autosaveMs)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), dir.path());
        environment.insert(QStringLiteral("XDG_DATA_HOME"), dataHome());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
        environment.insert(QStringLiteral("ORANTIUM_CHILD_FILE"), file);
        environment.insert(QStringLiteral("ORANTIUM_CHILD_AUTOSAVE_MS"), QString::number(autosaveMs));
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--gtest_also_run_disabled_tests"),
                     QStringLiteral("--gtest_filter=DISABLED_AbruptEndingChild.Run")});
        ASSERT_TRUE(child.waitForStarted());
        // A generous deadline: it turns a hang into a failure, and never fails a slow machine.
        QByteArray said;
        while (!said.contains("edited") && child.waitForReadyRead(60000))
            said += child.readAllStandardOutput();
        ASSERT_TRUE(said.contains("edited")) << said.constData();
    }
    QString dataHome() const { return dir.filePath(QStringLiteral("data")); }
    QString recoveryRoot() const { return dataHome() + QStringLiteral("/Orantium/Orantium/recovery"); }
    QStringList copiesOnDisk() const
    {
        QStringList copies;
        QDirIterator it(recoveryRoot(), {QStringLiteral("*.md")}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            copies.append(it.next());
        return copies;
    }

    QProcess child;
};

TEST_F(AbruptEndingTest, ASignalSoonAfterAnEditKeepsItOnDisk)
{
    struct Case {
        const char* name;
        int signalNumber;
        bool untitled;
    };
    const Case cases[] = {
        {"SIGTERM, a named sermon", SIGTERM, false},
        {"SIGHUP, a named sermon", SIGHUP, false},
        {"SIGINT, a named sermon", SIGINT, false},
        {"SIGTERM, an untitled sermon", SIGTERM, true},
    };
    for (const Case& c : cases) {
        const QString file = c.untitled ? QString() : dir.filePath(QStringLiteral("sermon.md"));
        if (!c.untitled) {
            ASSERT_TRUE(writeFile(file, "# Before\n\nA line.\n"));
        }
        QDir(recoveryRoot()).removeRecursively();
        // The autosave would come long after: only the signal's handling can keep the edit.
        startChild(file, 600000);
        QTest::qWait(50);
        ::kill(static_cast<pid_t>(child.processId()), c.signalNumber);
        ASSERT_TRUE(child.waitForFinished(60000)) << c.name;
        EXPECT_EQ(child.exitStatus(), QProcess::NormalExit) << c.name;
        EXPECT_EQ(child.exitCode(), 0) << c.name;
        if (c.untitled) {
            const QStringList copies = copiesOnDisk();
            ASSERT_EQ(copies.size(), 1) << c.name;
            EXPECT_TRUE(readAll(copies.first()).startsWith("# " + editedTitle.toUtf8())) << c.name;
        } else {
            EXPECT_TRUE(readAll(file).startsWith("# " + editedTitle.toUtf8() + "\n\nA line.")) << c.name;
        }
    }
}

TEST_F(AbruptEndingTest, AnUntitledSermonLostToAKillIsOfferedAndRestored)
{
    startChild(QString(), 20);
    ASSERT_TRUE(QTest::qWaitFor([&] { return copiesOnDisk().size() == 1; }, 60000));
    const QString leftCopy = copiesOnDisk().first();
    ::kill(static_cast<pid_t>(child.processId()), SIGKILL);
    ASSERT_TRUE(child.waitForFinished(60000));

    RecoveryStore store(recoveryRoot());
    manager->setRecoveryStore(&store);
    WindowSupervisor supervisor(manager.get(), preferences.get());
    supervisor.onQuit = [] {};
    supervisor.finishLaunching();
    RecoveryOffer* offer = supervisor.recoveryOffer();
    ASSERT_NE(offer, nullptr);
    ASSERT_EQ(offer->copies().size(), 1);
    EXPECT_EQ(offer->copies().first().title, editedTitle);
    EXPECT_TRUE(offer->isVisibleTo(supervisor.welcomeWindow()));

    QPushButton* restore = nullptr;
    for (QPushButton* button : offer->findChildren<QPushButton*>())
        if (button->text() == QStringLiteral("Restore"))
            restore = button;
    ASSERT_NE(restore, nullptr);
    restore->click();
    ASSERT_EQ(manager->windows().size(), 1);
    DocumentWindow* window = manager->windows().first();
    EXPECT_EQ(window->document()->root()->text(), editedTitle);
    EXPECT_TRUE(window->openDocument()->isUntitled());
    // Still unsaved, so still asked about, and still kept: by this run now, not the old one.
    EXPECT_TRUE(window->openDocument()->isModified());
    EXPECT_FALSE(QFile::exists(leftCopy));
    EXPECT_TRUE(QFile::exists(window->openDocument()->recoveryPath()));
    EXPECT_TRUE(store.leftBehind().isEmpty());

    // Let go, the copy goes too.
    prompts.saveChoices = {SaveChoice::dontSave};
    const QString ownCopy = window->openDocument()->recoveryPath();
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(QFile::exists(ownCopy));
}

} // namespace
