#include "BenchWindow.h"

#include "CVTableWidget.h"
#include "CVWidget.h"
#include "FactoryDialog.h"
#include "FileChoice.h"
#include "FirmwareUpgradePage.h"
#include "FleetProcess.h"
#include "GraphicsDriver.h"
#include "HeaderDialogs.h"
#include "MediaButton.h"
#include "ModalDriver.h"
#include "OperatorAnswers.h"
#include "PreviewProbe.h"
#include "SettingsFile.h"
#include "VorlynDeviceIPInfoDialog.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "VorlynSearchDialog.h"
#include "WindowHeaderWidget.h"
#include "ZRAlertDialog.h"
#include "ZRNetworkDialog.h"
#include "ZROpenGLVideoView.h"
#include "ZRVideoView.h"
#include "ZRPrinterSettingsDialog.h"
#include "ZRScanCodePrinterDialog.h"
#include "ZRSettingsDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QScopedPointer>
#include <QScrollBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QUrl>
#include <QtTest>

#include <functional>

// The bench as a window: what its panels are told, what is out of reach when, its preview and the
// file of its log. Three cameras answer; one of them has no stream.
class tst_BenchWindow : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { opened.append(url); }

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void startsWithASearch();
    void startsOnTheSavedNetwork();
    void stopsTheNetwork();
    void geometry_data();
    void geometry();
    void testTablesShowAllRows_data();
    void testTablesShowAllRows();
    void tabsInBothLanguages();
    void selectionFeedsAllPanels();
    void noRow();
    void writesOfAllPanelsMeet();
    void writesOfTheToolMeet();
    void p2pIdStaysAsParsed();
    void columnsOfARowKeepTheStream();
    void streamOfARow();
    void doubleClickOpensThePage();
    void mediaOfTheBenchDevice_data();
    void mediaOfTheBenchDevice();
    void mediaClearsTheView();
    void mediaOfNoDevice();
    void lockedDuringARun();
    void goesDuringARun();
    void headerButtonsOpenTheirDialogs();
    void searchAfterAnotherNetwork();
    void searchOfTheUpgradePage();
    void factoryTestShowsInTheTestTable();
    void reportReachesTheFactoryTest();
    void viewOfTheSettings_data();
    void viewOfTheSettings();
    void viewIsChosen();
    void viewIsChosenWithoutAStream();
    void logButtonGoesWithItsTab();
    void savesTheLog_data();
    void savesTheLog();
    void savesTheKindOfLinesThatLookLikeHtml();
    void savesNothingUnasked();
    void logThatCannotBeSaved();

private:
    template <class Widget> Widget *child(const char *name) const
    {
        return window->findChild<Widget *>(name);
    }
    VorlynDevicesWidget *devices() const { return child<VorlynDevicesWidget>("devicesWidget"); }
    CVTableWidget *table() const { return devices()->tableWidget(); }
    VorlynDeviceVideoView *video() const { return child<VorlynDeviceVideoView>("videoView"); }
    QWidget *view() const
    {
        return video()->findChild<QWidget *>("videoView", Qt::FindDirectChildrenOnly);
    }
    QString playedUrl() const { return PreviewProbe(video()).url(); }
    QTabWidget *tabs() const { return child<QTabWidget>("tabs"); }
    VorlynDeviceContentWidget *page(int index) const
    {
        return dynamic_cast<VorlynDeviceContentWidget *>(tabs()->widget(index));
    }
    VorlynDeviceMPToolWidget *tool() const
    {
        return child<VorlynDeviceMPToolWidget>("productionTool");
    }
    QTextEdit *log() const { return tool()->findChild<QTextEdit *>("logEdit"); }
    QComboBox *viewBox() const { return child<QComboBox>("viewComboBox"); }
    QPushButton *saveButton() const { return child<QPushButton>("saveLogButton"); }
    WindowHeaderWidget *header() const { return child<WindowHeaderWidget>("header"); }
    QVector<bool> reachableTabs() const;
    void startRun();
    QString testState(int tab, int row) const;
    void tick(int row) const { table()->cellWidget(row, 0)->findChild<QCheckBox *>()->click(); }
    void setAddress(const QString &address);
    void setName(const QString &name);

    QScopedPointer<FleetProcess> fleet;
    QScopedPointer<BenchWindow> window;
    QList<QUrl> opened;
};

