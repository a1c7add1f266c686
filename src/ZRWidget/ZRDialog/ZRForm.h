#pragma once

#include <initializer_list>

class QLabel;
class QLineEdit;
class QWidget;

// Small means of the dialogs that are forms. GUI thread only.
namespace ZRForm {

// A label with the field that it names. Pixels; rows have one height.
struct Row {
    QLabel *label;
    QWidget *field;
    int y;
    int fieldWidth;
};
constexpr int rowHeight = 25;

// Places a column of rows: the labels at `x`, all as wide as the widest of them, the fields beside.
void placeColumn(std::initializer_list<Row> rows, int x);

// What the text says; 0 when it isn't a number.
double numberIn(const QLineEdit *edit);

}
