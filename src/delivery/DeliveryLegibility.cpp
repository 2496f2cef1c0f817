#include "DeliveryLegibility.h"

#include <algorithm>
#include <cmath>

namespace DeliveryLegibility {

namespace {

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& c)
{
    return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF());
}

QColor mix(const QColor& a, const QColor& b, double t)
{
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * t),
                            float(a.greenF() + (b.greenF() - a.greenF()) * t),
                            float(a.blueF() + (b.blueF() - a.blueF()) * t));
}

} // namespace

QColor composite(const QColor& color, const QColor& background)
{
    const QColor opaque = background.toRgb();
    const double a = color.alphaF();
    QColor top = color.toRgb();
    top.setAlphaF(1);
    return mix(opaque, top, a);
}

double contrastRatio(const QColor& color, const QColor& background)
{
    const double l1 = luminance(composite(color, background));
    const double l2 = luminance(background.toRgb());
    return (std::max(l1, l2) + 0.05) / (std::min(l1, l2) + 0.05);
}

QColor legible(const QColor& color, const QColor& background, double minimum)
{
    const QColor start = composite(color, background);
    if (contrastRatio(start, background) >= minimum)
        return start;
    // Toward whichever end of the scale is farther from the background.
    const QColor end = luminance(background.toRgb()) > 0.18 ? QColor(Qt::black) : QColor(Qt::white);
    // Bisection: the least change that reaches the ratio keeps the hue as much as it can.
    double lo = 0, hi = 1;
    for (int i = 0; i < 24; ++i) {
        const double mid = (lo + hi) / 2;
        if (contrastRatio(mix(start, end, mid), background) >= minimum)
            hi = mid;
        else
            lo = mid;
    }
    return mix(start, end, hi);
}

} // namespace DeliveryLegibility
