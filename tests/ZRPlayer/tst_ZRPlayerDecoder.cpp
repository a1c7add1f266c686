#include "ZRPlayerDecoder.h"

#include "CodecCalls.h"
#include "LogCatcher.h"
#include "MediaClip.h"
#include "RtspPeer.h"
#include "StreamFacts.h"
#include "ZRPlayerError.h"
#include "ZRPlayerObserver.h"
#include "ZRPlayerReader.h"

extern "C" {
#include <libavutil/hwcontext.h>
}

#include <QtTest>

#include <atomic>
#include <cstring>

namespace {

constexpr int patience = 60000; // milliseconds, for what must come
constexpr int noTimeLost = 300; // milliseconds, to see that nothing comes
constexpr int key = AV_PKT_FLAG_KEY;
constexpr int unknownCodec = 0x7ffffff0;

using Frame = std::unique_ptr<ZRPlayerFrame>;

// Gives the decoder the packets of a test. A packet of raw video or A-law is one frame. What else
// there is comes from clips.
class PacketReader : public ZRPlayerReader
{
public:
    PacketReader(bool video, bool audio) : video(video), audio(audio) { }

    bool hasVideo() override { return video; }
    bool hasAudio() override { return audio; }
    bool isEof() override { return end; }
    void copyCodecParameters(int kind, int codecId, AVCodecContext *context) override
    {
        copies.add(QStringLiteral("%1 %2").arg(kind).arg(codecId));
        if (kind == 0) {
            context->width = 32;
            context->height = 16;
            context->pix_fmt = AV_PIX_FMT_GRAY8;
        } else {
            context->sample_rate = 8000;
            av_channel_layout_default(&context->ch_layout, 1);
        }
    }

    void addVideo(int64_t pts, int flags = key, int codecId = AV_CODEC_ID_RAWVIDEO)
    {
        const int size = codecId == AV_CODEC_ID_AYUV ? 32 * 16 * 4 : 32 * 16;
        add(*videoPackets, pts, flags, codecId, size);
    }

    void addAudio(int64_t pts, int codecId = AV_CODEC_ID_PCM_ALAW)
    {
        add(*audioPackets, pts, 0, codecId, 160);
    }

    void add(const MediaClip::Packet &packet, const AVCodecParameters *parameters)
    {
        videoPackets->push(new ZRPlayerPacket(
            packet.get(), parameters->codec_id, ZRPlayerPacket::Video, packet->time_base));
    }

    int waiting() const { return videoPackets->size() + audioPackets->size(); }

    std::atomic<bool> end{false};
    CallLog copies;

private:
    static void add(
        ZRPlayerQueue<ZRPlayerPacket> &queue, int64_t pts, int flags, int codecId, int size)
    {
        AVPacket *packet = av_packet_alloc();
        av_new_packet(packet, size);
        std::memset(packet->data, 0, size_t(size));
        packet->pts = packet->dts = pts;
        packet->flags = flags;
        queue.push(new ZRPlayerPacket(packet, codecId, 0, {1, 1000}));
        av_packet_free(&packet);
    }

    bool video;
    bool audio;
};

// Open to a test's eyes. Ends its threads as its owner would.
class Decoder : public ZRPlayerDecoder
{
public:
    explicit Decoder(ZRPlayerReader *reader) { setInput(reader); }
    ~Decoder() override { stop(); }

    using ZRPlayerDecoder::audioCodec;
    using ZRPlayerDecoder::audioCodecId;
    using ZRPlayerDecoder::audioContext;
    using ZRPlayerDecoder::audioEnabled;
    using ZRPlayerDecoder::audioEof;
    using ZRPlayerDecoder::audioFrame;
    using ZRPlayerDecoder::audioFrames;
    using ZRPlayerDecoder::audioThread;
    using ZRPlayerDecoder::audioTimeBase;
    using ZRPlayerDecoder::flushAudio;
    using ZRPlayerDecoder::flushVideo;
    using ZRPlayerDecoder::hardwareType;
    using ZRPlayerDecoder::keyFrameSeen;
    using ZRPlayerDecoder::maxAudioFrames;
    using ZRPlayerDecoder::videoCodec;
    using ZRPlayerDecoder::videoCodecId;
    using ZRPlayerDecoder::videoContext;
    using ZRPlayerDecoder::videoEof;
    using ZRPlayerDecoder::videoFrame;
    using ZRPlayerDecoder::videoFrames;
    using ZRPlayerDecoder::videoThread;
    using ZRPlayerDecoder::videoTimeBase;
};

// Null when none comes in time.
template <class Pop> Frame waitFor(Pop pop)
{
    QElapsedTimer clock;
    clock.start();
    Frame frame(pop());
    while (!frame && clock.elapsed() < patience) {
        QTest::qWait(1);
        frame.reset(pop());
    }
    return frame;
}

Frame nextVideo(ZRPlayerDecoder &decoder)
{
    return waitFor([&] { return decoder.popVideoFrame(); });
}

Frame nextAudio(ZRPlayerDecoder &decoder)
{
    return waitFor([&] { return decoder.popAudioFrame(); });
}

// One kind of stream by itself, for what both do alike.
struct Way {
    explicit Way(const QString &kind) :
        isVideo(kind == "video"),
        reader(isVideo, !isVideo),
        decoder(&reader)
    { }

    void add(int64_t pts) { isVideo ? reader.addVideo(pts) : reader.addAudio(pts); }
    void add(int64_t pts, int codecId)
    {
        isVideo ? reader.addVideo(pts, key, codecId) : reader.addAudio(pts, codecId);
    }
    Frame pop() { return Frame(isVideo ? decoder.popVideoFrame() : decoder.popAudioFrame()); }
    Frame next() { return isVideo ? nextVideo(decoder) : nextAudio(decoder); }
    int codec() const { return isVideo ? AV_CODEC_ID_RAWVIDEO : AV_CODEC_ID_PCM_ALAW; }
    int otherCodec() const { return isVideo ? AV_CODEC_ID_AYUV : AV_CODEC_ID_PCM_MULAW; }
    bool atEnd() const { return isVideo ? decoder.videoEof : decoder.audioEof; }
    bool hasQueue() const { return isVideo ? decoder.videoFrames : decoder.audioFrames; }
    int queued() const
    {
        const auto *frames = isVideo ? decoder.videoFrames : decoder.audioFrames;
        return frames ? frames->size() : 0;
    }

    // The pts of as many frames as come in time.
    QVector<qint64> take(int count)
    {
        QVector<qint64> times;
        while (times.size() < count) {
            const Frame frame = next();
            if (!frame)
                break;
            times.append(frame->frame->pts);
        }
        return times;
    }

    bool isVideo;
    PacketReader reader;
    Decoder decoder;
};

// With its first picture.
void startWithHardware(Way &way)
{
    way.decoder.setHardwareType(AV_HWDEVICE_TYPE_DXVA2);
    way.add(0);
    way.decoder.start();
}

void addKinds()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("video") << "video";
    QTest::newRow("audio") << "audio";
}

QVector<qint64> upTo(int count)
{
    QVector<qint64> numbers;
    for (int i = 0; i < count; ++i)
        numbers.append(i);
    return numbers;
}

// From the first line of the log to the last that begin so, sleeping left out.
QStringList between(const CallLog &log, const QString &first, const QString &last)
{
    QStringList lines = log.lines();
    while (!lines.isEmpty() && !lines.first().startsWith(first))
        lines.removeFirst();
    while (!lines.isEmpty() && !lines.last().startsWith(last))
        lines.removeLast();
    lines.removeAll("sleep 1");
    return lines;
}

