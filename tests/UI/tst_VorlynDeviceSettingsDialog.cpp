#include "CameraBench.h"
#include "Devices.h"
#include "DialogRun.h"
#include "LogCatcher.h"
#include "MetaMethods.h"
#include "UploadSink.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"

#include <QElapsedTimer>

#include <functional>
#include <memory>
#include <thread>

// The dialogs that send one request for all devices and take one value for them.
struct OneForAll {
    const char *method;
    const char *key;
    bool resultIsRead;
    std::function<std::unique_ptr<VorlynDeviceValueSettingsDialog>()> make;
};

template <typename Dialog> static std::unique_ptr<VorlynDeviceValueSettingsDialog> make()
{
    return std::make_unique<Dialog>(nullptr);
}

static const OneForAll oneForAll[] = {
    {"SetName", "name", false, make<VorlynDeviceNameSettingsDialog>},
    {"SetP2p", "p2pid", true, make<VorlynDeviceP2PSettingsDialog>},
    {"SetHdCuFun", "HdCuFun", true, make<VorlynDeviceFunctionIdSettingsDialog>},
};

class tst_VorlynDeviceSettingsDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void metaObject();
    void baseHasNoJob();
    void updateOnTheGuiThread();
    void updateFromAnotherThread();
    void oneRequestForAll_data();
    void oneRequestForAll();
    void oneRequestForNobody_data() { oneForAll_data(); }
    void oneRequestForNobody();
    void macDeviceByDevice();
    void macWithASilentDevice();
    void macForNobody();
    void firmwareDeviceByDevice();
    void firmwareStopsBetweenDevices();
    void restore();
    void tableIsUpdatedBeforeTheEnd();
    void escEndsTheWait_data() { oneForAll_data(); }
    void escEndsTheWait();
    void escEndsTheLoop();
    void destructorEndsTheJob();
    void withoutSdk_data();
    void withoutSdk();

private:
    void oneForAll_data(); // a row for each
    void load(const QStringList &macs);

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<VorlynDevicesWidget> table;
    QVector<VorlynDevice> devices; // as the table has them
};

void tst_VorlynDeviceSettingsDialog::init()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    load({"a", "b", "c"});
}

void tst_VorlynDeviceSettingsDialog::cleanup()
{
    table.reset();
    bench.reset();
}

void tst_VorlynDeviceSettingsDialog::load(const QStringList &macs)
{
    table->setDevices(makeDevices(macs));
    devices.clear();
    for (int row = 0; row < macs.size(); ++row)
        devices.append(table->device(row));
}

void tst_VorlynDeviceSettingsDialog::metaObject()
{
    QCOMPARE(ownMethods(VorlynDeviceSettingsDialog::staticMetaObject),
        QStringList("public slot updateDevices(QVector<VorlynDevice>)"));
    VorlynDeviceSettingsDialog dialog(nullptr);
    QCOMPARE(QMetaType::type("QVector<VorlynDevice>"), qMetaTypeId<QVector<VorlynDevice>>());
}

