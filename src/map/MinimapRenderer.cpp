#include "MinimapRenderer.h"

#include "TreeLayout.h"

#include "core/PerformanceLog.h"
#include "core/SermonNode.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace MinimapRenderer {

MinimapCacheKey cacheKey(const SermonNode& root, const NodeLayouts& layouts, const QRectF& b, QSize pixelSize,
                         bool isDark)
{
    Fnv1a topology, text, layout;
    std::vector<const SermonNode*> stack{&root};
    while (!stack.empty()) {
        const SermonNode* node = stack.back();
        stack.pop_back();
        const NodeID& id = node->id();
        for (int i = 3; i >= 0; --i)
            topology.feedByte(uint8_t(id.data1 >> (8 * i)));
        for (uint16_t half : {id.data2, id.data3}) {
            topology.feedByte(uint8_t(half >> 8));
            topology.feedByte(uint8_t(half));
        }
        topology.feedBytes(id.data4, sizeof id.data4);
        topology.feed(uint64_t(int64_t(node->depth())));
        topology.feedByte(node->isCollapsed() ? 1 : 0);
        topology.feed(uint64_t(node->children().size()));
        text.feed(uint64_t(qHash(node->text(), 0)));
        if (node->isCollapsed())
            continue;
        // Reversed onto the stack, so that children are walked in their order.
        const auto& children = node->children();
        for (auto it = children.rbegin(); it != children.rend(); ++it)
            stack.push_back(it->get());
    }
    layout.feed(uint64_t(layouts.size()));
    for (double v : {b.left(), b.top(), b.width(), b.height()}) {
        uint64_t bits = 0;
        static_assert(sizeof bits == sizeof v);
        std::memcpy(&bits, &v, sizeof bits);
        layout.feed(bits);
    }
    return {topology.value, text.value, layout.value, pixelSize.width(), pixelSize.height(), isDark};
}

namespace {

struct Canceller {
    const std::function<bool()>& isCancelled;
    bool cancelled = false;
    bool operator()()
    {
        if (!cancelled && isCancelled && isCancelled())
            cancelled = true;
        return cancelled;
    }
};

QPointF rightMiddle(const NodeLayout& l)
{
    return {l.maxX(), l.midY()};
}

// Straight lines from each parent to its children; a parent of leaves only gets its bracket later.
bool collectLines(const Input& input, Canceller& cancelled, std::vector<QLineF>& lines)
{
    const TreeSnapshot& tree = input.root;
    std::vector<int> stack{0};
    while (!stack.empty()) {
        const TreeNodeSnapshot& node = tree.nodes[size_t(stack.back())];
        stack.pop_back();
        if (node.isCollapsed || node.childCount == 0)
            continue;
        const auto parent = input.layouts.find(node.id);
        if (parent == input.layouts.end())
            continue;
        for (int i = 0; i < node.childCount; ++i) {
            if (cancelled())
                return false;
            const int index = node.firstChild + i;
            if (node.hasOnlyLeafChildren) {
                stack.push_back(index);
                continue;
            }
            const auto child = input.layouts.find(tree.nodes[size_t(index)].id);
            if (child == input.layouts.end())
                continue;
            lines.emplace_back(rightMiddle(parent->second), QPointF(child->second.origin.x(), child->second.midY()));
            stack.push_back(index);
        }
    }
    return true;
}

void collectBrackets(const Input& input, std::vector<QLineF>& lines)
{
    const TreeSnapshot& tree = input.root;
    std::vector<int> stack{0};
    while (!stack.empty()) {
        const TreeNodeSnapshot& node = tree.nodes[size_t(stack.back())];
        stack.pop_back();
        if (node.isCollapsed)
            continue;
        for (int i = 0; i < node.childCount; ++i)
            stack.push_back(node.firstChild + i);
        if (!node.hasOnlyLeafChildren)
            continue;
        const auto parent = input.layouts.find(node.id);
        if (parent == input.layouts.end())
            continue;
        const NodeLayout* first = nullptr;
        const NodeLayout* last = nullptr;
        for (const TreeNodeSnapshot& child : tree.children(node)) {
            const auto it = input.layouts.find(child.id);
            if (it == input.layouts.end())
                continue;
            if (!first)
                first = &it->second;
            last = &it->second;
        }
        if (!first)
            continue;
        const double x = parent->second.maxX() + 8;
        const double firstY = first->midY(), lastY = last->midY();
        lines.emplace_back(QPointF(x, firstY), QPointF(x, lastY));
        lines.emplace_back(rightMiddle(parent->second), QPointF(x, (firstY + lastY) * 0.5));
    }
}

double boxOpacity(int depth)
{
    return depth <= 0 ? 0.5 : depth == 1 ? 0.35 : depth == 2 ? 0.2 : 0.1;
}

QColor withAlpha(QColor colour, double alpha)
{
    colour.setAlphaF(float(alpha));
    return colour;
}

} // namespace

