#include "Fleet.h"

#include "FleetNetwork.h"
#include "FleetStation.h"

#include <QJsonDocument>
#include <QNetworkDatagram>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr quint32 defaultFirstOffset = 10; // from the interface's own address

QString macText(quint64 mac)
{
    const QString digits = QStringLiteral("%1").arg(mac, 12, 16, QLatin1Char('0')).toUpper();
    QStringList pairs;
    for (int i = 0; i < digits.size(); i += 2)
        pairs.append(digits.mid(i, 2));
    return pairs.join(QLatin1Char(':'));
}

QString numbered(const char *prefix, int number)
{
    return QLatin1String(prefix) + QStringLiteral("%1").arg(number, 4, 10, QLatin1Char('0'));
}

}

Fleet::Fleet(const FleetOptions &options, QObject *parent) :
    QObject(parent),
    options(options),
    log(this),
    random(options.seed)
{ }

Fleet::~Fleet()
{
    stop();
}

const FleetCamera &Fleet::camera(int index) const
{
    return stations.at(index)->camera();
}

QHostAddress Fleet::address(int index) const
{
    return stations.at(index)->address();
}

FleetCamera Fleet::makeCamera(int index, const QHostAddress &ip) const
{
    const int prefix = network->prefixLengthOf(ip);
    const quint32 mask = prefix ? 0xffffffffu << (32 - prefix) : 0;
    const QString gateway = QHostAddress((ip.toIPv4Address() & mask) + 1).toString();
    const QString mac = macText(options.firstMac + quint64(index));
    FleetCamera camera;
    camera.position = index + 1;
    camera.fields = {{QStringLiteral("mac"), mac},
        {QStringLiteral("srcid"), QString(mac).remove(QLatin1Char(':'))},
        {QStringLiteral("netmask"), QHostAddress(mask).toString()},
        {QStringLiteral("gateway"), gateway}, {QStringLiteral("dns1"), gateway},
        {QStringLiteral("dns2"), QStringLiteral("192.0.2.53")},
        {QStringLiteral("IpMode"), QStringLiteral("dhcp")},
        {QStringLiteral("name"), numbered("Camera-", index + 1)},
        {QStringLiteral("p2pid"), numbered("P2P", index + 1)},
        {QStringLiteral("httpport"), QString::number(options.httpPortOf(index))},
        {QStringLiteral("appVersion"), QStringLiteral("1.0.0.20240101")},
        {QStringLiteral("HdCuFun"), QStringLiteral("PAC,WIFI")}, {QStringLiteral("ptz"), QString()},
        {QStringLiteral("ircut"), QStringLiteral("auto")},
        {QStringLiteral("color"), QStringLiteral("off")},
        {QStringLiteral("micTests"), QStringLiteral("0")}};
    camera.stream = FleetStreamShape::usual(camera.position);
    if (const int port = options.rtspPortOf(index))
        camera.rtspPort = port;
    camera.setIp(ip.toString());
    return camera;
}

QVector<FleetCamera> Fleet::makeCameras(QString *error) const
{
    const bool shared = !options.ownAddresses && options.firstAddress.isNull();
    const QHostAddress own = network->ownAddress();
    const quint32 first = !options.firstAddress.isNull() ? options.firstAddress.toIPv4Address()
        : shared                                         ? own.toIPv4Address()
                                                         : own.toIPv4Address() + defaultFirstOffset;
    const quint32 last = shared ? first : first + quint32(options.count) - 1;
    QVector<FleetCamera> cameras;
    const int prefix = network->prefixLengthOf(QHostAddress(first));
    const bool fits = last >= first
        && (!options.ownAddresses
            || QHostAddress(last + 1).isInSubnet(QHostAddress(first), prefix));
    if (!fits) {
        *error = QStringLiteral("%1 cameras from %2 do not fit into its subnet of length %3")
                     .arg(options.count)
                     .arg(QHostAddress(first).toString())
                     .arg(prefix);
        return cameras;
    }
    for (int i = 0; i < options.count; ++i)
        cameras.append(makeCamera(i, QHostAddress(shared ? first : first + quint32(i))));
    return cameras;
}

Fleet::Start Fleet::start(QString *error)
{
    const Start result = open(error);
    if (result == Started) {
        log.write("ready",
            {{QStringLiteral("cameras"), stations.size()},
                {QStringLiteral("interface"), options.interface}});
    } else {
        qDeleteAll(stations);
        stations.clear();
        network.reset();
        log.close();
    }
    return result;
}

