#include "Devices.h"
#include "FactoryTestList.h"
#include "FactoryTestsPanel.h"
#include "HeldKey.h"
#include "MetaMethods.h"
#include "ModalDriver.h"
#include "VLStateItemWidget.h"
#include "VorlynDeviceGenerationWidget.h"

#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>

#include <memory>

namespace {
constexpr int wifiRow = 6;

class Generation : public VorlynDeviceGenerationWidget
{
public:
    Generation() : VorlynDeviceGenerationWidget(nullptr) { }
    using VorlynDeviceGenerationWidget::testResults;
};

VorlynDevice deviceWith(const QString &functions)
{
    VorlynDevice device = makeDevices({"02:56:4C:00:00:01"}).first();
    device.setFunctionId(functions);
    return device;
}

VorlynDevice anotherDevice()
{
    return makeDevices({"02:56:4C:00:00:01", "02:56:4C:00:00:02"}).last();
}

// As after a write of its MAC.
VorlynDevice withAnotherMac(VorlynDevice device)
{
    device.setMac("02:56:4C:00:00:99");
    return device;
}

void pass(FactoryDialog &dialog)
{
    dialog.accept();
}

void fail(FactoryDialog &dialog)
{
    dialog.reject();
}
}

class tst_FactoryTestsPanel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER); }
    void init();
    void cleanup();
    void metaObject();
    void rows();
    void languages_data();
    void languages();
    void functions_data();
    void functions();
    void longFunctionsShowTheirBeginning();
    void withoutADevice();
    void missingFunctionDoesNotOpen();
    void everyTestByTheButton();
    void ways_data();
    void ways();
    void heldKeyOpensNothing_data();
    void heldKeyOpensNothing();
    void results();
    void generationWidgetIsTold();
    void anotherDeviceBeginsAnew();
    void anotherMacIsTheSameDevice();
    void deviceChangesUnderTheDialog();
    void macChangesUnderTheDialog();
    void panelGoesUnderTheDialog();
    void tabLeavesTheTable();
    void layout_data();
    void layout();

private:
    QTableWidget *table() const { return panel->findChild<QTableWidget *>("testTable"); }
    QLineEdit *functionsLine() const { return panel->findChild<QLineEdit *>("functionsLine"); }
    QPushButton *button() const { return panel->findChild<QPushButton *>("openButton"); }
    QString text(int row, int column) const { return table()->item(row, column)->text(); }
    QString state(int row) const
    {
        return static_cast<VLStateItemWidget *>(table()->cellWidget(row, 2))->text();
    }

    std::unique_ptr<FactoryTestsPanel> panel;
};

void tst_FactoryTestsPanel::init()
{
    ZRLocalize::loadLanguage("none"); // texts are their keys
    panel = std::make_unique<FactoryTestsPanel>(nullptr);
    panel->resize(1000, 420);
    panel->setDevice(deviceWith("PAC,WIFI"));
    panel->show();
    QVERIFY(QTest::qWaitForWindowActive(panel.get()));
}

void tst_FactoryTestsPanel::cleanup()
{
    panel.reset();
}

void tst_FactoryTestsPanel::metaObject()
{
    const QMetaObject &meta = FactoryTestsPanel::staticMetaObject;
    QCOMPARE(meta.superClass()->className(), "ZRToast");
    QCOMPARE(ownMethods(meta), QStringList{"public signal testFinished(int,int)"});
}

void tst_FactoryTestsPanel::rows()
{
    QCOMPARE(table()->rowCount(), 16);
    QCOMPARE(table()->columnCount(), 3);
    for (int row = 0; row < 16; ++row) {
        QCOMPARE(text(row, 0), QString(factoryTests[row].title));
        QCOMPARE(state(row), QString("Wait for Test"));
        QCOMPARE(panel->result(factoryTests[row].id), int(FactoryTestWaiting));
    }
    QCOMPARE(text(5, 0), QString("Test SDCard"));
}