// Codecs whose hardware device can be made. Outlives the decoder.
class HardwareCalls : public CodecCalls
{
public:
    HardwareCalls() { hardwareDevice = av_buffer_allocz(16); }
    ~HardwareCalls()
    {
        for (AVBufferRef *&device : madeDevices)
            av_buffer_unref(&device);
        av_buffer_unref(&hardwareDevice);
    }
};

// What the codec's choice of a format says to these.
int chosenFormat(const CodecCalls::Opening &opening, const QVector<int> &offered)
{
    QVector<AVPixelFormat> formats;
    for (const int format : offered)
        formats.append(static_cast<AVPixelFormat>(format));
    formats.append(AV_PIX_FMT_NONE);
    AVCodecContext *context = avcodec_alloc_context3(nullptr);
    context->opaque = opening.opaque;
    const int chosen = opening.getFormat(context, formats.constData());
    avcodec_free_context(&context);
    return chosen;
}

// Whether this system has a device of the type that the player asks for.
bool hasDevice()
{
    AVBufferRef *device = nullptr;
    const bool made =
        av_hwdevice_ctx_create(&device, AV_HWDEVICE_TYPE_DXVA2, nullptr, nullptr, 0) >= 0;
    av_buffer_unref(&device);
    return made;
}

// From here on there is none.
void denyDevice(CodecCalls &calls)
{
    if (hasDevice())
        calls.answerForEver("hwdevice", AVERROR_UNKNOWN);
    calls.log.clear();
}

// What is logged of a codec that the system's FFmpeg can't decode by the device.
QStringList refusal(AVCodecID id, AVHWDeviceType device)
{
    const AVCodec *codec = avcodec_find_decoder(id);
    int count = 0;
    while (const AVCodecHWConfig *config = avcodec_get_hw_config(codec, count)) {
        if (config->device_type == device)
            return {};
        ++count;
    }
    return {QStringLiteral("[%1] Decoder %2 does not support device type %3")
                .arg(count)
                .arg(codec->name, av_hwdevice_get_type_name(device))};
}

// A real reader and a decoder, joined and ended as the player does it.
class Pipeline : public ZRPlayerReaderObserver
{
public:
    explicit Pipeline(const std::string &url) : decoder(&reader)
    {
        reader.setUrl(url);
        reader.setTimeout(10.0);
        reader.setObserver(this);
    }

    ~Pipeline() override
    {
        reader.stop();
        decoder.stop();
    }

    void onReaderNotify(ZRPlayerReader *, int type) override
    {
        if (type == ZRPlayerReader::Opened)
            decoder.start();
        else if (type == ZRPlayerReader::SeekDone || type == ZRPlayerReader::Overflowed)
            decoder.flush();
        if (type == ZRPlayerReader::Overflowed)
            reader.setRealtime(false); // one is enough
        ++events[type];
    }

    struct Reader : ZRPlayerReader {
        using ZRPlayerReader::videoPackets;
    };
    Reader reader;
    Decoder decoder;
    std::atomic<int> events[6] = {};
};

}

class tst_ZRPlayerDecoder : public QObject
{
    Q_OBJECT

private slots:
    void initialValues();
    void threadsFollowTheStreams_data();
    void threadsFollowTheStreams();
    void startClearsTheState();
    void startsAgainWithAKeyFrame();
    void stopEndsAudioFirst();
    void stopEndsACodecThatGetsNowhere_data();
    void stopEndsACodecThatGetsNowhere();
    void resumeAndPauseDoNothing();
    void sleepsWithNothingToDo_data();
    void sleepsWithNothingToDo();
    void decodes_data() { addKinds(); }
    void decodes();
    void codecIsSetUpByTheFirstPacket_data() { addKinds(); }
    void codecIsSetUpByTheFirstPacket();
    void framesShareTheBuffers();

    void frameLimits_data();
    void frameLimits();
    void limitIsNotForOnePacket_data() { addKinds(); }
    void limitIsNotForOnePacket();
    void waitsForAKeyFrame_data();
    void waitsForAKeyFrame();
    void audioOff();

    void flush_data() { addKinds(); }
    void flush();
    void flushWithoutACodec();
    void flushWaitsForAFullQueue();
    void videoWaitsForAKeyFrameAfterAFlush();

    void drainsOnceAtTheEnd_data() { addKinds(); }
    void drainsOnceAtTheEnd();
    void endWithoutPackets_data() { addKinds(); }
    void endWithoutPackets();
    void packetAtTheEndIsNotLost();
    void videoDrainWaits();
    void audioDrainDoesNotWait();

    void sendAgain_data();
    void sendAgain();
    void sendToADrainedCodec_data() { addKinds(); }
    void sendToADrainedCodec();
    void drainedCodecThatCannotBeHadAgain_data() { addKinds(); }
    void drainedCodecThatCannotBeHadAgain();
    void sendError_data();
    void sendError();
    void receiveError_data() { addKinds(); }
    void receiveError();
    void audioErrorLeavesTheVideoAlone();
    void flagsOfAFrameAreLogged_data() { addKinds(); }
    void flagsOfAFrameAreLogged();
    void timeBaseIsThePackets_data() { addKinds(); }
    void timeBaseIsThePackets();

    void codecThatCannotBeFound_data() { addKinds(); }
    void codecThatCannotBeFound();
    void codecThatCannotBeOpened_data() { addKinds(); }
    void codecThatCannotBeOpened();
    void noCodecId_data() { addKinds(); }
    void noCodecId();
    void otherStreamGoesOn_data() { addKinds(); }
    void otherStreamGoesOn();
    void changeOfTheCodec_data() { addKinds(); }
    void changeOfTheCodec();
    void changeOfTheCodecWaitsForNoKeyFrame();
    void changesBesideTheRender();
    void audioContextStays();

    void noHardwareByItself();
    void hardwareOfNoCodec();
    void hardwareOfARealCodec_data();
    void hardwareOfARealCodec();
    void hardwareTakesEffectAtTheNextSetUp();
    void hardwareFormat_data();
    void hardwareFormat();
    void hardwareWithoutAFormat();
    void hardwareOfACodecThatCannotBeOpened();
    void hardwareOfADrainedCodec();

    void realClips_data();
    void realClips();
    void realClipAgainAfterItsEnd();
    void joinsInTheMiddle();
    void liveOverflowGoesOnWithAKeyFrame();
    void opensAndClosesManyTimes();
};

void tst_ZRPlayerDecoder::initialValues()
{
    PacketReader reader(true, true);
    Decoder decoder(&reader);
    QVERIFY(!decoder.isRunning());
    QVERIFY(!decoder.popVideoFrame());
    QVERIFY(!decoder.popAudioFrame());
    QVERIFY(!decoder.isVideoEof());
    QCOMPARE(decoder.hardwareType, 0);
    QCOMPARE(decoder.videoCodecId, 0);
    QCOMPARE(decoder.audioCodecId, 0);
    for (const AVRational base : {decoder.videoTimeBase, decoder.audioTimeBase}) {
        QCOMPARE(base.num, 1);
        QCOMPARE(base.den, 30);
    }
    QVERIFY(!decoder.videoFrames);
    QVERIFY(!decoder.audioFrames);
    QVERIFY(!decoder.keyFrameSeen);
    QVERIFY(decoder.audioEnabled);
    QCOMPARE(decoder.maxAudioFrames, 2);
    QVERIFY(!decoder.flushVideo);
    QVERIFY(!decoder.flushAudio);
    QVERIFY(std::has_virtual_destructor<ZRPlayerDecoder>::value);
}

void tst_ZRPlayerDecoder::threadsFollowTheStreams_data()
{
    QTest::addColumn<bool>("video");
    QTest::addColumn<bool>("audio");
    QTest::newRow("both") << true << true;
    QTest::newRow("video") << true << false;
    QTest::newRow("audio") << false << true;
    QTest::newRow("none") << false << false;
}

