#include "VorlynDevice.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QtTest>

#include <algorithm>

class tst_VorlynDevice : public QObject
{
    Q_OBJECT

private slots:
    void freshRecord();
    void hasNoMetaObject();
    void copiesAreValues();
    void accessors_data();
    void accessors();
    void readAccessors();
    void settersStoreWhatTheyGet();
    void fromJsonKeepsTexts_data();
    void fromJsonKeepsTexts();
    void intValues_data();
    void intValues();
    void version_data();
    void version();
    void functions_data();
    void functions();
    void lessComparesMacs_data();
    void lessComparesMacs();
    void containsComparesMacs();
    void wiFiInfoStartsAtZero();
};

static VorlynDevice withValue(const QString &key, const QString &value)
{
    VorlynDevice device;
    device.setValue(key, value);
    return device;
}

void tst_VorlynDevice::freshRecord()
{
    QObject parent;
    const VorlynDevice device(&parent);
    QCOMPARE(device.parent(), &parent);
    QVERIFY(!device.checked);
    QCOMPARE(device.index, -1);
    QVERIFY(!device.isValid());
    QCOMPARE(device.value("any"), QString());
    QCOMPARE(device.intValue("any"), 0);
}

void tst_VorlynDevice::hasNoMetaObject()
{
    QCOMPARE(VorlynDevice().metaObject(), &QObject::staticMetaObject);
}

void tst_VorlynDevice::copiesAreValues()
{
    QObject parent;
    VorlynDevice device(&parent);
    device.checked = true;
    device.index = 7;
    device.setMac("AA");

    VorlynDevice copy(device);
    QVERIFY(!copy.parent());
    QVERIFY(copy.checked);
    QCOMPARE(copy.index, 7);
    QCOMPARE(copy.mac(), QString("AA"));

    copy.setMac("BB");
    QCOMPARE(device.mac(), QString("AA"));

    VorlynDevice assigned;
    assigned = device;
    QVERIFY(!assigned.parent());
    QVERIFY(assigned.checked);
    QCOMPARE(assigned.index, 7);
    QCOMPARE(assigned.mac(), QString("AA"));

    VorlynDevice &same = assigned;
    assigned = same;
    QCOMPARE(assigned.index, 7);
    QCOMPARE(assigned.mac(), QString("AA"));
}

using Read = QString (VorlynDevice::*)() const;
using Write = void (VorlynDevice::*)(const QString &);
Q_DECLARE_METATYPE(Read)
Q_DECLARE_METATYPE(Write)

void tst_VorlynDevice::accessors_data()
{
    QTest::addColumn<Read>("read");
    QTest::addColumn<Write>("write");
    using D = VorlynDevice;
    QTest::newRow("mac") << Read(&D::mac) << Write(&D::setMac);
    QTest::newRow("ip") << Read(&D::ip) << Write(&D::setIp);
    QTest::newRow("netmask") << Read(&D::netmask) << Write(&D::setNetmask);
    QTest::newRow("gateway") << Read(&D::gateway) << Write(&D::setGateway);
    QTest::newRow("dns1") << Read(&D::dns1) << Write(&D::setDns1);
    QTest::newRow("dns2") << Read(&D::dns2) << Write(&D::setDns2);
    QTest::newRow("IpMode") << Read(&D::ipMode) << Write(&D::setIpMode);
    QTest::newRow("name") << Read(&D::name) << Write(&D::setName);
    QTest::newRow("p2pid") << Read(&D::p2pid) << Write(&D::setP2pid);
}

void tst_VorlynDevice::accessors()
{
    QFETCH(Read, read);
    QFETCH(Write, write);
    VorlynDevice device;
    (device.*write)("first");
    (device.*write)("second");
    QCOMPARE((device.*read)(), QString("second"));
    QCOMPARE(device.value(QTest::currentDataTag()), QString("second"));
}

void tst_VorlynDevice::readAccessors()
{
    QCOMPARE(withValue("srcid", "0A0B").srcid(), QString("0A0B"));
    QCOMPARE(withValue("rtsppath1", "rtsp://x/1").rtspPath(), QString("rtsp://x/1"));
    VorlynDevice device;
    device.setFunctionId("PAC");
    QCOMPARE(device.value("HdCuFun"), QString("PAC"));
}

void tst_VorlynDevice::settersStoreWhatTheyGet()
{
    VorlynDevice device;
    for (const QString &text :
        QStringList{"no address", "1.2.3.4", "999.1.1", "00:11:22:33:44:55", ""}) {
        device.setIp(text);
        QCOMPARE(device.ip(), text);
        device.setMac(text);
        QCOMPARE(device.mac(), text);
    }
}

