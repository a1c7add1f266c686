#pragma once

#include "FleetRule.h"
#include "FleetStream.h"

#include <QTcpServer>

#include <memory>

// Who is behind a camera's RTSP server.
class FleetStreamSite
{
public:
    virtual ~FleetStreamSite() = default;

    // The rule that a new connection meets, null for none.
    virtual FleetRulePointer viewerCame() = 0;
    // Something for the journal, on the server's thread.
    virtual void streamTold(const char *event, const QJsonObject &more) = 0;
};

// Accepts the viewers of a camera and hands them to its stream, those that meet a rule through a
// relay that makes the rule's faults.
class FleetRtspServer : public QTcpServer
{
    Q_OBJECT

public:
    FleetRtspServer(
        FleetStreamSite &site, const FleetStreamShape &shape, QObject *parent = nullptr);
    ~FleetRtspServer() override;

    // Nothing changes when it is there already. False with errorString() on failure.
    bool open(const QHostAddress &address, quint16 port);
    // Drops all viewers; blocks for a moment.
    void shut();
    // The name in the picture.
    void setName(const QString &name);

private:
    FleetStream &neededStream();
    void meet(QTcpSocket *socket);
    void tell(const char *what, const QString &source, const FleetRulePointer &rule);

    FleetStreamSite &site;
    const FleetStreamShape shape;
    std::unique_ptr<FleetStream> stream; // from the first viewer on
    QString name;
};
