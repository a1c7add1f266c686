#include "ZRPlayer.h"

#include "CallLog.h"
#include "MediaClip.h"
#include "PlayerProbe.h"
#include "RtspPeer.h"
#include "SinkRecorder.h"
#include "ZRPcmPlayer.h"
#include "ZRPlayerDecoder.h"
#include "ZRPlayerReader.h"
#include "ZRPlayerRender.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTemporaryFile>
#include <QtTest>

#include <type_traits>

namespace {

constexpr int patience = 60000;

// A thread takes its name just after it has begun, and the system lists it for a moment longer
// than anybody waits for it.
#define COMPARE_THREADS(beginning, expected)                                                       \
    QTRY_COMPARE_WITH_TIMEOUT(ThisProcess::threadNames(beginning), expected, patience)

CallLog calls;

QString stopCall(const char *stage, bool observed)
{
    return QString(stage) + (observed ? ".stop, observed" : ".stop");
}

// Stages that do nothing but write down what they are asked.
class LoggedReader : public ZRPlayerReader
{
public:
    explicit LoggedReader(int startResult) : startResult(startResult) { }
    ~LoggedReader() override { calls.add("~reader"); }

    int start() override
    {
        calls.add("reader.start");
        return startResult;
    }
    void stop() override { calls.add(stopCall("reader", observer)); }
    void play() override { calls.add("reader.play"); }
    void pause() override { calls.add("reader.pause"); }
    void seek(double seconds) override { calls.add(QString("reader.seek %1").arg(seconds)); }
    double duration() override
    {
        calls.add("reader.duration");
        return 12.5;
    }
    double bitrate() override { return 99.5; }
    void flush() override { calls.add("reader.flush"); }

    using ZRPlayerReader::observer;
    using ZRPlayerReader::realtime;
    using ZRPlayerReader::timeout;
    using ZRPlayerReader::url;

private:
    int startResult;
};

class LoggedDecoder : public ZRPlayerDecoder
{
public:
    ~LoggedDecoder() override { calls.add("~decoder"); }

    int start() override
    {
        calls.add("decoder.start");
        return 0;
    }
    void stop() override { calls.add("decoder.stop"); }
    void resume() override { calls.add("decoder.resume"); }
    void pause() override { calls.add("decoder.pause"); }
    void setHardwareType(int type) override
    {
        calls.add(QString("decoder.setHardwareType %1").arg(type));
    }
    void flush() override { calls.add("decoder.flush"); }

    using ZRPlayerDecoder::reader;
};

class LoggedRender : public ZRPlayerRender
{
public:
    ~LoggedRender() override { calls.add("~render"); }

    int start() override
    {
        calls.add("render.start");
        return 0;
    }
    void stop() override { calls.add(stopCall("render", observer)); }
    double currentTime() override
    {
        calls.add("render.currentTime");
        return 3.25;
    }
    void renderVideoFrame(ZRPlayerFrame *) override { }
    int renderAudioFrame(ZRPlayerFrame *) override { return 0; }
    bool isRunning() override { return running; }
    void flush() override { calls.add("render.flush"); }
    void setVolume(double volume) override
    {
        calls.add(QString("render.setVolume %1").arg(volume));
    }

    using ZRPlayerRender::decoder;
    using ZRPlayerRender::observer;

    bool running = false;
};

// The facade over such stages.
class Facade : public ZRPlayer, public ZRPlayerObserver
{
public:
    Facade() { setObserver(this); }
    ~Facade() override
    {
        close();
        calls.clear();
    }

    using ZRPlayer::open;

    ZRPlayerReader *createReader() override
    {
        calls.add("createReader");
        return loggedReader = new LoggedReader(readerResult);
    }
    ZRPlayerDecoder *createDecoder() override
    {
        calls.add("createDecoder");
        return loggedDecoder = new LoggedDecoder;
    }
    ZRPlayerRender *createRender() override
    {
        calls.add("createRender");
        return loggedRender = new LoggedRender;
    }
    void onPlayerNotify(ZRPlayer *player, int type, double current, double total) override
    {
        calls.add(QString("%1 %2 %3 %4")
                      .arg(player == this ? "event" : "strange event")
                      .arg(type)
                      .arg(current)
                      .arg(total));
    }

    QStringList take()
    {
        const QStringList lines = calls.lines();
        calls.clear();
        return lines;
    }

