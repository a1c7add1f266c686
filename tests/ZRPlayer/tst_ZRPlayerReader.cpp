#include "ZRPlayerReader.h"

#include "LogCatcher.h"
#include "MediaClip.h"
#include "RtspPeer.h"
#include "ScriptedInput.h"
#include "ZRPlayerError.h"
#include "ZRPlayerObserver.h"

extern "C" {
#include <libavcodec/bsf.h>
}

#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(AVCodecID)
Q_DECLARE_METATYPE(AVMediaType)

namespace {

constexpr int patience = 60000; // milliseconds, for what must come
constexpr int noTimeLost = 300; // milliseconds, to see that nothing comes
constexpr double longAgo = 1000.0; // seconds of the wall clock

using Packet = std::unique_ptr<ZRPlayerPacket>;
using Input = ScriptedInput;

const Input::Stream picture = {AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_MPEG4};
const Input::Stream sound = {AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_PCM_ALAW};
const Input::Stream data = {AVMEDIA_TYPE_DATA, AV_CODEC_ID_BIN_DATA};

// Open to a test's eyes; its events go into the log of calls as "event 0".
class Reader : public ZRPlayerReader, public ZRPlayerReaderObserver
{
public:
    explicit Reader(CallLog *log = nullptr, const std::string &url = "scripted") : log(log)
    {
        setUrl(url);
        setObserver(this);
    }
    ~Reader() override { stop(); }

    void onReaderNotify(ZRPlayerReader *reader, int type) override
    {
        senderIsRight = senderIsRight && reader == this;
        if (onEvent)
            onEvent(type);
        if (log)
            log->add(QStringLiteral("event %1").arg(type));
    }

    void flush() override
    {
        ZRPlayerReader::flush();
        if (onFlush)
            onFlush();
    }

    using ZRPlayerReader::audioPackets;
    using ZRPlayerReader::audioStream;
    using ZRPlayerReader::bitstreamFilter;
    using ZRPlayerReader::bitstreamFilterContext;
    using ZRPlayerReader::commands;
    using ZRPlayerReader::eof;
    using ZRPlayerReader::formatContext;
    using ZRPlayerReader::maxVideoPackets;
    using ZRPlayerReader::observer;
    using ZRPlayerReader::openStartTime;
    using ZRPlayerReader::packetObserver;
    using ZRPlayerReader::realtime;
    using ZRPlayerReader::seekRequested;
    using ZRPlayerReader::seekTarget;
    using ZRPlayerReader::thread;
    using ZRPlayerReader::timeout;
    using ZRPlayerReader::url;
    using ZRPlayerReader::videoPackets;
    using ZRPlayerReader::videoStream;

    CallLog *log;
    std::function<void(int)> onEvent; // on the reader thread
    std::function<void()> onFlush;
    bool senderIsRight = true;
};

// What the log has of these, in order.
QStringList only(const CallLog &log, const QStringList &beginnings)
{
    QStringList found;
    for (const QString &line : log.lines()) {
        for (const QString &beginning : beginnings) {
            if (line.startsWith(beginning))
                found.append(line);
        }
    }
    return found;
}

struct ContextDeleter {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
};
using CodecContext = std::unique_ptr<AVCodecContext, ContextDeleter>;

}

class tst_ZRPlayerReader : public QObject
{
    Q_OBJECT

private slots:
    void closedAtFirst();
    void packetRecordRefersToTheBuffer();
    void commandTypes();

    void opening_data();
    void opening();
    void openedComesBeforeAnyPacket();
    void threadHasItsName();
    void openingFails();
    void openingOfNothingFails_data();
    void openingOfNothingFails();
    void timeoutLimitsTheOpening();
    void timeoutEndsWithTheOpening();
    void noTimeoutIsNoLimit();
    void interrupt_data();
    void interrupt();
    void lastStreamOfEachTypeWins();
    void streamsOfNoUse();
    void duration_data();
    void duration();
    void filter_data();
    void filter();
    void filterThatCannotBeHad_data();
    void filterThatCannotBeHad();
    void noPacketGoesThroughTheFilter();

    void readsRealClips_data();
    void readsRealClips();
    void readsRtsp_data();
    void readsRtsp();
    void otherStreamsAreDropped();
    void packetsCarryTheirStream();
    void packetObserverSeesEachPacketBeforeTheQueue();
    void backPressureLosesNothing();
    void noLimitOfVideoPackets();
    void soundAloneHasNoLimit();
    void overflowOfALiveStream();
    void dropsCallsQueuedForItsThread_data();
    void dropsCallsQueuedForItsThread();
    void endOfInputKeepsTheThread();
    void readErrorEndsTheLoop();
    void stopEndsABlockedRead();
    void bitrate_data();
    void bitrate();

    void seekIsTheExactCall_data();
    void seekIsTheExactCall();
    void seekFailed();
    void seekWithoutAContext();
    void laterSeekReplacesTheTarget();
    void seekGoesOnFromTheEnd();
    void seekIsServedWhilePaused();
    void seekWaitsForTheDecoder();
    void seeksARealClip();
    void oneCommandInAPass();
    void pauseStopsReading();
    void commandsReachTheCamera();

    void copyCodecParameters();
    void startAndStopClearTheQueues();
    void stopWithoutAThread();
    void flushWhileClosed();
    void runsWithoutAnObserver();
    void destructorFreesTheQueues();
    void opensAndClosesManyTimes();
};

void tst_ZRPlayerReader::closedAtFirst()
{
    Reader reader;
    QVERIFY(!reader.isRunning());
    QVERIFY(!reader.hasVideo());
    QVERIFY(!reader.hasAudio());
    QVERIFY(!reader.isEof());
    QVERIFY(!reader.popVideoPacket());
    QVERIFY(!reader.popAudioPacket());
    QCOMPARE(reader.duration(), -1.0);
    QCOMPARE(reader.bitrate(), 0.0);
    QCOMPARE(reader.maxVideoPackets, 30);
    QCOMPARE(reader.openStartTime, 0.0);
    QVERIFY(!reader.formatContext);
    QVERIFY(!reader.thread);
    QVERIFY(!reader.packetObserver);
    QVERIFY(!reader.seekRequested);
    QVERIFY(!reader.realtime);
}

