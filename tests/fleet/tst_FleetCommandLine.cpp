#include "FleetCommandLine.h"

#include "FleetStream.h"

#include <QTest>

class tst_FleetCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void defaults();
    void everyOption();
    void portOfStreams();
    void streamsThatCostNothing();
    void wrong_data();
    void wrong();
    void help();
    void version();

private:
    FleetCommandLine::Reading read(const QStringList &arguments);

    FleetOptions options;
    QString text;
};

FleetCommandLine::Reading tst_FleetCommandLine::read(const QStringList &arguments)
{
    options = FleetOptions();
    return FleetCommandLine::read(QStringList("vorlyn-fleet") + arguments, options, &text);
}

void tst_FleetCommandLine::defaults()
{
    QCOMPARE(read({"--interface", "eth0"}), FleetCommandLine::Good);
    QCOMPARE(options.interface, QString("eth0"));
    QCOMPARE(options.count, 1);
    QVERIFY(options.firstAddress.isNull());
    QVERIFY(options.ownAddresses);
    QCOMPARE(options.httpPort, 80);
    QCOMPARE(options.rtspPortOf(0), 8554);
    QCOMPARE(options.rtspPortOf(7), 8554);
    QCOMPARE(options.restartSeconds, 3.0);
    QCOMPARE(options.spreadSeconds, 0.0);
    QVERIFY(options.journal.isEmpty());
}

void tst_FleetCommandLine::everyOption()
{
    QCOMPARE(read({"--interface=eth0", "--count", "7", "--first-address", "10.0.0.5", "--first-mac",
                 "AA:00:00:00:00:01", "--no-addresses", "--http-port", "8080", "--spread", "2.5",
                 "--spread-order", "random", "--restart-seconds", "0.5", "--dhcp-pool",
                 "10.0.0.50-10.0.0.60", "--scenario", "s.json", "--journal", "-", "--sha256",
                 "--seed", "99"}),
        FleetCommandLine::Good);
    QCOMPARE(options.count, 7);
    QCOMPARE(options.firstAddress, QHostAddress("10.0.0.5"));
    QCOMPARE(options.firstMac, quint64(0xAA0000000001));
    QVERIFY(!options.ownAddresses);
    QCOMPARE(options.httpPort, 8080);
    QCOMPARE(options.spreadSeconds, 2.5);
    QVERIFY(options.randomSpread);
    QCOMPARE(options.restartSeconds, 0.5);
    QCOMPARE(options.poolFirst, QHostAddress("10.0.0.50"));
    QCOMPARE(options.poolLast, QHostAddress("10.0.0.60"));
    QCOMPARE(options.scenario, QString("s.json"));
    QCOMPARE(options.journal, QString("-"));
    QVERIFY(options.sha256);
    QCOMPARE(options.seed, 99u);
}

void tst_FleetCommandLine::portOfStreams()
{
    const FleetCommandLine::Reading reading =
        read({"--interface", "eth0", "--no-addresses", "--rtsp-port", "9000"});
    QCOMPARE(options.rtspPortOf(0), 9000);
    QCOMPARE(options.rtspPortOf(6), 9006);
    QCOMPARE(reading == FleetCommandLine::Good, FleetStream::isAvailable());
    QCOMPARE(text.contains("--rtsp-port: this build has no streams"), !FleetStream::isAvailable());
}

// Thousands of cameras have no streams unless they are asked for.
void tst_FleetCommandLine::streamsThatCostNothing()
{
    QCOMPARE(read({"--interface", "eth0", "--no-addresses"}), FleetCommandLine::Good);
    QCOMPARE(options.rtspPortOf(0), 0);
    QCOMPARE(read({"--interface", "eth0", "--rtsp-port", "0"}), FleetCommandLine::Good);
    QCOMPARE(options.rtspPortOf(3), 0);
}

void tst_FleetCommandLine::wrong_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("complaint");
    const auto row = [](const QStringList &arguments, const char *complaint) {
        QTest::newRow(qPrintable(arguments.join(' '))) << arguments << complaint;
    };
    row({}, "--interface is missing");
    row({"--interface", ""}, "--interface must be the name of an interface");
    row({"--interface", "e", "--count", "0"}, "--count must be a number from 1 to 20000");
    row({"--interface", "e", "--count", "three"}, "--count must be");
    row({"--interface", "e", "--first-address", "10.0.0"},
        "--first-address must be an IPv4 address");
    row({"--interface", "e", "--first-address", "::1"}, "--first-address must be an IPv4 address");
    row({"--interface", "e", "--first-mac", "AABB"}, "--first-mac must be a MAC");
    row({"--interface", "e", "--http-port", "65536"}, "--http-port must be");
    row({"--interface", "e", "--rtsp-port", "-1"}, "--rtsp-port must be a number from 0 to 65535");
    row({"--interface", "e", "--rtsp-port", "rtsp"}, "--rtsp-port must be");
    row({"--interface", "e", "--no-addresses", "--count", "9", "--rtsp-port", "65530"},
        "9 streams from port 65530 pass port 65535");
    row({"--interface", "e", "--spread", "-1"}, "--spread must be");
    row({"--interface", "e", "--spread-order", "odd"}, "--spread-order must be even or random");
    row({"--interface", "e", "--restart-seconds", "soon"}, "--restart-seconds must be");
    row({"--interface", "e", "--dhcp-pool", "10.0.0.9"}, "--dhcp-pool must be two IPv4 addresses");
    row({"--interface", "e", "--dhcp-pool", "10.0.0.9-10.0.0.1"}, "--dhcp-pool must be");
    row({"--interface", "e", "--seed", "x"}, "--seed must be");
    row({"--interface", "e", "--no-addresses", "--count", "9", "--http-port", "65530"},
        "9 web servers from port 65530 pass port 65535");
    row({"--interface", "e", "extra"}, "unexpected argument \"extra\"");
    row({"--cameras", "3"}, "Unknown option 'cameras'");
    row({"--interface"}, "Missing value after '--interface'");
}

void tst_FleetCommandLine::wrong()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, complaint);
    QCOMPARE(read(arguments), FleetCommandLine::Wrong);
    QVERIFY2(text.startsWith(complaint), qPrintable(text));
}

void tst_FleetCommandLine::help()
{
    QCOMPARE(read({"--help", "--count", "0"}), FleetCommandLine::Help);
    for (const char *option :
        {"--interface <name>", "--count <n>", "--first-address <address>", "--first-mac <mac>",
            "--no-addresses", "--http-port <port>", "--rtsp-port <port>", "--spread <seconds>",
            "--spread-order <order>", "--restart-seconds <seconds>", "--dhcp-pool <first-last>",
            "--scenario <file>", "--journal <file>", "--sha256", "--seed <n>"})
        QVERIFY2(text.contains(option), option);
}

void tst_FleetCommandLine::version()
{
    QCOMPARE(read({"--version"}), FleetCommandLine::Version);
}

QTEST_GUILESS_MAIN(tst_FleetCommandLine)
#include "tst_FleetCommandLine.moc"
