#include "ZRWaitDialog.h"

#include "LogCatcher.h"
#include "MetaMethods.h"
#include "ModalDriver.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QtTest>

class tst_ZRWaitDialog : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void idleIsStopped();
    void finishWithoutJobDoesNothing();
    void jobRunsOnAThreadOfItsOwn();
    void closeAccepts();
    void jobThatEndedIsReapedByTheDestructor();
    void jobMayEndBeforeExec();
    void exitsRejects();
    void userRoadsReject_data();
    void userRoadsReject();
    void closingHiddenDialogEndsTheJob();
    void finishRaisesFlagCancelsAndWaits();
    void finishIsFrozen();
    void destructorEndsRunningJob();
    void destructorOfBaseEndsItsJob();
    void jobMayWorkOnAfterClose();
    void secondStartEndsTheFirstJob();
    void startsAgainAfterFinish();
    void threadWithoutDialog();
    void baseJobOnlyLogs();
    void baseDialogStays();
};

namespace {
// What the job saw and did; outlives the dialog.
struct Record {
    QSemaphore began; // one for each run
    QSemaphore ended;
    int cancels = 0; // on the GUI thread
    bool stoppedAtCancel = false;
    QThread *cancelThread = nullptr;
    QThread *jobThread = nullptr;
    QThread::Priority jobPriority = QThread::IdlePriority;
    bool stoppedAtBegin = true;
    bool stoppedAtEnd = false;
};

// Works until the gate opens, which cancel() does too.
class GatedJob : public ZRWaitDialog
{
public:
    explicit GatedJob(Record &record) : ZRWaitDialog(nullptr), record(record) { }
    ~GatedJob() override { finishThread(); }

    void run() override
    {
        record.jobThread = QThread::currentThread();
        record.jobPriority = record.jobThread->priority();
        record.stoppedAtBegin = isStopped();
        record.began.release();
        gate.acquire();
        record.stoppedAtEnd = isStopped();
        record.ended.release();
        finish();
    }

    void cancel() override
    {
        ++record.cancels;
        record.cancelThread = QThread::currentThread();
        record.stoppedAtCancel = isStopped();
        gate.release();
    }

    virtual void finish() { emit _close(); }

    Record &record;
    QSemaphore gate;
};

// Ends with rejection instead.
class RejectingJob : public GatedJob
{
public:
    using GatedJob::GatedJob;
    ~RejectingJob() override { finishThread(); }
    void finish() override { emit _exits(); }
};

constexpr int longTime = 30000; // ms

using Road = std::function<void(GatedJob &)>;
}
Q_DECLARE_METATYPE(Road)

void tst_ZRWaitDialog::metaObject()
{
    QCOMPARE(ownMethods(ZRWaitDialog::staticMetaObject),
        (QStringList{"public signal _close()", "public signal _exits()", "private slot onClose()",
            "private slot onExits()"}));
}

void tst_ZRWaitDialog::idleIsStopped()
{
    QVERIFY(ZRWaitDialog(nullptr).isStopped());
}

void tst_ZRWaitDialog::finishWithoutJobDoesNothing()
{
    Record record;
    GatedJob dialog(record);
    dialog.finishThread();
    QCOMPARE(record.cancels, 0);
    dialog.reject();
    QCOMPARE(record.cancels, 0);
}

void tst_ZRWaitDialog::jobRunsOnAThreadOfItsOwn()
{
    Record record;
    GatedJob dialog(record);
    dialog.start();
    QVERIFY(record.began.tryAcquire(1, longTime));
    QVERIFY(!dialog.isStopped());
    QVERIFY(!record.stoppedAtBegin);
    QVERIFY(record.jobThread != QThread::currentThread());
    QCOMPARE(record.jobPriority, QThread::InheritPriority);

    const auto *thread = dynamic_cast<ZRWaitThread *>(record.jobThread);
    QVERIFY(thread);
    QVERIFY(!thread->parent());
    QCOMPARE(thread->dialog, static_cast<ZRWaitDialog *>(&dialog));
    QVERIFY(!thread->stopped);
}

