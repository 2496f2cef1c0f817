#pragma once

#include "DeliveryCanvasState.h"

#include <QWidget>

#include <optional>

class QAbstractButton;

// The panel at the page's bottom right naming the next headings below the window; pressing one
// brings it into view.
class DeliveryNavOverlay : public QWidget {
    Q_OBJECT
public:
    // Room around each row for its shadow; the panel itself stands this far inside the widget.
    static constexpr int panelMargin = 10;

    explicit DeliveryNavOverlay(QWidget* parent = nullptr);

    // Rebuilds the rows only when something they show changed.
    bool setTargets(const std::optional<NavTarget>& nextL1, const std::optional<NavTarget>& nextL2,
                    double baseFontSize);
    int rowCount() const { return int(m_rows.size()); }
    // Font size of a row's text, by the heading's depth.
    static double textSize(int depth, double baseFontSize);

signals:
    void navigateRequested(const NodeID& id);
    void sizeChanged();

private:
    void rebuild();

    std::optional<NavTarget> m_nextL1;
    std::optional<NavTarget> m_nextL2;
    double m_baseFontSize = 15;
    std::vector<QAbstractButton*> m_rows;
};
