#pragma once

class QMenu;
struct NodeActions;

// The map's right-click menu, built from the command table for the state in `actions`: only
// the entries shown for it, each running its callback.
namespace MapContextMenu {

void build(QMenu& menu, const NodeActions& actions);

// Draws the entries whose titles are emoji alone (the markers) in the colour emoji face; the
// rest of each entry, its key included, as the style always does. For the "Mark" submenus.
void showEmojiInColour(QMenu& menu);

} // namespace MapContextMenu
