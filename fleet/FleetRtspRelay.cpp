#include "FleetRtspRelay.h"

#include "FleetStream.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace {

constexpr int packetHead = 4; // "$", channel, length
constexpr int rtpHead = 12;
constexpr int flippedBytes = 4; // of a corrupt packet
constexpr int mostUnsent = 1 << 20;
constexpr int acceptMs = 5000; // a connection within this host

// A header's number, -1 when it is not there.
int numberOf(const QByteArray &message, const QByteArray &header)
{
    for (const QByteArray &line : message.split('\n')) {
        if (line.toLower().startsWith(header + ':'))
            return line.mid(header.size() + 1).trimmed().toInt();
    }
    return -1;
}

}

int FleetRtspUnits::length() const
{
    if (unread.startsWith('$'))
        return unread.size() < packetHead ? 0
                                          : packetHead + (uchar(unread[2]) << 8 | uchar(unread[3]));
    const int end = unread.indexOf("\r\n\r\n");
    return end < 0 ? 0 : end + 4 + qMax(0, numberOf(unread.left(end), "content-length"));
}

QByteArray FleetRtspUnits::take()
{
    const int bytes = length();
    if (bytes == 0 || bytes > unread.size())
        return QByteArray();
    const QByteArray unit = unread.left(bytes);
    unread.remove(0, bytes);
    return unit;
}

bool FleetRtspUnits::isMedia(const QByteArray &unit)
{
    return unit.size() > packetHead + rtpHead && unit[0] == '$' && unit[1] % 2 == 0;
}

FleetRtspRelay::FleetRtspRelay(
    QTcpSocket *viewer, const FleetStreamFaults &faults, FleetStream *stream, QObject *parent) :
    QObject(parent),
    viewer(viewer),
    faults(faults),
    server(nullptr),
    packets(0),
    started(false),
    frozen(false)
{
    viewer->setParent(this);
    viewer->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    lateTimer.setSingleShot(true);
    connect(&lateTimer, &QTimer::timeout, this, [this] {
        send(late);
        late.clear();
    });
    connect(viewer, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    connect(viewer, &QTcpSocket::readyRead, this, &FleetRtspRelay::readViewer);
    if (stream)
        connectTo(*stream);
}

void FleetRtspRelay::connectTo(FleetStream &stream)
{
    QTcpServer gate;
    server = new QTcpSocket(this);
    gate.listen(QHostAddress::LocalHost);
    server->connectToHost(gate.serverAddress(), gate.serverPort());
    if (!gate.waitForNewConnection(acceptMs)) {
        viewer->abort();
        return;
    }
    stream.serve(*gate.nextPendingConnection(), viewer->peerAddress(), viewer->peerPort());
    connect(server, &QTcpSocket::readyRead, this, &FleetRtspRelay::readServer);
    connect(server, &QTcpSocket::disconnected, viewer, &QTcpSocket::disconnectFromHost);
    connect(viewer, &QTcpSocket::bytesWritten, this, &FleetRtspRelay::readServer);
    server->setReadBufferSize(mostUnsent);
}

void FleetRtspRelay::readViewer()
{
    const QByteArray bytes = viewer->readAll();
    if (frozen || faults.silent)
        return;
    if (server) {
        server->write(bytes);
        return;
    }
    requests += bytes;
    for (int end = requests.indexOf("\r\n\r\n"); end >= 0; end = requests.indexOf("\r\n\r\n")) {
        answer(requests.left(end));
        requests.remove(0, end + 4);
    }
}

void FleetRtspRelay::answer(const QByteArray &request)
{
    if (faults.garbage > 0) {
        QByteArray bytes(faults.garbage, '\0');
        for (char &byte : bytes)
            byte = char(random());
        sendLate(bytes);
        return;
    }
    sendLate("RTSP/1.0 " + QByteArray::number(faults.status)
        + " Error\r\nCSeq: " + QByteArray::number(numberOf(request, "cseq"))
        + (faults.status == 401 ? "\r\nWWW-Authenticate: Basic realm=\"camera\"" : "")
        + "\r\n\r\n");
}

void FleetRtspRelay::readServer()
{
    if (viewer->bytesToWrite() > mostUnsent)
        return;
    units.append(server->readAll());
    for (QByteArray unit = units.take(); !unit.isEmpty(); unit = units.take()) {
        if (FleetRtspUnits::isMedia(unit))
            passMedia(unit);
        else if (unit.startsWith('$'))
            send(unit);
        else
            sendLate(unit);
    }
}

void FleetRtspRelay::passMedia(QByteArray packet)
{
    start();
    ++packets;
    if (faults.loseEvery > 0 && packets % faults.loseEvery == 0)
        return;
    if (faults.corruptEvery > 0 && packets % faults.corruptEvery == 0) {
        const int first = packetHead + rtpHead;
        for (int i = 0; i < flippedBytes; ++i) {
            const int at = first + int(random() % uint(packet.size() - first));
            packet[at] = char(~packet[at]);
        }
    }
    send(packet);
}

// With the first packet of media.
void FleetRtspRelay::start()
{
    if (started)
        return;
    started = true;
    if (faults.freezeAfterMs >= 0)
        QTimer::singleShot(faults.freezeAfterMs, Qt::PreciseTimer, this, [this] { frozen = true; });
    if (faults.closeAfterMs >= 0)
        QTimer::singleShot(
            faults.closeAfterMs, Qt::PreciseTimer, viewer, &QTcpSocket::disconnectFromHost);
}

void FleetRtspRelay::send(const QByteArray &unit)
{
    if (frozen)
        return;
    if (lateTimer.isActive())
        late += unit;
    else
        viewer->write(unit);
}

void FleetRtspRelay::sendLate(const QByteArray &unit)
{
    if (faults.delayMs == 0) {
        send(unit);
        return;
    }
    if (!lateTimer.isActive())
        lateTimer.start(faults.delayMs);
    late += unit;
}
