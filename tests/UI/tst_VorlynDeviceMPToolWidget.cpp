#include "CameraBench.h"
#include "Devices.h"
#include "MetaMethods.h"
#include "ModalDriver.h"
#include "OffThread.h"
#include "OperatorAnswers.h"
#include "TestLog.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynDeviceWiFiInfoDialog.h"
#include "VorlynDevicesWidget.h"
#include "WiFiInfoWidget.h"
#include "ZRLabel.h"

#include <QJsonArray>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextDocumentFragment>
#include <QtTest>

#include <memory>

namespace {
const QColor blue(32, 32, 224);
const QColor red(255, 0, 0);

struct Panel : VorlynDeviceMPToolWidget {
    Panel() : VorlynDeviceMPToolWidget(nullptr) { }
    using VorlynDeviceMPToolWidget::firmwareLabel;
    using VorlynDeviceMPToolWidget::firmwarePath;
    using VorlynDeviceMPToolWidget::logEdit;
    using VorlynDeviceMPToolWidget::macEdit;
    using VorlynDeviceMPToolWidget::nameEdit;
    using VorlynDeviceMPToolWidget::versionLabel;
    using VorlynDeviceMPToolWidget::wifiInfoWidget;
};

VorlynDevice camera(const QString &mac, const QString &functions = QString())
{
    VorlynDevice device = makeDevices({mac}).first();
    device.setValue("srcid", "cam-" + mac);
    device.setName("Nursery");
    device.setIpMode("DHCP");
    device.setP2pid("ABC123");
    device.setFunctionId(functions);
    device.setValue("appVersion", "1.2.3.7");
    return device;
}

// The controls by what they need, besides that no run is alive.
const char *const freeControls[] = {"testVersionButton", "selectButton", "upgradeAllButton"};
const char *const deviceControls[] = {"macEdit", "macSettingButton", "nameEdit",
    "nameSettingButton", "ipSettingButton", "p2pIdSettingButton", "functionIdSettingButton",
    "upgradeButton", "restoreButton", "startTestButton", "manualTestStartButton",
    "manualTestStopButton", "speakerButton", "microphoneButton", "irCutDayButton",
    "irCutNightButton", "irCutAutoButton", "streamButton", "qrCodeButton", "ptzPad"};
const char *const lightControls[] = {"whiteLightOnButton", "whiteLightOffButton"};
const char *const wifiControls[] = {"loadWiFiButton"};
}

// The frame of the panel: what it shows, when its controls are of use, and its log.
class tst_VorlynDeviceMPToolWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void metaObject();
    void emptyAtFirst();
    void showsTheDevice();
    void toolTipsTellTheWholeValue_data();
    void toolTipsTellTheWholeValue();
    void keepsWhatIsTyped();
    void keepsWhatIsTypedForAnotherMac();
    void controls_data();
    void controls();
    void scannerChangesNoDevice();
    void logLines();
    void logLinesThatLookLikeHtml_data();
    void logLinesThatLookLikeHtml();
    void logFromAnotherThread();
    void logKeepsASelection_data();
    void logKeepsASelection();
    void logKeepsEveryLine();
    void logStaysWhereItIsRead();
    void questions_data();
    void questions();
    void manualTestIsFramed();
    void loadsTheWiFiList();
    void wiFiListGoesWithItsDevice();
    void labelNeedsAnId();
    void everyTextFollowsTheLanguage();

private:
    QWidget *control(const char *name) const
    {
        QWidget *found = panel->findChild<QWidget *>(name);
        if (!found)
            QTest::qFail(name, __FILE__, __LINE__);
        return found;
    }
    void click(const char *name) { static_cast<QPushButton *>(control(name))->click(); }
    QString valueOf(const char *name) { return static_cast<QLineEdit *>(control(name))->text(); }
    template <class Names> void verifyEnabled(const Names &names, bool enabled)
    {
        for (const char *name : names)
            QVERIFY2(control(name)->isEnabled() == enabled, name);
    }
    QStringList networks() const { return TestLog::networksOf(*panel->wifiInfoWidget); }
    void append(const QString &text, const QColor &color)
    {
        QVERIFY(QMetaObject::invokeMethod(
            panel.get(), "appendText", Q_ARG(QString, text), Q_ARG(QColor, color)));
    }

    std::unique_ptr<CameraBench> bench;
    std::unique_ptr<VorlynDevicesWidget> table;
    std::unique_ptr<Panel> panel;
};

