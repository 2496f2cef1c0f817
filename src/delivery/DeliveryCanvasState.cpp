#include "DeliveryCanvasState.h"

#include <algorithm>

bool DeliveryCanvasState::setScrollY(double y)
{
    if (m_scrollY == y)
        return false;
    m_scrollY = y;
    emit scrollYChanged(y);
    return true;
}

bool DeliveryCanvasState::setViewportHeight(double height)
{
    if (m_viewportHeight == height)
        return false;
    m_viewportHeight = height;
    emit viewportHeightChanged(height);
    return true;
}

void DeliveryCanvasState::setLayout(LayoutPtr layout)
{
    m_layout = std::move(layout);
    emit layoutChanged();
}

bool DeliveryCanvasState::setFollowRunner(bool follow)
{
    if (m_followRunner == follow)
        return false;
    m_followRunner = follow;
    emit followRunnerChanged(follow);
    return true;
}

bool DeliveryCanvasState::setPendingScrollTarget(std::optional<NodeID> id)
{
    if (m_pendingScrollTarget == id)
        return false;
    m_pendingScrollTarget = id;
    emit pendingScrollTargetChanged();
    return true;
}

bool DeliveryCanvasState::setChosenSection(std::optional<NodeID> id)
{
    if (m_chosenSection == id)
        return false;
    m_chosenSection = id;
    emit chosenSectionChanged();
    return true;
}

std::optional<NodeID> DeliveryCanvasState::takePendingScrollTarget()
{
    std::optional<NodeID> id = std::exchange(m_pendingScrollTarget, std::nullopt);
    return id;
}

double DeliveryCanvasState::maxScrollY() const
{
    if (!m_layout)
        return 0;
    const double over = std::max(m_layout->totalHeight - m_viewportHeight, 0.0);
    if (!(over > 0))
        return 0;
    return std::max(over, std::max(m_layout->totalHeight - 80, 0.0));
}

double DeliveryCanvasState::clampScroll(double y) const
{
    return std::clamp(y, 0.0, maxScrollY());
}

std::pair<std::optional<NavTarget>, std::optional<NavTarget>> DeliveryCanvasState::nextHeadings() const
{
    std::optional<NavTarget> nextL1;
    std::optional<NavTarget> nextL2;
    if (!m_layout)
        return {nextL1, nextL2};
    const double edge = m_scrollY + m_viewportHeight;
    // Headings run down the page in order: the first below the edge is found by bisection.
    const auto& order = m_layout->headingOrder;
    auto yOf = [&](const NodeID& id) {
        const auto it = m_layout->headingYPositions.find(id);
        return it == m_layout->headingYPositions.end() ? 0.0 : it->second;
    };
    const auto below =
        std::partition_point(order.begin(), order.end(), [&](const NodeID& id) { return yOf(id) <= edge; });
    for (auto it = below; it != order.end(); ++it) {
        const NodeID& id = *it;
        const auto depthIt = m_layout->headingDepths.find(id);
        const int depth = depthIt == m_layout->headingDepths.end() ? 0 : depthIt->second;
        const auto textIt = m_layout->headingTexts.find(id);
        NavTarget target{id, depth, textIt == m_layout->headingTexts.end() ? QString() : textIt->second};
        if (depth == 2 && !nextL2)
            nextL2 = target;
        if (depth == 1 && !nextL1)
            nextL1 = target;
        if (nextL1 && nextL2)
            break;
    }
    return {nextL1, nextL2};
}

void DeliveryCanvasState::navigate(const NodeID& id)
{
    if (stopScrollDeceleration)
        stopScrollDeceleration();
    setFollowRunner(false);
    setPendingScrollTarget(id);
}
