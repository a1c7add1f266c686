#include "HostProcess.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class tst_HostProcess : public QObject
{
    Q_OBJECT

private slots:
    void runTellsTheStatus_data();
    void runTellsTheStatus();
    void output();
    void errorsAreKeptApart();
    void inputAndItsEnd();
    void linesAsTheyCome();
    void signalFromTheEventLoop();
    void manyBytes();
    void argumentsAsTheyAre();
    void noSuchProgram();
    void statusOfAnEnd_data();
    void statusOfAnEnd();
    void terminates();
    void diesWithItsObject();
    void pathsOfFiles();
};

static bool lives(qint64 id)
{
    return HostProcess::run("test", {"-e", QStringLiteral("/proc/%1").arg(id)});
}

void tst_HostProcess::runTellsTheStatus_data()
{
    QTest::addColumn<bool>("succeeds");
    QTest::newRow("true") << true;
    QTest::newRow("false") << false;
    QTest::newRow("no-such-program") << false;
}

void tst_HostProcess::runTellsTheStatus()
{
    QTEST(HostProcess::run(QTest::currentDataTag(), {}), "succeeds");
}

void tst_HostProcess::output()
{
    QCOMPARE(HostProcess::output("printf", {"one\\ntwo"}), QByteArray("one\ntwo"));
    QCOMPARE(HostProcess::output("sh", {"-c", "echo out; exit 3"}), QByteArray());
    QCOMPARE(HostProcess::output("no-such-program", {}), QByteArray());
}

void tst_HostProcess::errorsAreKeptApart()
{
    HostProcess process;
    QVERIFY(process.start("sh", {"-c", "echo out; echo error >&2"}));
    QVERIFY(process.waitForSuccess());
    QCOMPARE(process.readAll(), QByteArray("out\n"));
    QCOMPARE(process.errors(), QByteArray("error\n"));
    QCOMPARE(process.readAll(), QByteArray());
    QCOMPARE(process.errors(), QByteArray());
}

void tst_HostProcess::inputAndItsEnd()
{
    HostProcess process;
    QVERIFY(process.start("cat", {}));
    QVERIFY(process.isRunning());
    QVERIFY(process.write("some\n"));
    QVERIFY(process.waitForReadyRead());
    QCOMPARE(process.readAll(), QByteArray("some\n"));
    QVERIFY(process.write("more"));
    process.closeInput();
    QVERIFY(process.waitForSuccess());
    QCOMPARE(process.readAll(), QByteArray("more"));
    QVERIFY(!process.isRunning());
    QCOMPARE(process.processId(), qint64(0));
}

void tst_HostProcess::linesAsTheyCome()
{
    HostProcess process;
    QVERIFY(process.start("sh", {"-c", "printf 'one\\ntwo\\nrest'; read line"}));
    for (const char *line : {"one\n", "two\n"}) {
        while (!process.canReadLine())
            QVERIFY(process.waitForReadyRead());
        QCOMPARE(process.readLine(), QByteArray(line));
    }
    QVERIFY(!process.canReadLine());
    QVERIFY(!process.waitForReadyRead(100));
    QVERIFY(process.isRunning());
}

void tst_HostProcess::signalFromTheEventLoop()
{
    HostProcess process;
    QByteArray heard;
    connect(&process, &HostProcess::readyRead, &process, [&] { heard += process.readAll(); });
    QVERIFY(process.start("cat", {}));
    for (const QByteArray line : {"first\n", "second\n"}) {
        heard.clear();
        QVERIFY(process.write(line));
        QTRY_COMPARE_WITH_TIMEOUT(heard, line, HostProcess::patience);
    }
}

void tst_HostProcess::manyBytes()
{
    const QByteArray bytes = QByteArray(3000000, 'x') + QByteArray(1, '\0') + "end";
    HostProcess process;
    QVERIFY(process.start("sh", {"-c", "head -c 3000000 /dev/zero | tr '\\0' x; printf '\\0end'"}));
    QVERIFY(process.waitForSuccess());
    QVERIFY(process.readAll() == bytes);
}

void tst_HostProcess::argumentsAsTheyAre()
{
    const QStringList arguments = {"a b", "", "\"quoted\"", "$HOME", "*", "back\\slash", "摄像机"};
    HostProcess process;
    QVERIFY(process.start("printf", QStringList("%s\n") + arguments));
    QVERIFY(process.waitForSuccess());
    QCOMPARE(QString::fromUtf8(process.readAll()), arguments.join('\n') + '\n');
}

void tst_HostProcess::noSuchProgram()
{
    HostProcess process;
    QVERIFY(!process.start("no-such-program", {}));
    QVERIFY(!process.errors().isEmpty());
    QVERIFY(!process.isRunning());
    QVERIFY(!process.waitForSuccess(0));
}

void tst_HostProcess::statusOfAnEnd_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("status") << "exit 3";
    QTest::newRow("signal") << "kill -KILL $$";
}

void tst_HostProcess::statusOfAnEnd()
{
    QFETCH(QString, command);
    HostProcess process;
    QVERIFY(process.start("sh", {"-c", command}));
    QVERIFY(!process.waitForSuccess());
    QVERIFY(!process.isRunning());
}

void tst_HostProcess::terminates()
{
    HostProcess process;
    QVERIFY(
        process.start("sh", {"-c", "trap 'exit 0' TERM; echo ready; while :; do sleep .1; done"}));
    QVERIFY(process.waitForReadyRead());
    QVERIFY(!process.waitForSuccess(200)); // by itself
    process.terminate();
    QVERIFY(process.waitForSuccess());
}

void tst_HostProcess::diesWithItsObject()
{
    qint64 id = 0;
    {
        HostProcess process;
        QVERIFY(process.start("sleep", {"1000"}));
        id = process.processId();
        QVERIFY(id > 0);
        QVERIFY(lives(id));
    }
    QTRY_VERIFY(!lives(id));
}

void tst_HostProcess::pathsOfFiles()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("some file 摄像机"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("content"), qint64(7));
    file.close();
    HostProcess process;
    QVERIFY(process.start("cat", {HostProcess::path(file.fileName())}));
    QVERIFY(process.waitForSuccess());
    QCOMPARE(process.readAll(), QByteArray("content"));

    // One that isn't there yet.
    const QString made = folder.filePath("made");
    QVERIFY(HostProcess::run("touch", {HostProcess::path(made)}));
    QVERIFY(QFile::exists(made));
}

QTEST_GUILESS_MAIN(tst_HostProcess)
#include "tst_HostProcess.moc"
