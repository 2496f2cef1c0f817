#include "ColumnDrawing.h"

#include "CollapseResolver.h"
#include "ColumnStickyState.h"
#include "WrappedLines.h"
#include "look/EmojiText.h"
#include "look/Look.h"

#include <QFontMetricsF>
#include <QHash>
#include <QLinearGradient>
#include <QPainter>
#include <QPalette>
#include <QStaticText>

#include <algorithm>
#include <cmath>

namespace {

using ColumnDrawing::fillInBands;

constexpr double row = ColumnLayout::rowHeight;
constexpr double inset = ColumnLayout::columnTextInset;
// The text's top below the top of its 28-point row.
constexpr double textTop = 6;
constexpr double fadeWidth = 14;
constexpr double dotDiameter = 5;

// A fade into the background across a rectangle, from `fromOpacity` at `start` to `toOpacity`
// at `end` (points in the painter's coordinates).
void fillFade(QPainter& painter, const QRectF& rect, QPointF start, QPointF end, const QColor& background,
              double fromOpacity, double toOpacity)
{
    if (rect.isEmpty())
        return;
    QLinearGradient gradient(start, end);
    gradient.setColorAt(0, Look::withAlpha(background, fromOpacity));
    gradient.setColorAt(1, Look::withAlpha(background, toOpacity));
    fillInBands(painter, rect, gradient);
}

// A fade of 14 points at the right edge of a clip, transparent on its left.
void fadeRightEdge(QPainter& painter, const QRectF& clip, const QColor& background)
{
    const QRectF band(clip.right() - fadeWidth, clip.top(), fadeWidth, clip.height());
    fillFade(painter, band, QPointF(band.left(), 0), QPointF(band.right(), 0), background, 0, 1);
}

// Shaping a line is most of the cost of drawing it, and a frame draws the same lines as the one
// before: keep them shaped. Bounded by clearing, as the wrapping cache is.
const QStaticText& shapedLine(const QString& text, bool semibold)
{
    thread_local QHash<QString, QStaticText> cache[2];
    QHash<QString, QStaticText>& lines = cache[semibold];
    if (const auto hit = lines.constFind(text); hit != lines.constEnd())
        return *hit;
    if (lines.size() >= 20000)
        lines.clear();
    QStaticText shaped(text);
    shaped.setTextFormat(Qt::PlainText);
    shaped.prepare(QTransform(), columnFont(semibold));
    return *lines.insert(text, shaped);
}

struct Pass {
    QPainter& painter;
    const ColumnDrawInput& in;
    const ColumnColors& colors;
    const ColumnLayout& layout; // columns and size; the pinned text
    const ColumnFrames& frames; // what is drawn
    const ColumnFrameIndex& index; // `frames` by column
    std::vector<CollapseResolver::AdjustedColumn> adjusted;
    std::map<int, ColumnStickyState> sticky;
    QRectF view; // content coordinates
    QFont fonts[2];
    double ascent[2]; // of each font, for lines drawn from their baseline
    ColumnDrawing::Stats stats;

    // Each frame of column `c` whose subtree may reach into the view's rows (a superset: the
    // callers keep their exact tests).
    template <typename Visit>
    void forEachNearView(int c, Visit&& visit) const
    {
        index.forEachNear(c, view.top(), view.bottom(), std::forward<Visit>(visit));
    }
    bool isOffScreen(const CollapseResolver::AdjustedColumn& a) const
    {
        return a.xOrigin > in.viewportSize.width() || a.xOrigin + a.displayWidth < 0;
    }

    double naturalWidth(int c) const { return layout.columnXEdges[size_t(c) + 1] - layout.columnXEdges[size_t(c)]; }
    const CollapseResolver::AdjustedColumn* adjustedOf(int c) const
    {
        return c >= 0 && size_t(c) < adjusted.size() ? &adjusted[size_t(c)] : nullptr;
    }
    double screenX(int c) const
    {
        if (const auto* a = adjustedOf(c))
            return a->xOrigin;
        return size_t(c) < layout.columnXEdges.size() ? layout.columnXEdges[size_t(c)] + in.panOffset.x() : 0;
    }
    bool isNarrowed(int c) const
    {
        const auto* a = adjustedOf(c);
        return a && (a->isRotated || a->displayWidth < naturalWidth(c));
    }
    bool isSelected(const NodeID& id) const { return in.selectedNodeID && *in.selectedNodeID == id; }
    bool isEditing(const NodeID& id) const { return in.editingNodeID && *in.editingNodeID == id; }
    bool isStickyNode(const ColumnNodeFrame& frame) const
    {
        const auto s = sticky.find(frame.column);
        return s != sticky.end() && s->second.nodeID == frame.nodeID;
    }
    const SermonNode* nodeOf(const NodeID& id) const
    {
        const auto n = in.nodeLookup->find(id);
        return n != in.nodeLookup->end() ? n->second.get() : nullptr;
    }

