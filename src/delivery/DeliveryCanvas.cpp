#include "DeliveryCanvas.h"

#include "DeliveryAppearance.h"
#include "DeliveryPageDrawing.h"

#include "core/PerformanceLog.h"
#include "core/SermonDocument.h"

#include <QKeyEvent>
#include <QPainter>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>

namespace {

constexpr int frameInterval = 16; // about 60 a second
constexpr double scrollAnimationDuration = 0.4;
// Points per wheel notch: angleDelta counts 120 a notch.
constexpr double pointsPerNotch = 48;

} // namespace

DeliveryCanvas::DeliveryCanvas(SermonDocument* document, DeliveryTimer* timer, DeliveryCanvasState* state,
                               QWidget* parent)
    : QWidget(parent)
    , m_document(document)
    , m_timer(timer)
    , m_state(state)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(200, 200);

    m_scrollAnimTimer = new QTimer(this);
    m_scrollAnimTimer->setTimerType(Qt::PreciseTimer);
    m_scrollAnimTimer->setInterval(frameInterval);
    connect(m_scrollAnimTimer, &QTimer::timeout, this, &DeliveryCanvas::stepScrollAnimation);

    m_displayLinkTimer = new QTimer(this);
    m_displayLinkTimer->setTimerType(Qt::PreciseTimer);
    m_displayLinkTimer->setInterval(frameInterval);
    connect(m_displayLinkTimer, &QTimer::timeout, this, &DeliveryCanvas::frameTick);

    connect(m_state, &DeliveryCanvasState::scrollYChanged, this, &DeliveryCanvas::invalidateText);
    connect(m_state, &DeliveryCanvasState::layoutChanged, this, &DeliveryCanvas::invalidateText);
    connect(m_state, &DeliveryCanvasState::viewportHeightChanged, this, &DeliveryCanvas::invalidateText);
    connect(m_state, &DeliveryCanvasState::pendingScrollTargetChanged, this, &DeliveryCanvas::onPendingScrollTarget);
    connect(m_timer, &DeliveryTimer::stateChanged, this,
            [this](TimerState now, TimerState) { onTimerStateChanged(now); });
    connect(m_timer, &DeliveryTimer::firstStartedAtChanged, this, &DeliveryCanvas::invalidateText);
    connect(m_timer, &DeliveryTimer::targetSecondsChanged, this, [this] {
        if (std::max(int(m_timer->targetSeconds()) / 60, 1) != m_layoutMinutes)
            rebuildLayout();
    });
    if (m_document) {
        connect(m_document, &SermonDocument::rootChanged, this, &DeliveryCanvas::rebuildLayout);
        connect(m_document, &SermonDocument::undoRedoGenerationChanged, this, &DeliveryCanvas::rebuildLayout);
    }

    connect(m_state, &DeliveryCanvasState::scrollAnimationStopRequested, this, &DeliveryCanvas::cancelScrollAnimation);
    // A turn later, once whatever asked has given the keyboard up.
    connect(m_state, &DeliveryCanvasState::canvasFocusRequested, this,
            [this] { QTimer::singleShot(0, this, [this] { setFocus(Qt::OtherFocusReason); }); });
    rebuildLayout();
}

DeliveryCanvas::~DeliveryCanvas() = default;

bool DeliveryCanvas::setSettings(const DeliveryPageSettings& settings)
{
    if (m_settings == settings)
        return false;
    const bool widthChanged = m_settings.textWidth != settings.textWidth;
    m_settings = settings;
    rebuildLayout();
    if (widthChanged)
        emit pageGeometryChanged();
    return true;
}

