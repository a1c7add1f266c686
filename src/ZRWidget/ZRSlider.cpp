#include "ZRSlider.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

namespace {
constexpr int handleSide = 14;
constexpr int grooveHeight = 4;
constexpr int pages = 10; // in the whole range
constexpr int notch = 120; // of a wheel, in eighths of a degree
const QColor grooveColor(206, 208, 200);
const QColor disabledColor(170, 172, 166);
}

ZRSlider::ZRSlider(QWidget *parent) : ZRWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

ZRSlider::~ZRSlider() = default;

void ZRSlider::setRange(int minimum, int maximum)
{
    minimum_ = minimum;
    maximum_ = qMax(minimum, maximum);
    setValue(value_);
    update();
}

void ZRSlider::setValue(int value)
{
    const int inside = qBound(minimum_, value, maximum_);
    if (inside == value_)
        return;
    value_ = inside;
    update();
    emit valueChanged(value_);
}

void ZRSlider::setColor(const QColor &color)
{
    this->color = color;
    update();
}

QSize ZRSlider::sizeHint() const
{
    return {100, 20};
}

QSize ZRSlider::minimumSizeHint() const
{
    return {3 * handleSide, handleSide};
}

int ZRSlider::travel() const
{
    return qMax(0, width() - handleSide);
}

int ZRSlider::handleX() const
{
    const qint64 range = qint64(maximum_) - minimum_;
    const qint64 done = qint64(value_) - minimum_;
    return handleSide / 2 + (range > 0 ? int((done * travel() + range / 2) / range) : 0);
}

int ZRSlider::valueAt(int x) const
{
    const qint64 way = qBound(0, x - handleSide / 2, travel());
    const qint64 range = qint64(maximum_) - minimum_;
    const qint64 done = travel() > 0 ? (way * range + travel() / 2) / travel() : 0;
    return int(minimum_ + done);
}

int ZRSlider::pageStep() const
{
    return int(qMax(qint64(1), (qint64(maximum_) - minimum_) / pages));
}

void ZRSlider::step(qint64 distance)
{
    setValue(int(qBound(qint64(minimum_), value_ + distance, qint64(maximum_))));
}

void ZRSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        setValue(valueAt(event->x()));
    else
        ZRWidget::mousePressEvent(event);
}

void ZRSlider::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        setValue(valueAt(event->x()));
    else
        ZRWidget::mouseMoveEvent(event);
}

void ZRSlider::wheelEvent(QWheelEvent *event)
{
    wheelRest += event->angleDelta().y();
    step(wheelRest / notch);
    wheelRest %= notch;
}

void ZRSlider::keyPressEvent(QKeyEvent *event)
{
    const qint64 whole = qint64(maximum_) - minimum_;
    const struct {
        int key;
        qint64 distance;
    } steps[] = {
        {Qt::Key_Left, -1},
        {Qt::Key_Down, -1},
        {Qt::Key_Right, 1},
        {Qt::Key_Up, 1},
        {Qt::Key_PageDown, -pageStep()},
        {Qt::Key_PageUp, pageStep()},
        {Qt::Key_Home, -whole},
        {Qt::Key_End, whole},
    };
    for (const auto &known : steps) {
        if (event->key() == known.key) {
            step(known.distance);
            return;
        }
    }
    ZRWidget::keyPressEvent(event);
}

void ZRSlider::changeEvent(QEvent *event)
{
    ZRWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        update();
}

void ZRSlider::paintEvent(QPaintEvent *event)
{
    ZRWidget::paintEvent(event);

    const QColor shown = isEnabled() ? color : disabledColor;
    const QRect groove(handleSide / 2, (height() - grooveHeight) / 2, travel(), grooveHeight);
    const QRect filled(groove.topLeft(), QSize(handleX() - groove.x(), grooveHeight));
    const QRectF handle(
        handleX() - handleSide / 2, (height() - handleSide) / 2, handleSide, handleSide);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(grooveColor);
    painter.drawRoundedRect(groove, grooveHeight / 2, grooveHeight / 2);
    painter.setBrush(shown);
    painter.drawRoundedRect(filled, grooveHeight / 2, grooveHeight / 2);

    const int edge = hasFocus() ? 3 : 2;
    painter.setPen(QPen(shown, edge));
    painter.setBrush(Qt::white);
    const qreal inset = edge / 2.0;
    painter.drawEllipse(handle.adjusted(inset, inset, -inset, -inset));
}
