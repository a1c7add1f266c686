#include "FactoryTestList.h"
#include "FactoryTestsPanel.h"
#include "FleetProcess.h"
#include "LogCatcher.h"
#include "ModalDriver.h"
#include "TestLog.h"
#include "TestNetwork.h"
#include "VorlynDeviceGenerationWidget.h"
#include "VorlynSDK.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

// The factory tests with a simulated camera: its reports, from the program that sends them to the
// operator's screen, and what comes between.
class tst_FactoryReports : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void everyTest_data();
    void everyTest();
    void badReport_data();
    void badReport();
    void losesThePass();
    void scriptOfTheCamera();
    void foreignReports();
    void malformedReports_data();
    void malformedReports();
    void floodOfStrangers();
    void floodOfTheDevice();
    void commandsInTheFlood();
    void panTiltKeepsItsReplies();

private:
    struct Generation : VorlynDeviceGenerationWidget {
        Generation() : VorlynDeviceGenerationWidget(nullptr) { }
        using VorlynDeviceGenerationWidget::testResults;
    };

    void open(const QJsonArray &reports = {});
    // Opens a test's dialog and acts on it; returns its state.
    int run(int id, const std::function<void(FactoryDialog &)> &act);
    void report(int camera, const QJsonObject &keys);
    void raw(const QByteArray &text);
    // Bursts of a report, again and again.
    void flood(int camera, QJsonObject entry);
    // Datagrams that got out, and messages that came in, with these letters in their text.
    int sentCount(const QString &part = QString()) const;
    int arrivedCount(const QString &part) const;
    // All that was ordered is out, and a report behind it has arrived.
    void fence();
    void reportUntil(const QJsonObject &keys, const std::function<bool()> &isHeard);
    // Reports that the log tells to be dropped, but for fences.
    int droppedCount() const;
    // What the windows tell of all tests' results.
    QStringList states() const;
    void commandRound(int round);
    // Rounds, until the cameras have sent so many reports.
    void commandsUntil(int reports);

    std::unique_ptr<FleetProcess> fleet;
    std::unique_ptr<FactoryTestsPanel> panel;
    std::unique_ptr<Generation> generation;
    std::unique_ptr<LogCatcher> log;
    QVector<VorlynDevice> devices;
    int fences = 0;
};