void tst_ZRPlayerDecoder::threadsFollowTheStreams()
{
    QFETCH(bool, video);
    QFETCH(bool, audio);
    struct NamedReader : PacketReader {
        using PacketReader::PacketReader;
        ZRPlayerPacket *popVideoPacket() override { return note(); }
        ZRPlayerPacket *popAudioPacket() override { return note(); }
        ZRPlayerPacket *note()
        {
            const QString name = QThread::currentThread()->objectName();
            if (!names.lines().contains(name))
                names.add(name);
            return nullptr;
        }
        CallLog names;
    };
    NamedReader reader(video, audio);
    Decoder decoder(&reader);
    QCOMPARE(decoder.hasVideo(), video);
    QCOMPARE(decoder.hasAudio(), audio);
    QCOMPARE(decoder.start(), 0);
    QCOMPARE(decoder.videoThread != nullptr, video);
    QCOMPARE(decoder.audioThread != nullptr, audio);
    QCOMPARE(decoder.isRunning(), video || audio);
    QTRY_COMPARE_WITH_TIMEOUT(reader.names.lines().size(), int(video) + int(audio), patience);
    QCOMPARE(reader.names.lines().contains("ZRPlayerDecoderVideoThread"), video);
    QCOMPARE(reader.names.lines().contains("ZRPlayerDecoderAudioThread"), audio);
    decoder.stop();
    QVERIFY(!decoder.videoThread);
    QVERIFY(!decoder.audioThread);
    QVERIFY(!decoder.isRunning());
    decoder.stop();
}

void tst_ZRPlayerDecoder::startClearsTheState()
{
    PacketReader reader(false, false);
    Decoder decoder(&reader);
    decoder.flush();
    QVERIFY(decoder.flushVideo && decoder.flushAudio);
    decoder.videoEof = decoder.audioEof = true;
    decoder.videoCodecId = decoder.audioCodecId = 5;
    decoder.start();
    QVERIFY(!decoder.flushVideo);
    QVERIFY(!decoder.flushAudio);
    QVERIFY(!decoder.isVideoEof());
    QVERIFY(!decoder.audioEof);
    QCOMPARE(decoder.videoCodecId, 0);
    QCOMPARE(decoder.audioCodecId, 0);
}

void tst_ZRPlayerDecoder::startsAgainWithAKeyFrame()
{
    Way way("video");
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    way.decoder.stop();
    way.reader.addVideo(1, 0);
    way.reader.addVideo(2, key);
    way.decoder.start();
    QCOMPARE(way.take(1), (QVector<qint64>{2}));
}

void tst_ZRPlayerDecoder::stopEndsAudioFirst()
{
    CodecCalls calls;
    PacketReader reader(true, true);
    reader.addVideo(0);
    reader.addAudio(0);
    Decoder decoder(&reader);
    decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(
        calls.log.count("video open2") + calls.log.count("audio open2"), 2, patience);
    decoder.stop();
    QStringList ends = calls.log.lines().filter(QRegularExpression("close|free"));
    QCOMPARE(ends, (QStringList{"audio close", "video free"}));
}

void tst_ZRPlayerDecoder::stopEndsACodecThatGetsNowhere_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("call");
    QTest::addColumn<int>("result"); // for ever
    QTest::newRow("video, full") << "video"
                                 << "send" << AVERROR(EAGAIN);
    QTest::newRow("audio, full") << "audio"
                                 << "send" << AVERROR(EAGAIN);
    QTest::newRow("video, no memory") << "video"
                                      << "send" << AVERROR(ENOMEM);
    QTest::newRow("video, drain") << "video"
                                  << "receive" << AVERROR(EAGAIN);
}

void tst_ZRPlayerDecoder::stopEndsACodecThatGetsNowhere()
{
    QFETCH(QString, kind);
    QFETCH(QString, call);
    QFETCH(int, result);
    CodecCalls calls;
    const QString repeated = kind + ' ' + call;
    calls.answerForEver(repeated, result);
    Way way(kind);
    way.add(0);
    way.reader.end = true;
    way.decoder.start();
    QTRY_VERIFY_WITH_TIMEOUT(calls.log.count(repeated) >= 10, patience);
    QVERIFY(way.decoder.isRunning());
    QElapsedTimer clock;
    clock.start();
    way.decoder.stop();
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!way.decoder.isRunning());
    QVERIFY(!way.hasQueue());
}

void tst_ZRPlayerDecoder::resumeAndPauseDoNothing()
{
    Way way("video");
    way.decoder.start();
    way.decoder.pause();
    way.add(0);
    QCOMPARE(way.take(1), upTo(1));
    way.decoder.resume();
    way.add(1);
    QCOMPARE(way.take(1), (QVector<qint64>{1}));
}

void tst_ZRPlayerDecoder::sleepsWithNothingToDo_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("packets");
    QTest::addColumn<int>("frames"); // that are queued in the end
    QTest::newRow("video, no packet") << "video" << 0 << 0;
    QTest::newRow("video, full queue") << "video" << 5 << 2;
    QTest::newRow("audio, no packet") << "audio" << 0 << 0;
    QTest::newRow("audio, full queue") << "audio" << 5 << 2;
}

void tst_ZRPlayerDecoder::sleepsWithNothingToDo()
{
    QFETCH(QString, kind);
    QFETCH(int, packets);
    QFETCH(int, frames);
    CodecCalls calls;
    Way way(kind);
    for (int i = 0; i < packets; ++i)
        way.add(i);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(way.queued(), frames, patience);
    calls.log.clear();
    QTRY_VERIFY_WITH_TIMEOUT(calls.log.count("sleep 1") > 0, patience);
    QStringList sleeps = calls.log.lines().filter("sleep");
    sleeps.removeDuplicates();
    QCOMPARE(sleeps, QStringList("sleep 1"));
}

void tst_ZRPlayerDecoder::decodes()
{
    QFETCH(QString, kind);
    Way way(kind);
    for (int i = 0; i < 50; ++i)
        way.add(i);
    way.decoder.start();
    QCOMPARE(way.take(50), upTo(50));
}

void tst_ZRPlayerDecoder::codecIsSetUpByTheFirstPacket()
{
    QFETCH(QString, kind);
    CodecCalls calls;
    Way way(kind);
    way.decoder.start();
    QTest::qWait(noTimeLost);
    QCOMPARE(calls.log.count(kind + " open2"), 0);
    QVERIFY(!way.hasQueue());
    way.add(0);
    way.add(1);
    QCOMPARE(way.take(2), upTo(2));
    QCOMPARE(calls.log.count(kind + " open2"), 1);
    QCOMPARE(calls.log.count(QStringLiteral("%1 open2 %2").arg(kind).arg(way.codec())), 1);
    QCOMPARE(way.reader.copies.lines(),
        QStringList(QStringLiteral("%1 %2").arg(way.isVideo ? 0 : 1).arg(way.codec())));

    // With no options, all else as the codec has it.
    AVCodecContext *fresh =
        avcodec_alloc_context3(avcodec_find_decoder(static_cast<AVCodecID>(way.codec())));
    const CodecCalls::Opening opening = calls.lastOpening();
    QVERIFY(!opening.optionsGiven);
    QCOMPARE(opening.threadCount, fresh->thread_count);
    QCOMPARE(opening.flags, fresh->flags);
    QCOMPARE(opening.flags2, fresh->flags2);
    QVERIFY(!opening.opaque);
    avcodec_free_context(&fresh);

    way.decoder.stop();
    QVERIFY(!way.hasQueue());
    QVERIFY(!way.pop());
    QCOMPARE(way.decoder.videoCodecId, 0);
    QVERIFY(!way.decoder.videoCodec);
    QVERIFY(!way.decoder.videoContext);
    QVERIFY(!way.decoder.videoFrame);
    QCOMPARE(way.decoder.audioCodecId, 0);
    QVERIFY(!way.decoder.audioCodec);
    QVERIFY(!way.decoder.audioFrame);
}

