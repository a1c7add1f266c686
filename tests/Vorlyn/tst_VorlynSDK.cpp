#include "SocketLayer.h"
#include "TestNetwork.h"
#include "ThisProcess.h"
#include "VorlynSDK.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QtTest>

#include <algorithm>
#include <memory>

class tst_VorlynSDK : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void socketLayer();
    void instanceLives();
    void secondInstanceReplacesTheFirst();
    void networkIsKept();
    void macIdHasNoColons();
    void searchRequest();
    void available();
    void availableHasLinkAndMulticast();
    void select_data();
    void select();
    void selectStopsAtTheFirstName();
    void privateRanges_data();
    void privateRanges();
    void selectFromNothing();
    void selectWithoutIPv4();
    void selectWithoutEntries();
};

void tst_VorlynSDK::initTestCase()
{
    // down0 is down, quiet0 has nobody at its other end, single0 has no multicast, bare0 has no
    // IPv4 address, public0 has no private one; priv0 gets its own. Only bare0 has an IPv6 address,
    // as systems differ in which kind they list first.
    for (const QString &name : QStringList{"down", "quiet", "single", "bare", "public", "priv"}) {
        QVERIFY(TestNetwork::run("ip link add " + name + "0 type veth peer name " + name + "1"));
        if (name != "bare")
            QVERIFY(TestNetwork::run("ip link set " + name + "0 addrgenmode none"));
        if (name != "quiet")
            QVERIFY(TestNetwork::run("ip link set " + name + "1 up"));
        if (name != "down")
            QVERIFY(TestNetwork::run("ip link set " + name + "0 up"));
    }
    QVERIFY(TestNetwork::run("ip link set single0 multicast off"));
    QVERIFY(
        TestNetwork::run("ip link set lo multicast on")); // so that its type alone speaks against
    QVERIFY(TestNetwork::run("ip addr add 10.1.0.1/24 dev down0"));
    QVERIFY(TestNetwork::run("ip addr add 10.2.0.1/24 dev quiet0"));
    QVERIFY(TestNetwork::run("ip addr add 10.3.0.1/24 dev single0"));
    QVERIFY(TestNetwork::run("ip addr add 198.51.100.7/24 dev public0"));
    QVERIFY(TestNetwork::run("ip addr add 10.77.5.1/24 dev veth-a"));
    for (const QString &name : QStringList{"public0", "single0", "lo"})
        QTRY_VERIFY(TestNetwork::interface(name).flags() & QNetworkInterface::IsRunning);
    QVERIFY(TestNetwork::interface("lo").flags() & QNetworkInterface::CanMulticast);
    QTRY_VERIFY(!TestNetwork::interface("bare0").addressEntries().isEmpty());
}

void tst_VorlynSDK::cleanup()
{
    VorlynSDK::destroyInstance();
}

void tst_VorlynSDK::socketLayer()
{
    const SocketLayer::Status status = SocketLayer::start();
    QCOMPARE(status.highVersion, 514);
    QCOMPARE(status.version, 514);
    QCOMPARE(status.result, 0);
    SocketLayer::stop();
}

void tst_VorlynSDK::instanceLives()
{
    QVERIFY(!VorlynSDK::instance());
    VorlynSDK::destroyInstance();
    VorlynSDK::createInstance();
    QVERIFY(VorlynSDK::instance());
    VorlynSDK::instance()->stopNetwork(); // nothing runs
    VorlynSDK::instance()->cancelWait();
    VorlynSDK::instance()->cancelUpload();
    VorlynSDK::destroyInstance();
    QVERIFY(!VorlynSDK::instance());
}

void tst_VorlynSDK::secondInstanceReplacesTheFirst()
{
    VorlynSDK::createInstance();
    VorlynSDK::instance()->startNetwork(
        TestNetwork::interface("veth-a"), TestNetwork::entry("10.77.0.1"));
    VorlynSDK::createInstance();

    QNetworkInterface interface = TestNetwork::interface("veth-a");
    QNetworkAddressEntry address = TestNetwork::entry("10.77.0.1");
    VorlynSDK::instance()->currentNetwork(interface, address);
    QVERIFY(!interface.isValid());
    QCOMPARE(address, QNetworkAddressEntry());
}

void tst_VorlynSDK::networkIsKept()
{
    VorlynSDK::createInstance();
    VorlynSDK *sdk = VorlynSDK::instance();
    sdk->startNetwork(TestNetwork::interface("veth-b"), TestNetwork::entry("10.88.0.1"));
    sdk->stopNetwork();

    QNetworkInterface interface;
    QNetworkAddressEntry address;
    sdk->currentNetwork(interface, address);
    QCOMPARE(interface.humanReadableName(), QString("veth-b"));
    QCOMPARE(address.ip(), QHostAddress("10.88.0.1"));
}

