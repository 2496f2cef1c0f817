#include "EmojiText.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextCharFormat>
#include <QTextDocument>

#include <unicode/uchar.h>

namespace EmojiText {

namespace {

constexpr char32_t textSelector = 0xFE0E;
constexpr char32_t emojiSelector = 0xFE0F;
constexpr char32_t joiner = 0x200D;
constexpr char32_t keycap = 0x20E3;

char32_t codePointAt(const QString& text, qsizetype i, qsizetype* length)
{
    const QChar c = text.at(i);
    if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
        *length = 2;
        return QChar::surrogateToUcs4(c, text.at(i + 1));
    }
    *length = 1;
    return c.unicode();
}

bool isRegionalIndicator(char32_t c)
{
    return c >= 0x1F1E6 && c <= 0x1F1FF;
}

// Marks that belong to the emoji before them.
bool extendsEmoji(char32_t c)
{
    return c == emojiSelector || c == keycap || (c >= 0xE0020 && c <= 0xE007F)
        || u_hasBinaryProperty(UChar32(c), UCHAR_EMOJI_MODIFIER);
}

} // namespace

QString colourFamily()
{
    static const QString family = [] {
        const QString candidate = QStringLiteral("Noto Color Emoji");
        return QFontDatabase::families().contains(candidate) ? candidate : QString();
    }();
    return family;
}

QFont emojiFont(const QFont& base)
{
    const QString colour = colourFamily();
    if (colour.isEmpty())
        return base;
    QFont font = base;
    QStringList families = base.families();
    if (families.isEmpty())
        families = {base.family()};
    families.prepend(colour);
    font.setFamilies(families);
    font.setItalic(false);
    font.setWeight(QFont::Normal);
    return font;
}

bool mayHoldEmoji(const QString& text)
{
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        // Emoji start at U+203C; above U+3299 they all lie outside the basic plane, apart from
        // the selector that turns a symbol into one.
        if (u >= 0x203C && (u <= 0x3299 || c.isSurrogate() || u == emojiSelector))
            return true;
    }
    return false;
}

std::vector<Run> runs(const QString& text)
{
    std::vector<Run> result;
    auto append = [&](qsizetype start, qsizetype length, bool isEmoji) {
        if (!result.empty() && result.back().isEmoji == isEmoji)
            result.back().length += length;
        else
            result.push_back({start, length, isEmoji});
    };
    const qsizetype n = text.size();
    qsizetype i = 0;
    while (i < n) {
        const qsizetype start = i;
        qsizetype len = 0;
        const char32_t c = codePointAt(text, i, &len);
        i += len;
        qsizetype nextLen = 0;
        const char32_t next = i < n ? codePointAt(text, i, &nextLen) : 0;
        const bool isEmoji = next != textSelector
            && (u_hasBinaryProperty(UChar32(c), UCHAR_EMOJI_PRESENTATION)
                || (next == emojiSelector && u_hasBinaryProperty(UChar32(c), UCHAR_EMOJI)));
        if (isEmoji) {
            if (isRegionalIndicator(c) && isRegionalIndicator(next))
                i += nextLen;
            // Selectors, skin tones, keycaps and tags; a joiner takes the next emoji along.
            while (i < n) {
                const char32_t m = codePointAt(text, i, &len);
                if (extendsEmoji(m)) {
                    i += len;
                } else if (m == joiner && i + len < n) {
                    i += len;
                    codePointAt(text, i, &len);
                    i += len;
                } else {
                    break;
                }
            }
        }
        append(start, i - start, isEmoji);
    }
    return result;
}

double horizontalAdvance(const QFontMetricsF& metrics, const QFont& base, const QString& line)
{
    if (!mayHoldEmoji(line))
        return metrics.horizontalAdvance(line);
    const auto parts = runs(line);
    if (parts.size() == 1 && !parts.front().isEmoji)
        return metrics.horizontalAdvance(line);
    const QFontMetricsF emoji(emojiFont(base));
    double width = 0;
    for (const Run& run : parts) {
        const QString piece = line.mid(run.start, run.length);
        width += run.isEmoji ? emoji.horizontalAdvance(piece) : metrics.horizontalAdvance(piece);
    }
    return width;
}

void drawLine(QPainter& painter, QPointF baseline, const QFont& base, const QString& line)
{
    painter.setFont(base);
    if (!mayHoldEmoji(line)) {
        painter.drawText(baseline, line);
        return;
    }
    const QFontMetricsF metrics(base);
    const QFont emoji = emojiFont(base);
    const QFontMetricsF emojiMetrics(emoji);
    QPointF at = baseline;
    for (const Run& run : runs(line)) {
        const QString piece = line.mid(run.start, run.length);
        painter.setFont(run.isEmoji ? emoji : base);
        painter.drawText(at, piece);
        at.rx() += run.isEmoji ? emojiMetrics.horizontalAdvance(piece) : metrics.horizontalAdvance(piece);
    }
    painter.setFont(base);
}

QList<QTextLayout::FormatRange> formats(const QString& text, const QFont& base)
{
    QList<QTextLayout::FormatRange> list;
    if (colourFamily().isEmpty() || !mayHoldEmoji(text))
        return list;
    const QFont emoji = emojiFont(base);
    for (const Run& run : runs(text)) {
        if (!run.isEmoji)
            continue;
        QTextLayout::FormatRange range;
        range.start = int(run.start);
        range.length = int(run.length);
        range.format.setFontFamilies(emoji.families());
        range.format.setFontItalic(false);
        range.format.setFontWeight(QFont::Normal);
        list.append(range);
    }
    return list;
}

void Highlighter::highlightBlock(const QString& text)
{
    for (const QTextLayout::FormatRange& range : formats(text, document()->defaultFont()))
        setFormat(range.start, range.length, range.format);
}

} // namespace EmojiText
