#include "FactoryTestTable.h"

#include "FactoryTestList.h"
#include "VLStateItemWidget.h"
#include "ZRLocalize.h"

#include <QHeaderView>
#include <QTableWidget>

#include <iterator>

namespace {
constexpr int nameColumn = 0;
constexpr int narrowColumn = 120; // all but the names
constexpr int lowestRow = 22;
}

// Rows share the height of the table as long as their texts can be read.
void FactoryTestTable::setUp(QTableWidget &table, int columnCount)
{
    table.setColumnCount(columnCount);
    table.setRowCount(int(std::size(factoryTests)));
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.setTabKeyNavigation(false); // Tab goes on to the next control
    table.horizontalHeader()->setHighlightSections(false);
    table.horizontalHeader()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    for (int column = nameColumn + 1; column < columnCount; ++column)
        table.setColumnWidth(column, narrowColumn);
    table.verticalHeader()->hide();
    table.verticalHeader()->setMinimumSectionSize(lowestRow);
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    for (int row = 0; row < table.rowCount(); ++row) {
        table.setItem(row, nameColumn, new QTableWidgetItem);
        table.setCellWidget(row, columnCount - 1, new VLStateItemWidget(&table));
    }
}

void FactoryTestTable::showNames(QTableWidget &table)
{
    for (int row = 0; row < table.rowCount(); ++row)
        table.item(row, nameColumn)->setText(ZRLocalize::translate(factoryTests[row].title));
}

void FactoryTestTable::showState(QTableWidget &table, int row, int state)
{
    static_cast<VLStateItemWidget *>(table.cellWidget(row, table.columnCount() - 1))
        ->setState(state);
}
