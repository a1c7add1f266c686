#pragma once

#include <QRect>

class QImage;
class QWidget;
struct AVFrame;

// How well the screen shows a frame, in dB.
struct ShownLikeness {
    double (*of)(const QImage &shot, const QRect &area, const AVFrame &frame);
    double enough; // the least that passes

    // Of views that compute each point.
    static const ShownLikeness computed;
    // Of the view that the program uses, as far as the system leaves it to that.
    static const ShownLikeness presented;

    // Whether the screen comes to show the frame in its place to the pixel, and black around it.
    // Tells how well; what is there instead is kept in "failed.png" beside the program.
    bool isReached(const QWidget &view, const AVFrame &frame) const;
};
