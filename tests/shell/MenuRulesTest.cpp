#include "ShellTestSupport.h"

#include "documents/OpenDocument.h"
#include "shell/AppMenus.h"
#include "shell/ContentView.h"
#include "shell/DocumentManager.h"
#include "shell/DocumentWindow.h"
#include "shell/ShortcutSheet.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "columns/ColumnCanvas.h"
#include "delivery/DeliveryKeys.h"
#include "delivery/DeliveryPreferences.h"
#include "delivery/DeliveryView.h"
#include "editing/DocumentController.h"
#include "editing/NodeCommands.h"
#include "map/FocusWindow.h"
#include "map/MindMapCanvas.h"
#include "map/NodeEditorOverlay.h"

#include <QAction>
#include <QClipboard>
#include <QDialog>
#include <QFile>
#include <QMenu>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSpinBox>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// A document window on a small sermon, shown, with its menus and map as the user meets them.
class MenuRulesTest : public ::testing::Test, protected ShellHarness {
protected:
    void SetUp() override
    {
        startShell();
        path = dir.filePath(QStringLiteral("menus.md"));
        ASSERT_TRUE(writeFile(path, "# Title\n\n## Part\n\nFirst line.\n\nSecond line.\n"));
        window = manager->open(path);
        ASSERT_NE(window, nullptr);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    }
    void TearDown() override { closeAllWindows(); }

    QAction* item(const QString& text) const
    {
        QAction* action = window->menus()->action(text);
        EXPECT_NE(action, nullptr) << text.toStdString();
        return action;
    }
    bool enabled(const QString& text) const
    {
        window->menus()->refresh();
        QAction* action = item(text);
        return action && action->isEnabled();
    }
    DocumentController& controller() const { return *window->canvas()->controller(); }
    SermonNodePtr line(int part, int index) const
    {
        return window->document()->root()->children().at(part)->children().at(index);
    }
    void select(const SermonNodePtr& node) const { controller().setSelectedNodeID(node->id()); }

    DocumentWindow* window = nullptr;
    QString path;
};

TEST_F(MenuRulesTest, NodeItemsFollowTheSelectionAndThePasteboardItemsNeverGoOff)
{
    struct Case {
        const char* selection;
        const char* item;
        bool enabled;
    };
    const Case cases[] = {
        {"root", "Delete", false}, {"root", "Edit", false},      {"root", "Cut", true},
        {"root", "Copy", true},    {"root", "Paste", true},      {"root", "Select All", true},
        {"line", "Delete", true},  {"line", "Edit", true},       {"line", "Join", false},
        {"line", "Promote", true}, {"line", "Fold", false},      {"second", "Demote", true},
        {"part", "Fold", true},    {"part", "Promote", false},   {"none", "Copy Branch", false},
        {"none", "Find...", true}, {"none", "Focus Mode", true}, {"none", "Zoom In", true},
    };
    for (const Case& c : cases) {
        const std::string selection = c.selection;
        if (selection == "root")
            select(window->document()->root());
        else if (selection == "part")
            select(window->document()->root()->children().at(0));
        else if (selection == "line")
            select(line(0, 0));
        else if (selection == "second")
            select(line(0, 1));
        else
            controller().deselectAll();
        EXPECT_EQ(enabled(QString::fromLatin1(c.item)), c.enabled) << c.selection << " / " << c.item;
    }
}

TEST_F(MenuRulesTest, DeliveryModeTakesTheMapRecordsAwayAndLeavingItEndsTheView)
{
    ContentView* content = window->contentView();
    select(line(0, 0));
    item(QStringLiteral("Delivery"))->trigger();
    ASSERT_EQ(content->mode(), AppMode::delivery);
    ASSERT_NE(content->deliveryView(), nullptr);
    for (const char* off : {"Find...", "Zoom In", "Zoom Out", "Actual Size", "Delete", "Demote", "Focus Mode"})
        EXPECT_FALSE(enabled(QString::fromLatin1(off))) << off;
    for (const char* on : {"Mind Map", "Delivery", "File Settings\u2026", "Copy"})
        EXPECT_TRUE(enabled(QString::fromUtf8(on))) << on;

    QPointer<DeliveryView> first = content->deliveryView();
    item(QStringLiteral("Mind Map"))->trigger();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    // The map comes back as freshly shown: the title selected, so Delete is off until a line is.
    EXPECT_EQ(controller().selectedNodeID(), window->document()->root()->id());
    EXPECT_FALSE(enabled(QStringLiteral("Delete")));
    select(line(0, 0));
    EXPECT_TRUE(enabled(QStringLiteral("Delete")));

    item(QStringLiteral("Delivery"))->trigger();
    EXPECT_NE(content->deliveryView(), nullptr);
}