void tst_ZRPlayerDecoder::framesShareTheBuffers()
{
    CodecCalls calls;
    Way way("video");
    way.add(0);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(way.queued(), 1, patience);
    const Frame frame = way.pop();
    QCOMPARE(static_cast<const void *>(frame->frame->data[0]), calls.lastReceived());
}

void tst_ZRPlayerDecoder::frameLimits_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("maxAudioFrames");
    QTest::addColumn<int>("limit"); // of 20
    QTest::newRow("video") << "video" << 2 << 2;
    QTest::newRow("video, other audio limit") << "video" << 7 << 2;
    QTest::newRow("audio") << "audio" << 2 << 2;
    QTest::newRow("audio, 5") << "audio" << 5 << 5;
    QTest::newRow("audio, 1") << "audio" << 1 << 1;
    QTest::newRow("audio, 0 is no limit") << "audio" << 0 << 20;
    QTest::newRow("audio, below 0 too") << "audio" << -1 << 20;
}

void tst_ZRPlayerDecoder::frameLimits()
{
    QFETCH(QString, kind);
    QFETCH(int, maxAudioFrames);
    QFETCH(int, limit);
    Way way(kind);
    way.decoder.maxAudioFrames = maxAudioFrames;
    for (int i = 0; i < 20; ++i)
        way.add(i);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(way.queued(), limit, patience);
    QTest::qWait(noTimeLost);
    QCOMPARE(way.queued(), limit);
    QCOMPARE(way.reader.waiting(), 20 - limit); // the rest waits with the reader
    QCOMPARE(way.take(20), upTo(20));
}

void tst_ZRPlayerDecoder::limitIsNotForOnePacket()
{
    QFETCH(QString, kind);
    CodecCalls calls;
    calls.answer(kind + " receive", {0, 0, 0, 0, 0, CodecCalls::real});
    Way way(kind);
    way.add(0);
    way.add(1);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(way.queued(), 6, patience); // five, and the packet's own
    QTest::qWait(noTimeLost);
    QCOMPARE(way.reader.waiting(), 1);
    QCOMPARE(way.take(7), (QVector<qint64>{1000, 1001, 1002, 1003, 1004, 0, 1}));
}

void tst_ZRPlayerDecoder::waitsForAKeyFrame_data()
{
    QTest::addColumn<int>("flags");
    QTest::newRow("key frame") << int(AV_PKT_FLAG_KEY);
    QTest::newRow("any flag") << int(AV_PKT_FLAG_TRUSTED);
    QTest::newRow("broken") << int(AV_PKT_FLAG_CORRUPT);
}

void tst_ZRPlayerDecoder::waitsForAKeyFrame()
{
    QFETCH(int, flags);
    CodecCalls calls;
    Way way("video");
    for (int i = 0; i < 3; ++i)
        way.reader.addVideo(i, 0);
    way.reader.addVideo(3, flags);
    way.reader.addVideo(4, 0);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count("video send 4"), 1, patience);
    QCOMPARE(calls.log.count("video send"), 2);
    QCOMPARE(calls.log.count("video send 3"), 1);
    QVERIFY(way.decoder.keyFrameSeen);
}

void tst_ZRPlayerDecoder::audioOff()
{
    CodecCalls calls;
    Way way("audio");
    way.decoder.setAudioEnabled(false);
    for (int i = 0; i < 10; ++i)
        way.add(i);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(way.reader.waiting(), 0, patience);
    QTest::qWait(noTimeLost);
    QCOMPARE(calls.log.count("audio send"), 0);
    QCOMPARE(way.queued(), 0);
    QCOMPARE(calls.log.count("audio open2"), 1); // the codec is there for when it is on
    way.decoder.setAudioEnabled(true);
    way.add(10);
    QCOMPARE(way.take(1), (QVector<qint64>{10}));
}

void tst_ZRPlayerDecoder::flush()
{
    QFETCH(QString, kind);
    LogCatcher log;
    CodecCalls calls;
    Way way(kind);
    way.add(0);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(way.queued(), 1, patience);
    way.decoder.flush();
    const bool &flag = way.isVideo ? way.decoder.flushVideo : way.decoder.flushAudio;
    QTRY_VERIFY_WITH_TIMEOUT(!flag, patience);
    QCOMPARE(log.count("flush " + kind), 1);
    QCOMPARE(way.queued(), 0);
    QCOMPARE(calls.log.count(kind + " flush"), 1);
    way.add(1);
    QCOMPARE(way.take(1), (QVector<qint64>{1}));
}

void tst_ZRPlayerDecoder::flushWithoutACodec()
{
    LogCatcher log;
    CodecCalls calls;
    PacketReader reader(true, true);
    Decoder decoder(&reader);
    decoder.start();
    decoder.flush();
    QTRY_VERIFY_WITH_TIMEOUT(!decoder.flushVideo && !decoder.flushAudio, patience);
    QCOMPARE(log.count("flush video"), 1);
    QCOMPARE(log.count("flush audio"), 1);
    QVERIFY(decoder.isRunning());
    decoder.stop();

    // Nor is a codec flushed that an earlier run has closed.
    reader.addAudio(0);
    decoder.start();
    QVERIFY(nextAudio(decoder));
    decoder.stop();
    QVERIFY(decoder.audioContext);
    decoder.start();
    decoder.flush();
    QTRY_VERIFY_WITH_TIMEOUT(!decoder.flushVideo && !decoder.flushAudio, patience);
    QCOMPARE(calls.log.count("audio flush"), 0);
}

void tst_ZRPlayerDecoder::flushWaitsForAFullQueue()
{
    Way way("video");
    for (int i = 0; i < 5; ++i)
        way.add(i);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(way.queued(), 2, patience);
    way.decoder.flush();
    QTest::qWait(noTimeLost);
    QVERIFY(way.decoder.flushVideo);
    QCOMPARE(way.queued(), 2);
    QCOMPARE(way.take(1), upTo(1));
    QTRY_VERIFY_WITH_TIMEOUT(!way.decoder.flushVideo, patience);
    QCOMPARE(way.take(3), (QVector<qint64>{2, 3, 4})); // 1 was thrown away
}

void tst_ZRPlayerDecoder::videoWaitsForAKeyFrameAfterAFlush()
{
    PacketReader reader(true, true);
    Decoder decoder(&reader);
    reader.addVideo(0);
    reader.addAudio(0);
    decoder.start();
    QVERIFY(nextVideo(decoder));
    QVERIFY(nextAudio(decoder));
    QVERIFY(decoder.keyFrameSeen);
    decoder.flush();
    QTRY_VERIFY_WITH_TIMEOUT(!decoder.flushVideo && !decoder.flushAudio, patience);
    QVERIFY(!decoder.keyFrameSeen);
    reader.addVideo(1, 0);
    reader.addVideo(2, key);
    reader.addAudio(1);
    const Frame video = nextVideo(decoder);
    QVERIFY(video);
    QCOMPARE(video->frame->pts, int64_t(2));
    const Frame audio = nextAudio(decoder);
    QVERIFY(audio);
    QCOMPARE(audio->frame->pts, int64_t(1));
}

