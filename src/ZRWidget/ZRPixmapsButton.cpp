#include "ZRPixmapsButton.h"

#include "ZRButtonImage.h"

ZRPixmapsButton::ZRPixmapsButton(QWidget *parent) : ZRWidget(parent)
{
    setCursor(Qt::PointingHandCursor);
}

ZRPixmapsButton::~ZRPixmapsButton() = default;

void ZRPixmapsButton::setPixmaps(const QString &path, const QString &checkedPath, int width)
{
    this->path = path;
    this->checkedPath = checkedPath;
    imageWidth = width;
}

void ZRPixmapsButton::setChecked(bool checked)
{
    this->checked = checked;
    update();
}

bool ZRPixmapsButton::isChecked() const
{
    return checked;
}

QSize ZRPixmapsButton::sizeHint() const
{
    return ZRButtonImage::sizeHint(path, imageWidth);
}

void ZRPixmapsButton::mouseReleaseEvent(QMouseEvent *event)
{
    ZRWidget::mouseReleaseEvent(event);
    emit clicked();
}

void ZRPixmapsButton::paintEvent(QPaintEvent *event)
{
    ZRWidget::paintEvent(event);
    ZRButtonImage::paint(this, checked ? checkedPath : path, imageWidth);
}
