#include "FleetProcess.h"
#include "TestNetwork.h"
#include "Workstation.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QNetworkInterface>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTest>
#include <QtEndian>

using TestNetwork::atCameras;

namespace {

const QString first = "02564C000001";
const QString second = "02564C000002";
constexpr int longestWaitMs = 20000;

struct Ended {
    int status; // -1 when it crashed or ran on
    QByteArray out;
    QByteArray errors;
};

Ended run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    const bool good =
        process.waitForFinished(longestWaitMs) && process.exitStatus() == QProcess::NormalExit;
    return {good ? process.exitCode() : -1, process.readAllStandardOutput(),
        process.readAllStandardError()};
}

Ended runFleet(const QStringList &arguments)
{
    return run("nsenter", atCameras(QStringList(VORLYN_FLEET) + arguments));
}

QStringList cameraAddresses()
{
    const Ended ip = run("nsenter", atCameras({"ip", "-br", "-4", "addr", "show", "dev", "cam-a"}));
    return QString::fromUtf8(ip.out).simplified().split(' ').mid(2); // after name and state
}

QJsonObject scenario(const QJsonObject &camera)
{
    return {{"cameras", QJsonArray{camera}}};
}

QJsonObject ruleFor(const QJsonObject &rule)
{
    return scenario({{"camera", 1}, {"rules", QJsonArray{rule}}});
}

QJsonObject staticNetwork(const QString &ip)
{
    return {{"IpMode", "static"}, {"ip", ip}, {"netmask", "255.255.255.0"},
        {"gateway", "10.77.0.1"}, {"dns1", "10.77.0.1"}, {"dns2", ""}};
}

struct Upload {
    int curlStatus;
    QByteArray body;
    QString httpStatus;
    QByteArray log; // of the headers
};

// A real client; more options stand before the URL.
Upload upload(const QString &path, const QString &ip, const QStringList &more = QStringList())
{
    const Ended curl = run("curl",
        QStringList{"-sv", "-m", "15", "-w", "\n%{http_code}", "-F", "file=@" + path} + more
            + QStringList("http://" + ip + "/update.cgi"));
    const int end = curl.out.lastIndexOf('\n');
    return {
        curl.status, curl.out.left(end), QString::fromLatin1(curl.out.mid(end + 1)), curl.errors};
}

}

// The program as its users have it: in the cameras' namespace, met with plain sockets and curl.
class tst_FleetProgram : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void help();
    void version();
    void wrongUse_data();
    void wrongUse();
    void badScenario();
    void noSuchInterface();
    void noRight();
    void portInUse();
    void readyLine();
    void journalOnStandardOutput();
    void interrupt();
    void addressesOfOthersStay();

    void search();
    void searchFields();
    void keeps_data();
    void keeps();
    void listOfTargets();
    void statesOfTests();
    void sdCard();
    void wifi();
    void staticAddress();
    void staticAddressRefused();
    void dhcp();
    void reset();
    void otherInterfaceUnheard();
    void unclaimedAndDropped();

    void replyFaults_data();
    void replyFaults();
    void silentRule();
    void delayedReply();
    void badFrames_data();
    void badFrames();
    void burstAndCopies();
    void ruleIsUsedUp();
    void notApplied();
    void unusedRules();

    void uploadByCurl();
    void uploadMoves();
    void uploadFromTwo();
    void page();
    void otherRequests_data();
    void otherRequests();
    void endlessHead();
    void wrongUploads_data();
    void wrongUploads();
    void httpFaults_data();
    void httpFaults();
    void uploadSilent();
    void uploadReset();
    void uploadBrokenOff();

private:
    void start(int count = 3);
    QByteArray talk(const QString &ip, const QByteArray &request);
    // The camera answers, so everything sent before has been seen.
    void fence(const QString &camera = second);

    QScopedPointer<FleetProcess> fleet;
    QScopedPointer<Workstation> workstation;
    QTemporaryDir folder;
    QString image;
    QByteArray imageDigest;
};

void tst_FleetProgram::initTestCase()
{
    QByteArray content(8 << 20, '\0');
    for (int i = 0; i < content.size(); ++i)
        content[i] = char((i * 2654435761u) >> 13);
    image = folder.filePath("1.2.3.bin");
    QFile file(image);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
    imageDigest = QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex();
}

void tst_FleetProgram::init()
{
    fleet.reset(new FleetProcess("cam-a", 3, "10.77.0.11"));
    workstation.reset(new Workstation);
}

void tst_FleetProgram::cleanup()
{
    if (!fleet->stop())
        QFAIL(fleet->errors());
    fleet.reset();
    workstation.reset();
    QCOMPARE(cameraAddresses(), QStringList{"10.77.0.2/24"});
}

void tst_FleetProgram::start(int count)
{
    fleet->addOptions({"--count", QString::number(count)});
    QVERIFY(fleet->start());
}

void tst_FleetProgram::fence(const QString &camera)
{
    QVERIFY(!workstation->ask("GetSD", camera).isEmpty());
}

QByteArray tst_FleetProgram::talk(const QString &ip, const QByteArray &request)
{
    QTcpSocket socket;
    socket.connectToHost(ip, 80);
    if (!socket.waitForConnected(longestWaitMs))
        return QByteArray();
    socket.write(request);
    while (socket.state() == QAbstractSocket::ConnectedState
        && socket.waitForReadyRead(longestWaitMs)) { }
    return socket.readAll();
}

void tst_FleetProgram::help()
{
    const Ended ended = runFleet({"--help"});
    QCOMPARE(ended.status, 0);
    QVERIFY(ended.out.contains("--first-address <address>"));
    QVERIFY(ended.out.contains("--scenario <file>"));
    QVERIFY(ended.out.contains("Exit status"));
    QCOMPARE(ended.errors, QByteArray());
}

