#pragma once

#include "VorlynDevice.h"

#include <QStringList>

// Records as a search would have left them: "srcid" is "cam" with the number, from 0.
inline QVector<VorlynDevice> makeDevices(const QStringList &macs)
{
    QVector<VorlynDevice> devices;
    for (const QString &mac : macs) {
        VorlynDevice device;
        device.setMac(mac);
        device.setIp(QStringLiteral("10.77.0.%1").arg(10 + devices.size()));
        device.setValue("srcid", QStringLiteral("cam%1").arg(devices.size()));
        devices.append(device);
    }
    return devices;
}