void tst_ZRPlayerReader::packetRecordRefersToTheBuffer()
{
    AVPacket *source = av_packet_alloc();
    av_new_packet(source, 100);
    source->pts = 5;
    {
        const ZRPlayerPacket record(source, AV_CODEC_ID_H264, ZRPlayerPacket::Audio, {1, 90000});
        QVERIFY(record.packet != source);
        QCOMPARE(record.packet->data, source->data);
        QCOMPARE(av_buffer_get_ref_count(source->buf), 2);
        QCOMPARE(record.packet->pts, int64_t(5));
        QCOMPARE(record.codecId, int(AV_CODEC_ID_H264));
        QCOMPARE(record.type, 2);
        QCOMPARE(record.timeBase.num, 1);
        QCOMPARE(record.timeBase.den, 90000);
    }
    QCOMPARE(av_buffer_get_ref_count(source->buf), 1);
    av_packet_free(&source);
}

void tst_ZRPlayerReader::commandTypes()
{
    Reader reader;
    reader.play();
    reader.pause();
    for (const int type : {0, 1})
        QCOMPARE(std::unique_ptr<ZRPlayerReaderCommand>(reader.commands->pop())->type, type);
    QVERIFY(std::has_virtual_destructor<ZRPlayerReaderCommand>::value);
}

void tst_ZRPlayerReader::opening_data()
{
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<bool>("realtime");
    QTest::addColumn<bool>("opens");
    const QByteArray file = MediaClip::of({}).file("mp4").toLocal8Bit();
    for (const bool realtime : {false, true}) {
        const char *how = realtime ? "live" : "not live";
        QTest::addRow("scripted, %s", how) << QByteArray("scripted") << realtime << true;
        QTest::addRow("file, %s", how) << file << realtime << true;
        QTest::addRow("no file, %s", how) << QByteArray("/no/such/file") << realtime << false;
    }
}

void tst_ZRPlayerReader::opening()
{
    QFETCH(QByteArray, url);
    QFETCH(bool, realtime);
    QFETCH(bool, opens);
    Input input;
    Reader reader(&input.calls, url.toStdString());
    double startTimeInside = -1.0;
    reader.setRealtime(realtime);
    reader.onEvent = [&](int type) {
        if (type <= 1)
            startTimeInside = reader.openStartTime;
    };
    QCOMPARE(reader.start(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count(opens ? "event 0" : "event 1"), 1, patience);
    reader.stop();

    const Input::Opening opening = input.lastOpening();
    QCOMPARE(opening.url, url);
    QVERIFY(!opening.formatGiven);
    QCOMPARE(opening.options, (QMap<QByteArray, QByteArray>{{"rtsp_transport", "tcp"}}));
    AVFormatContext *fresh = avformat_alloc_context();
    const int usual = fresh->flags;
    avformat_free_context(fresh);
    QVERIFY(usual != 0);
    QCOMPARE(opening.flags, realtime ? 0x40 : usual);
    QVERIFY(opening.interrupt.callback);
    QCOMPARE(opening.interrupt.opaque, static_cast<void *>(static_cast<ZRPlayerReader *>(&reader)));
    QCOMPARE(startTimeInside, 0.0);
    QCOMPARE(input.calls.count("avformat_open_input"), 1);
    QCOMPARE(input.calls.count("avformat_find_stream_info"), 0);
}

void tst_ZRPlayerReader::openedComesBeforeAnyPacket()
{
    Input input;
    input.streams = {picture, sound};
    input.addPackets(0);
    Reader reader(&input.calls);
    int readsAtEvent = -1;
    bool streamsKnown = false;
    reader.onEvent = [&](int type) {
        if (type != 0)
            return;
        readsAtEvent = input.calls.count("av_read_frame");
        streamsKnown = reader.hasVideo() && reader.hasAudio();
    };
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 1, patience);
    QVERIFY(reader.isRunning());
    QCOMPARE(readsAtEvent, 0);
    QVERIFY(streamsKnown);
    QVERIFY(reader.senderIsRight);
    reader.stop();
    QCOMPARE(only(input.calls, {"event"}), (QStringList{"event 0", "event 2"}));
}

void tst_ZRPlayerReader::threadHasItsName()
{
    Input input;
    Reader reader(&input.calls);
    QString name;
    reader.onEvent = [&](int) { name = QThread::currentThread()->objectName(); };
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);
    reader.stop();
    QCOMPARE(name, QStringLiteral("ZRPlayerReaderThread"));
}

void tst_ZRPlayerReader::openingFails()
{
    LogCatcher log;
    Input input;
    input.streams = {picture};
    input.openResult = AVERROR(EACCES);
    Reader reader(&input.calls);
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(!reader.isRunning(), patience);
    QCOMPARE(only(input.calls, {"event"}), QStringList("event 1"));
    QCOMPARE(log.count("open stream failure"), 1);
    QVERIFY(!reader.formatContext);
    QVERIFY(!reader.hasVideo());
    QCOMPARE(reader.duration(), -1.0);
    QCOMPARE(reader.openStartTime, 0.0);
    QTest::qWait(noTimeLost); // no second try
    QCOMPARE(input.calls.count("avformat_open_input"), 1);
}

void tst_ZRPlayerReader::openingOfNothingFails_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *fault : {"nobody listens", "not found", "hangs up"})
        QTest::newRow(fault) << fault;
}

void tst_ZRPlayerReader::openingOfNothingFails()
{
    QFETCH(QString, fault);
    RtspPeer::Faults faults;
    faults.refuse = fault == "nobody listens";
    if (fault == "not found") {
        faults.refusedRequest = "DESCRIBE";
        faults.status = 404;
    } else if (fault == "hangs up") {
        faults.hangUpAt = "DESCRIBE";
    }
    const RtspPeer peer(MediaClip::of({}), faults);
    LogCatcher log;
    Input input;
    Reader reader(&input.calls, peer.url());
    reader.setTimeout(10.0);
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(!reader.isRunning(), patience);
    QCOMPARE(only(input.calls, {"event"}), QStringList("event 1"));
    QCOMPARE(log.count("open stream failure"), 1);
}

void tst_ZRPlayerReader::timeoutLimitsTheOpening()
{
    RtspPeer::Faults faults;
    faults.silentFrom = "DESCRIBE";
    const RtspPeer peer(MediaClip::of({}), faults);
    Input input;
    Reader reader(&input.calls, peer.url());
    reader.setTimeout(0.7);
    QElapsedTimer clock;
    clock.start();
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 1"), 1, patience);
    QVERIFY2(clock.elapsed() >= 690, qPrintable(QString::number(clock.elapsed())));
    QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
}

