#include "FleetProcess.h"
#include "LogCatcher.h"
#include "SocketFacts.h"
#include "VorlynSDK.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QScopeGuard>
#include <QScopedPointer>
#include <QTemporaryFile>
#include <QtConcurrent>
#include <QtTest>

// Cameras that misbehave, each fault over real sockets: what the program makes of it, and that it
// works on afterwards.
class tst_Faults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void search_data();
    void search();
    void write_data();
    void write();
    void sdCard_data();
    void sdCard();
    void wiFiList();
    void upload_data();
    void upload();
    void uploadThatIsNeverAnswered();

private:
    void openWithRule(const QByteArray &rule);
    void startNetwork();
    QVector<VorlynDevice> found(double seconds);

    QScopedPointer<FleetProcess> fleet;
    VorlynSDK *sdk = nullptr;
    QTemporaryFile image;
};

namespace {
const double searchSeconds = 0.8;
const int cameras = 2;
}

void tst_Faults::initTestCase()
{
    QVERIFY(image.open());
    image.write(QByteArray(300000, 'f'));
    image.flush();
}

void tst_Faults::init()
{
    fleet.reset(new FleetProcess("cam-a", cameras, "10.77.0.11"));
    VorlynSDK::createInstance();
    sdk = VorlynSDK::instance();
    startNetwork();
}

void tst_Faults::cleanup()
{
    sdk->stopNetwork();
    VorlynSDK::destroyInstance();
    QVERIFY2(fleet->stop(), fleet->errors());
    QVERIFY(fleet->events("unused-rule").isEmpty());
}

// Returns when both sockets are open: a reply that comes before is lost.
void tst_Faults::startNetwork()
{
    const LogCatcher log;
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK::selectInterface(
        VorlynSDK::availableInterfaces(), "veth-a", QString(), interface, address);
    sdk->startNetwork(interface, address);
    QTRY_COMPARE(log.count("setsockopt SO_SNDTIMEO 1:0 -> 0"), 2);
}

// The first camera follows the rule; the second answers each search a little later than it, so
// that it tells what the fault did to the replies behind it.
void tst_Faults::openWithRule(const QByteArray &rule)
{
    const QJsonObject fault = QJsonDocument::fromJson(rule).object();
    QVERIFY2(!fault.isEmpty(), rule);
    const QJsonObject later = {{"on", "search"}, {"delay-ms", 200}};
    fleet->setScenario({{"cameras",
        QJsonArray{QJsonObject{{"camera", 1}, {"rules", QJsonArray{fault}}},
            QJsonObject{{"camera", 2}, {"rules", QJsonArray{later}}}}}});
    QVERIFY(fleet->start());
}

QVector<VorlynDevice> tst_Faults::found(double seconds)
{
    QVector<VorlynDevice> devices;
    sdk->searchDevices(devices, seconds);
    std::sort(devices.begin(), devices.end());
    return devices;
}

void tst_Faults::search_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<int>("first"); // of the two, while the fault lasts
    QTest::addColumn<int>("second");

    const struct {
        const char *name;
        const char *fault;
        int found[2];
    } rows[] = {
        {"silence", R"("silent": true)", {0, 1}},
        {"delay", R"("delay-ms": 400)", {1, 1}},
        {"duplicates", R"("copies": 20)", {1, 1}},
        {"result in capitals", R"("set": {"result": "SUCCESS"})", {1, 1}},
        {"no result", R"("remove": ["result"])", {1, 1}},
        {"id as text", R"("id-as": "text")", {1, 1}},
        {"id as boolean", R"("id-as": "boolean")", {1, 1}},
        {"another id", R"("set": {"id": 77})", {0, 1}},
        {"wrong destid", R"("set": {"destid": "AABBCCDDEEFF"})", {0, 1}},
        {"destid in small letters", R"("set": {"destid": "0200000000aa"})", {0, 1}},
        {"numbers for texts", R"("set": {"ip": 10, "httpport": 80, "name": 7})", {1, 1}},
        {"mac as a number", R"("set": {"mac": 5})", {0, 1}},
        {"empty mac", R"("set": {"mac": ""})", {0, 1}},
        {"no mac", R"("remove": ["mac"])", {0, 1}},
        {"malformed JSON", R"("malformed": true)", {0, 1}},
        {"burst", R"("burst": 100)", {1, 1}},
        // A datagram whose length field disagrees spoils those behind it.
        {"cut header", R"("cut": 5)", {0, 0}},
        {"cut text", R"("cut": 40)", {0, 0}},
        {"length mismatch", R"("length-error": 3)", {0, 0}},
        // So does the beginning of one that is too long, on a system where it comes.
        {"more than a datagram holds", R"("size": 4000)", {0, SocketFacts::cutsDatagrams ? 0 : 1}},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QByteArray(row.fault) << row.found[0] << row.found[1];
}

