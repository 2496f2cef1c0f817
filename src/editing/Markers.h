#pragma once

#include <QString>

#include <array>

// Markers are a leading emoji in a line's text, not a field of the node: they survive any
// Markdown editor and need no file format of their own.
namespace Markers {

struct Marker {
    QString symbol; // the emoji, also the menu title
    int digit; // held with Ctrl+Shift: 1 to 9
};

inline constexpr int removalDigit = 0;
inline const QString removalTitle = QStringLiteral("\U0001F5D1"); // wastebasket

// Red, orange, yellow, green, blue, purple, brown, black, white.
const std::array<Marker, 9>& all();

// The line without its leading marker (and one space behind it), or unchanged when it starts
// with no emoji. Digits, '#' and '*' carry the emoji property too, so only emoji from U+238D
// on count.
QString stripMarker(const QString& text);

} // namespace Markers
