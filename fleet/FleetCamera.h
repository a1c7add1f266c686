#pragma once

#include "FleetOptions.h"
#include "FleetReport.h"
#include "FleetRule.h"
#include "FleetStreamShape.h"

#include <QHostAddress>
#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

// What a camera asks of the network in which it stands.
class FleetSurroundings
{
public:
    virtual ~FleetSurroundings() = default;

    // Gives the camera this address beside its present one; false when it can't have it.
    virtual bool claim(const QHostAddress &ip, int prefixLength) = 0;
    // A free address from the DHCP server, null when there is none.
    virtual QHostAddress lease() = 0;
};

// One camera as data: the fields of its search reply and its other answers. No sockets, no time:
// the station (FleetStation.h) sends what it answers and does what it says comes after.
struct FleetCamera {
    enum class After { Nothing, Move, Reset };

    struct Outcome {
        QJsonObject body; // "result" and the method's own keys, without the envelope
        int delayMs = 0;
        After after = After::Nothing;
    };

    int position = 1; // from 1
    QJsonObject fields; // what a search shows; JSON strings unless a scenario says otherwise
    QJsonObject factory; // `fields` as they were at the start
    QJsonObject afterReset; // fields that change by a reset, on top of the factory's
    QJsonObject afterUpgrade;
    QJsonObject sd;
    QJsonArray wifi;
    int wifiScanMs = 300;
    int restartMs = -1; // below 0: as the fleet says
    int rtspPort = FleetOptions::usualRtspPort; // in "rtsppath1"
    FleetStreamShape stream;
    FleetRules rules;
    QVector<FleetReport> reports;

    FleetCamera();

    static QStringList methods();

    QString field(const char *key) const { return fields.value(QLatin1String(key)).toString(); }
    QHostAddress ip() const { return QHostAddress(field("ip")); }
    // Changes "ip" and the stream's address that follows from it.
    void setIp(const QString &ip);
    void setFields(const QJsonObject &changes);

    // Whether a "destarray" names this camera.
    bool isTarget(const QJsonArray &targets) const;
    Outcome obey(const QJsonObject &request, FleetSurroundings &surroundings);
    // The reply's envelope round an outcome.
    QJsonObject reply(const QJsonObject &request, const Outcome &outcome) const;

    // Back to the state of the start; MAC, "srcid" and firmware stay, and so does the network
    // when `keepNetwork`.
    void reset(bool keepNetwork);
    // The new firmware's version is in its file's name.
    void upgrade(const QString &fileName);
};
