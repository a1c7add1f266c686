#include "FleetProcess.h"
#include "HostProcess.h"
#include "TestNetwork.h"
#include "Workstation.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QTest>

#include <algorithm>

// What the program's cameras tell by themselves, met with plain sockets.
class tst_FleetReporter : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void fromTheFirstRequest();
    void fromANamedRequest();
    void severalTimes();
    void raw();
    void toTheLastWorkstation();
    void countGoesOutInBursts();
    void nothingDuringARestart();
    void order();
    void orderToAll();
    void orderOfAScript();
    void atAKey();
    void beforeAnyWorkstation();
    void wrongOrders_data();
    void wrongOrders();
    void linesInPieces();
    void endOfInput();
    void lastLineWithoutItsEnd();
    void withoutStandardInput();

private:
    using Replies = QVector<Workstation::Reply>;

    void start(const QJsonArray &reports = {});
    // The camera answers, so everything sent before has been seen.
    void fence(int camera = 1);
    Replies reports(int count);

    QScopedPointer<FleetProcess> fleet;
    QScopedPointer<Workstation> workstation;
};

namespace {
const QString first = "02564C000001";
constexpr int patience = 20000; // milliseconds

QJsonObject bree(const QString &status)
{
    return {{"function", "bree"}, {"status", status}};
}

QJsonObject entry(const QJsonObject &report, QJsonObject more = {})
{
    more["report"] = report;
    return more;
}

bool isReport(const Workstation::Reply &reply)
{
    return reply.object()["method"] == "report";
}

QJsonObject whole(const QString &status, const QString &srcid = first)
{
    QJsonObject message = bree(status);
    message["id"] = -1;
    message["method"] = "report";
    message["srcid"] = srcid;
    message["destid"] = Workstation::srcid;
    return message;
}
}

void tst_FleetReporter::init()
{
    fleet.reset(new FleetProcess("cam-a", 2, "10.77.0.11"));
    workstation.reset(new Workstation);
}

void tst_FleetReporter::cleanup()
{
    if (!fleet->stop())
        QFAIL(fleet->errors());
    fleet.reset();
    workstation.reset();
}

void tst_FleetReporter::start(const QJsonArray &reports)
{
    fleet->setScenario({{"cameras", QJsonArray{QJsonObject{{"camera", 1}, {"reports", reports}}}}});
    QVERIFY(fleet->start());
}

void tst_FleetReporter::fence(int camera)
{
    QVERIFY(!workstation->ask("GetSD", QStringLiteral("02564C00000%1").arg(camera)).isEmpty());
}

tst_FleetReporter::Replies tst_FleetReporter::reports(int count)
{
    return workstation->await(count, isReport);
}

void tst_FleetReporter::fromTheFirstRequest()
{
    start({entry(bree("body"), {{"after", 0.3}})});
    fence(2); // another camera's
    QTest::qWait(500);
    QVERIFY(reports(0).isEmpty());
    fence();
    const qint64 asked = QDateTime::currentMSecsSinceEpoch();
    const Replies got = reports(1);
    QCOMPARE(got.size(), 1);
    QCOMPARE(got.first().object(), whole("body"));
    QCOMPARE(got.first().from.toString(), QString("10.77.0.11"));
    QVERIFY(got.first().at - asked > 150);
    QCOMPARE(got.first().datagram,
        TestNetwork::frame(QJsonDocument(whole("body")).toJson(QJsonDocument::Compact)));

    fence(); // once is all
    QTest::qWait(500);
    QCOMPARE(reports(1).size(), 1);
    const QVector<QJsonObject> lines = fleet->events("report");
    QCOMPARE(lines.size(), 1);
    QCOMPARE(lines.first()["camera"].toInt(), 1);
    QCOMPARE(lines.first()["destid"].toString(), QString(Workstation::srcid));
    QCOMPARE(lines.first()["count"].toInt(), 1);
    QCOMPARE(lines.first()["raw"].toString().toUtf8(), got.first().datagram.mid(8));
}

