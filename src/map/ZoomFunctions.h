#pragma once

#include <functional>

// The map's zoom commands, handed to the window for its menu items and status-bar buttons.
struct ZoomFunctions {
    std::function<void()> zoomIn;
    std::function<void()> zoomOut;
    std::function<void()> reset;
};
