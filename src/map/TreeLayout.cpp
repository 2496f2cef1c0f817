#include "TreeLayout.h"

#include "look/EmojiText.h"

#include "core/PerformanceLog.h"
#include "core/SermonNode.h"
#include "core/WordCount.h"

#include <QFontDatabase>
#include <QFontMetricsF>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace TreeLayout {

namespace {

constexpr QChar lineSeparator(0x2028);

// Metrics for one depth class, made once per layout run rather than once per node.
struct DepthMetrics {
    QFont font;
    QFontMetricsF metrics;
    double lineHeight;
    std::optional<std::array<double, 128>> asciiAdvances; // for estimates, made on first use
    explicit DepthMetrics(int depth)
        : font(nodeFont(depth))
        , metrics(font)
        , lineHeight(TreeLayout::lineHeight(metrics))
    {
    }
};

// Calls `line` with each of the text's lines; an empty one counts as a space.
template <typename Line>
void forEachLine(const QString& text, Line&& line)
{
    static const QString space = QStringLiteral(" ");
    qsizetype start = 0;
    bool split = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == lineSeparator || c == QLatin1Char('\n')) {
            const QString part = text.mid(start, i - start);
            line(part.isEmpty() ? space : part);
            start = i + 1;
            split = true;
        }
    }
    const QString last = split ? text.mid(start) : text;
    line(last.isEmpty() ? space : last);
}

// The widest line's width, rounded up, and the number of lines.
TextExtent measureText(const DepthMetrics& m, const QString& text)
{
    TextExtent extent;
    forEachLine(text, [&](const QString& line) {
        ++extent.lines;
        extent.width = std::max(extent.width, std::ceil(EmojiText::horizontalAdvance(m.metrics, m.font, line)));
    });
    extent.words = WordCount::wordCount(text);
    return extent;
}

// The same with each character's own advance, unshaped: the lines and words are exact, the width
// is near enough to place a line out of sight until it is measured.
TextExtent estimateText(DepthMetrics& m, const QString& text)
{
    if (!m.asciiAdvances) {
        m.asciiAdvances.emplace();
        for (char16_t c = 0; c < 128; ++c)
            (*m.asciiAdvances)[c] = m.metrics.horizontalAdvance(QChar(c));
    }
    const double other = m.metrics.averageCharWidth();
    TextExtent extent;
    forEachLine(text, [&](const QString& line) {
        ++extent.lines;
        double width = 0;
        for (const QChar c : line)
            width += c.unicode() < 128 ? (*m.asciiAdvances)[c.unicode()] : other;
        extent.width = std::max(extent.width, std::ceil(width));
    });
    extent.words = WordCount::wordCount(text);
    return extent;
}

QSizeF nodeSize(const DepthMetrics& m, TextExtent extent, bool isLeaf)
{
    const double padding = 2 * (isLeaf ? leafVerticalPadding : branchVerticalPadding);
    return {extent.width + 2 * horizontalPadding, m.lineHeight * extent.lines + padding};
}

} // namespace

double nodeFontSize(int depth)
{
    return depth <= 0 ? 16 : depth == 1 ? 14 : 13;
}

QFont::Weight nodeFontWeight(int depth)
{
    return depth <= 1 ? QFont::Medium : QFont::Normal;
}