namespace {
constexpr int patience = 60000; // milliseconds
constexpr int floodCount = 10000;
constexpr int fewestArrived = floodCount / 10; // a busy machine loses some
constexpr int shortCommands = 20; // of a kind, in a round
const char bodies[] = R"("status":"body")";

QString text(const char *key)
{
    return ZRLocalize::translate(key);
}

QPushButton *passButton(const FactoryDialog &dialog)
{
    return dialog.findChild<QPushButton *>("passButton");
}

QLabel *statusLabel(const FactoryDialog &dialog)
{
    return dialog.findChild<QLabel *>("statusLabel");
}

// What the operator can tell from a dialog that it has heard of its device.
QString shownBy(const FactoryDialog &dialog)
{
    if (dialog.findChild<QListWidget *>("wifiList"))
        return TestLog::networksOf(dialog).join('|');
    if (const QLabel *label = statusLabel(dialog))
        return label->text();
    return passButton(dialog)->isEnabled() ? "may pass" : "may not pass";
}

// All that a report may change.
QStringList lookOf(const FactoryDialog &dialog)
{
    QStringList look;
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        look << label->text() << label->styleSheet() << label->font().toString();
    if (dialog.findChild<QListWidget *>("wifiList"))
        look += TestLog::networksOf(dialog);
    look << (passButton(dialog)->isEnabled() ? "may pass" : "may not pass");
    return look;
}

// Of a kind of report, in its text.
QString markOf(const char *kind)
{
    return QString("\"kind\":\"%1\"").arg(kind);
}

QJsonObject keys(const char *json)
{
    return QJsonDocument::fromJson(json).object();
}

// What makes a test's dialog show that all is well.
struct GoodReport {
    int id;
    const char *keys; // empty: the operator alone judges
    QString shown;
};

QVector<GoodReport> goodReports()
{
    const QString temperature = text("Current Temperature") + " 36.46";
    const QString microphone = text("Please Test Microphone");
    return {
        {1, R"({"function":"image"})", microphone},
        {2, R"({"function":"speaker"})", text("Please Test Speaker")},
        {3, R"({"function":"microphone"})", microphone},
        {4, "", "may pass"},
        {5, "", "may pass"},
        {6, R"({"function":"sdcard","totalsize":30412,"freesize":26828})",
            text("Test SDCard") + " 3.5 / 29.6992(GB)"},
        {7, R"({"function":"wifi","result":"success","WifiList":[{"wifiname":"Home","Signal":80},
            {"wifiname":"Guest","Signal":41}]})",
            "Home (80)|Guest (41)"},
        {8, R"({"function":"temperature","temperature":36.456})",
            text("Check if the temperature in the upper right corner of the screen matches the "
                 "ambient temperature")
                + '\n' + temperature},
        {9, R"({"function":"exttemperature","temperature":36.456})", temperature},
        {10, R"({"function":"crying","status":"on"})", text("Crying is Detected")},
        {11, R"({"function":"keyword","status":"on"})", text("Detected Success")},
        {12, R"({"function":"keycall","status":"on"})", text("Detected Success")},
        {13, R"({"function":"bree","status":"body"})", text("Body Bree")},
        {14, R"({"function":"fall","status":"on"})", "may pass"},
        {15, R"({"function":"confirm"})", microphone},
        {16, R"({"function":"millimeterwave","status":"no body"})", text("Nobody Bree")},
    };
}

GoodReport goodReport(int id)
{
    const QVector<GoodReport> all = goodReports();
    return *std::find_if(
        all.begin(), all.end(), [id](const GoodReport &report) { return report.id == id; });
}

// Of all kinds. Each would spoil something if it were taken for a reply, or by the wrong window.
constexpr struct {
    const char *kind;
    int camera;
    const char *entry;
} floods[] = {
    {"own", 1, R"({"report":{"kind":"own","function":"crying","status":"off",
        "result":"failure","mac":"02:00:00:00:00:99"}})"},
    {"foreign", 2, R"({"report":{"kind":"foreign","function":"crying","status":"on",
        "result":"failure","mac":"02:00:00:00:00:99"}})"},
    {"foreign", 2, R"({"report":{"kind":"foreign","function":"sdcard","totalsize":0,
        "freesize":0}})"},
    {"foreign", 1, R"({"report":{"kind":"foreign","function":"crying","status":"on",
        "destid":"AABBCCDDEEFF"}})"},
    {"malformed", 1, R"({"report":{"kind":"malformed","status":"on","result":"failure"}})"},
    {"malformed", 1, R"({"report":{"kind":"malformed","function":"crying","status":"on",
        "method":1}})"},
    {"malformed", 1, R"({"raw":"{\"kind\":\"malformed\",\"function\":\"crying\""})"},
};
}

void tst_FactoryReports::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("en"));
}

void tst_FactoryReports::init()
{
    log = std::make_unique<LogCatcher>();
    VorlynSDK::createInstance();
    VorlynSDK::instance()->startNetwork(
        TestNetwork::interface("veth-a"), TestNetwork::entry("10.77.0.1"));
    QTRY_COMPARE(log->count("setsockopt SO_SNDTIMEO 1:0 -> 0"), 2);
    fleet = std::make_unique<FleetProcess>("cam-a", 2, "10.77.0.11");
}

void tst_FactoryReports::cleanup()
{
    panel.reset();
    generation.reset();
    VorlynSDK::instance()->stopNetwork();
    VorlynSDK::destroyInstance();
    QVERIFY2(fleet->stop(), fleet->errors());
    fleet.reset();
    log.reset();
}

