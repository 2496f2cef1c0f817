#pragma once

class QMenu;
struct NodeActions;

// The map's right-click menu, built from the command table for the state in `actions`: only
// the entries shown for it, each running its callback.
namespace MapContextMenu {

void build(QMenu& menu, const NodeActions& actions);

} // namespace MapContextMenu