void tst_FleetProgram::version()
{
    const Ended ended = runFleet({"--version"});
    QCOMPARE(ended.status, 0);
    const QRegularExpression line("\\Avorlyn-fleet \\d+\\.\\d+\\.\\d+\\n\\z");
    QVERIFY(line.match(QString::fromUtf8(ended.out)).hasMatch());
}

void tst_FleetProgram::wrongUse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("complaint");
    QTest::newRow("nothing") << QStringList() << QByteArray("--interface is missing");
    QTest::newRow("unknown") << QStringList{"--camera"} << QByteArray("Unknown option 'camera'");
    QTest::newRow("count") << QStringList{"--interface", "cam-a", "--count", "none"}
                           << QByteArray("--count must be a number from 1 to 20000");
    QTest::newRow("no scenario") << QStringList{"--interface", "cam-a", "--scenario",
        "/nowhere.json"} << QByteArray("/nowhere.json: ");
}

void tst_FleetProgram::wrongUse()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, complaint);
    const Ended ended = runFleet(arguments);
    QCOMPARE(ended.status, 2);
    QVERIFY2(ended.errors.startsWith("vorlyn-fleet: " + complaint), ended.errors);
    QCOMPARE(ended.errors.count('\n'), 1);
    QCOMPARE(ended.out, QByteArray());
}

void tst_FleetProgram::badScenario()
{
    const QString path = folder.filePath("bad.json");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"cameras":[{"camera":1,"rules":[{"on":"SetName","slient":true}]}]})");
    file.close();
    const Ended ended = runFleet({"--interface", "cam-a", "--scenario", path});
    QCOMPARE(ended.status, 2);
    QCOMPARE(ended.errors,
        "vorlyn-fleet: " + path.toUtf8()
            + ": cameras[0].rules[0]: unknown key \"slient\" in a rule on \"SetName\"\n");
}

void tst_FleetProgram::noSuchInterface()
{
    const Ended ended = runFleet({"--interface", "eth77"});
    QCOMPARE(ended.status, 1);
    QVERIFY2(
        ended.errors.startsWith("vorlyn-fleet: no interface \"eth77\"; there are: "), ended.errors);
    QVERIFY(ended.errors.contains("cam-a"));
}

void tst_FleetProgram::noRight()
{
    const Ended ended = run("nsenter",
        atCameras(
            {"setpriv", "--bounding-set", "-net_admin", "--inh-caps", "-net_admin", VORLYN_FLEET,
                "--interface", "cam-a", "--count", "2", "--first-address", "10.77.0.11"}));
    QVERIFY2(
        ended.errors.startsWith("vorlyn-fleet: can't add 10.77.0.11/24 to cam-a: "), ended.errors);
    QVERIFY2(ended.errors.contains("--no-addresses does without"), ended.errors);
    QCOMPARE(ended.status, 1);
}

void tst_FleetProgram::portInUse()
{
    start();
    const Ended ended =
        runFleet({"--interface", "cam-a", "--count", "2", "--first-address", "10.77.0.12"});
    QCOMPARE(ended.status, 1);
    QVERIFY2(ended.errors.startsWith("vorlyn-fleet: port 80 of 10.77.0.12: "), ended.errors);
    QVERIFY(cameraAddresses().contains("10.77.0.12/24")); // the other program's
    fence();
}

void tst_FleetProgram::readyLine()
{
    QProcess process;
    process.start("nsenter",
        atCameras({VORLYN_FLEET, "--interface", "cam-a", "--count", "2", "--first-address",
            "10.77.0.31", "--http-port", "8080"}));
    QVERIFY(process.waitForReadyRead(longestWaitMs));
    QCOMPARE(process.readAllStandardOutput(),
        QByteArray("READY cameras=2 interface=cam-a first=10.77.0.31 last=10.77.0.32 http=8080 "
                   "rtsp=8554\n"));
    QCOMPARE(cameraAddresses(), QStringList({"10.77.0.2/24", "10.77.0.31/24", "10.77.0.32/24"}));
    process.terminate();
    QVERIFY(process.waitForFinished(longestWaitMs));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
}

void tst_FleetProgram::journalOnStandardOutput()
{
    QProcess process;
    process.start("nsenter", atCameras({VORLYN_FLEET, "--interface", "cam-a", "--journal", "-"}));
    QByteArray out;
    QTRY_VERIFY_WITH_TIMEOUT(
        (out += process.readAllStandardOutput()).contains("READY"), longestWaitMs);
    process.terminate();
    QVERIFY(process.waitForFinished(longestWaitMs));
    out += process.readAllStandardOutput();
    const QList<QByteArray> lines = out.trimmed().split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(QJsonDocument::fromJson(lines.first()).object()["event"].toString(), QString("ready"));
    QVERIFY(lines.at(1).startsWith("READY cameras=1 interface=cam-a first=10.77.0.12 ")); // .2 + 10
    QCOMPARE(QJsonDocument::fromJson(lines.last()).object()["event"].toString(), QString("stop"));
}

void tst_FleetProgram::interrupt()
{
    QProcess process;
    process.start("nsenter", atCameras({VORLYN_FLEET, "--interface", "cam-a"}));
    QVERIFY(process.waitForReadyRead(longestWaitMs));
    QCOMPARE(run("kill", {"-INT", QString::number(process.processId())}).status, 0);
    QVERIFY(process.waitForFinished(longestWaitMs));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(cameraAddresses(), QStringList{"10.77.0.2/24"});
}