QFont mapFont(double size, QFont::Weight weight, bool italic)
{
    static const QFont base = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    QFont font = base;
    // Canvas points are logical pixels: a pixel size keeps widths independent of the screen's DPI.
    font.setPixelSize(std::max(1, int(std::lround(size))));
    font.setWeight(weight);
    font.setItalic(italic);
    // Unhinted advances scale linearly, so a bitmap rendered at any zoom matches the measured width.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QFont mapMonospacedFont(double size, QFont::Weight weight)
{
    static const QFont base = [] {
        QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        // Where the desktop names no fixed face, ask fontconfig for any monospace one.
        font.setStyleHint(QFont::Monospace);
        font.setFixedPitch(true);
        return font;
    }();
    QFont font = base;
    font.setPixelSize(std::max(1, int(std::lround(size))));
    font.setWeight(weight);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QFont nodeFont(int depth)
{
    return mapFont(nodeFontSize(depth), nodeFontWeight(depth));
}

double lineHeight(const QFontMetricsF& metrics)
{
    return std::ceil(metrics.ascent() + std::abs(metrics.descent()) + metrics.leading());
}

QSizeF measureNode(const QString& text, int depth, bool isLeaf)
{
    const DepthMetrics m(depth);
    return nodeSize(m, measureText(m, text), isLeaf);
}

void MeasureCache::clear()
{
    for (auto& table : m_tables)
        table.clear();
    m_hidden.clear();
}

const TextExtent* MeasureCache::find(int depthClass, const QString& text)
{
    Table& table = m_tables[size_t(depthClass)];
    const auto it = table.find(text);
    if (it == table.end())
        return nullptr;
    it->second.run = m_run;
    ++m_used;
    return &it->second.extent;
}

void MeasureCache::insert(int depthClass, const QString& text, TextExtent extent)
{
    m_tables[size_t(depthClass)].insert_or_assign(text, Entry{extent, m_run});
}

int MeasureCache::hiddenWords(const QString& text)
{
    auto [it, inserted] = m_hidden.try_emplace(text);
    if (inserted)
        it->second.extent.words = WordCount::wordCount(text);
    it->second.run = m_run;
    ++m_used;
    return it->second.extent.words;
}

void MeasureCache::beginRun()
{
    ++m_run;
    m_used = 0;
}

void MeasureCache::endRun()
{
    // Edited and deleted texts stay until they outnumber the live ones, so that a sweep, which
    // visits every entry, costs no more than the runs it follows.
    if (size() <= 2 * m_used + 1024)
        return;
    const auto stale = [this](const auto& entry) { return entry.second.run != m_run; };
    for (auto& table : m_tables)
        std::erase_if(table, stale);
    std::erase_if(m_hidden, stale);
}

size_t MeasureCache::size() const
{
    size_t total = m_hidden.size();
    for (const auto& table : m_tables)
        total += table.size();
    return total;
}

NodeLayouts layout(const SermonNode& root, MeasureCache* cache)
{
    NodeLayouts result;
    layout(root, result, cache);
    return result;
}

void layout(const SermonNode& root, NodeLayouts& result, MeasureCache* cache, PartialMeasure* partial)
{
    performanceLog::signpostInterval("TreeLayout", performanceLog::noMessage, [&] {
        // Told apart from the entries of earlier runs, which stay unless placed again.
        static std::atomic<uint32_t> passes{0};
        const uint32_t pass = ++passes;
        size_t placed = 0;
        std::array<DepthMetrics, 3> metrics{DepthMetrics(0), DepthMetrics(1), DepthMetrics(2)};
        if (cache)
            cache->beginRun();
        if (result.empty()) // sized first: growing the table of a long sermon rehashes it a dozen times
            result.reserve(root.shownCount());
        // Whether a line at (x, top) may reach a region of a partial run. A line placed at
        // once (nothing shown below it) has its whole frame known but its width; a parent's own
        // place waits for its children, so only its branch's top is known when it is measured.
        auto mayShow = [&](double x, double top, double height, bool placedNow) {
            return std::any_of(partial->regions.begin(), partial->regions.end(), [&](const QRectF& region) {
                return x <= region.right() && top <= region.bottom() && (!placedNow || top + height >= region.top());
            });
        };
        // The node's entry, its size and own words filled in: kept from the last run when the
        // text is the very same and the depth class and leafness too, measured otherwise.
        auto entry = [&](const SermonNode& node, double x, double top) -> NodeLayout& {
            NodeLayout& l = result.try_emplace(node.id()).first->second;
            const int depthClass = std::clamp(node.depth(), 0, 2);
            const bool isLeaf = !node.hasChildren();
            const QString& text = node.text();
            const bool sameText = l.pass != 0 && l.measuredText.constData() == text.constData()
                && l.measuredText.size() == text.size() && std::clamp(l.depth, 0, 2) == depthClass
                && l.isLeaf == isLeaf;
            if (!sameText || l.estimated) {
                DepthMetrics& m = metrics[size_t(depthClass)];
                const TextExtent* cached = cache ? cache->find(depthClass, text) : nullptr;
                // An estimate stands until the text is measured: the next runs keep it. Its
                // height is exact, which is all a line's place in sight depends on.
                std::optional<TextExtent> guess;
                if (!cached && partial && !sameText)
                    guess = estimateText(m, text);
                const bool unseen = !cached && partial
                    && !mayShow(x, top, guess ? nodeSize(m, *guess, isLeaf).height() : l.size.height(),
                                isLeaf || node.isCollapsed());
                if (unseen && partial->budget == 0) {
                    if (guess) {
                        l.size = nodeSize(m, *guess, isLeaf);
                        l.ownWords = guess->words;
                        l.measuredText = text;
                    }
                    l.estimated = true;
                    partial->unmeasured.push_back({depthClass, text});
                } else {
                    if (unseen)
                        --partial->budget;
                    const TextExtent extent = cached ? *cached : measureText(m, text);
                    if (cache && !cached)
                        cache->insert(depthClass, text, extent);
                    l.size = nodeSize(m, extent, isLeaf);
                    l.ownWords = extent.words;
                    l.measuredText = text;
                    l.estimated = false;
                }
            }
            l.nodeID = node.id();
            l.depth = node.depth();
            l.isLeaf = isLeaf;
            placed += l.pass != pass; // an id twice in one tree is one entry
            l.pass = pass;
            return l;
        };
        // What a fold hides is not placed, but its words still count towards the fold's badge.
        std::vector<const SermonNode*> hidden;
        auto wordsUnder = [&](const SermonNode& fold) {
            int words = 0;
            hidden.assign(1, &fold);
            while (!hidden.empty()) {
                const SermonNode* n = hidden.back();
                hidden.pop_back();
                for (const auto& child : n->children()) {
                    words += cache ? cache->hiddenWords(child->text()) : WordCount::wordCount(child->text());
                    hidden.push_back(child.get());
                }
            }
            return words;
        };

        // One frame per expanded parent on the path being laid out; the walk is iterative because
        // a file can nest thousands of levels deep.
        struct Frame {
            const SermonNode* node;
            NodeLayout* slot;
            double x, y, w, h;
            double childX, cy, sum, gap;
            double right; // the widest reach of the children's branches
            int words; // the node's own, then its children's branches' as they finish
            bool packed;
            size_t next;
        };
        std::vector<Frame> stack;
        // What the branch just finished covers, for its parent's frame.
        struct Branch {
            double height, right;
            int words;
        };

        // Places a node with no visible children and returns its branch, or opens a frame.
        auto enter = [&](const SermonNode& node, double x, double y) -> std::optional<Branch> {
            NodeLayout& l = entry(node, x, y);
            const QSizeF size = l.size;
            if (node.isCollapsed() || !node.hasChildren()) {
                l.origin = {x, y};
                l.hasOnlyLeafChildren = false;
                l.isQuote = node.isQuote();
                l.branchTop = y;
                l.branchBottom = y + size.height();
                l.branchRight = x + size.width();
                l.branchWords = l.ownWords + (node.hasChildren() ? wordsUnder(node) : 0);
                return Branch{size.height(), l.branchRight, l.branchWords};
            }
            const bool packed = node.hasOnlyLeafChildren();
            const double indent = packed ? leafIndent : branchIndent;
            stack.push_back({&node, &l, x, y, size.width(), size.height(), x + size.width() + indent, y, 0,
                             packed ? leafGap : branchGap, x + size.width(), l.ownWords, packed, 0});
            return std::nullopt;
        };

        if (!enter(root, originX, originY)) {
            while (!stack.empty()) {
                Frame& f = stack.back();
                const auto& children = f.node->children();
                if (f.next < children.size()) {
                    const SermonNode& child = *children[f.next++];
                    if (const auto branch = enter(child, f.childX, f.cy)) {
                        f.cy += branch->height + f.gap;
                        f.sum += branch->height;
                        f.right = std::max(f.right, branch->right);
                        f.words += branch->words;
                    }
                    continue;
                }
                const double count = double(std::max<size_t>(children.size(), 1));
                const double block = f.sum + f.gap * (count - 1);
                // Centred on a taller block; a taller parent keeps its top and the block stays aligned.
                const double nodeY = f.h < block ? f.y + (block - f.h) * 0.5 : f.y;
                const double height = std::max(f.h, block);
                NodeLayout& l = *f.slot;
                l.origin = {f.x, nodeY};
                l.hasOnlyLeafChildren = f.packed;
                l.isQuote = false;
                l.branchTop = f.y;
                l.branchBottom = f.y + height;
                l.branchRight = f.right;
                l.branchWords = f.words;
                const Branch done{height, f.right, f.words};
                stack.pop_back();
                if (!stack.empty()) {
                    Frame& parent = stack.back();
                    parent.cy += done.height + parent.gap;
                    parent.sum += done.height;
                    parent.right = std::max(parent.right, done.right);
                    parent.words += done.words;
                }
            }
        }
        if (result.size() > placed)
            std::erase_if(result, [pass](const auto& kept) { return kept.second.pass != pass; });
        if (cache)
            cache->endRun();
        performanceLog::signpostEvent("TreeLayout.done", [&] { return QStringLiteral("nodes=%1").arg(result.size()); });
    });
}

bool measureInSight(const SermonNode& root, NodeLayouts& table, MeasureCache* cache, const std::vector<QRectF>& regions)
{
    std::array<DepthMetrics, 3> metrics{DepthMetrics(0), DepthMetrics(1), DepthMetrics(2)};
    auto at = [&](const SermonNode& node) -> NodeLayout* {
        const auto it = table.find(node.id());
        return it == table.end() ? nullptr : &it->second;
    };
    // A line placed at once covers its branch, so this is the partial run's own test for it; a
    // parent whose branch reaches a region is measured, since its width places what does.
    auto reaches = [&](const NodeLayout& l) {
        return std::any_of(regions.begin(), regions.end(), [&](const QRectF& r) {
            return l.origin.x() <= r.right() && l.branchTop <= r.bottom() && l.branchBottom >= r.top();
        });
    };
    std::vector<const SermonNode*> walk;
    // Moves everything shown below `top` across by `dx`.
    auto shiftBelow = [&](const SermonNode& top, double dx) {
        walk.assign(1, &top);
        while (!walk.empty()) {
            const SermonNode* n = walk.back();
            walk.pop_back();
            if (n->isCollapsed())
                continue;
            for (const auto& child : n->children()) {
                NodeLayout* l = at(*child);
                if (!l)
                    return false;
                l->origin.rx() += dx;
                l->branchRight += dx;
                walk.push_back(child.get());
            }
        }
        return true;
    };
    // Measures the line if it is estimated; whether its branch's reach may have changed.
    bool complete = true;
    auto measureLine = [&](const SermonNode& node, NodeLayout& l) {
        if (!l.estimated)
            return false;
        const int depthClass = std::clamp(node.depth(), 0, 2);
        const DepthMetrics& m = metrics[size_t(depthClass)];
        const TextExtent* cached = cache ? cache->find(depthClass, node.text()) : nullptr;
        const TextExtent extent = cached ? *cached : measureText(m, node.text());
        if (cache && !cached)
            cache->insert(depthClass, node.text(), extent);
        const double dx = nodeSize(m, extent, l.isLeaf).width() - l.size.width();
        l.size.setWidth(l.size.width() + dx);
        l.estimated = false;
        if (dx == 0)
            return false;
        if (node.isCollapsed() || !node.hasChildren())
            l.branchRight = l.maxX();
        else
            complete = complete && shiftBelow(node, dx);
        return true;
    };

    struct Frame {
        const SermonNode* node;
        NodeLayout* slot;
        size_t next;
        bool changed;
    };
    std::vector<Frame> stack;
    NodeLayout* top = at(root);
    if (!top)
        return false;
    if (reaches(*top))
        stack.push_back({&root, top, 0, measureLine(root, *top)});
    while (!stack.empty() && complete) {
        Frame& f = stack.back();
        const auto& children = f.node->children();
        if (!f.node->isCollapsed() && f.next < children.size()) {
            const SermonNode& child = *children[f.next++];
            NodeLayout* l = at(child);
            if (!l)
                return false;
            if (!reaches(*l))
                continue;
            const bool changed = measureLine(child, *l);
            if (!child.isCollapsed() && child.hasChildren())
                stack.push_back({&child, l, 0, changed}); // invalidates f
            else
                f.changed = f.changed || changed;
            continue;
        }
        if (f.changed && !f.node->isCollapsed()) {
            // The reach as the run makes it: the node's own right edge or its children's branches'.
            double right = f.slot->maxX();
            for (const auto& child : children)
                if (const NodeLayout* l = at(*child))
                    right = std::max(right, l->branchRight);
            f.slot->branchRight = right;
        }
        const bool changed = f.changed;
        stack.pop_back();
        if (!stack.empty())
            stack.back().changed = stack.back().changed || changed;
    }
    return complete;
}

std::vector<TextExtent> measure(const std::vector<Unmeasured>& texts, const std::atomic<bool>& stop)
{
    // Fonts made on this thread: a font's engines belong to the thread that loads them.
    const std::array<DepthMetrics, 3> metrics{DepthMetrics(0), DepthMetrics(1), DepthMetrics(2)};
    std::vector<TextExtent> extents;
    extents.reserve(texts.size());
    for (const Unmeasured& t : texts) {
        if (stop.load(std::memory_order_relaxed))
            break;
        extents.push_back(measureText(metrics[size_t(std::clamp(t.depthClass, 0, 2))], t.text));
    }
    return extents;
}

QRectF contentBounds(const NodeLayouts& layouts)
{
    if (layouts.empty())
        return {};
    double minX = std::numeric_limits<double>::max(), minY = minX;
    double maxX = std::numeric_limits<double>::lowest(), maxY = maxX;
    for (const auto& [id, l] : layouts) {
        minX = std::min(minX, l.origin.x());
        minY = std::min(minY, l.origin.y());
        maxX = std::max(maxX, l.maxX());
        maxY = std::max(maxY, l.maxY());
    }
    return QRectF(QPointF(minX, minY), QPointF(maxX, maxY));
}

} // namespace TreeLayout
