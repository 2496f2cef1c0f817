#pragma once

#include "core/SermonNode.h"

#include <QStringList>

#include <benchmark/benchmark.h>

#include <random>

// Builds a realistic sermon of about `lines` nodes: main points with sub-points, spoken lines
// of a few to twenty words, some quotes, a few collapsed branches. Deterministic for a seed.
inline SermonNodePtr generateSermon(int lines, unsigned seed = 7)
{
    static const QStringList words =
        QStringLiteral("grace mercy hope the a of and to in that he she we they is was were will shall not "
                       "Lord God Christ love faith peace joy world life light darkness word spirit heart "
                       "come go see hear know believe remember forgive follow stay promise never always "
                       "today tomorrow yesterday morning evening porch road river mountain bread water")
            .split(QLatin1Char(' '));
    std::mt19937 random(seed);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    auto sentence = [&](int lo, int hi) {
        QStringList out;
        const int count = pick(lo, hi);
        for (int i = 0; i < count; ++i)
            out.append(words[pick(0, int(words.size()) - 1)]);
        QString text = out.join(QLatin1Char(' '));
        text[0] = text[0].toUpper();
        return text + QLatin1Char('.');
    };

    auto root = SermonNode::make(QStringLiteral("A Generated Sermon"), 0);
    int made = 1;
    while (made < lines) {
        auto point = root->addChild(sentence(2, 5));
        ++made;
        const int subPoints = pick(2, 5);
        for (int s = 0; s < subPoints && made < lines; ++s) {
            auto sub = point->addChild(sentence(2, 6));
            ++made;
            const int leaves = pick(2, 8);
            for (int l = 0; l < leaves && made < lines; ++l) {
                auto leaf = sub->addChild(sentence(4, 20));
                leaf->setQuote(pick(0, 9) == 0);
                ++made;
            }
            if (pick(0, 7) == 0)
                sub->setCollapsed(true);
        }
    }
    return root;
}

// The sizes every benchmark runs at: a sermon, a long series, a year of them, a book.
inline void sermonSizes(benchmark::internal::Benchmark* b)
{
    for (int lines : {300, 5000, 20000, 100000})
        b->Arg(lines);
}
