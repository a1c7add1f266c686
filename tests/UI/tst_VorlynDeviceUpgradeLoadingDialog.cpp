#include "CameraBench.h"
#include "Devices.h"
#include "DialogRun.h"
#include "FleetProcess.h"
#include "QuickUpgrade.h"
#include "UpgradeTable.h"
#include "ZRLocalize.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>

// Cameras of the fleet; that with the number i, from 1, is in row i - 1.
class tst_VorlynDeviceUpgradeLoadingDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void fresh();
    void merge();
    void countdown_data();
    void countdown();
    void everybodyIsBack();
    void noDevices();
    void uploadResults_data();
    void uploadResults();
    void recordOfTheLastPollStands();
    void earlierPollsDontCount();
    void lastSearchCounts();
    void stopInTheFirstUpload();
    void stopAfterAGoodUpload();
    void stopInTheWait();
    void stopAfterAPoll();
    void stopInTheLastSearch();
    void destructorStops();
    void withoutSdk();

private:
    // Entries of a scenario, for the first camera and those after it.
    void open(const QJsonArray &entries, int count = 2);
    void list(int count);
    // The whole job, to its end by itself.
    void run(QuickUpgrade &upgrade);
    // Presses Esc; the milliseconds until the job has ended.
    qint64 stop(QuickUpgrade &upgrade);
    // How many the last camera of the fleet has seen.
    int searches() const;

    static QString upgrading(int camera);
    static QString waiting(int seconds);

    QTemporaryDir folder;
    QString firmware;
    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<FleetProcess> fleet;
    int cameras = 0; // of it
    std::unique_ptr<VorlynDeviceUpgradeDialog> dialog;
    std::unique_ptr<UpgradeTable> table;
};

namespace {
constexpr qint64 finalSearch = 5000; // milliseconds
constexpr qint64 finalSearchAtMost = 12000;
// An end that a stop brings is well before that of the last search.
constexpr qint64 atOnce = 4000;
const QJsonObject neverBack = {{"restart-seconds", 3600}};

QJsonObject withRules(const QJsonArray &rules)
{
    return {{"rules", rules}};
}
}

void tst_VorlynDeviceUpgradeLoadingDialog::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    firmware = folder.filePath("1.2.3.bin");
    QFile file(firmware);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(100000, 'f'));
}

void tst_VorlynDeviceUpgradeLoadingDialog::init()
{
    ZRLocalize::loadLanguage("en");
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    dialog = std::make_unique<VorlynDeviceUpgradeDialog>(nullptr);
    table = std::make_unique<UpgradeTable>(*dialog);
    dialog->setFirmware(firmware);
}

void tst_VorlynDeviceUpgradeLoadingDialog::cleanup()
{
    table.reset();
    dialog.reset();
    if (fleet)
        QVERIFY2(fleet->stop(), fleet->errors());
    fleet.reset();
    bench.reset();
}

void tst_VorlynDeviceUpgradeLoadingDialog::open(const QJsonArray &entries, int count)
{
    QJsonArray numbered;
    for (int i = 0; i < entries.size(); ++i) {
        QJsonObject entry = entries[i].toObject();
        entry["camera"] = i + 1;
        numbered.append(entry);
    }
    cameras = count;
    fleet = std::make_unique<FleetProcess>("cam-a", count, "10.77.0.11");
    fleet->addOptions({"--restart-seconds", "0"});
    fleet->setScenario({{"cameras", numbered}});
    QVERIFY(fleet->start());
}

int tst_VorlynDeviceUpgradeLoadingDialog::searches() const
{
    const QVector<QJsonObject> requests = fleet->events("request");
    return int(std::count_if(requests.begin(), requests.end(), [this](const QJsonObject &request) {
        return request["camera"] == cameras && request["method"] == "search";
    }));
}

