#include "FleetProcess.h"
#include "LogCatcher.h"
#include "OperatorAnswers.h"
#include "SettingsFile.h"
#include "TestLog.h"
#include "TestNetwork.h"
#include "VorlynDeviceMPToolThread.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "WiFiInfoWidget.h"
#include "ZRLabel.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TestLog;

// Automatic runs on the bench with a simulated camera: what the operator was asked, what the camera
// was told, and the whole log.
class tst_AutomaticRun : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void everyStep_data();
    void everyStep();
    void mixedAnswers();
    void cancelledScan();
    void withoutFunctions();
    void silentSdCard();
    void emptySdCard();
    void withoutDevice();
    void stopInTheSdWait();
    void stopInTheScan();
    void stopInADialog();
    void secondRun();
    void startDuringARun();
    void mediaIsRequestedFirst();
    void buttonIsOutOfReach();
    void leavesNoTrace();

private:
    struct Panel : VorlynDeviceMPToolWidget {
        Panel() : VorlynDeviceMPToolWidget(nullptr) { }
        using VorlynDeviceMPToolWidget::logEdit;
        using VorlynDeviceMPToolWidget::testThread;
        using VorlynDeviceMPToolWidget::versionLabel;
        using VorlynDeviceMPToolWidget::wifiInfoWidget;
    };

    void open(const QJsonObject &more = {}, const QJsonObject &rule = {});
    void waitForTheEnd();
    void waitForRequest(const QString &method);
    QStringList log() const { return linesOf(*panel->logEdit); }
    QStringList told();
    QStringList networks() const { return networksOf(*panel->wifiInfoWidget); }

    std::unique_ptr<FleetProcess> fleet;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<Panel> panel;
};

namespace {
const QJsonObject noSd = {{"sd", QJsonObject{{"totalsize", "0"}, {"freesize", "0"}}}};
const QJsonObject silentSd = {{"on", "GetSD"}, {"silent", true}};

// What the operator is asked, in order.
const char *const questions[] = {"Loading WiFi Info", "Test Speaker Result",
    "Test IR-cut Night Result", "Test IR-cut Day Result", "Test White Light On Result",
    "Test White Light Off Result"};

QStringList texts(int from = 0, int to = 6)
{
    QStringList list;
    for (int i = from; i < to; ++i)
        list.append(text(questions[i]));
    return list;
}

QStringList head()
{
    return {bannerLine("Start Auto Test"), infoLine("Name", "Nursery"),
        infoLine("Mac", "02:56:4C:00:00:01")};
}

QString versionLine(bool passed)
{
    return result("Auto Test App Version Result", passed, "1.2.3");
}

QString sdLine(bool passed)
{
    return result(
        "Auto Test SDCard Result", passed, passed ? QString("3.5 / 29.6992(GB)") : QString());
}

QStringList wholeLog(bool sdPassed, const QVector<bool> &answers, bool versionPassed = true)
{
    QStringList lines = head() << versionLine(versionPassed) << sdLine(sdPassed);
    for (int i = 0; i < answers.size(); ++i)
        lines.append(result(questions[i + 1], answers[i]));
    return lines << bannerLine("End Auto Test");
}

// All files below the program's folder, with their sizes and times.
QStringList filesOfProgram()
{
    QStringList files;
    QDirIterator all(QCoreApplication::applicationDirPath(), QDir::Files | QDir::Hidden,
        QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QFileInfo file(all.next());
        files.append(QString("%1 %2 %3")
                         .arg(file.filePath(), QString::number(file.size()),
                             file.lastModified().toString(Qt::ISODateWithMs)));
    }
    files.sort();
    return files;
}

const QStringList everyRequest = {"1 GetSD", "1 WifiScan", "1 testMicrophone", "1 SetIRcut night",
    "1 SetIRcut day", "1 SetColor on", "1 SetColor off"};
}

void tst_AutomaticRun::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

void tst_AutomaticRun::init()
{
    QVERIFY(ZRLocalize::loadLanguage("en"));
    fleet = std::make_unique<FleetProcess>("cam-a", 2, "10.77.0.11");
}