std::optional<QImage> render(const Input& input, const std::function<bool()>& isCancelled)
{
    const int pw = input.pixelSize.width(), ph = input.pixelSize.height();
    const QRectF b = input.contentBounds;
    return performanceLog::signpostInterval(
        "MinimapRender", [&] { return QStringLiteral("px=%1x%2 nodes=%3").arg(pw).arg(ph).arg(input.layouts.size()); },
        [&]() -> std::optional<QImage> {
            if (pw <= 0 || ph <= 0 || b.width() <= 0 || b.height() <= 0 || !input.root.root())
                return std::nullopt;
            QImage image(pw, ph, QImage::Format_ARGB32_Premultiplied);
            if (image.isNull())
                return std::nullopt;
            image.fill(Qt::transparent);
            Canceller cancelled{isCancelled};
            const double s = std::min(pw / b.width(), ph / b.height());
            // Deliberately stark, not the map's warm ink: the picture is tiny.
            const QColor ink = input.isDark ? Qt::white : Qt::black;

            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            const QTransform canvas = QTransform::fromScale(s, s).translate(-b.left(), -b.top());
            painter.setTransform(canvas);

            std::vector<QLineF> lines;
            if (!collectLines(input, cancelled, lines))
                return std::nullopt;
            // Lines go down a batch at a time too, with a poll between batches.
            auto drawLines = [&](const QColor& colour) {
                painter.setPen(QPen(colour, 0.5));
                for (size_t at = 0; at < lines.size(); at += 256) {
                    painter.drawLines(lines.data() + at, int(std::min<size_t>(256, lines.size() - at)));
                    if (cancelled())
                        return false;
                }
                lines.clear();
                return true;
            };
            if (!drawLines(withAlpha(ink, 0.3)))
                return std::nullopt;
            collectBrackets(input, lines);
            if (!drawLines(withAlpha(ink, 0.25)))
                return std::nullopt;

            std::unordered_map<NodeID, const QString*> texts;
            texts.reserve(input.root.nodes.size());
            for (const TreeNodeSnapshot& node : input.root.nodes)
                texts.emplace(node.id, &node.text);

            // Text never falls below 2 pixels in height, whatever the scale.
            std::array<QFont, 3> fonts;
            std::array<double, 3> ascents{};
            for (int depth = 0; depth < 3; ++depth) {
                const double size = s <= 0.0001 ? 20000 * s : std::max(TreeLayout::nodeFontSize(depth) * s, 2.0);
                fonts[size_t(depth)] = TreeLayout::mapFont(size, TreeLayout::nodeFontWeight(depth));
                ascents[size_t(depth)] = QFontMetricsF(fonts[size_t(depth)]).ascent();
            }

            // Boxes are filled and stroked a batch at a time: one path per batch keeps the calls
            // few, and the batch bounds how long a cancelled render runs on.
            std::array<QPainterPath, 4> boxes;
            std::array<int, 4> batched{};
            constexpr int batchSize = 64;
            auto flushBoxes = [&](int depth) {
                const double a = boxOpacity(depth);
                painter.fillPath(boxes[size_t(depth)], withAlpha(ink, a * 0.1));
                painter.strokePath(boxes[size_t(depth)], QPen(withAlpha(ink, a), depth == 0 ? 2.0 : 1.0));
                boxes[size_t(depth)].clear();
                batched[size_t(depth)] = 0;
            };
            struct Label {
                QPointF baseline;
                int depthClass;
                double maxWidth;
                const QString* text;
            };
            std::vector<Label> labels;
            labels.reserve(input.layouts.size());
            int counted = 0;
            for (const auto& [id, l] : input.layouts) {
                if (++counted % 64 == 0 && cancelled())
                    return std::nullopt;
                if (l.isLeaf) {
                    lines.emplace_back(QPointF(l.origin.x(), l.maxY() - 2), QPointF(l.maxX(), l.maxY() - 2));
                } else {
                    const int depth = std::clamp(l.depth, 0, 3);
                    boxes[size_t(depth)].addRoundedRect(l.frame(), 6, 6);
                    if (++batched[size_t(depth)] == batchSize)
                        flushBoxes(depth);
                }
                const auto text = texts.find(id);
                if (text == texts.end() || text->second->isEmpty())
                    continue;
                const int depthClass = std::clamp(l.depth, 0, 2);
                const QPointF at = canvas.map(QPointF(l.origin.x() + 4, l.midY()));
                labels.push_back({at + QPointF(0, ascents[size_t(depthClass)] * 0.35), depthClass,
                                  (l.size.width() - 8) * s, text->second});
            }
            if (!drawLines(withAlpha(ink, 0.3)))
                return std::nullopt;
            for (int depth = 0; depth < 4; ++depth)
                flushBoxes(depth);
            if (cancelled())
                return std::nullopt;

            // Text at the image's own pixels, from the fonts' glyph tables: at two or three pixels
            // high no shaping shows, and skipping it keeps a large tree well inside the budget.
            painter.setTransform(QTransform());
            painter.setPen(withAlpha(ink, 0.85));
            int drawn = 0;
            for (int depthClass = 0; depthClass < 3; ++depthClass) {
                const QRawFont raw = QRawFont::fromFont(fonts[size_t(depthClass)]);
                if (!raw.isValid())
                    continue;
                const QList<quint32> ellipsis = raw.glyphIndexesForString(QString(QChar(0x2026)));
                const double ellipsisWidth =
                    ellipsis.isEmpty() ? 0 : raw.advancesForGlyphIndexes(ellipsis).value(0).x();
                QList<quint32> glyphs;
                QList<QPointF> positions;
                for (const Label& label : labels) {
                    if (label.depthClass != depthClass)
                        continue;
                    if (++drawn % 64 == 0 && cancelled())
                        return std::nullopt;
                    QString text = *label.text;
                    if (text.contains(QChar(0x2028)) || text.contains(QLatin1Char('\n')))
                        text.replace(QChar(0x2028), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
                    const QList<quint32> line = raw.glyphIndexesForString(text);
                    const QList<QPointF> advances = raw.advancesForGlyphIndexes(line);
                    double total = 0;
                    for (const QPointF& a : advances)
                        total += a.x();
                    // One line of the whole text, cut short with an ellipsis where the frame ends.
                    const bool cut = total > label.maxWidth;
                    const double room = cut ? label.maxWidth - ellipsisWidth : total;
                    double x = label.baseline.x();
                    for (qsizetype i = 0; i < line.size(); ++i) {
                        if (x + advances[i].x() - label.baseline.x() > room + 1e-9)
                            break;
                        glyphs.append(line[i]);
                        positions.append(QPointF(x, label.baseline.y()));
                        x += advances[i].x();
                    }
                    if (cut && !ellipsis.isEmpty() && label.maxWidth >= ellipsisWidth) {
                        glyphs.append(ellipsis.front());
                        positions.append(QPointF(x, label.baseline.y()));
                    }
                }
                QGlyphRun run;
                run.setRawFont(raw);
                run.setGlyphIndexes(glyphs);
                run.setPositions(positions);
                painter.drawGlyphRun(QPointF(), run);
            }
            painter.end();
            if (cancelled())
                return std::nullopt;
            return image;
        });
}

} // namespace MinimapRenderer
