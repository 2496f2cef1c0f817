#include "DeliveryContentLayout.h"

#include "DeliveryText.h"

#include "core/BackgroundPool.h"
#include "core/SameCharacters.h"
#include "core/SermonNode.h"

#include <QFutureWatcher>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_map>

namespace {

template <size_t N>
double byDepth(const std::array<double, N>& table, int depth)
{
    return table[size_t(std::clamp(depth, 0, int(N) - 1))];
}

bool isOrdered(const DeliveryContentLayout& layout)
{
    return !layout.entryYs.empty() && layout.entryYs.size() == layout.wordFractions.size();
}

std::optional<double> leafY(const DeliveryContentLayout& layout, size_t index)
{
    if (index >= layout.wordFractions.size())
        return std::nullopt;
    if (isOrdered(layout))
        return layout.entryYs[index];
    const auto it = layout.nodeYPositions.find(layout.wordFractions[index].nodeID);
    if (it == layout.nodeYPositions.end())
        return std::nullopt;
    return it->second;
}

// Sizes of the texts already wrapped, so that a layout run again for a new setting, the
// target's minutes or an edit wraps only the lines it hasn't seen at that width and font.
class WrapCache {
public:
    // A small number for each distinct font, the application's font changing included.
    int fontId(const QFont& font)
    {
        const auto [it, inserted] = m_fonts.try_emplace(font.key(), int(m_fonts.size()));
        return it->second;
    }

    void insert(const QString& text, int fontId, double width, QSizeF size)
    {
        if (m_sizes.size() >= limit)
            m_sizes.clear();
        m_sizes.insert_or_assign(Key{text, fontId, width}, size);
    }

    template <typename Measure>
    QSizeF size(const QString& text, int fontId, double width, Measure&& measure)
    {
        const Key key{text, fontId, width};
        if (const auto it = m_sizes.find(key); it != m_sizes.end())
            return it->second;
        // A wide edit history or many widths: start again rather than grow without end.
        if (m_sizes.size() >= limit)
            m_sizes.clear();
        return m_sizes.emplace(key, measure()).first->second;
    }

private:
    static constexpr size_t limit = 400'000;
    struct Key {
        QString text; // known by its characters, and held
        int fontId;
        double width;
        bool operator==(const Key& other) const
        {
            return SameCharacters()(text, other.text) && fontId == other.fontId && width == other.width;
        }
    };
    struct KeyHash {
        size_t operator()(const Key& k) const noexcept
        {
            size_t h = SameCharactersHash()(k.text);
            for (size_t part : {size_t(k.fontId), std::hash<double>()(k.width)})
                h = (h ^ part) * 0x100000001b3ull;
            return h;
        }
    };
    std::unordered_map<Key, QSizeF, KeyHash> m_sizes;
    std::unordered_map<QString, int> m_fonts;
};

// Layouts are made on the thread that shows or prints them; each keeps its own sizes.
WrapCache& threadWraps()
{
    thread_local WrapCache wraps;
    return wraps;
}

// The fonts of a layout by font kind: headings by depth 0 to 4, then lines.
std::array<QFont, 6> layoutFonts(double baseFontSize)
{
    std::array<QFont, 6> fonts;
    for (int d = 0; d < 5; ++d)
        fonts[size_t(d)] = deliveryFont(d, false, baseFontSize);
    fonts[5] = deliveryFont(0, true, baseFontSize);
    return fonts;
}

// Where a node's text goes across the column, and in which font.
struct Placement {
    double indent;
    int fontKind;
};

Placement placementOf(const SermonNode& node)
{
    const int depth = node.depth();
    const bool hasChildren = node.hasChildren();
    double indent =
        hasChildren ? DeliveryContentLayout::headingIndent(depth) : DeliveryContentLayout::leafIndent(depth);
    if (node.isQuote())
        indent += 20;
    return {indent, hasChildren ? std::clamp(depth, 0, 4) : 5};
}

// The first index in [from, to) for which `reached` holds, `reached` being false and then true
// along the range; `to` when it never holds.
template <typename Reached>
size_t firstReached(size_t from, size_t to, Reached&& reached)
{
    while (from < to) {
        const size_t mid = from + (to - from) / 2;
        if (reached(mid))
            to = mid;
        else
            from = mid + 1;
    }
    return from;
}

// Each entry's y, if all have one and nothing runs back up the page; else nothing.
std::vector<double> orderedEntryYs(const DeliveryContentLayout& layout)
{
    std::vector<double> ys;
    ys.reserve(layout.wordFractions.size());
    double lastEnd = 0;
    for (const NodeWordFraction& entry : layout.wordFractions) {
        const auto it = layout.nodeYPositions.find(entry.nodeID);
        if (it == layout.nodeYPositions.end() || (!ys.empty() && it->second < ys.back())
            || !(entry.endFraction >= lastEnd))
            return {};
        ys.push_back(it->second);
        lastEnd = entry.endFraction;
    }
    return ys;
}

} // namespace