TEST_F(MenuRulesTest, ColumnsEditTheSameDocumentAndTheModeKeysLeaveThem)
{
    ContentView* content = window->contentView();
    ASSERT_TRUE(content->setMode(AppMode::columns));
    ColumnCanvas* columns = content->columnCanvas();
    ASSERT_NE(columns, nullptr);
    const SermonNodePtr target = line(0, 0);
    const QString text = target->text();
    columns->controller()->setSelectedNodeID(target->id());
    // The menu's commands act on the table's selection, through the window's one undo stack.
    ASSERT_TRUE(enabled(QStringLiteral("Delete")));
    item(QStringLiteral("Delete"))->trigger();
    EXPECT_NE(line(0, 0)->text(), text);
    EXPECT_TRUE(window->isWindowModified());
    item(QStringLiteral("Undo"))->trigger();
    EXPECT_EQ(line(0, 0)->text(), text);

    item(QStringLiteral("Mind Map"))->trigger();
    EXPECT_EQ(content->mode(), AppMode::tree);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(content->columnCanvas(), nullptr);
}

TEST_F(MenuRulesTest, TheShortcutSheetIsMadeFromTheKeyTables)
{
    const auto rows = ShortcutSheet::rows(window->menus()->shortcutActions());
    auto has = [&](const QString& group, const QString& action, const QString& key) {
        return std::any_of(rows.begin(), rows.end(), [&](const ShortcutSheet::Row& row) {
            return row.group == group && row.action == action && row.keys.split(QStringLiteral(", ")).contains(key);
        });
    };
    EXPECT_TRUE(has(QStringLiteral("Menus"), QStringLiteral("Save"),
                    QKeySequence(QKeySequence::Save).toString(QKeySequence::NativeText)));
    for (const NodeCommands::MenuItem& entry : NodeCommands::editMenu(NodeActionState{})) {
        if (!entry.isSeparator() && !entry.key.isEmpty()) {
            EXPECT_TRUE(has(QStringLiteral("Mind map"), entry.label,
                            QKeySequence(entry.key.toString()).toString(QKeySequence::NativeText)))
                << entry.label.toStdString();
        }
    }
    for (const DeliveryKeys::Binding& binding : DeliveryKeys::table()) {
        EXPECT_TRUE(has(binding.isPresenterKey ? QStringLiteral("Presenter remotes") : QStringLiteral("Delivery"),
                        binding.description, DeliveryKeys::keyText(binding.key)))
            << binding.description.toStdString();
    }

    item(QStringLiteral("Keyboard Shortcuts"))->trigger();
    auto* sheet = window->findChild<QDialog*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->findChild<QTableWidget*>()->rowCount(), int(rows.size()));
    sheet->close();

    // The delivery view's pulpit actions are in the View menu while it is up.
    QMenu* pulpit = nullptr;
    for (QMenu* menu : window->findChildren<QMenu*>())
        if (menu->title() == QStringLiteral("At the Pulpit"))
            pulpit = menu;
    ASSERT_NE(pulpit, nullptr);
    window->menus()->refresh();
    EXPECT_FALSE(pulpit->isEnabled());
    item(QStringLiteral("Delivery"))->trigger();
    window->menus()->refresh();
    EXPECT_TRUE(pulpit->isEnabled());
    emit pulpit->aboutToShow();
    EXPECT_EQ(pulpit->actions(), window->contentView()->deliveryView()->pulpitActions());
}

TEST_F(MenuRulesTest, MenuEditsAreTheWindowsUndoStepsAndMarkTheDocument)
{
    OpenDocument* open = window->openDocument();
    select(line(0, 1));
    EXPECT_FALSE(enabled(QStringLiteral("Undo")));
    item(QStringLiteral("Demote"))->trigger();
    EXPECT_EQ(line(0, 0)->children().size(), 1u);
    EXPECT_TRUE(open->isModified());
    EXPECT_TRUE(enabled(QStringLiteral("Undo")));

    item(QStringLiteral("Undo"))->trigger();
    EXPECT_EQ(window->document()->root()->children().at(0)->children().size(), 2u);
    EXPECT_FALSE(open->isModified());
    EXPECT_TRUE(enabled(QStringLiteral("Redo")));
}

TEST_F(MenuRulesTest, DeliveryWidensTheWindowForItsColumnAndTheMapGivesTheMinimumBack)
{
    ContentView* content = window->contentView();
    window->resize(900, 700);
    QCoreApplication::processEvents();
    const int mapMinimum = window->minimumWidth();
    const int frame = window->width() - content->width();
    ASSERT_LT(content->width(), 1150);
    ASSERT_TRUE(preferences->delivery()->setTextWidth(1000));

    item(QStringLiteral("Delivery"))->trigger();
    // Widened without a hand on it to the column and its margin, and kept from narrowing below.
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->width() >= 1150 + frame; }, 2000));
    window->resize(900, 700);
    QCoreApplication::processEvents();
    EXPECT_GE(content->width(), 1150);

    const int deliveryWidth = window->width();
    item(QStringLiteral("Mind Map"))->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->minimumWidth() == mapMinimum; }, 2000));
    EXPECT_EQ(window->width(), deliveryWidth);
}

