#include "CVWidget.h"
#include "CameraBench.h"
#include "Devices.h"
#include "MetaMethods.h"
#include "OffThread.h"
#include "Painting.h"
#include "VorlynDeviceGenerationWidget.h"
#include "ZRLabel.h"

#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QtTest>

#include <memory>

namespace {
constexpr int sdCard = 6;
constexpr int millimeterWave = 16;

class Panel : public VorlynDeviceGenerationWidget
{
public:
    Panel() : VorlynDeviceGenerationWidget(nullptr) { }

    using VorlynDeviceGenerationWidget::testIds;
    using VorlynDeviceGenerationWidget::testResults;
    using VorlynDeviceGenerationWidget::testTable;
    using VorlynDeviceGenerationWidget::wifiInfos;
    using VorlynDeviceGenerationWidget::wifiList;

    int rowOf(int id) const { return testIds.indexOf(id); }
    QString title(int row) const { return testTable->item(row, 0)->text(); }
    QWidget *cell(int row) const { return testTable->cellWidget(row, 1); }
    ZRLabel *label(int row) const
    {
        return dynamic_cast<ZRLabel *>(cell(row)->findChild<QWidget *>("label"));
    }
    QString state(int id) const { return label(rowOf(id))->text(); }
    // Of the darkest pixel of the text: text is antialiased towards its colour.
    QColor color(int id) const;
    QStringList networks() const
    {
        QStringList texts;
        for (int i = 0; i < wifiList->count(); ++i)
            texts << wifiList->item(i)->text();
        return texts;
    }
    bool call(const char *slot, QGenericArgument first = QGenericArgument(),
        QGenericArgument second = QGenericArgument(), QGenericArgument third = QGenericArgument())
    {
        return QMetaObject::invokeMethod(this, slot, Qt::DirectConnection, first, second, third);
    }
    bool callSDCard(int result)
    {
        return call("updateSDCardResult", Q_ARG(int, result), Q_ARG(int, 10), Q_ARG(int, 20));
    }
    bool callMillimeterWave(const QString &status)
    {
        return call("updateMillimeterWave", Q_ARG(QString, status));
    }
};

QColor Panel::color(int id) const
{
    const QImage image = painted(*label(rowOf(id)));
    QColor strongest(Qt::transparent);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() > strongest.alpha())
                strongest = pixel;
        }
    }
    strongest.setAlpha(255);
    return strongest;
}

QVector<VorlynDeviceWiFiInfo> twoNetworks()
{
    VorlynDeviceWiFiInfo home, guest;
    home.name = "Home %2";
    home.signal = 80;
    guest.name = "Guest";
    guest.signal = -60;
    return {home, guest};
}
const QStringList twoTexts = {"Home %2 (80)", "Guest (-60)"};
const QString waiting = "Wait for Test";
}

class tst_VorlynDeviceGenerationWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER); }
    void init();
    void cleanup();
    void metaObject();
    void rows();
    void texts();
    void languageKeepsResults();
    void states_data();
    void states();
    void sdCardFromAnotherThread();
    void millimeterWave_data();
    void millimeterWave();
    void millimeterWaveDoesNotCross();
    void unknownTests();
    void firstRowOfAnId();
    void missingResultIsCreated();
    void otherTests();
    void networks();
    void networksFromAnotherThread();
    void irCut_data();
    void irCut();
    void irCutBlocksAnotherThread_data() { irCut_data(); }
    void irCutBlocksAnotherThread();
    void irCutWithoutADevice();
    void anotherDeviceBeginsAnew();
    void sameDeviceByItsSrcid_data();
    void sameDeviceByItsSrcid();
    void nothingLooksChosenAtFirst();
    void resultsAreCopied();
    void invalidDeviceDisables();
    void layout_data();
    void layout();

private:
    std::unique_ptr<Panel> panel;
};

void tst_VorlynDeviceGenerationWidget::init()
{
    ZRLocalize::loadLanguage("en");
    panel = std::make_unique<Panel>();
    panel->resize(1000, 400);
}

void tst_VorlynDeviceGenerationWidget::cleanup()
{
    panel.reset();
}

void tst_VorlynDeviceGenerationWidget::metaObject()
{
    const QMetaObject &meta = VorlynDeviceGenerationWidget::staticMetaObject;
    QCOMPARE(meta.superClass()->className(), "ZRToast");
    QCOMPARE(ownMethods(meta),
        QStringList(
            {"private slot updateSDCardResult(int,int,int)", "private slot updateWiFiInfos()",
                "private slot updateMillimeterWave(QString)", "private slot testIRCutDay()",
                "private slot testIRCutNight()", "private slot testIRCutAuto()"}));
}

