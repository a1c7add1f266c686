#include "CVTableWidget.h"
#include "CameraBench.h"
#include "Devices.h"
#include "MetaMethods.h"
#include "ModalDriver.h"
#include "NetworkFormChecks.h"
#include "VorlynDeviceIpSettingsDialog.h"
#include "VorlynDeviceIpSettingsWidget.h"
#include "VorlynDevicesWidget.h"
#include "ZRLabel.h"

#include <QCheckBox>

#include <memory>

using namespace NetworkFormChecks;

class tst_VorlynDeviceIpSettingsWidget : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void metaObject();
    void texts();
    void geometry_data();
    void geometry();
    void modeEnablesTheRows();
    void setInputs_data() { inputs_data(); }
    void setInputs() { inputs("setButton"); }
    void setAllInputs_data() { inputs_data(); }
    void setAllInputs() { inputs("setAllButton"); }
    void toastEnds();
    void toastIsReplaced();
    void setWritesItsDevice();
    void setWritesDhcp();
    void setAllSteps_data();
    void setAllSteps();
    void setAllWritesDhcp();
    void setAllWithoutTicks();

private:
    void inputs(const char *button);
    void tick(const QVector<int> &rows);
    QVector<QJsonObject> click(const char *button, int requests);

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<VorlynDeviceIpSettingsWidget> panel;
};

void tst_VorlynDeviceIpSettingsWidget::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
}

void tst_VorlynDeviceIpSettingsWidget::init()
{
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    table->setDevices(makeDevices({"a", "b", "c", "d"}));
    panel = std::make_unique<VorlynDeviceIpSettingsWidget>(nullptr);
    VorlynDevice device = table->device(1);
    device.setIpMode("static");
    device.setNetmask("255.255.0.0");
    panel->setDevice(device, table.get());
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
}

void tst_VorlynDeviceIpSettingsWidget::cleanup()
{
    panel.reset();
    table.reset();
}

void tst_VorlynDeviceIpSettingsWidget::tick(const QVector<int> &rows)
{
    for (int row : rows)
        table->tableWidget()->cellWidget(row, 0)->findChild<QCheckBox *>()->click();
}

// The requests that a click gives, each answered with success.
QVector<QJsonObject> tst_VorlynDeviceIpSettingsWidget::click(const char *name, int requests)
{
    QVector<QJsonObject> seen;
    ModalDriver<VorlynDeviceIpSettingsDialog> driver([&](VorlynDeviceIpSettingsDialog &) {
        while (seen.size() < requests)
            seen << bench->answerNext("success");
    });
    button(*panel, name)->click();
    return seen;
}

void tst_VorlynDeviceIpSettingsWidget::metaObject()
{
    QCOMPARE(ownMethods(VorlynDeviceIpSettingsWidget::staticMetaObject),
        QStringList({"private slot onComboBoxIndexChanged(int)",
            "private slot onClickSetButton(bool)", "private slot onClickSetAllButton(bool)"}));
}

void tst_VorlynDeviceIpSettingsWidget::texts()
{
    NetworkFormChecks::texts(*panel);
    QCOMPARE(button(*panel, "setAllButton")->text(), QString("Set All"));
}

void tst_VorlynDeviceIpSettingsWidget::geometry_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize &size : {QSize(260, 230), QSize(500, 400)})
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
}

void tst_VorlynDeviceIpSettingsWidget::geometry()
{
    QFETCH(QSize, size);
    QCOMPARE(panel->minimumSize(), QSize(260, 230));
    panel->resize(size);
    NetworkFormChecks::geometry(*panel, "setAllButton");
}

void tst_VorlynDeviceIpSettingsWidget::modeEnablesTheRows()
{
    QCOMPARE(mode(*panel)->currentIndex(), 1);
    rowsEnabled(*panel, true);
    mode(*panel)->setCurrentIndex(0);
    rowsEnabled(*panel, false);

    VorlynDeviceIpSettingsWidget fresh(nullptr);
    QCOMPARE(mode(fresh)->currentIndex(), 0);
    rowsEnabled(fresh, false);
}

