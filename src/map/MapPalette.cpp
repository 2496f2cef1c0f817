#include "MapPalette.h"

#include "look/Look.h"

MapPalette MapPalette::forAppearance(bool isDark)
{
    const Look::Palette shared = Look::Palette::forAppearance(isDark);
    MapPalette p;
    p.isDark = isDark;
    p.ink = shared.ink;
    p.disclosureFace = isDark ? QColor::fromRgbF(0.2f, 0.2f, 0.2f) : QColor::fromRgbF(0.95f, 0.95f, 0.95f);
    p.accent = shared.accent;
    p.orange = shared.orange;
    return p;
}

QColor MapPalette::searchOrange(double green, double opacity)
{
    return QColor::fromRgbF(1.0f, float(green), 0.0f, float(opacity));
}
