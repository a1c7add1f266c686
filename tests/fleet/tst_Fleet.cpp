#include "Fleet.h"
#include "HostAddresses.h"
#include "TestNetwork.h"
#include "Workstation.h"

#include <QJsonDocument>
#include <QSet>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>

namespace {

FleetOptions onVethA(int count)
{
    FleetOptions options;
    options.interface = "veth-a";
    options.count = count;
    options.firstAddress = QHostAddress("10.77.0.11");
    options.restartSeconds = 0.2;
    return options;
}

bool hasAddress(const char *ip)
{
    return HostAddresses("veth-a").has(QHostAddress(ip));
}

QStringList eventsOf(const QSignalSpy &spy)
{
    QStringList names;
    for (const QList<QVariant> &arguments : spy)
        names << arguments.first().toJsonObject()["event"].toString();
    return names;
}

QString writeScenario(const QTemporaryDir &folder, const QByteArray &json)
{
    QFile file(folder.filePath("s.json"));
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size())
        qFatal("no scenario");
    return file.fileName();
}

// Whether all keys of `expected` are there; the cameras have a few fields of their own.
bool shows(const QJsonObject &reply, const QJsonObject &expected)
{
    const QStringList keys = expected.keys();
    return std::all_of(keys.begin(), keys.end(),
        [&](const QString &key) { return reply.value(key) == expected.value(key); });
}

// Blocks that begin with a brace; each paragraph is a request and its replies, whose further lines
// are indented.
QVector<QVector<QJsonObject>> exchangesOf(const QString &path)
{
    QFile page(path);
    if (!page.open(QIODevice::ReadOnly))
        qFatal("no page");
    QVector<QVector<QJsonObject>> exchanges;
    const QStringList blocks = QString::fromUtf8(page.readAll()).split("```");
    for (int i = 1; i < blocks.size(); i += 2) {
        if (!blocks.at(i).startsWith("\n{"))
            continue;
        for (const QString &paragraph : blocks.at(i).trimmed().split("\n\n")) {
            QVector<QJsonObject> exchange;
            for (const QString &object : QString(paragraph).replace("\n ", " ").split('\n'))
                exchange << QJsonDocument::fromJson(object.toUtf8()).object();
            exchanges << exchange;
        }
    }
    return exchanges;
}

}

// The library in a test's own process.
class tst_Fleet : public QObject
{
    Q_OBJECT

private slots:
    void startAndStop();
    void journalSignal();
    void refused_data();
    void refused();
    void refusedLeavesNothing();
    void badScenario();
    void searchOfAll();
    void spreadEvenly();
    void spreadAtRandom();
    void thousands();
    void inAnotherThread();
    void portsWithoutAddresses();
    void ownPortsInSpiteOfTheField();
    void macsFollowTheFirst();
    void journalInNoFolder();
    void requestsWhileRestarting();
    void resetToTakenAddress();
    void overtakenMove();
    void documentedExchanges();
};

void tst_Fleet::startAndStop()
{
    Fleet fleet(onVethA(3));
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    QCOMPARE(fleet.count(), 3);
    QCOMPARE(fleet.address(2), QHostAddress("10.77.0.13"));
    QCOMPARE(fleet.camera(2).field("mac"), QString("02:56:4C:00:00:03"));
    QVERIFY(hasAddress("10.77.0.11") && hasAddress("10.77.0.13"));
    QTcpSocket socket;
    socket.connectToHost("10.77.0.13", 80);
    QVERIFY(socket.waitForConnected(10000));

    fleet.stop();
    QCOMPARE(fleet.count(), 0);
    QVERIFY(!hasAddress("10.77.0.11") && !hasAddress("10.77.0.13"));
    QVERIFY(hasAddress("10.77.0.1"));

    QCOMPARE(fleet.start(&error), Fleet::Started); // and again
    QVERIFY(hasAddress("10.77.0.11"));
}

