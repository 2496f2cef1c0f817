#include "DeliveryPageDrawing.h"

#include "DeliveryAppearance.h"
#include "DeliveryContentLayout.h"
#include "DeliveryText.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace DeliveryPageDrawing {

using namespace DeliveryAppearance;
using namespace Look;

namespace {

constexpr double runnerX = DeliveryContentLayout::runnerX;

void drawHatching(QPainter& painter, const QRectF& rect, double endY)
{
    painter.save();
    painter.setClipRect(rect);
    QLinearGradient fade(0, endY, 0, endY + rect.height());
    fade.setColorAt(0, withAlpha(primary(), 0.22));
    fade.setColorAt(1, withAlpha(primary(), 0.0));
    painter.setPen(QPen(QBrush(fade), 0.5));
    constexpr double step = 28.284271247461902; // 20 * sqrt(2)
    const double minX = rect.left();
    const double maxX = rect.right();
    const long long first = (long long)std::floor((rect.top() - maxX) / step) - 1;
    const long long last = (long long)std::ceil((rect.bottom() - minX) / step) + 1;
    for (long long k = first; k <= last; ++k) {
        const double base = double(k) * step;
        painter.drawLine(QPointF(minX - 20, base + minX - 20), QPointF(maxX + 20, base + maxX + 20));
    }
    painter.restore();
}

} // namespace

double pageLeft(double viewWidth, double textWidth)
{
    return std::max((viewWidth - (textWidth + DeliveryContentLayout::textLeft)) * 0.5, 0.0);
}

double minuteMarkOpacity(double windowY, bool hasStarted)
{
    const double fade = hasStarted ? 106 : 64;
    return std::clamp((windowY - fade) / 40, 0.0, 1.0);
}

double overrunPulse(double progress, double now)
{
    if (!(progress > 1))
        return 1;
    return (std::sin(2 * now * std::numbers::pi) + 1) * 0.5 * 0.65 + 0.35;
}