void tst_FleetProgram::addressesOfOthersStay()
{
    QVERIFY(TestNetwork::runAtCameras("ip addr add 10.77.0.12/24 dev cam-a"));
    start();
    QVERIFY(fleet->stop());
    QCOMPARE(cameraAddresses(), QStringList({"10.77.0.2/24", "10.77.0.12/24"}));
    QVERIFY(TestNetwork::runAtCameras("ip addr del 10.77.0.12/24 dev cam-a"));
}

void tst_FleetProgram::search()
{
    start();
    const int id = workstation->send("search", {"all"}, {{"user", "Windows IP Tool"}});
    const QVector<Workstation::Reply> replies = workstation->awaitId(3, id);
    QCOMPARE(replies.size(), 3);
    for (int i = 0; i < 3; ++i) {
        const QJsonObject object = replies.at(i).object();
        QCOMPARE(replies.at(i).from.toString(), QStringLiteral("10.77.0.%1").arg(11 + i));
        QCOMPARE(object["ip"].toString(), replies.at(i).from.toString());
        QCOMPARE(object["mac"].toString(), QStringLiteral("02:56:4C:00:00:0%1").arg(1 + i));
        QCOMPARE(replies.at(i).datagram,
            TestNetwork::frame(QJsonDocument(object).toJson(QJsonDocument::Compact)));
    }
    const QVector<QJsonObject> lines = fleet->events("request");
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(1)["camera"].toInt(), 2);
    QCOMPARE(lines.at(1)["mac"].toString(), QString("02:56:4C:00:00:02"));
    QCOMPARE(lines.at(1)["ip"].toString(), QString("10.77.0.12"));
    QCOMPARE(lines.at(1)["id"].toInt(), id);
    QVERIFY(!lines.at(1).contains("rule"));
    const QDateTime time = QDateTime::fromString(lines.at(1)["time"].toString(), Qt::ISODateWithMs);
    QVERIFY(qAbs(time.secsTo(QDateTime::currentDateTimeUtc())) < 60);
}

void tst_FleetProgram::searchFields()
{
    fleet->setScenario({{"cameras",
        QJsonArray{QJsonObject{{"camera", "all"}, {"fields", QJsonObject{{"model", "N1"}}}},
            QJsonObject{{"camera", 1},
                {"fields", QJsonObject{{"name", "Crib"}, {"httpport", 80}, {"mac", ""}}}}}}});
    start();
    const int id = workstation->send("search", {first});
    const QJsonObject object = workstation->awaitId(1, id).value(0).object();
    QCOMPARE(object["name"].toString(), QString("Crib"));
    QCOMPARE(object["httpport"], QJsonValue(80));
    QCOMPARE(object["mac"], QJsonValue(""));
    QCOMPARE(object["model"], QJsonValue("N1"));
    QCOMPARE(workstation->ask("search", second)["model"], QJsonValue("N1"));
}

void tst_FleetProgram::keeps_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::newRow("name") << "SetName"
                          << "name" << QString::fromUtf8("Stube 客厅 \"2\"");
    QTest::newRow("p2pid") << "SetP2p"
                           << "p2pid"
                           << "XYZ-000123";
    QTest::newRow("functions") << "SetHdCuFun"
                               << "HdCuFun"
                               << "WIFI,SPEAKER";
    QTest::newRow("mac") << "SetMac"
                         << "mac"
                         << "02:AA:BB:CC:DD:EE";
}

void tst_FleetProgram::keeps()
{
    QFETCH(QString, method);
    QFETCH(QString, key);
    QFETCH(QString, value);
    start();
    const QJsonObject reply = workstation->ask(method, second, {{key, value}});
    QCOMPARE(reply["result"].toString(), QString("success"));
    QCOMPARE(reply["method"].toString(), method);
    QCOMPARE(reply["srcid"].toString(), second);
    QCOMPARE(reply["destid"].toString(), QString(Workstation::srcid));
    QCOMPARE(workstation->ask("search", second)[key].toString(), value);
    QVERIFY(workstation->ask("search", first)[key].toString() != value);
    QCOMPARE(fleet->requests(method).size(), 1);
    QCOMPARE(fleet->requests(method).first()[key].toString(), value);
    const QJsonObject line = fleet->events("request").value(0);
    QCOMPARE(line["mac"].toString(), QString("02:56:4C:00:00:02")); // before it obeyed
    QCOMPARE(line["result"].toString(), QString("success"));

    QCOMPARE(workstation->ask(method, second)["result"].toString(), QString("failure")); // no value
    QCOMPARE(workstation->ask("search", second)[key].toString(), value);
}

void tst_FleetProgram::listOfTargets()
{
    start();
    const int id = workstation->send("SetName", {first, second}, {{"name", "both"}});
    QCOMPARE(workstation->awaitId(2, id).size(), 2);
    QCOMPARE(workstation->ask("search", "02564C000003")["name"].toString(), QString("Camera-0003"));
    QCOMPARE(workstation->repliesTo(id), 2);
    QCOMPARE(fleet->requests("SetName").size(), 2);
}

void tst_FleetProgram::statesOfTests()
{
    start();
    const struct {
        const char *method;
        const char *key;
        const char *value;
        const char *field;
        const char *shown;
    } rows[] = {{"SetPTZ", "command", "up", "ptz", "up"},
        {"SetIRcut", "ircut", "night", "ircut", "night"},
        {"SetColor", "color", "on", "color", "on"},
        {"testMicrophone", "none", "", "micTests", "1"}};
    for (const auto &row : rows) {
        const QJsonObject reply = workstation->ask(row.method, first, {{row.key, row.value}});
        QCOMPARE(reply["result"].toString(), QString("success"));
        QCOMPARE(workstation->ask("search", first)[row.field].toString(), QString(row.shown));
        QCOMPARE(fleet->requests(row.method).size(), 1);
    }
    QCOMPARE(workstation->ask("SetIRcut", first, {{"ircut", "noon"}})["result"].toString(),
        QString("failure"));
}

