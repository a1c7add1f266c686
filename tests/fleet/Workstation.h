#pragma once

#include <QHostAddress>
#include <QJsonArray>
#include <QJsonObject>
#include <QUdpSocket>
#include <QVector>

#include <functional>

// The other side of the cameras with plain sockets, on veth-a of the private network.
class Workstation
{
public:
    struct Reply {
        QByteArray datagram;
        QHostAddress from;
        qint64 at; // milliseconds since the epoch

        // The object behind the header, whatever the header says; empty when there is none.
        QJsonObject object() const;
    };

    static const char srcid[];

    Workstation();

    // Sends a request and returns its id.
    int send(
        const QString &method, const QJsonArray &targets, const QJsonObject &more = QJsonObject());
    void sendDatagram(const QByteArray &datagram);

    // Sends to one camera and waits for the reply with the request's id; empty when none comes.
    QJsonObject ask(
        const QString &method, const QString &target, const QJsonObject &more = QJsonObject());
    // Waits until that many replies fit, and returns those that do.
    QVector<Reply> await(int count, const std::function<bool(const Reply &)> &fits);
    QVector<Reply> awaitId(int count, int id);
    int repliesTo(int id) const;

    QVector<Reply> received; // all so far

private:
    void read();

    QUdpSocket sender;
    QUdpSocket receiver;
    int nextId;
};
