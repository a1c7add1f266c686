#include "ZRNetworkDialog.h"

#include "MetaMethods.h"
#include "ModalDriver.h"
#include "SettingsFile.h"
#include "TestNetwork.h"
#include "ZRLocalize.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

// Runs in a private network of its own: veth-a has two IPv4 addresses there, veth-b has one.
class tst_ZRNetworkDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void metaObject();
    void textsAreTranslated();
    void geometry_data();
    void geometry();
    void position_data();
    void position();
    void rows();
    void listingAgainReplacesTheRows();
    void interfaceWithoutAddress();
    void selectsCurrentEntry_data();
    void selectsCurrentEntry();
    void firstOfEqualEntriesIsSelected();
    void selectedInterface();
    void okStoresTheChoice();
    void otherRoadsStoreNothing_data();
    void otherRoadsStoreNothing();
    void storesBeforeItEnds();
    void okWithoutSelection();
    void emptyList();
    void choosingAloneStoresNothing();

private:
    SettingsFile settings;
    QNetworkInterface a, b;
};

namespace {
QComboBox *comboBox(const ZRNetworkDialog &dialog)
{
    return dialog.findChild<QComboBox *>("networkComboBox");
}

QPushButton *okButton(const ZRNetworkDialog &dialog)
{
    return dialog.findChild<QPushButton *>("okButton");
}

QNetworkAddressEntry entryOf(const QNetworkInterface &interface, const QString &ip)
{
    for (const QNetworkAddressEntry &entry : interface.addressEntries()) {
        if (entry.ip() == QHostAddress(ip))
            return entry;
    }
    return {};
}

bool hasIPv6(const QNetworkInterface &interface)
{
    for (const QNetworkAddressEntry &entry : interface.addressEntries()) {
        if (entry.ip().protocol() == QAbstractSocket::IPv6Protocol)
            return true;
    }
    return false;
}

using Road = std::function<void(ZRNetworkDialog &)>;
}
Q_DECLARE_METATYPE(Road)

void tst_ZRNetworkDialog::initTestCase()
{
    QVERIFY(TestNetwork::run("ip addr add 10.77.0.9/24 dev veth-a"));
    QTRY_VERIFY(hasIPv6(TestNetwork::interface("veth-a")));
    a = TestNetwork::interface("veth-a");
    b = TestNetwork::interface("veth-b");
    QVERIFY(a.isValid() && b.isValid());
}

void tst_ZRNetworkDialog::init()
{
    settings.remove();
    ZRLocalize::setLanguageFolder(QString());
    ZRLocalize::loadLanguage("none");
}

void tst_ZRNetworkDialog::metaObject()
{
    QCOMPARE(ownMethods(ZRNetworkDialog::staticMetaObject),
        (QStringList{
            "private slot onClickOkButton(bool)", "private slot onComoBoxIndexChanged(int)"}));
}

