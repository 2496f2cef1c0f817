#include "MapPalette.h"

#include "Appearance.h"

MapPalette MapPalette::forAppearance(bool isDark)
{
    MapPalette p;
    p.isDark = isDark;
    p.ink = inkColor(isDark);
    p.disclosureFace = isDark ? QColor::fromRgbF(0.2f, 0.2f, 0.2f) : QColor::fromRgbF(0.95f, 0.95f, 0.95f);
    // A fixed blue and orange stand where a desktop offers no system accent.
    p.accent = isDark ? QColor::fromRgbF(0.04f, 0.52f, 1.0f) : QColor::fromRgbF(0.0f, 0.48f, 1.0f);
    p.orange = isDark ? QColor::fromRgbF(1.0f, 0.62f, 0.04f) : QColor::fromRgbF(1.0f, 0.58f, 0.0f);
    return p;
}

QColor MapPalette::searchOrange(double green, double opacity)
{
    return QColor::fromRgbF(1.0f, float(green), 0.0f, float(opacity));
}

QColor MapPalette::withOpacity(QColor colour, double opacity)
{
    colour.setAlphaF(float(colour.alphaF() * opacity));
    return colour;
}
