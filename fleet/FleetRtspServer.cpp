#include "FleetRtspServer.h"

#include "FleetRtspRelay.h"
#include "FleetSockets.h"

#include <QCoreApplication>
#include <QTcpSocket>

FleetRtspServer::FleetRtspServer(
    FleetStreamSite &site, const FleetStreamShape &shape, QObject *parent) :
    QTcpServer(parent),
    site(site),
    shape(shape)
{
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = nextPendingConnection())
            meet(socket);
    });
}

FleetRtspServer::~FleetRtspServer()
{
    shut();
}

bool FleetRtspServer::open(const QHostAddress &address, quint16 port)
{
    if (isListening() && serverAddress() == address && serverPort() == port)
        return true;
    shut();
    if (!listen(address, port))
        return false;
    if (shape.always)
        neededStream();
    return true;
}

void FleetRtspServer::shut()
{
    close();
    qDeleteAll(findChildren<FleetRtspRelay *>(QString(), Qt::FindDirectChildrenOnly));
    stream.reset();
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall); // what the stream told last
}

void FleetRtspServer::setName(const QString &wanted)
{
    name = wanted;
    if (stream)
        stream->setName(name);
}

FleetStream &FleetRtspServer::neededStream()
{
    if (stream)
        return *stream;
    stream = FleetStream::create(shape, [this](const char *event, const QJsonObject &more) {
        QMetaObject::invokeMethod(
            this, [this, event, more] { site.streamTold(event, more); }, Qt::QueuedConnection);
    });
    stream->setName(name);
    return *stream;
}

void FleetRtspServer::meet(QTcpSocket *socket)
{
    const FleetRulePointer rule = site.viewerCame();
    FleetStreamFaults faults;
    if (rule)
        faults.spoil(*rule);
    const QString source =
        QStringLiteral("%1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort());
    tell("came", source, rule);
    if (!faults.any()) {
        neededStream().serve(*socket, socket->peerAddress(), socket->peerPort());
        socket->deleteLater();
    } else if (faults.reset) {
        FleetSockets::reset(*socket);
        socket->deleteLater();
        tell("left", source, rule);
    } else {
        const bool alone = faults.answersItself();
        auto *relay = new FleetRtspRelay(socket, faults, alone ? nullptr : &neededStream(), this);
        if (alone) {
            connect(relay, &QObject::destroyed, this,
                [this, source, rule] { tell("left", source, rule); });
        }
    }
}

void FleetRtspServer::tell(const char *what, const QString &source, const FleetRulePointer &rule)
{
    QJsonObject entry{
        {QStringLiteral("source"), source}, {QStringLiteral("what"), QLatin1String(what)}};
    if (rule)
        entry[QStringLiteral("rule")] = rule->place;
    site.streamTold("viewer", entry);
}
