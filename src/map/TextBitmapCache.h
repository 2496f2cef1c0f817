#pragma once

#include <QImage>
#include <QSizeF>
#include <QString>

#include <cstdint>
#include <limits>
#include <optional>
#include <unordered_map>

// One distinct piece of node text in one style.
struct TextBitmapKey {
    QString text; // soft line breaks already turned into newlines
    double fontSize = 13;
    double weight = 400; // QFont::Weight value
    bool italic = false;
    bool monospaced = false; // the fixed-pitch face of labels, never a node's text

    bool operator==(const TextBitmapKey& other) const = default;
};

struct TextBitmapKeyHash {
    size_t operator()(const TextBitmapKey& key) const noexcept;
};

// Node text rendered once per zoom and theme and then only blitted, under a pixel budget with
// least-recently-used eviction. One per map view; main thread only.
class TextBitmapCache {
public:
    static constexpr int64_t defaultPixelBudget = 32'000'000;

    struct Bitmap {
        QImage image; // premultiplied ARGB, denser than the canvas by the raster factor
        QSizeF naturalSize;
    };
    struct Entry {
        QImage image;
        QSizeF naturalSize;
        int64_t pixels = 0;
        uint64_t lastUsed = 0;
    };

    explicit TextBitmapCache(int64_t pixelBudget = defaultPixelBudget)
        : m_pixelBudget(pixelBudget)
    {
    }

    // A hit, or nothing. A lookup at another scale or theme empties the cache first.
    const Entry* lookup(const TextBitmapKey& key, double scale, bool isDark);
    void store(const TextBitmapKey& key, QImage image, QSizeF naturalSize);
    // Empties the cache, keeping the clock; the next lookup starts afresh at its scale.
    void clear();

    // Renders at twice the zoom, never below the equivalent of 4 pixels of glyph, and more coarsely
    // where the image would outgrow what a painter can draw into; nothing for an empty text or a
    // failed raster.
    static std::optional<Bitmap> render(const TextBitmapKey& key, double scale, bool isDark);

    size_t count() const { return m_entries.size(); }
    bool contains(const TextBitmapKey& key) const { return m_entries.count(key) > 0; }
    int64_t totalPixels() const { return m_totalPixels; }
    uint64_t clock() const { return m_clock; }
    double currentScale() const { return m_currentScale; }
    std::optional<bool> currentIsDark() const { return m_currentIsDark; }
    int64_t pixelBudget() const { return m_pixelBudget; }

private:
    void evict();

    std::unordered_map<TextBitmapKey, Entry, TextBitmapKeyHash> m_entries;
    int64_t m_totalPixels = 0;
    uint64_t m_clock = 0;
    double m_currentScale = std::numeric_limits<double>::quiet_NaN();
    std::optional<bool> m_currentIsDark;
    int64_t m_pixelBudget;
};
