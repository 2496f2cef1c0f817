// Copy, cut and paste through plain text. A copied branch is Markdown of the file format, so
// it can go to any text editor and come back whole.

#include "DocumentController.h"

#include "ClipboardText.h"
#include "Pasteboard.h"
#include "core/SermonDocument.h"

void DocumentController::copy()
{
    const std::vector<SermonNodePtr> nodes = selectedNodesInOrder();
    if (nodes.empty() || !m_pasteboard)
        return;
    m_pasteboard->setString(ClipboardText::plainText(nodes));
}

void DocumentController::copyBranch()
{
    const std::vector<SermonNodePtr> nodes = selectedNodesInOrder();
    if (nodes.empty() || !m_pasteboard)
        return;
    m_pasteboard->setString(ClipboardText::branchText(nodes));
}

void DocumentController::cut()
{
    const QSet<NodeID> ids = effectiveSelection();
    if (ids.isEmpty() || selectionHoldsRoot(ids) || !m_pasteboard || selectedNodesInOrder().empty())
        return;
    // Only the lines' text goes to the pasteboard: the children of a cut branch come back by undo.
    copy();
    deleteSelection();
}

void DocumentController::paste()
{
    SermonNodePtr primary = findNode(m_selectedNodeID);
    if (!primary || primary->isQuote() || !m_pasteboard)
        return;
    const std::optional<QString> text = m_pasteboard->string();
    if (!text || text->trimmed().isEmpty())
        return;
    const std::vector<SermonNodePtr> nodes = ClipboardText::parsePasted(*text, primary->depth());
    if (nodes.empty())
        return;

    captureUndo();
    // Pasted lines always become children of the selected line, never its siblings.
    for (const auto& node : nodes)
        primary->appendChild(node);
    primary->setCollapsed(false);
    treeMutated();
    setSelectedNodeID(nodes.front()->id());
}
