#include "MetaMethods.h"
#include "Painting.h"
#include "PlayerProbe.h"
#include "PreviewProbe.h"
#include "RtspPeer.h"
#include "SettingsFile.h"
#include "StreamFacts.h"
#include "VorlynDeviceVideoView.h"
#include "ZRPixmapCache.h"

#include <QElapsedTimer>
#include <QScopedPointer>
#include <QTcpServer>
#include <QThread>
#include <QtTest>

#include <cmath>
#include <limits>

// The pane on addresses that play, refuse and keep silent, and on events of every kind.
class tst_VorlynDeviceVideoView : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void metaObject();
    void isBlack();
    void startsIdle();
    void setsUpItsPlayer();
    void geometry_data();
    void geometry();
    void images_data();
    void images();
    void whiteOnBlack();
    void clockAlignment();
    void playTakesTheAddress();
    void emptyAddress();
    void anotherAddressReplaces();
    void stopPutsAllBack();
    void stopWhenIdle();
    void clickWithoutAddress();
    void clicksStopAndStart();
    void clickAfterFailureOpensAgain();
    void muteAndBack();
    void muteIsKept();
    void extraButtonDoesNothing();
    void hardwareSetting_data();
    void hardwareSetting();
    void hardwareIsReadOnEveryPlay();
    void events_data();
    void events();
    void time_data();
    void time();
    void eventsOfOtherThreads();
    void lateEvent();
    void lateEventOfOtherThread();
    void languageChange();

    void liveStream();
    void hardwareThatIsMissing();
    void mutedStream();
    void soundAlone();
    void refusedStream();
    void lostStream();
    void endOfTheStream();
    void silentCamera();
    void nextPictureEndsTheSpinner();
    void destroyedWhilePlaying_data();
    void destroyedWhilePlaying();

private:
    // The pane as it is in the window.
    void show();
    void notify(int type, double current = 0, double total = 0)
    {
        panel->onPlayerNotify(probe.player(), type, current, total);
    }
    void press(const char *button)
    {
        QTest::mouseClick(probe.child<QWidget>(button), Qt::LeftButton);
    }
    void showCard();

    QScopedPointer<VorlynDeviceVideoView> panel;
    PreviewProbe probe;
};

namespace {
constexpr int patience = 30000; // milliseconds

const MediaClip &clip()
{
    return MediaClip::of(MediaClip::Format());
}

const MediaClip &tone()
{
    return MediaClip::of(MediaClip::Format::of(AV_CODEC_ID_NONE, AV_CODEC_ID_AAC));
}

// An address at which nobody listens.
QString refusingAddress()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return QString("rtsp://127.0.0.1:%1/live").arg(server.serverPort());
}

// The camera takes the connection and doesn't answer.
RtspPeer::Faults silence()
{
    RtspPeer::Faults faults;
    faults.silentFrom = "DESCRIBE";
    return faults;
}

QString urlOf(const RtspPeer &peer)
{
    return QString::fromStdString(peer.url());
}

template <class Work> void onAnotherThread(Work work)
{
    QScopedPointer<QThread> thread(QThread::create(work));
    thread->start();
    QVERIFY(thread->wait(patience));
}
}

void tst_VorlynDeviceVideoView::init()
{
    SettingsFile().write({{"hardware", 0}});
    panel.reset(new VorlynDeviceVideoView(nullptr));
    panel->resize(400, 330);
    probe = PreviewProbe(panel.data());
}

void tst_VorlynDeviceVideoView::cleanup()
{
    panel.reset();
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
}

void tst_VorlynDeviceVideoView::show()
{
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.data()));
}

// As if it were a picture of the stream.
void tst_VorlynDeviceVideoView::showCard()
{
    const MediaClip::Picture card = MediaClip::card(1, 64, 48, AV_PIX_FMT_YUV420P);
    probe.view()->update(const_cast<AVFrame *>(card.get()));
    QVERIFY(probe.holdsPicture());
}

