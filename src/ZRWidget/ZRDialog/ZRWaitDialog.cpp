#include "ZRWaitDialog.h"

#include <QDebug>

ZRWaitThread::ZRWaitThread(ZRWaitDialog *dialog) : dialog(dialog) { }

void ZRWaitThread::run()
{
    if (dialog)
        dialog->run();
}

ZRWaitDialog::ZRWaitDialog(QWidget *parent) : ZRDialog(parent)
{
    // Emitted on the worker, these arrive queued on the GUI thread.
    connect(this, SIGNAL(_close()), this, SLOT(onClose()));
    connect(this, SIGNAL(_exits()), this, SLOT(onExits()));
}

ZRWaitDialog::~ZRWaitDialog()
{
    finishThread();
}

void ZRWaitDialog::start()
{
    finishThread();
    thread_ = new ZRWaitThread(this);
    thread_->start(QThread::InheritPriority);
}

bool ZRWaitDialog::isStopped() const
{
    return !thread_ || thread_->stopped;
}

void ZRWaitDialog::finishThread()
{
    if (!thread_)
        return;
    thread_->stopped = true;
    cancel();
    while (thread_->isRunning())
        QThread::msleep(1);
    delete thread_;
    thread_ = nullptr;
}

void ZRWaitDialog::reject()
{
    finishThread();
    ZRDialog::reject();
}

void ZRWaitDialog::run()
{
    qDebug("ZRWaitDialog run");
}

void ZRWaitDialog::cancel() { }

void ZRWaitDialog::closeEvent(QCloseEvent *event)
{
    finishThread();
    ZRDialog::closeEvent(event);
}

void ZRWaitDialog::onClose()
{
    accept();
}

void ZRWaitDialog::onExits()
{
    reject();
}