void tst_Fleet::journalSignal()
{
    Fleet fleet(onVethA(1));
    QSignalSpy spy(&fleet.journal(), &FleetJournal::written);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    Workstation workstation;
    QVERIFY(!workstation.ask("GetSD", "02564C000001").isEmpty());
    fleet.stop();
    QCOMPARE(eventsOf(spy), QStringList({"ready", "request", "stop"}));
    const QJsonObject request = spy.at(1).first().toJsonObject();
    QCOMPARE(request["camera"].toInt(), 1);
    QCOMPARE(request["ip"].toString(), QString("10.77.0.11"));
    QCOMPARE(request["method"].toString(), QString("GetSD"));
    QVERIFY(request["source"].toString().startsWith("10.77.0.1:"));
}

void tst_Fleet::refused_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("error");
    QTest::newRow("no interface") << "none0" << 1 << "10.77.0.11"
                                  << "no interface \"none0\"; there are: ";
    QTest::newRow("too many")
        << "veth-a" << 250 << "10.77.0.11"
        << "250 cameras from 10.77.0.11 do not fit into its subnet of length 24";
    QTest::newRow("up to the broadcast") << "veth-a" << 245 << "10.77.0.11"
                                         << "245 cameras from ";
    QTest::newRow("past the end") << "veth-a" << 2 << "255.255.255.255"
                                  << "2 cameras from ";
}

void tst_Fleet::refused()
{
    QFETCH(QString, interface);
    QFETCH(int, count);
    QFETCH(QString, first);
    FleetOptions options = onVethA(count);
    options.interface = interface;
    options.firstAddress = QHostAddress(first);
    Fleet fleet(options);
    QString told;
    QCOMPARE(fleet.start(&told), Fleet::Refused);
    QFETCH(QString, error);
    QVERIFY2(told.startsWith(error), qPrintable(told));
}

void tst_Fleet::refusedLeavesNothing()
{
    QTcpServer occupant;
    QVERIFY(occupant.listen(QHostAddress("10.77.0.1"), 80));
    FleetOptions options = onVethA(2);
    options.firstAddress = QHostAddress("10.77.0.1"); // the first camera on the interface's own
    Fleet fleet(options);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Refused);
    QVERIFY2(error.startsWith("port 80 of 10.77.0.1: "), qPrintable(error));
    QVERIFY(!hasAddress("10.77.0.2"));
    QVERIFY(hasAddress("10.77.0.1"));
    QCOMPARE(fleet.count(), 0);

    occupant.close();
    QCOMPARE(fleet.start(&error), Fleet::Started);
}

void tst_Fleet::badScenario()
{
    QTemporaryDir folder;
    FleetOptions options = onVethA(2);
    options.scenario = writeScenario(folder, R"({"cameras":[{"camera":3}]})");
    Fleet fleet(options);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::BadScenario);
    QVERIFY2(
        error.endsWith(": cameras[0]: \"camera\" names none of the 2 cameras"), qPrintable(error));
    QVERIFY(!hasAddress("10.77.0.11"));
}

void tst_Fleet::searchOfAll()
{
    Fleet fleet(onVethA(5));
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    Workstation workstation;
    const int id = workstation.send("search", {"all"}, {{"user", "Windows IP Tool"}});
    QSet<QString> addresses;
    for (const Workstation::Reply &reply : workstation.awaitId(5, id)) {
        const QJsonObject object = reply.object();
        QCOMPARE(object["ip"].toString(), reply.from.toString()); // each from its own
        QCOMPARE(object["destid"].toString(), QString(Workstation::srcid));
        QCOMPARE(object["method"].toString(), QString("search"));
        for (const char *key : {"mac", "srcid", "ip", "netmask", "gateway", "dns1", "dns2",
                 "IpMode", "name", "p2pid", "rtsppath1", "httpport", "appVersion", "HdCuFun"})
            QVERIFY2(object[key].isString(), key);
        QCOMPARE(object["rtsppath1"].toString(),
            QStringLiteral("rtsp://%1:8554/live1").arg(reply.from.toString()));
        addresses.insert(object["ip"].toString());
    }
    QCOMPARE(addresses.size(), 5);
}

