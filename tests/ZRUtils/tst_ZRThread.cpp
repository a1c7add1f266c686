#include "ZRThread.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QProcess>
#include <QSemaphore>
#include <QThread>
#include <QtTest>

#include <functional>
#include <type_traits>

namespace {

// This program, run again, as one of the ways to die of a worker.
constexpr char deleteRunning[] = "--delete-running";
constexpr char throwFromRun[] = "--throw-from-run";

class Worker : public ZRThread
{
public:
    explicit Worker(std::function<void(Worker *)> body) : body(std::move(body)) { }

    void run() override { body(this); }

private:
    std::function<void(Worker *)> body;
};

void untilStopped(Worker *worker)
{
    while (!worker->isStopped())
        ZRThread::sleep(1);
}

class BlockingWorker : public ZRThread
{
public:
    void stop() override
    {
        ZRThread::stop();
        call.release();
    }
    void run() override
    {
        call.acquire();
        stoppedAfterCall = isStopped();
    }

    QSemaphore call;
    bool stoppedAfterCall = false;
};

// What the thread was like from the inside of one run.
struct Inside {
    Qt::HANDLE id = nullptr;
    QString name;
    QThread::Priority priority = QThread::IdlePriority;
    int loopLevel = -1;
};

struct Death {
    bool came;
    QByteArray output;
};

Death deathOf(const char *mode)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QCoreApplication::applicationFilePath(), {mode});
    const bool ended = process.waitForFinished(60000);
    const bool badly = process.exitStatus() == QProcess::CrashExit || process.exitCode() != 0;
    return {ended && badly, process.readAll()};
}

Inside lookInside(const std::function<void(ZRThread *)> &prepare = {})
{
    Inside inside;
    Worker worker([&](Worker *) {
        const QThread *current = QThread::currentThread();
        inside = {QThread::currentThreadId(), current->objectName(), current->priority(),
            current->loopLevel()};
    });
    if (prepare)
        prepare(&worker);
    worker.start();
    worker.wait();
    return inside;
}

}

class tst_ZRThread : public QObject
{
    Q_OBJECT

private slots:
    void isNoQObject();
    void runsOnAThreadOfItsOwn();
    void isNotRunningBeforeStart();
    void startIsTrueAlsoWhileRunning();
    void stopRaisesTheFlagAndReturnsAtOnce();
    void stopCanBreakABlockedCall();
    void stopFromAnotherThread();
    void stopBeforeStartIsLost();
    void startsAgainAfterStop();
    void waitOutlastsTheRun();
    void name_data();
    void name();
    void nameAfterStartIsStoredOnly();
    void inheritsPriorityAndHasNoEventLoop();
    void destructorDoesNotJoin();
    void exceptionIsNotCaught();
    void sleepsForMilliseconds();
    void currentSecondsIsTheWallClock();
    void lockerExcludes();
    void lockerResultsAreZero();
    void lockerIsNotRecursive();
};

void tst_ZRThread::isNoQObject()
{
    QVERIFY((!std::is_base_of<QObject, ZRThread>::value));
    QVERIFY((!std::is_base_of<QObject, ZRThreadLocker>::value));
    QVERIFY(std::has_virtual_destructor<ZRThread>::value);
    QVERIFY(std::has_virtual_destructor<ZRThreadLocker>::value);
    QVERIFY(std::is_abstract<ZRThread>::value);
}

void tst_ZRThread::runsOnAThreadOfItsOwn()
{
    const Inside inside = lookInside();
    QVERIFY(inside.id);
    QVERIFY(inside.id != QThread::currentThreadId());
}

void tst_ZRThread::isNotRunningBeforeStart()
{
    int runs = 0;
    {
        Worker worker([&](Worker *) { ++runs; });
        QVERIFY(!worker.isRunning());
        QVERIFY(!worker.isStopped());
        QVERIFY(worker.wait());
    }
    QCOMPARE(runs, 0);
}

void tst_ZRThread::startIsTrueAlsoWhileRunning()
{
    QSemaphore inside;
    Worker worker([&](Worker *self) {
        inside.release();
        untilStopped(self);
    });
    QVERIFY(worker.start());
    inside.acquire();
    QVERIFY(worker.isRunning());
    QVERIFY(worker.start());
    worker.stop();
    QVERIFY(worker.wait());
    QVERIFY(!worker.isRunning());
    QCOMPARE(inside.available(), 0);
}

void tst_ZRThread::stopRaisesTheFlagAndReturnsAtOnce()
{
    QSemaphore mayEnd;
    bool seen = false;
    Worker worker([&](Worker *self) {
        mayEnd.acquire();
        seen = self->isStopped();
    });
    worker.start();
    QVERIFY(!worker.isStopped());
    worker.stop();
    QVERIFY(worker.isStopped());
    QVERIFY(worker.isRunning()); // cooperative: the run has not looked yet
    mayEnd.release();
    QVERIFY(worker.wait());
    QVERIFY(seen);
}

void tst_ZRThread::stopCanBreakABlockedCall()
{
    BlockingWorker worker;
    ZRThread *base = &worker;
    base->start();
    base->stop();
    QVERIFY(base->wait());
    QVERIFY(worker.stoppedAfterCall);
}