void tst_VorlynDeviceVideoView::metaObject()
{
    QCOMPARE(ownMethods(VorlynDeviceVideoView::staticMetaObject),
        QStringList{"private slot updatePlay(int,double,double)"});
    QVERIFY(dynamic_cast<ZRWidget *>(panel.data()));
    QVERIFY(dynamic_cast<ZRLocalize *>(panel.data()));
    QVERIFY(dynamic_cast<ZRPlayerObserver *>(panel.data()));
}

void tst_VorlynDeviceVideoView::isBlack()
{
    const QImage image = painted(*panel);
    QCOMPARE(paintedArea(image), QRect(0, 0, 400, 330));
    QCOMPARE(image.pixel(0, 0), qRgba(0, 0, 0, 255));
    QCOMPARE(image.pixel(200, 320), qRgba(0, 0, 0, 255)); // the bar
    QCOMPARE(painted(*panel, QWidget::DrawChildren).pixel(200, 150), qRgba(0, 0, 0, 255));
}

void tst_VorlynDeviceVideoView::startsIdle()
{
    show();
    QCOMPARE(probe.url(), QString());
    QVERIFY(!panel->isPlaying());
    QVERIFY(!probe.isChecked());
    QVERIFY(!probe.audioButton()->isChecked());
    QVERIFY(probe.extraButton()->isHidden());
    QCOMPARE(probe.time(), QString());
    QVERIFY(!probe.isSpinning());
    QVERIFY(probe.view()->isVisible());
}

void tst_VorlynDeviceVideoView::setsUpItsPlayer()
{
    QCOMPARE(probe.playersView(), static_cast<const ZRVideoView *>(probe.view()));
    QCOMPARE(probe.observer(), static_cast<const ZRPlayerObserver *>(panel.data()));
    QCOMPARE(probe.volume(), 1.0);
    QCOMPARE(probe.isRealtime(), true);
}

void tst_VorlynDeviceVideoView::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("child");
    QTest::addColumn<QRect>("expected");

    const struct {
        QSize size;
        const char *child;
        QRect expected;
    } rows[] = {
        {{400, 330}, "videoView", {0, 0, 400, 300}},
        {{400, 330}, "playButton", {10, 305, 20, 20}},
        {{400, 330}, "audioButton", {39, 305, 20, 20}}, // right() of the first is 29
        {{400, 330}, "extraButton", {365, 305, 20, 20}},
        {{400, 330}, "timeLabel", {300, 305, 80, 20}},
        {{400, 330}, "progress", {185, 135, 30, 30}},
        {{1201, 554}, "videoView", {0, 0, 1201, 524}},
        {{1201, 554}, "playButton", {10, 529, 20, 20}},
        {{1201, 554}, "audioButton", {39, 529, 20, 20}},
        {{1201, 554}, "extraButton", {1166, 529, 20, 20}},
        {{1201, 554}, "timeLabel", {1101, 529, 80, 20}},
        {{1201, 554}, "progress", {585, 247, 30, 30}},
        {{401, 73}, "videoView", {0, 0, 401, 43}}, // the smallest window's
        {{401, 73}, "timeLabel", {301, 48, 80, 20}},
        {{401, 73}, "progress", {185, 6, 30, 30}},
    };
    for (const auto &row : rows)
        QTest::addRow("%dx%d %s", row.size.width(), row.size.height(), row.child)
            << row.size << row.child << row.expected;
}

void tst_VorlynDeviceVideoView::geometry()
{
    QFETCH(QSize, size);
    QFETCH(QString, child);
    panel->resize(size);
    painted(*panel); // a hidden widget lays itself out when it is painted
    QTEST(probe.child<QWidget>(qPrintable(child))->geometry(), "expected");
}

