#include "DeliveryText.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>
#include <QTextLayout>

#include "look/EmojiText.h"

#include <cmath>

namespace DeliveryText {

QString serifFamily()
{
    static const QString family = [] {
        const QStringList families = QFontDatabase::families();
        for (const QString& candidate : {QStringLiteral("Noto Serif"), QStringLiteral("DejaVu Serif")}) {
            if (families.contains(candidate))
                return candidate;
        }
        QFont probe;
        probe.setStyleHint(QFont::Serif);
        return probe.defaultFamily();
    }();
    return family;
}

QFont makeFont(double size, QFont::Weight weight, bool serif)
{
    QFont font = serif ? QFont(serifFamily()) : QGuiApplication::font();
    if (serif)
        font.setStyleHint(QFont::Serif);
    font.setPixelSize(std::max(1, int(std::lround(size))));
    font.setWeight(weight);
    return font;
}

QString layoutText(const QString& text)
{
    QString out = text;
    out.replace(QChar(0x2028), QChar::LineSeparator);
    out.replace(QLatin1Char('\n'), QChar::LineSeparator);
    return out;
}

namespace {

// Lays `text` out from y 0 and returns the height used and the widest line.
template <typename LineVisitor>
QSizeF layOut(QTextLayout& layout, double width, LineVisitor&& visit)
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
    double y = 0;
    double widest = 0;
    layout.beginLayout();
    for (;;) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(std::max(width, 1.0));
        line.setLeadingIncluded(true);
        line.setPosition(QPointF(0, y));
        y += line.height();
        widest = std::max(widest, line.naturalTextWidth());
        visit(line);
    }
    layout.endLayout();
    return {widest, y};
}

// A layout of the page's text whose emoji runs are drawn in the colour face.
struct PageLayout : QTextLayout {
    PageLayout(const QString& text, const QFont& font)
        : QTextLayout(layoutText(text), font)
    {
        setFormats(EmojiText::formats(this->text(), font));
    }
};

} // namespace

QSizeF measure(const QString& text, const QFont& font, double width)
{
    PageLayout layout(text, font);
    const QSizeF size = layOut(layout, width, [](const QTextLine&) {});
    return {std::ceil(size.width()), std::ceil(size.height())};
}

void draw(QPainter& painter, const QString& text, const QFont& font, const QColor& color, const QPointF& topLeft,
          double width)
{
    PageLayout layout(text, font);
    layOut(layout, width, [](const QTextLine&) {});
    painter.setPen(color);
    layout.draw(&painter, topLeft);
}

} // namespace DeliveryText
