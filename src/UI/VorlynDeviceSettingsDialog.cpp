#include "VorlynDeviceSettingsDialog.h"

#include "VorlynDevicesWidget.h"
#include "VorlynWait.h"

#include <QThread>

VorlynDeviceSettingsDialog::VorlynDeviceSettingsDialog(QWidget *parent) :
    ZRProgressDialog(parent),
    devicesWidget(nullptr)
{
    qRegisterMetaType<QVector<VorlynDevice>>("QVector<VorlynDevice>"); // crosses by this name
}

VorlynDeviceSettingsDialog::~VorlynDeviceSettingsDialog()
{
    finishThread();
}

void VorlynDeviceSettingsDialog::cancel()
{
    cancelVorlynWait();
}

void VorlynDeviceSettingsDialog::setDevicesWidget(VorlynDevicesWidget *widget)
{
    devicesWidget = widget;
}

void VorlynDeviceSettingsDialog::updateDevices(QVector<VorlynDevice> devices)
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(
            this, "updateDevices", Qt::QueuedConnection, Q_ARG(QVector<VorlynDevice>, devices));
        return;
    }
    devicesWidget->updateDevices(devices);
}

void VorlynDeviceSettingsDialog::runJob(const std::function<void(VorlynSDK &sdk)> &job)
{
    if (VorlynSDK *sdk = VorlynSDK::instance())
        job(*sdk);
    emit _close();
}

void VorlynDeviceSettingsDialog::forEachDevice(QVector<VorlynDevice> &devices,
    const std::function<void(VorlynDevice &device, int i)> &write) const
{
    for (int i = 0; i < devices.size() && !isStopped(); ++i)
        write(devices[i], i);
}

void VorlynDeviceSettingsDialog::changeAll(QVector<VorlynDevice> &devices,
    void (VorlynDevice::*setter)(const QString &), const QString &value)
{
    for (VorlynDevice &device : devices)
        (device.*setter)(value);
}

void VorlynDeviceValueSettingsDialog::setDevices(
    QVector<VorlynDevice> devices, QVector<QString> values)
{
    this->devices = devices;
    this->values = values;
}

VorlynDeviceMacSettingsDialog::~VorlynDeviceMacSettingsDialog()
{
    finishThread();
}

void VorlynDeviceMacSettingsDialog::run()
{
    runJob([this](VorlynSDK &sdk) {
        forEachDevice(devices, [&](VorlynDevice &device, int i) {
            if (sdk.setDeviceMac(device, values[i]) >= 0)
                device.setMac(values[i]);
        });
        updateDevices(devices);
    });
}

VorlynDeviceNameSettingsDialog::~VorlynDeviceNameSettingsDialog()
{
    finishThread();
}

void VorlynDeviceNameSettingsDialog::run()
{
    runJob([this](VorlynSDK &sdk) {
        sdk.setDeviceName(devices, values[0]);
        changeAll(devices, &VorlynDevice::setName, values[0]);
        updateDevices(devices);
    });
}

VorlynDeviceP2PSettingsDialog::~VorlynDeviceP2PSettingsDialog()
{
    finishThread();
}

void VorlynDeviceP2PSettingsDialog::run()
{
    runJob([this](VorlynSDK &sdk) {
        if (sdk.setDeviceP2p(devices, values[0]) >= 0)
            changeAll(devices, &VorlynDevice::setP2pid, values[0]);
        updateDevices(devices);
    });
}

VorlynDeviceFunctionIdSettingsDialog::~VorlynDeviceFunctionIdSettingsDialog()
{
    finishThread();
}

void VorlynDeviceFunctionIdSettingsDialog::run()
{
    runJob([this](VorlynSDK &sdk) {
        if (sdk.setDeviceFunctionId(devices, values[0]) >= 0)
            changeAll(devices, &VorlynDevice::setFunctionId, values[0]);
        updateDevices(devices);
    });
}

VorlynDeviceFirmwareSettingsDialog::~VorlynDeviceFirmwareSettingsDialog()
{
    finishThread();
}

void VorlynDeviceFirmwareSettingsDialog::setDevices(
    QVector<VorlynDevice> devices, QVector<QString> paths)
{
    this->devices = devices;
    firmwarePaths = paths;
}

void VorlynDeviceFirmwareSettingsDialog::run()
{
    runJob([this](VorlynSDK &sdk) {
        forEachDevice(devices,
            [&](VorlynDevice &device, int i) { sdk.setDeviceFirmware(device, firmwarePaths[i]); });
    });
}

VorlynDeviceRestoreSettingsDialog::~VorlynDeviceRestoreSettingsDialog()
{
    finishThread();
}

void VorlynDeviceRestoreSettingsDialog::setDevices(QVector<VorlynDevice> devices)
{
    this->devices = devices;
}

void VorlynDeviceRestoreSettingsDialog::run()
{
    runJob([this](VorlynSDK &sdk) { sdk.resetDevices(devices); });
}
