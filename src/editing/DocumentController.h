#pragma once

#include "core/NodeID.h"
#include "core/SermonNode.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

class Pasteboard;
class SermonDocument;
class UndoManager;

// Selected siblings under one parent: the unit that moves, promotes and demotes.
struct ContiguousSelection {
    SermonNodePtr parent;
    std::vector<SermonNodePtr> nodes; // tree order
    int first = 0; // lowest index in parent's children holding one of them
    int last = 0; // highest
};

// Where search marks a line: the occurrences of the query, in UTF-16 units of the node's text.
struct SearchHighlight {
    bool isCurrent = false;
    std::vector<std::pair<int, int>> ranges; // start, end

    bool operator==(const SearchHighlight&) const = default;
};

// The one object through which a view changes a document. It holds what the file doesn't:
// the selection, the text edit session and the search state, and it carries out every edit,
// so that every view and the menus share the same rules. Each view owns one.
//
// Every operation that does not apply does nothing, says nothing, and leaves no undo step
// unless noted otherwise.
class DocumentController : public QObject {
    Q_OBJECT
public:
    explicit DocumentController(SermonDocument* document, UndoManager* undoManager = nullptr,
                                QObject* parent = nullptr);
    ~DocumentController() override;

    SermonDocument* document() const { return m_document; }
    UndoManager* undoManager() const { return m_undoManager; }
    void setUndoManager(UndoManager* manager) { m_undoManager = manager; }
    Pasteboard* pasteboard() const { return m_pasteboard; }
    void setPasteboard(Pasteboard* pasteboard) { m_pasteboard = pasteboard; }

    // Set by the view when it first appears.
    std::function<void()> onTreeMutated; // relayout
    std::function<void(const NodeID&)> onSelectionRequestVisible; // scroll into view
    std::function<void()> onRequestCanvasFocus; // take the keyboard back

    // ---- Selection ---------------------------------------------------------------------------
    std::optional<NodeID> selectedNodeID() const { return m_selectedNodeID; }
    // A plain change ends a multiple selection unless `isExtendingSelection` was set just before.
    bool setSelectedNodeID(std::optional<NodeID> id);
    const QSet<NodeID>& selectedNodeIDs() const { return m_selectedNodeIDs; }
    bool setSelectedNodeIDs(const QSet<NodeID>& ids);
    std::optional<NodeID> selectionAnchorID() const { return m_selectionAnchorID; }
    void setSelectionAnchorID(std::optional<NodeID> id) { m_selectionAnchorID = id; }
    bool isExtendingSelection() const { return m_isExtendingSelection; }
    void setExtendingSelection(bool extending) { m_isExtendingSelection = extending; }
    int navigationDepth() const { return m_navigationDepth; }
    void setNavigationDepth(int depth) { m_navigationDepth = depth; }

    QSet<NodeID> effectiveSelection() const;
    std::vector<SermonNodePtr> selectedNodes() const; // ids gone from the tree are skipped
    std::vector<SermonNodePtr> selectedNodesInOrder() const; // tree order, descendants pruned
    std::vector<SermonNodePtr> topmostNodes(const QSet<NodeID>& ids) const;
    std::optional<ContiguousSelection> contiguousSelection() const;

    // ---- Navigation: Up, Down, Left, Right and their Shift forms -----------------------------
    void moveSelection(bool forward);
    void extendSelection(bool forward);
    void selectParent();
    void selectFirstChild();
    void extendToParent();
    void extendToFirstChild();
    void selectAll();
    // False when nothing was selected, so that Escape can go on to someone else.
    bool deselectAll();

    // ---- Structural edits --------------------------------------------------------------------
    void deleteSelection();
    void duplicate();
    void moveUp();
    void moveDown();
    void promote();
    void demote();
    void fold();
    void unfold();
    void newLineBelow();
    void newLineAbove();
    void newLineUnder();
    void toggleQuote();
    void setMarker(const QString& marker);
    void removeMarker();
    // Drops dragged lines under `parentID` at `index`: one undo step, taken before knowing
    // whether the move applies. One branch moves from the grabbed line by `moveNode`, the index
    // not corrected for its own removal; several move together, the index counted without
    // them. Several stay selected as a multiple selection; after one, none is left.
    void dropNodes(const NodeID& grabbed, const QSet<NodeID>& moving, const NodeID& parentID, int index);

    // ---- Text edit session -------------------------------------------------------------------
    std::optional<NodeID> editingNodeID() const { return m_editingNodeID; }
    const QString& editingText() const { return m_editingText; }
    void setEditingText(const QString& text);
    bool editingIsNew() const { return m_editingIsNew; }

