#include "PlayerProbe.h"
#include "RtspPeer.h"
#include "ZRPlayerDecoder.h"

#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <random>

Q_DECLARE_METATYPE(RtspPeer::Faults)

// Servers and streams that are broken: nothing crashes or hangs, the player can be closed at any
// moment, and it plays the next good stream.
class tst_BadStreams : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void openFails_data();
    void openFails();
    void openTimesOut();
    void openUnreachable();
    void openIsGarbage_data();
    void openIsGarbage();
    void closeDuringOpen_data();
    void closeDuringOpen();
    void closeWhileConnecting();
    void closeAfterSilence_data();
    void closeAfterSilence();
    void damagedStream_data();
    void damagedStream();
    void damagedFile_data();
    void damagedFile();

private:
    void playGoodStream(ProbedPlayer &player);
};

namespace {

using Faults = RtspPeer::Faults;

const int patience = 30000; // milliseconds, for what must come
const qint64 closeLimit = 500; // milliseconds
// Of the workstation's network, and nobody has it.
const char *nobody = "rtsp://10.77.0.99/live";

MediaClip::Format smallFormat(AVCodecID video, AVCodecID audio = AV_CODEC_ID_NONE)
{
    MediaClip::Format format = MediaClip::Format::of(video, audio);
    format.width = 160;
    format.height = 120;
    format.pictures = 30;
    format.keyFrameDistance = 10;
    return format;
}

const MediaClip &goodClip()
{
    return MediaClip::of(smallFormat(AV_CODEC_ID_H264, AV_CODEC_ID_AAC));
}

Faults with(const std::function<void(Faults &)> &set)
{
    Faults faults;
    set(faults);
    return faults;
}

// Milliseconds as a message.
const char *milliseconds(qint64 taken)
{
    static QByteArray text;
    text = QByteArray::number(taken) + " ms";
    return text.constData();
}

}

void tst_BadStreams::initTestCase()
{
    av_log_set_level(AV_LOG_QUIET);
}

void tst_BadStreams::cleanup()
{
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
}

void tst_BadStreams::playGoodStream(ProbedPlayer &player)
{
    const RtspPeer peer(goodClip());
    player.reset();
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 5, patience);
    QVERIFY(player.closeInTime() <= closeLimit);
    QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4}));
}

void tst_BadStreams::openFails_data()
{
    QTest::addColumn<Faults>("faults");
    QTest::newRow("refused") << with([](Faults &f) { f.refuse = true; });
    for (const char *request : {"OPTIONS", "DESCRIBE", "SETUP", "PLAY"}) {
        QTest::addRow("closed at %s", request) << with([&](Faults &f) { f.hangUpAt = request; });
    }
    const QPair<const char *, int> refusals[] = {{"DESCRIBE", 401}, {"DESCRIBE", 404},
        {"SETUP", 461}, {"PLAY", 455}, {"DESCRIBE", 500}, {"DESCRIBE", 302}};
    for (const auto &refusal : refusals) {
        QTest::addRow("%d to %s", refusal.second, refusal.first) << with([&](Faults &f) {
            f.refusedRequest = refusal.first;
            f.status = refusal.second;
        });
    }
}

void tst_BadStreams::openFails()
{
    QFETCH(Faults, faults);
    const RtspPeer peer(goodClip(), faults);
    ProbedPlayer player;
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.events().size(), 1, patience);
    QCOMPARE(player.observed.events()[0].type, 1);
    QCOMPARE(player.observed.events()[0].thread, QString("ZRPlayerReaderThread"));
    QVERIFY(player.isOpened());
    QVERIFY(!player.isRendering());
    QCOMPARE(player.duration(), -1.0);
    const qint64 taken = player.closeInTime();
    QVERIFY2(taken <= closeLimit, milliseconds(taken));
    QVERIFY(!player.isOpened());
    playGoodStream(player);
}

// A camera that takes the connection and says nothing.
void tst_BadStreams::openTimesOut()
{
    const RtspPeer peer(goodClip(), with([](Faults &f) { f.silentFrom = "DESCRIBE"; }));
    ProbedPlayer player;
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(player.open(peer.url()), 0);
    QVERIFY(clock.elapsed() < 1000);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(1), 1, patience);
    QVERIFY2(qAbs(clock.elapsed() - 10000) < 2000, milliseconds(clock.elapsed()));
    QCOMPARE(player.observed.course(), QVector<int>({1}));
}

void tst_BadStreams::openUnreachable()
{
    ProbedPlayer player;
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(player.open(nobody), 0);
    QVERIFY(clock.elapsed() < 1000);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(1), 1, patience);
    QVERIFY2(clock.elapsed() < 11000, milliseconds(clock.elapsed()));
}