namespace {
const char firstStream[] = "rtsp://10.77.0.11:8554/live1";
const char secondStream[] = "rtsp://10.77.0.12:8554/live1";
const char elsewhere[] = "rtsp://127.0.0.1:1/"; // what no camera has
const int tabCount = 5;

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
}

void tst_BenchWindow::initTestCase()
{
    QDesktopServices::setUrlHandler("http", this, "openUrl");
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    fleet.reset(new FleetProcess("cam-a", 3, "10.77.0.11"));
    // Nothing here looks at a picture: the cameras refuse viewers. The first one keeps an automatic
    // run waiting for its SD card.
    const QJsonObject refusing = {{"camera", "all"}, {"stream", QJsonObject{{"closed", true}}}};
    const QJsonObject silentSd = {
        {"camera", 1}, {"rules", QJsonArray{QJsonObject{{"on", "GetSD"}, {"silent", true}}}}};
    // The last one obeys in words only, so that each test finds it as it was.
    QJsonArray inWords;
    for (const char *write : {"SetIp", "SetMac", "SetName", "SetP2p"})
        inWords.append(QJsonObject{{"on", write}, {"apply", false}});
    const QJsonObject withoutStream = {
        {"camera", 3}, {"fields", QJsonObject{{"rtsppath1", ""}}}, {"rules", inWords}};
    fleet->setScenario(
        {{"cameras", QJsonArray{refusing, silentSd, withoutStream, FleetProcess::unhurried()}}});
    QVERIFY(fleet->start());
}

void tst_BenchWindow::init()
{
    QVERIFY(ZRLocalize::loadLanguage("en"));
    SettingsFile().write({{"search seconds", 1}, {"network name", "veth-a"}, {"langage", "en"}});
    VorlynSDK::createInstance();
    window.reset(new BenchWindow);
    opened.clear();
}

void tst_BenchWindow::cleanup()
{
    keepGraphicsDriver();
    window.reset();
    VorlynSDK::destroyInstance();
}

void tst_BenchWindow::startsWithASearch()
{
    QVERIFY(window->isMaximized());
    QCOMPARE(table()->rowCount(), 3);
    QCOMPARE(table()->currentRow(), 0);
    QVERIFY(video()->isPlaying());
    QCOMPARE(playedUrl(), QString(firstStream));
    QCOMPARE(tabs()->count(), tabCount);
    QCOMPARE(tabs()->currentWidget(), tool());
    for (int i = 0; i < tabCount; ++i) {
        QVERIFY(page(i)->isEnabled());
        QCOMPARE(page(i)->device().ip(), QString("10.77.0.11"));
    }
    // The second program's setting is written when it is chosen, not before.
    QVERIFY(!SettingsFile().read().contains("bench view"));
}

void tst_BenchWindow::startsOnTheSavedNetwork()
{
    window.reset();
    SettingsFile().write({{"search seconds", 1}, {"network name", "veth-b"}});
    window.reset(new BenchWindow);
    QNetworkInterface network;
    QNetworkAddressEntry address;
    VorlynSDK::instance()->currentNetwork(network, address);
    QCOMPARE(network.humanReadableName(), QString("veth-b"));
    QCOMPARE(table()->rowCount(), 0); // no camera there
    for (int i = 0; i < tabCount; ++i)
        QVERIFY(!page(i)->device().isValid());
}

void tst_BenchWindow::stopsTheNetwork()
{
    const int before = fleet->requests("search").size();
    window.reset();
    QVector<VorlynDevice> found;
    VorlynSDK::instance()->searchDevices(found, 0.3);
    QVERIFY(found.isEmpty());
    QCOMPARE(fleet->requests("search").size(), before);
}

void tst_BenchWindow::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("smallest") << QSize(1280, 680);
    QTest::newRow("usual") << QSize(1600, 900);
}

