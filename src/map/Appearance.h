#pragma once

#include <QColor>

class QPalette;

// Small helpers every canvas shares: which theme is in force, the warm ink and the easing curve.

// Dark when the window colour of the palette is closer to black than to white.
bool isDarkPalette(const QPalette& palette);
// The same question about the application's palette, asked at the start of each drawing pass.
bool isDarkAppearance();

// The warm text and line colour of the canvases; shades come from opacity.
QColor inkColor(bool isDark);

// e = 1 - (1 - t)^3, with t clamped to [0, 1].
double easeOutCubic(double t);