void tst_ZRPlayerReader::timeoutEndsWithTheOpening()
{
    RtspPeer::Faults faults;
    faults.stopAfter = 20;
    const RtspPeer peer(MediaClip::of({}), faults);
    Input input;
    Reader reader(&input.calls, peer.url());
    reader.setTimeout(10.0);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);
    reader.setTimeout(0.001);
    QTRY_COMPARE_WITH_TIMEOUT(peer.packetsSent(), 20, patience);
    QTest::qWait(noTimeLost); // it stands, and blocks in av_read_frame
    QVERIFY(reader.isRunning());
    QCOMPARE(only(input.calls, {"event"}), QStringList("event 0"));
    QElapsedTimer clock;
    clock.start();
    reader.stop();
    QVERIFY(clock.elapsed() < 5000);
    QCOMPARE(only(input.calls, {"event"}), (QStringList{"event 0", "event 2"}));
}

void tst_ZRPlayerReader::noTimeoutIsNoLimit()
{
    RtspPeer::Faults faults;
    faults.silentFrom = "OPTIONS";
    const RtspPeer peer(MediaClip::of({}), faults);
    Input input;
    Reader reader(&input.calls, peer.url());
    reader.setTimeout(0.0);
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(peer.requests().contains("OPTIONS"), patience);
    QTest::qWait(2 * noTimeLost);
    QVERIFY(reader.isRunning());
    QCOMPARE(input.calls.count("event"), 0);
    QElapsedTimer clock;
    clock.start();
    reader.stop(); // breaks the opening off
    QVERIFY(clock.elapsed() < 5000);
    QCOMPARE(only(input.calls, {"event"}), QStringList("event 1"));
}

void tst_ZRPlayerReader::interrupt_data()
{
    QTest::addColumn<QString>("thread");
    QTest::addColumn<double>("timeout");
    QTest::addColumn<double>("age"); // of the opening, seconds; below 0: none
    QTest::addColumn<int>("result");
    QTest::newRow("runs") << "runs" << 10.0 << -1.0 << 0;
    QTest::newRow("stopped") << "stopped" << 10.0 << -1.0 << 1;
    QTest::newRow("no thread") << "none" << 10.0 << -1.0 << 1;
    QTest::newRow("opens, in time") << "runs" << longAgo << 1.0 << 0;
    QTest::newRow("opens, too late") << "runs" << 10.0 << 11.0 << 1;
    QTest::newRow("opens, no limit") << "runs" << 0.0 << longAgo << 0;
    QTest::newRow("opens, negative limit") << "runs" << -1.0 << longAgo << 0;
    QTest::newRow("opens, in time, stopped") << "stopped" << longAgo << 1.0 << 1;
    QTest::newRow("too late, no thread") << "none" << 10.0 << 11.0 << 1;
}

void tst_ZRPlayerReader::interrupt()
{
    QFETCH(QString, thread);
    QFETCH(double, timeout);
    QFETCH(double, age);
    QFETCH(int, result);
    Input input;
    {
        Reader opens(&input.calls);
        opens.start();
        QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);
    }
    const auto function = input.lastOpening().interrupt.callback;

    Reader reader;
    ZRPlayerReaderThread idle(&reader);
    if (thread == "stopped")
        idle.stop();
    reader.thread = thread == "none" ? nullptr : &idle;
    reader.timeout = timeout;
    reader.openStartTime = age < 0 ? 0.0 : ZRThread::currentSeconds() - age;
    const int got = function(static_cast<ZRPlayerReader *>(&reader));
    reader.thread = nullptr;
    QCOMPARE(got, result);
    QCOMPARE(function(nullptr), -1);
}

void tst_ZRPlayerReader::lastStreamOfEachTypeWins()
{
    Input input;
    input.streams = {sound, picture, data, picture, sound, data};
    for (int stream = 0; stream < 6; ++stream)
        input.addPackets(stream, 2);
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("av_read_frame"), 12, patience);
    QCOMPARE(reader.videoStream->index, 3);
    QCOMPARE(reader.audioStream->index, 4);
    QTRY_COMPARE_WITH_TIMEOUT(reader.audioPackets->size(), 2, patience);
    QCOMPARE(reader.videoPackets->size(), 2);
    QCOMPARE(Packet(reader.popVideoPacket())->packet->stream_index, 3);
    QCOMPARE(Packet(reader.popAudioPacket())->packet->stream_index, 4);
}

void tst_ZRPlayerReader::streamsOfNoUse()
{
    Input input;
    input.streams = {data, {AVMEDIA_TYPE_SUBTITLE, AV_CODEC_ID_TEXT}};
    input.addPackets(0, 3);
    input.addPackets(1, 3);
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("av_read_frame"), 6, patience);
    QVERIFY(!reader.hasVideo());
    QVERIFY(!reader.hasAudio());
    QCOMPARE(input.calls.count("event 0"), 1);
    QCOMPARE(input.calls.count("av_bsf_alloc"), 0);
    QCOMPARE(reader.videoPackets->size() + reader.audioPackets->size(), 0);
}

void tst_ZRPlayerReader::duration_data()
{
    constexpr auto none = qint64(AV_NOPTS_VALUE);
    QTest::addColumn<qint64>("context");
    QTest::addColumn<qint64>("video"); // in 1/90000
    QTest::addColumn<qint64>("audio"); // in 1/8000
    QTest::addColumn<double>("seconds");
    QTest::newRow("the context's first") << qint64(2500000) << qint64(90000) << qint64(8000) << 2.5;
    QTest::newRow("zero is known") << qint64(0) << qint64(90000) << qint64(8000) << 0.0;
    QTest::newRow("then the picture's") << none << qint64(135000) << qint64(8000) << 1.5;
    QTest::newRow("then the sound's") << none << none << qint64(6000) << 0.75;
    QTest::newRow("none") << none << none << none << -1.0;
}

void tst_ZRPlayerReader::duration()
{
    QFETCH(qint64, context);
    QFETCH(qint64, video);
    QFETCH(qint64, audio);
    QFETCH(double, seconds);
    Input input;
    input.duration = context;
    input.streams = {{AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_MPEG4, video, {1, 90000}},
        {AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_PCM_ALAW, audio, {1, 8000}}};
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);
    QCOMPARE(reader.duration(), seconds);
    reader.stop();
    QCOMPARE(reader.duration(), -1.0);
}