// Preview and table over the tabs, beside each other, and nothing is cut off.
void tst_BenchWindow::geometry()
{
    QFETCH(QSize, size);
    QCOMPARE(window->minimumSize(), QSize(1280, 680));
    window->showNormal();
    window->resize(size);
    QTRY_COMPARE(window->size(), size);
    const auto area = [this](const QWidget *widget) {
        return QRect(widget->mapTo(window.data(), QPoint()), widget->size());
    };
    const QRect all = window->rect();
    QTRY_VERIFY(all.contains(area(tabs())));
    const QRect preview = area(video());
    const QRect list = area(devices());
    QCOMPARE(area(header()).height(), 26);
    QVERIFY(area(header()).bottom() < preview.top());
    QCOMPARE(preview.top(), list.top());
    QCOMPARE(preview.bottom(), list.bottom());
    QVERIFY(preview.right() < list.left());
    QVERIFY(preview.bottom() < area(tabs()).top());
    QVERIFY(preview.height() >= 160);
    QCOMPARE(list.width(), 400);
    for (int i = 0; i < tabCount; ++i) {
        tabs()->setCurrentIndex(i);
        QVERIFY(all.contains(area(page(i))));
        QVERIFY2(page(i)->height() >= 380, qPrintable(QString::number(page(i)->height())));
        QVERIFY(page(i)->height() >= page(i)->minimumSizeHint().height());
        QVERIFY(page(i)->width() >= page(i)->minimumSizeHint().width());
    }
}

void tst_BenchWindow::testTablesShowAllRows_data()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << "en";
    QTest::newRow("Chinese") << "cn";
}

// At the usual size, as the window is at first.
void tst_BenchWindow::testTablesShowAllRows()
{
    QFETCH(QString, language);
    QVERIFY(ZRLocalize::switchLanguage(language));
    window->showNormal();
    window->resize(1600, 900);
    QTRY_COMPARE(window->size(), QSize(1600, 900));
    for (int i : {1, 2}) {
        tabs()->setCurrentIndex(i);
        const auto *list = page(i)->findChild<QTableWidget *>("testTable");
        QTRY_VERIFY(!list->verticalScrollBar()->isVisible());
        QVERIFY(!list->horizontalScrollBar()->isVisible());
        QCOMPARE(list->rowCount(), 16);
        const QRect last = list->visualItemRect(list->item(15, 0));
        QVERIFY(list->viewport()->rect().contains(last));
        QVERIFY(last.height() >= list->fontMetrics().height());
    }
}

void tst_BenchWindow::tabsInBothLanguages()
{
    const auto texts = [this] {
        QStringList list;
        for (int i = 0; i < tabs()->count(); ++i)
            list.append(tabs()->tabText(i));
        for (QPushButton *button : page(3)->findChildren<QPushButton *>())
            list.append(button->text());
        for (const char *name : {"hintLabel", "tickedLabel"})
            list.append(page(4)->findChild<QLabel *>(name)->text());
        list << saveButton()->text() << viewBox()->itemText(0)
             << child<QLabel>("viewLabel")->text();
        return list;
    };
    const QStringList english = texts();
    QCOMPARE(english.mid(0, tabCount),
        QStringList({"Production Tool", "Test Table", "Factory Tests", "Network Settings",
            "Firmware Upgrade"}));
    QVERIFY(english.contains("Set All"));
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    const QStringList chinese = texts();
    QCOMPARE(chinese.size(), english.size());
    for (int i = 0; i < chinese.size(); ++i)
        QVERIFY2(chinese[i] != english[i], qPrintable(chinese[i]));
    QCOMPARE(page(3)->findChild<QLineEdit *>("ipEdit")->text(), QString("10.77.0.11"));
    QVERIFY(ZRLocalize::switchLanguage("en"));
    QCOMPARE(texts(), english);
}

void tst_BenchWindow::selectionFeedsAllPanels()
{
    devices()->setCurrentCell(1, 2);
    for (int i = 0; i < tabCount; ++i)
        QCOMPARE(page(i)->device().ip(), QString("10.77.0.12"));
    QCOMPARE(tool()->findChild<QLineEdit *>("macEdit")->text(), QString("02:56:4C:00:00:02"));
    QCOMPARE(page(3)->findChild<QLineEdit *>("ipEdit")->text(), QString("10.77.0.12"));
}

void tst_BenchWindow::noRow()
{
    devices()->setCurrentCell(-1, -1);
    for (int i = 0; i < tabCount; ++i)
        QVERIFY(!page(i)->device().isValid());
    QVERIFY(!tool()->findChild<QPushButton *>("startTestButton")->isEnabled());
    for (int i : {1, 2, 3})
        QVERIFY(!page(i)->isEnabled());
    QVERIFY(page(4)->isEnabled()); // it is about the ticked ones
}

// On the panel's tab, of the current device.
void tst_BenchWindow::setAddress(const QString &address)
{
    tabs()->setCurrentIndex(3);
    page(3)->findChild<QComboBox *>("modeComboBox")->setCurrentIndex(1);
    page(3)->findChild<QLineEdit *>("ipEdit")->setText(address);
    QTest::mouseClick(page(3)->findChild<QPushButton *>("setButton"), Qt::LeftButton);
}

