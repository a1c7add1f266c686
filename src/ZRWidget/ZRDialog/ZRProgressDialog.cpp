#include "ZRProgressDialog.h"

#include "ZRNamedChild.h"

#include <QLabel>
#include <QProgressBar>

ZRProgressDialog::ZRProgressDialog(QWidget *parent) :
    ZRWaitDialog(parent),
    messageLabel(namedChild<QLabel>(this, "messageLabel")),
    progressBar(namedChild<QProgressBar>(this, "progressBar"))
{
    progressBar->setRange(0, 0); // busy
    connect(this, SIGNAL(_setProgress(float)), this, SLOT(setProgress(float)));
    connect(this, SIGNAL(_setMessage(QString)), this, SLOT(setMessage(QString)));
    resize(300, 60);
}

ZRProgressDialog::~ZRProgressDialog()
{
    finishThread();
}

void ZRProgressDialog::setProgress(float progress)
{
    progressBar->setValue(int(progress * 100));
}

void ZRProgressDialog::setMessage(QString msg)
{
    messageLabel->setText(msg);
}

void ZRProgressDialog::resizeEvent(QResizeEvent *event)
{
    ZRWaitDialog::resizeEvent(event);
    messageLabel->setGeometry(5, 10, width() - 10, 30);
    progressBar->setGeometry(5, 40, width() - 10, 10);
}
