#pragma once

#include <QPixmap>

// The images of the program by path and width: each file is read once and scaled once for every
// width asked for. GUI thread only. Nothing is ever dropped, a file that couldn't be read neither.
// Lengths are device-independent pixels. On a dense screen "name@2x.png", where there is one,
// stands in for "name.png"; scaled copies are as dense as their image.
class ZRPixmapCache
{
public:
    // A width of 0 means the file's own. Null for an empty path or an unreadable file.
    static QPixmap pixmap(const QString &path, int width);
    static QSize size(const QPixmap &pixmap);
};