void tst_FleetReporter::fromANamedRequest()
{
    start({entry(bree("body"), {{"on", "SetName"}})});
    fence();
    QTest::qWait(100);
    QVERIFY(reports(0).isEmpty());
    workstation->ask("SetName", first, {{"name", "Crib"}});
    QCOMPARE(reports(1).size(), 1);
}

void tst_FleetReporter::severalTimes()
{
    start({entry(bree("on"), {{"every", 0.2}, {"times", 4}}), entry(bree("fall"))});
    fence();
    const Replies got = reports(5);
    QCOMPARE(got.size(), 5);
    QCOMPARE(std::count_if(got.begin(), got.end(),
                 [](const Workstation::Reply &r) { return r.object() == whole("on"); }),
        4);
    QVERIFY(got.last().at - got.first().at > 500);
    QTest::qWait(500);
    QCOMPARE(reports(5).size(), 5);
}

void tst_FleetReporter::raw()
{
    start({QJsonObject{{"raw", "{\"method\":\"report\","}}});
    fence();
    const auto isRaw = [](const Workstation::Reply &reply) {
        return reply.datagram == TestNetwork::frame("{\"method\":\"report\",");
    };
    QCOMPARE(workstation->await(1, isRaw).size(), 1);
}

void tst_FleetReporter::toTheLastWorkstation()
{
    start();
    fence();
    workstation->sendDatagram(TestNetwork::frame(
        R"({"destarray":["02564C000001"],"id":900,"method":"GetSD","srcid":"020000000BBB"})"));
    QCOMPARE(workstation->awaitId(1, 900).size(), 1);
    QVERIFY(fleet->order(R"(report 1 {"function":"speaker"})"));
    QCOMPARE(reports(1).value(0).object()["destid"].toString(), QString("020000000BBB"));
}

void tst_FleetReporter::countGoesOutInBursts()
{
    start({entry(bree("on"), {{"count", 2000}})});
    fence();
    const Replies got = reports(2000);
    QCOMPARE(got.size(), 2000);
    QVERIFY(got.last().at - got.first().at > 800); // 99 pauses of 10 ms
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("report").size(), 1, patience);
    QCOMPARE(fleet->events("report").first()["count"].toInt(), 2000);
}

void tst_FleetReporter::nothingDuringARestart()
{
    start({entry(bree("on"), {{"every", 0.1}, {"times", 1000}})});
    fence();
    reports(2);
    workstation->ask("ResetDefault", first, {{"keepnetwork", "0"}});
    QTRY_VERIFY_WITH_TIMEOUT(!fleet->events("restart").isEmpty(), patience);
    const int before = reports(0).size();
    QTRY_VERIFY_WITH_TIMEOUT(!fleet->events("back").isEmpty(), patience); // after a second
    QVERIFY(reports(0).size() <= before + 2);
    reports(before + 5);
}

void tst_FleetReporter::order()
{
    start();
    fence();
    QVERIFY(fleet->order(R"(report 1 {"function":"bree","status":"body"})"));
    QCOMPARE(reports(1).value(0).object(), whole("body"));
    fence(2);
    QVERIFY(fleet->order(R"(  report   02:56:4C:00:00:02   {"function":"bree","status":"on"} )"));
    QCOMPARE(reports(2).value(1).object(), whole("on", "02564C000002"));
}

void tst_FleetReporter::orderToAll()
{
    start();
    fence();
    fence(2);
    QVERIFY(fleet->order(R"(report all {"function":"confirm"})"));
    const Replies got = reports(2);
    QCOMPARE(got.size(), 2);
    QVERIFY(got.first().object()["srcid"] != got.last().object()["srcid"]);
}

void tst_FleetReporter::orderOfAScript()
{
    start();
    fence();
    QVERIFY(fleet->order(R"(script 1 {"times":3,"every":0.05,"report":{"function":"speaker"}})"));
    QCOMPARE(reports(3).size(), 3);
}

