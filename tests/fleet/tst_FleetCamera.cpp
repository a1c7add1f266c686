#include "FleetCamera.h"

#include <QTest>

namespace {

struct Surroundings : FleetSurroundings {
    bool claim(const QHostAddress &ip, int prefixLength) override
    {
        asked = QStringLiteral("%1/%2").arg(ip.toString()).arg(prefixLength);
        return free;
    }
    QHostAddress lease() override { return pool; }

    bool free = true;
    QHostAddress pool;
    QString asked;
};

const QJsonObject goodNetwork{{"IpMode", "static"}, {"ip", "10.77.0.90"},
    {"netmask", "255.255.255.0"}, {"gateway", "10.77.0.1"}, {"dns1", "10.77.0.1"},
    {"dns2", "9.9.9.9"}};

QJsonObject changed(QJsonObject object, const QString &key, const QJsonValue &value)
{
    object[key] = value;
    return object;
}

}

class tst_FleetCamera : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void targets_data();
    void targets();
    void envelope();
    void search();
    void store_data();
    void store();
    void storeRefused_data();
    void storeRefused();
    void staticAddress();
    void staticAddressInvalid_data();
    void staticAddressInvalid();
    void staticAddressValid_data();
    void staticAddressValid();
    void staticAddressTaken();
    void ownAddressNeedsNoClaim();
    void dhcp();
    void sdAndWifi();
    void microphone();
    void reset();
    void resetKeepsNetwork();
    void resetRefused_data();
    void resetRefused();
    void resetElsewhere();
    void upgrade_data();
    void upgrade();
    void unknownMethod();

private:
    FleetCamera::Outcome obey(const QString &method, QJsonObject request = QJsonObject());
    QString result(const QString &method, const QJsonObject &request = QJsonObject());

    FleetCamera camera;
    Surroundings network;
};

void tst_FleetCamera::init()
{
    network = Surroundings();
    camera = FleetCamera();
    camera.fields = {{"mac", "02:00:00:00:00:01"}, {"srcid", "S1"}, {"name", "one"},
        {"netmask", "255.255.255.0"}, {"gateway", "10.77.0.1"}, {"IpMode", "dhcp"}, {"p2pid", "P1"},
        {"HdCuFun", "PAC"}, {"appVersion", "1.0.0.1"}};
    camera.setIp("10.77.0.11");
    camera.factory = camera.fields;
}

FleetCamera::Outcome tst_FleetCamera::obey(const QString &method, QJsonObject request)
{
    request["method"] = method;
    return camera.obey(request, network);
}

QString tst_FleetCamera::result(const QString &method, const QJsonObject &request)
{
    return obey(method, request).body["result"].toString();
}

void tst_FleetCamera::targets_data()
{
    QTest::addColumn<QJsonArray>("destarray");
    QTest::addColumn<bool>("expected");
    QTest::newRow("all") << QJsonArray{"all"} << true;
    QTest::newRow("itself") << QJsonArray{"S0", "S1"} << true;
    QTest::newRow("others") << QJsonArray{"S0", "S2"} << false;
    QTest::newRow("other case") << QJsonArray{"s1"} << false;
    QTest::newRow("nobody") << QJsonArray() << false;
    QTest::newRow("empty text") << QJsonArray{""} << false;
    QTest::newRow("number") << QJsonArray{1} << false;
}

void tst_FleetCamera::targets()
{
    QFETCH(QJsonArray, destarray);
    QTEST(camera.isTarget(destarray), "expected");
    camera.fields["srcid"] = ""; // a camera without a name is only one of all
    QCOMPARE(camera.isTarget(destarray), destarray.contains("all"));
}

void tst_FleetCamera::envelope()
{
    const QJsonObject request{{"id", 5}, {"method", "GetSD"}, {"srcid", "W1"}};
    FleetCamera::Outcome outcome;
    outcome.body["result"] = "success";
    const QJsonObject expected{
        {"id", 5}, {"method", "GetSD"}, {"destid", "W1"}, {"srcid", "S1"}, {"result", "success"}};
    QCOMPARE(camera.reply(request, outcome), expected);
}

