#include "CameraBench.h"
#include "Devices.h"
#include "FileChoice.h"
#include "ModalDriver.h"
#include "Painting.h"
#include "UploadSink.h"
#include "VorlynDeviceIPInfoDialog.h"
#include "VorlynDeviceIPToolWidget.h"
#include "VorlynDeviceSettingsDialog.h"
#include "VorlynDevicesWidget.h"
#include "ZRAlertDialog.h"
#include "ZRLabel.h"

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <memory>

class tst_VorlynDeviceIPToolWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void texts_data();
    void texts();
    void layout_data();
    void layout();
    void look();
    void fields_data();
    void fields();
    void emptyDeviceDisables();
    void emptyNameGivesAToast();
    void setsTheName_data();
    void setsTheName();
    void opensTheAddressForm();
    void upgrades_data();
    void upgrades();
    void upgradeIsNotChosen();
    void restores();
    void restoreIsNotConfirmed();

private:
    QString textOf(const char *name) const
    {
        return panel->findChild<QWidget *>(name)->property("text").toString();
    }
    QRect placeOf(const char *name) const { return panel->findChild<QWidget *>(name)->geometry(); }
    ZRLabel &version() const
    {
        return dynamic_cast<ZRLabel &>(*panel->findChild<QWidget *>("versionValueLabel"));
    }
    void click(const char *name) { panel->findChild<QPushButton *>(name)->click(); }
    void setName(const QString &name) { panel->findChild<QLineEdit *>("nameEdit")->setText(name); }

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<VorlynDeviceIPToolWidget> panel;
};

void tst_VorlynDeviceIPToolWidget::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

void tst_VorlynDeviceIPToolWidget::init()
{
    ZRLocalize::loadLanguage("en");
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    table->setDevices(makeDevices({"a", "b"}));
    panel = std::make_unique<VorlynDeviceIPToolWidget>(nullptr);
    panel->setDevicesWidget(table.get());
    panel->setDevice(table->device(1));
    panel->resize(800, 400);
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
}

void tst_VorlynDeviceIPToolWidget::cleanup()
{
    panel.reset();
    table.reset();
}

void tst_VorlynDeviceIPToolWidget::texts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("key");
    const char *const rows[][2] = {{"titleLabel", "Device Settings"}, {"nameLabel", "Device Name"},
        {"nameSetButton", "Set"}, {"ipLabel", "IP Address"}, {"ipSetButton", "Set"},
        {"versionLabel", "Firmware Version"}, {"upgradeButton", "Upgrade Firmware"},
        {"restoreButton", "Restore"}};
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString(row[0]) << QString(row[1]);
}

void tst_VorlynDeviceIPToolWidget::texts()
{
    QFETCH(QString, name);
    QFETCH(QString, key);
    const QByteArray widget = name.toLatin1();
    const QString english = ZRLocalize::translate(key);
    QCOMPARE(textOf(widget), english);
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    QVERIFY(ZRLocalize::translate(key) != english);
    QCOMPARE(textOf(widget), ZRLocalize::translate(key));
    const VorlynDeviceIPToolWidget fresh(nullptr);
    QCOMPARE(fresh.findChild<QWidget *>(name)->property("text").toString(), textOf(widget));
}

void tst_VorlynDeviceIPToolWidget::layout_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "cn"}) {
        for (const QSize &size : {QSize(800, 400), QSize(1500, 300)})
            QTest::addRow("%d x %d %s", size.width(), size.height(), language)
                << size << QString(language);
    }
}

void tst_VorlynDeviceIPToolWidget::layout()
{
    QFETCH(QSize, size);
    QFETCH(QString, language);
    panel->resize(size);
    QVERIFY(ZRLocalize::switchLanguage(language));
    const int titleWidth = panel->findChild<QLabel *>("titleLabel")->sizeHint().width();
    const struct {
        const char *name;
        QRect place;
    } rows[] = {
        {"titleLabel", {10, 10, titleWidth, 30}},
        {"nameLabel", {10, 49, 120, 30}},
        {"nameEdit", {139, 52, 150, 24}},
        {"nameSetButton", {298, 52, 130, 24}},
        {"ipLabel", {10, 88, 120, 30}},
        {"ipValueLabel", {139, 88, 150, 30}},
        {"ipSetButton", {298, 91, 130, 24}},
        {"versionLabel", {10, 127, 120, 30}},
        {"versionValueLabel", {139, 127, 150, 30}},
        {"upgradeButton", {298, 130, 130, 24}},
        {"restoreButton", {298, 166, 130, 24}},
    };
    for (const auto &row : rows)
        QVERIFY2(placeOf(row.name) == row.place, row.name);
}