void tst_ZRPlayerReader::filter_data()
{
    QTest::addColumn<AVMediaType>("type");
    QTest::addColumn<AVCodecID>("codecId");
    QTest::addColumn<QString>("name");
    const AVMediaType video = AVMEDIA_TYPE_VIDEO;
    QTest::newRow("H.264") << video << AV_CODEC_ID_H264 << "h264_mp4toannexb";
    QTest::newRow("H.265") << video << AV_CODEC_ID_HEVC << "hevc_mp4toannexb";
    QTest::newRow("MPEG-4") << video << AV_CODEC_ID_MPEG4 << "";
    QTest::newRow("AAC as picture") << video << AV_CODEC_ID_AAC << "aac_adtstoasc";
    QTest::newRow("DTS as picture") << video << AV_CODEC_ID_DTS << "dca_core";
    QTest::newRow("AAC") << AVMEDIA_TYPE_AUDIO << AV_CODEC_ID_AAC << "";
    QTest::newRow("DTS") << AVMEDIA_TYPE_AUDIO << AV_CODEC_ID_DTS << "";
}

void tst_ZRPlayerReader::filter()
{
    QFETCH(AVMediaType, type);
    QFETCH(AVCodecID, codecId);
    QFETCH(QString, name);
    Input input;
    input.streams = {{type, codecId}};
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);
    const int expected = name.isEmpty() ? 0 : 1;
    QCOMPARE(reader.bitstreamFilter != nullptr, expected == 1);
    QCOMPARE(reader.bitstreamFilterContext != nullptr, expected == 1);
    if (expected == 1) {
        QCOMPARE(QString(reader.bitstreamFilter->name), name);
        QCOMPARE(QString(reader.bitstreamFilterContext->filter->name), name);
        QCOMPARE(reader.bitstreamFilterContext->par_in->codec_id, codecId);
    }
    QCOMPARE(input.calls.count("av_bsf_init"), expected);
    QCOMPARE(input.calls.count("av_bsf_free"), 0);
    reader.stop();
    QCOMPARE(input.calls.count("av_bsf_free"), expected);
    QVERIFY(!reader.bitstreamFilter);
    QVERIFY(!reader.bitstreamFilterContext);
}

void tst_ZRPlayerReader::filterThatCannotBeHad_data()
{
    QTest::addColumn<QByteArray>("call");
    for (const char *call : {"av_bsf_alloc", "avcodec_parameters_copy", "av_bsf_init"})
        QTest::newRow(call) << QByteArray(call);
}

void tst_ZRPlayerReader::filterThatCannotBeHad()
{
    QFETCH(QByteArray, call);
    LogCatcher log;
    Input input;
    input.failingCall = call;
    input.streams = {{AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_H264}};
    input.addPackets(0, 5);
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 5, patience);
    QVERIFY(!reader.bitstreamFilterContext);
    QCOMPARE(input.calls.count("av_bsf_free"), call == "av_bsf_alloc" ? 0 : 1);
    QCOMPARE(only(input.calls, {"event"}), QStringList("event 0"));
    QCOMPARE(log.lines(), QStringList());
}

void tst_ZRPlayerReader::noPacketGoesThroughTheFilter()
{
    const QString file = MediaClip::of({}).file("mp4");
    QVector<QByteArray> plain;
    {
        AVFormatContext *context = nullptr;
        QVERIFY(avformat_open_input(&context, file.toLocal8Bit(), nullptr, nullptr) >= 0);
        AVPacket *packet = av_packet_alloc();
        while (av_read_frame(context, packet) >= 0) {
            const AVStream *stream = context->streams[packet->stream_index];
            if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
                plain.append(QByteArray(reinterpret_cast<char *>(packet->data), packet->size));
            av_packet_unref(packet);
        }
        av_packet_free(&packet);
        avformat_close_input(&context);
    }
    QVERIFY(!plain.isEmpty());

    Input input;
    Reader reader(&input.calls, file.toStdString());
    reader.maxVideoPackets = 0;
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(reader.isEof(), patience);
    QVERIFY(reader.bitstreamFilterContext);
    QCOMPARE(reader.videoPackets->size(), plain.size());
    for (const QByteArray &bytes : plain) {
        const Packet record(reader.popVideoPacket());
        QVERIFY(QByteArray(reinterpret_cast<char *>(record->packet->data), record->packet->size)
            == bytes);
    }
    QCOMPARE(input.calls.count("av_bsf_send_packet"), 0);
    QCOMPARE(input.calls.count("av_bsf_receive_packet"), 0);
}

void tst_ZRPlayerReader::readsRealClips_data()
{
    QTest::addColumn<AVCodecID>("video");
    QTest::addColumn<AVCodecID>("audio");
    QTest::addColumn<QString>("suffix");
    const AVCodecID none = AV_CODEC_ID_NONE;
    QTest::newRow("H.264, AAC") << AV_CODEC_ID_H264 << AV_CODEC_ID_AAC << "mp4";
    QTest::newRow("H.265, AAC") << AV_CODEC_ID_HEVC << AV_CODEC_ID_AAC << "mp4";
    QTest::newRow("H.264, A-law") << AV_CODEC_ID_H264 << AV_CODEC_ID_PCM_ALAW << "mkv";
    QTest::newRow("picture alone") << AV_CODEC_ID_H264 << none << "mp4";
    QTest::newRow("sound alone") << none << AV_CODEC_ID_AAC << "mp4";
}

void tst_ZRPlayerReader::readsRealClips()
{
    QFETCH(AVCodecID, video);
    QFETCH(AVCodecID, audio);
    QFETCH(QString, suffix);
    const MediaClip &clip = MediaClip::of(MediaClip::Format::of(video, audio));
    int packets[2] = {0, 0};
    for (const MediaClip::Packet &packet : clip.packets())
        ++packets[packet->stream_index];

    Input input;
    Reader reader(&input.calls, clip.file(suffix).toStdString());
    reader.maxVideoPackets = 0;
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(reader.isEof(), patience);
    QCOMPARE(reader.hasVideo(), clip.hasVideo());
    QCOMPARE(reader.hasAudio(), clip.hasAudio());
    QVERIFY(qAbs(reader.duration() - clip.seconds()) < 0.2);
    QCOMPARE(reader.videoPackets->size(), packets[MediaClip::Video]);
    QCOMPARE(reader.audioPackets->size(), packets[MediaClip::Audio]);
    while (const Packet record{reader.popVideoPacket()}) {
        QCOMPARE(record->codecId, int(video));
        QCOMPARE(record->type, 1);
    }
    while (const Packet record{reader.popAudioPacket()}) {
        QCOMPARE(record->codecId, int(audio));
        QCOMPARE(record->type, 2);
    }
    QCOMPARE(input.calls.count("avformat_find_stream_info"), 0);
}