void tst_VorlynSDK::macIdHasNoColons()
{
    VorlynSDK::createInstance();
    VorlynSDK *sdk = VorlynSDK::instance();
    QCOMPARE(sdk->interfaceMacId(), QString());
    sdk->startNetwork(TestNetwork::interface("veth-b"), TestNetwork::entry("10.88.0.1"));
    QCOMPARE(sdk->interfaceMacId(), QString("0200000000BB"));
}

void tst_VorlynSDK::searchRequest()
{
    VorlynSDK::createInstance();
    VorlynSDK *sdk = VorlynSDK::instance();
    sdk->startNetwork(TestNetwork::interface("veth-a"), TestNetwork::entry("10.77.0.1"));
    const std::unique_ptr<QJsonObject> request(sdk->buildSearchRequest(4000000000u));
    QCOMPARE(*request,
        (QJsonObject{{"id", 4000000000.0}, {"method", "search"}, {"user", "Windows IP Tool"},
            {"srcid", "0200000000AA"}, {"destarray", QJsonArray{"all"}}}));
}

static QStringList names(const QList<QNetworkInterface> &interfaces)
{
    QStringList result;
    for (const QNetworkInterface &interface : interfaces)
        result.append(interface.humanReadableName());
    return result;
}

void tst_VorlynSDK::available()
{
    const QStringList found = names(VorlynSDK::availableInterfaces());
    for (const QString &name : QStringList{"veth-a", "veth-b", "public0"})
        QVERIFY2(found.contains(name), qPrintable(name));
    // "priv0" has no address yet.
    for (const QString &name : QStringList{"lo", "down0", "bare0", "priv0"})
        QVERIFY2(!found.contains(name), qPrintable(name));

    QStringList inOrder = names(QNetworkInterface::allInterfaces());
    inOrder.erase(std::remove_if(inOrder.begin(), inOrder.end(),
                      [&found](const QString &name) { return !found.contains(name); }),
        inOrder.end());
    QCOMPARE(found, inOrder);
}

void tst_VorlynSDK::availableHasLinkAndMulticast()
{
    if (ThisProcess::inWine())
        QSKIP("Wine tells of each interface that is up that it has a link and multicast");
    const QStringList found = names(VorlynSDK::availableInterfaces());
    for (const QString &name : QStringList{"quiet0", "single0"})
        QVERIFY2(!found.contains(name), qPrintable(name));
}

void tst_VorlynSDK::select_data()
{
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("address");

    const QStringList all = {"veth-a", "veth-b", "public0"};
    QTest::newRow("nothing saved") << all << ""
                                   << "" << true << "veth-a"
                                   << "10.77.0.1";
    QTest::newRow("name") << all << "veth-b"
                          << "" << true << "veth-b"
                          << "10.88.0.1";
    QTest::newRow("name and address") << all << "veth-a"
                                      << "10.77.5.1" << true << "veth-a"
                                      << "10.77.5.1";
    QTest::newRow("other host of the /24") << all << "veth-a"
                                           << "10.77.5.200" << true << "veth-a"
                                           << "10.77.5.1";
    QTest::newRow("third byte differs") << all << "veth-a"
                                        << "10.77.6.1" << true << "veth-a"
                                        << "10.77.0.1";
    QTest::newRow("second byte differs") << all << "veth-a"
                                         << "10.78.5.1" << true << "veth-a"
                                         << "10.77.0.1";
    QTest::newRow("first byte differs") << all << "veth-a"
                                        << "11.77.5.1" << true << "veth-a"
                                        << "10.77.0.1";
    QTest::newRow("three numbers") << all << "veth-a"
                                   << "10.77.5" << true << "veth-a"
                                   << "10.77.5.1";
    QTest::newRow("the rest is zero") << all << "veth-b"
                                      << "10.88" << true << "veth-b"
                                      << "10.88.0.1";
    QTest::newRow("no address text") << all << "veth-a"
                                     << "words" << true << "veth-a"
                                     << "10.77.0.1";
    QTest::newRow("first number zero") << all << "veth-a"
                                       << "0.77.5.1" << true << "veth-a"
                                       << "10.77.0.1";
    QTest::newRow("public address asked for") << all << "public0"
                                              << "198.51.100.99" << true << "public0"
                                              << "198.51.100.7";
    QTest::newRow("named one has no private address") << all << "public0"
                                                      << "" << true << "veth-a"
                                                      << "10.77.0.1";
    QTest::newRow("unknown name takes the first that will do") << all << "gone"
                                                               << "10.88.0.5" << true << "veth-a"
                                                               << "10.77.0.1";
    QTest::newRow("name in other case") << all << "VETH-B"
                                        << "" << true << "veth-a"
                                        << "10.77.0.1";
    QTest::newRow("address finds its interface") << QStringList{"public0", "veth-b"} << ""
                                                 << "198.51.100.1" << true << "public0"
                                                 << "198.51.100.7";
    QTest::newRow("fallback") << QStringList{"public0"} << ""
                              << "" << false << "public0"
                              << "198.51.100.7";
    QTest::newRow("fallback in spite of a name") << QStringList{"public0"} << "public0"
                                                 << "10.77.0.1" << false << "public0"
                                                 << "198.51.100.7";
}