void tst_BadStreams::openIsGarbage_data()
{
    QTest::addColumn<Faults>("faults");
    const QPair<const char *, Faults::Answer> answers[] = {{"random bytes", Faults::RandomBytes},
        {"endless headers", Faults::EndlessHeaders}, {"huge length", Faults::HugeLength},
        {"wrong sequence", Faults::WrongSequence}};
    for (const auto &answer : answers) {
        for (const char *request : {"OPTIONS", "DESCRIBE", "SETUP", "PLAY"}) {
            QTest::addRow("%s at %s", answer.first, request) << with([&](Faults &f) {
                f.garbageAt = request;
                f.answer = answer.second;
            });
        }
    }
    QTest::newRow("broken description") << with([](Faults &f) { f.description = Faults::Broken; });
    QTest::newRow("no media") << with([](Faults &f) { f.description = Faults::NoMedia; });
}

// Whatever comes of it comes in time.
void tst_BadStreams::openIsGarbage()
{
    QFETCH(Faults, faults);
    const RtspPeer peer(goodClip(), faults);
    ProbedPlayer player(0.7);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0) + player.observed.count(1), 1, patience);
    const qint64 taken = player.closeInTime();
    QVERIFY2(taken <= closeLimit, milliseconds(taken));
    playGoodStream(player);
}

void tst_BadStreams::closeDuringOpen_data()
{
    QTest::addColumn<Faults>("faults");
    QTest::addColumn<QByteArray>("request");
    QTest::newRow("at once") << Faults() << QByteArray();
    for (const char *request : {"OPTIONS", "DESCRIBE", "SETUP", "PLAY"}) {
        QTest::addRow("silent from %s", request)
            << with([&](Faults &f) { f.silentFrom = request; }) << QByteArray(request);
        QTest::addRow("late answer to %s", request)
            << with([&](Faults &f) { f.answerDelay = 700; }) << QByteArray(request);
        QTest::addRow("endless headers at %s", request) << with([&](Faults &f) {
            f.garbageAt = request;
            f.answer = Faults::EndlessHeaders;
        }) << QByteArray(request);
    }
}

void tst_BadStreams::closeDuringOpen()
{
    QFETCH(Faults, faults);
    QFETCH(QByteArray, request);
    const RtspPeer peer(goodClip(), faults);
    ProbedPlayer player;
    QCOMPARE(player.open(peer.url()), 0);
    if (!request.isEmpty())
        QTRY_VERIFY_WITH_TIMEOUT(peer.requests().contains(request), patience);
    const qint64 taken = player.closeInTime();
    QVERIFY2(taken <= closeLimit, milliseconds(taken));
    QCOMPARE(player.observed.events().size(), 0);
    playGoodStream(player);
}

void tst_BadStreams::closeWhileConnecting()
{
    ProbedPlayer player;
    QCOMPARE(player.open(nobody), 0);
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayerReader").size(), 1);
    QTest::qWait(100); // so that the connecting is under way
    const qint64 taken = player.closeInTime();
    QVERIFY2(taken <= closeLimit, milliseconds(taken));
    QCOMPARE(player.observed.events().size(), 0);
    playGoodStream(player);
}

void tst_BadStreams::closeAfterSilence_data()
{
    QTest::addColumn<Faults>("faults");
    QTest::addColumn<int>("packets");
    QTest::newRow("nothing ever came") << with([](Faults &f) { f.stopAfter = 0; }) << 0;
    QTest::newRow("silent stream") << with([](Faults &f) { f.stopAfter = 40; }) << 40;
    QTest::newRow("lost stream") << with([](Faults &f) { f.closeAfter = 40; }) << 40;
    QTest::newRow("cut packet") << with([](Faults &f) {
        f.cutEvery = 40;
        f.stopAfter = 40;
    }) << 40;
}

void tst_BadStreams::closeAfterSilence()
{
    QFETCH(Faults, faults);
    QFETCH(int, packets);
    const RtspPeer peer(goodClip(), faults);
    ProbedPlayer player;
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0), 1, patience);
    QTRY_COMPARE_WITH_TIMEOUT(peer.packetsSent(), packets, patience);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= packets / 10, patience);
    const qint64 taken = player.closeInTime();
    QVERIFY2(taken <= closeLimit, milliseconds(taken));
    playGoodStream(player);
}

void tst_BadStreams::damagedStream_data()
{
    QTest::addColumn<int>("codec");
    QTest::addColumn<Faults>("faults");
    const QPair<const char *, std::function<void(Faults &)>> damages[] = {
        {"every packet corrupted", [](Faults &f) { f.corruptEvery = 1; }},
        {"some packets corrupted", [](Faults &f) { f.corruptEvery = 3; }},
        {"packets cut", [](Faults &f) { f.cutEvery = 7; }},
        {"packets lost", [](Faults &f) { f.dropEvery = 2; }},
        {"wrong parameter sets", [](Faults &f) { f.description = Faults::WrongParameterSets; }},
        {"wrong and corrupted",
            [](Faults &f) {
                f.description = Faults::WrongParameterSets;
                f.corruptEvery = 2;
            }},
    };
    for (const AVCodecID codec : {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC}) {
        for (const auto &damage : damages) {
            for (quint32 seed = 1; seed <= 3; ++seed) {
                QTest::addRow("%s, %s, seed %u", avcodec_get_name(codec), damage.first, seed)
                    << int(codec) << with([&](Faults &f) {
                           damage.second(f);
                           f.seed = seed;
                       });
            }
        }
    }
}

