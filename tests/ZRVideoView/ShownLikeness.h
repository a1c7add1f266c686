#pragma once

#include <QRect>

class QImage;
struct AVFrame;

// How well the screen shows a frame, in dB, as far as the system leaves that to a video view.
namespace ShownLikeness {

// The least that passes.
extern const double enough;
double of(const QImage &shot, const QRect &area, const AVFrame &frame);

}
