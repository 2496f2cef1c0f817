#include "RewriteCheck.h"

#include "MarkdownCodec.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <optional>
#include <vector>

namespace RewriteCheck {

namespace {

using MarkdownCodec::isBlank;
using MarkdownCodec::trimmed;

// How a Markdown reader takes a line. Two lines compare equal when their reading and their
// words agree, so that a line that keeps its words but turns into, say, a table row counts.
enum class Reading : char16_t {
    frontMatter = u'F',
    paragraph = u'P',
    heading = u'H',
    underline = u'U',
    bullet = u'L',
    ordered = u'O',
    inList = u'C',
    quote = u'Q',
    fence = u'K',
    code = u'D',
    html = u'M',
    tableRow = u'T',
    rule = u'R',
};

QString readingName(Reading reading)
{
    switch (reading) {
    case Reading::frontMatter:
        return QStringLiteral("front matter");
    case Reading::paragraph:
        return QStringLiteral("plain text");
    case Reading::heading:
        return QStringLiteral("a heading");
    case Reading::underline:
        return QStringLiteral("a heading\u2019s underline");
    case Reading::bullet:
        return QStringLiteral("a list item");
    case Reading::ordered:
        return QStringLiteral("a numbered item");
    case Reading::inList:
        return QStringLiteral("part of a list item");
    case Reading::quote:
        return QStringLiteral("a quote");
    case Reading::fence:
        return QStringLiteral("a code fence");
    case Reading::code:
        return QStringLiteral("code");
    case Reading::html:
        return QStringLiteral("HTML");
    case Reading::tableRow:
        return QStringLiteral("a table row");
    case Reading::rule:
        return QStringLiteral("a horizontal rule");
    }
    return {};
}

struct Line {
    int number; // 1-based in its text
    Reading reading;
    QString words; // normalised for comparison
    QString shown; // the line as written, without trailing blanks
};

QString withoutTrailingBlanks(const QString& s)
{
    qsizetype end = s.size();
    while (end > 0 && (isBlank(s[end - 1]) || s[end - 1] == QLatin1Char('\r')))
        --end;
    return s.left(end);
}

// ---------------------------------------------------------------------------------------------
// Front matter: compared line by line, with quoting and indentation as layout.

QString unquoted(const QString& value)
{
    if (value.size() >= 2 && value.startsWith(QLatin1Char('\'')) && value.endsWith(QLatin1Char('\'')))
        return value.mid(1, value.size() - 2).replace(QStringLiteral("''"), QStringLiteral("'"));
    if (value.size() >= 2 && value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"'))
        && !value.contains(QLatin1Char('\\')))
        return value.mid(1, value.size() - 2);
    return value;
}

QString frontMatterWords(const QString& line)
{
    QString rest = trimmed(line);
    QString prefix;
    if (rest.startsWith(QLatin1String("- "))) {
        prefix = QStringLiteral("- ");
        rest = trimmed(rest.mid(2));
    }
    const qsizetype colon = rest.indexOf(QLatin1String(": "));
    if (colon > 0 && !rest.startsWith(QLatin1Char('\'')) && !rest.startsWith(QLatin1Char('"')))
        return prefix + rest.left(colon) + QStringLiteral(": ") + unquoted(trimmed(rest.mid(colon + 2)));
    return prefix + unquoted(rest);
}

// ---------------------------------------------------------------------------------------------
// The body: a small, one-pass Markdown block reader. It follows the common rules for the blocks
// a README holds (fences, indented code, HTML, tables, setext headings, numbered lists, lazy
// lines) closely enough to tell when a rewrite makes a line read differently. Where the sermon
// format reads a line its own way (after a quote), it follows the format.

struct Fence {
    QChar marker;
    int length = 0;
};

std::optional<Fence> fenceOpening(const QString& t)
{
    if (t.isEmpty() || (t[0] != QLatin1Char('`') && t[0] != QLatin1Char('~')))
        return std::nullopt;
    int length = 0;
    while (length < t.size() && t[length] == t[0])
        ++length;
    if (length < 3)
        return std::nullopt;
    if (t[0] == QLatin1Char('`') && t.indexOf(QLatin1Char('`'), length) >= 0)
        return std::nullopt;
    return Fence{t[0], length};
}

bool closesFence(const QString& t, const Fence& fence)
{
    int length = 0;
    while (length < t.size() && t[length] == fence.marker)
        ++length;
    return length >= fence.length && length == t.size();
}

// 1 to 6 for a heading line, else 0.
int atxLevel(const QString& t, QString* words)
{
    int level = 0;
    while (level < t.size() && t[level] == QLatin1Char('#'))
        ++level;
    if (level < 1 || level > 6 || (level < t.size() && t[level] != QLatin1Char(' ') && t[level] != QLatin1Char('\t')))
        return 0;
    *words = QString(level, QLatin1Char('#')) + QLatin1Char(' ') + trimmed(t.mid(level));
    return level;
}

bool isRule(const QString& t)
{
    const QChar c = t.isEmpty() ? QChar() : t[0];
    if (c != QLatin1Char('-') && c != QLatin1Char('*') && c != QLatin1Char('_'))
        return false;
    int count = 0;
    for (QChar d : t) {
        if (d == c)
            ++count;
        else if (!isBlank(d))
            return false;
    }
    return count >= 3;
}

// '=' or '-' for a setext underline, else null.
QChar underlineMarker(const QString& t)
{
    if (t.isEmpty() || (t[0] != QLatin1Char('=') && t[0] != QLatin1Char('-')))
        return {};
    for (QChar d : t)
        if (d != t[0])
            return {};
    return t[0];
}

bool isTableDelimiter(const QString& t)
{
    if (!t.contains(QLatin1Char('|')))
        return false;
    QString inner = t;
    if (inner.startsWith(QLatin1Char('|')))
        inner.remove(0, 1);
    if (inner.endsWith(QLatin1Char('|')))
        inner.chop(1);
    const QStringList cells = inner.split(QLatin1Char('|'));
    for (const QString& raw : cells) {
        QString cell = trimmed(raw);
        if (cell.startsWith(QLatin1Char(':')))
            cell.remove(0, 1);
        if (cell.endsWith(QLatin1Char(':')))
            cell.chop(1);
        if (cell.isEmpty() || cell.count(QLatin1Char('-')) != cell.size())
            return false;
    }
    return true;
}

enum class HtmlStart { none, comment, block, inline_ };

HtmlStart htmlStart(const QString& t)
{
    static const QStringList blockTags = {
        QStringLiteral("address"), QStringLiteral("article"), QStringLiteral("aside"),    QStringLiteral("blockquote"),
        QStringLiteral("body"),    QStringLiteral("center"),  QStringLiteral("details"),  QStringLiteral("dialog"),
        QStringLiteral("div"),     QStringLiteral("dl"),      QStringLiteral("fieldset"), QStringLiteral("figure"),
        QStringLiteral("footer"),  QStringLiteral("form"),    QStringLiteral("h1"),       QStringLiteral("h2"),
        QStringLiteral("h3"),      QStringLiteral("h4"),      QStringLiteral("h5"),       QStringLiteral("h6"),
        QStringLiteral("header"),  QStringLiteral("hr"),      QStringLiteral("html"),     QStringLiteral("li"),
        QStringLiteral("main"),    QStringLiteral("nav"),     QStringLiteral("ol"),       QStringLiteral("p"),
        QStringLiteral("pre"),     QStringLiteral("script"),  QStringLiteral("section"),  QStringLiteral("style"),
        QStringLiteral("summary"), QStringLiteral("table"),   QStringLiteral("tbody"),    QStringLiteral("td"),
        QStringLiteral("th"),      QStringLiteral("thead"),   QStringLiteral("tr"),       QStringLiteral("ul")};
    if (!t.startsWith(QLatin1Char('<')) || t.size() < 2)
        return HtmlStart::none;
    if (t.startsWith(QLatin1String("<!--")))
        return HtmlStart::comment;
    if (t[1] == QLatin1Char('!') || t[1] == QLatin1Char('?'))
        return HtmlStart::block;
    const int from = t[1] == QLatin1Char('/') ? 2 : 1;
    int end = from;
    while (end < t.size() && (t[end].isLetterOrNumber() || t[end] == QLatin1Char('-')))
        ++end;
    if (end == from || !t[from].isLetter())
        return HtmlStart::none;
    if (end < t.size() && t[end] != QLatin1Char('>') && t[end] != QLatin1Char('/') && !isBlank(t[end]))
        return HtmlStart::none;
    return blockTags.contains(t.mid(from, end - from).toLower()) ? HtmlStart::block : HtmlStart::inline_;
}

struct ListMarker {
    int contentColumn = 0;
    bool isEmpty = false;
    int number = -1; // numbered items only
    QString words;
};

// Spaces after a marker: 1 to 4 belong to it, more mean the text starts with indented code.
int contentOffset(const QString& t, int markerWidth)
{
    int spaces = 0;
    while (markerWidth + spaces < t.size() && t[markerWidth + spaces] == QLatin1Char(' '))
        ++spaces;
    return markerWidth + ((spaces >= 1 && spaces <= 4 && markerWidth + spaces < t.size()) ? spaces : 1);
}

std::optional<ListMarker> bulletItem(const QString& t, int column)
{
    if (t.isEmpty() || (t[0] != QLatin1Char('-') && t[0] != QLatin1Char('*') && t[0] != QLatin1Char('+')))
        return std::nullopt;
    if (t.size() > 1 && t[1] != QLatin1Char(' ') && t[1] != QLatin1Char('\t'))
        return std::nullopt;
    const QString words = trimmed(t.mid(1));
    return ListMarker{column + contentOffset(t, 1), words.isEmpty(), -1, QStringLiteral("- ") + words};
}

std::optional<ListMarker> orderedItem(const QString& t, int column)
{
    int digits = 0;
    while (digits < t.size() && digits < 10 && t[digits].isDigit() && t[digits].unicode() < 128)
        ++digits;
    if (digits < 1 || digits > 9 || digits >= t.size())
        return std::nullopt;
    if (t[digits] != QLatin1Char('.') && t[digits] != QLatin1Char(')'))
        return std::nullopt;
    if (digits + 1 < t.size() && t[digits + 1] != QLatin1Char(' ') && t[digits + 1] != QLatin1Char('\t'))
        return std::nullopt;
    const QString words = trimmed(t.mid(digits + 1));
    return ListMarker{column + contentOffset(t, digits + 1), words.isEmpty(), t.left(digits).toInt(), t};
}

class BodyReader {
public:
    explicit BodyReader(QList<Line>& out)
        : m_out(out)
    {
    }