void tst_Fleet::spreadEvenly()
{
    FleetOptions options = onVethA(20);
    options.spreadSeconds = 1;
    options.ownAddresses = false;
    options.httpPort = 0;
    Fleet fleet(options);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    Workstation workstation;
    const int id = workstation.send("search", {"all"});
    const QVector<Workstation::Reply> replies = workstation.awaitId(20, id);
    QCOMPARE(replies.size(), 20);
    for (int i = 0; i < 20; ++i)
        QCOMPARE(replies.at(i).object()["ip"].toString(), QStringLiteral("10.77.0.%1").arg(11 + i));
    const qint64 took = replies.last().at - replies.first().at;
    QVERIFY2(took >= 900, qPrintable(QString::number(took))); // 19 steps of 50 ms

    const int other = workstation.send("GetSD", {"02564C000014"}); // only searches are spread
    QCOMPARE(workstation.awaitId(1, other).size(), 1);
}

void tst_Fleet::spreadAtRandom()
{
    const auto order = [](quint32 seed) {
        FleetOptions options = onVethA(20);
        options.spreadSeconds = 1;
        options.randomSpread = true;
        options.ownAddresses = false;
        options.httpPort = 0;
        options.seed = seed;
        Fleet fleet(options);
        QString error;
        QStringList macs;
        if (fleet.start(&error) != Fleet::Started)
            return macs;
        Workstation workstation;
        const int id = workstation.send("search", {"all"});
        for (const Workstation::Reply &reply : workstation.awaitId(20, id))
            macs << reply.object()["mac"].toString();
        return macs;
    };
    QStringList first = order(1);
    const QStringList second = order(2);
    QCOMPARE(first.size(), 20);
    QVERIFY(first != second);
    QStringList sorted = first;
    sorted.sort();
    QVERIFY(first != sorted);
}

void tst_Fleet::thousands()
{
    FleetOptions options;
    options.interface = "veth-a";
    options.count = 3000;
    options.ownAddresses = false;
    options.httpPort = 0;
    options.spreadSeconds = 3;
    Fleet fleet(options);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    Workstation workstation;
    const int id = workstation.send("search", {"all"});
    QSet<QString> macs;
    for (const Workstation::Reply &reply : workstation.awaitId(3000, id)) {
        macs.insert(reply.object()["mac"].toString());
        QCOMPARE(reply.from, QHostAddress("10.77.0.1"));
    }
    QCOMPARE(macs.size(), 3000);
}

void tst_Fleet::inAnotherThread()
{
    QThread thread;
    Fleet *fleet = new Fleet(onVethA(2));
    fleet->moveToThread(&thread);
    thread.start();
    QString error;
    Fleet::Start result = Fleet::Refused;
    QMetaObject::invokeMethod(
        fleet, [&] { result = fleet->start(&error); }, Qt::BlockingQueuedConnection);
    QCOMPARE(result, Fleet::Started);
    Workstation workstation;
    QVERIFY(!workstation.ask("GetSD", "02564C000002").isEmpty());
    QMetaObject::invokeMethod(
        fleet, [&] { delete fleet; }, Qt::BlockingQueuedConnection);
    thread.quit();
    QVERIFY(thread.wait());
    QVERIFY(!hasAddress("10.77.0.11"));
}

void tst_Fleet::portsWithoutAddresses()
{
    FleetOptions options = onVethA(3);
    options.firstAddress = QHostAddress();
    options.ownAddresses = false;
    options.httpPort = 8080;
    Fleet fleet(options);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(fleet.camera(i).field("ip"), QString("10.77.0.1"));
        QCOMPARE(fleet.camera(i).field("httpport"), QString::number(8080 + i));
        QTcpSocket socket;
        socket.connectToHost("10.77.0.1", quint16(8080 + i));
        QVERIFY(socket.waitForConnected(10000));
    }
    // A move changes what the camera reports and no more.
    Workstation workstation;
    const QJsonObject reply = workstation.ask("SetIp", "02564C000002",
        {{"IpMode", "static"}, {"ip", "10.77.0.80"}, {"netmask", "255.255.255.0"}, {"gateway", ""},
            {"dns1", ""}, {"dns2", ""}});
    QCOMPARE(reply["result"].toString(), QString("success"));
    QCOMPARE(fleet.camera(1).field("ip"), QString("10.77.0.80"));
    QVERIFY(!hasAddress("10.77.0.80"));
    QVERIFY(!workstation.ask("GetSD", "02564C000002").isEmpty());
}

