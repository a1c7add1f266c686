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
    // Datagrams that got out as reports, and reports of one status that came in.
    int sentCount() const;
    int arrivedCount(const QString &status) const;
    // All that was ordered is out, and a report behind it has arrived.
    void fence(const FactoryDialog &dialog);

    std::unique_ptr<FleetProcess> fleet;
    std::unique_ptr<FactoryTestsPanel> panel;
    std::unique_ptr<Generation> generation;
    std::unique_ptr<LogCatcher> log;
    QVector<VorlynDevice> devices;
};

namespace {
constexpr int patience = 60000; // milliseconds
constexpr int floodCount = 10000;
constexpr int fewestArrived = floodCount / 10; // a busy machine loses some

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

QJsonObject keys(const char *json)
{
    return QJsonDocument::fromJson(json).object();
}
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

int tst_FactoryReports::sentCount() const
{
    int count = 0;
    for (const QJsonObject &event : fleet->events("report"))
        count += event["count"].toInt();
    return count;
}

int tst_FactoryReports::arrivedCount(const QString &status) const
{
    return log->beginning("recv ").filter("\"status\":\"" + status + '"').size();
}

// By a card of a size of its own, which only the generation widget shows.
void tst_FactoryReports::fence(const FactoryDialog &)
{
    generation->setResult(6, FactoryTestWaiting);
    report(1, keys(R"({"function":"sdcard","totalsize":1,"freesize":1})"));
    QTRY_COMPARE_WITH_TIMEOUT(generation->testResults.value(6), int(FactoryTestPassed), patience);
}

void tst_FactoryReports::everyTest_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QJsonObject>("keys"); // empty: the operator alone judges
    QTest::addColumn<QString>("shown");
    const QString temperature = text("Current Temperature") + " 36.46";
    const QString microphone = text("Please Test Microphone");
    const struct {
        int id;
        const char *keys;
        QString shown;
    } rows[] = {
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
    for (const auto &row : rows)
        QTest::newRow(qPrintable(QString::number(row.id))) << row.id << keys(row.keys) << row.shown;
}

void tst_FactoryReports::everyTest()
{
    QFETCH(int, id);
    QFETCH(QJsonObject, keys);
    QFETCH(QString, shown);
    open();
    const auto hears = [&](FactoryDialog &dialog) {
        if (!keys.isEmpty()) {
            QVERIFY(shownBy(dialog) != shown);
            report(1, keys);
        }
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), shown, patience);
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
        QCOMPARE(TestLog::networksOf(*generation).join('|'), shown);
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
        {"wifi", 7, {R"({"function":"wifi","result":"failure"})"},
            text("Unable to search WiFi list"), "", true},
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
        const QString before = shownBy(dialog);
        report(2, keys(R"({"function":"bree","status":"body"})"));
        report(2, keys(R"({"function":"sdcard","totalsize":0,"freesize":0})"));
        report(1, keys(R"({"function":"bree","status":"on","srcid":"02564C000002"})"));
        report(1, keys(R"({"function":"bree","status":"on","destid":"AABBCCDDEEFF"})"));
        QTRY_COMPARE_WITH_TIMEOUT(log->beginning("dropped {").size(), 3, patience);
        fence(dialog);
        QCOMPARE(shownBy(dialog), before);
        QVERIFY(!passButton(dialog)->isEnabled());
        dialog.reject();
    });
}

void tst_FactoryReports::malformedReports_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<int>("dropped"); // lines; what is no message at all has none
    const QByteArray head = R"({"id":-1,"destid":"0200000000AA",)";
    const QByteArray whole = head + R"("method":"report","srcid":"02564C000001",)";
    const struct {
        const char *name;
        QByteArray message;
        int dropped;
    } rows[] = {
        {"no text", "", 0},
        {"no JSON", "{\"function\":\"bree\"", 0},
        {"array", "[1]", 0},
        {"empty", "{}", 0},
        {"no function", whole + R"("status":"on"})", 1},
        {"unknown function", whole + R"("function":"sonar","status":"on"})", 1},
        {"no status", whole + R"("function":"bree"})", 1},
        {"status as number", whole + R"("function":"bree","status":1})", 1},
        {"no method", head + R"("srcid":"02564C000001","function":"bree","status":"on"})", 1},
        {"no sender", head + R"("method":"report","function":"bree","status":"on"})", 1},
        {"sender as number",
            head + R"("method":"report","srcid":1,"function":"bree","status":"on"})", 1},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << row.message << row.dropped;
}

