#include "DeliveryTopBar.h"

#include "DeliveryAppearance.h"
#include "DeliveryTimelineRuler.h"

#include <QPainter>
#include <QVBoxLayout>

DeliveryTopBar::DeliveryTopBar(DeliveryTimer* timer, DeliveryCanvasState* state, QWidget* parent)
    : QWidget(parent)
{
    setFixedHeight(barHeight);
    m_ruler = new DeliveryTimelineRuler(timer, state, this);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 1);
    column->setSpacing(0);
    column->addWidget(m_ruler);
    connect(m_ruler, &DeliveryTimelineRuler::seekRequested, this, &DeliveryTopBar::seekRequested);
}

void DeliveryTopBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(QRect(0, height() - 1, width(), 1), Look::withAlpha(DeliveryAppearance::primary(), 0.35));
}
