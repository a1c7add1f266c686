#include "CameraBench.h"
#include "Devices.h"
#include "MetaMethods.h"
#include "ModalDriver.h"
#include "NetworkFormChecks.h"
#include "VorlynDeviceIPInfoDialog.h"
#include "VorlynDeviceIpSettingsDialog.h"
#include "VorlynDevicesWidget.h"
#include "ZRLabel.h"
#include "ZRLocalize.h"

#include <QSignalSpy>

#include <memory>

using namespace NetworkFormChecks;

class tst_VorlynDeviceIPInfoDialog : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void metaObject();
    void texts();
    void textsInChinese();
    void geometry_data();
    void geometry();
    void fieldsOfTheDevice();
    void modeOfTheDevice_data();
    void modeOfTheDevice();
    void modeEnablesTheRows();
    void tabOrder();
    void inputs_data() { NetworkFormChecks::inputs_data(); }
    void inputs();
    void closesWhateverTheDeviceSays();
    void dhcpNeedsNoField();
    void cancel();

private:
    VorlynDevice device(const QString &mode) const;
    QJsonObject clickSet(const QString &result);

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<VorlynDeviceIPInfoDialog> dialog;
};

void tst_VorlynDeviceIPInfoDialog::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
}

void tst_VorlynDeviceIPInfoDialog::init()
{
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    table->setDevices(makeDevices({"a", "b"}));
    dialog = std::make_unique<VorlynDeviceIPInfoDialog>(nullptr);
    dialog->setDevice(device("static"), table.get());
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
}

void tst_VorlynDeviceIPInfoDialog::cleanup()
{
    dialog.reset();
    table.reset();
}

// The second row, with a value for each field.
VorlynDevice tst_VorlynDeviceIPInfoDialog::device(const QString &mode) const
{
    VorlynDevice result = table->device(1);
    for (const Row &row : rows)
        result.setValue(row.key, QString("10.0.%1.1").arg(row.y));
    result.setIpMode(mode);
    return result;
}

// The request that a click on Set gives.
QJsonObject tst_VorlynDeviceIPInfoDialog::clickSet(const QString &result)
{
    QJsonObject request;
    ModalDriver<VorlynDeviceIpSettingsDialog> driver(
        [&](VorlynDeviceIpSettingsDialog &) { request = bench->answerNext(result); });
    button(*dialog, "setButton")->click();
    return request;
}

void tst_VorlynDeviceIPInfoDialog::metaObject()
{
    QCOMPARE(ownMethods(VorlynDeviceIPInfoDialog::staticMetaObject),
        QStringList({"private slot onComboBoxIndexChanged(int)",
            "private slot onClickSetButton(bool)", "private slot onClickCancelButton(bool)"}));
}

void tst_VorlynDeviceIPInfoDialog::texts()
{
    NetworkFormChecks::texts(*dialog);
    QCOMPARE(button(*dialog, "cancelButton")->text(), QString("Cancel"));
}

// At its making only; it is no listener to a change.
void tst_VorlynDeviceIPInfoDialog::textsInChinese()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    VorlynDeviceIPInfoDialog chinese(nullptr);
    const QString set = ZRLocalize::translate("Set");
    const QString mode = ZRLocalize::translate("Static");
    const QString gateway = ZRLocalize::translate("Gateway");
    ZRLocalize::switchLanguage("none");
    QVERIFY(set != "Set");
    QCOMPARE(button(chinese, "setButton")->text(), set);
    QCOMPARE(NetworkFormChecks::mode(chinese)->itemText(1), mode);
    QCOMPARE(chinese.findChild<QLabel *>("gatewayLabel")->text(), gateway);
    NetworkFormChecks::texts(*dialog);
}

void tst_VorlynDeviceIPInfoDialog::geometry_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize &size : {QSize(260, 230), QSize(500, 400)})
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
}

void tst_VorlynDeviceIPInfoDialog::geometry()
{
    QFETCH(QSize, size);
    QCOMPARE(dialog->minimumSize(), QSize(260, 230));
    dialog->resize(size);
    QTRY_COMPARE(dialog->size(), size);
    NetworkFormChecks::geometry(*dialog, "cancelButton");
}

void tst_VorlynDeviceIPInfoDialog::fieldsOfTheDevice()
{
    for (const Row &row : rows)
        QCOMPARE(edit(*dialog, row.edit)->text(), QString("10.0.%1.1").arg(row.y));
}