void tst_VorlynDeviceUpgradeLoadingDialog::list(int count)
{
    QVector<VorlynDevice> devices;
    for (int camera = 1; camera <= count; ++camera) {
        VorlynDevice device;
        device.setMac(QString("02:56:4C:00:00:%1").arg(camera, 2, 10, QLatin1Char('0')));
        device.setIp(QString("10.77.0.%1").arg(10 + camera));
        device.setName(QString("camera %1").arg(camera));
        device.setValue("httpport", "80");
        device.setValue("appVersion", "0.9.0.1");
        devices.append(device);
    }
    dialog->setDevices(devices);
}

void tst_VorlynDeviceUpgradeLoadingDialog::run(QuickUpgrade &upgrade)
{
    upgrade.start();
    upgrade.show();
    QSignalSpy finished(&upgrade, &QDialog::finished);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 90000);
    QCOMPARE(finished.first().first().toInt(), int(QDialog::Accepted));
}

qint64 tst_VorlynDeviceUpgradeLoadingDialog::stop(QuickUpgrade &upgrade)
{
    QElapsedTimer clock;
    clock.start();
    QTest::keyClick(&upgrade, Qt::Key_Escape);
    const qint64 elapsed = clock.elapsed();
    const bool rejected = !upgrade.isVisible() && upgrade.result() == QDialog::Rejected;
    QCoreApplication::sendPostedEvents(); // what the job said at its end
    return rejected ? elapsed : -1;
}

QString tst_VorlynDeviceUpgradeLoadingDialog::upgrading(int camera)
{
    return QString("%1 camera %2").arg(ZRLocalize::translate("Upgrading")).arg(camera);
}

QString tst_VorlynDeviceUpgradeLoadingDialog::waiting(int seconds)
{
    return QString("%1 %2(s)")
        .arg(ZRLocalize::translate("Waiting for Devices Restart"))
        .arg(seconds);
}

void tst_VorlynDeviceUpgradeLoadingDialog::fresh()
{
    const VorlynDeviceUpgradeLoadingDialog loading(nullptr);
    QCOMPARE(loading.size(), QSize(300, 60));
    QCOMPARE(loading.findChild<QLabel *>("messageLabel")->text(), QString());

    class Opened : public VorlynDeviceUpgradeLoadingDialog
    {
    public:
        using VorlynDeviceUpgradeLoadingDialog::shortSearch;
        using VorlynDeviceUpgradeLoadingDialog::VorlynDeviceUpgradeLoadingDialog;
    };
    QCOMPARE(Opened(nullptr).shortSearch(), 0.2);
}

void tst_VorlynDeviceUpgradeLoadingDialog::merge()
{
    QVector<VorlynDevice> found = makeDevices({"a", "b"});
    QVector<VorlynDevice> latest = makeDevices({"c", "b", "A", "c"});
    latest[1].setName("new b");
    latest[3].setName("second c");
    VorlynDeviceUpgradeLoadingDialog::mergeDevices(found, latest);
    QStringList macs, names;
    for (const VorlynDevice &device : qAsConst(found)) {
        macs << device.mac();
        names << device.name();
    }
    QCOMPARE(macs, QStringList({"a", "b", "c", "A"}));
    QCOMPARE(names, QStringList({"", "new b", "second c", ""}));

    VorlynDeviceUpgradeLoadingDialog::mergeDevices(found, {});
    QCOMPARE(found.size(), 4);
}

void tst_VorlynDeviceUpgradeLoadingDialog::countdown_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<double>("firstPause"); // seconds
    QTest::newRow("steady") << "en" << 0.5;
    QTest::newRow("Chinese, a long pause") << "cn" << 35.0;
}

