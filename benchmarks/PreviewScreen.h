#pragma once

#include <QRect>
#include <QSize>

// The screen as an onlooker sees it: which window stands there, and which time code the camera's
// picture in it shows. Only the strip with the time code is fetched, so that looking a thousand
// times a second costs little.
class PreviewScreen
{
public:
    PreviewScreen();
    ~PreviewScreen();
    PreviewScreen(const PreviewScreen &) = delete;
    PreviewScreen &operator=(const PreviewScreen &) = delete;

    // How many windows the window manager lists, and the one that came last, or 0.
    int windowCount() const;
    unsigned long lastWindow() const;
    // Invalid when the window is gone.
    QSize sizeOf(unsigned long window) const;

    // From now on readTimeCode() looks at this part of the window.
    void watch(unsigned long window, const QRect &picture);
    void unwatch();
    bool isWatching() const { return window != 0; }
    // Milliseconds of the camera's clock, or -1 when no valid time code is there.
    qint64 readTimeCode();

    // The process that serves the screen.
    qint64 serverProcess() const;

private:
    struct Image;

    struct _XDisplay *display;
    Image *image = nullptr; // owned, null while nothing is watched
    unsigned long window = 0;
    QRect picture; // in the window's pixels
};