void tst_ZRPlayerReader::readsRtsp_data()
{
    QTest::addColumn<AVCodecID>("video");
    QTest::addColumn<AVCodecID>("audio");
    QTest::newRow("H.264, AAC") << AV_CODEC_ID_H264 << AV_CODEC_ID_AAC;
    QTest::newRow("H.265, A-law") << AV_CODEC_ID_HEVC << AV_CODEC_ID_PCM_ALAW;
    QTest::newRow("picture alone") << AV_CODEC_ID_H264 << AV_CODEC_ID_NONE;
    QTest::newRow("sound alone") << AV_CODEC_ID_NONE << AV_CODEC_ID_PCM_ALAW;
}

void tst_ZRPlayerReader::readsRtsp()
{
    QFETCH(AVCodecID, video);
    QFETCH(AVCodecID, audio);
    const MediaClip &clip = MediaClip::of(MediaClip::Format::of(video, audio));
    const RtspPeer peer(clip); // it takes no transport but TCP
    Input input;
    Reader reader(&input.calls, peer.url());
    reader.setTimeout(10.0);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);
    QCOMPARE(reader.hasVideo(), clip.hasVideo());
    QCOMPARE(reader.hasAudio(), clip.hasAudio());
    QCOMPARE(reader.duration(), -1.0); // live
    if (clip.hasVideo()) {
        QTRY_VERIFY_WITH_TIMEOUT(reader.videoPackets->size() >= 5, patience);
        QCOMPARE(Packet(reader.popVideoPacket())->codecId, int(video));
    }
    if (clip.hasAudio()) {
        QTRY_VERIFY_WITH_TIMEOUT(reader.audioPackets->size() >= 5, patience);
        QCOMPARE(Packet(reader.popAudioPacket())->codecId, int(audio));
    }
}

void tst_ZRPlayerReader::otherStreamsAreDropped()
{
    Input input;
    input.streams = {picture, data};
    input.addPackets(1, 3);
    input.addPackets(0, 2);
    input.addPackets(7); // of no known stream
    input.addPackets(0);
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 3, patience);
    for (const int pts : {3, 4, 6})
        QCOMPARE(Packet(reader.popVideoPacket())->packet->pts, int64_t(pts));
    QCOMPARE(reader.audioPackets->size(), 0);
}

void tst_ZRPlayerReader::packetsCarryTheirStream()
{
    Input input;
    input.streams = {{AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_MPEG4, 0, {1, 90000}},
        {AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_PCM_ALAW, 0, {1, 8000}}};
    input.addPackets(0);
    input.addPackets(1);
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.audioPackets->size(), 1, patience);
    const Packet video(reader.popVideoPacket());
    const Packet audio(reader.popAudioPacket());
    QCOMPARE(video->type, 1);
    QCOMPARE(video->codecId, int(AV_CODEC_ID_MPEG4));
    QCOMPARE(video->timeBase.den, 90000);
    QCOMPARE(audio->type, 2);
    QCOMPARE(audio->codecId, int(AV_CODEC_ID_PCM_ALAW));
    QCOMPARE(audio->timeBase.den, 8000);
    // The queue's reference is the only one left.
    QCOMPARE(av_buffer_get_ref_count(video->packet->buf), 1);
}

void tst_ZRPlayerReader::packetObserverSeesEachPacketBeforeTheQueue()
{
    struct Observer : ZRPlayerPacketObserver {
        explicit Observer(Reader *reader) : reader(reader) { }
        void onPacket(ZRPlayerPacket *packet) override
        {
            seen.append(qMakePair(packet->type, packet->packet->pts));
            const auto &queue = packet->type == 1 ? reader->videoPackets : reader->audioPackets;
            queued.append(queue->size());
        }
        Reader *reader;
        QVector<QPair<int, qint64>> seen;
        QVector<int> queued;
    };
    Input input;
    input.streams = {picture, sound, data};
    for (const int stream : {0, 1, 2, 0})
        input.addPackets(stream);
    Reader reader(&input.calls);
    Observer observer(&reader);
    reader.packetObserver = &observer;
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 2, patience);
    reader.stop();
    QCOMPARE(observer.seen, (QVector<QPair<int, qint64>>{{1, 0}, {2, 1}, {1, 3}}));
    QCOMPARE(observer.queued, (QVector<int>{0, 0, 1}));
}

void tst_ZRPlayerReader::backPressureLosesNothing()
{
    constexpr int pictures = 200;
    Input input;
    input.streams = {picture, sound};
    for (int i = 0; i < pictures; ++i) {
        input.addPackets(0);
        input.addPackets(1);
    }
    input.addResult(AVERROR_EOF);
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 31, patience);
    QTest::qWait(noTimeLost);
    QCOMPARE(reader.videoPackets->size(), 31);
    QCOMPARE(input.calls.count("av_read_frame"), 61);
    QCOMPARE(reader.audioPackets->size(), 30);

    delete reader.popVideoPacket(); // makes room for one
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 31, patience);
    QTest::qWait(noTimeLost);
    QCOMPARE(input.calls.count("av_read_frame"), 63);

    for (int i = 1; i < pictures; ++i) {
        QTRY_VERIFY_WITH_TIMEOUT(reader.videoPackets->size() > 0, patience);
        QCOMPARE(Packet(reader.popVideoPacket())->packet->pts, int64_t(2 * i));
    }
    QTRY_VERIFY_WITH_TIMEOUT(reader.isEof(), patience);
    QCOMPARE(reader.audioPackets->size(), pictures); // they have no limit
    QVERIFY(!reader.popVideoPacket());
    QCOMPARE(only(input.calls, {"event", "avformat_flush"}), QStringList("event 0"));
}

void tst_ZRPlayerReader::noLimitOfVideoPackets()
{
    Input input;
    input.streams = {picture};
    input.addPackets(0, 100);
    Reader reader(&input.calls);
    reader.maxVideoPackets = 0;
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 100, patience);
}

void tst_ZRPlayerReader::soundAloneHasNoLimit()
{
    Input input;
    input.streams = {sound};
    input.addPackets(0, 500);
    Reader reader(&input.calls);
    reader.setRealtime(true);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.audioPackets->size(), 500, patience);
    QCOMPARE(only(input.calls, {"event"}), QStringList("event 0"));
}

