#pragma once

#include "ZRWidget.h"

class QCheckBox;
class QLabel;

// A cell of the device table. The table's items hold nothing; the cells do.
class CVWidget : public ZRWidget
{
public:
    explicit CVWidget(QWidget *parent);

    // What the cell stands for when the table is copied.
    virtual QString text() const;
};

// The tick box of a row. It copies as an empty text.
class VLCheckItemWidget : public CVWidget
{
    Q_OBJECT

public:
    explicit VLCheckItemWidget(QWidget *parent);

    // Emits nothing.
    void setChecked(bool checked);
    // -1 until the row is built.
    void setRow(int row);

signals:
    // The operator clicked the box.
    void clicked(bool checked, int row);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    int row;
    QCheckBox *checkBox;
};

class VLTextItemWidget : public CVWidget
{
public:
    explicit VLTextItemWidget(QWidget *parent);

    void setText(const QString &text);
    QString text() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QLabel *label;
};
