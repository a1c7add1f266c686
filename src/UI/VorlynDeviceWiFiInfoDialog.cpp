#include "VorlynDeviceWiFiInfoDialog.h"

#include "VorlynWait.h"
#include "ZRLocalize.h"

VorlynDeviceWiFiInfoDialog::VorlynDeviceWiFiInfoDialog(QWidget *parent) : ZRProgressDialog(parent)
{
    setMessage(ZRLocalize::translate(QStringLiteral("Loading WiFi Info")));
}

VorlynDeviceWiFiInfoDialog::~VorlynDeviceWiFiInfoDialog()
{
    finishThread();
}

void VorlynDeviceWiFiInfoDialog::run()
{
    wifiInfos_.clear();
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->getDeviceWiFiList(device, wifiInfos_);
    emit _close();
}

void VorlynDeviceWiFiInfoDialog::cancel()
{
    cancelVorlynWait();
}

void VorlynDeviceWiFiInfoDialog::setDevice(const VorlynDevice &device)
{
    this->device = device;
}

QVector<VorlynDeviceWiFiInfo> &VorlynDeviceWiFiInfoDialog::wifiInfos()
{
    return wifiInfos_;
}
