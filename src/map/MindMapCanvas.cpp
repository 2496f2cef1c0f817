#include "MindMapCanvas.h"

#include "Appearance.h"
#include "MapDrawing.h"
#include "MapPalette.h"

#include "core/ReadingPace.h"
#include "core/SermonDocument.h"

#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QWheelEvent>

namespace {
// Pixels a mouse wheel notch moves the map; touchpads report their own pixel deltas.
constexpr double pointsPerWheelDegree = 4.0; // 15 degrees a notch: 60 points
// Ctrl+wheel: one notch zooms by a tenth.
constexpr double magnificationPerWheelDegree = 0.1 / 15.0;
constexpr double dragThreshold = 8;
} // namespace

MindMapCanvas::MindMapCanvas(SermonDocument* document, QWidget* parent)
    : QWidget(parent), m_document(document)
{
    setObjectName(QStringLiteral("mindMapCanvas"));
    setAccessibleName(QStringLiteral("mindMapCanvas"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);

    connect(&m_viewport, &MapViewport::scaleChanged, this, [this] { update(); });
    connect(&m_viewport, &MapViewport::panOffsetChanged, this, [this] { update(); });
    if (m_document) {
        connect(m_document, &SermonDocument::rootChanged, this, &MindMapCanvas::onTreeMutated);
        connect(m_document, &SermonDocument::undoRedoGenerationChanged, this, &MindMapCanvas::onTreeMutated);
    }
    recomputeLayout();
}

void MindMapCanvas::updateDrawState(const std::function<void(MapDrawState&)>& change)
{
    if (change)
        change(m_drawState);
    update();
}

void MindMapCanvas::setReadingPaceSource(std::function<int()> source)
{
    m_readingPace = std::move(source);
    update();
}

int MindMapCanvas::readingPaceWPM() const
{
    const int wpm = m_readingPace ? m_readingPace() : ReadingPaces::defaultWPM;
    return wpm > 0 ? wpm : ReadingPaces::defaultWPM;
}

ZoomFunctions MindMapCanvas::zoomFunctions()
{
    MapViewport* viewport = &m_viewport;
    return {[viewport] { viewport->zoomIn(); }, [viewport] { viewport->zoomOut(); },
            [viewport] { viewport->reset(); }};
}

void MindMapCanvas::onTreeMutated()
{
    clearTextBitmaps();
    recomputeLayout();
}

void MindMapCanvas::recomputeLayout()
{
    m_layout.recomputeLayout(m_document ? m_document->root() : SermonNodePtr());
    m_viewport.setContentBounds(m_layout.cachedContentBounds);
    update();
}

void MindMapCanvas::clearTextBitmaps()
{
    m_textCache.clear();
}

void MindMapCanvas::reveal(const NodeID& id)
{
    if (const NodeLayout* layout = m_layout.layout(id))
        m_viewport.reveal(*layout);
}

void MindMapCanvas::centerOn(QPointF canvasPoint)
{
    m_viewport.centerOn(canvasPoint);
}

std::optional<NodeID> MindMapCanvas::hitNode(QPointF p) const
{
    for (const auto& [id, layout] : m_layout.cachedLayouts)
        if (layout.frame().contains(p))
            return id;
    return std::nullopt;
}

void MindMapCanvas::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool dark = isDarkPalette(palette());
    painter.fillRect(rect(), palette().color(QPalette::Window));
    m_drawState.scale = m_viewport.scale();
    m_drawState.panOffset = m_viewport.panOffset();
    m_drawState.readingPaceWPM = readingPaceWPM();
    MapDrawing::drawCanvas(painter, QSizeF(size()), m_layout, m_drawState, MapPalette::forAppearance(dark),
                           m_textCache);
}

void MindMapCanvas::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_viewport.setViewportSize(QSizeF(size()));
}

void MindMapCanvas::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_viewport.setViewportSize(QSizeF(size()));
    if (!m_hasAppeared) {
        m_hasAppeared = true;
        recomputeLayout();
        if (onZoomFunctionsReady)
            onZoomFunctionsReady(zoomFunctions());
    }
}

void MindMapCanvas::wheelEvent(QWheelEvent* event)
{
    event->accept();
    if (event->modifiers() & Qt::ControlModifier) {
        const double degrees = event->angleDelta().y() / 8.0;
        if (degrees != 0)
            m_viewport.onMagnify(degrees * magnificationPerWheelDegree, event->position());
        return;
    }
    QPointF delta = !event->pixelDelta().isNull() ? QPointF(event->pixelDelta())
                                                  : QPointF(event->angleDelta()) / 8.0 * pointsPerWheelDegree;
    // A plain mouse has one wheel: Shift turns it sideways.
    if ((event->modifiers() & Qt::ShiftModifier) && delta.x() == 0)
        delta = QPointF(delta.y(), 0);
    m_viewport.onScroll(delta.x(), delta.y());
}

bool MindMapCanvas::event(QEvent* event)
{
    if (event->type() == QEvent::NativeGesture) {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            m_viewport.onMagnify(gesture->value(), gesture->position());
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void MindMapCanvas::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    m_pressPoint = event->position();
    m_isPanning = false;
    event->accept();
}

void MindMapCanvas::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_pressPoint || !(event->buttons() & Qt::LeftButton))
        return;
    const QPointF translation = event->position() - *m_pressPoint;
    if (!m_isPanning) {
        if (std::hypot(translation.x(), translation.y()) < dragThreshold)
            return;
        const auto hit = hitNode(canvasPoint(*m_pressPoint));
        const bool onRoot = hit && m_layout.root && *hit == m_layout.root->id();
        if (hit && !onRoot)
            return;
        m_isPanning = true;
        m_panStart = m_viewport.panOffset();
    }
    m_viewport.setPanOffset(m_viewport.clampedPan(m_panStart + translation));
    if (m_viewport.onShowMinimap)
        m_viewport.onShowMinimap();
}

void MindMapCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_pressPoint.reset();
        m_isPanning = false;
    }
    QWidget::mouseReleaseEvent(event);
}