void tst_ZRNetworkDialog::textsAreTranslated()
{
    QTemporaryDir folder;
    QFile file(folder.filePath("xx.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("please select network=Netz?\nok=Gut\n");
    file.close();
    ZRLocalize::setLanguageFolder(folder.path());
    QVERIFY(ZRLocalize::loadLanguage("xx"));

    const ZRNetworkDialog dialog(nullptr);
    const auto *title = dialog.findChild<QLabel *>("titleLabel");
    QCOMPARE(title->text(), QStringLiteral("Netz?"));
    QCOMPARE(title->alignment(), Qt::AlignCenter);
    QCOMPARE(okButton(dialog)->text(), QStringLiteral("Gut"));
}

void tst_ZRNetworkDialog::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("child");
    QTest::addColumn<QRect>("expected");
    const struct {
        QSize size;
        QRect title, comboBox, ok;
    } rows[] = {
        {{500, 200}, {0, 0, 500, 40}, {10, 60, 480, 30}, {220, 140, 60, 40}},
        {{300, 101}, {0, 0, 300, 40}, {10, 11, 280, 30}, {120, 41, 60, 40}},
        {{641, 303}, {0, 0, 641, 40}, {10, 111, 621, 30}, {290, 243, 60, 40}},
    };
    for (const auto &row : rows) {
        QTest::addRow("title, %d", row.size.width()) << row.size << "titleLabel" << row.title;
        QTest::addRow("list, %d", row.size.width())
            << row.size << "networkComboBox" << row.comboBox;
        QTest::addRow("ok, %d", row.size.width()) << row.size << "okButton" << row.ok;
    }
}

void tst_ZRNetworkDialog::geometry()
{
    QFETCH(QSize, size);
    QFETCH(QString, child);
    QFETCH(QRect, expected);
    ZRNetworkDialog dialog(nullptr);
    QCOMPARE(dialog.size(), QSize(500, 200));
    dialog.resize(size);
    dialog.show();
    QCOMPARE(dialog.findChild<QWidget *>(child)->geometry(), expected);
}

void tst_ZRNetworkDialog::position_data()
{
    QTest::addColumn<QSize>("parent");
    QTest::addColumn<QPoint>("expected");
    QTest::newRow("larger parent") << QSize(1001, 701) << QPoint(250, 250);
    QTest::newRow("smaller parent") << QSize(301, 101) << QPoint(-99, -49);
    QTest::newRow("no width") << QSize(0, 600) << QPoint(0, 0);
    QTest::newRow("no height") << QSize(800, 0) << QPoint(0, 0);
}

void tst_ZRNetworkDialog::position()
{
    QFETCH(QSize, parent);
    QFETCH(QPoint, expected);
    QWidget window;
    window.resize(parent);
    QCOMPARE(ZRNetworkDialog(&window).pos(), expected);
    QCOMPARE(ZRNetworkDialog(nullptr).pos(), QPoint(0, 0));
}

void tst_ZRNetworkDialog::rows()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({b, a});
    const QComboBox *list = comboBox(dialog);
    QCOMPARE(list->count(), 3); // no IPv6 address among them
    QCOMPARE(list->itemText(0), QStringLiteral("veth-b 10.88.0.1"));
    QCOMPARE(list->itemText(1), QStringLiteral("veth-a 10.77.0.1"));
    QCOMPARE(list->itemText(2), QStringLiteral("veth-a 10.77.0.9"));
    QCOMPARE(list->itemData(0), QVariant(0));
    QCOMPARE(list->itemData(1), QVariant(1));
    QCOMPARE(list->itemData(2), QVariant(1));
    QCOMPARE(list->currentIndex(), 0);
}

void tst_ZRNetworkDialog::listingAgainReplacesTheRows()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({a, b});
    dialog.setInterfaces({b});
    QCOMPARE(comboBox(dialog)->count(), 1);

    QNetworkInterface interface;
    QNetworkAddressEntry entry;
    QCOMPARE(dialog.selectedInterface(interface, entry), 0);
    QCOMPARE(interface.humanReadableName(), QStringLiteral("veth-b"));
    QCOMPARE(entry.ip(), QHostAddress("10.88.0.1"));
}

void tst_ZRNetworkDialog::interfaceWithoutAddress()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({QNetworkInterface(), b});
    QCOMPARE(comboBox(dialog)->count(), 1);
    QCOMPARE(comboBox(dialog)->itemData(0), QVariant(1));
}

void tst_ZRNetworkDialog::selectsCurrentEntry_data()
{
    QTest::addColumn<QNetworkAddressEntry>("entry");
    QTest::addColumn<int>("row");
    QTest::newRow("first") << entryOf(a, "10.77.0.1") << 0;
    QTest::newRow("second of an interface") << entryOf(a, "10.77.0.9") << 1;
    QTest::newRow("other interface") << entryOf(b, "10.88.0.1") << 2;
    QTest::newRow("same address, other netmask") << TestNetwork::entry("10.77.0.9") << 0;
    QTest::newRow("none of them") << QNetworkAddressEntry() << 0;
}

void tst_ZRNetworkDialog::selectsCurrentEntry()
{
    QFETCH(QNetworkAddressEntry, entry);
    QFETCH(int, row);
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({a, b});
    dialog.setCurrentEntry(QNetworkInterface(), entry); // the interface isn't looked at
    QCOMPARE(comboBox(dialog)->currentIndex(), row);
}

void tst_ZRNetworkDialog::firstOfEqualEntriesIsSelected()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({b, a, a});
    dialog.setCurrentEntry(a, entryOf(a, "10.77.0.9"));
    QCOMPARE(comboBox(dialog)->currentIndex(), 2);
}

