#pragma once

#include "VorlynDeviceSettingsDialog.h"

// Writes the network settings: DHCP as one request for all, whose outcome nobody reads, or static
// addresses device by device, where a record changes only on its own device's word.
class VorlynDeviceIpSettingsDialog : public VorlynDeviceSettingsDialog
{
public:
    explicit VorlynDeviceIpSettingsDialog(QWidget *parent);
    ~VorlynDeviceIpSettingsDialog() override;

    void run() override;

    void setDhcpDevices(QVector<VorlynDevice> devices);
    // Entry i of each list belongs to device i.
    void setStaticDevices(QVector<VorlynDevice> devices, QVector<QString> ipAddresses,
        QVector<QString> netmasks, QVector<QString> gateways, QVector<QString> dnsServers1,
        QVector<QString> dnsServers2);

private:
    void writeStatic(VorlynSDK &sdk, VorlynDevice &device, int i);

    QVector<VorlynDevice> devices;
    bool useDhcp;
    QVector<QString> ipAddresses; // this and the other lists are empty for DHCP
    QVector<QString> netmasks;
    QVector<QString> gateways;
    QVector<QString> dnsServers1;
    QVector<QString> dnsServers2;
};