    using ZRPlayer::decoder;
    using ZRPlayer::defaultRender;
    using ZRPlayer::hardwareType;
    using ZRPlayer::observer;
    using ZRPlayer::reader;
    using ZRPlayer::realtime;
    using ZRPlayer::render;
    using ZRPlayer::timeout;
    using ZRPlayer::url;
    using ZRPlayer::videoView;
    using ZRPlayer::volume;

    int readerResult = 0;
    LoggedReader *loggedReader = nullptr;
    LoggedDecoder *loggedDecoder = nullptr;
    LoggedRender *loggedRender = nullptr;
};

// A player of the real stages, with a look at the last one.
class Player : public ProbedPlayer
{
public:
    using ProbedPlayer::ProbedPlayer;
    using ZRPlayer::decoder;
    using ZRPlayer::defaultRender;
    using ZRPlayer::open;
    using ZRPlayer::reader;
    using ZRPlayer::render;
    using ZRPlayer::timeout;
    using ZRPlayer::volume;

    bool hasOutput() const { return output()->*(&PcmFields::output); }
    float outputVolume() const { return output()->*(&PcmFields::volume); }
    ZRVideoView *renderView() const { return defaultRender->*(&RenderFields::videoView); }

private:
    struct RenderFields : ZRPlayerDefaultRender {
        using ZRPlayerDefaultRender::pcmPlayer;
        using ZRPlayerDefaultRender::videoView;
    };
    struct PcmFields : ZRPcmPlayer {
        using ZRPcmPlayer::output;
        using ZRPcmPlayer::volume;
    };

    ZRPcmPlayer *output() const { return defaultRender->*(&RenderFields::pcmPlayer); }
};

MediaClip::Format clipOf(AVCodecID video, AVCodecID audio, int pictures = 50)
{
    MediaClip::Format format = MediaClip::Format::of(video, audio);
    format.width = 160;
    format.height = 120;
    format.pictures = pictures;
    return format;
}

std::string pathOf(const MediaClip::Format &format)
{
    return MediaClip::of(format).file("mkv").toStdString();
}

std::string withBoth()
{
    return pathOf(clipOf(AV_CODEC_ID_H264, AV_CODEC_ID_AAC));
}

// One that sound alone keeps going for a while.
std::string soundOnly()
{
    return pathOf(clipOf(AV_CODEC_ID_NONE, AV_CODEC_ID_AAC, 250));
}

QString address(const QTcpServer &server)
{
    return QString("rtsp://127.0.0.1:%1/live").arg(server.serverPort());
}

} // namespace

class tst_ZRPlayer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void newPlayer();
    void closedPlayer();
    void openInOrder();
    void openOfUrl();
    void openRefusedByReader();
    void readerEvents_data();
    void readerEvents();
    void renderEvents_data();
    void renderEvents();
    void noObserver();
    void commands_data();
    void commands();
    void closeInOrder();
    void destructorDoesNotClose();
    void forwards();
    void settersWhileOpen();
    void defaultStages();
    void defaultOpen();
    void settingsHoldForTheNextOpen();

    void file_data();
    void file();
    void neitherStream();
    void unplayableCodec();
    void openFailure_data();
    void openFailure();
    void openTimeout_data();
    void openTimeout();
    void closeDuringOpen();
    void reopenAfterFailure();
    void pauseAndPlay();
    void seek();
    void seekAfterTheEnd();
    void sound();
    void mutedSoundFlows();
    void viewOfOpenStream();
    void rtsp();
    void lostConnection_data();
    void lostConnection();
    void openAndClose();
    void closeAtAnyMoment();
};

void tst_ZRPlayer::initTestCase()
{
    av_log_set_level(AV_LOG_QUIET);
}

void tst_ZRPlayer::init()
{
    calls.clear();
    COMPARE_THREADS("ZRPlayer", QByteArrayList());
}

void tst_ZRPlayer::newPlayer()
{
    static_assert(!std::is_base_of_v<QObject, ZRPlayer>);
    static_assert(std::is_base_of_v<ZRPlayerReaderObserver, ZRPlayer>);
    static_assert(std::is_base_of_v<ZRPlayerRenderObserver, ZRPlayer>);
    Facade player;
    QCOMPARE(player.url, std::string());
    QVERIFY(!player.realtime);
    QCOMPARE(player.timeout, 10.0);
    QVERIFY(!player.reader);
    QCOMPARE(player.hardwareType, 0);
    QVERIFY(!player.decoder);
    QVERIFY(!player.videoView);
    QCOMPARE(player.volume, 1.0);
    QVERIFY(!player.render);
    QVERIFY(!player.defaultRender);
    player.setObserver(nullptr);
    QVERIFY(!player.observer);
}

