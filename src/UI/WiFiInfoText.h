#pragma once

#include "VorlynDevice.h"

// A network of a Wi-Fi scan as lists show it: "Home (80)".
inline QString wifiInfoText(const VorlynDeviceWiFiInfo &info)
{
    return QStringLiteral("%1 (%2)").arg(info.name, QString::number(info.signal));
}
