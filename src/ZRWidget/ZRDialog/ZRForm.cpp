#include "ZRForm.h"

#include <QLabel>
#include <QLineEdit>

namespace {
const int fieldGap = 5;
}

void ZRForm::placeColumn(std::initializer_list<Row> rows, int x)
{
    int labelWidth = 0;
    for (const Row &row : rows) {
        row.label->adjustSize();
        labelWidth = qMax(labelWidth, row.label->width());
    }
    for (const Row &row : rows) {
        row.label->setGeometry(x, row.y, labelWidth, rowHeight);
        row.field->setGeometry(x + labelWidth + fieldGap, row.y, row.fieldWidth, rowHeight);
    }
}

double ZRForm::numberIn(const QLineEdit *edit)
{
    bool valid = false;
    const double number = edit->text().toDouble(&valid);
    return valid ? number : 0.0; // a number out of range reads as infinite, but not as valid
}