void tst_ZRPlayer::closedPlayer()
{
    Facade player;
    player.close();
    player.close();
    QCOMPARE(player.play(), 0);
    QCOMPARE(player.pause(), 0);
    player.seek(1.0);
    player.flush();
    QCOMPARE(player.bitrate(), 0.0);
    QVERIFY(!player.isOpened());
    QVERIFY(!player.isRendering());
    QCOMPARE(player.currentTime(), 0.0);
    QCOMPARE(player.duration(), 0.0);
    QCOMPARE(player.reserved1(), 0);
    QCOMPARE(player.reserved2(), 0);
    QVERIFY(!player.reserved3());

    RecordingView view;
    player.setRealtime(true);
    player.setHardwareType(4);
    player.setVideoView(&view);
    player.setVolume(0.25);
    QVERIFY(player.realtime);
    QCOMPARE(player.hardwareType, 4);
    QCOMPARE(player.videoView, static_cast<ZRVideoView *>(&view));
    QCOMPARE(player.volume, 0.25);
    QCOMPARE(player.take(), QStringList());
}

void tst_ZRPlayer::openInOrder()
{
    Facade player;
    player.setRealtime(true);
    player.setHardwareType(4);
    player.setVolume(0.0);
    player.timeout = 7.5;
    player.url = "rtsp://camera/live";
    QCOMPARE(player.open(), 0);
    // A render of another kind is not told the volume.
    QCOMPARE(player.take(),
        QStringList({"createReader", "createDecoder", "createRender", "decoder.setHardwareType 4",
            "reader.start"}));
    QVERIFY(player.isOpened());
    QVERIFY(!player.defaultRender);
    const LoggedReader *reader = player.loggedReader;
    QCOMPARE(reader->observer, static_cast<ZRPlayerReaderObserver *>(&player));
    QCOMPARE(reader->url, player.url);
    QVERIFY(reader->realtime);
    QCOMPARE(reader->timeout, 7.5);
    QCOMPARE(player.loggedDecoder->reader, static_cast<ZRPlayerReader *>(player.loggedReader));
    QCOMPARE(player.loggedRender->decoder, static_cast<ZRPlayerDecoder *>(player.loggedDecoder));
    QCOMPARE(player.loggedRender->observer, static_cast<ZRPlayerRenderObserver *>(&player));
}

void tst_ZRPlayer::openOfUrl()
{
    struct Opened : Facade {
        using ZRPlayer::open;
        int open() override
        {
            seen = url;
            return 42;
        }
        std::string seen;
    } player;
    const std::string anyBytes = "/tmp/\xe4\xff.mp4";
    QCOMPARE(player.open(anyBytes), 42);
    QCOMPARE(player.seen, anyBytes);
    QCOMPARE(player.url, anyBytes);
    QCOMPARE(player.open(player.url), 42);
    QCOMPARE(player.url, anyBytes);
}

void tst_ZRPlayer::openRefusedByReader()
{
    Facade player;
    player.readerResult = -5;
    QCOMPARE(player.open("x"), -1);
    QVERIFY(!player.isOpened());
    QVERIFY(!player.decoder);
    QVERIFY(!player.render);
    QCOMPARE(player.take().mid(4),
        QStringList({"reader.start", "reader.stop", "render.stop", "~render", "decoder.stop",
            "~decoder", "reader.stop", "~reader"}));
    player.readerResult = 1;
    QCOMPARE(player.open("x"), 0);
}

void tst_ZRPlayer::readerEvents_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("opened") << 0 << QStringList({"decoder.start", "render.start", "event 0 0 0"});
    QTest::newRow("failed") << 1 << QStringList({"event 1 0 0"});
    QTest::newRow("reading ended") << 2 << QStringList();
    QTest::newRow("seek done") << 3 << QStringList({"decoder.flush", "render.flush"});
    QTest::newRow("seek failed") << 4 << QStringList({"decoder.flush", "render.flush"});
    QTest::newRow("overflow") << 5 << QStringList({"decoder.flush"});
    QTest::newRow("unknown") << 6 << QStringList();
}

void tst_ZRPlayer::readerEvents()
{
    QFETCH(int, type);
    QFETCH(QStringList, expected);
    Facade player;
    player.open("x");
    player.take();
    player.loggedReader->observer->onReaderNotify(player.loggedReader, type);
    QCOMPARE(player.take(), expected);
}

