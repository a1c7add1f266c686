#include "Devices.h"
#include "FactoryTestHost.h"
#include "FactoryTestList.h"
#include "FakeReports.h"
#include "LogCatcher.h"
#include "ModalDriver.h"
#include "TestLog.h"
#include "VorlynDeviceGenerationWidget.h"

#include <QJsonArray>
#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <memory>

namespace {
constexpr int patience = 20000; // milliseconds

const FactoryTest &testOf(int id)
{
    const auto found = std::find_if(std::begin(factoryTests), std::end(factoryTests),
        [id](const FactoryTest &test) { return test.id == id; });
    if (found == std::end(factoryTests))
        qFatal("no test %d", id);
    return *found;
}

QString statusOf(const FactoryDialog &dialog)
{
    return dialog.findChild<QLabel *>("statusLabel")->text();
}

bool waitForStatus(const FactoryDialog &dialog, const QString &text)
{
    return QTest::qWaitFor([&] { return statusOf(dialog) == text; }, patience);
}

QPushButton *passButton(const FactoryDialog &dialog)
{
    return dialog.findChild<QPushButton *>("passButton");
}

class Generation : public VorlynDeviceGenerationWidget
{
public:
    Generation() : VorlynDeviceGenerationWidget(nullptr) { }
    using VorlynDeviceGenerationWidget::testResults;
};

constexpr int crying = 10;
constexpr int bree = 13;
constexpr int wifi = 7;
const QJsonObject scan = {{"result", "success"},
    {"WifiList", QJsonArray{QJsonObject{{"wifiname", "Home"}, {"Signal", 80}}}}};
}

// The dialogs with a queue in place of the SDK's. No language is loaded: texts are their keys.
class tst_FactoryTestHost : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void list();
    void reports_data();
    void reports();
    void operatorAlone_data();
    void operatorAlone();
    void answers();
    void oldReportsCountForNothing();
    void networks();
    void failedScan();
    void strangersAreDropped();
    void otherFunctionsLeaveTheDialog();
    void dropsAreLoggedInNumber();
    void generationWidget();
    void generationWidgetHearsOfTheOpenTestOnly();
    void answerComesAfterTheReports();
    void nothingIsTakenAfterwards();
    void commandsKeepTheirReplies();
    void withoutTheClient();

private:
    int run(int id, const std::function<void(FactoryDialog &)> &act);

    std::unique_ptr<FakeReports> queue;
    std::unique_ptr<Generation> generation;
};

void tst_FactoryTestHost::init()
{
    queue = std::make_unique<FakeReports>();
}

void tst_FactoryTestHost::cleanup()
{
    generation.reset();
    queue.reset();
}

int tst_FactoryTestHost::run(int id, const std::function<void(FactoryDialog &)> &act)
{
    FactoryTestHost host(makeDevices({"02:56:4C:00:00:01"}).first());
    host.setSource([this] { return queue->take(); });
    host.setGenerationWidget(generation.get());
    ModalDriver<FactoryDialog> driver(act);
    return host.run(testOf(id));
}

// A slot for each test that has reports, and none for the others.
void tst_FactoryTestHost::list()
{
    QSet<int> ids;
    QSet<int> functions;
    for (const FactoryTest &test : factoryTests) {
        ids << test.id;
        const bool hasReports = test.report != VorlynReport::Function::None;
        QCOMPARE(test.slot != nullptr, hasReports);
        if (hasReports)
            functions << int(test.report);
    }
    QCOMPARE(ids.size(), 16);
    QCOMPARE(functions.size(), 14);
    QCOMPARE(QString(testOf(6).title), QString("Test SDCard"));
    QCOMPARE(QString(testOf(16).title), QString("Test Millimeter Wave"));
}

void tst_FactoryTestHost::reports_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("function");
    QTest::addColumn<QJsonObject>("more");
    QTest::addColumn<QString>("status"); // empty: the dialog has none, passing becomes possible
    const QString microphone = "Please Test Microphone";
    const struct {
        int id;
        const char *function;
        QJsonObject more;
        QString status;
    } rows[] = {
        {1, "image", {}, microphone},
        {2, "speaker", {}, "Please Test Speaker"},
        {3, "microphone", {}, microphone},
        {6, "sdcard", {{"totalsize", 30412}, {"freesize", 26828}}, "Test SDCard 3.5 / 29.6992(GB)"},
        {8, "temperature", {{"temperature", 36.456}},
            "Check if the temperature in the upper right corner of the screen matches the ambient "
            "temperature\nCurrent Temperature 36.46"},
        {9, "exttemperature", {{"temperature", "-4"}}, "Current Temperature -4.00"},
        {10, "crying", {{"status", "on"}}, "Crying is Detected"},
        {11, "keyword", {{"status", "ON"}}, "Detected Success"},
        {12, "keycall", {{"status", "off"}}, "Detected Failure"},
        {13, "bree", {{"status", "fall"}}, "Fall Bree"},
        {14, "fall", {{"status", "on"}}, QString()},
        {15, "confirm", {}, microphone},
        {16, "millimeterwave", {{"status", "no body"}}, "Nobody Bree"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.function) << row.id << QString(row.function) << row.more << row.status;
}