void tst_ZRThread::stopFromAnotherThread()
{
    Worker polling(untilStopped);
    Worker stopping([&](Worker *) { polling.stop(); });
    polling.start();
    stopping.start();
    QVERIFY(polling.wait());
    QVERIFY(stopping.wait());
}

void tst_ZRThread::stopBeforeStartIsLost()
{
    QSemaphore inside;
    Worker worker([&](Worker *self) {
        inside.release();
        untilStopped(self);
    });
    worker.stop();
    QVERIFY(worker.isStopped());
    worker.start();
    QVERIFY(!worker.isStopped());
    inside.acquire();
    QVERIFY(worker.isRunning());
    worker.stop();
    QVERIFY(worker.wait());
}

void tst_ZRThread::startsAgainAfterStop()
{
    int runs = 0;
    Worker worker([&](Worker *self) {
        ++runs;
        untilStopped(self);
    });
    for (int run = 1; run <= 3; ++run) {
        worker.start();
        worker.stop();
        QVERIFY(worker.wait());
        QCOMPARE(runs, run);
    }
}

void tst_ZRThread::waitOutlastsTheRun()
{
    bool ended = false;
    Worker worker([&](Worker *) {
        ZRThread::sleep(50);
        ended = true;
    });
    worker.start();
    QVERIFY(worker.wait());
    QVERIFY(ended);
    QVERIFY(worker.wait());
}

void tst_ZRThread::name_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("set") << QByteArray("ZRPlayerReaderThread") << "ZRPlayerReaderThread";
    QTest::newRow("empty") << QByteArray("") << "";
    QTest::newRow("null") << QByteArray() << "";
}

void tst_ZRThread::name()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, expected);
    const Inside inside = lookInside(
        [&](ZRThread *worker) { worker->setName(name.isNull() ? nullptr : name.constData()); });
    QVERIFY(inside.id);
    QCOMPARE(inside.name, expected);
}

void tst_ZRThread::nameAfterStartIsStoredOnly()
{
    QSemaphore renamed;
    QStringList names;
    Worker worker([&](Worker *) {
        renamed.acquire();
        names += QThread::currentThread()->objectName();
    });
    worker.setName("before");
    worker.start();
    worker.setName("after");
    renamed.release();
    QVERIFY(worker.wait());
    renamed.release();
    worker.start();
    QVERIFY(worker.wait());
    worker.setName("");
    renamed.release();
    worker.start();
    QVERIFY(worker.wait());
    QCOMPARE(names, QStringList({"before", "after", "after"})); // an empty name is not set
}

void tst_ZRThread::inheritsPriorityAndHasNoEventLoop()
{
    const Inside inside = lookInside();
    QCOMPARE(inside.priority, QThread::InheritPriority);
    QCOMPARE(inside.loopLevel, 0);
}

void tst_ZRThread::destructorDoesNotJoin()
{
    const Death death = deathOf(deleteRunning);
    QVERIFY(death.came);
    QVERIFY2(death.output.contains("Destroyed while thread is still running"), death.output);
}

void tst_ZRThread::exceptionIsNotCaught()
{
    const Death death = deathOf(throwFromRun);
    QVERIFY2(death.came, death.output);
}

void tst_ZRThread::sleepsForMilliseconds()
{
    QElapsedTimer timer;
    timer.start();
    ZRThread::sleep(30);
    QVERIFY(timer.elapsed() >= 29);
    QVERIFY(timer.elapsed() < 10000);
}

void tst_ZRThread::currentSecondsIsTheWallClock()
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    const double seconds = ZRThread::currentSeconds();
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    QVERIFY(seconds >= before / 1000.0);
    QVERIFY(seconds <= after / 1000.0);
    QCOMPARE(qRound64(seconds * 1000) / 1000.0, seconds); // whole milliseconds
}

void tst_ZRThread::lockerExcludes()
{
    constexpr int rounds = 20000;
    ZRThreadLocker locker;
    int count = 0;
    const auto body = [&](Worker *) {
        for (int i = 0; i < rounds; ++i) {
            locker.lock();
            ++count;
            locker.unlock();
        }
    };
    Worker first(body);
    Worker second(body);
    first.start();
    second.start();
    first.wait();
    second.wait();
    QCOMPARE(count, 2 * rounds);
}

void tst_ZRThread::lockerResultsAreZero()
{
    ZRThreadLocker locker;
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(locker.lock(), 0);
        QCOMPARE(locker.unlock(), 0);
    }
}

void tst_ZRThread::lockerIsNotRecursive()
{
    ZRThreadLocker locker;
    QSemaphore once;
    QSemaphore twice;
    Worker worker([&](Worker *) {
        locker.lock();
        once.release();
        locker.lock();
        twice.release();
        locker.unlock();
    });
    worker.start();
    once.acquire();
    QVERIFY(!twice.tryAcquire(1, 100));
    locker.unlock(); // only to let the worker go
    QVERIFY(twice.tryAcquire(1, 60000));
    QVERIFY(worker.wait());
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QString mode = application.arguments().value(1);
    if (mode == deleteRunning) {
        Worker worker(untilStopped);
        worker.start();
        return 0;
    }
    if (mode == throwFromRun) {
        Worker worker([](Worker *) { throw 1; });
        worker.start();
        worker.wait();
        return 0;
    }
    tst_ZRThread test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ZRThread.moc"
