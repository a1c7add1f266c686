#pragma once

#include "ZRPlayerQueue.h"
#include "ZRThread.h"

extern "C" {
#include <libavutil/rational.h>
}

#include <memory>
#include <mutex>
#include <string>

class ZRPlayerReader;
class ZRPlayerReaderObserver;
struct AVBitStreamFilter;
struct AVBSFContext;
struct AVCodecContext;
struct AVFormatContext;
struct AVPacket;
struct AVStream;

// One packet as the demuxer gave it, with what the decoder must know of its stream.
struct ZRPlayerPacket {
    enum Type { Video = 1, Audio = 2 };

    ZRPlayerPacket(const AVPacket *source, int codecId, int type, AVRational timeBase);
    ~ZRPlayerPacket();
    ZRPlayerPacket(const ZRPlayerPacket &) = delete;
    ZRPlayerPacket &operator=(const ZRPlayerPacket &) = delete;

    AVPacket *packet; // owned, a reference to the demuxer's buffer
    int codecId; // AVCodecID
    int type;
    AVRational timeBase;
};

class ZRPlayerReaderCommand
{
public:
    enum Type { Play = 0, Pause = 1 };

    explicit ZRPlayerReaderCommand(int type) : type(type) { }
    virtual ~ZRPlayerReaderCommand() = default;

    int type;
};

// Looks at each packet record just before it is queued, on the reader thread.
class ZRPlayerPacketObserver
{
public:
    virtual ~ZRPlayerPacketObserver() = default;
    virtual void onPacket(ZRPlayerPacket *packet) = 0;
};

class ZRPlayerReaderThread : public ZRThread
{
public:
    explicit ZRPlayerReaderThread(ZRPlayerReader *reader) : reader(reader) { }
    void run() override;

private:
    ZRPlayerReader *reader;
};

// The player's first stage: opens a URL through FFmpeg on its own thread, picks the last video and
// the last audio stream, and pumps their packets into two queues which the decoder polls.
// RTSP goes over TCP. Streams are not probed: width, height and formats are known with the first
// decoded frame only.
// Owner: calls stop() before it deletes. One start() and stop() a reader.
// Thread: start, stop, play, pause, seek and the setters belong to the owner's thread; events come
// on the reader thread, which has no event loop: calls queued for what is made there are dropped.
class ZRPlayerReader
{
public:
    enum Event {
        Opened = 0,
        OpenFailed = 1,
        Ended = 2, // by stop() or an error; the stream is closed
        SeekDone = 3,
        SeekFailed = 4, // the queues are empty all the same
        Overflowed = 5, // a live stream had run more than 30 packets ahead: both queues are empty
    };

    ZRPlayerReader();
    // Frees what only this object holds; it neither stops the thread nor closes the stream.
    virtual ~ZRPlayerReader();
    // Makes the thread, which opens the stream. Always 0: the outcome comes as event 0 or 1.
    virtual int start();
    // Breaks off what the thread does, opening included, and waits for its end.
    virtual void stop();
    virtual void play();
    virtual void pause();
    // Seconds of media time. A later call before the first is served takes its place.
    virtual void seek(double seconds);
    // Seconds; -1.0 while unknown or closed.
    virtual double duration();
    virtual bool hasVideo();
    virtual bool hasAudio();
    // The caller's; null when there is none.
    virtual ZRPlayerPacket *popVideoPacket();
    virtual ZRPlayerPacket *popAudioPacket();
    virtual bool isEof();
    // `kind` 0 is the video stream, 1 the audio stream; `codecId` is not used.
    virtual void copyCodecParameters(int kind, int codecId, AVCodecContext *context);
    // Kibibytes per second over the last second or more.
    virtual double bitrate();
    virtual bool isRunning();
    // Throws the demuxer's and the queues' packets away.
    virtual void flush();

    void setObserver(ZRPlayerReaderObserver *observer);
    void setUrl(const std::string &url);
    // A live stream is read unbuffered, and a backlog is discarded in place of played late.
    void setRealtime(bool realtime);
    // Limit on the opening, in seconds; 0 or less is none. It ends with the opening.
    void setTimeout(double timeout);

    // Body of the thread.
    void read();

protected:
    std::string url;
    AVFormatContext *formatContext = nullptr; // owned, null while closed
    bool eof = false;
    bool seekRequested = false;
    double seekTarget = 0.0; // seconds
    double duration_ = -1.0;
    bool realtime = false;
    double openStartTime = 0.0; // seconds of the wall clock; 0 except during the opening
    double timeout = 0.0;
    double bitrate_ = 0.0;
    const AVBitStreamFilter *bitstreamFilter = nullptr;
    AVBSFContext *bitstreamFilterContext = nullptr; // owned; made ready, and no packet goes through
    AVStream *videoStream = nullptr; // of the format context
    std::unique_ptr<ZRPlayerQueue<ZRPlayerPacket>> videoPackets;
    int maxVideoPackets = 30;
    AVStream *audioStream = nullptr;
    std::unique_ptr<ZRPlayerQueue<ZRPlayerPacket>> audioPackets;
    std::unique_ptr<ZRPlayerQueue<ZRPlayerReaderCommand>> commands;
    ZRPlayerReaderThread *thread = nullptr; // owned
    ZRPlayerReaderObserver *observer = nullptr;
    ZRPlayerPacketObserver *packetObserver = nullptr;

private:
    struct RateMeter;

    static int _interrupt(void *opaque);
    int _openStream();
    void _pickStreams();
    void _prepareFilter();
    void _closeStream();
    void _clearQueues();
    void _notify(Event event);
    bool _holdBack();
    void _serveSeek();
    void _serveCommand(bool *paused);
    bool _readPacket(AVPacket *packet, RateMeter *meter);
    void _queuePacket(const AVPacket *packet);

    // The decoder's threads copy from the streams, which end with the context that holds them.
    std::mutex streamLock;
};
