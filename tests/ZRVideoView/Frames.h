#pragma once

#include <QtGlobal>

#include <algorithm>
#include <memory>

extern "C" {
#include <libavutil/frame.h>
}

struct FrameDeleter {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FrameDeleter>;

// A frame without planes.
inline Frame bareFrame(int width, int height, int format)
{
    Frame frame(av_frame_alloc());
    frame->width = width;
    frame->height = height;
    frame->format = format;
    return frame;
}

// A frame of one grey.
inline Frame greyFrame(int width, int height, int format = AV_PIX_FMT_YUV420P, int grey = 128)
{
    Frame frame = bareFrame(width, height, format);
    if (av_frame_get_buffer(frame.get(), 0) < 0) {
        qFatal("no memory for a frame");
    }
    const AVBufferRef &buffer = *frame->buf[0]; // of all planes, one behind the other
    std::fill_n(buffer.data, buffer.size, 128);
    std::fill_n(frame->data[0], frame->linesize[0] * height, grey);
    return frame;
}
