#pragma once

extern "C" {
#include <libavutil/rational.h>
}

struct AVFrame;

// One decoded picture or stretch of sound on its way from decoder to render.
class ZRPlayerFrame
{
public:
    // Takes a reference of its own to the frame's buffers; nothing is copied.
    ZRPlayerFrame(const AVFrame *source, AVRational timeBase);
    virtual ~ZRPlayerFrame();
    ZRPlayerFrame(const ZRPlayerFrame &) = delete;
    ZRPlayerFrame &operator=(const ZRPlayerFrame &) = delete;

    // Media time in seconds; far below 0 when the frame has no timestamp.
    double time() const;

    AVFrame *frame; // owned
    AVRational timeBase; // of the packet that the frame came from
};
