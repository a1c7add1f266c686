#pragma once

#include "VorlynDevice.h"
#include "ZRProgressDialog.h"

#include <functional>

class VorlynDevicesWidget;
class VorlynSDK;

// Base of every write to devices: a busy bar while run() sends its requests on the worker thread.
// In use: construct, setDevicesWidget(), setDevices(), start(), exec(). The dialogs work on copies
// of the records, hand them to the table at the end and report no failure.
class VorlynDeviceSettingsDialog : public ZRProgressDialog
{
    Q_OBJECT

public:
    explicit VorlynDeviceSettingsDialog(QWidget *parent);
    ~VorlynDeviceSettingsDialog() override;

    void cancel() override;

    // Not owned. A dialog whose run() calls updateDevices() needs it.
    void setDevicesWidget(VorlynDevicesWidget *widget);

public slots:
    // Hands changed records to the table. From another thread it acts when the GUI thread's event
    // loop next runs.
    void updateDevices(QVector<VorlynDevice> devices);

protected:
    // The frame of every run(): the job if there is an SDK, and then the dialog closes.
    void runJob(const std::function<void(VorlynSDK &sdk)> &job);
    // One request a device: write(device, i) in order, until the dialog is stopped.
    void forEachDevice(QVector<VorlynDevice> &devices,
        const std::function<void(VorlynDevice &device, int i)> &write) const;
    // What follows one request for all.
    static void changeAll(QVector<VorlynDevice> &devices,
        void (VorlynDevice::*setter)(const QString &), const QString &value);

private:
    VorlynDevicesWidget *devicesWidget;
};

// What the writes of one text to devices have in common.
class VorlynDeviceValueSettingsDialog : public VorlynDeviceSettingsDialog
{
public:
    using VorlynDeviceSettingsDialog::VorlynDeviceSettingsDialog;

    void setDevices(QVector<VorlynDevice> devices, QVector<QString> values);

protected:
    QVector<VorlynDevice> devices;
    QVector<QString> values;
};

// One request and one value a device.
class VorlynDeviceMacSettingsDialog : public VorlynDeviceValueSettingsDialog
{
public:
    using VorlynDeviceValueSettingsDialog::VorlynDeviceValueSettingsDialog;
    ~VorlynDeviceMacSettingsDialog() override;
    void run() override;
};

// One request for all, with the first value. All records get it, whatever the devices say.
class VorlynDeviceNameSettingsDialog : public VorlynDeviceValueSettingsDialog
{
public:
    using VorlynDeviceValueSettingsDialog::VorlynDeviceValueSettingsDialog;
    ~VorlynDeviceNameSettingsDialog() override;
    void run() override;
};

// One request for all, with the first value. The first reply decides for all records.
class VorlynDeviceP2PSettingsDialog : public VorlynDeviceValueSettingsDialog
{
public:
    using VorlynDeviceValueSettingsDialog::VorlynDeviceValueSettingsDialog;
    ~VorlynDeviceP2PSettingsDialog() override;
    void run() override;
};

// One request for all, with the first value. The first reply decides for all records.
class VorlynDeviceFunctionIdSettingsDialog : public VorlynDeviceValueSettingsDialog
{
public:
    using VorlynDeviceValueSettingsDialog::VorlynDeviceValueSettingsDialog;
    ~VorlynDeviceFunctionIdSettingsDialog() override;
    void run() override;
};

// One upload a device. The table learns nothing of it before the next search.
class VorlynDeviceFirmwareSettingsDialog : public VorlynDeviceSettingsDialog
{
public:
    using VorlynDeviceSettingsDialog::VorlynDeviceSettingsDialog;
    ~VorlynDeviceFirmwareSettingsDialog() override;
    void run() override;

    // `paths` has one image file for each device.
    void setDevices(QVector<VorlynDevice> devices, QVector<QString> paths);

private:
    QVector<VorlynDevice> devices;
    QVector<QString> firmwarePaths;
};

// One request for all: factory state, network settings included. The table is not touched.
class VorlynDeviceRestoreSettingsDialog : public VorlynDeviceSettingsDialog
{
public:
    using VorlynDeviceSettingsDialog::VorlynDeviceSettingsDialog;
    ~VorlynDeviceRestoreSettingsDialog() override;
    void run() override;

    void setDevices(QVector<VorlynDevice> devices);

private:
    QVector<VorlynDevice> devices;
};
