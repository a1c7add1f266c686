#include "ZRPixmapButton.h"

#include "ZRButtonImage.h"

ZRPixmapButton::ZRPixmapButton(QWidget *parent) : ZRWidget(parent)
{
    setCursor(Qt::PointingHandCursor);
}

ZRPixmapButton::~ZRPixmapButton() = default;

void ZRPixmapButton::setPixmap(const QString &path, int width)
{
    this->path = path;
    imageWidth = width;
    update();
}

QSize ZRPixmapButton::sizeHint() const
{
    return ZRButtonImage::sizeHint(path, imageWidth);
}

void ZRPixmapButton::mouseReleaseEvent(QMouseEvent *event)
{
    ZRWidget::mouseReleaseEvent(event);
    emit clicked();
}

void ZRPixmapButton::paintEvent(QPaintEvent *event)
{
    ZRWidget::paintEvent(event);
    ZRButtonImage::paint(this, path, imageWidth);
}
