#include "ZRWidget.h"

#include "ZROutline.h"

#include <QPainter>
#include <QPen>

ZRWidget::ZRWidget(QWidget *parent) : QWidget(parent) { }

ZRWidget::~ZRWidget() = default;

void ZRWidget::setBackgroundColor(const QColor &color)
{
    backgroundColor = color;
    update();
}

void ZRWidget::setBorder(int radius, int width, const QColor &color)
{
    this->radius = radius;
    borderWidth = width;
    borderColor = color;
    update();
}

void ZRWidget::paintEvent(QPaintEvent *event)
{
    QWidget::paintEvent(event);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPen pen = borderWidth > 0 ? QPen(borderColor, borderWidth) : ZROutline::hiddenPen();
    ZROutline::draw(painter, ZROutline::path(radius, width(), height()), pen, backgroundColor);
}