void tst_ZRWaitDialog::closeAccepts()
{
    Record record;
    GatedJob dialog(record);
    dialog.start();
    ModalDriver<GatedJob> driver([](GatedJob &job) { job.gate.release(); });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
}

void tst_ZRWaitDialog::jobThatEndedIsReapedByTheDestructor()
{
    Record record;
    {
        GatedJob dialog(record);
        dialog.start();
        dialog.gate.release();
        QCOMPARE(dialog.exec(), int(QDialog::Accepted));
        QCOMPARE(record.cancels, 0);
        QVERIFY(!dialog.isStopped()); // still counts as running
        QVERIFY(!record.stoppedAtEnd);
    }
    QCOMPARE(record.cancels, 1);
}

void tst_ZRWaitDialog::jobMayEndBeforeExec()
{
    Record record;
    GatedJob dialog(record);
    dialog.gate.release();
    dialog.start();
    QVERIFY(record.ended.tryAcquire(1, longTime));
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
}

void tst_ZRWaitDialog::exitsRejects()
{
    Record record;
    RejectingJob dialog(record);
    dialog.start();
    ModalDriver<RejectingJob> driver([](RejectingJob &job) { job.gate.release(); });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QCOMPARE(record.cancels, 1); // rejection ends the job
    QVERIFY(dialog.isStopped());
}

void tst_ZRWaitDialog::userRoadsReject_data()
{
    QTest::addColumn<Road>("road");
    QTest::newRow("Esc") << Road([](GatedJob &job) { QTest::keyClick(&job, Qt::Key_Escape); });
    QTest::newRow("close") << Road([](GatedJob &job) { job.close(); });
    QTest::newRow("reject") << Road([](GatedJob &job) { job.reject(); });
}

void tst_ZRWaitDialog::userRoadsReject()
{
    QFETCH(Road, road);
    Record record;
    GatedJob dialog(record);
    dialog.start();
    QVERIFY(record.began.tryAcquire(1, longTime));
    ModalDriver<GatedJob> driver([&](GatedJob &job) {
        road(job);
        QVERIFY(record.ended.tryAcquire()); // the road waited for the job
        QVERIFY(!job.isVisible());
    });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QCOMPARE(record.cancels, 1);
    QVERIFY(record.stoppedAtEnd);
    QVERIFY(dialog.isStopped());
}

// No rejection follows, yet the job is ended.
void tst_ZRWaitDialog::closingHiddenDialogEndsTheJob()
{
    Record record;
    GatedJob dialog(record);
    QSignalSpy finished(&dialog, &QDialog::finished);
    dialog.start();
    QVERIFY(record.began.tryAcquire(1, longTime));
    QCloseEvent event;
    QCoreApplication::sendEvent(&dialog, &event);
    QVERIFY(record.ended.tryAcquire());
    QCOMPARE(record.cancels, 1);
    QVERIFY(dialog.isStopped());
    QCOMPARE(finished.count(), 0);
}

void tst_ZRWaitDialog::finishRaisesFlagCancelsAndWaits()
{
    Record record;
    GatedJob dialog(record);
    dialog.start();
    QVERIFY(record.began.tryAcquire(1, longTime));
    dialog.finishThread();
    QVERIFY(record.ended.tryAcquire());
    QCOMPARE(record.cancels, 1);
    QCOMPARE(record.cancelThread, QThread::currentThread());
    QVERIFY(record.stoppedAtCancel);
    QVERIFY(record.stoppedAtEnd);
    dialog.finishThread(); // nothing left to end
    QCOMPARE(record.cancels, 1);
}

