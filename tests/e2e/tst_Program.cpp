#include "FleetProcess.h"
#include "OpenGLDriver.h"
#include "ProgramFolder.h"
#include "ReadOnlyFolder.h"
#include "SettingsFile.h"
#include "TestNetwork.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QScopedPointer>
#include <QtTest>

// The program itself, driven from outside by mouse and keyboard.
class tst_Program : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void firstRun();
    void renameByMouseAndKeyboard();
    void foldersThatCannotBeMade();
    void readOnlyFolder();
    void settingsFullOfJunk();
    void withoutLanguageFolder();
    void withoutOpenGL();
    void withoutNetwork();

private:
    QScopedPointer<ProgramFolder> program;
    QScopedPointer<FleetProcess> fleet;
};

void tst_Program::init()
{
    fleet.reset(new FleetProcess("cam-a", 3, "10.77.0.11"));
    fleet->setScenario({{"cameras", QJsonArray{FleetProcess::unhurried()}}});
    QVERIFY(fleet->start());
    program.reset(new ProgramFolder);
    QVERIFY(program->isValid());
}

void tst_Program::cleanup()
{
    program.reset();
    QVERIFY2(fleet->stop(), fleet->errors());
}

void tst_Program::firstRun()
{
    QVERIFY(program->start());
    const QSize size = Hands::sizeOf(program->mainWindow());
    QCOMPARE(size.width(), 1600); // the whole screen
    QVERIFY2(size.height() > 900, qPrintable(QString::number(size.height())));
    QVERIFY(program->quit());

    const QVariantMap defaults = {{"hardware", "1"}, {"langage", "cn"}, {"search seconds", "3"}};
    QCOMPARE(SettingsFile(program->path()).read(), defaults);
    QCOMPARE(fleet->requests("search").size(), 3);

    const QStringList lines = program->log();
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
    const QByteArray console = program->process.readAllStandardError();
    QVERIFY2(console.contains("WSA(514, 514) = 0"), console);
    QVERIFY2(!console.contains("must be set before"), console);
}

void tst_Program::renameByMouseAndKeyboard()
{
    SettingsFile(program->path())
        .write({{"langage", "en"}, {"search seconds", ProgramFolder::searchSeconds}});
    QVERIFY(program->start());
    const QSize size = Hands::sizeOf(program->mainWindow());
    const int panelTop = size.height() - 401;
    const QString window = program->mainWindow();
    const QPoint macOfSecondRow(size.width() - 250, 27 + 30 + 45);
    const QPoint name(139 + 75, panelTop + 52 + 12);
    const QPoint set(298 + 65, panelTop + 52 + 12);
    QVERIFY(Hands::clickAt(window, macOfSecondRow));
    QVERIFY(Hands::clickAt(window, name));
    QVERIFY(Hands::xdotool({"key", "ctrl+a", "type", "--delay", "20", "crib 7"}));
    QVERIFY(Hands::clickAt(window, set));
    QTRY_COMPARE_WITH_TIMEOUT(fleet->requests("SetName").size(), 1, ProgramFolder::patience);
    const QJsonObject request = fleet->requests("SetName").first();
    QCOMPARE(request["name"].toString(), QString("crib 7"));
    QCOMPARE(fleet->events("request").last()["ip"].toString(), QString("10.77.0.12"));
    QVERIFY(program->awaitWindows(1));
    QVERIFY(program->quit());
}

void tst_Program::foldersThatCannotBeMade()
{
    for (const char *name : {"configure", "log"}) {
        QFile inTheWay(program->filePath(name));
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    }
    QVERIFY(program->start());
    QCOMPARE(fleet->requests("search").size(), 3);
    QVERIFY(program->quit());
    QVERIFY(QFileInfo(program->filePath("configure")).isFile());
    QVERIFY(QFileInfo(program->filePath("log")).isFile());
}

void tst_Program::readOnlyFolder()
{
    const ReadOnlyFolder folder(program->path());
    QVERIFY(folder.isMounted());
    QVERIFY(!QDir(program->path()).mkdir("new"));
    QVERIFY(program->start());
    QCOMPARE(fleet->requests("search").size(), 3);
    QVERIFY(program->quit());
    const QString file = QFileInfo(program->programFile()).fileName();
    const QDir::Filters all = QDir::NoDotAndDotDot | QDir::AllEntries;
    QCOMPARE(
        QDir(program->path()).entryList(all, QDir::DirsFirst), QStringList({"language", file}));
}

void tst_Program::settingsFullOfJunk()
{
    QVERIFY(QDir(program->path()).mkdir("configure"));
    QFile file(program->filePath("configure/configure.ini"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QByteArray junk("[General\nlangage=\x01\xff\xfe\nsearch%20seconds=many\n%%%=\\x\n=\n[");
    for (int i = 0; i < 20000; ++i)
        junk += char(i * 7919 >> 3);
    file.write(junk);
    file.close();
    QVERIFY(program->start());
    QCOMPARE(fleet->requests("search").size(), 3);
    QVERIFY(program->quit());
}

void tst_Program::withoutLanguageFolder()
{
    QVERIFY(QDir(program->filePath("language")).removeRecursively());
    QVERIFY(program->start());
    QVERIFY(program->quit());
}

void tst_Program::withoutOpenGL()
{
    program->process.setProcessEnvironment(environmentWithoutOpenGL());
    QVERIFY(program->start());
    QVERIFY(!program->log().filter("WSA(").isEmpty());
    QVERIFY(program->quit());
}

// Nor sound or a printer, which a test has only if it asks: the window comes, and waits for its
// user.
void tst_Program::withoutNetwork()
{
    QVERIFY(TestNetwork::run("ip link set veth-a down"));
    QVERIFY(TestNetwork::run("ip link set veth-b down"));
    const auto end = qScopeGuard([] {
        TestNetwork::run("ip link set veth-a up");
        TestNetwork::run("ip link set veth-b up");
    });
    QVERIFY(program->start());
    QVERIFY(program->quit());
    QVERIFY(program->log().filter("ZR_IP_ADD_MEMBERSHIP").filter("-> 0").isEmpty());
    QCOMPARE(fleet->requests("search").size(), 0);
}

QTEST_GUILESS_MAIN(tst_Program)
#include "tst_Program.moc"
