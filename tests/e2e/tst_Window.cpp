#include "MainWindow.h"

#include "CVTableWidget.h"
#include "CVWidget.h"
#include "FileChoice.h"
#include "FleetProcess.h"
#include "HostProcess.h"
#include "LogCatcher.h"
#include "MediaButton.h"
#include "ModalDriver.h"
#include "SettingsFile.h"
#include "Startup.h"
#include "ThisProcess.h"
#include "VorlynDeviceIPInfoDialog.h"
#include "VorlynDeviceIPToolWidget.h"
#include "VorlynDeviceIpSettingsDialog.h"
#include "VorlynDeviceSettingsDialog.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "VorlynSearchDialog.h"
#include "WindowHeaderWidget.h"
#include "ZRAlertDialog.h"
#include "ZRLabel.h"
#include "ZRNetworkDialog.h"
#include "ZRSettingsDialog.h"

#include <QComboBox>
#include <QCursor>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScopedPointer>
#include <QSet>
#include <QtTest>

// The whole window at work on simulated cameras, both sides looked at: what the cameras were told
// and what the operator sees.
class tst_Window : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void search();
    void screen();
    void selectAndRename();
    void staticAddress();
    void dhcp();
    void restore();
    void restoreRefused();
    void upgrade_data();
    void upgrade();
    void missingFirmwareFile();
    void network();
    void language();
    void searchThatFindsNothing();
    void cancelledSearch_data();
    void cancelledSearch();
    void cancelledWrite_data();
    void cancelledWrite();
    void cancelledUpload_data();
    void cancelledUpload();
    void silentCameraEndsByItself();

private:
    void open(const QJsonObject &ruleOfTheFirst = {});
    void searchAgain() { emit header()->searchButton->clicked(); }
    void click(const char *button) const
    {
        QTest::mouseClick(panel()->findChild<QPushButton *>(button), Qt::LeftButton);
    }
    QString cell(int row, int column) const
    {
        const auto *widget = dynamic_cast<CVWidget *>(table()->cellWidget(row, column));
        return widget ? widget->text() : QString();
    }
    QString label(const char *name) const { return panel()->findChild<QLabel *>(name)->text(); }
    QLineEdit *nameEdit() const { return panel()->findChild<QLineEdit *>("nameEdit"); }
    QString versionShown() const
    {
        return panel()->findChild<ZRLabel *>("versionValueLabel")->text();
    }
    VorlynDevicesWidget *devices() const
    {
        return window->findChild<VorlynDevicesWidget *>("devicesWidget");
    }
    CVTableWidget *table() const { return devices()->tableWidget(); }
    VorlynDeviceIPToolWidget *panel() const
    {
        return window->findChild<VorlynDeviceIPToolWidget *>("contentWidget");
    }
    WindowHeaderWidget *header() const { return window->findChild<WindowHeaderWidget *>("header"); }
    QRect areaOf(const QWidget *part) const; // in the window
    // The window as another program sees it. The file stays.
    QImage shot() const;
    // The style of Windows draws a header straight into the window's picture, and on that Qt writes
    // darker than on a picture that is grabbed: there it has to be in the same places only.
    QImage comparable(const QImage &whole, const QRect &area) const;
    void showOnScreen();
    // The one request of a method that reached the cameras, less its envelope, which is checked.
    QJsonObject onlyRequest(const QString &method, const QJsonArray &targets) const;

    QScopedPointer<FleetProcess> fleet;
    QScopedPointer<MainWindow> window;
};

namespace {
const QString workstation = "0200000000AA"; // the MAC of veth-a

void setText(QDialog *dialog, const char *edit, const QString &text)
{
    dialog->findChild<QLineEdit *>(edit)->setText(text);
}

void press(QDialog *dialog, const char *button)
{
    QTest::mouseClick(dialog->findChild<QPushButton *>(button), Qt::LeftButton);
}
}

void tst_Window::initTestCase()
{
    const QString language = QCoreApplication::applicationDirPath() + "/language";
    QDir(language).removeRecursively();
    QVERIFY(QDir().mkpath(language));
    for (const char *name : {"/en.txt", "/cn.txt"})
        QVERIFY(QFile::copy(QStringLiteral(LANGUAGE_FOLDER) + name, language + name));
}

