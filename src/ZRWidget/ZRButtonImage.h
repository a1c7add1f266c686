#pragma once

#include <QSize>

class QString;
class QWidget;

// What the image buttons have in common. Widths are pixels; 0 means that of the image file.
namespace ZRButtonImage {
// The image's own shape at the wanted width; a square of it when there is no image.
QSize sizeHint(const QString &path, int imageWidth);
// Fills the whole button with the image. Only from the button's paintEvent.
void paint(QWidget *button, const QString &path, int imageWidth);
}
