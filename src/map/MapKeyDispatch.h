#pragma once

#include "editing/NodeCommands.h"

#include <QtCore/qnamespace.h>

#include <optional>

class DocumentController;
struct NodeActions;

// The map's keyboard: which command a key press on the canvas means, tried row by row. Ctrl
// stands for the Mac's Command, Alt for Option; Backspace and Delete both delete. The canvas
// asks only while no editor and no search field has the keyboard.
namespace MapKeyDispatch {

// The binding a key means on the canvas, or nothing when it should pass on to the menus.
// Escape with nothing selected passes on too.
std::optional<NodeCommands::CanvasKeyBinding> resolve(int key, Qt::KeyboardModifiers modifiers,
                                                      bool hasAnySelection);

// Resolves and runs a key press; false when the key was not taken.
bool handle(int key, Qt::KeyboardModifiers modifiers, DocumentController& controller, const NodeActions& actions);

} // namespace MapKeyDispatch
