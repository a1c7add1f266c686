#include "MainWindow.h"

#include "CVTableWidget.h"
#include "FactoryDialog.h"
#include "FactoryTestsPanel.h"
#include "FirmwareUpgradePage.h"
#include "FleetProcess.h"
#include "HeaderDialogs.h"
#include "LogCatcher.h"
#include "MediaButton.h"
#include "ModalDriver.h"
#include "NetworkSettingsPage.h"
#include "PreviewProbe.h"
#include "SettingsFile.h"
#include "TestNetwork.h"
#include "VorlynDeviceGenerationWidget.h"
#include "VorlynDeviceIPToolWidget.h"
#include "VorlynDeviceIpSettingsWidget.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynDeviceUpgradeDialog.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "VorlynSearchDialog.h"
#include "WindowHeaderWidget.h"
#include "ZRNetworkDialog.h"
#include "ZRPrinterSettingsDialog.h"
#include "ZRScanCodePrinterDialog.h"
#include "ZRSettingsDialog.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QMenuBar>
#include <QMetaMethod>
#include <QScopedPointer>
#include <QStatusBar>
#include <QUrl>
#include <QtTest>

// The window's own rules: order of its start, geometry, selection, focus. Four cameras answer;
// one of them has no address and one no stream.
class tst_MainWindow : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { opened.append(url); }

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void metaObject();
    void startsWithASearch();
    void startsOnTheSavedNetwork_data();
    void startsOnTheSavedNetwork();
    void childrenFollowTheSize_data();
    void childrenFollowTheSize();
    void neverSmallerThan();
    void streamOfARow();
    void columnsOfARowKeepTheStream();
    void columnsOfARowOpenAStoppedStream();
    void rowWithoutStream();
    void noRow();
    void noRowStartsNothing();
    void noRowKeepsTheCurrentOne();
    void searchStartsTheStreamAgain_data();
    void searchStartsTheStreamAgain();
    void searchReadsItsSeconds();
    void cancelledSearch();
    void doubleClick_data();
    void doubleClick();
    void doubleClickOfTheMouse();
    void clickDoesNothing();
    void focusGoesToThePanel();
    void keysAreLeftToOthers();
    void headerButtonsOpenTheirDialogs();
    void hasNothingOfTheBench();
    void refusedNetworkKeepsAll();
    void networkWithoutSdk();
    void labelDialogsLeaveTheWindowAlone();
    void stopsTheNetwork();
    void withoutAnyInterface();

private:
    QWidget *child(const char *name) const
    {
        return window->findChild<QWidget *>(name, Qt::FindDirectChildrenOnly);
    }
    VorlynDevicesWidget *devices() const
    {
        return window->findChild<VorlynDevicesWidget *>("devicesWidget");
    }
    CVTableWidget *table() const { return devices()->tableWidget(); }
    VorlynDeviceVideoView *video() const
    {
        return window->findChild<VorlynDeviceVideoView *>("videoView");
    }
    // The address that the preview was last given.
    QString playedUrl() const { return PreviewProbe(video()).url(); }
    // Plays what no camera has, so that it shows when the window stops or replaces it.
    void playElsewhere() const { video()->play(elsewhere); }
    bool playsElsewhere() const { return video()->isPlaying() && playedUrl() == elsewhere; }
    VorlynDeviceIPToolWidget *panel() const
    {
        return window->findChild<VorlynDeviceIPToolWidget *>("contentWidget");
    }
    WindowHeaderWidget *header() const { return window->findChild<WindowHeaderWidget *>("header"); }

    static const QString elsewhere;
    QScopedPointer<FleetProcess> fleet;
    QScopedPointer<MainWindow> window;
    QList<QUrl> opened;
};

const QString tst_MainWindow::elsewhere = "rtsp://127.0.0.1:1/";

static const QString firstStream = "rtsp://10.77.0.11:8554/live1";
static const QString secondStream = "rtsp://10.77.0.12:8554/live1";