void tst_ZRPlayerDecoder::drainsOnceAtTheEnd()
{
    QFETCH(QString, kind);
    LogCatcher log;
    CodecCalls calls;
    Way way(kind);
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    QTest::qWait(noTimeLost);
    QVERIFY(!way.atEnd()); // empty, and not the end
    QCOMPARE(calls.log.count(kind + " send NULL"), 0);

    way.reader.end = true;
    const QString line = QStringLiteral("eof send NULL %1 packet").arg(kind);
    for (int run = 1; run <= 2; ++run) {
        QTRY_COMPARE_WITH_TIMEOUT(calls.log.count(kind + " send NULL"), run, patience);
        QTest::qWait(noTimeLost);
        QCOMPARE(calls.log.count(kind + " send NULL"), run);
        QCOMPARE(log.count(line), run);
        QVERIFY(way.atEnd());
        QCOMPARE(way.decoder.isVideoEof(), way.isVideo);

        // A seek brings new packets, and another end.
        way.reader.end = false;
        QTest::qWait(noTimeLost);
        QVERIFY(way.atEnd()); // until a packet comes
        way.add(run);
        QCOMPARE(way.take(1), (QVector<qint64>{run}));
        QVERIFY(!way.atEnd());
        way.reader.end = true;
    }
}

void tst_ZRPlayerDecoder::endWithoutPackets()
{
    QFETCH(QString, kind);
    CodecCalls calls;
    Way way(kind);
    way.reader.end = true;
    way.decoder.start();
    QTRY_VERIFY_WITH_TIMEOUT(way.atEnd(), patience);
    QTest::qWait(noTimeLost);
    QCOMPARE(calls.log.count(kind), 0);
}

// The last packet and the end come between a look for packets and a look for the end.
void tst_ZRPlayerDecoder::packetAtTheEndIsNotLost()
{
    struct LateReader : PacketReader {
        LateReader() : PacketReader(true, false) { }
        ZRPlayerPacket *popVideoPacket() override
        {
            ZRPlayerPacket *packet = PacketReader::popVideoPacket();
            if (!packet && late.exchange(false)) {
                addVideo(1, 0);
                end = true;
            }
            return packet;
        }
        std::atomic<bool> late{false};
    };
    LateReader reader;
    reader.addVideo(0);
    Decoder decoder(&reader);
    decoder.start();
    QVERIFY(nextVideo(decoder));
    reader.late = true;
    const Frame last = nextVideo(decoder);
    QVERIFY(last);
    QCOMPARE(last->frame->pts, int64_t(1));
}

void tst_ZRPlayerDecoder::videoDrainWaits()
{
    LogCatcher log;
    CodecCalls calls;
    Way way("video");
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count("video receive"), 2, patience);
    calls.log.clear();
    calls.answer("video receive", {AVERROR(EAGAIN), 0, AVERROR(EAGAIN), 0, 0, AVERROR_EOF});
    way.reader.end = true;
    QCOMPARE(way.take(3), (QVector<qint64>{1000, 1001, 1002}));
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count("video flush"), 1, patience);
    QStringList expected{"video send NULL"};
    for (int i = 0; i < 6; ++i)
        expected << "video receive";
    QCOMPARE(between(calls.log, "video send NULL", "video flush"), expected << "video flush");
    QCOMPARE(log.count("recv video frame -541478725, dfb9b0bb, End of file"), 1);
    QTRY_VERIFY_WITH_TIMEOUT(!way.decoder.keyFrameSeen, patience);
}

void tst_ZRPlayerDecoder::audioDrainDoesNotWait()
{
    CodecCalls calls;
    Way way("audio");
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count("audio receive"), 2, patience);
    calls.answer("audio receive", {AVERROR(EAGAIN), 0});
    way.reader.end = true;
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count("audio send NULL"), 1, patience);
    QTest::qWait(noTimeLost);
    QCOMPARE(calls.log.count("audio receive"), 3);
    QCOMPARE(way.queued(), 0);
}

void tst_ZRPlayerDecoder::sendAgain_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("result");
    QTest::addColumn<QStringList>("calls"); // from one sending to the next
    QTest::newRow("video, full") << "video" << AVERROR(EAGAIN)
                                 << QStringList{"video receive", "sleep 1"};
    QTest::newRow("video, no memory") << "video" << AVERROR(ENOMEM) << QStringList{"sleep 1"};
    QTest::newRow("audio, full") << "audio" << AVERROR(EAGAIN) << QStringList{"audio receive"};
}

void tst_ZRPlayerDecoder::sendAgain()
{
    QFETCH(QString, kind);
    QFETCH(int, result);
    QFETCH(QStringList, calls);
    LogCatcher log;
    CodecCalls codec;
    codec.answer(kind + " send", {result, result, result});
    Way way(kind);
    way.add(7);
    way.decoder.start();
    QCOMPARE(way.take(1), (QVector<qint64>{7}));
    way.decoder.stop();
    QStringList expected;
    for (int i = 0; i < 3; ++i)
        expected << kind + " send 7" << calls;
    expected << kind + " send 7";
    QStringList lines = codec.log.lines();
    QCOMPARE(lines.mid(lines.indexOf(kind + " send 7"), expected.size()), expected);
    QCOMPARE(log.lines(), QStringList());
}

void tst_ZRPlayerDecoder::sendToADrainedCodec()
{
    QFETCH(QString, kind);
    CodecCalls calls;
    Way way(kind);
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    calls.log.clear();
    calls.answer(kind + " send", {AVERROR_EOF});
    way.add(1);
    QCOMPARE(way.take(1), (QVector<qint64>{1})); // the packet that was refused
    const QString open = QStringLiteral("%1 open2 %2").arg(kind).arg(way.codec());
    const QStringList again = way.isVideo
        ? QStringList{"video send 1", "video free", open, "video send 1"}
        : QStringList{"audio send 1", "audio close", "audio free", open, "audio send 1"};
    QCOMPARE(between(calls.log, kind + " send", kind + " send"), again);
    way.reader.addVideo(2, 0); // no key frame is waited for
    way.reader.addAudio(2);
    QCOMPARE(way.take(1), (QVector<qint64>{2}));
}

void tst_ZRPlayerDecoder::drainedCodecThatCannotBeHadAgain()
{
    QFETCH(QString, kind);
    CodecCalls calls;
    Way way(kind);
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    calls.answer(kind + " open2", {AVERROR(ENOMEM)});
    calls.answer(kind + " send", {AVERROR_EOF});
    way.add(1);
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count(kind + " open2"), 2, patience);
    way.add(2); // the next packet has it set up again
    QCOMPARE(way.take(1), (QVector<qint64>{2}));
    QVERIFY(way.decoder.isRunning());
}

void tst_ZRPlayerDecoder::sendError_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("line"); // with the number and the text
    QTest::addColumn<bool>("flushes");
    const QString video = "_sendVideoPacket error = %1, %2";
    const QString audio = "_sendAudioPacket error = %1\n%2";
    QTest::newRow("video") << "video" << AVERROR_INVALIDDATA << video << true;
    QTest::newRow("video, wrong use") << "video" << AVERROR(EINVAL) << video << true;
    QTest::newRow("audio") << "audio" << AVERROR_INVALIDDATA << audio << false;
    QTest::newRow("audio, no memory") << "audio" << AVERROR(ENOMEM) << audio << false;
}

void tst_ZRPlayerDecoder::sendError()
{
    QFETCH(QString, kind);
    QFETCH(int, error);
    QFETCH(QString, line);
    QFETCH(bool, flushes);
    LogCatcher log;
    CodecCalls calls;
    Way way(kind);
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count(kind + " receive"), 2, patience);
    calls.answer(kind + " send", {error});
    way.add(1);
    QTRY_COMPARE_WITH_TIMEOUT(
        log.count(line.arg(error).arg(QString(errorText(error)))), 1, patience);
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count(kind + " flush"), flushes ? 1 : 0, patience);
    QCOMPARE(calls.log.count(kind + " send 1"), 1);
    QCOMPARE(calls.log.count(kind + " receive"), 2); // nothing after the error
    QTRY_VERIFY_WITH_TIMEOUT(!way.decoder.keyFrameSeen, patience);
    way.reader.addVideo(2, 0);
    way.reader.addVideo(3, key);
    way.reader.addAudio(2);
    QCOMPARE(way.take(1), (QVector<qint64>{way.isVideo ? 3 : 2}));
}

