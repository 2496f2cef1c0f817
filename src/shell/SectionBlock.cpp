#include "SectionBlock.h"

#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

namespace {

class RoundedBox : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor primary = palette().color(QPalette::WindowText);
        QColor fill = primary;
        fill.setAlphaF(0.05f);
        QColor stroke = primary;
        stroke.setAlphaF(0.2f * 0.6f);
        QPainterPath path;
        path.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
        painter.fillPath(path, fill);
        painter.setPen(QPen(stroke, 1));
        painter.drawPath(path);
    }
};

class Divider : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        QColor color = palette().color(QPalette::WindowText);
        color.setAlphaF(0.15f * 0.6f);
        painter.fillRect(rect(), color);
    }
};

} // namespace

SectionBlock::SectionBlock(const QString& title, QWidget* parent)
    : QWidget(parent)
    , m_box(new RoundedBox(this))
    , m_content(new QVBoxLayout(m_box))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    if (!title.isEmpty()) {
        auto* label = new QLabel(title, this);
        QFont headline = label->font();
        headline.setBold(true);
        label->setFont(headline);
        column->addWidget(label);
    }
    column->addWidget(m_box);
    m_content->setContentsMargins(0, 0, 0, 0);
    m_content->setSpacing(0);
}

QWidget* SectionBlock::divider(QWidget* parent)
{
    auto* rule = new Divider(parent);
    rule->setFixedHeight(1);
    return rule;
}
