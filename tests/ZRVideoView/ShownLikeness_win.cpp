#include "ShownLikeness.h"

#include "Frames.h"
#include "TestCard.h"

#include <algorithm>

namespace {

// YV12 doesn't tell the range of its values, and drivers differ in what they take it for.
double likeness(const QImage &shot, const QRect &area, const AVFrame &frame)
{
    const Frame other(av_frame_clone(&frame));
    other->format = frame.format == AV_PIX_FMT_YUV420P ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P;
    return std::max(TestCard::likeness(shot, area, frame), TestCard::likeness(shot, area, *other));
}

}

// The driver scales.
const ShownLikeness ShownLikeness::presented = {likeness, 30};