void tst_FactoryTestsPanel::languages_data()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << "en";
    QTest::newRow("Chinese") << "cn";
}

void tst_FactoryTestsPanel::languages()
{
    QFETCH(QString, language);
    QVERIFY(ZRLocalize::switchLanguage(language));
    const auto header = [this](
                            int column) { return table()->horizontalHeaderItem(column)->text(); };
    QCOMPARE(header(0), ZRLocalize::translate("Test Item"));
    QCOMPARE(header(1), ZRLocalize::translate("Device Function"));
    QCOMPARE(header(2), ZRLocalize::translate("Result"));
    QCOMPARE(button()->text(), ZRLocalize::translate("Open Test"));
    QVERIFY(button()->text() != "Open Test" || language == "en");
    QCOMPARE(text(wifiRow, 1), ZRLocalize::translate("Yes"));
    QCOMPARE(functionsLine()->text(), ZRLocalize::translate("Function ID") + ": PAC,WIFI");
    for (int row = 0; row < 16; ++row) {
        QCOMPARE(text(row, 0), ZRLocalize::translate(factoryTests[row].title));
        QCOMPARE(state(row), ZRLocalize::translate("Wait for Test"));
    }
}

void tst_FactoryTestsPanel::functions_data()
{
    QTest::addColumn<QString>("functions");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("wifi");
    constexpr struct {
        const char *name;
        const char *functions;
        const char *shown;
        const char *wifi;
    } rows[] = {
        {"with", "PAC,wifi", "PAC,wifi", "Yes"},
        {"without", "PAC", "PAC", "No"},
        {"another", "WIFI2, <b>x</b>", "WIFI2, <b>x</b>", "No"},
        {"none", "", "-", "No"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << row.functions << QString(row.shown) << row.wifi;
}

void tst_FactoryTestsPanel::functions()
{
    QFETCH(QString, functions);
    QFETCH(QString, shown);
    panel->setDevice(deviceWith(functions));
    QCOMPARE(functionsLine()->text(), "Function ID: " + shown);
    for (int row = 0; row < 16; ++row) {
        if (row == wifiRow)
            continue;
        QCOMPARE(text(row, 1), QString("-"));
        table()->setCurrentCell(row, 0);
        QVERIFY(button()->isEnabled());
    }
    QTEST(text(wifiRow, 1), "wifi");
    table()->setCurrentCell(wifiRow, 0);
    QCOMPARE(button()->isEnabled(), text(wifiRow, 1) == "Yes");
}

void tst_FactoryTestsPanel::longFunctionsShowTheirBeginning()
{
    panel->setDevice(deviceWith(QStringList(QVector<QString>(200, "PAC").toList()).join(',')));
    QCOMPARE(functionsLine()->cursorPosition(), 0);
    QVERIFY(functionsLine()->isReadOnly());
}

void tst_FactoryTestsPanel::withoutADevice()
{
    const FactoryTestsPanel fresh(nullptr);
    QVERIFY(!fresh.isEnabled());
    panel->setDevice(VorlynDevice());
    QVERIFY(!panel->isEnabled());
    QCOMPARE(text(0, 1), QString("-"));
    QCOMPARE(text(wifiRow, 1), QString("No"));
    QCOMPARE(functionsLine()->text(), QString("Function ID: -"));
    panel->setDevice(deviceWith("PAC"));
    QVERIFY(panel->isEnabled());
}

void tst_FactoryTestsPanel::missingFunctionDoesNotOpen()
{
    panel->setDevice(deviceWith("PAC"));
    const QSignalSpy finished(panel.get(), &FactoryTestsPanel::testFinished);
    table()->setCurrentCell(wifiRow, 0);
    table()->setFocus();
    QTest::keyClick(table(), Qt::Key_Return);
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(finished.isEmpty());
}

void tst_FactoryTestsPanel::everyTestByTheButton()
{
    const QSignalSpy finished(panel.get(), &FactoryTestsPanel::testFinished);
    for (int row = 0; row < 16; ++row) {
        table()->setCurrentCell(row, 0);
        QVERIFY(button()->isEnabled());
        QString title;
        ModalDriver<FactoryDialog> driver([&title](FactoryDialog &dialog) {
            title = dialog.windowTitle();
            dialog.accept();
        });
        button()->click();
        QCOMPARE(title, QString(factoryTests[row].title));
        QCOMPARE(finished.last(), QVariantList({factoryTests[row].id, 1}));
        QCOMPARE(state(row), QString("Test Success"));
    }
    QCOMPARE(finished.size(), 16);
}

void tst_FactoryTestsPanel::ways_data()
{
    QTest::addColumn<int>("column"); // of a double click; below 0 is Enter
    QTest::newRow("double click on the name") << 0;
    QTest::newRow("double click on the function") << 1;
    QTest::newRow("double click on the state") << 2;
    QTest::newRow("Enter") << -1;
}

void tst_FactoryTestsPanel::ways()
{
    QFETCH(int, column);
    const QSignalSpy finished(panel.get(), &FactoryTestsPanel::testFinished);
    table()->setCurrentCell(5, 0);
    table()->setFocus();
    ModalDriver<FactoryDialog> driver(pass);
    if (column < 0) {
        QTest::keyClick(table(), Qt::Key_Return);
    } else {
        QWidget *target = table()->cellWidget(5, column);
        const QRect cell = table()->visualRect(table()->model()->index(5, column));
        const QPoint place = target ? target->rect().center() : cell.center();
        if (!target)
            target = table()->viewport();
        QTest::mouseClick(target, Qt::LeftButton, {}, place);
        QTest::mouseDClick(target, Qt::LeftButton, {}, place);
    }
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.first(), QVariantList({6, 1}));
}

void tst_FactoryTestsPanel::heldKeyOpensNothing_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Enter") << int(Qt::Key_Enter);
}

