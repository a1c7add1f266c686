#include "ZRButtonImage.h"

#include "ZRPixmapCache.h"

#include <QPainter>
#include <QWidget>

QSize ZRButtonImage::sizeHint(const QString &path, int imageWidth)
{
    const QSize image = ZRPixmapCache::size(ZRPixmapCache::pixmap(path, 0));
    if (image.isEmpty())
        return {imageWidth, imageWidth};
    const int width = imageWidth == 0 ? image.width() : imageWidth;
    return {width, width * image.height() / image.width()};
}

void ZRButtonImage::paint(QWidget *button, const QString &path, int imageWidth)
{
    QPainter painter(button);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawPixmap(button->rect(), ZRPixmapCache::pixmap(path, imageWidth));
}