// The first camera stands on the bench; the second is a bystander. Both know the workstation.
void tst_FactoryReports::open(const QJsonArray &reports)
{
    fleet->setScenario({{"cameras",
        QJsonArray{FleetProcess::unhurried(),
            QJsonObject{{"camera", 1}, {"fields", QJsonObject{{"HdCuFun", "PAC,WIFI"}}},
                {"reports", reports}}}}});
    QVERIFY(fleet->start());
    VorlynSDK::instance()->searchDevices(devices, 1);
    std::sort(devices.begin(), devices.end());
    QCOMPARE(devices.size(), 2);

    generation = std::make_unique<Generation>();
    panel = std::make_unique<FactoryTestsPanel>(nullptr);
    generation->setDevice(devices.first());
    panel->setDevice(devices.first());
    panel->setGenerationWidget(generation.get());
    panel->resize(900, 420);
    panel->show();
    QVERIFY(QTest::qWaitForWindowActive(panel.get()));
}

int tst_FactoryReports::run(int id, const std::function<void(FactoryDialog &)> &act)
{
    const auto test = std::find_if(std::begin(factoryTests), std::end(factoryTests),
        [id](const FactoryTest &candidate) { return candidate.id == id; });
    auto *table = panel->findChild<QTableWidget *>("testTable");
    table->setCurrentCell(int(std::distance(std::begin(factoryTests), test)), 0);
    const QSignalSpy finished(panel.get(), &FactoryTestsPanel::testFinished);
    ModalDriver<FactoryDialog> driver(act, patience);
    panel->findChild<QPushButton *>("openButton")->click();
    return finished.value(0).value(0) == id ? finished.first().at(1).toInt() : -1;
}

void tst_FactoryReports::report(int camera, const QJsonObject &keys)
{
    QVERIFY(fleet->order("report " + QByteArray::number(camera) + ' '
        + QJsonDocument(keys).toJson(QJsonDocument::Compact)));
}

void tst_FactoryReports::raw(const QByteArray &text)
{
    const QJsonObject entry = {{"raw", QString::fromUtf8(text)}};
    QVERIFY(fleet->order("script 1 " + QJsonDocument(entry).toJson(QJsonDocument::Compact)));
}

void tst_FactoryReports::flood(int camera, QJsonObject entry)
{
    entry["every"] = 0.05;
    entry["times"] = 1000000;
    entry["count"] = 10;
    QVERIFY(fleet->order("script " + QByteArray::number(camera) + ' '
        + QJsonDocument(entry).toJson(QJsonDocument::Compact)));
}

int tst_FactoryReports::sentCount(const QString &part) const
{
    int count = 0;
    for (const QJsonObject &event : fleet->events("report")) {
        if (event["raw"].toString().contains(part))
            count += event["count"].toInt();
    }
    return count;
}

int tst_FactoryReports::arrivedCount(const QString &part) const
{
    return log->beginning("recv ").filter(part).size();
}

// Again and again, as a report may be lost on a busy machine or behind a flood.
void tst_FactoryReports::reportUntil(const QJsonObject &keys, const std::function<bool()> &isHeard)
{
    bool heard = isHeard();
    for (int waited = 0; !heard && waited < patience; waited += 1000) {
        report(1, keys);
        heard = QTest::qWaitFor(isHeard, 1000);
    }
    QVERIFY(heard);
}

// By what is dropped, so that nothing shows it.
void tst_FactoryReports::fence()
{
    const QString mark = QStringLiteral("fence %1").arg(++fences);
    reportUntil(
        {{"function", mark}}, [&] { return !log->beginning("dropped {").filter(mark).isEmpty(); });
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall); // what came before it
}

int tst_FactoryReports::droppedCount() const
{
    const QStringList dropped = log->beginning("dropped {");
    return dropped.size() - dropped.filter("fence").size();
}