void tst_FactoryTestHost::reports()
{
    QFETCH(int, id);
    QFETCH(QString, function);
    QFETCH(QJsonObject, more);
    QFETCH(QString, status);
    run(id, [&](FactoryDialog &dialog) {
        queue->push(qPrintable(function), more);
        if (status.isNull())
            QTRY_VERIFY_WITH_TIMEOUT(passButton(dialog)->isEnabled(), patience);
        else
            QVERIFY2(waitForStatus(dialog, status), qPrintable(statusOf(dialog)));
        dialog.accept();
    });
}

void tst_FactoryTestHost::operatorAlone_data()
{
    QTest::addColumn<int>("id");
    QTest::newRow("beep") << 4;
    QTest::newRow("pan and tilt") << 5;
}

void tst_FactoryTestHost::operatorAlone()
{
    QFETCH(int, id);
    QCOMPARE(run(id, [](FactoryDialog &dialog) { passButton(dialog)->click(); }),
        int(FactoryTestPassed));
}

void tst_FactoryTestHost::answers()
{
    for (const FactoryTest &test : factoryTests) {
        QCOMPARE(run(test.id, [](FactoryDialog &dialog) { dialog.accept(); }), 1);
        QCOMPARE(run(test.id, [](FactoryDialog &dialog) { dialog.reject(); }), 2);
        QCOMPARE(run(test.id, [](FactoryDialog &dialog) { dialog.close(); }), 2);
    }
}

void tst_FactoryTestHost::oldReportsCountForNothing()
{
    for (int i = 0; i < 100; ++i)
        queue->push("bree", {{"status", "on"}});
    const int state = run(bree, [this](FactoryDialog &dialog) {
        QTest::qWait(50); // ten times as long as a pass of the thread
        QVERIFY(queue->isEmpty());
        QVERIFY(!passButton(dialog)->isEnabled());
        queue->push("bree", {{"status", "gone"}});
        QVERIFY(waitForStatus(dialog, "Detected Failure"));
        QVERIFY(!passButton(dialog)->isEnabled());
        dialog.reject();
    });
    QCOMPARE(state, int(FactoryTestFailed));
}

void tst_FactoryTestHost::networks()
{
    run(wifi, [this](FactoryDialog &dialog) {
        queue->push("wifi", scan);
        QTRY_COMPARE_WITH_TIMEOUT(TestLog::networksOf(dialog), QStringList{"Home (80)"}, patience);
        QCOMPARE(dialog.findChild<QLabel *>("titleLabel")->text(), QString("Test WiFi"));
        dialog.accept();
    });
}

void tst_FactoryTestHost::failedScan()
{
    run(wifi, [this](FactoryDialog &dialog) {
        queue->push("wifi", {{"result", "failure"}});
        const auto *title = dialog.findChild<QLabel *>("titleLabel");
        QTRY_COMPARE_WITH_TIMEOUT(title->text(), QString("Unable to search WiFi list"), patience);
        dialog.accept();
    });
}

// Another device, what is no report, and what lacks its content.
void tst_FactoryTestHost::strangersAreDropped()
{
    run(crying, [this](FactoryDialog &dialog) {
        const QString before = statusOf(dialog);
        queue->push("crying", {{"status", "on"}, {"srcid", "cam1"}});
        queue->push("crying", {{"status", "on"}, {"srcid", "CAM0"}});
        queue->push("crying", {{"status", "on"}, {"method", "GetSD"}});
        queue->push("crying");
        queue->push(QJsonObject());
        QTRY_VERIFY_WITH_TIMEOUT(queue->isEmpty(), patience);
        QTest::qWait(50);
        QCOMPARE(statusOf(dialog), before);
        QVERIFY(!passButton(dialog)->isEnabled());
        queue->push("crying", {{"status", "on"}});
        QTRY_VERIFY_WITH_TIMEOUT(passButton(dialog)->isEnabled(), patience);
        dialog.accept();
    });
}

void tst_FactoryTestHost::otherFunctionsLeaveTheDialog()
{
    run(bree, [this](FactoryDialog &dialog) {
        queue->push("millimeterwave", {{"status", "body"}});
        queue->push("crying", {{"status", "on"}});
        queue->push("bree", {{"status", "no body"}});
        QVERIFY(waitForStatus(dialog, "Nobody Bree"));
        dialog.accept();
    });
}

