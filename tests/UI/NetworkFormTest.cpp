#include "NetworkFormTest.h"

#include "CVTableWidget.h"
#include "Devices.h"
#include "ModalDriver.h"
#include "VorlynDeviceIpSettingsDialog.h"
#include "VorlynDevicesWidget.h"
#include "ZRLabel.h"
#include "ZRLocalize.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
const struct Row {
    const char *caption;
    const char *label;
    const char *edit;
    const char *key; // of the device's record
    int y;
} rows[] = {
    {"IP Address", "ipLabel", "ipEdit", "ip", 40},
    {"Netmask", "netmaskLabel", "netmaskEdit", "netmask", 70},
    {"Gateway", "gatewayLabel", "gatewayEdit", "gateway", 100},
    {"Dns1", "dns1Label", "dns1Edit", "dns1", 130},
    {"Dns2", "dns2Label", "dns2Edit", "dns2", 160},
};

QString fieldText(const Row &row)
{
    return QStringLiteral("10.0.%1.1").arg(row.y);
}

QRect place(const QWidget &host, const char *name)
{
    return host.findChild<QWidget *>(name)->geometry();
}

void rowsEnabled(const QWidget &host, bool enabled)
{
    for (const Row &row : rows) {
        QCOMPARE(host.findChild<QLabel *>(row.label)->isEnabled(), enabled);
        QCOMPARE(host.findChild<QLineEdit *>(row.edit)->isEnabled(), enabled);
    }
    QVERIFY(host.findChild<QComboBox *>("modeComboBox")->isEnabled());
    QVERIFY(host.findChild<QPushButton *>("setButton")->isEnabled());
}
}

NetworkFormTest::NetworkFormTest(const Kind &kind) : kind(kind) { }

VorlynDevice NetworkFormTest::device(const QString &mode) const
{
    VorlynDevice result = table->device(1);
    for (const Row &row : rows)
        result.setValue(row.key, fieldText(row));
    result.setIpMode(mode);
    return result;
}

QComboBox *NetworkFormTest::mode() const
{
    return host->findChild<QComboBox *>("modeComboBox");
}

QLineEdit *NetworkFormTest::edit(const char *name) const
{
    return host->findChild<QLineEdit *>(name);
}

QPushButton *NetworkFormTest::button(const QString &name) const
{
    return host->findChild<QPushButton *>(name);
}

ZRLabel *NetworkFormTest::toast() const
{
    return host->findChild<ZRLabel *>("toast", Qt::FindDirectChildrenOnly);
}

void NetworkFormTest::tick(const QVector<int> &rows)
{
    for (int row : rows)
        table->tableWidget()->cellWidget(row, 0)->findChild<QCheckBox *>()->click();
}

QVector<QJsonObject> NetworkFormTest::click(const QString &name, const QStringList &results)
{
    QVector<QJsonObject> seen;
    ModalDriver<VorlynDeviceIpSettingsDialog> driver([&](VorlynDeviceIpSettingsDialog &) {
        for (const QString &result : results)
            seen << bench->answerNext(result);
    });
    button(name)->click();
    return seen;
}

void NetworkFormTest::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

void NetworkFormTest::init()
{
    QVERIFY(ZRLocalize::switchLanguage("en"));
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    table->setDevices(makeDevices({"a", "b", "c", "d"}));
    host = makeHost();
    setDevice(device("static"));
    host->show();
    QVERIFY(QTest::qWaitForWindowExposed(host.get()));
}

void NetworkFormTest::cleanup()
{
    host.reset();
    table.reset();
}

QStringList NetworkFormTest::shownTexts(const QWidget &of) const
{
    const auto *mode = of.findChild<QComboBox *>("modeComboBox");
    QStringList texts = {
        of.findChild<QLabel *>("modeLabel")->text(), mode->itemText(0), mode->itemText(1)};
    for (const Row &row : rows)
        texts << of.findChild<QLabel *>(row.label)->text();
    for (const char *name : {"setButton", kind.secondButton})
        texts << of.findChild<QPushButton *>(name)->text();
    return texts;
}

void NetworkFormTest::texts_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("later");
    QTest::newRow("English") << "en"
                             << "cn";
    QTest::newRow("Chinese") << "cn"
                             << "en";
}