// The wait for a camera that never comes back: every half second a message, and a search at 10,
// 20, ... 170 seconds, or as soon after that as the clock is seen to have passed it.
void tst_VorlynDeviceUpgradeLoadingDialog::countdown()
{
    QFETCH(QString, language);
    QFETCH(double, firstPause);
    QVERIFY(ZRLocalize::loadLanguage(language));
    class Upgrade : public QuickUpgrade
    {
    public:
        using QuickUpgrade::QuickUpgrade;
        ~Upgrade() override { finishThread(); }
        double firstPause = 0;

    protected:
        void pause(unsigned long milliseconds) override
        {
            QuickUpgrade::pause(milliseconds);
            if (pauses == 1)
                seconds = firstPause;
        }
    };

    open({neverBack});
    list(1);
    Upgrade upgrade(*dialog, 1);
    upgrade.firstPause = firstPause;
    QElapsedTimer clock;
    clock.start();
    run(upgrade);
    QVERIFY(clock.elapsed() < 40000); // most of it is the last search

    QStringList expected = {upgrading(1), waiting(180), waiting(180)};
    for (double second = firstPause; second < 180; second += 0.5)
        expected << waiting(180 - int(second));
    QCOMPARE(upgrade.messages, expected);
    QCOMPARE(upgrade.seconds, 180.0);
    QCOMPARE(searches(), 17 + 1);
    QTRY_VERIFY(table->failed(0));
    QCOMPARE(table->version(0), QString("0.9.0"));
}

void tst_VorlynDeviceUpgradeLoadingDialog::everybodyIsBack()
{
    open({});
    list(2);
    QElapsedTimer clock;
    clock.start();
    QuickUpgrade upgrade(*dialog, 20);
    upgrade.awaitsAnswers = true;
    run(upgrade);
    QVERIFY(clock.elapsed() >= finalSearch);

    QCOMPARE(searches(), 1 + 1);
    QCOMPARE(upgrade.seconds, 10.5);
    QCOMPARE(upgrade.messages.mid(0, 3), QStringList({upgrading(1), upgrading(2), waiting(180)}));
    QCOMPARE(upgrade.messages.last(), waiting(170));

    const QVector<QJsonObject> uploads = fleet->events("upload");
    QCOMPARE(uploads.size(), 2);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(uploads[i]["camera"].toInt(), i + 1);
        QCOMPARE(uploads[i]["filename"].toString(), QString("1.2.3.bin"));
        QCOMPARE(uploads[i]["bytes"].toInt(), 100000);
        QTRY_VERIFY(table->succeeded(i));
        QCOMPARE(table->version(i), QString("1.2.3"));
    }
}

void tst_VorlynDeviceUpgradeLoadingDialog::noDevices()
{
    open({});
    QElapsedTimer clock;
    clock.start();
    QuickUpgrade upgrade(*dialog, 1);
    run(upgrade);
    const qint64 elapsed = clock.elapsed();
    QVERIFY2(elapsed >= finalSearch && elapsed < finalSearchAtMost,
        qPrintable(QString::number(elapsed)));
    QCOMPARE(upgrade.messages, QStringList());
    QCOMPARE(upgrade.pauses, 0);
    QCOMPARE(searches(), 1);
    QCOMPARE(fleet->events("upload").size(), 0);
    QCOMPARE(table->widget()->rowCount(), 0);
}

void tst_VorlynDeviceUpgradeLoadingDialog::uploadResults_data()
{
    QTest::addColumn<QJsonObject>("answer");
    QTest::addColumn<bool>("good");
    QTest::newRow("below 0") << QJsonObject{{"Result", -1}} << false;
    QTest::newRow("no JSON") << QJsonObject{{"body", "<h1>broken</h1>"}} << false;
    QTest::newRow("above 0") << QJsonObject{{"Result", 5}} << true;
}

// Two cameras that answer an upload alike and stay as they are. Whatever the upload came to, each
// gets its turn, and both have succeeded as they answer the last search.
void tst_VorlynDeviceUpgradeLoadingDialog::uploadResults()
{
    QFETCH(QJsonObject, answer);
    QFETCH(bool, good);
    answer["on"] = "upload";
    answer["apply"] = false;
    open({withRules({answer}), withRules({answer})});
    list(2);
    QuickUpgrade upgrade(*dialog, 5);
    run(upgrade);
    QCOMPARE(fleet->events("upload").size(), 2);
    QCOMPARE(upgrade.messages.contains(waiting(180)), good);
    QCOMPARE(upgrade.pauses > 0, good);
    if (!good)
        QCOMPARE(searches(), 1);
    for (int row = 0; row < 2; ++row) {
        QTRY_VERIFY(table->succeeded(row));
        QVERIFY(!table->version(row).isEmpty());
        QVERIFY(table->version(row) != "1.2.3");
    }
}

