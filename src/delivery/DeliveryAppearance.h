#pragma once

#include "look/Look.h"

#include <QColor>

// The colours of the delivery view, asked of the palette in force at the start of each pass;
// the shared ones (ink, accent, the strong hues, easing) come from Look.
namespace DeliveryAppearance {

QColor primary();
QColor secondary();
QColor tertiary();
QColor accent();
QColor red();
QColor orange();
QColor green();

} // namespace DeliveryAppearance
