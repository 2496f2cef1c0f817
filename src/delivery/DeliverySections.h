#pragma once

#include "DeliveryContentLayout.h"

#include <optional>
#include <vector>

class DeliveryCanvasState;
class DeliveryTimer;

// The sermon's sections as the page lays them out: its depth 1 headings, top to bottom. The
// reader is taken to be at the reading line, 100 points below the window's top, where
// navigation brings a heading to rest, as long as the page can scroll every heading there.
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

// What decides where the reader is.
struct Page {
    double scrollY = 0;
    double maxScrollY = 0;
    // Where the clock puts the reader; none while the timer is idle.
    std::optional<double> runnerY;
    // A section the reader named with the remote's keys; a null id names the lines above the
    // first section.
    std::optional<NodeID> chosen;
};

struct Reader {
    double y = 0;
    std::optional<Section> section; // none before the first section
    // The reading line can reach every heading, so the scroll alone tells where the reader is.
    bool byScroll = true;
};

// Where the reader is. On a page that cannot scroll every heading to the reading line (one that
// fits the window), the reading line says nothing: then the section the reader named, else the
// runner's, else the section nearest the reading line.
Reader reader(const DeliveryContentLayout& layout, const Page& page);
// The same for the page and timer the delivery view shares; none without a layout.
std::optional<Reader> reader(const DeliveryCanvasState& state, const DeliveryTimer& timer);

} // namespace DeliverySections
