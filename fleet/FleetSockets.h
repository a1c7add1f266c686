#pragma once

#include <QHostAddress>

class QTcpSocket;
class QUdpSocket;

// What sockets can do on every system but Qt has no call for.
namespace FleetSockets {

// Binds to the group's port and joins the group on the interface that has the address `local`,
// so that datagrams of other interfaces stay out. False with one line of text on failure.
bool listen(QUdpSocket &socket, const QHostAddress &group, quint16 port, const QHostAddress &local,
    QString *error);
// Datagrams to a group leave through the interface that has this address.
bool sendThrough(QUdpSocket &socket, const QHostAddress &local);
// A second descriptor of the connection, which lives on when the socket object is aborted.
// -1 on failure.
qintptr duplicate(const QTcpSocket &socket);
// Closes with a reset in place of an orderly end.
void reset(QTcpSocket &socket);

}
