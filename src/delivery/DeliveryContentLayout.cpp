#include "DeliveryContentLayout.h"

#include "DeliveryText.h"

#include "core/SermonNode.h"

#include <algorithm>
#include <array>
#include <optional>

namespace {

template <size_t N>
double byDepth(const std::array<double, N>& table, int depth)
{
    return table[size_t(std::clamp(depth, 0, int(N) - 1))];
}

std::optional<double> leafY(const DeliveryContentLayout& layout, size_t index)
{
    if (index >= layout.wordFractions.size())
        return std::nullopt;
    const auto it = layout.nodeYPositions.find(layout.wordFractions[index].nodeID);
    if (it == layout.nodeYPositions.end())
        return std::nullopt;
    return it->second;
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

QString minuteMarkText(int minutes)
{
    return QStringLiteral("%1 min").arg(minutes);
}

DeliveryContentLayout DeliveryContentLayout::compute(const SermonNode& root, int minutes, double textWidth,
                                                     double baseFontSize, double lineSpacing)
{
    DeliveryContentLayout layout;
    const std::vector<SermonNodePtr> nodes = root.flattened();
    layout.wordFractions = WordCount::nodeWordFractions(root);
    if (nodes.empty())
        return layout;

    // Fonts are made once per kind, not per node.
    std::array<QFont, 5> headingFonts;
    for (int d = 0; d < 5; ++d)
        headingFonts[size_t(d)] = deliveryFont(d, false, baseFontSize);
    const QFont leafFont = deliveryFont(0, true, baseFontSize);

    layout.items.reserve(nodes.size() + 8);
    double y = topMargin;
    const double half = (lineSpacing - 1) * baseFontSize * 0.5;
    for (const SermonNodePtr& node : nodes) {
        const int depth = node->depth();
        const bool hasChildren = node->hasChildren();
        double indent = hasChildren ? headingIndent(depth) : leafIndent(depth);
        if (node->isQuote())
            indent += 20;
        const QFont& font = hasChildren ? headingFonts[size_t(std::clamp(depth, 0, 4))] : leafFont;
        const QSizeF size = DeliveryText::measure(node->text(), font, textWidth - indent);

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
    for (size_t i = 0; i < table.size(); ++i) {
        if (!(f <= table[i].endFraction))
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
