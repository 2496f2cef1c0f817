#pragma once

#include "core/NodeID.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <cstdint>
#include <limits>
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
    // What the node and everything shown below it cover: a frame skips the whole branch when
    // this is out of view. Unknown (everything) unless the layout filled it in.
    double branchTop = -std::numeric_limits<double>::infinity();
    double branchBottom = std::numeric_limits<double>::infinity();
    double branchRight = std::numeric_limits<double>::infinity();
    int branchWords = 0; // the node's words and all its descendants', folded or not

    QRectF frame() const { return {origin, size}; }
    double maxX() const { return origin.x() + size.width(); }
    double maxY() const { return origin.y() + size.height(); }
    double midY() const { return origin.y() + size.height() * 0.5; }
    // Whether the branch, moved by `shift`, can touch `rect`.
    bool branchTouches(const QRectF& rect, double shift = 0) const
    {
        return branchTop - shift <= rect.bottom() && branchBottom + shift >= rect.top()
            && origin.x() - shift <= rect.right() && branchRight + shift >= rect.left();
    }

    // What the layout last measured, for the next run: the text (held, so its characters' address
    // can't be reused), and its own words. Not compared either.
    uint32_t pass = 0; // the layout run that placed it last
    bool estimated = false; // sized by a guess, out of sight, until the text is measured
    QString measuredText = {};
    int ownWords = 0;

    bool operator==(const NodeLayout& other) const
    {
        return nodeID == other.nodeID && origin == other.origin && size == other.size && depth == other.depth
            && isLeaf == other.isLeaf && hasOnlyLeafChildren == other.hasOnlyLeafChildren && isQuote == other.isQuote
            && branchTop == other.branchTop && branchBottom == other.branchBottom && branchRight == other.branchRight
            && branchWords == other.branchWords;
    }
};

// Descendants of a folded node have no entry; every reader tolerates a missing one.
using NodeLayouts = std::unordered_map<NodeID, NodeLayout>;
