#include "NodeActions.h"

#include "DocumentController.h"
#include "TextPieces.h"
#include "core/SermonDocument.h"

#include <algorithm>

NodeActionState NodeActionState::of(const DocumentController& controller)
{
    NodeActionState state;
    const QSet<NodeID> ids = controller.effectiveSelection();
    state.hasAnySelection = !ids.isEmpty();
    state.hasMultiSelection = ids.size() > 1;
    if (ids.isEmpty() || ids.contains(controller.document()->root()->id()))
        return state;
    state.hasSelection = true;

    const std::vector<SermonNodePtr> nodes = controller.selectedNodes();
    for (const auto& node : nodes) {
        if (node->hasChildren()) {
            state.canFold = state.canFold || !node->isCollapsed();
            state.canUnfold = state.canUnfold || node->isCollapsed();
        } else {
            state.canSplit = state.canSplit || node->text().contains(TextPieces::softLineBreak);
            state.canSplitSentences = state.canSplitSentences || TextPieces::looksLikeSeveralSentences(node->text());
        }
    }
    // "Every" over lines that are gone from the tree would be vacuously true: require some.
    state.canToggleQuote = !nodes.empty() && std::all_of(nodes.begin(), nodes.end(), [](const SermonNodePtr& n) {
        return n->isQuote() || !n->hasChildren();
    });
    state.isQuote =
        !nodes.empty() && std::all_of(nodes.begin(), nodes.end(), [](const SermonNodePtr& n) { return n->isQuote(); });
    const auto block = controller.contiguousSelection();
    state.canPromote = block && block->parent != controller.document()->root();
    return state;
}

bool NodeActions::perform(NodeCommand command, const QString& marker) const
{
    const std::function<void()>* action = nullptr;
    switch (command) {
    case NodeCommand::cut:
        action = &cut;
        break;
    case NodeCommand::copy:
        action = &copy;
        break;
    case NodeCommand::copyBranch:
        action = &copyBranch;
        break;
    case NodeCommand::paste:
        action = &paste;
        break;
    case NodeCommand::duplicate:
        action = &duplicate;
        break;
    case NodeCommand::deleteSelection:
        action = &deleteSelection;
        break;
    case NodeCommand::toggleQuote:
        action = &toggleQuote;
        break;
    case NodeCommand::fold:
        action = &fold;
        break;
    case NodeCommand::unfold:
        action = &unfold;
        break;
    case NodeCommand::moveUp:
        action = &moveUp;
        break;
    case NodeCommand::moveDown:
        action = &moveDown;
        break;
    case NodeCommand::promote:
        action = &promote;
        break;
    case NodeCommand::demote:
        action = &demote;
        break;
    case NodeCommand::split:
        action = &split;
        break;
    case NodeCommand::splitSentences:
        action = &splitSentences;
        break;
    case NodeCommand::join:
        action = &join;
        break;
    case NodeCommand::edit:
        action = &edit;
        break;
    case NodeCommand::newLineBelow:
        action = &newLineBelow;
        break;
    case NodeCommand::newLineAbove:
        action = &newLineAbove;
        break;
    case NodeCommand::newLineUnder:
        action = &newLineUnder;
        break;
    case NodeCommand::selectAll:
        action = &selectAll;
        break;
    case NodeCommand::deselectAll:
        action = &deselectAll;
        break;
    case NodeCommand::removeMarker:
        action = &removeMarker;
        break;
    case NodeCommand::setMarker:
        if (!setMarker)
            return false;
        setMarker(marker);
        return true;
    case NodeCommand::markSubmenu:
        return false;
    }
    if (!action || !*action)
        return false;
    (*action)();
    return true;
}

NodeActions NodeActions::forController(DocumentController& controller)
{
    DocumentController* c = &controller;
    NodeActions actions;
    actions.state = NodeActionState::of(controller);
    actions.cut = [c] { c->cut(); };
    actions.copy = [c] { c->copy(); };
    actions.copyBranch = [c] { c->copyBranch(); };
    actions.paste = [c] { c->paste(); };
    actions.duplicate = [c] { c->duplicate(); };
    actions.deleteSelection = [c] { c->deleteSelection(); };
    actions.fold = [c] { c->fold(); };
    actions.unfold = [c] { c->unfold(); };
    actions.moveUp = [c] { c->moveUp(); };
    actions.moveDown = [c] { c->moveDown(); };
    actions.promote = [c] { c->promote(); };
    actions.demote = [c] { c->demote(); };
    actions.split = [c] { c->split(); };
    actions.splitSentences = [c] { c->splitSentences(); };
    actions.join = [c] { c->join(); };
    actions.edit = [c] { c->beginEditing(); };
    actions.newLineBelow = [c] { c->newLineBelow(); };
    actions.newLineAbove = [c] { c->newLineAbove(); };
    actions.newLineUnder = [c] { c->newLineUnder(); };
    actions.toggleQuote = [c] { c->toggleQuote(); };
    actions.selectAll = [c] { c->selectAll(); };
    actions.deselectAll = [c] { c->deselectAll(); };
    actions.setMarker = [c](const QString& marker) { c->setMarker(marker); };
    actions.removeMarker = [c] { c->removeMarker(); };
    return actions;
}