QStringList tst_FactoryReports::states() const
{
    QStringList states = TestLog::networksOf(*generation);
    for (const FactoryTest &test : factoryTests) {
        states << QString("%1: %2, %3")
                      .arg(test.id)
                      .arg(panel->result(test.id))
                      .arg(generation->testResults.value(test.id));
    }
    return states;
}

void tst_FactoryReports::everyTest_data()
{
    QTest::addColumn<int>("id");
    for (const GoodReport &good : goodReports())
        QTest::newRow(qPrintable(QString::number(good.id))) << good.id;
}

void tst_FactoryReports::everyTest()
{
    QFETCH(int, id);
    const GoodReport good = goodReport(id);
    open();
    const auto hears = [&](FactoryDialog &dialog) {
        if (*good.keys) {
            const QStringList before = lookOf(dialog);
            report(2, keys(good.keys)); // the bystander's
            fence();
            QCOMPARE(lookOf(dialog), before);
            QVERIFY(shownBy(dialog) != good.shown);
            report(1, keys(good.keys));
        }
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), good.shown, patience);
        QVERIFY(passButton(dialog)->isEnabled());
    };
    QCOMPARE(run(id,
                 [&](FactoryDialog &dialog) {
                     hears(dialog);
                     passButton(dialog)->click();
                 }),
        int(FactoryTestPassed));
    QCOMPARE(panel->result(id), int(FactoryTestPassed));
    QCOMPARE(generation->testResults.value(id), int(FactoryTestPassed));
    QCOMPARE(run(id,
                 [&](FactoryDialog &dialog) {
                     hears(dialog);
                     dialog.findChild<QPushButton *>("failButton")->click();
                 }),
        int(FactoryTestFailed));
    QCOMPARE(panel->result(id), int(FactoryTestFailed));
    QCOMPARE(generation->testResults.value(id), int(FactoryTestFailed));
    if (id == 7)
        QCOMPARE(TestLog::networksOf(*generation).join('|'), good.shown);
}

void tst_FactoryReports::badReport_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QVector<QJsonObject>>("reports"); // the last one is the bad one
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("styleSheet");
    QTest::addColumn<bool>("passes");
    const QString failure = text("Detected Failure");
    const QString red = "color: red";
    const struct {
        const char *name;
        int id;
        QVector<const char *> reports;
        QString shown;
        QString styleSheet;
        bool passes;
    } rows[] = {
        {"keyword", 11,
            {R"({"function":"keyword","status":"on"})", R"({"function":"keyword","status":"off"})"},
            failure, red, false},
        {"keycall", 12,
            {R"({"function":"keycall","status":"on"})", R"({"function":"keycall","status":"off"})"},
            failure, red, false},
        {"millimeterwave", 16,
            {R"({"function":"millimeterwave","status":"on"})",
                R"({"function":"millimeterwave","status":"off"})"},
            failure, red, false},
        {"millimeterwave fall", 16,
            {R"({"function":"millimeterwave","status":"body"})",
                R"({"function":"millimeterwave","status":"fall"})"},
            failure, red, false},
        {"fall", 14,
            {R"({"function":"fall","status":"on"})", R"({"function":"fall","status":"off"})"},
            "may not pass", "", false},
        {"crying on and off", 10,
            {R"({"function":"crying","status":"on"})", R"({"function":"crying","status":"off"})"},
            text("No Crying is Detected"), "", true},
        {"crying off", 10, {R"({"function":"crying","status":"off"})"},
            text("No Crying is Detected"), "", false},
        {"bree unknown word", 13,
            {R"({"function":"bree","status":"on"})", R"({"function":"bree","status":"perhaps"})"},
            failure, red, false},
        {"fall unknown word", 14,
            {R"({"function":"fall","status":"on"})", R"({"function":"fall","status":"body"})"},
            "may not pass", "", false},
        {"keyword unknown word", 11, {R"({"function":"keyword","status":"no body"})"}, failure, red,
            false},
        {"keycall empty word", 12, {R"({"function":"keycall","status":""})"}, failure, red, false},
        {"crying unknown word", 10, {R"({"function":"crying","status":"softly"})"},
            text("No Crying is Detected"), "", false},
        {"wifi", 7, {R"({"function":"wifi","result":"failure"})"},
            text("Unable to search WiFi list"), "", true},
        {"wifi without list", 7, {R"({"function":"wifi","result":"success"})"}, text("Test WiFi"),
            "", true},
        {"sdcard", 6, {R"({"function":"sdcard","totalsize":0,"freesize":0})"},
            text("Test SDCard") + " 0 / 0(GB)", "", true},
    };
    for (const auto &row : rows) {
        QVector<QJsonObject> reports;
        for (const char *report : row.reports)
            reports << keys(report);
        QTest::newRow(row.name) << row.id << reports << row.shown << row.styleSheet << row.passes;
    }
}