void tst_ZRPlayerReader::overflowOfALiveStream()
{
    Input input;
    input.streams = {picture, sound};
    input.addPackets(1, 5);
    input.addPackets(0, 30);
    Reader reader(&input.calls);
    int left = -1;
    reader.onEvent = [&](int type) {
        if (type == 5)
            left = reader.videoPackets->size() + reader.audioPackets->size();
    };
    reader.setRealtime(true);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 30, patience);
    QTest::qWait(noTimeLost);
    QCOMPARE(input.calls.count("event 5"), 0); // 30 are still allowed

    input.addPackets(0);
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 5"), 1, patience);
    QCOMPARE(left, 0);
    QCOMPARE(only(input.calls, {"event", "avformat_flush"}),
        (QStringList{"event 0", "avformat_flush", "event 5"}));

    input.addPackets(0, 2); // and reading goes on
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 2, patience);
    QCOMPARE(Packet(reader.popVideoPacket())->packet->pts, int64_t(36));
    QCOMPARE(input.calls.count("event 5"), 1);
}

void tst_ZRPlayerReader::dropsCallsQueuedForItsThread_data()
{
    QTest::addColumn<int>("packets");
    QTest::addColumn<int>("result"); // behind them
    QTest::addColumn<bool>("paused");
    QTest::newRow("reading") << 1 << 0 << false;
    QTest::newRow("held back") << 40 << 0 << false;
    QTest::newRow("paused") << 1 << 0 << true;
    QTest::newRow("at the end") << 1 << AVERROR_EOF << false;
}

// The thread has no event loop: what is queued for an object that the observer made there is never
// called. Other threads' objects are.
void tst_ZRPlayerReader::dropsCallsQueuedForItsThread()
{
    QFETCH(const int, packets);
    QFETCH(const int, result);
    QFETCH(const bool, paused);
    Input input;
    input.streams = {picture};
    std::unique_ptr<QObject> made;
    QObject here;
    Reader reader(&input.calls);
    reader.onEvent = [&](int type) {
        if (type == ZRPlayerReader::Opened)
            made = std::make_unique<QObject>();
    };
    reader.start();
    if (paused)
        reader.pause();
    input.addPackets(0, packets);
    if (result < 0)
        input.addResult(result);
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);

    auto call = std::make_shared<bool>(false);
    const std::weak_ptr<bool> queued = call;
    bool calledThere = false;
    bool calledHere = false;
    QMetaObject::invokeMethod(
        made.get(), [call, &calledThere] { calledThere = true; }, Qt::QueuedConnection);
    QMetaObject::invokeMethod(
        &here, [&calledHere] { calledHere = true; }, Qt::QueuedConnection);
    call.reset();
    const QDeadlineTimer deadline(patience);
    while (!queued.expired() && !deadline.hasExpired()) { // without an event here either
        if (input.isIdle())
            input.addPackets(0);
        QThread::msleep(1);
    }

    QVERIFY(queued.expired());
    QVERIFY(!calledThere);
    QVERIFY(!calledHere);
    QCoreApplication::processEvents();
    QVERIFY(calledHere);
    reader.stop();
}

void tst_ZRPlayerReader::endOfInputKeepsTheThread()
{
    Input input;
    input.streams = {picture};
    input.addPackets(0, 2);
    input.addResult(AVERROR_EOF);
    input.addPackets(0);
    Reader reader(&input.calls);
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(reader.isEof(), patience);
    QTest::qWait(noTimeLost);
    QVERIFY(reader.isRunning());
    QVERIFY(reader.formatContext);
    QCOMPARE(input.unread(), 1);
    QCOMPARE(reader.videoPackets->size(), 2);
    QCOMPARE(only(input.calls, {"event"}), QStringList("event 0"));
    reader.stop();
    QCOMPARE(only(input.calls, {"event"}), (QStringList{"event 0", "event 2"}));
}

void tst_ZRPlayerReader::readErrorEndsTheLoop()
{
    LogCatcher log;
    Input input;
    input.streams = {picture, sound};
    input.duration = 1000000;
    input.addPackets(0, 2);
    input.addResult(AVERROR(EIO));
    Reader reader(&input.calls);
    bool openAtEvent = true;
    reader.onEvent = [&](int type) {
        if (type == 2)
            openAtEvent = reader.formatContext != nullptr;
    };
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(!reader.isRunning(), patience);
    const int error = AVERROR(EIO);
    QCOMPARE(log.count(QStringLiteral("av_read_frame error = %1\n%2")
                           .arg(error)
                           .arg(QString(errorText(error)))),
        1);
    QVERIFY(!openAtEvent); // closed before the event
    QVERIFY(!reader.hasVideo());
    QVERIFY(!reader.hasAudio());
    QVERIFY(!reader.isEof());
    QCOMPARE(reader.duration(), -1.0);
    QCOMPARE(reader.videoPackets->size(), 2); // still for the decoder
    QTest::qWait(noTimeLost);
    QCOMPARE(only(input.calls, {"event", "avformat_open_input", "avformat_close_input"}),
        (QStringList{"avformat_open_input", "event 0", "avformat_close_input", "event 2"}));
}

void tst_ZRPlayerReader::stopEndsABlockedRead()
{
    Input input;
    input.streams = {picture};
    input.addPackets(0);
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 1, patience);
    QElapsedTimer clock;
    clock.start();
    reader.stop();
    QVERIFY(clock.elapsed() < 5000);
    QVERIFY(!reader.isRunning());
    QVERIFY(!reader.formatContext);
    QCOMPARE(only(input.calls, {"event"}), (QStringList{"event 0", "event 2"}));
}

void tst_ZRPlayerReader::bitrate_data()
{
    QTest::addColumn<int>("size"); // of one packet
    QTest::addColumn<int>("stream");
    QTest::newRow("picture") << 512 * 1024 << 0;
    QTest::newRow("stream that is dropped") << 512 * 1024 << 1;
    QTest::newRow("beyond 31 bits in all") << 0x30000000 << 1;
}

void tst_ZRPlayerReader::bitrate()
{
    QFETCH(int, size);
    QFETCH(int, stream);
    Input input;
    input.streams = {picture, data};
    Reader reader(&input.calls);
    const double kibibytes = size / 1024.0;
    const struct {
        double clock; // when the next packet comes
        double rate;
    } steps[] = {
        {1000.0, 0.0}, {1000.999, 0.0}, // not before a second has gone
        {1002.0, 3 * kibibytes / 2.0},
        {1003.0, kibibytes}, // a second is enough, and what was counted is not counted again
    };
    input.clock = 1000.0;
    reader.start();
    for (const auto &step : steps) {
        QTRY_VERIFY_WITH_TIMEOUT(input.isIdle(), patience);
        input.clock = step.clock;
        input.addPackets(stream, 1, size);
        QTRY_VERIFY_WITH_TIMEOUT(input.isIdle(), patience);
        QCOMPARE(reader.bitrate(), step.rate);
    }
}

