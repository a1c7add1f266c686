#pragma once

#include "VorlynDevice.h"

class QJsonObject;

// What a camera tells by itself (docs/protocol.md), as a value. What a report's function does not
// carry has its default.
struct VorlynReport {
    enum class Function {
        None,
        Bree,
        Fall,
        Crying,
        KeyCall,
        KeyWord,
        MillimeterWave,
        Temperature,
        ExtTemperature,
        SDCard,
        WiFi,
        Microphone,
        Speaker,
        Image,
        Confirm,
    };
    enum class Content { Nothing, Status, Temperature, Sizes, Networks };

    // Not valid when the object is no report, has no sender, or lacks what its function carries.
    static VorlynReport fromJson(const QJsonObject &object);
    static Content contentOf(Function function);

    bool isValid() const { return function != Function::None; }

    Function function = Function::None;
    QString srcid; // of the camera that tells it
    QString status; // any word
    double temperature = 0;
    int totalSize = 0; // megabytes
    int freeSize = 0;
    int scanResult = 0; // 0 when the scan worked
    QVector<VorlynDeviceWiFiInfo> networks;
};
