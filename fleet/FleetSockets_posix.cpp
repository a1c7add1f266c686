#include "FleetSockets.h"

#include <QTcpSocket>
#include <QUdpSocket>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

constexpr int receiveBufferBytes = 4 << 20; // a burst of requests waits here

in_addr inAddress(const QHostAddress &address)
{
    return in_addr{htonl(address.toIPv4Address())};
}

template <typename Value>
bool setOption(const QAbstractSocket &socket, int level, int option, const Value &value)
{
    return setsockopt(int(socket.socketDescriptor()), level, option, &value, sizeof value) == 0;
}

}

bool FleetSockets::listen(QUdpSocket &socket, const QHostAddress &group, quint16 port,
    const QHostAddress &local, QString *error)
{
    // Bound to the group, it gets nothing that is sent to the host itself.
    if (!socket.bind(group, port, QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint)) {
        *error = socket.errorString();
        return false;
    }
    setOption(socket, SOL_SOCKET, SO_RCVBUF, receiveBufferBytes);
    setOption(socket, IPPROTO_IP, IP_MULTICAST_ALL, 0);
    if (setOption(
            socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, ip_mreq{inAddress(group), inAddress(local)}))
        return true;
    *error = QString::fromLocal8Bit(std::strerror(errno));
    return false;
}

bool FleetSockets::sendThrough(QUdpSocket &socket, const QHostAddress &local)
{
    return setOption(socket, IPPROTO_IP, IP_MULTICAST_IF, inAddress(local));
}

qintptr FleetSockets::duplicate(const QTcpSocket &socket)
{
    return fcntl(int(socket.socketDescriptor()), F_DUPFD_CLOEXEC, 0);
}

void FleetSockets::reset(QTcpSocket &socket)
{
    setOption(socket, SOL_SOCKET, SO_LINGER, linger{1, 0});
    socket.abort();
}