// The first camera, with every function, stands on the bench; the second is a bystander.
void tst_AutomaticRun::open(const QJsonObject &more, const QJsonObject &rule)
{
    QJsonObject camera = {{"camera", 1},
        {"fields",
            QJsonObject{
                {"name", "Nursery"}, {"HdCuFun", "PAC,WIFI"}, {"appVersion", "1.2.3.20240319"}}},
        {"sd", QJsonObject{{"totalsize", "30412"}, {"freesize", "26828"}}},
        {"wifi", QJsonArray{QJsonObject{{"wifiname", "Home"}, {"Signal", 80}}}},
        {"wifi-scan-ms", 1500}}; // so that its dialog is seen
    for (auto it = more.begin(); it != more.end(); ++it)
        camera[it.key()] = it.value();
    if (!rule.isEmpty())
        camera["rules"] = QJsonArray{rule};
    fleet->setScenario({{"cameras", QJsonArray{camera}}});
    QVERIFY(fleet->start());

    const LogCatcher log;
    VorlynSDK::createInstance();
    VorlynSDK::instance()->startNetwork(
        TestNetwork::interface("veth-a"), TestNetwork::entry("10.77.0.1"));
    QTRY_COMPARE(log.count("setsockopt SO_SNDTIMEO 1:0 -> 0"), 2);
    QVector<VorlynDevice> devices;
    VorlynSDK::instance()->searchDevices(devices, 1);
    std::sort(devices.begin(), devices.end());
    QCOMPARE(devices.size(), 2);

    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    table->setDevices(devices);
    panel = std::make_unique<Panel>();
    panel->setDevicesWidget(table.get());
    panel->setDevice(table->device(0));
    panel->versionLabel->setText("1.2.3");
    panel->show();
}

void tst_AutomaticRun::cleanup()
{
    panel.reset();
    table.reset();
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->stopNetwork();
    VorlynSDK::destroyInstance();
    QVERIFY2(fleet->stop(), fleet->errors());
}

void tst_AutomaticRun::waitForTheEnd()
{
    QTRY_VERIFY_WITH_TIMEOUT(!panel->testThread->isRunning(), 60000);
    QCoreApplication::processEvents(); // its last lines
}

void tst_AutomaticRun::waitForRequest(const QString &method)
{
    QTRY_VERIFY_WITH_TIMEOUT(!fleet->requests(method).isEmpty(), 20000);
}

// All requests but searches: camera, method and what else it was told. A search that both cameras
// heard marks the end: whatever was sent before it is there.
QStringList tst_AutomaticRun::told()
{
    const int searches = fleet->requests("search").size();
    QVector<VorlynDevice> devices;
    VorlynSDK::instance()->searchDevices(devices, 0.1);
    if (!QTest::qWaitFor([&] { return fleet->requests("search").size() == searches + 2; }, 20000))
        return {"no search arrived"};
    QStringList list;
    for (const QJsonObject &entry : fleet->events("request")) {
        if (entry["method"] == "search")
            continue;
        const QJsonObject request =
            QJsonDocument::fromJson(entry["raw"].toString().toUtf8()).object();
        QStringList words = {QString::number(entry["camera"].toInt()), entry["method"].toString()};
        for (const char *key : {"ircut", "color"}) {
            if (request.contains(key))
                words.append(request[key].toString());
        }
        list.append(words.join(' '));
    }
    return list;
}

void tst_AutomaticRun::everyStep_data()
{
    QTest::addColumn<bool>("passes");
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "cn"}) {
        QTest::addRow("pass %s", language) << true << QString(language);
        QTest::addRow("fail %s", language) << false << QString(language);
    }
}

void tst_AutomaticRun::everyStep()
{
    QFETCH(bool, passes);
    QFETCH(QString, language);
    QVERIFY(ZRLocalize::loadLanguage(language));
    open(passes ? QJsonObject() : noSd);
    panel->versionLabel->setText(passes ? "1.2.3" : "1.2.4");
    const OperatorAnswers answers({passes ? Answer::Pass : Answer::Failure});
    panel->onClickStartTestButton();
    waitForTheEnd();
    QCOMPARE(log(), wholeLog(passes, QVector<bool>(5, passes), passes));
    QCOMPARE(log().filter(red).size(), passes ? 0 : 7);
    QCOMPARE(answers.questions(), texts());
    QCOMPARE(told(), everyRequest);
    QCOMPARE(networks(), QStringList("Home (80)"));
}

void tst_AutomaticRun::mixedAnswers()
{
    open();
    panel->versionLabel->setText("1.2.4");
    const OperatorAnswers answers(
        {Answer::Nothing, Answer::Pass, Answer::Esc, Answer::Close, Answer::Failure, Answer::Pass});
    panel->onClickStartTestButton();
    waitForTheEnd();
    QCOMPARE(log(), wholeLog(true, {true, false, false, false, true}, false));
    QCOMPARE(answers.questions(), texts());
    QCOMPARE(told(), everyRequest);
}

