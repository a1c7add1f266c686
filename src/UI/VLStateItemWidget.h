#pragma once

#include "CVWidget.h"

class ZRLabel;

// The state of a factory test, in its colour (FactoryTestState, FactoryTestList.h).
class VLStateItemWidget : public CVWidget
{
public:
    explicit VLStateItemWidget(QWidget *parent);

    void setState(int state);
    QString text() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    ZRLabel *label;
};
