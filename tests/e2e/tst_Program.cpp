#include "FleetProcess.h"
#include "SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QProcess>
#include <QRegularExpression>
#include <QScopedPointer>
#include <QTemporaryDir>
#include <QtTest>

// The program itself, driven from outside by mouse and keyboard, in a folder as an installation
// has it: program file and "language", nothing else.
class tst_Program : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void firstRun();
    void renameByMouseAndKeyboard();
    void foldersThatCannotBeMade();
    void settingsFullOfJunk();
    void withoutLanguageFolder();
    void withoutOpenGL();

private:
    void start();
    void quit();
    QStringList windows() const;
    QString mainWindow() const { return windows().value(0); }
    QStringList log() const;

    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<FleetProcess> fleet;
    QProcess program;
};

namespace {

QString output(const QString &command, const QStringList &arguments)
{
    QProcess process;
    process.start(command, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

// Those that are not empty.
QStringList linesOf(const QString &text)
{
    QStringList lines = text.split('\n');
    lines.removeAll(QString());
    return lines;
}

void xdotool(const QStringList &arguments)
{
    QCOMPARE(QProcess::execute("xdotool", arguments), 0);
}

void clickAt(const QString &window, QPoint point)
{
    xdotool({"mousemove", "--window", window, QString::number(point.x()),
        QString::number(point.y()), "click", "1"});
}

QSize sizeOf(const QString &window)
{
    const QRegularExpression geometry("WIDTH=(\\d+)\\s+HEIGHT=(\\d+)");
    const auto match = geometry.match(output("xdotool", {"getwindowgeometry", "--shell", window}));
    return QSize(match.captured(1).toInt(), match.captured(2).toInt());
}

const int secondsAtMost = 60000;

}

void tst_Program::init()
{
    fleet.reset(new FleetProcess("cam-a", 3, "10.77.0.11"));
    fleet->setScenario({{"cameras", QJsonArray{FleetProcess::unhurried()}}});
    QVERIFY(fleet->start());
    program.setProcessEnvironment(QProcessEnvironment::systemEnvironment());
    folder.reset(new QTemporaryDir);
    const QFileInfo built(QStringLiteral(VORLYN_PROGRAM));
    QVERIFY(QFile::copy(built.filePath(), folder->filePath(built.fileName())));
    QVERIFY(QDir(folder->path()).mkdir("language"));
    for (const char *name : {"/language/en.txt", "/language/cn.txt"})
        QVERIFY(QFile::copy(built.path() + name, folder->path() + name));
}

void tst_Program::cleanup()
{
    program.kill();
    program.waitForFinished();
    if (QTest::currentTestFailed())
        qInfo("%s", program.readAllStandardError().constData());
    QVERIFY2(fleet->stop(), fleet->errors());
}

// Returns when the first search has ended and the main window alone is left.
void tst_Program::start()
{
    program.start(folder->filePath("VorlynIPTool"), QStringList());
    QVERIFY(program.waitForStarted());
    QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 2, secondsAtMost);
    QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 1, secondsAtMost);
}

void tst_Program::quit()
{
    xdotool({"windowactivate", "--sync", mainWindow(), "key", "alt+F4"});
    QVERIFY(program.waitForFinished(secondsAtMost));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0); // no leak either, where leaks are looked for
}

QStringList tst_Program::windows() const
{
    return linesOf(output("xdotool", {"search", "--onlyvisible", "--class", "VorlynIPTool"}));
}

QStringList tst_Program::log() const
{
    const QDir logs(folder->filePath("log"));
    const QStringList names = logs.entryList({"*.clog"}, QDir::Files);
    if (names.size() != 1)
        return QStringList();
    QFile file(logs.filePath(names.first()));
    if (!file.open(QIODevice::ReadOnly))
        return QStringList();
    return linesOf(QString::fromUtf8(file.readAll()));
}

