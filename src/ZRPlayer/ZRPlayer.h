#pragma once

#include "ZRPlayerObserver.h"

#include <string>

class ZRPlayerDecoder;
class ZRPlayerDefaultRender;
class ZRVideoView;

// Plays one network stream or file: owns a reader, a decoder and a render and wires them into a
// pipeline of five threads, each of which polls its input every millisecond.
// Owner: calls close() before it deletes. One player serves any number of open() and close().
// Thread: all operations belong to the owner's thread. Events come on the reader thread (0, 1)
// and on the render video thread (2, 3, 4):
// 0 opened, 1 opening failed, 2 first picture is about to be shown, 3 the end is reached and all
// pictures are shown, 4 a further picture, with position and duration in seconds.
// A connection lost later gives no event and is not made anew: the picture stands until close().
class ZRPlayer : public ZRPlayerReaderObserver, public ZRPlayerRenderObserver
{
public:
    ZRPlayer();
    ~ZRPlayer() override;
    void onReaderNotify(ZRPlayerReader *reader, int type) override;
    // Kibibytes per second as read; 0.0 when closed.
    virtual double bitrate();
    // 0 at once; whether the stream opens comes as event 0 or 1.
    virtual int open();
    // Blocks until all threads have ended.
    virtual void close();
    virtual bool isOpened();
    // Only after pause() on an opened stream: it doesn't look at what runs already.
    virtual int play();
    // Ends both render threads and the sound output; play() makes them again.
    virtual int pause();
    virtual bool isRendering();
    virtual void seek(double seconds);
    virtual void flush();
    // Seconds; 0.0 when closed, and the duration is -1.0 while unknown.
    virtual double currentTime();
    virtual double duration();
    virtual int reserved1(); // 0
    virtual int reserved2(); // 0
    virtual bool reserved3(); // false
    // What open() builds the pipeline of; the player owns it.
    virtual ZRPlayerReader *createReader();
    virtual ZRPlayerDecoder *createDecoder();
    virtual ZRPlayerRender *createRender();

    void onRenderNotify(ZRPlayerRender *render, int type) override;

    // All hold from the next open(); realtime, view, volume and hardware type reach an open stream
    // too.
    void setRealtime(bool realtime);
    void setHardwareType(int type); // AVHWDeviceType, 0 for none
    void setVideoView(ZRVideoView *view);
    void setVolume(double volume); // 0.0 is mute
    void setObserver(ZRPlayerObserver *observer);
    int open(const std::string &url);

protected:
    std::string url; // bytes as the caller gave them
    bool realtime = false;
    double timeout = 10.0; // seconds, limit on the opening
    ZRPlayerReader *reader = nullptr; // owned, null when closed
    int hardwareType = 0;
    ZRPlayerDecoder *decoder = nullptr; // owned, null when closed
    ZRVideoView *videoView = nullptr;
    double volume = 1.0;
    ZRPlayerRender *render = nullptr; // owned, null when closed
    ZRPlayerDefaultRender *defaultRender = nullptr; // `render`, when createRender() made it
    ZRPlayerObserver *observer = nullptr;

private:
    void _notify(int type, double current = 0.0, double total = 0.0);
};