void tst_Window::init()
{
    SettingsFile().write({{"langage", "en"}, {"search seconds", 1}, {"network name", "veth-a"}});
    fleet.reset(new FleetProcess("cam-a", 8, "10.77.0.11"));
}

void tst_Window::open(const QJsonObject &ruleOfTheFirst)
{
    QJsonArray cameras = {FleetProcess::unhurried()};
    if (!ruleOfTheFirst.isEmpty())
        cameras.append(QJsonObject{{"camera", 1}, {"rules", QJsonArray{ruleOfTheFirst}}});
    fleet->setScenario({{"cameras", cameras}});
    QVERIFY(fleet->start());
    initGolbals();
    window.reset(new MainWindow);
}

void tst_Window::cleanup()
{
    window.reset();
    VorlynSDK::destroyInstance();
    QVERIFY2(fleet->stop(), fleet->errors());
    fleet.reset();
}

QJsonObject tst_Window::onlyRequest(const QString &method, const QJsonArray &targets) const
{
    const QVector<QJsonObject> requests = fleet->requests(method);
    if (requests.size() != 1) {
        qWarning("%d requests of the method %s", requests.size(), qPrintable(method));
        return QJsonObject();
    }
    QJsonObject request = requests.first();
    const bool good = request.take("method") == method && request.take("srcid") == workstation
        && request.take("destarray") == targets && request.take("id").isDouble();
    return good ? request : QJsonObject();
}

void tst_Window::search()
{
    open();
    QCOMPARE(table()->rowCount(), 8);
    for (int row = 0; row < 8; ++row) {
        QCOMPARE(cell(row, 1), QString::number(row + 1));
        QCOMPARE(cell(row, 2), QString("02:56:4C:00:00:0%1").arg(row + 1));
        QCOMPARE(cell(row, 3), QString("10.77.0.%1").arg(11 + row));
    }
    // One datagram, heard by all eight.
    const QVector<QJsonObject> requests = fleet->requests("search");
    QCOMPARE(requests.size(), 8);
    const QJsonObject expected = {{"id", 0}, {"method", "search"}, {"user", "Windows IP Tool"},
        {"srcid", workstation}, {"destarray", QJsonArray{"all"}}};
    for (const QJsonObject &request : requests)
        QCOMPARE(request, expected);
}

QRect tst_Window::areaOf(const QWidget *part) const
{
    return QRect(part->mapTo(window.data(), QPoint()), part->size());
}

QImage tst_Window::shot() const
{
    const QString file = QCoreApplication::applicationDirPath() + "/window.png";
    HostProcess::run("import", {"-silent", "-window", "root", HostProcess::path(file)});
    const QRect place(window->mapToGlobal(QPoint()), window->size());
    return QImage(file).copy(place).convertToFormat(QImage::Format_RGB32);
}

QImage tst_Window::comparable(const QImage &whole, const QRect &area) const
{
    QImage picture = whole.convertToFormat(QImage::Format_RGB32);
    const QRect texts = areaOf(table()->horizontalHeader()).translated(-area.topLeft());
    const QRect themed = texts & picture.rect();
    if (ThisProcess::inWine() && !themed.isEmpty()) {
        const QImage written = picture.copy(themed).createMaskFromColor(qRgb(255, 255, 255));
        QPainter(&picture).drawImage(themed.topLeft(), written);
    }
    return picture;
}

// What came of it all on the screen.
void tst_Window::showOnScreen()
{
    window->show();
    QTRY_COMPARE(window->width(), 1600);
    QCursor::setPos(QRect(window->mapToGlobal(QPoint()), window->size()).center());
    for (QWidget *part : QVector<QWidget *>{header(), devices(), panel()}) {
        const QRect area = areaOf(part);
        const auto isSeen = [&] {
            return comparable(shot().copy(area), area)
                == comparable(window->grab(area).toImage(), area);
        };
        QTRY_VERIFY2(isSeen(), part->metaObject()->className());
    }
}