void DeliveryCanvas::rebuildLayout()
{
    if (!m_document || !m_document->root())
        return;
    m_layoutMinutes = std::max(int(m_timer->targetSeconds()) / 60, 1);
    auto layout = performanceLog::signpostInterval(
        "DeliveryLayout",
        [&] { return QStringLiteral("minutes=%1 width=%2").arg(m_layoutMinutes).arg(m_settings.textWidth); },
        [&] {
            return std::make_shared<const DeliveryContentLayout>(
                DeliveryContentLayout::compute(*m_document->root(), m_layoutMinutes, m_settings.textWidth,
                                               m_settings.baseFontSize, m_settings.lineSpacing));
        });
    performanceLog::signpostEvent("DeliveryLayout.done", [&] {
        return QStringLiteral("items=%1 leaves=%2").arg(layout->items.size()).arg(layout->nodeYPositions.size());
    });
    m_state->setLayout(std::move(layout));
    m_state->setScrollY(m_state->clampScroll(m_state->scrollY()));
}

double DeliveryCanvas::left() const
{
    return DeliveryPageDrawing::pageLeft(width(), m_settings.textWidth);
}

bool DeliveryCanvas::isFrameTicking() const
{
    return m_displayLinkTimer->isActive();
}

bool DeliveryCanvas::isScrollAnimating() const
{
    return m_scrollAnimTimer->isActive();
}

void DeliveryCanvas::scrollAnimated(double target)
{
    cancelScrollAnimation();
    m_animFrom = m_state->scrollY();
    m_animTo = m_state->clampScroll(target);
    m_animStart = m_timer->clock()->now();
    m_scrollAnimTimer->start();
}

void DeliveryCanvas::stepScrollAnimation()
{
    const double t = std::min((m_timer->clock()->now() - m_animStart) / scrollAnimationDuration, 1.0);
    const double e = Look::easeOutCubic(t);
    m_state->setScrollY(m_animFrom + (m_animTo - m_animFrom) * e);
    if (t >= 1)
        m_scrollAnimTimer->stop();
}

void DeliveryCanvas::cancelScrollAnimation()
{
    m_scrollAnimTimer->stop();
}

void DeliveryCanvas::frameTick()
{
    m_pulseClock.advance();
    if (m_state->followRunner() && m_state->layout()) {
        const double y = yForFraction(*m_state->layout(), std::min(m_timer->progress(), 1.0));
        m_state->setScrollY(m_state->clampScroll(y - m_state->viewportHeight() * 0.5));
    }
    updateRunner();
}

void DeliveryCanvas::updateRunner()
{
    update(DeliveryPageDrawing::runnerBounds(left(), height()).toAlignedRect());
}

void DeliveryCanvas::handleScrollDelta(double delta)
{
    cancelScrollAnimation();
    m_state->setFollowRunner(false);
    m_state->setScrollY(m_state->clampScroll(m_state->scrollY() - delta));
}

void DeliveryCanvas::unfollow()
{
    cancelScrollAnimation();
    if (m_state->stopScrollDeceleration)
        m_state->stopScrollDeceleration();
    m_state->setFollowRunner(false);
}

bool DeliveryCanvas::handleKey(int key)
{
    const double page = std::max(m_state->viewportHeight() - 60, 100.0);
    switch (key) {
    case Qt::Key_Space:
        if (m_timer->state() == TimerState::running)
            m_timer->pause();
        else
            m_timer->start();
        return true;
    case Qt::Key_Escape:
        m_timer->stop();
        return true;
    case Qt::Key_Home:
        unfollow();
        scrollAnimated(0);
        return true;
    case Qt::Key_End:
        unfollow();
        scrollAnimated(m_state->maxScrollY());
        return true;
    case Qt::Key_PageUp:
        unfollow();
        scrollAnimated(m_state->scrollY() - page);
        return true;
    case Qt::Key_PageDown:
        unfollow();
        scrollAnimated(m_state->scrollY() + page);
        return true;
    default:
        return false;
    }
}

void DeliveryCanvas::seek(double fraction)
{
    m_state->stopScrollAnimation();
    if (m_state->stopScrollDeceleration)
        m_state->stopScrollDeceleration();
    m_state->setFollowRunner(false);
    if (const auto& layout = m_state->layout())
        m_state->setScrollY(m_state->clampScroll(yForFraction(*layout, fraction) - 100));
}

