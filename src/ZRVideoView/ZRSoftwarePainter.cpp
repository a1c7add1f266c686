#include "ZRSoftwarePainter.h"

#include <QImage>
#include <QPaintEngine>
#include <QPaintEvent>
#include <QPainter>
#include <QWidget>

extern "C" {
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cmath>

// A function so marked is compiled for processors with AVX2 too and chosen at start.
#if defined(__x86_64__) && defined(__ELF__) && defined(__GLIBC__)
#define VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define VECTOR_CLONES
#endif

namespace {

// The factors of a conversion in 16-bit integers: what is multiplied is shifted up so far that the
// upper half of the product has `fraction` bits behind the point.
struct FixedFactors {
    explicit FixedFactors(const ZRVideoColours &colours) : black(short(colours.black()))
    {
        const ZRVideoColours::Factors factors = colours.factors();
        y = fixed(factors.y, lumaShift);
        rv = fixed(factors.rv, chromaShift);
        gu = fixed(factors.gu, chromaShift);
        gv = fixed(factors.gv, chromaShift);
        bu = fixed(factors.bu, chromaShift);
    }

    static short fixed(float factor, int shift)
    {
        return short(std::lround(factor * float(1 << (16 + fraction - shift))));
    }

    static constexpr int fraction = 4;
    static constexpr int lumaShift = 7;
    static constexpr int chromaShift = 8;

    short black, y, rv, gu, gv, bu;
};

inline short upperHalf(short a, short b)
{
    return short((int(a) * b) >> 16);
}

inline short clamped(short value)
{
    const short whole = short(value >> FixedFactors::fraction);
    return std::min<short>(std::max<short>(whole, 0), 255);
}

// The image that the painter draws into, when its pixels can be written as they are; else null.
QImage *pixelsUnder(const QPainter &painter)
{
    if (painter.deviceTransform().type() > QTransform::TxTranslate || painter.hasClipping()) {
        return nullptr;
    }
    auto *image = dynamic_cast<QImage *>(painter.paintEngine()->paintDevice());
    const bool fits = image
        && (image->format() == QImage::Format_RGB32
            || image->format() == QImage::Format_ARGB32_Premultiplied);
    return fits ? image : nullptr;
}

// One row to pixels of QImage::Format_RGB32. In 16-bit steps throughout, which compilers turn into
// vector code.
VECTOR_CLONES
void convertRow(const quint8 *__restrict y, const quint8 *__restrict u, const quint8 *__restrict v,
    quint16 *__restrict pixels, int width, const FixedFactors factors)
{
    constexpr int low = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? 0 : 1; // half with green and blue
    constexpr int lumaUnit = 1 << FixedFactors::lumaShift;
    constexpr int chromaUnit = 1 << FixedFactors::chromaShift;
    constexpr short rounding = 1 << (FixedFactors::fraction - 1);
    for (int x = 0; x < width; ++x) {
        const short luma = short((y[x] - factors.black) * lumaUnit);
        const short blueness = short((u[x] - 128) * chromaUnit);
        const short redness = short((v[x] - 128) * chromaUnit);
        const short grey = short(upperHalf(luma, factors.y) + rounding);
        const short red = clamped(short(grey + upperHalf(redness, factors.rv)));
        const short green =
            clamped(short(grey + upperHalf(blueness, factors.gu) + upperHalf(redness, factors.gv)));
        const short blue = clamped(short(grey + upperHalf(blueness, factors.bu)));
        pixels[2 * x + low] = quint16(green << 8 | blue);
        pixels[2 * x + 1 - low] = quint16(0xff00 | red);
    }
}

}

ZRSoftwarePainter::ZRSoftwarePainter(QWidget *window) : window(window), scaled(av_frame_alloc())
{
    window->installEventFilter(this);
    window->setAttribute(Qt::WA_OpaquePaintEvent);
}

ZRSoftwarePainter::~ZRSoftwarePainter()
{
    window->setAttribute(Qt::WA_OpaquePaintEvent, false);
    window->update();
    sws_freeContext(scaler);
    av_frame_free(&scaled);
}

void ZRSoftwarePainter::show(const ZRYuvPicture *picture)
{
    shown = picture != nullptr;
    if (shown) {
        this->picture = *picture;
    }
    stale = true;
    window->repaint(); // and not update(): the picture goes out now
}

bool ZRSoftwarePainter::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Paint) {
        return QObject::eventFilter(watched, event);
    }
    paint(static_cast<QPaintEvent *>(event)->region());
    return true;
}

void ZRSoftwarePainter::paint(const QRegion &region)
{
    QPainter painter(window);
    const qreal ratio = window->devicePixelRatioF();
    const QSize size = window->size() * ratio;
    if (!shown || !scale(size)) {
        painter.fillRect(window->rect(), Qt::black);
        return;
    }
    if (QImage *pixels = pixelsUnder(painter)) {
        const QPointF offset = painter.deviceTransform().map(QPointF());
        for (const QRect &area : region) {
            convert(area, pixels, offset.toPoint());
        }
        return;
    }
    QImage image(size, QImage::Format_RGB32);
    convert(image.rect(), &image, QPoint());
    image.setDevicePixelRatio(ratio);
    painter.drawImage(0, 0, image);
}

// Luma and chroma alike to the window's size. Faster than the scaler's own way to RGB, and each
// pixel gets a chroma value of its own.
bool ZRSoftwarePainter::scale(const QSize &size)
{
    const bool resized = size != QSize(scaled->width, scaled->height);
    if (!stale && !resized) {
        return true;
    }
    if (resized) {
        av_frame_unref(scaled);
        scaled->format = AV_PIX_FMT_YUV444P;
        scaled->width = size.width();
        scaled->height = size.height();
        if (av_frame_get_buffer(scaled, 64) < 0) {
            av_frame_unref(scaled);
            return false;
        }
    }
    scaler = sws_getCachedContext(scaler, picture.width, picture.height, AV_PIX_FMT_YUV420P,
        size.width(), size.height(), AV_PIX_FMT_YUV444P, SWS_BILINEAR, nullptr, nullptr, nullptr);
    stale = !scaler
        || sws_scale(scaler, picture.planes, picture.strides, 0, picture.height, scaled->data,
               scaled->linesize)
            <= 0;
    return !stale;
}

// An area of the scaled picture to the same area of the pixels, moved by the offset.
void ZRSoftwarePainter::convert(const QRect &area, QImage *pixels, const QPoint &offset) const
{
    const QRect scaledArea(0, 0, scaled->width, scaled->height);
    const QRect inside = area & scaledArea & pixels->rect().translated(-offset);
    const FixedFactors factors(picture.colours);
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        const quint8 *planes[3];
        for (int plane = 0; plane < 3; ++plane) {
            planes[plane] =
                scaled->data[plane] + qptrdiff(y) * scaled->linesize[plane] + inside.left();
        }
        auto *row = reinterpret_cast<quint16 *>(pixels->scanLine(y + offset.y()));
        convertRow(planes[0], planes[1], planes[2], row + 2 * (inside.left() + offset.x()),
            inside.width(), factors);
    }
}
