#pragma once

#include "MapDrawState.h"
#include "MapLayoutState.h"
#include "MapPointerInteraction.h"
#include "MapTransitionAnimator.h"
#include "MapViewport.h"
#include "TextBitmapCache.h"
#include "ZoomFunctions.h"

#include "editing/NodeActions.h"

#include <QPointF>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

class DocumentController;
class BackgroundMeasure;
class MemoryPasteboard;
class MinimapOverlay;
class NodeEditorOverlay;
class Pasteboard;
class QMenu;
class QTimer;
class SearchBarOverlay;
class SermonDocument;
class UndoManager;

// The mind map of one document: lays the tree out and paints it, pans and zooms, and is edited
// from the keyboard and the pointer through its own DocumentController. The text of a node is
// edited in a NodeEditorOverlay laid over it; search has its bar at the top.
class MindMapCanvas : public QWidget {
    Q_OBJECT
public:
    explicit MindMapCanvas(SermonDocument* document, QWidget* parent = nullptr);
    ~MindMapCanvas() override;

    SermonDocument* document() const { return m_document; }
    DocumentController* controller() const { return m_controller; }
    // The window's undo manager and clipboard; without them steps live in the document alone
    // and copies in memory.
    void setUndoManager(UndoManager* manager);
    void setPasteboard(Pasteboard* pasteboard);

    MapViewport& viewport() { return m_viewport; }
    const MapViewport& viewport() const { return m_viewport; }
    // The layout of the tree as it stands: a change since the last pass is laid out first.
    const MapLayoutState& layoutState() const;
    // What the last pass drew, refreshed from the controller, the gestures and the transition.
    const MapDrawState& drawState();
    TextBitmapCache& textCache() { return m_textCache; }
    MapTransitionAnimator& transitions() { return m_transitions; }
    MapPointerInteraction& pointer() { return m_pointer; }
    NodeEditorOverlay* editorOverlay() const { return m_editor; }
    SearchBarOverlay* searchBar() const { return m_searchBar; }
    MinimapOverlay* minimap() const { return m_minimap; }

    // Changes what is drawn besides the tree, and repaints. Selection, search, editing, gesture
    // and animation fields are refilled from their owners before each pass.
    void updateDrawState(const std::function<void(MapDrawState&)>& change);

    // Words a minute for the time badges, asked at each pass; 120 without a source or for a bad value.
    void setReadingPaceSource(std::function<int()> source);
    int readingPaceWPM() const;

    ZoomFunctions zoomFunctions();
    // Called once with the zoom commands when the map first appears.
    std::function<void(const ZoomFunctions&)> onZoomFunctionsReady;

    // The node commands of the map, for the menus: each runs the controller's operation with
    // the map's transition and then brings the selection into view.
    NodeActions nodeActions();
    bool performCommand(NodeCommand command, const QString& marker = {});

    // For the window, when the map is shown again after another mode: it begins as a map made
    // afresh would. An open edit is committed keeping its text, search ends, the selection goes
    // back to the title and the pan to (0, 0); the zoom stays, since the window owns it. Then the
    // steps of the first appearance run again, zoom commands included.
    void reappear();

    // Opens the find bar and gives it the keyboard ("Find...", Ctrl+F).
    void openSearch();
    void focusCanvas();
    // Ends an open edit keeping what was typed, as a click on the map does.
    void commitEditing();

    // Shows the right-click menu; replaceable so that tests never block on a modal menu.
    std::function<void(QMenu& menu, QPoint globalPosition)> contextMenuPresenter;

    // After any change to the tree. The relayout is deferred, so that the several notices of one
    // change cost one pass; whatever reads the layout before that runs it at once.
    void onTreeMutated();
    // Measures what is in sight and a screen around it; lines further off are placed with
    // estimated widths and measured in the background, then laid out again (nothing in sight
    // moves). A frame that scrolls onto estimated lines measures them first.
    void recomputeLayout();
    void ensureLayout();
    // Measures every line now: for whatever needs the whole layout exact at once.
    void finishMeasuring();
    // How often the tree was laid out: once a change, however many notices it sent.
    int layoutPasses() const { return m_layoutPasses; }

    void reveal(const NodeID& id);
    // Runs a click. What it selects is revealed only once the double click it may begin can no
    // longer come, so that the second click finds the node where the first one left it.
    void runClick(const std::function<void()>& click);
    void centerOn(QPointF canvasPoint);
    QPointF canvasPoint(QPointF viewPoint) const { return m_viewport.canvasPoint(viewPoint); }
    // The first node whose frame holds a canvas point.
    std::optional<NodeID> hitNode(QPointF canvasPoint) const;

    // Runs a change of the tree and lets the map glide into its new shape. Departing nodes in
    // `oldTexts` fade out; the others vanish.
    void runWithTransition(const std::function<void()>& change,
                           const std::unordered_map<NodeID, QString>& oldTexts = {}, bool revealSelection = false);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void appear();
    // A glide from the layout before a change to the one after it. Held while a command runs,
    // which starts it at its end; otherwise it starts with the first relayout.
    struct PendingGlide {
        bool held = false;
        bool ghostsFromOldTree = false; // undo: every line that leaves fades out
        std::unordered_map<NodeID, QString> texts;
        bool hasBefore = false;
        NodeLayouts before;
        SermonNodePtr oldRoot; // kept for the texts of the lines that leave
    };
    void startGlide();
    QRectF nearRegion(double scale, QPointF panOffset) const;
    QRectF nearRegion() const;
    std::vector<QRectF> regionsToMeasure() const;
    // What follows the layout's frames: the scroll bounds, the editor, the minimap.
    void followLayout();
    void connectController();
    void refreshDrawState();
    void syncEditor();
    void syncSearchBar();
    void placeOverlays();
    void showContextMenu(QPointF viewPoint, QPoint globalPosition);
    bool isTakingKeys() const;
    // Runs one of the editor's keys; a line that was there before and is now emptied glides away.
    void runEditorKey(const std::function<void()>& key);
    std::unordered_map<NodeID, QString> selectionTexts(bool includeSelf) const;

    SermonDocument* m_document;
    DocumentController* m_controller;
    std::unique_ptr<MemoryPasteboard> m_ownPasteboard;
    MapViewport m_viewport;
    MapLayoutState m_layout;
    MapDrawState m_drawState;
    TextBitmapCache m_textCache;
    MapTransitionAnimator m_transitions;
    MapPointerInteraction m_pointer;
    NodeEditorOverlay* m_editor;
    SearchBarOverlay* m_searchBar;
    MinimapOverlay* m_minimap = nullptr;
    std::function<int()> m_readingPace;
    bool m_hasAppeared = false;
    bool m_isClicking = false;
    std::optional<NodeID> m_clickRevealID;
    QTimer* m_clickRevealTimer;

    bool m_layoutIsStale = true;
    int m_layoutPasses = 0;
    QTimer* m_relayoutTimer;
    BackgroundMeasure* m_measuring;
    bool m_measureEverything = false;
    bool m_isPainting = false;
    std::optional<PendingGlide> m_glide;
};
