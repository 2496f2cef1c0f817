#include "map/MapTestSupport.h"

#include "map/TextBitmapCache.h"
#include "map/TreeLayout.h"

#include <QFontMetricsF>

#include <gtest/gtest.h>

#include <cmath>

namespace {

TextBitmapKey key(const QString& text, bool italic = false)
{
    return {text, 13, double(QFont::Normal), italic};
}

QImage image(int w, int h)
{
    QImage img(w, h, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    return img;
}

// A cache made valid for scale 1 in light mode.
TextBitmapCache warmCache(int64_t budget = TextBitmapCache::defaultPixelBudget)
{
    TextBitmapCache cache(budget);
    cache.lookup(key(QStringLiteral("x")), 1.0, false);
    return cache;
}

TEST(TextBitmapCache, FirstLookupClearsAndMisses)
{
    TextBitmapCache cache;
    EXPECT_EQ(cache.lookup(key(QStringLiteral("Grace")), 1.0, false), nullptr);
    EXPECT_EQ(cache.currentScale(), 1.0);
    EXPECT_EQ(cache.currentIsDark(), false);
    cache.store(key(QStringLiteral("Grace")), image(10, 4), {5, 2});
    const auto* hit = cache.lookup(key(QStringLiteral("Grace")), 1.0, false);
    ASSERT_NE(hit, nullptr);
    EXPECT_EQ(hit->naturalSize, QSizeF(5, 2));
    EXPECT_EQ(hit->lastUsed, cache.clock());
}

TEST(TextBitmapCache, ScaleOrThemeChangeEmptiesItButKeepsTheClock)
{
    struct Row {
        double scale;
        bool isDark;
    };
    for (const Row& row : {Row{1.0, true}, Row{1.2, false}}) {
        TextBitmapCache cache = warmCache();
        cache.store(key(QStringLiteral("Grace")), image(10, 4), {5, 2});
        const uint64_t clock = cache.clock();
        EXPECT_EQ(cache.lookup(key(QStringLiteral("Grace")), row.scale, row.isDark), nullptr);
        EXPECT_EQ(cache.count(), 0u);
        EXPECT_EQ(cache.totalPixels(), 0);
        EXPECT_EQ(cache.clock(), clock);
        // The fresh cache takes stores at the new scale and theme.
        cache.store(key(QStringLiteral("Grace")), image(10, 4), {5, 2});
        EXPECT_NE(cache.lookup(key(QStringLiteral("Grace")), row.scale, row.isDark), nullptr);
    }
}

TEST(TextBitmapCache, KeysDifferByEveryField)
{
    TextBitmapCache cache = warmCache();
    cache.store(key(QStringLiteral("Grace")), image(10, 4), {5, 2});
    EXPECT_EQ(cache.lookup(key(QStringLiteral("Grace"), true), 1.0, false), nullptr);
    EXPECT_EQ(cache.lookup({QStringLiteral("Grace"), 14, double(QFont::Normal), false}, 1.0, false), nullptr);
    EXPECT_EQ(cache.lookup({QStringLiteral("Grace"), 13, double(QFont::Medium), false}, 1.0, false), nullptr);
    // A label in the fixed-pitch face never stands in for node text of the same size.
    EXPECT_EQ(cache.lookup({QStringLiteral("Grace"), 13, double(QFont::Normal), false, true}, 1.0, false), nullptr);
    cache.store(key(QStringLiteral("Grace"), true), image(10, 4), {5, 2});
    cache.store({QStringLiteral("Grace"), 13, double(QFont::Normal), false, true}, image(10, 4), {5, 2});
    EXPECT_EQ(cache.count(), 3u);

    const TextBitmapKey plus{QStringLiteral("a"), 0.0, 0.0, false};
    const TextBitmapKey minus{QStringLiteral("a"), -0.0, -0.0, false};
    EXPECT_EQ(plus, minus);
    EXPECT_EQ(TextBitmapKeyHash{}(plus), TextBitmapKeyHash{}(minus));
}

TEST(TextBitmapCache, ReplacingAnEntryCountsItsPixelsOnce)
{
    TextBitmapCache cache = warmCache();
    cache.store(key(QStringLiteral("Grace")), image(10, 4), {5, 2});
    cache.store(key(QStringLiteral("Grace")), image(20, 4), {10, 2});
    EXPECT_EQ(cache.count(), 1u);
    EXPECT_EQ(cache.totalPixels(), 80);
}

TEST(TextBitmapCache, EvictsTheLeastRecentlyUsedUnderTheBudget)
{
    TextBitmapCache cache = warmCache(300);
    cache.store(key(QStringLiteral("a")), image(10, 10), {});
    cache.store(key(QStringLiteral("b")), image(10, 10), {});
    cache.store(key(QStringLiteral("c")), image(10, 10), {});
    // "a" is older than "b" by storage but was used since.
    ASSERT_NE(cache.lookup(key(QStringLiteral("a")), 1.0, false), nullptr);
    cache.store(key(QStringLiteral("d")), image(10, 10), {});
    EXPECT_TRUE(cache.contains(key(QStringLiteral("a"))));
    EXPECT_FALSE(cache.contains(key(QStringLiteral("b"))));
    EXPECT_TRUE(cache.contains(key(QStringLiteral("c"))));
    EXPECT_TRUE(cache.contains(key(QStringLiteral("d"))));
    EXPECT_EQ(cache.totalPixels(), 300);

    // A big store pushes out as many of the oldest as it needs.
    cache.store(key(QStringLiteral("e")), image(20, 10), {});
    EXPECT_FALSE(cache.contains(key(QStringLiteral("c"))));
    EXPECT_FALSE(cache.contains(key(QStringLiteral("a"))));
    EXPECT_TRUE(cache.contains(key(QStringLiteral("d"))));
    EXPECT_EQ(cache.totalPixels(), 300);
}

TEST(TextBitmapCache, OneEntryBeyondTheWholeBudgetStays)
{
    TextBitmapCache cache = warmCache(100);
    cache.store(key(QStringLiteral("a")), image(5, 5), {});
    cache.store(key(QStringLiteral("huge")), image(50, 50), {});
    EXPECT_EQ(cache.count(), 1u);
    EXPECT_TRUE(cache.contains(key(QStringLiteral("huge"))));
    EXPECT_EQ(cache.totalPixels(), 2500);
}

TEST(TextBitmapCache, RendersAtTwiceTheZoomWithAFloor)
{
    ensureApplication();
    const TextBitmapKey k{QStringLiteral("Never will I leave you") + QChar(0x2028) + QString() + QChar(0x2028)
                              + QStringLiteral("nor forsake you"),
                          13, double(QFont::Normal), true};
    const QFontMetricsF fm(TreeLayout::mapFont(13, QFont::Normal, true));
    const double lw = std::ceil(fm.horizontalAdvance(QStringLiteral("Never will I leave you"))) + 4;
    const double lh = std::ceil(fm.ascent() + fm.descent() + fm.leading());

    struct Row {
        double scale;
        double raster;
    };
    // At 0.1 the floor of 4 pixels of glyph wins: 2 × 4 / 26.
    for (const Row& row : {Row{1.0, 2.0}, Row{2.0, 4.0}, Row{0.5, 1.0}, Row{0.1, 8.0 / 26.0}}) {
        const auto bitmap = TextBitmapCache::render(k, row.scale, false);
        ASSERT_TRUE(bitmap) << row.scale;
        EXPECT_EQ(bitmap->image.format(), QImage::Format_ARGB32_Premultiplied);
        EXPECT_DOUBLE_EQ(bitmap->naturalSize.width(), lw);
        EXPECT_DOUBLE_EQ(bitmap->naturalSize.height(), lh * 3);
        EXPECT_EQ(bitmap->image.width(), int(std::ceil(row.raster * lw))) << row.scale;
        EXPECT_EQ(bitmap->image.height(), int(std::ceil(row.raster * lh * 3))) << row.scale;
    }
    EXPECT_FALSE(TextBitmapCache::render(key(QString()), 1.0, false));
}

TEST(TextBitmapCache, TextTooLargeForOneImageIsRasteredCoarserButStillDrawn)
{
    ensureApplication();
    struct Row {
        const char* what;
        QString text;
    };
    QStringList manyLines;
    for (int i = 0; i < 400; ++i)
        manyLines << QStringLiteral("Amen");
    const Row rows[] = {
        {"one long line", QStringLiteral("Grace upon grace, and mercy new each morning. ").repeated(20)},
        {"many lines", manyLines.join(QChar(0x2028))},
        {"many long lines",
         QStringList(200, QStringLiteral("Grace upon grace, and mercy new. ").repeated(12)).join(QChar(0x2028))},
    };
    constexpr int maxSide = 32767;
    for (const Row& row : rows) {
        const TextBitmapKey k{row.text, 13, double(QFont::Normal), false};
        const QFontMetricsF fm(TreeLayout::mapFont(13, QFont::Normal));
        const auto bitmap = TextBitmapCache::render(k, 3.0, false);
        ASSERT_TRUE(bitmap) << row.what;
        const QImage& image = bitmap->image;
        // At twice the zoom of 3 it would not fit; it keeps its place on the canvas all the same.
        const QSizeF natural = bitmap->naturalSize;
        EXPECT_TRUE(6 * std::max(natural.width(), natural.height()) > maxSide
                    || 36 * natural.width() * natural.height() > 16'000'000)
            << row.what;
        EXPECT_LE(image.width(), maxSide) << row.what;
        EXPECT_LE(image.height(), maxSide) << row.what;
        EXPECT_LE(qint64(image.width()) * image.height(), 16'000'000) << row.what; // no image of gigabytes
        EXPECT_DOUBLE_EQ(bitmap->naturalSize.height(),
                         std::ceil(fm.ascent() + fm.descent() + fm.leading()) * (row.text.count(QChar(0x2028)) + 1))
            << row.what;

        // Ink near both ends of the long side: the text is drawn all the way, not cut off.
        const bool wide = image.width() >= image.height();
        const int length = wide ? image.width() : image.height();
        auto inkBetween = [&](int from, int to) {
            for (int a = from; a < to; ++a)
                for (int b = 0; b < (wide ? image.height() : image.width()); ++b)
                    if (qAlpha(wide ? image.pixel(a, b) : image.pixel(b, a)) > 0)
                        return true;
            return false;
        };
        EXPECT_TRUE(inkBetween(0, length / 10)) << row.what;
        EXPECT_TRUE(inkBetween(length - length / 10, length)) << row.what;
    }
}

TEST(TextBitmapCache, MonospacedKeysRenderInAFixedPitchFace)
{
    ensureApplication();
    auto width = [](const char* text, bool monospaced) {
        const TextBitmapKey k{QString::fromLatin1(text), 11, double(QFont::Medium), false, monospaced};
        const auto bitmap = TextBitmapCache::render(k, 1.0, false);
        return bitmap ? bitmap->naturalSize.width() : -1.0;
    };
    EXPECT_GT(width("mmmm", false), width("iiii", false));
    EXPECT_GT(width("iiii", true), 0);
    EXPECT_EQ(width("mmmm", true), width("iiii", true));
}

TEST(TextBitmapCache, RendersInkOfTheTheme)
{
    ensureApplication();
    for (bool dark : {false, true}) {
        const auto bitmap = TextBitmapCache::render(key(QStringLiteral("IIII")), 2.0, dark);
        ASSERT_TRUE(bitmap);
        // The most opaque pixel is the ink itself.
        QColor best(Qt::transparent);
        for (int y = 0; y < bitmap->image.height(); ++y)
            for (int x = 0; x < bitmap->image.width(); ++x) {
                const QColor c = QColor::fromRgba(bitmap->image.pixel(x, y));
                if (c.alpha() > best.alpha())
                    best = c;
            }
        EXPECT_EQ(best.alpha(), 255);
        EXPECT_EQ(best.lightnessF() > 0.5, dark);
    }
}

} // namespace
