#include "PlayerProbe.h"
#include "RtspPeer.h"

#include <QtTest>

#include <algorithm>
#include <numeric>
#include <utility>

Q_DECLARE_METATYPE(MediaClip::Format)

// The whole player against streams and files in order: what the observer hears, which threads there
// are, and that the pictures which reach the view are the right ones.
class tst_Streams : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void stream_data();
    void stream();
    void file_data();
    void file();
    void joinWithinGroup_data();
    void joinWithinGroup();
    void pictureSizeChanges_data();
    void pictureSizeChanges();
    void pauseAndPlay();
    void seekAfterEnd();
    void overflow();
    void slowViewLosesNothing();
    void lostPackets();
    void lostConnection();
    void silentForAWhile();
};

namespace {

const int patience = 30000; // milliseconds, for what must come
const qint64 closeLimit = 500; // milliseconds
const double quality = 35.0; // dB

const QPair<AVCodecID, const char *> videos[] = {
    {AV_CODEC_ID_H264, "H.264"}, {AV_CODEC_ID_HEVC, "H.265"}, {AV_CODEC_ID_NONE, "none"}};
const QPair<AVCodecID, const char *> audios[] = {
    {AV_CODEC_ID_AAC, "AAC"}, {AV_CODEC_ID_PCM_ALAW, "PCMA"}, {AV_CODEC_ID_NONE, "none"}};

MediaClip::Format pictureFormat(AVCodecID video = AV_CODEC_ID_H264)
{
    return MediaClip::Format::of(video, AV_CODEC_ID_NONE);
}

#define CLOSE_IN_TIME(player)                                                                      \
    do {                                                                                           \
        const qint64 taken = (player).closeInTime();                                               \
        QVERIFY2(taken <= closeLimit, qPrintable(QString("closing took %1 ms").arg(taken)));       \
    } while (false)

// The least likeness of the pictures to the clip's own, each found by its number.
double worstQuality(const std::vector<MediaClip::Picture> &pictures, const MediaClip &clip)
{
    QMap<int, MediaClip::Picture> references;
    for (const MediaClip::Picture &picture : clip.decoded())
        references[MediaClip::number(picture.get())] = picture;
    double worst = 100.0;
    for (const MediaClip::Picture &picture : pictures) {
        const auto reference = references.find(MediaClip::number(picture.get()));
        if (reference == references.end())
            return 0.0;
        worst = std::min(worst, MediaClip::psnr(picture.get(), reference->get()));
    }
    return worst;
}

// The same against the cards from which the clips were made, so that no decoder is the judge.
double worstQualityAgainstCards(const std::vector<MediaClip::Picture> &pictures)
{
    double worst = 100.0;
    for (const MediaClip::Picture &picture : pictures) {
        const auto card = MediaClip::card(MediaClip::number(picture.get()), picture->width,
            picture->height, AVPixelFormat(picture->format));
        worst = std::min(worst, MediaClip::psnr(picture.get(), card.get()));
    }
    return worst;
}

QVector<int> range(int from, int count)
{
    QVector<int> numbers(count);
    std::iota(numbers.begin(), numbers.end(), from);
    return numbers;
}

}

void tst_Streams::initTestCase()
{
    av_log_set_level(AV_LOG_QUIET);
}

void tst_Streams::cleanup()
{
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
}

void tst_Streams::stream_data()
{
    QTest::addColumn<MediaClip::Format>("format");
    for (const auto &video : videos) {
        for (const auto &audio : audios) {
            QTest::addRow("%s, %s", video.second, audio.second)
                << MediaClip::Format::of(video.first, audio.first);
        }
    }
}

void tst_Streams::stream()
{
    QFETCH(MediaClip::Format, format);
    const bool video = format.video != AV_CODEC_ID_NONE;
    const bool audio = format.audio != AV_CODEC_ID_NONE;
    RtspPeer::Faults faults;
    if (!video && !audio) {
        faults.description = RtspPeer::Faults::OtherMedia;
        format = pictureFormat();
    }
    const MediaClip &clip = MediaClip::of(format);
    const RtspPeer peer(clip, faults);
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0), 1, patience);
    if (video)
        QTRY_VERIFY_WITH_TIMEOUT(player.observed.count(4) >= 30, patience);
    else if (audio)
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 0.5, patience);
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), playerThreads(video, audio));
    QCOMPARE(player.isRendering(), video || audio);
    CLOSE_IN_TIME(player);

    QCOMPARE(player.observed.course(), video ? QVector<int>({0, 2, 4}) : QVector<int>({0}));
    double last = -1.0;
    for (const RecordingObserver::Event &event : player.observed.events()) {
        QCOMPARE(event.thread,
            QString(event.type == 0 ? "ZRPlayerReaderThread" : "ZRPlayerRenderVideoThread"));
        QCOMPARE(event.total, event.type == 4 ? -1.0 : 0.0);
        if (event.type != 4)
            QCOMPARE(event.current, 0.0);
        else
            QVERIFY(event.current > last);
        last = event.type == 4 ? event.current : last;
    }
    // While it is closed, a last frame may come of which nobody is told.
    const int untold = player.view.count() - player.observed.count(2) - player.observed.count(4);
    QVERIFY2(untold >= 0 && untold <= 3, qPrintable(QString::number(untold)));
    const QVector<int> numbers = player.view.numbers();
    for (int i = 0; i < numbers.size(); ++i)
        QCOMPARE(numbers[i], i % format.pictures);
    QVERIFY(worstQuality(player.view.pictures(), clip) >= quality);
    QVERIFY(worstQualityAgainstCards(player.view.pictures()) >= quality);
}