TEST_F(MenuRulesTest, CopyOnTheMapReachesTheSystemClipboardAndPasteComesBack)
{
    QGuiApplication::clipboard()->setText(QStringLiteral("stale"));
    window->canvas()->setFocus();
    select(line(0, 0));
    item(QStringLiteral("Copy"))->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("First line."));

    QGuiApplication::clipboard()->setText(QStringLiteral("From elsewhere"));
    select(line(0, 1));
    item(QStringLiteral("Paste"))->trigger();
    EXPECT_TRUE(window->document()->fileContents().contains("From elsewhere"));
}

TEST_F(MenuRulesTest, SearchUnfoldsForAWhileWithoutMarkingTheDocument)
{
    const QString folded = dir.filePath(QStringLiteral("folded.md"));
    {
        QFile file(folded);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("# T\n\n## Folded\n[//]: # (collapsed)\n\nHidden line.\n");
    }
    DocumentWindow* other = manager->open(folded);
    ASSERT_NE(other, nullptr);
    DocumentController& search = *other->canvas()->controller();
    const SermonNodePtr heading = other->document()->root()->children().at(0);
    ASSERT_TRUE(heading->isCollapsed());

    search.beginSearch();
    search.setSearchQuery(QStringLiteral("Hidden"));
    EXPECT_FALSE(heading->isCollapsed());
    EXPECT_FALSE(other->openDocument()->isModified());
    search.endSearch();
    EXPECT_TRUE(heading->isCollapsed());
    EXPECT_FALSE(other->openDocument()->isModified());
}

TEST_F(MenuRulesTest, ALineTypedOnTheMapIsSavedEvenWhenAnAutosaveFallsWhileTyping)
{
    OpenDocument* open = window->openDocument();
    open->setAutosaveDelay(20);
    MindMapCanvas* canvas = window->canvas();
    canvas->setFocus();
    select(line(0, 1));
    QTest::keyClick(canvas, Qt::Key_Return);
    NodeEditorOverlay* editor = canvas->editorOverlay();
    ASSERT_TRUE(editor->isOpen());
    // The new line's step starts an autosave that lands before the text does.
    ASSERT_TRUE(QTest::qWaitFor([&] { return !open->isAutosavePending() && !open->isModified(); }, 2000));

    QTest::keyClicks(editor->field(), QStringLiteral("Third line."));
    // A click on the empty map ends the edit keeping the text, with no step of its own.
    QTest::mouseClick(canvas, Qt::LeftButton, {}, QPoint(canvas->width() - 10, canvas->height() - 10));
    ASSERT_FALSE(editor->isOpen());

    auto fileText = [&] { return readAll(path); };
    EXPECT_TRUE(QTest::qWaitFor([&] { return fileText().endsWith("Second line.\nThird line.\n"); }, 2000))
        << fileText().toStdString();
    EXPECT_FALSE(open->isModified());
}

TEST_F(MenuRulesTest, ALineStillInTheEditorIsInTheFileAfterSaveDeliveryAndClose)
{
    MindMapCanvas* canvas = window->canvas();
    NodeEditorOverlay* editor = canvas->editorOverlay();
    auto fileText = [&] { return QString::fromUtf8(readAll(path)); };
    auto typeInto = [&](const SermonNodePtr& node, const QString& text) {
        canvas->setFocus();
        select(node);
        QTest::keyClick(canvas, Qt::Key_Return, Qt::NoModifier); // a new line under the selection
        EXPECT_TRUE(editor->isOpen());
        QTest::keyClicks(editor->field(), text);
    };

    // Ctrl+S mid-line writes the line and leaves it open for more.
    typeInto(line(0, 1), QStringLiteral("Saved mid-line"));
    QTest::keySequence(window, QKeySequence::Save);
    EXPECT_TRUE(fileText().contains(QStringLiteral("Saved mid-line"))) << fileText().toStdString();
    EXPECT_TRUE(editor->isOpen());
    // Still a run of new lines: Return opens the next one.
    QTest::keyClick(editor->field(), Qt::Key_Return);
    EXPECT_TRUE(editor->isOpen());
    EXPECT_EQ(line(0, 3)->text(), QString());
    QTest::keyClick(editor->field(), Qt::Key_Escape); // the empty new line goes again

    // Delivery reads the tree: the line is in it, and the page shows it.
    typeInto(line(0, 2), QStringLiteral("Read in delivery"));
    item(QStringLiteral("Delivery"))->trigger();
    ASSERT_NE(window->contentView()->deliveryView(), nullptr);
    EXPECT_EQ(line(0, 3)->text(), QStringLiteral("Read in delivery"));
    item(QStringLiteral("Mind Map"))->trigger();

    // Closing the window keeps what was typed.
    typeInto(line(0, 3), QStringLiteral("Kept on close"));
    window->close();
    EXPECT_TRUE(fileText().contains(QStringLiteral("Kept on close"))) << fileText().toStdString();
}

