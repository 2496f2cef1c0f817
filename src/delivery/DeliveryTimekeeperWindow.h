#pragma once

#include "DeliveryTimelineRuler.h"

#include <QWidget>

class DeliveryCanvasState;
class DeliveryTimer;

// The timekeeper's screen: a second, frameless window with only the remaining time, the
// overrun, the present section and the drift colour, large. It reads the view's own timer and
// page; it has no clock of its own, so both screens always agree.
class DeliveryTimekeeperWindow : public QWidget {
    Q_OBJECT
public:
    DeliveryTimekeeperWindow(DeliveryTimer* timer, DeliveryCanvasState* state, QWidget* parent = nullptr);

    // Full screen on a screen other than `besides`' when there is one, else a window beside it.
    void showBeside(QWidget* besides);

    // What it shows now, for the drawing and for tests.
    QString remainingText() const;
    QString overrunText() const;
    QString sectionText() const;
    DeliveryTimelineRuler::Drift drift() const;

signals:
    void closed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    DeliveryTimer* m_timer;
    DeliveryCanvasState* m_state;
};