void tst_VorlynDeviceVideoView::images_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<QString>("image");
    QTest::newRow("play") << "playButton" << false << ":/resources/play.png";
    QTest::newRow("pause") << "playButton" << true << ":/resources/pause.png";
    QTest::newRow("sound") << "audioButton" << false << ":/resources/audio.png";
    QTest::newRow("mute") << "audioButton" << true << ":/resources/audio_mute.png";
}

void tst_VorlynDeviceVideoView::images()
{
    QFETCH(QString, button);
    QFETCH(bool, checked);
    QFETCH(QString, image);
    auto *shown = probe.child<ZRPixmapsButton>(qPrintable(button));
    shown->setChecked(checked);
    shown->resize(20, 20);
    const QPixmap expected = ZRPixmapCache::pixmap(image, 20);
    QVERIFY(!expected.isNull());
    QCOMPARE(
        painted(*shown), expected.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied));
    QCOMPARE(shown->sizeHint(), QSize(20, 20));
}

void tst_VorlynDeviceVideoView::whiteOnBlack()
{
    QCOMPARE(probe.spinner()->property("color").value<QColor>(), QColor(255, 255, 255, 255));
    notify(0);
    painted(*panel);
    const QImage clock = painted(*probe.timeLabel());
    bool white = false;
    for (int y = 0; y < clock.height(); ++y) {
        for (int x = 0; x < clock.width(); ++x) {
            const QColor color = clock.pixelColor(x, y);
            white |= color == QColor(Qt::white);
            QVERIFY(color.alpha() == 0 || color.lightness() > 200);
        }
    }
    QVERIFY(white);
}

void tst_VorlynDeviceVideoView::clockAlignment()
{
    notify(0);
    painted(*panel);
    const QRect text = paintedArea(painted(*probe.timeLabel()));
    QVERIFY2(text.right() >= 76, qPrintable(QString::number(text.right())));
    QVERIFY(text.left() > 10);
    QVERIFY(std::abs(text.center().y() - 10) <= 2);
}

void tst_VorlynDeviceVideoView::playTakesTheAddress()
{
    show();
    const QString address = refusingAddress();
    panel->play(address);
    QCOMPARE(probe.url(), address);
    QCOMPARE(probe.playedUrl(), address.toStdString());
    QVERIFY(panel->isPlaying());
    QVERIFY(probe.isChecked());
    QVERIFY(probe.isSpinning());
    QCOMPARE(probe.time(), QString());
}

// It fails as any address that doesn't open.
void tst_VorlynDeviceVideoView::emptyAddress()
{
    show();
    panel->play(QString());
    QVERIFY(panel->isPlaying());
    QVERIFY(probe.isChecked());
    QTRY_VERIFY_WITH_TIMEOUT(!probe.isChecked(), patience);
    QVERIFY(probe.isSpinning());
    QCOMPARE(probe.time(), QString());
}

void tst_VorlynDeviceVideoView::anotherAddressReplaces()
{
    const RtspPeer first(clip());
    const RtspPeer second(clip());
    panel->play(urlOf(first));
    QTRY_COMPARE_WITH_TIMEOUT(first.connections(), 1, patience);
    panel->play(urlOf(second));
    QTRY_COMPARE_WITH_TIMEOUT(first.connections(), 0, patience);
    QTRY_COMPARE_WITH_TIMEOUT(second.connections(), 1, patience);
    QCOMPARE(probe.url(), urlOf(second));
}

void tst_VorlynDeviceVideoView::stopPutsAllBack()
{
    show();
    const QString address = refusingAddress();
    panel->play(address);
    notify(4, 7);
    showCard();
    panel->stop();
    QVERIFY(!panel->isPlaying());
    QVERIFY(!probe.isSpinning());
    QVERIFY(!probe.isChecked());
    QVERIFY(!probe.holdsPicture());
    QCOMPARE(probe.time(), QString());
    QCOMPARE(probe.url(), address); // for the button
}

