#include "FocusOverlayView.h"

#include "TreeLayout.h"
#include "look/Look.h"

#include "core/ReadingPace.h"
#include "core/SermonDocument.h"
#include "core/WordCount.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {
constexpr double horizontalInset = 12;
constexpr double verticalInset = 6;
} // namespace

FocusOverlayView::FocusOverlayView(SermonDocument* document, QWidget* parent)
    : QWidget(parent)
    , m_document(document)
    , m_fade(idleSeconds, true, this)
{
    setObjectName(QStringLiteral("focusStatistics"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    connect(&m_fade, &IdleFade::frame, this, qOverload<>(&QWidget::update));
    connect(document, &SermonDocument::rootChanged, this, &FocusOverlayView::refresh);
    connect(document, &SermonDocument::undoRedoGenerationChanged, this, &FocusOverlayView::refresh);
    refresh();
}

FocusOverlayView::~FocusOverlayView()
{
    if (m_isWatching)
        QCoreApplication::instance()->removeEventFilter(this);
}

void FocusOverlayView::setReadingPaceSource(std::function<int()> source)
{
    m_readingPace = std::move(source);
    refresh();
}

QFont FocusOverlayView::labelFont() const
{
    return TreeLayout::mapFont(12, QFont::Medium);
}

void FocusOverlayView::refresh()
{
    const int wpm = m_readingPace ? m_readingPace() : ReadingPaces::defaultWPM;
    const QString text =
        WordCount::statusTextWithoutPace(*m_document->root(), wpm > 0 ? wpm : ReadingPaces::defaultWPM);
    if (text == m_text)
        return;
    m_text = text;
    place(m_windowSize);
    update();
}

void FocusOverlayView::place(QSize windowSize)
{
    m_windowSize = windowSize;
    const QFontMetricsF metrics(labelFont());
    const QSize size(int(std::ceil(metrics.horizontalAdvance(m_text) + 2 * horizontalInset)),
                     int(std::ceil(metrics.height() + 2 * verticalInset)));
    setGeometry(QRect(QPoint(edgeMargin, windowSize.height() - edgeMargin - size.height()), size));
}

void FocusOverlayView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_fade.poke();
    if (!m_isWatching) {
        QCoreApplication::instance()->installEventFilter(this);
        m_isWatching = true;
    }
}

void FocusOverlayView::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    m_fade.stop();
    if (m_isWatching) {
        QCoreApplication::instance()->removeEventFilter(this);
        m_isWatching = false;
    }
}

bool FocusOverlayView::eventFilter(QObject*, QEvent* event)
{
    const QEvent::Type type = event->type();
    const bool isPress = type == QEvent::MouseButtonPress
        && (static_cast<QMouseEvent*>(event)->button() & (Qt::LeftButton | Qt::RightButton));
    // Every event goes on untouched; the line only learns, one turn later, that the pointer lives.
    if (type == QEvent::MouseMove || isPress)
        QMetaObject::invokeMethod(
            this, [this] { m_fade.poke(); }, Qt::QueuedConnection);
    return false;
}

void FocusOverlayView::paintEvent(QPaintEvent*)
{
    const double opacity = m_fade.opacity();
    if (opacity <= 0 || m_text.isEmpty())
        return;
    const bool dark = Look::isDarkPalette(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(opacity);
    const QRectF bounds = QRectF(rect());
    QPainterPath capsule;
    capsule.addRoundedRect(bounds, bounds.height() / 2, bounds.height() / 2);
    painter.fillPath(
        capsule, dark ? QColor::fromRgbF(0.16f, 0.15f, 0.18f, 0.78f) : QColor::fromRgbF(0.98f, 0.97f, 0.95f, 0.78f));
    QColor secondary = palette().color(QPalette::WindowText);
    secondary.setAlphaF(0.6f);
    painter.setPen(secondary);
    painter.setFont(labelFont());
    painter.drawText(bounds, Qt::AlignCenter, m_text);
}