void tst_VorlynDeviceIpSettingsWidget::inputs(const char *name)
{
    QFETCH(QString, ip);
    QFETCH(QString, netmask);
    QFETCH(QString, gateway);
    QFETCH(QString, toast);
    tick({2});
    edit(*panel, "ipEdit")->setText(ip);
    edit(*panel, "netmaskEdit")->setText(netmask);
    edit(*panel, "gatewayEdit")->setText(gateway);
    if (toast.isEmpty()) {
        const QJsonObject request = click(name, 1).value(0);
        QCOMPARE(request["ip"].toString(), ip);
        QCOMPARE(request["netmask"].toString(), netmask);
        QCOMPARE(request["gateway"], QJsonValue(gateway));
        QVERIFY(panel->isVisible());
        return;
    }
    button(*panel, name)->click();
    toastPlace(*panel);
    QCOMPARE(dynamic_cast<ZRLabel &>(*NetworkFormChecks::toast(*panel)).text(), toast);
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceIpSettingsWidget::toastEnds()
{
    edit(*panel, "ipEdit")->clear();
    button(*panel, "setButton")->click();
    QVERIFY(toast(*panel));
    QTRY_VERIFY_WITH_TIMEOUT(!toast(*panel), 10000);
}

void tst_VorlynDeviceIpSettingsWidget::toastIsReplaced()
{
    edit(*panel, "ipEdit")->clear();
    button(*panel, "setButton")->click();
    edit(*panel, "ipEdit")->setText("1.2.3.4");
    edit(*panel, "netmaskEdit")->clear();
    button(*panel, "setAllButton")->click();
    QCOMPARE(panel->findChildren<QWidget *>("toast").size(), 1);
    QCOMPARE(dynamic_cast<ZRLabel &>(*toast(*panel)).text(), QString("Please input valid netmask"));
}

void tst_VorlynDeviceIpSettingsWidget::setWritesItsDevice()
{
    tick({0, 2}); // of no matter here
    const QJsonObject request = click("setButton", 1).value(0);
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(request["ip"].toString(), QString("10.77.0.11"));
    QCOMPARE(table->device(1).netmask(), QString("255.255.0.0"));
}

void tst_VorlynDeviceIpSettingsWidget::setWritesDhcp()
{
    mode(*panel)->setCurrentIndex(0);
    const QJsonObject request = click("setButton", 1).value(0);
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(request["IpMode"].toString(), QString("dhcp"));
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
    edit(*panel, "ipEdit")->setText(first);
    edit(*panel, "gatewayEdit")->setText("10.0.0.1");
    edit(*panel, "dns1Edit")->setText("1.1.1.1");
    edit(*panel, "dns2Edit")->setText("2.2.2.2");
    const QVector<QJsonObject> requests = click("setAllButton", 3);
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
    edit(*panel, "ipEdit")->clear(); // nobody looks at it
    mode(*panel)->setCurrentIndex(0);
    const QJsonObject request = click("setAllButton", 1).value(0);
    QCOMPARE(request["IpMode"].toString(), QString("dhcp"));
    QCOMPARE(CameraBench::targets(request), QStringList({"cam1", "cam3"}));
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceIpSettingsWidget::setAllWithoutTicks()
{
    button(*panel, "setAllButton")->click(); // a run of no requests
    QVERIFY(bench->isQuiet());
    mode(*panel)->setCurrentIndex(0);
    const QJsonObject request = click("setAllButton", 1).value(0);
    QCOMPARE(CameraBench::targets(request), QStringList());
}

QTEST_MAIN(tst_VorlynDeviceIpSettingsWidget)
#include "tst_VorlynDeviceIpSettingsWidget.moc"
