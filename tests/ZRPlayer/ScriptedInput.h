#pragma once

#include "CallLog.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <QMap>
#include <QMutex>

#include <atomic>
#include <deque>
#include <vector>

// The demuxer as the program sees it, for test programs that wrap its calls (tests/ZRPlayer/
// CMakeLists.txt). The URL "scripted" opens an input that the test makes up: its streams, and its
// packets one by one; where they end it waits, as a live source does, until it is interrupted. Any
// other URL opens as ever. Either way the calls are logged. One at a time.
class ScriptedInput
{
public:
    struct Stream {
        AVMediaType type;
        AVCodecID codecId;
        int64_t duration = AV_NOPTS_VALUE;
        AVRational timeBase = {1, 1000};
    };
    struct Opening {
        QByteArray url;
        int flags = 0;
        AVIOInterruptCB interrupt = {nullptr, nullptr};
        bool formatGiven = false;
        QMap<QByteArray, QByteArray> options;
    };

    ScriptedInput();
    ~ScriptedInput();
    ScriptedInput(const ScriptedInput &) = delete;
    ScriptedInput &operator=(const ScriptedInput &) = delete;

    // Of the next opening.
    std::vector<Stream> streams;
    int64_t duration = AV_NOPTS_VALUE;
    int openResult = 0;
    int seekResult = 0;
    QByteArray failingCall; // "av_bsf_init", say

    std::atomic<double> clock{0.0}; // seconds of the wall clock; 0: as it is

    // The next packets that can be read. Their pts counts up over all.
    void addPackets(int stream, int count = 1, int size = 100);
    // Then av_read_frame gives this, once.
    void addResult(int result);
    // Packets and results that were not read yet.
    int unread() const;
    // True when all was read, and what was read is dealt with: more is asked for.
    bool isIdle() const;

    Opening lastOpening() const;
    // "av_read_frame", "avformat_seek_file -1 5 5 5 8" ...
    CallLog calls;

    // What the wrapped calls do.
    int open(AVFormatContext **context, const char *url, const AVInputFormat *format,
        AVDictionary **options);
    bool isOpened(const AVFormatContext *context) const { return context && context == opened; }
    int read(AVPacket *packet);
    bool fails(const char *call);

private:
    struct Step {
        int result;
        int stream;
        int size;
        int64_t pts;
    };
    bool take(Step *step);

    mutable QMutex mutex;
    std::deque<Step> steps;
    bool idle = false;
    int64_t nextPts = 0;
    Opening opening;
    AVFormatContext *opened = nullptr;
};
