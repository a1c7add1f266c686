#include "VorlynDeviceUpgradeDialog.h"

#include "DialogCalls.h"
#include "VorlynDeviceUpgradeLoadingDialog.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"
#include "ZRText.h"

#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QThread>

#include <algorithm>

namespace {
enum Column { NumberColumn, NameColumn, MacColumn, VersionColumn, ResultColumn };

constexpr struct {
    const char *header;
    int width;
} columns[] = {
    {"No.", 30},
    {"Name", 120},
    {"Mac", 120},
    {"Upgrade Version", 250},
    {"Result", 150},
};
constexpr int columnCount = sizeof columns / sizeof *columns;
constexpr int margin = 10;

const VorlynDevice *lastOfMac(const QVector<VorlynDevice> &devices, const QString &mac)
{
    const auto found = std::find_if(devices.crbegin(), devices.crend(),
        [&mac](const VorlynDevice &device) { return device.mac() == mac; });
    return found == devices.crend() ? nullptr : &*found;
}

void showResult(QTableWidgetItem *item, const QColor &color, const QString &key)
{
    item->setForeground(color);
    item->setText(ZRLocalize::translate(key));
}
}

VorlynDeviceUpgradeDialog::VorlynDeviceUpgradeDialog(QWidget *parent) :
    ZRDialog(parent),
    tableWidget(namedChild<QTableWidget>(this, "tableWidget")),
    upgradeButton(namedChild<QPushButton>(this, "upgradeButton"))
{
    tableWidget->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tableWidget->setTabKeyNavigation(false); // Tab goes on to the button
    tableWidget->verticalHeader()->hide();
    upgradeButton->setText(ZRLocalize::translate(QStringLiteral("Upgrade Firmware")));
    upgradeButton->setAutoDefault(false); // Enter starts no upgrade
    connect(upgradeButton, &QPushButton::clicked, this, &VorlynDeviceUpgradeDialog::startUpgrade);

    setupTableWidget();
    updateButton();
    setMinimumSize(400, 200);
    resize(720, 400); // all columns, beside a scroll bar
}

VorlynDeviceUpgradeDialog::~VorlynDeviceUpgradeDialog() = default;

QString VorlynDeviceUpgradeDialog::firmwareBaseName(const QString &path)
{
    return fileBaseNameOf(path);
}

void VorlynDeviceUpgradeDialog::startUpgrade()
{
    hasRun_ = true;
    VorlynDeviceUpgradeLoadingDialog dialog(nullptr);
    dialog.setUpgradeDialog(this);
    startAndExec(dialog);
}

void VorlynDeviceUpgradeDialog::setDevices(QVector<VorlynDevice> devices)
{
    this->devices = devices;
    setupTableWidget();
    updateButton();
}

void VorlynDeviceUpgradeDialog::setFirmware(QString firmware)
{
    this->firmware = firmware;
    updateButton();
}

void VorlynDeviceUpgradeDialog::setUpgrades(QVector<VorlynDevice> upgrades)
{
    this->upgrades = upgrades;
    updateUpgradeInfo();
}

void VorlynDeviceUpgradeDialog::setupTableWidget()
{
    tableWidget->setRowCount(devices.size());
    tableWidget->setColumnCount(columnCount);
    // Else a font with wide letters widens the narrow column.
    tableWidget->horizontalHeader()->setMinimumSectionSize(columns[0].width);
    QStringList headers;
    for (int i = 0; i < columnCount; ++i) {
        headers.append(ZRLocalize::translate(QString::fromLatin1(columns[i].header)));
        tableWidget->setColumnWidth(i, columns[i].width);
    }
    tableWidget->setHorizontalHeaderLabels(headers);

    for (int row = 0; row < devices.size(); ++row) {
        const VorlynDevice &device = devices[row];
        const QString texts[columnCount] = {
            QString::number(row + 1), device.name(), device.mac(), device.version(), QString()};
        for (int column = 0; column < columnCount; ++column) {
            auto *item = new QTableWidgetItem(texts[column]);
            item->setTextAlignment(Qt::AlignCenter);
            tableWidget->setItem(row, column, item);
        }
    }
}

void VorlynDeviceUpgradeDialog::updateUpgradeInfo()
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "updateUpgradeInfo", Qt::QueuedConnection);
        return;
    }
    for (int row = 0; row < devices.size(); ++row) {
        const VorlynDevice *seen = lastOfMac(upgrades, devices[row].mac());
        QTableWidgetItem *result = tableWidget->item(row, ResultColumn);
        if (!seen) {
            showResult(result, QColor(255, 0, 0), QStringLiteral("Upgrade Failure"));
            continue;
        }
        // A device that was seen has succeeded, whether or not its version is that of the file;
        // the version column tells which it has.
        tableWidget->item(row, VersionColumn)->setText(seen->version());
        if (seen->version() == firmwareBaseName(firmware))
            showResult(result, QColor(0, 0, 0), QStringLiteral("Upgrade Success"));
        else
            showResult(result, QColor(0, 0, 0), QStringLiteral("Upgrade Success"));
    }
}

const VorlynDevice *VorlynDeviceUpgradeDialog::findDevice(
    QVector<VorlynDevice> upgrades, VorlynDevice device)
{
    return lastOfMac(upgrades, device.mac());
}

void VorlynDeviceUpgradeDialog::updateButton()
{
    upgradeButton->setEnabled(!devices.isEmpty() && !firmware.isEmpty());
}

void VorlynDeviceUpgradeDialog::resizeEvent(QResizeEvent *event)
{
    ZRDialog::resizeEvent(event);
    constexpr int buttonWidth = 130;
    constexpr int buttonHeight = 30;
    const int buttonY = height() - margin - buttonHeight;
    tableWidget->setGeometry(margin, margin, width() - 2 * margin, buttonY - 2 * margin);
    upgradeButton->setGeometry(width() - margin - buttonWidth, buttonY, buttonWidth, buttonHeight);
}
