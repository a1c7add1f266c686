#include "CameraBench.h"
#include "Devices.h"
#include "OffThread.h"
#include "OperatorAnswers.h"
#include "TestLog.h"
#include "TestLogColors.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynSDK.h"
#include "WiFiInfoWidget.h"
#include "ZRLabel.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QtTest>

#include <limits>
#include <memory>

using namespace TestLog;

namespace {
const char versionTitle[] = "Auto Test App Version Result";
const char sdCardTitle[] = "Auto Test SDCard Result";

struct Panel : VorlynDeviceMPToolWidget {
    Panel() : VorlynDeviceMPToolWidget(nullptr) { }
    using VorlynDeviceMPToolWidget::logEdit;
    using VorlynDeviceMPToolWidget::versionLabel;
    using VorlynDeviceMPToolWidget::wifiInfoWidget;
};

VorlynDevice camera()
{
    VorlynDevice device = makeDevices({"02:56:4C:00:00:01"}).first();
    device.setName("Nursery");
    device.setFunctionId("PAC,WIFI");
    device.setValue("appVersion", "1.2.3.7");
    return device;
}

// The eight tests that the operator judges; without a method nothing is sent.
const struct {
    const char *slot;
    const char *title;
    const char *method;
    const char *key;
    const char *value;
    const char *gate; // what the record must have
} judged[] = {
    {"testSpeaker", "Test Speaker Result", "testMicrophone", "", "", "mac"},
    {"testMicrophone", "Test Microphone Result", "testMicrophone", "", "", "mac"},
    {"testIRCutDay", "Test IR-cut Day Result", "SetIRcut", "ircut", "day", "mac"},
    {"testIRCutNight", "Test IR-cut Night Result", "SetIRcut", "ircut", "night", "mac"},
    {"testIRCutAuto", "Test IR-cut Auto Result", "SetIRcut", "ircut", "auto", "mac"},
    {"testWhiteLightOn", "Test White Light On Result", "SetColor", "color", "on", "PAC"},
    {"testWhiteLightOff", "Test White Light Off Result", "SetColor", "color", "off", "PAC"},
    {"testStream", "Test Video Audio Result", "", "", "", ""},
};
}

class tst_VorlynDeviceMPToolTests : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup() { panel.reset(); }

    void colors();
    void judgement_data();
    void judgement();
    void command_data();
    void command();
    void gate_data();
    void gate();
    void functionWithoutMac_data();
    void functionWithoutMac();
    void crossesToTheGuiThread_data();
    void crossesToTheGuiThread();
    void blocksUntilTheGuiThreadIsFree_data();
    void blocksUntilTheGuiThreadIsFree();
    void marks_data();
    void marks();
    void marksDoNotBlock_data();
    void marksDoNotBlock();
    void oddNames_data();
    void oddNames();
    void version_data();
    void version();
    void sdCard_data();
    void sdCard();
    void sdCardRequest();
    void sdCardWithoutReply();
    void sdCardWithoutDevice();
    void wiFi_data();
    void wiFi();
    void wiFiReply_data();
    void wiFiReply();
    void wiFiWithoutReply();
    void wiFiNotSupported();

private:
    // On this thread, whichever it is.
    void call(const char *slot)
    {
        QMetaObject::invokeMethod(panel.get(), slot, Qt::DirectConnection);
    }
    QStringList log() const { return linesOf(*panel->logEdit); }
    QStringList networks() const { return networksOf(*panel->wifiInfoWidget); }

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<Panel> panel;
};

void tst_VorlynDeviceMPToolTests::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

void tst_VorlynDeviceMPToolTests::init()
{
    QVERIFY(ZRLocalize::loadLanguage("en"));
    panel = std::make_unique<Panel>();
    panel->setDevice(camera());
    panel->show();
}

// Of which linesOf() leaves out how opaque they are.
void tst_VorlynDeviceMPToolTests::colors()
{
    QCOMPARE(bannerColor.name(QColor::HexArgb), QString("#ff2020e0"));
    QCOMPARE(passColor.name(QColor::HexArgb), QString("#ff000000"));
    QCOMPARE(failureColor.name(QColor::HexArgb), QString("#ffff0000"));
}

void tst_VorlynDeviceMPToolTests::judgement_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QByteArray>("title");
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<QString>("language");
    const struct {
        const char *name;
        Answer answer;
    } answers[] = {{"pass", Answer::Pass}, {"failure", Answer::Failure}, {"Esc", Answer::Esc},
        {"closed", Answer::Close}};
    for (const auto &test : judged) {
        for (const auto &answer : answers) {
            for (const char *language : {"en", "cn"})
                QTest::addRow("%s %s %s", test.slot, answer.name, language) << QByteArray(
                    test.slot) << QByteArray(test.title) << answer.answer << QString(language);
        }
    }
}

