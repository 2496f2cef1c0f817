#pragma once

#include <QIcon>

namespace AppIcon {

// The application's icon from the PNGs built into the program, one per size: it needs neither
// an icon theme nor Qt's SVG plugin.
QIcon make();

} // namespace AppIcon
