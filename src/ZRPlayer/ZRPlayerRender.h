#pragma once

#include "ZRThread.h"

class ZRPcmPlayer;
class ZRPlayerDecoder;
class ZRPlayerFrame;
class ZRPlayerRender;
class ZRPlayerRenderObserver;
class ZRVideoView;

class ZRPlayerRenderVideoThread : public ZRThread
{
public:
    explicit ZRPlayerRenderVideoThread(ZRPlayerRender *render) : render(render) { }
    void run() override;

private:
    ZRPlayerRender *render;
};

class ZRPlayerRenderAudioThread : public ZRThread
{
public:
    explicit ZRPlayerRenderAudioThread(ZRPlayerRender *render) : render(render) { }
    void run() override;

private:
    ZRPlayerRender *render;
};

// The player's last stage: a thread for video and one for audio take frames from the decoder and
// deliver them on time. There is no master clock: each stream keeps its own schedule against the
// wall clock, anchored on its own first frame. Late frames are never dropped.
// Owner: calls stop() before it deletes.
// Thread: events come on the render video thread, before the frame they tell of is delivered:
// 0 first frame since start(), 1 play ended, 2 each further frame.
class ZRPlayerRender
{
public:
    ZRPlayerRender();
    virtual ~ZRPlayerRender();
    // Seconds of media time of the last frame taken, of video where there is video.
    virtual double currentTime();
    // Starts a thread for each kind of stream that the decoder has. Always 0. Not while it runs.
    virtual int start();
    virtual void stop();
    virtual void renderVideoFrame(ZRPlayerFrame *frame) = 0;
    // Below 0: try again.
    virtual int renderAudioFrame(ZRPlayerFrame *frame) = 0;
    virtual bool isRunning();
    // From any thread: the next frame of each stream anchors its schedule anew.
    virtual void flush();
    // 0.0 to 1.0; at 0.01 or less audio is not even decoded.
    virtual void setVolume(double volume);
    virtual double volume();

    void setInput(ZRPlayerDecoder *decoder);
    void setObserver(ZRPlayerRenderObserver *observer);

    // Bodies of the threads.
    void renderVideo();
    void renderAudio();

protected:
    ZRPlayerDecoder *decoder = nullptr;
    ZRPlayerRenderVideoThread *videoThread = nullptr; // owned
    ZRPlayerRenderAudioThread *audioThread = nullptr; // owned
    double videoTime = 0.0; // media time in seconds
    int videoFrameCount = 0;
    double videoStartTime = -1.0; // media time at the anchor, -1.0 while there is none
    double audioTime = 0.0;
    int audioFrameCount = 0;
    double volume_ = 1.0;
    double audioStartTime = -1.0;
    bool audioPaced = false; // true: the audio thread sleeps to its schedule too
    double audioDelay = 0.0; // seconds, added to the audio schedule when it is paced
    ZRPlayerRenderObserver *observer = nullptr;

private:
    void _notify(int type);
};

// Delivers to a video view and to the system's sound output.
class ZRPlayerDefaultRender : public ZRPlayerRender
{
public:
    // Takes ownership of the output.
    explicit ZRPlayerDefaultRender(ZRPcmPlayer *pcmPlayer);
    ~ZRPlayerDefaultRender() override;
    // Opens the sound output first; without one the picture plays all the same.
    int start() override;
    void stop() override;
    void renderVideoFrame(ZRPlayerFrame *frame) override;
    int renderAudioFrame(ZRPlayerFrame *frame) override;
    // Goes to the sound output and nowhere else: audio is decoded at any volume.
    void setVolume(double volume) override;

    void setVideoView(ZRVideoView *view);

protected:
    ZRVideoView *videoView = nullptr;
    ZRPcmPlayer *pcmPlayer; // owned
};