void tst_VorlynDeviceUpgradeLoadingDialog::recordOfTheLastPollStands()
{
    const auto reports = [](const char *version) {
        return QJsonObject{{"on", "search"}, {"set", QJsonObject{{"appVersion", version}}}};
    };
    QJsonObject inThePoll = reports("4.0.0.1");
    inThePoll["times"] = 1;
    const QJsonObject gone = {{"on", "search"}, {"after", 1}, {"silent", true}};
    open({withRules({inThePoll, reports("5.0.0.1")}), withRules({gone})}, 3);
    list(2);
    QuickUpgrade upgrade(*dialog, 20);
    upgrade.awaitsAnswers = true;
    run(upgrade);
    QCOMPARE(searches(), 2);
    QTRY_VERIFY(table->succeeded(0));
    QCOMPARE(table->version(0), QString("4.0.0"));
    QVERIFY(table->succeeded(1));
    QCOMPARE(table->version(1), QString("1.2.3"));
}

// The first camera answers the first poll only, the second all but that: all have been seen by the
// second poll, and the first is missing at the end.
void tst_VorlynDeviceUpgradeLoadingDialog::earlierPollsDontCount()
{
    const QJsonObject gone = {{"on", "search"}, {"after", 1}, {"silent", true}};
    const QJsonObject late = {{"on", "search"}, {"times", 1}, {"silent", true}};
    open({withRules({gone}), withRules({late})}, 3);
    list(2);
    QuickUpgrade upgrade(*dialog, 20);
    upgrade.awaitsAnswers = true;
    run(upgrade);
    QCOMPARE(searches(), 3);
    QCOMPARE(upgrade.seconds, 20.5);
    QTRY_VERIFY(table->failed(0));
    QVERIFY(table->succeeded(1));
}

// No poll has seen the second camera, the last one included.
void tst_VorlynDeviceUpgradeLoadingDialog::lastSearchCounts()
{
    const QJsonObject late = {{"on", "search"}, {"times", 17}, {"silent", true}};
    open({neverBack, withRules({late})});
    list(2);
    QuickUpgrade upgrade(*dialog, 1);
    run(upgrade);
    QCOMPARE(upgrade.seconds, 180.0);
    QCOMPARE(searches(), 17 + 1);
    QVERIFY(table->failed(0));
    QVERIFY(table->succeeded(1));
    QCOMPARE(table->version(1), QString("1.2.3"));
}

void tst_VorlynDeviceUpgradeLoadingDialog::stopInTheFirstUpload()
{
    const QJsonObject silent = {{"on", "upload"}, {"silent", true}, {"apply", false}};
    open({withRules({silent})});
    list(2);
    QuickUpgrade upgrade(*dialog, 1);
    upgrade.awaitsAnswers = true;
    upgrade.start();
    upgrade.show();
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("upload").size(), 1, 20000);
    const qint64 elapsed = stop(upgrade);
    QVERIFY(elapsed >= 0 && elapsed < atOnce);
    QTRY_COMPARE(upgrade.messages, QStringList({upgrading(1)}));
    QCOMPARE(upgrade.pauses, 0);
    QCOMPARE(fleet->events("upload").size(), 1);
    QTRY_COMPARE(searches(), 1);
    for (int row = 0; row < 2; ++row) // both were seen in it
        QVERIFY(table->succeeded(row));
}

void tst_VorlynDeviceUpgradeLoadingDialog::stopAfterAGoodUpload()
{
    const QJsonObject silent = {{"on", "upload"}, {"silent", true}, {"apply", false}};
    open({neverBack, withRules({silent})});
    list(2);
    QuickUpgrade upgrade(*dialog, 1);
    upgrade.awaitsAnswers = true;
    upgrade.start();
    upgrade.show();
    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("upload").size(), 2, 20000);
    const qint64 elapsed = stop(upgrade);
    QVERIFY(elapsed >= 0 && elapsed < atOnce);
    QTRY_COMPARE(upgrade.messages, QStringList({upgrading(1), upgrading(2), waiting(180)}));
    QCOMPARE(upgrade.pauses, 0);
    QTRY_COMPARE(searches(), 1);
    QVERIFY(table->failed(0));
    QVERIFY(table->succeeded(1));
}

