#include "NetworkSettingsPage.h"

#include "CVTableWidget.h"
#include "CameraBench.h"
#include "Devices.h"
#include "VorlynDevicesWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

// The form as a panel: which device and which table its buttons write.
class tst_NetworkSettingsPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void withoutDevice();
    void fillsTheForm();
    void setWritesTheDevice();
    void setAllWritesTheTicked();
    void languageKeepsTheDevice();
    void sameDeviceKeepsTheInput();
    void otherRecordTakesTheInput_data();
    void otherRecordTakesTheInput();
    void writesTheNewestRecord();
    void tellsOfItsButtons();
    void languageKeepsTheInput();

private:
    QLineEdit *edit(const char *name) const { return page->findChild<QLineEdit *>(name); }
    QComboBox *mode() const { return page->findChild<QComboBox *>("modeComboBox"); }
    void type();
    bool isTyped() const;
    // The requests of a click, each answered with success.
    QVector<QJsonObject> click(const char *name, int count);

    QScopedPointer<CameraBench> bench;
    QScopedPointer<VorlynDevicesWidget> table;
    QScopedPointer<NetworkSettingsPage> page;
};

void tst_NetworkSettingsPage::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

void tst_NetworkSettingsPage::init()
{
    QVERIFY(ZRLocalize::loadLanguage("en"));
    bench.reset(new CameraBench);
    QVERIFY(bench->isReady());
    table.reset(new VorlynDevicesWidget(nullptr));
    table->setDevices(makeDevices({"m0", "m1", "m2"}));
    table->show();
    page.reset(new NetworkSettingsPage(nullptr));
    page->setDevicesWidget(table.data());
    page->resize(900, 300);
    page->show();
}

void tst_NetworkSettingsPage::cleanup()
{
    page.reset();
    table.reset();
    bench.reset();
}

QVector<QJsonObject> tst_NetworkSettingsPage::click(const char *name, int count)
{
    QVector<QJsonObject> requests;
    QTimer::singleShot(0, this, [&] {
        for (int i = 0; i < count; ++i)
            requests.append(bench->answerNext("success"));
    });
    QTest::mouseClick(page->findChild<QPushButton *>(name), Qt::LeftButton);
    return requests;
}

// Into two of the form's edits; their device is one of static mode.
void tst_NetworkSettingsPage::type()
{
    edit("ipEdit")->setText("10.0.0.5");
    edit("dns2Edit")->setText("half an addr");
    mode()->setCurrentIndex(0);
}

bool tst_NetworkSettingsPage::isTyped() const
{
    return edit("ipEdit")->text() == "10.0.0.5" && edit("dns2Edit")->text() == "half an addr"
        && edit("netmaskEdit")->text().isEmpty() && mode()->currentIndex() == 0
        && !edit("ipEdit")->isEnabled();
}

void tst_NetworkSettingsPage::withoutDevice()
{
    QVERIFY(!page->isEnabled());
    page->setDevice(table->device(0));
    QVERIFY(page->isEnabled());
    page->setDevice(VorlynDevice());
    QVERIFY(!page->isEnabled());
    QCOMPARE(edit("ipEdit")->text(), QString());
}

void tst_NetworkSettingsPage::fillsTheForm()
{
    page->setDevice(table->device(1));
    QCOMPARE(edit("ipEdit")->text(), QString("10.77.0.11"));
    QCOMPARE(page->findChild<QLabel *>("tickedLabel")->text(), QString("Ticked devices: 0"));
}

void tst_NetworkSettingsPage::setWritesTheDevice()
{
    page->setDevice(table->device(1));
    edit("ipEdit")->setText("10.0.0.5");
    edit("netmaskEdit")->setText("255.0.0.0");
    const QVector<QJsonObject> requests = click("setButton", 1);
    QCOMPARE(CameraBench::targets(requests[0]), QStringList("cam1"));
    QCOMPARE(requests[0]["ip"].toString(), QString("10.0.0.5"));
    QCOMPARE(table->device(1).ip(), QString("10.0.0.5"));
}