void tst_VorlynDeviceMPToolWidget::initTestCase()
{
    bench = std::make_unique<CameraBench>();
    QVERIFY(bench->isReady());
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

void tst_VorlynDeviceMPToolWidget::init()
{
    ZRLocalize::loadLanguage("en");
    table = std::make_unique<VorlynDevicesWidget>(nullptr);
    table->setDevices({camera("a"), camera("b", "PAC,WIFI")});
    panel = std::make_unique<Panel>();
    panel->setDevicesWidget(table.get());
    panel->resize(1280, 400);
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
}

void tst_VorlynDeviceMPToolWidget::cleanup()
{
    panel.reset();
    table.reset();
}

void tst_VorlynDeviceMPToolWidget::metaObject()
{
    const QMetaObject &meta = VorlynDeviceMPToolWidget::staticMetaObject;
    QCOMPARE(meta.className(), "VorlynDeviceMPToolWidget");
    QCOMPARE(meta.superClass(), &ZRToast::staticMetaObject);
    QStringList expected{
        "public signal requestStartMedia()", "private slot appendText(QString,QColor)"};
    for (const char *slot : {"autoTestStart", "autoTestStop", "manualTestStart", "manualTestStop",
             "autoTestAppVersion", "autoTestSDCard", "testSpeaker", "testMicrophone",
             "testWhiteLightOn", "testWhiteLightOff", "testIRCutDay", "testIRCutNight",
             "testIRCutAuto", "testStream", "loadWiFiInfo", "onClickMacSettingButton",
             "onClickNameSettingButton", "onClickIpSettingButton", "onClickP2PIdSettingButton",
             "onClickFunctionIdSettingButton", "onClickSelectButton", "onClickUpgradeButton",
             "onClickUpgradeAllButton", "onClickTestVersionButton", "onClickSpeakerButton",
             "onClickWhiteLightOnButton", "onClickWhiteLightOffButton", "onClickIRCutDayButton",
             "onClickIRCutNightButton", "onClickIRCutAutoButton", "onClickRestoreButton",
             "onClickStartTestButton", "onClickQRCodeButton"})
        expected << QStringLiteral("public slot %1()").arg(slot);
    expected << "public slot setPTZ(QString)";
    QCOMPARE(expected.size(), 36);
    QCOMPARE(ownMethods(meta), expected);
    QCOMPARE(ownProperties(meta), QStringList());
}

void tst_VorlynDeviceMPToolWidget::emptyAtFirst()
{
    QVERIFY(!panel->device().isValid());
    QCOMPARE(panel->firmwarePath, QString());
    QCOMPARE(panel->firmwareLabel->text(), QString());
    QCOMPARE(panel->versionLabel->text(), QString());
    QCOMPARE(panel->macEdit->text(), QString());
    QCOMPARE(panel->nameEdit->text(), QString());
    QCOMPARE(linesOf(*panel->logEdit), QStringList());
    QVERIFY(panel->logEdit->isReadOnly());
}

void tst_VorlynDeviceMPToolWidget::showsTheDevice()
{
    panel->setDevice(table->device(1));
    QCOMPARE(panel->device().mac(), QString("b"));
    QCOMPARE(panel->device().index, 1);
    QCOMPARE(panel->macEdit->text(), QString("b"));
    QCOMPARE(panel->nameEdit->text(), QString("Nursery"));
    QCOMPARE(valueOf("ipValue"), QString("10.77.0.10(DHCP)"));
    QCOMPARE(valueOf("p2pIdValue"), QString("ABC123"));
    QCOMPARE(valueOf("functionIdValue"), QString("PAC,WIFI"));
    QCOMPARE(valueOf("versionValue"), QString("1.2.3"));

    VorlynDevice nobody = table->device(1); // but for the MAC
    nobody.setMac("");
    nobody.setName("");
    panel->setDevice(nobody);
    QCOMPARE(panel->macEdit->text(), QString());
    QCOMPARE(panel->nameEdit->text(), QString());
    QCOMPARE(valueOf("ipValue"), QString());
}

void tst_VorlynDeviceMPToolWidget::toolTipsTellTheWholeValue_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("shown");
    QTest::newRow("none") << ""
                          << "";
    QTest::newRow("short") << "ABC123"
                           << "ABC123";
    QTest::newRow("tags") << "<b>bold</b> & <img src=x>"
                          << "<b>bold</b> & <img src=x>";
    QTest::newRow("lines") << "did=1\nkey=2"
                           << "did=1\nkey=2";
    const QString longest(200, 'x');
    QTest::newRow("as long as a tool tip gets") << longest << longest;
    QTest::newRow("longer") << longest + 'y' << longest + QChar(0x2026);
}