void tst_ZRPlayerReader::seekIsTheExactCall_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("call");
    QTest::newRow("start") << 0.0 << "avformat_seek_file -1 0 0 0 8";
    QTest::newRow("seconds") << 12.5 << "avformat_seek_file -1 12500000 12500000 12500000 8";
    QTest::newRow("truncated") << 1.2345678 << "avformat_seek_file -1 1234567 1234567 1234567 8";
    QTest::newRow("before the start")
        << -1.5 << "avformat_seek_file -1 -1500000 -1500000 -1500000 8";
}

void tst_ZRPlayerReader::seekIsTheExactCall()
{
    QFETCH(double, seconds);
    QFETCH(QString, call);
    Input input;
    input.streams = {picture, sound};
    Reader reader(&input.calls);
    bool requestedAtEvent = true;
    int left = -1;
    reader.onEvent = [&](int type) {
        if (type == 0)
            reader.seek(seconds);
        if (type != 3)
            return;
        requestedAtEvent = reader.seekRequested;
        left = reader.videoPackets->size() + reader.audioPackets->size();
    };
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 3"), 1, patience);
    QVERIFY(!requestedAtEvent);
    QCOMPARE(left, 0);
    QCOMPARE(only(input.calls, {"event", "avformat_flush", "avformat_seek_file"}),
        (QStringList{"event 0", "avformat_flush", call, "event 3"}));
}

void tst_ZRPlayerReader::seekFailed()
{
    LogCatcher log;
    Input input;
    input.streams = {picture, sound};
    input.seekResult = AVERROR(EPERM);
    input.addPackets(0, 3);
    input.addPackets(1, 3);
    input.addResult(AVERROR_EOF);
    Reader reader(&input.calls);
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(reader.isEof(), patience);
    reader.seek(1.0);
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 4"), 1, patience);
    QCOMPARE(reader.videoPackets->size() + reader.audioPackets->size(), 0); // emptied all the same
    QCOMPARE(log.count("set eof false"), 1);
    QVERIFY(!reader.isEof());
    QVERIFY(reader.isRunning());
    QCOMPARE(input.calls.count("event 3"), 0);
}

void tst_ZRPlayerReader::seekWithoutAContext()
{
    LogCatcher log;
    Input input;
    input.streams = {picture};
    Reader reader(&input.calls);
    AVFormatContext *hidden = nullptr;
    reader.onFlush = [&] { qSwap(reader.formatContext, hidden); };
    reader.onEvent = [&](int type) {
        if (type == 0)
            reader.seek(1.0);
        else if (type == 4)
            qSwap(reader.formatContext, hidden);
    };
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 4"), 1, patience);
    QCOMPARE(input.calls.count("avformat_seek_file"), 0);
    QCOMPARE(log.count("set eof false"), 0);
    QVERIFY(!reader.seekRequested);
}

void tst_ZRPlayerReader::laterSeekReplacesTheTarget()
{
    Input input;
    input.streams = {picture};
    Reader reader(&input.calls);
    reader.onEvent = [&](int type) {
        if (type == 0) {
            reader.seek(1.0);
            reader.seek(2.0);
        }
    };
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 3"), 1, patience);
    QTest::qWait(noTimeLost);
    QCOMPARE(only(input.calls, {"avformat_seek_file"}),
        QStringList("avformat_seek_file -1 2000000 2000000 2000000 8"));
}

void tst_ZRPlayerReader::seekGoesOnFromTheEnd()
{
    LogCatcher log;
    Input input;
    input.streams = {picture};
    input.addPackets(0, 3);
    input.addResult(AVERROR_EOF);
    input.addPackets(0, 2);
    Reader reader(&input.calls);
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(reader.isEof(), patience);
    QCOMPARE(log.count("set eof false"), 0);
    reader.seek(0.0);
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 2, patience);
    QVERIFY(!reader.isEof());
    QCOMPARE(log.count("set eof false"), 1);
    QCOMPARE(Packet(reader.popVideoPacket())->packet->pts, int64_t(3));
}

void tst_ZRPlayerReader::seekIsServedWhilePaused()
{
    Input input;
    input.streams = {picture};
    Reader reader(&input.calls);
    reader.onEvent = [&](int type) {
        if (type == 0)
            reader.pause();
    };
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("av_read_pause"), 1, patience);
    reader.seek(3.0);
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 3"), 1, patience);
    input.addPackets(0);
    QTest::qWait(noTimeLost);
    QCOMPARE(input.unread(), 1); // and it stays paused
}

void tst_ZRPlayerReader::seekWaitsForTheDecoder()
{
    Input input;
    input.streams = {picture};
    input.addPackets(0, 31);
    Reader reader(&input.calls);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 31, patience);
    reader.seek(1.0);
    reader.pause();
    QTest::qWait(noTimeLost); // a full queue ends each pass before seeks and commands
    QCOMPARE(input.calls.count("avformat_seek_file"), 0);
    QCOMPARE(input.calls.count("av_read_pause"), 0);
    delete reader.popVideoPacket();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 3"), 1, patience);
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("av_read_pause"), 1, patience);
}

void tst_ZRPlayerReader::seeksARealClip()
{
    const MediaClip &clip =
        MediaClip::of(MediaClip::Format::of(AV_CODEC_ID_H264, AV_CODEC_ID_NONE));
    Input input;
    Reader reader(&input.calls, clip.file("mp4").toStdString());
    reader.maxVideoPackets = 0;
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(reader.isEof(), patience);
    const int all = reader.videoPackets->size();
    reader.seek(0.0);
    QTRY_VERIFY_WITH_TIMEOUT(
        input.calls.count("event 3") + input.calls.count("event 4") == 1, patience);
    QCOMPARE(input.calls.count("event 3"), 1);
    QTRY_VERIFY_WITH_TIMEOUT(reader.isEof(), patience);
    QCOMPARE(reader.videoPackets->size(), all);
}

