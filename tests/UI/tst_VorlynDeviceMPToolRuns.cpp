#include "CameraBench.h"
#include "Devices.h"
#include "OffThread.h"
#include "OperatorAnswers.h"
#include "TestLog.h"
#include "VorlynDeviceMPToolThread.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynDeviceWiFiInfoDialog.h"
#include "VorlynDevicesWidget.h"
#include "WiFiInfoWidget.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {
struct Panel : VorlynDeviceMPToolWidget {
    Panel() : VorlynDeviceMPToolWidget(nullptr) { }
    using VorlynDeviceMPToolWidget::logEdit;
    using VorlynDeviceMPToolWidget::testThread;
    using VorlynDeviceMPToolWidget::wifiInfoWidget;
};
}

// How the panel starts a run, what rests meanwhile, and how a run ends with it. What a run does is
// told by tst_AutomaticRun.
class tst_VorlynDeviceMPToolRuns : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void startsByKey();
    void everythingRestsDuringARun();
    void tableIsThatOfTheStart();
    void disabledTableStaysDisabled();
    void receiverOfTheStartStartsNothing();
    void questionStartsNothing();
    void heldArrowStopsFirst();
    void endsWithARun_data();
    void endsWithARun();

private:
    QWidget *control(const char *name) const { return panel->findChild<QWidget *>(name); }
    void click(const char *name) { static_cast<QPushButton *>(control(name))->click(); }
    // Those that an operator could change something with.
    QWidgetList controls() const
    {
        QWidgetList list = {control("ptzPad"), control("macEdit"), control("nameEdit")};
        for (QPushButton *button : panel->findChildren<QPushButton *>())
            list.append(button);
        return list;
    }
    void verifyControls(bool enabled) const
    {
        for (const QWidget *control : controls())
            QVERIFY2(control->isEnabled() == enabled, qPrintable(control->objectName()));
        QVERIFY(panel->logEdit->isEnabled());
        QVERIFY(panel->wifiInfoWidget->isEnabled());
    }
    void waitForRest() const
    {
        QTRY_VERIFY_WITH_TIMEOUT(control("selectButton")->isEnabled(), 30000);
        QVERIFY(!panel->testThread->isRunning());
    }
    // The run waits for the size of the card, as for what comes before.
    void answerSdCard()
    {
        QTRY_COMPARE(linesOf(*panel->logEdit).size(), 4); // the version's line
        QCOMPARE(bench->answerNext("success", {{"totalsize", 1024}, {"freesize", 0}})["method"],
            QJsonValue("GetSD"));
    }
    void drain()
    {
        while (!bench->isQuiet()) { }
    }

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<Panel> panel;
};

void tst_VorlynDeviceMPToolRuns::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

// The second camera has every function.
void tst_VorlynDeviceMPToolRuns::init()
{
    ZRLocalize::loadLanguage("en");
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    QVector<VorlynDevice> devices = makeDevices({"a", "b"});
    devices[1].setFunctionId("PAC,WIFI");
    table->setDevices(devices);
    panel = std::make_unique<Panel>();
    panel->setDevicesWidget(table.get());
    panel->resize(1280, 400);
    panel->show();
    panel->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(panel.get()));
}

void tst_VorlynDeviceMPToolRuns::cleanup()
{
    panel.reset();
    table.reset();
}

void tst_VorlynDeviceMPToolRuns::startsByKey()
{
    OperatorAnswers answers({Answer::Pass});
    QSignalSpy media(panel.get(), &VorlynDeviceMPToolWidget::requestStartMedia);
    QTest::keyClick(panel.get(), Qt::Key_F5); // no device yet
    QCOMPARE(media.count(), 0);
    QVERIFY(!panel->testThread);
    panel->setDevice(table->device(0));
    QVERIFY(ZRLocalize::switchLanguage("cn")); // new texts don't take the key away
    QTest::keyClick(panel.get(), Qt::Key_F5);
    QTRY_COMPARE(media.count(), 1);

    QTest::keyClick(panel.get(), Qt::Key_F5); // while that run is alive
    answers.onDialog = [](QWidget &dialog) { QTest::keyClick(&dialog, Qt::Key_F5); };
    answerSdCard();
    waitForRest();
    QCOMPARE(answers.questions().size(), 3);
    QCOMPARE(media.count(), 1);
    drain();
}

void tst_VorlynDeviceMPToolRuns::everythingRestsDuringARun()
{
    panel->setDevice(table->device(1));
    verifyControls(true);
    OperatorAnswers answers({Answer::Pass});
    int dialogs = 0;
    const auto verifyResting = [this] {
        verifyControls(false);
        QVERIFY(!table->isEnabled());
    };
    answers.onDialog = [&](QWidget &dialog) {
        verifyResting();
        if (dynamic_cast<VorlynDeviceWiFiInfoDialog *>(&dialog))
            bench->answerNext("success");
        ++dialogs;
    };
    click("startTestButton");
    verifyResting();
    panel->setDevice(table->device(1)); // which frees nothing
    verifyResting();

    answerSdCard();
    waitForRest();
    QCOMPARE(dialogs, 6); // the scan, and five questions
    verifyControls(true);
    QVERIFY(table->isEnabled());
    drain();
}