void tst_VorlynDeviceSettingsDialog::baseHasNoJob()
{
    VorlynDeviceSettingsDialog dialog(nullptr);
    LogCatcher log;
    QSignalSpy finished(&dialog, &QDialog::finished);
    dialog.start();
    QTRY_COMPARE(log.count("ZRWaitDialog run"), 1);
    dialog.finishThread();
    QCoreApplication::processEvents();
    QCOMPARE(finished.count(), 0);
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceSettingsDialog::updateOnTheGuiThread()
{
    VorlynDeviceSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(table.get());
    devices[1].setMac("B");
    dialog.updateDevices(devices);
    QCOMPARE(table->device(1).mac(), QString("B"));
}

void tst_VorlynDeviceSettingsDialog::updateFromAnotherThread()
{
    VorlynDeviceSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(table.get());
    devices[1].setMac("B");
    std::thread([&] { dialog.updateDevices(devices); }).join();
    QCOMPARE(table->device(1).mac(), QString("b"));
    QCoreApplication::sendPostedEvents(&dialog);
    QCOMPARE(table->device(1).mac(), QString("B"));
}

void tst_VorlynDeviceSettingsDialog::oneRequestForAll_data()
{
    QTest::addColumn<int>("dialog");
    QTest::addColumn<QStringList>("results");
    for (int i = 0; i < 3; ++i) {
        const char *const method = oneForAll[i].method;
        for (const char *result : {"success", "SUCCESS", "failure"})
            QTest::addRow("%s %s", method, result) << i << QStringList(result);
        QTest::addRow("%s silence", method) << i << QStringList();
        // The camera that answers first decides for all.
        QTest::addRow("%s success first", method) << i << QStringList({"success", "failure"});
        QTest::addRow("%s failure first", method) << i << QStringList({"failure", "success"});
    }
}

void tst_VorlynDeviceSettingsDialog::oneRequestForAll()
{
    QFETCH(int, dialog);
    QFETCH(QStringList, results);
    const OneForAll &row = oneForAll[dialog];
    const auto subject = row.make();
    subject->setDevicesWidget(table.get());
    subject->setDevices(devices, {"new", "not used"});
    QJsonObject request;
    runToEnd(*subject, [&] {
        request = bench->request();
        for (const QString &result : results)
            QVERIFY(bench->answer(request, result));
    });
    QCOMPARE(request["method"].toString(), QString(row.method));
    QCOMPARE(request[row.key].toString(), QString("new"));
    QCOMPARE(CameraBench::targets(request), QStringList({"cam0", "cam1", "cam2"}));
    QVERIFY(bench->isQuiet());

    const bool succeeded = results.value(0).compare("success", Qt::CaseInsensitive) == 0;
    const QString expected = succeeded || !row.resultIsRead ? "new" : "";
    for (int i = 0; i < 3; ++i)
        QCOMPARE(table->device(i).value(row.key), expected);
}

void tst_VorlynDeviceSettingsDialog::oneForAll_data()
{
    QTest::addColumn<int>("dialog");
    for (int i = 0; i < 3; ++i)
        QTest::newRow(oneForAll[i].method) << i;
}

void tst_VorlynDeviceSettingsDialog::oneRequestForNobody()
{
    QFETCH(int, dialog);
    const auto subject = oneForAll[dialog].make();
    subject->setDevicesWidget(table.get());
    subject->setDevices({}, {"new"});
    QJsonObject request;
    runToEnd(*subject, [&] { request = bench->answerNext("success"); });
    QCOMPARE(request["method"].toString(), QString(oneForAll[dialog].method));
    QVERIFY(request["destarray"].isArray());
    QCOMPARE(CameraBench::targets(request), QStringList());
    for (int i = 0; i < 3; ++i)
        QCOMPARE(table->device(i).value(oneForAll[dialog].key), QString());
}

void tst_VorlynDeviceSettingsDialog::macDeviceByDevice()
{
    VorlynDeviceMacSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(table.get());
    dialog.setDevices(devices, {"x", "y", "z"});
    QVector<QJsonObject> requests;
    runToEnd(dialog, [&] {
        for (const char *result : {"success", "failure", "success"})
            requests << bench->answerNext(result);
    });
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(requests[i]["method"].toString(), QString("SetMac"));
        QCOMPARE(requests[i]["mac"].toString(), QString("xyz"[i]));
        QCOMPARE(CameraBench::targets(requests[i]), QStringList(QString("cam%1").arg(i)));
    }
    // The rows stay where they are; the one that refused keeps its MAC.
    QCOMPARE(table->device(0).mac(), QString("x"));
    QCOMPARE(table->device(1).mac(), QString("b"));
    QCOMPARE(table->device(2).mac(), QString("z"));
}

