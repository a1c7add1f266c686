#include "FirmwareUpgradePage.h"

#include "CVTableWidget.h"
#include "Devices.h"
#include "FileChoice.h"
#include "ModalDriver.h"
#include "OperatorAnswers.h"
#include "UpgradeTable.h"
#include "VorlynDevicesWidget.h"
#include "ZRAlertDialog.h"
#include "ZRLabel.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

class tst_FirmwareUpgradePage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void countsTicks();
    void needsTicks();
    void needsAFile();
    void opensTheDialog_data();
    void opensTheDialog();
    void noUpgradeNoSearch();
    void cancelledChoice();
    void languageKeepsTheFile();

private:
    void tick(int row)
    {
        QTest::mouseClick(
            table->tableWidget()->cellWidget(row, 0)->findChild<QCheckBox *>(), Qt::LeftButton);
    }
    QPushButton *button(const char *name) const { return page->findChild<QPushButton *>(name); }
    QString ticked() const { return page->findChild<QLabel *>("tickedLabel")->text(); }
    void chooseFirmware();

    QTemporaryDir folder;
    QScopedPointer<VorlynDevicesWidget> table;
    QScopedPointer<FirmwareUpgradePage> page;
};

void tst_FirmwareUpgradePage::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QFile file(folder.filePath("2.5.1.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly));
}

void tst_FirmwareUpgradePage::init()
{
    QVERIFY(ZRLocalize::loadLanguage("en"));
    table.reset(new VorlynDevicesWidget(nullptr));
    table->setDevices(makeDevices({"m0", "m1", "m2"}));
    table->resize(400, 300);
    table->show();
    page.reset(new FirmwareUpgradePage(nullptr));
    page->setDevicesWidget(table.data());
    page->resize(900, 300);
    page->show();
}

void tst_FirmwareUpgradePage::cleanup()
{
    page.reset();
    table.reset();
}

void tst_FirmwareUpgradePage::chooseFirmware()
{
    const ModalDriver<QFileDialog> driver(chooses(folder.filePath("2.5.1.bin")));
    QTest::mouseClick(button("selectButton"), Qt::LeftButton);
    QCOMPARE(page->findChild<ZRLabel *>("firmwareLabel")->text(), QString("2.5.1.bin"));
}

void tst_FirmwareUpgradePage::countsTicks()
{
    QCOMPARE(ticked(), QString("Ticked devices: 0"));
    tick(0);
    tick(2);
    QTRY_COMPARE(ticked(), QString("Ticked devices: 2"));
    page->hide();
    tick(2);
    const auto *timer = page->findChild<QTimer *>();
    QVERIFY(!timer->isActive()); // nobody sees it
    QCOMPARE(ticked(), QString("Ticked devices: 2"));
    page->show();
    QVERIFY(timer->isActive());
    QCOMPARE(ticked(), QString("Ticked devices: 1")); // at once
    table->setDevices(makeDevices({"m0"}));
    QTRY_COMPARE(ticked(), QString("Ticked devices: 0"));
}

void tst_FirmwareUpgradePage::needsTicks()
{
    QVERIFY(!button("upgradeButton")->isEnabled());
    tick(1);
    QTRY_VERIFY(button("upgradeButton")->isEnabled());
    tick(1);
    QTRY_VERIFY(!button("upgradeButton")->isEnabled());
}

void tst_FirmwareUpgradePage::needsAFile()
{
    tick(0);
    QTRY_VERIFY(button("upgradeButton")->isEnabled());
    QTest::mouseClick(button("upgradeButton"), Qt::LeftButton);
    const auto *toast = page->findChild<ZRLabel *>("toast");
    QVERIFY(toast);
    QCOMPARE(toast->text(), QString("Please select a firmware file"));
}

void tst_FirmwareUpgradePage::opensTheDialog_data()
{
    QTest::addColumn<bool>("again");
    QTest::newRow("search again") << true;
    QTest::newRow("no search") << false;
}

// The ticked ones are listed. Then a search is offered, as the table knows nothing of an upgrade.
void tst_FirmwareUpgradePage::opensTheDialog()
{
    QFETCH(bool, again);
    chooseFirmware();
    tick(0);
    tick(2);
    QTRY_VERIFY(button("upgradeButton")->isEnabled());
    QSignalSpy requested(page.data(), &FirmwareUpgradePage::searchRequested);
    const ModalDriver<VorlynDeviceUpgradeDialog> dialogDriver(
        [&](VorlynDeviceUpgradeDialog &dialog) {
            const UpgradeTable list(dialog);
            QCOMPARE(list.widget()->rowCount(), 2);
            QCOMPARE(list.text(0, 2), QString("m0"));
            QCOMPARE(list.text(1, 2), QString("m2"));
            dialog.findChild<QPushButton *>("upgradeButton")->click(); // ends, without a network
            QVERIFY(dialog.hasRun());
            QCOMPARE(requested.count(), 0);
            dialog.reject();
        });
    const ModalDriver<ZRAlertDialog> alertDriver([&](ZRAlertDialog &dialog) {
        QCOMPARE(dialog.findChild<QLabel *>("messageLabel")->text(),
            QString("Search again, so that the table shows the new versions?"));
        again ? dialog.accept() : dialog.reject();
    });
    QTest::mouseClick(button("upgradeButton"), Qt::LeftButton);
    QCOMPARE(requested.count(), int(again));
}

void tst_FirmwareUpgradePage::noUpgradeNoSearch()
{
    chooseFirmware();
    tick(0);
    QTRY_VERIFY(button("upgradeButton")->isEnabled());
    QSignalSpy requested(page.data(), &FirmwareUpgradePage::searchRequested);
    const OperatorAnswers answers({Answer::Esc});
    QTest::mouseClick(button("upgradeButton"), Qt::LeftButton);
    QCOMPARE(answers.questions(), QStringList("")); // the upgrade's dialog, which asks nothing
    QCOMPARE(requested.count(), 0);
}

void tst_FirmwareUpgradePage::cancelledChoice()
{
    chooseFirmware();
    const ModalDriver<QFileDialog> driver([](QFileDialog &dialog) { dialog.reject(); });
    QTest::mouseClick(button("selectButton"), Qt::LeftButton);
    QCOMPARE(page->findChild<ZRLabel *>("firmwareLabel")->text(), QString("2.5.1.bin"));
}

void tst_FirmwareUpgradePage::languageKeepsTheFile()
{
    chooseFirmware();
    tick(0);
    QTRY_COMPARE(ticked(), QString("Ticked devices: 1"));
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    const auto label = [this](const char *name) { return page->findChild<QLabel *>(name)->text(); };
    QCOMPARE(label("fileLabel"), QString::fromUtf8("固件文件"));
    QCOMPARE(button("selectButton")->text(), QString::fromUtf8("选择"));
    QCOMPARE(button("upgradeButton")->text(), QString::fromUtf8("升级固件"));
    QVERIFY(label("hintLabel").startsWith(QString::fromUtf8("请在表格中勾选设备。")));
    QCOMPARE(ticked(), QString::fromUtf8("已勾选的设备: 1"));
    QCOMPARE(page->findChild<ZRLabel *>("firmwareLabel")->text(), QString("2.5.1.bin"));
}

QTEST_MAIN(tst_FirmwareUpgradePage)
#include "tst_FirmwareUpgradePage.moc"
