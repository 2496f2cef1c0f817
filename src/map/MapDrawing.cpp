#include "MapDrawing.h"

#include "look/EmojiText.h"
#include "look/Look.h"

#include "MapLayoutState.h"
#include "MapPalette.h"
#include "TextBitmapCache.h"
#include "TreeLayout.h"

#include "core/PerformanceLog.h"
#include "core/ReadingPace.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace MapDrawing {

namespace {

QPen strokePen(const QColor& colour, double width)
{
    QPen pen(colour, width, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    return pen;
}

// Interval overlap with closed ends, so a horizontal line (zero height) still counts as visible.
bool touches(const QRectF& visible, double x0, double y0, double x1, double y1)
{
    return std::max(x0, x1) >= visible.left() && std::min(x0, x1) <= visible.right()
        && std::max(y0, y1) >= visible.top() && std::min(y0, y1) <= visible.bottom();
}

// Thin strokes on a pixel boundary fall across two rows at half strength. This moves a stroke's
// middle onto a pixel's middle (or onto a boundary for an even width) and makes its width whole
// device pixels, at the zoom and the device pixel ratio in force.
struct PixelGrid {
    double sx = 1, sy = 1, dx = 0, dy = 0;
    bool isActive = false;

    explicit PixelGrid(const QTransform& device)
    {
        if (device.type() > QTransform::TxScale || device.m11() <= 0 || device.m22() <= 0)
            return;
        sx = device.m11();
        sy = device.m22();
        dx = device.dx();
        dy = device.dy();
        isActive = true;
    }
    static double devicePixels(double width, double s) { return std::max(1.0, std::round(width * s)); }
    static double snap(double v, double width, double s, double d)
    {
        const double device = v * s + d;
        const double n = devicePixels(width, s);
        const double snapped = std::fmod(n, 2.0) == 1.0 ? std::floor(device) + 0.5 : std::round(device);
        return (snapped - d) / s;
    }
    double width(double w) const { return isActive ? devicePixels(w, sy) / sy : w; }
    double x(double v, double w) const { return isActive ? snap(v, w, sx, dx) : v; }
    double y(double v, double w) const { return isActive ? snap(v, w, sy, dy) : v; }
    QRectF rect(const QRectF& r, double w) const
    {
        return QRectF(QPointF(x(r.left(), w), y(r.top(), w)), QPointF(x(r.right(), w), y(r.bottom(), w)));
    }
};

// Everything one pass needs that is the same for every node.
struct Pass {
    QPainter& painter;
    const MapLayoutState& tables;
    const MapDrawState& state;
    const MapPalette& palette;
    TextBitmapCache& cache;
    PixelGrid grid;
    // Upright and italic (quotes) per depth class, as the bitmaps are rendered.
    std::array<QFont, 6> fonts{
        TreeLayout::nodeFont(0), TreeLayout::nodeFont(1), TreeLayout::nodeFont(2), italic(0), italic(1), italic(2)};
    std::array<QFontMetricsF, 6> metrics{QFontMetricsF(fonts[0]), QFontMetricsF(fonts[1]), QFontMetricsF(fonts[2]),
                                         QFontMetricsF(fonts[3]), QFontMetricsF(fonts[4]), QFontMetricsF(fonts[5])};

    static QFont italic(int depth)
    {
        return TreeLayout::mapFont(TreeLayout::nodeFontSize(depth), TreeLayout::nodeFontWeight(depth), true);
    }
    size_t fontIndex(int depth, bool isItalic) const { return size_t(std::clamp(depth, 0, 2) + (isItalic ? 3 : 0)); }

    QPen pen(const QColor& colour, double width) const { return strokePen(colour, grid.width(width)); }

    // Looks the bitmap up, renders and stores it on a miss; null when it can't be rendered.
    std::optional<TextBitmapCache::Bitmap> bitmap(const TextBitmapKey& key)
    {
        if (const auto* hit = cache.lookup(key, state.scale, palette.isDark))
            return TextBitmapCache::Bitmap{hit->image, hit->naturalSize};
        auto rendered = TextBitmapCache::render(key, state.scale, palette.isDark);
        if (rendered)
            cache.store(key, rendered->image, rendered->naturalSize);
        return rendered;
    }

    // Blits at a whole device pixel, where a plain scale and pan allow, so glyphs stay sharp.
    void drawBitmap(const TextBitmapCache::Bitmap& b, QPointF topLeft)
    {
        const QTransform world = painter.worldTransform();
        if (world.type() > QTransform::TxScale) {
            painter.drawImage(QRectF(topLeft, b.naturalSize), b.image);
            return;
        }
        const QPointF device = world.map(topLeft);
        const QRectF target(QPointF(std::round(device.x()), std::round(device.y())),
                            QSizeF(b.naturalSize.width() * world.m11(), b.naturalSize.height() * world.m22()));
        painter.setWorldTransform(QTransform());
        painter.drawImage(target, b.image);
        painter.setWorldTransform(world);
    }

    void drawLabel(const QString& text, double size, QFont::Weight weight, bool monospaced, double opacity,
                   const std::function<QPointF(QSizeF)>& place)
    {
        const auto b = bitmap(TextBitmapKey{text, size, double(weight), false, monospaced});
        if (!b)
            return;
        const double before = painter.opacity();
        painter.setOpacity(before * opacity);
        drawBitmap(*b, place(b->naturalSize));
        painter.setOpacity(before);
    }
};

// The layouts as a frame shows them: each node moved by what is left of its glide. Looked up
// per node, so that a frame never copies the whole table.
class ShownLayouts {
public:
    ShownLayouts(const NodeLayouts& layouts, const MapDrawState& state)
        : m_layouts(layouts)
        , m_state(state)
    {
    }
    bool empty() const { return m_layouts.empty(); }
    const NodeLayouts& final() const { return m_layouts; }
    std::optional<NodeLayout> find(const NodeID& id) const
    {
        const auto it = m_layouts.find(id);
        if (it == m_layouts.end())
            return std::nullopt;
        return shown(it->second);
    }
    NodeLayout shown(const NodeLayout& layout) const
    {
        NodeLayout moved = layout;
        moved.origin += m_state.animOffset(layout.nodeID);
        return moved;
    }
    // Whether any of a branch, wherever its glide shows it now, can be in `visible`.
    bool branchInView(const NodeLayout& final, const QRectF& visible) const
    {
        return final.branchTouches(visible, m_state.glideReach());
    }
    double reach() const { return m_state.glideReach(); }
    const NodeLayout* final(const SermonNode& node) const
    {
        const auto it = m_layouts.find(node.id());
        return it == m_layouts.end() ? nullptr : &it->second;
    }

private:
    const NodeLayouts& m_layouts;
    const MapDrawState& m_state;
};

// The children whose branches can reach the rows from `top` to `bottom` as the frame shows them,
// as a range of indices, found by bisection: a parent's children stack their branches top to
// bottom in their order, and a glide shows none further off than its reach. All of them when
// one has no layout.
std::pair<size_t, size_t> childrenAcross(const std::vector<SermonNodePtr>& children, const ShownLayouts& layouts,
                                         double top, double bottom)
{
    const size_t n = children.size();
    if (n < 16)
        return {0, n};
    top -= layouts.reach();
    bottom += layouts.reach();
    bool complete = true;
    // The first index for which `past` holds, `past` being false and then true along the children.
    auto firstPast = [&](auto&& past) {
        size_t lo = 0, hi = n;
        while (lo < hi) {
            const size_t mid = lo + (hi - lo) / 2;
            const NodeLayout* l = layouts.final(*children[mid]);
            if (!l) {
                complete = false;
                return n;
            }
            if (past(*l))
                hi = mid;
            else
                lo = mid + 1;
        }
        return lo;
    };
    const size_t from = firstPast([top](const NodeLayout& l) { return l.branchBottom >= top; });
    const size_t to = firstPast([bottom](const NodeLayout& l) { return l.branchTop > bottom; });
    if (!complete || from > to)
        return {0, n};
    return {from, to};
}

void drawBrace(QPainter& painter, double x, double top, double bottom, const QPen& pen)
{
    const double mid = (top + bottom) * 0.5;
    QPainterPath upper;
    upper.moveTo(x + 8, top);
    upper.quadTo(x, top, x, top + 8);
    upper.lineTo(x, mid - 8);
    upper.quadTo(x, mid, x - 8, mid);
    QPainterPath lower;
    lower.moveTo(x - 8, mid);
    lower.quadTo(x, mid, x, mid + 8);
    lower.lineTo(x, bottom - 8);
    lower.quadTo(x, bottom, x + 8, bottom);
    painter.strokePath(upper, pen);
    painter.strokePath(lower, pen);
}

int drawConnections(Pass& pass, const ShownLayouts& layouts, const QRectF& visible)
{
    const SermonNode* root = pass.tables.root.get();
    if (!root || layouts.empty())
        return 0;
    QPainter& painter = pass.painter;
    int count = 0;
    std::vector<const SermonNode*> stack{root};
    while (!stack.empty()) {
        const SermonNode* node = stack.back();
        stack.pop_back();
        if (node->isCollapsed() || !node->hasChildren())
            continue;
        const auto final = layouts.final().find(node->id());
        if (final == layouts.final().end() || !layouts.branchInView(final->second, visible))
            continue;
        const NodeLayout parent = layouts.shown(final->second);
        ++count;
        const auto& children = node->children();
        const auto [fromChild, toChild] = childrenAcross(children, layouts, visible.top(), visible.bottom());
        for (size_t i = fromChild; i < toChild; ++i)
            stack.push_back(children[i].get());

        const double startX = parent.maxX();

        if (node->hasOnlyLeafChildren() && children.size() >= 2) {
            const auto first = layouts.find(children.front()->id());
            const auto last = layouts.find(children.back()->id());
            if (!first || !last)
                continue;
            const double x = pass.grid.x(startX + 14, 1.0);
            const double top = first->origin.y() + 3 + 2;
            const double bottom = last->maxY() - 2;
            // Pixel-identical to stroking everything: a brace out of view can't touch the image.
            if (!touches(visible, x - 8, top, x + 8, bottom))
                continue;
            const double opacity = std::max(0.3 - 0.08 * parent.depth, 0.1);
            drawBrace(painter, x, top, bottom, pass.pen(Look::withAlpha(pass.palette.ink, opacity), 1.0));
            continue;
        }

        const double parentMidY = pass.grid.y(parent.midY(), 1.0);
        const double opacity = std::max(0.4 - 0.1 * node->depth(), 0.1);
        const QColor colour = Look::withAlpha(pass.palette.ink, opacity);
        // Siblings whose bends lie beyond the same edge of the view show the same shape in it: the
        // shared stub and trunk. Such a group is stroked once, at the opacity its members would
        // build up over each other, instead of once for each of perhaps hundreds of children
        // (every tall stroke costs a round through Qt's fill threads).
        struct Trunk {
            int count = 0;
            double r = 0;
            QPainterPath path;
        };
        Trunk above, below;
        enum class Drawn { hidden, joined, stroked };
        auto connect = [&](const SermonNode* child) {
            const auto cit = layouts.find(child->id());
            if (!cit)
                return Drawn::hidden;
            const NodeLayout& c = *cit;
            const bool childIsLeaf = !child->hasChildren();
            const double width = c.depth == 0 ? 2.0 : 1.0;
            const double rawEndY = childIsLeaf ? c.maxY() - 2 : c.midY();
            const double endY = pass.grid.y(rawEndY, width);
            const double endX = childIsLeaf ? c.origin.x() + 4 : c.origin.x();
            if (!touches(visible, startX, std::min(parentMidY, endY), endX, std::max(parentMidY, endY)))
                return Drawn::hidden;
            const double midX = pass.grid.x((startX + c.origin.x()) * 0.5, width);
            const double r = std::min({8.0, midX - startX, std::abs(endY - parentMidY) * 0.5});
            const bool straight = std::abs(rawEndY - parent.midY()) < 1 || (childIsLeaf && children.size() == 1);
            Trunk* trunk = straight || width != 1.0 ? nullptr
                : endY - r > visible.bottom()       ? &below
                : endY + r < visible.top()          ? &above
                                                    : nullptr;
            if (trunk && trunk->count > 0 && trunk->r == r) {
                ++trunk->count; // the same shape in view: no path to build
                return Drawn::joined;
            }
            QPainterPath path;
            if (straight) {
                const double y = childIsLeaf ? endY : parentMidY;
                path.moveTo(startX, y);
                path.lineTo(endX, y);
            } else {
                const double s = endY >= parentMidY ? r : -r;
                path.moveTo(startX, parentMidY);
                path.lineTo(midX - r, parentMidY);
                path.quadTo(midX, parentMidY, midX, parentMidY + s);
                path.lineTo(midX, endY - s);
                path.quadTo(midX, endY, midX + r, endY);
                path.lineTo(endX, endY);
            }
            if (trunk && trunk->count == 0) {
                trunk->count = 1;
                trunk->r = r;
                trunk->path = path;
                return Drawn::joined;
            }
            painter.strokePath(path, pass.pen(colour, width));
            return Drawn::stroked;
        };
        // The children well beyond an edge of the view bend beyond it alike: through the view to
        // a parent on the other side or in it, or not into it at all with the parent beyond the
        // same edge. So the first of them is looked at, and the rest join its trunk or stay out
        // of view with it. A child beginning left of the view might not reach it, so then each
        // is looked at.
        const size_t n = children.size();
        size_t farAbove = 0, farBelow = n;
        const NodeLayout* firstChild = n ? layouts.final(*children.front()) : nullptr;
        if (firstChild && firstChild->origin.x() >= visible.left()) {
            constexpr double clear = 24; // past any bend's radius, however the ends are snapped
            const auto [from, to] = childrenAcross(children, layouts, visible.top() - clear, visible.bottom() + clear);
            farAbove = from;
            farBelow = to;
        }
        auto connectAlike = [&](size_t from, size_t to, Trunk& trunk) {
            if (from >= to)
                return;
            const int before = trunk.count;
            const Drawn first = connect(children[from].get());
            if (first == Drawn::hidden)
                return;
            if (first == Drawn::joined && trunk.count == before + 1) {
                trunk.count += int(to - from - 1);
                return;
            }
            for (size_t i = from + 1; i < to; ++i)
                connect(children[i].get());
        };
        connectAlike(0, farAbove, above);
        for (size_t i = farAbove; i < farBelow; ++i)
            connect(children[i].get());
        connectAlike(farBelow, n, below);
        for (const Trunk* trunk : {&above, &below}) {
            if (trunk->count == 0)
                continue;
            const double built = 1.0 - std::pow(1.0 - opacity, trunk->count);
            painter.strokePath(trunk->path, pass.pen(Look::withAlpha(pass.palette.ink, built), 1.0));
        }
    }
    return count;
}

// The fold button and the time badge. Drawn after every node's body and rings, so that no
// selection ring runs through them and the next line's quote tint doesn't cover a badge.
void drawAdornments(Pass& pass, const NodeLayout& layout, const SermonNode* node)
{
    if (layout.isLeaf)
        return;
    QPainter& painter = pass.painter;
    const MapPalette& palette = pass.palette;
    const QRectF f = layout.frame();
    const int words = pass.tables.subtreeWordCount(layout.nodeID);
    const QString badge = timeBadgeText(words, pass.state.readingPaceWPM);
    const bool hasChildren = node && node->hasChildren();
    const bool collapsed = hasChildren && node->isCollapsed();
    if (hasChildren) {
        const QPointF centre(f.right(), f.center().y());
        painter.setPen(pass.pen(Look::withAlpha(palette.ink, 0.3), 1.0));
        painter.setBrush(palette.disclosureFace);
        painter.drawEllipse(centre, 7, 7);
        painter.setBrush(Qt::NoBrush);
        // Monospaced, so that "+" and "−" stand the same width in the circle.
        pass.drawLabel(collapsed ? QStringLiteral("+") : QString(QChar(0x2212)), 11, QFont::Medium, true, 0.5,
                       [&](QSizeF s) { return centre - QPointF(s.width() * 0.5, s.height() * 0.5); });
    }
    if (badge.isEmpty())
        return;
    if (collapsed) {
        // Leading edge beside the button, vertically centred.
        const QPointF anchor(f.right() + 7 + 4, f.center().y());
        pass.drawLabel(badge, 9, QFont::Normal, false, 0.3,
                       [&](QSizeF s) { return anchor - QPointF(2, s.height() * 0.5); });
    } else {
        // Top trailing corner under the frame's right end.
        const QPointF anchor(f.right() - 4, f.bottom() + 2);
        pass.drawLabel(badge, 9, QFont::Normal, false, 0.3,
                       [&](QSizeF s) { return anchor - QPointF(s.width() - 2, 0); });
    }
}

void drawNode(Pass& pass, const NodeLayout& layout, const QString& nodeText, bool isSelected,
              const std::optional<SearchHighlight>& marks)
{
    QPainter& painter = pass.painter;
    const MapPalette& palette = pass.palette;
    const PixelGrid& grid = pass.grid;
    const QRectF f = layout.frame();

    if (!layout.isLeaf) {
        const int d = layout.depth;
        const double a = d <= 0 ? 0.5 : d == 1 ? 0.35 : d == 2 ? 0.2 : 0.1;
        const double width = d == 0 ? 2.0 : 1.0;
        painter.setPen(pass.pen(Look::withAlpha(palette.ink, a), width));
        painter.setBrush(Look::withAlpha(palette.ink, a * 0.1));
        painter.drawRoundedRect(grid.rect(f, width), 6, 6);
    } else if (layout.isQuote) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(Look::withAlpha(palette.orange, palette.isDark ? 0.08 : 0.06));
        painter.drawRoundedRect(f.adjusted(-2, -1, 2, 1), 4, 4);
        painter.setBrush(Look::withAlpha(palette.orange, 0.5));
        painter.drawRoundedRect(QRectF(f.left() - 2, f.top() + 2, 3, f.height() - 4), 1.5, 1.5);
    } else {
        painter.setPen(pass.pen(Look::withAlpha(palette.ink, 0.15), 1.0));
        const double y = grid.y(f.bottom() - 2, 1.0);
        painter.drawLine(QPointF(f.left() + 4, y), QPointF(f.right() - 4, y));
    }

    painter.setBrush(Qt::NoBrush);
    if (marks) {
        const double grow = layout.isLeaf ? 4 : 3;
        const double radius = layout.isLeaf ? 6 : 8;
        const double width = marks->isCurrent ? 2.5 : 2.0;
        painter.setPen(marks->isCurrent ? pass.pen(MapPalette::searchOrange(0.55, 0.8), width)
                                        : pass.pen(MapPalette::searchOrange(0.7, 0.5), width));
        painter.drawRoundedRect(grid.rect(f.adjusted(-grow, -grow, grow, grow), width), radius, radius);
    }
    if (isSelected) {
        painter.setPen(pass.pen(palette.accent, 2.0));
        painter.drawRoundedRect(grid.rect(f.adjusted(-2, -2, 2, 2), 2.0), 8, 8);
    }

    QString text = nodeText;
    if (text.isEmpty())
        return;
    text.replace(QChar(0x2028), QLatin1Char('\n'));
    const double v = layout.isLeaf ? TreeLayout::leafVerticalPadding : TreeLayout::branchVerticalPadding;

    if (marks && !marks->ranges.empty()) {
        // Measured in the face the text is drawn in: a quote's italic runs narrower or wider.
        const size_t face = pass.fontIndex(layout.depth, layout.isQuote);
        const QFont& font = pass.fonts[face];
        const QFontMetricsF& fm = pass.metrics[face];
        auto width = [&](const QString& piece) { return std::ceil(EmojiText::horizontalAdvance(fm, font, piece)); };
        const double lineHeight = TreeLayout::lineHeight(pass.metrics[pass.fontIndex(layout.depth, false)]);
        const QStringList lines = text.split(QLatin1Char('\n'));
        std::vector<qsizetype> starts;
        qsizetype running = 0;
        for (const QString& line : lines) {
            starts.push_back(running);
            running += line.size() + 1;
        }
        painter.setPen(Qt::NoPen);
        painter.setBrush(marks->isCurrent ? MapPalette::searchOrange(0.55, 0.4) : MapPalette::searchOrange(0.8, 0.3));
        for (const auto& [start, end] : marks->ranges) {
            qsizetype index = 0;
            for (qsizetype i = 0; i < qsizetype(starts.size()); ++i)
                if (starts[size_t(i)] <= start)
                    index = i;
            const QString& line = lines[index];
            const qsizetype localStart = std::min(start - starts[size_t(index)], line.size());
            const qsizetype localEnd = std::max(localStart, std::min(end - starts[size_t(index)], line.size()));
            const double prefixW = width(line.left(localStart));
            const double matchW = width(line.mid(localStart, localEnd - localStart));
            painter.drawRoundedRect(
                QRectF(f.left() + 16 + prefixW - 1, f.top() + v + lineHeight * double(index), matchW + 2, lineHeight),
                2, 2);
        }
        painter.setBrush(Qt::NoBrush);
    }

    const TextBitmapKey key{text, TreeLayout::nodeFontSize(layout.depth),
                            double(TreeLayout::nodeFontWeight(layout.depth)), layout.isQuote};
    if (const auto b = pass.bitmap(key))
        pass.drawBitmap(*b, QPointF(f.left() + TreeLayout::horizontalPadding - 2, f.top() + v));
}

int drawNodes(Pass& pass, const ShownLayouts& layouts, const QRectF& visible)
{
    const MapDrawState& state = pass.state;
    QPainter& painter = pass.painter;
    // Branches drawn, with their opacity, for the fold buttons and badges on top.
    struct Branch {
        NodeLayout layout; // as shown, offsets applied
        double opacity;
        const SermonNode* node;
    };
    std::vector<Branch> branches;
    int drawn = 0;
    // The tree walked from the root, so that a branch out of view is passed over whole.
    std::vector<const SermonNode*> stack;
    if (pass.tables.root)
        stack.push_back(pass.tables.root.get());
    while (!stack.empty()) {
        const SermonNode* node = stack.back();
        stack.pop_back();
        const NodeID& id = node->id();
        const auto found = layouts.final().find(id);
        if (found == layouts.final().end() || !layouts.branchInView(found->second, visible))
            continue;
        if (!node->isCollapsed()) {
            const auto& children = node->children();
            const auto [from, to] = childrenAcross(children, layouts, visible.top(), visible.bottom());
            for (size_t i = from; i < to; ++i)
                stack.push_back(children[i].get());
        }
        if (state.editingNodeID && *state.editingNodeID == id)
            continue;
        const NodeLayout layout = layouts.shown(found->second);
        if (!visible.intersects(layout.frame()))
            continue;
        const bool fading = state.glide && state.glide->fadeIn.count(id) > 0;
        const double opacity = fading ? state.animationProgress : 1.0;
        painter.setOpacity(opacity);
        const bool isSelected =
            (state.selectedNodeID && *state.selectedNodeID == id) || state.selectedNodeIDs.count(id) > 0;
        std::optional<SearchHighlight> marks;
        if (state.isSearching && state.searchHighlight)
            marks = state.searchHighlight(*node);
        drawNode(pass, layout, node->text(), isSelected, marks);
        ++drawn;
        if (!layout.isLeaf)
            branches.push_back({layout, opacity, node});
    }
    for (const auto& [layout, opacity, node] : branches) {
        painter.setOpacity(opacity);
        drawAdornments(pass, layout, node);
    }
    painter.setOpacity(1.0);
    return drawn;
}

void drawDropIndicator(Pass& pass, const ShownLayouts& layouts, const DropTarget& target)
{
    const SermonNode* parent = pass.tables.node(target.parentID);
    const auto pit = layouts.find(target.parentID);
    if (!parent || !pit)
        return;
    const NodeLayout& p = *pit;
    const double indent = parent->hasOnlyLeafChildren() ? TreeLayout::leafIndent : TreeLayout::branchIndent;
    const auto& children = parent->children();
    auto layoutOf = [&](size_t i) { return layouts.find(children[i]->id()); };
    double x = 0, y = 0, w = 0;
    if (children.empty()) {
        x = p.maxX() + indent;
        y = p.midY();
        w = 60;
    } else if (target.landingIndex >= int(children.size())) {
        const auto last = layoutOf(children.size() - 1);
        if (!last)
            return;
        x = last->origin.x();
        w = last->size.width();
        y = last->maxY() + 2;
    } else {
        const auto at = layoutOf(size_t(std::max(target.landingIndex, 0)));
        if (!at)
            return;
        const auto before = target.landingIndex >= 1 ? layoutOf(size_t(target.landingIndex - 1)) : std::nullopt;
        const double yL = at->origin.y() - 2;
        if (before && std::abs(target.cursorY - (before->maxY() + 2)) < std::abs(target.cursorY - yL)) {
            x = before->origin.x();
            w = before->size.width();
            y = before->maxY() + 2;
        } else {
            x = at->origin.x();
            w = at->size.width();
            y = yL;
        }
    }
    QPainter& painter = pass.painter;
    y = pass.grid.y(y, 2.0);
    painter.setPen(pass.pen(pass.palette.accent, 2.0));
    painter.drawLine(QPointF(x, y), QPointF(x + w, y));
    painter.setPen(Qt::NoPen);
    painter.setBrush(pass.palette.accent);
    painter.drawEllipse(QPointF(x, y), 3, 3);
    painter.setBrush(Qt::NoBrush);
}

void drawLasso(Pass& pass, const QRectF& rect)
{
    QPainter& painter = pass.painter;
    QPen pen = pass.pen(Look::withAlpha(pass.palette.accent, 0.5), 1.0);
    pen.setDashPattern({4, 3});
    painter.setPen(pen);
    painter.setBrush(Look::withAlpha(pass.palette.accent, 0.08));
    painter.drawRoundedRect(pass.grid.rect(rect, 1.0), 2, 2);
    painter.setBrush(Qt::NoBrush);
}

} // namespace