// The wait handles no event: one that was posted before it is still to come after it.
void tst_ZRWaitDialog::finishIsFrozen()
{
    Record record;
    GatedJob dialog(record);
    dialog.start();
    QVERIFY(record.began.tryAcquire(1, longTime));
    bool delivered = false;
    QMetaObject::invokeMethod(
        &dialog, [&] { delivered = true; }, Qt::QueuedConnection);
    dialog.finishThread();
    QVERIFY(record.ended.tryAcquire());
    QVERIFY(!delivered);
    QTRY_VERIFY(delivered);
}

// In the base's destructor neither cancel() nor the gate would be there any more.
void tst_ZRWaitDialog::destructorEndsRunningJob()
{
    Record record;
    {
        GatedJob dialog(record);
        dialog.start();
        QVERIFY(record.began.tryAcquire(1, longTime));
    }
    QCOMPARE(record.cancels, 1);
    QVERIFY(record.stoppedAtEnd);
    QVERIFY(record.ended.tryAcquire());
}

void tst_ZRWaitDialog::destructorOfBaseEndsItsJob()
{
    const LogCatcher log;
    for (int i = 0; i < 50; ++i) {
        ZRWaitDialog dialog(nullptr);
        dialog.start();
    }
    QCOMPARE(log.count("ZRWaitDialog run"), 50);
}

void tst_ZRWaitDialog::jobMayWorkOnAfterClose()
{
    class LateJob : public GatedJob
    {
    public:
        using GatedJob::GatedJob;
        ~LateJob() override { finishThread(); }
        void run() override
        {
            emit _close();
            GatedJob::run();
        }
    };
    Record record;
    {
        LateJob dialog(record);
        dialog.start();
        QCOMPARE(dialog.exec(), int(QDialog::Accepted));
        QVERIFY(!dialog.isStopped());
        QVERIFY(!record.ended.tryAcquire());
    }
    QVERIFY(record.ended.tryAcquire());
    QVERIFY(record.stoppedAtEnd);
}

void tst_ZRWaitDialog::secondStartEndsTheFirstJob()
{
    Record record;
    GatedJob dialog(record);
    dialog.start();
    QVERIFY(record.began.tryAcquire(1, longTime));
    dialog.start();
    QCOMPARE(record.cancels, 1);
    QVERIFY(record.ended.tryAcquire());
    QVERIFY(record.began.tryAcquire(1, longTime));
    QVERIFY(!dialog.isStopped());
    QVERIFY(!record.stoppedAtBegin);
    QVERIFY(!record.ended.tryAcquire());
}

void tst_ZRWaitDialog::startsAgainAfterFinish()
{
    Record record;
    GatedJob dialog(record);
    dialog.start();
    QVERIFY(record.began.tryAcquire(1, longTime));
    dialog.finishThread();
    QVERIFY(dialog.isStopped());
    dialog.start();
    QVERIFY(record.began.tryAcquire(1, longTime));
    QVERIFY(!dialog.isStopped());
}

void tst_ZRWaitDialog::threadWithoutDialog()
{
    const LogCatcher log;
    ZRWaitThread thread(nullptr);
    thread.start();
    QVERIFY(thread.wait(longTime));
    QCOMPARE(log.lines(), QStringList());
}

void tst_ZRWaitDialog::baseJobOnlyLogs()
{
    const LogCatcher log;
    ZRWaitDialog dialog(nullptr);
    dialog.start();
    dialog.finishThread();
    QCOMPARE(log.lines(), QStringList{"ZRWaitDialog run"});
}

void tst_ZRWaitDialog::baseDialogStays()
{
    const LogCatcher log;
    ZRWaitDialog dialog(nullptr);
    QSignalSpy finished(&dialog, &QDialog::finished);
    dialog.show();
    dialog.start();
    QTRY_COMPARE(log.count("ZRWaitDialog run"), 1);
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    QVERIFY(dialog.isVisible());
    QVERIFY(!dialog.isStopped());
    QCOMPARE(finished.count(), 0);
}

QTEST_MAIN(tst_ZRWaitDialog)
#include "tst_ZRWaitDialog.moc"
