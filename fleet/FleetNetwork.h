#pragma once

#include "FleetOptions.h"
#include "HostAddresses.h"

#include <QHash>
#include <QSet>
#include <QSharedPointer>
#include <QUdpSocket>

// The interface under the cameras: whose address is whose, and the datagrams in and out.
class FleetNetwork
{
public:
    explicit FleetNetwork(const FleetOptions &options);
    ~FleetNetwork();

    // Finds the interface and its own address. First of all; false with one line of text, as below.
    bool find(QString *error);
    QHostAddress ownAddress() const { return own; }
    // Length of the subnet in which the cameras stand.
    int prefixLengthOf(const QHostAddress &ip) const;

    // Takes the cameras' addresses and opens the socket for requests.
    bool open(const QVector<QHostAddress> &addresses, QString *error);
    void close();
    QUdpSocket &requests() { return listener; }
    // From a camera's address to the group on which workstations listen.
    bool send(const QHostAddress &from, const QByteArray &datagram);

    // An address for a camera that moves; refused when anybody here has it.
    bool claim(const QHostAddress &ip, int prefixLength, QString *error);
    bool release(const QHostAddress &ip, QString *error);
    QHostAddress firstFreeOfPool() const;
    // Where a camera that reports this address has its sockets.
    QHostAddress socketAddress(const QHostAddress &ip) const;

private:
    QUdpSocket *sender(const QHostAddress &from);

    const FleetOptions &options;
    HostAddresses host;
    QHostAddress own; // the interface's first, null when it has none
    QSet<QHostAddress> taken; // by cameras and the interface itself
    QUdpSocket listener;
    QHash<QHostAddress, QSharedPointer<QUdpSocket>> senders;
};