void tst_Faults::search()
{
    QFETCH(QByteArray, fault);
    QFETCH(int, first);
    QFETCH(int, second);
    openWithRule(R"({"on": "search", "times": 1, )" + fault + "}");

    const QVector<VorlynDevice> devices = found(searchSeconds);
    const auto seen = [&devices](int camera) {
        return int(std::count_if(devices.begin(), devices.end(), [camera](const VorlynDevice &d) {
            return d.mac() == QString("02:56:4C:00:00:0%1").arg(camera);
        }));
    };
    QCOMPARE(seen(1), first);
    QCOMPARE(seen(2), second);
    QCOMPARE(devices.size(), first + second);

    sdk->stopNetwork();
    startNetwork();
    QCOMPARE(found(searchSeconds).size(), cameras);
}

void tst_Faults::write_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<int>("result");

    const struct {
        const char *name;
        const char *fault;
        int result;
    } rows[] = {
        {"silence", R"("silent": true)", -1},
        {"delay", R"("delay-ms": 1000)", 0},
        {"delay past the wait", R"("delay-ms": 3600)", -1},
        {"duplicates", R"("copies": 20)", 0},
        {"result in capitals", R"("set": {"result": "SUCCESS"})", 0},
        {"result in mixed case", R"("set": {"result": "SucCess"})", 0},
        {"another result", R"("set": {"result": "ok"})", -1},
        {"result as boolean", R"("set": {"result": true})", -1},
        {"no result", R"("remove": ["result"])", -1},
        {"id as text", R"("id-as": "text")", 0},
        {"id as boolean", R"("id-as": "boolean")", 0}, // true is 1, and the request has the id 1
        {"no id", R"("remove": ["id"])", -1},
        {"wrong destid", R"("set": {"destid": "AABBCCDDEEFF"})", -1},
        {"malformed JSON", R"("malformed": true)", -1},
        {"cut header", R"("cut": 3)", -1},
        {"length mismatch", R"("length-error": -1)", -1},
        {"more than a datagram holds", R"("size": 2049)", -1},
        {"as much as a datagram holds", R"("size": 2048)", 0},
        {"burst", R"("burst": 100)", 0},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QByteArray(row.fault) << row.result;
}

void tst_Faults::write()
{
    QFETCH(QByteArray, fault);
    QFETCH(int, result);
    openWithRule(R"({"on": "SetName", "times": 1, )" + fault + "}");

    const QVector<VorlynDevice> devices = found(searchSeconds).mid(0, 1);
    QCOMPARE(devices.size(), 1);
    QCOMPARE(sdk->setDeviceName(devices, "first"), result);
    sdk->stopNetwork();
    startNetwork();
    QCOMPARE(sdk->setDeviceName(devices, "second"), 0);
    QCOMPARE(fleet->requests("SetName").size(), 2);
    QCOMPARE(found(searchSeconds).first().name(), QString("second"));
}

