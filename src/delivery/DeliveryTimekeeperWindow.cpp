#include "DeliveryTimekeeperWindow.h"

#include "DeliveryAppearance.h"
#include "DeliveryCanvasState.h"
#include "DeliveryLegibility.h"
#include "DeliverySections.h"
#include "DeliveryText.h"
#include "DeliveryTimer.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>

using namespace DeliveryAppearance;

DeliveryTimekeeperWindow::DeliveryTimekeeperWindow(DeliveryTimer* timer, DeliveryCanvasState* state, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint)
    , m_timer(timer)
    , m_state(state)
{
    setWindowTitle(QStringLiteral("Timer"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(320, 180);
    const auto repaint = [this] { update(); };
    connect(m_timer, &DeliveryTimer::changed, this, repaint);
    connect(m_state, &DeliveryCanvasState::scrollYChanged, this, repaint);
    connect(m_state, &DeliveryCanvasState::layoutChanged, this, repaint);
    connect(m_state, &DeliveryCanvasState::chosenSectionChanged, this, repaint);
}

void DeliveryTimekeeperWindow::showBeside(QWidget* besides)
{
    QScreen* own = besides ? besides->screen() : QGuiApplication::primaryScreen();
    QScreen* other = nullptr;
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen != own) {
            other = screen;
            break;
        }
    }
    if (other) {
        setGeometry(other->geometry());
        create();
        if (QWindow* handle = windowHandle())
            handle->setScreen(other);
        showFullScreen();
    } else {
        // One screen: a window the user can move, beside the view rather than over it.
        resize(640, 360);
        if (own)
            move(own->availableGeometry().topRight() - QPoint(width() + 20, -20));
        show();
    }
}

QString DeliveryTimekeeperWindow::remainingText() const
{
    // Overrun has its own line; the large figure then counts it up without a sign.
    QString text = m_timer->remainingText();
    if (text.startsWith(QChar(0x2212)))
        text.remove(0, 1);
    return text;
}

QString DeliveryTimekeeperWindow::overrunText() const
{
    return int(m_timer->remainingSeconds()) < 0 ? QStringLiteral("over time") : QString();
}

QString DeliveryTimekeeperWindow::sectionText() const
{
    const auto reader = DeliverySections::reader(*m_state, *m_timer);
    return reader && reader->section ? reader->section->text : QString();
}

DeliveryTimelineRuler::Drift DeliveryTimekeeperWindow::drift() const
{
    const auto reader = DeliverySections::reader(*m_state, *m_timer);
    if (!reader || m_timer->state() == TimerState::idle)
        return DeliveryTimelineRuler::Drift::calm;
    const double p = std::clamp(m_timer->progress(), 0.0, 1.0);
    const double view = fractionForY(*m_state->layout(), reader->y);
    return DeliveryTimelineRuler::driftLevel(DeliveryTimelineRuler::driftSeconds(p, view, m_timer->targetSeconds()));
}

void DeliveryTimekeeperWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    const QColor background = palette().color(QPalette::Base);
    painter.fillRect(rect(), background);

    // The drift colour fills a band along the top, where a glance finds it.
    const DeliveryTimelineRuler::Drift level = drift();
    const double band = std::round(height() * 0.08);
    const QColor driftColour = level == DeliveryTimelineRuler::Drift::farBehind ? red()
        : level == DeliveryTimelineRuler::Drift::behind                         ? orange()
                                                                                : Look::withAlpha(primary(), 0.08);
    painter.fillRect(QRectF(0, 0, width(), band), driftColour);

    const bool over = int(m_timer->remainingSeconds()) < 0;
    const QColor timeColour = DeliveryLegibility::legible(over                                     ? red()
                                                              : m_timer->remainingSeconds() <= 300 ? orange()
                                                                                                   : primary(),
                                                          background);
    const double h = height() - band;
    QFont big = DeliveryText::makeFont(std::max(h * 0.42, 24.0), QFont::DemiBold, false);
    big.setStyleHint(QFont::Monospace);
    painter.setFont(big);
    painter.setPen(timeColour);
    const QRectF timeRect(0, band + h * 0.12, width(), h * 0.5);
    painter.drawText(timeRect, Qt::AlignCenter, remainingText());

    const QColor textColour = DeliveryLegibility::legible(primary(), background);
    QFont small = DeliveryText::makeFont(std::max(h * 0.08, 12.0), QFont::Medium, false);
    painter.setFont(small);
    const QRectF lower(20, timeRect.bottom(), width() - 40, h * 0.14);
    if (over) {
        painter.setPen(DeliveryLegibility::legible(red(), background));
        painter.drawText(lower, Qt::AlignCenter, overrunText());
    }
    // Plain text: the section's name comes from the file.
    painter.setPen(textColour);
    const QRectF name(20, lower.bottom(), width() - 40, h * 0.16);
    const QString elided = QFontMetricsF(small).elidedText(sectionText(), Qt::ElideRight, name.width());
    painter.drawText(name, Qt::AlignCenter | Qt::TextSingleLine, elided);
}

void DeliveryTimekeeperWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void DeliveryTimekeeperWindow::closeEvent(QCloseEvent* event)
{
    emit closed();
    QWidget::closeEvent(event);
}