// Something is written in the rows of all eight cameras, and below them nothing.
void tst_Window::screen()
{
    open();
    showOnScreen();
    const QImage picture = shot();
    const auto colors = [&](int row) {
        const QRect cells(0, table()->rowViewportPosition(0) + 30 * row, 200, 30);
        const QPoint corner = table()->viewport()->mapTo(window.data(), cells.topLeft());
        const QImage image = picture.copy(QRect(corner, cells.size()).adjusted(2, 2, -2, -2));
        QSet<QRgb> found;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                found.insert(image.pixel(x, y));
        return found.size();
    };
    for (int row = 0; row < 8; ++row)
        QVERIFY2(colors(row) > 5, qPrintable(QString::number(row)));
    QCOMPARE(colors(8), 1);
}

void tst_Window::selectAndRename()
{
    open();
    devices()->setCurrentCell(4, 2);
    const VorlynDevice chosen = panel()->device();
    QCOMPARE(chosen.mac(), cell(4, 2));
    QCOMPARE(nameEdit()->text(), chosen.name());
    QVERIFY(!chosen.name().isEmpty());
    const QString neighbour = devices()->device(3).name();

    nameEdit()->setText(QString::fromUtf8("二号床 Crib 2"));
    click("nameSetButton");
    const QJsonObject expected = {{"name", QString::fromUtf8("二号床 Crib 2")}};
    QCOMPARE(onlyRequest("SetName", {chosen.srcid()}), expected);
    QCOMPARE(devices()->device(4).name(), QString::fromUtf8("二号床 Crib 2"));
    QCOMPARE(devices()->device(3).name(), neighbour);

    searchAgain();
    devices()->setCurrentCell(4, 2);
    QCOMPARE(nameEdit()->text(), QString::fromUtf8("二号床 Crib 2"));
    showOnScreen();
}

void tst_Window::staticAddress()
{
    open();
    devices()->setCurrentCell(1, 2);
    const ModalDriver<VorlynDeviceIPInfoDialog> driver([](VorlynDeviceIPInfoDialog &dialog) {
        dialog.findChild<QComboBox *>("modeComboBox")->setCurrentIndex(1);
        setText(&dialog, "ipEdit", "10.77.0.99");
        setText(&dialog, "netmaskEdit", "255.255.255.0");
        setText(&dialog, "gatewayEdit", "10.77.0.1");
        setText(&dialog, "dns1Edit", "");
        setText(&dialog, "dns2Edit", "");
        press(&dialog, "setButton");
    });
    click("ipSetButton");

    const QJsonObject expected = {{"IpMode", "static"}, {"ip", "10.77.0.99"},
        {"netmask", "255.255.255.0"}, {"gateway", "10.77.0.1"}, {"dns1", ""}, {"dns2", ""}};
    QCOMPARE(onlyRequest("SetIp", {panel()->device().srcid()}), expected);
    QCOMPARE(cell(1, 3), QString("10.77.0.99"));
    QVERIFY(label("ipValueLabel").startsWith("10.77.0.12(")); // until another row is chosen
    devices()->setCurrentCell(0, 2);
    devices()->setCurrentCell(1, 2);
    QVERIFY(label("ipValueLabel").startsWith("10.77.0.99("));

    QTRY_COMPARE(fleet->events("move").size(), 1);
    searchAgain();
    devices()->setCurrentCell(1, 2);
    QCOMPARE(label("ipValueLabel"), QString("10.77.0.99(static)"));
    showOnScreen();
}

void tst_Window::dhcp()
{
    fleet->addOptions({"--dhcp-pool", "10.77.0.200-10.77.0.210"});
    open();
    devices()->setCurrentCell(2, 2);
    const ModalDriver<VorlynDeviceIPInfoDialog> driver([](VorlynDeviceIPInfoDialog &dialog) {
        dialog.findChild<QComboBox *>("modeComboBox")->setCurrentIndex(0);
        press(&dialog, "setButton");
    });
    click("ipSetButton");

    const QJsonObject expected = {{"IpMode", "dhcp"}};
    QCOMPARE(onlyRequest("SetIp", {panel()->device().srcid()}), expected);
    QCOMPARE(devices()->device(2).ipMode(), QString("dhcp"));
    QTRY_COMPARE(fleet->events("move").size(), 1);
    searchAgain();
    QCOMPARE(cell(2, 3), QString("10.77.0.200"));
    devices()->setCurrentCell(2, 2);
    QCOMPARE(label("ipValueLabel"), QString("10.77.0.200(dhcp)"));
}

