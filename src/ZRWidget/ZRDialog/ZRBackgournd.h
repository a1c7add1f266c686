#pragma once

#include <QColor>

class QPainter;

// Painting of a dialog's background: a rounded rectangle that nothing shows until a derived class
// sets the fields or replaces paintBackground().
class ZRBackgournd
{
public:
    // Sizes in pixels. Leaves its pen and brush in the painter.
    virtual void paintBackground(QPainter &painter, int width, int height);

protected:
    ZRBackgournd() = default;
    ~ZRBackgournd() = default;

    qint32 radius = 0;
    qint32 borderWidth = 0; // above 0 there is an outline, of the default pen's width
    QColor borderColor{255, 255, 255, 0};
    QColor backgroundColor{255, 255, 255, 0};
};
