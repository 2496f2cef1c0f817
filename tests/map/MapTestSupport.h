#pragma once

#include <QApplication>

// Fonts and widgets need an application; one is made on first use and lives for the program.
inline void ensureApplication()
{
    if (QCoreApplication::instance())
        return;
    static int argc = 1;
    static char name[] = "map-tests";
    static char* argv[] = {name, nullptr};
    static QApplication* app = new QApplication(argc, argv);
    (void)app;
}

#include "MarkerColours.h"
