#include "CameraBench.h"
#include "Devices.h"
#include "FileChoice.h"
#include "LogCatcher.h"
#include "ModalDriver.h"
#include "UploadSink.h"
#include "VorlynDeviceIPInfoDialog.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynDeviceSettingsDialog.h"
#include "VorlynDevicesWidget.h"
#include "ZRAlertDialog.h"
#include "ZRLabel.h"

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QtTest>

#include <memory>

namespace {
struct Panel : VorlynDeviceMPToolWidget {
    Panel() : VorlynDeviceMPToolWidget(nullptr) { }
    using VorlynDeviceMPToolWidget::firmwareLabel;
    using VorlynDeviceMPToolWidget::firmwarePath;
    using VorlynDeviceMPToolWidget::macEdit;
    using VorlynDeviceMPToolWidget::nameEdit;
    using VorlynDeviceMPToolWidget::versionLabel;
};

// Ends the file dialog that comes next with this file, which may then be lost.
class Choice
{
public:
    explicit Choice(const QString &path, bool lost = false) :
        driver([path, lost](QFileDialog &dialog) {
            QCOMPARE(dialog.fileMode(), QFileDialog::ExistingFile);
            QVERIFY(!dialog.parentWidget());
            typeFile(dialog, path);
            QCOMPARE(dialog.selectedFiles(), QStringList(path));
            static_cast<QDialog &>(dialog).accept();
            if (lost)
                QVERIFY(QFile::remove(path));
        })
    { }

private:
    ModalDriver<QFileDialog> driver;
};

// Sees the upgrade dialogs that show, each a window of its own: one without a device is gone at
// once.
class UpgradeDialogs : public QObject
{
public:
    UpgradeDialogs() { qApp->installEventFilter(this); }

    int count = 0;

private:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        const auto *dialog = dynamic_cast<VorlynDeviceFirmwareSettingsDialog *>(object);
        if (dialog && event->type() == QEvent::Show) {
            ++count;
            [dialog] { QVERIFY(!dialog->parentWidget()); }();
        }
        return false;
    }
};

// Acts on a dialog that must be a window of its own.
template <class Dialog> class Driver : public ModalDriver<Dialog>
{
public:
    explicit Driver(std::function<void(Dialog &)> action) :
        ModalDriver<Dialog>([action](Dialog &dialog) {
            QVERIFY(!dialog.parentWidget());
            action(dialog);
        })
    { }
};

QString plain(const QString &toolTip)
{
    return QTextDocumentFragment::fromHtml(toolTip).toPlainText();
}

QString buttonText(const QDialog &dialog, const char *name)
{
    return dialog.findChild<QPushButton *>(name)->text();
}
}

// What the panel writes to devices, and the files it is chosen from.
class tst_VorlynDeviceMPToolWrites : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void emptyEdits_data();
    void emptyEdits();
    void setsTheMac();
    void setsTheName();
    void opensTheAddressForm();
    void p2pIdFiles_data() { addIdFiles(); }
    void p2pIdFiles();
    void p2pIdIsRefused();
    void p2pIdIsStopped();
    void idIsTooLargeToSend_data() { addIdButtons(); }
    void idIsTooLargeToSend();
    void idIsReadAtEveryPress_data() { addIdButtons(); }
    void idIsReadAtEveryPress();
    void functionIdFiles_data() { addIdFiles(); }
    void functionIdFiles();
    void unusableFiles_data();
    void unusableFiles();
    void nothingIsChosen_data();
    void nothingIsChosen();
    void choosesTheFirmware();
    void choosesTheVersion_data();
    void choosesTheVersion();
    void filesOutliveTheDevice();
    void upgradeNeedsAFile();
    void upgrades_data();
    void upgrades();
    void upgradesAll_data();
    void upgradesAll();
    void restores_data();
    void restores();
    void restoreIsNotConfirmed();