    // The wrapped lines of a node at `width`, drawn from (x, top) inside `clip`.
    void drawLines(const NodeID& id, int column, double width, double x, double top, const QRectF& clip)
    {
        const SermonNode* node = nodeOf(id);
        if (!node)
            return;
        const bool semibold = column == 0;
        painter.save();
        painter.setClipRect(clip);
        painter.setFont(fonts[semibold]);
        painter.setPen(colors.text);
        for (const WrappedLine& line : wrappedLines(node->text(), semibold, width)) {
            const double y = top + line.yOffset + textTop;
            if (y > clip.bottom() || y + row < clip.top())
                continue;
            if (EmojiText::mayHoldEmoji(line.string))
                EmojiText::drawLine(painter, QPointF(x, y + ascent[semibold]), fonts[semibold], line.string);
            else
                painter.drawStaticText(QPointF(x, y), shapedLine(line.string, semibold));
        }
        if (!isSelected(id))
            fadeRightEdge(painter, clip, colors.background);
        painter.restore();
        ++stats.cells;
    }

    void rowRules()
    {
        std::vector<QLineF> lines;
        const int first = std::max(1, int(std::floor(view.top() / row)));
        const int last = int(std::ceil(view.bottom() / row));
        for (int c = 0; c < layout.columnCount; ++c) {
            const auto* a = adjustedOf(c);
            if (a && a->isRotated)
                continue;
            const double x1 = screenX(c) + inset;
            const double x2 = a ? a->xOrigin + a->displayWidth - inset
                                : layout.columnXEdges[size_t(c) + 1] - inset + in.panOffset.x();
            if (x2 <= x1 || x2 < 0 || x1 > in.viewportSize.width())
                continue;
            const auto s = sticky.find(c);
            for (int r = first; r <= last; ++r) {
                const double y = r * row;
                if (!(y < layout.totalSize.height()))
                    break;
                if (s != sticky.end() && s->second.naturalOriginY <= y && y <= s->second.subtreeBottomY)
                    continue;
                lines.emplace_back(x1, y + in.panOffset.y(), x2, y + in.panOffset.y());
            }
        }
        painter.setPen(QPen(Look::withAlpha(colors.primary, 0.06), 1));
        painter.drawLines(lines.data(), int(lines.size()));
    }

    void selectionBand()
    {
        if (!in.selectedNodeID)
            return;
        const auto f = frames.find(*in.selectedNodeID);
        if (f == frames.end())
            return;
        const ColumnNodeFrame& frame = f->second;
        if (!(size_t(frame.column) + 1 < layout.columnXEdges.size()))
            return;
        const auto* a = adjustedOf(frame.column);
        const double width = a ? a->displayWidth : naturalWidth(frame.column);
        fillInBands(painter,
                    QRectF(screenX(frame.column), frame.subtreeYRange.lower + in.panOffset.y(), width,
                           frame.subtreeYRange.height()),
                    Look::withAlpha(colors.accent, 0.2));
    }

    void normalCells()
    {
        for (int c = 0; c < index.columnCount(); ++c) {
            if (isNarrowed(c))
                continue;
            // The text lies within the subtree's rows, so the rows near the view hold every cell
            // that meets it.
            forEachNearView(c, [&](const ColumnNodeFrame& frame) {
                const NodeID& id = frame.nodeID;
                if (isEditing(id) || isStickyNode(frame))
                    return;
                if (!QRectF(frame.origin, frame.size).intersects(view))
                    return;
                const double x = screenX(frame.column);
                const double top = frame.origin.y() + in.panOffset.y();
                drawLines(id, frame.column, frame.size.width(), x + inset, top,
                          QRectF(x + inset, top, frame.size.width() - inset, frame.size.height()));
            });
        }
    }

    void stickyCells()
    {
        for (const auto& [column, state] : sticky) {
            if (isEditing(state.nodeID))
                continue;
            const auto* a = adjustedOf(column);
            if (a && a->isRotated)
                continue;
            const auto f = frames.find(state.nodeID);
            if (f == frames.end() || !nodeOf(state.nodeID) || state.subtreeBottomY <= state.pinnedTextY)
                continue;
            const ColumnNodeFrame& frame = f->second;
            const double width = a && isNarrowed(column) ? a->displayWidth : frame.size.width();
            const double x = screenX(column);
            const QRectF clip(x, state.pinnedTextY + in.panOffset.y(), width, state.subtreeBottomY - state.pinnedTextY);
            drawLines(state.nodeID, column, frame.size.width(), x + inset, state.pinnedTextY + in.panOffset.y(), clip);
            if (state.pinnedTextY + state.textHeight > state.subtreeBottomY) {
                // The end of its branch cuts the pinned text: fade the cut.
                const double bottom = clip.bottom();
                const double top = std::max(bottom - fadeWidth, clip.top());
                fillFade(painter, QRectF(clip.left(), top, clip.width(), bottom - top), QPointF(0, top),
                         QPointF(0, bottom), colors.background, 0, 1);
            }
        }
    }

