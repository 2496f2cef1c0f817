#include "MarkdownCodec.h"

#include "FrontMatter.h"

#include <optional>
#include <utility>
#include <vector>

// Debug lines are off unless asked for (QT_LOGGING_RULES); a broken block is still reported.
Q_LOGGING_CATEGORY(lcMarkdownCodec, "app.orantium.MarkdownCodec", QtInfoMsg)

namespace MarkdownCodec {

namespace {

const QString kNewline = QStringLiteral("\n");
const QString kFence = QStringLiteral("---");

} // namespace

namespace {

// Nearly every character of a sermon is ASCII, where only space and tab are blanks; the
// category lookup is for the rest.
inline bool blank(QChar c)
{
    const char16_t u = c.unicode();
    if (u < 0x80)
        return u == u' ' || u == u'\t';
    return c.category() == QChar::Separator_Space;
}

QStringView trimmedView(QStringView s)
{
    qsizetype start = 0;
    qsizetype end = s.size();
    while (start < end && blank(s[start]))
        ++start;
    while (end > start && blank(s[end - 1]))
        --end;
    return s.sliced(start, end - start);
}

// The text of `view`, a piece of `whole`: shared with it when it is all of it.
QString piece(const QString& whole, QStringView view)
{
    if (view.size() == whole.size())
        return whole;
    return view.toString();
}

// Where a heading's text starts in a trimmed line, or -1 when the line is no heading.
qsizetype headingTextStart(QStringView s)
{
    qsizetype hashes = 0;
    while (hashes < s.size() && s[hashes] == u'#')
        ++hashes;
    if (hashes < 1 || hashes > 6 || hashes >= s.size() || s[hashes] != u' ')
        return -1;
    return hashes + 1;
}

// Where a list item's text starts, or -1 when the line is no list item; `columns` its indent.
qsizetype listItemTextStart(QStringView line, int* columns = nullptr)
{
    int indent = 0;
    qsizetype i = 0;
    for (; i < line.size(); ++i) {
        if (line[i] == u' ')
            indent += 1;
        else if (line[i] == u'\t')
            indent += 4;
        else
            break;
    }
    if (i >= line.size())
        return -1;
    const QChar bullet = line[i];
    if (bullet != u'-' && bullet != u'*' && bullet != u'+')
        return -1;
    if (i + 1 >= line.size() || line[i + 1] != u' ')
        return -1;
    if (columns)
        *columns = indent;
    return i + 2;
}

// Appends each line to `lines`, as QString::split on a newline would. The list is sized first:
// growing it step by step copies it and frees large blocks, which makes malloc tidy its heap.
void appendLines(QStringView text, QStringList& lines)
{
    std::vector<qsizetype> ends;
    for (qsizetype end = text.indexOf(u'\n'); end >= 0; end = text.indexOf(u'\n', end + 1))
        ends.push_back(end);
    ends.push_back(text.size());
    lines.reserve(lines.size() + qsizetype(ends.size()));
    qsizetype start = 0;
    for (const qsizetype end : ends) {
        lines.append(text.sliced(start, end - start).toString());
        start = end + 1;
    }
}

// The end of the line that starts at `start`: its newline, or the end of the text.
qsizetype lineEnd(QStringView text, qsizetype start)
{
    const qsizetype end = text.indexOf(u'\n', start);
    return end < 0 ? text.size() : end;
}

} // namespace

bool isBlank(QChar c)
{
    return blank(c);
}

QString trimmed(const QString& s)
{
    return piece(s, trimmedView(s));
}

int indentation(const QString& line)
{
    int columns = 0;
    for (QChar c : line) {
        if (c == QLatin1Char(' '))
            columns += 1;
        else if (c == QLatin1Char('\t'))
            columns += 4;
        else
            break;
    }
    return columns;
}

// ---------------------------------------------------------------------------------------------
// Reading

SplitResult splitFrontMatter(const QString& text)
{
    // Lines are cut out of the text only for the body: the block is decoded from one piece.
    if (text.isNull())
        return {SermonMetadata{}, text.split(kNewline)};
    const QStringView all(text);
    SplitResult result;
    qsizetype bodyStart = 0;
    const qsizetype firstEnd = lineEnd(all, 0);
    if (trimmedView(all.first(firstEnd)) == kFence) {
        qsizetype closingStart = -1;
        for (qsizetype start = firstEnd + 1; start <= all.size() && firstEnd < all.size();) {
            const qsizetype end = lineEnd(all, start);
            if (trimmedView(all.sliced(start, end - start)) == kFence) {
                closingStart = start;
                break;
            }
            start = end + 1;
        }
        if (closingStart < 0) {
            qCDebug(lcMarkdownCodec, "Opening --- found but no closing --- ; treating file as body only");
        } else {
            const QString block =
                closingStart == firstEnd + 1 ? QString() : all.sliced(firstEnd + 1, closingStart - firstEnd - 2).toString();
            const FrontMatterResult decoded = decodeFrontMatter(block);
            if (decoded.metadata)
                result.metadata = *decoded.metadata;
            else
                qCCritical(lcMarkdownCodec, "Failed to decode frontmatter: %s", qUtf8Printable(decoded.error));
            const qsizetype closingEnd = lineEnd(all, closingStart);
            if (closingEnd == all.size())
                return result; // the block closes the file: no body lines at all
            bodyStart = closingEnd + 1;
        }
    }
    appendLines(all.sliced(bodyStart), result.body);
    return result;
}

std::optional<Heading> parseHeading(const QString& s)
{
    const qsizetype start = headingTextStart(s);
    if (start < 0)
        return std::nullopt;
    return Heading{int(start) - 2, trimmed(s.mid(start))};
}

std::optional<ListItem> parseListItem(const QString& line)
{
    int columns = 0;
    const qsizetype start = listItemTextStart(line, &columns);
    if (start < 0)
        return std::nullopt;
    return ListItem{columns, line.mid(start)};
}

namespace {

// Builds the tree in one pass over the lines. Nodes are made at their final depth and attached
// where they stay; the open headings and list items are held by plain pointers into the tree.
class BodyReader {
public:
    BodyReader()
        : m_root(SermonNode::make(QStringLiteral("Untitled"), 0))
    {
        m_headings.push_back(m_root.get());
    }

