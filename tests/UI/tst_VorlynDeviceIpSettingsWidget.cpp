#include "MetaMethods.h"
#include "NetworkFormTest.h"
#include "VorlynDeviceIpSettingsWidget.h"
#include "VorlynDevicesWidget.h"
#include "ZRLabel.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

class tst_VorlynDeviceIpSettingsWidget : public NetworkFormTest
{
    Q_OBJECT

public:
    tst_VorlynDeviceIpSettingsWidget() :
        NetworkFormTest({"setAllButton", "Set All", {"setButton", "setAllButton"}, false})
    { }

private slots:
    void metaObject();
    void toastEnds();
    void toastIsReplaced();
    void setWritesItsDevice();
    void setAllSteps_data();
    void setAllSteps();
    void setAllWritesDhcp();
    void setAllWithoutTicks();

private:
    std::unique_ptr<QWidget> makeHost() const override
    {
        return std::make_unique<VorlynDeviceIpSettingsWidget>(nullptr);
    }
    void setDevice(const VorlynDevice &device) override
    {
        static_cast<VorlynDeviceIpSettingsWidget &>(*host).setDevice(device, table.get());
    }
};

void tst_VorlynDeviceIpSettingsWidget::metaObject()
{
    QCOMPARE(ownMethods(VorlynDeviceIpSettingsWidget::staticMetaObject),
        QStringList({"private slot onComboBoxIndexChanged(int)",
            "private slot onClickSetButton(bool)", "private slot onClickSetAllButton(bool)"}));
}

void tst_VorlynDeviceIpSettingsWidget::toastEnds()
{
    edit("ipEdit")->clear();
    button("setButton")->click();
    QVERIFY(toast());
    QTRY_VERIFY_WITH_TIMEOUT(!toast(), 10000);
}

void tst_VorlynDeviceIpSettingsWidget::toastIsReplaced()
{
    edit("ipEdit")->clear();
    button("setButton")->click();
    edit("ipEdit")->setText("1.2.3.4");
    edit("netmaskEdit")->clear();
    button("setAllButton")->click();
    QCOMPARE(host->findChildren<ZRLabel *>("toast").size(), 1);
    QCOMPARE(toast()->text(), QString("Please input valid netmask"));
}

void tst_VorlynDeviceIpSettingsWidget::setWritesItsDevice()
{
    tick({0, 2}); // of no matter here
    const QJsonObject request = click("setButton", {"success"}).constFirst();
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceIpSettingsWidget::setAllSteps_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QStringList>("addresses");
    QTest::newRow("plain") << "10.0.0.5" << QStringList({"10.0.0.5", "10.0.0.6", "10.0.0.7"});
    QTest::newRow("wraps") << "10.0.0.254" << QStringList({"10.0.0.254", "10.0.0.255", "10.0.0.0"});
    QTest::newRow("as typed, then stepped")
        << "10.0.0.5junk" << QStringList({"10.0.0.5junk", "10.0.0.6", "10.0.0.7"});
}

void tst_VorlynDeviceIpSettingsWidget::setAllSteps()
{
    QFETCH(QString, first);
    QFETCH(QStringList, addresses);
    tick({3, 0, 2});
    edit("ipEdit")->setText(first);
    edit("netmaskEdit")->setText("255.255.0.0");
    edit("gatewayEdit")->setText("10.0.0.1");
    edit("dns1Edit")->setText("1.1.1.1");
    edit("dns2Edit")->setText("2.2.2.2");
    const QVector<QJsonObject> requests = click("setAllButton", {"success", "success", "success"});
    const int rows[] = {0, 2, 3};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(CameraBench::targets(requests[i]), QStringList(QString("cam%1").arg(rows[i])));
        QCOMPARE(requests[i]["ip"].toString(), addresses[i]);
        QCOMPARE(requests[i]["netmask"].toString(), QString("255.255.0.0"));
        QCOMPARE(requests[i]["gateway"].toString(), QString("10.0.0.1"));
        QCOMPARE(requests[i]["dns1"].toString(), QString("1.1.1.1"));
        QCOMPARE(requests[i]["dns2"].toString(), QString("2.2.2.2"));
        QCOMPARE(table->device(rows[i]).ip(), addresses[i]);
    }
    QCOMPARE(table->device(1).ip(), QString("10.77.0.11"));
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceIpSettingsWidget::setAllWritesDhcp()
{
    tick({3, 1});
    mode()->setCurrentIndex(0);
    const QJsonObject request = click("setAllButton", {"success"}).constFirst();
    QCOMPARE(request["IpMode"].toString(), QString("dhcp"));
    QCOMPARE(CameraBench::targets(request), QStringList({"cam1", "cam3"}));
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceIpSettingsWidget::setAllWithoutTicks()
{
    button("setAllButton")->click(); // a run of no requests
    QVERIFY(bench->isQuiet());
    mode()->setCurrentIndex(0);
    const QJsonObject request = click("setAllButton", {"success"}).constFirst();
    QCOMPARE(request["IpMode"].toString(), QString("dhcp"));
    QVERIFY(request["destarray"].isArray());
    QCOMPARE(CameraBench::targets(request), QStringList());
}

QTEST_MAIN(tst_VorlynDeviceIpSettingsWidget)
#include "tst_VorlynDeviceIpSettingsWidget.moc"