QRectF visibleRect(QSizeF viewSize, QPointF panOffset, double scale)
{
    const double s = scale > 0 ? scale : 1.0;
    return QRectF(-panOffset.x() / s, -panOffset.y() / s, viewSize.width() / s, viewSize.height() / s)
        .adjusted(-cullMargin, -cullMargin, cullMargin, cullMargin);
}

QString timeBadgeText(int words, int wordsPerMinute)
{
    if (words < 1)
        return {};
    const int wpm = wordsPerMinute > 0 ? wordsPerMinute : ReadingPaces::defaultWPM;
    const int minutes = std::max((words + wpm - 1) / wpm, 1);
    return QStringLiteral("%1 min").arg(minutes);
}

MapDrawStats drawCanvas(QPainter& painter, QSizeF viewSize, const MapLayoutState& tables, const MapDrawState& state,
                        const MapPalette& palette, TextBitmapCache& textCache)
{
    const size_t total = tables.cachedLayouts.size();
    auto message = [&] { return QStringLiteral("nodes=%1 scale=%2").arg(total).arg(state.scale, 0, 'f', 2); };
    return performanceLog::signpostInterval("CanvasDraw", message, [&] {
        MapDrawStats stats;
        const QRectF visible = visibleRect(viewSize, state.panOffset, state.scale);

        // Animation only offsets what is shown; the tables keep the final places.
        const ShownLayouts shown(tables.cachedLayouts, state);
        const ShownLayouts* display = &shown;

        painter.save();
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.translate(state.panOffset);
        painter.scale(state.scale, state.scale);

        Pass pass{painter, tables, state, palette, textCache, PixelGrid(painter.deviceTransform())};
        stats.connections = performanceLog::signpostInterval("drawConnections", performanceLog::noMessage,
                                                             [&] { return drawConnections(pass, *display, visible); });
        stats.drawn = performanceLog::signpostInterval("drawNodes", performanceLog::noMessage,
                                                       [&] { return drawNodes(pass, *display, visible); });
        performanceLog::signpostEvent("DrawStats", [&] {
            return QStringLiteral("conn=%1 drawn=%2 total=%3 scale=%4 cache=%5")
                .arg(stats.connections)
                .arg(stats.drawn)
                .arg(total)
                .arg(state.scale, 0, 'f', 2)
                .arg(textCache.count());
        });

        for (const auto& [id, ghost] : state.glide ? state.glide->ghosts : std::unordered_map<NodeID, GhostNode>()) {
            if (!visible.intersects(ghost.layout.frame()))
                continue;
            painter.setOpacity(1.0 - state.animationProgress);
            // A line that leaves is in the tree no more: its text is the one it had.
            drawNode(pass, ghost.layout, ghost.text, false, std::nullopt);
            drawAdornments(pass, ghost.layout, nullptr);
            painter.setOpacity(1.0);
        }
        if (state.dragNodeID && state.dropTarget)
            drawDropIndicator(pass, *display, *state.dropTarget);
        if (state.lassoRect)
            drawLasso(pass, *state.lassoRect);

        painter.restore();
        return stats;
    });
}

} // namespace MapDrawing
