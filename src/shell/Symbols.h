#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>
#include <QString>

class QPainter;

// The handful of named symbols the windows use ("plus", "doc.text", "moon", ...), drawn as vector
// paths so that they are crisp at any size and need no icon theme.
namespace Symbols {

bool has(const QString& name);
// Draws the symbol centred in `rect`, fitted to its smaller side. Unknown names draw nothing.
void draw(QPainter& painter, const QString& name, const QRectF& rect, const QColor& color);
// An icon of the symbol at `size` points, in `color`, with a dimmed disabled form.
QIcon icon(const QString& name, const QColor& color, int size = 16);

} // namespace Symbols