void tst_ZRPlayerDecoder::receiveError()
{
    QFETCH(QString, kind);
    LogCatcher log;
    CodecCalls calls;
    calls.answer(kind + " receive", {AVERROR_INVALIDDATA});
    Way way(kind);
    way.add(0);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count(kind + " flush"), 1, patience);
    QCOMPARE(log.count(QStringLiteral("recv %1 frame -1094995529, bebbb1b7, %2")
                           .arg(kind, QString(errorText(AVERROR_INVALIDDATA)))),
        1);
    QCOMPARE(way.queued(), 0);
    way.reader.addVideo(1, 0);
    way.reader.addVideo(2, key);
    way.reader.addAudio(1);
    QCOMPARE(way.take(1), (QVector<qint64>{way.isVideo ? 2 : 1}));
}

void tst_ZRPlayerDecoder::audioErrorLeavesTheVideoAlone()
{
    CodecCalls calls;
    calls.answer("audio receive", {AVERROR_INVALIDDATA});
    PacketReader reader(true, true);
    Decoder decoder(&reader);
    reader.addVideo(0);
    decoder.start();
    QVERIFY(nextVideo(decoder));
    reader.addAudio(0);
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count("audio flush"), 1, patience);
    reader.addAudio(1);
    QVERIFY(nextAudio(decoder));
    reader.addVideo(1, 0); // no key frame is waited for
    QVERIFY(nextVideo(decoder));
    QCOMPARE(calls.log.count("video flush"), 0);
}

void tst_ZRPlayerDecoder::flagsOfAFrameAreLogged()
{
    QFETCH(QString, kind);
    LogCatcher log;
    CodecCalls calls;
    calls.frameFlags = AV_FRAME_FLAG_CORRUPT;
    calls.answer(kind + " receive", {0});
    Way way(kind);
    way.add(0);
    way.add(1);
    way.decoder.start();
    QCOMPARE(way.take(3), (QVector<qint64>{1000, 0, 1})); // it plays all the same
    // The text is the same for sound; frames without a flag have no line.
    QCOMPARE(log.beginning("recv "), QStringList("recv video frame time = 1.000000, flags = 1"));
}

void tst_ZRPlayerDecoder::timeBaseIsThePackets()
{
    QFETCH(QString, kind);
    Way way(kind);
    way.add(500);
    way.decoder.start();
    const Frame frame = way.next();
    QVERIFY(frame);
    QCOMPARE(frame->timeBase.num, 1);
    QCOMPARE(frame->timeBase.den, 1000);
    QCOMPARE(frame->time(), 0.5);
    const AVRational base = way.isVideo ? way.decoder.videoTimeBase : way.decoder.audioTimeBase;
    QCOMPARE(base.den, 1000);
}

void tst_ZRPlayerDecoder::codecThatCannotBeFound()
{
    QFETCH(QString, kind);
    CodecCalls calls;
    Way way(kind);
    way.add(0, unknownCodec);
    way.add(1);
    way.decoder.start();
    QTRY_VERIFY_WITH_TIMEOUT(!way.decoder.isRunning(), patience);
    QCOMPARE(calls.log.count(kind + " open2"), 0);
    QVERIFY(!way.hasQueue());
    QVERIFY(!way.pop());
    QCOMPARE(way.reader.waiting(), 1);
}

void tst_ZRPlayerDecoder::codecThatCannotBeOpened()
{
    QFETCH(QString, kind);
    LogCatcher log;
    CodecCalls calls;
    calls.answer(kind + " open2", {AVERROR(EINVAL)});
    Way way(kind);
    way.add(0);
    way.decoder.start();
    QTRY_VERIFY_WITH_TIMEOUT(!way.decoder.isRunning(), patience);
    QCOMPARE(log.lines(),
        QStringList(
            QStringLiteral("avcodec_open2(%1 = %2) failed = -22").arg(kind).arg(way.codec())));
    QVERIFY(!way.hasQueue());
    QCOMPARE(calls.log.count(kind + " send"), 0);
}

void tst_ZRPlayerDecoder::noCodecId()
{
    QFETCH(QString, kind);
    Way way(kind);
    way.add(0, AV_CODEC_ID_NONE); // there is no codec for it, and none is open: dropped
    way.add(1);
    way.decoder.start();
    QCOMPARE(way.take(1), (QVector<qint64>{1}));
    way.add(2, AV_CODEC_ID_NONE); // a change to no codec
    QTRY_VERIFY_WITH_TIMEOUT(!way.decoder.isRunning(), patience);
    QVERIFY(!way.decoder.videoContext);
    QVERIFY(!way.decoder.audioContext);
    QVERIFY(!way.decoder.videoCodec);
    QVERIFY(!way.decoder.audioCodec);
}

void tst_ZRPlayerDecoder::otherStreamGoesOn()
{
    QFETCH(QString, kind); // that fails
    const bool videoFails = kind == "video";
    PacketReader reader(true, true);
    Decoder decoder(&reader);
    if (videoFails)
        reader.addVideo(0, key, unknownCodec);
    else
        reader.addAudio(0, unknownCodec);
    decoder.start();
    const auto running = [&](bool video) {
        return video ? decoder.videoThread->isRunning() : decoder.audioThread->isRunning();
    };
    QTRY_VERIFY_WITH_TIMEOUT(!running(videoFails), patience);
    QVERIFY(running(!videoFails));
    QVERIFY(decoder.isRunning());
    reader.addVideo(1);
    reader.addAudio(1);
    const Frame frame = videoFails ? nextAudio(decoder) : nextVideo(decoder);
    QVERIFY(frame);
    QCOMPARE(frame->frame->pts, int64_t(1));
    QCOMPARE(reader.waiting(), 1); // nobody takes the other's
}

void tst_ZRPlayerDecoder::changeOfTheCodec()
{
    QFETCH(QString, kind);
    CodecCalls calls;
    Way way(kind);
    way.decoder.start();
    for (int i = 0; i < 4; ++i) {
        const int codec = i % 2 == 0 ? way.codec() : way.otherCodec();
        way.add(i, codec);
        QCOMPARE(way.take(1), (QVector<qint64>{i}));
        QCOMPARE(way.isVideo ? way.decoder.videoCodecId : way.decoder.audioCodecId, codec);
        QCOMPARE(calls.log.count(kind + " open2"), i + 1);
    }
}

void tst_ZRPlayerDecoder::changeOfTheCodecWaitsForNoKeyFrame()
{
    CodecCalls calls;
    Way way("video");
    way.reader.addVideo(0, key);
    way.reader.addVideo(1, 0, AV_CODEC_ID_AYUV);
    way.reader.addVideo(2, 0, AV_CODEC_ID_AYUV);
    way.decoder.start();
    QTRY_COMPARE_WITH_TIMEOUT(calls.log.count("video send 2"), 1, patience);
    QCOMPARE(calls.log.count("video send 1"), 1);
    QCOMPARE(way.take(2), (QVector<qint64>{1, 2}));
}

