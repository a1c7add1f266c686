#include "VorlynDevicesWidget.h"

#include "CVTableWidget.h"
#include "CVWidget.h"
#include "QCheckBoxHeaderWidget.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QKeyEvent>

#include <algorithm>
#include <iterator>

namespace {
enum Column { CheckColumn, NumberColumn, MacColumn, IpColumn };

constexpr struct {
    const char *header;
    bool translated;
    int width;
} columns[] = {
    {"", false, 30}, // below the check-all box
    {"No.", false, 30},
    {"Mac", true, 160},
    {"IP", true, 160},
};
constexpr int columnCount = sizeof columns / sizeof *columns;
// The order in which a row gets its cells.
constexpr Column cellOrder[] = {NumberColumn, CheckColumn, MacColumn, IpColumn};

QString numberText(const VorlynDevice &device)
{
    return QString::number(device.index + 1);
}
}

VorlynDevicesWidget::VorlynDevicesWidget(QWidget *parent) :
    ZRWidget(parent),
    tableWidget_(namedChild<CVTableWidget>(this, "tableWidget")),
    headerWidget(namedChild<QCheckBoxHeaderWidget>(tableWidget_, "headerWidget"))
{
    connect(headerWidget->checkBox, &QCheckBox::clicked, this,
        &VorlynDevicesWidget::onHeaderCheckClicked);
    tableWidget_->setHorizontalHeader(headerWidget);
}

// The check-all box stays as it is, though no row of a new search is ticked. The next click on a
// row's box sets it right.
void VorlynDevicesWidget::setDevices(QVector<VorlynDevice> devices)
{
    this->devices = devices;
    deleteCells();
    tableWidget_->clear();
    setUpColumns();
    if (devices.isEmpty()) // the rows of the last search stay, blank
        return;

    tableWidget_->setRowCount(devices.size());
    // A cell that shows itself asks for a repaint of its own, and each such repaint looks at all
    // other cells: seconds, with thousands of them. So let all of them ask at once while they still
    // lie in the viewport's corner, which hiding it has marked for repaint already.
    tableWidget_->viewport()->hide();
    for (int row = 0; row < devices.size(); ++row) {
        this->devices[row].index = row;
        addDeviceRow(row, this->devices[row]);
    }
    tableWidget_->viewport()->show();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateLater);
}

// The table would delete them in no order. The memory of the next cells would then be in no order
// either, and scrolling, which moves every cell, the slower for it.
void VorlynDevicesWidget::deleteCells()
{
    for (int row = 0; row < tableWidget_->rowCount(); ++row) {
        for (const int column : cellOrder) {
            QWidget *cell = tableWidget_->cellWidget(row, column);
            tableWidget_->removeCellWidget(row, column);
            delete cell;
        }
    }
}

void VorlynDevicesWidget::setUpColumns()
{
    QStringList headers;
    for (const auto &column : columns) {
        const QString header = QString::fromLatin1(column.header);
        headers.append(column.translated ? ZRLocalize::translate(header) : header);
    }
    tableWidget_->setColumnCount(columnCount);
    tableWidget_->setHorizontalHeaderLabels(headers);
    tableWidget_->verticalHeader()->hide();
    // Else a font with wide letters widens the narrow columns.
    tableWidget_->horizontalHeader()->setMinimumSectionSize(columns[0].width);
    for (int i = 0; i < columnCount; ++i)
        tableWidget_->setColumnWidth(i, columns[i].width);
}

void VorlynDevicesWidget::addDeviceRow(int row, const VorlynDevice &device)
{
    const auto textCell = [this](const QString &text) {
        VLTextItemWidget *cell = new VLTextItemWidget(tableWidget_);
        cell->setText(text);
        return cell;
    };
    VLTextItemWidget *number = textCell(numberText(device));
    VLCheckItemWidget *check = new VLCheckItemWidget(tableWidget_);
    check->setChecked(device.checked);
    check->setRow(row);
    connect(check, &VLCheckItemWidget::clicked, this, &VorlynDevicesWidget::onItemCheckClicked);
    VLTextItemWidget *mac = textCell(device.mac());
    VLTextItemWidget *ip = textCell(device.ip());

    for (int column = 0; column < columnCount; ++column)
        tableWidget_->setItem(row, column, new QTableWidgetItem);
    CVWidget *const cells[columnCount] = {check, number, mac, ip};
    for (const Column column : cellOrder)
        tableWidget_->setCellWidget(row, column, cells[column]);
}

void VorlynDevicesWidget::updateDevices(QVector<VorlynDevice> devices)
{
    for (const VorlynDevice &changed : qAsConst(devices)) {
        const auto entry = std::find_if(this->devices.begin(), this->devices.end(),
            [&changed](const VorlynDevice &device) { return device.index == changed.index; });
        if (entry == this->devices.end())
            continue;
        *entry = changed;
        updateDeviceRow(int(entry - this->devices.begin()), changed);
    }
}

void VorlynDevicesWidget::updateDeviceRow(int row, const VorlynDevice &device)
{
    const auto setCellText = [this, row](int column, const QString &text) {
        static_cast<VLTextItemWidget *>(tableWidget_->cellWidget(row, column))->setText(text);
    };
    setCellText(NumberColumn, numberText(device));
    checkCell(row)->setChecked(device.checked);
    setCellText(MacColumn, device.mac());
    setCellText(IpColumn, device.ip());
}

VLCheckItemWidget *VorlynDevicesWidget::checkCell(int row) const
{
    return static_cast<VLCheckItemWidget *>(tableWidget_->cellWidget(row, CheckColumn));
}

VorlynDevice VorlynDevicesWidget::device(int row) const
{
    return devices.value(row);
}

QVector<VorlynDevice> VorlynDevicesWidget::selectedDevices() const
{
    QVector<VorlynDevice> selected;
    std::copy_if(devices.cbegin(), devices.cend(), std::back_inserter(selected),
        [](const VorlynDevice &device) { return device.checked; });
    return selected;
}

CVTableWidget *VorlynDevicesWidget::tableWidget() const
{
    return tableWidget_;
}

void VorlynDevicesWidget::setCurrentCell(int row, int column)
{
    tableWidget_->setCurrentCell(row, column);
}

void VorlynDevicesWidget::onHeaderCheckClicked()
{
    const bool checked = headerWidget->checkBox->isChecked();
    for (int row = 0; row < devices.size(); ++row) {
        devices[row].checked = checked;
        checkCell(row)->setChecked(checked);
    }
}

void VorlynDevicesWidget::onItemCheckClicked(bool checked, int row)
{
    devices[row].checked = checked;
    const bool all = !devices.isEmpty()
        && std::all_of(devices.cbegin(), devices.cend(),
            [](const VorlynDevice &device) { return device.checked; });
    headerWidget->checkBox->setChecked(all);
}

// Keys that the table doesn't use go on to the window.
void VorlynDevicesWidget::keyPressEvent(QKeyEvent *event)
{
    QWidget::keyPressEvent(event);
    event->ignore();
}

void VorlynDevicesWidget::resizeEvent(QResizeEvent *event)
{
    ZRWidget::resizeEvent(event);
    tableWidget_->setGeometry(rect());
}