// One row each of the sixteen factory tests, none of which has run.
void tst_VorlynDeviceGenerationWidget::rows()
{
    QCOMPARE(panel->testIds.size(), 16);
    QCOMPARE(panel->testTable->rowCount(), 16);
    QCOMPARE(panel->testTable->columnCount(), 2);
    QVector<int> ids = panel->testIds;
    std::sort(ids.begin(), ids.end());
    for (int i = 0; i < ids.size(); ++i)
        QCOMPARE(ids[i], i + 1);
    QCOMPARE(panel->title(panel->rowOf(sdCard)), ZRLocalize::translate("Test SDCard"));
    QCOMPARE(panel->title(panel->rowOf(::millimeterWave)),
        ZRLocalize::translate("Test Millimeter Wave"));

    QSet<QString> titles;
    for (int row = 0; row < 16; ++row) {
        titles.insert(panel->title(row));
        QVERIFY(dynamic_cast<CVWidget *>(panel->cell(row)));
        QCOMPARE(panel->cell(row)->children().size(), 1);
        QVERIFY(panel->label(row));
        QCOMPARE(panel->label(row)->text(), ZRLocalize::translate(waiting));
        QCOMPARE(dynamic_cast<CVWidget *>(panel->cell(row))->text(), panel->label(row)->text());
    }
    QCOMPARE(titles.size(), 16);
    QCOMPARE(panel->testTable->editTriggers(), QAbstractItemView::NoEditTriggers);
}

void tst_VorlynDeviceGenerationWidget::texts()
{
    const auto shown = [this] {
        QStringList texts;
        for (int row = 0; row < 16; ++row)
            texts << panel->title(row);
        for (int column = 0; column < 2; ++column)
            texts << panel->testTable->horizontalHeaderItem(column)->text();
        texts << panel->findChild<QLabel *>("wifiLabel")->text();
        for (const char *name : {"dayButton", "nightButton", "autoButton"})
            texts << panel->findChild<QPushButton *>(name)->text();
        return texts;
    };
    const QStringList english = shown();
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    const QStringList chinese = shown();
    for (int i = 0; i < english.size(); ++i)
        QVERIFY2(english[i] != chinese[i] && !english[i].isEmpty(), qPrintable(english[i]));
    panel = std::make_unique<Panel>();
    QCOMPARE(shown(), chinese);
}

void tst_VorlynDeviceGenerationWidget::languageKeepsResults()
{
    panel->setResult(sdCard, 1);
    panel->setWiFiInfos(twoNetworks());
    QVERIFY(ZRLocalize::switchLanguage("cn"));
    QCOMPARE(panel->state(sdCard),
        QString::fromUtf8("\xE6\xB5\x8B\xE8\xAF\x95\xE9\x80\x9A"
                          "\xE8\xBF\x87"));
    QCOMPARE(panel->state(1), ZRLocalize::translate(waiting));
    QCOMPARE(panel->networks(), twoTexts);
}

void tst_VorlynDeviceGenerationWidget::states_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QColor>("color");
    QTest::newRow("passed") << 1 << "Test Success" << QColor(17, 160, 17);
    QTest::newRow("failed") << 2 << "Test Failure" << QColor(255, 0, 0);
    for (const int other : {0, 3, -1, 1000000})
        QTest::addRow("%d", other) << other << waiting << QColor(0, 0, 0);
}

void tst_VorlynDeviceGenerationWidget::states()
{
    QFETCH(int, result);
    QFETCH(QString, key);
    QVERIFY(panel->callSDCard(2)); // what was there before doesn't stay
    QVERIFY(panel->callSDCard(result));
    QCOMPARE(panel->testResults.value(sdCard), result);
    QCOMPARE(panel->state(sdCard), ZRLocalize::translate(key));
    QTEST(panel->color(sdCard), "color");
    QCOMPARE(panel->state(::millimeterWave), ZRLocalize::translate(waiting));
}

