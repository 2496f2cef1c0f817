#include "WrappedLines.h"

#include "ColumnLayout.h"
#include "look/EmojiText.h"

#include <QFont>
#include <QFontDatabase>
#include <QHash>
#include <QTextLayout>

#include <algorithm>
#include <memory>

namespace {

constexpr QChar lineSeparator(0x2028);

struct WrapKey {
    QString text;
    bool semibold;
    double width;
    bool operator==(const WrapKey&) const = default;
};

size_t qHash(const WrapKey& key, size_t seed = 0)
{
    return qHashMulti(seed, key.text, key.semibold, key.width);
}

bool holdsWhiteSpace(QStringView text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.isSpace(); });
}

std::vector<WrappedLine> singleEmptyLine()
{
    return {WrappedLine{}};
}

} // namespace

QFont columnFont(bool semibold)
{
    static const QFont base = [] {
        QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        // Points of the canvas are logical pixels, as on the map.
        font.setPixelSize(13);
        // Unhinted advances, so that the editor's document breaks exactly where the cell does.
        font.setHintingPreference(QFont::PreferNoHinting);
        return font;
    }();
    QFont font = base;
    font.setWeight(semibold ? QFont::DemiBold : QFont::Normal);
    return font;
}

std::vector<WrappedLine> wrappedLinesUncached(const QString& text, bool semibold, double columnWidth)
{
    QString plain = text;
    plain.replace(lineSeparator, QChar('\n'));
    if (plain.isEmpty())
        return singleEmptyLine();

    const double wrapWidth = std::max(columnWidth - 2 * ColumnLayout::columnTextInset, 1.0);
    const QFont font = columnFont(semibold);
    QTextOption option;
    option.setWrapMode(QTextOption::WordWrap);

    // Each paragraph is laid out on its own; every line the engine makes is one 28-point row,
    // so a fragment's top is its running index times the row height.
    std::vector<WrappedLine> lines;
    int fragmentIndex = 0;
    const auto rowY = [](int index) { return index * ColumnLayout::rowHeight; };
    for (const QStringView paragraph : QStringView(plain).split(QChar('\n'))) {
        if (paragraph.isEmpty()) {
            lines.push_back(WrappedLine{QString(), lines.empty() ? 0 : lines.back().yOffset + ColumnLayout::rowHeight});
            ++fragmentIndex;
            continue;
        }
        const QString paragraphText = paragraph.toString();
        QTextLayout layout(paragraphText, font);
        layout.setTextOption(option);
        // Emoji are measured in the colour face they are drawn in.
        if (EmojiText::mayHoldEmoji(paragraphText))
            layout.setFormats(EmojiText::formats(paragraphText, font));
        layout.setCacheEnabled(false);
        std::vector<std::pair<int, int>> ranges;
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(wrapWidth);
            ranges.emplace_back(line.textStart(), line.textLength());
        }
        layout.endLayout();
        if (ranges.size() > 1 && !holdsWhiteSpace(paragraph)) {
            // One long word: never cut into pieces; the drawing clips it at the column's edge.
            lines.push_back(WrappedLine{paragraphText, rowY(fragmentIndex)});
        } else {
            for (size_t i = 0; i < ranges.size(); ++i)
                lines.push_back(
                    WrappedLine{paragraphText.mid(ranges[i].first, ranges[i].second), rowY(fragmentIndex + int(i))});
        }
        fragmentIndex += int(ranges.size());
    }
    return lines.empty() ? singleEmptyLine() : lines;
}

namespace {

// Every keystroke relays the whole sermon; only the changed cell needs the text engine.
// Bounded by clearing: a cleared cache only costs one cold pass. Large enough for the largest
// sermons measured (100,000 lines), which would otherwise clear it on every pass. An answer is
// read before the next call, which may clear the cache.
const std::vector<WrappedLine>& cachedLines(const QString& text, bool semibold, double columnWidth)
{
    constexpr qsizetype maxEntries = 250000;
    thread_local QHash<WrapKey, std::vector<WrappedLine>> cache;
    WrapKey key{text, semibold, columnWidth};
    if (const auto hit = cache.constFind(key); hit != cache.constEnd())
        return hit.value();
    if (cache.size() >= maxEntries)
        cache.clear();
    return *cache.insert(std::move(key), wrappedLinesUncached(text, semibold, columnWidth));
}

} // namespace

std::vector<WrappedLine> wrappedLines(const QString& text, bool semibold, double columnWidth)
{
    return cachedLines(text, semibold, columnWidth);
}

namespace {

// A text by the identity of its characters. The entry keeps a copy of the text, which shares
// and so pins those characters: while it lives they can neither change (a write detaches) nor
// be freed and reused, so the same address and length mean the same text.
struct SharedTextKey {
    const QChar* characters;
    qsizetype length;
    bool semibold;
    double width;
    bool operator==(const SharedTextKey&) const = default;
};

size_t qHash(const SharedTextKey& key, size_t seed = 0)
{
    return qHashMulti(seed, quintptr(key.characters), key.length, key.semibold, key.width);
}

struct SharedTextCount {
    QString pin;
    int count;
};

} // namespace

int wrappedLineCount(const QString& text, bool semibold, double columnWidth)
{
    // A layout asks for the same unchanged texts on every keystroke: answering those by address
    // spares hashing and comparing every text of the sermon. Bounded like the cache above.
    constexpr qsizetype maxEntries = 250000;
    thread_local QHash<SharedTextKey, SharedTextCount> counts;
    const SharedTextKey key{text.constData(), text.size(), semibold, columnWidth};
    if (const auto hit = counts.constFind(key); hit != counts.constEnd())
        return hit->count;
    if (counts.size() >= maxEntries)
        counts.clear();
    const int count = int(cachedLines(text, semibold, columnWidth).size());
    counts.insert(key, SharedTextCount{text, count});
    return count;
}