void tst_ZRPlayer::renderEvents_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("first") << 0 << QStringList({"event 2 0 0"});
    QTest::newRow("ended") << 1 << QStringList({"event 3 0 0"});
    // Asked in this order.
    QTest::newRow("further") << 2
                             << QStringList(
                                    {"reader.duration", "render.currentTime", "event 4 3.25 12.5"});
    QTest::newRow("unknown") << 3 << QStringList();
}

void tst_ZRPlayer::renderEvents()
{
    QFETCH(int, type);
    QFETCH(QStringList, expected);
    Facade player;
    player.open("x");
    player.take();
    player.loggedRender->observer->onRenderNotify(player.loggedRender, type);
    QCOMPARE(player.take(), expected);
}

void tst_ZRPlayer::noObserver()
{
    Facade player;
    player.setObserver(nullptr);
    player.open("x");
    for (int type = 0; type < 6; ++type)
        player.onReaderNotify(player.reader, type);
    for (int type = 0; type < 3; ++type)
        player.onRenderNotify(player.render, type);
    QVERIFY(player.take().filter("event").isEmpty());
}

void tst_ZRPlayer::commands_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("play") << "play"
                          << QStringList({"reader.play", "decoder.resume", "render.start"});
    QTest::newRow("pause") << "pause"
                           << QStringList(
                                  {"render.stop, observed", "decoder.pause", "reader.pause"});
    QTest::newRow("flush") << "flush"
                           << QStringList({"render.flush", "decoder.flush", "reader.flush"});
    QTest::newRow("seek") << "seek" << QStringList({"reader.seek 4.5"});
}

void tst_ZRPlayer::commands()
{
    QFETCH(QString, command);
    QFETCH(QStringList, expected);
    Facade player;
    player.open("x");
    player.take();
    if (command == "play")
        QCOMPARE(player.play(), 0);
    else if (command == "pause")
        QCOMPARE(player.pause(), 0);
    else if (command == "flush")
        player.flush();
    else
        player.seek(4.5);
    QCOMPARE(player.take(), expected);
}

// Both observers go before the stage is stopped, the render before the decoder, and the reader
// object last.
void tst_ZRPlayer::closeInOrder()
{
    Facade player;
    player.open("x");
    player.take();
    player.close();
    QCOMPARE(player.take(),
        QStringList({"reader.stop", "render.stop", "~render", "decoder.stop", "~decoder",
            "reader.stop", "~reader"}));
    QVERIFY(!player.reader);
    QVERIFY(!player.decoder);
    QVERIFY(!player.render);
    QVERIFY(!player.isOpened());
    player.close();
    QCOMPARE(player.take(), QStringList());
}

// The stages are the owner's to end by close(): without it they stand, untouched.
void tst_ZRPlayer::destructorDoesNotClose()
{
    struct Unclosed : ZRPlayer {
        using ZRPlayer::open;
        ZRPlayerReader *createReader() override { return reader = new LoggedReader(0); }
        ZRPlayerDecoder *createDecoder() override { return decoder = new LoggedDecoder; }
        ZRPlayerRender *createRender() override { return render = new LoggedRender; }
        using ZRPlayer::decoder;
        using ZRPlayer::reader;
        using ZRPlayer::render;
    };
    auto player = std::make_unique<Unclosed>();
    QCOMPARE(player->open("x"), 0);
    const std::unique_ptr<ZRPlayerReader> reader(player->reader);
    const std::unique_ptr<ZRPlayerDecoder> decoder(player->decoder);
    const std::unique_ptr<ZRPlayerRender> render(player->render);
    calls.clear();
    player.reset();
    QCOMPARE(calls.lines(), QStringList());
}

void tst_ZRPlayer::forwards()
{
    Facade player;
    player.open("x");
    QCOMPARE(player.bitrate(), 99.5);
    QCOMPARE(player.duration(), 12.5);
    QCOMPARE(player.currentTime(), 3.25);
    QVERIFY(!player.isRendering());
    player.loggedRender->running = true;
    QVERIFY(player.isRendering());
}

void tst_ZRPlayer::settersWhileOpen()
{
    Facade player;
    player.open("x");
    player.take();
    player.setRealtime(true);
    QVERIFY(player.loggedReader->realtime);
    player.setRealtime(false);
    QVERIFY(!player.loggedReader->realtime);
    player.setHardwareType(2);
    player.setVolume(0.5);
    QCOMPARE(player.take(), QStringList({"decoder.setHardwareType 2", "render.setVolume 0.5"}));
    QCOMPARE(player.hardwareType, 2);
    QCOMPARE(player.volume, 0.5);
}

