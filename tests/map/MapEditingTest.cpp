// Typing an outline into the map from the keyboard, and the in-place editor that makes it possible.

#include "map/MapTestSupport.h"

#include "map/MindMapCanvas.h"
#include "map/NodeEditorOverlay.h"
#include "map/TreeLayout.h"

#include "look/EmojiText.h"

#include "core/SermonDocument.h"
#include "editing/DocumentController.h"
#include "editing/TextPieces.h"

#include <QClipboard>
#include <QFontMetricsF>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

namespace {

struct WithApplication {
    WithApplication() { ensureApplication(); }
};

class MapEditingTest : public ::testing::Test, private WithApplication {
protected:
    void SetUp() override
    {
        canvas.resize(900, 700);
        canvas.show();
        QApplication::setActiveWindow(&canvas);
        canvas.setFocus();
    }

    DocumentController& controller() { return *canvas.controller(); }
    const SermonNodePtr& root() { return document.root(); }
    NodeEditorOverlay& editor() { return *canvas.editorOverlay(); }
    QPlainTextEdit& field() { return *editor().field(); }

    // Keys go where the keyboard is: the editor's field while an edit is open, else the map.
    QWidget* keyboard() { return editor().isOpen() ? static_cast<QWidget*>(&field()) : &canvas; }
    void key(Qt::Key k, Qt::KeyboardModifiers mods = Qt::NoModifier) { QTest::keyClick(keyboard(), k, mods); }
    void type(const QString& text) { QTest::keyClicks(keyboard(), text); }

    QStringList texts(const SermonNodePtr& node)
    {
        QStringList out;
        for (const auto& child : node->children())
            out << child->text();
        return out;
    }

