#pragma once

#include "AppMode.h"

#include "editing/NodeActions.h"
#include "map/ZoomFunctions.h"

#include <functional>
#include <optional>

// What a document window offers the menu bar while it is the active window. A record that is
// absent disables its menu items.
struct SwitchModeAction {
    std::function<void(AppMode)> action;
};
struct FocusModeAction {
    std::function<void()> toggle;
};
struct FileSettingsAction {
    std::function<void()> open;
};
struct FindAction {
    std::function<void()> find;
};

struct WindowCommands {
    std::optional<SwitchModeAction> switchMode;
    std::optional<FocusModeAction> focusMode;
    std::optional<FileSettingsAction> fileSettings;
    std::optional<ZoomFunctions> zoom;
    std::optional<FindAction> find;
    std::optional<NodeActions> nodeActions;
};