private:
    static void addIdFiles();
    static void addIdButtons();
    QString fileOf(const QByteArray &bytes, const QString &name = "id.txt")
    {
        QFile file(folder->filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return QString();
        return file.fileName();
    }
    QString toast() const
    {
        auto *toast = dynamic_cast<ZRLabel *>(panel->findChild<QWidget *>("toast"));
        return toast ? toast->text() : QString();
    }
    void verifyToast(const char *key) const
    {
        QCOMPARE(toast(), ZRLocalize::translate(key));
        const QWidget *label = panel->findChild<QWidget *>("toast");
        QCOMPARE(label->pos(),
            QPoint((panel->width() - label->width()) / 2, panel->height() - 5 - label->height()));
    }
    void tick(QVector<int> rows)
    {
        QVector<VorlynDevice> devices;
        for (int row : rows) {
            devices.append(table->device(row));
            devices.last().checked = true;
        }
        table->updateDevices(devices);
    }
    void click(const char *name) { panel->findChild<QPushButton *>(name)->click(); }

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<Panel> panel;
};

void tst_VorlynDeviceMPToolWrites::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    ZRLocalize::loadLanguage("en");
}

void tst_VorlynDeviceMPToolWrites::init()
{
    folder = std::make_unique<QTemporaryDir>();
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    table->setDevices(makeDevices({"a", "b", "c"}));
    panel = std::make_unique<Panel>();
    panel->setDevicesWidget(table.get());
    panel->setDevice(table->device(1));
    panel->resize(1280, 400);
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
}

void tst_VorlynDeviceMPToolWrites::cleanup()
{
    panel.reset();
    table.reset();
}

void tst_VorlynDeviceMPToolWrites::emptyEdits_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("hint");
    QTest::newRow("mac") << "macEdit"
                         << "macSettingButton"
                         << "Please Input Mac Address";
    QTest::newRow("name") << "nameEdit"
                          << "nameSettingButton"
                          << "Please Input Name";
}

void tst_VorlynDeviceMPToolWrites::emptyEdits()
{
    QFETCH(QString, edit);
    QFETCH(QString, button);
    QFETCH(QString, hint);
    panel->findChild<QLineEdit *>(edit)->clear();
    click(button.toLatin1());
    verifyToast(hint.toLatin1());
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolWrites::setsTheMac()
{
    QJsonObject request;
    Driver<VorlynDeviceMacSettingsDialog> driver(
        [&](VorlynDeviceMacSettingsDialog &) { request = bench->answerNext("success"); });
    panel->macEdit->setText("no MAC at all");
    click("macSettingButton");
    QCOMPARE(request["method"].toString(), QString("SetMac"));
    QCOMPARE(request["mac"].toString(), QString("no MAC at all"));
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(table->device(1).mac(), QString("no MAC at all"));
    QCOMPARE(panel->device().mac(), QString("b")); // its own copy waits for the next selection
    QCOMPARE(panel->macEdit->text(), QString("no MAC at all"));
}

void tst_VorlynDeviceMPToolWrites::setsTheName()
{
    QJsonObject request;
    Driver<VorlynDeviceNameSettingsDialog> driver(
        [&](VorlynDeviceNameSettingsDialog &) { request = bench->answerNext("success"); });
    const QString name = QString::fromUtf8(" 婴儿房 ");
    panel->nameEdit->setText(name);
    click("nameSettingButton");
    QCOMPARE(request["method"].toString(), QString("SetName"));
    QCOMPARE(request["name"].toString(), name);
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(table->device(1).name(), name);
    QCOMPARE(panel->device().name(), QString());
}

void tst_VorlynDeviceMPToolWrites::opensTheAddressForm()
{
    QString shown;
    QJsonObject request;
    Driver<VorlynDeviceIPInfoDialog> form([&](VorlynDeviceIPInfoDialog &dialog) {
        shown = dialog.findChild<QLineEdit *>("ipEdit")->text();
        dialog.findChild<QLineEdit *>("ipEdit")->setText("10.77.0.99");
        dialog.findChild<QLineEdit *>("netmaskEdit")->setText("255.255.255.0");
        Driver<VorlynDeviceSettingsDialog> batch(
            [&](VorlynDeviceSettingsDialog &) { request = bench->answerNext("success"); });
        dialog.findChild<QPushButton *>("setButton")->click();
    });
    click("ipSettingButton");
    QCOMPARE(shown, QString("10.77.0.11"));
    QCOMPARE(request["ip"].toString(), QString("10.77.0.99"));
    QCOMPARE(table->device(1).ip(), QString("10.77.0.99")); // so the form has the table
}

// What is sent is the whole file for either id; the P2P id is also read from it.
void tst_VorlynDeviceMPToolWrites::addIdFiles()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QString>("id");
    QTest::newRow("one line") << QByteArray("DID = ABC123") << "DID = ABC123"
                              << "ABC123";
    QTest::newRow("line ends of Windows")
        << QByteArray("key=1\r\ndid=ABC123\r\n") << "key=1\ndid=ABC123\n"
        << "ABC123";
    QTest::newRow("byte order mark, which doesn't go along") << QByteArray("\xEF\xBB\xBF"
                                                                           "did=ABC")
                                                             << "did=ABC"
                                                             << "ABC";
    QTest::newRow("several ids") << QByteArray("did=A\ndid=B\n") << "did=A\ndid=B\n"
                                 << "A";
    QTest::newRow("two signs in a line") << QByteArray("did=A=B\ndid=C") << "did=A=B\ndid=C"
                                         << "C";
    QTest::newRow("no id") << QByteArray("key=1\n") << "key=1\n"
                           << "";
    QTest::newRow("spaces") << QByteArray(" ") << " "
                            << "";
    QTest::newRow("Chinese") << QByteArray("did=\xE4\xB8\x80") << QString::fromUtf8("did=一")
                             << QString::fromUtf8("一");
    QTest::newRow("binary") << QByteArray("\x00\xFF\ndid=A\x00 ", 10)
                            << QString::fromUtf8("\0\uFFFD\ndid=A\0 ", 12)
                            << QString::fromLatin1("A\0", 2);
    const QString large = "did=A\n" + QString(40000, 'x');
    QTest::newRow("40 kB") << large.toLatin1() << large << "A";
    QTest::newRow("functions") << QByteArray("PAC,WIFI") << "PAC,WIFI"
                               << "";
}

