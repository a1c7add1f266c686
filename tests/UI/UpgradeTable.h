#pragma once

#include "VorlynDeviceUpgradeDialog.h"
#include "ZRLocalize.h"

#include <QTableWidget>

// Readings of an upgrade dialog's table.
class UpgradeTable
{
public:
    explicit UpgradeTable(const VorlynDeviceUpgradeDialog &dialog) :
        table(dialog.findChild<QTableWidget *>("tableWidget"))
    { }

    QTableWidget *widget() const { return table; }
    QString text(int row, int column) const { return table->item(row, column)->text(); }
    QString version(int row) const { return text(row, 3); }
    bool succeeded(int row) const { return shows(row, "Upgrade Success", qRgb(0, 0, 0)); }
    bool failed(int row) const { return shows(row, "Upgrade Failure", qRgb(255, 0, 0)); }

private:
    bool shows(int row, const char *key, QRgb color) const
    {
        return text(row, 4) == ZRLocalize::translate(key)
            && table->item(row, 4)->foreground().color() == QColor(color);
    }

    QTableWidget *table;
};