void tst_FactoryReports::malformedReports()
{
    QFETCH(QByteArray, message);
    open();
    run(13, [&](FactoryDialog &dialog) {
        const QString before = shownBy(dialog);
        raw(message);
        fence(dialog);
        QCOMPARE(fleet->events("report").value(0)["raw"].toString().toUtf8(), message);
        QTEST(log->beginning("dropped {").size(), "dropped");
        QCOMPARE(shownBy(dialog), before);
        QVERIFY(!passButton(dialog)->isEnabled());
        report(1, keys(R"({"function":"bree","status":"body"})"));
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), text("Body Bree"), patience);
        dialog.accept();
    });
}

// The bystander's, while the dialog is open.
void tst_FactoryReports::floodOfStrangers()
{
    open();
    run(13, [this](FactoryDialog &dialog) {
        const QString before = shownBy(dialog);
        QVERIFY(fleet->order(R"(script 2 {"count":10000,"report":{"function":"bree",)"
                             R"("status":"body"}})"));
        QTRY_COMPARE_WITH_TIMEOUT(sentCount(), floodCount, patience);
        fence(dialog);
        QCOMPARE(shownBy(dialog), before);
        QVERIFY(!passButton(dialog)->isEnabled());
        QCOMPARE(log->beginning("dropped {").size(), 10);
        dialog.reject();
    });
    const int arrived = arrivedCount("body");
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
        QCOMPARE(shownBy(dialog), text("Body Bree"));
        report(1, keys(R"({"function":"bree","status":"gone"})"));
        QTRY_COMPARE_WITH_TIMEOUT(shownBy(dialog), text("Detected Failure"), patience);
        QVERIFY(!passButton(dialog)->isEnabled());
        qInfo("at most %d ms between two turns of the event loop", longest);
        QVERIFY(longest < 5000);
        dialog.reject();
    });
    QVERIFY(arrivedCount("body") >= fewestArrived);
    QCOMPARE(log->beginning("dropped").size(), 0);
}

// No dialog is open: a wait or search throws the reports away and finds its replies among them.
void tst_FactoryReports::commandsInTheFlood()
{
    open();
    QVERIFY(fleet->order(R"(script all {"every":0.01,"times":1000000,"count":20,"report":)"
                         R"({"function":"bree","status":"body","result":"failure",)"
                         R"("mac":"02:00:00:00:00:99"}})"));
    VorlynSDK *sdk = VorlynSDK::instance();
    QElapsedTimer clock;
    clock.start();
    for (int round = 1; round <= 3; ++round) {
        const int before = arrivedCount("body");
        QTRY_VERIFY_WITH_TIMEOUT(arrivedCount("body") > before, patience);
        const QString name = QStringLiteral("Nursery %1").arg(round);
        int total = 0;
        int free = 0;
        QCOMPARE(sdk->setDeviceName({devices.first()}, name), 0);
        QCOMPARE(sdk->getDeviceSD(devices.first(), total, free), 0);
        QCOMPARE(total, 30436);
        QVector<VorlynDevice> found;
        sdk->searchDevices(found, 1);
        QCOMPARE(found.size(), 2);
        std::sort(found.begin(), found.end());
        QCOMPARE(found.first().name(), name);
        QCOMPARE(found.first().mac(), devices.first().mac());
        QVERIFY(arrivedCount("body") > before + 20); // all through the round
    }
    qInfo("%d reports in %lld ms", arrivedCount("body"), clock.elapsed());
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
