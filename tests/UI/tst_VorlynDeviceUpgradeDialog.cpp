#include "Devices.h"
#include "MetaMethods.h"
#include "ModalDriver.h"
#include "OffThread.h"
#include "UpgradeTable.h"
#include "VorlynDeviceUpgradeLoadingDialog.h"
#include "VorlynSDK.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScopeGuard>
#include <QtTest>

#include <memory>

namespace {
VorlynDevice seen(const QString &mac, const QString &appVersion)
{
    VorlynDevice device;
    device.setMac(mac);
    device.setValue("appVersion", appVersion);
    return device;
}
}

class tst_VorlynDeviceUpgradeDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER); }
    void init();
    void cleanup();
    void metaObject();
    void columns_data();
    void columns();
    void rows();
    void newList();
    void layout_data();
    void layout();
    void buttonNeedsBoth();
    void enterStartsNothing();
    void tabLeavesTheTable();
    void baseName_data();
    void baseName();
    void results_data();
    void results();
    void failureKeepsTheVersion();
    void severalRows();
    void resultsWithoutDevices();
    void updateFromAnotherThread();
    void findsTheLast_data();
    void findsTheLast();
    void buttonRunsTheUpgrade();

private:
    QPushButton *button() const { return dialog->findChild<QPushButton *>("upgradeButton"); }

    std::unique_ptr<VorlynDeviceUpgradeDialog> dialog;
    std::unique_ptr<UpgradeTable> table;
};

void tst_VorlynDeviceUpgradeDialog::init()
{
    ZRLocalize::loadLanguage("en");
    dialog = std::make_unique<VorlynDeviceUpgradeDialog>(nullptr);
    table = std::make_unique<UpgradeTable>(*dialog);
    QVector<VorlynDevice> devices = makeDevices({"a", "b", "c"});
    for (VorlynDevice &device : devices) {
        device.setName("camera " + device.mac());
        device.setValue("appVersion", "1.0.0.77");
    }
    dialog->setDevices(devices);
    dialog->setFirmware("C:/fw/1.2.3.bin");
}

void tst_VorlynDeviceUpgradeDialog::cleanup()
{
    table.reset();
    dialog.reset();
}

void tst_VorlynDeviceUpgradeDialog::metaObject()
{
    const QMetaObject &meta = VorlynDeviceUpgradeDialog::staticMetaObject;
    QCOMPARE(meta.superClass()->className(), "QDialog");
    QCOMPARE(ownMethods(meta),
        QStringList({"public slot startUpgrade()", "public slot setDevices(QVector<VorlynDevice>)",
            "public slot setFirmware(QString)", "public slot setUpgrades(QVector<VorlynDevice>)",
            "private slot setupTableWidget()", "private slot updateUpgradeInfo()",
            "private slot findDevice(QVector<VorlynDevice>,VorlynDevice)"}));
    QCOMPARE(
        meta.method(meta.indexOfSlot("findDevice(QVector<VorlynDevice>,VorlynDevice)")).typeName(),
        "const VorlynDevice*");
    QCOMPARE(VorlynDeviceUpgradeLoadingDialog::staticMetaObject.className(), "ZRProgressDialog");
}

void tst_VorlynDeviceUpgradeDialog::columns_data()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << "en";
    QTest::newRow("Chinese") << "cn";
}

void tst_VorlynDeviceUpgradeDialog::columns()
{
    QFETCH(QString, language);
    QVERIFY(ZRLocalize::loadLanguage(language));
    const VorlynDeviceUpgradeDialog fresh(nullptr); // an empty table has its headers too
    const QTableWidget *widget = UpgradeTable(fresh).widget();
    QCOMPARE(widget->rowCount(), 0);
    constexpr struct {
        const char *header;
        int width;
    } expected[] = {
        {"No.", 30}, {"Name", 120}, {"Mac", 120}, {"Upgrade Version", 250}, {"Result", 150}};
    QCOMPARE(widget->columnCount(), 5);
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(
            widget->horizontalHeaderItem(i)->text(), ZRLocalize::translate(expected[i].header));
        QCOMPARE(widget->columnWidth(i), expected[i].width);
    }
    QCOMPARE(fresh.findChild<QPushButton *>("upgradeButton")->text(),
        ZRLocalize::translate("Upgrade Firmware"));
}

void tst_VorlynDeviceUpgradeDialog::rows()
{
    QCOMPARE(table->widget()->rowCount(), 3);
    for (int row = 0; row < 3; ++row) {
        const QString mac = QString("abc").mid(row, 1);
        const QStringList expected = {
            QString::number(row + 1), "camera " + mac, mac, "1.0.0", QString()};
        for (int column = 0; column < 5; ++column) {
            QCOMPARE(table->text(row, column), expected[column]);
            QCOMPARE(table->widget()->item(row, column)->textAlignment(), int(Qt::AlignCenter));
        }
    }
    QCOMPARE(table->widget()->editTriggers(), QAbstractItemView::NoEditTriggers);
    QVERIFY(table->widget()->verticalHeader()->isHidden());
}

