#include "DeliverySymbols.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace DeliverySymbols {

namespace {

QPainterPath circleWithCutout(const QRectF& square, const QPainterPath& cutout)
{
    QPainterPath circle;
    circle.addEllipse(square);
    return circle.subtracted(cutout);
}

QPainterPath eyeOutline(const QPointF& c, double w, double h)
{
    // Two arcs meeting at sharp corners, the lens of an eye.
    QPainterPath path;
    path.moveTo(c.x() - w / 2, c.y());
    path.cubicTo(c.x() - w / 4, c.y() - h * 0.68, c.x() + w / 4, c.y() - h * 0.68, c.x() + w / 2, c.y());
    path.cubicTo(c.x() + w / 4, c.y() + h * 0.68, c.x() - w / 4, c.y() + h * 0.68, c.x() - w / 2, c.y());
    path.closeSubpath();
    return path;
}

} // namespace

void draw(QPainter& painter, Symbol symbol, const QRectF& rect, const QColor& color, double weight)
{
    const double size = std::min(rect.width(), rect.height());
    const QPointF c = rect.center();
    const QRectF square(c.x() - size / 2, c.y() - size / 2, size, size);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    switch (symbol) {
    case Symbol::playCircleFill: {
        QPainterPath triangle;
        const double r = size * 0.2;
        triangle.moveTo(c.x() - r * 0.75, c.y() - r);
        triangle.lineTo(c.x() + r * 1.05, c.y());
        triangle.lineTo(c.x() - r * 0.75, c.y() + r);
        triangle.closeSubpath();
        painter.drawPath(circleWithCutout(square, triangle));
        break;
    }
    case Symbol::pauseCircleFill: {
        QPainterPath bars;
        const double h = size * 0.36;
        const double w = size * 0.1;
        bars.addRoundedRect(QRectF(c.x() - w * 1.6, c.y() - h / 2, w, h), w * 0.3, w * 0.3);
        bars.addRoundedRect(QRectF(c.x() + w * 0.6, c.y() - h / 2, w, h), w * 0.3, w * 0.3);
        painter.drawPath(circleWithCutout(square, bars));
        break;
    }
    case Symbol::stopCircleFill: {
        QPainterPath box;
        const double s = size * 0.32;
        box.addRoundedRect(QRectF(c.x() - s / 2, c.y() - s / 2, s, s), s * 0.12, s * 0.12);
        painter.drawPath(circleWithCutout(square, box));
        break;
    }
    case Symbol::eye:
    case Symbol::eyeFill: {
        const double w = size;
        const double h = size * 0.62;
        const QPainterPath outline = eyeOutline(c, w * 0.92, h);
        const double pupil = h * 0.36;
        QPainterPath iris;
        iris.addEllipse(c, pupil, pupil);
        if (symbol == Symbol::eyeFill) {
            QPainterPath hole;
            hole.addEllipse(c, pupil * 0.45, pupil * 0.45);
            QPainterPath ring;
            ring.addEllipse(c, pupil * 1.35, pupil * 1.35);
            painter.drawPath(outline.subtracted(ring).united(iris.subtracted(hole)));
        } else {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(color, size * 0.085 * weight, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.drawPath(outline);
            painter.setPen(Qt::NoPen);
            painter.setBrush(color);
            painter.drawPath(iris);
        }
        break;
    }
    case Symbol::chevronDown: {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(color, size * 0.14 * weight, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const double w = size * 0.42;
        const double h = size * 0.22;
        QPainterPath chevron;
        chevron.moveTo(c.x() - w, c.y() - h);
        chevron.lineTo(c.x(), c.y() + h);
        chevron.lineTo(c.x() + w, c.y() - h);
        painter.drawPath(chevron);
        break;
    }
    }
    painter.restore();
}

} // namespace DeliverySymbols
