#include "CVWidget.h"

#include "ZRNamedChild.h"

#include <QCheckBox>
#include <QLabel>

CVWidget::CVWidget(QWidget *parent) : ZRWidget(parent) { }

QString CVWidget::text() const
{
    return QString();
}

VLCheckItemWidget::VLCheckItemWidget(QWidget *parent) :
    CVWidget(parent),
    row(-1),
    checkBox(namedChild<QCheckBox>(this, "checkBox"))
{
    checkBox->adjustSize();
    connect(
        checkBox, &QCheckBox::clicked, this, [this](bool checked) { emit clicked(checked, row); });
}

void VLCheckItemWidget::setChecked(bool checked)
{
    checkBox->setChecked(checked);
}

void VLCheckItemWidget::setRow(int row)
{
    this->row = row;
}

void VLCheckItemWidget::resizeEvent(QResizeEvent *event)
{
    CVWidget::resizeEvent(event);
    checkBox->move((width() - checkBox->width()) / 2, (height() - checkBox->height()) / 2);
}

VLTextItemWidget::VLTextItemWidget(QWidget *parent) :
    CVWidget(parent),
    label(namedChild<QLabel>(this, "label"))
{
    label->setAlignment(Qt::AlignCenter);
}

void VLTextItemWidget::setText(const QString &text)
{
    label->setText(text);
}

QString VLTextItemWidget::text() const
{
    return label->text();
}

void VLTextItemWidget::resizeEvent(QResizeEvent *event)
{
    CVWidget::resizeEvent(event);
    label->setGeometry(rect());
}