void tst_VorlynDeviceUpgradeLoadingDialog::stopInTheWait()
{
    open({neverBack});
    list(1);
    QuickUpgrade upgrade(*dialog, 200);
    upgrade.start();
    upgrade.show();
    QTRY_VERIFY_WITH_TIMEOUT(upgrade.messages.contains(waiting(179)), 20000);
    const qint64 elapsed = stop(upgrade);
    QVERIFY(elapsed >= 0 && elapsed < atOnce);
    QVERIFY(upgrade.seconds < 100);
    QVERIFY(table->failed(0));
}

// What the poll before saw counts, though the last search doesn't see it any more.
void tst_VorlynDeviceUpgradeLoadingDialog::stopAfterAPoll()
{
    class Upgrade : public QuickUpgrade
    {
    public:
        using QuickUpgrade::QuickUpgrade;
        ~Upgrade() override { finishThread(); }

    protected:
        void pause(unsigned long milliseconds) override
        {
            QuickUpgrade::pause(milliseconds);
            while (seconds > 15.5 && !isStopped()) // between two polls
                ZRThread::sleep(1);
        }
    };

    const QJsonObject gone = {{"on", "search"}, {"after", 1}, {"silent", true}};
    open({neverBack, withRules({gone})});
    list(2);
    Upgrade upgrade(*dialog, 20);
    upgrade.awaitsAnswers = true;
    upgrade.start();
    upgrade.show();
    QTRY_VERIFY_WITH_TIMEOUT(upgrade.messages.contains(waiting(165)), 20000);
    const qint64 elapsed = stop(upgrade);
    QVERIFY(elapsed >= 0 && elapsed < atOnce);
    QTRY_COMPARE(searches(), 1 + 1);
    QVERIFY(table->failed(0));
    QVERIFY(table->succeeded(1));
    QCOMPARE(table->version(1), QString("1.2.3"));
}

void tst_VorlynDeviceUpgradeLoadingDialog::stopInTheLastSearch()
{
    const QJsonObject refused = {{"on", "upload"}, {"Result", -1}, {"apply", false}};
    open({withRules({refused})});
    list(1);
    QuickUpgrade upgrade(*dialog, 1);
    upgrade.start();
    upgrade.show();
    QTRY_COMPARE_WITH_TIMEOUT(searches(), 1, 20000);
    const qint64 elapsed = stop(upgrade);
    QVERIFY(elapsed >= 0 && elapsed < atOnce);
    QVERIFY(!table->text(0, 4).isEmpty()); // seen or not, it is told
}

void tst_VorlynDeviceUpgradeLoadingDialog::destructorStops()
{
    open({neverBack});
    list(1);
    QElapsedTimer clock;
    {
        QuickUpgrade upgrade(*dialog, 200);
        upgrade.start();
        QTRY_VERIFY_WITH_TIMEOUT(upgrade.messages.contains(waiting(179)), 20000);
        clock.start();
    }
    QVERIFY(clock.elapsed() < atOnce);
    QTRY_VERIFY(table->failed(0));
}

void tst_VorlynDeviceUpgradeLoadingDialog::withoutSdk()
{
    bench.reset();
    list(1);
    VorlynDeviceUpgradeLoadingDialog loading(nullptr);
    loading.setUpgradeDialog(dialog.get());
    loading.start();
    loading.show();
    finish(loading);
    QCOMPARE(table->text(0, 4), QString());
    loading.cancel();
}

QTEST_MAIN(tst_VorlynDeviceUpgradeLoadingDialog)
#include "tst_VorlynDeviceUpgradeLoadingDialog.moc"