// The frame queue goes with each codec, while the render asks for frames. What it still gets is in
// order, and the last frame is there.
void tst_ZRPlayerDecoder::changesBesideTheRender()
{
    constexpr int count = 2000;
    Way way("video");
    for (int i = 0; i < count; ++i)
        way.reader.addVideo(i, key, i % 2 == 0 ? AV_CODEC_ID_RAWVIDEO : AV_CODEC_ID_AYUV);
    way.decoder.start();
    qint64 last = -1;
    QElapsedTimer clock;
    clock.start();
    while (last < count - 1 && clock.elapsed() < patience) {
        if (const Frame frame = way.pop()) {
            QVERIFY(frame->frame->pts > last);
            last = frame->frame->pts;
        }
    }
    QCOMPARE(last, qint64(count - 1));
    QCOMPARE(way.reader.waiting(), 0);
}

void tst_ZRPlayerDecoder::audioContextStays()
{
    CodecCalls calls;
    {
        Way way("audio");
        way.add(0);
        way.decoder.start();
        QCOMPARE(way.take(1), upTo(1));
        way.decoder.stop();
        QVERIFY(way.decoder.audioContext);
        QCOMPARE(calls.log.count("audio close"), 1);
        QCOMPARE(calls.log.count("audio free"), 0);

        way.add(1); // the next set-up takes its place
        way.decoder.start();
        QCOMPARE(way.take(1), (QVector<qint64>{1}));
        QCOMPARE(calls.log.count("audio free"), 1);
    }
    QCOMPARE(calls.log.count("audio free"), 2); // and the destructor frees the last
}

void tst_ZRPlayerDecoder::noHardwareByItself()
{
    CodecCalls calls;
    Way way("video");
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    QCOMPARE(calls.log.count("hwdevice"), 0);
    QVERIFY(!calls.lastOpening().opaque);
    QVERIFY(!calls.lastOpening().hardware);
}

void tst_ZRPlayerDecoder::hardwareOfNoCodec()
{
    LogCatcher log;
    CodecCalls calls;
    denyDevice(calls);
    Way way("video");
    way.decoder.setHardwareType(AV_HWDEVICE_TYPE_DXVA2);
    QCOMPARE(int(AV_HWDEVICE_TYPE_DXVA2), 4);
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1)); // in software
    QCOMPARE(log.lines(),
        (QStringList{"[0] Decoder rawvideo does not support device type dxva2",
            "Failed to create specified HW device",
            "hw decoder init failure, deviceType = 4, format = -1"}));
    QCOMPARE(calls.log.count("hwdevice 4"), 1); // tried all the same
    QVERIFY(!calls.lastOpening().opaque);
    QVERIFY(!calls.lastOpening().hardware);
    for (int i = 1; i < 5; ++i)
        way.add(i);
    QCOMPARE(way.take(4), (QVector<qint64>{1, 2, 3, 4}));
    QCOMPARE(calls.log.count("hwdevice"), 1); // decided once
}

void tst_ZRPlayerDecoder::hardwareOfARealCodec_data()
{
    QTest::addColumn<bool>("device");
    QTest::addColumn<int>("pictures");
    QTest::newRow("no device") << false << 50;
    if (hasDevice())
        QTest::newRow("device") << true << (StreamFacts::hardwareGivesPictures() ? 50 : 0);
}

// Only a device that can't be made has the codec decode in software. One that can, and then decodes
// nothing, is kept.
void tst_ZRPlayerDecoder::hardwareOfARealCodec()
{
    QFETCH(bool, device);
    QFETCH(int, pictures);
    const MediaClip &clip =
        MediaClip::of(MediaClip::Format::of(AV_CODEC_ID_H264, AV_CODEC_ID_NONE));
    const QStringList refused = refusal(AV_CODEC_ID_H264, AV_HWDEVICE_TYPE_DXVA2);
    LogCatcher log;
    CodecCalls calls;
    if (!device)
        denyDevice(calls);
    Way way("video");
    way.decoder.setHardwareType(AV_HWDEVICE_TYPE_DXVA2);
    for (const MediaClip::Packet &packet : clip.packets())
        way.reader.add(packet, clip.parameters(MediaClip::Video));
    way.reader.end = true;
    way.decoder.start();
    QCOMPARE(way.take(pictures).size(), pictures);
    QTRY_VERIFY_WITH_TIMEOUT(way.decoder.isVideoEof(), patience);
    QVERIFY(!way.pop());
    QCOMPARE(log.beginning("["), refused);
    QCOMPARE(log.beginning("hw decoder init failure").size(), device ? 0 : 1);
    const bool decodesNothing = device && pictures == 0;
    QCOMPARE(!log.beginning("Failed to get HW surface format, hc->format = 51, 51").isEmpty(),
        decodesNothing);
}

void tst_ZRPlayerDecoder::hardwareTakesEffectAtTheNextSetUp()
{
    CodecCalls calls;
    Way way("video");
    way.add(0);
    way.decoder.start();
    QCOMPARE(way.take(1), upTo(1));
    way.decoder.setHardwareType(AV_HWDEVICE_TYPE_DXVA2);
    way.add(1);
    QCOMPARE(way.take(1), (QVector<qint64>{1}));
    QCOMPARE(calls.log.count("hwdevice"), 0);
    way.add(2, AV_CODEC_ID_AYUV);
    QCOMPARE(way.take(1), (QVector<qint64>{2}));
    QCOMPARE(calls.log.count("hwdevice 4"), 1);
}

void tst_ZRPlayerDecoder::hardwareFormat_data()
{
    using Formats = QVector<int>;
    QTest::addColumn<QVector<int>>("offered");
    QTest::addColumn<int>("chosen");
    QTest::newRow("only one") << Formats{AV_PIX_FMT_DXVA2_VLD} << int(AV_PIX_FMT_DXVA2_VLD);
    QTest::newRow("later") << Formats{AV_PIX_FMT_YUV420P, AV_PIX_FMT_VAAPI, AV_PIX_FMT_DXVA2_VLD}
                           << int(AV_PIX_FMT_DXVA2_VLD);
    QTest::newRow("missing") << Formats{AV_PIX_FMT_YUV420P} << int(AV_PIX_FMT_NONE);
    QTest::newRow("none offered") << Formats{} << int(AV_PIX_FMT_NONE);
}

void tst_ZRPlayerDecoder::hardwareFormat()
{
    QFETCH(QVector<int>, offered);
    QFETCH(int, chosen);
    LogCatcher log;
    HardwareCalls calls;
    // The row that says both the device and that it goes by a device context.
    calls.hardwareConfigs = {
        {AV_PIX_FMT_D3D11, AV_CODEC_HW_CONFIG_METHOD_HW_FRAMES_CTX, AV_HWDEVICE_TYPE_DXVA2},
        {AV_PIX_FMT_VAAPI, AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX, AV_HWDEVICE_TYPE_VAAPI},
        {AV_PIX_FMT_DXVA2_VLD,
            AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX | AV_CODEC_HW_CONFIG_METHOD_INTERNAL,
            AV_HWDEVICE_TYPE_DXVA2},
        {AV_PIX_FMT_VULKAN, AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX, AV_HWDEVICE_TYPE_DXVA2}};
    {
        Way way("video");
        startWithHardware(way);
        QCOMPARE(way.take(1), upTo(1));
        const CodecCalls::Opening opening = calls.lastOpening();
        QVERIFY(opening.hardware);
        const auto *record = static_cast<ZRHardwareContext *>(opening.opaque);
        QCOMPARE(record->format, int(AV_PIX_FMT_DXVA2_VLD));
        QCOMPARE(record->device, calls.madeDevices.front());

        QCOMPARE(chosenFormat(opening, offered), chosen);
        const QString line = QStringLiteral("Failed to get HW surface format, hc->format = %1, 51")
                                 .arg(int(AV_PIX_FMT_DXVA2_VLD));
        QCOMPARE(log.lines(), chosen == AV_PIX_FMT_NONE ? QStringList(line) : QStringList());
    }
    // Of the set-up's two references the codec's is gone, the record's is left behind.
    QCOMPARE(av_buffer_get_ref_count(calls.hardwareDevice), 2);
}