void tst_VorlynDeviceVideoView::stopWhenIdle()
{
    panel->stop();
    panel->stop();
    QVERIFY(!panel->isPlaying());
    QVERIFY(!probe.isChecked());
}

void tst_VorlynDeviceVideoView::clickWithoutAddress()
{
    show();
    press("playButton");
    QVERIFY(!panel->isPlaying());
    QVERIFY(!probe.isChecked());
    QVERIFY(!probe.isSpinning());
    panel->play(QString());
    panel->stop();
    press("playButton");
    QVERIFY(!panel->isPlaying());
    QVERIFY(!probe.isChecked());
}

void tst_VorlynDeviceVideoView::clicksStopAndStart()
{
    show();
    const RtspPeer peer(clip());
    panel->play(urlOf(peer));
    QTRY_COMPARE_WITH_TIMEOUT(peer.requests().count("PLAY"), 1, patience);
    press("playButton");
    QVERIFY(!panel->isPlaying());
    QVERIFY(!probe.isChecked());
    QVERIFY(!probe.isSpinning());
    QTRY_COMPARE_WITH_TIMEOUT(peer.connections(), 0, patience);
    press("playButton");
    QVERIFY(panel->isPlaying());
    QVERIFY(probe.isChecked());
    QVERIFY(probe.isSpinning());
    QCOMPARE(probe.playedUrl(), peer.url());
    QTRY_COMPARE_WITH_TIMEOUT(peer.requests().count("PLAY"), 2, patience); // from scratch
    QCOMPARE(peer.requests().count("PAUSE"), 0);
}

void tst_VorlynDeviceVideoView::clickAfterFailureOpensAgain()
{
    show();
    panel->play(refusingAddress());
    QTRY_VERIFY_WITH_TIMEOUT(!probe.isChecked(), patience);
    press("playButton");
    QVERIFY(probe.isChecked());
    QVERIFY(panel->isPlaying());
    QTRY_VERIFY_WITH_TIMEOUT(!probe.isChecked(), patience); // and failed again
}

void tst_VorlynDeviceVideoView::muteAndBack()
{
    press("audioButton");
    QVERIFY(probe.audioButton()->isChecked());
    QCOMPARE(probe.volume(), 0.0);
    press("audioButton");
    QVERIFY(!probe.audioButton()->isChecked());
    QCOMPARE(probe.volume(), 1.0);
}

void tst_VorlynDeviceVideoView::muteIsKept()
{
    press("audioButton");
    const RtspPeer peer(clip());
    for (int i = 0; i < 2; ++i) {
        panel->play(urlOf(peer));
        QCOMPARE(probe.volume(), 0.0);
        panel->stop();
        QCOMPARE(probe.volume(), 0.0);
        QVERIFY(probe.audioButton()->isChecked());
    }
}

void tst_VorlynDeviceVideoView::extraButtonDoesNothing()
{
    show();
    QVERIFY(!probe.extraButton()->isVisible());
    emit probe.extraButton()->clicked();
    QVERIFY(!probe.extraButton()->isVisible());
    QVERIFY(!probe.extraButton()->isChecked());
    QVERIFY(!panel->isPlaying());
}

void tst_VorlynDeviceVideoView::hardwareSetting_data()
{
    QTest::addColumn<QVariantMap>("settings");
    QTest::addColumn<int>("type");
    QTest::newRow("on") << QVariantMap{{"hardware", 1}} << 4;
    QTest::newRow("off") << QVariantMap{{"hardware", 0}} << 0;
    QTest::newRow("other number") << QVariantMap{{"hardware", 2}} << 4;
    QTest::newRow("nothing said") << QVariantMap{} << 0;
}

void tst_VorlynDeviceVideoView::hardwareSetting()
{
    QFETCH(QVariantMap, settings);
    SettingsFile().write(settings);
    panel.reset(new VorlynDeviceVideoView(nullptr));
    QTEST(PreviewProbe(panel.data()).hardwareType(), "type");
}

