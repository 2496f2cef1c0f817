#pragma once

#include <QColor>
#include <QWidget>

class GrainOverlay;

// A warm paper backdrop: a vertical gradient, a soft vignette and the grain over both, in the
// colours of the theme in force. Ready for a window that wants it; none places it yet.
class AppBackground : public QWidget {
    Q_OBJECT
public:
    struct Colors {
        QColor top;
        QColor bottom;
        QColor vignette;
        double vignetteOpacity;
        double grainOpacity;
    };
    static Colors colors(bool isDark);

    static constexpr double vignetteStartRadius = 250;
    static constexpr double vignetteEndRadius = 1000;

    explicit AppBackground(QWidget* parent = nullptr);

    GrainOverlay* grain() const { return m_grain; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    GrainOverlay* m_grain;
};
