#pragma once

#include "MapDrawState.h"
#include "MapLayoutState.h"
#include "MapViewport.h"
#include "TextBitmapCache.h"
#include "ZoomFunctions.h"

#include <QPointF>
#include <QWidget>

#include <functional>
#include <optional>

class SermonDocument;

// The mind map of one document: lays the tree out, paints it with QPainter, and pans and zooms
// under the wheel, Ctrl+wheel and pinch. Selection, search and animation state are filled in by
// whoever edits the document, through updateDrawState.
class MindMapCanvas : public QWidget {
    Q_OBJECT
public:
    explicit MindMapCanvas(SermonDocument* document, QWidget* parent = nullptr);

    SermonDocument* document() const { return m_document; }
    MapViewport& viewport() { return m_viewport; }
    const MapViewport& viewport() const { return m_viewport; }
    const MapLayoutState& layoutState() const { return m_layout; }
    const MapDrawState& drawState() const { return m_drawState; }
    TextBitmapCache& textCache() { return m_textCache; }

    // Changes what is drawn besides the tree, and repaints.
    void updateDrawState(const std::function<void(MapDrawState&)>& change);

    // Words a minute for the time badges, asked at each pass; 120 without a source or for a bad value.
    void setReadingPaceSource(std::function<int()> source);
    int readingPaceWPM() const;

    ZoomFunctions zoomFunctions();
    // Called once with the zoom commands when the map first appears.
    std::function<void(const ZoomFunctions&)> onZoomFunctionsReady;

    // After any change to the tree: the text may have changed, so the bitmaps go too.
    void onTreeMutated();
    void recomputeLayout();
    void clearTextBitmaps();

    void reveal(const NodeID& id);
    void centerOn(QPointF canvasPoint);
    QPointF canvasPoint(QPointF viewPoint) const { return m_viewport.canvasPoint(viewPoint); }
    // The first node whose frame holds a canvas point.
    std::optional<NodeID> hitNode(QPointF canvasPoint) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    SermonDocument* m_document;
    MapViewport m_viewport;
    MapLayoutState m_layout;
    MapDrawState m_drawState;
    TextBitmapCache m_textCache;
    std::function<int()> m_readingPace;
    bool m_hasAppeared = false;

    // A plain drag from empty space or the root pans; node drags and the lasso come with selection.
    std::optional<QPointF> m_pressPoint;
    QPointF m_panStart;
    bool m_isPanning = false;
};
