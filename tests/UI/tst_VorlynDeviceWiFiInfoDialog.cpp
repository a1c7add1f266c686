#include "CameraBench.h"
#include "Devices.h"
#include "DialogRun.h"
#include "VorlynDeviceWiFiInfoDialog.h"
#include "ZRLocalize.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

class tst_VorlynDeviceWiFiInfoDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { bench.reset(); }
    void look();
    void messageIsTranslated();
    void readsTheScan();
    void escCancels();
    void destructorCancels();
    void withoutSdk();

private:
    std::unique_ptr<CameraBench> bench;
};

void tst_VorlynDeviceWiFiInfoDialog::init()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
}

void tst_VorlynDeviceWiFiInfoDialog::look()
{
    VorlynDeviceWiFiInfoDialog dialog(nullptr);
    QCOMPARE(dialog.findChild<QLabel *>("messageLabel")->text(), QString("Loading WiFi Info"));
    QCOMPARE(dialog.findChild<QProgressBar *>("progressBar")->maximum(), 0); // busy
    QVERIFY(dialog.wifiInfos().isEmpty());
}

void tst_VorlynDeviceWiFiInfoDialog::messageIsTranslated()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    const QString chinese = ZRLocalize::translate("Loading WiFi Info");
    const VorlynDeviceWiFiInfoDialog dialog(nullptr);
    ZRLocalize::loadLanguage("none");
    QVERIFY(chinese != "Loading WiFi Info");
    QCOMPARE(dialog.findChild<QLabel *>("messageLabel")->text(), chinese);
}

void tst_VorlynDeviceWiFiInfoDialog::readsTheScan()
{
    VorlynDeviceWiFiInfoDialog dialog(nullptr);
    dialog.setDevice(makeDevices({"a", "b"})[1]);
    const QJsonObject home = {{"wifiname", "home"}, {"Signal", -40}};
    const QJsonObject nameless = {{"wifiname", ""}, {"Signal", -50}};
    // A refusal can bring networks too; a second run begins anew.
    for (const char *result : {"success", "failure"}) {
        dialog.start();
        dialog.show();
        const QJsonObject request =
            bench->answerNext(result, {{"WifiList", QJsonArray({home, nameless})}});
        QCOMPARE(request["method"].toString(), QString("WifiScan"));
        QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
        finish(dialog);
        QCOMPARE(dialog.wifiInfos().size(), 1);
        QCOMPARE(dialog.wifiInfos()[0].name, QString("home"));
        QCOMPARE(dialog.wifiInfos()[0].signal, -40);
    }
    dialog.wifiInfos().clear(); // the list itself
    QVERIFY(dialog.wifiInfos().isEmpty());
}

void tst_VorlynDeviceWiFiInfoDialog::escCancels()
{
    VorlynDeviceWiFiInfoDialog dialog(nullptr);
    dialog.start();
    dialog.show();
    QVERIFY(!bench->request().isEmpty());
    QSignalSpy finished(&dialog, &QDialog::finished);
    QElapsedTimer clock;
    clock.start();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(clock.elapsed() < 8000); // the wait is 10 s
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), int(QDialog::Rejected));
    QVERIFY(dialog.isStopped());
    QVERIFY(dialog.wifiInfos().isEmpty());
}

void tst_VorlynDeviceWiFiInfoDialog::destructorCancels()
{
    QElapsedTimer clock;
    clock.start();
    {
        VorlynDeviceWiFiInfoDialog dialog(nullptr);
        dialog.start();
        QVERIFY(!bench->request().isEmpty());
    }
    QVERIFY(clock.elapsed() < 8000);
}

void tst_VorlynDeviceWiFiInfoDialog::withoutSdk()
{
    bench.reset();
    VorlynDeviceWiFiInfoDialog dialog(nullptr);
    dialog.start();
    dialog.show();
    finish(dialog);
    QVERIFY(dialog.wifiInfos().isEmpty());
    dialog.cancel();
}

QTEST_MAIN(tst_VorlynDeviceWiFiInfoDialog)
#include "tst_VorlynDeviceWiFiInfoDialog.moc"
