#include "ProgramRun.h"

#include "LogCatcher.h"
#include "OpenGLDriver.h"
#include "QtTextsFile.h"
#include "SettingsFile.h"
#include "SocketLayer.h"
#include "VorlynSDK.h"
#include "ZRLog.h"

#include <QApplication>
#include <QFileInfo>
#include <QTimer>
#include <QWidget>
#include <QtTest>

#include <cstdio>

// The order of main(), from the socket layer to the end of the application object.
class tst_ProgramRun : public QObject
{
    Q_OBJECT

public:
    explicit tst_ProgramRun(char *program) : program(program) { }

private slots:
    void order_data();
    void order();
    void openGL_data();
    void openGL();

private:
    char *program;
};

namespace {

SocketLayer::Status socketStatus; // what the start of the socket layer gives
int exitCode; // what the window ends the event loop with
const char runOnly[] = "run-only"; // the argument that makes this no test
QByteArray openGLWhenSocketsStart; // whether by the desktop's, whether by software: "10" or "01"

// In Qt's log, between the lines of the program itself.
void note(const char *text)
{
    qDebug("%s%s%s", text, qApp ? ", application" : "", VorlynSDK::instance() ? ", SDK" : "");
}

// Qt tells the application object of its texts' end.
class TextsWatch : public QObject
{
public:
    TextsWatch() : QObject(qApp) { qApp->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == qApp && event->type() == QEvent::LanguageChange)
            note("Qt's texts gone");
        return false;
    }
};

class Window : public QWidget
{
public:
    Window() { note("window made"); }

    ~Window() override
    {
        note("window gone");
        new TextsWatch;
    }

protected:
    void showEvent(QShowEvent *) override
    {
        note("window shown");
        QTimer::singleShot(0, this, [] { QCoreApplication::exit(exitCode); });
    }
};

}

// The program finds these in place of its own.
SocketLayer::Status SocketLayer::start()
{
    note("sockets start");
    for (const auto attribute : {Qt::AA_UseDesktopOpenGL, Qt::AA_UseSoftwareOpenGL})
        openGLWhenSocketsStart += QCoreApplication::testAttribute(attribute) ? '1' : '0';
    return socketStatus;
}

void SocketLayer::stop()
{
    note("sockets end");
}

void ZRLog::initialize()
{
    note("log opens");
}

void ZRLog::shutdown()
{
    note("log closes");
}

void tst_ProgramRun::order_data()
{
    QTest::addColumn<int>("highVersion");
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("code");

    QTest::newRow("a good start") << 0x0202 << 0x0102 << 0 << "WSA(514, 258) = 0" << 7;
    QTest::newRow("no sockets") << 0 << 0 << 10091 << "WSA(0, 0) = 10091" << 0;
}

void tst_ProgramRun::order()
{
    QFETCH(int, highVersion);
    QFETCH(int, version);
    QFETCH(int, result);
    QFETCH(QString, line);
    QFETCH(int, code);
    socketStatus = {highVersion, version, result};
    exitCode = code;
    const QString folder = QFileInfo(program).absolutePath();
    SettingsFile(folder).remove(); // so that the program speaks Chinese
    QVERIFY(writeQtTexts(folder + "/translations", "Look in:", QString::fromUtf8("查看：")));

    const LogCatcher log;
    QCOMPARE(runProgram<Window>(1, &program), code);
    QVERIFY(!qApp);
    QCOMPARE(log.lines(),
        QStringList({"sockets start", "log opens, application", "install en language", line,
            "window made, application, SDK", "window shown, application, SDK",
            "window gone, application, SDK", "Qt's texts gone, application, SDK",
            "log closes, application", "sockets end, application"}));
}

void tst_ProgramRun::openGL_data()
{
    QTest::addColumn<QByteArray>("chosen");

    QTest::newRow("3.3") << QByteArray("01");
    QTest::newRow("4.0") << QByteArray("10");
}

void tst_ProgramRun::openGL()
{
    int argc = 1;
    QCoreApplication application(argc, &program);
    QTEST(outputWithOpenGL(QTest::currentDataTag(), runOnly), "chosen");
}

// Without an application object, as the programs begin.
int main(int argc, char *argv[])
{
    if (argc == 2 && qstrcmp(argv[1], runOnly) == 0) {
        const int result = runProgram<Window>(argc, argv);
        std::printf("%s\n", openGLWhenSocketsStart.constData());
        return result;
    }
    tst_ProgramRun test(argv[0]);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ProgramRun.moc"
