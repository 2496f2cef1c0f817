#pragma once

// Colour checks shared by the views that draw markers.

#include <QColor>
#include <QImage>
#include <QString>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <vector>

// The nine markers and what their colour must look like, by hue, saturation and value, loose
// enough for any colour emoji face and far from the grey, brown or cream of a monochrome one.
struct MarkerColour {
    QString marker;
    const char* name;
    std::function<bool(const QColor&)> matches;
};
inline std::vector<MarkerColour> markerColours()
{
    auto hsv = [](double h0, double h1, double sMin, double sMax, double vMin, double vMax) {
        return [=](const QColor& c) {
            const double h = c.hsvHueF() * 360, s = c.hsvSaturationF(), v = c.valueF();
            const bool hue = h0 <= h1 ? (h >= h0 && h <= h1) : (h >= h0 || h <= h1);
            return (sMax < 0.2 || hue) && s >= sMin && s <= sMax && v >= vMin && v <= vMax;
        };
    };
    return {
        {QStringLiteral("\U0001F534"), "red", hsv(340, 15, 0.5, 1, 0.5, 1)},
        {QStringLiteral("\U0001F7E0"), "orange", hsv(15, 40, 0.6, 1, 0.8, 1)},
        {QStringLiteral("\U0001F7E1"), "yellow", hsv(40, 65, 0.5, 1, 0.8, 1)},
        {QStringLiteral("\U0001F7E2"), "green", hsv(75, 160, 0.4, 1, 0.4, 1)},
        {QStringLiteral("\U0001F535"), "blue", hsv(190, 250, 0.4, 1, 0.4, 1)},
        {QStringLiteral("\U0001F7E3"), "purple", hsv(260, 320, 0.3, 1, 0.4, 1)},
        {QStringLiteral("\U0001F7E4"), "brown", hsv(0, 40, 0.25, 0.8, 0.35, 0.8)},
        {QStringLiteral("\u26AB"), "black", hsv(0, 360, 0, 0.15, 0, 0.4)},
        {QStringLiteral("\u26AA"), "white", hsv(0, 360, 0, 0.1, 0.8, 1)},
    };
}

// The mean colour of what covers `area`: opaque pixels of an image on transparency, or on an
// opaque one the third of the pixels farthest from `background` (a small glyph's soft edges
// would muddy the rest). Invalid when nothing covers it.
inline QColor meanCoverColour(const QImage& image, QRect area, std::optional<QColor> background = std::nullopt)
{
    std::vector<std::pair<int, QColor>> covered; // distance from the background, colour
    area = area.intersected(image.rect());
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (!background) {
                if (c.alpha() > 250)
                    covered.emplace_back(0, c);
                continue;
            }
            const int d = std::max({std::abs(c.red() - background->red()), std::abs(c.green() - background->green()),
                                    std::abs(c.blue() - background->blue())});
            if (d > 40)
                covered.emplace_back(d, c);
        }
    if (background) {
        std::sort(covered.begin(), covered.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
        covered.resize((covered.size() + 2) / 3);
    }
    if (covered.empty())
        return {};
    double r = 0, g = 0, b = 0;
    for (const auto& [d, c] : covered) {
        r += c.redF();
        g += c.greenF();
        b += c.blueF();
    }
    const double n = double(covered.size());
    return QColor::fromRgbF(float(r / n), float(g / n), float(b / n));
}
