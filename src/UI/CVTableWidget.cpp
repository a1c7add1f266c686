#include "CVTableWidget.h"

#include "CVWidget.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>

#include <algorithm>

CVTableWidget::CVTableWidget(QWidget *parent) : QTableWidget(parent)
{
    // A gesture of the viewport is looked for in every event of every cell. With thousands of cells
    // that was half of each scroll step.
    viewport()->ungrabGesture(Qt::PanGesture);
}

QString CVTableWidget::selectedText(QModelIndexList indexes) const
{
    if (indexes.isEmpty())
        return QString();
    std::sort(indexes.begin(), indexes.end()); // by row, then by column
    const auto leftmost = std::min_element(indexes.cbegin(), indexes.cend(),
        [](const QModelIndex &a, const QModelIndex &b) { return a.column() < b.column(); });
    const int firstColumn = leftmost->column();

    QString text;
    int lastRow = -1;
    int lastColumn = -1;
    for (const QModelIndex &index : qAsConst(indexes)) {
        if (lastRow != -1 && lastRow != index.row()) {
            text += QLatin1Char('\n');
            lastColumn = -1;
        }
        const int from = lastColumn == -1 ? firstColumn : lastColumn;
        text += QString(index.column() - from, QLatin1Char('\t'));
        text += cellText(index);
        lastRow = index.row();
        lastColumn = index.column();
    }
    return text;
}

QString CVTableWidget::cellText(const QModelIndex &index) const
{
    const QVariant data = model()->data(index, Qt::DisplayRole);
    if (data.isValid())
        return data.type() == QVariant::String ? data.toString() : QString();
    const CVWidget *cell = dynamic_cast<CVWidget *>(cellWidget(index.row(), index.column()));
    return cell ? cell->text() : QString();
}

void CVTableWidget::keyPressEvent(QKeyEvent *event)
{
    if (event->modifiers() == Qt::ControlModifier && event->key() == Qt::Key_C) {
        const QString text = selectedText(selectedIndexes());
        if (!text.isEmpty())
            QGuiApplication::clipboard()->setText(text);
        event->accept();
        return;
    }
    QAbstractItemView::keyPressEvent(event);
}