void tst_Faults::sdCard_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("free");

    QTest::newRow("texts") << QByteArray(R"("set": {"totalsize": "1024", "freesize": "10"})") << 0
                           << 1024 << 10;
    QTest::newRow("numbers") << QByteArray(R"("set": {"totalsize": 512, "freesize": 8})") << 0
                             << 512 << 8;
    QTest::newRow("no card") << QByteArray(R"("set": {"totalsize": "0", "freesize": "0"})") << -1
                             << 0 << 0;
    QTest::newRow("refused, with sizes")
        << QByteArray(R"("set": {"result": "fail", "totalsize": "7", "freesize": "3"})") << 0 << 7
        << 3;
    QTest::newRow("silence") << QByteArray(R"("silent": true)") << -1 << -5 << -6;
}

void tst_Faults::sdCard()
{
    QFETCH(QByteArray, fault);
    QFETCH(int, result);
    openWithRule(R"({"on": "GetSD", )" + fault + "}");
    int total = -5, free = -6;
    QCOMPARE(sdk->getDeviceSD(found(searchSeconds).value(0), total, free), result);
    QTEST(total, "total");
    QTEST(free, "free");
}

void tst_Faults::wiFiList()
{
    openWithRule(R"({"on": "WifiScan", "set": {"result": "fail", "WifiList": [
        {"wifiname": "Home", "Signal": 80}, {"wifiname": "", "Signal": 70},
        {"wifiname": "Guest", "Signal": "60"}, {"Signal": 5}, 7]}})");
    QVector<VorlynDeviceWiFiInfo> networks;
    QCOMPARE(sdk->getDeviceWiFiList(found(searchSeconds).value(0), networks), -1);
    QCOMPARE(networks.size(), 2);
    QCOMPARE(networks[0].name, QString("Home"));
    QCOMPARE(networks[0].signal, 80);
    QCOMPARE(networks[1].name, QString("Guest"));
    QCOMPARE(networks[1].signal, 0); // a text is no signal
}

void tst_Faults::upload_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<int>("result");

    const struct {
        const char *name;
        const char *fault;
        int result;
    } rows[] = {
        {"a refusal", R"("Result": 5)", 5},
        {"a negative one", R"("Result": -2)", -2},
        {"reset midway", R"("reset-after": 100000)", -3},
        {"status 500 with JSON", R"("status": 500, "Result": 4)", 4},
        {"HTML page", R"("status": 500, "body": "<h1>broken</h1>")", -3},
        {"array", R"("body": "[{\"Result\": 0}]")", -3},
        {"no Result", R"("body": "{\"result\": 9}")", 0},
        {"Result as text", R"("body": "{\"Result\": \"9\"}")", 0},
        {"nothing", R"("body": "")", -3},
        {"late", R"("delay-ms": 700, "Result": 1)", 1},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QByteArray(row.fault) << row.result;
}

void tst_Faults::upload()
{
    QFETCH(QByteArray, fault);
    QFETCH(int, result);
    openWithRule(R"({"on": "upload", "apply": false, )" + fault + "}");
    const VorlynDevice device = found(searchSeconds).value(0);
    QCOMPARE(sdk->setDeviceFirmware(device, image.fileName()), result);
    VorlynDevice other = device;
    other.setIp("10.77.0.12");
    QCOMPARE(sdk->setDeviceFirmware(other, image.fileName()), 0);
}

void tst_Faults::uploadThatIsNeverAnswered()
{
    openWithRule(R"({"on": "upload", "silent": true, "apply": false})");
    const VorlynDevice device = found(searchSeconds).value(0);
    const QFuture<int> result =
        QtConcurrent::run([&] { return sdk->setDeviceFirmware(device, image.fileName()); });
    // However the test ends: the job uses what is here.
    const auto end = qScopeGuard([&] {
        while (!result.isFinished()) {
            sdk->cancelUpload();
            QThread::msleep(1);
        }
    });
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("upload").size(), 1, 20000);
    QVERIFY(!result.isFinished());
    sdk->cancelUpload();
    QTRY_VERIFY(result.isFinished());
    QCOMPARE(result.result(), -3);
}

QTEST_GUILESS_MAIN(tst_Faults)
#include "tst_Faults.moc"
