#pragma once

#include "VorlynDevice.h"
#include "ZRProgressDialog.h"

// Reads one device's Wi-Fi scan under a busy bar: construct, setDevice(), start(), exec(), and
// then wifiInfos(). It takes as long as 10 seconds.
class VorlynDeviceWiFiInfoDialog : public ZRProgressDialog
{
public:
    explicit VorlynDeviceWiFiInfoDialog(QWidget *parent);
    ~VorlynDeviceWiFiInfoDialog() override;

    void run() override;
    void cancel() override;

    void setDevice(const VorlynDevice &device);
    // The list itself; the worker writes it until exec() has returned.
    QVector<VorlynDeviceWiFiInfo> &wifiInfos();

private:
    VorlynDevice device;
    QVector<VorlynDeviceWiFiInfo> wifiInfos_;
};