void tst_ZRPlayer::defaultStages()
{
    struct Plain : ZRPlayer {
        using ZRPlayer::defaultRender;
    } player;
    const std::unique_ptr<ZRPlayerReader> reader(player.createReader());
    const std::unique_ptr<ZRPlayerDecoder> decoder(player.createDecoder());
    const std::unique_ptr<ZRPlayerRender> render(player.createRender());
    QVERIFY(typeid(*reader) == typeid(ZRPlayerReader));
    QVERIFY(typeid(*decoder) == typeid(ZRPlayerDecoder));
    QVERIFY(typeid(*render) == typeid(ZRPlayerDefaultRender));
    QCOMPARE(static_cast<ZRPlayerRender *>(player.defaultRender), render.get());
}

void tst_ZRPlayer::defaultOpen()
{
    Player player;
    player.setVolume(0.25);
    QCOMPARE(player.open("/nonexistent"), 0);
    QCOMPARE(static_cast<ZRPlayerRender *>(player.defaultRender), player.render);
    QCOMPARE(player.renderView(), static_cast<ZRVideoView *>(&player.view));
    QCOMPARE(player.outputVolume(), 0.25F);

    RecordingView other;
    player.setVideoView(&other);
    player.setVolume(0.5);
    QCOMPARE(player.renderView(), static_cast<ZRVideoView *>(&other));
    QCOMPARE(player.outputVolume(), 0.5F);
    player.close();
    QVERIFY(!player.defaultRender);
    QVERIFY(!player.render);
}

void tst_ZRPlayer::settingsHoldForTheNextOpen()
{
    Player player;
    RecordingView other;
    player.open("/nonexistent");
    player.setVideoView(&other);
    player.setVolume(0.5);
    for (int round = 0; round < 2; ++round) {
        player.close();
        player.open("/nonexistent");
        QCOMPARE(player.renderView(), static_cast<ZRVideoView *>(&other));
        QCOMPARE(player.outputVolume(), 0.5F);
    }
    player.close();
    player.setVideoView(nullptr); // while closed
    player.setVolume(0.0);
    player.open("/nonexistent");
    QVERIFY(!player.renderView());
    QCOMPARE(player.outputVolume(), 0.0F);
}

void tst_ZRPlayer::file_data()
{
    QTest::addColumn<bool>("video");
    QTest::addColumn<bool>("audio");
    QTest::newRow("both") << true << true;
    QTest::newRow("video") << true << false;
    QTest::newRow("audio") << false << true;
}

// Real streams: threads, events and where these come from.
void tst_ZRPlayer::file()
{
    QFETCH(bool, video);
    QFETCH(bool, audio);
    Player player;
    const AVCodecID videoCodec = video ? AV_CODEC_ID_H264 : AV_CODEC_ID_NONE;
    const AVCodecID audioCodec = audio ? AV_CODEC_ID_AAC : AV_CODEC_ID_NONE;
    QCOMPARE(player.open(pathOf(clipOf(videoCodec, audioCodec, 100))), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0), 1, patience);
    COMPARE_THREADS("ZRPlayer", playerThreads(video, audio));
    QVERIFY(player.isRendering());
    QCOMPARE(player.hasOutput(), true); // opened in either case
    QVERIFY(qAbs(player.duration() - 4.0) < 0.2);

    if (video) {
        QTRY_COMPARE_WITH_TIMEOUT(player.view.count(), 100, patience);
        QTRY_VERIFY_WITH_TIMEOUT(player.observed.count(3) > 0, patience);
    } else {
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 1.0, patience);
    }
    const QVector<RecordingObserver::Event> events = player.observed.events();
    QCOMPARE(events.first().type, 0);
    QCOMPARE(events.first().thread, QString("ZRPlayerReaderThread"));
    QCOMPARE(player.observed.count(2), video ? 1 : 0);
    QCOMPARE(player.observed.count(4), video ? 99 : 0);
    if (!video)
        QCOMPARE(events.size(), 1);
    double last = 0;
    for (int i = 1; i < events.size(); ++i) {
        const RecordingObserver::Event &event = events[i];
        QCOMPARE(event.thread, QString("ZRPlayerRenderVideoThread"));
        QCOMPARE(event.total, event.type == 4 ? player.duration() : 0.0);
        QVERIFY(event.type == 4 ? event.current > last : event.current == 0.0);
        last = qMax(last, event.current);
    }

    player.close();
    COMPARE_THREADS("ZRPlayer", QByteArrayList());
    QVERIFY(!player.isOpened());
    QVERIFY(!player.isRendering());
}