void tst_VorlynDeviceMPToolTests::judgement()
{
    QFETCH(QByteArray, slot);
    QFETCH(QByteArray, title);
    QFETCH(Answer, answer);
    QFETCH(QString, language);
    QVERIFY(ZRLocalize::switchLanguage(language));
    QVERIFY(text("Pass") != text("Failure"));
    const OperatorAnswers answers({answer});
    call(slot);
    QCOMPARE(answers.questions(), QStringList(text(title)));
    QCOMPARE(answers.buttons(), QStringList({text("Pass"), text("Failure")}));
    QCOMPARE(log(), QStringList(result(title, answer == Answer::Pass)));
    if (slot != "testStream")
        QVERIFY(!bench->request().isEmpty());
}

void tst_VorlynDeviceMPToolTests::command_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    for (const auto &test : judged)
        QTest::newRow(test.slot) << QByteArray(test.slot) << QString(test.method)
                                 << QString(test.key) << QString(test.value);
}

void tst_VorlynDeviceMPToolTests::command()
{
    QFETCH(QByteArray, slot);
    QFETCH(QString, method);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QJsonObject request;
    OperatorAnswers answers({Answer::Pass});
    answers.onDialog = [&](QWidget &) { // the camera has it while the operator looks
        if (!method.isEmpty())
            request = bench->request();
    };
    call(slot);
    QVERIFY(bench->isQuiet()); // one command, and nobody waits for a reply
    QCOMPARE(request["method"].toString(), method);
    if (method.isEmpty())
        return;
    QCOMPARE(CameraBench::targets(request), QStringList("cam0"));
    for (const char *envelope : {"id", "method", "srcid", "destarray"})
        QVERIFY(!request.take(envelope).isUndefined());
    QCOMPARE(request, key.isEmpty() ? QJsonObject() : (QJsonObject{{key, value}}));
}

void tst_VorlynDeviceMPToolTests::gate_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QByteArray>("gate");
    for (const auto &test : judged)
        QTest::newRow(test.slot) << QByteArray(test.slot) << QByteArray(test.gate);
}

void tst_VorlynDeviceMPToolTests::gate()
{
    QFETCH(QByteArray, slot);
    QFETCH(QByteArray, gate);
    VorlynDevice device = camera();
    if (gate == "PAC")
        device.setFunctionId("WIFI");
    else
        device.setMac("");
    panel->setDevice(device);
    const OperatorAnswers answers({Answer::Pass});
    call(slot);
    QCOMPARE(answers.questions().size(), gate.isEmpty() ? 1 : 0);
    QCOMPARE(log().size(), gate.isEmpty() ? 1 : 0);
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolTests::functionWithoutMac_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("color");
    QTest::addColumn<QString>("question");
    const char *const rows[][4] = {
        {"testWhiteLightOn", "SetColor", "on", "Test White Light On Result"},
        {"testWhiteLightOff", "SetColor", "off", "Test White Light Off Result"},
        {"loadWiFiInfo", "WifiScan", "", "Loading WiFi Info"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QByteArray(row[0]) << QString(row[1]) << QString(row[2])
                              << QString(row[3]);
}

// The lights and the scan ask for the function alone.
void tst_VorlynDeviceMPToolTests::functionWithoutMac()
{
    QFETCH(QByteArray, slot);
    QFETCH(QString, question);
    VorlynDevice device = camera();
    device.setMac("");
    panel->setDevice(device);
    QJsonObject request;
    OperatorAnswers answers({Answer::Esc});
    answers.onDialog = [&](QWidget &) { request = bench->request(); };
    call(slot);
    QCOMPARE(answers.questions(), QStringList(text(question.toLatin1())));
    QTEST(request["method"].toString(), "method");
    QTEST(request["color"].toString(), "color");
    QCOMPARE(CameraBench::targets(request), QStringList("cam0"));
    QCOMPARE(log().size(), slot == "loadWiFiInfo" ? 0 : 1);
}

void tst_VorlynDeviceMPToolTests::crossesToTheGuiThread_data()
{
    command_data();
}

void tst_VorlynDeviceMPToolTests::crossesToTheGuiThread()
{
    QFETCH(QByteArray, slot);
    QFETCH(QString, method);
    bool waited = false;
    OperatorAnswers answers({Answer::Failure});
    OffThread worker([this, slot] { call(slot); });
    answers.onDialog = [&](QWidget &dialog) {
        QCOMPARE(dialog.thread(), panel->thread());
        QTest::qWait(CameraPeer::noTimeLost);
        waited = !worker.isDone();
    };
    QTRY_VERIFY_WITH_TIMEOUT(worker.isDone(), 20000);
    QVERIFY(waited);
    QCOMPARE(answers.questions().size(), 1);
    QCOMPARE(log().size(), 1); // it stood there before the worker went on
    if (!method.isEmpty())
        QCOMPARE(bench->request()["method"].toString(), method);
    QVERIFY(bench->isQuiet()); // and not a second time
}

void tst_VorlynDeviceMPToolTests::blocksUntilTheGuiThreadIsFree_data()
{
    QTest::addColumn<QByteArray>("slot");
    for (const auto &test : judged)
        QTest::newRow(test.slot) << QByteArray(test.slot);
    for (const char *slot : {"autoTestAppVersion", "loadWiFiInfo"})
        QTest::newRow(slot) << QByteArray(slot);
}

// With a record that lets every slot pass silently but for two, so that all end by themselves.
void tst_VorlynDeviceMPToolTests::blocksUntilTheGuiThreadIsFree()
{
    QFETCH(QByteArray, slot);
    panel->setDevice(VorlynDevice());
    const OperatorAnswers answers({Answer::Pass});
    OffThread worker([this, slot] { call(slot); });
    QThread::msleep(CameraPeer::noTimeLost);
    QVERIFY(!worker.isDone());
    QTRY_VERIFY_WITH_TIMEOUT(worker.isDone(), 20000);
}

void tst_VorlynDeviceMPToolTests::marks_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("startTitle");
    QTest::addColumn<QByteArray>("stop");
    QTest::addColumn<QByteArray>("stopTitle");
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "cn"}) {
        for (const char *kind : {"Auto", "Manual"}) {
            const QByteArray title(kind);
            const QByteArray slot = title.toLower();
            QTest::addRow("%s %s", kind, language)
                << slot + "TestStart"
                << "Start " + title + " Test" << slot + "TestStop"
                << "End " + title + " Test" << QString(language);
        }
    }
}

