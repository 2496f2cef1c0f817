#include "DeliverySections.h"

#include <algorithm>

namespace DeliverySections {

namespace {
constexpr double spare = 1;
}

std::vector<Section> inOrder(const DeliveryContentLayout& layout)
{
    std::vector<Section> out;
    for (const auto& [id, y] : layout.headingYPositions) {
        const auto depth = layout.headingDepths.find(id);
        if (depth == layout.headingDepths.end() || depth->second != 1)
            continue;
        const auto text = layout.headingTexts.find(id);
        out.push_back({id, y, text == layout.headingTexts.end() ? QString() : text->second});
    }
    std::sort(out.begin(), out.end(), [](const Section& a, const Section& b) { return a.y < b.y; });
    return out;
}

std::optional<Section> at(const DeliveryContentLayout& layout, double y)
{
    std::optional<Section> found;
    for (const Section& section : inOrder(layout)) {
        if (section.y > y + spare)
            break;
        found = section;
    }
    return found;
}

std::optional<Section> after(const DeliveryContentLayout& layout, double y)
{
    for (const Section& section : inOrder(layout)) {
        if (section.y > y + spare)
            return section;
    }
    return std::nullopt;
}

std::optional<Section> before(const DeliveryContentLayout& layout, double y)
{
    std::optional<Section> found;
    for (const Section& section : inOrder(layout)) {
        if (section.y >= y - spare)
            break;
        found = section;
    }
    return found;
}

} // namespace DeliverySections
