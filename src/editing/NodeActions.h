#pragma once

#include <QString>

#include <functional>

class DocumentController;

// Every command on the selected lines, whether it comes from a key, the Edit menu or the
// context menu. `markSubmenu` stands for the "Mark" submenu itself, which has no action.
enum class NodeCommand {
    cut,
    copy,
    copyBranch,
    paste,
    duplicate,
    deleteSelection,
    toggleQuote,
    markSubmenu,
    fold,
    unfold,
    moveUp,
    moveDown,
    promote,
    demote,
    split,
    splitSentences,
    join,
    edit,
    newLineBelow,
    newLineAbove,
    newLineUnder,
    selectAll,
    deselectAll,
    setMarker,
    removeMarker,
};

// What is allowed at this moment; computed afresh each time a menu is built.
struct NodeActionState {
    bool hasAnySelection = false;
    bool hasSelection = false; // and the title isn't in it
    bool hasMultiSelection = false;
    bool canFold = false;
    bool canUnfold = false;
    bool canSplit = false;
    bool canSplitSentences = false;
    bool canPromote = false;
    bool canToggleQuote = false;
    bool isQuote = false;

    bool operator==(const NodeActionState&) const = default;

    static NodeActionState of(const DocumentController& controller);
};

// The record through which menus reach the canvas that has the keyboard: the canvas publishes
// one, wrapping each operation as it needs (the map adds its transition), and menus call it.
struct NodeActions {
    NodeActionState state;
    std::function<void()> cut, copy, copyBranch, paste, duplicate, deleteSelection, fold, unfold, moveUp, moveDown,
        promote, demote, split, splitSentences, join, edit, newLineBelow, newLineAbove, newLineUnder, toggleQuote,
        selectAll, deselectAll;
    std::function<void(const QString&)> setMarker;
    std::function<void()> removeMarker;

    // Runs the command's callback; false when it has none (or none is set).
    bool perform(NodeCommand command, const QString& marker = {}) const;

    // The plain record: each callback runs the controller's operation and nothing else.
    static NodeActions forController(DocumentController& controller);
};
