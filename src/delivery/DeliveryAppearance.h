#pragma once

#include <QColor>

class QPalette;

// The colours of the delivery view, asked of the palette in force at the start of each pass.
namespace DeliveryAppearance {

bool isDarkAppearance();
// The warm text and line colour; shades come from opacity.
QColor ink(bool isDark);
QColor primary();
QColor secondary();
QColor tertiary();
QColor accent();
QColor red();
QColor orange();
QColor green();
// `color` with its alpha multiplied by `opacity`.
QColor withAlpha(QColor color, double opacity);

// e = 1 - (1 - t)^3, t clamped to [0, 1].
double easeOutCubic(double t);
// Smooth at both ends, for fades.
double easeInOut(double t);

} // namespace DeliveryAppearance