// Rows begin anew, however many there were.
void tst_VorlynDeviceUpgradeDialog::newList()
{
    dialog->setUpgrades({seen("a", "2.0.0.1")});
    QVERIFY(table->succeeded(0));
    dialog->setDevices(makeDevices({"a", "b", "c", "d"}));
    QCOMPARE(table->widget()->rowCount(), 4);
    QCOMPARE(table->text(0, 4), QString());
    QCOMPARE(table->text(3, 2), QString("d"));
    dialog->setDevices({});
    QCOMPARE(table->widget()->rowCount(), 0);
    QCOMPARE(table->widget()->columnCount(), 5);
}

void tst_VorlynDeviceUpgradeDialog::layout_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("smallest") << QSize(400, 200);
    QTest::newRow("first") << QSize(720, 400);
    QTest::newRow("large") << QSize(1600, 900);
}

void tst_VorlynDeviceUpgradeDialog::layout()
{
    QFETCH(QSize, size);
    QCOMPARE(dialog->size(), QSize(720, 400));
    dialog->resize(size);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    QTRY_COMPARE(dialog->size(), size);
    const QRect inside(10, 10, size.width() - 20, size.height() - 20);
    const QRect tableRect = table->widget()->geometry();
    const QRect buttonRect = button()->geometry();
    QCOMPARE(tableRect | buttonRect, inside);
    QCOMPARE(tableRect.width(), inside.width());
    QCOMPARE(buttonRect.bottomRight(), inside.bottomRight());
    QCOMPARE(buttonRect.top(), tableRect.bottom() + 11);
    QVERIFY(button()->sizeHint().width() <= buttonRect.width());
    // Every column shows without scrolling, from the first size on.
    if (size.width() >= 720)
        QVERIFY(
            table->widget()->viewport()->width() >= table->widget()->horizontalHeader()->length());
}

void tst_VorlynDeviceUpgradeDialog::buttonNeedsBoth()
{
    VorlynDeviceUpgradeDialog fresh(nullptr);
    const auto *start = fresh.findChild<QPushButton *>("upgradeButton");
    QVERIFY(!start->isEnabled());
    fresh.setFirmware("1.2.3.bin");
    QVERIFY(!start->isEnabled());
    fresh.setDevices(makeDevices({"a"}));
    QVERIFY(start->isEnabled());
    fresh.setFirmware("");
    QVERIFY(!start->isEnabled());
    fresh.setFirmware("1.2.3.bin");
    fresh.setDevices({});
    QVERIFY(!start->isEnabled());
}

void tst_VorlynDeviceUpgradeDialog::enterStartsNothing()
{
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    QVERIFY(button()->isEnabled());
    QWidget *const places[] = {table->widget(), button()};
    for (QWidget *focused : places) {
        focused->setFocus();
        QTRY_VERIFY(focused->hasFocus());
        for (Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            QTest::keyClick(focused, key);
            QVERIFY(!dialog->hasRun());
            QVERIFY(dialog->isVisible());
        }
    }
    button()->setFocus();
    QTest::keyClick(button(), Qt::Key_Space); // without a network it ends at once
    QVERIFY(dialog->hasRun());
}

void tst_VorlynDeviceUpgradeDialog::tabLeavesTheTable()
{
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    table->widget()->setFocus();
    table->widget()->setCurrentCell(1, 2);
    QTest::keyClick(table->widget(), Qt::Key_Tab);
    QVERIFY(button()->hasFocus());
    QTest::keyClick(button(), Qt::Key_Tab);
    QVERIFY(table->widget()->hasFocus());
    QCOMPARE(table->widget()->currentColumn(), 2);
}

