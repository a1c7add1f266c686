#include "VorlynJson.h"

#include <QJsonArray>

int intOf(const QJsonObject &object, const QString &key)
{
    const QJsonValue value = object.value(key);
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString().toInt();
    case QJsonValue::Bool:
        return value.toBool();
    default:
        return value.toInt(0);
    }
}

int idOf(const QJsonObject &object)
{
    return intOf(object, "id");
}

int resultOf(const QJsonObject &object)
{
    return stringOf(object, "result").compare("success", Qt::CaseInsensitive) == 0 ? 0 : -1;
}

QString stringOf(const QJsonObject &object, const QString &key)
{
    return object.value(key).toString();
}

QVector<VorlynDeviceWiFiInfo> networksOf(const QJsonObject &object)
{
    QVector<VorlynDeviceWiFiInfo> networks;
    for (const QJsonValue &network : object.value("WifiList").toArray()) {
        const VorlynDeviceWiFiInfo info = {
            network["wifiname"].toString(), network["Signal"].toInt(0)};
        if (!info.name.isEmpty())
            networks.append(info);
    }
    return networks;
}