void tst_FleetCamera::search()
{
    const QJsonObject body = obey("search").body;
    for (auto i = camera.fields.begin(); i != camera.fields.end(); ++i)
        QCOMPARE(body[i.key()], i.value());
    QCOMPARE(body["rtsppath1"].toString(), QString("rtsp://10.77.0.11:8554/live1"));
}

void tst_FleetCamera::store_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");
    QTest::newRow("name") << "SetName"
                          << "name"
                          << "name" << QString::fromUtf8("Küche 厨房");
    QTest::newRow("empty name") << "SetName"
                                << "name"
                                << "name"
                                << "";
    QTest::newRow("p2pid") << "SetP2p"
                           << "p2pid"
                           << "p2pid"
                           << "ABC-1";
    QTest::newRow("functions") << "SetHdCuFun"
                               << "HdCuFun"
                               << "HdCuFun"
                               << "wifi,PAC";
    QTest::newRow("mac") << "SetMac"
                         << "mac"
                         << "mac"
                         << "aa:bb:cc:00:11:22";
    QTest::newRow("mac with hyphens") << "SetMac"
                                      << "mac"
                                      << "mac"
                                      << "AA-BB-CC-00-11-22";
    QTest::newRow("ptz") << "SetPTZ"
                         << "command"
                         << "ptz"
                         << "left";
    QTest::newRow("day") << "SetIRcut"
                         << "ircut"
                         << "ircut"
                         << "day";
    QTest::newRow("night") << "SetIRcut"
                           << "ircut"
                           << "ircut"
                           << "night";
    QTest::newRow("auto") << "SetIRcut"
                          << "ircut"
                          << "ircut"
                          << "auto";
    QTest::newRow("on") << "SetColor"
                        << "color"
                        << "color"
                        << "on";
    QTest::newRow("off") << "SetColor"
                         << "color"
                         << "color"
                         << "off";
}

void tst_FleetCamera::store()
{
    QFETCH(QString, method);
    QFETCH(QString, key);
    QFETCH(QString, field);
    QFETCH(QString, value);
    QCOMPARE(result(method, {{key, value}}), QString("success"));
    QCOMPARE(obey("search").body[field], QJsonValue(value));
    QCOMPARE(camera.field("srcid"), QString("S1"));
}

void tst_FleetCamera::storeRefused_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QJsonObject>("request");
    QTest::newRow("no name") << "SetName" << QJsonObject();
    QTest::newRow("name as number") << "SetName" << QJsonObject{{"name", 5}};
    QTest::newRow("short mac") << "SetMac" << QJsonObject{{"mac", "AA:BB:CC:DD:EE"}};
    QTest::newRow("mac with rest") << "SetMac" << QJsonObject{{"mac", "AA:BB:CC:DD:EE:FF0"}};
    QTest::newRow("mac of other letters") << "SetMac" << QJsonObject{{"mac", "GG:BB:CC:DD:EE:FF"}};
    QTest::newRow("dusk") << "SetIRcut" << QJsonObject{{"ircut", "dusk"}};
    QTest::newRow("colour as boolean") << "SetColor" << QJsonObject{{"color", true}};
    QTest::newRow("colour in capitals") << "SetColor" << QJsonObject{{"color", "ON"}};
}

void tst_FleetCamera::storeRefused()
{
    QFETCH(QString, method);
    QFETCH(QJsonObject, request);
    QCOMPARE(result(method, request), QString("failure"));
    QCOMPARE(camera.fields, camera.factory);
}

void tst_FleetCamera::staticAddress()
{
    const FleetCamera::Outcome outcome = obey("SetIp", goodNetwork);
    QCOMPARE(outcome.body["result"].toString(), QString("success"));
    QCOMPARE(outcome.after, FleetCamera::After::Move);
    QCOMPARE(network.asked, QString("10.77.0.90/24"));
    for (auto i = goodNetwork.begin(); i != goodNetwork.end(); ++i)
        QCOMPARE(camera.fields[i.key()], i.value());
    QCOMPARE(camera.field("rtsppath1"), QString("rtsp://10.77.0.90:8554/live1"));
}