void tst_FactoryReports::badReport()
{
    QFETCH(int, id);
    QFETCH(QVector<QJsonObject>, reports);
    QFETCH(QString, shown);
    open();
    run(id, [&](FactoryDialog &dialog) {
        const auto *title = dialog.findChild<QLabel *>("titleLabel");
        const auto text = [&] { return title ? title->text() : shownBy(dialog); };
        for (const QJsonObject &keys : qAsConst(reports)) {
            const bool passed = passButton(dialog)->isEnabled();
            const QString before = text();
            report(1, keys);
            QTRY_VERIFY_WITH_TIMEOUT(
                text() != before || passButton(dialog)->isEnabled() != passed, patience);
        }
        QCOMPARE(text(), shown);
        if (const QLabel *label = statusLabel(dialog))
            QTEST(label->styleSheet(), "styleSheet");
        if (title)
            QCOMPARE(TestLog::networksOf(dialog), QStringList());
        QTEST(passButton(dialog)->isEnabled(), "passes");
        dialog.reject();
    });
    if (id == 6 || id == 16) // who else shows it
        QCOMPARE(generation->testResults.value(id), int(FactoryTestFailed));
}

void tst_FactoryReports::losesThePass()
{
    open();
    run(13, [this](FactoryDialog &dialog) {
        const struct {
            const char *status;
            const char *shown;
            bool passes;
        } rows[] = {
            {"body", "Body Bree", true},
            {"asleep", "Detected Failure", false},
            {"FALL", "Fall Bree", true},
            {"off", "Detected Failure", false},
        };
        for (const auto &row : rows) {
            report(1, {{"function", "bree"}, {"status", row.status}});
            QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), text(row.shown), patience);
            QCOMPARE(passButton(dialog)->isEnabled(), row.passes);
        }
        dialog.reject();
    });
}

// A camera that goes by its scenario: silence, then somebody comes.
void tst_FactoryReports::scriptOfTheCamera()
{
    const QJsonObject nobody = {{"function", "millimeterwave"}, {"status", "no body"}};
    const QJsonObject body = {{"function", "millimeterwave"}, {"status", "body"}};
    open({QJsonObject{{"on", "GetSD"}, {"after", 0.5}, {"report", nobody}},
        QJsonObject{
            {"on", "GetSD"}, {"after", 1}, {"every", 0.5}, {"times", 100}, {"report", body}}});
    int total = 0;
    int free = 0;
    QCOMPARE(VorlynSDK::instance()->getDeviceSD(devices.first(), total, free), 0);
    const int state = run(16, [](FactoryDialog &dialog) {
        QVERIFY(!passButton(dialog)->isEnabled());
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), text("Nobody Bree"), patience);
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), text("Body Bree"), patience);
        dialog.accept();
    });
    QCOMPARE(state, int(FactoryTestPassed));
}

