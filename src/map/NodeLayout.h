#pragma once

#include "core/NodeID.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <unordered_map>

// One visible node's frame on the map, in canvas points (origin top left, y downwards).
struct NodeLayout {
    NodeID nodeID;
    QPointF origin;
    QSizeF size;
    int depth = 0;
    bool isLeaf = false; // no children at all; a folded parent is not a leaf
    bool hasOnlyLeafChildren = false; // only on an expanded parent whose children are all leaves
    bool isQuote = false; // only when nothing hangs from the node on the map

    QRectF frame() const { return {origin, size}; }
    double maxX() const { return origin.x() + size.width(); }
    double maxY() const { return origin.y() + size.height(); }
    double midY() const { return origin.y() + size.height() * 0.5; }

    bool operator==(const NodeLayout& other) const = default;
};

// Descendants of a folded node have no entry; every reader tolerates a missing one.
using NodeLayouts = std::unordered_map<NodeID, NodeLayout>;
