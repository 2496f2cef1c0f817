#include "DeliveryAppearance.h"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

namespace DeliveryAppearance {

bool isDarkAppearance()
{
    return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5;
}

QColor ink(bool isDark)
{
    return isDark ? QColor::fromRgbF(0.92f, 0.87f, 0.77f) : QColor::fromRgbF(0.24f, 0.16f, 0.11f);
}

QColor primary()
{
    return QGuiApplication::palette().color(QPalette::WindowText);
}

QColor secondary()
{
    return withAlpha(primary(), 0.55);
}

QColor tertiary()
{
    return withAlpha(primary(), 0.3);
}

QColor accent()
{
    return QGuiApplication::palette().color(QPalette::Highlight);
}

QColor red()
{
    return isDarkAppearance() ? QColor(255, 69, 58) : QColor(255, 59, 48);
}

QColor orange()
{
    return isDarkAppearance() ? QColor(255, 159, 10) : QColor(255, 149, 0);
}

QColor green()
{
    return isDarkAppearance() ? QColor(48, 209, 88) : QColor(52, 199, 89);
}

QColor withAlpha(QColor color, double opacity)
{
    color.setAlphaF(float(std::clamp(color.alphaF() * opacity, 0.0, 1.0)));
    return color;
}

double easeOutCubic(double t)
{
    const double u = 1.0 - std::clamp(t, 0.0, 1.0);
    return 1.0 - u * u * u;
}

double easeInOut(double t)
{
    const double c = std::clamp(t, 0.0, 1.0);
    return c < 0.5 ? 2 * c * c : 1 - (-2 * c + 2) * (-2 * c + 2) / 2;
}

} // namespace DeliveryAppearance
