#include "ZRToast.h"

#include "ZRLabel.h"
#include "ZRToastLabel.h"

#include <QThread>

ZRToast::ZRToast(QWidget *parent) : ZRWidget(parent)
{
    qRegisterMetaType<Qt::Alignment>("Qt::Alignment"); // for the way across threads
}

ZRToast::~ZRToast() = default;

void ZRToast::showToast(QString message, Qt::Alignment alignment, int marginX, int marginY)
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "showToast", Qt::QueuedConnection, Q_ARG(QString, message),
            Q_ARG(Qt::Alignment, alignment), Q_ARG(int, marginX), Q_ARG(int, marginY));
        return;
    }
    hideToast();
    toast = ZRToastLabel::show(this, message, alignment, marginX, marginY, [this] { hideToast(); });
}

void ZRToast::hideToast()
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "hideToast", Qt::QueuedConnection);
        return;
    }
    ZRToastLabel::remove(toast);
}
