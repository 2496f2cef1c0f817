#pragma once

#include <QFont>
#include <QSizeF>
#include <QString>

class QColor;
class QPainter;
class QPointF;

// Wrapping, measuring and drawing the page's text with one engine, so that what is measured
// for the layout is what is drawn.
namespace DeliveryText {

// The serif family of the page: Noto Serif, else DejaVu Serif, else whatever the system maps
// a serif hint to.
QString serifFamily();

// A font of the given pixel size and weight, serif unless `serif` is false (then the UI font).
QFont makeFont(double size, QFont::Weight weight, bool serif = true);

// The text to lay out: soft breaks and line feeds become forced line breaks.
QString layoutText(const QString& text);

// Word-wrapped size at `width`, leading included, each side rounded up.
QSizeF measure(const QString& text, const QFont& font, double width);

// Draws word-wrapped text with the top of its first line at `topLeft`.
void draw(QPainter& painter, const QString& text, const QFont& font, const QColor& color, const QPointF& topLeft,
          double width);

} // namespace DeliveryText