void tst_VorlynDeviceMPToolTests::marks()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, startTitle);
    QFETCH(QByteArray, stop);
    QFETCH(QByteArray, stopTitle);
    QFETCH(QString, language);
    QVERIFY(ZRLocalize::switchLanguage(language));
    call(start);
    call(stop);
    QCOMPARE(log(),
        QStringList({bannerLine(startTitle), infoLine("Name", "Nursery"),
            infoLine("Mac", "02:56:4C:00:00:01"), bannerLine(stopTitle)}));
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolTests::marksDoNotBlock_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<int>("lines");
    QTest::newRow("autoTestStart") << QByteArray("autoTestStart") << 3;
    QTest::newRow("autoTestStop") << QByteArray("autoTestStop") << 1;
    QTest::newRow("manualTestStart") << QByteArray("manualTestStart") << 3;
    QTest::newRow("manualTestStop") << QByteArray("manualTestStop") << 1;
}

void tst_VorlynDeviceMPToolTests::marksDoNotBlock()
{
    QFETCH(QByteArray, slot);
    QFETCH(int, lines);
    {
        const OffThread worker([this, slot] { call(slot); });
        QVERIFY(worker.isDoneWithoutEvents());
    }
    QVERIFY(log().isEmpty()); // what it wrote is on its way
    QTRY_COMPARE(log().size(), lines);
}

void tst_VorlynDeviceMPToolTests::oddNames_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"%1", "%2 %1", "100%", "%L2", "", "a : b"})
        QTest::newRow(name) << QString(name);
}

// What a device is called is no part of the line's form.
void tst_VorlynDeviceMPToolTests::oddNames()
{
    QFETCH(QString, name);
    VorlynDevice device = camera();
    device.setName(name);
    device.setMac("%1" + name);
    device.setValue("appVersion", name + ".4");
    panel->setDevice(device);
    panel->manualTestStart();
    panel->autoTestAppVersion();
    QCOMPARE(log().mid(1),
        QStringList({infoLine("Name", name), infoLine("Mac", "%1" + name),
            result(versionTitle, name.isEmpty(), name)}));
}

