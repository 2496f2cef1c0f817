#include "DeliverySections.h"

#include "DeliveryCanvasState.h"
#include "DeliveryTimer.h"

#include <algorithm>
#include <cmath>

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

Reader reader(const DeliveryContentLayout& layout, const Page& page)
{
    const double line = page.scrollY + readingLineOffset;
    const std::vector<Section> sections = inOrder(layout);
    if (sections.empty() || sections.back().y - readingLineOffset <= page.maxScrollY + spare)
        return {line, at(layout, line), true};

    if (page.chosen) {
        if (page.chosen->isNull())
            return {std::min(line, sections.front().y - 2 * spare), std::nullopt, false};
        for (const Section& section : sections)
            if (section.id == *page.chosen)
                return {section.y, section, false};
    }
    if (page.runnerY)
        return {*page.runnerY, at(layout, *page.runnerY), false};
    const auto nearest = std::min_element(sections.begin(), sections.end(), [&](const Section& a, const Section& b) {
        return std::abs(a.y - line) < std::abs(b.y - line);
    });
    return {nearest->y, *nearest, false};
}

std::optional<Reader> reader(const DeliveryCanvasState& state, const DeliveryTimer& timer)
{
    if (!state.layout())
        return std::nullopt;
    Page page{state.scrollY(), state.maxScrollY(), std::nullopt, state.chosenSection()};
    if (timer.state() != TimerState::idle)
        page.runnerY = yForFraction(*state.layout(), std::clamp(timer.progress(), 0.0, 1.0));
    return reader(*state.layout(), page);
}

} // namespace DeliverySections