void tst_VorlynDeviceGenerationWidget::sdCardFromAnotherThread()
{
    const OffThread worker([this] { panel->callSDCard(1); });
    QVERIFY(worker.isDoneWithoutEvents());
    QCOMPARE(panel->testResults.value(sdCard), 0);
    QCoreApplication::sendPostedEvents(panel.get());
    QCOMPARE(panel->state(sdCard), ZRLocalize::translate("Test Success"));
}

void tst_VorlynDeviceGenerationWidget::millimeterWave_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("result");
    for (const char *good : {"on", "ON", "On"})
        QTest::newRow(good) << QString(good) << 1;
    for (const char *bad : {"off", "", "body", "on ", "no body"})
        QTest::addRow("\"%s\"", bad) << QString(bad) << 2;
}

void tst_VorlynDeviceGenerationWidget::millimeterWave()
{
    QFETCH(QString, status);
    QFETCH(int, result);
    QVERIFY(panel->callMillimeterWave(status));
    QCOMPARE(panel->testResults.value(::millimeterWave), result);
    QCOMPARE(panel->state(::millimeterWave),
        ZRLocalize::translate(result == 1 ? "Test Success" : "Test Failure"));
    QCOMPARE(panel->state(sdCard), ZRLocalize::translate(waiting));
}

// Elsewhere, while the GUI thread stands still and shows nothing of the panel: it acts at once.
void tst_VorlynDeviceGenerationWidget::millimeterWaveDoesNotCross()
{
    QVERIFY(!panel->isVisible());
    const OffThread worker([this] { panel->callMillimeterWave("on"); });
    QVERIFY(worker.isDoneWithoutEvents());
    QCOMPARE(panel->testResults.value(::millimeterWave), 1);
    QCOMPARE(panel->state(::millimeterWave), ZRLocalize::translate("Test Success"));
}

void tst_VorlynDeviceGenerationWidget::unknownTests()
{
    panel->testIds[panel->rowOf(::millimeterWave)] = 99;
    panel->testIds[panel->rowOf(sdCard)] = 98;
    panel->testResults.clear();
    QVERIFY(panel->callMillimeterWave("on"));
    QVERIFY(panel->callSDCard(1));
    panel->setResult(1234, 1);
    QVERIFY(panel->testResults.isEmpty());
    for (int row = 0; row < 16; ++row)
        QCOMPARE(panel->label(row)->text(), ZRLocalize::translate(waiting));
}

void tst_VorlynDeviceGenerationWidget::firstRowOfAnId()
{
    const int row = panel->rowOf(::millimeterWave);
    QVERIFY(row > 0);
    panel->testIds[0] = ::millimeterWave;
    QVERIFY(panel->callMillimeterWave("on"));
    QCOMPARE(panel->label(0)->text(), ZRLocalize::translate("Test Success"));
    QCOMPARE(panel->label(row)->text(), ZRLocalize::translate(waiting));
}

void tst_VorlynDeviceGenerationWidget::missingResultIsCreated()
{
    panel->testResults.clear();
    panel->onLanguageChanged(); // updates each row
    QCOMPARE(panel->testResults.size(), 16);
    QCOMPARE(panel->testResults.value(sdCard, -1), 0);
}

void tst_VorlynDeviceGenerationWidget::otherTests()
{
    for (const int id : qAsConst(panel->testIds)) {
        panel->setResult(id, 1);
        QCOMPARE(panel->state(id), ZRLocalize::translate("Test Success"));
    }
}

void tst_VorlynDeviceGenerationWidget::networks()
{
    panel->setWiFiInfos(twoNetworks());
    QCOMPARE(panel->networks(), twoTexts);
    panel->wifiInfos.removeFirst();
    QVERIFY(panel->call("updateWiFiInfos")); // in place of the old ones
    QCOMPARE(panel->networks(), twoTexts.mid(1));
    panel->setWiFiInfos({});
    QCOMPARE(panel->networks(), QStringList());
}

void tst_VorlynDeviceGenerationWidget::networksFromAnotherThread()
{
    panel->wifiInfos = twoNetworks();
    const OffThread worker([this] { panel->call("updateWiFiInfos"); });
    QVERIFY(worker.isDoneWithoutEvents());
    QCOMPARE(panel->networks(), QStringList());
    QCoreApplication::sendPostedEvents(panel.get());
    QCOMPARE(panel->networks(), twoTexts);
}

void tst_VorlynDeviceGenerationWidget::irCut_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("value");
    QTest::newRow("day") << "dayButton" << QByteArray("testIRCutDay") << "day";
    QTest::newRow("night") << "nightButton" << QByteArray("testIRCutNight") << "night";
    QTest::newRow("auto") << "autoButton" << QByteArray("testIRCutAuto") << "auto";
}