void tst_VorlynDeviceMPToolWidget::toolTipsTellTheWholeValue()
{
    QFETCH(QString, value);
    VorlynDevice device = table->device(1);
    device.setP2pid(value);
    device.setFunctionId(value);
    panel->setDevice(device);
    for (const char *name : {"p2pIdValue", "functionIdValue"}) {
        const QString toolTip = control(name)->toolTip();
        QCOMPARE(toolTip.isEmpty(), value.isEmpty());
        QTEST(QTextDocumentFragment::fromHtml(toolTip).toPlainText(), "shown");
    }
}

void tst_VorlynDeviceMPToolWidget::keepsWhatIsTyped()
{
    VorlynDevice device = table->device(1);
    panel->setDevice(device);
    panel->nameEdit->selectAll();
    QTest::keyClicks(panel->nameEdit, "door");
    device.setName("renamed elsewhere");
    device.setIp("10.77.0.99");
    panel->setDevice(device); // as a click on another cell of the same row does
    QCOMPARE(panel->nameEdit->text(), QString("door"));
    QCOMPARE(panel->macEdit->text(), QString("b"));
    QCOMPARE(valueOf("ipValue"), QString("10.77.0.99(DHCP)"));

    panel->setDevice(table->device(0)); // another device takes it away
    QCOMPARE(panel->nameEdit->text(), QString("Nursery"));
    QCOMPARE(panel->macEdit->text(), QString("a"));

    device = table->device(0); // and what nobody typed into follows
    device.setName("renamed elsewhere");
    panel->setDevice(device);
    QCOMPARE(panel->nameEdit->text(), QString("renamed elsewhere"));
}

// It is the same camera, by its "srcid".
void tst_VorlynDeviceMPToolWidget::keepsWhatIsTypedForAnotherMac()
{
    VorlynDevice device = table->device(1);
    panel->setDevice(device);
    panel->wifiInfoWidget->setInfos({{"Workshop", 82}});
    panel->nameEdit->selectAll();
    QTest::keyClicks(panel->nameEdit, "door");
    device.setMac("c");
    panel->setDevice(device);
    QCOMPARE(panel->macEdit->text(), QString("c"));
    QCOMPARE(panel->nameEdit->text(), QString("door"));
    QCOMPARE(networks(), QStringList("Workshop (82)"));

    for (const char *mac : {"d", "e"}) { // records without one are different devices
        device.setValue("srcid", "");
        device.setMac(mac);
        panel->setDevice(device);
        QCOMPARE(panel->nameEdit->text(), QString("Nursery"));
        panel->nameEdit->selectAll();
        QTest::keyClicks(panel->nameEdit, "door");
    }
}