void tst_VorlynDeviceIPToolWidget::look()
{
    VorlynDevice device = table->device(1);
    device.setValue("appVersion", "1.2.3.4");
    panel->setDevice(device);
    const QRect ink = paintedArea(painted(version())); // at the left, in the middle
    QVERIFY2(ink.left() >= 0 && ink.left() < 5, qPrintable(QString::number(ink.left())));
    QVERIFY(ink.right() < version().width() / 2);
    QVERIFY(qAbs(ink.center().y() - version().height() / 2) <= 3);

    QCOMPARE(version().cursor().shape(), Qt::PointingHandCursor);
    const QString before = version().text();
    QTest::mouseClick(&version(), Qt::LeftButton);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(version().text(), before);
}

void tst_VorlynDeviceIPToolWidget::fields_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("appVersion");
    QTest::addColumn<QString>("ipText");
    QTest::addColumn<QString>("versionText");
    QTest::newRow("all") << "DHCP"
                         << "1.2.3.4"
                         << "10.77.0.11(DHCP)"
                         << "1.2.3";
    QTest::newRow("no dot") << "static"
                            << "7"
                            << "10.77.0.11(static)"
                            << "7";
    QTest::newRow("nothing") << ""
                             << ""
                             << "10.77.0.11()"
                             << "";
}

void tst_VorlynDeviceIPToolWidget::fields()
{
    QFETCH(QString, mode);
    QFETCH(QString, appVersion);
    VorlynDevice device = table->device(1);
    device.setIpMode(mode);
    device.setName("nursery");
    device.setValue("appVersion", appVersion);
    panel->setDevice(device);
    QVERIFY(panel->isEnabled());
    QCOMPARE(panel->device().mac(), QString("b"));
    QCOMPARE(textOf("nameEdit"), QString("nursery"));
    QTEST(textOf("ipValueLabel"), "ipText");
    QTEST(version().text(), "versionText");
}

void tst_VorlynDeviceIPToolWidget::emptyDeviceDisables()
{
    VorlynDevice device; // no MAC, whatever else it has
    device.setIp("10.0.0.1");
    device.setIpMode("DHCP");
    panel->setDevice(device);
    QVERIFY(!panel->isEnabled());
    for (const char *name :
        {"nameEdit", "nameSetButton", "ipSetButton", "upgradeButton", "restoreButton"})
        QVERIFY(!panel->findChild<QWidget *>(name)->isEnabled());
    QCOMPARE(textOf("nameEdit"), QString());
    QCOMPARE(textOf("ipValueLabel"), QString());
    QCOMPARE(version().text(), QString());

    panel->setDevice(table->device(0));
    QVERIFY(panel->isEnabled());
    QVERIFY(panel->findChild<QWidget *>("restoreButton")->isEnabled());
}

void tst_VorlynDeviceIPToolWidget::emptyNameGivesAToast()
{
    setName("");
    click("nameSetButton");
    QWidget *toast = panel->findChild<QWidget *>("toast");
    QVERIFY(toast);
    QCOMPARE(dynamic_cast<ZRLabel &>(*toast).text(), ZRLocalize::translate("Please Input Name"));
    QCOMPARE(toast->pos(),
        QPoint((panel->width() - toast->width()) / 2, panel->height() - 5 - toast->height()));
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceIPToolWidget::setsTheName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "door";
    QTest::newRow("spaces go as they stand") << "   ";
    QTest::newRow("Chinese") << QString::fromUtf8("\xE9\x97\xA8");
}

void tst_VorlynDeviceIPToolWidget::setsTheName()
{
    QFETCH(QString, name);
    QJsonObject request;
    ModalDriver<VorlynDeviceNameSettingsDialog> driver(
        [&](VorlynDeviceNameSettingsDialog &) { request = bench->answerNext("success"); });
    setName(name);
    click("nameSetButton");
    QCOMPARE(request["method"].toString(), QString("SetName"));
    QCOMPARE(request["name"].toString(), name);
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(table->device(1).name(), name);
    QCOMPARE(panel->device().name(), QString()); // its own copy waits for the next selection
    QCOMPARE(textOf("nameEdit"), name);
}

