#pragma once

#include "VorlynDevice.h"

#include <QJsonObject>
#include <QString>

// Readers of a camera's reply. None fails: what is missing or of another type has a default.

// A number, a decimal text or a boolean; 0 for anything else.
int intOf(const QJsonObject &object, const QString &key);
// Id of the request that is answered.
int idOf(const QJsonObject &object);
// 0 when "result" says success, in any case of letters; otherwise -1.
int resultOf(const QJsonObject &object);
// Empty unless the value is a JSON string.
QString stringOf(const QJsonObject &object, const QString &key);
// Of a Wi-Fi scan, those that have a name. A signal that is sent as text counts as 0.
QVector<VorlynDeviceWiFiInfo> networksOf(const QJsonObject &object);
