#include "DeliverySwitch.h"

#include "DeliveryAppearance.h"

#include <QPainter>

DeliverySwitch::DeliverySwitch(QWidget* parent)
    : QAbstractButton(parent)
{
    setCheckable(true);
    setFixedSize(sizeHint());
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::NoFocus);
}

void DeliverySwitch::paintEvent(QPaintEvent*)
{
    using namespace DeliveryAppearance;
    using namespace Look;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QRectF track = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? accent() : withAlpha(primary(), 0.18));
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);
    const double d = track.height() - 3;
    const double x = isChecked() ? track.right() - 1.5 - d : track.left() + 1.5;
    painter.setBrush(QColor(Qt::white));
    painter.setPen(QPen(QColor(0, 0, 0, 40), 0.5));
    painter.drawEllipse(QRectF(x, track.top() + 1.5, d, d));
}
