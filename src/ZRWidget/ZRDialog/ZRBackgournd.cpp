#include "ZRBackgournd.h"

#include "ZROutline.h"

#include <QPen>

void ZRBackgournd::paintBackground(QPainter &painter, int width, int height)
{
    const QPen pen = borderWidth > 0 ? QPen(borderColor) : ZROutline::hiddenPen();
    ZROutline::draw(painter, ZROutline::path(radius, width, height), pen, backgroundColor);
}