void tst_MainWindow::initTestCase()
{
    QDesktopServices::setUrlHandler("http", this, "openUrl");
    fleet.reset(new FleetProcess("cam-a", 4, "10.77.0.11"));
    // Nothing here looks at a picture: the cameras refuse viewers, which costs less.
    const QJsonObject refusing = {{"camera", "all"}, {"stream", QJsonObject{{"closed", true}}}};
    const QJsonObject noAddress = {
        {"on", "search"}, {"set", QJsonObject{{"ip", ""}}}, {"delay-ms", 250}};
    const QJsonObject withoutAddress = {{"camera", 3}, {"rules", QJsonArray{noAddress}}};
    const QJsonObject withoutStream = {{"camera", 4}, {"fields", QJsonObject{{"rtsppath1", ""}}}};
    fleet->setScenario({{"cameras",
        QJsonArray{refusing, withoutAddress, withoutStream, FleetProcess::unhurried()}}});
    QVERIFY(fleet->start());
}

void tst_MainWindow::init()
{
    SettingsFile().write({{"search seconds", 1}, {"network name", "veth-a"}});
    VorlynSDK::createInstance();
    window.reset(new MainWindow);
    opened.clear();
}

void tst_MainWindow::cleanup()
{
    window.reset();
    VorlynSDK::destroyInstance();
}

void tst_MainWindow::metaObject()
{
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QCOMPARE(meta.className(), "MainWindow");
    QCOMPARE(meta.methodCount(), meta.methodOffset());
}

void tst_MainWindow::startsWithASearch()
{
    QVERIFY(window->isMaximized());
    QVERIFY(window->windowTitle().isEmpty());
    QVERIFY(!window->findChild<QMenuBar *>());
    QVERIFY(!window->findChild<QStatusBar *>());
    QCOMPARE(table()->rowCount(), 4);
    QCOMPARE(table()->currentRow(), 0);
    QCOMPARE(table()->currentColumn(), 2);
    QCOMPARE(panel()->device().ip(), QString("10.77.0.11"));
    QVERIFY(panel()->isEnabled());
    QVERIFY(video()->isPlaying());
    QCOMPARE(playedUrl(), firstStream);
}

void tst_MainWindow::startsOnTheSavedNetwork_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("startedIp");

    QTest::newRow("name") << "veth-a"
                          << ""
                          << "10.77.0.1";
    QTest::newRow("other name") << "veth-b"
                                << ""
                                << "10.88.0.1";
    QTest::newRow("second address") << "veth-b"
                                    << "10.89.0.1"
                                    << "10.89.0.1";
}

void tst_MainWindow::startsOnTheSavedNetwork()
{
    QFETCH(QString, name);
    QFETCH(QString, ip);
    QVERIFY(TestNetwork::run("ip addr replace 10.89.0.1/24 dev veth-b"));
    window.reset();
    SettingsFile().write({{"search seconds", 1}, {"network name", name}, {"network ip", ip}});
    window.reset(new MainWindow);

    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK::instance()->currentNetwork(interface, address);
    QVERIFY(TestNetwork::run("ip addr del 10.89.0.1/24 dev veth-b"));
    QCOMPARE(interface.humanReadableName(), name);
    QTEST(address.ip().toString(), "startedIp");
    QCOMPARE(table()->rowCount(), name == "veth-a" ? 4 : 0); // cameras answer on the first only
}

void tst_MainWindow::childrenFollowTheSize_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QRect>("expected");

    const struct {
        QSize size;
        const char *name;
        QRect expected;
    } rows[] = {
        {{800, 500}, "header", {2, 2, 796, 26}},
        {{800, 500}, "devicesWidget", {400, 27, 400, 73}},
        {{800, 500}, "videoView", {0, 27, 400, 73}},
        {{800, 500}, "contentWidget", {0, 99, 800, 400}},
        {{1500, 900}, "header", {2, 2, 1496, 26}},
        {{1500, 900}, "devicesWidget", {1100, 27, 400, 473}},
        {{1500, 900}, "videoView", {0, 27, 1100, 473}},
        {{1500, 900}, "contentWidget", {0, 499, 1500, 400}},
        {{901, 777}, "header", {2, 2, 897, 26}},
        {{901, 777}, "devicesWidget", {501, 27, 400, 350}},
        {{901, 777}, "videoView", {0, 27, 501, 350}},
        {{901, 777}, "contentWidget", {0, 376, 901, 400}},
    };
    for (const auto &row : rows)
        QTest::addRow("%dx%d %s", row.size.width(), row.size.height(), row.name)
            << row.size << row.name << row.expected;
}