void tst_FleetProgram::sdCard()
{
    fleet->setScenario(
        scenario({{"camera", 2}, {"sd", QJsonObject{{"totalsize", "1024"}, {"freesize", "10"}}}}));
    start();
    const QJsonObject usual = workstation->ask("GetSD", first);
    QVERIFY(usual["totalsize"].isDouble() && usual["totalsize"].toInt() > 0);
    QVERIFY(usual["freesize"].isDouble());
    const QJsonObject special = workstation->ask("GetSD", second);
    QCOMPARE(special["totalsize"], QJsonValue("1024"));
    QCOMPARE(special["freesize"], QJsonValue("10"));
}

void tst_FleetProgram::wifi()
{
    const QJsonArray networks{QJsonObject{{"wifiname", "Home"}, {"Signal", 80}},
        QJsonObject{{"wifiname", ""}, {"Signal", "90"}}};
    fleet->setScenario(scenario({{"camera", 1}, {"wifi", networks}, {"wifi-scan-ms", 800}}));
    start();
    QElapsedTimer clock;
    clock.start();
    const QJsonObject reply = workstation->ask("WifiScan", first);
    QVERIFY2(clock.elapsed() >= 790, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(reply["WifiList"].toArray(), networks);
    QCOMPARE(reply["result"].toString(), QString("success"));
    QVERIFY(!workstation->ask("WifiScan", second)["WifiList"].toArray().isEmpty());
}

void tst_FleetProgram::staticAddress()
{
    start();
    const int id = workstation->send("SetIp", {first}, staticNetwork("10.77.0.90"));
    const QVector<Workstation::Reply> replies = workstation->awaitId(1, id);
    QCOMPARE(replies.value(0).object()["result"].toString(), QString("success"));
    QCOMPARE(replies.value(0).from.toString(), QString("10.77.0.11")); // still the old one

    const int after = workstation->send("search", {first});
    const Workstation::Reply found = workstation->awaitId(1, after).value(0);
    QCOMPARE(found.from.toString(), QString("10.77.0.90"));
    for (const QString &key : staticNetwork("").keys())
        QCOMPARE(found.object()[key], staticNetwork("10.77.0.90")[key]);
    QCOMPARE(found.object()["rtsppath1"].toString(), QString("rtsp://10.77.0.90:8554/live1"));
    QStringList expected{"10.77.0.2/24", "10.77.0.12/24", "10.77.0.13/24", "10.77.0.90/24"};
    QCOMPARE(cameraAddresses(), expected);
    QVERIFY(talk("10.77.0.90", "GET / HTTP/1.1\r\n\r\n").contains("02:56:4C:00:00:01"));
    const QVector<QJsonObject> moves = fleet->events("move");
    QCOMPARE(moves.size(), 1);
    QCOMPARE(moves.first()["from"].toString(), QString("10.77.0.11"));
    QCOMPARE(moves.first()["to"].toString(), QString("10.77.0.90"));
}

void tst_FleetProgram::staticAddressRefused()
{
    start();
    for (const char *ip : {"10.77.0.12", "10.77.0", "0.0.0.0", "10.77.0.255", "10.77.0.5abc"}) {
        const QJsonObject reply = workstation->ask("SetIp", first, staticNetwork(ip));
        QCOMPARE(reply["result"].toString(), QString("failure"));
    }
    QCOMPARE(workstation->ask("search", first)["ip"].toString(), QString("10.77.0.11"));
    QVERIFY(fleet->events("move").isEmpty());
    QCOMPARE(fleet->events("trouble").size(), 1); // the taken one
}

void tst_FleetProgram::dhcp()
{
    fleet->addOptions({"--dhcp-pool", "10.77.0.13-10.77.0.15"});
    start();
    const int id = workstation->send("SetIp", {first, second}, {{"IpMode", "dhcp"}});
    QCOMPARE(workstation->awaitId(2, id).size(), 2);
    QTRY_COMPARE(fleet->events("move").size(), 2);
    const QJsonObject found = workstation->ask("search", first);
    QCOMPARE(found["ip"].toString(), QString("10.77.0.14")); // .13 is the third camera's
    QCOMPARE(found["IpMode"].toString(), QString("dhcp"));
    QCOMPARE(workstation->ask("search", second)["ip"].toString(), QString("10.77.0.15"));
    QVERIFY(cameraAddresses().contains("10.77.0.15/24"));
    QVERIFY(!cameraAddresses().contains("10.77.0.12/24"));
}

void tst_FleetProgram::reset()
{
    fleet->setScenario(
        scenario({{"camera", 2}, {"after-reset", QJsonObject{{"ip", "10.77.0.60"}}}}));
    start();
    QVERIFY(!workstation->ask("SetName", first, {{"name", "changed"}}).isEmpty());
    QVERIFY(!workstation->ask("SetP2p", first, {{"p2pid", "changed"}}).isEmpty());
    QVERIFY(!workstation->ask("SetIp", first, staticNetwork("10.77.0.90")).isEmpty());
    const int id = workstation->send("ResetDefault", {first, second}, {{"keepnetwork", "0"}});
    for (const Workstation::Reply &reply : workstation->awaitId(2, id))
        QCOMPARE(reply.object()["result"].toString(), QString("success"));

    const int during = workstation->send("search", {"all"});
    fence("02564C000003");
    QCOMPARE(workstation->repliesTo(during), 1);
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("back").size(), 2, longestWaitMs);
    QCOMPARE(fleet->events("restart").first()["why"].toString(), QString("reset"));

    const int after = workstation->send("search", {first});
    const Workstation::Reply found = workstation->awaitId(1, after).value(0);
    QCOMPARE(found.from.toString(), QString("10.77.0.11"));
    QCOMPARE(found.object()["name"].toString(), QString("Camera-0001"));
    QCOMPARE(found.object()["p2pid"].toString(), QString("P2P0001"));
    QCOMPARE(found.object()["IpMode"].toString(), QString("dhcp"));
    QCOMPARE(workstation->ask("search", second)["ip"].toString(), QString("10.77.0.60"));
    QCOMPARE(cameraAddresses(),
        QStringList({"10.77.0.2/24", "10.77.0.13/24", "10.77.0.11/24", "10.77.0.60/24"}));
    QCOMPARE(workstation->ask("ResetDefault", first, {{"keepnetwork", 0}})["result"].toString(),
        QString("failure"));
}

