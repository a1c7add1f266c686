#pragma once

#include "VorlynDevice.h"
#include "ZRToast.h"

class VorlynDevicesWidget;

// Base of the panels that work on one device. The record is a copy: what a panel writes goes to
// the table, and comes back here when the selection moves.
class VorlynDeviceContentWidget : public ZRToast
{
public:
    explicit VorlynDeviceContentWidget(QWidget *parent);

    // Not owned; null until set.
    virtual void setDevicesWidget(VorlynDevicesWidget *widget);
    virtual void setDevice(const VorlynDevice &device);
    virtual const VorlynDevice &device() const;

protected:
    VorlynDevice device_;
    VorlynDevicesWidget *devicesWidget;
};
