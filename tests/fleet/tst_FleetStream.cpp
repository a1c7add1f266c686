#include "FleetProcess.h"
#include "StreamViewer.h"
#include "TestNetwork.h"
#include "Turn.h"
#include "Workstation.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTest>

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/error.h>
}

namespace {

using Notes = StreamViewer::Notes;

constexpr int longestWaitMs = 30000;
constexpr int longestAgeMs = 3000; // of a picture, on a busy machine

const QString firstUrl = "rtsp://10.77.0.11:8554/live1";

QString urlOf(int camera)
{
    return QStringLiteral("rtsp://10.77.0.%1:8554/live1").arg(10 + camera);
}

QJsonObject entry(
    const QJsonValue &camera, const QJsonObject &stream, const QJsonObject &rule = QJsonObject())
{
    QJsonObject made{{"camera", camera}, {"stream", stream}};
    if (!rule.isEmpty())
        made["rules"] = QJsonArray{rule};
    return made;
}

QJsonObject scenario(const QJsonArray &cameras)
{
    return {{"cameras", cameras}};
}

// The first camera has a small picture and a rule on its stream.
QJsonObject fault(QJsonObject rule)
{
    rule["on"] = "stream";
    return scenario({entry(1, {{"size", "640x480"}, {"audio", "none"}}, rule)});
}

// Part of the sound's energy that is in one frequency.
double share(const QVector<float> &samples, double hz, double samplesPerSecond)
{
    double re = 0, im = 0, all = 0;
    for (int i = 0; i < samples.size(); ++i) {
        const double turn = wholeTurn * hz * i / samplesPerSecond;
        re += double(samples[i]) * std::cos(turn);
        im += double(samples[i]) * std::sin(turn);
        all += double(samples[i]) * double(samples[i]);
    }
    return all > 0 ? 2 * (re * re + im * im) / samples.size() / all : 0;
}

// Packets from the first key frame to the next ones.
QVector<int> keyDistances(const QVector<bool> &isKey)
{
    QVector<int> distances;
    for (int i = isKey.indexOf(true), next; i >= 0; i = next) {
        next = isKey.indexOf(true, i + 1);
        if (next > 0)
            distances.append(next - i);
    }
    return distances;
}

// Sends a request by hand and returns what comes back within a moment.
QByteArray talk(const QByteArray &request, int waitMs)
{
    QTcpSocket socket;
    socket.connectToHost("10.77.0.11", 8554);
    if (!socket.waitForConnected(5000))
        return "no connection";
    socket.write(request);
    QByteArray answer;
    while (socket.waitForReadyRead(waitMs))
        answer += socket.readAll();
    return answer;
}

}

// The cameras' streams as an independent client gets them.
class tst_FleetStream : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void plays_data();
    void plays();
    void nothingRunsUnwatched();
    void oneStreamForAll();
    void joinsInMidGop();
    void runsAlways();
    void nameInPicture();
    void overUdp();
    void wrongPath();
    void closed();
    void portInUse();
    void otherPort();
    void noPort();
    void sharedAddress();

    void changesSize();
    void connectionFails_data();
    void connectionFails();
    void silent();
    void status_data();
    void status();
    void garbage();
    void lateAnswers();
    void freezes();
    void closesLater();
    void losesPackets();
    void corruptsPackets();
    void ruleIsUsedUp();

    void followsSetIp();
    void silentWhileItRestarts();
    void stopsWithViewers();
    void eightAtOnce();

private:
    bool start(int count, const QJsonObject &scenario = QJsonObject());
    QStringList told(const QString &event) const;

    QScopedPointer<FleetProcess> fleet;
};

void tst_FleetStream::init()
{
    fleet.reset(new FleetProcess("cam-a", 1, "10.77.0.11"));
}

void tst_FleetStream::cleanup()
{
    if (!fleet->stop())
        QFAIL(fleet->errors());
    fleet.reset();
}

bool tst_FleetStream::start(int count, const QJsonObject &scenario)
{
    fleet->addOptions({"--count", QString::number(count)});
    if (!scenario.isEmpty())
        fleet->setScenario(scenario);
    return fleet->start();
}

