#pragma once

#include "NodeLayout.h"

#include "core/SameCharacters.h"

#include <QFont>
#include <QRectF>
#include <QString>

#include <array>
#include <atomic>
#include <cstdint>
#include <unordered_map>
#include <vector>

class QFontMetricsF;
class SermonNode;

// The map's left-to-right tidy tree: a pure function of the tree and the font metrics.
namespace TreeLayout {

inline constexpr double originX = 40;
inline constexpr double originY = 40;
// A parent's leaves read as one tight list under a brace; subtrees as separate branches.
inline constexpr double leafGap = 2;
inline constexpr double leafIndent = 28;
inline constexpr double branchGap = 8;
inline constexpr double branchIndent = 40;
inline constexpr double horizontalPadding = 16; // on either side of the text
inline constexpr double leafVerticalPadding = 3;
inline constexpr double branchVerticalPadding = 8;

double nodeFontSize(int depth);
QFont::Weight nodeFontWeight(int depth);
// The system sans-serif at the size and weight of a depth, sized in canvas points.
QFont nodeFont(int depth);
QFont mapFont(double size, QFont::Weight weight, bool italic = false);
// The system's fixed-pitch face, sized the same way: the fold button's sign.
QFont mapMonospacedFont(double size, QFont::Weight weight);

// ceil(ascent + descent + leading).
double lineHeight(const QFontMetricsF& metrics);

QSizeF measureNode(const QString& text, int depth, bool isLeaf);

struct TextExtent {
    double width = 0; // the widest line, rounded up
    int lines = 0;
    int words = 0; // counted with the measure, for the time badges' sums
};

// Widths of the texts a layout measured, for lines the last run didn't place with this very text
// (their entries remember their own): new lines, copies, lines an undo made again. Keyed by the
// characters (see SameCharacters) and depth class, so it can't go stale while the fonts stay;
// clear it when they change. Texts no run has used lately fall out once they outnumber the
// ones in use.
class MeasureCache {
public:
    void clear();
    void beginRun();
    void endRun();
    // The extent if a run measured the text lately, kept for this run; null otherwise.
    const TextExtent* find(int depthClass, const QString& text);
    void insert(int depthClass, const QString& text, TextExtent extent);
    // The words of a line under a fold, which is counted but not measured.
    int hiddenWords(const QString& text);
    size_t size() const;

private:
    struct Entry {
        TextExtent extent;
        uint32_t run = 0;
    };
    using Table = std::unordered_map<QString, Entry, SameCharactersHash, SameCharacters>;
    std::array<Table, 3> m_tables;
    Table m_hidden;
    uint32_t m_run = 0;
    size_t m_used = 0;
};

// A text a run estimated instead of measuring.
struct Unmeasured {
    int depthClass = 0;
    QString text;
};

// Shaping every line of a long sermon takes seconds, so a run may measure only what can be
// seen: lines whose frames may reach one of the `regions`, their ancestors (whose widths place them), the
// texts the cache knows, and up to `budget` others. The rest get a width estimated from
// per-character advances and are marked `estimated`; their heights, words and every y are exact,
// since no y depends on a width. Their texts are listed for measuring elsewhere.
struct PartialMeasure {
    std::vector<QRectF> regions;
    size_t budget = 300;
    std::vector<Unmeasured> unmeasured;
};

NodeLayouts layout(const SermonNode& root, MeasureCache* cache = nullptr);
// The same into a table that holds the last layout: entries are rewritten where they stand and
// the ones no longer placed removed, so a run after a small change allocates next to nothing.
void layout(const SermonNode& root, NodeLayouts& table, MeasureCache* cache, PartialMeasure* partial = nullptr);

// After a partial run, measures the estimated lines that may reach `regions` and moves what
// their widths move (the branches hanging from them, the reach of the branches above them),
// walking only the branches that reach the regions. False, with nothing known to be in step,
// when the table doesn't hold the tree's lines: lay it out again instead.
bool measureInSight(const SermonNode& root, NodeLayouts& table, MeasureCache* cache,
                    const std::vector<QRectF>& regions);

// Measures texts a partial run left out; safe on any thread. Stops early, with fewer results,
// once `stop` is set.
std::vector<TextExtent> measure(const std::vector<Unmeasured>& texts, const std::atomic<bool>& stop);

QRectF contentBounds(const NodeLayouts& layouts);

} // namespace TreeLayout
