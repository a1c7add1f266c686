#include "QCheckBoxHeaderWidget.h"

#include "ZRNamedChild.h"

#include <QCheckBox>

QCheckBoxHeaderWidget::QCheckBoxHeaderWidget(QWidget *parent)
    : QHeaderView(Qt::Horizontal, parent), checkBox(namedChild<QCheckBox>(viewport(), "checkBox"))
{
    checkBox->adjustSize();
    setSectionsClickable(true);
    connect(this, &QHeaderView::sectionResized, this, &QCheckBoxHeaderWidget::onSectionResized);
}

void QCheckBoxHeaderWidget::updateGeometries()
{
    checkBox->move(sectionPosition(0) + (sectionSize(0) - checkBox->width()) / 2, 5);
}

void QCheckBoxHeaderWidget::onSectionResized(int logicalIndex, int, int)
{
    if (logicalIndex == 0)
        updateGeometries();
}