void tst_MainWindow::childrenFollowTheSize()
{
    QFETCH(QSize, size);
    QFETCH(QString, name);
    QFETCH(QRect, expected);

    window->showNormal();
    window->resize(size);
    QTRY_COMPARE(window->size(), size);
    QTRY_COMPARE(child(qPrintable(name))->geometry(), expected);
}

void tst_MainWindow::neverSmallerThan()
{
    QCOMPARE(window->minimumSize(), QSize(800, 500));
}

// The pane is stopped first, which empties its clock.
void tst_MainWindow::streamOfARow()
{
    playElsewhere();
    const PreviewProbe preview(video());
    preview.timeLabel()->setText("00:00:07");
    devices()->setCurrentCell(1, 2);
    QVERIFY(video()->isPlaying());
    QCOMPARE(playedUrl(), secondStream);
    QCOMPARE(preview.playedUrl(), secondStream.toStdString());
    QCOMPARE(preview.time(), QString());
    QCOMPARE(panel()->device().ip(), QString("10.77.0.12"));
}

void tst_MainWindow::columnsOfARowKeepTheStream()
{
    devices()->setCurrentCell(1, 2);
    playElsewhere();
    devices()->setCurrentCell(1, 3);
    QVERIFY(playsElsewhere());
    QCOMPARE(panel()->device().ip(), QString("10.77.0.12"));
}

void tst_MainWindow::columnsOfARowOpenAStoppedStream()
{
    devices()->setCurrentCell(1, 2);
    playElsewhere();
    video()->stop();
    devices()->setCurrentCell(1, 3);
    QVERIFY(video()->isPlaying());
    QCOMPARE(playedUrl(), secondStream);
}

void tst_MainWindow::rowWithoutStream()
{
    devices()->setCurrentCell(3, 2);
    QVERIFY(video()->isPlaying()); // a new row's address is played, empty or not
    QCOMPARE(playedUrl(), QString());
    playElsewhere();
    video()->stop();
    devices()->setCurrentCell(3, 3); // the same row: an empty address is not played
    QVERIFY(!video()->isPlaying());
    QCOMPARE(playedUrl(), elsewhere);
}

void tst_MainWindow::noRow()
{
    playElsewhere();
    devices()->setCurrentCell(-1, -1);
    QVERIFY(playsElsewhere());
    QVERIFY(!panel()->device().isValid());
    QVERIFY(!panel()->isEnabled());
}

void tst_MainWindow::noRowStartsNothing()
{
    video()->stop();
    devices()->setCurrentCell(-1, -1);
    QVERIFY(!video()->isPlaying());
    QCOMPARE(playedUrl(), firstStream);
}

void tst_MainWindow::noRowKeepsTheCurrentOne()
{
    devices()->setCurrentCell(1, 2);
    playElsewhere();
    devices()->setCurrentCell(-1, -1);
    devices()->setCurrentCell(1, 2); // no new row, so that what plays goes on
    QVERIFY(playsElsewhere());
    QVERIFY(panel()->isEnabled());
}

void tst_MainWindow::searchStartsTheStreamAgain_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("same row") << 0;
    QTest::newRow("other row") << 1;
}

void tst_MainWindow::searchStartsTheStreamAgain()
{
    QFETCH(int, row);
    devices()->setCurrentCell(row, 3);
    table()->setFocus();
    bool duringTheSearch = true;
    const ModalDriver<VorlynSearchDialog> driver([&](VorlynSearchDialog &dialog) {
        QVERIFY(!dialog.parentWidget());
        duringTheSearch = video()->isPlaying();
    });
    emit header()->searchButton->clicked();
    QVERIFY(!duringTheSearch);
    QVERIFY(video()->isPlaying());
    QCOMPARE(playedUrl(), firstStream);
    QCOMPARE(panel()->device().ip(), QString("10.77.0.11"));
    QCOMPARE(table()->currentRow(), 0);
    QCOMPARE(table()->currentColumn(), 2);
    QCOMPARE(window->focusWidget(), panel());
}

