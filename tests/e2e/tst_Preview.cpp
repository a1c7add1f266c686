#include "MainWindow.h"

#include "CVTableWidget.h"
#include "FleetProcess.h"
#include "FleetTimeCode.h"
#include "MediaButton.h"
#include "ModalDriver.h"
#include "PlayerProbe.h"
#include "PreviewProbe.h"
#include "RtspPeer.h"
#include "SettingsFile.h"
#include "ShownLikeness.h"
#include "SinkRecorder.h"
#include "Startup.h"
#include "StreamFacts.h"
#include "TestCard.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "VorlynSearchDialog.h"
#include "WindowHeaderWidget.h"
#include "ZRLetterbox.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QPainter>
#include <QScopedPointer>
#include <QtTest>

namespace {
constexpr int patience = 40000; // milliseconds, for what must come
constexpr int freshness = 5000; // milliseconds
constexpr double tone = 440.0; // of all cameras
constexpr double audible = 0.1;
const QSize wide(1280, 720);
const QSize narrow(640, 480);
}

// The whole road of a preview: cameras with streams, the window that chooses one of them, and what
// is then to be seen on the screen and heard from the loudspeaker.
class tst_Preview : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void livePicture();
    void anotherCamera();
    void soundAndMute();
    void muteIsKeptForTheNextCamera();
    void stopAndPlay();
    void windowMayChangeItsSize();
    void cameraWithoutAddress();
    void cameraThatRefuses();
    void cameraThatFreezes();
    void searchStopsAndStartsAgain();
    void languageChange();
    void closedWhilePlaying();
    void closedWhileOpening();
    void pictureIsRight_data();
    void pictureIsRight();

private:
    void writeSettings(int hardware) const;
    void open(QJsonArray cameras);
    void choose(int row);
    void press(QWidget *button) { QTest::mouseClick(button, Qt::LeftButton); }
    QRect area(const QSize &video) const { return zrLetterbox(video, preview.view()->size()); }
    // The time in the picture on the screen, -1 when there is none.
    qint64 shownTime(const QSize &video) const;
    // Whether a fresh picture of that size is on the screen, and soon after a fresher one.
    bool isLive(const QSize &video) const;
    // Once is enough: a busy machine's picture may halt again.
    bool becomesLive(const QSize &video) const
    {
        return QTest::qWaitFor([&] { return isLive(video); }, patience);
    }
    bool freezes(const QSize &video) const
    {
        return QTest::qWaitFor([&] { return !isLive(video); }, patience);
    }
    bool isBlack() const { return TestCard::isBlack(TestCard::shot(*preview.view())); }
    // Viewers that a camera has; cameras count from 1.
    int viewers(int camera) const;

    VorlynDevicesWidget *devices() const
    {
        return window->findChild<VorlynDevicesWidget *>("devicesWidget");
    }
    WindowHeaderWidget *header() const { return window->findChild<WindowHeaderWidget *>("header"); }

    QScopedPointer<FleetProcess> fleet;
    QScopedPointer<MainWindow> window;
    PreviewProbe preview;
};

namespace {
QJsonObject camera(int number, const QSize &size, const char *audio)
{
    const QJsonObject stream = {{"size", QString("%1x%2").arg(size.width()).arg(size.height())},
        {"audio", audio}, {"fps", StreamFacts::pace}};
    return {{"camera", number}, {"stream", stream}};
}

// Of a new record, half a second long.
double loudness(SinkRecorder &recorder)
{
    recorder.restart();
    return QTest::qWaitFor([&] { return recorder.seconds() >= 0.5; }, patience)
        ? recorder.amplitude(tone)
        : -1.0;
}

// Once is enough: sound isn't without gaps on every system.
bool isHeard(SinkRecorder &recorder)
{
    return QTest::qWaitFor(
        [&] { return loudness(recorder) > audible && recorder.purity(tone) > 0.5; }, patience);
}

// What was already on its way to the loudspeaker still plays.
bool fallsSilent(SinkRecorder &recorder)
{
    return QTest::qWaitFor([&] { return loudness(recorder) == 0.0; }, patience);
}
}

void tst_Preview::initTestCase()
{
    const QString language = QCoreApplication::applicationDirPath() + "/language";
    QDir(language).removeRecursively();
    QVERIFY(QDir().mkpath(language));
    for (const char *name : {"/en.txt", "/cn.txt"})
        QVERIFY(QFile::copy(QStringLiteral(LANGUAGE_FOLDER) + name, language + name));
}

void tst_Preview::writeSettings(int hardware) const
{
    SettingsFile().write({{"langage", "en"}, {"search seconds", 2}, {"network name", "veth-a"},
        {"hardware", hardware}});
}