void tst_VorlynDeviceMPToolWidget::controls_data()
{
    QTest::addColumn<QString>("mac");
    QTest::addColumn<QString>("functions");
    QTest::addColumn<bool>("device");
    QTest::addColumn<bool>("light");
    QTest::addColumn<bool>("wifi");
    QTest::newRow("no device") << ""
                               << "PAC,WIFI" << false << false << false;
    QTest::newRow("plain") << "b"
                           << "" << true << false << false;
    QTest::newRow("light") << "b"
                           << "pac" << true << true << false;
    QTest::newRow("Wi-Fi") << "b"
                           << "WIFI" << true << false << true;
    QTest::newRow("all") << "b"
                         << "WIFI,PAC" << true << true << true;
}

void tst_VorlynDeviceMPToolWidget::controls()
{
    QFETCH(QString, mac);
    QFETCH(QString, functions);
    QFETCH(bool, device);
    QFETCH(bool, light);
    QFETCH(bool, wifi);
    verifyEnabled(freeControls, true);
    verifyEnabled(deviceControls, false);
    panel->setDevice(camera(mac, functions));
    verifyEnabled(freeControls, true);
    verifyEnabled(deviceControls, device);
    verifyEnabled(lightControls, light);
    verifyEnabled(wifiControls, wifi);
    QVERIFY(table->isEnabled());

    // None is forgotten here.
    const int buttons = panel->findChildren<QPushButton *>().size();
    QCOMPARE(buttons,
        int(std::size(freeControls) + std::size(deviceControls) - 3 + std::size(lightControls)
            + std::size(wifiControls)));
}

// A scanner types a code and Return; the next code takes the place of the last.
void tst_VorlynDeviceMPToolWidget::scannerChangesNoDevice()
{
    panel->setDevice(table->device(1));
    panel->macEdit->selectAll();
    for (const char *code : {"02:56:4C:00:00:07", "02:56:4C:00:00:08"}) {
        QTest::keyClicks(panel->macEdit, code);
        QTest::keyClick(panel->macEdit, Qt::Key_Return);
        QCOMPARE(panel->macEdit->text(), QString(code));
    }
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(bench->isQuiet());
}

void tst_VorlynDeviceMPToolWidget::logLines()
{
    append("first", blue);
    append("", Qt::black);
    append("third", red);
    append("fourth", Qt::black);
    QCOMPARE(linesOf(*panel->logEdit),
        QStringList({"#2020e0 first", "", "#ff0000 third", "#000000 fourth"}));
    QCOMPARE(panel->logEdit->palette().color(QPalette::Base), QColor(Qt::white));
}

void tst_VorlynDeviceMPToolWidget::logLinesThatLookLikeHtml_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("bold") << "Name : <b>x</b> y" << QStringList("Name : x y");
    QTest::newRow("colours") << "a<font color=blue>b</font><a href=\"c\">d</a>"
                             << QStringList("abd");
    QTest::newRow("paragraphs") << "<p>a</p><p style=\"color: blue\">b</p>"
                                << QStringList({"a", "b"});
    QTest::newRow("plain") << "a < b" << QStringList("a < b");
}

// The log shows them as HTML, but in the colour of what they mean; and the lines around keep
// theirs.
void tst_VorlynDeviceMPToolWidget::logLinesThatLookLikeHtml()
{
    QFETCH(QString, text);
    QFETCH(QStringList, shown);
    QStringList expected;
    for (const QString &line : qAsConst(shown))
        expected << "#ff0000 " + line;
    append(text, red); // also as the first one
    QCOMPARE(linesOf(*panel->logEdit), expected);
    append("banner", blue);
    append(text, red);
    append("passed", Qt::black);
    QCOMPARE(linesOf(*panel->logEdit),
        expected + QStringList("#2020e0 banner") + expected + QStringList("#000000 passed"));
}

