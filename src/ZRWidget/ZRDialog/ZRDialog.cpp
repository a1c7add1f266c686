#include "ZRDialog.h"

#include "ZRLabel.h"
#include "ZRToastLabel.h"

#include <QPainter>

ZRDialog::ZRDialog(QWidget *parent) : QDialog(parent)
{
    setWindowFlags(windowFlags() & ~Qt::WindowContextHelpButtonHint);
}

ZRDialog::~ZRDialog() = default;

void ZRDialog::showToast(QString message, Qt::Alignment alignment, int marginX, int marginY)
{
    hideToast();
    toast = ZRToastLabel::show(this, message, alignment, marginX, marginY, [this] { hideToast(); });
}

void ZRDialog::hideToast()
{
    ZRToastLabel::remove(toast);
}

void ZRDialog::paintEvent(QPaintEvent *event)
{
    QDialog::paintEvent(event);

    QPainter painter(this); // not antialiased, unlike a ZRWidget
    paintBackground(painter, width(), height());
}
