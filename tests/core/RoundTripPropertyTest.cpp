#include "TreeOutline.h"

#include "core/MarkdownCodec.h"

#include <gtest/gtest.h>

#include <random>

namespace {

// Random trees of every shape the file can hold: headings that skip levels, list form below
// them, list items and quotes of several lines (written as continuation lines), collapsed
// branches. Writing such a tree and reading the file gives the same tree.
//
// Left out, because the format keeps them in no way of its own (it does no escaping):
// - a text that starts like markup ("# ", "- ", "* ", "+ ", ">"): every line of a text starts
//   with a plain word;
// - an empty text, or blanks at either end of a line: no line is empty or padded, but for the
//   inner indentation of a list item's later lines, which is kept;
// - several lines in a heading or in a plain leaf: only list items and quotes get them;
// - an empty line inside a list item that isn't a quote (a blank line adds nothing to an item);
// - the quote flag on a branch and the collapsed flag on a leaf: only leaves are quotes, only
//   branches are collapsed;
// - a leaf at a skipped level: a leaf is a plain line or an item, one level below its parent;
// - a branch deeper than the branch before it, as an edit beside a skipped level leaves: its
//   heading would read as the other's child, so the writer lists them, closing the levels.
class RandomTree {
public:
    explicit RandomTree(unsigned seed)
        : m_random(seed)
    {
    }

    SermonNodePtr make()
    {
        auto root = SermonNode::make(line(), 0);
        std::vector<SermonNodePtr> open{root};
        const int nodes = pick(1, 60);
        for (int i = 0; i < nodes; ++i) {
            // Favour recent nodes so that deep branches appear, up to depth ten or so.
            const int from = std::max(0, int(open.size()) - pick(1, 4));
            SermonNodePtr parent = open[pick(from, int(open.size()) - 1)];
            if (parent->depth() <= 10)
                open.push_back(parent->addChild(QString()));
        }
        for (const auto& node : root->flattened()) {
            node->setQuote(!node->hasChildren() && pick(0, 5) == 0);
            node->setCollapsed(node->hasChildren() && pick(0, 4) == 0);
        }
        // Levels and texts from the top down; a node is a heading until list form takes over.
        std::vector<SermonNode*> headings{root.get()};
        while (!headings.empty()) {
            SermonNode& heading = *headings.back();
            headings.pop_back();
            if (isListForm(heading)) {
                for (const auto& child : heading.children()) {
                    child->setDepthRecursive(heading.depth() + 1);
                    for (const auto& item : child->flattened())
                        item->setText(item->hasChildren() ? lines(0) : lines(item->isQuote() ? 0 : 2));
                }
                continue;
            }
            int deepest = 5;
            for (const auto& child : heading.children()) {
                if (child->hasChildren()) {
                    if (pick(0, 2) == 0)
                        child->setDepthRecursive(pick(heading.depth() + 1, deepest));
                    deepest = child->depth();
                }
                child->setText(child->isQuote() ? lines(0) : line());
                if (child->hasChildren())
                    headings.push_back(child.get());
            }
        }
        return root;
    }

private:
    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(m_random); }

    // Where headings can't hold the children (one too deep, or a leaf behind a branch), the
    // writer lists them.
    static bool isListForm(const SermonNode& node)
    {
        bool previousHadChildren = false;
        for (const auto& child : node.children()) {
            if ((child->hasChildren() && child->depth() > 5) || (!child->hasChildren() && previousHadChildren))
                return true;
            previousHadChildren = child->hasChildren();
        }
        return false;
    }

    QString line()
    {
        static const QStringList words = {QStringLiteral("grace"),     QStringLiteral("why?"),   QStringLiteral("x#"),
                                          QStringLiteral("caf\u00e9"), QStringLiteral("1."),     QStringLiteral("-"),
                                          QStringLiteral("\"said\""),  QStringLiteral("*soft*"), QStringLiteral("> no"),
                                          QStringLiteral("\u2014"),    QStringLiteral("[//]:"),  QStringLiteral("#")};
        QStringList out{QStringLiteral("Word%1").arg(pick(0, 99))};
        for (int i = pick(0, 4); i > 0; --i)
            out.append(words[pick(0, int(words.size()) - 1)]);
        return out.join(QLatin1Char(' '));
    }

