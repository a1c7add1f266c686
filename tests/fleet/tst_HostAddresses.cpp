#include "HostAddresses.h"

#include <QRegularExpression>
#include <QTest>

#include <algorithm>

class tst_HostAddresses : public QObject
{
    Q_OBJECT

private slots:
    void present();
    void addAndRemove();
    void removesOnlyItsOwn();
    void othersOfTheSubnetStay();
    void failureLeavesNothing();
    void unknownInterface();
    void addToUnknownInterface();

private:
    QStringList now() const;
};

// All of veth-b as "10.88.0.1/24", sorted.
QStringList tst_HostAddresses::now() const
{
    QStringList texts;
    for (const HostAddress &address : HostAddresses("veth-b").present())
        texts << QStringLiteral("%1/%2").arg(address.ip.toString()).arg(address.prefixLength);
    std::sort(texts.begin(), texts.end());
    return texts;
}

void tst_HostAddresses::present()
{
    const HostAddresses addresses("veth-b");
    QVERIFY(addresses.exists());
    QCOMPARE(now(), QStringList{"10.88.0.1/24"});
    QVERIFY(addresses.has(QHostAddress("10.88.0.1")));
    QVERIFY(!addresses.has(QHostAddress("10.88.0.2")));
    QVERIFY(HostAddresses::interfaces().contains("veth-b"));
}

void tst_HostAddresses::addAndRemove()
{
    QString error;
    {
        HostAddresses addresses("veth-b");
        QVERIFY2(addresses.add(
                     {{QHostAddress("10.88.0.11"), 24}, {QHostAddress("10.99.0.1"), 16}}, &error),
            qPrintable(error));
        QCOMPARE(now(), QStringList({"10.88.0.1/24", "10.88.0.11/24", "10.99.0.1/16"}));
        QVERIFY2(addresses.remove(QHostAddress("10.88.0.11"), &error), qPrintable(error));
        QCOMPARE(now(), QStringList({"10.88.0.1/24", "10.99.0.1/16"}));
    }
    QCOMPARE(now(), QStringList{"10.88.0.1/24"});
}

void tst_HostAddresses::removesOnlyItsOwn()
{
    QString error;
    HostAddresses addresses("veth-b");
    QVERIFY(addresses.add({{QHostAddress("10.88.0.1"), 24}}, &error));
    QVERIFY(addresses.remove(QHostAddress("10.88.0.1"), &error));
    addresses.removeAll();
    QCOMPARE(now(), QStringList{"10.88.0.1/24"});
}

// The system takes the later addresses of a subnet away with its first one.
void tst_HostAddresses::othersOfTheSubnetStay()
{
    QString error;
    HostAddresses addresses("veth-b");
    QVERIFY(addresses.add({{QHostAddress("192.168.5.1"), 24}, {QHostAddress("192.168.5.2"), 24},
                              {QHostAddress("192.168.5.3"), 24}},
        &error));
    QVERIFY2(addresses.remove(QHostAddress("192.168.5.1"), &error), qPrintable(error));
    QCOMPARE(now(), QStringList({"10.88.0.1/24", "192.168.5.2/24", "192.168.5.3/24"}));
    addresses.removeAll();
    QCOMPARE(now(), QStringList{"10.88.0.1/24"});
}

void tst_HostAddresses::failureLeavesNothing()
{
    QString error;
    HostAddresses addresses("veth-b");
    QVERIFY(!addresses.add(
        {{QHostAddress("10.88.0.11"), 24}, {QHostAddress("10.88.0.12"), 99}}, &error));
    const QRegularExpression form(R"(\Acan't add 10\.88\.0\.1(1/24|2/99) to veth-b: .+\z)");
    QVERIFY2(form.match(error).hasMatch(), qPrintable(error));
    QCOMPARE(now(), QStringList{"10.88.0.1/24"});
}

void tst_HostAddresses::unknownInterface()
{
    const HostAddresses addresses("none0");
    QVERIFY(!addresses.exists());
    QVERIFY(addresses.present().isEmpty());
}

void tst_HostAddresses::addToUnknownInterface()
{
    QString error;
    QVERIFY(!HostAddresses("none0").add({{QHostAddress("10.88.0.11"), 24}}, &error));
    QVERIFY(!error.isEmpty());
}

QTEST_GUILESS_MAIN(tst_HostAddresses)
#include "tst_HostAddresses.moc"
