#include "ZRYuvPicture.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <algorithm>
#include <cstdlib>

namespace {

struct ColourSpace {
    AVColorSpace space;
    float kr, kb;
};

constexpr ColourSpace colourSpaces[] = {
    {AVCOL_SPC_BT709, 0.2126f, 0.0722f},
    {AVCOL_SPC_SMPTE240M, 0.212f, 0.087f},
    {AVCOL_SPC_BT2020_NCL, 0.2627f, 0.0593f},
};

}

ZRVideoColours ZRVideoColours::of(const AVFrame &frame)
{
    ZRVideoColours colours;
    for (const ColourSpace &row : colourSpaces) {
        if (row.space == frame.colorspace) {
            colours.kr = row.kr;
            colours.kb = row.kb;
        }
    }
    colours.fullRange =
        frame.format == AV_PIX_FMT_YUVJ420P || frame.color_range == AVCOL_RANGE_JPEG;
    return colours;
}

ZRVideoColours::Factors ZRVideoColours::factors() const
{
    const float y = fullRange ? 1.0f : 255.0f / 219.0f;
    const float chroma = fullRange ? 2.0f : 2.0f * 255.0f / 224.0f;
    const float kg = 1.0f - kr - kb;
    const float rv = (1.0f - kr) * chroma;
    const float bu = (1.0f - kb) * chroma;
    return {y, rv, -bu * kb / kg, -rv * kr / kg, bu};
}

bool ZRYuvPicture::isIn(const AVFrame &frame)
{
    if (frame.format != AV_PIX_FMT_YUV420P && frame.format != AV_PIX_FMT_YUVJ420P) {
        return false;
    }
    if (frame.width < 1 || frame.height < 1) {
        return false;
    }
    const ZRYuvPicture picture = of(frame);
    for (int plane = 0; plane < 3; ++plane) {
        const int stride = picture.strides[plane];
        const int length = picture.rowLength(plane);
        const int rows = picture.rows(plane);
        if (std::abs(qint64(stride)) < length
            || rowsInside(frame, plane, stride, length, rows) < rows) {
            return false;
        }
    }
    return true;
}

ZRYuvPicture ZRYuvPicture::of(const AVFrame &frame)
{
    ZRYuvPicture picture;
    for (int plane = 0; plane < 3; ++plane) {
        picture.planes[plane] = frame.data[plane];
        picture.strides[plane] = frame.linesize[plane];
    }
    picture.width = frame.width;
    picture.height = frame.height;
    picture.colours = ZRVideoColours::of(frame);
    return picture;
}

int ZRYuvPicture::rowsInside(const AVFrame &frame, int plane, int stride, int length, int rows)
{
    const AVBufferRef *buffer = av_frame_get_plane_buffer(const_cast<AVFrame *>(&frame), plane);
    if (!buffer || length < 1 || stride == 0) {
        return 0;
    }
    const qint64 before = frame.data[plane] - buffer->data;
    const qint64 behind = qint64(buffer->size) - before - length; // of the first row
    if (behind < 0) {
        return 0;
    }
    const qint64 further = stride > 0 ? behind / stride : before / -qint64(stride);
    return int(std::min<qint64>(rows, further + 1));
}