// "what" of the journal's lines, in order.
QStringList tst_FleetStream::told(const QString &event) const
{
    QStringList all;
    for (const QJsonObject &line : fleet->events(event))
        all.append(line["what"].toString());
    return all;
}

void tst_FleetStream::plays_data()
{
    QTest::addColumn<QString>("video");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("audio");
    QTest::addColumn<int>("fps");
    const struct {
        const char *video;
        QSize size;
        const char *audio;
        int fps;
    } rows[] = {
        {"H.264", {640, 480}, "AAC", 25},
        {"H.264", {1280, 720}, "PCMA", 25},
        {"H.264", {1920, 1080}, "none", 25},
        {"H.264", {322, 242}, "AAC", 10},
        {"H.265", {640, 480}, "PCMA", 25},
        {"H.265", {1280, 720}, "AAC", 25},
        {"H.265", {1920, 1080}, "none", 15},
        {"none", {}, "AAC", 25},
        {"none", {}, "PCMA", 25},
    };
    for (const auto &row : rows)
        QTest::addRow("%s %dx%d %s", row.video, row.size.width(), row.size.height(), row.audio)
            << row.video << row.size << row.audio << row.fps;
}

void tst_FleetStream::plays()
{
    QFETCH(QString, video);
    QFETCH(QSize, size);
    QFETCH(QString, audio);
    QFETCH(int, fps);
    QJsonObject stream{{"video", video}, {"audio", audio}, {"fps", fps}};
    if (!size.isEmpty())
        stream["size"] = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
    QVERIFY(start(1, scenario({entry(1, stream)})));
    StreamViewer viewer(firstUrl);
    const int samplesPerSecond = audio == "PCMA" ? 8000 : 48000;
    const auto isEnough = [&] {
        const Notes notes = viewer.notes();
        return (video == "none" || notes.pictures.size() > 2 * fps)
            && (audio == "none" || notes.samples.size() > samplesPerSecond);
    };
    QTRY_VERIFY_WITH_TIMEOUT(isEnough() || viewer.notes().ended, longestWaitMs);
    viewer.stop();
    const Notes notes = viewer.notes();
    QVERIFY(!notes.ended);
    QCOMPARE(notes.decodeErrors, 0);
    QCOMPARE(notes.videoCodec,
        QByteArray(video == "H.265" ? "hevc"
                : video == "H.264"  ? "h264"
                                    : ""));
    QCOMPARE(notes.audioCodec,
        QByteArray(audio == "AAC" ? "aac"
                : audio == "PCMA" ? "pcm_alaw"
                                  : ""));
    if (audio != "none") {
        QCOMPARE(notes.samplesPerSecond, samplesPerSecond);
        const QVector<float> steady = notes.samples.mid(samplesPerSecond / 10);
        QVERIFY(share(steady, 440, samplesPerSecond) > 0.9);
    }
    if (video == "none")
        return;
    QVERIFY(notes.parameterBytes > 20);
    for (int distance : keyDistances(notes.isKey))
        QCOMPARE(distance, fps);
    QVERIFY(!keyDistances(notes.isKey).isEmpty());
    qint64 last = 0;
    for (const StreamViewer::Picture &picture : notes.pictures) {
        QCOMPARE(picture.size, size);
        QVERIFY(picture.madeAt > last);
        last = picture.madeAt;
        QVERIFY(picture.madeAt <= picture.seenAt);
        QVERIFY2(picture.seenAt - picture.madeAt < longestAgeMs,
            qPrintable(QString::number(picture.seenAt - picture.madeAt)));
    }
    const qint64 lasted = last - notes.pictures.first().madeAt;
    const qint64 expected = (notes.pictures.size() - 1) * 1000 / fps;
    // On a busy machine the camera leaves pictures out that are overdue; it never makes more.
    const int slackMs = 1000 / fps * 5;
    QVERIFY2(lasted >= expected - slackMs && lasted <= expected * 2 + slackMs,
        qPrintable(QString::number(lasted)));
}