void tst_Preview::init()
{
    writeSettings(StreamFacts::hardwareGivesPictures());
    fleet.reset(new FleetProcess("cam-a", 2, "10.77.0.11"));
}

// With the first camera chosen and asked for its stream.
void tst_Preview::open(QJsonArray cameras)
{
    cameras.append(FleetProcess::unhurried());
    fleet->setScenario({{"cameras", cameras}});
    QVERIFY(fleet->start());
    initGolbals();
    window.reset(new MainWindow);
    preview = PreviewProbe(window->findChild<VorlynDeviceVideoView *>("videoView"));
    QCOMPARE(devices()->tableWidget()->rowCount(), 2);
}

void tst_Preview::cleanup()
{
    window.reset();
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
    VorlynSDK::destroyInstance();
    QVERIFY2(fleet->stop(), fleet->errors());
    fleet.reset();
}

// As an operator does.
void tst_Preview::choose(int row)
{
    CVTableWidget *table = devices()->tableWidget();
    QVERIFY(table->rowCount() > row);
    QTest::mouseClick(table->cellWidget(row, 2), Qt::LeftButton);
    QCOMPARE(table->currentRow(), row);
}

qint64 tst_Preview::shownTime(const QSize &video) const
{
    const QRect place = area(video);
    const FleetTimeCode::Strip strip = FleetTimeCode::strip(place.width(), place.height());
    const QRect cells(place.topLeft(), QSize(strip.width, strip.height));
    const QImage shown =
        TestCard::shot(*preview.view(), cells).convertToFormat(QImage::Format_Grayscale8);
    return FleetTimeCode::read(
        shown.constBits(), shown.bytesPerLine(), place.width(), place.height());
}

bool tst_Preview::isLive(const QSize &video) const
{
    const qint64 first = shownTime(video);
    return first > QDateTime::currentMSecsSinceEpoch() - freshness
        && QTest::qWaitFor([&] { return shownTime(video) > first; }, freshness);
}

int tst_Preview::viewers(int camera) const
{
    int count = 0;
    for (const QJsonObject &event : fleet->events("viewer")) {
        if (event["camera"].toInt() == camera) {
            const QString what = event["what"].toString();
            count += what == "came" ? 1 : what == "left" ? -1 : 0;
        }
    }
    return count;
}

void tst_Preview::livePicture()
{
    open({camera(1, wide, "AAC")});
    QVERIFY(preview.isChecked());
    QVERIFY(becomesLive(wide));
    QVERIFY(!preview.isSpinning());
    QCOMPARE(viewers(1), 1);

    qint64 last = 0; // and it stays so
    for (int i = 0; i < 20; ++i) {
        QTRY_VERIFY_WITH_TIMEOUT(shownTime(wide) > last, freshness);
        last = shownTime(wide);
        QVERIFY(last > QDateTime::currentMSecsSinceEpoch() - freshness);
    }
    // Nothing of the picture lies outside of its place.
    QImage shot = TestCard::shot(*preview.view());
    QPainter(&shot).fillRect(area(wide), Qt::black);
    QVERIFY(TestCard::isBlack(shot));

    const QString clock = preview.time();
    QTRY_VERIFY_WITH_TIMEOUT(preview.time() > clock, patience);
    QTRY_VERIFY_WITH_TIMEOUT(preview.time() > "00:00:02", patience);
}

void tst_Preview::anotherCamera()
{
    open({camera(1, wide, "AAC"), camera(2, narrow, "PCMA")});
    QVERIFY(becomesLive(wide));
    choose(1);
    QCOMPARE(preview.url(), QString("rtsp://10.77.0.12:8554/live1"));
    QVERIFY(becomesLive(narrow));
    QTRY_COMPARE_WITH_TIMEOUT(viewers(1), 0, patience);
    QCOMPARE(viewers(2), 1);
    choose(0);
    QVERIFY(becomesLive(wide));
    QTRY_COMPARE_WITH_TIMEOUT(viewers(2), 0, patience);
}

void tst_Preview::soundAndMute()
{
    SinkRecorder recorder("s16le");
    open({camera(1, narrow, "AAC")});
    QVERIFY(isHeard(recorder));

    press(preview.audioButton());
    QVERIFY(fallsSilent(recorder));
    QVERIFY(becomesLive(narrow));
    QCOMPARE(loudness(recorder), 0.0);

    press(preview.audioButton());
    QVERIFY(isHeard(recorder));

    press(preview.playButton());
    QVERIFY(fallsSilent(recorder));
}