Fleet::Start Fleet::open(QString *error)
{
    if (!options.scenario.isEmpty() && !scenario.load(options.scenario, error))
        return BadScenario;
    network.reset(new FleetNetwork(options));
    if (!network->find(error))
        return Refused;
    QVector<FleetCamera> cameras = makeCameras(error);
    if (cameras.isEmpty())
        return Refused;
    if (!scenario.apply(cameras, error))
        return BadScenario;
    if (!log.open(options.journal, error))
        return Refused;

    QVector<QHostAddress> addresses;
    for (const FleetCamera &camera : cameras) {
        stations.append(new FleetStation(camera, options, *network, log, this));
        addresses.append(stations.last()->address());
    }
    if (!network->open(addresses, error))
        return Refused;
    connect(&network->requests(), &QUdpSocket::readyRead, this, &Fleet::readRequests);
    const bool opened = std::all_of(stations.begin(), stations.end(),
        [&](FleetStation *station) { return station->open(error); });
    return opened ? Started : Refused;
}

void Fleet::stop()
{
    if (!network)
        return;
    qDeleteAll(stations);
    stations.clear();
    network.reset();
    for (const QString &place : scenario.unusedRules())
        log.write("unused-rule", {{QStringLiteral("rule"), place}});
    log.write("stop");
    log.close();
}

bool Fleet::order(const QByteArray &line, QString *error)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(report|script)\\s+(\\S+)\\s+(\\{.*)\\z"));
    const QString text = QString::fromUtf8(line);
    if (press(text))
        return true;
    const QRegularExpressionMatch match = form.match(text);
    const QJsonDocument document = QJsonDocument::fromJson(match.captured(3).toUtf8());
    if (!document.isObject()) {
        *error = QStringLiteral("\"%1\" is none of: report CAMERA OBJECT, script CAMERA OBJECT, a "
                                "\"key\" of the scenario")
                     .arg(text);
        return false;
    }
    QJsonObject entry = document.object();
    if (match.captured(1) == QLatin1String("report"))
        entry = {{QStringLiteral("report"), entry}};
    FleetReport report;
    *error = report.read(entry);
    if (error->isEmpty() && !begin(report, match.captured(2)))
        *error = QStringLiteral("\"%1\" names no camera").arg(match.captured(2));
    return error->isEmpty();
}

// False when no camera has that name: a number, a MAC or "all".
bool Fleet::begin(const FleetReport &report, const QString &name)
{
    bool isNumber = false;
    const int position = name.toInt(&isNumber);
    FleetScenario::Entry whom;
    whom.camera = isNumber ? QJsonValue(position) : QJsonValue(name);
    bool found = false;
    for (FleetStation *station : qAsConst(stations)) {
        if (!whom.isAbout(station->camera()))
            continue;
        found = true;
        station->begin(report);
    }
    return found;
}

// False when no camera tells anything at this key.
bool Fleet::press(const QString &key)
{
    bool found = false;
    for (FleetStation *station : qAsConst(stations))
        found = station->press(key) || found;
    return found;
}

void Fleet::readRequests()
{
    QUdpSocket &socket = network->requests();
    while (socket.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = socket.receiveDatagram();
        receive(datagram.data(),
            QStringLiteral("%1:%2")
                .arg(datagram.senderAddress().toString())
                .arg(datagram.senderPort()));
    }
}

void Fleet::receive(const QByteArray &datagram, const QString &source)
{
    const FleetFrame::Request request = FleetFrame::decode(datagram);
    if (!request.problem.isEmpty()) {
        log.write("dropped",
            {{QStringLiteral("source"), source}, {QStringLiteral("reason"), request.problem},
                {QStringLiteral("hex"), QString::fromLatin1(datagram.toHex())}});
        return;
    }
    const QJsonObject &object = request.object;
    const QJsonArray targets = object.value(QStringLiteral("destarray")).toArray();
    const bool isSearch = object.value(QStringLiteral("method")) == QLatin1String("search");
    bool claimed = false;
    for (int i = 0; i < stations.size(); ++i) {
        if (!stations.at(i)->camera().isTarget(targets))
            continue;
        claimed = true;
        stations.at(i)->receive(request, source, isSearch ? spreadDelayMs(i) : 0);
    }
    if (!claimed) {
        log.write("unclaimed",
            {{QStringLiteral("source"), source},
                {QStringLiteral("method"), object.value(QStringLiteral("method"))},
                {QStringLiteral("id"), object.value(QStringLiteral("id"))},
                {QStringLiteral("raw"), QString::fromUtf8(request.raw)}});
    }
}

int Fleet::spreadDelayMs(int index)
{
    const double whole = options.spreadSeconds * 1000;
    if (options.randomSpread)
        return int(std::uniform_real_distribution<double>(0, 1)(random) * whole);
    return int(whole * index / stations.size());
}
