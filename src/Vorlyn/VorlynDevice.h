#pragma once

#include <QMap>
#include <QMetaType>
#include <QObject>
#include <QVector>

class QJsonObject;

// One camera, as a value: the JSON strings of its search reply and its place in the table.
// Copied freely in spite of its base; a copy has no parent. Not locked.
class VorlynDevice : public QObject
{
public:
    explicit VorlynDevice(QObject *parent = nullptr);
    VorlynDevice(const VorlynDevice &other);
    VorlynDevice &operator=(const VorlynDevice &other);

    // Keeps every key; a value that is not a JSON string is kept as an empty text.
    void fromJson(const QJsonObject &object);

    QString value(const QString &key) const; // empty when absent
    int intValue(const QString &key) const; // decimal; 0 for anything that is no number
    void setValue(const QString &key, const QString &value);

    // Setters store any text as it is.
    QString mac() const;
    void setMac(const QString &mac);
    QString srcid() const;
    QString ip() const;
    void setIp(const QString &ip);
    QString netmask() const;
    void setNetmask(const QString &netmask);
    QString gateway() const;
    void setGateway(const QString &gateway);
    QString dns1() const;
    void setDns1(const QString &dns);
    QString dns2() const;
    void setDns2(const QString &dns);
    QString ipMode() const;
    void setIpMode(const QString &mode);
    QString name() const;
    void setName(const QString &name);
    QString p2pid() const;
    void setP2pid(const QString &id);
    QString rtspPath() const;
    // Firmware version without its last dot and what follows it.
    QString version() const;
    void setFunctionId(const QString &ids);

    // True when "mac" is not empty.
    bool isValid() const;
    bool hasFunction(const QString &id) const;
    bool supportsPAC() const;
    bool supportsWIFI() const;

    bool checked; // the tick of its row
    int index; // its row, from 0; -1 outside the table

private:
    QMap<QString, QString> values;
};

Q_DECLARE_METATYPE(QVector<VorlynDevice>)

// Order of the table after a search: by MAC, case-sensitive.
bool operator<(const VorlynDevice &a, const VorlynDevice &b);
// Whether some entry has exactly the record's MAC.
bool containsDevice(const QVector<VorlynDevice> &devices, const VorlynDevice &device);

// One network of a camera's Wi-Fi scan; `signal` in the camera's own unit.
struct VorlynDeviceWiFiInfo {
    QString name;
    int signal = 0;
};

Q_DECLARE_METATYPE(QVector<VorlynDeviceWiFiInfo>)
