#include "TestCard.h"

#include <QGuiApplication>
#include <QScreen>
#include <QtMath>

extern "C" {
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cmath>

namespace {

struct Colour {
    double r, g, b;
};

struct Weights {
    double kr, kb;
};

Weights weightsOf(AVColorSpace space)
{
    return space == AVCOL_SPC_BT709 ? Weights{0.2126, 0.0722} : Weights{0.299, 0.114};
}

// The card at a point, 0.0 to 1.0 in both directions.
Colour colourAt(double x, double y)
{
    if (std::min({x, y, 1 - x, 1 - y}) < 0.02) {
        return {1, 1, 1};
    }
    if (y < 0.4) { // bars, each fading downwards
        const int bar = int(x * 8);
        const double level = 0.9 - 0.5 * y;
        return {bar & 1 ? level : 0.1, bar & 2 ? level : 0.1, bar & 4 ? level : 0.1};
    }
    if (y < 0.55) { // a ramp
        return {x, x, x};
    }
    const double distance = std::hypot((x - 0.3) * 1.6, y - 0.78);
    if (distance < 0.18) { // soft rings
        const double wave = 0.5 + 0.4 * std::cos(distance * 80);
        return {wave, wave, 0.8 * wave};
    }
    if (x > 0.6 && x < 0.85 && y > 0.65 && y < 0.9) { // a hard square of a strong colour
        return {0.85, 0.15, 0.2};
    }
    return {0.3 + 0.3 * x, 0.5 - 0.2 * y, 0.6};
}

quint8 byte(double value)
{
    return quint8(qBound(0L, std::lround(value), 255L));
}

double difference(QRgb a, QRgb b)
{
    const int r = qRed(a) - qRed(b);
    const int g = qGreen(a) - qGreen(b);
    const int bl = qBlue(a) - qBlue(b);
    return r * r + g * g + bl * bl;
}

bool isDark(QRgb pixel)
{
    return (pixel & 0xffffff) == 0;
}

bool edgesAreBright(const QImage &shot, const QRect &area)
{
    const QPoint middle = area.center();
    const QPoint edges[] = {{area.left(), middle.y()}, {area.right(), middle.y()},
        {middle.x(), area.top()}, {middle.x(), area.bottom()}};
    return std::all_of(std::begin(edges), std::end(edges),
        [&](const QPoint &point) { return qGray(shot.pixel(point)) > 100; });
}

}

Frame TestCard::frame(int width, int height, int format, AVColorSpace space)
{
    Frame frame = bareFrame(width, height, format);
    frame->colorspace = space;
    if (av_frame_get_buffer(frame.get(), 0) < 0) {
        qFatal("no memory for a frame");
    }
    const bool full = format == AV_PIX_FMT_YUVJ420P;
    const Weights weights = weightsOf(space);
    for (int plane = 0; plane < 3; ++plane) {
        const int step = plane == 0 ? 1 : 2;
        for (int row = 0; row * step < height; ++row) {
            for (int column = 0; column * step < width; ++column) {
                const Colour c = colourAt(
                    (column * step + step * 0.5) / width, (row * step + step * 0.5) / height);
                const double y =
                    weights.kr * c.r + (1 - weights.kr - weights.kb) * c.g + weights.kb * c.b;
                const double values[] = {
                    y, (c.b - y) / (1 - weights.kb) / 2, (c.r - y) / (1 - weights.kr) / 2};
                const double scale = full ? 255 : plane == 0 ? 219 : 224;
                const double zero = plane != 0 ? 128 : full ? 0 : 16;
                frame->data[plane][row * frame->linesize[plane] + column] =
                    byte(zero + scale * values[plane]);
            }
        }
    }
    return frame;
}

QImage TestCard::reference(const AVFrame &frame, const QSize &size)
{
    const int flags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
    SwsContext *scaler = sws_getContext(frame.width, frame.height, AV_PIX_FMT_YUV420P, size.width(),
        size.height(), AV_PIX_FMT_RGB32, flags, nullptr, nullptr, nullptr);
    const int *matrix =
        sws_getCoefficients(frame.colorspace == AVCOL_SPC_BT709 ? SWS_CS_ITU709 : SWS_CS_ITU601);
    const bool full = frame.format == AV_PIX_FMT_YUVJ420P;
    sws_setColorspaceDetails(scaler, matrix, full, matrix, 1, 0, 1 << 16, 1 << 16);

    QImage image(size, QImage::Format_RGB32);
    quint8 *planes[] = {image.bits()};
    const int strides[] = {image.bytesPerLine()};
    sws_scale(scaler, frame.data, frame.linesize, 0, frame.height, planes, strides);
    sws_freeContext(scaler);
    return image;
}

QImage TestCard::shot(const QWidget &widget)
{
    return shot(widget, widget.rect());
}

QImage TestCard::shot(const QWidget &widget, const QRect &part)
{
    const QPoint corner = widget.mapToGlobal(part.topLeft());
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, corner.x(), corner.y(), part.width(), part.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

double TestCard::likeness(const QImage &shot, const QRect &area, const AVFrame &frame)
{
    const QImage expected = reference(frame, area.size());
    double sum = 0;
    for (int y = 0; y < area.height(); ++y) {
        for (int x = 0; x < area.width(); ++x) {
            sum += difference(shot.pixel(area.topLeft() + QPoint(x, y)), expected.pixel(x, y));
        }
    }
    const double mean = sum / (3.0 * area.width() * area.height());
    return mean == 0 ? 100 : 10 * std::log10(255 * 255 / mean);
}

bool TestCard::fillsExactly(const QImage &shot, const QRect &area)
{
    for (int y = 0; y < shot.height(); ++y) {
        for (int x = 0; x < shot.width(); ++x) {
            if (!area.contains(x, y) && !isDark(shot.pixel(x, y))) {
                return false;
            }
        }
    }
    return edgesAreBright(shot, area);
}

bool TestCard::isBlack(const QImage &shot)
{
    return !shot.isNull()
        && std::all_of(reinterpret_cast<const QRgb *>(shot.constBits()),
            reinterpret_cast<const QRgb *>(shot.constBits()) + shot.width() * shot.height(),
            isDark);
}
