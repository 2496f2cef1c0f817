#pragma once

#include "core/NodeID.h"
#include "core/WordCount.h"

#include <QFont>
#include <QRectF>
#include <QString>

#include <atomic>
#include <unordered_map>
#include <vector>

class QObject;
class SermonNode;

// A text a layout wraps, in one of its fonts (headings by depth 0 to 4, then 5 for lines), at
// the width it wraps at.
struct DeliveryWrap {
    QString text;
    int fontKind = 0;
    double width = 0;
};

// One thing drawn on the delivery page, in drawing order.
struct DeliveryItem {
    enum class Kind { heading, headingDivider, leaf, timeMarker };

    Kind kind = Kind::leaf;
    NodeID id; // heading, leaf
    int depth = 0; // heading, leaf
    QString text; // heading, leaf (stored text), timeMarker
    QRectF frame; // heading, leaf
    bool isQuote = false; // leaf
    double y = 0; // headingDivider: its y; timeMarker: its baseline
    double width = 0; // headingDivider

    // Where the item begins on the page; the order of the interleaving of minute marks.
    double top() const;

    bool operator==(const DeliveryItem&) const = default;
};

// The sermon flattened into one column of prose, and the tables that turn time into a place on
// the page and back. A pure function of the tree, the minutes and three settings.
struct DeliveryContentLayout {
    std::vector<DeliveryItem> items;
    double totalHeight = 80;
    std::unordered_map<NodeID, double> nodeYPositions; // leaves: middle of the frame
    std::unordered_map<NodeID, double> headingYPositions; // headings of depth 1 to 3
    std::unordered_map<NodeID, int> headingDepths;
    std::unordered_map<NodeID, QString> headingTexts;
    std::vector<NodeWordFraction> wordFractions;
    // Headings of depth 1 to 3 from the top of the page down (by their y, then page order).
    std::vector<NodeID> headingOrder;
    // The page y of each wordFractions entry, when every entry has one and both they and the
    // fractions only grow down the page, as they do unless the line spacing is below 1. Then
    // time and place are found by bisection; empty, by a scan of the table.
    std::vector<double> entryYs;

    // The text column begins here; the margin left of it holds the runner and minute marks.
    static constexpr double textLeft = 150;
    static constexpr double runnerX = 129;
    static constexpr double topMargin = 40;

    static DeliveryContentLayout compute(const SermonNode& root, int minutes, double textWidth, double baseFontSize,
                                         double lineSpacing);

    // Wrapping every line of a long sermon takes seconds, and a layout made later on this
    // thread would do it while the reader waits to switch. This measures the wraps of `root` at
    // these settings on the thread pool, when a core is free, and hands the sizes to this
    // thread's layouts; nothing comes back once `context` is gone.
    static void measureAhead(const SermonNode& root, double textWidth, double baseFontSize, QObject* context);
    // The parts of it: what a layout of `root` wraps; their sizes, on any thread (fewer once
    // `stop` is set); sizes measured elsewhere, kept for this thread's layouts.
    static std::vector<DeliveryWrap> wraps(const SermonNode& root, double textWidth);
    static std::vector<QSizeF> measureWraps(const std::vector<DeliveryWrap>& asked, double baseFontSize,
                                            const std::atomic<bool>& stop);
    static void rememberWraps(const std::vector<DeliveryWrap>& asked, const std::vector<QSizeF>& sizes,
                              double baseFontSize);

    static double headingIndent(int depth);
    static double leafIndent(int depth);
    static double gapBefore(int depth);
    static double gapAfter(int depth);
};

QFont deliveryFont(int depth, bool isLeaf, double baseFontSize);

// Page y at fraction `f` of the time, and back.
double yForFraction(const DeliveryContentLayout& layout, double f);
double fractionForY(const DeliveryContentLayout& layout, double y);

// "5 min".
QString minuteMarkText(int minutes);
