#pragma once

#include <QImage>
#include <QWidget>

// A fine paper grain laid over what is under it: a 256 by 256 tile of grey noise, tiled from
// the upper left corner and blended as an overlay at the given opacity.
class GrainOverlay : public QWidget {
    Q_OBJECT
public:
    static constexpr int tileSize = 256;

    explicit GrainOverlay(double opacity, QWidget* parent = nullptr);

    double opacity() const { return m_opacity; }
    void setOpacity(double opacity);

    // Made once per process and kept; the same pixels on every call.
    static const QImage& noiseTile();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double m_opacity;
};