void tst_FactoryReports::foreignReports()
{
    open();
    run(13, [this](FactoryDialog &dialog) {
        const QStringList before = lookOf(dialog);
        report(2, keys(R"({"function":"bree","status":"body"})"));
        report(2, keys(R"({"function":"sdcard","totalsize":0,"freesize":0})"));
        report(1, keys(R"({"function":"bree","status":"on","srcid":"02564C000002"})"));
        report(1, keys(R"({"function":"bree","status":"on","destid":"AABBCCDDEEFF"})"));
        QTRY_COMPARE_WITH_TIMEOUT(droppedCount(), 3, patience);
        fence();
        QCOMPARE(lookOf(dialog), before);
        QVERIFY(!passButton(dialog)->isEnabled());
        dialog.reject();
    });
}

void tst_FactoryReports::malformedReports_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<int>("dropped"); // lines; what is no message at all has none
    const QByteArray head = R"({"id":-1,"destid":"0200000000AA",)";
    const QByteArray whole = head + R"("method":"report","srcid":"02564C000001",)";
    const struct {
        const char *name;
        int id;
        QByteArray message;
        int dropped;
    } rows[] = {
        {"no text", 13, "", 0},
        {"no JSON", 13, "{\"function\":\"bree\"", 0},
        {"array", 13, "[1]", 0},
        {"empty", 13, "{}", 0},
        {"no method", 13, head + R"("srcid":"02564C000001","function":"bree","status":"on"})", 1},
        {"no sender", 13, head + R"("method":"report","function":"bree","status":"on"})", 1},
        {"sender as number", 13,
            head + R"("method":"report","srcid":1,"function":"bree","status":"on"})", 1},
        {"no function", 13, whole + R"("status":"on"})", 1},
        {"no function, but sizes", 6, whole + R"("totalsize":1024,"freesize":10})", 1},
        {"nothing of its own", 1, whole + R"("note":""})", 1},
        {"unknown function", 13, whole + R"("function":"sonar","status":"on"})", 1},
        {"function as number", 2, whole + R"("function":2})", 1},
        {"function as array", 3, whole + R"("function":["microphone"]})", 1},
        {"function with a blank", 15, whole + R"("function":"confirm "})", 1},
        {"no status", 13, whole + R"("function":"bree"})", 1},
        {"status as number", 13, whole + R"("function":"bree","status":1})", 1},
        {"status as truth", 14, whole + R"("function":"fall","status":true})", 1},
        {"status as object", 10, whole + R"("function":"crying","status":{"status":"on"}})", 1},
        {"status as array", 11, whole + R"("function":"keyword","status":["on"]})", 1},
        {"status as null", 12, whole + R"("function":"keycall","status":null})", 1},
        {"status under another name", 16, whole + R"("function":"millimeterwave","state":"on"})",
            1},
        {"no temperature", 8, whole + R"("function":"temperature"})", 1},
        {"temperature in words", 8, whole + R"("function":"temperature","temperature":"warm"})", 1},
        {"outer temperature in words", 9,
            whole + R"("function":"exttemperature","temperature":"warm"})", 1},
        {"outer temperature as array", 9,
            whole + R"("function":"exttemperature","temperature":[36.5]})", 1},
        {"card without free size", 6, whole + R"("function":"sdcard","totalsize":1024})", 1},
        {"card without total size", 6, whole + R"("function":"sdcard","freesize":10})", 1},
        {"card's size in words", 6,
            whole + R"("function":"sdcard","totalsize":"big","freesize":10})", 1},
        {"card's size as truth", 6,
            whole + R"("function":"sdcard","totalsize":1024,"freesize":true})", 1},
        {"networks without result", 7,
            whole + R"("function":"wifi","WifiList":[{"wifiname":"Home","Signal":80}]})", 1},
        {"networks' result as number", 7,
            whole + R"("function":"wifi","result":0,"WifiList":[{"wifiname":"Home","Signal":8}]})",
            1},
        {"networks as text", 7,
            whole + R"("function":"wifi","result":"success","WifiList":"Home"})", 1},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << row.id << row.message << row.dropped;
}

