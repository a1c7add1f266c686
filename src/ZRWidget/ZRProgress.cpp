#include "ZRProgress.h"

#include <QPainter>

namespace {
constexpr int spokes = 12;
constexpr int step = 360 / spokes; // degrees
constexpr int noTimer = -1;
constexpr int largestSmallSide = 32; // up to it spokes are relatively thicker
}

ZRProgress::ZRProgress(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFocusPolicy(Qt::NoFocus);
}

ZRProgress::~ZRProgress() = default;

QSize ZRProgress::sizeHint() const
{
    return {25, 25};
}

void ZRProgress::startAnimation()
{
    setVisible(true);
    angle = 0;
    if (timerId == noTimer)
        timerId = startTimer(delay, Qt::CoarseTimer);
}

void ZRProgress::stopAnimation()
{
    if (timerId != noTimer)
        killTimer(timerId);
    timerId = noTimer;
    setVisible(false);
    update();
}

void ZRProgress::setAnimationDelay(int delay)
{
    this->delay = delay;
    if (timerId != noTimer) {
        killTimer(timerId);
        timerId = startTimer(delay, Qt::CoarseTimer);
    }
}

void ZRProgress::setDisplayedWhenStopped(bool state)
{
    displayedWhenStopped = state;
    update();
}

void ZRProgress::setColor(QColor color)
{
    this->color = color;
    update();
}

void ZRProgress::onProgress(short _progress)
{
    progress = _progress;
}

void ZRProgress::timerEvent(QTimerEvent *)
{
    angle = (angle + step) % 360;
    update();
}

void ZRProgress::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    if (!displayedWhenStopped && timerId == noTimer) {
        painter.drawPixmap(rect(), stoppedPixmap);
        return;
    }
    if (progress > 0 && progress < 100) {
        painter.setPen(color);
        painter.drawText(
            rect(), Qt::AlignCenter, QStringLiteral("%1%").arg(progress, 0, 10, QLatin1Char(' ')));
    }
    if (progress == 100)
        stopAnimation(); // this pass still paints to its end
    paintSpokes(painter);
}

void ZRProgress::paintSpokes(QPainter &painter) const
{
    const int side = qMin(width(), height());
    const int outer = (side - 1) >> 1;
    const int length = outer - int(outer * 0.38);
    const int thickness = int(length * (side <= largestSmallSide ? 0.35 : 0.23));
    const int radius = thickness >> 1;

    painter.setPen(Qt::NoPen);
    for (int i = 0; i < spokes; ++i) {
        QColor faded = color;
        faded.setAlphaF(1.0 - i / double(spokes));
        painter.setBrush(QBrush(faded, Qt::SolidPattern));

        painter.save();
        painter.translate(rect().center());
        painter.rotate(angle - i * double(step));
        // The shift rounds an odd thickness away from the centre.
        painter.drawRoundedRect(
            -thickness >> 1, -outer, thickness, length, radius, radius, Qt::AbsoluteSize);
        painter.restore();
    }
}