void tst_FleetProgram::otherInterfaceUnheard()
{
    start();
    QUdpSocket sender;
    QVERIFY(sender.bind(QHostAddress("10.88.0.1"), 0));
    sender.setMulticastInterface(QNetworkInterface::interfaceFromName("veth-b"));
    FleetProcess others("cam-b", 1, "10.88.0.11");
    QVERIFY(others.start());
    const QByteArray request = TestNetwork::frame(
        R"({"id":1,"method":"SetName","srcid":"X","destarray":["all"],"name":"other"})");
    QCOMPARE(sender.writeDatagram(request, QHostAddress("239.255.255.250"), 5888),
        qint64(request.size()));
    QTRY_COMPARE_WITH_TIMEOUT(others.requests("SetName").size(), 1, longestWaitMs);
    fence();
    QVERIFY(fleet->requests("SetName").isEmpty());
    QVERIFY(others.stop());
}

void tst_FleetProgram::unclaimedAndDropped()
{
    start();
    const int nobody = workstation->send("SetName", QJsonArray(), {{"name", "x"}});
    const int emptyName = workstation->send("SetName", {""}, {{"name", "x"}});
    workstation->sendDatagram(QByteArray("\0\0\0\x63\0\0\0\0{}", 10));
    workstation->sendDatagram("abc");
    fence();
    QCOMPARE(workstation->repliesTo(nobody) + workstation->repliesTo(emptyName), 0);
    const QVector<QJsonObject> unclaimed = fleet->events("unclaimed");
    QCOMPARE(unclaimed.size(), 2);
    QCOMPARE(unclaimed.first()["id"].toInt(), nobody);
    QVERIFY(unclaimed.first()["raw"].toString().contains("\"destarray\":[]"));
    const QVector<QJsonObject> dropped = fleet->events("dropped");
    QCOMPARE(dropped.size(), 2);
    QCOMPARE(dropped.first()["hex"].toString(), QString("00000063000000007b7d"));
    QVERIFY(dropped.first()["reason"].toString().contains("99"));
    QCOMPARE(dropped.last()["reason"].toString(), QString("3 bytes, shorter than a header"));
}

void tst_FleetProgram::replyFaults_data()
{
    QTest::addColumn<QJsonObject>("fault");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("expected");
    const auto set = [](const QString &key, const QJsonValue &value) {
        return QJsonObject{{"set", QJsonObject{{key, value}}}};
    };
    const QJsonValue absent(QJsonValue::Undefined);
    QTest::newRow("capitals") << set("result", "SUCCESS") << "result" << QJsonValue("SUCCESS");
    QTest::newRow("other text") << set("result", "busy") << "result" << QJsonValue("busy");
    QTest::newRow("no result") << QJsonObject{{"remove", QJsonArray{"result"}}} << "result"
                               << absent;
    QTest::newRow("wrong destid") << set("destid", "AABBCCDDEEFF") << "destid"
                                  << QJsonValue("AABBCCDDEEFF");
    QTest::newRow("no destid") << QJsonObject{{"remove", QJsonArray{"destid"}}} << "destid"
                               << absent;
    QTest::newRow("number for text") << set("httpport", 80) << "httpport" << QJsonValue(80);
    QTest::newRow("empty mac") << set("mac", "") << "mac" << QJsonValue("");
    QTest::newRow("id as text") << QJsonObject{{"id-as", "text"}} << "id" << QJsonValue("1");
    QTest::newRow("id as boolean") << QJsonObject{{"id-as", "boolean"}} << "id" << QJsonValue(true);
    QTest::newRow("other id") << set("id", 999) << "id" << QJsonValue(999);
}

void tst_FleetProgram::replyFaults()
{
    QFETCH(QJsonObject, fault);
    QFETCH(QString, key);
    QFETCH(QJsonValue, expected);
    fault["on"] = "search";
    fleet->setScenario(ruleFor(fault));
    start();
    fence(); // the search below has id 1
    workstation->received.clear();
    workstation->send("search", {first});
    const auto replies = workstation->await(1, [](const Workstation::Reply &reply) {
        return reply.object()["method"] == QLatin1String("search");
    });
    QCOMPARE(replies.size(), 1);
    QCOMPARE(replies.first().object().value(key), expected);
    QCOMPARE(fleet->events("request").last()["rule"].toString(), QString("cameras[0].rules[0]"));
    QCOMPARE(fleet->events("request").last()["result"].toString(), QString("success"));
}

void tst_FleetProgram::silentRule()
{
    fleet->setScenario(ruleFor({{"on", "SetName"}, {"silent", true}}));
    start();
    const int id = workstation->send("SetName", {first}, {{"name", "quiet"}});
    QCOMPARE(workstation->ask("search", first)["name"].toString(), QString("quiet")); // it obeyed
    QCOMPARE(workstation->repliesTo(id), 0);
}