void tst_FactoryReports::malformedReports()
{
    QFETCH(int, id);
    QFETCH(QByteArray, message);
    open();
    const int state = run(id, [&](FactoryDialog &dialog) {
        const QStringList before = lookOf(dialog);
        raw(message);
        fence();
        QCOMPARE(fleet->events("report").value(0)["raw"].toString().toUtf8(), message);
        QTEST(droppedCount(), "dropped");
        QCOMPARE(lookOf(dialog), before);
        const GoodReport good = goodReport(id);
        QVERIFY(shownBy(dialog) != good.shown);
        report(1, keys(good.keys));
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), good.shown, patience);
        QVERIFY(passButton(dialog)->isEnabled());
        dialog.accept();
    });
    QCOMPARE(state, int(FactoryTestPassed));
}

// The bystander's, while the dialog is open.
void tst_FactoryReports::floodOfStrangers()
{
    open();
    run(13, [this](FactoryDialog &dialog) {
        const QStringList before = lookOf(dialog);
        QVERIFY(fleet->order(R"(script 2 {"count":10000,"report":{"function":"bree",)"
                             R"("status":"body"}})"));
        QTRY_COMPARE_WITH_TIMEOUT(sentCount(), floodCount, patience);
        QCOMPARE(lookOf(dialog), before);
        // Its own, behind them all, changes the button alone.
        reportUntil(keys(R"({"function":"bree","status":"on"})"),
            [&] { return passButton(dialog)->isEnabled(); });
        QCOMPARE(lookOf(dialog).mid(0, before.size() - 1), before.mid(0, before.size() - 1));
        QCOMPARE(log->beginning("dropped {").size(), 10);
        dialog.reject();
    });
    const int arrived = arrivedCount(bodies);
    QVERIFY(arrived >= fewestArrived);
    QCOMPARE(log->lines().filter(QString("dropped %1 messages").arg(arrived)).size(), 1);
    qInfo("%d of %d reports arrived", arrived, floodCount);
}

// Its own: the last one counts, and the window stays in use.
void tst_FactoryReports::floodOfTheDevice()
{
    open();
    run(13, [this](FactoryDialog &dialog) {
        QVERIFY(fleet->order(R"(script 1 {"count":10000,"report":{"function":"bree",)"
                             R"("status":"body"}})"));
        int longest = 0;
        QElapsedTimer clock;
        clock.start();
        QTRY_VERIFY_WITH_TIMEOUT(
            (longest = std::max(longest, int(clock.restart())), sentCount() == floodCount),
            patience);
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), text("Body Bree"), patience);
        reportUntil(keys(R"({"function":"bree","status":"gone"})"),
            [&] { return shownBy(dialog) == text("Detected Failure"); });
        QVERIFY(!passButton(dialog)->isEnabled());
        qInfo("at most %d ms between two turns of the event loop", longest);
        QVERIFY(longest < 5000);
        dialog.reject();
    });
    QVERIFY(arrivedCount(bodies) >= fewestArrived);
    QCOMPARE(log->beginning("dropped").size(), 0);
}

// First in the dialog beside which commands may run, then in one that listens.
void tst_FactoryReports::commandsInTheFlood()
{
    open();
    for (const auto &row : floods)
        flood(row.camera, keys(row.entry));
    run(5, [this](FactoryDialog &dialog) {
        const QStringList look = lookOf(dialog);
        const QStringList before = states();
        commandsUntil(floodCount);
        QCOMPARE(lookOf(dialog), look);
        QCOMPARE(states(), before);
        dialog.accept();
    });
    if (QTest::currentTestFailed())
        return;
    for (const auto &row : floods)
        QVERIFY2(sentCount(markOf(row.kind)) >= floodCount / 10, row.kind);

    run(10, [this](FactoryDialog &dialog) {
        const QStringList before = states();
        const int arrived = arrivedCount(markOf("foreign"));
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), text("No Crying is Detected"), patience);
        QTRY_VERIFY_WITH_TIMEOUT(arrivedCount(markOf("foreign")) > arrived + 1000, patience);
        QVERIFY(!passButton(dialog)->isEnabled()); // which a single detection would enable
        QCOMPARE(states(), before);
        flood(1, keys(R"({"report":{"function":"crying","status":"on"}})"));
        QTRY_VERIFY_WITH_TIMEOUT(passButton(dialog)->isEnabled(), patience);
        dialog.accept();
    });
    QCOMPARE(panel->result(10), int(FactoryTestPassed));
}

