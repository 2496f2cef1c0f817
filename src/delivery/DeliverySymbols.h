#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

// The few symbols of the delivery view, drawn as vector paths so that they are crisp at any
// scale and need no icon theme.
namespace DeliverySymbols {

enum class Symbol { playCircleFill, pauseCircleFill, stopCircleFill, eye, eyeFill, chevronDown };

// Draws `symbol` centred in `rect` (its size is the symbol's point size), in `color`. The
// glyphs of the filled circles are cut out, so the background shows through them.
void draw(QPainter& painter, Symbol symbol, const QRectF& rect, const QColor& color, double weight = 1.0);

} // namespace DeliverySymbols
