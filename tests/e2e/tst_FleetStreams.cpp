#include "FleetPicture.h"
#include "FleetProcess.h"
#include "FleetTimeCode.h"
#include "PlayerProbe.h"
#include "TestNetwork.h"

#include <QDateTime>
#include <QJsonArray>
#include <QScopedPointer>
#include <QtTest>

// The player and a camera of the fleet in the private network: each kind of stream, its faults, and
// a network that goes away.
class tst_FleetStreams : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void plays_data();
    void plays();
    void joinsLate();
    void sizeChanges();
    void badStream_data();
    void badStream();
    void networkGoesAway();

private:
    bool start(const QJsonObject &stream, const QJsonObject &rule = QJsonObject());

    QScopedPointer<FleetProcess> fleet;
};

namespace {

const int patience = 30000; // milliseconds, for what must come
const qint64 closeLimit = 500; // milliseconds
const double quality = 35.0; // dB
const char *url = "rtsp://10.77.0.11:8554/live1";

qint64 timeOf(const AVFrame *picture)
{
    return FleetTimeCode::read(
        picture->data[0], picture->linesize[0], picture->width, picture->height);
}

// What the camera drew at that time.
MediaClip::Picture drawnAt(qint64 time, int width, int height)
{
    FleetPicture drawing(width, height);
    const QString clock =
        QDateTime::fromMSecsSinceEpoch(time).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    drawing.draw(QStringLiteral("Camera-0001"), clock, time);
    AVFrame *frame = av_frame_alloc();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width;
    frame->height = height;
    av_frame_get_buffer(frame, 0);
    const uint8_t *source = drawing.bytes().data();
    for (int plane = 0; plane < 3; ++plane) {
        const int lines = plane ? (height + 1) / 2 : height;
        const int bytes = plane ? (width + 1) / 2 : width;
        const int stride = plane ? (drawing.stride() / 2 + 3) / 4 * 4 : drawing.stride();
        for (int y = 0; y < lines; ++y, source += stride)
            memcpy(frame->data[plane] + y * frame->linesize[plane], source, size_t(bytes));
    }
    return {frame, [](const AVFrame *freed) {
                auto *changed = const_cast<AVFrame *>(freed);
                av_frame_free(&changed);
            }};
}

// Every picture has its time, no two the same, and looks as it was drawn.
void checkPictures(const std::vector<MediaClip::Picture> &pictures)
{
    qint64 last = 0;
    double worst = 100.0;
    for (const MediaClip::Picture &picture : pictures) {
        const qint64 time = timeOf(picture.get());
        QVERIFY2(time > last, qPrintable(QString("%1 after %2").arg(time).arg(last)));
        last = time;
        const auto drawn = drawnAt(time, picture->width, picture->height);
        worst = std::min(worst, MediaClip::psnr(picture.get(), drawn.get()));
    }
    QVERIFY2(worst >= quality, qPrintable(QString("%1 dB").arg(worst)));
}

void closeInTime(ProbedPlayer &player)
{
    const qint64 taken = player.closeInTime();
    QVERIFY2(taken <= closeLimit, qPrintable(QString("closing took %1 ms").arg(taken)));
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
}

}

bool tst_FleetStreams::start(const QJsonObject &stream, const QJsonObject &rule)
{
    QJsonObject camera{{"camera", 1}, {"stream", stream}};
    if (!rule.isEmpty())
        camera["rules"] = QJsonArray{rule};
    fleet.reset(new FleetProcess("cam-a", 1, "10.77.0.11"));
    fleet->setScenario({{"cameras", QJsonArray{camera}}});
    return fleet->start();
}

void tst_FleetStreams::initTestCase()
{
    av_log_set_level(AV_LOG_QUIET);
}

void tst_FleetStreams::cleanup()
{
    if (fleet && !fleet->stop())
        QFAIL(fleet->errors());
    fleet.reset();
}

void tst_FleetStreams::plays_data()
{
    QTest::addColumn<QString>("video");
    QTest::addColumn<QString>("audio");
    for (const char *video : {"H.264", "H.265", "none"}) {
        for (const char *audio : {"AAC", "PCMA", "none"}) {
            if (qstrcmp(video, "none") != 0 || qstrcmp(audio, "none") != 0)
                QTest::addRow("%s, %s", video, audio) << video << audio;
        }
    }
}