    void beginEditing();
    void startSession(const NodeID& id, bool isNew);
    // Ends the session; true when the line was emptied and so removed.
    bool commit(bool keepText);
    // Closes the session and touches nothing else, for a view that settles the text itself.
    void endSession() { setSession(std::nullopt, QString(), false); }
    // The editor's keys; each commits the session first.
    void editorReturn();
    void editorInsertLineAbove(); // Ctrl+Return: a new line before this one
    void editorSplitAtCursor(int position); // Alt+Return; cursor in UTF-16 units of the editor's text
    void editorTab();
    void editorShiftTab();
    void editorEscape();

    // ---- Split and join ----------------------------------------------------------------------
    void split();
    void splitSentences();
    std::optional<NodeID> join();

    // ---- Clipboard ---------------------------------------------------------------------------
    void copy();
    void copyBranch();
    void cut();
    void paste();

    // ---- Search ------------------------------------------------------------------------------
    bool isSearching() const { return m_isSearching; }
    void beginSearch();
    const QString& searchQuery() const { return m_searchQuery; }
    // Every real change of the query runs `updateSearch`.
    void setSearchQuery(const QString& query);
    const std::vector<NodeID>& searchMatches() const { return m_searchMatches; }
    const QSet<NodeID>& searchMatchSet() const { return m_searchMatchSet; }
    int currentMatchIndex() const { return m_currentMatchIndex; }
    const QSet<NodeID>& autoExpandedNodeIDs() const { return m_autoExpandedNodeIDs; }
    const QHash<NodeID, bool>& savedCollapsedState() const { return m_savedCollapsedState; }

    void updateSearch();
    void expandForMatches();
    void restoreCollapsedState();
    void stepMatch(bool forward);
    void endSearch();
    std::optional<SearchHighlight> highlight(const NodeID& id) const;
    // The same for a node the view already holds, without looking it up: the one place where
    // search marks are worked out, so that every view marks what search found.
    std::optional<SearchHighlight> highlight(const SermonNode& node) const;

signals:
    void selectionChanged();
    void editingChanged();
    void searchChanged();
    // The tree was changed by one of this controller's edits (not by undo or redo). Text
    // typed into a new line lands without an undo step of its own, so whoever saves listens here.
    void edited();

private:
    SermonNodePtr root() const;
    SermonNodePtr findNode(const std::optional<NodeID>& id) const;
    bool selectionHoldsRoot(const QSet<NodeID>& ids) const;
    // The nodes with these ids in tree order, those gone from the tree skipped; with
    // `topmostOnly`, those below another of them too.
    std::vector<SermonNodePtr> nodesInTreeOrder(const QSet<NodeID>& ids, bool topmostOnly) const;
    void captureUndo();
    void treeMutated(bool byEdit = true);
    void requestVisible(const std::optional<NodeID>& id);
    void requestCanvasFocus();
    void restoreSelectionAfterUndo();
    // Where Left and Right go from the selected line; each sets the navigation depth.
    std::optional<NodeID> parentTarget();
    std::optional<NodeID> firstChildTarget();
    void newSiblingLine(bool after);
    // Takes a block of siblings out of their parent and puts them under another, from `at`.
    void moveBlock(const ContiguousSelection& block, const SermonNodePtr& newParent, int at);

    std::optional<NodeID> verticalTarget(const NodeID& id, bool forward) const;
    std::vector<NodeID> visibleRange(const NodeID& from, const NodeID& to) const;
    void extendTo(const NodeID& target);
    void setSession(std::optional<NodeID> id, QString text, bool isNew);
    void startNewLineSession(const SermonNodePtr& node);
    // Selects a set of new lines as a multiple selection with one of them as primary.
    void selectNewNodes(const std::vector<NodeID>& ids);

    SermonDocument* m_document;
    UndoManager* m_undoManager;
    Pasteboard* m_pasteboard = nullptr;

    std::optional<NodeID> m_selectedNodeID;
    QSet<NodeID> m_selectedNodeIDs;
    std::optional<NodeID> m_selectionAnchorID;
    bool m_isExtendingSelection = false;
    int m_navigationDepth = 0;

    std::optional<NodeID> m_editingNodeID;
    QString m_editingText;
    bool m_editingIsNew = false;

    bool m_isSearching = false;
    QString m_searchQuery;
    std::vector<NodeID> m_searchMatches;
    QSet<NodeID> m_searchMatchSet;
    int m_currentMatchIndex = 0;
    QSet<NodeID> m_autoExpandedNodeIDs;
    QHash<NodeID, bool> m_savedCollapsedState;
};
