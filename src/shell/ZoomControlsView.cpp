#include "ZoomControlsView.h"

#include "Symbols.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QToolButton>

#include <cmath>

ZoomControlsView::ZoomControlsView(QWidget* parent)
    : QWidget(parent)
    , m_out(new QToolButton(this))
    , m_percent(new QToolButton(this))
    , m_in(new QToolButton(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(2);
    for (QToolButton* button : {m_out, m_percent, m_in}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::NoFocus);
        layout->addWidget(button);
    }
    m_out->setToolTip(QStringLiteral("Zoom Out"));
    m_in->setToolTip(QStringLiteral("Zoom In"));
    m_percent->setToolTip(QStringLiteral("Actual Size"));
    QFont font = m_percent->font();
    font.setPointSizeF(font.pointSizeF() * 11.0 / 13.0);
    font.setWeight(QFont::Medium);
    font.setStyleHint(QFont::SansSerif);
    m_percent->setFont(font);
    m_percent->setMinimumWidth(40);
    m_percent->setText(percentText(m_scale));
    connect(m_out, &QToolButton::clicked, this, [this] {
        if (onZoomOut)
            onZoomOut();
    });
    connect(m_in, &QToolButton::clicked, this, [this] {
        if (onZoomIn)
            onZoomIn();
    });
    connect(m_percent, &QToolButton::clicked, this, [this] {
        if (onReset)
            onReset();
    });
    restyle();
}

QString ZoomControlsView::percentText(double scale)
{
    return QString::number(std::lround(scale * 100)) + QLatin1Char('%');
}

void ZoomControlsView::setScale(double scale)
{
    if (scale == m_scale)
        return;
    m_scale = scale;
    m_percent->setText(percentText(scale));
}

void ZoomControlsView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        restyle();
}

void ZoomControlsView::restyle()
{
    QColor secondary = palette().color(QPalette::WindowText);
    secondary.setAlphaF(0.6f);
    m_out->setIcon(Symbols::icon(QStringLiteral("minus"), secondary, 12));
    m_in->setIcon(Symbols::icon(QStringLiteral("plus"), secondary, 12));
    QPalette p = m_percent->palette();
    p.setColor(QPalette::ButtonText, secondary);
    m_percent->setPalette(p);
}