// Whatever table comes during the run.
void tst_VorlynDeviceMPToolRuns::tableIsThatOfTheStart()
{
    VorlynDevicesWidget other(nullptr);
    panel->onClickStartTestButton(); // without a device it waits for this thread only
    QVERIFY(!table->isEnabled());
    panel->setDevicesWidget(&other);
    QVERIFY(other.isEnabled());
    QVERIFY(!table->isEnabled());
    waitForRest();
    QVERIFY(other.isEnabled());
    QVERIFY(table->isEnabled());

    panel->onClickStartTestButton();
    QVERIFY(!other.isEnabled());
    QVERIFY(table->isEnabled());
    panel.reset();
    QVERIFY(other.isEnabled());
    QVERIFY(table->isEnabled());
}

// It is somebody else's to enable.
void tst_VorlynDeviceMPToolRuns::disabledTableStaysDisabled()
{
    table->setEnabled(false);
    panel->setDevice(table->device(0));
    panel->setDevicesWidget(table.get());
    panel->setDevice(VorlynDevice());
    QVERIFY(!table->isEnabled());
    panel->onClickStartTestButton();
    waitForRest();
    QVERIFY(!table->isEnabled());
}

void tst_VorlynDeviceMPToolRuns::receiverOfTheStartStartsNothing()
{
    QSignalSpy media(panel.get(), &VorlynDeviceMPToolWidget::requestStartMedia);
    connect(panel.get(), &VorlynDeviceMPToolWidget::requestStartMedia, [this] {
        QTest::qWait(CameraPeer::noTimeLost); // long enough for the panel to look for a run's end
        verifyControls(false);
        QVERIFY(!table->isEnabled());
        QTest::keyClick(panel.get(), Qt::Key_F5);
        click("startTestButton");
        panel->onClickStartTestButton();
    });
    panel->setDevice(table->device(0));
    const OperatorAnswers answers({Answer::Pass});
    click("startTestButton");
    QCOMPARE(media.count(), 1);
    verifyControls(false);
    answerSdCard();
    waitForRest();
    QCOMPARE(media.count(), 1);
    QCOMPARE(answers.questions().size(), 3);
    drain();
}

// Nor does the scan. The run that asks could not be led to its end from here.
void tst_VorlynDeviceMPToolRuns::questionStartsNothing()
{
    QSignalSpy media(panel.get(), &VorlynDeviceMPToolWidget::requestStartMedia);
    panel->setDevice(table->device(1));
    OperatorAnswers answers({Answer::Pass});
    answers.onDialog = [this](QWidget &dialog) {
        panel->onClickStartTestButton();
        if (dynamic_cast<VorlynDeviceWiFiInfoDialog *>(&dialog))
            bench->answerNext("success");
    };
    click("startTestButton");
    const VorlynDeviceMPToolThread *run = panel->testThread;
    answerSdCard();
    waitForRest();
    QCOMPARE(media.count(), 1);
    QCOMPARE(panel->testThread, run);
    QCOMPARE(answers.questions().size(), 6);
    drain();
}

// A word to the camera waits for its reply, and must not do so beside the run.
void tst_VorlynDeviceMPToolRuns::heldArrowStopsFirst()
{
    panel->setDevice(table->device(0));
    QStringList requests;
    const auto answer = [&] {
        const QJsonObject request = bench->answerNext("success", {{"totalsize", 1024}});
        requests << request["method"].toString() + ' ' + request["command"].toString();
    };
    {
        const OffThread camera(answer);
        QTest::mousePress(control("leftButton"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(camera.isDone(), 20000);
    }
    const OperatorAnswers answers({Answer::Pass});
    {
        const OffThread camera(answer);
        QStringList before;
        connect(panel.get(), &VorlynDeviceMPToolWidget::requestStartMedia, [&] {
            QVERIFY(camera.isDoneWithoutEvents());
            before = requests;
        });
        QTest::keyClick(panel.get(), Qt::Key_F5);
        QTRY_COMPARE(before, QStringList({"SetPTZ left", "SetPTZ stop"}));
    }
    {
        const OffThread camera(answer);
        QTRY_VERIFY_WITH_TIMEOUT(camera.isDone(), 20000);
    }
    QCOMPARE(requests.value(2), QString("GetSD "));
    waitForRest();
    QCOMPARE(linesOf(*panel->logEdit).value(4),
        TestLog::result("Auto Test SDCard Result", true, "1 / 1(GB)"));
    for (const char *method : {"testMicrophone", "SetIRcut", "SetIRcut"})
        QCOMPARE(bench->request()["method"].toString(), QString(method));
    QVERIFY(bench->isQuiet()); // no second "stop"
}

void tst_VorlynDeviceMPToolRuns::endsWithARun_data()
{
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("answered");
    QTest::newRow("that waits for the GUI thread, or will") << false << false;
    QTest::newRow("that waits for a reply") << true << false;
    QTest::newRow("that has its reply") << true << true;
}

// In spite of the steps yet to come that the GUI thread will not serve.
void tst_VorlynDeviceMPToolRuns::endsWithARun()
{
    QFETCH(bool, asked);
    QFETCH(bool, answered);
    panel->setDevice(table->device(1));
    const OperatorAnswers answers({Answer::Pass});
    click("startTestButton");
    if (answered) {
        answerSdCard();
    } else if (asked) {
        QTRY_COMPARE(linesOf(*panel->logEdit).size(), 4);
        QCOMPARE(bench->request()["method"], QJsonValue("GetSD"));
    }
    QElapsedTimer clock;
    clock.start();
    panel.reset();
    QVERIFY2(clock.elapsed() < 2500, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(table->isEnabled());
    QCoreApplication::processEvents(); // nothing is left that would reach for it
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(answers.questions(), QStringList());
    drain();
}

QTEST_MAIN(tst_VorlynDeviceMPToolRuns)
#include "tst_VorlynDeviceMPToolRuns.moc"