// One press that is held opens the test, and neither answers it nor opens it again.
void tst_FactoryTestsPanel::heldKeyOpensNothing()
{
    QFETCH(int, key);
    const QSignalSpy finished(panel.get(), &FactoryTestsPanel::testFinished);
    table()->setCurrentCell(0, 0);
    table()->setFocus();
    {
        const ModalDriver<FactoryDialog> driver([key](FactoryDialog &dialog) {
            holdKey(dialog.focusWidget(), key);
            QVERIFY(dialog.isVisible());
            dialog.reject();
        });
        QTest::keyPress(table(), Qt::Key(key));
    }
    QCOMPARE(finished.size(), 1);
    QCOMPARE(panel->result(1), int(FactoryTestFailed));
    holdKey(table(), key);
    QCoreApplication::processEvents();
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(finished.size(), 1);
    const ModalDriver<FactoryDialog> driver(pass);
    QTest::keyPress(table(), Qt::Key(key));
    QCOMPARE(finished.size(), 2);
}

void tst_FactoryTestsPanel::results()
{
    table()->setCurrentCell(0, 0);
    for (const auto &answer : {pass, fail, pass}) {
        ModalDriver<FactoryDialog> driver(answer);
        button()->click();
        QCOMPARE(panel->result(1), int(answer == pass ? FactoryTestPassed : FactoryTestFailed));
        QCOMPARE(state(0), QString(answer == pass ? "Test Success" : "Test Failure"));
    }
    QCOMPARE(panel->result(2), int(FactoryTestWaiting));
    panel->setDevice(deviceWith("PAC")); // the same one
    QCOMPARE(panel->result(1), int(FactoryTestPassed));
}

void tst_FactoryTestsPanel::generationWidgetIsTold()
{
    Generation generation;
    panel->setGenerationWidget(&generation);
    table()->setCurrentCell(15, 0);
    ModalDriver<FactoryDialog> driver(fail);
    button()->click();
    QCOMPARE(generation.testResults.value(15), int(FactoryTestFailed));
}