void tst_ZRPlayer::neitherStream()
{
    QTemporaryFile subtitles("XXXXXX.srt");
    QVERIFY(subtitles.open());
    subtitles.write("1\n00:00:00,000 --> 00:00:05,000\nText\n\n");
    subtitles.flush();
    Player player;
    player.open(subtitles.fileName().toStdString());
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.course(), QVector<int>({0}), patience);
    COMPARE_THREADS("ZRPlayer", playerThreads(false, false));
    QVERIFY(!player.isRendering());
    QCOMPARE(player.currentTime(), 0.0);
}

// The stream opens, its decoders end at once, and nothing is ever shown, nor an end told.
void tst_ZRPlayer::unplayableCodec()
{
    static constexpr AVCodecID codec = AV_CODEC_ID_DAALA;
    QVERIFY(!avcodec_find_decoder(codec));
    struct Reader : ZRPlayerReader {
        ZRPlayerPacket *popVideoPacket() override
        {
            return changed(ZRPlayerReader::popVideoPacket());
        }
        ZRPlayerPacket *popAudioPacket() override
        {
            return changed(ZRPlayerReader::popAudioPacket());
        }
        static ZRPlayerPacket *changed(ZRPlayerPacket *packet)
        {
            if (packet)
                packet->codecId = codec;
            return packet;
        }
    };
    struct Unplayable : Player {
        ZRPlayerReader *createReader() override { return new Reader; }
    } player;
    player.open(withBoth());
    QTRY_COMPARE_WITH_TIMEOUT(player.readerEventCount(ZRPlayerReader::Opened), 1, patience);
    COMPARE_THREADS("ZRPlayerDecoder", QByteArrayList());
    QTest::qWait(300);
    QCOMPARE(player.observed.course(), QVector<int>({0}));
    QCOMPARE(player.view.count(), 0);
    QVERIFY(player.isOpened());
    const qint64 spent = player.closeInTime();
    QVERIFY2(spent < 10000, qPrintable(QString::number(spent)));
    COMPARE_THREADS("ZRPlayer", QByteArrayList());
}

void tst_ZRPlayer::openFailure_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("no such file") << "/nonexistent.mp4";
    QTest::newRow("no media") << QCoreApplication::applicationFilePath();
    QTest::newRow("empty") << "";
    QTcpServer server; // its port is closed again
    server.listen(QHostAddress::LocalHost);
    QTest::newRow("nobody listens") << address(server);
}

void tst_ZRPlayer::openFailure()
{
    QFETCH(QString, url);
    Player player;
    QCOMPARE(player.open(url.toStdString()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.course(), QVector<int>({1}), patience);
    const RecordingObserver::Event event = player.observed.events().first();
    QCOMPARE(event.thread, QString("ZRPlayerReaderThread"));
    QCOMPARE(event.current, 0.0);
    QCOMPARE(event.total, 0.0);

    // The dead opening state: the thread has ended, the stages stand until close().
    COMPARE_THREADS("ZRPlayer", QByteArrayList());
    QVERIFY(player.isOpened());
    QVERIFY(!player.isRendering());
    QCOMPARE(player.duration(), -1.0);
    player.close();
    QVERIFY(!player.isOpened());
}

void tst_ZRPlayer::openTimeout_data()
{
    QTest::addColumn<double>("limit");
    QTest::newRow("as it is") << 10.0;
    QTest::newRow("short") << 1.0;
}

// A peer that takes the connection and never answers.
void tst_ZRPlayer::openTimeout()
{
    QFETCH(double, limit);
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    Player player(limit);
    QElapsedTimer spent;
    spent.start();
    QCOMPARE(player.open(address(silent).toStdString()), 0);
    QVERIFY2(spent.elapsed() < 1000 * limit, "the open itself does not wait");
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.course(), QVector<int>({1}), patience);
    QVERIFY2(spent.elapsed() >= 1000 * limit - 20, qPrintable(QString::number(spent.elapsed())));
    QVERIFY2(spent.elapsed() < 1000 * limit + 8000, qPrintable(QString::number(spent.elapsed())));
}

