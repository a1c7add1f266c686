#include "StopSignals.h"

#include "ReplaceImport.h"

#include <QSignalSpy>
#include <QtTest>

#include <windows.h>

#include <future>
#include <memory>

// What a Windows console tells a program, on a thread of its own.
class tst_StopSignals : public QObject
{
    Q_OBJECT

private slots:
    void handlerLivesWithTheObject();
    void keysReturnAtOnce_data();
    void keysReturnAtOnce();
    void endWaitsForTheCleanUp_data();
    void endWaitsForTheCleanUp();
};

namespace {

PHANDLER_ROUTINE handler = nullptr;

BOOL WINAPI setHandler(PHANDLER_ROUTINE routine, BOOL add)
{
    handler = add ? routine : nullptr;
    return TRUE;
}

std::future<BOOL> tell(DWORD event)
{
    return std::async(std::launch::async, handler, event);
}

template <class Result> bool isReady(const std::future<Result> &result)
{
    return result.wait_for(std::chrono::milliseconds(0)) == std::future_status::ready;
}

}

REPLACE_IMPORT(SetConsoleCtrlHandler, setHandler);

void tst_StopSignals::handlerLivesWithTheObject()
{
    {
        const StopSignals stopSignals;
        QVERIFY(handler);
    }
    QVERIFY(!handler);
}

void tst_StopSignals::keysReturnAtOnce_data()
{
    QTest::addColumn<uint>("event");

    QTest::newRow("Ctrl+C") << uint(CTRL_C_EVENT);
    QTest::newRow("Ctrl+Break") << uint(CTRL_BREAK_EVENT);
}

void tst_StopSignals::keysReturnAtOnce()
{
    QFETCH(uint, event);
    const StopSignals stopSignals;
    QSignalSpy raised(&stopSignals, &StopSignals::raised);
    std::future<BOOL> told = tell(event);
    QTRY_VERIFY(isReady(told));
    QCOMPARE(told.get(), TRUE);
    QTRY_COMPARE(raised.count(), 1);
}

void tst_StopSignals::endWaitsForTheCleanUp_data()
{
    QTest::addColumn<uint>("event");

    QTest::newRow("the window is closed") << uint(CTRL_CLOSE_EVENT);
    QTest::newRow("the user leaves") << uint(CTRL_LOGOFF_EVENT);
    QTest::newRow("the computer shuts down") << uint(CTRL_SHUTDOWN_EVENT);
}

// The system ends the program as soon as it has been answered.
void tst_StopSignals::endWaitsForTheCleanUp()
{
    QFETCH(uint, event);
    auto stopSignals = std::make_unique<StopSignals>();
    QSignalSpy raised(stopSignals.get(), &StopSignals::raised);
    std::future<BOOL> told = tell(event);
    QTRY_COMPARE(raised.count(), 1);
    QCOMPARE(told.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    stopSignals.reset();
    QTRY_VERIFY(isReady(told));
    QCOMPARE(told.get(), TRUE);
}

QTEST_GUILESS_MAIN(tst_StopSignals)
#include "tst_StopSignals.moc"
