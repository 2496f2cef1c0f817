// The text edit session: one line open in an editor. The keys are chosen so that a whole
// outline can be typed without leaving the keyboard; a new line and its first text are one
// undo step together.

#include "DocumentController.h"

#include "TextPieces.h"
#include "core/SermonDocument.h"

#include <algorithm>

void DocumentController::setSession(std::optional<NodeID> id, QString text, bool isNew)
{
    if (m_editingNodeID == id && m_editingText == text && m_editingIsNew == isNew)
        return;
    m_editingNodeID = id;
    m_editingText = std::move(text);
    m_editingIsNew = isNew;
    emit editingChanged();
}

void DocumentController::setEditingText(const QString& text)
{
    if (m_editingText == text)
        return;
    m_editingText = text;
    emit editingChanged();
}

void DocumentController::beginEditing()
{
    if (SermonNodePtr p = findNode(m_selectedNodeID))
        setSession(p->id(), p->text(), false);
}

void DocumentController::startSession(const NodeID& id, bool isNew)
{
    SermonNodePtr node = root()->find(id);
    if (!node)
        return;
    setSelectedNodeID(id);
    setSession(id, node->text(), isNew);
}

bool DocumentController::commit(bool keepText)
{
    if (!m_editingNodeID)
        return false;
    SermonNodePtr node = root()->find(*m_editingNodeID);
    if (!node) {
        setSession(std::nullopt, QString(), false);
        return false;
    }
    const bool wasNew = m_editingIsNew;
    const QString text = keepText ? m_editingText.trimmed() : node->text();
    setSession(std::nullopt, QString(), false);

    if (text.isEmpty()) {
        SermonNodePtr parent = root()->parent(node->id());
        if (!parent) {
            // The root can't go: its title stays, and the session ends as if it had.
            setSelectedNodeID(std::nullopt);
            requestCanvasFocus();
            return true;
        }
        if (!wasNew)
            captureUndo(); // a new line's step was taken when it was made
        const auto& kids = parent->children();
        const int i = parent->indexOfChild(node->id());
        NodeID next = parent->id();
        if (i >= 1)
            next = kids[i - 1]->id();
        else if (kids.size() >= 2)
            next = kids[i + 1]->id();
        parent->removeNode(node->id());
        treeMutated();
        setSelectedNodeID(next);
        requestCanvasFocus();
        return true;
    }
    if (text != node->text()) {
        if (!wasNew)
            captureUndo();
        node->setText(text);
        treeMutated();
    }
    return false;
}

void DocumentController::editorReturn()
{
    SermonNodePtr node = findNode(m_editingNodeID);
    if (!node)
        return void(commit(true)); // ends a session whose line has gone
    const bool wasNew = m_editingIsNew;
    if (commit(true))
        return;
    if (!wasNew || node == root()) {
        requestCanvasFocus();
        return;
    }
    // Typing an outline: each Return on a new line opens the next one.
    captureUndo();
    if (SermonNodePtr next = root()->insertSiblingAfter(node->id(), QString())) {
        treeMutated();
        startSession(next->id(), true);
    }
}

void DocumentController::editorInsertLineAbove()
{
    SermonNodePtr node = findNode(m_editingNodeID);
    if (!node)
        return void(commit(true));
    if (commit(true))
        return;
    if (node == root()) {
        requestCanvasFocus();
        return;
    }
    captureUndo();
    if (SermonNodePtr before = root()->insertSiblingBefore(node->id(), QString())) {
        treeMutated();
        startSession(before->id(), true);
    }
}

void DocumentController::editorTab()
{
    SermonNodePtr node = findNode(m_editingNodeID);
    if (!node)
        return void(commit(true));
    if (commit(true))
        return;
    captureUndo();
    SermonNodePtr child = node->addChild(QString());
    treeMutated();
    // On a quote the child stays out of the tree; its session ends at the next commit.
    startNewLineSession(child);
}

void DocumentController::editorShiftTab()
{
    SermonNodePtr node = findNode(m_editingNodeID);
    if (!node)
        return void(commit(true));
    SermonNodePtr parent = root()->parent(node->id());
    commit(true);
    if (parent)
        startSession(parent->id(), false);
    else
        requestCanvasFocus();
}

void DocumentController::editorEscape()
{
    commit(false);
    requestCanvasFocus();
}

void DocumentController::editorSplitAtCursor(int position)
{
    SermonNodePtr node = findNode(m_editingNodeID);
    if (!node)
        return void(commit(true));
    if (node == root())
        return; // the title is never split
    SermonNodePtr parent = root()->parent(node->id());
    const int index = parent->indexOfChild(node->id());

    captureUndo();
    const QString whole = TextPieces::editorText(m_editingText);
    const qsizetype cut = std::min<qsizetype>(std::max(position, 0), whole.size());
    const QString head = TextPieces::modelText(whole.left(cut)).trimmed();
    const QString tail = TextPieces::modelText(whole.mid(cut)).trimmed();

    // Marked new so that the commit takes no second step.
    m_editingIsNew = true;
    m_editingText = head;
    const bool wasQuote = node->isQuote();
    SermonNodePtr second;
    if (commit(true)) {
        // Nothing stood before the cursor: the text behind it takes the line's place.
        if (tail.isEmpty())
            return;
        second = SermonNode::make(tail, node->depth());
        parent->insertChildKeepingDepths(index, second);
    } else {
        second = root()->insertSiblingAfter(node->id(), tail);
        if (!second)
            return;
    }
    second->setQuote(wasQuote);
    treeMutated();
    startSession(second->id(), tail.isEmpty());
}