void tst_AutomaticRun::cancelledScan()
{
    open({{"wifi-scan-ms", 60000}});
    panel->wifiInfoWidget->setInfos({{"Old", 7}});
    const OperatorAnswers answers({Answer::Esc, Answer::Pass});
    panel->onClickStartTestButton();
    waitForTheEnd();
    QCOMPARE(log(), wholeLog(true, QVector<bool>(5, true)));
    QCOMPARE(answers.questions(), texts());
    QCOMPARE(told(), everyRequest);
    QCOMPARE(networks(), QStringList("Old (7)"));
}

void tst_AutomaticRun::withoutFunctions()
{
    open({{"fields",
        QJsonObject{{"name", "Nursery"}, {"HdCuFun", ""}, {"appVersion", "1.2.3.20240319"}}}});
    const OperatorAnswers answers({Answer::Pass});
    panel->onClickStartTestButton();
    waitForTheEnd();
    QCOMPARE(log(), wholeLog(true, QVector<bool>(3, true)));
    QCOMPARE(answers.questions(), texts(1, 4));
    QCOMPARE(
        told(), QStringList({"1 GetSD", "1 testMicrophone", "1 SetIRcut night", "1 SetIRcut day"}));
}

void tst_AutomaticRun::silentSdCard()
{
    open({}, silentSd);
    const OperatorAnswers answers({Answer::Pass});
    QElapsedTimer clock;
    clock.start();
    panel->onClickStartTestButton();
    QTRY_COMPARE_WITH_TIMEOUT(log().value(4), sdLine(false), 20000);
    QVERIFY2(clock.elapsed() >= 2900, qPrintable(QString::number(clock.elapsed())));
    waitForTheEnd();
    QCOMPARE(log(), wholeLog(false, QVector<bool>(5, true)));
    QCOMPARE(told(), everyRequest); // asked once
}

void tst_AutomaticRun::emptySdCard()
{
    open(noSd);
    const OperatorAnswers answers({Answer::Pass});
    panel->onClickStartTestButton();
    waitForTheEnd();
    QCOMPARE(log(), wholeLog(false, QVector<bool>(5, true)));
}

void tst_AutomaticRun::withoutDevice()
{
    open();
    panel->setDevice(VorlynDevice());
    const OperatorAnswers answers({Answer::Pass});
    panel->onClickStartTestButton();
    waitForTheEnd();
    QCOMPARE(log(),
        QStringList({bannerLine("Start Auto Test"), infoLine("Name", ""), infoLine("Mac", ""),
            result("Auto Test App Version Result", false, ""), bannerLine("End Auto Test")}));
    QCOMPARE(answers.questions(), QStringList());
    QCOMPARE(told(), QStringList());
}

// The step that waits fails at once; the rest is done as ever.
void tst_AutomaticRun::stopInTheSdWait()
{
    open({}, silentSd);
    OperatorAnswers answers({Answer::Pass});
    QElapsedTimer clock;
    qint64 elapsed = 0;
    answers.onDialog = [&](QWidget &) { // the scan's is the first
        if (!elapsed)
            elapsed = clock.elapsed() + 1;
    };
    panel->onClickStartTestButton();
    waitForRequest("GetSD");
    QCOMPARE(log().size(), 4);
    clock.start();
    // The request may be there before the worker waits for its reply, and a stop() before that is
    // none.
    QTRY_VERIFY((panel->testThread->stop(), log().size() > 4));
    QTRY_VERIFY(elapsed); // a moment after the log's line
    QVERIFY2(elapsed < 2000, qPrintable(QString::number(elapsed)));
    waitForTheEnd();
    QCOMPARE(log(), wholeLog(false, QVector<bool>(5, true)));
    QCOMPARE(answers.questions(), texts());
    QCOMPARE(told(), everyRequest);
    QCOMPARE(networks(), QStringList("Home (80)"));
}

// Its wait is one for a reply too: the list is then an empty one.
void tst_AutomaticRun::stopInTheScan()
{
    open({{"wifi-scan-ms", 60000}});
    panel->wifiInfoWidget->setInfos({{"Old", 7}});
    OperatorAnswers answers({Answer::Pass});
    QElapsedTimer clock;
    qint64 elapsed = 0;
    QTimer stopping;
    connect(&stopping, &QTimer::timeout, [this] { panel->testThread->stop(); });
    answers.onDialog = [&](QWidget &dialog) {
        if (!dialog.findChild<QPushButton *>("okButton")) { // no question
            clock.start();
            stopping.start(10);
        } else if (stopping.isActive()) {
            elapsed = clock.elapsed() + 1;
            stopping.stop();
        }
    };
    panel->onClickStartTestButton();
    waitForTheEnd();
    QVERIFY2(elapsed && elapsed < 8000, qPrintable(QString::number(elapsed)));
    QCOMPARE(log(), wholeLog(true, QVector<bool>(5, true)));
    QCOMPARE(answers.questions(), texts());
    QCOMPARE(told(), everyRequest);
    QCOMPARE(networks(), QStringList());
}

