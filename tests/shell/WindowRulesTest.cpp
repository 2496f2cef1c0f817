#include "ShellTestSupport.h"

#include "shell/DocumentManager.h"
#include "shell/DocumentWindow.h"
#include "shell/NewSermonSheet.h"
#include "shell/OpenDocument.h"
#include "shell/WindowSupervisor.h"

#include "core/SermonDocument.h"

#include <QFile>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class WindowRulesTest : public ::testing::Test, protected ShellHarness {
protected:
    void SetUp() override
    {
        startShell();
        supervisor = std::make_unique<WindowSupervisor>(manager.get(), preferences.get());
        supervisor->onQuit = [this] { ++quits; };
        path = dir.filePath(QStringLiteral("a.md"));
        ASSERT_TRUE(writeFile(path, "# A\n\nLine.\n"));
    }
    void TearDown() override
    {
        closeAllWindows();
        supervisor.reset();
    }
    // The supervisor answers a close one turn later.
    static void settle()
    {
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    bool welcomeVisible() const { return supervisor->welcomeWindow() && supervisor->welcomeWindow()->isVisible(); }

    std::unique_ptr<WindowSupervisor> supervisor;
    QString path;
    int quits = 0;
};

TEST_F(WindowRulesTest, NothingShowsWhileLaunchingAndWelcomeAppearsAfterIfNothingIsOpen)
{
    supervisor->update();
    EXPECT_FALSE(welcomeVisible());
    supervisor->finishLaunching();
    EXPECT_TRUE(welcomeVisible());
    EXPECT_EQ(supervisor->welcomeWindow()->objectName(), QStringLiteral("welcome"));
    EXPECT_TRUE(manager->windows().isEmpty()); // never an untitled document
}

TEST_F(WindowRulesTest, ARestoredDocumentNeverShowsTheWelcomeWindow)
{
    manager->open(path);
    supervisor->finishLaunching();
    EXPECT_FALSE(welcomeVisible());
}

TEST_F(WindowRulesTest, ClosingTheLastDocumentBringsWelcomeBackAndClosingWelcomeAloneQuits)
{
    supervisor->finishLaunching();
    DocumentWindow* window = manager->open(path);
    supervisor->update();
    EXPECT_FALSE(welcomeVisible());
    EXPECT_EQ(supervisor->visibleWindowCount(), 1);

    window->close();
    settle();
    EXPECT_TRUE(welcomeVisible());
    EXPECT_EQ(quits, 0);

    supervisor->welcomeWindow()->close();
    settle();
    EXPECT_EQ(quits, 1);
}

TEST_F(WindowRulesTest, ClosingTheLastDocumentThroughAQuestionBringsWelcomeBack)
{
    // The question's own event loop runs while the window is still on screen.
    prompts.spinsEventLoop = true;
    struct Case {
        const char* name;
        SaveChoice choice;
        bool givesPath;
    };
    const Case cases[] = {
        {"don't save", SaveChoice::dontSave, false},
        {"save to a new file", SaveChoice::save, true},
    };
    supervisor->finishLaunching();
    for (const Case& c : cases) {
        DocumentWindow* window = manager->newDocument();
        window->document()->captureUndo(std::nullopt, window->openDocument()->undoManager());
        settle();
        EXPECT_FALSE(welcomeVisible()) << c.name;
        prompts.saveChoices = {c.choice};
        if (c.givesPath)
            prompts.savePaths = {dir.filePath(QStringLiteral("%1.md").arg(c.name))};
        EXPECT_TRUE(window->close()) << c.name;
        settle();
        EXPECT_TRUE(welcomeVisible()) << c.name;
    }
    EXPECT_EQ(quits, 0);
}

TEST_F(WindowRulesTest, ClosingWelcomeWithADocumentOpenJustClosesIt)
{
    supervisor->finishLaunching();
    manager->open(path);
    supervisor->showWelcome();
    supervisor->welcomeWindow()->close();
    settle();
    EXPECT_EQ(quits, 0);
    EXPECT_EQ(manager->windows().size(), 1);
}

TEST_F(WindowRulesTest, TheNewSermonWindowCountsAndCancellingItBringsWelcomeBack)
{
    supervisor->finishLaunching();
    supervisor->showNewSermon();
    supervisor->update();
    EXPECT_FALSE(welcomeVisible());
    EXPECT_EQ(supervisor->visibleWindowCount(), 1);
    // Closing welcome while the sheet is open doesn't quit.
    supervisor->showWelcome();
    supervisor->welcomeWindow()->close();
    settle();
    EXPECT_EQ(quits, 0);

    supervisor->newSermonSheet()->cancel();
    settle();
    EXPECT_TRUE(welcomeVisible());
}

TEST_F(WindowRulesTest, CreatingASermonOpensItsWindowAndHidesTheOthers)
{
    supervisor->finishLaunching();
    supervisor->showNewSermon();
    supervisor->newSermonSheet()->titleField()->setText(QStringLiteral("  Advent  "));
    supervisor->newSermonSheet()->create();
    settle();
    ASSERT_EQ(manager->windows().size(), 1);
    DocumentWindow* window = manager->windows().first();
    EXPECT_EQ(window->document()->root()->text(), QStringLiteral("Advent"));
    EXPECT_TRUE(window->windowTitle().startsWith(QStringLiteral("Advent[*]")));
    EXPECT_FALSE(supervisor->newSermonWindow()->isVisible());
    EXPECT_FALSE(welcomeVisible());
}

TEST_F(WindowRulesTest, ACancelledCloseLeavesEverythingAsItWas)
{
    supervisor->finishLaunching();
    DocumentWindow* window = manager->newDocument();
    window->document()->captureUndo(std::nullopt, window->openDocument()->undoManager());
    prompts.saveChoices = {SaveChoice::cancel};
    EXPECT_FALSE(window->close());
    settle();
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(welcomeVisible());
}

} // namespace