    void read(const QString& raw, int number)
    {
        const QString line = withoutTrailingBlanks(raw);
        if (m_fence) {
            if (closesFence(trimmed(line), *m_fence)) {
                m_fence.reset();
                add(number, Reading::fence, trimmed(line), line);
            } else {
                // Inside code every character counts, blank lines and indentation too.
                add(number, Reading::code, line, line);
            }
            return;
        }
        if (line.isEmpty()) {
            m_paragraph.reset();
            m_isTable = false;
            if (m_html == HtmlStart::block || m_html == HtmlStart::inline_)
                m_html = HtmlStart::none;
            return;
        }
        const QString t = trimmed(line);
        if (m_html == HtmlStart::comment) {
            if (t.contains(QLatin1String("-->")))
                m_html = HtmlStart::none;
            add(number, Reading::html, t, line);
            return;
        }
        if (m_html != HtmlStart::none) {
            add(number, Reading::html, t, line);
            return;
        }

        const int column = MarkdownCodec::indentation(line);
        int inside = 0;
        while (inside < int(m_lists.size()) && m_lists[inside] <= column)
            ++inside;
        const int relative = column - (inside > 0 ? m_lists[inside - 1] : 0);

        if (relative < 4 && startsBlock(t, line, number, column, inside))
            return;
        if (m_isTable) {
            add(number, Reading::tableRow, t, line);
            return;
        }
        if (m_paragraph) {
            // A continuation, lazy or not, reads as the paragraph it continues.
            add(number, *m_paragraph, t, line);
            return;
        }
        m_lists.resize(inside);
        if (relative >= 4) {
            add(number, Reading::code, t, line);
            return;
        }
        m_paragraph = inside > 0 ? Reading::inList : Reading::paragraph;
        m_paragraphStart = m_out.size();
        add(number, *m_paragraph, t, line);
    }

private:
    bool startsBlock(const QString& t, const QString& line, int number, int column, int inside)
    {
        QString words;
        if (auto fence = fenceOpening(t)) {
            closeBlock(inside);
            m_fence = fence;
            add(number, Reading::fence, t, line);
            return true;
        }
        if (atxLevel(t, &words) > 0) {
            closeBlock(inside);
            add(number, Reading::heading, words, line);
            return true;
        }
        if (const QChar marker = underlineMarker(t); !marker.isNull() && m_paragraph == Reading::paragraph) {
            // The paragraph above was a heading all along.
            const QString hashes = marker == QLatin1Char('=') ? QStringLiteral("# ") : QStringLiteral("## ");
            for (qsizetype i = m_paragraphStart; i < m_out.size(); ++i) {
                m_out[i].reading = Reading::heading;
                m_out[i].words = hashes + m_out[i].words;
            }
            closeBlock(inside);
            add(number, Reading::underline, QString(marker), line);
            return true;
        }
        if (m_paragraph && !m_out.isEmpty() && isTableDelimiter(t) && m_out.last().words.contains(QLatin1Char('|'))) {
            m_out.last().reading = Reading::tableRow;
            closeBlock(inside);
            m_isTable = true;
            add(number, Reading::tableRow, t, line);
            return true;
        }
        if (isRule(t)) {
            closeBlock(inside);
            add(number, Reading::rule, t, line);
            return true;
        }
        if (t.startsWith(QLatin1Char('>'))) {
            closeBlock(inside);
            // The format reads the line after a quote as a line of its own, as it writes it: a
            // quote takes no lazy lines here. A bare ">" holds no words.
            if (const QString quoted = trimmed(t.mid(1)); !quoted.isEmpty())
                add(number, Reading::quote, quoted, line);
            return true;
        }
        if (const HtmlStart html = htmlStart(t);
            html != HtmlStart::none && (!m_paragraph || html != HtmlStart::inline_)) {
            closeBlock(inside);
            if (html != HtmlStart::comment || !t.contains(QLatin1String("-->")))
                m_html = html;
            add(number, Reading::html, t, line);
            return true;
        }
        // A paragraph is interrupted by a bullet with text, or by a numbered item "1.".
        if (auto item = bulletItem(t, column); item && !(m_paragraph && item->isEmpty)) {
            startItem(*item, Reading::bullet, number, line, inside);
            return true;
        }
        const bool inSameBlock = inside == int(m_lists.size());
        if (auto item = orderedItem(t, column);
            item && !(m_paragraph && inSameBlock && (item->number != 1 || item->isEmpty))) {
            startItem(*item, Reading::ordered, number, line, inside);
            return true;
        }
        return false;
    }