void tst_BenchWindow::setName(const QString &name)
{
    tabs()->setCurrentIndex(0);
    tool()->findChild<QLineEdit *>("nameEdit")->setText(name);
    QTest::mouseClick(tool()->findChild<QPushButton *>("nameSettingButton"), Qt::LeftButton);
}

// A panel writes whole records: none undoes what another one has written, or a tick.
void tst_BenchWindow::writesOfAllPanelsMeet()
{
    const auto record = [this] { return devices()->device(2); };
    devices()->setCurrentCell(2, 2);
    tick(2);
    setAddress("10.77.0.33");
    QCOMPARE(record().ip(), QString("10.77.0.33"));
    QVERIFY(record().checked);
    for (int i = 0; i < tabCount; ++i)
        QCOMPARE(page(i)->device().ip(), QString("10.77.0.33"));

    setName("third");
    QCOMPARE(record().name(), QString("third"));
    QCOMPARE(record().ip(), QString("10.77.0.33"));
    QVERIFY(record().checked);

    setAddress("10.77.0.34");
    QCOMPARE(record().ip(), QString("10.77.0.34"));
    QCOMPARE(record().name(), QString("third"));
    tabs()->setCurrentIndex(0); // before the ticks change
    child<QCheckBox>("checkBox")->click(); // that of all rows
    tick(2);
    setName("three");
    QVERIFY(!record().checked);
    QVERIFY(devices()->device(0).checked);
}

// Without another tab in between: what one button has written, the next one does not undo.
void tst_BenchWindow::writesOfTheToolMeet()
{
    devices()->setCurrentCell(2, 2);
    const auto record = [this] { return devices()->device(2); };
    const ModalDriver<VorlynDeviceIPInfoDialog> driver([](VorlynDeviceIPInfoDialog &dialog) {
        dialog.findChild<QComboBox *>("modeComboBox")->setCurrentIndex(1);
        dialog.findChild<QLineEdit *>("ipEdit")->setText("10.77.0.33");
        QTest::mouseClick(dialog.findChild<QPushButton *>("setButton"), Qt::LeftButton);
    });
    QTest::mouseClick(tool()->findChild<QPushButton *>("ipSettingButton"), Qt::LeftButton);
    QCOMPARE(record().ip(), QString("10.77.0.33"));
    QCOMPARE(tool()->device().ip(), QString("10.77.0.33"));
    QVERIFY(tool()->findChild<QLineEdit *>("ipValue")->text().startsWith("10.77.0.33("));

    const auto write = [this](const char *edit, const char *text, const char *button) {
        auto *field = tool()->findChild<QLineEdit *>(edit);
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::mouseClick(tool()->findChild<QPushButton *>(button), Qt::LeftButton);
    };
    write("macEdit", "02:56:4C:00:00:33", "macSettingButton");
    write("nameEdit", "third", "nameSettingButton");
    QCOMPARE(record().mac(), QString("02:56:4C:00:00:33"));
    QCOMPARE(record().name(), QString("third"));
    QCOMPARE(record().ip(), QString("10.77.0.33"));
    for (int i = 0; i < tabCount; ++i) {
        QCOMPARE(page(i)->device().mac(), record().mac());
        QCOMPARE(page(i)->device().name(), QString("third"));
    }
}