void tst_Window::restore()
{
    open();
    const QString factoryName = panel()->device().name();
    nameEdit()->setText("changed");
    click("nameSetButton");
    QCOMPARE(fleet->requests("SetName").size(), 1);

    const ModalDriver<ZRAlertDialog> driver([](ZRAlertDialog &dialog) {
        QCOMPARE(dialog.findChild<QLabel *>("messageLabel")->text(),
            QString("Restore this device to factory settings?"));
        press(&dialog, "okButton");
    });
    click("restoreButton");
    const QJsonObject expected = {{"keepnetwork", "0"}};
    QCOMPARE(onlyRequest("ResetDefault", {panel()->device().srcid()}), expected);

    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("back").size(), 1, 15000);
    searchAgain();
    QCOMPARE(table()->rowCount(), 8);
    QCOMPARE(nameEdit()->text(), factoryName);
    showOnScreen();
}

void tst_Window::restoreRefused()
{
    open();
    const ModalDriver<ZRAlertDialog> driver(
        [](ZRAlertDialog &dialog) { press(&dialog, "cancelButton"); });
    click("restoreButton");
    searchAgain(); // had there been a request, it would have arrived before this search
    QVERIFY(fleet->requests("ResetDefault").isEmpty());
}

void tst_Window::upgrade_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("version");

    QTest::newRow("version alone") << "9.8.7.bin"
                                   << "9.8.7";
    QTest::newRow("Chinese") << QString::fromUtf8("固件 9.8.7.bin")
                             << QString::fromUtf8("固件 9.8.7");
}

void tst_Window::upgrade()
{
    QFETCH(QString, name);
    QFETCH(QString, version);
    fleet->addOptions({"--sha256"});
    open();
    QTemporaryDir folder;
    QFile image(folder.filePath(name));
    QVERIFY(image.open(QIODevice::WriteOnly));
    const QByteArray content = QByteArray("\x00\xff--window-iptool-upload\r\n", 26).repeated(20000);
    image.write(content);
    image.close();

    devices()->setCurrentCell(6, 2);
    const ModalDriver<QFileDialog> driver(chooses(image.fileName()));
    click("upgradeButton");

    QTRY_COMPARE(fleet->events("upload").size(), 1);
    const QJsonObject upload = fleet->events("upload").first();
    QCOMPARE(upload["ip"].toString(), QString("10.77.0.17"));
    QCOMPARE(upload["filename"].toString(), name);
    QCOMPARE(upload["bytes"].toInt(), content.size());
    QCOMPARE(upload["complete"].toBool(), true);
    QCOMPARE(upload["sha256"].toString().toLatin1(),
        QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());

    QTRY_COMPARE_WITH_TIMEOUT(fleet->events("back").size(), 1, 15000);
    QVERIFY(versionShown() != version); // before the next search
    searchAgain();
    devices()->setCurrentCell(6, 2);
    QCOMPARE(versionShown(), version);
    showOnScreen();
}

void tst_Window::missingFirmwareFile()
{
    open();
    VorlynDeviceFirmwareSettingsDialog dialog(nullptr);
    dialog.setDevicesWidget(devices());
    dialog.setDevices({panel()->device()}, {"/nowhere/1.2.3.bin"});
    dialog.start();
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
    QVERIFY(fleet->events("upload").isEmpty());
}