void tst_VorlynDeviceGenerationWidget::irCut()
{
    QFETCH(QString, button);
    QFETCH(QString, value);
    CameraBench bench;
    QVERIFY(bench.isReady());
    panel->setDevice(makeDevices({"a", "b"})[1]);
    panel->findChild<QPushButton *>(button)->click();
    const QJsonObject request = bench.request();
    QCOMPARE(request["method"].toString(), QString("SetIRcut"));
    QCOMPARE(request["ircut"].toString(), value);
    QCOMPARE(CameraBench::targets(request), QStringList("cam1"));
    QVERIFY(!QApplication::activeModalWidget()); // no question
    QVERIFY(bench.isQuiet()); // once
}

void tst_VorlynDeviceGenerationWidget::irCutBlocksAnotherThread()
{
    QFETCH(QByteArray, slot);
    QFETCH(QString, value);
    CameraBench bench;
    QVERIFY(bench.isReady());
    panel->setDevice(makeDevices({"a"})[0]);
    const OffThread worker([this, slot] { panel->call(slot); });
    QVERIFY(bench.isQuiet()); // no event is handled meanwhile
    QVERIFY(!worker.isDone());
    QTRY_VERIFY_WITH_TIMEOUT(worker.isDone(), 20000);
    QCOMPARE(bench.request()["ircut"].toString(), value);
}

void tst_VorlynDeviceGenerationWidget::irCutWithoutADevice()
{
    CameraBench bench;
    QVERIFY(bench.isReady());
    for (const char *slot : {"testIRCutDay", "testIRCutNight", "testIRCutAuto"})
        QVERIFY(panel->call(slot));
    QVERIFY(bench.isQuiet());
}

void tst_VorlynDeviceGenerationWidget::anotherDeviceBeginsAnew()
{
    VorlynDevice device = makeDevices({"a"})[0];
    panel->setDevice(device);
    panel->setResult(sdCard, 1);
    panel->setResult(3, 2);
    panel->setWiFiInfos(twoNetworks());

    device.setName("renamed"); // still the same one
    panel->setDevice(device);
    QCOMPARE(panel->device().name(), QString("renamed"));
    QCOMPARE(panel->state(sdCard), ZRLocalize::translate("Test Success"));
    QCOMPARE(panel->state(3), ZRLocalize::translate("Test Failure"));
    QCOMPARE(panel->networks(), twoTexts);

    panel->setDevice(makeDevices({"a", "b"})[1]);
    for (const int id : qAsConst(panel->testIds)) {
        QCOMPARE(panel->testResults.value(id), 0);
        QCOMPARE(panel->state(id), ZRLocalize::translate(waiting));
        QCOMPARE(panel->color(id), QColor(0, 0, 0));
    }
    QCOMPARE(panel->networks(), QStringList());
}

void tst_VorlynDeviceGenerationWidget::sameDeviceByItsSrcid_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<bool>("keeps");
    constexpr struct {
        const char *name;
        const char *before;
        const char *after;
        bool keeps;
    } rows[] = {
        {"its own", "cam0", "cam0", true},
        {"another", "cam0", "cam1", false},
        {"in other letters", "cam0", "CAM0", false},
        {"none", "", "", false},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QString(row.before) << QString(row.after) << row.keeps;
}

// A camera that has been given another MAC keeps its results.
void tst_VorlynDeviceGenerationWidget::sameDeviceByItsSrcid()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(bool, keeps);
    VorlynDevice device = makeDevices({"a"})[0];
    device.setValue("srcid", before);
    panel->setDevice(device);
    panel->setResult(sdCard, 1);
    panel->setWiFiInfos(twoNetworks());
    device.setMac("b");
    device.setValue("srcid", after);
    panel->setDevice(device);
    QCOMPARE(panel->device().mac(), QString("b"));
    QCOMPARE(panel->state(sdCard), ZRLocalize::translate(keeps ? "Test Success" : waiting));
    QCOMPARE(panel->networks(), keeps ? twoTexts : QStringList());
}

