#include "VorlynDeviceContentWidget.h"

VorlynDeviceContentWidget::VorlynDeviceContentWidget(QWidget *parent) :
    ZRToast(parent),
    devicesWidget(nullptr)
{ }

void VorlynDeviceContentWidget::setDevicesWidget(VorlynDevicesWidget *widget)
{
    devicesWidget = widget;
}

void VorlynDeviceContentWidget::setDevice(const VorlynDevice &device)
{
    device_ = device;
}

const VorlynDevice &VorlynDeviceContentWidget::device() const
{
    return device_;
}
