#include "DeliveryTimelineRuler.h"

#include "DeliveryAppearance.h"
#include "DeliveryPageDrawing.h"
#include "DeliveryText.h"

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace DeliveryAppearance;

DeliveryTimelineRuler::DeliveryTimelineRuler(DeliveryTimer* timer, DeliveryCanvasState* state, QWidget* parent)
    : QWidget(parent)
    , m_timer(timer)
    , m_state(state)
{
    setFixedHeight(rowHeight);
    setCursor(Qt::PointingHandCursor);
    setToolTip(QString());

    m_displayLinkTimer = new QTimer(this);
    m_displayLinkTimer->setTimerType(Qt::PreciseTimer);
    m_displayLinkTimer->setInterval(16);
    connect(m_displayLinkTimer, &QTimer::timeout, this, [this] {
        m_pulseClock.advance();
        update();
        emit frameTicked();
    });
    connect(m_timer, &DeliveryTimer::stateChanged, this, [this](TimerState state, TimerState) {
        if (state == TimerState::running && isVisible())
            m_displayLinkTimer->start();
        else if (state != TimerState::running)
            m_displayLinkTimer->stop();
        update();
    });
    connect(m_timer, &DeliveryTimer::changed, this, qOverload<>(&QWidget::update));
    connect(m_state, &DeliveryCanvasState::scrollYChanged, this, qOverload<>(&QWidget::update));
    connect(m_state, &DeliveryCanvasState::layoutChanged, this, qOverload<>(&QWidget::update));
}

bool DeliveryTimelineRuler::isFrameTicking() const
{
    return m_displayLinkTimer->isActive();
}

std::vector<HeadingStop> DeliveryTimelineRuler::headingStops(const DeliveryContentLayout* layout, int depth)
{
    std::vector<HeadingStop> stops;
    if (!layout)
        return stops;
    for (const auto& [id, y] : layout->headingYPositions) {
        const auto depthIt = layout->headingDepths.find(id);
        if (depthIt == layout->headingDepths.end() || depthIt->second != depth)
            continue;
        const auto textIt = layout->headingTexts.find(id);
        stops.push_back({fractionForY(*layout, y), textIt == layout->headingTexts.end() ? QString() : textIt->second});
    }
    std::stable_sort(stops.begin(), stops.end(),
                     [](const HeadingStop& a, const HeadingStop& b) { return a.fraction < b.fraction; });
    return stops;
}

DeliveryTimelineRuler::Ticks DeliveryTimelineRuler::ticks(int total, double width, double scale)
{
    Ticks out;
    total = std::max(total, 1);
    const double perSecond = width / total;
    if (perSecond * 10 * scale >= 4) {
        for (int q = 0; q <= total; q += 10) {
            if (q % 60 != 0)
                out.tenSeconds.push_back(q);
        }
    }
    if (perSecond * 60 * scale >= 4 && total >= 61) {
        for (int q = 60; q < total; q += 60) {
            if (q % 300 != 0 || total < 300)
                out.minutes.push_back(q);
        }
    }
    if (total >= 301) {
        for (int q = 300; q < total; q += 300)
            out.fiveMinutes.push_back(q);
    }
    return out;
}

std::vector<int> DeliveryTimelineRuler::minuteFigureSeconds(int total)
{
    total = std::max(total, 1);
    const int step = total < 300 ? 60 : 300;
    std::vector<int> seconds;
    for (int q = step; q < total; q += step)
        seconds.push_back(q);
    return seconds;
}

double DeliveryTimelineRuler::driftSeconds(double progress, double viewFraction, double targetSeconds)
{
    return (progress - viewFraction) * std::max(int(targetSeconds), 1);
}

DeliveryTimelineRuler::Drift DeliveryTimelineRuler::driftLevel(double driftSeconds)
{
    if (driftSeconds >= 240)
        return Drift::farBehind;
    if (driftSeconds >= 120)
        return Drift::behind;
    return Drift::calm;
}