void tst_FleetProgram::delayedReply()
{
    fleet->setScenario(ruleFor({{"on", "SetName"}, {"delay-ms", 900}}));
    start();
    QElapsedTimer clock;
    clock.start();
    const int id = workstation->send("SetName", {first}, {{"name", "slow"}});
    fence(first);
    QCOMPARE(workstation->repliesTo(id), 0); // others are not held up
    QCOMPARE(workstation->awaitId(1, id).size(), 1);
    QVERIFY2(clock.elapsed() >= 890, qPrintable(QString::number(clock.elapsed())));
}

void tst_FleetProgram::badFrames_data()
{
    QTest::addColumn<QJsonObject>("fault");
    QTest::addColumn<int>("size"); // -1: as long as the length field says
    QTest::addColumn<int>("lengthOff"); // of the length field
    QTest::addColumn<bool>("isJson");
    QTest::newRow("no JSON") << QJsonObject{{"malformed", true}} << -1 << 0 << false;
    QTest::newRow("cut header") << QJsonObject{{"cut", 5}} << 5 << 0 << false;
    QTest::newRow("no bytes") << QJsonObject{{"cut", 0}} << 0 << 0 << false;
    QTest::newRow("length too great") << QJsonObject{{"length-error", 7}} << -1 << 7 << true;
    QTest::newRow("length too small") << QJsonObject{{"length-error", -7}} << -1 << -7 << true;
    QTest::newRow("2048 bytes") << QJsonObject{{"size", 2048}} << 2048 << 0 << true;
    QTest::newRow("2049 bytes") << QJsonObject{{"size", 2049}} << 2049 << 0 << true;
    QTest::newRow("20000 bytes") << QJsonObject{{"size", 20000}} << 20000 << 0 << true;
}

void tst_FleetProgram::badFrames()
{
    QFETCH(QJsonObject, fault);
    QFETCH(int, size);
    QFETCH(int, lengthOff);
    QFETCH(bool, isJson);
    fault["on"] = "search";
    fleet->setScenario(ruleFor(fault));
    start();
    workstation->send("search", {first});
    const QVector<Workstation::Reply> replies =
        workstation->await(1, [](const Workstation::Reply &) { return true; });
    QCOMPARE(replies.size(), 1);
    const QByteArray datagram = replies.first().datagram;
    if (size >= 0)
        QCOMPARE(datagram.size(), size);
    if (datagram.size() >= 8)
        QCOMPARE(int(qFromBigEndian<quint32>(datagram.constData())), datagram.size() + lengthOff);
    QCOMPARE(replies.first().object().isEmpty(), !isJson);
}

void tst_FleetProgram::burstAndCopies()
{
    fleet->setScenario(ruleFor({{"on", "GetSD"}, {"burst", 40}, {"copies", 3}}));
    start();
    const int id = workstation->send("GetSD", {first});
    QCOMPARE(workstation->awaitId(3, id).size(), 3);
    fence();
    QCOMPARE(workstation->repliesTo(id), 3);
    QVector<int> ids;
    for (const Workstation::Reply &reply : qAsConst(workstation->received))
        ids << reply.object()["id"].toInt();
    QCOMPARE(ids.size(), 44);
    for (int i = 0; i < 40; ++i)
        QCOMPARE(ids.at(i), 1000000 + i);
}

void tst_FleetProgram::ruleIsUsedUp()
{
    fleet->setScenario(ruleFor(
        {{"on", "SetName"}, {"after", 1}, {"times", 2}, {"set", QJsonObject{{"result", "busy"}}}}));
    start();
    QStringList results;
    for (int i = 0; i < 4; ++i)
        results << workstation->ask("SetName", first, {{"name", "x"}})["result"].toString();
    QCOMPARE(results, QStringList({"success", "busy", "busy", "success"}));
}

void tst_FleetProgram::notApplied()
{
    fleet->setScenario(ruleFor({{"on", "any"}, {"apply", false}}));
    start();
    QCOMPARE(workstation->ask("SetName", first, {{"name", "x"}})["result"].toString(),
        QString("success"));
    QCOMPARE(workstation->ask("SetIp", first, staticNetwork("10.77.0.90"))["result"].toString(),
        QString("success"));
    QCOMPARE(workstation->ask("ResetDefault", first, {{"keepnetwork", "0"}})["result"].toString(),
        QString("success"));
    const QJsonObject found = workstation->ask("search", first);
    QCOMPARE(found["name"].toString(), QString("Camera-0001"));
    QCOMPARE(found["ip"].toString(), QString("10.77.0.11"));
    QVERIFY(fleet->events("restart").isEmpty());
}

void tst_FleetProgram::unusedRules()
{
    const QJsonArray rules{QJsonObject{{"on", "GetSD"}, {"delay-ms", 1}},
        QJsonObject{{"on", "SetName"}, {"silent", true}},
        QJsonObject{{"on", "upload"}, {"status", 500}}};
    fleet->setScenario(scenario({{"camera", "all"}, {"rules", rules}}));
    start();
    fence();
    QVERIFY(fleet->stop());
    QStringList places;
    for (const QJsonObject &entry : fleet->events("unused-rule"))
        places << entry["rule"].toString();
    QCOMPARE(places, QStringList({"cameras[0].rules[1]", "cameras[0].rules[2]"}));
    QCOMPARE(fleet->events("stop").size(), 1);
}