// They are set at the making only; the form is no listener to a change of language.
void NetworkFormTest::texts()
{
    QFETCH(QString, language);
    QFETCH(QString, later);
    QVERIFY(ZRLocalize::switchLanguage(language));
    QStringList keys = {"IP Mode", "DHCP", "Static"};
    for (const Row &row : rows)
        keys << row.caption;
    keys << "Set" << kind.secondCaption;
    QStringList expected;
    for (const QString &key : keys)
        expected << ZRLocalize::translate(key);
    QCOMPARE(expected == keys, language == "en");

    const std::unique_ptr<QWidget> made = makeHost();
    QCOMPARE(shownTexts(*made), expected);
    QCOMPARE(made->findChild<QComboBox *>("modeComboBox")->count(), 2);
    for (const char *name : {"spareLabel1", "spareLabel2"})
        QCOMPARE(made->findChild<QLabel *>(name)->text(), QString());
    QVERIFY(ZRLocalize::switchLanguage(later));
    QCOMPARE(shownTexts(*made), expected);
}

void NetworkFormTest::geometry_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize &size : {QSize(260, 230), QSize(500, 400)})
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
}

// Places don't depend on the size of the host.
void NetworkFormTest::geometry()
{
    QFETCH(QSize, size);
    QCOMPARE(host->minimumSize(), QSize(260, 230));
    host->resize(size);
    QTRY_COMPARE(host->size(), size);

    QCOMPARE(place(*host, "modeLabel"), QRect(10, 10, 110, 20));
    QCOMPARE(mode()->minimumWidth(), 110);
    QCOMPARE(mode()->geometry(), QRect(140, 10, qMax(110, mode()->sizeHint().width()), 20));
    for (const Row &row : rows) {
        QCOMPARE(place(*host, row.label), QRect(10, row.y, 110, 20));
        QCOMPARE(place(*host, row.edit), QRect(140, row.y, 110, 20));
    }
    QCOMPARE(place(*host, "setButton"), QRect(10, 190, 110, 25));
    QCOMPARE(place(*host, kind.secondButton), QRect(140, 190, 110, 25));
    for (const char *name : {"spareLabel1", "spareLabel2"})
        QVERIFY(!host->findChild<QLabel *>(name)->testAttribute(Qt::WA_Resized)); // never placed
}

void NetworkFormTest::fieldsOfTheDevice()
{
    for (const Row &row : rows)
        QCOMPARE(edit(row.edit)->text(), fieldText(row));
}

void NetworkFormTest::modeOfTheDevice_data()
{
    QTest::addColumn<QString>("ofTheDevice");
    QTest::addColumn<int>("index");
    QTest::newRow("DHCP") << "DHCP" << 0;
    QTest::newRow("dhcp") << "dhcp" << 0;
    QTest::newRow("DhCp") << "DhCp" << 0;
    QTest::newRow("static") << "static" << 1;
    QTest::newRow("empty") << "" << 1;
    QTest::newRow("unknown") << "dhcp2" << 1;
}

void NetworkFormTest::modeOfTheDevice()
{
    QFETCH(QString, ofTheDevice);
    QFETCH(int, index);
    for (int before : {0, 1}) { // also when the combo box has no change to tell of
        mode()->setCurrentIndex(before);
        setDevice(device(ofTheDevice));
        QCOMPARE(mode()->currentIndex(), index);
        rowsEnabled(*host, index != 0);
    }
}

void NetworkFormTest::modeEnablesTheRows()
{
    mode()->setCurrentIndex(0);
    rowsEnabled(*host, false);
    fieldsOfTheDevice(); // still shown
    mode()->setCurrentIndex(1);
    rowsEnabled(*host, true);
}

void NetworkFormTest::modeAtFirst()
{
    const std::unique_ptr<QWidget> made = makeHost();
    QCOMPARE(made->findChild<QComboBox *>("modeComboBox")->currentIndex(), 0);
    rowsEnabled(*made, false);
}

void NetworkFormTest::tabOrder()
{
    QStringList order;
    mode()->setFocus();
    for (int i = 0; i < 7; ++i) {
        QTest::keyClick(host->focusWidget(), Qt::Key_Tab);
        order << host->focusWidget()->objectName();
    }
    QCOMPARE(order,
        QStringList({"ipEdit", "netmaskEdit", "gatewayEdit", "dns1Edit", "dns2Edit", "setButton",
            kind.secondButton}));
}

