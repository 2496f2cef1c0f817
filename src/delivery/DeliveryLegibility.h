#pragma once

#include <QColor>

// Contrast as the web's accessibility guidelines measure it, for figures that must be read from
// a step back: 4.5:1 is the least for text of normal weight.
namespace DeliveryLegibility {

constexpr double minimumContrast = 4.5;

// `color` laid over the opaque `background`, as it ends up on the screen.
QColor composite(const QColor& color, const QColor& background);
// (L1 + 0.05) / (L2 + 0.05) of the composited colour and the background; 1 to 21.
double contrastRatio(const QColor& color, const QColor& background);
// The same hue moved toward black or white, whichever lies farther from the background, until
// it meets `minimum`; opaque. A colour that already meets it comes back composited only.
QColor legible(const QColor& color, const QColor& background, double minimum = minimumContrast);

} // namespace DeliveryLegibility