void tst_FleetProgram::uploadByCurl()
{
    fleet->addOptions({"--sha256"});
    start();
    const Upload sent = upload(image, "10.77.0.12", {"-H", "Expect: 100-continue"});
    QCOMPARE(sent.curlStatus, 0);
    QCOMPARE(sent.httpStatus, QString("200"));
    QCOMPARE(sent.body, QByteArray("{\"Result\":0}"));
    QVERIFY2(sent.log.contains("< HTTP/1.1 100 Continue"), sent.log);
    QVERIFY(sent.log.contains("< Content-Type: application/json"));

    const QJsonObject entry = fleet->events("upload").value(0);
    QCOMPARE(entry["camera"].toInt(), 2);
    QCOMPARE(entry["filename"].toString(), QString("1.2.3.bin"));
    QCOMPARE(entry["bytes"].toInt(), 8 << 20);
    QCOMPARE(entry["sha256"].toString().toLatin1(), imageDigest);
    QCOMPARE(entry["complete"].toBool(), true);
    QCOMPARE(entry["status"].toInt(), 200);
    QCOMPARE(entry["answer"].toString(), QString("{\"Result\":0}"));
    QVERIFY(entry["raw"].toString().startsWith("POST /update.cgi HTTP/1.1\r\n"));
    QVERIFY(entry["part"].toString().contains("name=\"file\"; filename=\"1.2.3.bin\""));
    QVERIFY(entry["source"].toString().startsWith("10.77.0.1:"));

    const int during = workstation->send("search", {"all"});
    fence(first);
    QCOMPARE(workstation->repliesTo(during), 2);
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("back").size(), 1, longestWaitMs);
    QCOMPARE(fleet->events("restart").first()["why"].toString(), QString("firmware"));
    QCOMPARE(
        workstation->ask("search", second)["appVersion"].toString(), QString("1.2.3.20240319"));
    QCOMPARE(workstation->ask("search", first)["appVersion"].toString(), QString("1.0.0.20240101"));
}

void tst_FleetProgram::uploadMoves()
{
    fleet->setScenario(scenario({{"camera", 1}, {"restart-seconds", 0.1},
        {"after-upgrade", QJsonObject{{"ip", "10.77.0.95"}, {"name", "renewed"}}}}));
    start();
    QCOMPARE(upload(image, "10.77.0.11").body, QByteArray("{\"Result\":0}"));
    QVERIFY(!fleet->events("upload").value(0).contains("sha256")); // nobody asked
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("back").size(), 1, longestWaitMs);
    QCOMPARE(fleet->events("back").first()["ip"].toString(), QString("10.77.0.95"));
    QCOMPARE(workstation->ask("search", first)["name"].toString(), QString("renewed"));
    QVERIFY(!cameraAddresses().contains("10.77.0.11/24"));
    QVERIFY(talk("10.77.0.95", "GET / HTTP/1.1\r\n\r\n").contains("1.2.3.20240319"));
}

void tst_FleetProgram::uploadFromTwo()
{
    start();
    QProcess other;
    other.start("curl", {"-s", "-m", "15", "-F", "file=@" + image, "http://10.77.0.11/update.cgi"});
    QCOMPARE(upload(image, "10.77.0.12").body, QByteArray("{\"Result\":0}"));
    QVERIFY(other.waitForFinished(longestWaitMs));
    QCOMPARE(other.readAllStandardOutput(), QByteArray("{\"Result\":0}"));
    QCOMPARE(fleet->events("upload").size(), 2);
}

void tst_FleetProgram::page()
{
    fleet->setScenario(scenario({{"camera", 1}, {"fields", QJsonObject{{"name", "<Crib> & co"}}}}));
    start();
    const QByteArray answer = talk("10.77.0.11", "GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    QVERIFY(answer.startsWith("HTTP/1.1 200 "));
    QVERIFY(answer.contains("Content-Type: text/html"));
    QVERIFY(answer.contains("<h1>&lt;Crib&gt; &amp; co</h1>"));
    QVERIFY(answer.contains("02:56:4C:00:00:01"));
    const QJsonObject entry = fleet->events("http").value(0);
    QCOMPARE(entry["status"].toInt(), 200);
    QVERIFY(entry["raw"].toString().startsWith("GET / HTTP/1.1"));
}

void tst_FleetProgram::otherRequests_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("status");
    QTest::newRow("other page") << QByteArray("GET /none HTTP/1.1\r\n\r\n") << QByteArray("404");
    QTest::newRow("upload by GET")
        << QByteArray("GET /update.cgi HTTP/1.1\r\n\r\n") << QByteArray("404");
    QTest::newRow("no HTTP") << QByteArray("hello\r\n\r\n") << QByteArray("400");
}

void tst_FleetProgram::otherRequests()
{
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, status);
    start();
    const QByteArray answer = talk("10.77.0.11", request);
    QVERIFY2(answer.startsWith("HTTP/1.1 " + status + " "), answer);
    QCOMPARE(fleet->events("http").size(), 1);
    QVERIFY(fleet->events("restart").isEmpty());
}

void tst_FleetProgram::endlessHead()
{
    start();
    QTcpSocket socket;
    socket.connectToHost("10.77.0.11", 80);
    QVERIFY(socket.waitForConnected(longestWaitMs));
    socket.write(QByteArray(80000, 'h'));
    QVERIFY(socket.waitForDisconnected(longestWaitMs)
        || socket.state() == QAbstractSocket::UnconnectedState);
    QVERIFY(fleet->events("http").isEmpty());
}

