#pragma once

#include <QCoreApplication>
#include <QKeyEvent>
#include <QWidget>

// What a widget gets while Return, or another key that answers, is held down.
inline void holdKey(QWidget *widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    for (int i = 0; i < 3; ++i) {
        QKeyEvent repeat(QEvent::KeyPress, key, modifiers, "\r", true);
        QCoreApplication::sendEvent(widget, &repeat);
    }
}
