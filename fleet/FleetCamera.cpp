#include "FleetCamera.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

using Outcome = FleetCamera::Outcome;
using After = FleetCamera::After;

constexpr char firmwareBuild[] = "20240319";

QString text(const QJsonObject &request, const char *key)
{
    return request.value(QLatin1String(key)).toString();
}

Outcome outcome(bool good, After after = After::Nothing)
{
    Outcome result;
    result.body[QStringLiteral("result")] = QLatin1String(good ? "success" : "failure");
    result.after = after;
    return result;
}

// One dotted-quad address and nothing else.
bool isAddress(const QString &address)
{
    static const QRegularExpression dotted(
        QStringLiteral("\\A(?:(?:25[0-5]|2[0-4]\\d|1\\d\\d|[1-9]?\\d)(?:\\.(?!\\z)|\\z)){4}\\z"));
    return dotted.match(address).hasMatch();
}

bool isAddressOrEmpty(const QString &address)
{
    return address.isEmpty() || isAddress(address);
}

// Number of leading ones, or -1 when zeros and ones are mixed.
int prefixLength(const QString &netmask)
{
    if (!isAddress(netmask))
        return -1;
    const quint32 inverse = ~QHostAddress(netmask).toIPv4Address();
    if (inverse & (inverse + 1))
        return -1;
    int length = 32;
    for (quint32 rest = inverse; rest; rest >>= 1)
        --length;
    return length;
}

// An address that a host may have: no network's own, no broadcast, no loopback, no group.
bool isHost(quint32 ip, quint32 mask)
{
    const quint32 first = ip >> 24;
    return first != 0 && first != 127 && first < 224 && (ip & ~mask) != 0
        && (ip | mask) != 0xffffffffu;
}

bool isStaticNetwork(const QJsonObject &request)
{
    const int prefix = prefixLength(text(request, "netmask"));
    if (prefix < 1 || prefix > 30 || !isAddress(text(request, "ip"))
        || !isAddressOrEmpty(text(request, "gateway")) || !isAddressOrEmpty(text(request, "dns1"))
        || !isAddressOrEmpty(text(request, "dns2")))
        return false;
    const quint32 mask = 0xffffffffu << (32 - prefix);
    const quint32 ip = QHostAddress(text(request, "ip")).toIPv4Address();
    const QHostAddress gateway(text(request, "gateway"));
    return isHost(ip, mask)
        && (gateway.isNull() || (gateway.toIPv4Address() & mask) == (ip & mask));
}

Outcome setStaticIp(FleetCamera &camera, const QJsonObject &request, FleetSurroundings &network)
{
    if (!isStaticNetwork(request))
        return outcome(false);
    const QHostAddress ip(text(request, "ip"));
    if (ip != camera.ip() && !network.claim(ip, prefixLength(text(request, "netmask"))))
        return outcome(false);
    camera.setIp(ip.toString());
    for (const char *key : {"netmask", "gateway", "dns1", "dns2", "IpMode"})
        camera.fields[QLatin1String(key)] = text(request, key);
    return outcome(true, After::Move);
}

Outcome setDhcp(FleetCamera &camera, FleetSurroundings &network)
{
    const QHostAddress ip = network.lease();
    if (!ip.isNull())
        camera.setIp(ip.toString());
    camera.fields[QStringLiteral("IpMode")] = QStringLiteral("dhcp");
    return outcome(true, After::Move);
}

Outcome setIp(FleetCamera &camera, const QJsonObject &request, FleetSurroundings &network)
{
    const QString mode = text(request, "IpMode");
    if (mode == QLatin1String("static"))
        return setStaticIp(camera, request, network);
    return mode == QLatin1String("dhcp") ? setDhcp(camera, network) : outcome(false);
}

bool isMac(const QString &mac)
{
    static const QRegularExpression pairs(
        QStringLiteral("\\A[0-9A-Fa-f]{2}([:-][0-9A-Fa-f]{2}){5}\\z"));
    return pairs.match(mac).hasMatch();
}

bool isAnything(const QString &)
{
    return true;
}

// Keeps the text at `Key` of the request as a field of the camera.
template <const char *Key, const char *Field, bool (*Accepts)(const QString &)>
Outcome store(FleetCamera &camera, const QJsonObject &request, FleetSurroundings &)
{
    const QJsonValue value = request.value(QLatin1String(Key));
    if (!value.isString() || !Accepts(value.toString()))
        return outcome(false);
    camera.fields[QLatin1String(Field)] = value;
    return outcome(true);
}

Outcome search(FleetCamera &camera, const QJsonObject &, FleetSurroundings &)
{
    Outcome result = outcome(true);
    for (auto i = camera.fields.begin(); i != camera.fields.end(); ++i)
        result.body[i.key()] = i.value();
    return result;
}

Outcome resetDefault(FleetCamera &, const QJsonObject &request, FleetSurroundings &)
{
    const QString keep = text(request, "keepnetwork");
    const bool good = keep == QLatin1String("0") || keep == QLatin1String("1");
    return outcome(good, good ? After::Reset : After::Nothing);
}

Outcome getSD(FleetCamera &camera, const QJsonObject &, FleetSurroundings &)
{
    Outcome result = outcome(true);
    for (auto i = camera.sd.begin(); i != camera.sd.end(); ++i)
        result.body[i.key()] = i.value();
    return result;
}

Outcome wifiScan(FleetCamera &camera, const QJsonObject &, FleetSurroundings &)
{
    Outcome result = outcome(true);
    result.body[QStringLiteral("WifiList")] = camera.wifi;
    result.delayMs = camera.wifiScanMs;
    return result;
}