// The table has the whole text of the file.
void tst_BenchWindow::p2pIdStaysAsParsed()
{
    const QTemporaryDir folder;
    const QByteArray text = "key=1\ndid=ABC123\n";
    QFile file(folder.filePath("id.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();
    devices()->setCurrentCell(2, 2);
    const ModalDriver<QFileDialog> driver(chooses(file.fileName()));
    QTest::mouseClick(tool()->findChild<QPushButton *>("p2pIdSettingButton"), Qt::LeftButton);
    QCOMPARE(devices()->device(2).p2pid(), QString(text));
    QCOMPARE(tool()->device().p2pid(), QString("ABC123"));
    tabs()->setCurrentIndex(3);
    QCOMPARE(tool()->device().p2pid(), QString("ABC123"));
    QCOMPARE(page(3)->device().p2pid(), QString(text));
    devices()->setCurrentCell(1, 2);
    tabs()->setCurrentIndex(0);
    QCOMPARE(tool()->device().p2pid(), devices()->device(1).p2pid());
}

void tst_BenchWindow::columnsOfARowKeepTheStream()
{
    video()->play(elsewhere);
    devices()->setCurrentCell(0, 3);
    QCOMPARE(playedUrl(), QString(elsewhere));
}

void tst_BenchWindow::streamOfARow()
{
    devices()->setCurrentCell(1, 2);
    QVERIFY(video()->isPlaying());
    QCOMPARE(playedUrl(), QString(secondStream));
}

void tst_BenchWindow::doubleClickOpensThePage()
{
    emit table()->doubleClicked(table()->model()->index(1, 2));
    QVERIFY(opened.isEmpty());
    emit table()->doubleClicked(table()->model()->index(1, 3));
    QCOMPARE(opened, QList<QUrl>{QUrl("http://10.77.0.12")});
}

void tst_BenchWindow::mediaOfTheBenchDevice_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("nothing plays") << "";
    QTest::newRow("another stream plays") << elsewhere;
}

void tst_BenchWindow::mediaOfTheBenchDevice()
{
    QFETCH(QString, before);
    devices()->setCurrentCell(1, 2);
    video()->stop();
    if (!before.isEmpty())
        video()->play(before);
    emit tool()->requestStartMedia();
    QVERIFY(video()->isPlaying());
    QCOMPARE(playedUrl(), QString(secondStream));
}

// The view may hold a picture of the stream before, and what it has built to draw that.
void tst_BenchWindow::mediaClearsTheView()
{
    class View : public QWidget, public ZRVideoView
    {
    public:
        using QWidget::QWidget;
        using QWidget::update;
        void update(AVFrame *) override { }
        void clear() override { wasPlaying.append(panel->isPlaying()); }

        VorlynDeviceVideoView *panel = nullptr;
        QVector<bool> wasPlaying; // at each call
    };
    auto *view = new View(video());
    view->panel = video();
    devices()->setCurrentCell(1, 2);
    video()->setVideoView(view);
    view->wasPlaying.clear();

    emit tool()->requestStartMedia();

    QCOMPARE(view->wasPlaying, QVector<bool>{false}); // between the two streams
    QVERIFY(video()->isPlaying());
}

void tst_BenchWindow::mediaOfNoDevice()
{
    devices()->setCurrentCell(2, 2); // has no stream
    video()->stop();
    emit tool()->requestStartMedia();
    QVERIFY(!video()->isPlaying());
}

QVector<bool> tst_BenchWindow::reachableTabs() const
{
    QVector<bool> reachable;
    for (int i = 0; i < tabs()->count(); ++i)
        reachable.append(tabs()->tabBar()->isTabEnabled(i));
    return reachable;
}

void tst_BenchWindow::startRun()
{
    const int before = fleet->requests("GetSD").size();
    QTest::mouseClick(tool()->findChild<QPushButton *>("startTestButton"), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(fleet->requests("GetSD").size() > before, 20000);
}

void tst_BenchWindow::lockedDuringARun()
{
    const QVector<bool> all(tabCount, true);
    const QVector<bool> toolAlone = {true, false, false, false, false};
    QCOMPARE(reachableTabs(), all);
    video()->stop();

    OperatorAnswers answers({Answer::Pass});
    bool locked = true;
    answers.onDialog = [&](QWidget &) { locked = locked && !header()->isEnabled(); };
    startRun();
    QVERIFY(video()->isPlaying());
    QVERIFY(!devices()->isEnabled());
    QVERIFY(!header()->isEnabled());
    QCOMPARE(reachableTabs(), toolAlone);
    QVERIFY(!saveButton()->isEnabled());
    QVERIFY(!viewBox()->isEnabled());
    QVERIFY(tool()->isEnabled());
    QTest::mouseClick(tabs()->tabBar(), Qt::LeftButton, {}, tabs()->tabBar()->tabRect(3).center());
    QCOMPARE(tabs()->currentWidget(), tool());
    const int searches = fleet->requests("search").size();
    QTest::mouseClick(header()->searchButton, Qt::LeftButton);
    QTest::keyClick(tabs(), Qt::Key_Tab, Qt::ControlModifier);
    QCOMPARE(tabs()->currentWidget(), tool());

    QTRY_VERIFY_WITH_TIMEOUT(devices()->isEnabled(), 60000);
    QVERIFY(locked);
    QVERIFY(answers.questions().size() >= 5);
    QCOMPARE(fleet->requests("search").size(), searches);
    QVERIFY(header()->isEnabled());
    QCOMPARE(reachableTabs(), all);
    QVERIFY(saveButton()->isEnabled());
    QVERIFY(viewBox()->isEnabled());
    for (int i = 0; i < tabCount; ++i)
        QVERIFY(page(i)->isEnabled());
}

void tst_BenchWindow::goesDuringARun()
{
    const OperatorAnswers answers({Answer::Pass});
    startRun();
    QElapsedTimer clock;
    clock.start();
    window.reset();
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(answers.questions(), QStringList());
    QCoreApplication::sendPostedEvents(); // none of which would reach for it
    QCoreApplication::processEvents();
}

void tst_BenchWindow::headerButtonsOpenTheirDialogs()
{
    opens<ZRSettingsDialog>(header()->settingsButton);
    opens<ZRNetworkDialog>(header()->networkButton);
    opens<VorlynSearchDialog>(header()->searchButton);
    opens<ZRPrinterSettingsDialog>(header()->printerButton);
    opens<ZRScanCodePrinterDialog>(header()->scanCodeButton);
}

void tst_BenchWindow::searchAfterAnotherNetwork()
{
    const ModalDriver<ZRNetworkDialog> driver([](ZRNetworkDialog &dialog) {
        auto *box = dialog.findChild<QComboBox *>("networkComboBox");
        box->setCurrentIndex(box->findText("veth-b 10.88.0.1"));
        QTest::mouseClick(dialog.findChild<QPushButton *>("okButton"), Qt::LeftButton);
    });
    emit header()->networkButton->clicked();
    QVERIFY(!devices()->device(0).isValid()); // no camera there
    for (int i = 0; i < tabCount; ++i)
        QVERIFY(!page(i)->device().isValid());
}

void tst_BenchWindow::searchOfTheUpgradePage()
{
    const int searches = fleet->requests("search").size();
    emit static_cast<FirmwareUpgradePage *>(page(4))->searchRequested();
    QCOMPARE(fleet->requests("search").size(), searches + 3);
    QCOMPARE(table()->rowCount(), 3);
}

// In the last column.
QString tst_BenchWindow::testState(int tab, int row) const
{
    const auto *list = page(tab)->findChild<QTableWidget *>("testTable");
    return dynamic_cast<CVWidget *>(list->cellWidget(row, list->columnCount() - 1))->text();
}

void tst_BenchWindow::factoryTestShowsInTheTestTable()
{
    QCOMPARE(testState(1, 0), QString("Not Tested"));
    const ModalDriver<FactoryDialog> driver([](FactoryDialog &dialog) { dialog.accept(); });
    tabs()->setCurrentIndex(2);
    QTest::mouseClick(page(2)->findChild<QPushButton *>("openButton"), Qt::LeftButton);
    QCOMPARE(testState(1, 0), QString("Passed"));
}

// From a camera over the wire to its dialog, and the operator's answer to the rows of both tables,
// where it stays.
void tst_BenchWindow::reportReachesTheFactoryTest()
{
    const int image = 0;
    const int millimeterWave = 14;
    auto *list = page(2)->findChild<QTableWidget *>("testTable");
    const auto open = [&](int row, const std::function<void(FactoryDialog &)> &act) {
        const ModalDriver<FactoryDialog> driver(act);
        list->setCurrentCell(row, 0);
        QTest::mouseClick(page(2)->findChild<QPushButton *>("openButton"), Qt::LeftButton);
    };
    const auto shows = [](const FactoryDialog &dialog, const QString &text) {
        const auto *label = dialog.findChild<QLabel *>("statusLabel");
        return QTest::qWaitFor([&] { return label->text() == text; }, 20000);
    };
    const auto report = [this](const char *camera, const char *keys) {
        return fleet->order(QByteArray("report ") + camera + " {\"function\":" + keys + '}');
    };
    tabs()->setCurrentIndex(2);
    open(millimeterWave, [&](FactoryDialog &dialog) {
        auto *pass = dialog.findChild<QPushButton *>("passButton");
        QCOMPARE(dialog.windowTitle(), QString("Millimeter Wave Test"));
        QVERIFY(report("2", "\"millimeterwave\",\"status\":\"on\"")); // not on the bench
        QVERIFY(report("1", "\"millimeterwave\",\"status\":\"gone\""));
        QVERIFY(shows(dialog, "Detection Failed"));
        QVERIFY(!pass->isEnabled());
        QVERIFY(report("1", "\"millimeterwave\",\"status\":\"body\""));
        QVERIFY(shows(dialog, "Person Detected"));
        QVERIFY(pass->isEnabled());
        QTRY_COMPARE(testState(1, millimeterWave), QString("Failed")); // of its own judgement
        QTest::mouseClick(pass, Qt::LeftButton);
    });
    for (int tab : {1, 2})
        QCOMPARE(testState(tab, millimeterWave), QString("Passed"));

    open(image, [&](FactoryDialog &dialog) {
        QVERIFY(report("1", "\"millimeterwave\",\"status\":\"gone\""));
        QVERIFY(report("1", "\"image\""));
        QVERIFY(shows(dialog, "Please test the microphone"));
        dialog.reject();
    });
    for (int tab : {1, 2}) {
        QCOMPARE(testState(tab, millimeterWave), QString("Passed"));
        QCOMPARE(testState(tab, image), QString("Failed"));
    }
}

void tst_BenchWindow::viewOfTheSettings_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<bool>("openGL");
    QTest::newRow("none") << QString() << false;
    QTest::newRow("direct") << "direct" << false;
    QTest::newRow("opengl") << "opengl" << true;
    QTest::newRow("capitals") << "OpenGL" << true;
    QTest::newRow("junk") << "opengl2" << false;
}

void tst_BenchWindow::viewOfTheSettings()
{
    QFETCH(QString, setting);
    QFETCH(bool, openGL);
    window.reset();
    SettingsFile().write(
        {{"search seconds", 1}, {"network name", "veth-a"}, {"bench view", setting}});
    window.reset(new BenchWindow);
    QCOMPARE(qobject_cast<ZROpenGLVideoView *>(view()) != nullptr, openGL);
    QCOMPARE(qobject_cast<ZRDirectVideoView *>(view()) != nullptr, !openGL);
    QCOMPARE(viewBox()->currentIndex(), int(openGL));
    QCOMPARE(SettingsFile().read()["bench view"].toString(), setting);
    QCOMPARE(playedUrl(), QString(firstStream));
}

// At once: the stream opens anew in the other view, which lies where the old one lay.
void tst_BenchWindow::viewIsChosen()
{
    const QRect place = view()->geometry();
    QVERIFY(place.height() > 100);
    const QPointer<QWidget> old = view();
    viewBox()->setCurrentIndex(1);
    QVERIFY(!old);
    QVERIFY(qobject_cast<ZROpenGLVideoView *>(view()));
    QCOMPARE(view()->geometry(), place);
    QVERIFY(view()->isVisible());
    QVERIFY(video()->isPlaying());
    QCOMPARE(playedUrl(), QString(firstStream));
    QCOMPARE(PreviewProbe(video()).playersView(),
        static_cast<const ZRVideoView *>(qobject_cast<ZROpenGLVideoView *>(view())));
    QCOMPARE(SettingsFile().read()["bench view"].toString(), QString("opengl"));

    viewBox()->setCurrentIndex(0);
    QVERIFY(qobject_cast<ZRDirectVideoView *>(view()));
    QVERIFY(video()->isPlaying());
    QCOMPARE(SettingsFile().read()["bench view"].toString(), QString("direct"));
}

void tst_BenchWindow::viewIsChosenWithoutAStream()
{
    video()->stop();
    viewBox()->setCurrentIndex(1);
    QVERIFY(!video()->isPlaying());
    QCOMPARE(playedUrl(), QString(firstStream));
}

void tst_BenchWindow::logButtonGoesWithItsTab()
{
    for (int i = 0; i < tabCount; ++i) {
        tabs()->setCurrentIndex(i);
        QCOMPARE(saveButton()->isEnabled(), i == 0);
    }
}

void tst_BenchWindow::savesTheLog_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("kind"); // of the dialog's
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("contents");

    const QByteArray text = "\xef\xbb\xbf=line\r\n";
    const QByteArray csv = "\xef\xbb\xbf\"No.\",\"Kind\",\"Test Log\"\r\n"
                           "\"1\",\"Information or Pass\",\"'=line\"\r\n";
    QTest::newRow("text") << "a.txt" << 0 << "a.txt" << text;
    QTest::newRow("csv") << "a.csv" << 1 << "a.csv" << csv;
    QTest::newRow("the name decides") << "a.csv" << 0 << "a.csv" << csv;
    QTest::newRow("the kind gives the suffix") << "a" << 1 << "a.csv" << csv;
    QTest::newRow("text by default") << "a" << 0 << "a.txt" << text;
}