void tst_Window::network()
{
    FleetProcess others("cam-b", 3, "10.88.0.21");
    others.setScenario({{"cameras", QJsonArray{FleetProcess::unhurried()}}});
    QVERIFY(others.start());
    open();
    QCOMPARE(table()->rowCount(), 8);
    QVERIFY(others.requests("search").isEmpty());

    const ModalDriver<ZRNetworkDialog> driver([](ZRNetworkDialog &dialog) {
        QComboBox *box = dialog.findChild<QComboBox *>("networkComboBox");
        QCOMPARE(box->currentText(), QString("veth-a 10.77.0.1"));
        box->setCurrentIndex(box->findText("veth-b 10.88.0.1"));
        press(&dialog, "okButton");
    });
    emit header()->networkButton->clicked();

    QCOMPARE(table()->rowCount(), 3);
    QCOMPARE(cell(0, 3), QString("10.88.0.21"));
    QCOMPARE(others.requests("search").size(), 3);
    QCOMPARE(others.requests("search").first()["id"].toInt(), 0); // ids start afresh
    QCOMPARE(others.requests("search").first()["srcid"].toString(), QString("0200000000BB"));
    QCOMPARE(fleet->requests("search").size(), 8);
    QCOMPARE(SettingsFile().read()["network name"].toString(), QString("veth-b"));
    QCOMPARE(SettingsFile().read()["network ip"].toString(), QString("10.88.0.1"));
    QVERIFY(others.stop());
}

void tst_Window::language()
{
    open();
    const auto texts = [this] {
        QStringList found;
        for (const char *name : {"titleLabel", "nameLabel", "ipLabel", "versionLabel"})
            found << label(name);
        for (const QPushButton *button : panel()->findChildren<QPushButton *>())
            found << button->text();
        for (const MediaButton *button : header()->findChildren<MediaButton *>())
            found << button->text() << button->toolTip();
        return found;
    };
    const QStringList english = texts();
    QVERIFY(english.contains("Device Settings"));
    QVERIFY(english.contains("Search Devices"));

    const ModalDriver<ZRSettingsDialog> driver([&](ZRSettingsDialog &dialog) {
        QComboBox *box = dialog.findChild<QComboBox *>("languageComboBox");
        const QString version = dialog.findChild<QLabel *>("versionNameLabel")->text();
        QCOMPARE(box->currentIndex(), 0);
        box->setCurrentIndex(1);
        const QStringList chinese = texts();
        QCOMPARE(chinese.size(), english.size());
        for (int i = 0; i < chinese.size(); ++i)
            QVERIFY2(chinese[i] != english[i], qPrintable(chinese[i]));
        QVERIFY(dialog.findChild<QLabel *>("versionNameLabel")->text() != version);
        QCOMPARE(SettingsFile().read()["langage"].toString(), QString("cn"));
        box->setCurrentIndex(0);
        QCOMPARE(texts(), english);
        dialog.reject();
    });
    emit header()->settingsButton->clicked();
    QCOMPARE(SettingsFile().read()["langage"].toString(), QString("en"));
}

void tst_Window::searchThatFindsNothing()
{
    open();
    QCOMPARE(table()->rowCount(), 8);
    QVERIFY(fleet->stop());
    searchAgain();
    QCOMPARE(table()->rowCount(), 8); // blank rows of the search before
    for (int row = 0; row < 8; ++row)
        QCOMPARE(cell(row, 2), QString());
    QVERIFY(!devices()->device(0).isValid());
    QVERIFY(!panel()->isEnabled());
    QCOMPARE(nameEdit()->text(), QString());
}

namespace {
using Leave = void (*)(QDialog *);

void pressEscape(QDialog *dialog)
{
    QTest::keyClick(dialog, Qt::Key_Escape);
}

void closeWindow(QDialog *dialog)
{
    dialog->close();
}
}
Q_DECLARE_METATYPE(Leave)

void tst_Window::cancelledSearch_data()
{
    QTest::addColumn<Leave>("leave");

    QTest::newRow("Esc") << Leave(pressEscape);
    QTest::newRow("closing") << Leave(closeWindow);
}