void tst_MainWindow::searchReadsItsSeconds()
{
    SettingsFile().write({{"search seconds", 4}});
    QElapsedTimer clock;
    clock.start();
    emit header()->searchButton->clicked();
    QVERIFY2(clock.elapsed() >= 3950, qPrintable(QString::number(clock.elapsed())));
}

void tst_MainWindow::cancelledSearch()
{
    devices()->setCurrentCell(1, 3);
    table()->setFocus();
    const ModalDriver<VorlynSearchDialog> driver(
        [](VorlynSearchDialog &dialog) { dialog.reject(); });
    emit header()->searchButton->clicked();
    QVERIFY(!video()->isPlaying()); // until another cell is chosen
    QCOMPARE(playedUrl(), secondStream);
    QCOMPARE(table()->rowCount(), 4);
    QCOMPARE(table()->currentRow(), 1);
    QCOMPARE(table()->currentColumn(), 3);
    QCOMPARE(window->focusWidget(), panel());
}

void tst_MainWindow::doubleClick_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("url");

    QTest::newRow("address") << 1 << 3 << "http://10.77.0.12";
    QTest::newRow("MAC") << 1 << 2 << "";
    QTest::newRow("number") << 0 << 1 << "";
    QTest::newRow("camera without an address") << 2 << 3 << "";
    QTest::newRow("no cell") << -1 << -1 << "";
}

void tst_MainWindow::doubleClick()
{
    QFETCH(int, row);
    QFETCH(int, column);
    QFETCH(QString, url);

    const LogCatcher log;
    emit table()->doubleClicked(table()->model()->index(row, column));
    QCOMPARE(log.count(QString("index = %1, %2").arg(row).arg(column)), 1);
    QCOMPARE(opened, url.isEmpty() ? QList<QUrl>() : QList<QUrl>{QUrl(url)});
}

void tst_MainWindow::doubleClickOfTheMouse()
{
    QWidget *cell = table()->cellWidget(1, 3);
    QTest::mouseClick(cell, Qt::LeftButton);
    QCOMPARE(opened, QList<QUrl>());
    QTest::mouseDClick(cell, Qt::LeftButton);
    QCOMPARE(opened, QList<QUrl>{QUrl("http://10.77.0.12")});
    QCOMPARE(table()->currentRow(), 1);
}

void tst_MainWindow::clickDoesNothing()
{
    video()->stop();
    const LogCatcher log;
    emit table()->clicked(table()->model()->index(1, 3));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(opened.isEmpty());
    QVERIFY(!video()->isPlaying());
}

void tst_MainWindow::focusGoesToThePanel()
{
    window->activateWindow();
    QTRY_VERIFY(window->isActiveWindow());
    QCOMPARE(window->focusWidget(), panel());
    table()->setFocus();
    QCOMPARE(window->focusWidget(), table());
    window->setFocus();
    QTRY_COMPARE(window->focusWidget(), panel());
}

void tst_MainWindow::keysAreLeftToOthers()
{
    QKeyEvent press(QEvent::KeyPress, Qt::Key_F5, Qt::NoModifier);
    QCoreApplication::sendEvent(window.data(), &press);
    QVERIFY(!press.isAccepted());
}

void tst_MainWindow::headerButtonsOpenTheirDialogs()
{
    opens<ZRSettingsDialog>(header()->settingsButton);
    opens<ZRNetworkDialog>(header()->networkButton);
    opens<VorlynSearchDialog>(header()->searchButton);
    opens<ZRPrinterSettingsDialog>(header()->printerButton);
    opens<ZRScanCodePrinterDialog>(header()->scanCodeButton);
}