void tst_Preview::muteIsKeptForTheNextCamera()
{
    SinkRecorder recorder("s16le");
    open({camera(1, narrow, "AAC"), camera(2, narrow, "PCMA")});
    press(preview.audioButton());
    QVERIFY(becomesLive(narrow));
    choose(1);
    QTRY_COMPARE_WITH_TIMEOUT(viewers(1), 0, patience);
    QVERIFY(fallsSilent(recorder));
    QVERIFY(becomesLive(narrow));
    QVERIFY(preview.audioButton()->isChecked());
    for (int i = 0; i < 4; ++i)
        QCOMPARE(loudness(recorder), 0.0);
    press(preview.audioButton());
    QVERIFY(isHeard(recorder));
}

void tst_Preview::stopAndPlay()
{
    open({camera(1, wide, "AAC")});
    QVERIFY(becomesLive(wide));
    QElapsedTimer clock;
    clock.start();
    press(preview.playButton());
    QVERIFY2(clock.elapsed() < 500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!preview.isChecked());
    QTRY_VERIFY_WITH_TIMEOUT(isBlack(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(viewers(1), 0, patience);
    QVERIFY(isBlack());
    press(preview.playButton());
    QVERIFY(preview.isChecked());
    QVERIFY(preview.isSpinning());
    QVERIFY(becomesLive(wide));
    QVERIFY(!preview.isSpinning());
}

void tst_Preview::windowMayChangeItsSize()
{
    open({camera(1, wide, "AAC")});
    QVERIFY(becomesLive(wide));
    window->showNormal();
    for (const QSize &size : {QSize(1000, 900), QSize(1500, 800)}) {
        window->resize(size);
        QTRY_COMPARE_WITH_TIMEOUT(window->size(), size, patience);
        QVERIFY(becomesLive(wide));
    }
}

void tst_Preview::cameraWithoutAddress()
{
    QJsonObject silent = camera(2, narrow, "AAC");
    silent["fields"] = QJsonObject{{"rtsppath1", ""}};
    open({camera(1, wide, "AAC"), silent});
    QVERIFY(becomesLive(wide));
    choose(1);
    QCOMPARE(preview.url(), QString());
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isChecked(), patience);
    QVERIFY(preview.isSpinning());
    QVERIFY(!preview.holdsPicture());
    press(preview.playButton()); // there is nothing to play
    QVERIFY(!preview.isChecked());
    choose(0);
    QVERIFY(becomesLive(wide));
    QVERIFY(!preview.isSpinning());
}

void tst_Preview::cameraThatRefuses()
{
    QJsonObject closed = camera(1, narrow, "AAC");
    closed["stream"] = QJsonObject{{"closed", true}};
    open({closed, camera(2, narrow, "none")});
    QTRY_VERIFY_WITH_TIMEOUT(!preview.isChecked(), patience);
    QCOMPARE(preview.time(), QString());
    // The spinner is seen to turn, on black.
    const auto spinner = [this] { return TestCard::shot(*preview.spinner()); };
    QTRY_VERIFY_WITH_TIMEOUT(!TestCard::isBlack(spinner()), patience);
    const QImage first = spinner();
    QTRY_VERIFY_WITH_TIMEOUT(spinner() != first, patience);
    choose(1);
    QVERIFY(becomesLive(narrow));
    QVERIFY(!preview.isSpinning());
    QVERIFY(preview.isChecked());
}

// A dead network gives no event: the last picture stands until another camera is chosen.
void tst_Preview::cameraThatFreezes()
{
    QJsonObject freezing = camera(1, wide, "AAC");
    freezing["rules"] = QJsonArray{QJsonObject{{"on", "stream"}, {"freeze-after", 12}}};
    open({freezing, camera(2, narrow, "PCMA")});
    QVERIFY(becomesLive(wide));
    QVERIFY(freezes(wide));
    const qint64 stood = shownTime(wide);
    QVERIFY(stood > 0);
    QVERIFY(!QTest::qWaitFor([&] { return shownTime(wide) != stood; }, freshness));
    QVERIFY(preview.isChecked());
    QVERIFY(!preview.isSpinning());
    QVERIFY(!preview.time().isEmpty());
    QElapsedTimer clock;
    clock.start();
    choose(1);
    QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(becomesLive(narrow));
}

void tst_Preview::searchStopsAndStartsAgain()
{
    open({camera(1, wide, "AAC")});
    QVERIFY(becomesLive(wide));
    bool duringTheSearch = true;
    const ModalDriver<VorlynSearchDialog> driver(
        [&](VorlynSearchDialog &) { duringTheSearch = preview.isChecked(); });
    emit header()->searchButton->clicked();
    QVERIFY(!duringTheSearch);
    QVERIFY(becomesLive(wide));
    QTRY_COMPARE_WITH_TIMEOUT(viewers(1), 1, patience);
}

void tst_Preview::languageChange()
{
    open({camera(1, wide, "AAC")});
    QVERIFY(becomesLive(wide));
    const QString text = header()->searchButton->text();
    const int connections = fleet->events("viewer").size();
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    QVERIFY(header()->searchButton->text() != text);
    QVERIFY(isLive(wide));
    QVERIFY(preview.isChecked());
    QVERIFY(!preview.isSpinning());
    QCOMPARE(fleet->events("viewer").size(), connections);
}

void tst_Preview::closedWhilePlaying()
{
    open({camera(1, wide, "AAC")});
    QVERIFY(becomesLive(wide));
    QElapsedTimer clock;
    clock.start();
    window.reset();
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
    QTRY_COMPARE_WITH_TIMEOUT(viewers(1), 0, patience);
}

void tst_Preview::closedWhileOpening()
{
    QJsonObject silent = camera(1, wide, "AAC");
    silent["rules"] = QJsonArray{QJsonObject{{"on", "stream"}, {"silent", true}}};
    open({silent});
    QTRY_COMPARE_WITH_TIMEOUT(viewers(1), 1, patience);
    QVERIFY(preview.isSpinning());
    QElapsedTimer clock;
    clock.start();
    window.reset();
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
}

void tst_Preview::pictureIsRight_data()
{
    QTest::addColumn<int>("codec");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<int>("hardware"); // the setting, which a system without it goes on without
    const int limited = AV_PIX_FMT_YUV420P;
    const int full = AV_PIX_FMT_YUVJ420P;
    const int h264 = AV_CODEC_ID_H264;
    const int usual = StreamFacts::hardwareGivesPictures();
    const QSize oddQuarter(642, 362);
    const QSize fullHd(1920, 1080);
    QTest::newRow("H.264, wide") << h264 << wide << limited << 1;
    QTest::newRow("H.264, wide, software") << h264 << wide << limited << 0;
    QTest::newRow("H.264, narrow") << h264 << narrow << limited << usual;
    QTest::newRow("H.264, full range") << h264 << narrow << full << usual;
    QTest::newRow("H.264, odd quarter") << h264 << oddQuarter << limited << usual;
    QTest::newRow("H.264, full HD") << h264 << fullHd << limited << usual;
    QTest::newRow("H.265, wide") << int(AV_CODEC_ID_HEVC) << wide << limited << usual;
}

// A card of which the test knows every picture, from another server, against what a decoder of the
// test's own makes of the same stream.
void tst_Preview::pictureIsRight()
{
    QFETCH(int, codec);
    QFETCH(QSize, size);
    QFETCH(int, pixels);
    QFETCH(int, hardware);
    if (hardware != 0 && !StreamFacts::hardwareGivesPictures())
        QSKIP("hardware decoding is promised here, and gives no picture");
    writeSettings(hardware);
    MediaClip::Format format = MediaClip::Format::of(AVCodecID(codec), AV_CODEC_ID_NONE);
    format.width = size.width();
    format.height = size.height();
    format.pixels = AVPixelFormat(pixels);
    format.fps = 5;
    format.pictures = 10;
    format.keyFrameDistance = 5;
    format.firstNumber = 1; // black reads as 0
    const MediaClip &clip = MediaClip::of(format);
    const std::vector<MediaClip::Picture> decoded = clip.decoded();
    const RtspPeer peer(clip, {}, RtspPeer::RealTime, QHostAddress("10.77.0.1"));

    QJsonObject elsewhere = camera(1, size, "none");
    elsewhere["fields"] = QJsonObject{{"rtsppath1", QString::fromStdString(peer.url())}};
    open({elsewhere});

    double worst = 100.0;
    for (int seen = 0, last = 0; seen < 5; ++seen) {
        QImage shot;
        int number = 0;
        const auto next = [&] {
            shot = TestCard::shot(*preview.view());
            number = MediaClip::number(shot.copy(area(size)));
            return number > 0 && number <= format.pictures && number != last;
        };
        QTRY_VERIFY_WITH_TIMEOUT(next(), patience);
        last = number;
        const ShownLikeness &likeness = ShownLikeness::presented;
        const double alike = likeness.of(shot, area(size), *decoded[size_t(number) - 1]);
        QVERIFY2(alike >= likeness.enough,
            qPrintable(QString("picture %1: %2 dB").arg(number).arg(alike)));
        worst = std::min(worst, alike);
        QPainter(&shot).fillRect(area(size), Qt::black);
        QVERIFY(TestCard::isBlack(shot));
    }
    qInfo("%dx%d on %dx%d: %.1f dB", size.width(), size.height(), area(size).width(),
        area(size).height(), worst);
}

QTEST_MAIN(tst_Preview)
#include "tst_Preview.moc"
