#pragma once

#include "ColumnAnimator.h"
#include "ColumnDrawing.h"
#include "ColumnFrameIndex.h"
#include "ColumnLayout.h"
#include "ColumnWidthsConfig.h"
#include "ScrollAnimator.h"

#include "core/SermonNode.h"

#include <QPointF>
#include <QSizeF>
#include <QWidget>

#include <memory>
#include <optional>
#include <unordered_map>

class ColumnDragHandleOverlay;
class ColumnEditorOverlay;
class ColumnWidthsStore;
class DocumentController;
class MemoryPasteboard;
class Pasteboard;
class SermonDocument;
class UndoManager;

// The sermon as a table, one column per depth: drawn whole on each change, scrolled with
// pinned headings and columns that collapse to strips at the left edge, edited from the keyboard
// through its own DocumentController (so its steps are the window's undo steps), with the
// divider handles and the in-place editor laid over it.
class ColumnCanvas : public QWidget {
    Q_OBJECT
public:
    static constexpr double revealMargin = 40;

    // Without a store the widths live in memory, shared with no one.
    explicit ColumnCanvas(SermonDocument* document, ColumnWidthsStore* widths = nullptr, QWidget* parent = nullptr);
    ~ColumnCanvas() override;

    SermonDocument* document() const { return m_document; }
    DocumentController* controller() const { return m_controller; }
    void setUndoManager(UndoManager* manager);
    void setPasteboard(Pasteboard* pasteboard);
    ColumnWidthsStore* widthsStore() const { return m_widths; }

    // The target layout, and the frames drawn and hit: the animated ones, less any in a column
    // that has just gone away.
    const ColumnLayout& layout() const { return m_layout; }
    const ColumnFrames& effectiveFrames() const { return *m_effectiveFrames; }
    const std::unordered_map<NodeID, int>& subtreeRightmost() const { return m_subtreeRightmost; }
    const std::unordered_map<NodeID, NodeID>& nextSiblingID() const { return m_nextSiblingID; }
    ColumnAnimator& animator() { return m_animator; }
    ScrollAnimator& scrollAnimator() { return m_scrollAnimator; }
    ColumnEditorOverlay* editor() const { return m_editor; }
    ColumnDragHandleOverlay* dragHandles() const { return m_handles; }

    QPointF panOffset() const { return m_panOffset; }
    // Clamped: both coordinates 0 or below, and no further than the table allows.
    void setPanOffset(QPointF offset);
    QPointF clampedPan(QPointF offset) const;
    void scrollBy(double dx, double dy);

    void recomputeLayout(bool animated);
    void revealNode(const NodeID& id);
    std::optional<NodeID> hitTest(QPointF viewPoint) const;

    void beginEdit(const NodeID& id, bool isNew);
    void endEdit(bool commit);
    // For the window before it reads the tree: an open edit is committed.
    void commitEditing();

    // What a frame is drawn from, and the drawing itself into any painter.
    ColumnDrawInput drawInput() const;
    ColumnDrawing::Stats drawInto(QPainter& painter, bool isDark) const;

signals:
    // The tree was changed here: the window marks and saves the document.
    void edited();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    enum class Creation { child, siblingBelow, siblingAbove };

    SermonNodePtr root() const;
    SermonNodePtr find(const std::optional<NodeID>& id) const;
    void appear();
    // The text of `node` changed and nothing else: the tables that follow the tree's shape stand.
    void relayText(const SermonNode& node);
    // Gives the cell of `node` a new height and moves what lies below it, in place.
    void resizeCell(const SermonNode& node, ColumnNodeFrame& cell, double height);
    void walkTree();
    void settleLayout(bool animated);
    void refreshEffective(bool layoutChanged);
    const ColumnFrameIndex& effectiveIndex() const { return m_displayIsLayout ? m_targetIndex : m_effectiveIndex; }
    void placeOverlays();
    void syncEditor();
    void editingTextChanged();
    bool handleKey(QKeyEvent* event);
    std::optional<NodeID> nearestInColumn(const NodeID& id, bool above) const;
    // An undo step that holds the text from before the editing began, as the edit's own step.
    void captureUndo(const SermonNodePtr& editedNode, bool isNew);
    // Removes a node emptied by an edit and selects its neighbour; the step is taken first
    // unless the node was new, whose step was taken when it was made.
    void removeEmptied(const SermonNodePtr& node, bool isNew);
    void editorCreate(Creation creation);
    void editorSplit(int cursor);
    void takeFocus();

    SermonDocument* m_document;
    ColumnWidthsStore* m_widths;
    DocumentController* m_controller;
    std::unique_ptr<MemoryPasteboard> m_ownPasteboard;
    ColumnLayout m_layout = ColumnLayout::empty;
    // The animator's frames when they hold exactly the layout's nodes (after a glide's first
    // tick, or without a glide); before that, a merge of both.
    const ColumnFrames* m_effectiveFrames = &m_mergedFrames;
    ColumnFrames m_mergedFrames;
    bool m_displayIsLayout = false; // the animator shows exactly the layout's frames
    quint64 m_indexedGeneration = 0;
    ColumnFrameIndex m_effectiveIndex;
    ColumnFrameIndex m_targetIndex;
    // The visible nodes of each column, top to bottom: they follow the tree's shape alone.
    std::vector<std::vector<NodeID>> m_columnOrder;
    std::unordered_map<NodeID, int> m_subtreeRightmost;
    std::unordered_map<NodeID, NodeID> m_nextSiblingID;
    std::unordered_map<NodeID, SermonNodePtr> m_nodeLookup;
    ColumnAnimator m_animator;
    ScrollAnimator m_scrollAnimator;
    QString m_editOriginalText;
    std::optional<NodeID> m_editOriginID; // the session that text belongs to
    QPointF m_panOffset;
    ColumnDragHandleOverlay* m_handles;
    ColumnEditorOverlay* m_editor;
    std::optional<NodeID> m_editorNodeID; // the node the editor shows
    ColumnWidthsConfig m_columnWidths;
    bool m_hasAppeared = false;
    bool m_lastDark = false;
};
