#include "TextPieces.h"

#include <QLocale>
#include <QRegularExpression>

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <memory>

namespace TextPieces {

namespace {
bool isLineBreak(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x000A && u <= 0x000D) || u == 0x0085 || u == 0x2028 || u == 0x2029;
}

void appendTrimmed(QStringList& pieces, QStringView piece)
{
    const QStringView t = piece.trimmed();
    if (!t.isEmpty())
        pieces.append(t.toString());
}
} // namespace

QString editorText(const QString& modelText)
{
    QString text = modelText;
    return text.replace(softLineBreak, QLatin1Char('\n'));
}

QString modelText(const QString& editorText)
{
    QString text = editorText;
    return text.replace(QLatin1Char('\n'), softLineBreak);
}

QStringList lines(const QString& text)
{
    QStringList pieces;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isLineBreak(text[i])) {
            appendTrimmed(pieces, QStringView(text).mid(start, i - start));
            start = i + 1;
        }
    }
    appendTrimmed(pieces, QStringView(text).mid(start));
    return pieces;
}

QStringList sentences(const QString& text)
{
    QStringList pieces;
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale locale(QLocale().name().toLatin1().constData());
    std::unique_ptr<icu::BreakIterator> it(icu::BreakIterator::createSentenceInstance(locale, status));
    if (U_FAILURE(status) || !it) {
        appendTrimmed(pieces, text);
        return pieces;
    }
    const icu::UnicodeString u(false, reinterpret_cast<const UChar*>(text.utf16()), int32_t(text.size()));
    it->setText(u);
    int32_t start = it->first();
    for (int32_t end = it->next(); end != icu::BreakIterator::DONE; start = end, end = it->next())
        appendTrimmed(pieces, QStringView(text).mid(start, end - start));
    return pieces;
}

bool looksLikeSeveralSentences(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("[.!?]\\s+\\p{Lu}"),
                                            QRegularExpression::UseUnicodePropertiesOption);
    return pattern.match(text).hasMatch();
}

} // namespace TextPieces
