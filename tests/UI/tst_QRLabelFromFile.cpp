#include "CameraBench.h"
#include "Devices.h"
#include "FileChoice.h"
#include "ModalDriver.h"
#include "PrintedPage.h"
#include "SettingsFile.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynDeviceSettingsDialog.h"
#include "VorlynDevicesWidget.h"
#include "ZRLocalize.h"

#include <QFileDialog>
#include <QPushButton>
#include <QtTest>

// The way of an id from its file through the camera to the label.
class tst_QRLabelFromFile : public QObject
{
    Q_OBJECT

private slots:
    void idOfTheFileIsOnTheLabel();
};

void tst_QRLabelFromFile::idOfTheFileIsOnTheLabel()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("en"));
    CameraBench bench;
    QVERIFY(bench.isReady());
    const SettingsFile settings;
    settings.write({{"printer name", "LABEL-300"}, {"label width", 40.0}, {"label height", 30.0}});

    VorlynDevicesWidget table(nullptr);
    table.setDevices(makeDevices({"02:00:00:00:00:01"}));
    VorlynDeviceMPToolWidget panel(nullptr);
    panel.setDevicesWidget(&table);
    panel.setDevice(table.device(0));
    panel.resize(1280, 800);
    panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    const auto click = [&panel](const char *name) {
        QTest::mouseClick(panel.findChild<QPushButton *>(name), Qt::LeftButton);
    };

    const QTemporaryDir folder;
    QFile file(folder.filePath("id.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("key=1\r\nDID = ABC123");
    file.close();
    {
        ModalDriver<QFileDialog> choice(chooses(file.fileName()));
        QJsonObject request;
        ModalDriver<VorlynDeviceP2PSettingsDialog> camera(
            [&](VorlynDeviceP2PSettingsDialog &) { request = bench.answerNext("success"); });
        click("p2pIdSettingButton");
        QCOMPARE(request["p2pid"].toString(), QString("key=1\nDID = ABC123"));
    }
    click("qrCodeButton");
    const QStringList jobs = printJobs();
    QCOMPARE(jobs.size(), 1);
    // 79 of the page's 151 by 113 pixels, in 25 modules.
    const PrintedPage page(jobs.first());
    QCOMPARE(page.read(QRectF(36, 17, 79, 79), 79 / 25.0), QString("ABC123"));
    settings.remove();
}

QTEST_MAIN(tst_QRLabelFromFile)

#include "tst_QRLabelFromFile.moc"