void tst_NetworkSettingsPage::setAllWritesTheTicked()
{
    page->setDevice(table->device(1));
    for (int row : {0, 2}) {
        QTest::mouseClick(
            table->tableWidget()->cellWidget(row, 0)->findChild<QCheckBox *>(), Qt::LeftButton);
    }
    QTRY_COMPARE(page->findChild<QLabel *>("tickedLabel")->text(), QString("Ticked devices: 2"));
    edit("ipEdit")->setText("10.0.0.5");
    edit("netmaskEdit")->setText("255.0.0.0");
    click("setAllButton", 2);
    QCOMPARE(table->device(0).ip(), QString("10.0.0.5"));
    QCOMPARE(table->device(1).ip(), QString("10.77.0.11"));
    QCOMPARE(table->device(2).ip(), QString("10.0.0.6"));
}

void tst_NetworkSettingsPage::languageKeepsTheDevice()
{
    const auto label = [this](const char *name) { return page->findChild<QLabel *>(name)->text(); };
    page->setDevice(table->device(1));
    const QString english = label("hintLabel");
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    QCOMPARE(label("tickedLabel"), QString::fromUtf8("已勾选的设备: 0"));
    QCOMPARE(label("hintLabel"), ZRLocalize::translate("Network Settings Hint"));
    QVERIFY(label("hintLabel") != english);
    QCOMPARE(page->findChildren<QPushButton *>("setAllButton").size(), 1);
    QCOMPARE(page->findChild<QPushButton *>("setAllButton")->text(), QString::fromUtf8("全部设置"));
    QCOMPARE(edit("ipEdit")->text(), QString("10.77.0.11"));
    QVERIFY(edit("ipEdit")->isVisible());
}

void tst_NetworkSettingsPage::sameDeviceKeepsTheInput()
{
    VorlynDevice device = table->device(1);
    page->setDevice(device);
    type();
    page->setDevice(device);
    QVERIFY(isTyped());
    device.setName("another");
    device.checked = true;
    page->setDevice(device);
    QVERIFY(isTyped());
}

void tst_NetworkSettingsPage::otherRecordTakesTheInput_data()
{
    QTest::addColumn<QString>("key");
    for (const char *key : {"mac", "IpMode", "ip", "netmask", "gateway", "dns1", "dns2"})
        QTest::newRow(key) << QString(key);
}

void tst_NetworkSettingsPage::otherRecordTakesTheInput()
{
    QFETCH(QString, key);
    VorlynDevice device = table->device(1);
    page->setDevice(device);
    type();
    device.setValue(key, "x");
    page->setDevice(device);
    QCOMPARE(edit("ipEdit")->text(), device.ip());
    QCOMPARE(edit("dns2Edit")->text(), device.dns2());
    QCOMPARE(mode()->currentIndex(), 1);
}

// Also when the form kept what was typed.
void tst_NetworkSettingsPage::writesTheNewestRecord()
{
    VorlynDevice device = table->device(1);
    page->setDevice(device);
    edit("ipEdit")->setText("10.0.0.5");
    edit("netmaskEdit")->setText("255.0.0.0");
    device.setName("another");
    page->setDevice(device);
    click("setButton", 1);
    QCOMPARE(table->device(1).ip(), QString("10.0.0.5"));
    QCOMPARE(table->device(1).name(), QString("another"));
}

// When the table has the outcome, and also in a form that is made anew.
void tst_NetworkSettingsPage::tellsOfItsButtons()
{
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    page->setDevice(table->device(1));
    edit("ipEdit")->setText("10.0.0.5");
    edit("netmaskEdit")->setText("255.0.0.0");
    QString atTheSignal;
    connect(page.data(), &NetworkSettingsPage::written, this,
        [&] { atTheSignal = table->device(1).ip(); });
    const QSignalSpy written(page.data(), &NetworkSettingsPage::written);
    click("setButton", 1);
    QCOMPARE(written.size(), 1);
    QCOMPARE(atTheSignal, QString("10.0.0.5"));
    click("setAllButton", 0); // none is ticked
    QCOMPARE(written.size(), 2);
}

void tst_NetworkSettingsPage::languageKeepsTheInput()
{
    page->setDevice(table->device(1));
    type();
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    QVERIFY(isTyped());
    page->setDevice(table->device(1));
    QVERIFY(isTyped());
    mode()->setCurrentIndex(1);
    QVERIFY(edit("ipEdit")->isEnabled());
}

QTEST_MAIN(tst_NetworkSettingsPage)
#include "tst_NetworkSettingsPage.moc"