// All kinds of waits.
void tst_FactoryReports::commandRound(int round)
{
    VorlynSDK *sdk = VorlynSDK::instance();
    const VorlynDevice &device = devices.first();
    QString name;
    for (int i = 0; i < shortCommands; ++i) {
        name = QString("Nursery %1/%2").arg(round).arg(i);
        int total = 0;
        int free = 0;
        QCOMPARE(sdk->setDeviceName({device}, name), 0);
        QCOMPARE(sdk->getDeviceSD(device, total, free), 0);
        QCOMPARE(total, 30436);
        QCOMPARE(free, 28112);
        QCOMPARE(sdk->setDevicePTZ({device}, "left"), 0);
    }
    QVector<VorlynDeviceWiFiInfo> networks;
    QCOMPARE(sdk->getDeviceWiFiList(device, networks), 0);
    QCOMPARE(networks.size(), 2);
    QVector<VorlynDevice> found;
    sdk->searchDevices(found, 1);
    QCOMPARE(found.size(), 2);
    std::sort(found.begin(), found.end());
    QCOMPARE(found.first().name(), name);
    QCOMPARE(found.first().mac(), device.mac());
}

void tst_FactoryReports::commandsUntil(int reports)
{
    QElapsedTimer clock;
    clock.start();
    int rounds = 0;
    for (int sent = 0; sent < reports; ++rounds) {
        commandRound(rounds);
        if (QTest::currentTestFailed())
            return;
        QCoreApplication::processEvents(); // what might be on its way to a window
        const int before = std::exchange(sent, sentCount());
        QVERIFY(sent > before); // all through the round
    }
    QVERIFY(rounds > 1);
    for (const char *method : {"SetName", "GetSD", "SetPTZ"})
        QCOMPARE(fleet->requests(method).size(), rounds * shortCommands);
    QCOMPARE(fleet->requests("WifiScan").size(), rounds);
    qInfo("%d commands took %lld ms, among %d reports; %d of them got into the queue",
        rounds * (3 * shortCommands + 2), clock.elapsed(), sentCount(), arrivedCount("\"kind\""));
}

// The dialog that sends commands, while its device talks.
void tst_FactoryReports::panTiltKeepsItsReplies()
{
    open();
    QVERIFY(fleet->order(R"(script 1 {"every":0.01,"times":1000,"report":{"function":"bree",)"
                         R"("status":"body"}})"));
    run(5, [this](FactoryDialog &dialog) {
        QElapsedTimer clock;
        clock.start();
        int commands = 0;
        for (const char *name : {"upButton", "leftButton", "rightButton", "downButton"}) {
            auto *button = dialog.findChild<QWidget *>(name);
            commands += 2; // and a stop
            QTest::mousePress(button, Qt::LeftButton);
            QTRY_COMPARE_WITH_TIMEOUT(fleet->requests("SetPTZ").size(), commands - 1, patience);
            QTest::mouseRelease(button, Qt::LeftButton);
            QTRY_COMPARE_WITH_TIMEOUT(fleet->requests("SetPTZ").size(), commands, patience);
        }
        qInfo("%d commands took %lld ms", commands, clock.elapsed());
        QVERIFY(clock.elapsed() < 3000); // not a single wait ran to its end
        dialog.accept();
    });
}

QTEST_MAIN(tst_FactoryReports)
#include "tst_FactoryReports.moc"