void tst_Window::cancelledSearch()
{
    QFETCH(Leave, leave);
    open();
    devices()->setCurrentCell(5, 2);
    SettingsFile().write({{"search seconds", 0}}); // without end, unless it is cancelled
    const ModalDriver<VorlynSearchDialog> driver(
        [leave](VorlynSearchDialog &dialog) { leave(&dialog); });
    searchAgain();
    QCOMPARE(table()->rowCount(), 8);
    QCOMPARE(table()->currentRow(), 5);
    QCOMPARE(panel()->device().mac(), cell(5, 2));
    QVERIFY(panel()->isEnabled());
}

void tst_Window::cancelledWrite_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("method");
    QTest::addColumn<Leave>("leave");

    const struct {
        const char *button;
        const char *method;
    } writes[] = {
        {"nameSetButton", "SetName"}, {"ipSetButton", "SetIp"}, {"restoreButton", "ResetDefault"}};
    for (const auto &write : writes) {
        QTest::addRow("%s, Esc", write.method)
            << write.button << write.method << Leave(pressEscape);
        QTest::addRow("%s, closing", write.method)
            << write.button << write.method << Leave(closeWindow);
    }
}

void tst_Window::cancelledUpload_data()
{
    cancelledSearch_data();
}

// The upload that runs is not broken off: the window waits for the camera's answer.
void tst_Window::cancelledUpload()
{
    QFETCH(Leave, leave);
    open({{"on", "upload"}, {"delay-ms", 1500}, {"apply", false}});
    const QTemporaryDir folder; // a file dialog is slow in a folder that others work in
    QFile image(folder.filePath("9.8.7.bin"));
    QVERIFY(image.open(QIODevice::WriteOnly));
    image.write("firmware");
    image.close();

    int result = -1;
    const LogCatcher log;
    const ModalDriver<QFileDialog> files(chooses(image.fileName()));
    const ModalDriver<VorlynDeviceFirmwareSettingsDialog> driver(
        [&](VorlynDeviceFirmwareSettingsDialog &dialog) {
            connect(&dialog, &QDialog::finished, this, [&result](int code) { result = code; });
            QTRY_COMPARE(log.beginning("form-data").size(), 1); // the upload has begun
            leave(&dialog);
        });
    click("upgradeButton");
    QCOMPARE(result, int(QDialog::Rejected));
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(fleet->events("upload").size(), 1);
    QCOMPARE(fleet->events("upload").first()["complete"].toBool(), true);
    QVERIFY(panel()->isEnabled());
}

// A camera that never answers: the wait would last three seconds.
void tst_Window::cancelledWrite()
{
    QFETCH(QString, button);
    QFETCH(QString, method);
    QFETCH(Leave, leave);
    open({{"on", method}, {"silent", true}});

    QElapsedTimer waited;
    QScopedPointer<ModalDriver<VorlynDeviceIPInfoDialog>> form;
    QScopedPointer<ModalDriver<ZRAlertDialog>> question;
    if (method == "SetIp")
        form.reset(new ModalDriver<VorlynDeviceIPInfoDialog>([](VorlynDeviceIPInfoDialog &dialog) {
            dialog.findChild<QComboBox *>("modeComboBox")->setCurrentIndex(1);
            press(&dialog, "setButton");
        }));
    if (method == "ResetDefault")
        question.reset(new ModalDriver<ZRAlertDialog>(
            [](ZRAlertDialog &dialog) { press(&dialog, "okButton"); }));
    const ModalDriver<ZRProgressDialog> driver([&](ZRProgressDialog &dialog) {
        QTRY_COMPARE(fleet->requests(method).size(), 1);
        waited.start();
        leave(&dialog);
    });
    click(qPrintable(button));
    QVERIFY2(waited.elapsed() < 2000, qPrintable(QString::number(waited.elapsed())));
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(cell(0, 3), QString("10.77.0.11"));
}

void tst_Window::silentCameraEndsByItself()
{
    open({{"on", "SetName"}, {"silent", true}, {"apply", false}});
    nameEdit()->setText("nobody heard");
    click("nameSetButton");
    QCOMPARE(devices()->device(0).name(), QString("nobody heard")); // whatever the camera says
    searchAgain();
    QVERIFY(nameEdit()->text() != "nobody heard"); // the truth
}

QTEST_MAIN(tst_Window)
#include "tst_Window.moc"
