#pragma once

#include "ColumnFrameIndex.h"
#include "ColumnLayout.h"

#include "core/SermonNode.h"

#include <QBrush>
#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>
#include <unordered_map>

class QPainter;
class QPalette;

// The colours of one pass: the warm ink for text, the primary colour for rules and dots, the
// accent for the selection and the text background that the fades run into.
struct ColumnColors {
    QColor text;
    QColor primary;
    QColor accent;
    QColor background;

    static ColumnColors forAppearance(bool isDark, const QPalette& palette);
};

// Everything one frame of the columns view is drawn from. The tables belong to the canvas.
struct ColumnDrawInput {
    const ColumnLayout* layout = nullptr; // the target layout: columns, size and the pinned text
    const ColumnFrames* frames = nullptr; // what is drawn: the animated frames
    const ColumnFrameIndex* index = nullptr; // `frames` by column
    const ColumnFrameIndex* targetIndex = nullptr; // the layout's frames by column
    const std::unordered_map<NodeID, int>* subtreeRightmost = nullptr;
    const std::unordered_map<NodeID, NodeID>* nextSiblingID = nullptr;
    const std::unordered_map<NodeID, SermonNodePtr>* nodeLookup = nullptr;
    QPointF panOffset;
    QSizeF viewportSize;
    std::optional<NodeID> selectedNodeID;
    std::optional<NodeID> editingNodeID;
};

namespace ColumnDrawing {

// Counts of what one pass drew, for tests and measurements.
struct Stats {
    int cells = 0; // normal, pinned and narrowing cells
    int rotatedTexts = 0;
    int dots = 0;
};

// The whole table, back to front: row rules, selection band, cells, pinned cells, narrowing
// columns, rotated strips, dividers, branch separators. The caller fills the background.
Stats draw(QPainter& painter, const ColumnDrawInput& input, const ColumnColors& colors);

// Qt's raster engine hands a fill taller than about a hundred rows to its thread pool in
// pieces; for the thin, tall strips of this view the hand-offs cost far more than the fill.
// This fills in bands of whole device rows below that size: the same pixels, on this thread.
void fillInBands(QPainter& painter, const QRectF& rect, const QBrush& brush);

} // namespace ColumnDrawing
