#include "Symbols.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <cmath>
#include <functional>
#include <map>

namespace Symbols {

namespace {

// Each symbol draws itself on a 24 by 24 grid; `stroke` is the pen for its lines.
using Drawer = std::function<void(QPainter&, const QPen& stroke, const QColor& color)>;

QPainterPath circle(double cx, double cy, double r)
{
    QPainterPath path;
    path.addEllipse(QPointF(cx, cy), r, r);
    return path;
}

const std::map<QString, Drawer>& drawers()
{
    static const std::map<QString, Drawer> table{
        {QStringLiteral("plus"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             p.drawLine(QPointF(12, 4.5), QPointF(12, 19.5));
             p.drawLine(QPointF(4.5, 12), QPointF(19.5, 12));
         }},
        {QStringLiteral("minus"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             p.drawLine(QPointF(4.5, 12), QPointF(19.5, 12));
         }},
        {QStringLiteral("checkmark"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             QPainterPath path;
             path.moveTo(5, 12.5);
             path.lineTo(10, 17.5);
             path.lineTo(19, 6.5);
             p.drawPath(path);
         }},
        {QStringLiteral("chevron.down"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             QPainterPath path;
             path.moveTo(6, 9);
             path.lineTo(12, 15);
             path.lineTo(18, 9);
             p.drawPath(path);
         }},
        {QStringLiteral("chevron.left"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             QPainterPath path;
             path.moveTo(15, 5.5);
             path.lineTo(8.5, 12);
             path.lineTo(15, 18.5);
             p.drawPath(path);
         }},
        {QStringLiteral("chevron.right"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             QPainterPath path;
             path.moveTo(9, 5.5);
             path.lineTo(15.5, 12);
             path.lineTo(9, 18.5);
             p.drawPath(path);
         }},
        {QStringLiteral("doc.text"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             QPainterPath page;
             page.moveTo(6, 3.5);
             page.lineTo(14, 3.5);
             page.lineTo(18.5, 8);
             page.lineTo(18.5, 20.5);
             page.lineTo(6, 20.5);
             page.closeSubpath();
             p.drawPath(page);
             QPainterPath fold;
             fold.moveTo(14, 3.5);
             fold.lineTo(14, 8);
             fold.lineTo(18.5, 8);
             p.drawPath(fold);
             QPen thin = pen;
             thin.setWidthF(pen.widthF() * 0.8);
             p.setPen(thin);
             for (double y : {11.5, 14.5, 17.5})
                 p.drawLine(QPointF(9, y), QPointF(15.5, y));
         }},
        {QStringLiteral("circle.lefthalf.filled"),
         [](QPainter& p, const QPen& pen, const QColor& color) {
             QPainterPath half;
             half.moveTo(12, 3.5);
             half.arcTo(QRectF(3.5, 3.5, 17, 17), 90, 180);
             half.closeSubpath();
             p.fillPath(half, color);
             p.setPen(pen);
             p.drawEllipse(QPointF(12, 12), 8.5, 8.5);
         }},
        {QStringLiteral("sun.max"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             p.drawEllipse(QPointF(12, 12), 4.2, 4.2);
             for (int i = 0; i < 8; ++i) {
                 const double a = i * M_PI / 4;
                 p.drawLine(QPointF(12 + 7 * std::cos(a), 12 + 7 * std::sin(a)),
                            QPointF(12 + 9.8 * std::cos(a), 12 + 9.8 * std::sin(a)));
             }
         }},
        {QStringLiteral("moon"),
         [](QPainter& p, const QPen& pen, const QColor&) {
             p.setPen(pen);
             const QPainterPath crescent = circle(12, 12, 8).subtracted(circle(16.5, 8.5, 7));
             p.drawPath(crescent);
         }},
        {QStringLiteral("xmark.circle.fill"),
         [](QPainter& p, const QPen& pen, const QColor& color) {
             QPainterPath cross;
             cross.moveTo(8.5, 8.5);
             cross.lineTo(15.5, 15.5);
             cross.moveTo(15.5, 8.5);
             cross.lineTo(8.5, 15.5);
             QPen crossPen = pen;
             crossPen.setWidthF(2.2);
             QPainterPathStroker stroker(crossPen);
             p.fillPath(circle(12, 12, 9).subtracted(stroker.createStroke(cross)), color);
         }},
    };
    return table;
}

} // namespace

bool has(const QString& name)
{
    return drawers().count(name) > 0;
}

void draw(QPainter& painter, const QString& name, const QRectF& rect, const QColor& color)
{
    const auto it = drawers().find(name);
    if (it == drawers().end() || rect.isEmpty())
        return;
    const double side = std::min(rect.width(), rect.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center().x() - side / 2, rect.center().y() - side / 2);
    painter.scale(side / 24.0, side / 24.0);
    painter.setBrush(Qt::NoBrush);
    QPen pen(color, 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    pen.setCosmetic(false);
    it->second(painter, pen, color);
    painter.restore();
}

QIcon icon(const QString& name, const QColor& color, int size)
{
    QIcon result;
    const double ratio = qApp ? qApp->devicePixelRatio() : 1.0;
    for (QIcon::Mode mode : {QIcon::Normal, QIcon::Disabled}) {
        QPixmap pixmap(QSize(size, size) * ratio);
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        QColor tint = color;
        if (mode == QIcon::Disabled)
            tint.setAlphaF(tint.alphaF() * 0.35f);
        draw(painter, name, QRectF(0, 0, size, size), tint);
        painter.end();
        result.addPixmap(pixmap, mode);
    }
    return result;
}

} // namespace Symbols
