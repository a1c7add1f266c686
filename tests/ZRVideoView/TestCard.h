#pragma once

#include "Frames.h"

#include <QImage>
#include <QRect>
#include <QWidget>

// A known picture with colour bars, a ramp, round and hard shapes and a white edge, as a decoder
// would give it out; shot from the screen and compared with a reference that is scaled and
// converted on another road than the one under test.
namespace TestCard {

// `format` 0 or 12, and the matrix that the frame names for itself.
Frame frame(int width, int height, int format, AVColorSpace space = AVCOL_SPC_UNSPECIFIED);

// The frame at that size: bicubic, accurately rounded, chroma at full size.
QImage reference(const AVFrame &frame, const QSize &size);

// What the screen shows of a widget, or of a part of it.
QImage shot(const QWidget &widget);
QImage shot(const QWidget &widget, const QRect &part);

// Likeness of the shot's area to the frame, in dB: peak signal to noise ratio over all channels.
double likeness(const QImage &shot, const QRect &area, const AVFrame &frame);

// Whether everything outside of the area is black, and the pixels on its four edges, where the
// card is white, are not.
bool fillsExactly(const QImage &shot, const QRect &area);
bool isBlack(const QImage &shot);

}