void tst_VorlynDevice::fromJsonKeepsTexts_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QString>("kept");
    QTest::newRow("text") << QJsonValue("80") << "80";
    QTest::newRow("number") << QJsonValue(80) << "";
    QTest::newRow("boolean") << QJsonValue(true) << "";
    QTest::newRow("null") << QJsonValue() << "";
    QTest::newRow("array") << QJsonValue(QJsonArray{"80"}) << "";
    QTest::newRow("object") << QJsonValue(QJsonObject{{"a", "80"}}) << "";
}

void tst_VorlynDevice::fromJsonKeepsTexts()
{
    QFETCH(QJsonValue, value);
    QFETCH(QString, kept);
    VorlynDevice device;
    device.fromJson({{"httpport", value}, {"unknown key", "stays"}});
    QCOMPARE(device.value("httpport"), kept);
    QCOMPARE(device.intValue("httpport"), kept.toInt());
    QCOMPARE(device.value("unknown key"), QString("stays"));

    device.fromJson({});
    QCOMPARE(device.value("unknown key"), QString("stays"));
}

void tst_VorlynDevice::intValues_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("number");
    QTest::newRow("port") << "8080" << 8080;
    QTest::newRow("negative") << "-5" << -5;
    QTest::newRow("leading zero is decimal") << "010" << 10;
    QTest::newRow("hexadecimal") << "0x10" << 0;
    QTest::newRow("words") << "80 or so" << 0;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("too large") << "99999999999" << 0;
}

void tst_VorlynDevice::intValues()
{
    QFETCH(QString, text);
    QTEST(withValue("key", text).intValue("key"), "number");
}

void tst_VorlynDevice::version_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("version");
    QTest::newRow("four numbers") << "1.2.3.4"
                                  << "1.2.3";
    QTest::newRow("no dot") << "v12"
                            << "v12";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("dot at the end") << "1.2."
                                    << "1.2";
    QTest::newRow("dot at the start") << ".7"
                                      << "";
}

void tst_VorlynDevice::version()
{
    QFETCH(QString, text);
    QTEST(withValue("appVersion", text).version(), "version");
}

void tst_VorlynDevice::functions_data()
{
    QTest::addColumn<QString>("ids");
    QTest::addColumn<bool>("pac");
    QTest::addColumn<bool>("wifi");
    QTest::newRow("absent") << "" << false << false;
    QTest::newRow("case is ignored") << "wifi,PAC" << true << true;
    QTest::newRow("parts are whole") << "WIFI2,xPAC" << false << false;
    QTest::newRow("spaces count") << "WIFI, PAC" << false << true;
    QTest::newRow("empty parts") << ",,pac,," << true << false;
}

void tst_VorlynDevice::functions()
{
    QFETCH(QString, ids);
    VorlynDevice device;
    device.setFunctionId(ids);
    QTEST(device.supportsPAC(), "pac");
    QTEST(device.supportsWIFI(), "wifi");
    QCOMPARE(device.hasFunction(""), ids.startsWith(','));
}

void tst_VorlynDevice::lessComparesMacs_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<bool>("less");
    QTest::newRow("smaller") << "AA"
                             << "AB" << true;
    QTest::newRow("equal") << "AA"
                           << "AA" << false;
    QTest::newRow("greater") << "AB"
                             << "AA" << false;
    QTest::newRow("capitals first") << "B"
                                    << "a" << true;
    QTest::newRow("empty first") << ""
                                 << "A" << true;
}

void tst_VorlynDevice::lessComparesMacs()
{
    QFETCH(QString, left);
    QFETCH(QString, right);
    QTEST(withValue("mac", left) < withValue("mac", right), "less");
}

void tst_VorlynDevice::containsComparesMacs()
{
    const VorlynDevice device = withValue("mac", "AA");
    QVERIFY(!containsDevice({}, device));
    QVERIFY(!containsDevice({withValue("mac", "aa"), withValue("mac", "AAA")}, device));
    VorlynDevice other = withValue("mac", "AA");
    other.setIp("1.2.3.4");
    QVERIFY(containsDevice({withValue("mac", "BB"), other}, device));
}

void tst_VorlynDevice::wiFiInfoStartsAtZero()
{
    const VorlynDeviceWiFiInfo info;
    QCOMPARE(info.name, QString());
    QCOMPARE(info.signal, 0);
}

QTEST_GUILESS_MAIN(tst_VorlynDevice)
#include "tst_VorlynDevice.moc"
