#pragma once

#include "NodeLayout.h"

#include "editing/DocumentController.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// A node that has just left the layout, drawn fading where it was.
struct GhostNode {
    NodeLayout layout;
    QString text;
};

// What a running glide shows besides the final layout: where the nodes that stay started, as
// offsets that shrink to nothing as it runs, the nodes that fade in and the ghosts that fade out.
struct MapGlide {
    std::unordered_map<NodeID, QPointF> initialOffsets;
    double largestOffset = 0; // the longest way any node starts off its place, in x or y
    std::unordered_set<NodeID> fadeIn;
    std::unordered_map<NodeID, GhostNode> ghosts;
};

// Where a dragged node would land: a position among a parent's children.
struct DropTarget {
    NodeID parentID;
    int index = 0; // where the move inserts, counted before the moved node leaves its place
    double cursorY = 0; // canvas y of the pointer, to pick the nearer side of the indicator
    // The slot among the parent's children as they stand where the node ends up, which the
    // indicator shows. One further down than `index` for a single node dropped below its own
    // place under the same parent, since the move doesn't count its leaving.
    int landingIndex = 0;
};

// Everything a drawing pass reads besides the tree and its layout tables: the viewport, the
// selection and search state of whoever edits the document, and the offsets of running animations.
struct MapDrawState {
    double scale = 1.0;
    QPointF panOffset; // view position of the canvas origin
    int readingPaceWPM = 120;

    std::optional<NodeID> selectedNodeID;
    std::unordered_set<NodeID> selectedNodeIDs;
    std::optional<NodeID> editingNodeID; // not drawn: the editor stands in its place

    bool isSearching = false;
    // The marks search puts on a node, as whoever searches works them out; drawn as given.
    std::function<std::optional<SearchHighlight>(const SermonNode&)> searchHighlight;

    // Shared with the animator, not copied each frame; none when nothing glides.
    std::shared_ptr<const MapGlide> glide;
    double animationProgress = 1.0; // eased

    // Where a node is shown off its final place at this point of the glide.
    QPointF animOffset(const NodeID& id) const
    {
        if (!glide || glide->initialOffsets.empty())
            return {};
        const auto it = glide->initialOffsets.find(id);
        return it == glide->initialOffsets.end() ? QPointF() : it->second * (1 - animationProgress);
    }

    // How far off its final place any node is shown now: a branch this far out of view may
    // still show.
    double glideReach() const { return glide ? glide->largestOffset * (1 - animationProgress) : 0; }

    std::optional<NodeID> dragNodeID;
    std::optional<DropTarget> dropTarget;
    std::optional<QRectF> lassoRect; // canvas points
};
