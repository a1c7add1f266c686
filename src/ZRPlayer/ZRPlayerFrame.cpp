#include "ZRPlayerFrame.h"

extern "C" {
#include <libavutil/frame.h>
}

ZRPlayerFrame::ZRPlayerFrame(const AVFrame *source, AVRational timeBase) :
    frame(av_frame_alloc()),
    timeBase(timeBase)
{
    av_frame_ref(frame, source);
}

ZRPlayerFrame::~ZRPlayerFrame()
{
    timeBase = {0, 1};
    av_frame_unref(frame);
    av_frame_free(&frame);
}

double ZRPlayerFrame::time() const
{
    return av_q2d(timeBase) * static_cast<double>(frame->pts);
}