void tst_FleetStreams::plays()
{
    QFETCH(QString, video);
    QFETCH(QString, audio);
    const bool hasVideo = video != "none";
    const bool hasAudio = audio != "none";
    QVERIFY(start({{"video", video}, {"audio", audio}, {"size", "640x480"}}));
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(url), 0);
    QTRY_COMPARE_WITH_TIMEOUT(player.observed.count(0), 1, patience);
    if (hasVideo)
        QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 40, patience);
    else
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 0.5, patience);
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), playerThreads(hasVideo, hasAudio));
    closeInTime(player);
    QCOMPARE(player.observed.course(), hasVideo ? QVector<int>({0, 2, 4}) : QVector<int>({0}));
    checkPictures(player.view.pictures());
}

// The camera's stream runs already, and begins for the player within a group of pictures.
void tst_FleetStreams::joinsLate()
{
    QVERIFY(start({{"audio", "none"}, {"size", "640x480"}, {"always", true}}));
    for (int i = 0; i < 5; ++i) {
        ProbedPlayer player;
        player.setRealtime(true);
        QCOMPARE(player.open(url), 0);
        QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 5 + 3 * i, patience);
        closeInTime(player);
        checkPictures(player.view.pictures());
    }
}

void tst_FleetStreams::sizeChanges()
{
    QVERIFY(start({{"size", "640x480"}, {"next-size", "320x240"}, {"next-size-after", 1}}));
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(url), 0);
    const auto last = [&] {
        const auto pictures = player.view.pictures();
        return pictures.empty() ? 0 : pictures.back()->width;
    };
    QTRY_COMPARE_WITH_TIMEOUT(last(), 640, patience);
    QTRY_COMPARE_WITH_TIMEOUT(last(), 320, patience);
    closeInTime(player);
    QCOMPARE(player.view.pictures().back()->height, 240);
    checkPictures(player.view.pictures());
}

void tst_FleetStreams::badStream_data()
{
    QTest::addColumn<QJsonObject>("rule");
    QTest::addColumn<int>("event"); // what comes of opening, -1: nothing
    const auto row = [](const char *name, const QJsonObject &fault, int event) {
        QJsonObject rule = fault;
        rule["on"] = "stream";
        rule["times"] = 1;
        QTest::newRow(name) << rule << event;
    };
    row("reset", {{"reset", true}}, 1);
    row("401", {{"status", 401}}, 1);
    row("404", {{"status", 404}}, 1);
    row("503", {{"status", 503}}, 1);
    row("silent", {{"silent", true}}, -1);
    row("late", {{"delay-ms", 100}}, 0);
    row("freezes", {{"freeze-after", 0.5}}, 0);
    row("closes", {{"close-after", 0.5}}, 0);
    row("loses packets", {{"lose-every", 5}}, 0);
    row("damages packets", {{"corrupt-every", 3}}, 0);
}

// It can be closed, and the same player plays when the camera is well again.
void tst_FleetStreams::badStream()
{
    QFETCH(QJsonObject, rule);
    QFETCH(int, event);
    QVERIFY(start({{"size", "640x480"}}, rule));
    ProbedPlayer player;
    player.setRealtime(true);
    QCOMPARE(player.open(url), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!fleet->events("viewer").isEmpty(), patience);
    if (event >= 0)
        QTRY_COMPARE_WITH_TIMEOUT(player.observed.course().value(0, -1), event, patience);
    if (event == 0)
        QTRY_VERIFY_WITH_TIMEOUT(player.view.count() > 0 || player.readerEventCount(2), patience);
    closeInTime(player);
    player.reset();
    QCOMPARE(player.open(url), 0);
    QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 10, patience);
    closeInTime(player);
    checkPictures(player.view.pictures());
}

// The picture stands while nothing comes, and the stream goes on by itself.
void tst_FleetStreams::networkGoesAway()
{
    QVERIFY(start({{"size", "640x480"}}));
    ProbedPlayer player;
    player.setRealtime(true);
    for (const bool comesBack : {true, false}) {
        player.reset();
        QCOMPARE(player.open(url), 0);
        QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= 25, patience);
        QVERIFY(TestNetwork::run("ip link set veth-a down"));
        QTest::qWait(1000); // the time that it is away
        const int shown = player.view.count();
        if (!comesBack)
            closeInTime(player);
        QVERIFY(TestNetwork::run("ip link set veth-a up"));
        if (!comesBack)
            continue;
        QTRY_VERIFY_WITH_TIMEOUT(player.view.count() >= shown + 25, patience);
        closeInTime(player);
        QCOMPARE(player.observed.course(), QVector<int>({0, 2, 4}));
        checkPictures(player.view.pictures());
    }
}

QTEST_GUILESS_MAIN(tst_FleetStreams)
#include "tst_FleetStreams.moc"
