#pragma once

#include "FleetFormReader.h"
#include "FleetRule.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QMap>
#include <QTcpServer>

// One HTTP request to a camera, from its headers to the answer.
struct FleetExchange {
    QString source; // "10.77.0.1:40123"
    QByteArray head; // request line and headers as they came
    QByteArray method; // empty when the request line is none
    QByteArray path;
    QMap<QByteArray, QByteArray> headers; // names in lower case
    qint64 length = 0; // of the body, -1 unknown
    qint64 received = 0;
    QSharedPointer<FleetFormReader> form; // null for other bodies
    QElapsedTimer clock;
    bool complete = false;

    FleetRulePointer rule;
    FleetHttpAnswer answer;

    bool isUpload() const { return method == "POST" && path == "/update.cgi"; }
};

// Who is behind a camera's web server. Each exchange begins and finishes once.
class FleetHttpSite
{
public:
    virtual ~FleetHttpSite() = default;

    // The headers are in: says how the body is met.
    virtual void begin(FleetExchange &exchange) = 0;
    // The body is in, or never will be (`complete`): says what is answered.
    virtual void finish(FleetExchange &exchange) = 0;
    // A complete exchange is over, its answer sent or held back.
    virtual void answered(const FleetExchange &exchange) = 0;
};

// A small HTTP/1.1 server, one request a connection. Bodies of forms are read as a stream, others
// are counted.
class FleetHttpServer : public QTcpServer
{
public:
    FleetHttpServer(FleetHttpSite &site, bool withDigest, QObject *parent = nullptr);

private:
    FleetHttpSite &site;
    const bool withDigest;
};
