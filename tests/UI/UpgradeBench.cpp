#include "UpgradeBench.h"

#include "VorlynSDK.h"

#include <QFile>

#include <algorithm>

QJsonArray UpgradeBench::sixCameras()
{
    const QJsonObject refuses = {{"on", "upload"}, {"Result", -2}, {"apply", false}};
    const QJsonObject breaksOff = {{"on", "upload"}, {"reset-after", 100000}};
    return {QJsonObject{{"camera", "all"}, {"fields", QJsonObject{{"appVersion", "2.4.0.7"}}}},
        QJsonObject{{"camera", 2}, {"rules", QJsonArray{refuses}}},
        QJsonObject{{"camera", 3}, {"rules", QJsonArray{breaksOff}}},
        QJsonObject{{"camera", 4}, {"after-upgrade", QJsonObject{{"ip", "10.77.0.90"}}}},
        QJsonObject{{"camera", 5}, {"restart-seconds", 3600}}};
}

const std::array<UpgradeBench::Result, 6> UpgradeBench::sixResults = {{{true, "2.5.1"},
    {true, "2.4.0"}, {true, "2.4.0"}, {true, "2.5.1"}, {false, "2.4.0"}, {true, "2.5.1"}}};

UpgradeBench::UpgradeBench() : dialog_(nullptr), table_(dialog_)
{
    dialog_.setFirmware(folder.filePath("2.5.1.bin"));
}

bool UpgradeBench::open(int count, const QJsonArray &entries)
{
    const QByteArray image(2000000, 'f');
    QFile file(folder.filePath("2.5.1.bin"));
    if (!file.open(QIODevice::WriteOnly) || file.write(image) != image.size())
        return false;
    this->count = count;
    fleet_ = std::make_unique<FleetProcess>("cam-a", count, "10.77.0.11");
    fleet_->setScenario({{"cameras", entries}});
    return cameras.isReady() && fleet_->start();
}

bool UpgradeBench::listAll()
{
    QVector<VorlynDevice> devices;
    VorlynSDK::instance()->searchDevices(devices, 2);
    std::sort(devices.begin(), devices.end());
    dialog_.setDevices(devices);
    dialog_.show();
    return devices.size() == count;
}
