#pragma once

#include "MapDrawState.h"

#include "core/NodeID.h"

#include <QPointF>
#include <QRectF>
#include <QtCore/qnamespace.h>

#include <functional>
#include <optional>
#include <unordered_set>
#include <vector>

class MindMapCanvas;
struct MapLayoutState;

// The map's direct manipulation by the pointer: hit tests, taps and double taps, fold buttons,
// Shift and Ctrl selection, the lasso, panning and dragging nodes to a new place. Points come
// in as view points and are turned into canvas points before any test.
class MapPointerInteraction {
public:
    static constexpr double doubleClickInterval = 0.35;
    static constexpr double dragDistance = 8;
    // The fold button is drawn with radius 7; its target reaches further.
    static constexpr double foldButtonReach = 12;

    enum class Gesture { none, panning, lasso, nodeDrag };

    // The first node whose frame holds the point; frames don't overlap.
    static std::optional<NodeID> hitNode(const MapLayoutState& tables, QPointF canvasPoint);
    // The node whose fold button is within reach of the point.
    static std::optional<NodeID> hitFoldButton(const MapLayoutState& tables, QPointF canvasPoint);
    // Where dropping dragged nodes at a point would put them; nothing when no node is in reach.
    static std::optional<DropTarget> computeDropTarget(const MapLayoutState& tables,
                                                       const std::unordered_set<NodeID>& dragNodeIDs, QPointF cursor);
    // The ids shown from one node to another in reading order, both included; the two alone
    // when either is hidden.
    static std::vector<NodeID> visibleRange(const MapLayoutState& tables, const NodeID& a, const NodeID& b);

    explicit MapPointerInteraction(MindMapCanvas& canvas);

    // Mouse events, in view points, with the modifiers held at the time.
    void press(QPointF viewPoint);
    void move(QPointF viewPoint, Qt::KeyboardModifiers modifiers);
    void release(QPointF viewPoint, Qt::KeyboardModifiers modifiers);

    // One click that didn't become a drag, at a canvas point.
    void tap(QPointF canvasPoint, Qt::KeyboardModifiers modifiers);
    // Forgets a running gesture, without dropping anything, and the last tap.
    void cancel();

    Gesture gesture() const { return m_gesture; }
    std::optional<NodeID> dragNodeID() const { return m_dragNodeID; }
    const std::unordered_set<NodeID>& dragNodeIDs() const { return m_dragNodeIDs; }
    std::optional<DropTarget> dropTarget() const { return m_dropTarget; }
    std::optional<QRectF> lassoRect() const { return m_lassoRect; }

    // What the drawing pass shows of a running gesture.
    void apply(MapDrawState& state) const;

    // Seconds from a monotonic clock, for the double click; replaceable in tests.
    void setClock(std::function<double()> clock);

private:
    void tapNow(QPointF canvasPoint, Qt::KeyboardModifiers modifiers);
    void begin(QPointF start, Qt::KeyboardModifiers modifiers);
    void update(QPointF start, QPointF current, QPointF viewTranslation);
    void end();
    void drop(const DropTarget& target);
    void resetDrag();

    MindMapCanvas& m_canvas;
    std::function<double()> m_clock;

    std::optional<double> m_lastTapTime;
    std::optional<NodeID> m_lastTapNodeID;

    std::optional<QPointF> m_pressPoint; // view point of the button press
    Gesture m_gesture = Gesture::none;
    QPointF m_panStart;
    std::optional<NodeID> m_dragNodeID;
    std::unordered_set<NodeID> m_dragNodeIDs;
    QPointF m_dragOffset;
    QPointF m_dragStartLocation;
    std::optional<DropTarget> m_dropTarget;
    QPointF m_lassoOrigin;
    std::optional<QRectF> m_lassoRect;
};