double DeliveryItem::top() const
{
    switch (kind) {
    case Kind::heading:
    case Kind::leaf:
        return frame.top();
    case Kind::headingDivider:
    case Kind::timeMarker:
        return y;
    }
    return y;
}

double DeliveryContentLayout::headingIndent(int depth)
{
    return byDepth(std::array<double, 5>{0, 0, 24, 48, 48}, depth);
}

double DeliveryContentLayout::leafIndent(int depth)
{
    return byDepth(std::array<double, 5>{0, 0, 0, 24, 48}, depth);
}

double DeliveryContentLayout::gapBefore(int depth)
{
    return byDepth(std::array<double, 5>{0, 28, 16, 12, 8}, depth);
}

double DeliveryContentLayout::gapAfter(int depth)
{
    return byDepth(std::array<double, 5>{24, 12, 6, 4, 4}, depth);
}

QFont deliveryFont(int depth, bool isLeaf, double baseFontSize)
{
    if (isLeaf)
        return DeliveryText::makeFont(baseFontSize, QFont::Normal);
    switch (depth) {
    case 0:
        return DeliveryText::makeFont(baseFontSize + 13, QFont::Bold);
    case 1:
        return DeliveryText::makeFont(baseFontSize + 5, QFont::DemiBold);
    case 2:
        return DeliveryText::makeFont(baseFontSize + 1, QFont::Medium);
    case 3:
        return DeliveryText::makeFont(baseFontSize - 1, QFont::Medium);
    default:
        return DeliveryText::makeFont(baseFontSize, QFont::Normal);
    }
}

std::vector<DeliveryWrap> DeliveryContentLayout::wraps(const SermonNode& root, double textWidth)
{
    std::vector<DeliveryWrap> asked;
    for (const ConstSermonNodePtr& node : root.flattened()) {
        const auto [indent, kind] = placementOf(*node);
        asked.push_back({node->text(), kind, textWidth - indent});
    }
    return asked;
}

std::vector<QSizeF> DeliveryContentLayout::measureWraps(const std::vector<DeliveryWrap>& asked, double baseFontSize,
                                                        const std::atomic<bool>& stop)
{
    // Fonts made on this thread: a font's engines belong to the thread that loads them.
    const std::array<QFont, 6> fonts = layoutFonts(baseFontSize);
    std::vector<QSizeF> sizes;
    sizes.reserve(asked.size());
    for (const DeliveryWrap& wrap : asked) {
        if (stop.load(std::memory_order_relaxed))
            break;
        sizes.push_back(DeliveryText::measure(wrap.text, fonts[size_t(std::clamp(wrap.fontKind, 0, 5))], wrap.width));
    }
    return sizes;
}

void DeliveryContentLayout::rememberWraps(const std::vector<DeliveryWrap>& asked, const std::vector<QSizeF>& sizes,
                                          double baseFontSize)
{
    const std::array<QFont, 6> fonts = layoutFonts(baseFontSize);
    WrapCache& cache = threadWraps();
    std::array<int, 6> fontIds;
    for (size_t k = 0; k < fonts.size(); ++k)
        fontIds[k] = cache.fontId(fonts[k]);
    for (size_t i = 0; i < std::min(asked.size(), sizes.size()); ++i)
        cache.insert(asked[i].text, fontIds[size_t(std::clamp(asked[i].fontKind, 0, 5))], asked[i].width, sizes[i]);
}

