#pragma once

#include <QString>

class QPainter;

// Draws `text`, as UTF-8, as a QR code (ISO/IEC 18004) of the highest error correction into the
// label at (x, y) of `width` by `height`. `size` is the side of the code; all are device pixels.
// `scale`, millimetres per device pixel, makes each module narrower than its place, so that the
// painter's pen adds to the dark area. False, with nothing drawn, when the text can't be encoded.
bool drawQRCode(QPainter *painter, const QString &text, int x, int y, int width, int height,
    int size, double scale);