QString DeliveryTimelineRuler::shortenedLabel(const QString& text, const QFontMetricsF& metrics, double room)
{
    if (metrics.horizontalAdvance(text) <= room)
        return text;
    const QString ellipsis(QChar(0x2026));
    for (qsizetype keep = text.size() - 1; keep > 0; --keep) {
        QString candidate = text.left(keep);
        while (!candidate.isEmpty() && (candidate.back() == QLatin1Char(' ') || candidate.back() == QLatin1Char('\t')))
            candidate.chop(1);
        while (!candidate.isEmpty() && (candidate.front() == QLatin1Char(' ') || candidate.front() == QLatin1Char('\t')))
            candidate.remove(0, 1);
        candidate += ellipsis;
        if (metrics.horizontalAdvance(candidate) <= room)
            return candidate;
    }
    return {};
}

double DeliveryTimelineRuler::snap(double x, double lineWidth, double width, double scale)
{
    const double snapped = (std::round(x * scale) + 0.5) / scale;
    return std::clamp(snapped, lineWidth / 2, std::max(width - lineWidth / 2, lineWidth / 2));
}

void DeliveryTimelineRuler::paintEvent(QPaintEvent*)
{
    const double w = width();
    if (!(w > 0))
        return;
    if (w != m_currentWidth) {
        // Stored a turn later, never during a pass.
        QPointer<DeliveryTimelineRuler> self(this);
        QTimer::singleShot(0, this, [self, w] {
            if (self)
                self->m_currentWidth = w;
        });
    }
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    // The layers are 41 high on a 39 row, so that layer y 40 lies on the row's bottom edge.
    painter.translate(0, (rowHeight - layerHeight) / 2);
    const std::vector<HeadingStop> sections = headingStops(m_state->layout().get(), 1);
    drawSectionBand(painter, w, sections);
    drawTicksAndHeadings(painter, w, sections);
    drawViewportMarker(painter, w);
    drawLabels(painter, w, sections);
}

void DeliveryTimelineRuler::drawSectionBand(QPainter& painter, double w, const std::vector<HeadingStop>& sections)
{
    if (m_timer->state() == TimerState::idle || sections.empty())
        return;
    const double p = std::clamp(m_timer->progress(), 0.0, 1.0);
    double start = 0;
    double end = 1;
    for (const HeadingStop& stop : sections) {
        if (stop.fraction <= p) {
            start = stop.fraction;
        } else {
            end = stop.fraction;
            break;
        }
    }
    QColor color = withAlpha(primary(), 0.08);
    if (const auto& layout = m_state->layout()) {
        const double view = fractionForY(*layout, m_state->scrollY() + 100);
        const Drift level = driftLevel(driftSeconds(p, view, m_timer->targetSeconds()));
        if (level != Drift::calm) {
            const double t = m_timer->clock()->now();
            const double opacity = 0.07 + 0.17 * (std::sin(2 * std::numbers::pi * t / 2.4) + 1) / 2;
            color = withAlpha(level == Drift::farBehind ? red() : orange(), opacity);
        }
    }
    painter.fillRect(QRectF(start * w, 0, (end - start) * w, layerHeight - 1), color);
}