    void read(const QString& line)
    {
        const QStringView t = trimmedView(line);
        if (t == collapseMarker) {
            target()->setCollapsed(true);
            return;
        }
        if (!m_list.empty() && continueListItem(line, t))
            return;
        if (t.startsWith(u'>')) {
            m_list.clear();
            QStringView rest = t.sliced(1);
            if (rest.startsWith(u' '))
                rest = rest.sliced(1);
            if (!rest.isEmpty())
                m_quote.append(rest.toString());
            return;
        }
        int columns = 0;
        if (const qsizetype start = listItemTextStart(line, &columns); start >= 0) {
            readListItem(line, start, columns);
            return;
        }
        flushQuote();
        if (t.isEmpty())
            return;
        if (const qsizetype start = headingTextStart(t); start >= 0) {
            readHeading(int(start) - 2, trimmedView(t.sliced(start)).toString());
            return;
        }
        m_list.clear();
        attach(headingTop(), piece(line, t));
    }

    SermonNodePtr finish()
    {
        flushQuote();
        flushContinued();
        return m_root;
    }

private:
    SermonNode& headingTop() { return *m_headings.back(); }

    SermonNode* target() { return m_list.empty() ? &headingTop() : m_list.back().first; }

    // As appendChild, without its renumbering walk: the new node is a leaf made at its level.
    static SermonNode& attach(SermonNode& parent, QString text, bool quote = false)
    {
        auto node = SermonNode::make(std::move(text), parent.depth() + 1);
        node->setQuote(quote);
        SermonNode& made = *node;
        parent.insertChildKeepingDepths(int(parent.children().size()), std::move(node));
        return made;
    }

    void flushQuote()
    {
        if (m_quote.isEmpty())
            return;
        attach(headingTop(), m_quote.size() == 1 ? m_quote.first() : m_quote.join(kNewline), true);
        m_quote.clear();
    }

