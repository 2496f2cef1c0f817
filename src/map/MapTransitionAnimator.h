#pragma once

#include "MapDrawState.h"
#include "NodeLayout.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <unordered_map>

class QTimer;

// The map's glide when the tree changes shape: nodes that stay slide from their old place to the
// new one, nodes that leave fade out where they were, nodes that arrive fade in. The layout is
// final from the first frame on; this only offsets what is shown.
class MapTransitionAnimator : public QObject {
    Q_OBJECT
public:
    static constexpr double defaultDuration = 0.3;

    explicit MapTransitionAnimator(QObject* parent = nullptr);

    // Call after the layout was recomputed. Nothing starts, and a running transition carries on,
    // when nothing moved by more than half a point and nothing came or went. A departing node
    // leaves a ghost only if `oldTexts` has its text. Given a `region`, only what stood or
    // stands in it glides or fades; the rest, which no one sees, takes its place at once.
    bool animateTransition(const NodeLayouts& oldLayouts, const std::unordered_map<NodeID, QString>& oldTexts,
                           const NodeLayouts& newLayouts, double duration = defaultDuration,
                           const QRectF& region = QRectF());

    bool isRunning() const;
    double animationProgress() const { return m_progress; }
    // The offsets at this point of the glide, worked out on asking: a frame draws them from the
    // starting offsets and the progress instead.
    std::unordered_map<NodeID, QPointF> nodeAnimOffsets() const;
    const std::unordered_map<NodeID, GhostNode>& fadeOutGhosts() const { return m_glide->ghosts; }
    const std::unordered_set<NodeID>& fadeInNodeIDs() const { return m_glide->fadeIn; }

    // Hands the running glide to what the drawing pass reads, shared rather than copied.
    void apply(MapDrawState& state) const;

    // Seconds from a monotonic clock; replaceable so that tests can step the transition.
    void setClock(std::function<double()> clock);
    // One frame; the timer calls it at 60 Hz.
    void tick();

signals:
    void frame();

private:
    void finish();

    QTimer* m_timer;
    std::function<double()> m_clock;
    double m_start = 0;
    double m_duration = defaultDuration;
    double m_progress = 1.0;
    std::shared_ptr<const MapGlide> m_glide;
};
