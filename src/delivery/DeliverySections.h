#pragma once

#include "DeliveryContentLayout.h"

#include <optional>
#include <vector>

// The sermon's sections as the page lays them out: its depth 1 headings, top to bottom. The
// reader is taken to be at the reading line, 100 points below the window's top, where
// navigation brings a heading to rest.
namespace DeliverySections {

constexpr double readingLineOffset = 100;

struct Section {
    NodeID id;
    double y = 0;
    QString text;
};

std::vector<Section> inOrder(const DeliveryContentLayout& layout);
// The section whose heading stands at or above page y `y`; none above the first heading.
std::optional<Section> at(const DeliveryContentLayout& layout, double y);
// The first heading below `y`, and the last one above it, with a point to spare either way.
std::optional<Section> after(const DeliveryContentLayout& layout, double y);
std::optional<Section> before(const DeliveryContentLayout& layout, double y);

} // namespace DeliverySections