// A port that the search tells wrongly is no port to listen on.
void tst_Fleet::ownPortsInSpiteOfTheField()
{
    QTemporaryDir folder;
    FleetOptions options = onVethA(2);
    options.ownAddresses = false;
    options.httpPort = 8080;
    options.scenario =
        writeScenario(folder, R"({"cameras":[{"camera":"all","fields":{"httpport":80}}]})");
    Fleet fleet(options);
    QString error;
    QVERIFY2(fleet.start(&error) == Fleet::Started, qPrintable(error));
    QTcpSocket socket;
    socket.connectToHost("10.77.0.1", 8081);
    QVERIFY(socket.waitForConnected(10000));
}

void tst_Fleet::macsFollowTheFirst()
{
    FleetOptions options = onVethA(2);
    options.firstMac = 0xAA00000000FF;
    Fleet fleet(options);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    QCOMPARE(fleet.camera(0).field("mac"), QString("AA:00:00:00:00:FF"));
    QCOMPARE(fleet.camera(1).field("mac"), QString("AA:00:00:00:01:00"));
    QCOMPARE(fleet.camera(1).field("srcid"), QString("AA0000000100"));
}

void tst_Fleet::journalInNoFolder()
{
    FleetOptions options = onVethA(1);
    options.journal = "/nowhere/journal";
    Fleet fleet(options);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Refused);
    QVERIFY2(error.startsWith("journal /nowhere/journal: "), qPrintable(error));
    QVERIFY(!hasAddress("10.77.0.11"));
}

void tst_Fleet::requestsWhileRestarting()
{
    FleetOptions options = onVethA(2);
    options.restartSeconds = 1;
    Fleet fleet(options);
    QSignalSpy spy(&fleet.journal(), &FleetJournal::written);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    Workstation workstation;
    QCOMPARE(workstation.ask("ResetDefault", "02564C000001", {{"keepnetwork", "0"}})["result"]
                 .toString(),
        QString("success"));
    const int missed =
        workstation.send("SetName", {"02564C000001", "02564C000002"}, {{"name", "x"}});
    QCOMPARE(workstation.awaitId(1, missed).size(), 1); // the other camera's
    QTcpSocket socket;
    socket.connectToHost("10.77.0.11", 80);
    QVERIFY(!socket.waitForConnected(10000));
    QCOMPARE(socket.error(), QAbstractSocket::ConnectionRefusedError);

    QTRY_VERIFY_WITH_TIMEOUT(eventsOf(spy).contains("back"), 15000);
    QCOMPARE(fleet.camera(0).field("name"), QString("Camera-0001"));
    QCOMPARE(fleet.camera(1).field("name"), QString("x"));
    QVERIFY(!workstation.ask("GetSD", "02564C000001").isEmpty());
    QCOMPARE(workstation.repliesTo(missed), 1);
    socket.connectToHost("10.77.0.11", 80);
    QVERIFY(socket.waitForConnected(10000));
}

