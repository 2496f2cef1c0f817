// The map's right-click menu and its search bar.

#include "map/MapTestSupport.h"

#include "map/MapContextMenu.h"
#include "map/MindMapCanvas.h"
#include "map/SearchBarOverlay.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

struct WithApplication {
    WithApplication() { ensureApplication(); }
};

SermonNodePtr sermon()
{
    auto root = SermonNode::make(QStringLiteral("Romans Eight"), 0);
    auto first = root->addChild(QStringLiteral("No condemnation"));
    first->addChild(QStringLiteral("Read Romans 8:1"));
    first->setCollapsed(true);
    root->addChild(QStringLiteral("Nothing can separate us"));
    return root;
}

class MapKeysAndMenusTest : public ::testing::Test, private WithApplication {
protected:
    void SetUp() override
    {
        canvas.resize(900, 600);
        canvas.show();
        QApplication::setActiveWindow(&canvas);
        canvas.setFocus();
        canvas.contextMenuPresenter = [this](QMenu& menu, QPoint) {
            ++menusShown;
            titles.clear();
            for (QAction* action : menu.actions())
                titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
            if (runTitle.isEmpty())
                return;
            for (QAction* action : menu.actions())
                if (action->text() == runTitle)
                    action->trigger();
        };
    }
    DocumentController& controller() { return *canvas.controller(); }
    SermonNodePtr child(int i) { return document.root()->children().at(size_t(i)); }
    void rightClick(const NodeID& id)
    {
        const NodeLayout& l = *canvas.layoutState().layout(id);
        const QPointF at = l.frame().center() * canvas.viewport().scale() + canvas.viewport().panOffset();
        QTest::mouseClick(&canvas, Qt::RightButton, Qt::NoModifier, at.toPoint());
    }

    SermonDocument document{sermon()};
    MindMapCanvas canvas{&document};
    int menusShown = 0;
    QStringList titles;
    QString runTitle;
};

TEST_F(MapKeysAndMenusTest, TheContextMenuShowsTheEntriesForTheNodeClicked)
{
    controller().startSession(child(1)->id(), false);
    controller().setEditingText(QStringLiteral("Nothing can separate us."));
    rightClick(child(0)->id());
    ASSERT_EQ(menusShown, 1);
    // The open edit was committed, and the node clicked is selected.
    EXPECT_EQ(child(1)->text(), QStringLiteral("Nothing can separate us."));
    EXPECT_EQ(controller().selectedNodeID(), child(0)->id());
    EXPECT_TRUE(titles.contains(QStringLiteral("Unfold")));
    EXPECT_FALSE(titles.contains(QStringLiteral("Fold")));
    EXPECT_FALSE(titles.contains(QStringLiteral("Promote"))); // a child of the title
    EXPECT_TRUE(titles.contains(QStringLiteral("Demote")));
    EXPECT_TRUE(titles.contains(QStringLiteral("Mark")));
    EXPECT_EQ(titles.front(), QStringLiteral("Cut"));
    EXPECT_TRUE(canvas.hasFocus());
}

TEST_F(MapKeysAndMenusTest, AMenuEntryRunsItsCommandAndTheTitleGetsNoMenu)
{
    runTitle = QStringLiteral("Unfold");
    rightClick(child(0)->id());
    EXPECT_FALSE(child(0)->isCollapsed());
    rightClick(document.root()->id());
    EXPECT_EQ(menusShown, 1);
}

TEST_F(MapKeysAndMenusTest, TheMarkSubmenuSetsAMarker)
{
    QMenu menu;
    controller().setSelectedNodeID(child(1)->id());
    MapContextMenu::build(menu, canvas.nodeActions());
    QMenu* marks = nullptr;
    for (QAction* action : menu.actions())
        if (action->text() == QStringLiteral("Mark"))
            marks = action->menu();
    ASSERT_TRUE(marks);
    ASSERT_EQ(marks->actions().size(), 11); // nine markers, a separator, the removal

    // Each marker shows its colour in the menu. Black and white stand too close to a menu's
    // own text and face to tell apart there; the map's drawing checks those.
    marks->adjustSize();
    const QImage picture = marks->grab().toImage();
    const QColor face = marks->palette().color(QPalette::Window);
    const auto colours = markerColours();
    for (size_t i = 0; i < 7; ++i) {
        QAction* action = marks->actions().at(qsizetype(i));
        ASSERT_EQ(action->text(), colours[i].marker);
        const QRect entry = marks->actionGeometry(action);
        const QColor c = meanCoverColour(picture, entry.adjusted(0, 0, -entry.width() / 2, 0), face);
        EXPECT_TRUE(c.isValid() && colours[i].matches(c)) << colours[i].name << ": " << c.name().toStdString();
    }

    marks->actions().at(3)->trigger();
    EXPECT_TRUE(child(1)->text().startsWith(QStringLiteral("\U0001F7E2")));
}

