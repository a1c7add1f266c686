#pragma once

#include "CallLog.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <QHash>
#include <QMutex>
#include <QSet>

#include <deque>
#include <vector>

// The codecs as the program sees them, for test programs that wrap their calls (tests/ZRPlayer/
// CMakeLists.txt): logged, and answered by the test where it says so. One at a time.
class CodecCalls
{
public:
    static constexpr int real = 1; // an answer: let the call through
    struct Opening {
        AVPixelFormat (*getFormat)(AVCodecContext *, const AVPixelFormat *) = nullptr;
        void *opaque = nullptr;
        bool hardware = false;
        bool optionsGiven = false;
        int threadCount = -1;
        int flags = -1;
        int flags2 = -1;
    };

    CodecCalls();
    ~CodecCalls();
    CodecCalls(const CodecCalls &) = delete;
    CodecCalls &operator=(const CodecCalls &) = delete;

    // The next results of a call by its name in the log, "video send". A "receive" with 0 gives a
    // small gray frame, whose pts counts up from 1000.
    void answer(const QString &call, const std::deque<int> &results);
    void answerForEver(const QString &call, int result);
    int takeAnswer(const QString &call);
    // What av_hwdevice_ctx_create makes; null: asks the system.
    AVBufferRef *hardwareDevice = nullptr;
    std::vector<AVBufferRef *> madeDevices; // the references that it gave
    // What the codec says of hardware, a row each; empty: as ever.
    std::vector<AVCodecHWConfig> hardwareConfigs;
    int frameFlags = 0; // of the frames that answers give

    Opening lastOpening() const;
    void setOpening(const Opening &opening);
    // Data of the buffer in the frame that was received last.
    const void *lastReceived() const;
    void receive(AVFrame *frame);
    void noteReceived(const AVFrame *frame);

    // "video send 5", "video send NULL", "audio receive", "video flush", "video open2 27",
    // "audio close", "video free", "hwdevice 4", "sleep 1" ...
    CallLog log;

private:
    mutable QMutex mutex;
    QHash<QString, std::deque<int>> answers;
    QSet<QString> endless; // calls with answers that repeat for ever
    Opening opening;
    const void *received = nullptr;
    int64_t nextPts = 1000;
};