void tst_VorlynDeviceUpgradeDialog::baseName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    constexpr const char *rows[][3] = {
        {"a folder", "C:/fw/1.2.3.bin", "1.2.3"},
        {"slash at the end", "C:/fw/", "C:/fw/"},
        {"no dot", "C:/fw/image", "image"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString(row[1]) << QString(row[2]);
}

void tst_VorlynDeviceUpgradeDialog::baseName()
{
    QFETCH(QString, path);
    QTEST(VorlynDeviceUpgradeDialog::firmwareBaseName(path), "name");
}

void tst_VorlynDeviceUpgradeDialog::results_data()
{
    QTest::addColumn<QVector<VorlynDevice>>("upgrades");
    QTest::addColumn<bool>("success");
    QTest::addColumn<QString>("version");
    QTest::newRow("the version of the file")
        << QVector<VorlynDevice>{seen("a", "1.2.3.9")} << true << "1.2.3";
    QTest::newRow("another version")
        << QVector<VorlynDevice>{seen("a", "0.9.0.1")} << true << "0.9.0";
    QTest::newRow("still the old one")
        << QVector<VorlynDevice>{seen("a", "1.0.0.77")} << true << "1.0.0";
    QTest::newRow("no version") << QVector<VorlynDevice>{seen("a", "")} << true << "";
    QTest::newRow("nobody") << QVector<VorlynDevice>() << false << "1.0.0";
    QTest::newRow("somebody else")
        << QVector<VorlynDevice>{seen("x", "1.2.3.9")} << false << "1.0.0";
    QTest::newRow("MAC in capitals")
        << QVector<VorlynDevice>{seen("A", "1.2.3.9")} << false << "1.0.0";
    QTest::newRow("the last one wins") << QVector<VorlynDevice>{seen("a", "4.0.0.1"),
        seen("x", "5.0.0.1"), seen("a", "6.0.0.1"), seen("y", "7.0.0.1")}
                                       << true << "6.0.0";
}

void tst_VorlynDeviceUpgradeDialog::results()
{
    QFETCH(QVector<VorlynDevice>, upgrades);
    QFETCH(bool, success);
    dialog->setUpgrades(upgrades);
    QCOMPARE(table->succeeded(0), success);
    QCOMPARE(table->failed(0), !success);
    QTEST(table->version(0), "version");
    for (int column = 0; column < 3; ++column) // the rest of the row stands
        QCOMPARE(table->text(0, column), QStringList({"1", "camera a", "a"})[column]);
}

void tst_VorlynDeviceUpgradeDialog::failureKeepsTheVersion()
{
    dialog->setUpgrades({seen("a", "2.0.0.1")});
    dialog->setUpgrades({});
    QVERIFY(table->failed(0));
    QCOMPARE(table->version(0), QString("2.0.0"));
    dialog->setUpgrades({seen("a", "3.0.0.1")});
    QVERIFY(table->succeeded(0)); // and black again
    QCOMPARE(table->version(0), QString("3.0.0"));
}

void tst_VorlynDeviceUpgradeDialog::severalRows()
{
    VorlynDevice moved = seen("c", "1.2.3.9");
    moved.setIp("10.77.0.99");
    dialog->setUpgrades({moved, seen("a", "1.2.3.9")});
    QVERIFY(table->succeeded(0));
    QVERIFY(table->failed(1));
    QVERIFY(table->succeeded(2));
}

void tst_VorlynDeviceUpgradeDialog::resultsWithoutDevices()
{
    dialog->setDevices({});
    dialog->setUpgrades({seen("a", "1.2.3.9")});
    QCOMPARE(table->widget()->rowCount(), 0);
}

void tst_VorlynDeviceUpgradeDialog::updateFromAnotherThread()
{
    const OffThread worker([this] {
        QMetaObject::invokeMethod(dialog.get(), "updateUpgradeInfo", Qt::DirectConnection);
    });
    QVERIFY(worker.isDoneWithoutEvents());
    QCOMPARE(table->text(0, 4), QString());
    QCoreApplication::sendPostedEvents(dialog.get());
    QVERIFY(table->failed(0));
}

void tst_VorlynDeviceUpgradeDialog::findsTheLast_data()
{
    QTest::addColumn<QString>("mac");
    QTest::addColumn<int>("index");
    QTest::newRow("once") << "b" << 1;
    QTest::newRow("twice") << "a" << 2;
    QTest::newRow("in capitals") << "A" << -1;
    QTest::newRow("unknown") << "x" << -1;
}

void tst_VorlynDeviceUpgradeDialog::findsTheLast()
{
    QFETCH(QString, mac);
    QFETCH(int, index);
    const QVector<VorlynDevice> list = makeDevices({"a", "b", "a"});
    const VorlynDevice *found = nullptr;
    QVERIFY(QMetaObject::invokeMethod(dialog.get(), "findDevice",
        Q_RETURN_ARG(const VorlynDevice *, found), Q_ARG(QVector<VorlynDevice>, list),
        Q_ARG(VorlynDevice, seen(mac, ""))));
    QCOMPARE(found, index < 0 ? nullptr : &list[index]);
}

// Without a network: no upload succeeds and nobody answers.
void tst_VorlynDeviceUpgradeDialog::buttonRunsTheUpgrade()
{
    VorlynSDK::createInstance();
    const auto end = qScopeGuard([] { VorlynSDK::destroyInstance(); });
    dialog->setFirmware("/nowhere/1.2.3.bin");
    bool parentless = false;
    QString said;
    ModalDriver<VorlynDeviceUpgradeLoadingDialog> driver(
        [&](VorlynDeviceUpgradeLoadingDialog &loading) {
            parentless = !loading.parent();
            const auto *label = loading.findChild<QLabel *>("messageLabel");
            QTRY_COMPARE(label->text(), ZRLocalize::translate("Upgrading") + " camera c");
            said = label->text();
            loading.reject();
        });
    button()->click();
    QVERIFY(parentless);
    QVERIFY(!said.isEmpty());
    QTRY_VERIFY(table->failed(2));
    QVERIFY(table->failed(0) && table->failed(1));
}

QTEST_MAIN(tst_VorlynDeviceUpgradeDialog)
#include "tst_VorlynDeviceUpgradeDialog.moc"
