#include "AppBackground.h"

#include "GrainOverlay.h"

#include "look/Look.h"

#include <QEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>

AppBackground::Colors AppBackground::colors(bool isDark)
{
    if (isDark)
        return {QColor::fromRgbF(0.14f, 0.13f, 0.17f), QColor::fromRgbF(0.07f, 0.06f, 0.09f),
                QColor::fromRgbF(0.02f, 0.02f, 0.04f), 0.55, 0.22};
    return {QColor::fromRgbF(0.998f, 0.99f, 0.972f), QColor::fromRgbF(0.978f, 0.955f, 0.918f),
            QColor::fromRgbF(0.875f, 0.765f, 0.665f), 0.15, 0.4};
}

AppBackground::AppBackground(QWidget* parent)
    : QWidget(parent)
    , m_grain(new GrainOverlay(colors(Look::isDarkAppearance()).grainOpacity, this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void AppBackground::paintEvent(QPaintEvent*)
{
    const Colors c = colors(Look::isDarkAppearance());
    QPainter painter(this);
    const QRectF area = rect();

    QLinearGradient wash(area.topLeft(), area.bottomLeft());
    wash.setColorAt(0, c.top);
    wash.setColorAt(1, c.bottom);
    painter.fillRect(area, wash);

    // Radii in points from the centre; the gradient runs between them.
    QRadialGradient vignette(area.center(), vignetteEndRadius);
    const double start = vignetteStartRadius / vignetteEndRadius;
    QColor clear = c.vignette;
    clear.setAlphaF(0);
    QColor edge = c.vignette;
    edge.setAlphaF(static_cast<float>(c.vignetteOpacity));
    vignette.setColorAt(0, clear);
    vignette.setColorAt(start, clear);
    vignette.setColorAt(1, edge);
    painter.fillRect(area, vignette);
}

void AppBackground::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_grain->setGeometry(rect());
}

void AppBackground::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange) {
        m_grain->setOpacity(colors(Look::isDarkAppearance()).grainOpacity);
        update();
    }
}
