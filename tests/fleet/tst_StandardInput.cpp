#include "StandardInput.h"

#include <QProcess>
#include <QtTest>

#include <cstdio>
#include <memory>

static const char *echo = "--echo"; // the test program as one that reads its standard input

class tst_StandardInput : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void lines();
    void endWhileItIsRead();
    void emptyInput();

private:
    bool says(const QByteArray &line);

    std::unique_ptr<QProcess> program;
};

namespace {

void print(const QByteArray &line)
{
    std::printf("[%s]\n", line.constData());
    std::fflush(stdout);
}

// What it reads, until "end".
int echoLines(QCoreApplication &application)
{
    StandardInput input;
    QObject::connect(&input, &StandardInput::line, &application, [](const QByteArray &line) {
        print(line);
        if (line != "end")
            return;
        std::clearerr(stdin); // waits for the C library's lock, as the end of a program may do
        QCoreApplication::exit(5);
    });
    QTimer::singleShot(0, &application, [] { print("ready"); });
    return QCoreApplication::exec();
}

}

void tst_StandardInput::init()
{
    program = std::make_unique<QProcess>();
    program->setProgram(QCoreApplication::applicationFilePath());
    program->setArguments({echo});
}

void tst_StandardInput::cleanup()
{
    program->kill();
    program->waitForFinished();
    QCOMPARE(program->state(), QProcess::NotRunning);
}

// Whether this is what it says next.
bool tst_StandardInput::says(const QByteArray &line)
{
    while (!program->canReadLine()) {
        if (!program->waitForReadyRead())
            return false;
    }
    return program->readLine().trimmed() == '[' + line + ']';
}

// A part of a line waits for the rest of it, and empty ones aren't told. At the input's end the
// program goes on.
void tst_StandardInput::lines()
{
    program->start();
    QVERIFY(says("ready"));
    program->write("first\r\n  second word \n\n \t\nthi");
    QVERIFY(says("first"));
    QVERIFY(says("second word"));
    const QByteArray longLine(10000, 'x');
    program->write("rd\n" + longLine + "\nlast");
    QVERIFY(says("third"));
    QVERIFY(says(longLine));
    program->closeWriteChannel();
    QVERIFY(says("last"));
    QVERIFY(!program->waitForFinished(300));
    QCOMPARE(program->readAll(), QByteArray());
}

// Its other end is open still.
void tst_StandardInput::endWhileItIsRead()
{
    program->start();
    QVERIFY(says("ready"));
    program->write("end\n");
    QVERIFY(says("end"));
    QTRY_COMPARE_WITH_TIMEOUT(program->state(), QProcess::NotRunning, 30000);
    QCOMPARE(program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(program->exitCode(), 5);
}

void tst_StandardInput::emptyInput()
{
    program->setStandardInputFile(QProcess::nullDevice());
    program->start();
    QVERIFY(says("ready"));
    QVERIFY(!program->waitForFinished(300));
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], echo) == 0)
        return echoLines(application);
    tst_StandardInput test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_StandardInput.moc"
