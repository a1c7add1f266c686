#pragma once

#include "FleetCamera.h"
#include "FleetFrame.h"
#include "FleetHttp.h"
#include "FleetReporter.h"
#include "FleetRtspServer.h"

#include <functional>

class FleetJournal;
class FleetNetwork;
struct FleetOptions;

// One camera on the network: gives the record its address, its web server, its stream and its time.
// While the camera restarts nothing gets in or out.
class FleetStation : public QObject,
                     private FleetSurroundings,
                     private FleetHttpSite,
                     private FleetStreamSite,
                     private FleetReportSite
{
    Q_OBJECT

public:
    FleetStation(const FleetCamera &camera, const FleetOptions &options, FleetNetwork &network,
        FleetJournal &journal, QObject *parent = nullptr);

    const FleetCamera &camera() const { return record; }
    QHostAddress address() const { return home; } // where it is, whatever it reports
    // Opens the web server and the stream. False with one line of text.
    bool open(QString *error);
    // A good request to this camera, from "10.77.0.1:40123".
    void receive(const FleetFrame::Request &request, const QString &source, int extraDelayMs);
    // What the camera tells by itself, from now on.
    void begin(const FleetReport &report) { reporter.begin(report); }
    // False when it tells nothing at this key.
    bool press(const QString &key) { return reporter.press(key); }

private:
    bool claim(const QHostAddress &ip, int prefixLength) override;
    QHostAddress lease() override;

    void begin(FleetExchange &exchange) override;
    void finish(FleetExchange &exchange) override;
    void answered(const FleetExchange &exchange) override;

    FleetRulePointer viewerCame() override;
    void streamTold(const char *event, const QJsonObject &more) override;

    QString reportSrcid() const override;
    bool sendReport(const QByteArray &datagram) override;
    void reportTold(const char *event, const QJsonObject &more) override;

    FleetCamera::Outcome obey(const QJsonObject &request, const FleetRulePointer &rule);
    void send(const FleetReply &reply);
    void restart(const char *why, const std::function<void()> &change);
    void settle();
    bool moveTo(const QHostAddress &ip);
    void release(const QHostAddress &ip);
    bool listen(QString *error);
    bool listenForViewers(const QHostAddress &address, QString *error);
    void hush();
    quint16 httpPort() const;

    void answerUpload(FleetExchange &exchange) const;
    void answerPage(FleetExchange &exchange) const;
    QByteArray page() const;

    QJsonObject identity() const;
    void addUpload(QJsonObject &entry, const FleetExchange &exchange) const;
    void report(const char *event, const QJsonObject &more);
    void trouble(const QString &reason);

    FleetCamera record;
    const FleetOptions &options;
    FleetNetwork &network;
    FleetJournal &journal;
    FleetHttpServer http;
    QHostAddress home;
    QHostAddress claimed; // taken for a move that is still to come, else null
    bool up;
    FleetReporter reporter;
    FleetRtspServer rtsp; // the last, as it still tells the rest at its end
};
