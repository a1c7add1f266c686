#include "BenchWindow.h"

#include "CVTableWidget.h"
#include "FleetProcess.h"
#include "MediaButton.h"
#include "ProgramFolder.h"
#include "SettingsFile.h"
#include "ThisProcess.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "WindowHeaderWidget.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopedPointer>
#include <QTabWidget>
#include <QtTest>

// The bench's program itself, driven from outside by mouse and keyboard.
class tst_Bench : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void firstRun();
    void manualTest();
    void automaticRun();
    void quitDuringARun();
    void folderOfChineseName();

private:
    bool start();
    bool click(const QPoint &place) const { return Hands::clickAt(window, place); }
    bool press(const char *button) const { return click(places.value(button)); }
    // The one dialog that is to come gets keys, and goes.
    bool answer(const QStringList &keys) const;
    QByteArray savedLog(const QString &name);
    QStringList files() const;

    QMap<QString, QPoint> places; // of buttons, in the window as it opens
    QPoint secondRow;
    QPoint networkTab;
    QScopedPointer<ProgramFolder> program;
    QString window; // the program's
    QScopedPointer<FleetProcess> fleet;
};

// The same window in this process tells where everything is.
void tst_Bench::initTestCase()
{
    program.reset(new ProgramFolder("VorlynBench"));
    ZRLocalize::setLanguageFolder(program->filePath("language"));
    QVERIFY(ZRLocalize::loadLanguage("en"));
    SettingsFile().write({{"search seconds", 1}});
    VorlynSDK::createInstance();
    {
        fleet.reset(new FleetProcess("cam-a", 3, "10.77.0.11"));
        fleet->setScenario({{"cameras", QJsonArray{FleetProcess::unhurried()}}});
        QVERIFY(fleet->start());
        BenchWindow window;
        QTRY_COMPARE(window.width(), 1600); // the whole screen
        const auto place = [&](const QWidget *widget, const QPoint &point) {
            return widget->mapTo(&window, point);
        };
        for (const QPushButton *button : window.findChildren<QPushButton *>())
            places[button->objectName()] = place(button, button->rect().center());
        const auto *search = window.findChild<WindowHeaderWidget *>("header")->searchButton;
        places["searchButton"] = place(search, search->rect().center());
        const auto *devices = window.findChild<VorlynDevicesWidget *>("devicesWidget");
        const QWidget *cell = devices->tableWidget()->cellWidget(1, 2);
        QVERIFY(cell);
        secondRow = place(cell, cell->rect().center());
        const auto *bar = window.findChild<QTabWidget *>("tabs")->tabBar();
        networkTab = place(bar, bar->tabRect(3).center());
    }
    VorlynSDK::destroyInstance();
    QVERIFY(fleet->stop());
}

void tst_Bench::init()
{
    fleet.reset(new FleetProcess("cam-a", 3, "10.77.0.11"));
    const QJsonObject silentSd = {
        {"camera", 3}, {"rules", QJsonArray{QJsonObject{{"on", "GetSD"}, {"silent", true}}}}};
    QJsonArray cameras = {silentSd, FleetProcess::unhurried()};
    // Beside pictures that the processor draws, Wine's file dialog gets no input.
    const QByteArrayList saves = {"manualTest", "automaticRun", "folderOfChineseName"};
    if (ThisProcess::inWine() && saves.contains(QTest::currentTestFunction()))
        cameras.append(QJsonObject{{"camera", "all"}, {"fields", QJsonObject{{"rtsppath1", ""}}}});
    fleet->setScenario({{"cameras", cameras}});
    QVERIFY(fleet->start());
    program.reset(new ProgramFolder("VorlynBench"));
    QVERIFY(program->isValid());
    SettingsFile(program->path())
        .write({{"langage", "en"}, {"search seconds", ProgramFolder::searchSeconds}});
}

void tst_Bench::cleanup()
{
    program.reset();
    QVERIFY2(fleet->stop(), fleet->errors());
}

bool tst_Bench::start()
{
    const bool started = program->start();
    window = program->mainWindow();
    return started && !window.isEmpty();
}