void tst_ZRNetworkDialog::selectedInterface()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({b, a});
    comboBox(dialog)->setCurrentIndex(2);
    QNetworkInterface interface;
    QNetworkAddressEntry entry;
    QCOMPARE(dialog.selectedInterface(interface, entry), 0);
    QCOMPARE(interface.humanReadableName(), QStringLiteral("veth-a"));
    QCOMPARE(entry, entryOf(a, "10.77.0.9"));

    comboBox(dialog)->setCurrentIndex(-1);
    QCOMPARE(dialog.selectedInterface(interface, entry), -1);
    QCOMPARE(interface.humanReadableName(), QStringLiteral("veth-a")); // left alone
    QCOMPARE(entry, entryOf(a, "10.77.0.9"));
}

void tst_ZRNetworkDialog::okStoresTheChoice()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({a, b});
    dialog.setCurrentEntry(b, entryOf(b, "10.88.0.1"));
    QCOMPARE(comboBox(dialog)->currentIndex(), 2);
    ModalDriver<ZRNetworkDialog> driver([](ZRNetworkDialog &shown) {
        comboBox(shown)->setCurrentIndex(1);
        QTest::mouseClick(okButton(shown), Qt::LeftButton);
    });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QCOMPARE(
        settings.read(), (QVariantMap{{"network name", "veth-a"}, {"network ip", "10.77.0.9"}}));

    QNetworkInterface interface;
    QNetworkAddressEntry entry;
    QCOMPARE(dialog.selectedInterface(interface, entry), 0);
    QCOMPARE(interface.humanReadableName(), QStringLiteral("veth-a"));
    QCOMPARE(entry.ip(), QHostAddress("10.77.0.9"));
}

void tst_ZRNetworkDialog::otherRoadsStoreNothing_data()
{
    QTest::addColumn<Road>("road");
    QTest::newRow("Esc") << Road([](ZRNetworkDialog &d) { QTest::keyClick(&d, Qt::Key_Escape); });
    QTest::newRow("close") << Road([](ZRNetworkDialog &d) { d.close(); });
}

void tst_ZRNetworkDialog::otherRoadsStoreNothing()
{
    QFETCH(Road, road);
    const QVariantMap stored{{"network name", "old"}, {"network ip", "1.2.3.4"}};
    settings.write(stored);
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({a, b});
    ModalDriver<ZRNetworkDialog> driver([&](ZRNetworkDialog &shown) {
        comboBox(shown)->setCurrentIndex(1);
        road(shown);
    });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QCOMPARE(settings.read(), stored);
}

void tst_ZRNetworkDialog::storesBeforeItEnds()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({b});
    QVariantMap atEnd;
    connect(&dialog, &QDialog::finished, this, [&] { atEnd = settings.read(); });
    dialog.show();
    okButton(dialog)->click();
    QCOMPARE(atEnd, (QVariantMap{{"network name", "veth-b"}, {"network ip", "10.88.0.1"}}));
}

void tst_ZRNetworkDialog::okWithoutSelection()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({a, b});
    ModalDriver<ZRNetworkDialog> driver([](ZRNetworkDialog &shown) {
        comboBox(shown)->setCurrentIndex(-1);
        okButton(shown)->click();
    });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QVERIFY(settings.read().isEmpty());
}

void tst_ZRNetworkDialog::emptyList()
{
    const QVariantMap stored{{"network name", "old"}, {"network ip", "1.2.3.4"}};
    settings.write(stored);
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({});
    QCOMPARE(comboBox(dialog)->count(), 0);
    ModalDriver<ZRNetworkDialog> driver([](ZRNetworkDialog &shown) { okButton(shown)->click(); });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QCOMPARE(settings.read(), stored);

    QNetworkInterface interface;
    QNetworkAddressEntry entry;
    QCOMPARE(dialog.selectedInterface(interface, entry), -1);
    QVERIFY(!interface.isValid());
    QVERIFY(entry.ip().isNull());
}

void tst_ZRNetworkDialog::choosingAloneStoresNothing()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces({a, b});
    dialog.show();
    comboBox(dialog)->setCurrentIndex(2);
    QVERIFY(settings.read().isEmpty());
    QVERIFY(dialog.isVisible());
}

QTEST_MAIN(tst_ZRNetworkDialog)
#include "tst_ZRNetworkDialog.moc"