    void readListItem(const QString& line, qsizetype start, int columns)
    {
        flushQuote();
        QStringView rest = QStringView(line).sliced(start);
        QString text;
        bool quote = false;
        if (rest.startsWith(u"> ")) {
            text = rest.sliced(2).toString();
            quote = true;
        } else if (rest == u">") {
            quote = true; // and no text at all
        } else {
            text = rest.toString();
        }
        SermonNode* parent = &headingTop();
        if (columns == 0) {
            m_list.clear();
        } else {
            while (!m_list.empty() && m_list.back().second >= columns)
                m_list.pop_back();
            if (!m_list.empty())
                parent = m_list.back().first;
        }
        m_list.emplace_back(&attach(*parent, std::move(text), quote), columns);
    }

    void readHeading(int depth, QString text)
    {
        m_list.clear();
        if (depth == 0) {
            m_root->setText(text);
            m_headings.assign(1, m_root.get());
            return;
        }
        // A heading closes the open ones at its level or deeper. Levels may be skipped, so the
        // count of open headings is no measure of the level.
        while (m_headings.size() > 1 && m_headings.back()->depth() >= depth)
            m_headings.pop_back();
        // A heading keeps the file's level, even where the file skips levels.
        auto node = SermonNode::make(std::move(text), depth);
        SermonNode* made = node.get();
        headingTop().insertChildKeepingDepths(int(headingTop().children().size()), std::move(node));
        m_headings.push_back(made);
    }

    bool continueListItem(const QString& line, QStringView t)
    {
        if (t.isEmpty())
            return false;
        SermonNode& node = *m_list.back().first;
        const int need = m_list.back().second + 2;
        const int columns = indentation(line);
        if (columns < need) {
            if (node.isQuote() || listItemTextStart(line) >= 0 || headingTextStart(t) >= 0 || t.startsWith(u'>'))
                return false;
            continueWith(node, t);
            return true;
        }
        if (listItemTextStart(line) >= 0)
            return false;
        qsizetype cut = 0;
        int removed = 0;
        while (cut < line.size() && removed < need && blank(line[cut])) {
            removed += line[cut] == QLatin1Char('\t') ? 4 : 1;
            ++cut;
        }
        QStringView rest = QStringView(line).sliced(cut);
        if (node.isQuote()) {
            if (rest.startsWith(u"> "))
                rest = rest.sliced(2);
            else if (rest == u">")
                rest = {};
            else
                return false;
        }
        continueWith(node, rest);
        return true;
    }

    // A later line of a list item. The item's text grows in a buffer of its own and is set
    // once the item is done, so that an item of many lines costs no more than its length.
    void continueWith(SermonNode& node, QStringView rest)
    {
        if (m_continued != &node) {
            flushContinued();
            m_continued = &node;
            m_continuedText = node.text();
        }
        m_continuedText.append(u'\n');
        m_continuedText.append(rest);
    }

    void flushContinued()
    {
        if (m_continued)
            m_continued->setText(m_continuedText);
        m_continued = nullptr;
        m_continuedText = QString();
    }