    // One to three lines; later lines indented by up to `indent` spaces.
    QString lines(int indent)
    {
        QString text = line();
        for (int i = pick(0, 4) - 2; i > 0; --i)
            text += QLatin1Char('\n') + QString(pick(0, indent), QLatin1Char(' ')) + line();
        return text;
    }

    std::mt19937 m_random;
};

// The outline with each node's place in the tree: a dot for each ancestor. Depths alone can't
// tell a child from a sibling once levels are skipped.
QString nestedOutline(const SermonNode& root)
{
    QStringList parts;
    std::vector<std::pair<const SermonNode*, int>> todo{{&root, 0}};
    while (!todo.empty()) {
        const auto [node, level] = todo.back();
        todo.pop_back();
        // The node alone, as outline() writes it.
        auto alone = SermonNode::make(node->text(), node->depth());
        alone->setQuote(node->isQuote());
        alone->setCollapsed(node->isCollapsed());
        parts.append(QString(level, QLatin1Char('.')) + outline(*alone));
        for (auto child = node->children().rbegin(); child != node->children().rend(); ++child)
            todo.emplace_back(child->get(), level + 1);
    }
    return parts.join(QStringLiteral(" | "));
}

SermonNodePtr readBack(const QString& text)
{
    return MarkdownCodec::parseBody(MarkdownCodec::splitFrontMatter(text).body);
}

TEST(RoundTripProperty, FilesThatSkipLevelsKeepTheirShapeThroughASave)
{
    struct Row {
        const char* body;
        const char* tree;
    } rows[] = {
        {"# T\n\n## A\n\n#### B\n\n- c\n  - d\n\n##### E\n\ne1",
         "0 T | .1 A | ..3 B | ...4 c | ....5 d | ...4 E | ....5 e1"},
        // a heading closes the open ones at its level or deeper, however many levels were skipped
        {"#### B\nb\n### C\nx", "0 Untitled | .3 B | ..4 b | .2 C | ..3 x"},
        {"## A\n#### B\nb\n### C\nc", "0 Untitled | .1 A | ..3 B | ...4 b | ..2 C | ...3 c"},
    };
    for (const auto& row : rows) {
        const auto first = readBack(QString::fromUtf8(row.body));
        EXPECT_EQ(nestedOutline(*first), row.tree) << row.body;
        const auto second = readBack(MarkdownCodec::serialize(SermonMetadata{}, *first));
        EXPECT_EQ(nestedOutline(*second), row.tree) << row.body;
    }

    // A new heading beside one that skips levels comes one level below its parent; the deeper
    // heading behind it stays its sibling, not its child.
    const auto edited = readBack(QStringLiteral("## A\n#### B\nb"));
    const auto a = edited->children().front();
    edited->insertSiblingBefore(a->children().front()->id(), QStringLiteral("N"))->addChild(QStringLiteral("n"));
    EXPECT_EQ(nestedOutline(*readBack(MarkdownCodec::serialize(SermonMetadata{}, *edited))),
              "0 Untitled | .1 A | ..2 N | ...3 n | ..2 B | ...3 b");
}

TEST(RoundTripProperty, RandomTreesSurviveWritingAndReading)
{
    for (unsigned seed = 1; seed <= 600; ++seed) {
        RandomTree generator(seed);
        const auto tree = generator.make();
        const QString text = MarkdownCodec::serialize(SermonMetadata{}, *tree);
        const auto back = readBack(text);
        ASSERT_EQ(nestedOutline(*back), nestedOutline(*tree)) << "seed " << seed << "\n" << text.toStdString();
        // And the text is a fixed point of writing.
        ASSERT_EQ(MarkdownCodec::serialize(SermonMetadata{}, *back), text) << "seed " << seed;
    }
}

} // namespace