// Five rounds of the clip come at once, and the player is closed in the midst of them.
void tst_BadStreams::damagedStream()
{
    QFETCH(int, codec);
    QFETCH(Faults, faults);
    const MediaClip &clip = MediaClip::of(smallFormat(AVCodecID(codec), AV_CODEC_ID_AAC));
    faults.burst = 5 * int(clip.packets().size());
    const RtspPeer peer(clip, faults);
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0) + player.observed.count(1), 1, patience);
    QTRY_VERIFY_WITH_TIMEOUT(peer.packetsSent() > faults.burst / 3 || peer.connections() == 0
            || player.readerEventCount(2) > 0,
        patience);
    const qint64 taken = player.closeInTime();
    QVERIFY2(taken <= closeLimit, milliseconds(taken));
    playGoodStream(player);
}

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// One to four changes of a file: bytes, runs of bytes, cuts and repeats, and a lost end.
QByteArray damagedContent(QByteArray content, std::mt19937 &random)
{
    const auto below = [&random](int limit) { return int(random() % uint32_t(limit)); };
    for (int changes = 1 + below(4); changes > 0 && content.size() > 64; --changes) {
        const int at = below(content.size());
        const int length = 1 + below(64);
        switch (below(6)) {
        case 0:
            content[at] = char(random());
            break;
        case 1:
            content[at] = char(content[at] ^ (1 << below(8)));
            break;
        case 2:
            for (int i = at; i < content.size() && i < at + length; ++i)
                content[i] = char(random());
            break;
        case 3:
            content.remove(at, length);
            break;
        case 4:
            content.insert(at, content.mid(below(content.size()), length));
            break;
        default:
            content.truncate(content.size() - content.size() / (2 + below(20)));
            break;
        }
    }
    return content;
}

// Reader and decoder with nobody to wait for, so that a file goes through as fast as it decodes.
class Road : private ZRPlayerReaderObserver
{
public:
    explicit Road(const QString &path)
    {
        reader.setObserver(this);
        reader.setUrl(path.toStdString());
        reader.setTimeout(10.0);
        decoder.setInput(&reader);
        reader.start();
    }

    ~Road() override
    {
        reader.setObserver(nullptr);
        reader.stop();
        decoder.stop();
    }

    // Takes what is ready; false when no more can come.
    bool takeFrames()
    {
        // Asked first: what came before it is then still found.
        const bool over = !reader.isRunning() || (opened && !decoder.isRunning())
            || (reader.isEof() && (!decoder.hasVideo() || decoder.isVideoEof()));
        bool any = false;
        while (const std::unique_ptr<ZRPlayerFrame> frame{decoder.popVideoFrame()}) {
            any = true;
            ++pictures;
        }
        while (const std::unique_ptr<ZRPlayerFrame> frame{decoder.popAudioFrame()})
            any = true;
        return any || !over;
    }

    int pictures = 0;

private:
    void onReaderNotify(ZRPlayerReader * /*reader*/, int type) override
    {
        if (type == 0) {
            decoder.start();
            opened = true;
        }
    }

    ZRPlayerReader reader;
    ZRPlayerDecoder decoder;
    std::atomic<bool> opened{false};
};

}

void tst_BadStreams::damagedFile_data()
{
    QTest::addColumn<int>("codec");
    QTest::addColumn<QString>("suffix");
    for (const AVCodecID codec : {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC}) {
        for (const char *suffix : {"mp4", "mkv", "ts"})
            QTest::addRow("%s, %s", avcodec_get_name(codec), suffix) << int(codec) << suffix;
    }
}

void tst_BadStreams::damagedFile()
{
    QFETCH(int, codec);
    QFETCH(QString, suffix);
    MediaClip::Format format = smallFormat(AVCodecID(codec), AV_CODEC_ID_AAC);
    format.width = 64;
    format.height = 48;
    const QByteArray content = contentOf(MediaClip::of(format).file(suffix));
    const QTemporaryDir folder;
    const QString path = folder.filePath("damaged." + suffix);
    int pictures = 0;
    for (quint32 seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(damagedContent(content, random));
        file.close();
        QElapsedTimer clock;
        {
            Road road(path);
            clock.start();
            while (road.takeFrames()) {
                QVERIFY2(
                    !clock.hasExpired(patience), qPrintable(QString("hangs, seed %1").arg(seed)));
                QThread::msleep(1);
            }
            pictures += road.pictures;
            clock.start();
        }
        QVERIFY2(clock.elapsed() <= closeLimit,
            qPrintable(QString("stop took %1 ms, seed %2").arg(clock.elapsed()).arg(seed)));
    }
    qInfo("%d of %d pictures", pictures, 40 * format.pictures);
    QVERIFY(pictures > 40); // the damage let something through, or the test would show nothing
}

QTEST_GUILESS_MAIN(tst_BadStreams)
#include "tst_BadStreams.moc"
