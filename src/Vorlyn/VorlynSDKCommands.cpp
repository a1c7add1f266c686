#include "VorlynSDK.h"

#include "VorlynJson.h"
#include "VorlynProtocol.h"
#include "ZRHttpUtils.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QScopedPointer>

QJsonObject *VorlynSDK::buildEnvelope(
    quint32 id, const QString &method, const QStringList &targets) const
{
    return new QJsonObject{
        {"id", qint64(id)},
        {"method", method},
        {"srcid", interfaceMacId()},
        {"destarray", QJsonArray::fromStringList(targets)},
    };
}

QJsonObject *VorlynSDK::buildSearchRequest(quint32 id) const
{
    QJsonObject *request = buildEnvelope(id, "search", {"all"});
    request->insert("user", "Windows IP Tool");
    return request;
}

// Adds no pair when one half of it is empty.
QJsonObject *VorlynSDK::buildRequest(const VorlynDevice &device, quint32 id, const QString &method,
    const QString &key, const QString &value) const
{
    QJsonObject *request = buildEnvelope(id, method, {device.srcid()});
    if (!key.isEmpty() && !value.isEmpty())
        request->insert(key, value);
    return request;
}

// Adds the pair even when the value is empty.
QJsonObject *VorlynSDK::buildRequest(const QVector<VorlynDevice> &devices, quint32 id,
    const QString &method, const QString &key, const QString &value) const
{
    QStringList targets;
    for (const VorlynDevice &device : devices)
        targets.append(device.srcid());
    QJsonObject *request = buildEnvelope(id, method, targets);
    request->insert(key, value);
    return request;
}

template <typename Target>
quint32 VorlynSDK::sendRequest(
    const Target &target, const QString &method, const QString &key, const QString &value)
{
    const quint32 id = nextId++;
    post(buildRequest(target, id, method, key, value));
    return id;
}

int VorlynSDK::waitResult(quint32 id)
{
    const QScopedPointer<QJsonObject> reply(waitResponse(id, VorlynProtocol::replySeconds));
    return reply ? resultOf(*reply) : -1;
}

int VorlynSDK::setDeviceIp(const VorlynDevice &device, const QString &ip, const QString &netmask,
    const QString &gateway, const QString &dns1, const QString &dns2)
{
    const quint32 id = nextId++;
    QJsonObject *request = buildEnvelope(id, "SetIp", {device.srcid()});
    request->insert("IpMode", "static");
    request->insert("ip", ip);
    request->insert("netmask", netmask);
    request->insert("gateway", gateway);
    request->insert("dns1", dns1);
    request->insert("dns2", dns2);
    post(request);
    return waitResult(id);
}

int VorlynSDK::setDeviceDhcp(const QVector<VorlynDevice> &devices)
{
    return waitResult(sendRequest(devices, "SetIp", "IpMode", "dhcp"));
}

int VorlynSDK::setDeviceMac(const VorlynDevice &device, const QString &mac)
{
    return waitResult(sendRequest(device, "SetMac", "mac", mac));
}

int VorlynSDK::setDeviceName(const QVector<VorlynDevice> &devices, const QString &name)
{
    return waitResult(sendRequest(devices, "SetName", "name", name));
}

int VorlynSDK::setDeviceP2p(const QVector<VorlynDevice> &devices, const QString &p2pid)
{
    return waitResult(sendRequest(devices, "SetP2p", "p2pid", p2pid));
}

int VorlynSDK::setDeviceFunctionId(const QVector<VorlynDevice> &devices, const QString &ids)
{
    return waitResult(sendRequest(devices, "SetHdCuFun", "HdCuFun", ids));
}

int VorlynSDK::setDevicePTZ(const QVector<VorlynDevice> &devices, const QString &command)
{
    return waitResult(sendRequest(devices, "SetPTZ", "command", command));
}

int VorlynSDK::resetDevices(const QVector<VorlynDevice> &devices)
{
    return waitResult(sendRequest(devices, "ResetDefault", "keepnetwork", "0"));
}

int VorlynSDK::getDeviceSD(const VorlynDevice &device, int &total, int &free)
{
    const quint32 id = sendRequest(device, "GetSD");
    const QScopedPointer<QJsonObject> reply(waitResponse(id, VorlynProtocol::replySeconds));
    if (!reply)
        return -1;
    total = intOf(*reply, "totalsize");
    free = intOf(*reply, "freesize");
    return total < 1 ? -1 : 0;
}

int VorlynSDK::getDeviceWiFiList(
    const VorlynDevice &device, QVector<VorlynDeviceWiFiInfo> &networks)
{
    const quint32 id = sendRequest(device, "WifiScan");
    const QScopedPointer<QJsonObject> reply(waitResponse(id, VorlynProtocol::scanSeconds));
    if (!reply)
        return -1;
    networks += networksOf(*reply);
    return resultOf(*reply);
}

int VorlynSDK::setDeviceIRcut(const VorlynDevice &device, const QString &mode)
{
    return int(sendRequest(device, "SetIRcut", "ircut", mode));
}

int VorlynSDK::setDeviceColor(const VorlynDevice &device, bool on)
{
    return int(sendRequest(device, "SetColor", "color", on ? "on" : "off"));
}

int VorlynSDK::testDeviceMicrophone(const VorlynDevice &device)
{
    return int(sendRequest(device, "testMicrophone"));
}

int VorlynSDK::setDeviceFirmware(const VorlynDevice &device, const QString &path)
{
    const QString url = QString("http://%1:%2/update.cgi")
                            .arg(device.ip(), QString::number(device.intValue("httpport")));
    ZRHttpUtils uploader;
    http = &uploader;
    const QByteArray response = uploader.upload(url, path);
    http = nullptr;
    qDebug("response %s", response.constData());

    const QJsonDocument document = QJsonDocument::fromJson(response);
    return document.isObject() ? document.object().value("Result").toInt(0) : -3;
}

void VorlynSDK::cancelUpload()
{
    if (http)
        http->quit();
}