// Tab goes past the lists, so that none of their rows is marked; a click still marks one.
void tst_VorlynDeviceGenerationWidget::nothingLooksChosenAtFirst()
{
    panel->setDevice(makeDevices({"a"})[0]);
    panel->setWiFiInfos(twoNetworks());
    panel->show();
    QVERIFY(QTest::qWaitForWindowActive(panel.get()));
    panel->setFocus();
    QTest::keyClick(panel.get(), Qt::Key_Tab);
    QVERIFY(panel->findChild<QPushButton *>("dayButton")->hasFocus());
    const std::initializer_list<QAbstractItemView *> lists = {panel->testTable, panel->wifiList};
    for (const QAbstractItemView *list : lists) {
        QVERIFY(!list->currentIndex().isValid());
        QVERIFY(!list->selectionModel()->hasSelection());
    }
    const QRect cell = panel->testTable->visualItemRect(panel->testTable->item(3, 0));
    QTest::mouseClick(panel->testTable->viewport(), Qt::LeftButton, {}, cell.center());
    QVERIFY(panel->testTable->hasFocus());
    QCOMPARE(panel->testTable->currentRow(), 3);
}

void tst_VorlynDeviceGenerationWidget::resultsAreCopied()
{
    panel->setDevice(makeDevices({"a"})[0]);
    panel->setResult(sdCard, 1);
    QTest::keyClick(panel->testTable, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(panel->testTable, Qt::Key_C, Qt::ControlModifier);
    const QStringList lines = QGuiApplication::clipboard()->text().split('\n');
    QCOMPARE(lines.size(), 16);
    QCOMPARE(lines[panel->rowOf(1)], QString("Image Test\tNot Tested"));
    QCOMPARE(lines[panel->rowOf(sdCard)], QString("SD Card Test\tPassed"));
}

void tst_VorlynDeviceGenerationWidget::invalidDeviceDisables()
{
    QVERIFY(!panel->isEnabled());
    panel->setDevice(makeDevices({"a"})[0]);
    QVERIFY(panel->isEnabled());
    panel->setResult(sdCard, 1);
    panel->setDevice(VorlynDevice());
    QVERIFY(!panel->isEnabled());
    QCOMPARE(panel->state(sdCard), ZRLocalize::translate(waiting));
}

void tst_VorlynDeviceGenerationWidget::layout_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("language");
    for (const char *language : {"en", "cn"}) {
        for (const QSize &size : {QSize(1000, 400), QSize(1600, 500), QSize(700, 250)})
            QTest::addRow("%d x %d %s", size.width(), size.height(), language)
                << size << QString(language);
    }
}

void tst_VorlynDeviceGenerationWidget::layout()
{
    QFETCH(QSize, size);
    QFETCH(QString, language);
    QVERIFY(ZRLocalize::switchLanguage(language));
    panel->setDevice(makeDevices({"a"})[0]);
    panel->setResult(sdCard, 1);
    panel->setWiFiInfos(twoNetworks());
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
    panel->resize(size);
    QTRY_COMPARE(panel->size(), size);

    QVector<QRect> places;
    for (const char *name :
        {"testTable", "wifiLabel", "wifiList", "dayButton", "nightButton", "autoButton"}) {
        const auto *child = panel->findChild<QWidget *>(name);
        QVERIFY2(panel->rect().adjusted(10, 10, -10, -10).contains(child->geometry()), name);
        for (const QRect &other : qAsConst(places))
            QVERIFY2(!other.intersects(child->geometry()), name);
        places.append(child->geometry());
        if (const auto *button = qobject_cast<const QPushButton *>(child))
            QVERIFY2(button->sizeHint().width() <= button->width(), name);
    }
    // Each row is high and wide enough for its texts; all show at once where there is room.
    for (int row = 0; row < 16; ++row) {
        QVERIFY(panel->testTable->rowHeight(row) >= panel->fontMetrics().height() + 4);
        QVERIFY(panel->fontMetrics().horizontalAdvance(panel->title(row)) + 8
            <= panel->testTable->columnWidth(0));
        QVERIFY(panel->label(row)->width() >= panel->label(row)->sizeHint().width());
    }
    QTRY_COMPARE(panel->testTable->verticalScrollBar()->isVisible(), size.height() < 400);
    QVERIFY(!panel->testTable->horizontalScrollBar()->isVisible());
    QCOMPARE(panel->state(sdCard), ZRLocalize::translate("Test Success"));
    QCOMPARE(panel->networks(), twoTexts);
}

QTEST_MAIN(tst_VorlynDeviceGenerationWidget)
#include "tst_VorlynDeviceGenerationWidget.moc"