    void narrowingColumns()
    {
        for (const auto& a : adjusted) {
            if (a.isRotated || !(a.displayWidth < naturalWidth(a.column)) || isOffScreen(a))
                continue;
            const double clipWidth = std::max(a.displayWidth - inset, 0.0);
            const double tx = a.xOrigin + inset;
            forEachNearView(a.column, [&](const ColumnNodeFrame& frame) {
                const NodeID& id = frame.nodeID;
                if (isEditing(id) || isStickyNode(frame))
                    return;
                const double upper = frame.subtreeYRange.upper;
                if (upper <= view.top() || view.bottom() <= frame.origin.y())
                    return;
                // Wrapped at the natural width, so that the text holds still while it narrows.
                const double top = frame.origin.y() + in.panOffset.y();
                drawLines(id, a.column, naturalWidth(a.column), tx, top,
                          QRectF(tx, top, clipWidth, upper - frame.origin.y()));
            });
        }
    }

    void rotatedStrips()
    {
        const QColor dotColor = Look::withAlpha(colors.primary, 0.25);
        for (const auto& a : adjusted) {
            if (!a.isRotated || isOffScreen(a))
                continue;
            const double midX = a.xOrigin + a.displayWidth / 2;
            const bool semibold = a.column == 0;
            const QFontMetricsF metrics(fonts[semibold]);
            const auto s = sticky.find(a.column);
            forEachNearView(a.column, [&](const ColumnNodeFrame& frame) {
                const NodeID& id = frame.nodeID;
                const SermonNode* node = nodeOf(id);
                if (!node)
                    return;
                const double lower = frame.subtreeYRange.lower;
                const double upper = frame.subtreeYRange.upper;
                if (upper <= view.top() || lower >= view.bottom())
                    return;
                if (!node->hasChildren()) {
                    // One dot for each line of text.
                    const int n = std::max(1, int(frame.size.height() / row));
                    painter.setRenderHint(QPainter::Antialiasing, true);
                    painter.setPen(Qt::NoPen);
                    painter.setBrush(dotColor);
                    for (int i = 0; i < n; ++i)
                        painter.drawEllipse(QRectF(midX - dotDiameter / 2,
                                                   lower + i * row + row / 2 + in.panOffset.y() - dotDiameter / 2,
                                                   dotDiameter, dotDiameter));
                    painter.setRenderHint(QPainter::Antialiasing, false);
                    stats.dots += n;
                    return;
                }
                if (isEditing(id))
                    return;
                const double start = s != sticky.end() && s->second.nodeID == id ? s->second.pinnedTextY : lower;
                const QSizeF textSize(EmojiText::horizontalAdvance(metrics, fonts[semibold], node->text()),
                                      metrics.height());
                const double available = std::max(upper - inset - (start + inset), 0.0);
                painter.save();
                painter.setClipRect(QRectF(a.xOrigin + inset, start + in.panOffset.y(), a.displayWidth - 2 * inset,
                                           std::max(upper - inset - start, 0.0)));
                painter.translate(midX, start + inset + in.panOffset.y());
                painter.rotate(-90);
                painter.setFont(fonts[semibold]);
                painter.setPen(colors.text);
                painter.setRenderHint(QPainter::TextAntialiasing, true);
                EmojiText::drawLine(
                    painter, QPointF(-std::min(textSize.width(), available), -textSize.height() / 2 + metrics.ascent()),
                    fonts[semibold], node->text());
                painter.restore();
                ++stats.rotatedTexts;
                if (textSize.width() > available) {
                    // Cut at the top, where the text would go on.
                    const QRectF fade(a.xOrigin + inset, start + in.panOffset.y(), a.displayWidth - 2 * inset,
                                      fadeWidth);
                    fillFade(painter, fade, QPointF(0, fade.top()), QPointF(0, fade.bottom()), colors.background, 1, 0);
                }
            });
        }
    }

    void dividers()
    {
        std::vector<QLineF> lines;
        const double h = in.viewportSize.height();
        const auto add = [&](double x) {
            if (-1 <= x && x <= in.viewportSize.width() + 1)
                lines.emplace_back(x, 0, x, h);
        };
        if (adjusted.empty())
            for (int i = 1; i <= layout.columnCount; ++i)
                add(layout.columnXEdges[size_t(i)] + in.panOffset.x());
        for (const auto& a : adjusted)
            add(a.xOrigin + a.displayWidth);
        painter.setPen(QPen(Look::withAlpha(colors.primary, 0.25), 1));
        painter.drawLines(lines.data(), int(lines.size()));
    }