void DeliveryContentLayout::measureAhead(const SermonNode& root, double textWidth, double baseFontSize,
                                         QObject* context)
{
    auto stop = std::make_shared<std::atomic<bool>>(false);
    QObject::connect(context, &QObject::destroyed, [stop] { stop->store(true); });
    struct Measured {
        std::vector<DeliveryWrap> asked;
        std::vector<QSizeF> sizes;
    };
    auto* watcher = new QFutureWatcher<std::shared_ptr<Measured>>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context, [watcher, baseFontSize] {
        watcher->deleteLater();
        if (watcher->future().resultCount() > 0) {
            const auto measured = watcher->result();
            rememberWraps(measured->asked, measured->sizes, baseFontSize);
        }
    });
    watcher->setFuture(
        QtConcurrent::run(&backgroundPool(), [stop, baseFontSize, asked = wraps(root, textWidth)]() mutable {
            auto measured = std::make_shared<Measured>();
            measured->sizes = measureWraps(asked, baseFontSize, *stop);
            measured->asked = std::move(asked);
            return measured;
        }));
}

QString minuteMarkText(int minutes)
{
    return QStringLiteral("%1 min").arg(minutes);
}

DeliveryContentLayout DeliveryContentLayout::compute(const SermonNode& root, int minutes, double textWidth,
                                                     double baseFontSize, double lineSpacing)
{
    DeliveryContentLayout layout;
    const std::vector<ConstSermonNodePtr> nodes = root.flattened();
    layout.wordFractions = WordCount::nodeWordFractions(root);
    if (nodes.empty())
        return layout;

    // Fonts are made once per kind, not per node.
    const std::array<QFont, 6> fonts = layoutFonts(baseFontSize);
    WrapCache& cache = threadWraps();
    std::array<int, 6> fontIds;
    for (size_t k = 0; k < fonts.size(); ++k)
        fontIds[k] = cache.fontId(fonts[k]);
    layout.items.reserve(nodes.size() + 8);
    double y = topMargin;
    const double half = (lineSpacing - 1) * baseFontSize * 0.5;
    for (const ConstSermonNodePtr& node : nodes) {
        const int depth = node->depth();
        const bool hasChildren = node->hasChildren();
        const auto [indent, kind] = placementOf(*node);
        const QFont& font = fonts[size_t(kind)];
        const QSizeF size = cache.size(node->text(), fontIds[size_t(kind)], textWidth - indent,
                                       [&] { return DeliveryText::measure(node->text(), font, textWidth - indent); });

        DeliveryItem item;
        item.id = node->id();
        item.depth = depth;
        item.text = node->text();
        if (!hasChildren) {
            item.kind = DeliveryItem::Kind::leaf;
            item.frame = QRectF(textLeft + indent, y + half, size.width(), size.height());
            item.isQuote = node->isQuote();
            layout.nodeYPositions[item.id] = item.frame.center().y();
            y = item.frame.bottom() + half;
            layout.items.push_back(std::move(item));
            continue;
        }
        item.kind = DeliveryItem::Kind::heading;
        item.frame = QRectF(textLeft + indent, y + gapBefore(depth), size.width(), size.height());
        if (depth >= 1 && depth <= 3) {
            layout.headingOrder.push_back(item.id);
            layout.headingYPositions[item.id] = item.frame.center().y();
            layout.headingDepths[item.id] = depth;
            layout.headingTexts[item.id] = item.text;
        }
        double bottom = item.frame.bottom();
        layout.items.push_back(std::move(item));
        if (depth == 1) {
            bottom += 6;
            DeliveryItem divider;
            divider.kind = DeliveryItem::Kind::headingDivider;
            divider.y = bottom;
            divider.width = textWidth;
            layout.items.push_back(std::move(divider));
        }
        y = bottom + gapAfter(depth);
    }
    layout.totalHeight = y + topMargin;
    layout.entryYs = orderedEntryYs(layout);
    // Already so unless a line spacing below 1 pulls lines back up.
    std::stable_sort(layout.headingOrder.begin(), layout.headingOrder.end(), [&](const NodeID& a, const NodeID& b) {
        return layout.headingYPositions.at(a) < layout.headingYPositions.at(b);
    });

    if (minutes < 2)
        return layout;
    // Minute marks go in by position, without reordering anything else.
    std::vector<DeliveryItem> merged;
    merged.reserve(layout.items.size() + size_t(minutes - 1));
    size_t cursor = 0;
    for (int m = 1; m < minutes; ++m) {
        const double my = yForFraction(layout, double(m) / minutes);
        while (cursor < layout.items.size() && layout.items[cursor].top() <= my)
            merged.push_back(std::move(layout.items[cursor++]));
        DeliveryItem marker;
        marker.kind = DeliveryItem::Kind::timeMarker;
        marker.text = minuteMarkText(m);
        marker.y = my;
        merged.push_back(std::move(marker));
    }
    while (cursor < layout.items.size())
        merged.push_back(std::move(layout.items[cursor++]));
    layout.items = std::move(merged);
    return layout;
}

