#pragma once

struct AVFrame;

// Shows the latest decoded frame. Both operations may be called from any thread.
class ZRVideoView
{
public:
    virtual ~ZRVideoView() = default;
    // Takes a reference of its own to the frame, then asks for a repaint.
    virtual void update(AVFrame *frame) = 0;
    // Drops the frame, then repaints.
    virtual void clear() = 0;
};
