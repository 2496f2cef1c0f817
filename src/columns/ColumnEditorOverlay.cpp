#include "ColumnEditorOverlay.h"

#include "ColumnLayout.h"
#include "WrappedLines.h"
#include "look/EmojiText.h"
#include "look/Look.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <cmath>

namespace {

constexpr QChar softBreak(0x2028);
constexpr QChar paragraphBreak(0x2029);

QString toEditorForm(QString text)
{
    return text.replace(softBreak, QChar('\n'));
}

QString toModelForm(QString text)
{
    return text.replace(QChar('\n'), softBreak);
}

} // namespace

double ColumnEditorOverlay::offsetFromCellTop(bool isRoot)
{
    return 6 + QFontMetricsF(columnFont(isRoot)).ascent() - baselineInRow;
}

ColumnEditorOverlay::ColumnEditorOverlay(QWidget* parent)
    : QTextEdit(parent)
{
    setObjectName(QStringLiteral("columnEditor"));
    setFrameStyle(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAcceptRichText(false);
    setUndoRedoEnabled(false);
    setTabChangesFocus(false);
    setWordWrapMode(QTextOption::WordWrap);
    setLineWrapMode(QTextEdit::FixedPixelWidth);
    setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(0);
    // Emoji in the colour face, measured as the cell measures them, so both break alike.
    new EmojiText::Highlighter(document());
    setViewportMargins(0, 0, 0, 0);
    setContentsMargins(0, 0, 0, 0);
    setRoot(false);
    applyAppearance(Look::isDarkAppearance());
    connect(this, &QTextEdit::textChanged, this, &ColumnEditorOverlay::fieldChanged);
}

void ColumnEditorOverlay::applyAppearance(bool isDark)
{
    QPalette p = palette();
    p.setColor(QPalette::Base, Qt::transparent);
    p.setColor(QPalette::Text, Look::ink(isDark));
    setPalette(p);
}

void ColumnEditorOverlay::setRoot(bool isRoot)
{
    m_isRoot = isRoot;
    const QFont font = columnFont(isRoot);
    if (document()->defaultFont() == font)
        return;
    setFont(font);
    document()->setDefaultFont(font);
    const bool wasSetting = std::exchange(m_isSettingText, true);
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    QTextCharFormat format;
    format.setFont(font);
    all.mergeCharFormat(format);
    setCurrentCharFormat(format);
    m_isSettingText = wasSetting;
}

void ColumnEditorOverlay::setColumnWidth(double columnWidth)
{
    m_wrapWidth = std::max(columnWidth - 2 * ColumnLayout::columnTextInset, 1.0);
    setLineWrapColumnOrWidth(int(std::floor(m_wrapWidth)));
    // The exact width, so that a fractional column breaks where its cell does.
    document()->setTextWidth(m_wrapWidth);
}

void ColumnEditorOverlay::resizeEvent(QResizeEvent* event)
{
    QTextEdit::resizeEvent(event);
    document()->setTextWidth(m_wrapWidth);
}

void ColumnEditorOverlay::open(const QString& modelText, double columnWidth, bool isRoot)
{
    setRoot(isRoot);
    setColumnWidth(columnWidth);
    const bool wasSetting = std::exchange(m_isSettingText, true);
    setPlainText(toEditorForm(modelText));
    applyFormat();
    m_isSettingText = wasSetting;
    moveCursor(QTextCursor::End);
    verticalScrollBar()->setValue(0);
}

QString ColumnEditorOverlay::editorText() const
{
    QString text = document()->toRawText();
    text.replace(paragraphBreak, QChar('\n'));
    text.replace(softBreak, QChar('\n'));
    return text;
}

QString ColumnEditorOverlay::modelText() const
{
    return toModelForm(editorText());
}

void ColumnEditorOverlay::setModelText(const QString& modelText)
{
    const QString text = toEditorForm(modelText);
    if (text == editorText())
        return;
    const int anchor = textCursor().anchor();
    const int position = textCursor().position();
    const bool wasSetting = std::exchange(m_isSettingText, true);
    setPlainText(text);
    applyFormat();
    m_isSettingText = wasSetting;
    QTextCursor cursor(document());
    const int end = int(text.size());
    cursor.setPosition(std::min(anchor, end));
    cursor.setPosition(std::min(position, end), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

void ColumnEditorOverlay::applyFormat()
{
    // Every line is one 28-point row, whatever fonts it falls back to (emoji are taller).
    QTextBlockFormat format;
    format.setLineHeight(ColumnLayout::rowHeight, QTextBlockFormat::FixedHeight);
    format.setTopMargin(0);
    format.setBottomMargin(0);
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        const QTextBlockFormat present = block.blockFormat();
        if (present.lineHeightType() == QTextBlockFormat::FixedHeight
            && present.lineHeight() == ColumnLayout::rowHeight)
            continue;
        QTextCursor cursor(block);
        cursor.mergeBlockFormat(format);
    }
}

void ColumnEditorOverlay::fieldChanged()
{
    if (m_isSettingText)
        return;
    m_isSettingText = true;
    applyFormat(); // blocks made by typing or pasting
    m_isSettingText = false;
    if (onTextChanged)
        onTextChanged(modelText());
}

bool ColumnEditorOverlay::focusNextPrevChild(bool)
{
    return false; // Tab belongs to the outline
}

void ColumnEditorOverlay::keyPressEvent(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const auto call = [event](const std::function<void()>& callback) {
        if (callback)
            callback();
        event->accept();
    };
    switch (event->key()) {
    case Qt::Key_Escape:
        return call(onCancel);
    case Qt::Key_Backtab:
        return call(onShiftTab);
    case Qt::Key_Tab:
        return call(modifiers & Qt::ShiftModifier ? onShiftTab : onTab);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (modifiers & Qt::ControlModifier)
            return call(onCommandEnter);
        if (modifiers & Qt::AltModifier) {
            const int cursor = textCursor().position();
            return call([this, cursor] {
                if (onOptionEnter)
                    onOptionEnter(cursor);
            });
        }
        if (modifiers & Qt::ShiftModifier) {
            // The soft line break: a newline here, U+2028 in the node.
            textCursor().insertText(QStringLiteral("\n"));
            event->accept();
            return;
        }
        return call(onEnter);
    default:
        break;
    }
    QTextEdit::keyPressEvent(event);
}

bool ColumnEditorOverlay::canInsertFromMimeData(const QMimeData* source) const
{
    return source->hasText();
}

void ColumnEditorOverlay::insertFromMimeData(const QMimeData* source)
{
    if (!source->hasText())
        return;
    // Plain text only; any line break becomes a newline, and so a soft break in the node.
    QString text = source->text();
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QChar('\r'), QChar('\n'));
    text.replace(paragraphBreak, QChar('\n'));
    text.replace(softBreak, QChar('\n'));
    textCursor().insertText(text);
}
