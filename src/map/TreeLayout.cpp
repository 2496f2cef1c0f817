#include "TreeLayout.h"

#include "look/EmojiText.h"

#include "core/PerformanceLog.h"
#include "core/SermonNode.h"

#include <QFontDatabase>
#include <QFontMetricsF>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace TreeLayout {

namespace {

constexpr QChar lineSeparator(0x2028);

// Metrics for one depth class, made once per layout run rather than once per node.
struct DepthMetrics {
    QFont font;
    QFontMetricsF metrics;
    double lineHeight;
    explicit DepthMetrics(int depth)
        : font(nodeFont(depth))
        , metrics(font)
        , lineHeight(TreeLayout::lineHeight(metrics))
    {
    }
};

// The widest line's width, rounded up, and the number of lines.
TextExtent measureText(const DepthMetrics& m, const QString& text)
{
    TextExtent extent;
    auto measureLine = [&](const QString& line) {
        ++extent.lines;
        const double w =
            std::ceil(EmojiText::horizontalAdvance(m.metrics, m.font, line.isEmpty() ? QStringLiteral(" ") : line));
        extent.width = std::max(extent.width, w);
    };
    qsizetype start = 0;
    bool split = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == lineSeparator || c == QLatin1Char('\n')) {
            measureLine(text.mid(start, i - start));
            start = i + 1;
            split = true;
        }
    }
    measureLine(split ? text.mid(start) : text);
    return extent;
}

QSizeF nodeSize(const DepthMetrics& m, TextExtent extent, bool isLeaf)
{
    const double padding = 2 * (isLeaf ? leafVerticalPadding : branchVerticalPadding);
    return {extent.width + 2 * horizontalPadding, m.lineHeight * extent.lines + padding};
}

} // namespace

double nodeFontSize(int depth)
{
    return depth <= 0 ? 16 : depth == 1 ? 14 : 13;
}

QFont::Weight nodeFontWeight(int depth)
{
    return depth <= 1 ? QFont::Medium : QFont::Normal;
}

