#include "DeliveryTimelineRuler.h"

#include "DeliveryAppearance.h"
#include "DeliveryLegibility.h"
#include "DeliveryPageDrawing.h"
#include "DeliveryText.h"

#include "core/PerformanceLog.h"
#include "look/EmojiText.h"

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace DeliveryAppearance;
using namespace Look;

namespace {

// The stops whose x (`fraction` * `w`) lies in [from, to], as an index range; stops are sorted.
std::pair<size_t, size_t> stopsWithin(const std::vector<HeadingStop>& stops, double w, double from, double to)
{
    const auto first =
        std::partition_point(stops.begin(), stops.end(), [&](const HeadingStop& s) { return s.fraction * w < from; });
    const auto last =
        std::partition_point(first, stops.end(), [&](const HeadingStop& s) { return s.fraction * w <= to; });
    return {size_t(first - stops.begin()), size_t(last - stops.begin())};
}

// Whether any of the sorted `xs` is strictly closer to `x` than `distance`.
bool nearAny(double x, const std::vector<double>& xs, double distance)
{
    const auto above = std::lower_bound(xs.begin(), xs.end(), x);
    if (above != xs.end() && std::abs(*above - x) < distance)
        return true;
    return above != xs.begin() && std::abs(*std::prev(above) - x) < distance;
}

} // namespace

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
    connect(m_displayLinkTimer, &QTimer::timeout, this, &DeliveryTimelineRuler::frameTick);
    connect(m_timer, &DeliveryTimer::stateChanged, this, [this](TimerState now, TimerState) {
        if (now == TimerState::running && isVisible())
            m_displayLinkTimer->start();
        else if (now != TimerState::running)
            m_displayLinkTimer->stop();
        updateMoving(true);
    });
    // The ticks follow the target; the second's tick only moves the band.
    connect(m_timer, &DeliveryTimer::targetSecondsChanged, this, [this] { updateMoving(true); });
    connect(m_timer, &DeliveryTimer::remainingSecondsChanged, this, [this] { updateMoving(); });
    connect(m_state, &DeliveryCanvasState::scrollYChanged, this, [this] { updateMoving(); });
    connect(m_state, &DeliveryCanvasState::layoutChanged, this, [this] { updateMoving(true); });
}

void DeliveryTimelineRuler::frameTick()
{
    m_pulseClock.advance();
    updateMoving();
    emit frameTicked();
}

const std::vector<HeadingStop>& DeliveryTimelineRuler::stops(int depth)
{
    if (m_stopsLayout != m_state->layout()) {
        m_stopsLayout = m_state->layout();
        performanceLog::signpostInterval("DeliveryRulerStops", performanceLog::noMessage, [&] {
            for (int d = 1; d <= 3; ++d)
                m_stops[size_t(d - 1)] = headingStops(m_stopsLayout.get(), d);
        });
    }
    return m_stops[size_t(std::clamp(depth, 1, 3) - 1)];
}

const std::vector<QString>& DeliveryTimelineRuler::labels(double w, const QFont& font)
{
    const std::vector<HeadingStop>& sections = stops(1);
    if (m_labels.layout == m_stopsLayout && m_labels.w == w && m_labels.font == font)
        return m_labels.texts;
    m_labels = {m_stopsLayout, w, font, {}};
    m_labels.texts.reserve(sections.size());
    for (size_t i = 0; i < sections.size(); ++i) {
        const double x = sections[i].fraction * w + 3;
        const double limit = i + 1 < sections.size() ? sections[i + 1].fraction * w : w;
        const double room = limit - x - 4;
        QString label;
        if (room > 0) {
            label = sections[i].text;
            label.replace(QChar(0x2028), QLatin1Char(' '));
            label = shortenedLabel(label, font, room);
        }
        m_labels.texts.push_back(std::move(label));
    }
    return m_labels.texts;
}

std::optional<DeliveryTimelineRuler::Band> DeliveryTimelineRuler::band(double w)
{
    const std::vector<HeadingStop>& sections = stops(1);
    if (m_timer->state() == TimerState::idle || sections.empty())
        return std::nullopt;
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
    Band out;
    out.rect = QRectF(start * w, 0, (end - start) * w, layerHeight - 1);
    if (const auto& layout = m_state->layout()) {
        const double view = fractionForY(*layout, m_state->scrollY() + 100);
        out.level = driftLevel(driftSeconds(p, view, m_timer->targetSeconds()));
    }
    return out;
}

double DeliveryTimelineRuler::markerX(double w) const
{
    const auto& layout = m_state->layout();
    if (!layout)
        return 0;
    return std::clamp(fractionForY(*layout, m_state->scrollY() + 100), 0.0, 1.0) * w;
}

DeliveryTimelineRuler::Moving DeliveryTimelineRuler::moving(double w)
{
    return {band(w), markerX(w)};
}

QRect DeliveryTimelineRuler::widgetRect(const QRectF& layerRect) const
{
    // Layers stand 1 above the row; a pixel more all round for what antialiasing spills.
    return layerRect.translated(0, (rowHeight - layerHeight) / 2).toAlignedRect().adjusted(-2, -1, 2, 1);
}

