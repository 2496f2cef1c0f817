#include "DeliveryRunnerStopButton.h"

#include "DeliveryAppearance.h"
#include "DeliverySymbols.h"
#include "DeliveryTimer.h"

#include <QPainter>
#include <QVariantAnimation>

DeliveryRunnerStopButton::DeliveryRunnerStopButton(DeliveryTimer* timer, QWidget* parent)
    : QAbstractButton(parent)
    , m_timer(timer)
{
    setFixedSize(symbolSize, symbolSize);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
    setToolTip(QStringLiteral("Stop / Reset"));
    setAccessibleName(QStringLiteral("Stop"));
    m_fade = new QVariantAnimation(this);
    m_fade->setDuration(150);
    m_fade->setEasingCurve(QEasingCurve::InOutQuad);
    connect(m_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        m_opacity = value.toDouble();
        update();
    });
    connect(m_fade, &QVariantAnimation::finished, this, [this] {
        if (m_timer->state() != TimerState::paused)
            hide();
    });
    connect(this, &QAbstractButton::clicked, this, [this] { m_timer->stop(); });
    connect(m_timer, &DeliveryTimer::stateChanged, this, &DeliveryRunnerStopButton::onStateChanged);
    setVisible(m_timer->state() == TimerState::paused);
    m_opacity = isVisibleTo(parentWidget()) ? 1 : 0;
}

void DeliveryRunnerStopButton::onStateChanged()
{
    const bool paused = m_timer->state() == TimerState::paused;
    m_fade->stop();
    m_fade->setStartValue(m_opacity);
    m_fade->setEndValue(paused ? 1.0 : 0.0);
    if (paused)
        show();
    setEnabled(paused);
    m_fade->start();
}

void DeliveryRunnerStopButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setOpacity(m_opacity);
    QColor color = Look::isDarkAppearance() ? QColor(Qt::white) : QColor(Qt::black);
    if (isDown())
        color = Look::withAlpha(color, 0.7);
    DeliverySymbols::draw(painter, DeliverySymbols::Symbol::stopCircleFill, QRectF(rect()), color);
}
