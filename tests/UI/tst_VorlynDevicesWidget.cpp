#include "CVTableWidget.h"
#include "CVWidget.h"
#include "Devices.h"
#include "KeyHost.h"
#include "MetaMethods.h"
#include "VorlynDevicesWidget.h"
#include "ZRLocalize.h"

#include <QCheckBox>
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QScopedPointer>
#include <QtTest>

class tst_VorlynDevicesWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void metaObject();
    void beforeTheFirstSearch();
    void columns();
    void rows();
    void ticksOfTheListShow();
    void callersListIsUntouched();
    void emptySearchLeavesBlankRows();
    void shorterSearch();
    void headersFollowTheLanguage();
    void deviceOutOfRange_data();
    void deviceOutOfRange();
    void headerTicksAll();
    void lastTickTicksTheHeader();
    void headerBoxSurvivesASearch();
    void selectedDevices();
    void updateByIndex();
    void updateSkipsStrangers();
    void updateShowsTheTick();
    void updateTakesManyInOrder();
    void currentCell();
    void searchAfterAClick();
    void copiesMacAndIp();
    void keysGoOn();
    void geometry_data();
    void geometry();
    void cellsLieInTheirPlaces();
    void widthOfColumns();

private:
    CVTableWidget *table() const { return panel->tableWidget(); }
    QCheckBox *headerBox() const
    {
        return table()->horizontalHeader()->findChild<QCheckBox *>("checkBox");
    }
    QCheckBox *box(int row) const
    {
        return table()->cellWidget(row, 0)->findChild<QCheckBox *>("checkBox");
    }
    QStringList texts(int row) const
    {
        QStringList list;
        for (int column = 1; column < 4; ++column)
            list << dynamic_cast<CVWidget &>(*table()->cellWidget(row, column)).text();
        return list;
    }
    QVector<bool> boxes() const
    {
        QVector<bool> ticks;
        for (int row = 0; panel->device(row).isValid(); ++row)
            ticks << box(row)->isChecked();
        return ticks;
    }

    QScopedPointer<KeyHost> host;
    VorlynDevicesWidget *panel = nullptr;
};

void tst_VorlynDevicesWidget::init()
{
    host.reset(new KeyHost);
    panel = new VorlynDevicesWidget(host.data());
    panel->resize(400, 300);
    host->resize(500, 400);
    host->show();
    QVERIFY(QTest::qWaitForWindowExposed(host.data()));
}

void tst_VorlynDevicesWidget::metaObject()
{
    QCOMPARE(panel->metaObject()->className(), "VorlynDevicesWidget");
    QCOMPARE(ownMethods(VorlynDevicesWidget::staticMetaObject), QStringList());
}

void tst_VorlynDevicesWidget::beforeTheFirstSearch()
{
    QCOMPARE(table()->parentWidget(), panel);
    QCOMPARE(table()->rowCount(), 0);
    QCOMPARE(table()->columnCount(), 0);
    QVERIFY(!panel->device(0).isValid());
    QVERIFY(panel->selectedDevices().isEmpty());
    headerBox()->click();
    QVERIFY(panel->selectedDevices().isEmpty());
}

void tst_VorlynDevicesWidget::columns()
{
    panel->setDevices(makeDevices({"a"}));
    const struct {
        const char *header;
        int width;
    } expected[] = {{"", 30}, {"No.", 30}, {"Mac", 160}, {"IP", 160}};
    QCOMPARE(table()->columnCount(), 4);
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(table()->horizontalHeaderItem(i)->text(), QString(expected[i].header));
        QCOMPARE(table()->columnWidth(i), expected[i].width);
    }
    QVERIFY(table()->verticalHeader()->isHidden());

    const QTableWidget plain; // its defaults stand
    QCOMPARE(table()->selectionMode(), plain.selectionMode());
    QCOMPARE(table()->selectionBehavior(), plain.selectionBehavior());
    QCOMPARE(table()->editTriggers(), plain.editTriggers());
}