QFont mapFont(double size, QFont::Weight weight, bool italic)
{
    static const QFont base = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    QFont font = base;
    // Canvas points are logical pixels: a pixel size keeps widths independent of the screen's DPI.
    font.setPixelSize(std::max(1, int(std::lround(size))));
    font.setWeight(weight);
    font.setItalic(italic);
    // Unhinted advances scale linearly, so a bitmap rendered at any zoom matches the measured width.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QFont mapMonospacedFont(double size, QFont::Weight weight)
{
    static const QFont base = [] {
        QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        // Where the desktop names no fixed face, ask fontconfig for any monospace one.
        font.setStyleHint(QFont::Monospace);
        font.setFixedPitch(true);
        return font;
    }();
    QFont font = base;
    font.setPixelSize(std::max(1, int(std::lround(size))));
    font.setWeight(weight);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QFont nodeFont(int depth)
{
    return mapFont(nodeFontSize(depth), nodeFontWeight(depth));
}

double lineHeight(const QFontMetricsF& metrics)
{
    return std::ceil(metrics.ascent() + std::abs(metrics.descent()) + metrics.leading());
}

QSizeF measureNode(const QString& text, int depth, bool isLeaf)
{
    const DepthMetrics m(depth);
    return nodeSize(m, measureText(m, text), isLeaf);
}

void MeasureCache::clear()
{
    for (auto& table : m_previous)
        table.clear();
    for (auto& table : m_current)
        table.clear();
}

void MeasureCache::beginRun()
{
    // Only what the last run used is kept, so edited and deleted texts fall out.
    for (size_t i = 0; i < m_current.size(); ++i) {
        m_previous[i].swap(m_current[i]);
        m_current[i].clear();
    }
}

TextExtent MeasureCache::extent(int depthClass, const QString& text, const std::function<TextExtent()>& measure)
{
    auto& current = m_current[size_t(depthClass)];
    if (const auto it = current.find(text); it != current.end())
        return it->second;
    auto& previous = m_previous[size_t(depthClass)];
    const auto it = previous.find(text);
    const TextExtent result = it != previous.end() ? it->second : measure();
    current.emplace(text, result);
    return result;
}

NodeLayouts layout(const SermonNode& root, MeasureCache* cache)
{
    return performanceLog::signpostInterval("TreeLayout", performanceLog::noMessage, [&] {
        NodeLayouts result;
        const std::array<DepthMetrics, 3> metrics{DepthMetrics(0), DepthMetrics(1), DepthMetrics(2)};
        if (cache)
            cache->beginRun();
        auto measure = [&](const SermonNode& node) {
            const int depthClass = std::clamp(node.depth(), 0, 2);
            const DepthMetrics& m = metrics[size_t(depthClass)];
            const TextExtent extent = cache
                ? cache->extent(depthClass, node.text(), [&] { return measureText(m, node.text()); })
                : measureText(m, node.text());
            return nodeSize(m, extent, !node.hasChildren());
        };

        // One frame per expanded parent on the path being laid out; the walk is iterative because
        // a file can nest thousands of levels deep.
        struct Frame {
            const SermonNode* node;
            double x, y, w, h;
            double childX, cy, sum, gap;
            bool packed;
            size_t next;
        };
        std::vector<Frame> stack;

        // Places a node with no visible children and returns its height, or opens a frame.
        auto enter = [&](const SermonNode& node, double x, double y) -> std::optional<double> {
            const QSizeF size = measure(node);
            if (node.isCollapsed() || !node.hasChildren()) {
                result.insert_or_assign(
                    node.id(),
                    NodeLayout{node.id(), {x, y}, size, node.depth(), !node.hasChildren(), false, node.isQuote()});
                return size.height();
            }
            const bool packed = node.hasOnlyLeafChildren();
            const double indent = packed ? leafIndent : branchIndent;
            stack.push_back({&node, x, y, size.width(), size.height(), x + size.width() + indent, y, 0,
                             packed ? leafGap : branchGap, packed, 0});
            return std::nullopt;
        };

        if (!enter(root, originX, originY)) {
            while (!stack.empty()) {
                Frame& f = stack.back();
                const auto& children = f.node->children();
                if (f.next < children.size()) {
                    const SermonNode& child = *children[f.next++];
                    if (const auto ch = enter(child, f.childX, f.cy)) {
                        f.cy += *ch + f.gap;
                        f.sum += *ch;
                    }
                    continue;
                }
                const double count = double(std::max<size_t>(children.size(), 1));
                const double block = f.sum + f.gap * (count - 1);
                // Centred on a taller block; a taller parent keeps its top and the block stays aligned.
                const double nodeY = f.h < block ? f.y + (block - f.h) * 0.5 : f.y;
                result.insert_or_assign(
                    f.node->id(),
                    NodeLayout{f.node->id(), {f.x, nodeY}, {f.w, f.h}, f.node->depth(), false, f.packed, false});
                const double height = std::max(f.h, block);
                stack.pop_back();
                if (!stack.empty()) {
                    Frame& parent = stack.back();
                    parent.cy += height + parent.gap;
                    parent.sum += height;
                }
            }
        }
        performanceLog::signpostEvent("TreeLayout.done", [&] { return QStringLiteral("nodes=%1").arg(result.size()); });
        return result;
    });
}

QSizeF canvasSize(const NodeLayouts& layouts)
{
    double w = 0, h = 0;
    for (const auto& [id, l] : layouts) {
        w = std::max(w, l.maxX());
        h = std::max(h, l.maxY());
    }
    return {w + 80, h + 80};
}

QRectF contentBounds(const NodeLayouts& layouts)
{
    if (layouts.empty())
        return {};
    double minX = std::numeric_limits<double>::max(), minY = minX;
    double maxX = std::numeric_limits<double>::lowest(), maxY = maxX;
    for (const auto& [id, l] : layouts) {
        minX = std::min(minX, l.origin.x());
        minY = std::min(minY, l.origin.y());
        maxX = std::max(maxX, l.maxX());
        maxY = std::max(maxY, l.maxY());
    }
    return QRectF(QPointF(minX, minY), QPointF(maxX, maxY));
}

} // namespace TreeLayout