void tst_VorlynDeviceVideoView::hardwareIsReadOnEveryPlay()
{
    const QString address = refusingAddress();
    SettingsFile().write({{"hardware", 1}});
    QCOMPARE(probe.hardwareType(), 0);
    panel->play(address);
    QCOMPARE(probe.hardwareType(), 4);
    SettingsFile().write({{"hardware", 0}});
    QCOMPARE(probe.hardwareType(), 4);
    panel->stop();
    QCOMPARE(probe.hardwareType(), 4);
    press("playButton"); // the button reads it too
    QCOMPARE(probe.hardwareType(), 0);
}

void tst_VorlynDeviceVideoView::events_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("time");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<bool>("spinning");
    QTest::addColumn<bool>("picture");

    QTest::newRow("before") << -1 << "untouched" << true << true << true;
    QTest::newRow("opened") << 0 << "00:00:00" << true << true << true;
    QTest::newRow("opening failed") << 1 << "" << false << true << false;
    QTest::newRow("first picture") << 2 << "untouched" << true << false << true;
    QTest::newRow("end") << 3 << "" << true << false << true;
    QTest::newRow("further picture") << 4 << "00:00:05" << true << true << true;
    QTest::newRow("unknown") << 5 << "untouched" << true << true << true;
}

// Each of them on a pane that plays, with a spinner, a picture and a text.
void tst_VorlynDeviceVideoView::events()
{
    QFETCH(int, type);
    show();
    probe.playButton()->setChecked(true);
    probe.spinner()->startAnimation();
    probe.timeLabel()->setText("untouched");
    showCard();

    notify(type, 5.9, 100);
    QTEST(probe.time(), "time");
    QTEST(probe.isChecked(), "checked");
    QTEST(probe.isSpinning(), "spinning");
    QTEST(probe.holdsPicture(), "picture");
    QVERIFY(!panel->isPlaying());
}

void tst_VorlynDeviceVideoView::time_data()
{
    QTest::addColumn<double>("current");
    QTest::addColumn<QString>("text");

    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        const char *name;
        double current;
        const char *text;
    } rows[] = {
        {"nought", 0, "00:00:00"},
        {"not yet a second", 0.999, "00:00:00"},
        {"a little below nought is cut to it", -0.9, "00:00:00"},
        {"last second of a minute", 59.99, "00:00:59"},
        {"a minute", 60, "00:01:00"},
        {"last second of an hour", 3599.5, "00:59:59"},
        {"one of each", 3661.5, "01:01:01"},
        {"a day and more", 90061, "25:01:01"},
        {"99 hours", 359999, "99:59:59"},
        {"over 99 hours", 360000, "100:00:00"},
        {"over 1000 hours", 3600000 + 754, "1000:12:34"},
        {"the most there is", 2147483647.0, "596523:14:07"},
        {"negative", -1, "untouched"},
        {"very negative", -3661.5, "untouched"},
        {"too much", 2147483648.0, "untouched"},
        {"infinite", inf, "untouched"},
        {"infinite, negative", -inf, "untouched"},
        {"no number", std::nan(""), "untouched"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << row.current << row.text;
}

void tst_VorlynDeviceVideoView::time()
{
    QFETCH(double, current);
    probe.timeLabel()->setText("untouched");
    notify(4, current, 1e9); // the total plays no part
    QTEST(probe.time(), "text");
}

void tst_VorlynDeviceVideoView::eventsOfOtherThreads()
{
    onAnotherThread([this] {
        notify(4, 7);
        notify(4, 3661.5);
        notify(4, -1);
    });
    QCOMPARE(probe.time(), QString()); // nothing is touched over there
    QCoreApplication::sendPostedEvents(panel.data());
    QCOMPARE(probe.time(), QString("01:01:01")); // in their order
}

void tst_VorlynDeviceVideoView::lateEvent()
{
    panel->play(refusingAddress());
    panel->stop();
    notify(4, 12);
    QCOMPARE(probe.time(), QString("00:00:12"));
}

void tst_VorlynDeviceVideoView::lateEventOfOtherThread()
{
    const RtspPeer peer(clip(), silence()); // so that no event of the stream comes after it
    panel->play(urlOf(peer));
    onAnotherThread([this] { notify(4, 12); });
    panel->stop();
    QCOMPARE(probe.time(), QString());
    QTRY_COMPARE(probe.time(), QString("00:00:12"));
}

void tst_VorlynDeviceVideoView::languageChange()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    notify(4, 12);
    for (const char *language : {"cn", "en"}) {
        QVERIFY(ZRLocalize::switchLanguage(language));
        QCOMPARE(probe.time(), QString("00:00:12"));
    }
}