void tst_VorlynDevicesWidget::rows()
{
    panel->setDevices(makeDevices({"a", "b", "c"}));
    QCOMPARE(table()->rowCount(), 3);
    for (int row = 0; row < 3; ++row) {
        QCOMPARE(panel->device(row).index, row);
        QCOMPARE(texts(row),
            QStringList({QString::number(row + 1), QString("abc"[row]),
                QString("10.77.0.%1").arg(10 + row)}));
        QVERIFY(!box(row)->isChecked());
        for (int column = 0; column < 4; ++column)
            QVERIFY(!table()->item(row, column)->data(Qt::DisplayRole).isValid());
    }
}

void tst_VorlynDevicesWidget::ticksOfTheListShow()
{
    QVector<VorlynDevice> devices = makeDevices({"a", "b"});
    devices[1].checked = true;
    panel->setDevices(devices);
    QCOMPARE(boxes(), QVector<bool>({false, true}));
}

void tst_VorlynDevicesWidget::callersListIsUntouched()
{
    const QVector<VorlynDevice> devices = makeDevices({"a", "b"});
    panel->setDevices(devices);
    QCOMPARE(devices[1].index, -1);
}

void tst_VorlynDevicesWidget::emptySearchLeavesBlankRows()
{
    panel->setDevices(makeDevices({"a", "b", "c", "d", "e"}));
    panel->setDevices({});
    QCOMPARE(table()->rowCount(), 5);
    QCOMPARE(table()->columnCount(), 4);
    QCOMPARE(table()->horizontalHeaderItem(3)->text(), QString("IP"));
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 4; ++column) {
            QVERIFY(!table()->cellWidget(row, column));
            QVERIFY(!table()->item(row, column));
        }
    }
    QVERIFY(!panel->device(0).isValid());
    headerBox()->click();
    QVERIFY(panel->selectedDevices().isEmpty());

    panel->setDevices(makeDevices({"f"}));
    QCOMPARE(table()->rowCount(), 1);
    QCOMPARE(texts(0), QStringList({"1", "f", "10.77.0.10"}));
}

void tst_VorlynDevicesWidget::shorterSearch()
{
    panel->setDevices(makeDevices({"a", "b", "c"}));
    panel->setDevices(makeDevices({"x", "y"}));
    QCOMPARE(table()->rowCount(), 2);
    QCOMPARE(texts(1), QStringList({"2", "y", "10.77.0.11"}));
    QVERIFY(!panel->device(2).isValid());
    QCOMPARE(table()->viewport()->findChildren<QLabel *>("label").size(), 2 * 3);
}