void tst_VorlynDeviceMPToolWrites::addIdButtons()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("key"); // of the id in the request and in the record
    QTest::newRow("P2P id") << "p2pIdSettingButton"
                            << "p2pid";
    QTest::newRow("function id") << "functionIdSettingButton"
                                 << "HdCuFun";
}

void tst_VorlynDeviceMPToolWrites::p2pIdFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, sent);
    QFETCH(QString, id);
    LogCatcher log; // of the large text
    QJsonObject request;
    const QString path = fileOf(bytes);
    Choice choice(path);
    Driver<VorlynDeviceP2PSettingsDialog> driver(
        [&](VorlynDeviceP2PSettingsDialog &) { request = bench->answerNext("Success"); });
    click("p2pIdSettingButton");
    QCOMPARE(request["method"].toString(), QString("SetP2p"));
    QCOMPARE(request["p2pid"].toString(), sent);
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(table->device(1).p2pid(), sent); // the whole text here,
    QCOMPARE(panel->device().p2pid(), id); // and what the label is to show here
    QCOMPARE(panel->findChild<QLineEdit *>("p2pIdValue")->text(), id);
    QCOMPARE(toast(), QString());

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), bytes);

    if (id.isEmpty()) {
        click("qrCodeButton");
        verifyToast("Please set p2pid first");
    }
}

// The dialog ends with acceptance all the same, and only that counts.
void tst_VorlynDeviceMPToolWrites::p2pIdIsRefused()
{
    Choice choice(fileOf("did=ABC"));
    Driver<VorlynDeviceP2PSettingsDialog> driver(
        [&](VorlynDeviceP2PSettingsDialog &) { bench->answerNext("failure"); });
    click("p2pIdSettingButton");
    QCOMPARE(table->device(1).p2pid(), QString());
    QCOMPARE(panel->device().p2pid(), QString("ABC"));
}