void tst_VorlynDeviceSettingsDialog::macWithASilentDevice()
{
    VorlynDeviceMacSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(table.get());
    dialog.setDevices(devices.mid(0, 2), {"x", "y"});
    QElapsedTimer clock;
    runToEnd(dialog, [&] {
        bench->request();
        clock.start();
        bench->answerNext("success");
        QVERIFY(clock.elapsed() > 2500);
    });
    QCOMPARE(table->device(0).mac(), QString("a"));
    QCOMPARE(table->device(1).mac(), QString("y"));
}

void tst_VorlynDeviceSettingsDialog::macForNobody()
{
    VorlynDeviceMacSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(table.get());
    dialog.setDevices({}, {});
    runToEnd(dialog);
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceSettingsDialog::firmwareDeviceByDevice()
{
    UploadSink sink(-5); // nobody reads the outcome
    QTemporaryDir folder;
    QStringList paths;
    for (const char *name : {"one.bin", "two.bin"}) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("image ") + name);
        paths << file.fileName();
    }
    for (VorlynDevice &device : devices) {
        device.setIp("127.0.0.1");
        device.setValue("httpport", QString::number(sink.serverPort()));
    }
    VorlynDeviceFirmwareSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(table.get());
    dialog.setDevices(devices.mid(0, 2), paths.toVector());
    runToEnd(dialog);
    QCOMPARE(sink.uploads.size(), 2);
    QVERIFY(sink.uploads[0].contains("filename=\"one.bin\""));
    QVERIFY(sink.uploads[1].contains("image two.bin"));
    QCOMPARE(table->device(0).ip(), QString("10.77.0.10")); // the table hears nothing
    QVERIFY(bench->isQuiet());
}

// Esc ends no upload, only the row of them. This web server never answers, so the first upload ends
// here by the test's own hand, once the stop flag is up.
void tst_VorlynDeviceSettingsDialog::firmwareStopsBetweenDevices()
{
    class Subject : public VorlynDeviceFirmwareSettingsDialog
    {
    public:
        using VorlynDeviceFirmwareSettingsDialog::VorlynDeviceFirmwareSettingsDialog;
        ~Subject() override { finishThread(); }
        void cancel() override
        {
            VorlynDeviceFirmwareSettingsDialog::cancel();
            VorlynSDK::instance()->cancelUpload();
        }
    };
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    for (VorlynDevice &device : devices) {
        device.setIp("127.0.0.1");
        device.setValue("httpport", QString::number(silent.serverPort()));
    }
    Subject dialog(nullptr);
    dialog.setDevices(devices, QVector<QString>(3, QCoreApplication::applicationFilePath()));
    dialog.start();
    dialog.show();
    QTRY_VERIFY_WITH_TIMEOUT(silent.hasPendingConnections(), 30000);
    silent.nextPendingConnection();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QTest::qWait(CameraPeer::noTimeLost);
    QVERIFY(!silent.hasPendingConnections());
}

void tst_VorlynDeviceSettingsDialog::restore()
{
    VorlynDeviceRestoreSettingsDialog dialog(nullptr); // without a table
    dialog.setDevices(devices.mid(0, 2));
    QJsonObject request;
    runToEnd(dialog, [&] { request = bench->answerNext("failure"); });
    QCOMPARE(request["method"].toString(), QString("ResetDefault"));
    QCOMPARE(request["keepnetwork"], QJsonValue("0"));
    QCOMPARE(CameraBench::targets(request), QStringList({"cam0", "cam1"}));
}

void tst_VorlynDeviceSettingsDialog::tableIsUpdatedBeforeTheEnd()
{
    VorlynDeviceNameSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(table.get());
    dialog.setDevices(devices, {"new"});
    QString nameAtTheEnd;
    connect(&dialog, &QDialog::finished, this, [&] { nameAtTheEnd = table->device(2).name(); });
    runToEnd(dialog, [&] {
        bench->answerNext("success");
        QCOMPARE(table->device(2).name(), QString()); // it crosses over in the event loop only
    });
    QCOMPARE(nameAtTheEnd, QString("new"));
}

