#include "DeliveryNavOverlay.h"

#include "DeliveryAppearance.h"
#include "DeliverySymbols.h"
#include "DeliveryText.h"

#include <QAbstractButton>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QTextDocument>
#include <algorithm>
#include <cmath>

using namespace DeliveryAppearance;
using namespace Look;

namespace {

constexpr int shadowMargin = DeliveryNavOverlay::panelMargin;

// One heading to jump to: a chevron and its text on a frosted rounded panel with a soft shadow.
class NavRowButton : public QAbstractButton {
public:
    NavRowButton(const NavTarget& target, double baseFontSize, QWidget* parent)
        : QAbstractButton(parent)
    {
        QString text = target.text;
        text.replace(QChar(0x2028), QLatin1Char(' '));
        setText(text);
        setFont(DeliveryText::makeFont(DeliveryNavOverlay::textSize(target.depth, baseFontSize),
                                       target.depth == 1 ? QFont::DemiBold : QFont::Medium, false));
        setCursor(Qt::PointingHandCursor);
        setFocusPolicy(Qt::NoFocus);
        setToolTip(Qt::convertFromPlainText(text, Qt::WhiteSpacePre));
        setAccessibleName(text);
    }

    QSize sizeHint() const override
    {
        const QFontMetricsF metrics(font());
        const double chevron = font().pixelSize() * 0.7;
        const double width = std::min(metrics.horizontalAdvance(text()), 420.0) + chevron + 6 + 36;
        return QSize(int(std::ceil(width)) + 2 * shadowMargin,
                     int(std::ceil(metrics.height() + 24)) + 2 * shadowMargin);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing, true);
        const QRectF panel = QRectF(rect()).adjusted(shadowMargin, shadowMargin, -shadowMargin, -shadowMargin);
        // A shadow of black at 0.15, radius 8, two points down, built from widening rings.
        for (int i = 8; i >= 1; --i) {
            QPainterPath ring;
            ring.addRoundedRect(panel.translated(0, 2).adjusted(-i * 0.5, -i * 0.5, i * 0.5, i * 0.5), 12 + i * 0.5,
                                12 + i * 0.5);
            painter.fillPath(ring, QColor(0, 0, 0, int(255 * 0.15 / 8 * (9 - i) / 4.5)));
        }
        QPainterPath shape;
        shape.addRoundedRect(panel, 12, 12);
        painter.fillPath(shape, withAlpha(palette().color(QPalette::Window), isDown() ? 0.97 : 0.9));
        painter.setPen(QPen(withAlpha(primary(), 0.1), 0.5));
        painter.drawPath(shape);

        const QFontMetricsF metrics(font());
        const double chevron = font().pixelSize() * 0.7;
        const double x = panel.left() + 18;
        DeliverySymbols::draw(painter, DeliverySymbols::Symbol::chevronDown,
                              QRectF(x, panel.center().y() - chevron / 2, chevron, chevron), primary(), 1.3);
        painter.setFont(font());
        painter.setPen(primary());
        const QRectF textRect(x + chevron + 6, panel.top(), panel.right() - 18 - (x + chevron + 6), panel.height());
        painter.drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                         metrics.elidedText(text(), Qt::ElideRight, textRect.width()));
    }
};

} // namespace

DeliveryNavOverlay::DeliveryNavOverlay(QWidget* parent)
    : QWidget(parent)
{
    hide();
}

double DeliveryNavOverlay::textSize(int depth, double baseFontSize)
{
    switch (depth) {
    case 0:
        return baseFontSize + 13;
    case 1:
        return baseFontSize + 5;
    case 2:
        return baseFontSize + 1;
    case 3:
        return baseFontSize - 1;
    default:
        return baseFontSize;
    }
}

bool DeliveryNavOverlay::setTargets(const std::optional<NavTarget>& nextL1, const std::optional<NavTarget>& nextL2,
                                    double baseFontSize)
{
    if (m_nextL1 == nextL1 && m_nextL2 == nextL2 && m_baseFontSize == baseFontSize)
        return false;
    m_nextL1 = nextL1;
    m_nextL2 = nextL2;
    m_baseFontSize = baseFontSize;
    rebuild();
    return true;
}

void DeliveryNavOverlay::rebuild()
{
    for (QAbstractButton* row : m_rows) {
        // The pressed row may be the one asking; it goes at the next turn.
        row->hide();
        row->deleteLater();
    }
    m_rows.clear();
    std::vector<NavTarget> targets;
    if (m_nextL2 && !(m_nextL1 && m_nextL1->id == m_nextL2->id))
        targets.push_back(*m_nextL2);
    if (m_nextL1)
        targets.push_back(*m_nextL1);
    // Rows are placed by hand: their shadow margins overlap, leaving 6 between the panels.
    int width = 0;
    int height = 0;
    for (const NavTarget& target : targets) {
        auto* row = new NavRowButton(target, m_baseFontSize, this);
        const NodeID id = target.id;
        connect(row, &QAbstractButton::clicked, this, [this, id] { emit navigateRequested(id); });
        row->resize(row->sizeHint());
        width = std::max(width, row->width());
        m_rows.push_back(row);
    }
    for (QAbstractButton* row : m_rows) {
        if (height > 0)
            height += 6 - 2 * shadowMargin;
        row->move(0, height);
        height += row->height();
        row->show();
    }
    for (QAbstractButton* row : m_rows)
        row->move(width - row->width(), row->y());
    setFixedSize(std::max(width, 1), std::max(height, 1));
    setVisible(!m_rows.empty());
    emit sizeChanged();
}
