#include "Look.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

namespace Look {

bool isDarkPalette(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightnessF() < 0.5;
}

bool isDarkAppearance()
{
    return isDarkPalette(QGuiApplication::palette());
}

QColor ink(bool isDark)
{
    return isDark ? QColor::fromRgbF(0.92f, 0.87f, 0.77f) : QColor::fromRgbF(0.24f, 0.16f, 0.11f);
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

Palette Palette::forAppearance(bool isDark)
{
    Palette p;
    p.isDark = isDark;
    p.ink = Look::ink(isDark);
    p.accent = QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight);
    p.orange = isDark ? QColor(255, 159, 10) : QColor(255, 149, 0);
    p.red = isDark ? QColor(255, 69, 58) : QColor(255, 59, 48);
    p.green = isDark ? QColor(48, 209, 88) : QColor(52, 199, 89);
    return p;
}

double monotonicSeconds()
{
    static const QElapsedTimer clock = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    return double(clock.nsecsElapsed()) / 1e9;
}

} // namespace Look
