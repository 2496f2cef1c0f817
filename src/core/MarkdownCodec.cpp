#include "MarkdownCodec.h"

#include "FrontMatter.h"

#include <optional>
#include <utility>

// Debug lines are off unless asked for (QT_LOGGING_RULES); a broken block is still reported.
Q_LOGGING_CATEGORY(lcMarkdownCodec, "app.orantium.MarkdownCodec", QtInfoMsg)

namespace MarkdownCodec {

namespace {

const QString kNewline = QStringLiteral("\n");
const QString kFence = QStringLiteral("---");

} // namespace

bool isBlank(QChar c)
{
    return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space;
}

QString trimmed(const QString& s)
{
    qsizetype start = 0;
    qsizetype end = s.size();
    while (start < end && isBlank(s[start]))
        ++start;
    while (end > start && isBlank(s[end - 1]))
        --end;
    return s.mid(start, end - start);
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
    QStringList lines = text.split(kNewline);
    if (lines.isEmpty() || trimmed(lines.first()) != kFence)
        return {SermonMetadata{}, lines};

    qsizetype closing = -1;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        if (trimmed(lines[i]) == kFence) {
            closing = i;
            break;
        }
    }
    if (closing < 0) {
        qCDebug(lcMarkdownCodec, "Opening --- found but no closing --- ; treating file as body only");
        return {SermonMetadata{}, lines};
    }

    SplitResult result;
    const FrontMatterResult decoded = decodeFrontMatter(lines.mid(1, closing - 1).join(kNewline));
    if (decoded.metadata)
        result.metadata = *decoded.metadata;
    else
        qCCritical(lcMarkdownCodec, "Failed to decode frontmatter: %s", qUtf8Printable(decoded.error));
    result.body = lines.mid(closing + 1);
    return result;
}

std::optional<Heading> parseHeading(const QString& s)
{
    int hashes = 0;
    while (hashes < s.size() && s[hashes] == QLatin1Char('#'))
        ++hashes;
    if (hashes < 1 || hashes > 6 || hashes >= s.size() || s[hashes] != QLatin1Char(' '))
        return std::nullopt;
    return Heading{hashes - 1, trimmed(s.mid(hashes + 1))};
}

std::optional<ListItem> parseListItem(const QString& line)
{
    int columns = 0;
    qsizetype i = 0;
    for (; i < line.size(); ++i) {
        if (line[i] == QLatin1Char(' '))
            columns += 1;
        else if (line[i] == QLatin1Char('\t'))
            columns += 4;
        else
            break;
    }
    if (i >= line.size())
        return std::nullopt;
    const QChar bullet = line[i];
    if (bullet != QLatin1Char('-') && bullet != QLatin1Char('*') && bullet != QLatin1Char('+'))
        return std::nullopt;
    if (i + 1 >= line.size() || line[i + 1] != QLatin1Char(' '))
        return std::nullopt;
    return ListItem{columns, line.mid(i + 2)};
}

namespace {

class BodyReader {
public:
    BodyReader()
        : m_root(SermonNode::make(QStringLiteral("Untitled"), 0))
    {
        m_headings.push_back(m_root);
    }

    void read(const QString& line)
    {
        const QString t = trimmed(line);
        if (t == collapseMarker) {
            target()->setCollapsed(true);
            return;
        }
        if (!m_list.empty() && continueListItem(line, t))
            return;
        if (t.startsWith(QLatin1Char('>'))) {
            m_list.clear();
            QString rest = t.mid(1);
            if (rest.startsWith(QLatin1Char(' ')))
                rest.remove(0, 1);
            if (!rest.isEmpty())
                m_quote.append(rest);
            return;
        }
        if (auto item = parseListItem(line)) {
            readListItem(*item);
            return;
        }
        flushQuote();
        if (t.isEmpty())
            return;
        if (auto heading = parseHeading(t)) {
            readHeading(*heading);
            return;
        }
        m_list.clear();
        headingTop().appendChild(SermonNode::make(t));
    }

    SermonNodePtr finish()
    {
        flushQuote();
        return m_root;
    }

private:
    SermonNode& headingTop() { return m_headings.empty() ? *m_root : *m_headings.back(); }

    SermonNode* target() { return m_list.empty() ? &headingTop() : m_list.back().first.get(); }

    void flushQuote()
    {
        if (m_quote.isEmpty())
            return;
        auto node = SermonNode::make(m_quote.join(kNewline));
        node->setQuote(true);
        headingTop().appendChild(node);
        m_quote.clear();
    }

    void readListItem(ListItem item)
    {
        flushQuote();
        bool quote = false;
        if (item.text.startsWith(QLatin1String("> "))) {
            item.text.remove(0, 2);
            quote = true;
        } else if (item.text == QLatin1String(">")) {
            item.text.clear();
            quote = true;
        }
        SermonNode* parent = &headingTop();
        if (item.columns == 0) {
            m_list.clear();
        } else {
            while (!m_list.empty() && m_list.back().second >= item.columns)
                m_list.pop_back();
            if (!m_list.empty())
                parent = m_list.back().first.get();
        }
        auto node = SermonNode::make(item.text);
        node->setQuote(quote);
        parent->appendChild(node);
        m_list.emplace_back(node, item.columns);
    }

    void readHeading(const Heading& heading)
    {
        m_list.clear();
        if (heading.depth == 0) {
            m_root->setText(heading.text);
            m_headings.assign(1, m_root);
            return;
        }
        // A heading closes the open ones at its level or deeper. Levels may be skipped, so the
        // count of open headings is no measure of the level.
        while (m_headings.size() > 1 && m_headings.back()->depth() >= heading.depth)
            m_headings.pop_back();
        // A heading keeps the file's level, even where the file skips levels.
        auto node = SermonNode::make(heading.text, heading.depth);
        headingTop().insertChildKeepingDepths(int(headingTop().children().size()), node);
        m_headings.push_back(node);
    }

    bool continueListItem(const QString& line, const QString& t)
    {
        if (t.isEmpty())
            return false;
        SermonNode& node = *m_list.back().first;
        const int need = m_list.back().second + 2;
        const int columns = indentation(line);
        if (columns < need) {
            if (node.isQuote() || parseListItem(line) || parseHeading(t) || t.startsWith(QLatin1Char('>')))
                return false;
            node.setText(node.text() + kNewline + t);
            return true;
        }
        if (parseListItem(line))
            return false;
        qsizetype cut = 0;
        int removed = 0;
        while (cut < line.size() && removed < need && isBlank(line[cut])) {
            removed += line[cut] == QLatin1Char('\t') ? 4 : 1;
            ++cut;
        }
        QString rest = line.mid(cut);
        if (node.isQuote()) {
            if (rest.startsWith(QLatin1String("> ")))
                rest.remove(0, 2);
            else if (rest == QLatin1String(">"))
                rest.clear();
            else
                return false;
        }
        node.setText(node.text() + kNewline + rest);
        return true;
    }

    SermonNodePtr m_root;
    std::vector<SermonNodePtr> m_headings;
    std::vector<std::pair<SermonNodePtr, int>> m_list;
    QStringList m_quote;
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