Outcome testMicrophone(FleetCamera &camera, const QJsonObject &, FleetSurroundings &)
{
    camera.fields[QStringLiteral("micTests")] =
        QString::number(camera.field("micTests").toInt() + 1);
    return outcome(true);
}

bool isIrcut(const QString &mode)
{
    return mode == QLatin1String("day") || mode == QLatin1String("night")
        || mode == QLatin1String("auto");
}

bool isSwitch(const QString &state)
{
    return state == QLatin1String("on") || state == QLatin1String("off");
}

constexpr char keyMac[] = "mac";
constexpr char keyName[] = "name";
constexpr char keyP2p[] = "p2pid";
constexpr char keyFunctions[] = "HdCuFun";
constexpr char keyCommand[] = "command";
constexpr char keyPtz[] = "ptz";
constexpr char keyIrcut[] = "ircut";
constexpr char keyColor[] = "color";

struct Method {
    const char *name;
    Outcome (*handle)(FleetCamera &, const QJsonObject &, FleetSurroundings &);
};

constexpr Method methodTable[] = {
    {"search", search},
    {"SetIp", setIp},
    {"SetMac", store<keyMac, keyMac, isMac>},
    {"SetName", store<keyName, keyName, isAnything>},
    {"SetP2p", store<keyP2p, keyP2p, isAnything>},
    {"SetHdCuFun", store<keyFunctions, keyFunctions, isAnything>},
    {"SetPTZ", store<keyCommand, keyPtz, isAnything>},
    {"ResetDefault", resetDefault},
    {"GetSD", getSD},
    {"WifiScan", wifiScan},
    {"SetIRcut", store<keyIrcut, keyIrcut, isIrcut>},
    {"SetColor", store<keyColor, keyColor, isSwitch>},
    {"testMicrophone", testMicrophone},
};

// Written in the factory or by an upgrade: a reset leaves them.
constexpr const char *lastingFields[] = {"mac", "srcid", "appVersion"};
constexpr const char *networkFields[] = {
    "ip", "netmask", "gateway", "dns1", "dns2", "IpMode", "rtsppath1"};

QString streamOf(const QString &ip, int port)
{
    return QStringLiteral("rtsp://%1:%2/live1").arg(ip).arg(port);
}

}

FleetCamera::FleetCamera() :
    sd{{QStringLiteral("totalsize"), 30436}, {QStringLiteral("freesize"), 28112}},
    wifi{QJsonObject{{QStringLiteral("wifiname"), QStringLiteral("Nursery")},
             {QStringLiteral("Signal"), 82}},
        QJsonObject{{QStringLiteral("wifiname"), QStringLiteral("Neighbour 2.4G")},
            {QStringLiteral("Signal"), 41}}}
{ }

QStringList FleetCamera::methods()
{
    QStringList names;
    for (const Method &method : methodTable)
        names.append(QLatin1String(method.name));
    return names;
}

void FleetCamera::setIp(const QString &ip)
{
    const QString address = field("rtsppath1");
    if (address.isEmpty() || address == streamOf(field("ip"), rtspPort))
        fields[QStringLiteral("rtsppath1")] = streamOf(ip, rtspPort);
    fields[QStringLiteral("ip")] = ip;
}

void FleetCamera::setFields(const QJsonObject &changes)
{
    if (changes.contains(QStringLiteral("ip")))
        setIp(changes.value(QStringLiteral("ip")).toString());
    for (auto i = changes.begin(); i != changes.end(); ++i)
        fields[i.key()] = i.value();
}

bool FleetCamera::isTarget(const QJsonArray &targets) const
{
    const QString srcid = field("srcid");
    return targets.contains(QStringLiteral("all")) || (!srcid.isEmpty() && targets.contains(srcid));
}

Outcome FleetCamera::obey(const QJsonObject &request, FleetSurroundings &surroundings)
{
    const QString wanted = text(request, "method");
    for (const Method &method : methodTable) {
        if (wanted == QLatin1String(method.name))
            return method.handle(*this, request, surroundings);
    }
    return outcome(false);
}

QJsonObject FleetCamera::reply(const QJsonObject &request, const Outcome &outcome) const
{
    QJsonObject reply = outcome.body;
    reply[QStringLiteral("id")] = request.value(QStringLiteral("id"));
    reply[QStringLiteral("method")] = request.value(QStringLiteral("method"));
    reply[QStringLiteral("destid")] = request.value(QStringLiteral("srcid"));
    reply[QStringLiteral("srcid")] = fields.value(QStringLiteral("srcid"));
    return reply;
}

void FleetCamera::reset(bool keepNetwork)
{
    QJsonObject kept;
    const auto keep = [&](const char *key) {
        kept[QLatin1String(key)] = fields.value(QLatin1String(key));
    };
    std::for_each(std::begin(lastingFields), std::end(lastingFields), keep);
    if (keepNetwork)
        std::for_each(std::begin(networkFields), std::end(networkFields), keep);
    fields = factory;
    setFields(kept);
    setFields(afterReset);
}

void FleetCamera::upgrade(const QString &fileName)
{
    const QString base = fileName.contains(QLatin1Char('.'))
        ? fileName.left(fileName.lastIndexOf(QLatin1Char('.')))
        : fileName;
    fields[QStringLiteral("appVersion")] = base + QLatin1Char('.') + QLatin1String(firmwareBuild);
    setFields(afterUpgrade);
}