// Inputs, and the toast that each gives; without a toast they go out as typed.
void NetworkFormTest::inputs_data()
{
    QTest::addColumn<QString>("writer");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("netmask");
    QTest::addColumn<QString>("gateway");
    QTest::addColumn<QString>("message");
    static const char mask[] = "255.255.255.0";
    static const char noIp[] = "Please input valid ip address";
    static const char noMask[] = "Please input valid netmask";
    const struct {
        const char *name;
        const char *ip;
        const char *netmask;
        const char *gateway;
        const char *message;
    } cases[] = {
        {"all good", "10.0.0.5", mask, "10.0.0.1", ""},
        {"empty address", "", mask, "10.0.0.1", noIp},
        {"number too high", "300.1.1.1", mask, "10.0.0.1", noIp},
        {"three numbers", "1.2.3", mask, "10.0.0.1", noIp},
        {"address before netmask", "x", "y", "z", noIp},
        {"empty netmask", "10.0.0.5", "", "10.0.0.1", noMask},
        {"bad netmask", "10.0.0.5", "255.255", "", noMask},
        {"text behind the address", "1.1.1.1x", mask, "10.0.0.1", ""},
        {"holes in the netmask", "10.0.0.5", "255.0.255.0", "10.0.0.1", ""},
        {"empty gateway", "10.0.0.5", mask, "", ""}, // it is never looked at
        {"gateway is no address", "10.0.0.5", mask, "none", ""},
    };
    for (const QString &writer : kind.writers) {
        for (const auto &row : cases)
            QTest::addRow("%s, %s", qPrintable(writer), row.name)
                << writer << row.ip << row.netmask << row.gateway << row.message;
    }
}

void NetworkFormTest::inputs()
{
    QFETCH(QString, writer);
    QFETCH(QString, ip);
    QFETCH(QString, netmask);
    QFETCH(QString, gateway);
    QFETCH(QString, message);
    tick({1});
    edit("ipEdit")->setText(ip);
    edit("netmaskEdit")->setText(netmask);
    edit("gatewayEdit")->setText(gateway);
    edit("dns1Edit")->setText("no address");
    edit("dns2Edit")->setText("");

    if (!message.isEmpty()) {
        QVERIFY(ZRLocalize::switchLanguage("cn"));
        const QString translated = ZRLocalize::translate(message);
        QVERIFY(translated != message);
        button(writer)->click();
        QVERIFY(toast());
        QCOMPARE(toast()->text(), translated);
        QCOMPARE(toast()->pos(),
            QPoint((host->width() - toast()->width()) / 2, host->height() - 5 - toast()->height()));
        QVERIFY(host->isVisible());
        QCOMPARE(edit("ipEdit")->text(), ip);
        QVERIFY(bench->isQuiet());
        return;
    }
    const QJsonObject request = click(writer, {"success"}).constFirst();
    QCOMPARE(request["method"].toString(), QString("SetIp"));
    QCOMPARE(request["IpMode"].toString(), QString("static"));
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(request["ip"].toString(), ip);
    QCOMPARE(request["netmask"].toString(), netmask);
    QCOMPARE(request["gateway"], QJsonValue(gateway));
    QCOMPARE(request["dns1"].toString(), QString("no address"));
    QCOMPARE(request["dns2"], QJsonValue(""));
    QVERIFY(!toast());
    QCOMPARE(host->isHidden(), kind.closes);
    QCOMPARE(table->device(1).ip(), ip);
}

void NetworkFormTest::dhcpNeedsNoField_data()
{
    QTest::addColumn<QString>("writer");
    for (const QString &writer : kind.writers)
        QTest::newRow(qPrintable(writer)) << writer;
}

void NetworkFormTest::dhcpNeedsNoField()
{
    QFETCH(QString, writer);
    tick({1});
    for (const Row &row : rows)
        edit(row.edit)->clear();
    mode()->setCurrentIndex(0);
    const QJsonObject request = click(writer, {"failure"}).constFirst();
    QCOMPARE(request["IpMode"].toString(), QString("dhcp"));
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QVERIFY(!request.contains("ip"));
    QVERIFY(!toast());
    QCOMPARE(host->isHidden(), kind.closes);
    QCOMPARE(table->device(1).ipMode(), QString("dhcp"));
}

// A device that leaves DHCP has its new address in the table at once, but not its new mode.
void NetworkFormTest::recordKeepsItsMode()
{
    setDevice(device("dhcp"));
    mode()->setCurrentIndex(1);
    edit("ipEdit")->setText("10.0.0.9");
    click("setButton", {"success"});
    setDevice(table->device(1));
    QCOMPARE(edit("ipEdit")->text(), QString("10.0.0.9"));
    QCOMPARE(mode()->currentIndex(), 0);
}