void tst_VorlynDeviceMPToolWrites::p2pIdIsStopped()
{
    VorlynDevice device = table->device(1);
    device.setP2pid("old");
    panel->setDevice(device);
    Choice choice(fileOf("did=ABC"));
    Driver<VorlynDeviceP2PSettingsDialog> driver([&](VorlynDeviceP2PSettingsDialog &dialog) {
        QCOMPARE(bench->request()["method"].toString(), QString("SetP2p"));
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    click("p2pIdSettingButton");
    QCOMPARE(panel->device().p2pid(), QString("old"));
    QCOMPARE(panel->findChild<QLineEdit *>("p2pIdValue")->text(), QString("old"));
}

// No datagram holds it: the camera hears nothing, and the wait for its reply runs out.
void tst_VorlynDeviceMPToolWrites::idIsTooLargeToSend()
{
    QFETCH(QString, button);
    QFETCH(QString, key);
    LogCatcher log;
    Choice choice(fileOf("did=ABC\n" + QByteArray(10 * 1024 * 1024, 'x')));
    Driver<VorlynDeviceSettingsDialog> driver([](VorlynDeviceSettingsDialog &) {});
    click(button.toLatin1());
    QVERIFY(bench->isQuiet());
    QCOMPARE(table->device(1).value(key), QString());
    QCOMPARE(panel->device().p2pid(), QString(key == "p2pid" ? "ABC" : ""));

    // The next write finds the way to the camera open.
    QJsonObject request;
    Driver<VorlynDeviceNameSettingsDialog> next(
        [&](VorlynDeviceNameSettingsDialog &) { request = bench->answerNext("success"); });
    panel->nameEdit->setText("door");
    click("nameSettingButton");
    QCOMPARE(request["name"].toString(), QString("door"));
}

void tst_VorlynDeviceMPToolWrites::idIsReadAtEveryPress()
{
    QFETCH(QString, button);
    QFETCH(QString, key);
    for (const QByteArray bytes : {"did=A", "did=B"}) {
        QJsonObject request;
        Choice choice(fileOf(bytes)); // the same file
        Driver<VorlynDeviceSettingsDialog> driver(
            [&](VorlynDeviceSettingsDialog &) { request = bench->answerNext("success"); });
        click(button.toLatin1());
        QCOMPARE(request[key].toString(), QString(bytes));
    }
}

void tst_VorlynDeviceMPToolWrites::functionIdFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, sent);
    LogCatcher log; // of the large text
    QJsonObject request;
    Choice choice(fileOf(bytes));
    Driver<VorlynDeviceFunctionIdSettingsDialog> driver(
        [&](VorlynDeviceFunctionIdSettingsDialog &) { request = bench->answerNext("success"); });
    click("functionIdSettingButton");
    QCOMPARE(request["method"].toString(), QString("SetHdCuFun"));
    QCOMPARE(request["HdCuFun"].toString(), sent);
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QCOMPARE(table->device(1).value("HdCuFun"), sent);
    QCOMPARE(panel->device().value("HdCuFun"), QString()); // nothing of it stays here
    QCOMPARE(panel->device().p2pid(), QString());
}

void tst_VorlynDeviceMPToolWrites::unusableFiles_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("lost");
    QTest::addColumn<QString>("hint");
    const char *const rows[][2] = {{"p2pIdSettingButton", "Please Select P2PID File"},
        {"functionIdSettingButton", "Please Select FunctionId File"}};
    for (const auto &row : rows) {
        QTest::addRow("empty: %s", row[0])
            << QString(row[0]) << QByteArray("") << false << QString(row[1]);
        QTest::addRow("lost: %s", row[0])
            << QString(row[0]) << QByteArray("did=A") << true << QString(row[1]);
        QTest::addRow("byte order mark: %s", row[0])
            << QString(row[0]) << QByteArray("\xEF\xBB\xBF") << false << QString(row[1]);
    }
}

