#pragma once

#include <QPainterPath>

class QColor;
class QPainter;
class QPen;

// The rounded rectangle that every painted base fills and outlines. Lengths are pixels.
namespace ZROutline {
// Spans the whole rectangle, so the outer half of a wide pen is clipped. A radius of 0 or less
// gives square corners; one above half a side is not clamped and its arcs overlap.
QPainterPath path(int radius, int width, int height);
// The pen of an outline that doesn't show.
QPen hiddenPen();
void draw(QPainter &painter, const QPainterPath &path, const QPen &pen, const QColor &fill);
}
