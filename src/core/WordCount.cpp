#include "WordCount.h"

#include <algorithm>
#include <cmath>

namespace WordCount {

int wordCount(const QString& text)
{
    int words = 0;
    bool inWord = false;
    for (QChar c : text) {
        const bool space = c.isSpace();
        if (!space && !inWord)
            ++words;
        inWord = !space;
    }
    return words;
}

int wordCount(const SermonNode& node)
{
    int words = 0;
    std::vector<const SermonNode*> stack{&node};
    while (!stack.empty()) {
        const SermonNode* n = stack.back();
        stack.pop_back();
        words += wordCount(n->text());
        for (const auto& child : n->children())
            stack.push_back(child.get());
    }
    return words;
}

std::vector<NodeWordFraction> nodeWordFractions(const SermonNode& root)
{
    // One walk counts every node once: headings for the total, leaves for their shares.
    std::vector<NodeID> leaves;
    std::vector<int> counts;
    long long allWords = 0;
    std::vector<const SermonNode*> stack{&root};
    while (!stack.empty()) {
        const SermonNode* n = stack.back();
        stack.pop_back();
        const int words = wordCount(n->text());
        allWords += words;
        if (!n->hasChildren()) {
            leaves.push_back(n->id());
            counts.push_back(words);
            continue;
        }
        const auto& kids = n->children();
        for (auto it = kids.rbegin(); it != kids.rend(); ++it)
            stack.push_back(it->get());
    }
    if (allWords < 1)
        return {};

    // A centred moving average keeps the runner from leaping over short lines.
    constexpr int radius = 5;
    const int n = int(counts.size());
    std::vector<long long> prefix(counts.size() + 1, 0);
    for (int i = 0; i < n; ++i)
        prefix[i + 1] = prefix[i] + counts[i];
    std::vector<double> smooth(counts.size());
    double total = 0;
    for (int i = 0; i < n; ++i) {
        const int lo = std::max(i - radius, 0);
        const int hi = std::min(i + radius, n - 1);
        smooth[i] = double(prefix[hi + 1] - prefix[lo]) / double(hi - lo + 1);
        total += smooth[i];
    }
    if (!(total > 0))
        return {};

    std::vector<NodeWordFraction> table;
    table.reserve(leaves.size());
    double running = 0;
    for (int i = 0; i < n; ++i) {
        NodeWordFraction entry{leaves[i], running / total, 0};
        running += smooth[i];
        entry.endFraction = running / total;
        table.push_back(entry);
    }
    return table;
}

int estimatedMinutes(int words, int wpm)
{
    if (wpm < 1)
        return 5;
    const int m = int(std::ceil((double(words) / double(wpm)) / 5.0)) * 5;
    return std::max(m, 5);
}

namespace {
int spokenMinutes(int words, int wpm)
{
    if (wpm < 1)
        return 1;
    return std::max(int(std::ceil(double(words) / double(wpm))), 1);
}
} // namespace

QString statusText(const SermonNode& root, int wpm)
{
    const int words = wordCount(root);
    if (words == 0)
        return QStringLiteral("0 words");
    return QStringLiteral("%1 words · %2 min @%3wpm").arg(words).arg(spokenMinutes(words, wpm)).arg(wpm);
}

QString statusTextWithoutPace(const SermonNode& root, int wpm)
{
    const int words = wordCount(root);
    if (words == 0)
        return QStringLiteral("0 words");
    return QStringLiteral("%1 words · %2 min").arg(words).arg(spokenMinutes(words, wpm));
}

} // namespace WordCount