void tst_Program::firstRun()
{
    start();
    const QSize size = sizeOf(mainWindow());
    QCOMPARE(size.width(), 1600); // the whole screen
    QVERIFY2(size.height() > 900, qPrintable(QString::number(size.height())));
    quit();

    const QVariantMap defaults = {{"hardware", "1"}, {"langage", "cn"}, {"search seconds", "3"}};
    QCOMPARE(SettingsFile(folder->path()).read(), defaults);
    QCOMPARE(fleet->requests("search").size(), 3);

    const QStringList lines = log();
    QVERIFY(lines.size() > 2);
    const QRegularExpression form(
        "^\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\]  [A-Za-z0-9_.]*:\\d+  .*$");
    // The player's errors have a text behind their number, on a line of its own.
    const QRegularExpression errorNumber("error = -\\d+$");
    for (int i = 0; i < lines.size(); ++i) {
        const bool isText = i > 0 && errorNumber.match(lines[i - 1]).hasMatch();
        QVERIFY2(isText || form.match(lines[i]).hasMatch(), qPrintable(lines[i]));
    }
    QVERIFY2(lines[0].endsWith("  install en language"), qPrintable(lines[0]));
    QVERIFY2(lines[1].endsWith("  WSA(514, 514) = 0"), qPrintable(lines[1]));
    const char *somewhere[] = {"bind socket port 0 -> 0", "bind socket port 5999 -> 0",
        "setsockopt ZR_IP_ADD_MEMBERSHIP 239.255.255.250, 10.77.0.1 -> 0",
        "setsockopt SO_SNDTIMEO 1:0 -> 0"};
    for (const char *line : somewhere)
        QVERIFY2(!lines.filter(line).isEmpty(), line);
    QCOMPARE(lines.filter("  recv {").size(), 3);

    // What the log has goes to the console too; and Qt complains there of attributes set late.
    const QByteArray console = program.readAllStandardError();
    QVERIFY2(console.contains("WSA(514, 514) = 0"), console);
    QVERIFY2(!console.contains("must be set before"), console);
}

void tst_Program::renameByMouseAndKeyboard()
{
    SettingsFile(folder->path()).write({{"langage", "en"}, {"search seconds", 1}});
    start();
    const QSize size = sizeOf(mainWindow());
    const int panelTop = size.height() - 401;
    clickAt(mainWindow(), {size.width() - 250, 27 + 30 + 45}); // the MAC in the second row
    clickAt(mainWindow(), {139 + 75, panelTop + 52 + 12}); // the name
    xdotool({"key", "ctrl+a"});
    xdotool({"type", "--delay", "20", "crib 7"});
    clickAt(mainWindow(), {298 + 65, panelTop + 52 + 12}); // Set
    QTRY_COMPARE_WITH_TIMEOUT(fleet->requests("SetName").size(), 1, secondsAtMost);
    const QJsonObject request = fleet->requests("SetName").first();
    QCOMPARE(request["name"].toString(), QString("crib 7"));
    QCOMPARE(fleet->events("request").last()["ip"].toString(), QString("10.77.0.12"));
    QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 1, secondsAtMost);
    quit();
}

void tst_Program::foldersThatCannotBeMade()
{
    for (const char *name : {"configure", "log"}) {
        QFile inTheWay(folder->filePath(name));
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    }
    start();
    QCOMPARE(fleet->requests("search").size(), 3);
    quit();
    QVERIFY(QFileInfo(folder->filePath("configure")).isFile());
    QVERIFY(QFileInfo(folder->filePath("log")).isFile());
}

void tst_Program::settingsFullOfJunk()
{
    QVERIFY(QDir(folder->path()).mkdir("configure"));
    QFile file(folder->filePath("configure/configure.ini"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QByteArray junk("[General\nlangage=\x01\xff\xfe\nsearch%20seconds=many\n%%%=\\x\n=\n[");
    for (int i = 0; i < 20000; ++i)
        junk += char(i * 7919 >> 3);
    file.write(junk);
    file.close();
    start();
    QCOMPARE(fleet->requests("search").size(), 3);
    quit();
}

void tst_Program::withoutLanguageFolder()
{
    QVERIFY(QDir(folder->filePath("language")).removeRecursively());
    start();
    quit();
}

void tst_Program::withoutOpenGL()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_XCB_GL_INTEGRATION", "none");
    program.setProcessEnvironment(environment);
    start();
    QVERIFY(!log().filter("WSA(").isEmpty());
    quit();
}

QTEST_GUILESS_MAIN(tst_Program)
#include "tst_Program.moc"
