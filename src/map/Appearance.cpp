#include "Appearance.h"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

bool isDarkPalette(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightnessF() < 0.5;
}

bool isDarkAppearance()
{
    return isDarkPalette(QGuiApplication::palette());
}

QColor inkColor(bool isDark)
{
    return isDark ? QColor::fromRgbF(0.92f, 0.87f, 0.77f) : QColor::fromRgbF(0.24f, 0.16f, 0.11f);
}

double easeOutCubic(double t)
{
    const double c = std::clamp(t, 0.0, 1.0);
    const double u = 1.0 - c;
    return 1.0 - u * u * u;
}
