#pragma once

#include "FleetRule.h"

#include <QObject>
#include <QTimer>

#include <random>

class FleetStream;
class QTcpSocket;

// What a server sends on an RTSP connection, cut into packets of media ("$", channel, length,
// packet) and answers.
class FleetRtspUnits
{
public:
    void append(const QByteArray &bytes) { unread += bytes; }
    // The next whole unit, empty when more bytes are needed.
    QByteArray take();

    // RTP, and not the RTCP beside it.
    static bool isMedia(const QByteArray &unit);

private:
    int length() const; // of the first unit, 0 unknown

    QByteArray unread;
};

// Stands between a viewer and the stream, or in the stream's place, and makes the faults of a rule.
// Deletes itself when the connection ends.
class FleetRtspRelay : public QObject
{
    Q_OBJECT

public:
    // Takes the socket. The stream is only needed here, and null when the faults answer themselves.
    FleetRtspRelay(
        QTcpSocket *viewer, const FleetStreamFaults &faults, FleetStream *stream, QObject *parent);

private:
    void connectTo(FleetStream &stream);
    void readViewer();
    void readServer();
    void answer(const QByteArray &request);
    void passMedia(QByteArray packet);
    void start();
    void send(const QByteArray &unit);
    void sendLate(const QByteArray &answer);

    QTcpSocket *const viewer;
    const FleetStreamFaults faults;
    QTcpSocket *server; // null when this is the server
    FleetRtspUnits units;
    QByteArray requests; // not answered yet
    int packets; // of media
    bool started;
    bool frozen;
    QByteArray late; // waits for the timer
    QTimer lateTimer;
    std::mt19937 random;
};
