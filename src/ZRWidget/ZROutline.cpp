#include "ZROutline.h"

#include <QPainter>
#include <QPen>

namespace {
QPainterPath squarePath(double w, double h)
{
    QPainterPath path;
    path.moveTo(0, 0);
    path.lineTo(w, 0);
    path.lineTo(w, h);
    path.lineTo(0, h);
    path.lineTo(0, 0);
    return path;
}

QPainterPath roundedPath(double r, double w, double h)
{
    QPainterPath path;
    path.moveTo(r, 0);
    path.arcTo(0, 0, 2 * r, 2 * r, 90, 90);
    path.lineTo(0, h - r);
    path.arcTo(0, h - 2 * r, 2 * r, 2 * r, 180, 90);
    path.lineTo(w - r, h);
    path.arcTo(w - 2 * r, h - 2 * r, 2 * r, 2 * r, 270, 90);
    path.lineTo(w, r);
    path.arcTo(w - 2 * r, 0, 2 * r, 2 * r, 0, 90);
    path.lineTo(r, 0);
    return path;
}
}

QPainterPath ZROutline::path(int radius, int width, int height)
{
    return radius > 0 ? roundedPath(radius, width, height) : squarePath(width, height);
}

QPen ZROutline::hiddenPen()
{
    return QColor(255, 255, 255, 0);
}

void ZROutline::draw(
    QPainter &painter, const QPainterPath &path, const QPen &pen, const QColor &fill)
{
    painter.setPen(pen);
    painter.setBrush(QBrush(fill, Qt::SolidPattern));
    painter.drawPath(path);
}