void tst_VorlynDeviceMPToolWrites::unusableFiles()
{
    QFETCH(QString, button);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, lost);
    QFETCH(QString, hint);
    Choice choice(fileOf(bytes), lost);
    click(button.toLatin1());
    verifyToast(hint.toLatin1());
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolWrites::nothingIsChosen_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("end");
    for (const char *button : {"p2pIdSettingButton", "functionIdSettingButton", "selectButton",
             "testVersionButton", "upgradeAllButton"}) {
        QTest::addRow("cancelled: %s", button) << QString(button) << int(QDialog::Rejected);
        QTest::addRow("accepted: %s", button) << QString(button) << int(QDialog::Accepted);
    }
}

void tst_VorlynDeviceMPToolWrites::nothingIsChosen()
{
    QFETCH(QString, button);
    QFETCH(int, end);
    tick({0});
    panel->firmwarePath = "/old/path.bin";
    panel->firmwareLabel->setText("path.bin");
    panel->versionLabel->setText("1.2.3");
    ModalDriver<QFileDialog> choice([end](QFileDialog &dialog) {
        QCOMPARE(dialog.selectedFiles(), QStringList());
        static_cast<QDialog &>(dialog).done(end);
    });
    click(button.toLatin1());
    QCOMPARE(toast(), QString());
    QCOMPARE(panel->firmwarePath, QString("/old/path.bin"));
    QCOMPARE(panel->firmwareLabel->text(), QString("path.bin"));
    QCOMPARE(panel->versionLabel->text(), QString("1.2.3"));
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolWrites::choosesTheFirmware()
{
    const QString path = fileOf("image", "1.2.3.bin");
    Choice choice(path);
    click("selectButton");
    QCOMPARE(panel->firmwarePath, path);
    QCOMPARE(panel->firmwareLabel->text(), QString("1.2.3.bin"));
    QCOMPARE(plain(panel->firmwareLabel->toolTip()), path);
    QCOMPARE(panel->versionLabel->text(), QString());
}

void tst_VorlynDeviceMPToolWrites::choosesTheVersion_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("version");
    QTest::newRow("dots") << "1.2.3.bin"
                          << "1.2.3";
    QTest::newRow("no dot") << "firmware"
                            << "firmware";
}

void tst_VorlynDeviceMPToolWrites::choosesTheVersion()
{
    QFETCH(QString, name);
    const QString path = fileOf("", name);
    Choice choice(path);
    click("testVersionButton");
    QTEST(panel->versionLabel->text(), "version");
    QCOMPARE(plain(panel->versionLabel->toolTip()), path);
    QCOMPARE(panel->firmwarePath, QString());
    QCOMPARE(panel->firmwareLabel->text(), QString());
}

void tst_VorlynDeviceMPToolWrites::filesOutliveTheDevice()
{
    const QString path = fileOf("image", "1.2.3.bin");
    {
        Choice choice(path);
        click("selectButton");
    }
    {
        Choice choice(path);
        click("testVersionButton");
    }
    for (const VorlynDevice &device : {table->device(0), VorlynDevice(), table->device(2)}) {
        panel->setDevice(device);
        QCOMPARE(panel->firmwarePath, path);
        QCOMPARE(panel->firmwareLabel->text(), QString("1.2.3.bin"));
        QCOMPARE(panel->versionLabel->text(), QString("1.2.3"));
    }
}

void tst_VorlynDeviceMPToolWrites::upgradeNeedsAFile()
{
    tick({0});
    click("upgradeButton");
    verifyToast("Please select firmware file");
    QVERIFY(!QApplication::activeModalWidget());
}

void tst_VorlynDeviceMPToolWrites::upgrades_data()
{
    QTest::addColumn<QVector<int>>("ticked");
    QTest::addColumn<QVector<int>>("upgraded");
    QTest::newRow("none ticked") << QVector<int>() << QVector<int>{1};
    QTest::newRow("the others ticked") << QVector<int>{0, 2} << QVector<int>{0, 2};
}