void tst_ZRPlayer::closeDuringOpen()
{
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    Player player;
    player.open(address(silent).toStdString());
    QVERIFY(silent.waitForNewConnection(patience));
    COMPARE_THREADS("ZRPlayer", playerThreads(false, false));
    const qint64 spent = player.closeInTime();
    QVERIFY2(spent < 5000, qPrintable(QString::number(spent))); // far below the limit of the open
    COMPARE_THREADS("ZRPlayer", QByteArrayList());
    QVERIFY(player.observed.events().isEmpty()); // no event 1 either: the observer goes first
}

void tst_ZRPlayer::reopenAfterFailure()
{
    Player player;
    player.open("/nonexistent.mp4");
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(1), 1, patience);
    player.close();
    for (int round = 0; round < 2; ++round) {
        player.reset();
        player.open(withBoth());
        QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > 5, patience);
        QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4}));
        player.close();
    }
}

// A pause ends the render's threads and the sound output; a play makes them again.
void tst_ZRPlayer::pauseAndPlay()
{
    Player player;
    player.open(pathOf(clipOf(AV_CODEC_ID_H264, AV_CODEC_ID_AAC, 150)));
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > 5, patience);
    QCOMPARE(player.pause(), 0);
    QVERIFY(!player.isRendering());
    QVERIFY(player.isOpened());
    QVERIFY(!player.hasOutput());
    COMPARE_THREADS("ZRPlayerRender", QByteArrayList());
    COMPARE_THREADS("ZRPlayerDecoder", playerThreads(true, true).mid(0, 2));
    QCOMPARE(player.currentTime(), 0.0);
    const int shown = player.view.count();
    const int eventsSoFar = player.observed.events().size();
    QTest::qWait(200);
    QCOMPARE(player.view.count(), shown);
    QCOMPARE(player.observed.events().size(), eventsSoFar);

    QCOMPARE(player.play(), 0);
    QVERIFY(player.isRendering());
    QVERIFY(player.hasOutput());
    COMPARE_THREADS("ZRPlayer", playerThreads(true, true));
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > shown + 5, patience);
    // First picture and progress once more, and nothing was lost.
    QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4, 2, 4}));
    const QVector<int> numbers = player.view.numbers();
    for (int i = 0; i < numbers.size(); ++i)
        QCOMPARE(numbers[i], i);
}

void tst_ZRPlayer::seek()
{
    Player player;
    player.setVolume(0.0);
    player.open(pathOf(clipOf(AV_CODEC_ID_H264, AV_CODEC_ID_AAC, 250)));
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > 5, patience);
    player.seek(8.0);
    QTRY_COMPARE_WITH_TIMEOUT(player.readerEventCount(3) + player.readerEventCount(4), 1, patience);
    QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 6.9, patience);
    QTRY_VERIFY_WITH_TIMEOUT(player.observed.events().last().current > 6.9, patience);
    QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4})); // no second event 2
    QVERIFY(player.view.count() < 150); // the gap was not sat out
}

void tst_ZRPlayer::seekAfterTheEnd()
{
    Player player;
    player.setVolume(0.0);
    player.open(withBoth());
    QTRY_VERIFY_WITH_TIMEOUT(player.observed.count(3) > 0, patience);
    const int ends = player.observed.count(3);
    player.seek(0.0);
    QTRY_VERIFY_WITH_TIMEOUT(player.observed.events().last().type == 4, patience);
    QTRY_VERIFY_WITH_TIMEOUT(player.observed.count(3) > ends, patience);
    QVERIFY(player.view.count() > 90);
}

void tst_ZRPlayer::sound()
{
    SinkRecorder recorder("s16le");
    Player player;
    player.open(soundOnly());
    QTRY_VERIFY_WITH_TIMEOUT(recorder.purity(440) > 0.9, patience);

    player.pause();
    QElapsedTimer spent;
    spent.start();
    recorder.restart();
    player.play();
    QTRY_VERIFY_WITH_TIMEOUT(recorder.purity(440) > 0.9, patience);
    player.close();
    QVERIFY(spent.elapsed() < patience);
    QCOMPARE(player.observed.course(), QVector<int>({0}));
}

