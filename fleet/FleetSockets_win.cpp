#include "FleetSockets.h"

#include <QTcpSocket>
#include <QUdpSocket>

#include <winsock2.h>
#include <ws2tcpip.h>

namespace {

constexpr int receiveBufferBytes = 4 << 20; // a burst of requests waits here

in_addr inAddress(const QHostAddress &address)
{
    in_addr result;
    result.s_addr = htonl(address.toIPv4Address());
    return result;
}

template <typename Value>
bool setOption(const QAbstractSocket &socket, int level, int option, const Value &value)
{
    return setsockopt(SOCKET(socket.socketDescriptor()), level, option,
               reinterpret_cast<const char *>(&value), sizeof value)
        == 0;
}

}

bool FleetSockets::listen(QUdpSocket &socket, const QHostAddress &group, quint16 port,
    const QHostAddress &local, QString *error)
{
    // Bound to an own address, a socket still gets what is sent to its groups.
    if (!socket.bind(local, port, QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint)) {
        *error = socket.errorString();
        return false;
    }
    setOption(socket, SOL_SOCKET, SO_RCVBUF, receiveBufferBytes);
    ip_mreq membership;
    membership.imr_multiaddr = inAddress(group);
    membership.imr_interface = inAddress(local);
    if (setOption(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, membership))
        return true;
    *error = QStringLiteral("the group can't be joined, error %1").arg(WSAGetLastError());
    return false;
}

bool FleetSockets::sendThrough(QUdpSocket &socket, const QHostAddress &local)
{
    return setOption(socket, IPPROTO_IP, IP_MULTICAST_IF, inAddress(local));
}

qintptr FleetSockets::duplicate(const QTcpSocket &socket)
{
    WSAPROTOCOL_INFOW info;
    if (WSADuplicateSocketW(SOCKET(socket.socketDescriptor()), GetCurrentProcessId(), &info) != 0)
        return -1;
    return qintptr(WSASocketW(
        FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, &info, 0, WSA_FLAG_OVERLAPPED));
}

void FleetSockets::reset(QTcpSocket &socket)
{
    setOption(socket, SOL_SOCKET, SO_LINGER, linger{1, 0});
    socket.abort();
}
