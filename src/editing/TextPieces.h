#pragma once

#include <QString>
#include <QStringList>

// Cutting a line's text into pieces, and the soft line break that joins them again.
namespace TextPieces {

// A break the preacher typed inside one line. The file keeps it within its line; editors show
// it as an ordinary line break.
inline constexpr QChar softLineBreak = QChar(0x2028);

// The editor's form of a line (soft breaks as U+000A), and back to the model's form.
QString editorText(const QString& modelText);
QString modelText(const QString& editorText);

// The text cut at every line break character (U+000A to U+000D, U+0085, U+2028, U+2029),
// each part trimmed, empty parts dropped.
QStringList lines(const QString& text);

// The text cut into sentences by the current locale's rules, each trimmed, empty ones dropped.
QStringList sentences(const QString& text);

// Whether a sentence mark, whitespace and a capital letter follow each other somewhere: the
// cheap hint that offering "Split Sentences" makes sense.
bool looksLikeSeveralSentences(const QString& text);

} // namespace TextPieces