void tst_VorlynDeviceVideoView::liveStream()
{
    show();
    const RtspPeer peer(clip());
    panel->play(urlOf(peer));
    QTRY_VERIFY_WITH_TIMEOUT(probe.time() >= "00:00:02", patience);
    QVERIFY(!probe.isSpinning());
    QVERIFY(probe.isChecked());
    QVERIFY(probe.holdsPicture());
    QVERIFY(panel->isPlaying());
    panel->stop();
    QVERIFY(!probe.holdsPicture());
    QTRY_COMPARE_WITH_TIMEOUT(peer.connections(), 0, patience);
}

// Where there is no such device the stream is decoded in software.
void tst_VorlynDeviceVideoView::hardwareThatIsMissing()
{
    if (!StreamFacts::hardwareGivesPictures())
        QSKIP("a device can be made here, and decodes nothing");
    SettingsFile().write({{"hardware", 1}});
    show();
    const RtspPeer peer(clip());
    panel->play(urlOf(peer));
    QCOMPARE(probe.hardwareType(), 4);
    QTRY_VERIFY_WITH_TIMEOUT(probe.time() >= "00:00:01", patience);
    QVERIFY(!probe.isSpinning());
    QVERIFY(probe.holdsPicture());
}

// Mute reaches the stream that plays, and the button another one that is opened later.
void tst_VorlynDeviceVideoView::mutedStream()
{
    const RtspPeer peer(clip());
    panel->play(urlOf(peer));
    QTRY_VERIFY_WITH_TIMEOUT(probe.time() >= "00:00:01", patience);
    press("audioButton");
    QCOMPARE(probe.volume(), 0.0);
    panel->stop();
    QCoreApplication::sendPostedEvents(panel.data()); // late events of the first stream
    probe.timeLabel()->setText(QString());
    panel->play(urlOf(peer));
    QTRY_VERIFY_WITH_TIMEOUT(probe.time() >= "00:00:01", patience);
    QCOMPARE(probe.volume(), 0.0);
    press("audioButton");
    QCOMPARE(probe.volume(), 1.0);
}

// No picture ever ends the spinner or moves the clock.
void tst_VorlynDeviceVideoView::soundAlone()
{
    show();
    const RtspPeer peer(tone());
    panel->play(urlOf(peer));
    QTRY_COMPARE_WITH_TIMEOUT(probe.time(), QString("00:00:00"), patience);
    const int sent = peer.packetsSent();
    QTRY_VERIFY_WITH_TIMEOUT(peer.packetsSent() > sent + 100, patience);
    QVERIFY(probe.isSpinning());
    QCOMPARE(probe.time(), QString("00:00:00"));
    QVERIFY(probe.isChecked());
}

void tst_VorlynDeviceVideoView::refusedStream()
{
    show();
    panel->play(refusingAddress());
    QTRY_VERIFY_WITH_TIMEOUT(!probe.isChecked(), patience);
    QCOMPARE(probe.time(), QString());
    QVERIFY(probe.isSpinning());
    QVERIFY(panel->isPlaying()); // open, and dead
    panel->stop();
    QVERIFY(!probe.isSpinning());
    QVERIFY(!panel->isPlaying());
}