void tst_FactoryTestsPanel::anotherDeviceBeginsAnew()
{
    ModalDriver<FactoryDialog> driver(pass);
    button()->click();
    QCOMPARE(panel->result(1), int(FactoryTestPassed));
    panel->setDevice(anotherDevice());
    QCOMPARE(panel->result(1), int(FactoryTestWaiting));
    QCOMPARE(state(0), QString("Wait for Test"));
}

void tst_FactoryTestsPanel::anotherMacIsTheSameDevice()
{
    ModalDriver<FactoryDialog> driver(pass);
    button()->click();
    panel->setDevice(withAnotherMac(panel->device()));
    QCOMPARE(panel->device().mac(), QString("02:56:4C:00:00:99"));
    QCOMPARE(panel->result(1), int(FactoryTestPassed));
    QCOMPARE(state(0), QString("Test Success"));
}

void tst_FactoryTestsPanel::deviceChangesUnderTheDialog()
{
    const QSignalSpy finished(panel.get(), &FactoryTestsPanel::testFinished);
    ModalDriver<FactoryDialog> driver([this](FactoryDialog &dialog) {
        panel->setDevice(anotherDevice());
        dialog.accept();
    });
    button()->click();
    QCOMPARE(panel->result(1), int(FactoryTestWaiting));
    QVERIFY(finished.isEmpty());
}

void tst_FactoryTestsPanel::macChangesUnderTheDialog()
{
    const QSignalSpy finished(panel.get(), &FactoryTestsPanel::testFinished);
    ModalDriver<FactoryDialog> driver([this](FactoryDialog &dialog) {
        panel->setDevice(withAnotherMac(panel->device()));
        dialog.accept();
    });
    button()->click();
    QCOMPARE(panel->result(1), int(FactoryTestPassed));
    QCOMPARE(finished.size(), 1);
}

void tst_FactoryTestsPanel::panelGoesUnderTheDialog()
{
    ModalDriver<FactoryDialog> driver([this](FactoryDialog &dialog) {
        panel->deleteLater();
        QCoreApplication::sendPostedEvents(panel.release(), QEvent::DeferredDelete);
        dialog.accept();
    });
    table()->setFocus();
    QTest::keyClick(table(), Qt::Key_Return);
}

// From any row to the button, and back.
void tst_FactoryTestsPanel::tabLeavesTheTable()
{
    table()->setFocus();
    table()->setCurrentCell(3, 0);
    QTest::keyClick(table(), Qt::Key_Tab);
    QVERIFY(button()->hasFocus());
    QTest::keyClick(button(), Qt::Key_Tab, Qt::ShiftModifier);
    QVERIFY(table()->hasFocus());
    QCOMPARE(table()->currentRow(), 3);
}

void tst_FactoryTestsPanel::layout_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("wide") << QSize(1400, 500);
    QTest::newRow("low") << QSize(700, 240);
}

// Nothing lies over another, and every text can be read.
void tst_FactoryTestsPanel::layout()
{
    QFETCH(QSize, size);
    panel->resize(size);
    QVERIFY(panel->rect().contains(table()->geometry()));
    QVERIFY(panel->rect().contains(button()->geometry()));
    QVERIFY(!table()->geometry().intersects(button()->geometry()));
    QVERIFY(panel->rect().contains(functionsLine()->geometry()));
    QVERIFY(!functionsLine()->geometry().intersects(table()->geometry()));
    QVERIFY(!functionsLine()->geometry().intersects(button()->geometry()));
    for (int row = 0; row < 16; ++row)
        QVERIFY(table()->rowHeight(row) >= table()->fontMetrics().height());
    QVERIFY(!table()->horizontalScrollBar()->isVisible());
}

QTEST_MAIN(tst_FactoryTestsPanel)
#include "tst_FactoryTestsPanel.moc"
