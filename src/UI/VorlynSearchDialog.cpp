#include "VorlynSearchDialog.h"

#include "VorlynWait.h"
#include "ZRLocalize.h"

#include <algorithm>

VorlynSearchDialog::VorlynSearchDialog(QWidget *parent) : ZRProgressDialog(parent), searchSeconds(3)
{
    setMessage(ZRLocalize::translate(QStringLiteral("Searching devices")));
}

VorlynSearchDialog::~VorlynSearchDialog()
{
    finishThread();
}

void VorlynSearchDialog::run()
{
    devices_.clear();
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->searchDevices(devices_, searchSeconds);
    std::sort(devices_.begin(), devices_.end());
    emit _close();
}

void VorlynSearchDialog::cancel()
{
    cancelVorlynWait();
}

void VorlynSearchDialog::setSearchSeconds(int seconds)
{
    searchSeconds = seconds;
}

QVector<VorlynDevice> VorlynSearchDialog::devices() const
{
    return devices_;
}
