#pragma once

#include "DeliveryTimer.h"

#include <QRectF>
#include <QSizeF>

class QPainter;
struct DeliveryContentLayout;

// The two layers of the delivery page. The text layer depends only on the layout, the scroll
// position, the size and the appearance; the runner layer changes every frame and is cheap.
namespace DeliveryPageDrawing {

struct TextPass {
    const DeliveryContentLayout* layout = nullptr;
    QSizeF size; // of the view
    double left = 0; // page offset from the view's left edge
    double scrollY = 0;
    double viewportHeight = 0;
    double textWidth = 700;
    double baseFontSize = 15;
    bool isDark = false;
    bool hasStarted = false; // the timer has a first start: minute marks fade lower
};

struct RunnerPass {
    const DeliveryContentLayout* layout = nullptr;
    TimerState state = TimerState::idle;
    double progress = 0;
    double now = 0; // monotonic seconds, for the overrun beat
    double left = 0;
    double scrollY = 0;
};

// Page x of the column's left edge: centred, or pinned left when the view is narrow.
double pageLeft(double viewWidth, double textWidth);

// Opacity of a minute mark at window y `windowY`, under the counters at the top left.
double minuteMarkOpacity(double windowY, bool hasStarted);

// 1, or in overrun one beat a second between 0.35 and 1.
double overrunPulse(double progress, double now);

void drawTextLayer(QPainter& painter, const TextPass& pass);
void drawRunnerLayer(QPainter& painter, const RunnerPass& pass);

// The part of the view the runner can touch in a frame, in view coordinates.
QRectF runnerBounds(double left, double viewHeight);

} // namespace DeliveryPageDrawing