void DeliveryCanvas::onTimerStateChanged(TimerState state)
{
    if (state == TimerState::running)
        startFrames();
    else
        stopFrames();
    updateRunner();
}

void DeliveryCanvas::onPendingScrollTarget()
{
    if (!m_state->pendingScrollTarget())
        return;
    const NodeID id = *m_state->takePendingScrollTarget();
    const auto& layout = m_state->layout();
    if (!layout)
        return;
    auto it = layout->headingYPositions.find(id);
    if (it == layout->headingYPositions.end()) {
        it = layout->nodeYPositions.find(id);
        if (it == layout->nodeYPositions.end())
            return;
    }
    scrollAnimated(it->second - 100);
}

void DeliveryCanvas::startFrames()
{
    if (!m_displayLinkTimer->isActive())
        m_displayLinkTimer->start();
}

void DeliveryCanvas::stopFrames()
{
    m_displayLinkTimer->stop();
}

void DeliveryCanvas::invalidateText()
{
    m_textDirty = true;
    update();
}

void DeliveryCanvas::paintEvent(QPaintEvent*)
{
    const qreal dpr = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * dpr).toSize();
    const bool isDark = Look::isDarkAppearance();
    const double left = this->left();
    if (m_textDirty || m_textCache.size() != pixels || m_textCache.devicePixelRatio() != dpr) {
        m_textCache = QPixmap(pixels);
        m_textCache.setDevicePixelRatio(dpr);
        m_textCache.fill(palette().color(QPalette::Base));
        QPainter text(&m_textCache);
        DeliveryPageDrawing::TextPass pass;
        pass.layout = m_state->layout().get();
        pass.size = size();
        pass.left = left;
        pass.scrollY = m_state->scrollY();
        pass.viewportHeight = m_state->viewportHeight();
        pass.textWidth = m_settings.textWidth;
        pass.baseFontSize = m_settings.baseFontSize;
        pass.isDark = isDark;
        pass.hasStarted = m_timer->firstStartedAt().has_value();
        performanceLog::signpostInterval(
            "DeliveryPageDraw",
            [&] { return QStringLiteral("scrollY=%1 size=%2x%3").arg(int(pass.scrollY)).arg(width()).arg(height()); },
            [&] { DeliveryPageDrawing::drawTextLayer(text, pass); });
        m_textDirty = false;
        ++m_textRenders;
    }

    QPainter painter(this);
    painter.drawPixmap(0, 0, m_textCache);
    DeliveryPageDrawing::RunnerPass runner;
    runner.layout = m_state->layout().get();
    runner.state = m_timer->state();
    runner.progress = m_timer->progress();
    runner.now = m_timer->clock()->now();
    runner.left = left;
    runner.scrollY = m_state->scrollY();
    DeliveryPageDrawing::drawRunnerLayer(painter, runner);
}

void DeliveryCanvas::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    invalidateText();
    emit pageGeometryChanged();
    // The viewport height is stored a turn later, never during a pass.
    QPointer<DeliveryCanvas> self(this);
    QTimer::singleShot(0, this, [self] {
        if (self)
            self->m_state->setViewportHeight(self->height());
    });
}

void DeliveryCanvas::wheelEvent(QWheelEvent* event)
{
    const QPoint pixels = event->pixelDelta();
    const double delta = !pixels.isNull() ? pixels.y() : event->angleDelta().y() / 120.0 * pointsPerNotch;
    if (delta != 0)
        handleScrollDelta(delta);
    event->accept();
}

void DeliveryCanvas::keyPressEvent(QKeyEvent* event)
{
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
        event->ignore();
        return;
    }
    if (handleKey(event->key()))
        event->accept();
    else
        event->ignore();
}

void DeliveryCanvas::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange
        || event->type() == QEvent::StyleChange)
        invalidateText();
    QWidget::changeEvent(event);
}

void DeliveryCanvas::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_timer->state() == TimerState::running)
        startFrames();
    m_state->requestCanvasFocus();
}

void DeliveryCanvas::hideEvent(QHideEvent* event)
{
    stopFrames();
    QWidget::hideEvent(event);
}