TEST_F(MapKeysAndMenusTest, CtrlFOpensSearchWhichUnfoldsMatchesAndFoldsThemBack)
{
    QTest::keyClick(&canvas, Qt::Key_F, Qt::ControlModifier);
    SearchBarOverlay& bar = *canvas.searchBar();
    ASSERT_TRUE(bar.isVisible());
    EXPECT_TRUE(bar.field()->hasFocus());
    EXPECT_EQ(bar.field()->placeholderText(), QStringLiteral("Search"));
    EXPECT_EQ(bar.resultLabel()->text(), QStringLiteral("0 results"));

    QTest::keyClicks(bar.field(), QStringLiteral("ROM"));
    EXPECT_EQ(bar.resultLabel()->text(), QStringLiteral("1 of 2"));
    EXPECT_FALSE(child(0)->isCollapsed()); // the match inside opened its branch
    EXPECT_TRUE(canvas.drawState().isSearching);

    // While the field has the keyboard the map takes no keys: Return steps to the next match.
    const auto selected = controller().selectedNodeID();
    QTest::keyClick(bar.field(), Qt::Key_Return);
    EXPECT_EQ(bar.resultLabel()->text(), QStringLiteral("2 of 2"));
    QTest::keyClick(bar.field(), Qt::Key_Return);
    EXPECT_EQ(bar.resultLabel()->text(), QStringLiteral("1 of 2"));
    EXPECT_EQ(controller().selectedNodeID(), selected);
    EXPECT_EQ(document.root()->children().size(), 2u);

    QTest::keyClick(bar.field(), Qt::Key_Escape);
    EXPECT_FALSE(bar.isVisible());
    EXPECT_FALSE(controller().isSearching());
    EXPECT_TRUE(child(0)->isCollapsed());
    EXPECT_TRUE(canvas.hasFocus());
}

TEST_F(MapKeysAndMenusTest, TheCurrentMatchIsRevealedClearOfTheSearchBar)
{
    canvas.openSearch();
    SearchBarOverlay& bar = *canvas.searchBar();
    const NodeLayout line = *canvas.layoutState().layout(child(1)->id());
    // Its top a little below the view's top edge: in view but for the bar.
    canvas.viewport().setPanOffset(QPointF(0, 20 - line.origin.y()));
    bar.field()->setText(QStringLiteral("separate")); // at once: each letter would reveal another match
    ASSERT_TRUE(QTest::qWaitFor([&] { return !canvas.viewport().isAnimating(); }, 5000));
    const double top = line.origin.y() * canvas.viewport().scale() + canvas.viewport().panOffset().y();
    EXPECT_GE(top, bar.geometry().bottom());
    EXPECT_LE(line.maxY() * canvas.viewport().scale() + canvas.viewport().panOffset().y(), canvas.height());
}

TEST_F(MapKeysAndMenusTest, SearchBarSymbolsFollowASwitchOfTheme)
{
    // Whether a symbol is drawn in a colour: its most opaque pixel has it, give or take smoothing.
    auto drawnIn = [](const QImage& image, const QColor& colour) {
        QColor best(Qt::transparent);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (const QColor c = image.pixelColor(x, y); c.alpha() > best.alpha())
                    best = c;
        return best.alpha() > 128 && std::abs(best.red() - colour.red()) < 24
            && std::abs(best.green() - colour.green()) < 24 && std::abs(best.blue() - colour.blue()) < 24;
    };
    // The application's palette reaches its windows by posted events.
    auto setApplicationPalette = [](const QPalette& palette) {
        QApplication::setPalette(palette);
        QCoreApplication::sendPostedEvents();
    };
    struct Restore {
        QPalette palette = QApplication::palette();
        ~Restore()
        {
            QApplication::setPalette(palette);
            QCoreApplication::sendPostedEvents();
        }
    } restore;

    canvas.openSearch();
    SearchBarOverlay& bar = *canvas.searchBar();
    for (bool dark : {false, true, false}) {
        QPalette palette;
        palette.setColor(QPalette::Window, dark ? QColor(30, 30, 30) : QColor(240, 240, 240));
        palette.setColor(QPalette::WindowText, dark ? QColor(235, 235, 235) : QColor(20, 20, 20));
        palette.setColor(QPalette::PlaceholderText, dark ? QColor(150, 150, 150) : QColor(110, 110, 110));
        setApplicationPalette(palette);
        for (QToolButton* button : {bar.previousButton(), bar.nextButton(), bar.closeButton()})
            EXPECT_TRUE(drawnIn(button->icon().pixmap(QSize(14, 14)).toImage(), palette.color(QPalette::WindowText)))
                << button->accessibleName().toStdString() << " dark " << dark;
        EXPECT_TRUE(drawnIn(bar.magnifyingGlass()->pixmap().toImage(), palette.color(QPalette::PlaceholderText)))
            << "dark " << dark;
    }
}

TEST_F(MapKeysAndMenusTest, KeysOnTheMapWorkTheSelectionAndTheTree)
{
    QTest::keyClick(&canvas, Qt::Key_Right); // title to its first child
    EXPECT_EQ(controller().selectedNodeID(), child(0)->id());
    QTest::keyClick(&canvas, Qt::Key_Down, Qt::AltModifier); // move it down
    EXPECT_EQ(child(1)->text(), QStringLiteral("No condemnation"));
    QTest::keyClick(&canvas, Qt::Key_Exclam, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(child(1)->text().startsWith(QStringLiteral("\U0001F534")));
    QTest::keyClick(&canvas, Qt::Key_Escape);
    EXPECT_FALSE(controller().selectedNodeID());
    QTest::keyClick(&canvas, Qt::Key_Up); // with nothing selected an arrow selects the title
    EXPECT_EQ(controller().selectedNodeID(), document.root()->id());
}

TEST_F(MapKeysAndMenusTest, TabOnAQuoteLeavesTheTreeAndTheKeysAlone)
{
    child(1)->setQuote(true);
    canvas.onTreeMutated();
    controller().setSelectedNodeID(child(1)->id());
    const size_t steps = document.undoStack().size();
    QTest::keyClick(&canvas, Qt::Key_Tab);
    EXPECT_FALSE(controller().editingNodeID());
    EXPECT_EQ(document.undoStack().size(), steps); // no step that changes nothing
    // The map still has the keyboard.
    QTest::keyClick(&canvas, Qt::Key_Up);
    EXPECT_EQ(controller().selectedNodeID(), child(0)->id());
}

} // namespace