void tst_VorlynDeviceIPInfoDialog::modeOfTheDevice_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<int>("index");
    QTest::newRow("DHCP") << "DHCP" << 0;
    QTest::newRow("dhcp") << "dhcp" << 0;
    QTest::newRow("DhCp") << "DhCp" << 0;
    QTest::newRow("static") << "static" << 1;
    QTest::newRow("empty") << "" << 1;
    QTest::newRow("unknown") << "dhcp2" << 1;
}

void tst_VorlynDeviceIPInfoDialog::modeOfTheDevice()
{
    QFETCH(QString, mode);
    QFETCH(int, index);
    for (int before : {0, 1}) { // also when the combo box has no change to tell of
        NetworkFormChecks::mode(*dialog)->setCurrentIndex(before);
        dialog->setDevice(device(mode), table.get());
        QCOMPARE(NetworkFormChecks::mode(*dialog)->currentIndex(), index);
        rowsEnabled(*dialog, index != 0);
    }
}

void tst_VorlynDeviceIPInfoDialog::modeEnablesTheRows()
{
    mode(*dialog)->setCurrentIndex(0);
    rowsEnabled(*dialog, false);
    QCOMPARE(edit(*dialog, "ipEdit")->text(), QString("10.0.40.1")); // still shown
    mode(*dialog)->setCurrentIndex(1);
    rowsEnabled(*dialog, true);
}

void tst_VorlynDeviceIPInfoDialog::tabOrder()
{
    QStringList order;
    mode(*dialog)->setFocus();
    for (int i = 0; i < 7; ++i) {
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
        order << dialog->focusWidget()->objectName();
    }
    QCOMPARE(order,
        QStringList({"ipEdit", "netmaskEdit", "gatewayEdit", "dns1Edit", "dns2Edit", "setButton",
            "cancelButton"}));
}

void tst_VorlynDeviceIPInfoDialog::inputs()
{
    QFETCH(QString, ip);
    QFETCH(QString, netmask);
    QFETCH(QString, gateway);
    QFETCH(QString, toast);
    edit(*dialog, "ipEdit")->setText(ip);
    edit(*dialog, "netmaskEdit")->setText(netmask);
    edit(*dialog, "gatewayEdit")->setText(gateway);
    edit(*dialog, "dns1Edit")->setText("no address");
    edit(*dialog, "dns2Edit")->setText("");
    QSignalSpy finished(dialog.get(), &QDialog::finished);

    if (!toast.isEmpty()) {
        button(*dialog, "setButton")->click();
        toastPlace(*dialog);
        QCOMPARE(dynamic_cast<ZRLabel &>(*NetworkFormChecks::toast(*dialog)).text(), toast);
        QCOMPARE(finished.count(), 0);
        QVERIFY(bench->isQuiet());
        return;
    }
    const QJsonObject request = clickSet("success");
    QCOMPARE(request["method"].toString(), QString("SetIp"));
    QCOMPARE(request["IpMode"].toString(), QString("static"));
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(request["ip"].toString(), ip);
    QCOMPARE(request["netmask"].toString(), netmask);
    QCOMPARE(request["gateway"], QJsonValue(gateway));
    QCOMPARE(request["dns1"].toString(), QString("no address"));
    QCOMPARE(request["dns2"], QJsonValue(""));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    QCOMPARE(table->device(1).ip(), ip);
    QCOMPARE(table->device(1).ipMode(), QString("static"));
}

void tst_VorlynDeviceIPInfoDialog::closesWhateverTheDeviceSays()
{
    edit(*dialog, "ipEdit")->setText("10.0.0.9");
    clickSet("failure");
    QVERIFY(dialog->isHidden());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    QCOMPARE(table->device(1).ip(), QString("10.0.40.1"));
}

void tst_VorlynDeviceIPInfoDialog::dhcpNeedsNoField()
{
    for (const Row &row : rows)
        edit(*dialog, row.edit)->clear();
    mode(*dialog)->setCurrentIndex(0);
    const QJsonObject request = clickSet("failure");
    QCOMPARE(request["IpMode"].toString(), QString("dhcp"));
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QVERIFY(!request.contains("ip"));
    QVERIFY(!toast(*dialog));
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    QCOMPARE(table->device(1).ipMode(), QString("dhcp"));
}

void tst_VorlynDeviceIPInfoDialog::cancel()
{
    QSignalSpy rejected(dialog.get(), &QDialog::rejected);
    button(*dialog, "cancelButton")->click();
    QCOMPARE(rejected.count(), 1);
    QVERIFY(bench->isQuiet());
}

QTEST_MAIN(tst_VorlynDeviceIPInfoDialog)
#include "tst_VorlynDeviceIPInfoDialog.moc"