void tst_VorlynDeviceMPToolTests::version_data()
{
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("appVersion");
    QTest::addColumn<bool>("passes");
    QTest::addColumn<QString>("shown");
    const struct {
        const char *name;
        const char *expected;
        const char *appVersion;
        bool passes;
        const char *shown;
    } rows[] = {
        {"equal less the build", "1.2.3", "1.2.3.7", true, "1.2.3"},
        {"with the build", "1.2.3.7", "1.2.3.7", false, "1.2.3"},
        {"other", "1.2.4", "1.2.3.7", false, "1.2.3"},
        {"no dot", "7", "7", true, "7"},
        {"case counts", "V1", "v1.7", false, "v1"},
        {"spaces count", "1.2 ", "1.2.7", false, "1.2"},
        {"none chosen", "", "1.0.0.1", false, "1.0.0"},
        {"none chosen, none there", "", "", true, ""},
        {"none there", "1.2.3", "", false, ""},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QString(row.expected) << QString(row.appVersion) << row.passes
                                << QString(row.shown);
}

void tst_VorlynDeviceMPToolTests::version()
{
    QFETCH(QString, expected);
    QFETCH(QString, appVersion);
    QFETCH(bool, passes);
    QFETCH(QString, shown);
    panel->versionLabel->setText(expected);
    for (const char *language : {"en", "cn"}) {
        QVERIFY(ZRLocalize::switchLanguage(language));
        for (const char *mac : {"02:56:4C:00:00:01", ""}) { // also without a device
            VorlynDevice device = camera();
            device.setMac(mac);
            device.setValue("appVersion", appVersion);
            panel->setDevice(device);
            QCOMPARE(panel->versionLabel->text(), expected);
            panel->autoTestAppVersion();
            QCOMPARE(log().last(), result(versionTitle, passes, shown));
        }
    }
    QCOMPARE(log().size(), 4);
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolTests::sdCard_data()
{
    QTest::addColumn<QJsonObject>("reply");
    QTest::addColumn<QString>("sizes"); // none: the card fails
    const auto row = [](const char *name, const QJsonValue &total, const QJsonValue &free,
                         const char *sizes = nullptr) {
        QTest::newRow(name) << QJsonObject{{"totalsize", total}, {"freesize", free}}
                            << QString(sizes);
    };
    row("six digits, not decimals", 30412, 26828, "3.5 / 29.6992(GB)");
    row("as texts", "30412", "26828", "3.5 / 29.6992(GB)");
    row("some megabytes", 3, 0, "0.00292969 / 0.00292969(GB)");
    row("whole", 2048, 1024, "1 / 2(GB)");
    row("full", 30412, 0, "29.6992 / 29.6992(GB)");
    row("empty", 30412, 30412, "0 / 29.6992(GB)");
    row("more free than there is", 1024, 2048, "-1 / 1(GB)");
    row("negative free", 1024, -1024, "2 / 1(GB)");
    const int most = std::numeric_limits<int>::max();
    const int least = std::numeric_limits<int>::min();
    row("largest", most, 0, "2.09715e+06 / 2.09715e+06(GB)");
    row("beyond 32 bits", most, least, "4.1943e+06 / 2.09715e+06(GB)");
    row("total 0", 0, 0);
    row("total 0 with something free", "0", "26828");
    row("negative total", -30412, 0);
    row("no number", "many", 0);
    QTest::newRow("no sizes") << QJsonObject() << QString();
}

void tst_VorlynDeviceMPToolTests::sdCard()
{
    QFETCH(QJsonObject, reply);
    QFETCH(QString, sizes);
    // The sizes alone tell, whatever the camera calls the result.
    for (const char *language : {"en", "cn"}) {
        QVERIFY(ZRLocalize::switchLanguage(language));
        for (const char *outcome : {"success", "failure"}) {
            const OffThread worker([this] { panel->autoTestSDCard(); });
            QCOMPARE(bench->answerNext(outcome, reply)["method"].toString(), QString("GetSD"));
            QVERIFY(worker.isDoneWithoutEvents());
            QCoreApplication::processEvents();
            QCOMPARE(log().last(), result(sdCardTitle, !sizes.isNull(), sizes));
        }
    }
    QCOMPARE(log().size(), 4);
}

void tst_VorlynDeviceMPToolTests::sdCardRequest()
{
    QJsonObject request;
    {
        const OffThread worker([this] { panel->autoTestSDCard(); });
        request = bench->answerNext("success", {{"totalsize", 1}});
    }
    QCOMPARE(CameraBench::targets(request), QStringList("cam0"));
    QCOMPARE(request.keys(), QStringList({"destarray", "id", "method", "srcid"}));
    QVERIFY(bench->isQuiet());
}

// The worker waits; the GUI thread does not.
void tst_VorlynDeviceMPToolTests::sdCardWithoutReply()
{
    QElapsedTimer clock;
    clock.start();
    const OffThread worker([this] { panel->autoTestSDCard(); });
    QVERIFY(!bench->request().isEmpty());
    int turns = 0;
    while (!worker.isDone() && clock.elapsed() < 20000) {
        QTest::qWait(10);
        ++turns;
    }
    QVERIFY(worker.isDone());
    QVERIFY2(clock.elapsed() >= 2900, qPrintable(QString::number(clock.elapsed())));
    QVERIFY2(turns > 20, qPrintable(QString::number(turns)));
    QTRY_COMPARE(log(), QStringList(result(sdCardTitle, false)));
}

void tst_VorlynDeviceMPToolTests::sdCardWithoutDevice()
{
    VorlynDevice device = camera();
    device.setMac("");
    panel->setDevice(device);
    panel->autoTestSDCard();
    QVERIFY(log().isEmpty());
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolTests::wiFi_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<bool>("onGuiThread");
    QTest::addColumn<QStringList>("networks");
    for (const bool gui : {true, false}) {
        const char *where = gui ? "GUI thread" : "worker";
        QTest::addRow("read, %s", where) << Answer::Nothing << gui << QStringList("home (-40)");
        QTest::addRow("Esc, %s", where) << Answer::Esc << gui << QStringList("old (7)");
        QTest::addRow("closed, %s", where) << Answer::Close << gui << QStringList("old (7)");
    }
}

void tst_VorlynDeviceMPToolTests::wiFi()
{
    QFETCH(Answer, answer);
    QFETCH(bool, onGuiThread);
    panel->wifiInfoWidget->setInfos({{"old", 7}});
    QJsonObject request;
    OperatorAnswers answers({answer});
    answers.onDialog = [&](QWidget &) {
        request = bench->request();
        const QJsonObject home = {{"wifiname", "home"}, {"Signal", -40}};
        if (answer == Answer::Nothing)
            QVERIFY(bench->answer(request, "success", {{"WifiList", QJsonArray{home}}}));
    };
    if (onGuiThread) {
        panel->loadWiFiInfo();
    } else {
        const OffThread worker([this] { panel->loadWiFiInfo(); });
        QTRY_VERIFY_WITH_TIMEOUT(worker.isDone(), 20000);
    }
    QCOMPARE(answers.questions(), QStringList(text("Loading WiFi Info")));
    QCOMPARE(request["method"].toString(), QString("WifiScan"));
    QCOMPARE(CameraBench::targets(request), QStringList("cam0"));
    QTEST(networks(), "networks");
    QVERIFY(log().isEmpty());
}

void tst_VorlynDeviceMPToolTests::wiFiReply_data()
{
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<QJsonArray>("list");
    QTest::addColumn<QStringList>("networks");
    const QJsonArray home = {QJsonObject{{"wifiname", "home"}, {"Signal", -40}}};
    QTest::newRow("none in sight") << "success" << QJsonArray() << QStringList();
    QTest::newRow("failure with networks") << "failure" << home << QStringList("home (-40)");
    QTest::newRow("failure without") << "failure" << QJsonArray() << QStringList();
}

// The list takes what came, whatever the camera calls the result.
void tst_VorlynDeviceMPToolTests::wiFiReply()
{
    QFETCH(QString, outcome);
    QFETCH(QJsonArray, list);
    panel->wifiInfoWidget->setInfos({{"old", 7}});
    OperatorAnswers answers({Answer::Nothing});
    answers.onDialog = [&](QWidget &) { bench->answerNext(outcome, {{"WifiList", list}}); };
    panel->loadWiFiInfo();
    QCOMPARE(answers.questions().size(), 1);
    QTEST(networks(), "networks");
    QVERIFY(log().isEmpty());
}

// The scan's dialog ends by itself, with an empty list.
void tst_VorlynDeviceMPToolTests::wiFiWithoutReply()
{
    panel->wifiInfoWidget->setInfos({{"old", 7}});
    const OperatorAnswers answers({Answer::Nothing});
    panel->loadWiFiInfo();
    QCOMPARE(bench->request()["method"].toString(), QString("WifiScan"));
    QCOMPARE(networks(), QStringList());
    QVERIFY(log().isEmpty());
}

void tst_VorlynDeviceMPToolTests::wiFiNotSupported()
{
    VorlynDevice device = camera();
    device.setFunctionId("PAC");
    panel->setDevice(device);
    panel->wifiInfoWidget->setInfos({{"old", 7}});
    const OperatorAnswers answers({Answer::Esc});
    panel->loadWiFiInfo();
    QVERIFY(answers.questions().isEmpty());
    QVERIFY(bench->isQuiet());
    QCOMPARE(networks(), QStringList("old (7)"));
    QVERIFY(log().isEmpty());
}

QTEST_MAIN(tst_VorlynDeviceMPToolTests)
#include "tst_VorlynDeviceMPToolTests.moc"
