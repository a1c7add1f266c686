#include "FactoryKeys.h"

#include <QKeyEvent>
#include <QWidget>

namespace {
bool isHeldKey(const QKeyEvent &event)
{
    const int key = event.key();
    return event.isAutoRepeat()
        && (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape);
}

class HeldKeys : public QObject
{
public:
    explicit HeldKeys(QWidget *widget) : QObject(widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        return event->type() == QEvent::KeyPress && isHeldKey(*static_cast<QKeyEvent *>(event));
    }
};
}

void ignoreHeldKeys(QWidget *widget)
{
    new HeldKeys(widget);
}