// Each time; no request lets it go out.
void tst_FleetReporter::atAKey()
{
    start({entry(bree("body"), {{"key", "b"}}), entry(bree("fall"), {{"key", "b"}, {"after", 0.2}}),
        entry(bree("on"), {{"key", "on"}})});
    fence();
    QTest::qWait(100);
    QVERIFY(reports(0).isEmpty());
    for (const int soFar : {0, 2}) {
        QVERIFY(fleet->order("b"));
        const Replies got = reports(soFar + 2);
        QCOMPARE(got.size(), soFar + 2);
        QCOMPARE(got.value(soFar).object(), whole("body"));
        QCOMPARE(got.value(soFar + 1).object(), whole("fall"));
    }
    QVERIFY(fleet->order("on"));
    QCOMPARE(reports(5).value(4).object(), whole("on"));
    QVERIFY(fleet->order("B"));
    QByteArray errors;
    QTRY_VERIFY_WITH_TIMEOUT((errors += fleet->errors()).endsWith('\n'), patience);
    QVERIFY2(errors.startsWith("vorlyn-fleet: \"B\" is none of: "), errors);
}

void tst_FleetReporter::beforeAnyWorkstation()
{
    start();
    QVERIFY(fleet->order(R"(report 1 {"function":"speaker"})"));
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("trouble").size(), 1, patience);
    QCOMPARE(fleet->events("trouble").first()["reason"].toString(),
        QString("a report before any workstation has spoken"));
    fence();
    QVERIFY(reports(0).isEmpty());
}

void tst_FleetReporter::wrongOrders_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("complaint");
    const QByteArray usage =
        " is none of: report CAMERA OBJECT, script CAMERA OBJECT, a \"key\" of the "
        "scenario";
    for (const char *line : {"hello", "report", "report 1", "report 1 [1]", "report {\"a\":1}",
             "reports 1 {}", "script 1 {"})
        QTest::newRow(line) << QByteArray(line) << '"' + QByteArray(line) + '"' + usage;
    QTest::newRow("camera") << QByteArray("report 3 {}") << QByteArray("\"3\" names no camera");
    QTest::newRow("mac") << QByteArray("report 02:00 {}")
                         << QByteArray("\"02:00\" names no camera");
    QTest::newRow("key") << QByteArray("script 1 {\"raw\":\"\",\"x\":1}")
                         << QByteArray("unknown key \"x\"");
}

void tst_FleetReporter::wrongOrders()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, complaint);
    start();
    fence();
    QVERIFY(fleet->order(line));
    QByteArray errors;
    QTRY_VERIFY_WITH_TIMEOUT((errors += fleet->errors()).endsWith('\n'), patience);
    QCOMPARE(errors, "vorlyn-fleet: " + complaint + '\n');
    fence();
    QVERIFY(reports(0).isEmpty());
}

void tst_FleetReporter::linesInPieces()
{
    start();
    fence();
    QVERIFY(
        fleet->order("\n\nreport 1 {\"function\":\"speaker\"}\nreport 1 {\"function\":\"image\"}"));
    QCOMPARE(reports(2).size(), 2);
    QVERIFY(fleet->errors().isEmpty());
}

void tst_FleetReporter::endOfInput()
{
    start({entry(bree("on"), {{"on", "SetName"}})});
    fleet->endInput();
    fence();
    workstation->ask("SetName", first, {{"name", "Crib"}});
    QCOMPARE(reports(1).size(), 1);
}

void tst_FleetReporter::lastLineWithoutItsEnd()
{
    start();
    fence();
    fleet->endInput(R"(report 1 {"function":"speaker"})");
    QCOMPARE(reports(1).size(), 1);
    fence();
}

// Where it would be, no other file is taken for it.
void tst_FleetReporter::withoutStandardInput()
{
    fleet->setLauncher({"sh", "-c", "exec \"$@\" <&-", "sh"});
    start({entry(bree("on"))});
    fence();
    QCOMPARE(reports(1).size(), 1);
    const QString input = QStringLiteral("/proc/%1/fd/0").arg(fleet->processId());
    QCOMPARE(HostProcess::output("readlink", {input}), QByteArray("/dev/null\n"));
    QVERIFY(fleet->errors().isEmpty());
}

QTEST_GUILESS_MAIN(tst_FleetReporter)
#include "tst_FleetReporter.moc"