void tst_BenchWindow::savesTheLog()
{
    QFETCH(QString, name);
    QFETCH(int, kind);
    QFETCH(QString, file);
    QFETCH(QByteArray, contents);
    const QTemporaryDir folder;
    log()->append("=line");
    const ModalDriver<QFileDialog> driver([&](QFileDialog &dialog) {
        QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptSave);
        // The name that is offered tells the device and the time.
        const QString offered = dialog.findChild<QLineEdit *>("fileNameEdit")->text();
        const QRegularExpression form("^02564C000001-\\d{8}-\\d{6}(\\.txt)?$");
        QVERIFY2(form.match(offered).hasMatch(), qPrintable(offered));
        auto *kinds = dialog.findChild<QComboBox *>("fileTypeCombo");
        kinds->setCurrentIndex(kind);
        emit kinds->activated(kind); // as the operator's choice does
        emit kinds->activated(kinds->itemText(kind));
        chooses(folder.filePath(name))(dialog);
    });
    QTest::mouseClick(saveButton(), Qt::LeftButton);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList(file));
    QCOMPARE(read(folder.filePath(file)), contents);
}

// A failure stays one when the camera's version is HTML.
void tst_BenchWindow::savesTheKindOfLinesThatLookLikeHtml()
{
    const QTemporaryDir folder;
    VorlynDevice device = tool()->device();
    device.setName("<i>bed</i>");
    device.setValue("appVersion", "<b>2</b>.7");
    tool()->setDevice(device);
    tool()->manualTestStart();
    tool()->autoTestAppVersion();
    const ModalDriver<QFileDialog> driver(chooses(folder.filePath("a.csv")));
    QTest::mouseClick(saveButton(), Qt::LeftButton);
    const QList<QByteArray> lines = read(folder.filePath("a.csv")).split('\n');
    QCOMPARE(lines.size(), 6); // headings, four lines, and the end
    QVERIFY2(lines[1].startsWith("\"1\",\"Heading\","), lines[1]);
    QCOMPARE(lines[2], QByteArray("\"2\",\"Information or Pass\",\"Name : bed\"\r"));
    QVERIFY2(lines[4].startsWith("\"4\",\"Fail\",") && lines[4].endsWith(" 2\"\r"), lines[4]);
}

