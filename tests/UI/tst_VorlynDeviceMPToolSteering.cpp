#include "CameraBench.h"
#include "Devices.h"
#include "OffThread.h"
#include "TestLog.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynSDK.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>

namespace {
struct Panel : VorlynDeviceMPToolWidget {
    Panel() : VorlynDeviceMPToolWidget(nullptr) { }
    using VorlynDeviceMPToolWidget::logEdit;
};
}

// How the panel turns the camera on the bench.
class tst_VorlynDeviceMPToolSteering : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup() { panel.reset(); }
    void sends_data();
    void sends();
    void sendsWithoutMac();
    void waitsForAReply();
    void padSteers();
    void stopGoesToTheCameraThatTurns_data();
    void stopGoesToTheCameraThatTurns();
    void stopsWhenThePanelGoes();
    void sendsNothingWithoutSdk(); // the last one: it ends the SDK

private:
    QWidget *button(const char *name) const { return panel->findChild<QWidget *>(name); }
    // What the camera is told meanwhile, each answered: "cam0 left".
    template <class Action> QStringList told(int count, Action action)
    {
        QStringList list;
        const OffThread camera([&] {
            for (int i = 0; i < count; ++i) {
                const QJsonObject request = bench->answerNext(answer);
                list << CameraBench::targets(request).join('+') + ' '
                        + request["command"].toString();
            }
        });
        action();
        (void)QTest::qWaitFor([&] { return camera.isDone(); }, 20000);
        return list;
    }

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<Panel> panel;
    QVector<VorlynDevice> devices = makeDevices({"a", "b"});
    QString answer = "success";
};

void tst_VorlynDeviceMPToolSteering::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    ZRLocalize::loadLanguage("en");
}

void tst_VorlynDeviceMPToolSteering::init()
{
    answer = "success";
    panel = std::make_unique<Panel>();
    panel->setDevice(devices[0]);
    panel->resize(1280, 400);
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
}

void tst_VorlynDeviceMPToolSteering::sends_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("result");
    for (const char *word : {"left", "any word at all", ""}) {
        for (const char *result : {"success", "failure"})
            QTest::addRow("%s: %s", word, result) << QString(word) << QString(result);
    }
}

// And tells nobody, whatever the answer.
void tst_VorlynDeviceMPToolSteering::sends()
{
    QFETCH(QString, word);
    QFETCH(QString, result);
    QJsonObject request;
    {
        const OffThread camera([&] { request = bench->answerNext(result); });
        panel->setPTZ(word);
    }
    QCOMPARE(request["method"].toString(), QString("SetPTZ"));
    QCOMPARE(request["command"], QJsonValue(word));
    QCOMPARE(CameraBench::targets(request), QStringList("cam0"));
    QVERIFY(bench->isQuiet());
    QCOMPARE(linesOf(*panel->logEdit), QStringList());
    QVERIFY(!panel->findChild<QWidget *>("toast"));
}

// There is no gate.
void tst_VorlynDeviceMPToolSteering::sendsWithoutMac()
{
    VorlynDevice nobody = devices[0];
    nobody.setMac("");
    panel->setDevice(nobody);
    QVERIFY(!panel->device().isValid());
    QCOMPARE(told(1, [this] { panel->setPTZ("left"); }), QStringList("cam0 left"));
    panel->setDevice(VorlynDevice());
    QCOMPARE(told(1, [this] { panel->setPTZ("left"); }), QStringList(" left"));
    QCOMPARE(linesOf(*panel->logEdit), QStringList());
}

// Nobody answers: the call waits its time out.
void tst_VorlynDeviceMPToolSteering::waitsForAReply()
{
    QElapsedTimer clock;
    clock.start();
    panel->setPTZ("left");
    QVERIFY2(clock.elapsed() > 2500, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(bench->request()["command"], QJsonValue("left"));
    QCOMPARE(linesOf(*panel->logEdit), QStringList());
}

void tst_VorlynDeviceMPToolSteering::padSteers()
{
    const auto click = [this] { QTest::mouseClick(button("leftButton"), Qt::LeftButton); };
    QCOMPARE(told(2, click), QStringList({"cam0 left", "cam0 stop"}));
}

void tst_VorlynDeviceMPToolSteering::stopGoesToTheCameraThatTurns_data()
{
    QTest::addColumn<bool>("sent");
    QTest::newRow("held") << true;
    QTest::newRow("held, and not yet sent") << false;
}

// Also when the next one comes to the bench before it.
void tst_VorlynDeviceMPToolSteering::stopGoesToTheCameraThatTurns()
{
    QFETCH(bool, sent);
    const auto press = [this] { QTest::mousePress(button("leftButton"), Qt::LeftButton); };
    const auto change = [this] { panel->setDevice(devices[1]); };
    QStringList list;
    if (sent) {
        list = told(1, press);
        list += told(1, change);
    } else {
        press();
        list = told(2, change);
    }
    QCOMPARE(list, QStringList({"cam0 left", "cam0 stop"}));
    QTest::mouseRelease(button("leftButton"), Qt::LeftButton);
    QCoreApplication::processEvents();
    QVERIFY(bench->isQuiet());

    // The same record again leaves a held arrow alone.
    QCOMPARE(told(1, press), QStringList("cam1 left"));
    panel->setDevice(devices[1]);
    QCoreApplication::processEvents();
    QVERIFY(bench->isQuiet());
    const auto release = [this] { QTest::mouseRelease(button("leftButton"), Qt::LeftButton); };
    QCOMPARE(told(1, release), QStringList("cam1 stop"));
}

void tst_VorlynDeviceMPToolSteering::stopsWhenThePanelGoes()
{
    const auto press = [this] { QTest::mousePress(button("leftButton"), Qt::LeftButton); };
    QCOMPARE(told(1, press), QStringList("cam0 left"));
    QCOMPARE(told(1, [this] { panel.reset(); }), QStringList("cam0 stop"));
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolSteering::sendsNothingWithoutSdk()
{
    bench.reset();
    QVERIFY(!VorlynSDK::instance());
    panel->setPTZ("up");
}

QTEST_MAIN(tst_VorlynDeviceMPToolSteering)
#include "tst_VorlynDeviceMPToolSteering.moc"
