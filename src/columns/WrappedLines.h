#pragma once

#include <QString>

#include <vector>

class QFont;

// One drawn line of a cell: its text (newlines trimmed) and its top below the cell's top, always
// a whole number of rows.
struct WrappedLine {
    QString string;
    double yOffset = 0;
    bool operator==(const WrappedLine&) const = default;
};

// The 13-point system face the columns use, regular or semibold.
QFont columnFont(bool semibold);

// Word wrap of a cell's text in max(columnWidth - 28, 1). A soft break (U+2028) is a newline; an
// empty text, or one that gives no line, is one empty line; a paragraph that is a single long
// word stays one line (the drawing clips it). Answers come from a cache of earlier answers,
// which are exactly what the uncached computation gives.
std::vector<WrappedLine> wrappedLines(const QString& text, bool semibold, double columnWidth);

// How many lines wrappedLines gives, from the same cache without copying them out: what a
// layout needs of every node on every keystroke.
int wrappedLineCount(const QString& text, bool semibold, double columnWidth);

// The same without the cache, which only tests and measurements want.
std::vector<WrappedLine> wrappedLinesUncached(const QString& text, bool semibold, double columnWidth);
