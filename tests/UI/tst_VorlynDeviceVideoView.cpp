#include "Painting.h"
#include "VorlynDeviceVideoView.h"

#include <QtTest>

class tst_VorlynDeviceVideoView : public QObject
{
    Q_OBJECT

private slots:
    void isBlack();
    void keepsTheAddress();
};

void tst_VorlynDeviceVideoView::isBlack()
{
    VorlynDeviceVideoView view(nullptr);
    view.resize(40, 20);
    const QImage image = painted(view);
    QCOMPARE(paintedArea(image), QRect(0, 0, 40, 20));
    QCOMPARE(image.pixel(20, 10), qRgba(0, 0, 0, 255));
    QCOMPARE(image.pixel(0, 0), qRgba(0, 0, 0, 255));
}

void tst_VorlynDeviceVideoView::keepsTheAddress()
{
    VorlynDeviceVideoView view(nullptr);
    QCOMPARE(view.url(), QString());
    view.play("rtsp://10.0.0.1/a");
    QCOMPARE(view.url(), QString("rtsp://10.0.0.1/a"));
    QVERIFY(!view.isPlaying());
    view.stop();
    QCOMPARE(view.url(), QString());
    QVERIFY(!view.isPlaying());
}

QTEST_MAIN(tst_VorlynDeviceVideoView)
#include "tst_VorlynDeviceVideoView.moc"