// Those widgets have a program of their own.
void tst_MainWindow::hasNothingOfTheBench()
{
    const auto has = [this](const char *name) { return window->findChild<QWidget *>(name); };
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        const bool ofTheBench = dynamic_cast<const FactoryTestsPanel *>(widget)
            || dynamic_cast<const FactoryDialog *>(widget)
            || dynamic_cast<const FirmwareUpgradePage *>(widget)
            || dynamic_cast<const NetworkSettingsPage *>(widget)
            || dynamic_cast<const VorlynDeviceGenerationWidget *>(widget)
            || dynamic_cast<const VorlynDeviceIpSettingsWidget *>(widget)
            || dynamic_cast<const VorlynDeviceMPToolWidget *>(widget)
            || dynamic_cast<const VorlynDeviceUpgradeDialog *>(widget)
            || qobject_cast<const QTabWidget *>(widget);
        QVERIFY2(!ofTheBench, widget->metaObject()->className());
    }
    for (const char *name : {"viewComboBox", "saveLogButton", "startTestButton", "testTable"})
        QVERIFY2(!has(name), name);

    QVector<MediaButton *> buttons;
    for (QWidget *widget : header()->findChildren<QWidget *>()) {
        if (auto *button = dynamic_cast<MediaButton *>(widget))
            buttons.append(button);
    }
    QCOMPARE(buttons,
        QVector<MediaButton *>({header()->networkButton, header()->searchButton,
            header()->settingsButton, header()->printerButton, header()->scanCodeButton}));
}

void tst_MainWindow::refusedNetworkKeepsAll()
{
    const int searches = fleet->requests("search").size();
    playElsewhere();
    const ModalDriver<ZRNetworkDialog> driver([](ZRNetworkDialog &dialog) {
        dialog.findChild<QComboBox *>("networkComboBox")->setCurrentIndex(1);
        dialog.reject();
    });
    emit header()->networkButton->clicked();
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK::instance()->currentNetwork(interface, address);
    QCOMPARE(address.ip().toString(), QString("10.77.0.1"));
    QVERIFY(playsElsewhere());
    QCOMPARE(fleet->requests("search").size(), searches);
}

// The choice is not applied, and no search follows.
void tst_MainWindow::networkWithoutSdk()
{
    VorlynSDK::instance()->stopNetwork();
    VorlynSDK::destroyInstance();
    playElsewhere();
    const ModalDriver<ZRNetworkDialog> driver([](ZRNetworkDialog &dialog) { dialog.accept(); });
    emit header()->networkButton->clicked();
    QCOMPARE(table()->rowCount(), 4);
    QVERIFY(devices()->device(0).isValid());
    QVERIFY(playsElsewhere());
}

// The dialogs live no longer than they show, and the preview and its camera stay.
void tst_MainWindow::labelDialogsLeaveTheWindowAlone()
{
    playElsewhere();
    const int searches = fleet->requests("search").size();
    const QWidgetList before = QApplication::topLevelWidgets();
    opens<ZRPrinterSettingsDialog>(header()->printerButton);
    opens<ZRScanCodePrinterDialog>(header()->scanCodeButton);
    QCOMPARE(QApplication::topLevelWidgets(), before);
    QVERIFY(playsElsewhere());
    QCOMPARE(fleet->requests("search").size(), searches);
}

void tst_MainWindow::stopsTheNetwork()
{
    const int before = fleet->requests("search").size();
    window.reset();
    // Nothing takes requests off the queue any more: one that is posted now never leaves.
    QVector<VorlynDevice> found;
    VorlynSDK::instance()->searchDevices(found, 0.3);
    QVERIFY(found.isEmpty());
    QCOMPARE(fleet->requests("search").size(), before);
}

void tst_MainWindow::withoutAnyInterface()
{
    window.reset();
    QVERIFY(TestNetwork::run("ip link set veth-a down"));
    QVERIFY(TestNetwork::run("ip link set veth-b down"));
    QTRY_VERIFY(VorlynSDK::availableInterfaces().isEmpty());
    window.reset(new MainWindow);
    QCOMPARE(table()->rowCount(), 0);
    QVERIFY(!panel()->isEnabled());
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK::instance()->currentNetwork(interface, address);
    QVERIFY(!interface.isValid());
    QVERIFY(address.ip().isNull());
    window.reset();
    QVERIFY(TestNetwork::run("ip link set veth-a up"));
    QVERIFY(TestNetwork::run("ip link set veth-b up"));
    QTRY_COMPARE(VorlynSDK::availableInterfaces().size(), 2);
}

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
