#include "NodeEditorOverlay.h"

#include "MapPalette.h"
#include "TreeLayout.h"
#include "look/EmojiText.h"
#include "look/Look.h"

#include "editing/TextPieces.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QResizeEvent>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace {
// The ring is drawn around a text field whose glyphs sit 5 points in from its edge, as on the
// platform the map was first drawn for; so it stands off the text 18 points on the left.
constexpr double ringFieldInset = 5;
constexpr double ringLeft = 13;
constexpr double ringRight = 3;
constexpr double ringVertical = 5;
constexpr double ringRadius = 8;
constexpr double ringWidth = 2;
constexpr double slack = 20; // room for the next character before the field grows

double verticalPadding(const NodeLayout& layout)
{
    return layout.isLeaf ? TreeLayout::leafVerticalPadding : TreeLayout::branchVerticalPadding;
}

// The text view of the editor. Its lines never wrap and stand at the left, so a new width moves
// no glyph; the text view would still lay out and shape every line again on a change of width,
// which the field has on nearly every key as it grows.
class LineField : public QPlainTextEdit {
public:
    using QPlainTextEdit::QPlainTextEdit;

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        const QTextOption option = document()->defaultTextOption();
        const bool widthMovesNothing = option.wrapMode() == QTextOption::NoWrap
            && !(option.alignment() & (Qt::AlignRight | Qt::AlignHCenter | Qt::AlignJustify));
        if (!widthMovesNothing || event->oldSize().width() == event->size().width()) {
            QPlainTextEdit::resizeEvent(event);
            return;
        }
        // The same event with the width left as it was: the scroll range is still brought up to date.
        QResizeEvent heightOnly(event->size(), QSize(event->size().width(), event->oldSize().height()));
        QPlainTextEdit::resizeEvent(&heightOnly);
    }
};

// The field's text in the model's form: every break between its lines a soft line break.
QString modelTextOf(const QPlainTextEdit& field)
{
    QString text = field.document()->toRawText();
    text.replace(QChar::ParagraphSeparator, TextPieces::softLineBreak);
    text.replace(QLatin1Char('\n'), TextPieces::softLineBreak);
    return text;
}
} // namespace

namespace {
// A line longer than twice this is measured in pieces, each cut after a space and kept by its
// text, so that a key in a very long line measures one piece again rather than the whole line.
// Shorter lines are measured whole.
constexpr qsizetype pieceLength = 512;

template <typename Width>
QSizeF sizeOfText(QStringView text, const QFontMetricsF& metrics, Width width)
{
    double widest = 0;
    qsizetype lines = 0;
    for (qsizetype start = 0;; ++lines) {
        qsizetype end = start;
        while (end < text.size() && text[end] != QLatin1Char('\n') && text[end] != TextPieces::softLineBreak)
            ++end;
        const QStringView line = text.sliced(start, end - start);
        widest = std::max(widest, line.isEmpty() ? metrics.horizontalAdvance(QStringLiteral(" ")) : width(line));
        if (end == text.size()) {
            ++lines;
            break;
        }
        start = end + 1;
    }
    const double lineHeight = metrics.ascent() + std::abs(metrics.descent()) + metrics.leading();
    return {widest + slack, lineHeight * double(lines)};
}
} // namespace

QSizeF NodeEditorOverlay::editorSize(const QString& modelText, int depth)
{
    // The editor never shows a quote's italic.
    const QFont font = TreeLayout::nodeFont(depth);
    const QFontMetricsF metrics(font);
    return sizeOfText(modelText, metrics,
                      [&](QStringView line) { return EmojiText::horizontalAdvance(metrics, font, line.toString()); });
}

QSizeF NodeEditorOverlay::grownEditorSize(const QString& modelText)
{
    if (m_pieceDepth != m_layout.depth) {
        m_pieceWidths.clear();
        m_pieceDepth = m_layout.depth;
    }
    const QFont font = TreeLayout::nodeFont(m_layout.depth);
    const QFontMetricsF metrics(font);
    ++m_measureRound;
    auto width = [&](QStringView line) {
        if (line.size() <= 2 * pieceLength)
            return EmojiText::horizontalAdvance(metrics, font, line.toString());
        double total = 0;
        for (qsizetype start = 0; start < line.size();) {
            const qsizetype space = line.indexOf(QLatin1Char(' '), start + pieceLength);
            const qsizetype end = space < 0 ? line.size() : space + 1;
            const QStringView piece = line.sliced(start, end - start);
            auto known = m_pieceWidths.find(piece);
            if (known == m_pieceWidths.end()) {
                const QString copy = piece.toString();
                known =
                    m_pieceWidths.emplace(copy, PieceWidth{EmojiText::horizontalAdvance(metrics, font, copy), 0}).first;
            }
            known->second.round = m_measureRound;
            total += known->second.width;
            start = end;
        }
        return total;
    };
    const QSizeF size = sizeOfText(modelText, metrics, width);
    // Only what the text holds now.
    std::erase_if(m_pieceWidths, [this](const auto& entry) { return entry.second.round != m_measureRound; });
    return size;
}

