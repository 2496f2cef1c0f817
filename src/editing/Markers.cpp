#include "Markers.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <memory>

namespace Markers {

namespace {
// Below this, the emoji property also covers plain keyboard characters (digits, '#', '*').
constexpr char32_t firstMarkerScalar = 0x238D;

// Length in UTF-16 units of the first user-perceived character: an emoji with its variation
// selector, skin tone or joined parts goes as one.
qsizetype firstCharacterLength(const QString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> it(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || !it)
        return text.at(0).isHighSurrogate() && text.size() > 1 ? 2 : 1;
    // Only the head matters; a grapheme cluster is never this long in practice.
    const QString head = text.left(64);
    const icu::UnicodeString u(false, reinterpret_cast<const UChar*>(head.utf16()), int32_t(head.size()));
    it->setText(u);
    const int32_t end = it->following(0);
    return end == icu::BreakIterator::DONE ? head.size() : end;
}
} // namespace

const std::array<Marker, 9>& all()
{
    static const std::array<Marker, 9> markers{{
        {QStringLiteral("\U0001F534"), 1},
        {QStringLiteral("\U0001F7E0"), 2},
        {QStringLiteral("\U0001F7E1"), 3},
        {QStringLiteral("\U0001F7E2"), 4},
        {QStringLiteral("\U0001F535"), 5},
        {QStringLiteral("\U0001F7E3"), 6},
        {QStringLiteral("\U0001F7E4"), 7},
        {QStringLiteral("\u26AB"), 8},
        {QStringLiteral("\u26AA"), 9},
    }};
    return markers;
}

QString stripMarker(const QString& text)
{
    if (text.isEmpty())
        return text;
    const char32_t first = text.at(0).isHighSurrogate() && text.size() > 1 && text.at(1).isLowSurrogate()
        ? QChar::surrogateToUcs4(text.at(0), text.at(1))
        : text.at(0).unicode();
    if (first < firstMarkerScalar || !u_hasBinaryProperty(UChar32(first), UCHAR_EMOJI))
        return text;
    qsizetype cut = firstCharacterLength(text);
    if (cut < text.size() && text.at(cut) == QLatin1Char(' '))
        ++cut;
    return text.mid(cut);
}

} // namespace Markers
