#pragma once

#include <QApplication>

// Fonts and widgets need an application; the offscreen platform needs no display. One is made
// on first use and lives for the program.
inline void ensureApplication()
{
    static QApplication* app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "orantium-bench";
        static char* argv[] = {name, nullptr};
        return new QApplication(argc, argv);
    }();
    (void)app;
}
