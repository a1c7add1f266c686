#include "CVTableWidget.h"
#include "CVWidget.h"
#include "KeyHost.h"

#include <QClipboard>
#include <QLabel>
#include <QScopedPointer>
#include <QtTest>

using Cells = QVector<QPair<int, int>>;
Q_DECLARE_METATYPE(Cells)

class tst_CVTableWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void selectedText_data();
    void selectedText();
    void orderOfTheListIsFree();
    void itemsBeforeWidgets();
    void copies_data();
    void copies();
    void nothingSelectedKeepsTheClipboard();
    void otherKeysGoToTheView();
    void qtDefaultsStand();

private:
    QModelIndexList indexes(const Cells &cells) const;
    void select(const Cells &cells);

    QScopedPointer<KeyHost> host;
    CVTableWidget *table = nullptr;
};

// Three rows of a tick, a number, an "m" and an "i", as the device table has them.
void tst_CVTableWidget::init()
{
    host.reset(new KeyHost);
    table = new CVTableWidget(host.data());
    table->setRowCount(3);
    table->setColumnCount(4);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column)
            table->setItem(row, column, new QTableWidgetItem);
        table->setCellWidget(row, 0, new VLCheckItemWidget(table));
        const QString texts[] = {
            QString::number(row + 1), QString("m%1").arg(row), QString("i%1").arg(row)};
        for (int i = 0; i < 3; ++i) {
            auto *cell = new VLTextItemWidget(table);
            cell->setText(texts[i]);
            table->setCellWidget(row, i + 1, cell);
        }
    }
    host->resize(600, 400);
    table->resize(600, 400);
    host->show();
    QVERIFY(QTest::qWaitForWindowExposed(host.data()));
}

QModelIndexList tst_CVTableWidget::indexes(const Cells &cells) const
{
    QModelIndexList list;
    for (const auto &cell : cells)
        list.append(table->model()->index(cell.first, cell.second));
    return list;
}

void tst_CVTableWidget::select(const Cells &cells)
{
    table->clearSelection();
    for (const QModelIndex &index : indexes(cells))
        table->selectionModel()->select(index, QItemSelectionModel::Select);
}

void tst_CVTableWidget::selectedText_data()
{
    QTest::addColumn<Cells>("cells");
    QTest::addColumn<QString>("text");

    QTest::newRow("none") << Cells() << QString();
    QTest::newRow("one") << Cells{{1, 2}} << "m1";
    QTest::newRow("a row") << Cells{{0, 1}, {0, 2}, {0, 3}} << "1\tm0\ti0";
    QTest::newRow("MAC and IP of two rows")
        << Cells{{0, 2}, {0, 3}, {1, 2}, {1, 3}} << "m0\ti0\nm1\ti1";
    QTest::newRow("gap in a row") << Cells{{0, 1}, {0, 3}} << "1\t\ti0";
    QTest::newRow("later row begins further right") << Cells{{0, 1}, {1, 3}} << "1\n\t\ti1";
    QTest::newRow("earlier row begins further right") << Cells{{0, 3}, {1, 1}} << "\t\ti0\n2";
    QTest::newRow("left-out row leaves no line") << Cells{{0, 2}, {2, 2}} << "m0\nm2";
    QTest::newRow("column 0 alone") << Cells{{0, 0}, {1, 0}, {2, 0}} << "\n\n";
    QTest::newRow("column 0, one cell") << Cells{{1, 0}} << QString();
    QTest::newRow("column 0 with others") << Cells{{0, 0}, {0, 2}} << "\t\tm0";
}

void tst_CVTableWidget::selectedText()
{
    QFETCH(Cells, cells);
    QTEST(table->selectedText(indexes(cells)), "text");
}

void tst_CVTableWidget::orderOfTheListIsFree()
{
    QCOMPARE(
        table->selectedText(indexes({{1, 3}, {0, 2}, {1, 2}, {0, 3}})), QString("m0\ti0\nm1\ti1"));
}

void tst_CVTableWidget::itemsBeforeWidgets()
{
    table->item(0, 2)->setText("item");
    QCOMPARE(table->selectedText(indexes({{0, 2}})), QString("item"));
    table->item(0, 2)->setData(Qt::DisplayRole, 5); // valid, but no text
    QCOMPARE(table->selectedText(indexes({{0, 2}})), QString());
    table->setCellWidget(1, 2, new QLabel("no cell of ours"));
    QCOMPARE(table->selectedText(indexes({{1, 2}})), QString());
    table->removeCellWidget(2, 2);
    QCOMPARE(table->selectedText(indexes({{2, 2}})), QString());
}

void tst_CVTableWidget::copies_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<bool>("copied");
    QTest::newRow("Ctrl+C") << int(Qt::Key_C) << int(Qt::ControlModifier) << true;
    QTest::newRow("Ctrl+Shift+C") << int(Qt::Key_C) << int(Qt::ControlModifier | Qt::ShiftModifier)
                                  << false;
    QTest::newRow("Ctrl+Alt+C") << int(Qt::Key_C) << int(Qt::ControlModifier | Qt::AltModifier)
                                << false;
    QTest::newRow("C") << int(Qt::Key_C) << int(Qt::NoModifier) << false;
    QTest::newRow("Ctrl+X") << int(Qt::Key_X) << int(Qt::ControlModifier) << false;
}

void tst_CVTableWidget::copies()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(bool, copied);
    QGuiApplication::clipboard()->setText("before");
    select({{0, 2}, {0, 3}});
    QTest::keyClick(table, Qt::Key(key), Qt::KeyboardModifiers(modifiers));
    QCOMPARE(QGuiApplication::clipboard()->text(), QString(copied ? "m0\ti0" : "before"));
    QVERIFY(!copied || !host->keys.contains(key)); // the table took the key
}

void tst_CVTableWidget::nothingSelectedKeepsTheClipboard()
{
    QGuiApplication::clipboard()->setText("before");
    select({});
    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
    QVERIFY(!host->keys.contains(Qt::Key_C));

    select({{0, 0}}); // an empty text changes nothing either
    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
}

void tst_CVTableWidget::otherKeysGoToTheView()
{
    table->setCurrentCell(0, 2);
    QTest::keyClick(table, Qt::Key_Down);
    QCOMPARE(table->currentRow(), 1);
    QTest::keyClick(table, Qt::Key_F7);
    QCOMPARE(host->keys, QVector<int>{Qt::Key_F7});
}

void tst_CVTableWidget::qtDefaultsStand()
{
    const QTableWidget plain;
    QCOMPARE(table->selectionMode(), plain.selectionMode());
    QCOMPARE(table->selectionBehavior(), plain.selectionBehavior());
    QCOMPARE(table->editTriggers(), plain.editTriggers());
}

QTEST_MAIN(tst_CVTableWidget)
#include "tst_CVTableWidget.moc"
