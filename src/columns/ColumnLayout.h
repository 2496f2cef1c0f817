#pragma once

#include "core/NodeID.h"

#include <QPointF>
#include <QSizeF>

#include <cstdint>
#include <unordered_map>
#include <vector>

class SermonNode;

// A half-open span of content y: lower up to, not including, upper.
struct ColumnYRange {
    double lower = 0;
    double upper = 0;

    double height() const { return upper - lower; }
    bool contains(double y) const { return lower <= y && y < upper; }
    bool operator==(const ColumnYRange&) const = default;
};

// One node's cell in the columns view. Content coordinates: (0, 0) is the top left of column 0.
struct ColumnNodeFrame {
    NodeID nodeID;
    int column = 0; // depth below the root of this layout, counted by the walk
    QPointF origin; // x = the column's left edge, y = top of the text block
    QSizeF size; // the whole column width by wrapped lines x rowHeight
    // From origin.y to the bottom of the visible subtree; never shorter than the text.
    ColumnYRange subtreeYRange;
    uint32_t pass = 0; // the layout run that placed it last; not compared

    bool operator==(const ColumnNodeFrame& other) const
    {
        return nodeID == other.nodeID && column == other.column && origin == other.origin && size == other.size
            && subtreeYRange == other.subtreeYRange;
    }
};

using ColumnFrames = std::unordered_map<NodeID, ColumnNodeFrame>;

// The whole sermon as a table: depth d is column d, and a node's block is as tall as its visible
// subtree, so that each branch reads as one band across the columns to its right.
struct ColumnLayout {
    static constexpr double defaultColumnWidth = 600;
    static constexpr double minColumnWidth = 180;
    static constexpr double maxColumnWidth = 1200;
    static constexpr double rowHeight = 28;
    static constexpr double columnTextInset = 14;

    ColumnFrames frames; // one per visible node; a collapsed node's descendants have none
    QSizeF totalSize;
    int columnCount = 0;
    std::vector<double> columnXEdges; // columnCount + 1 entries: 0, then the running widths

    static const ColumnLayout empty;

    // Walks the tree without recursion, so that any depth a file holds is safe. Every node is
    // measured in the regular weight, the root too (the canvas draws it semibold).
    static ColumnLayout compute(const SermonNode& root, const std::vector<double>& widths);
    // The same into a layout that holds the last one: frames are rewritten where they stand and
    // the ones no longer placed removed, so a relayout of a long sermon allocates next to nothing.
    static void compute(const SermonNode& root, const std::vector<double>& widths, ColumnLayout& into);

    static double widthAt(const std::vector<double>& widths, int column);
    bool operator==(const ColumnLayout&) const = default;
};