void tst_VorlynDevicesWidget::headersFollowTheLanguage()
{
    QTemporaryDir folder;
    QFile file(folder.filePath("test.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Mac = M\nIP = I\nNo. = N\n");
    file.close();
    ZRLocalize::setLanguageFolder(folder.path());
    QVERIFY(ZRLocalize::loadLanguage("test"));
    panel->setDevices(makeDevices({"a"}));
    ZRLocalize::loadLanguage("none");

    QStringList headers;
    for (int i = 0; i < 4; ++i)
        headers << table()->horizontalHeaderItem(i)->text();
    QCOMPARE(headers, QStringList({"", "No.", "M", "I"})); // the number's is never translated
}

void tst_VorlynDevicesWidget::deviceOutOfRange_data()
{
    QTest::addColumn<int>("row");
    for (int row : {-1, -100, 2, 3})
        QTest::addRow("%d", row) << row;
}

void tst_VorlynDevicesWidget::deviceOutOfRange()
{
    QFETCH(int, row);
    panel->setDevices(makeDevices({"a", "b"}));
    QVERIFY(!panel->device(row).isValid());
    QCOMPARE(panel->device(row).index, -1);
    QCOMPARE(panel->device(row).mac(), QString());
}

void tst_VorlynDevicesWidget::headerTicksAll()
{
    panel->setDevices(makeDevices({"a", "b", "c"}));
    QVector<QSignalSpy *> clicks;
    for (int row = 0; row < 3; ++row)
        clicks << new QSignalSpy(static_cast<VLCheckItemWidget *>(table()->cellWidget(row, 0)),
            &VLCheckItemWidget::clicked);
    QTest::mouseClick(headerBox(), Qt::LeftButton);
    QCOMPARE(boxes(), QVector<bool>(3, true));
    QCOMPARE(panel->selectedDevices().size(), 3);
    headerBox()->click();
    QCOMPARE(boxes(), QVector<bool>(3, false));
    QVERIFY(panel->selectedDevices().isEmpty());
    for (QSignalSpy *spy : clicks)
        QCOMPARE(spy->count(), 0);
    qDeleteAll(clicks);
}

void tst_VorlynDevicesWidget::lastTickTicksTheHeader()
{
    panel->setDevices(makeDevices({"a", "b", "c"}));
    for (int row : {2, 0}) {
        box(row)->click();
        QVERIFY(!headerBox()->isChecked());
    }
    box(1)->click();
    QVERIFY(headerBox()->isChecked());
    box(2)->click();
    QVERIFY(!headerBox()->isChecked());
    QCOMPARE(boxes(), QVector<bool>({true, true, false}));
}

// The box of the header says nothing of a new list, until a box of a row is clicked.
void tst_VorlynDevicesWidget::headerBoxSurvivesASearch()
{
    panel->setDevices(makeDevices({"a", "b"}));
    headerBox()->click();
    panel->setDevices(makeDevices({"a", "b"}));
    QVERIFY(headerBox()->isChecked());
    QCOMPARE(boxes(), QVector<bool>({false, false}));
    QVERIFY(panel->selectedDevices().isEmpty());
    box(0)->click();
    QVERIFY(!headerBox()->isChecked());
}

void tst_VorlynDevicesWidget::selectedDevices()
{
    panel->setDevices(makeDevices({"a", "b", "c", "d"}));
    QVERIFY(panel->selectedDevices().isEmpty());
    box(3)->click();
    box(1)->click();
    QVector<VorlynDevice> selected = panel->selectedDevices();
    QCOMPARE(selected.size(), 2);
    QCOMPARE(selected[0].mac(), QString("b"));
    QCOMPARE(selected[1].index, 3);

    selected[0].setMac("changed"); // a copy
    QCOMPARE(panel->device(1).mac(), QString("b"));
}

// The row number is the identity: a new MAC leaves the row where it is, unsorted.
void tst_VorlynDevicesWidget::updateByIndex()
{
    panel->setDevices(makeDevices({"a", "b", "c"}));
    VorlynDevice changed = panel->device(2);
    changed.setMac("a"); // another row has it
    changed.setIp("10.9.9.9");
    changed.setName("new");
    panel->updateDevices({changed});
    QCOMPARE(texts(0), QStringList({"1", "a", "10.77.0.10"}));
    QCOMPARE(texts(2), QStringList({"3", "a", "10.9.9.9"}));
    QCOMPARE(panel->device(2).name(), QString("new"));
    QCOMPARE(panel->device(0).name(), QString());
}

void tst_VorlynDevicesWidget::updateSkipsStrangers()
{
    panel->setDevices(makeDevices({"a", "b"}));
    QVector<VorlynDevice> strangers = makeDevices({"a", "x"}); // their index is -1
    strangers[1].index = 2;
    panel->updateDevices(strangers);
    panel->updateDevices({});
    QCOMPARE(table()->rowCount(), 2);
    QCOMPARE(texts(0), QStringList({"1", "a", "10.77.0.10"}));
    QCOMPARE(panel->device(0).srcid(), QString("cam0"));
    QVERIFY(!panel->device(2).isValid());
}

void tst_VorlynDevicesWidget::updateShowsTheTick()
{
    panel->setDevices(makeDevices({"a", "b"}));
    VorlynDevice changed = panel->device(0);
    changed.checked = true;
    panel->updateDevices({changed});
    QCOMPARE(boxes(), QVector<bool>({true, false}));
    QCOMPARE(panel->selectedDevices().size(), 1);
}

void tst_VorlynDevicesWidget::updateTakesManyInOrder()
{
    panel->setDevices(makeDevices({"a", "b", "c"}));
    VorlynDevice last = panel->device(2);
    last.setIp("10.9.9.3");
    VorlynDevice first = panel->device(0);
    first.setIp("10.9.9.1");
    VorlynDevice firstAgain = panel->device(0);
    firstAgain.setIp("10.9.9.2");
    panel->updateDevices({last, first, firstAgain});
    QStringList ips;
    for (int row = 0; row < 3; ++row)
        ips << texts(row).last();
    QCOMPARE(ips, QStringList({"10.9.9.2", "10.77.0.11", "10.9.9.3"}));
}

void tst_VorlynDevicesWidget::currentCell()
{
    panel->setDevices(makeDevices({"a", "b"}));
    QSignalSpy changed(table(), &QTableWidget::currentCellChanged);
    panel->setCurrentCell(1, 2);
    QCOMPARE(changed.takeFirst(), QVariantList({1, 2, -1, -1}));
    QCOMPARE(table()->currentRow(), 1);
    QCOMPARE(table()->currentColumn(), 2);
}

// The box that has the focus goes with its row.
void tst_VorlynDevicesWidget::searchAfterAClick()
{
    panel->setDevices(makeDevices({"a", "b", "c"}));
    QTest::mouseClick(box(1), Qt::LeftButton);
    box(1)->setFocus();
    panel->setDevices(makeDevices({"x", "y"}));
    QTest::mouseClick(box(0), Qt::LeftButton);
    QCOMPARE(panel->selectedDevices().size(), 1);
    QCOMPARE(panel->selectedDevices()[0].mac(), QString("x"));
}

void tst_VorlynDevicesWidget::copiesMacAndIp()
{
    panel->setDevices(makeDevices({"a", "b"}));
    table()->setRangeSelected(QTableWidgetSelectionRange(0, 2, 1, 3), true);
    QTest::keyClick(table(), Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("a\t10.77.0.10\nb\t10.77.0.11"));
    QVERIFY(!host->keys.contains(Qt::Key_C));
}

void tst_VorlynDevicesWidget::keysGoOn()
{
    QTest::keyClick(panel, Qt::Key_F5);
    QTest::keyClick(table(), Qt::Key_F6);
    QCOMPARE(host->keys, QVector<int>({Qt::Key_F5, Qt::Key_F6}));

    QKeyEvent event(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    QCoreApplication::sendEvent(panel, &event);
    QCOMPARE(host->keys.last(), int(Qt::Key_A));
}

void tst_VorlynDevicesWidget::geometry_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize &size : {QSize(400, 73), QSize(400, 573), QSize(123, 45)})
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
}

