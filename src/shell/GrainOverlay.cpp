#include "GrainOverlay.h"

#include <QPainter>

#include <algorithm>
#include <random>

namespace {

QImage makeNoiseTile()
{
    QImage tile(GrainOverlay::tileSize, GrainOverlay::tileSize, QImage::Format_RGB32);
    // Fixed seed: the grain is a texture, not a source of variety between runs.
    std::mt19937 random(0x6f72616e);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    constexpr double contrast = 1.6;
    for (int y = 0; y < tile.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(tile.scanLine(y));
        for (int x = 0; x < tile.width(); ++x) {
            // Random colour, desaturated to its luma, then contrast about the middle grey.
            const double r = unit(random), g = unit(random), b = unit(random);
            const double luma = 0.2126 * r + 0.7152 * g + 0.0722 * b;
            const double v = std::clamp((luma - 0.5) * contrast + 0.5, 0.0, 1.0);
            const int level = static_cast<int>(std::lround(v * 255.0));
            row[x] = qRgb(level, level, level);
        }
    }
    return tile;
}

} // namespace

GrainOverlay::GrainOverlay(double opacity, QWidget* parent)
    : QWidget(parent)
    , m_opacity(opacity)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
}

void GrainOverlay::setOpacity(double opacity)
{
    if (opacity == m_opacity)
        return;
    m_opacity = opacity;
    update();
}

const QImage& GrainOverlay::noiseTile()
{
    static const QImage tile = makeNoiseTile();
    return tile;
}

void GrainOverlay::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setOpacity(m_opacity);
    painter.setCompositionMode(QPainter::CompositionMode_Overlay);
    painter.drawTiledPixmap(rect(), QPixmap::fromImage(noiseTile()));
}
