#include "BenchWindow.h"

#include "CVTableWidget.h"
#include "FileChoice.h"
#include "FleetProcess.h"
#include "GraphicsDriver.h"
#include "ModalDriver.h"
#include "SettingsFile.h"
#include "UpgradeTable.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "ZRAlertDialog.h"

#include <QCheckBox>
#include <QFile>
#include <QJsonArray>
#include <QPushButton>
#include <QScopeGuard>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

// An upgrade of the ticked cameras as an operator goes about it in the bench's window.
class tst_BenchUpgrade : public QObject
{
    Q_OBJECT

private slots:
    void fromTicksToNewVersions();
};

void tst_BenchUpgrade::fromTicksToNewVersions()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("en"));
    SettingsFile().write({{"search seconds", 1}, {"network name", "veth-a"}, {"langage", "en"}});
    const QTemporaryDir folder;
    QFile firmware(folder.filePath("2.5.1.bin"));
    QVERIFY(firmware.open(QIODevice::WriteOnly));
    firmware.write(QByteArray(100000, 'f'));
    firmware.close();

    // Late for the window's first search only, whose sockets still open: a poll of the upgrade is
    // too short to wait.
    const QJsonObject late = {{"on", "search"}, {"times", 1}, {"delay-ms", 250}};
    FleetProcess fleet("cam-a", 3, "10.77.0.11");
    fleet.setScenario({{"cameras",
        QJsonArray{QJsonObject{{"camera", "all"},
            {"fields", QJsonObject{{"appVersion", "2.4.0.7"}, {"rtsppath1", ""}}},
            {"rules", QJsonArray{late}}}}}});
    QVERIFY(fleet.start());
    VorlynSDK::createInstance();
    const auto end = qScopeGuard([] {
        keepGraphicsDriver();
        VorlynSDK::destroyInstance();
    });
    BenchWindow window;
    const auto *devices = window.findChild<VorlynDevicesWidget *>("devicesWidget");
    QCOMPARE(devices->tableWidget()->rowCount(), 3);
    const auto versions = [devices] {
        QStringList list;
        for (int row = 0; row < devices->tableWidget()->rowCount(); ++row)
            list << devices->device(row).version();
        return list;
    };
    QCOMPARE(versions(), QStringList({"2.4.0", "2.4.0", "2.4.0"}));

    auto *tabs = window.findChild<QTabWidget *>("tabs");
    const int last = tabs->count() - 1;
    QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, {}, tabs->tabBar()->tabRect(last).center());
    const QWidget *page = tabs->currentWidget();
    for (int row : {0, 2}) {
        QTest::mouseClick(
            devices->tableWidget()->cellWidget(row, 0)->findChild<QCheckBox *>(), Qt::LeftButton);
    }
    auto *upgrade = page->findChild<QPushButton *>("upgradeButton");
    QTRY_VERIFY(upgrade->isEnabled());
    {
        const ModalDriver<QFileDialog> files(chooses(firmware.fileName()));
        QTest::mouseClick(page->findChild<QPushButton *>("selectButton"), Qt::LeftButton);
    }

    const ModalDriver<VorlynDeviceUpgradeDialog> upgrades([](VorlynDeviceUpgradeDialog &dialog) {
        const UpgradeTable table(dialog);
        QCOMPARE(table.widget()->rowCount(), 2);
        QTest::mouseClick(dialog.findChild<QPushButton *>("upgradeButton"), Qt::LeftButton);
        QVERIFY(table.succeeded(0) && table.succeeded(1));
        dialog.reject();
    });
    // The upgrade comes before it.
    const ModalDriver<ZRAlertDialog> again([](ZRAlertDialog &dialog) { dialog.accept(); }, 240000);
    QTest::mouseClick(upgrade, Qt::LeftButton);
    QCOMPARE(versions(), QStringList({"2.5.1", "2.4.0", "2.5.1"}));
    QVERIFY2(fleet.stop(), fleet.errors());
    QVERIFY(fleet.events("unused-rule").isEmpty());
}

QTEST_MAIN(tst_BenchUpgrade)
#include "tst_BenchUpgrade.moc"
