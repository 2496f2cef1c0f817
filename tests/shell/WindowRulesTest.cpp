#include "ShellTestSupport.h"

#include "documents/OpenDocument.h"
#include "shell/AppMenus.h"
#include "shell/ContentView.h"
#include "shell/DialogPrompts.h"
#include "shell/DocumentManager.h"
#include "shell/DocumentWindow.h"
#include "shell/FileSettingsSheet.h"
#include "shell/NewSermonSheet.h"
#include "shell/WelcomeView.h"
#include "shell/WindowSupervisor.h"

#include "core/SermonDocument.h"
#include "map/MindMapCanvas.h"

#include <QAction>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>
#include <optional>

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

TEST_F(WindowRulesTest, WelcomeWithADocumentOpenGivesTheKeyboardBackAndClosingItJustCloses)
{
    supervisor->finishLaunching();
    DocumentWindow* window = manager->open(path);
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    // Welcome goes as soon as it comes, and the document's keys work without a click.
    window->menus()->action(QStringLiteral("Welcome to Orantium"))->trigger();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !welcomeVisible() && QApplication::focusWidget() == window->canvas(); }, 2000));
    EXPECT_EQ(QApplication::activeWindow(), window);
    QTest::keyClick(window->canvas(), Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(window->contentView()->mode(), AppMode::delivery);

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

TEST_F(WindowRulesTest, TheKeyboardServesAboutTheRecentListAndTheWindowMenu)
{
    supervisor->finishLaunching();

    // The row with the keyboard shows it; Down walks the list and Return opens the row.
    const QString other = dir.filePath(QStringLiteral("b.md"));
    ASSERT_TRUE(writeFile(other, "# B\n\nLine.\n"));
    preferences->noteRecentFile(path);
    preferences->noteRecentFile(other);
    WelcomeView* view = supervisor->welcomeView();
    view->refreshRecents();
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->recentButtons().size() == 2; }, 10000));
    ASSERT_TRUE(QTest::qWaitForWindowActive(supervisor->welcomeWindow()));
    QPushButton* first = view->recentButtons().at(0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return first->isVisible(); }, 2000)); // rows show a turn later
    const QImage plain = first->grab().toImage();
    first->setFocus(Qt::TabFocusReason);
    EXPECT_NE(first->grab().toImage(), plain);
    QString opened;
    view->onOpenRecent = [&](const QString& chosen) { opened = chosen; };
    QTest::keyClick(first, Qt::Key_Down);
    QPushButton* second = view->recentButtons().at(1);
    ASSERT_TRUE(second->hasFocus());
    QTest::keyClick(second, Qt::Key_Return);
    EXPECT_EQ(opened, path); // the most recent, "b.md", stands first

    // The Window menu lists the open sermons, marks this one, and raises the one chosen.
    DocumentWindow* a = manager->open(path);
    DocumentWindow* b = manager->open(other);
    ASSERT_TRUE(QTest::qWaitForWindowActive(b));
    QMenu* menu = nullptr;
    for (QMenu* m : b->findChildren<QMenu*>())
        if (m->title() == QStringLiteral("&Window"))
            menu = m;
    ASSERT_TRUE(menu);
    emit menu->aboutToShow();
    QStringList listed;
    QAction* toA = nullptr;
    for (QAction* action : menu->actions()) {
        if (!action->isCheckable())
            continue;
        listed.append(action->text() + (action->isChecked() ? QStringLiteral(" *") : QString()));
        if (action->text() == QStringLiteral("a.md"))
            toA = action;
    }
    EXPECT_EQ(listed, QStringList({QStringLiteral("a.md"), QStringLiteral("b.md *")}));
    ASSERT_TRUE(toA);
    toA->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == a; }, 2000));

    a->menus()->action(QStringLiteral("About Orantium"))->trigger();
    QWidget* about = supervisor->aboutWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(about));
    QTest::keyClick(about, Qt::Key_Escape);
    EXPECT_FALSE(about->isVisible());
}

