#pragma once

struct ZRYuvPicture;

// Puts pictures on a window of Qt's, over the whole of it.
// Thread: GUI. The painter may go at any time; then the window is as it was before.
class ZRVideoPainter
{
public:
    virtual ~ZRVideoPainter() = default;
    // Shows the picture at once, or black when it is null. The picture has to stay as it is until
    // the next call.
    virtual void show(const ZRYuvPicture *picture) = 0;
};
