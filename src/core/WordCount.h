#pragma once

#include "SermonNode.h"

#include <vector>

// Where a leaf's share of the spoken time begins and ends, as fractions of the whole.
struct NodeWordFraction {
    NodeID nodeID;
    double startFraction = 0;
    double endFraction = 0;

    bool operator==(const NodeWordFraction&) const = default;
};

namespace WordCount {

int wordCount(const QString& text); // pieces between Unicode whitespace
int wordCount(const SermonNode& node); // the node and all its descendants, collapsed or not

// Leaf time shares in reading order, smoothed over neighbours; empty when nothing is spoken.
std::vector<NodeWordFraction> nodeWordFractions(const SermonNode& root);

// Minutes in steps of five, never below five.
int estimatedMinutes(int words, int wpm);

// "1234 words · 11 min @120wpm", or "0 words".
QString statusText(const SermonNode& root, int wpm);
// The same without the pace: "1234 words · 11 min".
QString statusTextWithoutPace(const SermonNode& root, int wpm);

} // namespace WordCount
