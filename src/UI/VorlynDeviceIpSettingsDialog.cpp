#include "VorlynDeviceIpSettingsDialog.h"

#include "VorlynSDK.h"

VorlynDeviceIpSettingsDialog::VorlynDeviceIpSettingsDialog(QWidget *parent) :
    VorlynDeviceSettingsDialog(parent),
    useDhcp(false)
{ }

VorlynDeviceIpSettingsDialog::~VorlynDeviceIpSettingsDialog()
{
    finishThread();
}

void VorlynDeviceIpSettingsDialog::setDhcpDevices(QVector<VorlynDevice> devices)
{
    this->devices = devices;
    useDhcp = true;
}

void VorlynDeviceIpSettingsDialog::setStaticDevices(QVector<VorlynDevice> devices,
    QVector<QString> ipAddresses, QVector<QString> netmasks, QVector<QString> gateways,
    QVector<QString> dnsServers1, QVector<QString> dnsServers2)
{
    this->devices = devices;
    useDhcp = false;
    this->ipAddresses = ipAddresses;
    this->netmasks = netmasks;
    this->gateways = gateways;
    this->dnsServers1 = dnsServers1;
    this->dnsServers2 = dnsServers2;
}

void VorlynDeviceIpSettingsDialog::run()
{
    runJob([this](VorlynSDK &sdk) {
        if (useDhcp) {
            sdk.setDeviceDhcp(devices);
            changeAll(devices, &VorlynDevice::setIpMode, QStringLiteral("dhcp"));
        } else {
            forEachDevice(
                devices, [&](VorlynDevice &device, int i) { writeStatic(sdk, device, i); });
        }
        updateDevices(devices);
    });
}

// The mode of the record stays: a device that leaves DHCP shows it only after the next search.
void VorlynDeviceIpSettingsDialog::writeStatic(VorlynSDK &sdk, VorlynDevice &device, int i)
{
    const int result = sdk.setDeviceIp(
        device, ipAddresses[i], netmasks[i], gateways[i], dnsServers1[i], dnsServers2[i]);
    if (result < 0)
        return;
    device.setIp(ipAddresses[i]);
    device.setNetmask(netmasks[i]);
    device.setGateway(gateways[i]);
    device.setDns1(dnsServers1[i]);
    device.setDns2(dnsServers2[i]);
}
