#include "ShownLikeness.h"

#include "TestCard.h"

// The view computes each point.
const double ShownLikeness::enough = 35;

double ShownLikeness::of(const QImage &shot, const QRect &area, const AVFrame &frame)
{
    return TestCard::likeness(shot, area, frame);
}
