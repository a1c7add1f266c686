#pragma once

#include "ZRPlayerFrame.h"
#include "ZRPlayerQueue.h"
#include "ZRThread.h"

extern "C" {
#include <libavutil/rational.h>
}

#include <mutex>

class ZRPlayerDecoder;
class ZRPlayerReader;
struct AVBufferRef;
struct AVCodec;
struct AVCodecContext;
struct AVFrame;
struct ZRPlayerPacket;

class ZRPlayerDecoderVideoThread : public ZRThread
{
public:
    explicit ZRPlayerDecoderVideoThread(ZRPlayerDecoder *decoder) : decoder(decoder) { }
    void run() override;

private:
    ZRPlayerDecoder *decoder;
};

class ZRPlayerDecoderAudioThread : public ZRThread
{
public:
    explicit ZRPlayerDecoderAudioThread(ZRPlayerDecoder *decoder) : decoder(decoder) { }
    void run() override;

private:
    ZRPlayerDecoder *decoder;
};

// What a codec context with hardware decoding carries on its `opaque` pointer; from malloc.
struct ZRHardwareContext {
    AVBufferRef *device; // the hardware device context
    int format; // AVPixelFormat of the hardware's surfaces, or -1
};

// The player's second stage: a thread for video and one for audio take packets from the reader,
// decode them and hold about two frames each for the render. Codecs are set up by the first packet
// and again when the packets' codec changes. After a flush or an error video waits for a key
// frame. A codec that can't be had ends the thread of its stream and no other.
// Owner: stops the render, then calls stop(), then deletes.
class ZRPlayerDecoder
{
public:
    ZRPlayerDecoder();
    virtual ~ZRPlayerDecoder();
    // Starts a thread for each kind of stream that the reader has. Always 0.
    virtual int start();
    virtual void stop();
    virtual void resume(); // empty
    virtual void pause(); // empty
    // AVHWDeviceType, 0 for none; holds from the next set-up of the codec. What can't be had
    // becomes software decoding.
    virtual void setHardwareType(int type);
    virtual bool isRunning();
    // From any thread: the two threads carry it out in their next pass.
    virtual void flush();

    void setInput(ZRPlayerReader *reader);
    // The caller's; null when there is none.
    ZRPlayerFrame *popVideoFrame();
    ZRPlayerFrame *popAudioFrame();
    bool hasVideo();
    bool hasAudio();
    bool isVideoEof();
    // Off: audio packets are thrown away undecoded.
    void setAudioEnabled(bool enabled);

    // Bodies of the threads.
    void decodeVideo();
    void decodeAudio();

protected:
    ZRPlayerReader *reader = nullptr;
    ZRPlayerDecoderVideoThread *videoThread = nullptr; // owned
    ZRPlayerDecoderAudioThread *audioThread = nullptr; // owned
    bool videoEof = false; // the reader is at its end and its video queue is empty
    int hardwareType = 0;
    int videoCodecId = 0; // 0 while no codec is open
    const AVCodec *videoCodec = nullptr;
    AVCodecContext *videoContext = nullptr; // owned
    AVFrame *videoFrame = nullptr; // owned
    AVRational videoTimeBase = {1, 30};
    ZRPlayerQueue<ZRPlayerFrame> *videoFrames = nullptr; // owned, null while no codec is open
    bool audioEof = false;
    int audioCodecId = 0;
    const AVCodec *audioCodec = nullptr;
    AVCodecContext *audioContext = nullptr; // owned
    AVFrame *audioFrame = nullptr; // owned
    AVRational audioTimeBase = {1, 30};
    ZRPlayerQueue<ZRPlayerFrame> *audioFrames = nullptr; // owned
    bool keyFrameSeen = false; // false: video packets are thrown away until a key frame comes
    bool audioEnabled = true;
    int maxAudioFrames = 2; // below 1: no limit
    bool flushVideo = false;
    bool flushAudio = false;

private:
    // Where one kind of stream has its fields and steps.
    struct Path;
    static const Path videoPath;
    static const Path audioPath;

    void _decode(const Path &path);
    bool _goesOn(const Path &path) const;
    bool _isFull(const Path &path) const;
    void _serveFlush(const Path &path);
    void _drain(const Path &path);
    bool _decodePacket(const Path &path, const ZRPlayerPacket &record);
    bool _takes(const Path &path, const ZRPlayerPacket &record);

    void _sendVideoPacket(const ZRPlayerPacket *record, AVFrame *frame);
    void _sendAudioPacket(const ZRPlayerPacket *record, AVFrame *frame);
    int _sendPacket(const Path &path, const ZRPlayerPacket *record, AVFrame *frame);
    void _recvVideoFrame(AVFrame *frame, AVRational timeBase);
    void _recvAudioFrame(AVFrame *frame, AVRational timeBase);
    int _receiveFrame(const Path &path, AVFrame *frame, AVRational timeBase);
    void _giveUpFrame(const Path &path, int result);
    void _flushCodec(const Path &path);

    int _initVideoCodec(int codecId);
    int _initAudioCodec(int codecId);
    int _allocCodec(const Path &path, int codecId);
    int _openCodec(const Path &path);
    void _setUpHardware();
    void _closeCodec(const Path &path);
    void _replaceFrames(const Path &path, ZRPlayerQueue<ZRPlayerFrame> *queue);
    ZRPlayerFrame *_popFrame(const Path &path);

    // A codec that is set up anew takes its frame queue away while the render polls it.
    std::mutex framesLock;
};
