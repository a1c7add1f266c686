#include "VLStateItemWidget.h"

#include "FactoryTestList.h"
#include "ZRLabel.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"

namespace {
struct Shown {
    const char *text;
    QColor color;
};

Shown shownFor(int state)
{
    switch (state) {
    case FactoryTestPassed:
        return {"Test Success", QColor(17, 160, 17)};
    case FactoryTestFailed:
        return {"Test Failure", QColor(255, 0, 0)};
    default:
        return {"Wait for Test", QColor(0, 0, 0)};
    }
}
}

VLStateItemWidget::VLStateItemWidget(QWidget *parent) :
    CVWidget(parent),
    label(namedChild<ZRLabel>(this, "label"))
{ }

void VLStateItemWidget::setState(int state)
{
    const Shown shown = shownFor(state);
    label->setTextColor(shown.color);
    label->setText(ZRLocalize::translate(QString::fromLatin1(shown.text)));
}

QString VLStateItemWidget::text() const
{
    return label->text();
}

void VLStateItemWidget::resizeEvent(QResizeEvent *event)
{
    CVWidget::resizeEvent(event);
    label->setGeometry(rect());
}
