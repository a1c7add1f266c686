#include "CameraBench.h"
#include "Devices.h"
#include "DialogRun.h"
#include "VorlynDeviceIpSettingsDialog.h"
#include "VorlynDevicesWidget.h"

#include <QElapsedTimer>

#include <memory>

class tst_VorlynDeviceIpSettingsDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void staticDeviceByDevice();
    void staticWithASilentDevice();
    void staticForNobody();
    void escEndsTheLoop();
    void escWithDhcp();
    void dhcp_data();
    void dhcp();
    void lastSetterDecides();
    void withoutSdk();

private:
    void setStatic(int count);

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<VorlynDeviceIpSettingsDialog> dialog;
    QVector<VorlynDevice> devices;
};

static const char *const keys[] = {"ip", "netmask", "gateway", "dns1", "dns2"};

// The value of a key for device i, as the tests send it.
static QString text(int key, int i)
{
    return QStringLiteral("10.%1.0.%2").arg(key).arg(i);
}

void tst_VorlynDeviceIpSettingsDialog::init()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    table->setDevices(makeDevices({"a", "b", "c"}));
    devices.clear();
    for (int row = 0; row < 3; ++row) {
        devices.append(table->device(row));
        devices[row].setIpMode("DHCP");
    }
    table->updateDevices(devices);
    dialog = std::make_unique<VorlynDeviceIpSettingsDialog>(nullptr);
    dialog->setDevicesWidget(table.get());
}

void tst_VorlynDeviceIpSettingsDialog::cleanup()
{
    dialog.reset();
    table.reset();
    bench.reset();
}

void tst_VorlynDeviceIpSettingsDialog::setStatic(int count)
{
    QVector<QString> lists[5];
    for (int key = 0; key < 5; ++key) {
        for (int i = 0; i < count; ++i)
            lists[key] << text(key, i);
    }
    dialog->setStaticDevices(
        devices.mid(0, count), lists[0], lists[1], lists[2], lists[3], lists[4]);
}

void tst_VorlynDeviceIpSettingsDialog::staticDeviceByDevice()
{
    setStatic(3);
    QVector<QJsonObject> requests;
    runToEnd(*dialog, [&] {
        for (const char *result : {"success", "failure", "success"})
            requests << bench->answerNext(result);
    });
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(requests[i]["method"].toString(), QString("SetIp"));
        QCOMPARE(requests[i]["IpMode"].toString(), QString("static"));
        QCOMPARE(CameraBench::targets(requests[i]), QStringList(QString("cam%1").arg(i)));
        for (int key = 0; key < 5; ++key) {
            QCOMPARE(requests[i][keys[key]].toString(), text(key, i));
            const QString before = key == 0 ? "10.77.0.11" : "";
            QCOMPARE(table->device(i).value(keys[key]), i == 1 ? before : text(key, i));
        }
        QCOMPARE(table->device(i).ipMode(), QString("DHCP")); // until the next search
    }
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceIpSettingsDialog::staticWithASilentDevice()
{
    setStatic(2);
    QElapsedTimer clock;
    runToEnd(*dialog, [&] {
        bench->request();
        clock.start();
        bench->answerNext("success");
        QVERIFY(clock.elapsed() > 2500);
    });
    QCOMPARE(table->device(0).ip(), QString("10.77.0.10"));
    QCOMPARE(table->device(1).ip(), text(0, 1));
}

void tst_VorlynDeviceIpSettingsDialog::staticForNobody()
{
    runToEnd(*dialog); // as it was made
    QVERIFY(bench->isQuiet());
    setStatic(0);
    runToEnd(*dialog);
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceIpSettingsDialog::escEndsTheLoop()
{
    setStatic(3);
    dialog->start();
    dialog->show();
    QVERIFY(!bench->answerNext("success").isEmpty());
    QCOMPARE(CameraBench::targets(bench->request()), QStringList("cam1"));
    QVERIFY(bench->isQuiet()); // the job waits
    QElapsedTimer clock;
    clock.start();
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    QVERIFY(clock.elapsed() < 2000);
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
    QVERIFY(bench->isQuiet());
    // What was done reaches the table as long as the dialog lives.
    QCoreApplication::sendPostedEvents(dialog.get());
    QCOMPARE(table->device(0).ip(), text(0, 0));
    QCOMPARE(table->device(1).ip(), QString("10.77.0.11"));
    QCOMPARE(table->device(2).ip(), QString("10.77.0.12"));
}

// The one request for all asks no stop flag.
void tst_VorlynDeviceIpSettingsDialog::escWithDhcp()
{
    dialog->setDhcpDevices(devices);
    dialog->start();
    dialog->show();
    QVERIFY(!bench->request().isEmpty());
    QVERIFY(bench->isQuiet()); // the job waits
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
    QCoreApplication::sendPostedEvents(dialog.get());
    for (int i = 0; i < 3; ++i)
        QCOMPARE(table->device(i).ipMode(), QString("dhcp"));
}

void tst_VorlynDeviceIpSettingsDialog::dhcp_data()
{
    QTest::addColumn<QString>("result");
    for (const char *result : {"success", "failure", "silence"})
        QTest::newRow(result) << QString(result);
}

void tst_VorlynDeviceIpSettingsDialog::dhcp()
{
    QFETCH(QString, result);
    for (VorlynDevice &device : devices)
        device.setIpMode("static");
    dialog->setDhcpDevices(devices);
    QJsonObject request;
    runToEnd(*dialog, [&] {
        request = bench->request();
        if (result != "silence")
            bench->answer(request, result);
    });
    QCOMPARE(request["method"].toString(), QString("SetIp"));
    QCOMPARE(request["IpMode"].toString(), QString("dhcp"));
    QVERIFY(!request.contains("ip"));
    QCOMPARE(CameraBench::targets(request), QStringList({"cam0", "cam1", "cam2"}));
    QVERIFY(bench->isQuiet());
    for (int i = 0; i < 3; ++i)
        QCOMPARE(table->device(i).ipMode(), QString("dhcp")); // the result is not read
}

void tst_VorlynDeviceIpSettingsDialog::lastSetterDecides()
{
    dialog->setDhcpDevices(devices);
    setStatic(1);
    QJsonObject request;
    runToEnd(*dialog, [&] { request = bench->answerNext("success"); });
    QCOMPARE(request["IpMode"].toString(), QString("static"));
}

void tst_VorlynDeviceIpSettingsDialog::withoutSdk()
{
    bench.reset();
    setStatic(3);
    runToEnd(*dialog);
    dialog->setDhcpDevices(devices);
    runToEnd(*dialog);
    QCOMPARE(table->device(0).ipMode(), QString("DHCP"));
    QCOMPARE(table->device(0).ip(), QString("10.77.0.10"));
}

QTEST_MAIN(tst_VorlynDeviceIpSettingsDialog)
#include "tst_VorlynDeviceIpSettingsDialog.moc"
