#pragma once

#include "core/SermonNode.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QStringList>
#include <QWidget>

// Fonts and widgets need an application; one is made on first use and lives for the program.
inline void ensureApplication()
{
    if (QCoreApplication::instance())
        return;
    static int argc = 1;
    static char name[] = "delivery-tests";
    static char* argv[] = {name, nullptr};
    static QApplication* app = new QApplication(argc, argv);
    (void)app;
}

// Presses a key on `widget`; ignored keys travel to its parents as from a keyboard.
inline void press(QWidget* widget, int key)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// Runs the event loop until `done` or a generous limit; for timers that fire on their own.
template <typename Condition>
bool waitFor(Condition done)
{
    QElapsedTimer limit;
    limit.start();
    while (!done() && limit.elapsed() < 3000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return done();
}

// A line of `words` words.
inline QString wordsText(int words)
{
    QStringList out;
    for (int i = 0; i < words; ++i)
        out << QStringLiteral("word");
    return out.join(QLatin1Char(' '));
}

// Root "Title" with `sections` depth 1 headings, each with `leaves` leaves of `words` words.
inline SermonNodePtr sectionedSermon(int sections, int leaves, int words)
{
    auto root = SermonNode::make(QStringLiteral("Title"), 0);
    for (int s = 0; s < sections; ++s) {
        auto section = root->addChild(QStringLiteral("Section %1").arg(s + 1));
        for (int l = 0; l < leaves; ++l)
            section->addChild(wordsText(words));
    }
    return root;
}
