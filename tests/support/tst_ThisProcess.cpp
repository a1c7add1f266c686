#include "ThisProcess.h"

#include "ZRThread.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QTcpSocket>
#include <QtTest>

#include <memory>
#include <vector>

// What other tests rely on when they compare these numbers.
class tst_ThisProcess : public QObject
{
    Q_OBJECT

private slots:
    void threads();
    void files();
    void memory();
    void processorTime();
};

namespace {

class WaitingThread : public ZRThread
{
public:
    WaitingThread(const char *name)
    {
        setName(name);
        start();
    }
    ~WaitingThread() override
    {
        end.release();
        wait();
    }
    void run() override { end.acquire(); }

private:
    QSemaphore end;
};

void spin(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds) { }
}

}

void tst_ThisProcess::threads()
{
    const int others = ThisProcess::threadNames().size();
    QVERIFY(others > 0);
    {
        const QByteArray secondName = ThisProcess::keptName("NamedSecondThread");
        const WaitingThread second("NamedSecondThread"), first("NamedFirst"), nameless(nullptr);
        QTRY_COMPARE(ThisProcess::threadNames("Named"), (QByteArrayList{"NamedFirst", secondName}));
        QCOMPARE(ThisProcess::threadNames("NamedS"), QByteArrayList{secondName});
        QTRY_VERIFY(ThisProcess::threadNames().size() >= others + 3);
    }
    QTRY_COMPARE(ThisProcess::threadNames("Named"), QByteArrayList());
    QTRY_VERIFY(ThisProcess::threadNames().size() <= others);
}

void tst_ThisProcess::files()
{
    QFile file(QCoreApplication::applicationFilePath());
    const int before = ThisProcess::openFiles();
    QVERIFY(before > 0);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(ThisProcess::openFiles(), before + 1);
    file.close();
    QCOMPARE(ThisProcess::openFiles(), before);
}

void tst_ThisProcess::memory()
{
    constexpr qint64 size = 64 << 20;
    const qint64 before = ThisProcess::memory();
    QVERIFY(before > 1 << 20);
    const std::vector<char> used(size, 'x');
    QVERIFY(ThisProcess::memory() > before + size / 2);
    QVERIFY(ThisProcess::peakMemory() > before + size / 2);
}

void tst_ThisProcess::processorTime()
{
    const double process = ThisProcess::processorSeconds();
    const double thread = ThisProcess::threadProcessorSeconds();
    QTest::qSleep(300);
    QVERIFY(ThisProcess::threadProcessorSeconds() - thread < 0.2);
    while (ThisProcess::threadProcessorSeconds() - thread < 0.3) // the machine may be busy
        spin(10);
    QVERIFY(ThisProcess::processorSeconds() - process > 0.2);
}

QTEST_GUILESS_MAIN(tst_ThisProcess)
#include "tst_ThisProcess.moc"