void tst_VorlynDevicesWidget::geometry()
{
    QFETCH(QSize, size);
    panel->resize(size);
    QCOMPARE(table()->geometry(), QRect(QPoint(0, 0), size));
}

void tst_VorlynDevicesWidget::cellsLieInTheirPlaces()
{
    for (int run = 0; run < 2; ++run) {
        panel->setDevices(makeDevices({"a", "b", "c"}));
        QVERIFY(table()->viewport()->isVisible());
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 4; ++column) {
                const QWidget *cell = table()->cellWidget(row, column);
                QVERIFY(cell->isVisible());
                QTRY_COMPARE(
                    cell->geometry(), table()->visualRect(table()->model()->index(row, column)));
            }
            const QLabel *label = table()->cellWidget(row, 2)->findChild<QLabel *>("label");
            QCOMPARE(label->size(), label->parentWidget()->size());
        }
    }
}

// The check-all box stands over the middle of the first column, whatever happens to the others.
void tst_VorlynDevicesWidget::widthOfColumns()
{
    panel->setDevices(makeDevices({"a"}));
    const auto centred = [this] {
        return QPoint((table()->columnWidth(0) - headerBox()->width()) / 2, 5);
    };
    QCOMPARE(headerBox()->pos(), centred());
    table()->setColumnWidth(0, 91);
    QCOMPARE(headerBox()->pos(), centred());
    const QPoint before = headerBox()->pos();
    table()->setColumnWidth(2, 60);
    QCOMPARE(headerBox()->pos(), before);
}

QTEST_MAIN(tst_VorlynDevicesWidget)
#include "tst_VorlynDevicesWidget.moc"
