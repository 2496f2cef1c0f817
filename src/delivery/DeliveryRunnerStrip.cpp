#include "DeliveryRunnerStrip.h"

#include "DeliveryAppearance.h"
#include "DeliveryPageDrawing.h"
#include "DeliveryTimer.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>

DeliveryRunnerStrip::DeliveryRunnerStrip(DeliveryTimer* timer, QWidget* ruler, QWidget* parent)
    : QWidget(parent)
    , m_timer(timer)
    , m_ruler(ruler)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    connect(m_timer, &DeliveryTimer::stateChanged, this, &DeliveryRunnerStrip::updateAll);
    connect(m_timer, &DeliveryTimer::targetSecondsChanged, this, &DeliveryRunnerStrip::updateAll);
    connect(m_timer, &DeliveryTimer::remainingSecondsChanged, this, &DeliveryRunnerStrip::moveDot);
    // The ruler's own moves and resizes, and its ancestors' up to the parent, all shift it.
    for (QWidget* w = ruler; w && w != parent; w = w->parentWidget())
        w->installEventFilter(this);
    follow();
    raise();
}

QPointF DeliveryRunnerStrip::dotCentre() const
{
    const double a = width() - 2 * overhang;
    const double x = a * std::clamp(m_timer->progress(), 0.0, 1.0) + overhang;
    return {x, stripHeight * 0.5 - 0.5};
}

void DeliveryRunnerStrip::updateAll()
{
    m_shownX = dotCentre().x();
    update();
}

void DeliveryRunnerStrip::moveDot()
{
    const double x = dotCentre().x();
    if (m_timer->progress() > 1 || !m_shownX) {
        updateAll();
        return;
    }
    if (x == *m_shownX)
        return;
    // The dot's radius and a pixel of antialiasing each side; the bar grows or shrinks between.
    const double reach = 4 + 2;
    const double from = std::min(x, *m_shownX) - reach;
    const double to = std::max(x, *m_shownX) + reach;
    m_shownX = x;
    update(QRectF(from, 0, to - from, height()).toAlignedRect());
}

void DeliveryRunnerStrip::follow()
{
    if (!m_ruler)
        return;
    const QPoint origin = m_ruler->mapTo(parentWidget(), QPoint(0, 0));
    setGeometry(origin.x() - overhang, origin.y() + offsetY, m_ruler->width() + 2 * overhang, stripHeight);
    m_shownX.reset(); // a new width moves the dot: the next frame repaints it all
    setVisible(m_ruler->isVisibleTo(parentWidget()));
    raise();
}

bool DeliveryRunnerStrip::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide:
        follow();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void DeliveryRunnerStrip::paintEvent(QPaintEvent*)
{
    if (m_timer->state() == TimerState::idle || width() <= 2 * overhang)
        return;
    const double pulse = DeliveryPageDrawing::overrunPulse(m_timer->progress(), m_timer->clock()->now());
    const QColor color = Look::withAlpha(DeliveryAppearance::red(), pulse);
    const QPointF dot = dotCentre();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.fillRect(QRectF(overhang, dot.y() - 0.5, dot.x() - overhang, 1), color);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(dot, 4, 4);
}
