#include "VorlynDevice.h"

#include "VorlynJson.h"

#include <algorithm>

VorlynDevice::VorlynDevice(QObject *parent) : QObject(parent), checked(false), index(-1) { }

VorlynDevice::VorlynDevice(const VorlynDevice &other) :
    QObject(),
    checked(other.checked),
    index(other.index),
    values(other.values)
{ }

VorlynDevice &VorlynDevice::operator=(const VorlynDevice &other)
{
    checked = other.checked;
    index = other.index;
    values = other.values;
    return *this;
}

void VorlynDevice::fromJson(const QJsonObject &object)
{
    for (const QString &key : object.keys())
        values.insert(key, stringOf(object, key));
}

QString VorlynDevice::value(const QString &key) const
{
    return values.value(key);
}

int VorlynDevice::intValue(const QString &key) const
{
    return value(key).toInt();
}

void VorlynDevice::setValue(const QString &key, const QString &value)
{
    values.insert(key, value);
}

QString VorlynDevice::mac() const
{
    return value("mac");
}

void VorlynDevice::setMac(const QString &mac)
{
    setValue("mac", mac);
}

QString VorlynDevice::srcid() const
{
    return value("srcid");
}

QString VorlynDevice::ip() const
{
    return value("ip");
}

void VorlynDevice::setIp(const QString &ip)
{
    setValue("ip", ip);
}

QString VorlynDevice::netmask() const
{
    return value("netmask");
}

void VorlynDevice::setNetmask(const QString &netmask)
{
    setValue("netmask", netmask);
}

QString VorlynDevice::gateway() const
{
    return value("gateway");
}

void VorlynDevice::setGateway(const QString &gateway)
{
    setValue("gateway", gateway);
}

QString VorlynDevice::dns1() const
{
    return value("dns1");
}

void VorlynDevice::setDns1(const QString &dns)
{
    setValue("dns1", dns);
}

QString VorlynDevice::dns2() const
{
    return value("dns2");
}

void VorlynDevice::setDns2(const QString &dns)
{
    setValue("dns2", dns);
}

QString VorlynDevice::ipMode() const
{
    return value("IpMode");
}

void VorlynDevice::setIpMode(const QString &mode)
{
    setValue("IpMode", mode);
}

QString VorlynDevice::name() const
{
    return value("name");
}

void VorlynDevice::setName(const QString &name)
{
    setValue("name", name);
}

QString VorlynDevice::p2pid() const
{
    return value("p2pid");
}

void VorlynDevice::setP2pid(const QString &id)
{
    setValue("p2pid", id);
}

QString VorlynDevice::rtspPath() const
{
    return value("rtsppath1");
}

QString VorlynDevice::version() const
{
    const QString text = value("appVersion");
    return text.left(text.lastIndexOf('.')); // without a dot -1, which is the whole text
}

void VorlynDevice::setFunctionId(const QString &ids)
{
    setValue("HdCuFun", ids);
}

bool VorlynDevice::isValid() const
{
    return !mac().isEmpty();
}

bool VorlynDevice::hasFunction(const QString &id) const
{
    const QString ids = value("HdCuFun");
    return !ids.isEmpty() && ids.split(',').contains(id, Qt::CaseInsensitive);
}

bool VorlynDevice::supportsPAC() const
{
    return hasFunction("PAC");
}

bool VorlynDevice::supportsWIFI() const
{
    return hasFunction("WIFI");
}

bool operator<(const VorlynDevice &a, const VorlynDevice &b)
{
    return a.mac().compare(b.mac(), Qt::CaseSensitive) < 0;
}

bool containsDevice(const QVector<VorlynDevice> &devices, const VorlynDevice &device)
{
    const QString mac = device.mac();
    return std::any_of(devices.begin(), devices.end(),
        [&mac](const VorlynDevice &entry) { return entry.mac() == mac; });
}
