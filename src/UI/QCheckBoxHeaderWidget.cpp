#include "QCheckBoxHeaderWidget.h"

#include "ZRNamedChild.h"

#include <QCheckBox>

namespace {
const int boxTop = 5;
}

QCheckBoxHeaderWidget::QCheckBoxHeaderWidget(QWidget *parent) :
    QHeaderView(Qt::Horizontal, parent),
    checkBox(namedChild<QCheckBox>(viewport(), "checkBox"))
{
    checkBox->adjustSize();
    setMinimumHeight(boxTop + checkBox->height() + boxTop); // a style's header can be lower
    setSectionsClickable(true);
    connect(this, &QHeaderView::sectionResized, this, &QCheckBoxHeaderWidget::onSectionResized);
}

void QCheckBoxHeaderWidget::updateGeometries()
{
    checkBox->move(sectionPosition(0) + (sectionSize(0) - checkBox->width()) / 2, boxTop);
}

void QCheckBoxHeaderWidget::onSectionResized(int logicalIndex, int, int)
{
    if (logicalIndex == 0)
        updateGeometries();
}