// The second camera takes the first one's address while it is away from it.
void tst_Fleet::resetToTakenAddress()
{
    Fleet fleet(onVethA(2));
    QSignalSpy spy(&fleet.journal(), &FleetJournal::written);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    Workstation workstation;
    const auto move = [&](const char *camera, const char *ip) {
        return workstation
            .ask("SetIp", camera,
                {{"IpMode", "static"}, {"ip", ip}, {"netmask", "255.255.255.0"}, {"gateway", ""},
                    {"dns1", ""}, {"dns2", ""}})["result"]
            .toString();
    };
    QCOMPARE(move("02564C000001", "10.77.0.12"), QString("failure")); // taken
    QCOMPARE(move("02564C000001", "10.77.0.1"), QString("failure")); // the interface's own
    QCOMPARE(move("02564C000001", "10.77.0.70"), QString("success"));
    QTRY_COMPARE(fleet.address(0), QHostAddress("10.77.0.70"));
    QCOMPARE(move("02564C000002", "10.77.0.11"), QString("success"));
    QTRY_COMPARE(fleet.address(1), QHostAddress("10.77.0.11"));

    QVERIFY(!workstation.ask("ResetDefault", "02564C000001", {{"keepnetwork", "0"}}).isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(eventsOf(spy).contains("back"), 15000);
    QVERIFY(eventsOf(spy).contains("trouble"));
    QCOMPARE(fleet.camera(0).field("ip"), QString("10.77.0.70")); // it stays where it is
    QVERIFY(!workstation.ask("GetSD", "02564C000001").isEmpty());
    fleet.stop();
    QVERIFY(!hasAddress("10.77.0.11") && !hasAddress("10.77.0.12") && !hasAddress("10.77.0.70"));
}

// A move whose reply comes late gives way to a later one; its address is free again.
void tst_Fleet::overtakenMove()
{
    QTemporaryDir folder;
    FleetOptions options = onVethA(1);
    options.scenario = writeScenario(
        folder, R"({"cameras":[{"camera":1,"rules":[{"on":"SetIp","times":1,"delay-ms":700}]}]})");
    Fleet fleet(options);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    Workstation workstation;
    const QJsonObject network{{"IpMode", "static"}, {"netmask", "255.255.255.0"}, {"gateway", ""},
        {"dns1", ""}, {"dns2", ""}};
    QJsonObject early = network;
    early["ip"] = "10.77.0.71";
    QJsonObject late = network;
    late["ip"] = "10.77.0.11"; // where it is
    const int slow = workstation.send("SetIp", {"02564C000001"}, early);
    QCOMPARE(
        workstation.ask("SetIp", "02564C000001", late)["result"].toString(), QString("success"));
    QCOMPARE(workstation.awaitId(1, slow).size(), 1);
    QTRY_VERIFY(!hasAddress("10.77.0.71"));
    QCOMPARE(fleet.address(0), QHostAddress("10.77.0.11"));
    QVERIFY(hasAddress("10.77.0.11"));
}

// The exchanges of docs/protocol.md: each request as it stands there gets the replies that stand
// under it. (A search of all gets the second camera's too.)
void tst_Fleet::documentedExchanges()
{
    Fleet fleet(onVethA(2));
    QSignalSpy spy(&fleet.journal(), &FleetJournal::written);
    QString error;
    QCOMPARE(fleet.start(&error), Fleet::Started);
    QStringList methods;
    for (const QVector<QJsonObject> &exchange : exchangesOf(QStringLiteral(PROTOCOL_PAGE))) {
        const QJsonObject &request = exchange.first();
        methods << request["method"].toString();
        Workstation workstation;
        workstation.sendDatagram(
            TestNetwork::frame(QJsonDocument(request).toJson(QJsonDocument::Compact)));
        const QVector<Workstation::Reply> replies =
            workstation.awaitId(exchange.size() - 1, request["id"].toInt());
        for (const QJsonObject &expected : exchange.mid(1)) {
            const bool found = std::any_of(replies.begin(), replies.end(),
                [&](const Workstation::Reply &reply) { return shows(reply.object(), expected); });
            QVERIFY2(found, QJsonDocument(expected).toJson());
        }
        QTRY_COMPARE_WITH_TIMEOUT(
            eventsOf(spy).count("back"), eventsOf(spy).count("restart"), 15000);
    }
    methods.removeDuplicates();
    methods.sort();
    QStringList known = FleetCamera::methods();
    known.sort();
    QCOMPARE(methods, known);
}

QTEST_GUILESS_MAIN(tst_Fleet)
#include "tst_Fleet.moc"