// At volume 0 sound is decoded and taken by the render all the same, and dropped at the output.
// As nothing holds the audio thread back there, it runs ahead of the clock.
void tst_ZRPlayer::mutedSoundFlows()
{
    SinkRecorder recorder("s16le");
    Player player;
    player.setVolume(0.0);
    QElapsedTimer spent;
    spent.start();
    player.open(soundOnly());
    QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 9.5, patience);
    QVERIFY2(spent.elapsed() < 9000, qPrintable(QString::number(spent.elapsed())));
    QTRY_VERIFY_WITH_TIMEOUT(recorder.seconds() > 1.0, patience);
    QVERIFY(recorder.amplitude(440) < 0.001);

    player.close();
    player.setVolume(1.0);
    recorder.restart();
    player.open(soundOnly());
    QTRY_VERIFY_WITH_TIMEOUT(recorder.purity(440) > 0.9, patience);
    QVERIFY(player.currentTime() < 9.0);
}

void tst_ZRPlayer::viewOfOpenStream()
{
    Player player;
    player.open(withBoth());
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > 0, patience);
    RecordingView other;
    player.setVideoView(&other);
    QTRY_VERIFY_WITH_TIMEOUT(other.count() > 2, patience);
    player.setVideoView(nullptr);
    QTRY_VERIFY_WITH_TIMEOUT(player.observed.count(3) > 0, patience);
    QVERIFY(player.view.count() + other.count() < 50);
}

void tst_ZRPlayer::rtsp()
{
    const MediaClip clip(clipOf(AV_CODEC_ID_H264, AV_CODEC_ID_AAC));
    RtspPeer peer(clip);
    SinkRecorder recorder("s16le");
    Player player;
    player.setRealtime(true);
    player.open(peer.url());
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > 60, patience); // the clip comes round again
    QTRY_VERIFY_WITH_TIMEOUT(recorder.purity(440) > 0.9, patience);
    QTRY_VERIFY_WITH_TIMEOUT(player.bitrate() > 1.0, patience);
    QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4}));
    const RecordingObserver::Event event = player.observed.events().last();
    QCOMPARE(event.total, -1.0); // an unknown duration is passed on as it is
    QVERIFY(player.closeInTime() < 10000);
}

void tst_ZRPlayer::lostConnection_data()
{
    QTest::addColumn<bool>("closed");
    QTest::addColumn<QVector<int>>("course");
    QTest::newRow("silence is not noticed") << false << QVector<int>({0, 2, 4});
    QTest::newRow("a closed one is an end") << true << QVector<int>({0, 2, 4, 3});
}

// The picture stands, there is no event 1, and the connection is not made anew.
void tst_ZRPlayer::lostConnection()
{
    QFETCH(bool, closed);
    QFETCH(QVector<int>, course);
    const MediaClip clip(clipOf(AV_CODEC_ID_H264, AV_CODEC_ID_NONE));
    RtspPeer peer(clip);
    Player player;
    player.setRealtime(true);
    player.open(peer.url());
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > 10, patience);
    if (closed)
        peer.hangUp();
    else
        peer.setSilent(true);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.course(), course, patience);
    QTest::qWait(1000); // what is on its way arrives
    const int shown = player.view.count();
    QTest::qWait(1000);
    QCOMPARE(player.view.count(), shown);
    QCOMPARE(player.observed.course(), course);
    QVERIFY(player.isOpened());
    QVERIFY(player.isRendering());
    QCOMPARE(peer.requests().count("DESCRIBE"), 1);
    QCOMPARE(peer.connections(), closed ? 0 : 1);
    const qint64 spent = player.closeInTime();
    QVERIFY2(spent < 10000, qPrintable(QString::number(spent)));
}

// Leaks show at the program's end.
void tst_ZRPlayer::openAndClose()
{
    const std::string path = pathOf(clipOf(AV_CODEC_ID_H264, AV_CODEC_ID_AAC, 5));
    Player player;
    for (int round = 0; round < 300; ++round) {
        player.reset();
        QCOMPARE(player.open(path), 0);
        if (round % 10 == 0)
            QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > 2, patience);
        else if (round % 2 == 0)
            QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0), 1, patience);
        player.close();
    }
    COMPARE_THREADS("ZRPlayer", QByteArrayList());
}

void tst_ZRPlayer::closeAtAnyMoment()
{
    const std::string path = withBoth();
    Player player;
    for (int delay = 0; delay < 60; delay += 5) {
        player.reset();
        player.open(path);
        QThread::msleep(unsigned(delay));
        player.close();
        COMPARE_THREADS("ZRPlayer", QByteArrayList());
    }
}

QTEST_GUILESS_MAIN(tst_ZRPlayer)

#include "tst_ZRPlayer.moc"
