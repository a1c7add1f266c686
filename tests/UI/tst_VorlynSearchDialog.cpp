#include "CameraBench.h"
#include "DialogRun.h"
#include "ModalDriver.h"
#include "VorlynSDK.h"
#include "VorlynSearchDialog.h"
#include "ZRLocalize.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>

#include <memory>

class tst_VorlynSearchDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { bench.reset(); }
    void look();
    void messageIsTranslated();
    void sortsByMac();
    void lastsItsSeconds_data();
    void lastsItsSeconds();
    void emptiesTheListFirst();
    void escCancels_data();
    void escCancels();
    void closeCancels();
    void destructorCancels();
    void withoutSdk();

private:
    std::unique_ptr<CameraBench> bench;
};

void tst_VorlynSearchDialog::init()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
}

static QStringList macs(const VorlynSearchDialog &dialog)
{
    QStringList list;
    for (const VorlynDevice &device : dialog.devices())
        list << device.mac();
    return list;
}

void tst_VorlynSearchDialog::look()
{
    VorlynSearchDialog dialog(nullptr);
    QCOMPARE(dialog.findChild<QLabel *>("messageLabel")->text(), QString("Searching devices"));
    QCOMPARE(dialog.findChild<QProgressBar *>("progressBar")->maximum(), 0);
    QVERIFY(dialog.devices().isEmpty());
}

void tst_VorlynSearchDialog::messageIsTranslated()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    const QString chinese = ZRLocalize::translate("Searching devices");
    const VorlynSearchDialog dialog(nullptr);
    ZRLocalize::loadLanguage("none");
    QVERIFY(chinese != "Searching devices");
    QCOMPARE(dialog.findChild<QLabel *>("messageLabel")->text(), chinese);
}

void tst_VorlynSearchDialog::sortsByMac()
{
    VorlynSearchDialog dialog(nullptr);
    dialog.setSearchSeconds(2);
    dialog.start();
    dialog.show();
    const QJsonObject request = bench->request();
    QCOMPARE(request["method"].toString(), QString("search"));
    for (const char *mac : {"bb", "aa", "Cc", "", "bb", "10"})
        QVERIFY(bench->answer(request, "success", {{"mac", mac}}));
    finish(dialog);
    QCOMPARE(macs(dialog), QStringList({"10", "Cc", "aa", "bb"})); // capitals come first
}

void tst_VorlynSearchDialog::lastsItsSeconds_data()
{
    QTest::addColumn<int>("seconds");
    QTest::newRow("default") << 3;
    QTest::newRow("shorter") << 1;
}

void tst_VorlynSearchDialog::lastsItsSeconds()
{
    QFETCH(int, seconds);
    VorlynSearchDialog dialog(nullptr);
    if (seconds != 3)
        dialog.setSearchSeconds(seconds);
    QElapsedTimer clock;
    clock.start();
    dialog.start();
    dialog.show();
    finish(dialog);
    QVERIFY(clock.elapsed() >= seconds * 1000 - 50);
    QVERIFY(dialog.devices().isEmpty()); // accepted all the same
}

void tst_VorlynSearchDialog::emptiesTheListFirst()
{
    VorlynSearchDialog dialog(nullptr);
    dialog.setSearchSeconds(1);
    for (const char *mac : {"first", "second"}) {
        dialog.start();
        dialog.show();
        bench->answer(bench->request(), "success", {{"mac", mac}});
        finish(dialog);
        QCOMPARE(macs(dialog), QStringList(mac));
    }
}

void tst_VorlynSearchDialog::escCancels_data()
{
    QTest::addColumn<int>("seconds");
    for (int seconds : {60, 0, -1})
        QTest::addRow("%d", seconds) << seconds;
}

void tst_VorlynSearchDialog::escCancels()
{
    QFETCH(int, seconds);
    VorlynSearchDialog dialog(nullptr);
    dialog.setSearchSeconds(seconds);
    QElapsedTimer clock;
    ModalDriver<VorlynSearchDialog> driver([&](VorlynSearchDialog &) {
        QVERIFY(!bench->request().isEmpty());
        QTest::qWait(500);
        QVERIFY(dialog.isVisible()); // still at it
        clock.start();
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    dialog.start();
    QCOMPARE(dialog.exec(), int(QDialog::Rejected)); // the job's own end comes too late
    QVERIFY(clock.elapsed() < 20000);
}

void tst_VorlynSearchDialog::closeCancels()
{
    VorlynSearchDialog dialog(nullptr);
    dialog.setSearchSeconds(60);
    dialog.start();
    dialog.show();
    QVERIFY(!bench->request().isEmpty());
    QSignalSpy finished(&dialog, &QDialog::finished);
    dialog.close();
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), int(QDialog::Rejected));
    QVERIFY(dialog.isStopped());
}

void tst_VorlynSearchDialog::destructorCancels()
{
    QElapsedTimer clock;
    clock.start();
    {
        VorlynSearchDialog dialog(nullptr);
        dialog.setSearchSeconds(0);
        dialog.start();
        QVERIFY(!bench->request().isEmpty());
    }
    QVERIFY(clock.elapsed() < 20000);
}

void tst_VorlynSearchDialog::withoutSdk()
{
    bench.reset();
    VorlynSearchDialog dialog(nullptr);
    dialog.start();
    dialog.show();
    finish(dialog);
    QVERIFY(dialog.devices().isEmpty());
    dialog.cancel();
}

QTEST_MAIN(tst_VorlynSearchDialog)
#include "tst_VorlynSearchDialog.moc"