void tst_Streams::file_data()
{
    QTest::addColumn<MediaClip::Format>("format");
    QTest::addColumn<QString>("suffix");
    for (const auto &video : videos) {
        if (video.first == AV_CODEC_ID_NONE)
            continue;
        for (const char *suffix : {"mp4", "mkv", "ts"}) {
            QTest::addRow("%s, %s", video.second, suffix)
                << MediaClip::Format::of(video.first, AV_CODEC_ID_AAC) << suffix;
        }
    }
    MediaClip::Format fullRange = pictureFormat();
    fullRange.pixels = AV_PIX_FMT_YUVJ420P;
    QTest::newRow("full range") << fullRange << "mkv";
    MediaClip::Format odd = pictureFormat();
    odd.width = 178;
    odd.height = 102;
    QTest::newRow("no whole blocks") << odd << "mp4";
}

// All pictures of a file, in order and in its time, and then the end.
void tst_Streams::file()
{
    QFETCH(MediaClip::Format, format);
    QFETCH(QString, suffix);
    const MediaClip &clip = MediaClip::of(format);
    ProbedPlayer player;
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(player.open(clip.file(suffix).toStdString()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(3), 1, patience);
    const qint64 taken = clock.elapsed();
    QVERIFY2(taken > 1800, qPrintable(QString::number(taken)));
    QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4, 3}));
    QCOMPARE(player.observed.events().last().thread, QString("ZRPlayerRenderVideoThread"));
    QCOMPARE(player.view.numbers(), range(0, format.pictures));
    QCOMPARE(player.view.pictures()[0]->format, int(format.pixels));
    QVERIFY(worstQuality(player.view.pictures(), clip) >= quality);
    QVERIFY(worstQualityAgainstCards(player.view.pictures()) >= quality);
    CLOSE_IN_TIME(player);
}

void tst_Streams::joinWithinGroup_data()
{
    QTest::addColumn<int>("codec");
    QTest::newRow("H.264") << int(AV_CODEC_ID_H264);
    QTest::newRow("H.265") << int(AV_CODEC_ID_HEVC);
}

// The first picture shown is the next key frame, and it is clean.
void tst_Streams::joinWithinGroup()
{
    QFETCH(int, codec);
    const MediaClip &clip = MediaClip::of(pictureFormat(AVCodecID(codec)));
    RtspPeer::Faults faults;
    faults.startPicture = 7;
    const RtspPeer peer(clip, faults);
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 10, patience);
    CLOSE_IN_TIME(player);
    const auto pictures = player.view.pictures();
    QCOMPARE(player.view.numbers().mid(0, 10), range(25, 10));
    QVERIFY(worstQuality(pictures, clip) >= quality);
}

void tst_Streams::pictureSizeChanges_data()
{
    joinWithinGroup_data();
}

void tst_Streams::pictureSizeChanges()
{
    QFETCH(int, codec);
    MediaClip::Format wide = pictureFormat(AVCodecID(codec));
    wide.pictures = 25;
    MediaClip::Format narrow = wide;
    narrow.width = 176;
    narrow.height = 144;
    narrow.firstNumber = 500;
    MediaClip clip = MediaClip::of(wide);
    clip.append(MediaClip::of(narrow));
    const RtspPeer peer(clip);
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 60, patience); // and back again
    CLOSE_IN_TIME(player);
    for (const MediaClip::Picture &picture : player.view.pictures()) {
        const bool isNarrow = MediaClip::number(picture.get()) >= 500;
        QCOMPARE(picture->width, isNarrow ? narrow.width : wide.width);
        QCOMPARE(picture->height, isNarrow ? narrow.height : wide.height);
    }
    QCOMPARE(player.view.numbers().mid(0, 60), range(0, 25) + range(500, 25) + range(0, 10));
    QVERIFY(worstQuality(player.view.pictures(), clip) >= quality);
}

void tst_Streams::pauseAndPlay()
{
    const RtspPeer peer(MediaClip::of(MediaClip::Format()));
    ProbedPlayer player;
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 5, patience);
    player.pause();
    QVERIFY(!player.isRendering());
    QVERIFY(player.isOpened());
    QTRY_VERIFY_WITH_TIMEOUT(peer.requests().contains("PAUSE"), patience);
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayerRender"), QByteArrayList());
    const int shown = player.view.count();
    player.play();
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(2), 2, patience);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= shown + 10, patience);
    CLOSE_IN_TIME(player);
    QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4, 2, 4}));
}

