#pragma once

#include <QKeySequence>
#include <QList>

#include <functional>

// The map's zoom commands, handed to the window for its menu items and status-bar buttons.
struct ZoomFunctions {
    std::function<void()> zoomIn;
    std::function<void()> zoomOut;
    std::function<void()> reset;

    // Ctrl with "=" (plus without Shift), "+" or the keypad's plus zooms in; with either minus out.
    // The first of each is the one a menu shows.
    static QList<QKeySequence> zoomInKeys()
    {
        return {QKeySequence(Qt::CTRL | Qt::Key_Equal), QKeySequence(Qt::CTRL | Qt::Key_Plus),
                QKeySequence(QKeyCombination(Qt::ControlModifier | Qt::KeypadModifier, Qt::Key_Plus))};
    }
    static QList<QKeySequence> zoomOutKeys()
    {
        return {QKeySequence(Qt::CTRL | Qt::Key_Minus),
                QKeySequence(QKeyCombination(Qt::ControlModifier | Qt::KeypadModifier, Qt::Key_Minus))};
    }
};