void tst_FleetStream::nothingRunsUnwatched()
{
    QVERIFY(start(1));
    QVERIFY(!talk("OPTIONS * RTSP/1.0\r\nCSeq: 1\r\n\r\n", 1000).isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(told("viewer"), (QStringList{"came", "left"}), longestWaitMs);
    QCOMPARE(told("stream"), QStringList());
    StreamViewer viewer(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().pictures.size() > 2, longestWaitMs);
    QCOMPARE(told("stream"), QStringList{"started"});
    QCOMPARE(fleet->events("stream").first()["video"].toString(), QString("H.264"));
    QCOMPARE(fleet->events("stream").first()["size"].toString(), QString("1280x720"));
    QCOMPARE(fleet->events("stream").first()["audio"].toString(), QString("AAC"));
    viewer.stop();
    QTRY_COMPARE_WITH_TIMEOUT(told("stream"), (QStringList{"started", "stopped"}), longestWaitMs);
    QTRY_COMPARE_WITH_TIMEOUT(told("viewer"),
        (QStringList{"came", "left", "came", "play", "teardown", "left"}), longestWaitMs);
    QVERIFY(fleet->events("viewer").last()["source"].toString().startsWith("10.77.0.1:"));
}

void tst_FleetStream::oneStreamForAll()
{
    QVERIFY(start(1));
    StreamViewer first(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(first.notes().pictures.size() > 2, longestWaitMs);
    StreamViewer second(firstUrl);
    StreamViewer third(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(second.notes().pictures.size() > 25, longestWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(third.notes().pictures.size() > 25, longestWaitMs);
    first.stop();
    const int seen = second.notes().pictures.size();
    QTRY_VERIFY_WITH_TIMEOUT(second.notes().pictures.size() > seen + 25, longestWaitMs);
    QCOMPARE(told("stream"), QStringList{"started"});
    second.stop();
    third.stop();
    QTRY_COMPARE_WITH_TIMEOUT(told("stream"), (QStringList{"started", "stopped"}), longestWaitMs);
    for (StreamViewer *viewer : {&first, &second, &third})
        QCOMPARE(viewer->notes().decodeErrors, 0);
}

// A later viewer gets what is encoded anyway, which seldom begins with a key frame.
void tst_FleetStream::joinsInMidGop()
{
    QVERIFY(start(1, scenario({entry(1, {{"size", "640x480"}, {"audio", "none"}})})));
    StreamViewer first(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(first.notes().pictures.size() > 2, longestWaitMs);
    int inMiddle = 0;
    for (int i = 0; i < 5; ++i) {
        StreamViewer later(firstUrl);
        QTRY_VERIFY_WITH_TIMEOUT(later.notes().isKey.contains(true), longestWaitMs);
        const int before = later.notes().isKey.indexOf(true);
        QVERIFY(before < 25);
        inMiddle += before > 0;
    }
    QVERIFY(inMiddle > 0);
}

void tst_FleetStream::runsAlways()
{
    QVERIFY(start(1, scenario({entry(1, {{"size", "640x480"}, {"always", true}})})));
    QTRY_COMPARE_WITH_TIMEOUT(told("stream"), QStringList{"started"}, longestWaitMs);
    int inMiddle = 0;
    for (int i = 0; i < 5; ++i) {
        StreamViewer viewer(firstUrl);
        QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().pictures.size() > 5, longestWaitMs);
        const Notes notes = viewer.notes();
        inMiddle += notes.isKey.indexOf(true) > 0;
        QVERIFY(notes.pictures.first().seenAt - notes.pictures.first().madeAt < longestAgeMs);
    }
    QVERIFY(inMiddle > 0);
    QTRY_COMPARE_WITH_TIMEOUT(told("viewer").count("left"), 5, longestWaitMs);
    QCOMPARE(told("stream"), QStringList{"started"});
}

void tst_FleetStream::nameInPicture()
{
    QVERIFY(start(1, scenario({entry(1, {{"size", "640x480"}, {"audio", "none"}})})));
    Workstation workstation;
    StreamViewer viewer(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().pictures.size() > 2, longestWaitMs);
    // Bright points of the name's line: a name of three letters has fewer than "Camera-0001".
    const auto brightPoints = [&] {
        const QByteArray text = viewer.notes().text.left(160 * 13);
        return std::count_if(text.begin(), text.end(), [](char grey) { return uchar(grey) > 128; });
    };
    const auto before = brightPoints();
    QVERIFY(before > 100);
    QCOMPARE(workstation.ask("SetName", "02564C000001", {{"name", "III"}})["result"].toString(),
        QString("success"));
    QTRY_VERIFY_WITH_TIMEOUT(brightPoints() > 10 && brightPoints() < before / 2, longestWaitMs);
}

void tst_FleetStream::overUdp()
{
    QVERIFY(start(1));
    StreamViewer viewer(firstUrl, "udp");
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().pictures.size() > 25, longestWaitMs);
    viewer.stop();
    QTRY_COMPARE_WITH_TIMEOUT(told("stream"), (QStringList{"started", "stopped"}), longestWaitMs);
}

void tst_FleetStream::wrongPath()
{
    QVERIFY(start(1));
    StreamViewer viewer("rtsp://10.77.0.11:8554/live2");
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().ended, longestWaitMs);
    QCOMPARE(viewer.notes().error, AVERROR_HTTP_NOT_FOUND);
}

void tst_FleetStream::closed()
{
    QVERIFY(start(2, scenario({entry(1, {{"closed", true}})})));
    StreamViewer first(urlOf(1));
    QTRY_VERIFY_WITH_TIMEOUT(first.notes().ended, longestWaitMs);
    QCOMPARE(first.notes().error, AVERROR(ECONNREFUSED));
    StreamViewer second(urlOf(2));
    QTRY_VERIFY_WITH_TIMEOUT(second.notes().pictures.size() > 2, longestWaitMs);
}

void tst_FleetStream::portInUse()
{
    QVERIFY(start(1));
    FleetProcess other("cam-a", 1, "10.77.0.11");
    other.addOptions({"--http-port", "0"});
    QTest::ignoreMessage(QtWarningMsg,
        "vorlyn-fleet: port 8554 of 10.77.0.11: The bound address is already in use\n");
    QVERIFY(!other.start());
}

void tst_FleetStream::otherPort()
{
    fleet->addOptions({"--rtsp-port", "1554"});
    QVERIFY(start(1));
    Workstation workstation;
    const QString url = workstation.ask("search", "02564C000001")["rtsppath1"].toString();
    QCOMPARE(url, QString("rtsp://10.77.0.11:1554/live1"));
    StreamViewer viewer(url);
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().pictures.size() > 2, longestWaitMs);
}

void tst_FleetStream::noPort()
{
    fleet->addOptions({"--rtsp-port", "0"});
    QVERIFY(start(1));
    QCOMPARE(talk("", 0), QByteArray("no connection"));
}

// Without addresses of their own, cameras have ports of their own, if they are asked for.
void tst_FleetStream::sharedAddress()
{
    FleetProcess quiet("cam-a", 2, "10.77.0.11");
    quiet.addOptions({"--no-addresses", "--http-port", "0"});
    QVERIFY(quiet.start());
    QTcpSocket socket;
    socket.connectToHost("10.77.0.2", 8554);
    QVERIFY(!socket.waitForConnected(5000));
    QVERIFY(quiet.stop());

    fleet->addOptions({"--no-addresses", "--http-port", "0", "--rtsp-port", "9000"});
    QVERIFY(start(2));
    Workstation workstation;
    QCOMPARE(workstation.ask("search", "02564C000002")["rtsppath1"].toString(),
        QString("rtsp://10.77.0.12:9001/live1"));
    StreamViewer second("rtsp://10.77.0.2:9001/live1");
    QTRY_VERIFY_WITH_TIMEOUT(second.notes().pictures.size() > 2, longestWaitMs);
    QCOMPARE(fleet->events("viewer").first()["camera"].toInt(), 2);
}

void tst_FleetStream::changesSize()
{
    for (const char *video : {"H.264", "H.265"}) {
        init();
        QVERIFY(start(1,
            scenario({entry(1,
                {{"video", video}, {"size", "640x480"}, {"next-size", "320x240"},
                    {"next-size-after", 2}})})));
        StreamViewer viewer(firstUrl);
        const auto hasSmall = [&] {
            const auto pictures = viewer.notes().pictures;
            return !pictures.isEmpty() && pictures.last().size == QSize(320, 240);
        };
        QTRY_VERIFY_WITH_TIMEOUT(hasSmall(), longestWaitMs);
        viewer.stop();
        const Notes notes = viewer.notes();
        QCOMPARE(notes.decodeErrors, 0);
        qint64 firstSmall = 0;
        for (const StreamViewer::Picture &picture : notes.pictures) {
            QVERIFY(picture.madeAt > 0);
            if (picture.size == QSize(320, 240) && firstSmall == 0)
                firstSmall = picture.madeAt;
            QCOMPARE(picture.size, firstSmall ? QSize(320, 240) : QSize(640, 480));
        }
        const qint64 after = firstSmall - notes.pictures.first().madeAt;
        QVERIFY2(after > 1500 && after < 3000, qPrintable(QString::number(after)));
        cleanup();
    }
    init();
}

void tst_FleetStream::connectionFails_data()
{
    QTest::addColumn<QJsonObject>("rule");
    QTest::addColumn<int>("error");
    QTest::newRow("reset") << QJsonObject{{"reset", true}} << 0; // whatever comes of it
    QTest::newRow("401") << QJsonObject{{"status", 401}} << AVERROR_HTTP_UNAUTHORIZED;
    QTest::newRow("404") << QJsonObject{{"status", 404}} << AVERROR_HTTP_NOT_FOUND;
    QTest::newRow("503") << QJsonObject{{"status", 503}} << AVERROR_HTTP_SERVER_ERROR;
}

void tst_FleetStream::connectionFails()
{
    QFETCH(QJsonObject, rule);
    QFETCH(int, error);
    QVERIFY(start(1, fault(rule)));
    StreamViewer viewer(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().ended, longestWaitMs);
    QVERIFY(!viewer.notes().opened);
    if (error != 0)
        QCOMPARE(viewer.notes().error, error);
    QTRY_COMPARE_WITH_TIMEOUT(told("viewer"), (QStringList{"came", "left"}), longestWaitMs);
    QCOMPARE(fleet->events("viewer").first()["rule"].toString(), QString("cameras[0].rules[0]"));
    QCOMPARE(told("stream"), QStringList());
}

void tst_FleetStream::silent()
{
    QVERIFY(start(1, fault({{"silent", true}})));
    QCOMPARE(talk("OPTIONS * RTSP/1.0\r\nCSeq: 1\r\n\r\n", 1500), QByteArray());
    QTRY_COMPARE_WITH_TIMEOUT(told("viewer").count("left"), 1, longestWaitMs);
    StreamViewer viewer(firstUrl);
    QTRY_COMPARE_WITH_TIMEOUT(told("viewer").count("came"), 2, longestWaitMs);
    QTest::qWait(1000); // nothing happens
    QVERIFY(!viewer.notes().opened && !viewer.notes().ended);
    viewer.stop();
    QTRY_COMPARE_WITH_TIMEOUT(
        told("viewer"), (QStringList{"came", "left", "came", "left"}), longestWaitMs);
}

void tst_FleetStream::status_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("401") << 401
                         << QByteArray("RTSP/1.0 401 Error\r\nCSeq: 7\r\n"
                                       "WWW-Authenticate: Basic realm=\"camera\"\r\n\r\n");
    QTest::newRow("500") << 500 << QByteArray("RTSP/1.0 500 Error\r\nCSeq: 7\r\n\r\n");
}

