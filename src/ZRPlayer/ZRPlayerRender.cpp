#include "ZRPlayerRender.h"

#include "ZRPcmPlayer.h"
#include "ZRPlayerDecoder.h"
#include "ZRPlayerFrame.h"
#include "ZRPlayerObserver.h"
#include "ZRPlayerThreads.h"
#include "ZRVideoView.h"

#include <QtDebug>

#include <memory>

namespace {

constexpr double longestInterval = 1.0; // seconds of media time between two frames
constexpr double longestSchedule = 3600.0; // seconds, then the clocks may have drifted apart

void waitUntil(double due, const ZRThread *thread)
{
    while (!thread->isStopped() && due > 0 && ZRThread::currentSeconds() < due)
        ZRThread::sleep(1);
}

// One stream's place on the wall clock. All times are seconds.
struct Schedule {
    double &startTime; // media time at the anchor, below 0 for none; a flush resets it
    double anchor; // wall-clock time at which the frame of startTime was taken
    const char *lastName; // how the log calls the time of the last frame

    // When the frame should be up; 0 when there is nothing to wait for.
    double due(double time, double lastTime, int frameCount);

private:
    void anchorAt(double time, double now);
};

void Schedule::anchorAt(double time, double now)
{
    startTime = time;
    anchor = now;
}

double Schedule::due(double time, double lastTime, int frameCount)
{
    const double now = ZRThread::currentSeconds();
    if (startTime < 0 && time >= 0)
        anchorAt(time, now);
    // A frame after one of time 0.0 is not waited for either.
    if (frameCount <= 0 || lastTime <= 0 || time <= 0)
        return 0;

    const double interval = time - lastTime;
    if (interval > longestInterval) {
        qDebug("interval = %lf, frame->time = %lf, %s = %lf", interval, time, lastName, lastTime);
        anchorAt(time, now);
    } else if (startTime > 0 && anchor > 0 && now - anchor > longestSchedule) {
        qDebug("reset display time (%lf) - (%lf)", anchor, now);
        anchorAt(time, now);
    }
    return time + anchor - startTime;
}

} // namespace

void ZRPlayerRenderVideoThread::run()
{
    render->renderVideo();
}

void ZRPlayerRenderAudioThread::run()
{
    render->renderAudio();
}

ZRPlayerRender::ZRPlayerRender() = default;

ZRPlayerRender::~ZRPlayerRender() = default;

double ZRPlayerRender::currentTime()
{
    if (videoThread)
        return videoTime;
    return audioThread ? audioTime : 0.0;
}

int ZRPlayerRender::start()
{
    videoTime = 0.0;
    videoFrameCount = 0;
    audioTime = 0.0;
    audioFrameCount = 0;
    if (decoder->hasVideo())
        startThread(videoThread, this, "ZRPlayerRenderVideoThread");
    if (decoder->hasAudio())
        startThread(audioThread, this, "ZRPlayerRenderAudioThread");
    return 0;
}

void ZRPlayerRender::stop()
{
    stopThread(audioThread);
    stopThread(videoThread);
}

bool ZRPlayerRender::isRunning()
{
    return (videoThread && videoThread->isRunning()) || (audioThread && audioThread->isRunning());
}

void ZRPlayerRender::flush()
{
    videoStartTime = -1.0;
    audioStartTime = -1.0;
}

void ZRPlayerRender::setVolume(double volume)
{
    volume_ = volume;
    if (decoder)
        decoder->setAudioEnabled(volume > 0.01);
}

double ZRPlayerRender::volume()
{
    return volume_;
}

void ZRPlayerRender::setInput(ZRPlayerDecoder *decoder)
{
    this->decoder = decoder;
}

void ZRPlayerRender::setObserver(ZRPlayerRenderObserver *observer)
{
    this->observer = observer;
}

void ZRPlayerRender::renderVideo()
{
    videoTime = -1.0;
    videoFrameCount = 0;
    videoStartTime = -1.0;
    Schedule schedule{videoStartTime, ZRThread::currentSeconds(), "videoTime"};
    bool ended = false;
    while (goesOn(videoThread)) {
        std::unique_ptr<ZRPlayerFrame> frame(decoder->popVideoFrame());
        if (!frame) {
            if (decoder->isVideoEof() && !ended) {
                qDebug("call play ended");
                _notify(1);
                ended = true;
            }
            ZRThread::sleep(1);
            continue;
        }
        ended = false;
        const double time = frame->time();
        const double due = schedule.due(time, videoTime, videoFrameCount);
        videoTime = time;
        _notify(videoFrameCount == 0 ? 0 : 2);
        ++videoFrameCount;
        renderVideoFrame(frame.get());
        frame.reset();
        waitUntil(due, videoThread); // so it is the next frame that comes on time
    }
}

void ZRPlayerRender::renderAudio()
{
    audioStartTime = -1.0;
    Schedule schedule{audioStartTime, -1.0, "audioTime"};
    while (goesOn(audioThread)) {
        std::unique_ptr<ZRPlayerFrame> frame(decoder->popAudioFrame());
        if (!frame) {
            if (!decoder->isRunning())
                return;
            ZRThread::sleep(1);
            continue;
        }
        const double time = frame->time();
        const double due = schedule.due(time, audioTime, audioFrameCount);
        audioTime = time;
        ++audioFrameCount;
        while (!audioThread->isStopped() && renderAudioFrame(frame.get()) < 0)
            ZRThread::sleep(1);
        frame.reset();
        if (audioPaced && due > 0)
            waitUntil(due + audioDelay, audioThread);
    }
}

void ZRPlayerRender::_notify(int type)
{
    // Read once: the player clears it while the threads still run.
    if (ZRPlayerRenderObserver *const target = observer)
        target->onRenderNotify(this, type);
}

ZRPlayerDefaultRender::ZRPlayerDefaultRender(ZRPcmPlayer *pcmPlayer) : pcmPlayer(pcmPlayer) { }

ZRPlayerDefaultRender::~ZRPlayerDefaultRender()
{
    delete pcmPlayer;
}

int ZRPlayerDefaultRender::start()
{
    pcmPlayer->start();
    return ZRPlayerRender::start();
}

void ZRPlayerDefaultRender::stop()
{
    ZRPlayerRender::stop();
    pcmPlayer->stop();
}

void ZRPlayerDefaultRender::renderVideoFrame(ZRPlayerFrame *frame)
{
    if (ZRVideoView *const target = videoView)
        target->update(frame->frame);
}

int ZRPlayerDefaultRender::renderAudioFrame(ZRPlayerFrame *frame)
{
    pcmPlayer->write(frame->frame);
    return 0;
}

void ZRPlayerDefaultRender::setVolume(double volume)
{
    pcmPlayer->setVolume(static_cast<float>(volume));
}

void ZRPlayerDefaultRender::setVideoView(ZRVideoView *view)
{
    videoView = view;
}
