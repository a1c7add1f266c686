#include "DeviceFlows.h"

#include "PostekPrinter.h"
#include "VorlynDeviceVideoView.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "VorlynSearchDialog.h"
#include "ZRConfigure.h"
#include "ZRNetworkDialog.h"
#include "ZRPrinterSettingsDialog.h"
#include "ZRScanCodePrinterDialog.h"
#include "ZRSettingsDialog.h"

#include <QDesktopServices>
#include <QModelIndex>
#include <QUrl>

namespace {
const int addressColumn = 3;
}

void DeviceFlows::startSavedNetwork()
{
    const ZRConfigure configure;
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK::selectInterface(VorlynSDK::availableInterfaces(), configure.networkName(),
        configure.networkIp(), interface, address);
    VorlynSDK::instance()->startNetwork(interface, address);
}

void DeviceFlows::stopNetwork()
{
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->stopNetwork();
}

bool DeviceFlows::chooseNetwork()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces(VorlynSDK::availableInterfaces());
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK *sdk = VorlynSDK::instance();
    if (sdk)
        sdk->currentNetwork(interface, address);
    dialog.setCurrentEntry(interface, address);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    dialog.selectedInterface(interface, address);
    if (!sdk)
        return false;
    sdk->stopNetwork();
    sdk->startNetwork(interface, address);
    return true;
}

void DeviceFlows::search(VorlynDeviceVideoView &preview, VorlynDevicesWidget &table)
{
    preview.stop();
    const int seconds = ZRConfigure().searchSeconds();

    VorlynSearchDialog dialog(nullptr);
    dialog.setSearchSeconds(seconds);
    dialog.start();
    if (dialog.exec() == QDialog::Accepted) {
        table.setDevices(dialog.devices());
        table.setCurrentCell(0, 2);
    }
}

void DeviceFlows::showStream(
    VorlynDeviceVideoView &preview, const VorlynDevice &device, int row, int &currentRow)
{
    if (row == currentRow || row == -1) {
        // Another column of the same row: an open stream goes on, also one that failed, and one
        // that was stopped starts anew. No row leaves the stream, and currentRow, as they are.
        if (!preview.isPlaying() && !device.rtspPath().isEmpty())
            preview.play(device.rtspPath());
    } else {
        currentRow = row;
        startStream(preview, device.rtspPath());
    }
}

void DeviceFlows::startStream(VorlynDeviceVideoView &preview, const QString &path)
{
    preview.stop();
    preview.play(path);
}

void DeviceFlows::openDevicePage(const VorlynDevicesWidget &table, const QModelIndex &index)
{
    qDebug("index = %d, %d", index.row(), index.column());
    if (index.column() != addressColumn || index.row() < 0)
        return;
    const QString ip = table.device(index.row()).ip();
    if (!ip.isEmpty())
        QDesktopServices::openUrl(QUrl(QStringLiteral("http://%1").arg(ip)));
}

void DeviceFlows::openSettings()
{
    ZRSettingsDialog(nullptr).exec();
}

void DeviceFlows::openPrinterSettings()
{
    ZRPrinterSettingsDialog(nullptr).exec();
}

void DeviceFlows::openScanCode()
{
    ZRScanCodePrinterDialog(nullptr, PostekPrinter::printMR2XQRCode).exec();
}