void tst_FleetCamera::staticAddressInvalid_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("value");
    const struct {
        const char *key;
        QJsonValue value;
    } rows[] = {{"IpMode", "Static"}, {"IpMode", QJsonValue()}, {"ip", ""}, {"ip", "10.77.0"},
        {"ip", "10.77.0.256"}, {"ip", "10.77.0.5x"}, {"ip", "10.77.0.5.6"}, {"ip", "0.0.0.0"},
        {"ip", "127.0.0.1"}, {"ip", "239.1.1.1"}, {"ip", "10.77.0.0"}, {"ip", "10.77.0.255"},
        {"ip", "010.77.0.9"}, {"ip", 5}, {"netmask", ""}, {"netmask", "255.0.255.0"},
        {"netmask", "0.0.0.0"}, {"netmask", "255.255.255.255"}, {"gateway", "10.78.0.1"},
        {"gateway", "x"}, {"dns1", "1.2.3"}, {"dns2", "nowhere"}};
    for (const auto &row : rows) {
        const QString value = row.value.toVariant().toString();
        QTest::addRow("%s %s", row.key, qPrintable(value)) << row.key << row.value;
    }
}

void tst_FleetCamera::staticAddressInvalid()
{
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    QCOMPARE(result("SetIp", changed(goodNetwork, key, value)), QString("failure"));
    QCOMPARE(camera.fields, camera.factory);
    QCOMPARE(network.asked, QString());
}

void tst_FleetCamera::staticAddressValid_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::newRow("no gateway") << "gateway"
                                << "";
    QTest::newRow("no name server") << "dns1"
                                    << "";
    QTest::newRow("no second name server") << "dns2"
                                           << "";
    QTest::newRow("wide netmask") << "netmask"
                                  << "255.0.0.0";
    QTest::newRow("narrow netmask") << "netmask"
                                    << "255.255.255.128";
}

void tst_FleetCamera::staticAddressValid()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    QCOMPARE(result("SetIp", changed(goodNetwork, key, value)), QString("success"));
    QCOMPARE(camera.field("ip"), QString("10.77.0.90"));
}

void tst_FleetCamera::staticAddressTaken()
{
    network.free = false;
    QCOMPARE(result("SetIp", goodNetwork), QString("failure"));
    QCOMPARE(camera.fields, camera.factory);
}

void tst_FleetCamera::ownAddressNeedsNoClaim()
{
    network.free = false;
    QCOMPARE(result("SetIp", changed(goodNetwork, "ip", "10.77.0.11")), QString("success"));
    QCOMPARE(camera.field("IpMode"), QString("static"));
}

void tst_FleetCamera::dhcp()
{
    camera.fields["IpMode"] = "static";
    QCOMPARE(result("SetIp", {{"IpMode", "dhcp"}}), QString("success"));
    QCOMPARE(camera.field("IpMode"), QString("dhcp"));
    QCOMPARE(camera.field("ip"), QString("10.77.0.11")); // no pool

    network.pool = QHostAddress("10.77.0.200");
    QCOMPARE(obey("SetIp", {{"IpMode", "dhcp"}}).after, FleetCamera::After::Move);
    QCOMPARE(camera.field("ip"), QString("10.77.0.200"));
}

void tst_FleetCamera::sdAndWifi()
{
    const QJsonObject sd = obey("GetSD").body;
    QVERIFY(sd["totalsize"].toInt() > sd["freesize"].toInt());
    camera.wifiScanMs = 700;
    const FleetCamera::Outcome scan = obey("WifiScan");
    QCOMPARE(scan.delayMs, 700);
    QCOMPARE(scan.body["result"].toString(), QString("success"));
    const QJsonArray networks = scan.body["WifiList"].toArray();
    QCOMPARE(networks, camera.wifi);
    QVERIFY(networks.size() > 0);
    for (const QJsonValue &network : networks) {
        QVERIFY(!network.toObject()["wifiname"].toString().isEmpty());
        QVERIFY(network.toObject()["Signal"].isDouble());
    }
}