    SermonDocument document{SermonNode::make(QStringLiteral("Title"), 0)};
    MindMapCanvas canvas{&document};
};

TEST_F(MapEditingTest, TheTitleIsSelectedWhenTheMapAppears)
{
    EXPECT_EQ(controller().selectedNodeID(), root()->id());
    EXPECT_TRUE(canvas.hasFocus());
}

TEST_F(MapEditingTest, AnOutlineIsTypedWithReturnTabAndShiftTab)
{
    key(Qt::Key_Tab); // a first child of the title
    ASSERT_TRUE(editor().isOpen());
    type(QStringLiteral("Opening"));
    key(Qt::Key_Tab);
    type(QStringLiteral("A question"));
    key(Qt::Key_Return);
    type(QStringLiteral("A story"));
    key(Qt::Key_Return);
    key(Qt::Key_Backtab, Qt::ShiftModifier); // the empty line goes; its parent opens
    ASSERT_TRUE(editor().isOpen());
    EXPECT_EQ(controller().editingNodeID(), root()->children().at(0)->id());
    key(Qt::Key_Return); // Return on an existing line only ends the edit
    EXPECT_FALSE(editor().isOpen());
    EXPECT_TRUE(canvas.hasFocus());
    key(Qt::Key_Return); // from the map: a new line below "Opening"
    type(QStringLiteral("Main point"));
    key(Qt::Key_Return);
    key(Qt::Key_Escape); // a new empty line is removed

    ASSERT_EQ(texts(root()), (QStringList{"Opening", "Main point"}));
    EXPECT_EQ(texts(root()->children()[0]), (QStringList{"A question", "A story"}));
    EXPECT_FALSE(editor().isOpen());
    EXPECT_EQ(canvas.layoutState().cachedLayouts.size(), 5u);
}

TEST_F(MapEditingTest, ShiftReturnAddsASecondLineAndTheFieldGrows)
{
    key(Qt::Key_Tab);
    type(QStringLiteral("First"));
    const QSizeF oneLine = editor().currentEditorSize();
    key(Qt::Key_Return, Qt::ShiftModifier);
    type(QStringLiteral("second line that is longer"));
    const QSizeF twoLines = editor().currentEditorSize();
    const QFontMetricsF metrics(TreeLayout::nodeFont(1));
    EXPECT_NEAR(twoLines.height() - oneLine.height(),
                metrics.ascent() + std::abs(metrics.descent()) + metrics.leading(), 0.01);
    EXPECT_GT(twoLines.width(), oneLine.width());
    // The node keeps its width until the commit.
    const NodeID id = *controller().editingNodeID();
    const double before = canvas.layoutState().layout(id)->size.width();
    key(Qt::Key_Return);
    EXPECT_EQ(root()->children().at(0)->text(), QStringLiteral("First\u2028second line that is longer"));
    EXPECT_GT(canvas.layoutState().layout(id)->size.width(), before);
}

// Whatever an edit does to the text, the field is then the size of the text measured whole, its
// first glyph stands at its top left, and each line's end stands where its glyphs end.
TEST_F(MapEditingTest, TheFieldFitsItsTextAfterEveryEdit)
{
    QString words;
    while (words.size() < 4000)
        words += QStringLiteral("grace and peace to you ");
    auto toPosition = [&](int position) {
        QTextCursor cursor = field().textCursor();
        cursor.setPosition(position);
        field().setTextCursor(cursor);
    };
    auto paste = [&](const QString& text) {
        QApplication::clipboard()->setText(text);
        key(Qt::Key_V, Qt::ControlModifier);
    };
    auto typeEmoji = [&] {
        QTest::sendKeyEvent(QTest::Click, &field(), Qt::Key_unknown, QStringLiteral("\U0001F64F"), Qt::NoModifier);
    };
    struct Case {
        const char* what;
        QString start; // in the model's form
        std::function<void()> edit;
    };
    const Case cases[] = {
        {"a character at the end", QStringLiteral("Grace"), [&] { type(QStringLiteral("s")); }},
        {"a second, wider line", QStringLiteral("Grace"),
         [&] {
             key(Qt::Key_Return, Qt::ShiftModifier);
             type(QStringLiteral("and peace to all of you"));
         }},
        {"the widest line's last character deleted", QStringLiteral("short\u2028the widest line"),
         [&] { key(Qt::Key_Backspace); }},
        {"the widest line deleted", QStringLiteral("short\u2028the widest line"),
         [&] {
             key(Qt::Key_Home, Qt::ShiftModifier);
             key(Qt::Key_Backspace);
             key(Qt::Key_Backspace);
         }},
        {"the widest of three lines deleted", QStringLiteral("short\u2028the widest line\u2028end"),
         [&] {
             toPosition(int(QStringLiteral("short\u2028the widest line").size()));
             key(Qt::Key_Home, Qt::ShiftModifier);
             key(Qt::Key_Backspace);
             key(Qt::Key_Backspace);
         }},
        {"a pasted text of three lines", QStringLiteral("Grace"),
         [&] { paste(QStringLiteral(" and\npeace to all\nof you who are loved")); }},
        {"a soft line break in the stored text", QStringLiteral("one\u2028two and three"),
         [&] { type(QStringLiteral("!")); }},
        {"an emoji", QStringLiteral("Pray"), typeEmoji},
        {"a very long line typed at its end", words,
         [&] {
             for (const QString& more : {QStringLiteral("x"), QStringLiteral(" mercy"), QStringLiteral("Amen.")})
                 type(more);
         }},
        {"a very long line typed in its middle and cut short", words,
         [&] {
             toPosition(2000);
             type(QStringLiteral(" new words "));
             toPosition(1000);
             for (int i = 0; i < 3; ++i)
                 key(Qt::Key_Delete);
             key(Qt::Key_End);
             key(Qt::Key_Home, Qt::ShiftModifier);
             paste(QStringLiteral("and a short end"));
         }},
        {"an undone key", QStringLiteral("Grace\u2028peace"),
         [&] {
             type(QStringLiteral(" to all of you"));
             key(Qt::Key_Home);
             type(QStringLiteral("And "));
             key(Qt::Key_Z, Qt::ControlModifier);
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        document.setRoot(SermonNode::make(QStringLiteral("Title"), 0));
        root()->addChild(c.start);
        canvas.onTreeMutated();
        controller().startSession(root()->children().at(0)->id(), false);
        ASSERT_TRUE(editor().isOpen());
        EXPECT_EQ(field().cursorRect(QTextCursor(field().document())).topLeft(), QPoint(0, 0)) << "opened";
        const QSizeF before = editor().currentEditorSize();
        c.edit();
        ASSERT_NE(editor().text(), c.start);
        EXPECT_EQ(controller().editingText(), editor().text());

        const QSizeF whole = NodeEditorOverlay::editorSize(editor().text(), 1);
        // A very long line is measured in pieces, which may add up to a hair more or less.
        const double tolerance = editor().text().size() > 1000 ? 1.0 : 1e-6;
        EXPECT_NEAR(editor().currentEditorSize().width(), whole.width(), tolerance) << before.width();
        EXPECT_NEAR(editor().currentEditorSize().height(), whole.height(), 1e-6) << before.height();
        EXPECT_EQ(field().width(), int(std::ceil(editor().currentEditorSize().width())));
        EXPECT_EQ(field().cursorRect(QTextCursor(field().document())).topLeft(), QPoint(0, 0));
        // Nor can it be scrolled sideways, by a drag or a wheel, since it is as wide as its text.
        EXPECT_EQ(field().horizontalScrollBar()->maximum(), 0);
        const QFontMetricsF metrics(field().font());
        qsizetype lineEnd = 0;
        for (const QString& line : editor().text().split(TextPieces::softLineBreak)) {
            lineEnd += line.size();
            QTextCursor end(field().document());
            end.setPosition(int(lineEnd));
            EXPECT_NEAR(field().cursorRect(end).x(), EmojiText::horizontalAdvance(metrics, field().font(), line), 1.5)
                << line.right(20).toStdString();
            ++lineEnd;
        }
        key(Qt::Key_Escape);
    }
}

TEST_F(MapEditingTest, CtrlReturnOnTheTitleOnlyCommits)
{
    key(Qt::Key_Space);
    ASSERT_EQ(controller().editingNodeID(), root()->id());
    type(QStringLiteral("!"));
    key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(root()->text(), QStringLiteral("Title!"));
    EXPECT_TRUE(root()->children().empty());
    EXPECT_FALSE(editor().isOpen());
}

TEST_F(MapEditingTest, AltReturnSplitsAtTheCursorOrTheSelectionsStart)
{
    struct Case {
        const char* what;
        int left; // cursor steps back from the end
        int selectRight; // then selected with Shift+Right
    };
    // "Bread broken": the split lands before "broken" in every case.
    const Case cases[] = {{"cursor", 7, 0}, {"selection made to the right", 7, 3}, {"selection to the end", 7, 7}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        document.setRoot(SermonNode::make(QStringLiteral("Title"), 0));
        controller().setSelectedNodeID(root()->id());
        canvas.focusCanvas();
        key(Qt::Key_Tab);
        type(QStringLiteral("Bread broken"));
        for (int i = 0; i < c.left; ++i)
            key(Qt::Key_Left);
        for (int i = 0; i < c.selectRight; ++i)
            key(Qt::Key_Right, Qt::ShiftModifier);
        key(Qt::Key_Return, Qt::AltModifier);
        EXPECT_EQ(controller().editingText(), QStringLiteral("broken"));
        key(Qt::Key_Escape);
        EXPECT_EQ(texts(root()), (QStringList{"Bread", "broken"}));
    }
}

TEST_F(MapEditingTest, EscapeKeepsTheStoredTextOfAnExistingLine)
{
    key(Qt::Key_Tab);
    type(QStringLiteral("Kept"));
    key(Qt::Key_Return);
    key(Qt::Key_Escape);
    key(Qt::Key_Up);
    key(Qt::Key_Space);
    ASSERT_TRUE(editor().isOpen());
    type(QStringLiteral(" and changed"));
    key(Qt::Key_Escape);
    EXPECT_EQ(texts(root()), QStringList{"Kept"});
    EXPECT_TRUE(canvas.hasFocus());
}

// The field's first glyph stands where the map draws the node's text, at any zoom.
TEST_F(MapEditingTest, TheEditorShowsAMarkerInItsColour)
{
    const MarkerColour orange = markerColours()[1];
    root()->setText(orange.marker + QStringLiteral(" Title"));
    canvas.onTreeMutated();
    key(Qt::Key_Space);
    ASSERT_TRUE(editor().isOpen());
    const QImage picture = canvas.grab().toImage();
    // The start of the line, about one emoji wide.
    const QRect line(field().mapTo(&canvas, QPoint(0, 0)), field().size());
    const QRect marker(line.topLeft(), QSize(line.height() * 6 / 5, line.height()));
    const QColor c = meanCoverColour(picture, marker, canvas.palette().color(QPalette::Window));
    EXPECT_TRUE(c.isValid() && orange.matches(c)) << c.name().toStdString();
}

TEST_F(MapEditingTest, TheEditorLiesOverTheNodeTextAtZoomOneAndTwo)
{
    root()->addChild(QStringLiteral("A line to edit"));
    canvas.onTreeMutated();
    const NodeID id = root()->children()[0]->id();
    for (double scale : {1.0, 2.0}) {
        canvas.viewport().setScale(scale);
        canvas.viewport().setPanOffset({30, -20});
        controller().startSession(id, false);
        ASSERT_TRUE(editor().isOpen());
        const NodeLayout& layout = *canvas.layoutState().layout(id);
        const QRect cursor = field().cursorRect(QTextCursor(field().document()));
        const QPoint inCanvas = field().viewport()->mapTo(&canvas, cursor.topLeft());
        const QPointF textColumn = QPointF(layout.origin.x() + TreeLayout::horizontalPadding,
                                           layout.origin.y() + TreeLayout::leafVerticalPadding)
                * scale
            + canvas.viewport().panOffset();
        EXPECT_NEAR(inCanvas.x(), textColumn.x(), 1.5) << "zoom " << scale;
        EXPECT_NEAR(inCanvas.y(), textColumn.y(), 1.5) << "zoom " << scale;
        // Twice the zoom, twice the field.
        EXPECT_NEAR(field().width(), editor().currentEditorSize().width() * scale, 1.0);
        QTest::keyClick(&field(), Qt::Key_Escape);
    }
}

} // namespace