TEST_F(MenuRulesTest, ZoomKeysTakeEitherPlusAndEitherMinus)
{
    struct Row {
        Qt::Key key;
        Qt::KeyboardModifiers mods;
        double scale;
    };
    const Qt::KeyboardModifiers ctrl = Qt::ControlModifier, keypad = Qt::ControlModifier | Qt::KeypadModifier;
    QApplication::setActiveWindow(window);
    MindMapCanvas* map = window->canvas();
    map->setFocus();
    for (const Row& row : {Row{Qt::Key_Equal, ctrl, 1.2}, Row{Qt::Key_Plus, ctrl, 1.5}, Row{Qt::Key_Plus, keypad, 2.0},
                           Row{Qt::Key_Minus, ctrl, 1.5}, Row{Qt::Key_Minus, keypad, 1.2}}) {
        QTest::keyClick(map, row.key, row.mods);
        EXPECT_TRUE(QTest::qWaitFor([&] { return map->viewport().scale() == row.scale; }, 2000))
            << QKeySequence(QKeyCombination(row.mods, row.key)).toString().toStdString();
    }
}

TEST_F(MenuRulesTest, FocusModeEditsAreTheWindowsStepsAndLeavingGivesTheKeyboardBack)
{
    ContentView* content = window->contentView();
    OpenDocument* open = window->openDocument();
    item(QStringLiteral("Focus Mode"))->trigger();
    ASSERT_TRUE(content->isFocusMode());
    FocusContentView* focus = content->focusView();
    ASSERT_NE(focus, nullptr);
    EXPECT_EQ(focus->geometry(), window->screen()->geometry());
    MindMapCanvas* map = focus->canvas();
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == map; }, 2000));

    // One zoom for both maps.
    QTest::keySequence(focus, QKeySequence(Qt::CTRL | Qt::Key_Equal));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->canvas()->viewport().scale() == 1.2; }, 2000));

    // An edit there is one step of this window's history, and this map shows it.
    map->controller()->setSelectedNodeID(line(0, 0)->id());
    QTest::keyClick(map, Qt::Key_Delete);
    EXPECT_TRUE(open->isModified());
    EXPECT_EQ(window->canvas()->layoutState().cachedLayouts.size(), 3u);
    item(QStringLiteral("Undo"))->trigger();
    EXPECT_EQ(window->canvas()->layoutState().cachedLayouts.size(), 4u);
    EXPECT_FALSE(open->isModified());

    QTest::keySequence(focus, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F));
    EXPECT_FALSE(content->isFocusMode());
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == window->canvas(); }, 2000));

    // Leaving the map, or closing the window, ends it and leaves no window behind.
    auto focusWindows = [] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        int count = 0;
        for (QWidget* w : QApplication::topLevelWidgets())
            count += qobject_cast<FocusContentView*>(w) != nullptr;
        return count;
    };
    EXPECT_EQ(focusWindows(), 0);
    item(QStringLiteral("Focus Mode"))->trigger();
    item(QStringLiteral("Delivery"))->trigger();
    EXPECT_FALSE(content->isFocusMode());
    EXPECT_EQ(focusWindows(), 0);
    item(QStringLiteral("Mind Map"))->trigger();
    item(QStringLiteral("Focus Mode"))->trigger();
    ASSERT_EQ(focusWindows(), 1);
    delete window;
    window = nullptr;
    EXPECT_EQ(focusWindows(), 0);
}

TEST_F(MenuRulesTest, ThePasteboardItemsServeASpinBoxToo)
{
    auto* spin = new QSpinBox(window);
    spin->setRange(0, 999);
    spin->setValue(42);
    spin->show();
    spin->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == spin; }, 1000));
    item(QStringLiteral("Select All"))->trigger();
    item(QStringLiteral("Copy"))->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("42"));
    QGuiApplication::clipboard()->setText(QStringLiteral("7"));
    item(QStringLiteral("Select All"))->trigger();
    item(QStringLiteral("Paste"))->trigger();
    EXPECT_EQ(spin->value(), 7);
}

} // namespace
