#include "ModalDriver.h"
#include "QuickUpgrade.h"
#include "UpgradeBench.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include <memory>

// An upgrade of cameras that behave as those of a house do, from the search that finds them to the
// table that tells what came of it.
class tst_Upgrade : public QObject
{
    Q_OBJECT

private slots:
    void init() { bench = std::make_unique<UpgradeBench>(); }
    void cleanup();
    void sixCameras();
    void byTheButton();

private:
    std::unique_ptr<UpgradeBench> bench;
};

void tst_Upgrade::cleanup()
{
    if (FleetProcess *fleet = bench->fleet()) {
        QVERIFY2(fleet->stop(), fleet->errors());
        QVERIFY(fleet->events("unused-rule").isEmpty());
    }
    bench.reset();
}

void tst_Upgrade::sixCameras()
{
    const auto &expected = UpgradeBench::sixResults;
    const int count = int(expected.size());
    QVERIFY(bench->open(count, UpgradeBench::sixCameras()));
    QVERIFY(bench->listAll());

    QuickUpgrade upgrade(bench->dialog(), 25);
    upgrade.start();
    QCOMPARE(upgrade.exec(), int(QDialog::Accepted));
    QCOMPARE(upgrade.seconds, 180.0);
    const UpgradeTable &table = bench->table();
    for (int row = 0; row < count; ++row) {
        QCOMPARE(table.succeeded(row), expected[row].succeeded);
        QCOMPARE(table.failed(row), !expected[row].succeeded);
        QCOMPARE(table.version(row), QString(expected[row].version));
    }

    QVector<int> order; // a broken upload is tried again
    for (const QJsonObject &upload : bench->fleet()->events("upload")) {
        const int camera = upload["camera"].toInt();
        QCOMPARE(upload["complete"].toBool(), camera != 3);
        QCOMPARE(upload["filename"].toString(), QString("2.5.1.bin"));
        if (order.isEmpty() || order.last() != camera)
            order.append(camera);
    }
    QCOMPARE(order, QVector<int>({1, 2, 3, 4, 5, 6}));
    QStringList addresses;
    for (const QJsonObject &back : bench->fleet()->events("back"))
        addresses << back["ip"].toString();
    addresses.sort();
    QCOMPARE(addresses, QStringList({"10.77.0.11", "10.77.0.16", "10.77.0.90"}));
}

// In real time, with cameras that are quick to restart.
void tst_Upgrade::byTheButton()
{
    QVERIFY(bench->open(2, {}));
    QVERIFY(bench->listAll());
    QString said;
    ModalDriver<VorlynDeviceUpgradeLoadingDialog> driver(
        [&said](VorlynDeviceUpgradeLoadingDialog &loading) {
            const auto *label = loading.findChild<QLabel *>("messageLabel");
            QTRY_VERIFY_WITH_TIMEOUT(label->text().contains("17"), 30000);
            said = label->text();
        });
    QElapsedTimer clock;
    clock.start();
    bench->dialog().findChild<QPushButton *>("upgradeButton")->click();
    const qint64 elapsed = clock.elapsed();
    QVERIFY2(elapsed >= 15000 && elapsed < 60000, qPrintable(QString::number(elapsed)));
    QVERIFY2(said.startsWith("Waiting for Devices Restart 17") && said.endsWith("(s)"),
        qPrintable(said));
    for (int row = 0; row < 2; ++row) {
        QVERIFY(bench->table().succeeded(row));
        QCOMPARE(bench->table().version(row), QString("2.5.1"));
    }
}

QTEST_MAIN(tst_Upgrade)
#include "tst_Upgrade.moc"