// A request for all asks no stop flag: the records change as after a device's silence.
void tst_VorlynDeviceSettingsDialog::escEndsTheWait()
{
    QFETCH(int, dialog);
    const OneForAll &row = oneForAll[dialog];
    const auto subject = row.make();
    subject->setDevicesWidget(table.get());
    subject->setDevices(devices, {"new"});
    QSignalSpy finished(subject.get(), &QDialog::finished);
    subject->start();
    subject->show();
    QVERIFY(!bench->request().isEmpty());
    QVERIFY(bench->isQuiet()); // the job waits
    QElapsedTimer clock;
    clock.start();
    QTest::keyClick(subject.get(), Qt::Key_Escape);
    QVERIFY(clock.elapsed() < 2000);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().toInt(), int(QDialog::Rejected));
    QCoreApplication::sendPostedEvents(subject.get());
    for (int i = 0; i < 3; ++i)
        QCOMPARE(table->device(i).value(row.key), QString(row.resultIsRead ? "" : "new"));
}

void tst_VorlynDeviceSettingsDialog::escEndsTheLoop()
{
    VorlynDeviceMacSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(table.get());
    dialog.setDevices(devices, {"x", "y", "z"});
    dialog.start();
    dialog.show();
    QCOMPARE(CameraBench::targets(bench->answerNext("success")), QStringList("cam0"));
    QCOMPARE(CameraBench::targets(bench->request()), QStringList("cam1"));
    QVERIFY(bench->isQuiet()); // the job waits
    QElapsedTimer clock;
    clock.start();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(clock.elapsed() < 2000);
    QVERIFY(bench->isQuiet());
    // What was done reaches the table as long as the dialog lives.
    QCoreApplication::sendPostedEvents(&dialog);
    QCOMPARE(table->device(0).mac(), QString("x"));
    QCOMPARE(table->device(1).mac(), QString("b"));
    QCOMPARE(table->device(2).mac(), QString("c"));
}

void tst_VorlynDeviceSettingsDialog::destructorEndsTheJob()
{
    QElapsedTimer clock;
    {
        VorlynDeviceMacSettingsDialog dialog(nullptr);
        dialog.setDevicesWidget(table.get());
        dialog.setDevices(devices, {"x", "y", "z"});
        dialog.start();
        QVERIFY(!bench->request().isEmpty());
        QVERIFY(bench->isQuiet()); // the job waits
        clock.start();
    }
    QVERIFY(clock.elapsed() < 2000);
    QVERIFY(bench->isQuiet());
    QCoreApplication::processEvents(); // what the job had queued finds no dialog
    QCOMPARE(table->device(0).mac(), QString("a"));
}

void tst_VorlynDeviceSettingsDialog::withoutSdk_data()
{
    oneForAll_data();
    QTest::newRow("SetMac") << 3;
    QTest::newRow("firmware") << 4;
    QTest::newRow("ResetDefault") << 5;
}

void tst_VorlynDeviceSettingsDialog::withoutSdk()
{
    QFETCH(int, dialog);
    bench.reset();
    QVERIFY(!VorlynSDK::instance());
    const QVector<QString> values = {"x", "y", "z"};
    std::unique_ptr<VorlynDeviceSettingsDialog> subject;
    if (dialog == 4) {
        auto firmware = std::make_unique<VorlynDeviceFirmwareSettingsDialog>(nullptr);
        firmware->setDevices(devices, values);
        subject = std::move(firmware);
    } else if (dialog == 5) {
        auto restore = std::make_unique<VorlynDeviceRestoreSettingsDialog>(nullptr);
        restore->setDevices(devices);
        subject = std::move(restore);
    } else {
        auto value = dialog == 3 ? make<VorlynDeviceMacSettingsDialog>() : oneForAll[dialog].make();
        value->setDevices(devices, values);
        subject = std::move(value);
    }
    runToEnd(*subject); // none has a table, and none asks for it
    subject->cancel();
    QCOMPARE(table->device(0).mac(), QString("a"));
}

QTEST_MAIN(tst_VorlynDeviceSettingsDialog)
#include "tst_VorlynDeviceSettingsDialog.moc"
