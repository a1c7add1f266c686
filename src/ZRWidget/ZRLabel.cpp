#include "ZRLabel.h"

#include <QPainter>

ZRLabel::ZRLabel(QWidget *parent) : ZRWidget(parent) { }

ZRLabel::~ZRLabel() = default;

void ZRLabel::setText(const QString &text)
{
    text_ = text;
    update();
}

QString ZRLabel::text() const
{
    return text_;
}

void ZRLabel::setTextColor(const QColor &color)
{
    textColor = color;
    update();
}

void ZRLabel::setAlignment(int alignment)
{
    this->alignment = alignment;
}

void ZRLabel::setMargins(int left, int top, int right, int bottom)
{
    marginLeft = left;
    marginTop = top;
    marginRight = right;
    marginBottom = bottom;
}

QSize ZRLabel::sizeHint() const
{
    return fontMetrics().size(alignment, text_)
        + QSize(marginLeft + marginRight, marginTop + marginBottom);
}

void ZRLabel::mousePressEvent(QMouseEvent *event)
{
    ZRWidget::mousePressEvent(event);
    emit clicked();
}

void ZRLabel::paintEvent(QPaintEvent *event)
{
    ZRWidget::paintEvent(event);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(textColor);
    painter.drawText(marginLeft, marginTop, width() - marginRight - marginLeft,
        height() - marginBottom - marginTop, alignment, text_);
}