void DeliveryTimelineRuler::drawTicksAndHeadings(QPainter& painter, double w, const std::vector<HeadingStop>& sections)
{
    const double s = devicePixelRatioF();
    const bool isDark = isDarkAppearance();
    const QColor ink = DeliveryAppearance::ink(isDark);
    const auto* layout = m_state->layout().get();

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(withAlpha(ink, 0.25), 1));
    std::vector<double> marks;
    marks.reserve(sections.size());
    for (const HeadingStop& stop : sections) {
        const double x = snap(stop.fraction * w, 1, w, s);
        painter.drawLine(QPointF(x, 0), QPointF(x, layerHeight));
        marks.push_back(stop.fraction * w);
    }
    painter.restore();

    auto nearAny = [](double x, const std::vector<double>& xs, double distance) {
        return std::any_of(xs.begin(), xs.end(), [&](double m) { return std::abs(x - m) < distance; });
    };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    std::vector<double> drawnL2;
    painter.setBrush(withAlpha(primary(), 0.55));
    for (const HeadingStop& stop : headingStops(layout, 2)) {
        const double x = stop.fraction * w;
        if (nearAny(x, marks, 3))
            continue;
        painter.drawEllipse(QRectF(x - 2, 19, 4, 4));
        drawnL2.push_back(x);
    }
    painter.setBrush(withAlpha(primary(), 0.35));
    for (const HeadingStop& stop : headingStops(layout, 3)) {
        const double x = stop.fraction * w;
        if (nearAny(x, marks, 3) || nearAny(x, drawnL2, 3))
            continue;
        painter.drawEllipse(QRectF(x - 1.25, 19.75, 2.5, 2.5));
    }
    painter.restore();

    const int total = std::max(int(m_timer->targetSeconds()), 1);
    const Ticks set = ticks(total, w, s);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    auto tick = [&](int q, double height, double lineWidth, double alpha) {
        const double x = snap(double(q) / total * w, lineWidth, w, s);
        painter.setPen(QPen(withAlpha(ink, alpha), lineWidth, Qt::SolidLine, Qt::FlatCap));
        painter.drawLine(QPointF(x, 40), QPointF(x, 40 - height));
    };
    for (int q : set.tenSeconds)
        tick(q, 2, 1 / s, 0.22);
    for (int q : set.minutes)
        tick(q, 3, 1, 0.28);
    for (int q : set.fiveMinutes)
        tick(q, 5, 1, 0.5);
    tick(0, 5, 1.2, 0.75);
    tick(total, 5, 1.2, 0.75);
    painter.restore();

    const QFont figureFont = DeliveryText::makeFont(7, QFont::Normal, false);
    const QFontMetricsF metrics(figureFont);
    painter.save();
    painter.setFont(figureFont);
    painter.setPen(withAlpha(secondary(), 0.45));
    for (int q : minuteFigureSeconds(total)) {
        const double x = double(q) / total * w;
        if (nearAny(x, marks, 20))
            continue;
        const QString text = QString::number(q / 60);
        painter.drawText(QPointF(x - metrics.horizontalAdvance(text) / 2, 35 - metrics.descent()), text);
    }
    painter.restore();
}

void DeliveryTimelineRuler::drawViewportMarker(QPainter& painter, double w)
{
    const auto& layout = m_state->layout();
    if (!layout)
        return;
    const double f = fractionForY(*layout, m_state->scrollY() + 100);
    const double x = std::clamp(f, 0.0, 1.0) * w;
    if (!(x > 0))
        return;
    painter.fillRect(QRectF(0, 0, x, layerHeight - 1), withAlpha(accent(), 0.12));
    const double xl = std::clamp(x - 0.75, 0.75, std::max(w - 0.75, 0.75));
    painter.setPen(QPen(withAlpha(accent(), 0.8), 1.5, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(QPointF(xl, 0), QPointF(xl, layerHeight - 1));
}

void DeliveryTimelineRuler::drawLabels(QPainter& painter, double w, const std::vector<HeadingStop>& sections)
{
    const QFont font = DeliveryText::makeFont(12, QFont::Normal, false);
    const QFontMetricsF metrics(font);
    painter.save();
    painter.setFont(font);
    painter.setPen(secondary());
    for (size_t i = 0; i < sections.size(); ++i) {
        const double x = sections[i].fraction * w + 3;
        const double limit = i + 1 < sections.size() ? sections[i + 1].fraction * w : w;
        const double room = limit - x - 4;
        if (!(room > 0))
            continue;
        QString label = sections[i].text;
        label.replace(QChar(0x2028), QLatin1Char(' '));
        label = shortenedLabel(label, metrics, room);
        if (!label.isEmpty())
            painter.drawText(QPointF(x, 16 - metrics.descent()), label);
    }
    painter.restore();
}

void DeliveryTimelineRuler::seekAt(double x)
{
    if (m_currentWidth > 0)
        emit seekRequested(std::clamp(x / m_currentWidth, 0.0, 1.0));
}

void DeliveryTimelineRuler::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        seekAt(event->position().x());
}

void DeliveryTimelineRuler::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        seekAt(event->position().x());
}

void DeliveryTimelineRuler::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    update();
}

void DeliveryTimelineRuler::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_timer->state() == TimerState::running)
        m_displayLinkTimer->start();
}

void DeliveryTimelineRuler::hideEvent(QHideEvent* event)
{
    m_displayLinkTimer->stop();
    QWidget::hideEvent(event);
}