void drawTextLayer(QPainter& painter, const TextPass& pass)
{
    if (!pass.layout)
        return;
    const DeliveryContentLayout& layout = *pass.layout;
    const double w = pass.size.width();
    const double h = pass.size.height();
    const QRectF visible(0, pass.scrollY - 50, w, h + 100);

    painter.save();
    painter.translate(pass.left, -pass.scrollY);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);

    const double endY = layout.totalHeight - 40;
    QPen spine(withAlpha(primary(), 0.2), 1);
    spine.setDashPattern({8, 4});
    spine.setCapStyle(Qt::FlatCap);
    painter.setPen(spine);
    const double spineTop = std::max(0.0, visible.top());
    const double spineBottom = std::min(endY, visible.bottom());
    if (spineBottom > spineTop) {
        // Start the dashes at a whole period so that scrolling doesn't make them crawl.
        const double from = std::floor(spineTop / 12) * 12;
        painter.drawLine(QPointF(runnerX, from), QPointF(runnerX, spineBottom));
    }

    if (endY >= visible.top() + 1 && endY <= visible.bottom() - 1) {
        painter.setPen(QPen(withAlpha(primary(), 0.2), 0.5));
        painter.drawLine(QPointF(-pass.left, endY), QPointF(w - pass.left, endY));
    }
    if (endY < visible.bottom())
        drawHatching(painter, QRectF(-pass.left, endY, w, std::max(pass.viewportHeight, 1.0)), endY);

    const QColor ink = Look::ink(pass.isDark);
    const QFont leafFont = deliveryFont(0, true, pass.baseFontSize);
    QFont italicFont = leafFont;
    italicFont.setItalic(true);
    const double leafAscent = QFontMetricsF(leafFont).ascent();
    const double italicAscent = QFontMetricsF(italicFont).ascent();
    QFont markFont = DeliveryText::makeFont(10, QFont::Normal, false);
    const QFontMetricsF markMetrics(markFont);

    for (const DeliveryItem& item : layout.items) {
        switch (item.kind) {
        case DeliveryItem::Kind::heading: {
            if (!item.frame.intersects(visible))
                continue;
            const double alpha = item.depth <= 1 ? 1.0 : item.depth == 2 ? 0.6 : item.depth == 3 ? 0.4 : 0.3;
            const QFont font = deliveryFont(item.depth, false, pass.baseFontSize);
            const double ascent = QFontMetricsF(font).ascent();
            DeliveryText::draw(painter, item.text, font, withAlpha(ink, alpha),
                               QPointF(item.frame.left(), item.frame.top() - ascent),
                               pass.textWidth - DeliveryContentLayout::headingIndent(item.depth));
            break;
        }
        case DeliveryItem::Kind::headingDivider:
            if (item.y < visible.top() || item.y > visible.bottom())
                continue;
            painter.setPen(QPen(withAlpha(ink, 0.2), 0.5));
            painter.drawLine(QPointF(DeliveryContentLayout::textLeft, item.y),
                             QPointF(DeliveryContentLayout::textLeft + item.width, item.y));
            break;
        case DeliveryItem::Kind::leaf: {
            if (!item.frame.intersects(visible))
                continue;
            // The quote's extra indent is in the frame but not in the wrap width, as measured.
            const double wrap = pass.textWidth - DeliveryContentLayout::leafIndent(item.depth);
            if (item.isQuote) {
                QPainterPath bar;
                bar.addRoundedRect(
                    QRectF(item.frame.left() - 10, item.frame.top() - leafAscent - 2, 3, item.frame.height() + 2), 1.5,
                    1.5);
                painter.fillPath(bar, withAlpha(orange(), 0.35));
            }
            const QFont& font = item.isQuote ? italicFont : leafFont;
            const double ascent = item.isQuote ? italicAscent : leafAscent;
            DeliveryText::draw(painter, item.text, font, ink, QPointF(item.frame.left(), item.frame.top() - ascent),
                               wrap);
            break;
        }
        case DeliveryItem::Kind::timeMarker: {
            if (item.y < visible.top() || item.y > visible.bottom())
                continue;
            const double opacity = minuteMarkOpacity(item.y - pass.scrollY, pass.hasStarted);
            if (!(opacity > 0))
                continue;
            const double width = markMetrics.horizontalAdvance(item.text);
            painter.save();
            painter.setOpacity(opacity);
            painter.setFont(markFont);
            painter.setPen(secondary());
            painter.drawText(QPointF(123 - width, item.y - markMetrics.descent()), item.text);
            painter.restore();
            break;
        }
        }
    }
    painter.restore();
}

void drawRunnerLayer(QPainter& painter, const RunnerPass& pass)
{
    if (pass.state == TimerState::idle || !pass.layout)
        return;
    const double y = yForFraction(*pass.layout, std::min(pass.progress, 1.0));
    const double pulse = overrunPulse(pass.progress, pass.now);
    const QColor red = DeliveryAppearance::red();

    painter.save();
    painter.translate(pass.left, -pass.scrollY);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const double top = std::max(0.0, pass.scrollY - 20);
    if (y > top) {
        painter.setPen(QPen(red, 2, Qt::SolidLine, Qt::FlatCap));
        painter.drawLine(QPointF(runnerX, top), QPointF(runnerX, y));
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(withAlpha(red, pulse));
    painter.drawEllipse(QRectF(runnerX - 6, y - 6, 12, 12));

    // A soft glow standing in for a blurred disc: solid to the disc's edge, then fading out.
    const double haloRadius = 8;
    const double blur = 3;
    QRadialGradient halo(QPointF(runnerX, y), haloRadius + blur);
    const QColor glow = withAlpha(red, pulse * 0.4);
    halo.setColorAt(0, glow);
    halo.setColorAt((haloRadius - blur) / (haloRadius + blur), glow);
    halo.setColorAt(1, withAlpha(red, 0));
    painter.setBrush(halo);
    painter.drawEllipse(QPointF(runnerX, y), haloRadius + blur, haloRadius + blur);
    painter.restore();
}

QRectF runnerBounds(double left, double viewHeight)
{
    return QRectF(left + runnerX - 14, 0, 28, viewHeight);
}

} // namespace DeliveryPageDrawing
