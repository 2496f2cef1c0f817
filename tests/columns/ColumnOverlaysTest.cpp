#include "columns/ColumnCanvas.h"
#include "columns/ColumnDragHandleOverlay.h"
#include "columns/ColumnEditorOverlay.h"
#include "columns/ColumnWidthsStore.h"
#include "columns/WrappedLines.h"
#include "core/SermonDocument.h"
#include "map/MapTestSupport.h"

#include <QAbstractTextDocumentLayout>
#include <QClipboard>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>

#include <gtest/gtest.h>

#include <cmath>

namespace {

const QChar soft(0x2028);

// The lines the editor's document shows, as the cell's wrapping names them: each with the top
// of the row its baseline stands on.
std::vector<WrappedLine> editorLines(ColumnEditorOverlay& editor)
{
    std::vector<WrappedLine> lines;
    QTextDocument* document = editor.document();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        const double top = document->documentLayout()->blockBoundingRect(block).top();
        const QTextLayout* layout = block.layout();
        for (int i = 0; i < layout->lineCount(); ++i) {
            const QTextLine line = layout->lineAt(i);
            const double baseline = top + line.y() + line.ascent() + std::max(line.leading(), 0.0);
            // Whole 1/64 points, as the text engine counts.
            const double rowTop = std::round((baseline - ColumnEditorOverlay::baselineInRow) * 64) / 64;
            lines.push_back(WrappedLine{block.text().mid(line.textStart(), line.textLength()), rowTop});
        }
    }
    return lines;
}

TEST(ColumnEditorOverlayTest, WrapsAtExactlyTheBreaksOfItsCell)
{
    ensureApplication();
    const QString texts[] = {
        QStringLiteral("Grace is the gift we never earn and the welcome we never outgrow, given again each morning "
                       "to people who have done nothing to deserve it"),
        QStringLiteral("First line") + soft + QStringLiteral("and a second that runs on long enough to wrap somewhere"),
        QStringLiteral("🙏 Pray for 👨‍👩‍👧 families, for the 🇺🇦 refugees and the 🕊️ peacemakers in every "
                       "town "
                       "along the river road"),
        QStringLiteral(
            "Cafe\u0301 nai\u0308ve re\u0301sume\u0301 and the combining marks that stack u\u0301\u0308\u0327 "
            "on every letter of this line"),
        QStringLiteral("Antidisestablishmentarianismantidisestablishmentarianismantidisestablishmentarianism and "
                       "then words"),
        QStringLiteral("ends with a break") + soft,
        QStringLiteral("two") + soft + soft + QStringLiteral("breaks"),
    };
    for (const double width : {180.0, 260.0, 600.0}) {
        for (const bool isRoot : {false, true}) {
            for (const QString& text : texts) {
                SCOPED_TRACE(qPrintable(QStringLiteral("%1 at %2%3").arg(text).arg(width).arg(isRoot ? " bold" : "")));
                ColumnEditorOverlay editor;
                editor.resize(int(std::ceil(width - 28)), 600);
                editor.open(text, width, isRoot);
                EXPECT_EQ(editorLines(editor), wrappedLinesUncached(text, isRoot, width));
            }
        }
    }
}