namespace {
// Cameras of their own, by row, and which of them got how many images.
struct Cameras {
    explicit Cameras(VorlynDevicesWidget &table)
    {
        for (int row = 0; row < 3; ++row) {
            VorlynDevice device = table.device(row);
            device.setIp("127.0.0.1");
            device.setValue("httpport", QString::number(sinks[row].serverPort()));
            table.updateDevices({device});
        }
    }

    QVector<int> upgraded() const
    {
        QVector<int> rows;
        for (int row = 0; row < 3; ++row)
            rows += QVector<int>(sinks[row].uploads.size(), row);
        return rows;
    }

    UploadSink sinks[3];
};
}

void tst_VorlynDeviceMPToolWrites::upgrades()
{
    QFETCH(QVector<int>, ticked);
    const Cameras cameras(*table);
    tick(ticked);
    panel->setDevice(table->device(1));
    panel->firmwarePath = fileOf("firmware", "image.bin");
    const UpgradeDialogs dialogs;
    click("upgradeButton");
    QCOMPARE(dialogs.count, 1);
    QTEST(cameras.upgraded(), "upgraded");
    for (const UploadSink &sink : cameras.sinks) {
        for (const QByteArray &upload : sink.uploads)
            QVERIFY(upload.contains("filename=\"image.bin\"") && upload.contains("firmware"));
    }
}

void tst_VorlynDeviceMPToolWrites::upgradesAll_data()
{
    QTest::addColumn<QVector<int>>("ticked");
    QTest::newRow("none ticked, none upgraded") << QVector<int>();
    QTest::newRow("two") << QVector<int>{0, 2};
}

void tst_VorlynDeviceMPToolWrites::upgradesAll()
{
    QFETCH(QVector<int>, ticked);
    const Cameras cameras(*table);
    tick(ticked);
    panel->setDevice(table->device(1));
    panel->firmwarePath = "/other.bin";
    const UpgradeDialogs dialogs;
    Choice choice(fileOf("firmware", "image.bin"));
    click("upgradeAllButton");
    QCOMPARE(dialogs.count, 1); // on an empty list too
    QCOMPARE(cameras.upgraded(), ticked);
    QCOMPARE(panel->firmwarePath, QString("/other.bin"));
    QCOMPARE(panel->firmwareLabel->text(), QString());
}

void tst_VorlynDeviceMPToolWrites::restores_data()
{
    QTest::addColumn<QVector<int>>("ticked");
    QTest::addColumn<QStringList>("targets");
    QTest::newRow("none ticked") << QVector<int>() << QStringList("cam1");
    QTest::newRow("the others ticked") << QVector<int>{0, 2} << QStringList{"cam0", "cam2"};
}

void tst_VorlynDeviceMPToolWrites::restores()
{
    QFETCH(QVector<int>, ticked);
    tick(ticked);
    QJsonObject request;
    QString question;
    ModalDriver<ZRAlertDialog> alert([&](ZRAlertDialog &dialog) {
        question = dialog.findChild<QLabel *>("messageLabel")->text();
        QCOMPARE(buttonText(dialog, "okButton"), ZRLocalize::translate("Ok"));
        QCOMPARE(buttonText(dialog, "cancelButton"), ZRLocalize::translate("Cancel"));
        dialog.accept();
    });
    Driver<VorlynDeviceRestoreSettingsDialog> driver(
        [&](VorlynDeviceRestoreSettingsDialog &) { request = bench->answerNext("success"); });
    click("restoreButton");
    QCOMPARE(question, ZRLocalize::translate("Restore"));
    QCOMPARE(request["method"].toString(), QString("ResetDefault"));
    QCOMPARE(request["keepnetwork"], QJsonValue("0"));
    QTEST(CameraBench::targets(request), "targets");
}

void tst_VorlynDeviceMPToolWrites::restoreIsNotConfirmed()
{
    ModalDriver<ZRAlertDialog> alert([](ZRAlertDialog &dialog) { dialog.reject(); });
    click("restoreButton");
    QVERIFY(bench->isQuiet());
}

QTEST_MAIN(tst_VorlynDeviceMPToolWrites)
#include "tst_VorlynDeviceMPToolWrites.moc"