void tst_BenchWindow::savesNothingUnasked()
{
    log()->append("line");
    const QString here = QDir::currentPath();
    const QStringList before = QDir(here).entryList(QDir::Files);
    const ModalDriver<QFileDialog> driver([](QFileDialog &dialog) { dialog.reject(); });
    QTest::mouseClick(saveButton(), Qt::LeftButton);
    QCOMPARE(QDir(here).entryList(QDir::Files), before);
}

// The operator is told why and may choose another file.
void tst_BenchWindow::logThatCannotBeSaved()
{
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir("gone"));
    log()->append("line");
    bool asked = false;
    // The folder goes while the dialog is open.
    const ModalDriver<QFileDialog> first([&](QFileDialog &dialog) {
        dialog.setDirectory(folder.path());
        QVERIFY(QDir(folder.path()).rmdir("gone"));
        dialog.findChild<QLineEdit *>("fileNameEdit")->setText(folder.filePath("gone/a.txt"));
        static_cast<QDialog &>(dialog).done(QDialog::Accepted);
    });
    QScopedPointer<ModalDriver<QFileDialog>> second;
    const ModalDriver<ZRAlertDialog> alert([&](ZRAlertDialog &dialog) {
        asked = true;
        const QString message = dialog.findChild<QLabel *>("messageLabel")->text();
        QVERIFY2(message.startsWith("The log could not be saved. Choose another file?\n"),
            qPrintable(message));
        second.reset(new ModalDriver<QFileDialog>(chooses(folder.filePath("b.txt"))));
        QTest::mouseClick(dialog.findChild<QPushButton *>("okButton"), Qt::LeftButton);
    });
    QTest::mouseClick(saveButton(), Qt::LeftButton);
    QVERIFY(asked);
    QCOMPARE(read(folder.filePath("b.txt")), QByteArray("\xef\xbb\xbfline\r\n"));
}

QTEST_MAIN(tst_BenchWindow)
#include "tst_BenchWindow.moc"