void tst_FleetStream::status()
{
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    QVERIFY(start(1, fault({{"status", status}})));
    QCOMPARE(
        talk("DESCRIBE rtsp://10.77.0.11:8554/live1 RTSP/1.0\r\nCSeq: 7\r\n\r\n", 1000), answer);
}

void tst_FleetStream::garbage()
{
    QVERIFY(start(1, fault({{"garbage", 5000}})));
    const QByteArray bytes = talk("OPTIONS * RTSP/1.0\r\nCSeq: 1\r\n\r\n", 1000);
    QCOMPARE(bytes.size(), 5000);
    QVERIFY(!bytes.contains("RTSP"));
    QVERIFY(bytes.count('\0') < 100);
}

void tst_FleetStream::lateAnswers()
{
    QVERIFY(start(1, fault({{"delay-ms", 400}})));
    QElapsedTimer clock;
    clock.start();
    StreamViewer viewer(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().pictures.size() > 10, longestWaitMs);
    // OPTIONS, DESCRIBE, SETUP and PLAY.
    QVERIFY2(clock.elapsed() > 1600, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(viewer.notes().decodeErrors, 0);
    QCOMPARE(told("viewer"), (QStringList{"came", "play"}));
}

void tst_FleetStream::freezes()
{
    QVERIFY(start(1, fault({{"freeze-after", 1}})));
    StreamViewer viewer(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(!viewer.notes().isKey.isEmpty(), longestWaitMs);
    const auto isQuiet = [&] {
        return QDateTime::currentMSecsSinceEpoch() - viewer.notes().lastPacketAt > 6000;
    };
    QTRY_VERIFY_WITH_TIMEOUT(isQuiet() || viewer.notes().ended, longestWaitMs);
    const Notes notes = viewer.notes();
    QVERIFY(!notes.ended);
    const qint64 lasted = notes.pictures.last().madeAt - notes.pictures.first().madeAt;
    QVERIFY2(lasted > 500 && lasted < 2000, qPrintable(QString::number(lasted)));
}

void tst_FleetStream::closesLater()
{
    QVERIFY(start(1, fault({{"close-after", 1}})));
    StreamViewer viewer(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().ended, longestWaitMs);
    const Notes notes = viewer.notes();
    QVERIFY(notes.opened);
    QCOMPARE(notes.error, AVERROR_EOF);
    const qint64 lasted = notes.pictures.last().madeAt - notes.pictures.first().madeAt;
    QVERIFY2(lasted > 500 && lasted < 2000, qPrintable(QString::number(lasted)));
    QTRY_COMPARE_WITH_TIMEOUT(told("viewer").last(), QString("left"), longestWaitMs);
    QTRY_COMPARE_WITH_TIMEOUT(told("stream").last(), QString("stopped"), longestWaitMs);
}

// Fewer pictures come through than the camera made, or broken ones.
void tst_FleetStream::losesPackets()
{
    QVERIFY(start(1, fault({{"lose-every", 5}})));
    StreamViewer viewer(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().packets > 60, longestWaitMs);
    viewer.stop();
    const Notes notes = viewer.notes();
    const qint64 lasted = notes.pictures.last().seenAt - notes.pictures.first().seenAt;
    const auto read = std::count_if(notes.pictures.begin(), notes.pictures.end(),
        [](const StreamViewer::Picture &picture) { return picture.madeAt > 0; });
    QVERIFY(!notes.ended);
    QVERIFY2(read < lasted * 25 / 1000 * 9 / 10 || notes.decodeErrors > 0,
        qPrintable(QStringLiteral("%1 in %2 ms").arg(read).arg(lasted)));
}

void tst_FleetStream::corruptsPackets()
{
    QVERIFY(start(1, fault({{"corrupt-every", 3}})));
    StreamViewer viewer(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(viewer.notes().packets > 60, longestWaitMs);
    viewer.stop();
    const Notes notes = viewer.notes();
    const auto unread = std::count_if(notes.pictures.begin(), notes.pictures.end(),
        [](const StreamViewer::Picture &picture) { return picture.madeAt < 0; });
    QVERIFY(!notes.ended);
    QVERIFY2(unread + notes.decodeErrors > 0, qPrintable(QString::number(notes.pictures.size())));
}

void tst_FleetStream::ruleIsUsedUp()
{
    QVERIFY(start(1, fault({{"status", 404}, {"after", 1}, {"times", 1}})));
    const QVector<bool> expected{true, false, true};
    for (bool plays : expected) {
        StreamViewer viewer(firstUrl);
        QTRY_VERIFY_WITH_TIMEOUT(
            !viewer.notes().pictures.isEmpty() || viewer.notes().ended, longestWaitMs);
        QCOMPARE(viewer.notes().opened, plays);
    }
}

void tst_FleetStream::followsSetIp()
{
    QVERIFY(start(1));
    Workstation workstation;
    StreamViewer before(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(before.notes().pictures.size() > 2, longestWaitMs);
    QCOMPARE(workstation
                 .ask("SetIp", "02564C000001",
                     {{"IpMode", "static"}, {"ip", "10.77.0.90"}, {"netmask", "255.255.255.0"},
                         {"gateway", "10.77.0.1"}, {"dns1", ""}, {"dns2", ""}})["result"]
                 .toString(),
        QString("success"));
    QTRY_COMPARE_WITH_TIMEOUT(told("stream"), (QStringList{"started", "stopped"}), longestWaitMs);
    QCOMPARE(told("viewer").last(), QString("left"));
    const QString url = workstation.ask("search", "02564C000001")["rtsppath1"].toString();
    QCOMPARE(url, QString("rtsp://10.77.0.90:8554/live1"));
    StreamViewer after(url);
    QTRY_VERIFY_WITH_TIMEOUT(after.notes().pictures.size() > 2, longestWaitMs);
}

void tst_FleetStream::silentWhileItRestarts()
{
    QVERIFY(start(1, scenario({QJsonObject{{"camera", 1}, {"restart-seconds", 3}}})));
    Workstation workstation;
    StreamViewer before(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(before.notes().pictures.size() > 2, longestWaitMs);
    QCOMPARE(workstation.ask("ResetDefault", "02564C000001", {{"keepnetwork", "1"}})["result"]
                 .toString(),
        QString("success"));
    QTRY_VERIFY_WITH_TIMEOUT(before.notes().ended, longestWaitMs);
    QCOMPARE(talk("", 0), QByteArray("no connection"));
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("back").size(), 1, longestWaitMs);
    StreamViewer after(firstUrl);
    QTRY_VERIFY_WITH_TIMEOUT(after.notes().pictures.size() > 2, longestWaitMs);
}

void tst_FleetStream::stopsWithViewers()
{
    QVERIFY(
        start(3, scenario({entry(2, {{"always", true}}, {{"on", "stream"}, {"delay-ms", 1}})})));
    StreamViewer first(urlOf(1));
    StreamViewer second(urlOf(2));
    StreamViewer overUdp(urlOf(3), "udp");
    QTRY_VERIFY_WITH_TIMEOUT(first.notes().pictures.size() > 2, longestWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(second.notes().pictures.size() > 2, longestWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(overUdp.notes().pictures.size() > 2, longestWaitMs);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(fleet->stop());
    QVERIFY2(clock.elapsed() < 8000, qPrintable(QString::number(clock.elapsed())));
    QTRY_VERIFY_WITH_TIMEOUT(first.notes().ended && second.notes().ended, longestWaitMs);
    QCOMPARE(told("viewer").count("left"), 3);
    QCOMPARE(told("stream").count("stopped"), 3);
    QCOMPARE(fleet->events("stop").size(), 1);
}

// The mix of a fleet that nobody told otherwise.
void tst_FleetStream::eightAtOnce()
{
    QVERIFY(start(8));
    std::vector<std::unique_ptr<StreamViewer>> viewers;
    for (int camera = 1; camera <= 8; ++camera)
        viewers.push_back(std::make_unique<StreamViewer>(urlOf(camera)));
    const auto playing = [&] {
        return std::count_if(viewers.begin(), viewers.end(), [](const auto &viewer) {
            const Notes notes = viewer->notes();
            return notes.pictures.size() > 25 || (notes.videoCodec.isEmpty() && notes.packets > 50);
        });
    };
    QTRY_COMPARE_WITH_TIMEOUT(int(playing()), 8, 2 * longestWaitMs);
    QSet<QByteArray> kinds;
    for (const auto &viewer : viewers) {
        viewer->stop();
        const Notes notes = viewer->notes();
        QVERIFY2(notes.decodeErrors == 0, notes.videoCodec + ' ' + notes.audioCodec);
        const QSize size = notes.pictures.isEmpty() ? QSize() : notes.pictures.last().size;
        kinds.insert(
            notes.videoCodec + ' ' + QByteArray::number(size.height()) + ' ' + notes.audioCodec);
    }
    QCOMPARE(kinds,
        (QSet<QByteArray>{"h264 720 aac", "h264 480 pcm_alaw", "hevc 720 aac", "h264 1080 aac",
            "h264 720 ", "hevc 480 pcm_alaw", " -1 aac", "h264 1080 pcm_alaw"}));
}

QTEST_GUILESS_MAIN(tst_FleetStream)
#include "tst_FleetStream.moc"
