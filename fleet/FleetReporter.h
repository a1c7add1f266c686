#pragma once

#include "FleetReport.h"

#include <QObject>
#include <QVector>

// Who is behind a camera's reports.
class FleetReportSite
{
public:
    virtual ~FleetReportSite() = default;

    virtual QString reportSrcid() const = 0;
    // False when nothing got out.
    virtual bool sendReport(const QByteArray &datagram) = 0;
    // Something for the journal.
    virtual void reportTold(const char *event, const QJsonObject &more) = 0;
};

// Tells the workstation that spoke last what a camera has to report, each at its time. Many
// datagrams at once go out in bursts, as a network would let them through.
class FleetReporter : public QObject
{
public:
    FleetReporter(
        FleetReportSite &site, const QVector<FleetReport> &reports, QObject *parent = nullptr);

    // A request that the camera heard.
    void heard(const QString &method, const QString &workstation);
    // Counts a report from now, whatever its "on" or "key" says.
    void begin(const FleetReport &report);
    // Counts the reports at a key from now. False when there are none.
    bool press(const QString &key);

private:
    struct Flood {
        QByteArray text;
        QString destid;
        int count = 0;
        int sent = 0;
    };

    void play(const FleetReport &report, int times);
    void sendBurst(Flood flood);

    FleetReportSite &site;
    QVector<FleetReport> waiting; // for their requests, and for good those at a key
    QString destid; // the last workstation's, empty before any
};