void tst_Streams::seekAfterEnd()
{
    const MediaClip &clip = MediaClip::of(pictureFormat());
    ProbedPlayer player;
    QCOMPARE(player.open(clip.file("mkv").toStdString()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(3), 1, patience);
    player.seek(1.0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(3), 2, patience);
    QCOMPARE(player.readerEventCount(3) + player.readerEventCount(4), 1);
    QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4, 3, 4, 3}));
    QCOMPARE(player.view.numbers(), range(0, 50) + range(25, 25));
    QVERIFY(worstQuality(player.view.pictures(), clip) >= quality);
}

// A live stream that has run ahead of a held-up view is thrown away, and goes on with a key frame.
void tst_Streams::overflow()
{
    const MediaClip &clip = MediaClip::of(pictureFormat());
    RtspPeer peer(clip);
    ProbedPlayer player;
    player.setRealtime(true);
    player.view.setBlocked(true);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.view.count(), 1, patience);
    QCOMPARE(player.readerEventCount(5), 0);
    peer.burst(80);
    QTRY_VERIFY_WITH_TIMEOUT(player.readerEventCount(5) >= 2, patience);
    QCOMPARE(player.view.count(), 1);
    player.view.setBlocked(false);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 40, patience);
    CLOSE_IN_TIME(player);

    const QVector<int> numbers = player.view.numbers();
    const auto gap = std::adjacent_find(
        numbers.begin(), numbers.end(), [](int left, int right) { return right != left + 1; });
    QVERIFY(gap != numbers.end());
    // What was decoded by then: the picture in the view, and as many as the decoder holds.
    QVERIFY2(gap - numbers.begin() < 4, qPrintable(QString::number(gap - numbers.begin())));
    QCOMPARE(gap[1] % 25, 0);
    QVERIFY(worstQuality(player.view.pictures(), clip) >= quality);
}

// What isn't live waits for the view.
void tst_Streams::slowViewLosesNothing()
{
    const MediaClip &clip = MediaClip::of(pictureFormat());
    const RtspPeer peer(clip, RtspPeer::AsFastAsTaken);
    ProbedPlayer player;
    player.view.setBlocked(true);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.view.count(), 1, patience);
    QTRY_COMPARE_WITH_TIMEOUT(player.queuedVideoPackets(), 31, patience);
    QTRY_VERIFY_WITH_TIMEOUT(peer.packetsSent() > 200, patience); // more than the reader may take
    QCOMPARE(player.queuedVideoPackets(), 31);
    QCOMPARE(player.readerEventCount(5), 0);
    player.view.setBlocked(false);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 45, patience);
    CLOSE_IN_TIME(player);
    QCOMPARE(player.view.numbers().mid(0, 45), range(0, 45));
}

// Pictures are damaged until the next key frame, and never for longer.
void tst_Streams::lostPackets()
{
    RtspPeer::Faults faults;
    faults.dropEvery = 17;
    const RtspPeer peer(MediaClip::of(pictureFormat()), faults);
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.numbers().mid(30).contains(25), patience);
    CLOSE_IN_TIME(player);
    const auto numbers = player.view.numbers();
    const auto pictures = player.view.pictures();
    for (int i = 0; i < numbers.size(); ++i) {
        if (numbers[i] == 25) {
            QVERIFY(worstQualityAgainstCards({pictures[size_t(i)]}) >= quality);
        }
    }
}

// It is told to nobody, and nobody connects anew.
void tst_Streams::lostConnection()
{
    RtspPeer peer(MediaClip::of(MediaClip::Format()));
    ProbedPlayer player;
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 5, patience);
    peer.hangUp();
    QTRY_VERIFY_WITH_TIMEOUT(
        player.readerEventCount(2) == 1 || player.observed.count(3) == 1, patience);
    QVERIFY(player.isOpened());
    QCOMPARE(player.observed.course().mid(0, 3), QVector<int>({0, 2, 4}));
    QCOMPARE(player.observed.count(1), 0);
    QCOMPARE(peer.requests().count("OPTIONS"), 1);
    CLOSE_IN_TIME(player);
}

void tst_Streams::silentForAWhile()
{
    const MediaClip &clip = MediaClip::of(pictureFormat());
    RtspPeer peer(clip);
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(peer.url()), 0);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 5, patience);
    peer.setSilent(true);
    int shown = -1;
    QElapsedTimer still;
    const auto nothingNew = [&] {
        if (std::exchange(shown, player.view.count()) != shown || !still.isValid())
            still.start();
        return still.hasExpired(1000);
    };
    QTRY_VERIFY_WITH_TIMEOUT(nothingNew(), patience);
    peer.setSilent(false);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= shown + 30, patience);
    CLOSE_IN_TIME(player);
    QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4}));
    QVERIFY(worstQuality(player.view.pictures(), clip) >= quality);
}

QTEST_GUILESS_MAIN(tst_Streams)
#include "tst_Streams.moc"