QRectF NodeEditorOverlay::fieldRect(const NodeLayout& layout, QSizeF size)
{
    return {QPointF(layout.origin.x() + TreeLayout::horizontalPadding - textInset,
                    layout.origin.y() + verticalPadding(layout)),
            size};
}

QRectF NodeEditorOverlay::ringRect(const NodeLayout& layout, QSizeF size)
{
    const QRectF field(QPointF(layout.origin.x() + TreeLayout::horizontalPadding - ringFieldInset,
                               layout.origin.y() + verticalPadding(layout)),
                       size);
    return field.adjusted(-ringLeft, -ringVertical, ringRight, ringVertical);
}

NodeEditorOverlay::NodeEditorOverlay(QWidget* parent)
    : QWidget(parent)
    , m_field(new LineField(this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    m_field->setObjectName(QStringLiteral("nodeEditor"));
    m_field->setAccessibleName(QStringLiteral("nodeEditor"));
    m_field->setFrameShape(QFrame::NoFrame);
    m_field->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_field->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_field->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_field->setTabChangesFocus(false);
    m_field->document()->setDocumentMargin(0);
    m_field->setContentsMargins(0, 0, 0, 0);
    m_field->viewport()->setAutoFillBackground(false);
    m_field->setAutoFillBackground(false);
    m_field->installEventFilter(this);
    connect(m_field, &QPlainTextEdit::textChanged, this, &NodeEditorOverlay::fieldTextChanged);
    // A changed line keeps its shaped glyphs after its layout, for the cursor and the paint that
    // follow each key: without them, each shapes a long line whole once more.
    connect(m_field->document(), &QTextDocument::contentsChange, this, [this](int from, int, int added) {
        const QTextDocument& document = *m_field->document();
        for (QTextBlock block = document.findBlock(from); block.isValid() && block.position() <= from + added;
             block = block.next())
            block.layout()->setCacheEnabled(true);
    });
    new EmojiText::Highlighter(m_field->document());
    hide();
}

void NodeEditorOverlay::open(const QString& modelText, const NodeLayout& layout)
{
    m_layout = layout;
    m_isOpen = true;
    setText(modelText);
    place();
    show();
    raise();
    // Only once shown does the field have its size: a hidden one would scroll to show the end.
    m_field->moveCursor(QTextCursor::End);
    focusField();
    // Once more after the event loop turns: a focus change queued by whoever opened the editor
    // must not take the keyboard away again.
    QTimer::singleShot(0, this, [this] {
        if (m_isOpen)
            focusField();
    });
}

void NodeEditorOverlay::close()
{
    if (!m_isOpen)
        return;
    m_isOpen = false;
    hide();
}

void NodeEditorOverlay::setText(const QString& modelText)
{
    if (m_modelText == modelText && !m_editorSize.isEmpty())
        return;
    m_isSettingText = true;
    m_field->setPlainText(TextPieces::editorText(modelText));
    m_isSettingText = false;
    m_modelText = modelTextOf(*m_field);
    m_editorSize = editorSize(modelText, m_layout.depth);
    place();
}

void NodeEditorOverlay::setNodeLayout(const NodeLayout& layout)
{
    if (layout == m_layout)
        return;
    const bool depthChanged = layout.depth != m_layout.depth;
    m_layout = layout;
    if (depthChanged)
        m_editorSize = editorSize(text(), m_layout.depth);
    place();
}

void NodeEditorOverlay::setViewTransform(double scale, QPointF pan)
{
    if (scale == m_scale && pan == m_pan)
        return;
    m_scale = scale;
    m_pan = pan;
    place();
}

void NodeEditorOverlay::focusField()
{
    if (!isVisible())
        return;
    if (QWidget* w = window())
        w->activateWindow();
    m_field->setFocus(Qt::OtherFocusReason);
}

void NodeEditorOverlay::place()
{
    // The font at the zoom, by point size so that fractional zooms keep their proportion.
    QFont font = TreeLayout::nodeFont(m_layout.depth);
    const double dpi = std::max(1, m_field->logicalDpiY());
    font.setPointSizeF(TreeLayout::nodeFontSize(m_layout.depth) * m_scale * 72.0 / dpi);
    if (m_field->font() != font)
        m_field->setFont(font);
    QPalette colours = m_field->palette();
    const MapPalette map = MapPalette::forAppearance(Look::isDarkPalette(palette()));
    colours.setColor(QPalette::Text, map.ink);
    colours.setColor(QPalette::Base, Qt::transparent);
    if (colours != m_field->palette())
        m_field->setPalette(colours);

    auto toView = [this](const QRectF& r) { return QRectF(r.topLeft() * m_scale + m_pan, r.size() * m_scale); };
    const QRectF ring = toView(ringRect(m_layout, m_editorSize));
    const QRectF field = toView(fieldRect(m_layout, m_editorSize));
    const double margin = ringWidth * m_scale + 1;
    const QRect bounds = ring.adjusted(-margin, -margin, margin, margin).toAlignedRect();
    setGeometry(bounds);
    // A little spare height keeps the text view from scrolling its first line by a pixel.
    const QRect inner(
        QPoint(int(std::lround(field.left())) - bounds.left(), int(std::lround(field.top())) - bounds.top()),
        QSize(int(std::ceil(field.width())), int(std::ceil(field.height())) + 2));
    m_field->setGeometry(inner);
    update();
}

void NodeEditorOverlay::fieldTextChanged()
{
    if (m_isSettingText)
        return;
    const QString model = modelTextOf(*m_field);
    m_modelText = model;
    const QSizeF size = grownEditorSize(model);
    if (size != m_editorSize) {
        m_editorSize = size;
        place();
    }
    if (onTextChanged)
        onTextChanged(model);
}

void NodeEditorOverlay::paintEvent(QPaintEvent*)
{
    if (!m_isOpen)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const MapPalette map = MapPalette::forAppearance(Look::isDarkPalette(palette()));
    const QRectF ring = ringRect(m_layout, m_editorSize);
    painter.translate(-QPointF(geometry().topLeft()));
    painter.translate(m_pan);
    painter.scale(m_scale, m_scale);
    painter.setPen(QPen(map.accent, ringWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(ring, ringRadius, ringRadius);
}

bool NodeEditorOverlay::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_field)
        return QWidget::eventFilter(watched, event);
    if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        const int code = key->key();
        const bool ours = code == Qt::Key_Return || code == Qt::Key_Enter || code == Qt::Key_Tab
            || code == Qt::Key_Backtab || code == Qt::Key_Escape;
        const bool plainShiftReturn = (code == Qt::Key_Return || code == Qt::Key_Enter)
            && (key->modifiers() & ~Qt::KeypadModifier) == Qt::ShiftModifier;
        if (!ours || plainShiftReturn)
            return false; // the text view's own (Shift+Return inserts a line break)
        if (event->type() == QEvent::ShortcutOverride) {
            // Window shortcuts on these keys must not steal them from the editor.
            event->accept();
            return true;
        }
        if (!key->isAutoRepeat())
            handleKey(code, key->modifiers());
        return true;
    }
    return false;
}

bool NodeEditorOverlay::handleKey(int key, Qt::KeyboardModifiers modifiers)
{
    auto call = [](const std::function<void()>& f) {
        if (f)
            f();
        return true;
    };
    const Qt::KeyboardModifiers mods = modifiers & ~Qt::KeypadModifier;
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        if (mods & Qt::ControlModifier)
            return call(onCommandEnter);
        if (mods & Qt::AltModifier) {
            // With a selection the split goes at its start, whichever way it was made.
            if (onOptionEnter)
                onOptionEnter(m_field->textCursor().selectionStart());
            return true;
        }
        return call(onEnter);
    }
    if (key == Qt::Key_Backtab)
        return call(onShiftTab);
    if (key == Qt::Key_Tab)
        return call((mods & Qt::ShiftModifier) ? onShiftTab : onTab);
    if (key == Qt::Key_Escape)
        return call(onCancel);
    return false;
}
