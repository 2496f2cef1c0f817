#pragma once

#include <QColor>

// The map's colours for one theme: the shared ones of Look, and the fold button's face.
struct MapPalette {
    bool isDark = false;
    QColor ink; // text, outlines, connections
    QColor disclosureFace; // fill of the fold button
    QColor accent; // selection ring, drop indicator, lasso
    QColor orange; // quote tint and bar

    static MapPalette forAppearance(bool isDark);

    // The search oranges: (1.0, g, 0.0) at an opacity.
    static QColor searchOrange(double green, double opacity);

    bool operator==(const MapPalette&) const = default;
};