void DeliveryTimelineRuler::updateMoving(bool everything)
{
    const double w = width();
    const Moving now = moving(w);
    if (everything) {
        m_shown = now;
        update();
        return;
    }
    if (!(w > 0))
        return;
    QRegion dirty;
    if (now.band != m_shown.band) {
        if (m_shown.band)
            dirty += widgetRect(m_shown.band->rect);
        if (now.band)
            dirty += widgetRect(now.band->rect);
    } else if (now.band && now.band->level != Drift::calm) {
        dirty += widgetRect(now.band->rect); // it pulses
    }
    if (now.markerX != m_shown.markerX) {
        const double from = std::min(now.markerX, m_shown.markerX);
        const double to = std::max(now.markerX, m_shown.markerX);
        dirty += widgetRect(QRectF(from, 0, to - from, layerHeight));
    }
    m_shown = now;
    if (!dirty.isEmpty())
        update(dirty);
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
    // In page order, so that headings of one moment keep it.
    for (const NodeID& id : layout->headingOrder) {
        const auto depthIt = layout->headingDepths.find(id);
        const auto yIt = layout->headingYPositions.find(id);
        if (depthIt == layout->headingDepths.end() || depthIt->second != depth
            || yIt == layout->headingYPositions.end())
            continue;
        const auto textIt = layout->headingTexts.find(id);
        stops.push_back(
            {fractionForY(*layout, yIt->second), textIt == layout->headingTexts.end() ? QString() : textIt->second});
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

bool DeliveryTimelineRuler::setLegibleFigures(bool on)
{
    if (m_legibleFigures == on)
        return false;
    m_legibleFigures = on;
    update();
    return true;
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

QString DeliveryTimelineRuler::shortenedLabel(const QString& text, const QFont& font, double room)
{
    const QFontMetricsF metrics(font);
    auto width = [&](const QString& piece) { return EmojiText::horizontalAdvance(metrics, font, piece); };
    if (width(text) <= room)
        return text;
    const QString ellipsis(QChar(0x2026));
    for (qsizetype keep = text.size() - 1; keep > 0; --keep) {
        QString candidate = text.left(keep);
        while (!candidate.isEmpty() && (candidate.back() == QLatin1Char(' ') || candidate.back() == QLatin1Char('\t')))
            candidate.chop(1);
        while (!candidate.isEmpty()
               && (candidate.front() == QLatin1Char(' ') || candidate.front() == QLatin1Char('\t')))
            candidate.remove(0, 1);
        candidate += ellipsis;
        if (width(candidate) <= room)
            return candidate;
    }
    return {};
}

double DeliveryTimelineRuler::snap(double x, double lineWidth, double width, double scale)
{
    const double snapped = (std::round(x * scale) + 0.5) / scale;
    return std::clamp(snapped, lineWidth / 2, std::max(width - lineWidth / 2, lineWidth / 2));
}

void DeliveryTimelineRuler::paintEvent(QPaintEvent* event)
{
    const double w = width();
    if (!(w > 0))
        return;
    const QRect dirty = event->rect();
    if (w != m_currentWidth) {
        // Stored a turn later, never during a pass.
        QPointer<DeliveryTimelineRuler> self(this);
        QTimer::singleShot(0, this, [self, w] {
            if (self)
                self->m_currentWidth = w;
        });
    }
    // Stops first: a layout's are found once, before anything moving reads them.
    const std::vector<HeadingStop>& sections = stops(1);
    performanceLog::signpostInterval(
        "DeliveryRulerDraw",
        [&] {
            return QStringLiteral("sections=%1 dirty=%2x%3")
                .arg(sections.size())
                .arg(dirty.width())
                .arg(dirty.height());
        },
        [&] {
            QPainter painter(this);
            painter.fillRect(rect(), palette().color(QPalette::Window));
            // The layers are 41 high on a 39 row, so that layer y 40 lies on the row's bottom edge.
            painter.translate(0, (rowHeight - layerHeight) / 2);
            // A pixel of slack each side for antialiasing; the clip does the rest.
            const Reach reach{dirty.left() - 1.0, dirty.left() + dirty.width() + 1.0};
            drawSectionBand(painter, w, reach);
            drawTicksAndHeadings(painter, w, reach);
            drawViewportMarker(painter, w);
            drawLabels(painter, w, reach);
        });
}

void DeliveryTimelineRuler::drawSectionBand(QPainter& painter, double w, const Reach& reach)
{
    const std::optional<Band> now = band(w);
    if (!now || !reach.touches(now->rect.left(), now->rect.right()))
        return;
    QColor color = withAlpha(primary(), 0.08);
    if (now->level != Drift::calm) {
        const double t = m_timer->clock()->now();
        const double opacity = 0.07 + 0.17 * (std::sin(2 * std::numbers::pi * t / 2.4) + 1) / 2;
        color = withAlpha(now->level == Drift::farBehind ? red() : orange(), opacity);
    }
    painter.fillRect(now->rect, color);
}

void DeliveryTimelineRuler::drawTicksAndHeadings(QPainter& painter, double w, const Reach& reach)
{
    const double s = devicePixelRatioF();
    const bool isDark = isDarkAppearance();
    const QColor ink = Look::ink(isDark);
    const std::vector<HeadingStop>& sections = stops(1);

    // Heading lines near enough that a dot or figure in the reach gives way to them.
    const double nearest = 20; // the widest berth anything gives a heading line
    const auto [firstMark, endMark] = stopsWithin(sections, w, reach.from - 2 * nearest, reach.to + 2 * nearest);
    std::vector<double> marks;
    marks.reserve(endMark - firstMark);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(withAlpha(ink, 0.25), 1));
    // One call for all lines of a pen: each call costs more than the few pixels it draws.
    std::vector<QLineF> lines;
    for (size_t i = firstMark; i < endMark; ++i) {
        const double x = sections[i].fraction * w;
        marks.push_back(x);
        if (!reach.touches(x - 2, x + 2))
            continue;
        const double snapped = snap(x, 1, w, s);
        lines.emplace_back(snapped, 0, snapped, layerHeight);
    }
    painter.drawLines(lines.data(), int(lines.size()));
    painter.restore();

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    // Depth 3 dots give way to drawn depth 2 dots within 3 points, so those are found a little
    // beyond the reach too.
    std::vector<double> drawnL2;
    painter.setBrush(withAlpha(primary(), 0.55));
    const std::vector<HeadingStop>& points = stops(2);
    const auto [firstPoint, endPoint] = stopsWithin(points, w, reach.from - 6, reach.to + 6);
    for (size_t i = firstPoint; i < endPoint; ++i) {
        const double x = points[i].fraction * w;
        if (nearAny(x, marks, 3))
            continue;
        drawnL2.push_back(x);
        if (reach.touches(x - 3, x + 3))
            painter.drawEllipse(QRectF(x - 2, 19, 4, 4));
    }
    painter.setBrush(withAlpha(primary(), 0.35));
    const std::vector<HeadingStop>& subPoints = stops(3);
    const auto [firstSub, endSub] = stopsWithin(subPoints, w, reach.from - 3, reach.to + 3);
    for (size_t i = firstSub; i < endSub; ++i) {
        const double x = subPoints[i].fraction * w;
        if (nearAny(x, marks, 3) || nearAny(x, drawnL2, 3))
            continue;
        painter.drawEllipse(QRectF(x - 1.25, 19.75, 2.5, 2.5));
    }
    painter.restore();

    const int total = std::max(int(m_timer->targetSeconds()), 1);
    const Ticks set = ticks(total, w, s);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    auto drawTicks = [&](const std::vector<int>& seconds, double height, double lineWidth, double alpha) {
        lines.clear();
        for (int q : seconds) {
            const double x = snap(double(q) / total * w, lineWidth, w, s);
            if (reach.touches(x - lineWidth - 1, x + lineWidth + 1))
                lines.emplace_back(x, 40, x, 40 - height);
        }
        painter.setPen(QPen(withAlpha(ink, alpha), lineWidth, Qt::SolidLine, Qt::FlatCap));
        painter.drawLines(lines.data(), int(lines.size()));
    };
    drawTicks(set.tenSeconds, 2, 1 / s, 0.22);
    drawTicks(set.minutes, 3, 1, 0.28);
    drawTicks(set.fiveMinutes, 5, 1, 0.5);
    drawTicks({0, total}, 5, 1.2, 0.75);
    painter.restore();

    const QFont figureFont = DeliveryText::makeFont(7, QFont::Normal, false);
    const QFontMetricsF metrics(figureFont);
    painter.save();
    painter.setFont(figureFont);
    const QColor figures = withAlpha(secondary(), 0.45);
    painter.setPen(m_legibleFigures ? DeliveryLegibility::legible(figures, palette().color(QPalette::Window))
                                    : figures);
    for (int q : minuteFigureSeconds(total)) {
        const double x = double(q) / total * w;
        // No figure is near as wide as the berth it keeps from heading lines.
        if (!reach.touches(x - nearest, x + nearest) || nearAny(x, marks, nearest))
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

void DeliveryTimelineRuler::drawLabels(QPainter& painter, double w, const Reach& reach)
{
    const std::vector<HeadingStop>& sections = stops(1);
    const QFont font = DeliveryText::makeFont(12, QFont::Normal, false);
    const QFontMetricsF metrics(font);
    const std::vector<QString>& texts = labels(w, font);
    painter.save();
    painter.setFont(font);
    painter.setPen(secondary());
    // A label stays between its own stop and the next, so only stops from the one before the
    // reach can show one in it.
    size_t first = stopsWithin(sections, w, reach.from, reach.to).first;
    first = first > 0 ? first - 1 : 0;
    for (size_t i = first; i < sections.size(); ++i) {
        const double x = sections[i].fraction * w + 3;
        if (x > reach.to + 1)
            break;
        const double limit = i + 1 < sections.size() ? sections[i + 1].fraction * w : w;
        if (!texts[i].isEmpty() && reach.touches(x - 1, limit))
            EmojiText::drawLine(painter, QPointF(x, 16 - metrics.descent()), font, texts[i]);
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
