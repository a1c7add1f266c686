#include "PTZButton.h"

#include "ZRButtonImage.h"
#include "ZRPixmapCache.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace {
const QColor hoverTint(202, 211, 138, 90);
const QColor pressedTint(142, 156, 48, 130);
const QColor disabledTint(255, 255, 255, 160);
const QColor focusColor(96, 125, 30);
}

PTZButton::PTZButton(QWidget *parent) : ZRWidget(parent)
{
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
}

PTZButton::~PTZButton() = default;

void PTZButton::setPixmap(const QString &path, int width)
{
    this->path = path;
    imageWidth = width;
    update();
}

void PTZButton::setTurn(int degrees)
{
    turn = degrees;
    update();
}

QSize PTZButton::sizeHint() const
{
    return ZRButtonImage::sizeHint(path, imageWidth);
}

// The largest one in the middle.
QRect PTZButton::disc() const
{
    const int side = qMin(width(), height());
    return {(width() - side) / 2, (height() - side) / 2, side, side};
}

bool PTZButton::isOnDisc(const QPoint &point) const
{
    const QRect area = disc();
    const int dx = 2 * (point.x() - area.x()) + 1 - area.width();
    const int dy = 2 * (point.y() - area.y()) + 1 - area.height();
    return dx * dx + dy * dy <= area.width() * area.width();
}

void PTZButton::press()
{
    if (pressed)
        return;
    pressed = true;
    update();
    emit mousePressed();
}

void PTZButton::release()
{
    if (!pressed)
        return;
    pressed = false;
    update();
    emit mouseRelease();
}

void PTZButton::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && isOnDisc(event->pos()))
        press();
    else
        ZRWidget::mousePressEvent(event);
}

void PTZButton::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        release();
    else
        ZRWidget::mouseReleaseEvent(event);
}

// A key that is held repeats itself as pairs of release and press.
void PTZButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Space)
        ZRWidget::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        press();
}

void PTZButton::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Space)
        ZRWidget::keyReleaseEvent(event);
    else if (!event->isAutoRepeat())
        release();
}

void PTZButton::focusOutEvent(QFocusEvent *event)
{
    ZRWidget::focusOutEvent(event);
    release();
}

void PTZButton::hideEvent(QHideEvent *event)
{
    ZRWidget::hideEvent(event);
    release();
}

void PTZButton::changeEvent(QEvent *event)
{
    ZRWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) {
        if (!isEnabled())
            release();
        update();
    }
}

void PTZButton::enterEvent(QEvent *event)
{
    ZRWidget::enterEvent(event);
    update();
}

void PTZButton::leaveEvent(QEvent *event)
{
    ZRWidget::leaveEvent(event);
    update();
}

void PTZButton::paintEvent(QPaintEvent *event)
{
    ZRWidget::paintEvent(event);

    const QRect area = disc();
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QPointF center = QRectF(area).center();
    painter.translate(center);
    painter.rotate(turn);
    painter.translate(-center);
    painter.drawPixmap(area, ZRPixmapCache::pixmap(path, area.width()));
    painter.resetTransform();

    painter.setPen(Qt::NoPen);
    if (!isEnabled())
        painter.setBrush(disabledTint);
    else if (pressed)
        painter.setBrush(pressedTint);
    else if (underMouse())
        painter.setBrush(hoverTint);
    painter.drawEllipse(area);
    if (hasFocus()) {
        painter.setPen(QPen(focusColor, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(area.adjusted(1, 1, -1, -1));
    }
}