void tst_VorlynDeviceIPToolWidget::opensTheAddressForm()
{
    QString shown;
    QJsonObject request;
    ModalDriver<VorlynDeviceIPInfoDialog> form([&](VorlynDeviceIPInfoDialog &dialog) {
        shown = dialog.findChild<QLineEdit *>("ipEdit")->text();
        dialog.findChild<QLineEdit *>("ipEdit")->setText("10.77.0.99");
        dialog.findChild<QLineEdit *>("netmaskEdit")->setText("255.255.255.0");
        ModalDriver<VorlynDeviceSettingsDialog> batch(
            [&](VorlynDeviceSettingsDialog &) { request = bench->answerNext("success"); });
        dialog.findChild<QPushButton *>("setButton")->click();
    });
    click("ipSetButton");
    QCOMPARE(shown, QString("10.77.0.11"));
    QCOMPARE(request["ip"].toString(), QString("10.77.0.99"));
    QCOMPARE(table->device(1).ip(), QString("10.77.0.99"));
    QCOMPARE(textOf("ipValueLabel"), QString("10.77.0.11()")); // until another row is chosen
}

void tst_VorlynDeviceIPToolWidget::upgrades_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "image.bin";
    QTest::newRow("Chinese") << QString::fromUtf8("固件 2.5.1.bin");
}

void tst_VorlynDeviceIPToolWidget::upgrades()
{
    QFETCH(QString, name);
    UploadSink sink;
    VorlynDevice device = table->device(1);
    device.setIp("127.0.0.1");
    device.setValue("httpport", QString::number(sink.serverPort()));
    panel->setDevice(device);
    QTemporaryDir folder;
    QFile file(folder.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("firmware");
    file.close();

    ModalDriver<QFileDialog> files([&](QFileDialog &dialog) {
        QCOMPARE(dialog.fileMode(), QFileDialog::ExistingFile);
        chooses(file.fileName())(dialog);
    });
    click("upgradeButton");
    QCOMPARE(sink.uploads.size(), 1);
    QVERIFY(sink.uploads[0].startsWith("POST /update.cgi"));
    QVERIFY(sink.uploads[0].contains("filename=\"" + name.toUtf8() + '"'));
    QVERIFY(sink.uploads[0].contains("firmware"));
}

void tst_VorlynDeviceIPToolWidget::upgradeIsNotChosen()
{
    UploadSink sink;
    VorlynDevice device = table->device(1);
    device.setIp("127.0.0.1");
    device.setValue("httpport", QString::number(sink.serverPort()));
    panel->setDevice(device);
    ModalDriver<QFileDialog> files([](QFileDialog &dialog) { dialog.reject(); });
    click("upgradeButton");
    QCOMPARE(sink.uploads.size(), 0);
}

void tst_VorlynDeviceIPToolWidget::restores()
{
    QJsonObject request;
    QString question;
    ModalDriver<ZRAlertDialog> alert([&](ZRAlertDialog &dialog) {
        question = dialog.findChild<QLabel *>("messageLabel")->text();
        dialog.accept();
    });
    ModalDriver<VorlynDeviceRestoreSettingsDialog> driver(
        [&](VorlynDeviceRestoreSettingsDialog &) { request = bench->answerNext("success"); });
    click("restoreButton");
    QCOMPARE(question, ZRLocalize::translate("Restore Device"));
    QCOMPARE(request["method"].toString(), QString("ResetDefault"));
    QCOMPARE(request["keepnetwork"], QJsonValue("0"));
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
}

void tst_VorlynDeviceIPToolWidget::restoreIsNotConfirmed()
{
    ModalDriver<ZRAlertDialog> alert([](ZRAlertDialog &dialog) { dialog.reject(); });
    click("restoreButton");
    QVERIFY(bench->isQuiet());
}

QTEST_MAIN(tst_VorlynDeviceIPToolWidget)
#include "tst_VorlynDeviceIPToolWidget.moc"
