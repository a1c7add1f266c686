#include "CameraBench.h"
#include "Devices.h"
#include "OffThread.h"
#include "VorlynDeviceMPToolThread.h"
#include "VorlynSDK.h"

#include <QElapsedTimer>
#include <QtTest>

// The run itself is told end to end by tst_AutomaticRun; here is how it is stopped.
class tst_VorlynDeviceMPToolThread : public QObject
{
    Q_OBJECT

private slots:
    void stopEndsAWait();
    void stopWithoutWait();
    void stopWithoutSdk();
};

void tst_VorlynDeviceMPToolThread::stopEndsAWait()
{
    CameraBench bench;
    QVERIFY(bench.isReady());
    VorlynDeviceMPToolThread run(nullptr);
    int result = 0;
    QElapsedTimer clock;
    {
        const OffThread waiter([&result] {
            int total = 0;
            int free = 0;
            result = VorlynSDK::instance()->getDeviceSD(makeDevices({"a"})[0], total, free);
        });
        QVERIFY(!bench.request().isEmpty());
        clock.start();
        run.stop();
        QVERIFY(waiter.isDoneWithoutEvents());
    }
    QCOMPARE(result, -1);
    QVERIFY2(clock.elapsed() < 2500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(run.isStopped());
}

void tst_VorlynDeviceMPToolThread::stopWithoutWait()
{
    CameraBench bench;
    QVERIFY(bench.isReady());
    VorlynDeviceMPToolThread run(nullptr);
    run.stop();
    QVERIFY(run.isStopped());
    QVERIFY(bench.isQuiet());
    // Only the wait that runs is ended, not the next one.
    int result = -1;
    {
        const OffThread waiter([&result] {
            int total = 0;
            int free = 0;
            result = VorlynSDK::instance()->getDeviceSD(makeDevices({"a"})[0], total, free);
        });
        QVERIFY(!bench.answerNext("success", {{"totalsize", 2}}).isEmpty());
    }
    QCOMPARE(result, 0);
}

void tst_VorlynDeviceMPToolThread::stopWithoutSdk()
{
    QVERIFY(!VorlynSDK::instance());
    VorlynDeviceMPToolThread run(nullptr);
    run.stop();
    QVERIFY(run.isStopped());
}

QTEST_MAIN(tst_VorlynDeviceMPToolThread)
#include "tst_VorlynDeviceMPToolThread.moc"