    void startItem(const ListMarker& item, Reading reading, int number, const QString& line, int inside)
    {
        closeBlock(inside);
        m_lists.push_back(item.contentColumn);
        if (!item.isEmpty) {
            m_paragraph = Reading::inList;
            m_paragraphStart = m_out.size();
        }
        add(number, reading, item.words, line);
    }

    // A new block ends the paragraph and table, and the list items the line isn't inside.
    void closeBlock(int inside)
    {
        m_paragraph.reset();
        m_isTable = false;
        m_lists.resize(inside);
    }

    void add(int number, Reading reading, const QString& words, const QString& shown)
    {
        m_out.append(Line{number, reading, words, shown});
    }

    QList<Line>& m_out;
    std::vector<int> m_lists; // content columns of the open list items, outermost first
    std::optional<Reading> m_paragraph;
    qsizetype m_paragraphStart = 0;
    std::optional<Fence> m_fence;
    HtmlStart m_html = HtmlStart::none;
    bool m_isTable = false;
};

QList<Line> readLines(const QByteArray& bytes)
{
    QString text = QString::fromUtf8(bytes);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    const QStringList lines = text.split(QLatin1Char('\n'));
    QList<Line> out;
    out.reserve(lines.size());

    // The block is found as the codec finds it.
    qsizetype body = 0;
    const QString fence = QStringLiteral("---");
    if (!lines.isEmpty() && trimmed(lines.first()) == fence) {
        for (qsizetype i = 1; i < lines.size(); ++i) {
            if (trimmed(lines[i]) == fence) {
                body = i + 1;
                break;
            }
        }
    }
    // The keys of the block form a mapping, whose order means nothing: each key with the lines
    // under it is compared in the order of the keys' names.
    std::vector<QList<Line>> keys;
    for (qsizetype i = 1; i + 1 < body; ++i) {
        const QString shown = withoutTrailingBlanks(lines[i]);
        if (trimmed(shown).isEmpty())
            continue;
        const bool startsKey =
            !isBlank(shown[0]) && !shown.startsWith(QLatin1String("- ")) && shown != QLatin1String("-");
        if (startsKey || keys.empty())
            keys.emplace_back();
        keys.back().append(Line{int(i + 1), Reading::frontMatter, frontMatterWords(shown), shown});
    }
    std::stable_sort(keys.begin(), keys.end(),
                     [](const QList<Line>& a, const QList<Line>& b) { return a.first().words < b.first().words; });
    if (body > 0)
        out.append(Line{1, Reading::frontMatter, fence, withoutTrailingBlanks(lines.first())});
    for (const QList<Line>& key : keys)
        out.append(key);
    if (body > 1)
        out.append(Line{int(body), Reading::frontMatter, fence, withoutTrailingBlanks(lines[body - 1])});
    BodyReader reader(out);
    for (qsizetype i = body; i < lines.size(); ++i)
        reader.read(lines[i], int(i + 1));
    return out;
}

// ---------------------------------------------------------------------------------------------
// The diff: Myers' shortest edit script over line ids, stopped beyond `limit` edits.

enum class Op { equal, remove, insert };

struct Step {
    Op op;
    int a; // index in the original's lines
    int b; // index in the rewritten lines
};

bool shortestEdit(const std::vector<int>& a, const std::vector<int>& b, int limit, std::vector<Step>& steps)
{
    const int n = int(a.size());
    const int m = int(b.size());
    const int most = std::min(n + m, limit);
    const int offset = most + 1;
    std::vector<int> v(2 * most + 3, 0);
    std::vector<std::vector<int>> trace; // trace[d][k + d]: furthest x on diagonal k after d edits
    for (int d = 0; d <= most; ++d) {
        for (int k = -d; k <= d; k += 2) {
            int x = (k == -d || (k != d && v[offset + k - 1] < v[offset + k + 1])) ? v[offset + k + 1]
                                                                                   : v[offset + k - 1] + 1;
            int y = x - k;
            while (x < n && y < m && a[x] == b[y]) {
                ++x;
                ++y;
            }
            v[offset + k] = x;
            if (x < n || y < m)
                continue;
            // Walk back from the end through the saved fronts.
            for (int e = d; e > 0; --e) {
                const std::vector<int>& before = trace[e - 1];
                const int kk = x - y;
                const bool down = kk == -e || (kk != e && before[kk - 1 + e - 1] < before[kk + 1 + e - 1]);
                const int prevK = down ? kk + 1 : kk - 1;
                const int prevX = before[prevK + e - 1];
                const int prevY = prevX - prevK;
                const int startX = down ? prevX : prevX + 1;
                const int startY = down ? prevY + 1 : prevY;
                while (x > startX && y > startY)
                    steps.push_back({Op::equal, --x, --y});
                steps.push_back(down ? Step{Op::insert, prevX, prevY} : Step{Op::remove, prevX, prevY});
                x = prevX;
                y = prevY;
            }
            while (x > 0 && y > 0)
                steps.push_back({Op::equal, --x, --y});
            std::reverse(steps.begin(), steps.end());
            return true;
        }
        trace.emplace_back(v.begin() + offset - d, v.begin() + offset + d + 1);
    }
    return false;
}

LineChange changeOf(const Line* from, const Line* to, int line)
{
    LineChange change;
    change.line = from ? from->number : line;
    change.kind = !from ? LineChange::Kind::added : !to ? LineChange::Kind::vanishes : LineChange::Kind::changed;
    if (from)
        change.original = from->shown;
    if (to)
        change.rewritten = to->shown;
    if (from && to && from->reading != to->reading && trimmed(from->shown) == trimmed(to->shown))
        change.readsAs = readingName(to->reading);
    return change;
}

// A line's words without the markup in front of them: "## Grace", "- Grace" and "Grace" agree.
QString bareWords(const Line& line)
{
    const QString t = trimmed(line.shown);
    qsizetype start = 0;
    while (start < t.size() && (isBlank(t[start]) || QStringView(u"#>*+-").contains(t[start])))
        ++start;
    return t.mid(start);
}

// The longest run of pairs, in order, whose bare words agree. Runs too long to compare pair
// nothing this way.
std::vector<std::pair<size_t, size_t>> sameWords(const std::vector<const Line*>& a, const std::vector<const Line*>& b)
{
    std::vector<std::pair<size_t, size_t>> pairs;
    if (a.empty() || b.empty() || a.size() * b.size() > 4'000'000)
        return pairs;
    QStringList wordsA;
    QStringList wordsB;
    for (const Line* line : a)
        wordsA.append(bareWords(*line));
    for (const Line* line : b)
        wordsB.append(bareWords(*line));
    // lengths[x][y]: the longest common run of a[x..] and b[y..].
    const size_t n = a.size();
    const size_t m = b.size();
    std::vector<int> lengths((n + 1) * (m + 1), 0);
    auto at = [m, &lengths](size_t x, size_t y) -> int& { return lengths[x * (m + 1) + y]; };
    for (size_t x = n; x-- > 0;)
        for (size_t y = m; y-- > 0;)
            at(x, y) = wordsA[qsizetype(x)] == wordsB[qsizetype(y)] && !wordsA[qsizetype(x)].isEmpty()
                ? at(x + 1, y + 1) + 1
                : std::max(at(x + 1, y), at(x, y + 1));
    for (size_t x = 0, y = 0; x < n && y < m;) {
        if (wordsA[qsizetype(x)] == wordsB[qsizetype(y)] && !wordsA[qsizetype(x)].isEmpty()) {
            pairs.emplace_back(x++, y++);
        } else if (at(x + 1, y) >= at(x, y + 1)) {
            ++x;
        } else {
            ++y;
        }
    }
    return pairs;
}

} // namespace

Result compare(const QByteArray& original, const QByteArray& rewritten)
{
    Result result;
    if (original == rewritten)
        return result;
    const QList<Line> before = readLines(original);
    const QList<Line> after = readLines(rewritten);

    QHash<QString, int> ids;
    auto idsOf = [&ids](const QList<Line>& lines) {
        std::vector<int> out;
        out.reserve(lines.size());
        for (const Line& line : lines) {
            const QString key = QChar(char16_t(line.reading)) + line.words;
            auto found = ids.constFind(key);
            if (found == ids.constEnd())
                found = ids.insert(key, int(ids.size()));
            out.push_back(found.value());
        }
        return out;
    };
    const std::vector<int> a = idsOf(before);
    const std::vector<int> b = idsOf(after);

    // Most of a file usually agrees at both ends; only the middle needs the diff.
    size_t head = 0;
    while (head < a.size() && head < b.size() && a[head] == b[head])
        ++head;
    size_t tail = 0;
    while (tail < a.size() - head && tail < b.size() - head && a[a.size() - 1 - tail] == b[b.size() - 1 - tail])
        ++tail;
    if (head == a.size() && head == b.size())
        return result;

    // Where an added line would stand: before the next line of the original, or after the last.
    auto lineBefore = [&](size_t index) {
        return index < size_t(before.size()) ? before[index].number : (before.isEmpty() ? 1 : before.last().number + 1);
    };
    const std::vector<int> middleA(a.begin() + head, a.end() - tail);
    const std::vector<int> middleB(b.begin() + head, b.end() - tail);
    std::vector<Step> steps;
    if (!shortestEdit(middleA, middleB, maxEdits, steps)) {
        result.isTruncated = true;
        const Line* from = head < size_t(before.size()) ? &before[head] : nullptr;
        const Line* to = head < size_t(after.size()) ? &after[head] : nullptr;
        result.changes.append(changeOf(from, to, lineBefore(head)));
        return result;
    }

    // In each run of removals and insertions, a line is paired with the one that keeps its words
    // (a list item that becomes a heading); between those, lines pair in order; the rest vanish
    // or are new.
    std::vector<const Line*> removed;
    std::vector<const Line*> inserted;
    auto flush = [&](size_t nextA) {
        size_t r = 0;
        size_t i = 0;
        auto pairUpTo = [&](size_t rEnd, size_t iEnd, int lineAfter) {
            for (; r < rEnd; ++r)
                result.changes.append(changeOf(removed[r], i < iEnd ? inserted[i++] : nullptr, 0));
            for (; i < iEnd; ++i)
                result.changes.append(changeOf(nullptr, inserted[i], lineAfter));
        };
        for (const auto& [rm, in] : sameWords(removed, inserted)) {
            pairUpTo(rm, in, removed[rm]->number);
            result.changes.append(changeOf(removed[r++], inserted[i++], 0));
        }
        pairUpTo(removed.size(), inserted.size(), lineBefore(nextA));
        removed.clear();
        inserted.clear();
    };
    for (const Step& step : steps) {
        if (step.op == Op::equal) {
            flush(head + step.a);
        } else if (step.op == Op::remove) {
            removed.push_back(&before[qsizetype(head + step.a)]);
        } else {
            inserted.push_back(&after[qsizetype(head + step.b)]);
        }
    }
    flush(head + middleA.size());
    // Front matter keys are compared out of their order; the list goes by the file's.
    std::stable_sort(result.changes.begin(), result.changes.end(),
                     [](const LineChange& x, const LineChange& y) { return x.line < y.line; });
    return result;
}

QString describe(const LineChange& change)
{
    auto quoted = [](const QString& s) { return QLatin1Char('"') + s + QLatin1Char('"'); };
    switch (change.kind) {
    case LineChange::Kind::added:
        return quoted(change.rewritten) + QStringLiteral(" would be added");
    case LineChange::Kind::vanishes:
        return quoted(change.original) + QStringLiteral(" would be lost");
    case LineChange::Kind::changed:
        break;
    }
    if (!change.readsAs.isEmpty())
        return quoted(change.original) + QStringLiteral(" would read as ") + change.readsAs;
    return quoted(change.original) + QStringLiteral(" would be rewritten as ") + quoted(change.rewritten);
}

} // namespace RewriteCheck