    SermonNodePtr m_root;
    std::vector<SermonNode*> m_headings; // never empty: the root at the bottom
    std::vector<std::pair<SermonNode*, int>> m_list; // open list items and their indents
    QStringList m_quote;
    SermonNode* m_continued = nullptr; // the list item whose text is growing, if any
    QString m_continuedText;
};

} // namespace

SermonNodePtr parseBody(const QStringList& lines)
{
    BodyReader reader;
    for (const QString& line : lines)
        reader.read(line);
    return reader.finish();
}

// ---------------------------------------------------------------------------------------------
// Writing

namespace {

// List form is needed when a child can't be a heading, or when a leaf follows a branch
// (as a plain line it would read as belonging to that branch). Headings written at their own
// depth also need each branch no deeper than the one before it: an edit beside a heading that
// skips levels can leave a deeper one behind a shallower, which would read as its child.
bool needsListForm(const SermonNode& node, bool atOwnDepths)
{
    const SermonNode* previousBranch = nullptr;
    for (const auto& child : node.children()) {
        if (child->hasChildren() && child->depth() > deepestHeadingDepth)
            return true;
        if (!child->hasChildren() && previousBranch)
            return true;
        if (child->hasChildren() && atOwnDepths && previousBranch && child->depth() > previousBranch->depth())
            return true;
        previousBranch = child->hasChildren() ? child.get() : nullptr;
    }
    return false;
}

// The heading writer may skip the empty line before a heading: never two empty lines in a row.
void pushSeparator(QStringList& lines)
{
    if (lines.isEmpty() || !lines.last().isEmpty())
        lines.append(QString());
}

// Writes the children of `node` as a list, or with `asItem` the node itself as its one item.
void writeList(const SermonNode& node, int columns, QStringList& lines, bool asItem = false)
{
    // Iterative: list form can nest as deep as the file goes.
    struct Frame {
        const SermonNode* node;
        size_t next;
        int columns;
    };
    std::vector<Frame> stack;
    auto writeItem = [&](const SermonNode& item, int itemColumns) {
        const QString pad(itemColumns, QLatin1Char(' '));
        const QString pad2(itemColumns + 2, QLatin1Char(' '));
        if (item.hasChildren()) {
            lines.append(pad + QLatin1String("- ") + item.text());
            if (item.isCollapsed())
                lines.append(pad2 + collapseMarker);
            stack.push_back({&item, 0, itemColumns + 2});
            return;
        }
        const QStringList pieces = item.text().split(kNewline);
        const QString bullet = item.isQuote() ? QStringLiteral("- > ") : QStringLiteral("- ");
        const QString continuation = item.isQuote() ? pad2 + QLatin1String("> ") : pad2;
        lines.append(pad + bullet + pieces.first());
        for (qsizetype i = 1; i < pieces.size(); ++i)
            lines.append(continuation + pieces[i]);
    };
    if (asItem)
        writeItem(node, columns);
    else
        stack.push_back({&node, 0, columns});
    while (!stack.empty()) {
        Frame& frame = stack.back();
        if (frame.next >= frame.node->children().size()) {
            stack.pop_back();
            continue;
        }
        const SermonNode& child = *frame.node->children()[frame.next++];
        writeItem(child, frame.columns);
    }
}

void writeLeaf(const SermonNode& leaf, bool& previousWasQuote, QStringList& lines)
{
    if (leaf.isQuote()) {
        if (previousWasQuote)
            lines.append(QString());
        for (const QString& piece : leaf.text().split(kNewline))
            lines.append(QLatin1String("> ") + piece);
        previousWasQuote = true;
    } else {
        lines.append(leaf.text());
        previousWasQuote = false;
    }
}

// Writes a heading and its children. `level` is the heading's depth in the text; the file
// writer passes each node's own depth, the clipboard a depth of its choosing. Heading nesting
// is at most six deep (deeper children go to list form), so the recursion stays shallow.
void writeHeading(const SermonNode& node, int level, bool isFirst, bool relative, QStringList& lines)
{
    if (!isFirst)
        pushSeparator(lines);
    lines.append(QString(level + 1, QLatin1Char('#')) + QLatin1Char(' ') + node.text());
    if (node.isCollapsed())
        lines.append(collapseMarker);
    if (node.hasChildren())
        lines.append(QString());
    if (needsListForm(node, !relative)) {
        writeList(node, 0, lines);
        return;
    }
    bool previousWasQuote = false;
    for (const auto& child : node.children()) {
        if (child->hasChildren()) {
            // Plain form guarantees that no child with children is deeper than a heading can be.
            if (relative)
                branchLines(*child, level + 1, lines, false);
            else
                writeHeading(*child, child->depth(), false, false, lines);
            previousWasQuote = false;
        } else {
            writeLeaf(*child, previousWasQuote, lines);
        }
    }
}

} // namespace

void branchLines(const SermonNode& node, int depth, QStringList& lines, bool isFirst)
{
    if (depth > deepestHeadingDepth) {
        // Too deep for a heading: the branch goes out as a list of one item.
        writeList(node, 0, lines, true);
        return;
    }
    writeHeading(node, depth, isFirst, true, lines);
}

QString serialize(const SermonMetadata& metadata, const SermonNode& root)
{
    QStringList lines;
    if (auto yaml = encodeFrontMatter(metadata)) {
        QString block = *yaml;
        if (block.endsWith(kNewline))
            block.chop(1);
        lines.append(kFence);
        lines.append(block.split(kNewline));
        lines.append(kFence);
        lines.append(QString());
    }
    if (root.depth() > deepestHeadingDepth)
        lines.append(root.text());
    else
        writeHeading(root, root.depth(), true, false, lines);
    if (lines.isEmpty() || !lines.last().isEmpty())
        lines.append(QString());
    return lines.join(kNewline);
}

} // namespace MarkdownCodec