// It gives no event: picture and clock stand until the button is pressed.
void tst_VorlynDeviceVideoView::lostStream()
{
    show();
    RtspPeer peer(clip());
    panel->play(urlOf(peer));
    QTRY_VERIFY_WITH_TIMEOUT(probe.time() >= "00:00:01", patience);
    peer.setSilent(true);
    const auto stands = [this] {
        const QString before = probe.time();
        QTest::qWait(1500); // a clock that goes on would have moved
        return probe.time() == before;
    };
    QTRY_VERIFY_WITH_TIMEOUT(stands(), patience);
    QVERIFY(probe.time() >= "00:00:01");
    QVERIFY(probe.isChecked());
    QVERIFY(probe.holdsPicture());
    QVERIFY(!probe.isSpinning());
    QVERIFY(panel->isPlaying());
    press("playButton");
    QVERIFY(!panel->isPlaying());
    QVERIFY(!probe.holdsPicture());
}

// A camera that hangs up ends its stream: the clock goes, the picture and the button stay.
void tst_VorlynDeviceVideoView::endOfTheStream()
{
    show();
    QScopedPointer<RtspPeer> peer(new RtspPeer(clip()));
    panel->play(urlOf(*peer));
    QTRY_VERIFY_WITH_TIMEOUT(probe.time() >= "00:00:01", patience);
    peer.reset();
    QTRY_COMPARE_WITH_TIMEOUT(probe.time(), QString(), patience);
    QVERIFY(probe.isChecked());
    QVERIFY(probe.holdsPicture());
    QVERIFY(!probe.isSpinning());
    QVERIFY(panel->isPlaying());
}

void tst_VorlynDeviceVideoView::silentCamera()
{
    show();
    const RtspPeer peer(clip(), silence());
    panel->play(urlOf(peer));
    QTRY_COMPARE_WITH_TIMEOUT(peer.requests().count("DESCRIBE"), 1, patience);
    QVERIFY(probe.isSpinning());
    QElapsedTimer clock;
    clock.start();
    panel->stop();
    QVERIFY2(clock.elapsed() < 500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!probe.isSpinning());
}

// Of a failed stream it goes on into the next.
void tst_VorlynDeviceVideoView::nextPictureEndsTheSpinner()
{
    show();
    panel->play(refusingAddress());
    QTRY_VERIFY_WITH_TIMEOUT(!probe.isChecked(), patience);
    QVERIFY(probe.isSpinning());
    const RtspPeer peer(clip());
    panel->play(urlOf(peer));
    QVERIFY(probe.isSpinning());
    QTRY_VERIFY_WITH_TIMEOUT(!probe.isSpinning(), patience);
    QVERIFY(probe.isChecked());
}

void tst_VorlynDeviceVideoView::destroyedWhilePlaying_data()
{
    QTest::addColumn<bool>("pictures");
    QTest::newRow("before the first picture") << false;
    QTest::newRow("events under way") << true;
}

void tst_VorlynDeviceVideoView::destroyedWhilePlaying()
{
    QFETCH(bool, pictures);
    show();
    const RtspPeer peer(clip());
    panel->play(urlOf(peer));
    QTRY_COMPARE_WITH_TIMEOUT(peer.requests().count("PLAY"), 1, patience);
    if (pictures) {
        QTRY_VERIFY_WITH_TIMEOUT(probe.time() >= "00:00:01", patience);
        onAnotherThread([this] { notify(4, 9); });
    }
    panel.reset();
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
    QTRY_COMPARE_WITH_TIMEOUT(peer.connections(), 0, patience);
}

QTEST_MAIN(tst_VorlynDeviceVideoView)
#include "tst_VorlynDeviceVideoView.moc"
