#pragma once

#include <QColor>

class QPalette;

// The look every view shares: which appearance is in force, the warm ink, the strong colours
// and the easing curves. One home, so that the map, the columns, delivery and the windows agree.
namespace Look {

// Dark when the window colour of the palette is closer to black than to white.
bool isDarkPalette(const QPalette& palette);
// The same question about the application's palette, asked at the start of each drawing pass.
bool isDarkAppearance();

// The warm text and line colour of the canvases; shades come from opacity.
QColor ink(bool isDark);
// `color` with its alpha multiplied by `opacity`.
QColor withAlpha(QColor color, double opacity);

// e = 1 - (1 - t)^3, with t clamped to [0, 1].
double easeOutCubic(double t);
// Smooth at both ends, for fades.
double easeInOut(double t);

// Seconds on a monotonic clock shared by the animations (their tests inject their own).
double monotonicSeconds();

// The strong colours of one appearance. The accent is the desktop's (the palette's highlight),
// the others are fixed pairs.
struct Palette {
    bool isDark = false;
    QColor ink;
    QColor accent;
    QColor orange;
    QColor red;
    QColor green;

    static Palette forAppearance(bool isDark);
    static Palette current() { return forAppearance(isDarkAppearance()); }

    bool operator==(const Palette&) const = default;
};

} // namespace Look