void tst_VorlynDeviceMPToolWidget::logFromAnotherThread()
{
    append("first", blue);
    OffThread off([this] {
        QMetaObject::invokeMethod(panel.get(), "appendText", Qt::DirectConnection,
            Q_ARG(QString, "second"), Q_ARG(QColor, red));
    });
    QVERIFY(off.isDoneWithoutEvents()); // the caller does not wait
    QCOMPARE(linesOf(*panel->logEdit), QStringList("#2020e0 first"));
    append("before it", Qt::black);
    QTRY_COMPARE(linesOf(*panel->logEdit),
        QStringList({"#2020e0 first", "#000000 before it", "#ff0000 second"}));
}

void tst_VorlynDeviceMPToolWidget::logKeepsASelection_data()
{
    QTest::addColumn<int>("anchor");
    QTest::addColumn<int>("position");
    QTest::newRow("all") << 0 << 13;
    QTest::newRow("all, backwards") << 13 << 0;
    QTest::newRow("the end") << 7 << 13;
    QTest::newRow("the beginning") << 0 << 6;
}

// It can still be copied, and its lines keep their colour.
void tst_VorlynDeviceMPToolWidget::logKeepsASelection()
{
    QFETCH(int, anchor);
    QFETCH(int, position);
    append("failed", red);
    append("passed", Qt::black);
    QTextCursor cursor = panel->logEdit->textCursor();
    cursor.setPosition(anchor);
    cursor.setPosition(position, QTextCursor::KeepAnchor);
    panel->logEdit->setTextCursor(cursor);
    const QString selected = panel->logEdit->textCursor().selectedText();
    QCOMPARE(selected.size(), qAbs(position - anchor));
    append("ended", blue);
    append("started", blue);
    QCOMPARE(panel->logEdit->textCursor().selectedText(), selected);
    QCOMPARE(panel->logEdit->textCursor().position(), position);
    QCOMPARE(linesOf(*panel->logEdit),
        QStringList({"#ff0000 failed", "#000000 passed", "#2020e0 ended", "#2020e0 started"}));
}

// The lines of weeks, none of which can be taken back.
void tst_VorlynDeviceMPToolWidget::logKeepsEveryLine()
{
    const int count = 20000;
    for (int i = 0; i < count; ++i)
        append(QString::number(i), Qt::black);
    const QStringList lines = linesOf(*panel->logEdit);
    QCOMPARE(lines.size(), count);
    for (int i = 0; i < count; ++i)
        QCOMPARE(lines[i], "#000000 " + QString::number(i));
    QVERIFY(!panel->logEdit->isUndoRedoEnabled());
    QVERIFY(!panel->logEdit->document()->isUndoAvailable());
}

void tst_VorlynDeviceMPToolWidget::logStaysWhereItIsRead()
{
    for (int i = 0; i < 100; ++i)
        append(QString::number(i), Qt::black);
    QScrollBar *bar = panel->logEdit->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), bar->maximum()); // the newest line shows
    bar->setValue(0);
    append("new", Qt::black);
    QCOMPARE(bar->value(), 0);
}

void tst_VorlynDeviceMPToolWidget::questions_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("method");
    const char *const rows[][3] = {
        {"speakerButton", "Test Speaker Result", "testMicrophone"},
        {"microphoneButton", "Test Microphone Result", "testMicrophone"},
        {"whiteLightOnButton", "Test White Light On Result", "SetColor"},
        {"whiteLightOffButton", "Test White Light Off Result", "SetColor"},
        {"irCutDayButton", "Test IR-cut Day Result", "SetIRcut"},
        {"irCutNightButton", "Test IR-cut Night Result", "SetIRcut"},
        {"irCutAutoButton", "Test IR-cut Auto Result", "SetIRcut"},
        {"streamButton", "Test Video Audio Result", ""},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString(row[0]) << QString(row[1]) << QString(row[2]);
}

