#include "TreeOutline.h"

#include "core/MarkdownCodec.h"

#include <gtest/gtest.h>

#include <random>

namespace {

// Random trees of plain single-line texts: writing then reading gives the same tree, but for
// the two flags the format doesn't keep (quote on a branch, collapsed on a leaf).
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : m_random(seed) {}

    SermonNodePtr make()
    {
        auto root = SermonNode::make(text(), 0);
        std::vector<SermonNodePtr> open{root};
        const int nodes = pick(1, 60);
        for (int i = 0; i < nodes; ++i) {
            // Favour recent nodes so that deep branches appear, up to depth ten or so.
            const int from = std::max(0, int(open.size()) - pick(1, 4));
            SermonNodePtr parent = open[pick(from, int(open.size()) - 1)];
            if (parent->isQuote() || parent->depth() > 10)
                continue;
            auto child = parent->addChild(text());
            child->setQuote(pick(0, 5) == 0);
            child->setCollapsed(pick(0, 4) == 0);
            open.push_back(child);
        }
        root->setCollapsed(pick(0, 4) == 0);
        return root;
    }

private:
    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(m_random); }

    QString text()
    {
        static const QStringList words = {QStringLiteral("grace"), QStringLiteral("why?"), QStringLiteral("x#"),
                                          QStringLiteral("caf\u00e9"), QStringLiteral("1."), QStringLiteral("-"),
                                          QStringLiteral("\"said\""), QStringLiteral("*soft*"), QStringLiteral("> no"),
                                          QStringLiteral("\u2014"), QStringLiteral("[//]:")};
        QStringList out;
        const int count = pick(1, 5);
        for (int i = 0; i < count; ++i)
            out.append(words[pick(0, int(words.size()) - 1)]);
        // No markup at the start: the first word is always a plain one.
        out.first() = QStringLiteral("Word%1").arg(pick(0, 99));
        return out.join(QLatin1Char(' '));
    }

    std::mt19937 m_random;
};

QString expectedOutline(const SermonNode& root)
{
    auto copy = root.deepCopy(false);
    for (const auto& node : copy->flattened()) {
        if (node->hasChildren())
            node->setQuote(false);
        else
            node->setCollapsed(false);
    }
    return outline(*copy);
}

TEST(RoundTripProperty, RandomTreesSurviveWritingAndReading)
{
    for (unsigned seed = 1; seed <= 400; ++seed) {
        RandomTree generator(seed);
        const auto tree = generator.make();
        const QString text = MarkdownCodec::serialize(SermonMetadata{}, *tree);
        const auto back = MarkdownCodec::parseBody(MarkdownCodec::splitFrontMatter(text).body);
        ASSERT_EQ(outline(*back), expectedOutline(*tree)) << "seed " << seed << "\n" << text.toStdString();
        // And the text is a fixed point of writing.
        ASSERT_EQ(MarkdownCodec::serialize(SermonMetadata{}, *back), text) << "seed " << seed;
    }
}

} // namespace