void tst_FleetProgram::wrongUploads_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("status");
    const QByteArray post("POST /update.cgi HTTP/1.1\r\n");
    const QByteArray form("Content-Type: multipart/form-data; boundary=B\r\n");
    const QByteArray fileHead("--B\r\nContent-Disposition: form-data; filename=\"f\"\r\n\r\n");
    const auto body = [](const QByteArray &body) {
        return "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    };
    QTest::newRow("no length") << post + form + "\r\n" << QByteArray("411");
    QTest::newRow("no form") << post + body("abcd") << QByteArray("400");
    QTest::newRow("no end") << post + form + body(fileHead + "abcd") << QByteArray("400");
    QTest::newRow("empty file") << post + form + body(fileHead + "\r\n--B--\r\n")
                                << QByteArray("400");
    QTest::newRow("no file") << post + form + body("--B\r\n\r\nx\r\n--B--\r\n")
                             << QByteArray("400");
}

void tst_FleetProgram::wrongUploads()
{
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, status);
    start();
    const QByteArray answer = talk("10.77.0.11", request);
    QVERIFY2(answer.startsWith("HTTP/1.1 " + status + " "), answer);
    QVERIFY2(answer.endsWith("{\"Result\":-1}"), answer);
    QCOMPARE(fleet->events("upload").size(), 1);
    QVERIFY(fleet->events("restart").isEmpty());
}

void tst_FleetProgram::httpFaults_data()
{
    QTest::addColumn<QJsonObject>("fault");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("error with JSON")
        << QJsonObject{{"status", 500}} << "500" << QByteArray("{\"Result\":0}");
    QTest::newRow("page") << QJsonObject{{"body", "<h1>busy</h1>"}} << "200"
                          << QByteArray("<h1>busy</h1>");
    QTest::newRow("array") << QJsonObject{{"body", "[1]"}, {"content-type", "application/json"}}
                           << "200" << QByteArray("[1]");
    QTest::newRow("no Result") << QJsonObject{{"body", "{\"result\":0}"}} << "200"
                               << QByteArray("{\"result\":0}");
    QTest::newRow("Result 5") << QJsonObject{{"Result", 5}} << "200"
                              << QByteArray("{\"Result\":5}");
    QTest::newRow("Result -1") << QJsonObject{{"Result", -1}, {"status", 403}} << "403"
                               << QByteArray("{\"Result\":-1}");
    QTest::newRow("late") << QJsonObject{{"delay-ms", 500}} << "200"
                          << QByteArray("{\"Result\":0}");
}

void tst_FleetProgram::httpFaults()
{
    QFETCH(QJsonObject, fault);
    QFETCH(QByteArray, body);
    fault["on"] = "upload";
    fault["apply"] = false;
    fleet->setScenario(ruleFor(fault));
    start();
    QElapsedTimer clock;
    clock.start();
    const Upload sent = upload(image, "10.77.0.11");
    QVERIFY(clock.elapsed() >= fault["delay-ms"].toInt());
    QCOMPARE(sent.curlStatus, 0);
    QTEST(sent.httpStatus, "status");
    QCOMPARE(sent.body, body);
    const QJsonObject entry = fleet->events("upload").value(0);
    QCOMPARE(entry["rule"].toString(), QString("cameras[0].rules[0]"));
    QCOMPARE(entry["complete"].toBool(), true);
    QCOMPARE(entry["answer"].toString().toUtf8(), body);
    QVERIFY(fleet->events("restart").isEmpty());
}

void tst_FleetProgram::uploadSilent()
{
    fleet->setScenario(ruleFor({{"on", "upload"}, {"silent", true}, {"apply", false}}));
    start();
    const Upload sent = upload(image, "10.77.0.11", {"-m", "2"});
    QCOMPARE(sent.curlStatus, 28); // curl's own time limit
    QVERIFY(sent.body.isEmpty());
    const QJsonObject entry = fleet->events("upload").value(0);
    QCOMPARE(entry["bytes"].toInt(), 8 << 20);
    QCOMPARE(entry["status"].toInt(), 0);
    QVERIFY(entry["answer"].toString().isEmpty());
    QVERIFY(fleet->events("restart").isEmpty());
}

void tst_FleetProgram::uploadReset()
{
    fleet->setScenario(ruleFor({{"on", "upload"}, {"reset-after", 1000000}}));
    start();
    const Upload sent = upload(image, "10.77.0.11");
    QVERIFY2(
        sent.curlStatus == 55 || sent.curlStatus == 56, sent.log); // reset while sending or reading
    QTRY_COMPARE(fleet->events("upload").size(), 1);
    const QJsonObject entry = fleet->events("upload").value(0);
    QCOMPARE(entry["complete"].toBool(), false);
    QVERIFY(entry["bytes"].toInt() >= 900000 && entry["bytes"].toInt() < 8 << 20);
    fence();
    QVERIFY(fleet->events("restart").isEmpty());
    QCOMPARE(workstation->ask("search", first)["appVersion"].toString(), QString("1.0.0.20240101"));
}

void tst_FleetProgram::uploadBrokenOff()
{
    start();
    QTcpSocket socket;
    socket.connectToHost("10.77.0.11", 80);
    QVERIFY(socket.waitForConnected(longestWaitMs));
    socket.write("POST /update.cgi HTTP/1.1\r\nContent-Length: 100000\r\n"
                 "Content-Type: multipart/form-data; boundary=B\r\n\r\n"
                 "--B\r\nContent-Disposition: form-data; filename=\"f\"\r\n\r\nsome");
    QVERIFY(socket.waitForBytesWritten(longestWaitMs));
    socket.disconnectFromHost();
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("upload").size(), 1, longestWaitMs);
    QCOMPARE(fleet->events("upload").first()["complete"].toBool(), false);
    QCOMPARE(fleet->events("upload").first()["status"].toInt(), 0);
    QVERIFY(fleet->events("restart").isEmpty());
    QCOMPARE(upload(image, "10.77.0.11").body, QByteArray("{\"Result\":0}")); // it goes on
}

QTEST_GUILESS_MAIN(tst_FleetProgram)
#include "tst_FleetProgram.moc"
