#pragma once

#include <QTableWidget>

// A table whose cells are CVWidgets over empty items. Ctrl+C copies the selected cells' texts.
class CVTableWidget : public QTableWidget
{
public:
    explicit CVTableWidget(QWidget *parent);

    // Lines of rows, tabs between columns. A gap in a row keeps its tabs; rows that are not in the
    // list leave no line.
    QString selectedText(QModelIndexList indexes) const;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QString cellText(const QModelIndex &index) const;
};
