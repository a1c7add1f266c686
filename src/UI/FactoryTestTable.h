#pragma once

class QTableWidget;

// A table of the factory tests: a row each, in the order of FactoryTestList.h, with the test's name
// in the first column and its state in the last one. Read-only. GUI thread.
namespace FactoryTestTable {

// Makes the rows. Whatever stands between the two columns is the caller's.
void setUp(QTableWidget &table, int columnCount);
// The names, in the language that is loaded.
void showNames(QTableWidget &table);
void showState(QTableWidget &table, int row, int state);

}
