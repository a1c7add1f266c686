#pragma once

#include <QLatin1String>

class QWidget;

// A new child that carries the name of the field that holds it, so that a test or a tool finds it
// by that name. The parent owns it.
template <class Widget> Widget *namedChild(QWidget *parent, const char *name)
{
    auto *child = new Widget(parent);
    child->setObjectName(QLatin1String(name));
    return child;
}
