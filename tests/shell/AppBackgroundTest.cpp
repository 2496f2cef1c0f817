#include "ShellTestSupport.h"

#include "shell/AppBackground.h"
#include "shell/AppIcon.h"
#include "shell/GrainOverlay.h"

#include <QImage>

#include <algorithm>

#include <gtest/gtest.h>

namespace {

// Each size a desktop asks for is drawn for it, and drawn without any plugin.
TEST(AppIcon, EverySizeIsItsOwnPicture)
{
    ensureApplication();
    const QIcon icon = AppIcon::make();
    QList<QSize> expected;
    for (int size : {16, 24, 32, 48, 64, 128, 256})
        expected.append(QSize(size, size));
    QList<QSize> sizes = icon.availableSizes();
    std::sort(sizes.begin(), sizes.end(), [](QSize a, QSize b) { return a.width() < b.width(); });
    EXPECT_EQ(sizes, expected);
    for (const QSize& size : expected) {
        const QImage image = icon.pixmap(size).toImage();
        ASSERT_EQ(image.size(), size);
        // The rounded paper is opaque in the middle and clear at the corners.
        EXPECT_EQ(qAlpha(image.pixel(size.width() / 2, size.height() / 2)), 255) << size.width();
        EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0) << size.width();
    }
}

TEST(GrainOverlay, TheTileIsGreyNoiseMadeOnce)
{
    ensureApplication();
    const QImage& tile = GrainOverlay::noiseTile();
    EXPECT_EQ(&tile, &GrainOverlay::noiseTile());
    ASSERT_EQ(tile.size(), QSize(GrainOverlay::tileSize, GrainOverlay::tileSize));
    int darkest = 255, lightest = 0;
    for (int y = 0; y < tile.height(); y += 7)
        for (int x = 0; x < tile.width(); x += 5) {
            const QRgb pixel = tile.pixel(x, y);
            ASSERT_TRUE(qRed(pixel) == qGreen(pixel) && qGreen(pixel) == qBlue(pixel));
            darkest = std::min(darkest, qRed(pixel));
            lightest = std::max(lightest, qRed(pixel));
        }
    // The contrast pushes the grain to both ends.
    EXPECT_LT(darkest, 40);
    EXPECT_GT(lightest, 215);
}

TEST(AppBackground, LightIsAWarmWashAndDarkADeepOneWithTheVignetteAtTheEdges)
{
    ensureApplication();
    for (const bool dark : {false, true}) {
        const AppBackground::Colors colors = AppBackground::colors(dark);
        EXPECT_EQ(colors.grainOpacity, dark ? 0.22 : 0.4);
        EXPECT_EQ(colors.vignetteOpacity, dark ? 0.55 : 0.15);
        // Top to bottom the wash darkens in both.
        EXPECT_GT(colors.top.lightnessF(), colors.bottom.lightnessF());
        EXPECT_EQ(colors.top.lightnessF() > 0.5, !dark);
    }

    AppBackground background;
    background.grain()->hide(); // the wash and the vignette alone
    background.resize(2400, 400);
    const QImage image = background.grab().toImage();
    const QColor centre = image.pixelColor(1200, 200);
    const QColor edge = image.pixelColor(2, 200);
    // Within the start radius the vignette adds nothing; at the far edge it tints.
    EXPECT_NE(centre, edge);
    const QColor wash = AppBackground::colors(false).top;
    EXPECT_NEAR(image.pixelColor(1200, 0).redF(), wash.redF(), 0.01);
}

} // namespace
