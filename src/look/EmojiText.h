#pragma once

#include <QFont>
#include <QList>
#include <QPointF>
#include <QString>
#include <QSyntaxHighlighter>
#include <QTextLayout>

#include <vector>

class QFontMetricsF;
class QPainter;

// Emoji drawn in colour. Fontconfig offers monochrome symbol faces (and the UI font's own
// outlines of a few circles) before the colour emoji face, so the markers lost their colours.
// Emoji runs therefore get a font with the colour face first. Only those runs: the colour face
// also carries plain digits and a space, which would look wrong in ordinary text.
namespace EmojiText {

// Noto Color Emoji, or empty when it isn't installed.
QString colourFamily();
// `base` with the colour face ahead of its own families, upright and regular, since that face
// has no italic or bold of its own. `base` itself without the colour face.
QFont emojiFont(const QFont& base);

struct Run {
    qsizetype start = 0;
    qsizetype length = 0;
    bool isEmoji = false;
};
// The text cut into plain and emoji runs, in order; an emoji keeps its selectors, skin tones,
// keycaps and joined parts in its run.
std::vector<Run> runs(const QString& text);
// False for texts that hold no emoji for certain, in one cheap pass.
bool mayHoldEmoji(const QString& text);

// Width of one line drawn by drawLine; `metrics` are those of `base`.
double horizontalAdvance(const QFontMetricsF& metrics, const QFont& base, const QString& line);
// One line from its baseline's left end, each emoji run in the colour face.
void drawLine(QPainter& painter, QPointF baseline, const QFont& base, const QString& line);
// The same for a QTextLayout over `text` with `base` as its font.
QList<QTextLayout::FormatRange> formats(const QString& text, const QFont& base);

// Emoji in the colour face while typing in a text field, as the views draw them.
class Highlighter : public QSyntaxHighlighter {
public:
    using QSyntaxHighlighter::QSyntaxHighlighter;

protected:
    void highlightBlock(const QString& text) override;
};

} // namespace EmojiText