void tst_FleetCamera::microphone()
{
    QCOMPARE(result("testMicrophone"), QString("success"));
    QCOMPARE(result("testMicrophone"), QString("success"));
    QCOMPARE(camera.field("micTests"), QString("2"));
}

void tst_FleetCamera::reset()
{
    const QStringList methods{"SetName", "SetP2p", "SetHdCuFun", "SetMac", "SetIp"};
    for (const QString &method : methods) {
        QJsonObject request = goodNetwork;
        for (const char *key : {"name", "p2pid", "HdCuFun"})
            request[key] = "changed";
        request["mac"] = "02:99:99:99:99:99";
        QCOMPARE(result(method, request), QString("success"));
    }
    camera.upgrade("2.0.0.bin");
    const FleetCamera::Outcome outcome = obey("ResetDefault", {{"keepnetwork", "0"}});
    QCOMPARE(outcome.after, FleetCamera::After::Reset);
    QCOMPARE(camera.field("name"), QString("changed")); // until it restarts
    camera.reset(false);
    QJsonObject expected = camera.factory;
    expected["mac"] = "02:99:99:99:99:99";
    expected["appVersion"] = "2.0.0.20240319";
    QCOMPARE(camera.fields, expected);
}

void tst_FleetCamera::resetKeepsNetwork()
{
    QCOMPARE(result("SetIp", goodNetwork), QString("success"));
    QCOMPARE(result("SetName", {{"name", "changed"}}), QString("success"));
    QCOMPARE(result("ResetDefault", {{"keepnetwork", "1"}}), QString("success"));
    camera.reset(true);
    QCOMPARE(camera.field("name"), QString("one"));
    QCOMPARE(camera.field("ip"), QString("10.77.0.90"));
    QCOMPARE(camera.field("IpMode"), QString("static"));
    QCOMPARE(camera.field("rtsppath1"), QString("rtsp://10.77.0.90:8554/live1"));
}

void tst_FleetCamera::resetRefused_data()
{
    QTest::addColumn<QJsonObject>("request");
    QTest::newRow("no keepnetwork") << QJsonObject();
    QTest::newRow("number") << QJsonObject{{"keepnetwork", 0}};
    QTest::newRow("other text") << QJsonObject{{"keepnetwork", "no"}};
}

void tst_FleetCamera::resetRefused()
{
    QFETCH(QJsonObject, request);
    const FleetCamera::Outcome outcome = obey("ResetDefault", request);
    QCOMPARE(outcome.body["result"].toString(), QString("failure"));
    QCOMPARE(outcome.after, FleetCamera::After::Nothing);
}

void tst_FleetCamera::resetElsewhere()
{
    camera.afterReset = {{"ip", "10.77.0.66"}, {"extra", 1}};
    camera.reset(false);
    QCOMPARE(camera.field("ip"), QString("10.77.0.66"));
    QCOMPARE(camera.field("rtsppath1"), QString("rtsp://10.77.0.66:8554/live1"));
    QCOMPARE(camera.fields["extra"], QJsonValue(1));
}

void tst_FleetCamera::upgrade_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("version");
    QTest::newRow("usual") << "1.2.3.bin"
                           << "1.2.3.20240319";
    QTest::newRow("no suffix") << "firmware"
                               << "firmware.20240319";
    QTest::newRow("dot at the end") << "1.2."
                                    << "1.2.20240319";
}

void tst_FleetCamera::upgrade()
{
    QFETCH(QString, file);
    camera.afterUpgrade = {{"ip", "10.77.0.67"}};
    camera.upgrade(file);
    QTEST(camera.field("appVersion"), "version");
    QCOMPARE(camera.field("ip"), QString("10.77.0.67"));
}

void tst_FleetCamera::unknownMethod()
{
    QCOMPARE(result("setname", {{"name", "x"}}), QString("failure"));
    QCOMPARE(camera.fields, camera.factory);
    QCOMPARE(FleetCamera::methods().size(), 13);
}

QTEST_GUILESS_MAIN(tst_FleetCamera)
#include "tst_FleetCamera.moc"