bool tst_Bench::answer(const QStringList &keys) const
{
    if (!program->awaitWindows(2))
        return false;
    QStringList others = program->windows();
    others.removeAll(window);
    return Hands::xdotool(QStringList{"windowactivate", "--sync", others.value(0)} + keys);
}

// Saves the log in a file, whose name is relative to the program's folder.
QByteArray tst_Bench::savedLog(const QString &name)
{
    const QString path =
        QDir::toNativeSeparators(QDir::cleanPath(QDir(program->path()).filePath(name)));
    QStringList keys = {"key", "Home", "key", "shift+End", "type", "--delay", "20", "--args", "1",
        path, "key", "Return"};
    // Wine's dialog lets a name have the chosen kind's suffix only; the kinds are behind the name.
    if (ThisProcess::inWine() && name.endsWith(".csv"))
        keys = QStringList{"key", "Tab", "key", "End", "key", "shift+Tab"} + keys;
    if (!press("saveLogButton") || !answer(keys) || !program->awaitWindows(1))
        return QByteArray();
    QFile file(path); // comes all at once, behind the dialog's end
    if (!QTest::qWaitFor([&] { return file.exists(); }, 20000))
        qWarning("no file %s", qPrintable(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// All of the program's folder, the program's log without its time.
QStringList tst_Bench::files() const
{
    const QDir folder(program->path());
    QStringList names;
    QDirIterator file(
        folder.path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (file.hasNext())
        names.append(folder.relativeFilePath(file.next()));
    names.replaceInStrings(QRegularExpression("^log/[^/]+\\.clog$"), "log/*.clog");
    names.sort();
    return names;
}

void tst_Bench::firstRun()
{
    SettingsFile(program->path()).remove();
    QVERIFY(start());
    QVERIFY(program->quit());
    const QVariantMap defaults = {{"hardware", "1"}, {"langage", "cn"}, {"search seconds", "3"}};
    QCOMPARE(SettingsFile(program->path()).read(), defaults);
    QCOMPARE(fleet->requests("search").size(), 3);
    const QStringList lines = program->log();
    QVERIFY2(lines.value(0).endsWith("  install en language"), qPrintable(lines.value(0)));
    QVERIFY2(lines.value(1).endsWith("  WSA(514, 514) = 0"), qPrintable(lines.value(1)));
    const QByteArray console = program->process.readAllStandardError();
    QVERIFY2(!console.contains("must be set before"), console);
}

// A search, another camera, one test that the operator passes and one that he fails, and the log
// as a file for a spreadsheet.
void tst_Bench::manualTest()
{
    QVERIFY(start());
    QVERIFY(press("searchButton"));
    QVERIFY(program->awaitWindows(2) && program->awaitWindows(1));
    QCOMPARE(fleet->requests("search").size(), 6);
    QVERIFY(click(secondRow));
    QVERIFY(press("manualTestStartButton"));
    for (const char *key : {"Return", "Escape"}) {
        QVERIFY(press("speakerButton"));
        QVERIFY(answer({"key", key}));
        QVERIFY(program->awaitWindows(1));
    }
    QCOMPARE(fleet->requests("testMicrophone").size(), 2);
    QCOMPARE(fleet->events("request").last()["ip"].toString(), QString("10.77.0.12"));

    const QList<QByteArray> rows = savedLog("log.csv").split('\n');
    QCOMPARE(rows.value(0), QByteArray("\xef\xbb\xbf\"No.\",\"Kind\",\"Test Log\"\r"));
    QCOMPARE(rows.value(1),
        QByteArray("\"1\",\"Heading\",\"************************Start Manual "
                   "Test***********************\"\r"));
    QCOMPARE(
        rows.value(3), QByteArray("\"3\",\"Information or Pass\",\"Mac : 02:56:4C:00:00:02\"\r"));
    QCOMPARE(rows.value(4),
        QByteArray("\"4\",\"Information or Pass\",\"Speaker Test Result : Pass\"\r"));
    QCOMPARE(rows.value(5), QByteArray("\"5\",\"Fail\",\"Speaker Test Result : Fail\"\r"));
    QCOMPARE(rows.size(), 7); // behind the last row nothing
    QVERIFY(program->quit());
}

// Started by its key. Meanwhile neither another tab nor a search can be had. The test log becomes a
// file when it is saved, and not before.
void tst_Bench::automaticRun()
{
    QStringList expected = {QFileInfo(program->programFile()).fileName(), "configure/configure.ini",
        "language/cn.txt", "language/en.txt"};
    QCOMPARE(files(), expected);
    QVERIFY(start());
    const int before = fleet->requests("search").size();
    QVERIFY(Hands::xdotool({"windowactivate", "--sync", window, "key", "F5"}));
    // The Wi-Fi scan's dialog, which goes by itself, and then the first question.
    const auto asked = [&] { return !fleet->requests("testMicrophone").isEmpty(); };
    QTRY_VERIFY_WITH_TIMEOUT(asked(), ProgramFolder::patience);
    QVERIFY(program->awaitWindows(2));
    QVERIFY(click(networkTab));
    QVERIFY(press("searchButton"));
    QCOMPARE(fleet->requests("search").size(), before);
    const char *const methods[] = {
        "testMicrophone", "SetIRcut", "SetIRcut", "SetColor", "SetColor"}; // one question for each
    int questions = 0;
    for (const char *method : methods) {
        const auto told = [&] {
            return fleet->requests("testMicrophone").size() + fleet->requests("SetIRcut").size()
                + fleet->requests("SetColor").size();
        };
        ++questions;
        QTRY_COMPARE_WITH_TIMEOUT(told(), questions, ProgramFolder::patience);
        QVERIFY(!fleet->requests(method).isEmpty());
        QVERIFY(answer({"key", "Return"}));
    }
    QVERIFY(program->awaitWindows(1));
    // Out of the lock the search works again, and so does the log's button. The lock goes a moment
    // after the last question.
    const auto searches = [&] {
        return press("searchButton") && fleet->requests("search").size() > before;
    };
    QTRY_VERIFY_WITH_TIMEOUT(searches(), ProgramFolder::patience);
    QVERIFY(program->awaitWindows(2) && program->awaitWindows(1));
    expected.append("log/*.clog");
    QCOMPARE(files(), expected);
    const QByteArray log = savedLog("saved.txt");
    expected.append("saved.txt");
    QCOMPARE(files(), expected);
    QVERIFY2(log.contains("End Auto Test"), log);
    QVERIFY2(log.contains("Mac : 02:56:4C:00:00:01\r\n"), log);
    QVERIFY(program->quit());
}

void tst_Bench::quitDuringARun()
{
    QVERIFY(start());
    QVERIFY(click(secondRow + QPoint(0, 30))); // whose SD card is silent
    QVERIFY(press("startTestButton"));
    QTRY_COMPARE_WITH_TIMEOUT(fleet->requests("GetSD").size(), 1, ProgramFolder::patience);
    QVERIFY(program->quit());
}

// Settings, language and log are there, and the language file has the line ends of Windows.
void tst_Bench::folderOfChineseName()
{
    program.reset(new ProgramFolder("VorlynBench", QString::fromUtf8("用户/生产 1")));
    QVERIFY(program->isValid());
    SettingsFile(program->path())
        .write({{"search seconds", ProgramFolder::searchSeconds}}); // Chinese, as at first
    QFile file(program->filePath("language/cn.txt"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QByteArray texts = file.readAll();
    QVERIFY(!texts.contains('\r'));
    QVERIFY(file.resize(0));
    file.write(QByteArray(texts).replace("\n", "\r\n"));
    file.close();

    QVERIFY(start());
    QVERIFY(press("manualTestStartButton"));
    const QList<QByteArray> rows = savedLog("../../log.csv").split('\n');
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    const auto text = [](const char *key) { return ZRLocalize::translate(key).toUtf8(); };
    QVERIFY(text("Log Kind") != "Kind");
    QCOMPARE(rows.value(0),
        "\xef\xbb\xbf\"" + text("No.") + "\",\"" + text("Log Kind") + "\",\"" + text("Test Log")
            + "\"\r");
    QVERIFY(program->quit());
    QCOMPARE(SettingsFile(program->path()).read()["langage"].toString(), QString("cn"));
    QCOMPARE(program->log().filter("  recv {").size(), 3);
}

QTEST_MAIN(tst_Bench)
#include "tst_Bench.moc"