TEST(ColumnEditorOverlayTest, KeysBecomeCallbacksAndBreaksAreHeldAsU2028)
{
    ensureApplication();
    ColumnEditorOverlay editor;
    QString called;
    QString modelText;
    editor.onCancel = [&] { called = QStringLiteral("cancel"); };
    editor.onTab = [&] { called = QStringLiteral("tab"); };
    editor.onShiftTab = [&] { called = QStringLiteral("shiftTab"); };
    editor.onEnter = [&] { called = QStringLiteral("enter"); };
    editor.onCommandEnter = [&] { called = QStringLiteral("commandEnter"); };
    editor.onOptionEnter = [&](int cursor) { called = QStringLiteral("optionEnter %1").arg(cursor); };
    editor.onTextChanged = [&](const QString& text) { modelText = text; };
    editor.open(QStringLiteral("abc"), 600, false);

    struct Case {
        int key;
        Qt::KeyboardModifiers modifiers;
        const char* expected;
    };
    const Case cases[] = {
        {Qt::Key_Escape, Qt::ShiftModifier, "cancel"},
        {Qt::Key_Tab, Qt::NoModifier, "tab"},
        {Qt::Key_Backtab, Qt::ShiftModifier, "shiftTab"},
        {Qt::Key_Return, Qt::NoModifier, "enter"},
        {Qt::Key_Enter, Qt::KeypadModifier, "enter"},
        {Qt::Key_Return, Qt::ControlModifier, "commandEnter"},
        {Qt::Key_Return, Qt::ControlModifier | Qt::AltModifier, "commandEnter"}, // Ctrl wins
        {Qt::Key_Return, Qt::AltModifier, "optionEnter 3"},
        {Qt::Key_Return, Qt::AltModifier | Qt::ShiftModifier, "optionEnter 3"}, // Alt over Shift
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        called.clear();
        QTest::keyClick(&editor, Qt::Key(c.key), c.modifiers);
        EXPECT_EQ(called, QLatin1String(c.expected));
        EXPECT_EQ(editor.modelText(), QStringLiteral("abc")) << "the key entered nothing";
    }

    // Shift+Return is the soft break, typed or pasted.
    called.clear();
    QTest::keyClick(&editor, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_TRUE(called.isEmpty());
    EXPECT_EQ(modelText, QStringLiteral("abc") + soft);
    QGuiApplication::clipboard()->setText(QStringLiteral("one\ntwo\r\nthree"));
    editor.paste();
    EXPECT_EQ(modelText,
              QStringLiteral("abc") + soft + QStringLiteral("one") + soft + QStringLiteral("two") + soft
                  + QStringLiteral("three"));

    // A text from outside replaces it only when it differs; an empty one clears it.
    editor.setModelText(QString());
    EXPECT_TRUE(editor.modelText().isEmpty());
    EXPECT_TRUE(editor.document()->toPlainText().isEmpty());
}

// A press, one move per row, and a release on a divider's strip.
class DividerDrag {
public:
    DividerDrag(ColumnDragHandleOverlay* overlay, QPointF at)
        : m_overlay(overlay)
        , m_at(at)
    {
        send(QEvent::MouseButtonPress, at, Qt::LeftButton);
    }
    void moveBy(double dx) { send(QEvent::MouseMove, m_at + QPointF(dx, 0), Qt::LeftButton); }
    void release() { send(QEvent::MouseButtonRelease, m_at, Qt::NoButton); }

private:
    void send(QEvent::Type type, QPointF local, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, local, local + QPointF(500, 300), Qt::LeftButton, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(m_overlay, &event);
    }
    ColumnDragHandleOverlay* m_overlay;
    QPointF m_at;
};

TEST(ColumnDragHandleOverlayTest, DraggingADividerSetsThatWidthInEveryCanvas)
{
    ensureApplication();
    auto top = SermonNode::make(QStringLiteral("Title"));
    top->addChild(QStringLiteral("Point"))->addChild(QStringLiteral("Line"));
    SermonDocument first(top);
    SermonDocument second(top->deepCopy(false));
    ColumnWidthsStore store;
    ColumnCanvas one(&first, &store);
    ColumnCanvas two(&second, &store);
    for (ColumnCanvas* canvas : {&one, &two}) {
        canvas->resize(4000, 400);
        canvas->show();
    }
    ColumnDragHandleOverlay* handles = one.dragHandles();
    // Only the strips take the pointer, with the resize arrow; the rest belongs to the canvas.
    EXPECT_EQ(handles->cursor().shape(), Qt::SizeHorCursor);
    EXPECT_TRUE(handles->mask().contains(QPoint(600, 100)));
    EXPECT_FALSE(handles->mask().contains(QPoint(300, 100)));

    struct Step {
        double dx;
        double width;
    };
    // Past the upper limit the width waits until the pointer comes back to where it was reached.
    const Step steps[] = {{100, 700}, {600, 1200}, {800, 1200}, {650, 1200}, {500, 1100}, {-500, 180}, {-200, 400}};
    DividerDrag drag(handles, QPointF(601, 100));
    for (const Step& step : steps) {
        SCOPED_TRACE(step.dx);
        drag.moveBy(step.dx);
        EXPECT_EQ(store.config().width(0), step.width);
        EXPECT_EQ(two.layout().columnXEdges.at(1), step.width) << "the other canvas relays";
        EXPECT_FALSE(two.animator().isRunning()) << "without a glide";
    }
    drag.release();

    // A column past the stored widths: those before it are written out at the default.
    DividerDrag deeper(handles, QPointF(400 + 600 + 600 - 2, 100));
    deeper.moveBy(-100);
    deeper.release();
    EXPECT_EQ(store.config().widths(), (std::vector<double>{400, 600, 500}));
    EXPECT_EQ(two.layout().totalSize.width(), 1500);
}

} // namespace
