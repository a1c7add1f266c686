#pragma once

#include <cstdint>

// The time at which a picture was made, as black and white cells in a strip along its upper edge:
// whoever finds the picture on a screen can tell its age. The cells are wide enough to be read
// after compression and after scaling of the whole picture down to 400 pixels of width.
// Pictures are 8-bit grey values, rows `stride` bytes apart. No state, any thread.
namespace FleetTimeCode {

constexpr int64_t end = int64_t(1) << 44; // the first time that has no code, in milliseconds

struct Strip {
    int x, y, width, height;
};

// Where the strip is in a picture of that size. It begins in the upper left corner.
Strip strip(int width, int height);

// Milliseconds since the epoch, 0 to end - 1. Nothing outside of the strip is written.
void write(uint8_t *luma, int stride, int width, int height, int64_t ms);

// The time in the strip, -1 when there is none or it can't be told for certain. `width` and
// `height` are those of the whole picture, but only the strip is looked at, so `luma` may hold just
// it.
int64_t read(const uint8_t *luma, int stride, int width, int height);

}