void tst_VorlynDeviceMPToolWidget::questions()
{
    QFETCH(QString, button);
    QFETCH(QString, title);
    QFETCH(QString, method);
    panel->setDevice(table->device(1));
    OperatorAnswers answers({Answer::Pass});
    click(button.toLatin1());
    QCOMPARE(answers.questions(), QStringList(ZRLocalize::translate(title)));
    QCOMPARE(linesOf(*panel->logEdit).size(), 1);
    if (method.isEmpty())
        QVERIFY(bench->isQuiet());
    else
        QCOMPARE(bench->request()["method"].toString(), method);
}

void tst_VorlynDeviceMPToolWidget::manualTestIsFramed()
{
    panel->setDevice(table->device(1));
    click("manualTestStartButton");
    const int begin = linesOf(*panel->logEdit).size();
    QCOMPARE(begin, 3); // banner, name and MAC
    click("manualTestStopButton");
    QCOMPARE(linesOf(*panel->logEdit).size(), begin + 1);
    QVERIFY(linesOf(*panel->logEdit).last().contains(ZRLocalize::translate("End Manual Test")));
}

void tst_VorlynDeviceMPToolWidget::loadsTheWiFiList()
{
    panel->setDevice(table->device(1));
    ModalDriver<VorlynDeviceWiFiInfoDialog> driver([&](VorlynDeviceWiFiInfoDialog &) {
        bench->answerNext("success",
            {{"WifiList", QJsonArray{QJsonObject{{"wifiname", "Workshop"}, {"Signal", 82}}}}});
    });
    click("loadWiFiButton");
    QCOMPARE(networks(), QStringList("Workshop (82)"));
}

// It is that of one device.
void tst_VorlynDeviceMPToolWidget::wiFiListGoesWithItsDevice()
{
    panel->setDevice(table->device(1));
    panel->wifiInfoWidget->setInfos({{"Workshop", 82}});
    VorlynDevice device = table->device(1);
    device.setName("renamed elsewhere");
    panel->setDevice(device);
    QCOMPARE(networks(), QStringList("Workshop (82)"));
    panel->setDevice(table->device(0));
    QCOMPARE(networks(), QStringList());

    panel->wifiInfoWidget->setInfos({{"Workshop", 82}});
    panel->setDevice(VorlynDevice());
    QCOMPARE(networks(), QStringList());
}

void tst_VorlynDeviceMPToolWidget::labelNeedsAnId()
{
    VorlynDevice device = table->device(1);
    device.setP2pid("");
    panel->setDevice(device);
    click("qrCodeButton");
    const auto *toast = dynamic_cast<ZRLabel *>(control("toast"));
    QCOMPARE(toast->text(), ZRLocalize::translate("Please set p2pid first"));
}

void tst_VorlynDeviceMPToolWidget::everyTextFollowsTheLanguage()
{
    const auto texts = [](const QWidget &panel) {
        QStringList texts;
        for (const QWidget *widget : panel.findChildren<QWidget *>()) {
            if (qobject_cast<const QLineEdit *>(widget))
                continue;
            for (const char *property : {"text", "title", "toolTip"}) {
                const QString text = widget->property(property).toString();
                if (!text.isEmpty())
                    texts << text;
            }
        }
        return texts;
    };
    const QStringList english = texts(*panel);
    QVERIFY(english.size() > 40);
    for (const QString &text : english)
        QVERIFY2(!text.contains(QRegularExpression("\\p{Han}")), qPrintable(text));

    QVERIFY(ZRLocalize::switchLanguage("cn"));
    const QStringList chinese = texts(*panel);
    QCOMPARE(chinese.size(), english.size());
    for (const QString &text : chinese)
        QVERIFY2(text.contains(QRegularExpression("\\p{Han}")), qPrintable(text));
    const Panel fresh;
    QCOMPARE(texts(fresh), chinese);

    QVERIFY(ZRLocalize::switchLanguage("en"));
    QCOMPARE(texts(*panel), english);
}

QTEST_MAIN(tst_VorlynDeviceMPToolWidget)
#include "tst_VorlynDeviceMPToolWidget.moc"