    void branchSeparators()
    {
        std::vector<QLineF> lines;
        const double h = in.viewportSize.height();
        // A rule lies at the bottom of a subtree, so only subtrees that end near the view can
        // give one.
        const double top = -1 - in.panOffset.y();
        const double bottom = h + 1 - in.panOffset.y();
        for (int c = 0; c < index.columnCount(); ++c) {
            index.forEachNear(c, top, bottom, [&](const ColumnNodeFrame& frame) {
                const double y = frame.subtreeYRange.upper + in.panOffset.y();
                if (!(-1 <= y && y <= h + 1))
                    return;
                const NodeID& id = frame.nodeID;
                const auto nextEntry = in.nextSiblingID->find(id);
                if (nextEntry == in.nextSiblingID->end())
                    return;
                const NodeID& next = nextEntry->second;
                const auto r1 = in.subtreeRightmost->find(id);
                const int first = r1 != in.subtreeRightmost->end() ? r1->second : frame.column;
                const auto r2 = in.subtreeRightmost->find(next);
                const int rightmost = std::max(first, r2 != in.subtreeRightmost->end() ? r2->second : first);
                const double x1 = screenX(frame.column) + inset;
                double x2 = 0;
                if (!adjusted.empty()) {
                    const auto* a = adjustedOf(rightmost);
                    if (!a)
                        return;
                    x2 = a->xOrigin + a->displayWidth - inset;
                } else {
                    if (!(size_t(rightmost) + 1 < layout.columnXEdges.size()))
                        return;
                    x2 = layout.columnXEdges[size_t(rightmost) + 1] - inset + in.panOffset.x();
                }
                if (x1 < x2)
                    lines.emplace_back(x1, y, x2, y);
            });
        }
        painter.setPen(QPen(Look::withAlpha(colors.primary, 0.25), 1));
        painter.drawLines(lines.data(), int(lines.size()));
    }
};

} // namespace

ColumnColors ColumnColors::forAppearance(bool isDark, const QPalette& palette)
{
    return ColumnColors{Look::ink(isDark), palette.color(QPalette::WindowText),
                        Look::Palette::forAppearance(isDark).accent, palette.color(QPalette::Base)};
}

namespace ColumnDrawing {

void fillInBands(QPainter& painter, const QRectF& rect, const QBrush& brush)
{
    constexpr double band = 64;
    const QTransform& t = painter.deviceTransform();
    if (rect.height() <= band || t.type() > QTransform::TxTranslate) {
        painter.fillRect(rect, brush);
        return;
    }
    // Cut at whole device rows, so that the bands meet without a gap or an overlap.
    const double dy = t.dy();
    for (double y = rect.top(); y < rect.bottom();) {
        const double next = std::min(std::floor(y + dy + band) - dy, rect.bottom());
        painter.fillRect(QRectF(rect.left(), y, rect.width(), next - y), brush);
        y = next;
    }
}

Stats draw(QPainter& painter, const ColumnDrawInput& input, const ColumnColors& colors)
{
    if (!input.layout || input.layout->columnCount < 1)
        return {};
    const ColumnLayout& layout = *input.layout;
    const ColumnFrames& frames = input.frames ? *input.frames : layout.frames;
    // Without the caller's tables, made here for this pass.
    ColumnFrameIndex ownIndex;
    ColumnFrameIndex ownTargetIndex;
    if (!input.index)
        ownIndex.rebuild(frames, layout.columnCount);
    if (!input.targetIndex)
        ownTargetIndex.rebuild(layout.frames, layout.columnCount);
    Pass pass{
        painter,
        input,
        colors,
        layout,
        frames,
        input.index ? *input.index : ownIndex,
        CollapseResolver::adjustedColumns(layout.columnCount, layout.columnXEdges, -input.panOffset.x()),
        ColumnStickyState::compute(layout.frames, input.targetIndex ? *input.targetIndex : ownTargetIndex,
                                   -input.panOffset.y()),
        QRectF(-input.panOffset.x(), -input.panOffset.y(), input.viewportSize.width(), input.viewportSize.height()),
        {columnFont(false), columnFont(true)},
        {QFontMetricsF(columnFont(false)).ascent(), QFontMetricsF(columnFont(true)).ascent()},
        {}};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    pass.rowRules();
    pass.selectionBand();
    pass.normalCells();
    pass.stickyCells();
    pass.narrowingColumns();
    pass.rotatedStrips();
    pass.dividers();
    pass.branchSeparators();
    painter.restore();
    return pass.stats;
}

} // namespace ColumnDrawing
