#pragma once

#include <QPalette>
#include <QString>

// The look of every window: follow the desktop, or force light or dark.
enum class AppAppearance { system, light, dark };

namespace AppAppearances {
// "System", "Light", "Dark".
QString text(AppAppearance appearance);
// "Light" and "Dark" are themselves; anything else counts as the system's.
AppAppearance fromText(const QString& text);
// The next in the toolbar's cycle, from dark back to system.
AppAppearance next(AppAppearance appearance);
// The symbol the toolbar button shows.
QString symbolName(AppAppearance appearance);

QPalette lightPalette();
QPalette darkPalette();
// Remembers the desktop's own palette: "System" follows whether it is dark. Call once, first.
void rememberSystemPalette(const QPalette& palette);
// Sets the application's palette for every window; a no-op without a GUI application.
void apply(AppAppearance appearance);
} // namespace AppAppearances
