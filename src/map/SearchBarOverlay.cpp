#include "SearchBarOverlay.h"

#include "look/Look.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QToolButton>

namespace {

enum class Glyph { magnifyingGlass, chevronUp, chevronDown, xmark };

// The bar's symbols as strokes, so they need no icon theme and stay crisp at any scale.
QIcon symbol(Glyph glyph, const QColor& colour)
{
    constexpr int size = 32; // drawn at twice the 16 point button size
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 3.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    QPainterPath path;
    switch (glyph) {
    case Glyph::magnifyingGlass:
        path.addEllipse(QPointF(13, 13), 8, 8);
        path.moveTo(19, 19);
        path.lineTo(27, 27);
        break;
    case Glyph::chevronUp:
        path.moveTo(8, 20);
        path.lineTo(16, 12);
        path.lineTo(24, 20);
        break;
    case Glyph::chevronDown:
        path.moveTo(8, 12);
        path.lineTo(16, 20);
        path.lineTo(24, 12);
        break;
    case Glyph::xmark:
        path.moveTo(9, 9);
        path.lineTo(23, 23);
        path.moveTo(23, 9);
        path.lineTo(9, 23);
        break;
    }
    painter.drawPath(path);
    painter.end();
    pixmap.setDevicePixelRatio(2);
    return QIcon(pixmap);
}

QToolButton* button(QWidget* parent, const QString& name)
{
    auto* b = new QToolButton(parent);
    b->setAutoRaise(true);
    b->setIconSize(QSize(14, 14));
    b->setToolTip(name);
    b->setAccessibleName(name);
    b->setFocusPolicy(Qt::NoFocus);
    return b;
}

} // namespace

SearchBarOverlay::SearchBarOverlay(QWidget* parent)
    : QWidget(parent)
    , m_glass(new QLabel(this))
    , m_field(new QLineEdit(this))
    , m_result(new QLabel(this))
{
    setObjectName(QStringLiteral("searchBar"));
    m_field->setPlaceholderText(QStringLiteral("Search"));
    m_field->setFrame(false);
    m_field->setClearButtonEnabled(false);
    m_field->setMinimumWidth(160);
    m_field->installEventFilter(this);
    m_result->setText(resultText(0, 0));
    m_result->setForegroundRole(QPalette::PlaceholderText);
    m_previous = button(this, QStringLiteral("Previous"));
    m_next = button(this, QStringLiteral("Next"));
    m_close = button(this, QStringLiteral("Close"));
    paintSymbols();

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(10, 6, 6, 6);
    row->setSpacing(6);
    row->addWidget(m_glass);
    row->addWidget(m_field, 1);
    row->addWidget(m_result);
    row->addWidget(m_previous);
    row->addWidget(m_next);
    row->addWidget(m_close);

    connect(m_field, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (!m_isSettingQuery && onQueryChanged)
            onQueryChanged(text);
    });
    connect(m_previous, &QToolButton::clicked, this, [this] {
        if (onPrevious)
            onPrevious();
    });
    connect(m_next, &QToolButton::clicked, this, [this] {
        if (onNext)
            onNext();
    });
    connect(m_close, &QToolButton::clicked, this, [this] {
        if (onDismiss)
            onDismiss();
    });
    hide();
}

QString SearchBarOverlay::resultText(int matchCount, int currentMatchIndex)
{
    if (matchCount < 1)
        return QStringLiteral("0 results");
    return QStringLiteral("%1 of %2").arg(currentMatchIndex + 1).arg(matchCount);
}

QString SearchBarOverlay::query() const
{
    return m_field->text();
}

void SearchBarOverlay::setQuery(const QString& query)
{
    if (m_field->text() == query)
        return;
    m_isSettingQuery = true;
    m_field->setText(query);
    m_isSettingQuery = false;
}

void SearchBarOverlay::setMatches(int matchCount, int currentMatchIndex)
{
    const QString text = resultText(matchCount, currentMatchIndex);
    if (m_result->text() != text)
        m_result->setText(text);
}

void SearchBarOverlay::focusField()
{
    m_field->setFocus(Qt::ShortcutFocusReason);
    m_field->selectAll();
}

bool SearchBarOverlay::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_field && (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride)) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (!enter && key->key() != Qt::Key_Escape)
            return false;
        if (event->type() == QEvent::ShortcutOverride) {
            event->accept();
            return true;
        }
        // Return steps forward, Shift+Return back, Escape closes.
        const auto& action = !enter ? onDismiss : (key->modifiers() & Qt::ShiftModifier) ? onPrevious : onNext;
        if (action)
            action();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void SearchBarOverlay::paintSymbols()
{
    if (!m_close)
        return; // still being made
    const QColor ink = palette().color(QPalette::WindowText);
    const QColor faint = palette().color(QPalette::PlaceholderText);
    m_glass->setPixmap(symbol(Glyph::magnifyingGlass, faint).pixmap(QSize(14, 14)));
    m_previous->setIcon(symbol(Glyph::chevronUp, ink));
    m_next->setIcon(symbol(Glyph::chevronDown, ink));
    m_close->setIcon(symbol(Glyph::xmark, ink));
}

void SearchBarOverlay::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    // The symbols are pictures in the colours of the moment: a switch of theme redraws them.
    if (event->type() == QEvent::PaletteChange)
        paintSymbols();
}

void SearchBarOverlay::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF r = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(Look::ink(Look::isDarkPalette(palette())).lighter(100), 1));
    QColor border = Look::ink(Look::isDarkPalette(palette()));
    border.setAlphaF(0.2f);
    painter.setPen(QPen(border, 1));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(r, 8, 8);
}
