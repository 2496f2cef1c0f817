#include "DeliveryRunnerPlayButton.h"

#include "DeliveryAppearance.h"
#include "DeliverySymbols.h"
#include "DeliveryTimer.h"

#include <QPainter>

DeliveryRunnerPlayButton::DeliveryRunnerPlayButton(DeliveryTimer* timer, QWidget* parent)
    : QAbstractButton(parent)
    , m_timer(timer)
{
    setFixedSize(symbolSize, symbolSize);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
    setToolTip(QStringLiteral("Play / Pause"));
    connect(this, &QAbstractButton::clicked, this, [this] {
        if (m_timer->state() == TimerState::running)
            m_timer->pause();
        else
            m_timer->start();
    });
    connect(m_timer, &DeliveryTimer::stateChanged, this, &DeliveryRunnerPlayButton::refresh);
    refresh();
}

void DeliveryRunnerPlayButton::refresh()
{
    setAccessibleName(m_timer->state() == TimerState::running ? QStringLiteral("Pause") : QStringLiteral("Play"));
    update();
}

void DeliveryRunnerPlayButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool running = m_timer->state() == TimerState::running;
    QColor color = running ? DeliveryAppearance::red() : DeliveryAppearance::green();
    if (isDown())
        color = color.darker(120);
    DeliverySymbols::draw(painter,
                          running ? DeliverySymbols::Symbol::pauseCircleFill : DeliverySymbols::Symbol::playCircleFill,
                          QRectF(rect()), color);
}
