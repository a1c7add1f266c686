#include "GraphicsDriver.h"
#include "PlayerProbe.h"
#include "PreviewProbe.h"
#include "RtspPeer.h"
#include "SettingsFile.h"
#include "StreamFacts.h"
#include "VorlynDeviceVideoView.h"
#include "ZROpenGLVideoView.h"

#include <QPointer>
#include <QScopedPointer>
#include <QScreen>
#include <QtTest>

#include <atomic>

// The pane with another view than the one it is made with.
class tst_VorlynDeviceVideoViewChange : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void takesThePlace();
    void restartsTheStream();
    void playsInTheOtherView();
    void idleStaysIdle();
    void stopClearsIt();
    void muteIsKept();
    void hardwareFramesAreForTheDirectView();

private:
    QScopedPointer<VorlynDeviceVideoView> panel;
    PreviewProbe probe;
};

namespace {
constexpr int patience = 30000; // milliseconds

// Counts what it is asked for.
class CountingView : public QWidget, public ZRVideoView
{
public:
    using QWidget::QWidget;
    using QWidget::update;
    void update(AVFrame *) override { ++pictures; }
    void clear() override { ++clears; }

    std::atomic<int> pictures{0};
    std::atomic<int> clears{0};
};

QImage shot(const QWidget &widget)
{
    const QPoint corner = widget.mapToGlobal(QPoint());
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, corner.x(), corner.y(), widget.width(), widget.height())
        .toImage();
}

// By the number that each picture of the clip has in it. Black reads as 0.
bool showsPicture(const QImage &image, const MediaClip::Format &clip)
{
    const int number = MediaClip::number(image);
    return number > 0 && number < clip.pictures;
}
}

void tst_VorlynDeviceVideoViewChange::init()
{
    SettingsFile().write({{"hardware", 0}});
    panel.reset(new VorlynDeviceVideoView(nullptr));
    panel->resize(400, 330);
    probe = PreviewProbe(panel.data());
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.data()));
}

void tst_VorlynDeviceVideoViewChange::cleanup()
{
    keepGraphicsDriver();
    panel.reset();
    QTRY_COMPARE(ThisProcess::threadNames("ZRPlayer"), QByteArrayList());
}

void tst_VorlynDeviceVideoViewChange::takesThePlace()
{
    const QPointer<QWidget> old = probe.view();
    auto *view = new CountingView(panel.data());
    panel->setVideoView(view);
    QVERIFY(!old);
    QCOMPARE(probe.child<QWidget>("videoView"), view);
    QCOMPARE(probe.playersView(), static_cast<const ZRVideoView *>(view));
    QCOMPARE(view->geometry(), QRect(0, 0, 400, 300));
    QVERIFY(view->isVisible());
    panel->resize(500, 230);
    QTRY_COMPARE(view->geometry(), QRect(0, 0, 500, 200));
    // The spinner lies over it.
    const QObjectList &children = panel->children();
    QVERIFY(children.indexOf(probe.spinner()) > children.indexOf(view));
}

void tst_VorlynDeviceVideoViewChange::restartsTheStream()
{
    const RtspPeer peer(MediaClip::of(MediaClip::Format()));
    panel->play(QString::fromStdString(peer.url()));
    QTRY_VERIFY_WITH_TIMEOUT(probe.holdsPicture(), patience);
    auto *view = new CountingView(panel.data());
    panel->setVideoView(view);
    QVERIFY(panel->isPlaying());
    QVERIFY(probe.isChecked());
    QTRY_VERIFY_WITH_TIMEOUT(view->pictures > 10, patience);
    QTRY_VERIFY_WITH_TIMEOUT(!probe.isSpinning(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(peer.connections(), 1, patience);
}

// There and back, while a stream plays.
void tst_VorlynDeviceVideoViewChange::playsInTheOtherView()
{
    MediaClip::Format clip;
    clip.fps = StreamFacts::pace;
    const RtspPeer peer(MediaClip::of(clip));
    panel->play(QString::fromStdString(peer.url()));
    QTRY_VERIFY_WITH_TIMEOUT(probe.holdsPicture(), patience);

    auto *openGL = new ZROpenGLVideoView(panel.data());
    panel->setVideoView(openGL);
    QTRY_VERIFY_WITH_TIMEOUT(showsPicture(openGL->grabFramebuffer(), clip), patience);
    QTRY_VERIFY_WITH_TIMEOUT(showsPicture(shot(*openGL), clip), patience);

    panel->setVideoView(new ZRDirectVideoView(panel.data()));
    QTRY_VERIFY_WITH_TIMEOUT(probe.holdsPicture(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(showsPicture(shot(*probe.view()), clip), patience);
}

void tst_VorlynDeviceVideoViewChange::idleStaysIdle()
{
    panel->setVideoView(new CountingView(panel.data()));
    QVERIFY(!panel->isPlaying());
    QVERIFY(!probe.isChecked());
    QVERIFY(!probe.isSpinning());
}

void tst_VorlynDeviceVideoViewChange::stopClearsIt()
{
    auto *view = new CountingView(panel.data());
    panel->setVideoView(view);
    const int before = view->clears;
    panel->stop();
    QCOMPARE(int(view->clears), before + 1);
}

void tst_VorlynDeviceVideoViewChange::muteIsKept()
{
    QTest::mouseClick(probe.audioButton(), Qt::LeftButton);
    panel->setVideoView(new CountingView(panel.data()));
    QVERIFY(probe.audioButton()->isChecked());
    QCOMPARE(probe.volume(), 0.0);
}

// Other views show what lies in memory.
void tst_VorlynDeviceVideoViewChange::hardwareFramesAreForTheDirectView()
{
    SettingsFile().write({{"hardware", 1}});
    panel->play("rtsp://127.0.0.1:1/");
    QCOMPARE(probe.hardwareType(), 4);
    panel->setVideoView(new CountingView(panel.data()));
    QCOMPARE(probe.hardwareType(), 0);
    panel->setVideoView(new ZRDirectVideoView(panel.data()));
    QCOMPARE(probe.hardwareType(), 4);
}

QTEST_MAIN(tst_VorlynDeviceVideoViewChange)
#include "tst_VorlynDeviceVideoViewChange.moc"
