#pragma once

#include <QRect>

// Where a picture lies in a view, as large as it fits with its proportions kept; in integers,
// rounded down. The whole view when one of the sizes is 0.
inline QRect zrLetterbox(const QSize &video, const QSize &view)
{
    const int viewWidth = view.width();
    const int viewHeight = view.height();
    if (video.width() == 0 || video.height() == 0 || viewWidth == 0 || viewHeight == 0) {
        return {0, 0, viewWidth, viewHeight};
    }
    const qint64 a = qint64(video.width()) * viewHeight;
    const qint64 b = qint64(video.height()) * viewWidth;
    if (a < b) {
        const int width = int(a / video.height());
        return {(viewWidth - width) / 2, 0, width, viewHeight};
    }
    const int height = int(b / video.width());
    return {0, (viewHeight - height) / 2, viewWidth, height};
}
