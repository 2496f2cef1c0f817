#pragma once

#include "DeliveryContentLayout.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

// A heading the navigation panel can jump to.
struct NavTarget {
    NodeID id;
    int depth = 0;
    QString text;

    bool operator==(const NavTarget&) const = default;
};

// What the canvas, the ruler, the counters and the navigation share about the page.
class DeliveryCanvasState : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    using Callback = std::function<void()>;
    using LayoutPtr = std::shared_ptr<const DeliveryContentLayout>;

    double scrollY() const { return m_scrollY; }
    bool setScrollY(double y);
    double viewportHeight() const { return m_viewportHeight; }
    bool setViewportHeight(double height);
    const LayoutPtr& layout() const { return m_layout; }
    void setLayout(LayoutPtr layout);
    bool followRunner() const { return m_followRunner; }
    bool setFollowRunner(bool follow);
    std::optional<NodeID> pendingScrollTarget() const { return m_pendingScrollTarget; }
    bool setPendingScrollTarget(std::optional<NodeID> id);
    // Hands the pending target over and clears it.
    std::optional<NodeID> takePendingScrollTarget();
    // The section the reader named with a remote on a page too short to scroll to it; a null id
    // names the lines above the first section.
    std::optional<NodeID> chosenSection() const { return m_chosenSection; }
    bool setChosenSection(std::optional<NodeID> id);

    // No part installs this one; callers test for absence.
    Callback stopScrollDeceleration;
    // Asks whichever canvas shows the page; a canvas that has gone hears nothing.
    void stopScrollAnimation() { emit scrollAnimationStopRequested(); }
    void requestCanvasFocus() { emit canvasFocusRequested(); }

    // How far the page can scroll: a page longer than the window until its last lines reach
    // the window's top; a page that fits not at all.
    double maxScrollY() const;
    double clampScroll(double y) const;
    // The next depth 1 and depth 2 headings below the window's bottom.
    std::pair<std::optional<NavTarget>, std::optional<NavTarget>> nextHeadings() const;
    void navigate(const NodeID& id);

signals:
    void scrollYChanged(double y);
    void viewportHeightChanged(double height);
    void layoutChanged();
    void followRunnerChanged(bool follow);
    void pendingScrollTargetChanged();
    void chosenSectionChanged();
    void scrollAnimationStopRequested();
    void canvasFocusRequested();

private:
    double m_scrollY = 0;
    double m_viewportHeight = 0;
    LayoutPtr m_layout;
    bool m_followRunner = false;
    std::optional<NodeID> m_pendingScrollTarget;
    std::optional<NodeID> m_chosenSection;
};
