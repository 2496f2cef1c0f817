#include "FollowRunnerButton.h"

#include "DeliveryAppearance.h"
#include "DeliveryCanvasState.h"
#include "DeliverySymbols.h"

#include <QPainter>

using namespace DeliveryAppearance;
using namespace Look;

FollowRunnerButton::FollowRunnerButton(DeliveryCanvasState* state, QWidget* parent)
    : QAbstractButton(parent)
    , m_state(state)
{
    setFixedSize(diameter, diameter);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
    connect(this, &QAbstractButton::clicked, this, [this] {
        if (m_state->stopScrollDeceleration)
            m_state->stopScrollDeceleration();
        m_state->setFollowRunner(!m_state->followRunner());
    });
    connect(m_state, &DeliveryCanvasState::followRunnerChanged, this, &FollowRunnerButton::refresh);
    refresh();
}

void FollowRunnerButton::refresh()
{
    const QString tip =
        m_state->followRunner() ? QStringLiteral("Stop following runner") : QStringLiteral("Follow runner");
    setToolTip(tip);
    setAccessibleName(tip);
    update();
}

void FollowRunnerButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    // A frosted disc standing in for the blurred material.
    const QRectF disc = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(withAlpha(primary(), 0.1), 0.5));
    painter.setBrush(withAlpha(palette().color(QPalette::Window), isDown() ? 0.95 : 0.82));
    painter.drawEllipse(disc);
    const bool following = m_state->followRunner();
    const QRectF symbol(rect().center().x() - 9 + 0.5, rect().center().y() - 9 + 0.5, 18, 18);
    DeliverySymbols::draw(painter, following ? DeliverySymbols::Symbol::eyeFill : DeliverySymbols::Symbol::eye, symbol,
                          following ? red() : secondary(), 1.2);
}
