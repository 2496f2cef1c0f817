#pragma once

#include "MapDrawState.h"

#include <QSizeF>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

class QPainter;
class TextBitmapCache;
struct MapLayoutState;
struct MapPalette;

// What one pass did, for tracing and for tests.
struct MapDrawStats {
    int connections = 0; // expanded parents whose connections were considered
    int drawn = 0; // live nodes drawn after culling
};

// The immediate-mode drawing of the whole map: a function of the layout tables, the draw state,
// the palette and the text bitmaps, painting into any QPainter (a widget or a plain image).
namespace MapDrawing {

// Nodes this far beyond the view's edge are still drawn, so nothing pops in at the border.
inline constexpr double cullMargin = 50;

// The part of the canvas in view, in canvas points, grown by the cull margin.
QRectF visibleRect(QSizeF viewSize, QPointF panOffset, double scale);

// "3 min" for a branch's words at a pace, rounded up; empty when there are no words.
QString timeBadgeText(int words, int wordsPerMinute);

MapDrawStats drawCanvas(QPainter& painter, QSizeF viewSize, const MapLayoutState& tables, const MapDrawState& state,
                        const MapPalette& palette, TextBitmapCache& textCache);

} // namespace MapDrawing