void tst_AutomaticRun::stopInADialog()
{
    open();
    OperatorAnswers answers({Answer::Pass});
    answers.onDialog = [this](QWidget &dialog) {
        if (dialog.findChild<QPushButton *>("okButton")) // a question
            panel->testThread->stop();
    };
    panel->onClickStartTestButton();
    waitForTheEnd();
    QCOMPARE(log(), wholeLog(true, QVector<bool>(5, true)));
    QCOMPARE(answers.questions(), texts());
    QCOMPARE(told(), everyRequest);
}

void tst_AutomaticRun::secondRun()
{
    open();
    const OperatorAnswers answers({Answer::Pass});
    panel->onClickStartTestButton();
    waitForTheEnd();
    QVERIFY(panel->testThread); // kept until the next press
    const QStringList first = wholeLog(true, QVector<bool>(5, true));
    QCOMPARE(log(), first);
    QCOMPARE(networks(), QStringList("Home (80)"));

    panel->setDevice(table->device(0));
    panel->wifiInfoWidget->setInfos({{"Old", 7}});
    panel->onClickStartTestButton();
    waitForTheEnd();
    QCOMPARE(log(), first + first);
    QCOMPARE(answers.questions(), texts() + texts());
    QCOMPARE(told(), everyRequest + everyRequest);
    QCOMPARE(networks(), QStringList("Home (80)"));
}

// Which no button does: the first run is led to its end, steps for this thread included.
void tst_AutomaticRun::startDuringARun()
{
    open({}, silentSd);
    const OperatorAnswers answers({Answer::Pass});
    QSignalSpy media(panel.get(), &VorlynDeviceMPToolWidget::requestStartMedia);
    panel->onClickStartTestButton();
    waitForRequest("GetSD");
    panel->onClickStartTestButton();
    QCOMPARE(media.count(), 2);
    QVERIFY(panel->testThread->isRunning());
    waitForTheEnd();
    const QStringList each = wholeLog(false, QVector<bool>(5, true));
    QCOMPARE(log(), each + each);
    QCOMPARE(answers.questions(), texts() + texts());
    QCOMPARE(told(), everyRequest + everyRequest);
}

void tst_AutomaticRun::mediaIsRequestedFirst()
{
    open();
    const OperatorAnswers answers({Answer::Pass});
    QSignalSpy requests(panel.get(), &VorlynDeviceMPToolWidget::requestStartMedia);
    bool idle = false;
    int linesBefore = -1;
    connect(panel.get(), &VorlynDeviceMPToolWidget::requestStartMedia, [&] {
        idle = !panel->testThread;
        linesBefore = log().size();
    });
    panel->onClickStartTestButton();
    QCOMPARE(requests.count(), 1);
    QVERIFY(idle);
    QCOMPARE(linesBefore, 0);
    waitForTheEnd();

    idle = false;
    panel->onClickStartTestButton();
    QCOMPARE(requests.count(), 2);
    QVERIFY(idle); // the finished run is gone by then
    QCOMPARE(linesBefore, 11);
    waitForTheEnd();
}

void tst_AutomaticRun::buttonIsOutOfReach()
{
    open({}, silentSd);
    const OperatorAnswers answers({Answer::Pass});
    auto *button = panel->findChild<QPushButton *>("startTestButton");
    QVERIFY(button && button->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton);
    waitForRequest("GetSD");
    QVERIFY(!button->isEnabled());
    QVERIFY(!table->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton); // does nothing: no second run, no dead end
    waitForTheEnd();
    QTRY_VERIFY(button->isEnabled());
    QVERIFY(table->isEnabled());
    QCOMPARE(log(), wholeLog(false, QVector<bool>(5, true)));
}

// The log pane is the only record.
void tst_AutomaticRun::leavesNoTrace()
{
    const SettingsFile settings;
    settings.write({{"Language", "en"}, {"Other", "kept"}});
    open();
    const QStringList files = filesOfProgram();
    const QVariantMap values = settings.read();
    QCOMPARE(values.size(), 2);
    const OperatorAnswers answers({Answer::Pass, Answer::Pass, Answer::Failure});
    panel->onClickStartTestButton();
    waitForTheEnd();
    panel.reset();
    QCOMPARE(filesOfProgram(), files);
    QCOMPARE(settings.read(), values);
    QCOMPARE(told(), everyRequest);
    settings.remove();
}

QTEST_MAIN(tst_AutomaticRun)
#include "tst_AutomaticRun.moc"