double yForFraction(const DeliveryContentLayout& layout, double f)
{
    f = std::min(f, 1.5);
    const auto& table = layout.wordFractions;
    if (table.empty())
        return f * layout.totalHeight;
    auto reached = [&](size_t i) { return f <= table[i].endFraction; };
    // Ordered, the first entry that ends at or after `f` is found by bisection.
    const size_t first = isOrdered(layout) ? firstReached(0, table.size(), reached) : 0;
    for (size_t i = first; i < table.size(); ++i) {
        if (!reached(i))
            continue;
        const std::optional<double> yi = leafY(layout, i);
        if (!yi)
            return f * layout.totalHeight;
        const double span = table[i].endFraction - table[i].startFraction;
        if (span <= 0)
            return i == 0 ? DeliveryContentLayout::topMargin : *yi;
        const double t = (f - table[i].startFraction) / span;
        double a = *yi;
        double b = *yi + 20;
        if (i == 0) {
            a = DeliveryContentLayout::topMargin;
            b = *yi;
        } else if (const std::optional<double> next = leafY(layout, i + 1)) {
            b = *next;
        }
        return a + t * (b - a);
    }
    const std::optional<double> last = leafY(layout, table.size() - 1);
    if (!last)
        return f * layout.totalHeight;
    return *last + (f - 1) * layout.totalHeight;
}

double fractionForY(const DeliveryContentLayout& layout, double y)
{
    const auto& table = layout.wordFractions;
    if (isOrdered(layout) && table.size() > 1 && y >= DeliveryContentLayout::topMargin && layout.entryYs[0] < y) {
        // Past the first line, the answer is the first later entry whose line lies below `y`
        // or whose segment reaches it; ordered, that is found by bisection.
        const auto& ys = layout.entryYs;
        const size_t n = ys.size();
        auto next = [&](size_t i) { return i + 1 < n ? ys[i + 1] : ys[i] + 20; };
        const size_t i = firstReached(1, n, [&](size_t k) { return ys[k] > y || next(k) >= y; });
        if (i == n)
            return 1;
        if (ys[i] > y)
            return table[i - 1].endFraction;
        const double start = table[i].startFraction;
        const double end = table[i].endFraction;
        return next(i) - ys[i] <= 0 ? start : start + (y - ys[i]) / (next(i) - ys[i]) * (end - start);
    }
    for (size_t i = 0; i < table.size(); ++i) {
        const double start = table[i].startFraction;
        const double end = table[i].endFraction;
        const std::optional<double> yi = leafY(layout, i);
        if (!yi) {
            if (y < 0)
                return i == 0 ? 0.0 : table[i - 1].endFraction;
            if (y == 0)
                return start;
            continue;
        }
        if (i == 0) {
            constexpr double top = DeliveryContentLayout::topMargin;
            if (y < top)
                return 0;
            if (*yi >= y)
                return *yi - top > 0 ? start + (y - top) / (*yi - top) * (end - start) : start;
            continue;
        }
        const double next = leafY(layout, i + 1).value_or(*yi + 20);
        if (*yi > y)
            return table[i - 1].endFraction;
        if (next >= y)
            return next - *yi <= 0 ? start : start + (y - *yi) / (next - *yi) * (end - start);
    }
    return table.empty() ? 0.0 : 1.0;
}