void tst_ZRPlayerReader::oneCommandInAPass()
{
    Input input;
    input.streams = {picture};
    input.addPackets(0, 3);
    Reader reader(&input.calls);
    reader.onEvent = [&](int type) {
        if (type != 0)
            return;
        reader.play();
        reader.pause();
        reader.play();
        reader.play();
    };
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 3, patience);
    // Each pass that isn't paused reads once.
    QCOMPARE(only(input.calls, {"av_read"}),
        (QStringList{"av_read_play", "av_read_frame", "av_read_pause", "av_read_play",
            "av_read_frame", "av_read_play", "av_read_frame"}));
    QCOMPARE(reader.commands->size(), 0);
}

void tst_ZRPlayerReader::pauseStopsReading()
{
    Input input;
    input.streams = {picture};
    Reader reader(&input.calls);
    reader.onEvent = [&](int type) {
        if (type == 0)
            reader.pause();
    };
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("av_read_pause"), 1, patience);
    input.addPackets(0, 5);
    QTest::qWait(noTimeLost);
    QCOMPARE(input.unread(), 5);
    QVERIFY(reader.isRunning());
    reader.play();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 5, patience);
    QCOMPARE(input.calls.count("av_read_play"), 1);
}

void tst_ZRPlayerReader::commandsReachTheCamera()
{
    const RtspPeer peer(MediaClip::of({}));
    Input input;
    Reader reader(&input.calls, peer.url());
    reader.setTimeout(10.0);
    reader.start();
    QTRY_VERIFY_WITH_TIMEOUT(reader.videoPackets->size() >= 3, patience);
    QCOMPARE(peer.requests().count("PLAY"), 1);
    reader.pause();
    QTRY_COMPARE_WITH_TIMEOUT(peer.requests().count("PAUSE"), 1, patience);
    while (Packet(reader.popVideoPacket()))
        continue;
    reader.play();
    QTRY_COMPARE_WITH_TIMEOUT(peer.requests().count("PLAY"), 2, patience);
    QTRY_VERIFY_WITH_TIMEOUT(reader.videoPackets->size() >= 3, patience);
}

void tst_ZRPlayerReader::copyCodecParameters()
{
    const MediaClip &clip = MediaClip::of({});
    Input input;
    Reader reader(&input.calls, clip.file("mp4").toStdString());
    const auto copied = [&](int kind, int codecId) {
        CodecContext context(avcodec_alloc_context3(nullptr));
        reader.copyCodecParameters(kind, codecId, context.get());
        return context;
    };
    QCOMPARE(copied(0, AV_CODEC_ID_H264)->codec_id, AV_CODEC_ID_NONE);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);
    for (const int codecId : {0, int(AV_CODEC_ID_H264), int(AV_CODEC_ID_AAC)}) { // not used
        const CodecContext video = copied(0, codecId);
        QCOMPARE(video->codec_id, AV_CODEC_ID_H264);
        QVERIFY(video->extradata_size > 0);
        const CodecContext audio = copied(1, codecId);
        QCOMPARE(audio->codec_id, AV_CODEC_ID_AAC);
        QCOMPARE(audio->sample_rate, 48000);
        QCOMPARE(copied(2, codecId)->codec_id, AV_CODEC_ID_NONE);
    }
    reader.stop();
    QCOMPARE(copied(1, AV_CODEC_ID_AAC)->codec_id, AV_CODEC_ID_NONE);
}

void tst_ZRPlayerReader::startAndStopClearTheQueues()
{
    Input input;
    input.streams = {picture, sound};
    Reader reader(&input.calls);
    const auto fill = [&] {
        AVPacket *packet = av_packet_alloc();
        av_new_packet(packet, 10);
        reader.videoPackets->push(new ZRPlayerPacket(packet, 1, 1, {1, 1}));
        reader.audioPackets->push(new ZRPlayerPacket(packet, 1, 2, {1, 1}));
        reader.pause();
        av_packet_free(&packet);
    };
    const auto held = [&] {
        return reader.videoPackets->size() + reader.audioPackets->size() + reader.commands->size();
    };
    fill();
    QCOMPARE(held(), 3);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(input.calls.count("event 0"), 1, patience);
    QCOMPARE(held(), 0);
    QCOMPARE(input.calls.count("av_read_pause"), 0); // the command from before is lost
    fill();
    reader.stop();
    QCOMPARE(held(), 0);
    fill();
    reader.stop(); // with no thread too
    QCOMPARE(held(), 0);
}

void tst_ZRPlayerReader::stopWithoutAThread()
{
    Input input;
    Reader reader(&input.calls);
    reader.stop();
    reader.stop();
    QCOMPARE(input.calls.lines(), QStringList());
}

void tst_ZRPlayerReader::flushWhileClosed()
{
    Input input;
    Reader reader(&input.calls);
    AVPacket *packet = av_packet_alloc();
    av_new_packet(packet, 10);
    reader.videoPackets->push(new ZRPlayerPacket(packet, 1, 1, {1, 1}));
    reader.audioPackets->push(new ZRPlayerPacket(packet, 1, 2, {1, 1}));
    av_packet_free(&packet);
    reader.flush();
    QCOMPARE(reader.videoPackets->size() + reader.audioPackets->size(), 0);
    QCOMPARE(input.calls.lines(), QStringList());
}

void tst_ZRPlayerReader::runsWithoutAnObserver()
{
    Input input;
    input.streams = {picture};
    input.addPackets(0, 3);
    Reader reader(&input.calls);
    reader.setObserver(nullptr);
    reader.start();
    QTRY_COMPARE_WITH_TIMEOUT(reader.videoPackets->size(), 3, patience);
    reader.stop();
    QCOMPARE(input.calls.count("event"), 0);
}

// The rest is LeakSanitizer's.
void tst_ZRPlayerReader::destructorFreesTheQueues()
{
    auto *reader = new ZRPlayerReader;
    reader->play();
    reader->pause();
    delete reader;
    QVERIFY(std::has_virtual_destructor<ZRPlayerReader>::value);
}

void tst_ZRPlayerReader::opensAndClosesManyTimes()
{
    const std::string file = MediaClip::of({}).file("mp4").toStdString();
    for (int i = 0; i < 100; ++i) {
        Input input;
        Reader reader(&input.calls, file);
        reader.start();
        if (i % 2 == 0)
            QTRY_VERIFY_WITH_TIMEOUT(reader.videoPackets->size() > i % 30, patience);
        reader.stop(); // often in the middle of the opening
        QVERIFY(!reader.formatContext);
        QVERIFY(!reader.isRunning());
    }
}

QTEST_GUILESS_MAIN(tst_ZRPlayerReader)
#include "tst_ZRPlayerReader.moc"