void tst_FactoryTestHost::dropsAreLoggedInNumber()
{
    LogCatcher log;
    run(bree, [this](FactoryDialog &dialog) {
        for (int i = 0; i < 1000; ++i)
            queue->push("bree", {{"status", "on"}, {"srcid", "cam1"}});
        QTRY_VERIFY_WITH_TIMEOUT(queue->isEmpty(), patience);
        dialog.reject();
    });
    QCOMPARE(log.beginning("dropped {").size(), 10);
    QCOMPARE(log.beginning("dropped ").size(), 11);
    QCOMPARE(log.lines().last(), QString("dropped 1000 messages"));
}

// It shows what it has slots for, of this device only.
void tst_FactoryTestHost::generationWidget()
{
    generation = std::make_unique<Generation>();
    QMap<int, int> &results = generation->testResults;
    run(6, [&](FactoryDialog &dialog) {
        queue->push("sdcard", {{"totalsize", 200}, {"freesize", 10}});
        QTRY_COMPARE_WITH_TIMEOUT(results.value(6), int(FactoryTestPassed), patience);
        queue->push("sdcard", {{"totalsize", 200}, {"freesize", 0}, {"srcid", "cam1"}});
        queue->push("sdcard", {{"totalsize", 0}, {"freesize", 0}});
        QTRY_COMPARE_WITH_TIMEOUT(results.value(6), int(FactoryTestFailed), patience);
        dialog.accept();
    });
    run(16, [&](FactoryDialog &dialog) {
        queue->push("millimeterwave", {{"status", "On"}});
        QTRY_COMPARE_WITH_TIMEOUT(results.value(16), int(FactoryTestPassed), patience);
        queue->push("millimeterwave", {{"status", "body"}});
        QTRY_COMPARE_WITH_TIMEOUT(results.value(16), int(FactoryTestFailed), patience);
        dialog.accept();
    });
    run(wifi, [&](FactoryDialog &dialog) {
        queue->push("wifi", scan);
        QTRY_COMPARE_WITH_TIMEOUT(
            TestLog::networksOf(*generation), QStringList{"Home (80)"}, patience);
        dialog.accept();
    });
    run(bree, [&](FactoryDialog &dialog) {
        queue->push("bree", {{"status", "body"}});
        QVERIFY(waitForStatus(dialog, "Body Bree"));
        QCOMPARE(results.value(bree), int(FactoryTestWaiting)); // has no slot
        dialog.accept();
    });
}

// What the operator has answered stands, whatever is reported of it while another dialog is open.
void tst_FactoryTestHost::generationWidgetHearsOfTheOpenTestOnly()
{
    generation = std::make_unique<Generation>();
    generation->setResult(6, FactoryTestPassed);
    generation->setResult(16, FactoryTestPassed);
    run(bree, [this](FactoryDialog &dialog) {
        queue->push("sdcard", {{"totalsize", 0}, {"freesize", 0}});
        queue->push("millimeterwave", {{"status", "body"}});
        queue->push("wifi", scan);
        queue->push("bree", {{"status", "body"}});
        QVERIFY(waitForStatus(dialog, "Body Bree")); // after the others
        dialog.accept();
    });
    QCoreApplication::processEvents();
    QCOMPARE(generation->testResults.value(6), int(FactoryTestPassed));
    QCOMPARE(generation->testResults.value(16), int(FactoryTestPassed));
    QCOMPARE(TestLog::networksOf(*generation), QStringList());
}

// A host sets the operator's answer right after; no report may come behind it.
void tst_FactoryTestHost::answerComesAfterTheReports()
{
    generation = std::make_unique<Generation>();
    for (int turn = 0; turn < 20; ++turn) {
        const int state = run(16, [this](FactoryDialog &dialog) {
            for (int i = 0; i < 50; ++i)
                queue->push("millimeterwave", {{"status", "on"}});
            dialog.reject();
        });
        generation->setResult(16, state);
        QCoreApplication::processEvents();
        QCOMPARE(generation->testResults.value(16), int(FactoryTestFailed));
    }
}

void tst_FactoryTestHost::nothingIsTakenAfterwards()
{
    run(bree, [](FactoryDialog &dialog) { dialog.accept(); });
    queue->push("bree", {{"status", "on"}});
    QTest::qWait(50); // ten times as long as a pass of the thread
    QVERIFY(!queue->isEmpty());
}

// Dialogs that send commands leave the queue to them.
void tst_FactoryTestHost::commandsKeepTheirReplies()
{
    queue->push("bree", {{"status", "on"}});
    run(5, [this](FactoryDialog &dialog) {
        QTest::qWait(50);
        QVERIFY(!queue->isEmpty());
        dialog.accept();
    });
}

void tst_FactoryTestHost::withoutTheClient()
{
    FactoryTestHost host(makeDevices({"02:56:4C:00:00:01"}).first());
    ModalDriver<FactoryDialog> driver([](FactoryDialog &dialog) {
        QTest::qWait(50);
        dialog.accept();
    });
    QCOMPARE(host.run(testOf(bree)), int(FactoryTestPassed));
}

QTEST_MAIN(tst_FactoryTestHost)
#include "tst_FactoryTestHost.moc"
