#include "TextBitmapCache.h"

#include "TreeLayout.h"
#include "look/EmojiText.h"
#include "look/Look.h"

#include "core/PerformanceLog.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

size_t TextBitmapKeyHash::operator()(const TextBitmapKey& key) const noexcept
{
    // +0.0 and -0.0 compare equal, so they must hash alike.
    auto normal = [](double d) { return d == 0 ? 0.0 : d; };
    return qHashMulti(0, key.text, normal(key.fontSize), normal(key.weight), key.italic, key.monospaced);
}

const TextBitmapCache::Entry* TextBitmapCache::lookup(const TextBitmapKey& key, double scale, bool isDark)
{
    if (scale == m_currentScale && m_currentIsDark == isDark) {
        const auto it = m_entries.find(key);
        if (it == m_entries.end()) {
            performanceLog::signpostDetailEvent("TextCacheMiss", performanceLog::noMessage);
            return nullptr;
        }
        it->second.lastUsed = ++m_clock;
        performanceLog::signpostDetailEvent("TextCacheHit", performanceLog::noMessage);
        return &it->second;
    }
    clear();
    m_currentScale = scale;
    m_currentIsDark = isDark;
    performanceLog::signpostEvent("TextCacheClear", [&] {
        return QStringLiteral("scale=%1 dark=%2")
            .arg(scale, 0, 'f', 2)
            .arg(isDark ? QStringLiteral("true") : QStringLiteral("false"));
    });
    return nullptr;
}

void TextBitmapCache::store(const TextBitmapKey& key, QImage image, QSizeF naturalSize)
{
    const int64_t pixels = int64_t(image.width()) * image.height();
    if (const auto it = m_entries.find(key); it != m_entries.end()) {
        m_totalPixels -= it->second.pixels;
        m_entries.erase(it);
    }
    ++m_clock;
    m_entries.insert_or_assign(key, Entry{std::move(image), naturalSize, pixels, m_clock});
    m_totalPixels += pixels;
    evict();
}

void TextBitmapCache::clear()
{
    m_entries.clear();
    m_totalPixels = 0;
}

void TextBitmapCache::evict()
{
    while (m_totalPixels > m_pixelBudget) {
        // The newest bitmap always survives, even one larger than the whole budget.
        if (m_entries.size() < 2)
            return;
        auto oldest = m_entries.end();
        uint64_t smallest = std::numeric_limits<uint64_t>::max();
        for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
            if (it->second.lastUsed < smallest) {
                smallest = it->second.lastUsed;
                oldest = it;
            }
        }
        if (oldest == m_entries.end())
            return;
        const int64_t pixels = oldest->second.pixels;
        m_totalPixels -= pixels;
        m_entries.erase(oldest);
        performanceLog::signpostDetailEvent("TextCacheEvict", [&] { return QStringLiteral("pixels=%1").arg(pixels); });
    }
}

std::optional<TextBitmapCache::Bitmap> TextBitmapCache::render(const TextBitmapKey& key, double scale, bool isDark)
{
    if (key.text.isEmpty())
        return std::nullopt;
    // However far out the user zooms, glyphs are rastered at no less than 4 pixels.
    const double s = std::max(scale, 4.0 / std::max(2 * key.fontSize, 1.0));
    double r = 2 * s;

    const auto weight = QFont::Weight(std::lround(key.weight));
    const QFont font = key.monospaced ? TreeLayout::mapMonospacedFont(key.fontSize, weight)
                                      : TreeLayout::mapFont(key.fontSize, weight, key.italic);
    const QFontMetricsF metrics(font);

    QString text = key.text;
    text.replace(QChar(0x2028), QLatin1Char('\n'));
    QStringList lines = text.split(QLatin1Char('\n'));
    double maxW = 0;
    for (QString& line : lines) {
        if (line.isEmpty())
            line = QStringLiteral(" ");
        maxW = std::max(maxW, EmojiText::horizontalAdvance(metrics, font, line));
    }
    const double ascent = metrics.ascent();
    const double lw = std::ceil(maxW) + 4;
    const double lh = std::ceil(ascent + std::abs(metrics.descent()) + metrics.leading());
    const double hh = lh * double(lines.size());
    // QPainter can't draw into an image wider or taller than this, and one node's text mustn't
    // take hundreds of megabytes. A long text at a high zoom is rastered more coarsely instead,
    // still drawn into its natural size, so it never goes blank.
    constexpr double maxSide = 32767;
    constexpr double maxPixels = 16'000'000;
    r = std::min(
        {r, maxSide / lw, maxSide / hh, std::sqrt(0.99 * maxPixels / (lw * hh))}); // room for the rounding up below
    const double pw = std::min(std::ceil(r * lw), maxSide);
    const double ph = std::min(std::ceil(r * hh), maxSide);
    if (pw < 1 || ph < 1)
        return std::nullopt;

    QImage image(int(pw), int(ph), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return std::nullopt;
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        painter.scale(r, r);
        painter.setPen(Look::ink(isDark));
        for (qsizetype i = 0; i < lines.size(); ++i)
            EmojiText::drawLine(painter, QPointF(2, ascent + lh * double(i)), font, lines[i]);
    }
    return Bitmap{std::move(image), QSizeF(lw, hh)};
}