static QList<QNetworkInterface> interfaces(const QStringList &names)
{
    QList<QNetworkInterface> result;
    for (const QString &name : names)
        result.append(TestNetwork::interface(name));
    return result;
}

void tst_VorlynSDK::select()
{
    QFETCH(QStringList, list);
    QFETCH(QString, name);
    QFETCH(QString, ip);
    QNetworkInterface chosen;
    QNetworkAddressEntry address;
    QTEST(VorlynSDK::selectInterface(interfaces(list), name, ip, chosen, address), "result");
    QTEST(chosen.humanReadableName(), "interface");
    QTEST(address.ip().toString(), "address");
}

void tst_VorlynSDK::selectStopsAtTheFirstName()
{
    // Two of the same name, of which the second would do.
    const QNetworkInterface bare = TestNetwork::interface("priv0");
    QVERIFY(TestNetwork::run("ip addr add 10.4.0.1/24 dev priv0"));
    QNetworkInterface chosen;
    QNetworkAddressEntry address;
    QVERIFY(VorlynSDK::selectInterface(
        {bare, TestNetwork::interface("veth-a"), TestNetwork::interface("priv0")}, "priv0",
        "10.4.0.1", chosen, address));
    QCOMPARE(chosen.humanReadableName(), QString("veth-a"));
}

void tst_VorlynSDK::privateRanges_data()
{
    QTest::addColumn<bool>("isPrivate");
    QTest::newRow("9.255.255.254") << false;
    QTest::newRow("10.0.0.1") << true;
    QTest::newRow("10.255.255.254") << true;
    QTest::newRow("11.0.0.1") << false;
    QTest::newRow("172.15.255.254") << false;
    QTest::newRow("172.16.0.1") << true;
    QTest::newRow("172.31.255.254") << true;
    QTest::newRow("172.32.0.1") << false;
    QTest::newRow("192.167.255.254") << false;
    QTest::newRow("192.168.0.1") << true;
    QTest::newRow("192.168.255.254") << true;
    QTest::newRow("192.169.0.1") << false;
    QTest::newRow("169.254.1.1") << false;
}

void tst_VorlynSDK::privateRanges()
{
    const QString ip = QTest::currentDataTag();
    QVERIFY(TestNetwork::run("ip -4 addr flush dev priv0"));
    QVERIFY(TestNetwork::run("ip addr add " + ip + "/24 dev priv0"));
    QNetworkInterface chosen;
    QNetworkAddressEntry address;
    QTEST(VorlynSDK::selectInterface(interfaces({"priv0"}), "", "", chosen, address), "isPrivate");
    QCOMPARE(chosen.humanReadableName(), QString("priv0"));
    QCOMPARE(address.ip().toString(), ip);
}

void tst_VorlynSDK::selectFromNothing()
{
    QNetworkInterface chosen = TestNetwork::interface("veth-b");
    QNetworkAddressEntry address = TestNetwork::entry("10.88.0.1");
    QVERIFY(!VorlynSDK::selectInterface({}, "veth-a", "10.77.0.1", chosen, address));
    QCOMPARE(chosen.humanReadableName(), QString("veth-b"));
    QCOMPARE(address.ip().toString(), QString("10.88.0.1"));
}

void tst_VorlynSDK::selectWithoutIPv4()
{
    QNetworkInterface chosen;
    QNetworkAddressEntry address;
    QVERIFY(!VorlynSDK::selectInterface(interfaces({"bare0", "public0"}), "", "", chosen, address));
    QCOMPARE(chosen.humanReadableName(), QString("bare0"));
    QCOMPARE(address.ip().protocol(), QAbstractSocket::IPv6Protocol);
}

void tst_VorlynSDK::selectWithoutEntries()
{
    QVERIFY(TestNetwork::run("ip addr flush dev down0"));
    QNetworkInterface chosen;
    QNetworkAddressEntry address = TestNetwork::entry("10.88.0.1");
    QVERIFY(
        !VorlynSDK::selectInterface(interfaces({"down0"}), "down0", "10.1.0.1", chosen, address));
    QCOMPARE(chosen.humanReadableName(), QString("down0"));
    QCOMPARE(address.ip().toString(), QString("10.88.0.1"));
}

QTEST_GUILESS_MAIN(tst_VorlynSDK)
#include "tst_VorlynSDK.moc"