// The device is used all the same, and no format that is offered is its own.
void tst_ZRPlayerDecoder::hardwareWithoutAFormat()
{
    LogCatcher log;
    HardwareCalls calls;
    Way way("video");
    startWithHardware(way);
    QCOMPARE(way.take(1), upTo(1));
    const CodecCalls::Opening opening = calls.lastOpening();
    QVERIFY(opening.hardware);
    QCOMPARE(static_cast<ZRHardwareContext *>(opening.opaque)->format, -1);
    QCOMPARE(chosenFormat(opening, {AV_PIX_FMT_YUV420P}), -1);
    QCOMPARE(log.lines(),
        (QStringList{"[0] Decoder rawvideo does not support device type dxva2",
            "Failed to get HW surface format, hc->format = -1, 51"}));
}

// The record goes with the codec.
void tst_ZRPlayerDecoder::hardwareOfACodecThatCannotBeOpened()
{
    LogCatcher log;
    HardwareCalls calls;
    calls.answer("video open2", {AVERROR(EINVAL)});
    Way way("video");
    startWithHardware(way);
    QTRY_VERIFY_WITH_TIMEOUT(!way.decoder.isRunning(), patience);
    QVERIFY(calls.lastOpening().opaque);
    QCOMPARE(log.beginning("avcodec_open2(video").size(), 1);
    QCOMPARE(calls.log.count("video free"), 1);
    QVERIFY(!way.decoder.videoContext);
    QCOMPARE(av_buffer_get_ref_count(calls.hardwareDevice), 2);
}

void tst_ZRPlayerDecoder::hardwareOfADrainedCodec()
{
    HardwareCalls calls;
    {
        Way way("video");
        startWithHardware(way);
        QCOMPARE(way.take(1), upTo(1));
        calls.answer("video send", {AVERROR_EOF});
        way.add(1);
        QCOMPARE(way.take(1), (QVector<qint64>{1}));
        QCOMPARE(calls.log.count("hwdevice 4"), 2);
        const auto *record = static_cast<ZRHardwareContext *>(calls.lastOpening().opaque);
        QCOMPARE(record->device, calls.madeDevices.back());
    }
    // Each set-up leaves its record's reference behind.
    QCOMPARE(av_buffer_get_ref_count(calls.hardwareDevice), 3);
}

void tst_ZRPlayerDecoder::realClips_data()
{
    QTest::addColumn<int>("video");
    QTest::addColumn<int>("audio");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("H.264, AAC") << int(AV_CODEC_ID_H264) << int(AV_CODEC_ID_AAC) << "mp4";
    QTest::newRow("H.265, A-law") << int(AV_CODEC_ID_HEVC) << int(AV_CODEC_ID_PCM_ALAW) << "mkv";
}

// All pictures in order, and sound as long as they.
void tst_ZRPlayerDecoder::realClips()
{
    QFETCH(int, video);
    QFETCH(int, audio);
    QFETCH(QString, suffix);
    const MediaClip &clip = MediaClip::of(
        MediaClip::Format::of(static_cast<AVCodecID>(video), static_cast<AVCodecID>(audio)));
    Pipeline pipeline(clip.file(suffix).toStdString());
    Decoder &decoder = pipeline.decoder;
    pipeline.reader.start();
    QVector<qint64> pictures;
    double sound = 0.0;
    const auto seconds = [](const AVFrame *frame) {
        return double(frame->nb_samples) / frame->sample_rate;
    };
    QElapsedTimer clock;
    clock.start();
    // The first packet of AAC is for the decoder's start.
    const double leastSound = clip.seconds() - 0.05;
    while ((pictures.size() < 50 || sound < leastSound) && clock.elapsed() < patience) {
        const Frame picture(decoder.popVideoFrame());
        const Frame samples(decoder.popAudioFrame());
        if (picture)
            pictures.append(MediaClip::number(picture->frame));
        if (samples)
            sound += seconds(samples->frame);
        if (!picture && !samples)
            QTest::qWait(1);
    }
    QCOMPARE(pictures, upTo(50));
    QVERIFY2(sound >= leastSound, qPrintable(QString::number(sound)));
    QTRY_VERIFY_WITH_TIMEOUT(decoder.isVideoEof(), patience);
}

void tst_ZRPlayerDecoder::realClipAgainAfterItsEnd()
{
    const MediaClip &clip =
        MediaClip::of(MediaClip::Format::of(AV_CODEC_ID_H264, AV_CODEC_ID_NONE));
    Pipeline pipeline(clip.file("mp4").toStdString());
    Decoder &decoder = pipeline.decoder;
    pipeline.reader.start();
    for (int run = 0; run < 3; ++run) {
        QVector<qint64> pictures;
        while (pictures.size() < 50) {
            const Frame frame = nextVideo(decoder);
            QVERIFY(frame);
            pictures.append(MediaClip::number(frame->frame));
        }
        QCOMPARE(pictures, upTo(50));
        QTRY_VERIFY_WITH_TIMEOUT(decoder.isVideoEof(), patience);
        pipeline.reader.seek(0.0);
    }
}

void tst_ZRPlayerDecoder::joinsInTheMiddle()
{
    RtspPeer::Faults faults;
    faults.startPicture = 10; // key frames are 0 and 25
    const RtspPeer peer(MediaClip::of({}), faults);
    Pipeline pipeline(peer.url());
    pipeline.reader.start();
    for (int number = 25; number < 30; ++number) {
        const Frame frame = nextVideo(pipeline.decoder);
        QVERIFY(frame);
        QCOMPARE(MediaClip::number(frame->frame), number);
    }
}

void tst_ZRPlayerDecoder::liveOverflowGoesOnWithAKeyFrame()
{
    const RtspPeer peer(MediaClip::of({}), RtspPeer::AsFastAsTaken);
    Pipeline pipeline(peer.url());
    Decoder &decoder = pipeline.decoder;
    decoder.setAudioEnabled(false);
    pipeline.reader.start();
    // Nobody takes a frame, so all queues fill up.
    QTRY_VERIFY_WITH_TIMEOUT(decoder.videoFrames && decoder.videoFrames->size() == 2, patience);
    QTRY_COMPARE_WITH_TIMEOUT(pipeline.reader.videoPackets->size(), 31, patience);
    pipeline.reader.setRealtime(true);
    QTRY_COMPARE_WITH_TIMEOUT(pipeline.events[ZRPlayerReader::Overflowed].load(), 1, patience);
    const Frame old = nextVideo(decoder);
    QVERIFY(old);
    QCOMPARE(MediaClip::number(old->frame), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!decoder.flushVideo, patience);
    int last = -1;
    for (int i = 0; i < 30; ++i) {
        const Frame frame = nextVideo(decoder);
        QVERIFY(frame);
        const int number = MediaClip::number(frame->frame);
        if (i == 0)
            QVERIFY2(number % 25 == 0, qPrintable(QString::number(number)));
        else
            QCOMPARE(number, (last + 1) % 50);
        last = number;
    }
}

void tst_ZRPlayerDecoder::opensAndClosesManyTimes()
{
    const std::string file = MediaClip::of({}).file("mp4").toStdString();
    for (int i = 0; i < 60; ++i) {
        Pipeline pipeline(file);
        pipeline.reader.start();
        for (int frames = 0; frames < i % 5; ++frames)
            QVERIFY(nextVideo(pipeline.decoder));
    }
}

QTEST_GUILESS_MAIN(tst_ZRPlayerDecoder)
#include "tst_ZRPlayerDecoder.moc"