// Titles, places and file names come from files: whatever markup they hold is shown as it is
// written and never obeyed, in labels, tooltips, menus, window titles and message boxes alike.
TEST_F(WindowRulesTest, TextFromAFileIsShownAsWrittenNeverAsMarkup)
{
    const QByteArray markup = "<font size=7 color=red>Big</font><img src=/usr/share/pixmaps/debian-logo.png>";
    const QString name = QStringLiteral("<b>[*]Bold&.md");
    const QString marked = dir.filePath(name);
    ASSERT_TRUE(writeFile(marked,
                          "---\noccasions:\n  - date: 2026-01-04\n    place: \"" + markup + "\"\n---\n# " + markup
                              + "\n\nLine.\n"));
    preferences->noteRecentFile(marked);
    supervisor->finishLaunching();
    QWidget* welcome = supervisor->welcomeWindow();
    auto markedLabels = [](QWidget* root) {
        QList<QLabel*> found;
        for (QLabel* label : root->findChildren<QLabel*>())
            if (label->text().contains(QStringLiteral("<font")))
                found.append(label);
        return found;
    };
    // The recent list is read in the background; the deadline only turns a hang into a failure.
    QElapsedTimer clock;
    clock.start();
    while (markedLabels(welcome).size() < 2 && clock.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);

    DocumentWindow* window = manager->open(marked);
    ASSERT_TRUE(window);
    window->showFileSettings();
    auto* sheet = window->findChild<FileSettingsSheet*>();
    ASSERT_TRUE(sheet);

    const struct {
        const char* where;
        QWidget* root;
        int labels; // title and place in the welcome window, the place in the sheet
    } labelCases[] = {{"welcome window", welcome, 2}, {"file settings", sheet, 1}};
    for (const auto& c : labelCases) {
        const QList<QLabel*> labels = markedLabels(c.root);
        EXPECT_EQ(labels.size(), c.labels) << c.where;
        for (QLabel* label : labels)
            EXPECT_EQ(label->textFormat(), Qt::PlainText) << c.where << ": " << label->text().toStdString();
    }

    QString rowTip;
    for (QPushButton* button : welcome->findChildren<QPushButton*>())
        if (!button->toolTip().isEmpty())
            rowTip = button->toolTip();
    QAction* recentItem = nullptr;
    for (QMenu* menu : window->findChildren<QMenu*>()) {
        if (menu->title() != QStringLiteral("Open Recent"))
            continue;
        emit menu->aboutToShow();
        recentItem = menu->actions().value(0);
    }
    ASSERT_TRUE(recentItem);
    EXPECT_EQ(recentItem->text(), QStringLiteral("<b>[*]Bold&&.md")); // "&" shown, not a shortcut
    // Tooltips are taken as rich text when they look like it: they hold the markup escaped.
    for (const QString& tip : {rowTip, recentItem->toolTip()}) {
        EXPECT_TRUE(tip.contains(QStringLiteral("&lt;b&gt;"))) << tip.toStdString();
        EXPECT_FALSE(tip.contains(QStringLiteral("<b>"))) << tip.toStdString();
    }
    // "[*]" in a name is text, not the place of the modified marker.
    ASSERT_TRUE(window->windowHandle());
    EXPECT_EQ(window->windowHandle()->title(), name);

    DialogPrompts real;
    const struct {
        const char* what;
        std::function<void()> ask;
    } boxCases[] = {
        {"save question", [&] { real.askToSaveChanges(nullptr, name); }},
        {"error", [&] { real.showError(nullptr, QStringLiteral("\u201c%1\u201d couldn\u2019t be read.").arg(name)); }},
        {"changed on disk", [&] { real.askAboutChangedFile(nullptr, name); }},
    };
    for (const auto& c : boxCases) {
        std::optional<Qt::TextFormat> format;
        QString text;
        QTimer::singleShot(0, [&] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                format = box->textFormat();
                text = box->text();
                box->reject();
            }
        });
        c.ask();
        EXPECT_TRUE(text.contains(name)) << c.what;
        EXPECT_EQ(format, Qt::PlainText) << c.what;
    }
}

} // namespace
