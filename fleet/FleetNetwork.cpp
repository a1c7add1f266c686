#include "FleetNetwork.h"

#include "FleetFrame.h"
#include "FleetSockets.h"

namespace {

constexpr int usualPrefixLength = 24;

const QHostAddress &groupAddress()
{
    static const QHostAddress address{QLatin1String(FleetFrame::group)};
    return address;
}

}

FleetNetwork::FleetNetwork(const FleetOptions &options) : options(options), host(options.interface)
{ }

FleetNetwork::~FleetNetwork()
{
    close();
}

bool FleetNetwork::find(QString *error)
{
    if (!host.exists()) {
        *error =
            QStringLiteral("no interface \"%1\"; there are: %2")
                .arg(options.interface, HostAddresses::interfaces().join(QStringLiteral(", ")));
        return false;
    }
    const QVector<HostAddress> present = host.present();
    own = present.isEmpty() ? QHostAddress() : present.first().ip;
    if (own.isNull() && (!options.ownAddresses || options.firstAddress.isNull())) {
        *error = QStringLiteral("interface %1 has no IPv4 address: give --first-address without "
                                "--no-addresses")
                     .arg(options.interface);
        return false;
    }
    return true;
}

int FleetNetwork::prefixLengthOf(const QHostAddress &ip) const
{
    for (const HostAddress &address : host.present()) {
        if (ip.isInSubnet(address.ip, address.prefixLength))
            return address.prefixLength;
    }
    return usualPrefixLength;
}

bool FleetNetwork::open(const QVector<QHostAddress> &addresses, QString *error)
{
    QVector<HostAddress> wanted;
    for (const QHostAddress &ip : addresses) {
        if (options.ownAddresses && taken.contains(ip)) {
            *error = QStringLiteral("two cameras have the address %1").arg(ip.toString());
            return false;
        }
        taken.insert(ip);
        wanted.append({ip, options.ownAddresses ? prefixLengthOf(ip) : 0});
    }
    if (options.ownAddresses && !host.add(wanted, error)) {
        *error += QStringLiteral(" (adding addresses needs the rights of an administrator; "
                                 "--no-addresses does without)");
        return false;
    }
    taken.insert(own);
    const QHostAddress local = socketAddress(addresses.first());
    if (FleetSockets::listen(listener, groupAddress(), FleetFrame::requestPort, local, error))
        return true;
    *error = QStringLiteral("port %1 of %2: %3")
                 .arg(FleetFrame::requestPort)
                 .arg(groupAddress().toString(), *error);
    return false;
}

void FleetNetwork::close()
{
    listener.close();
    senders.clear();
    taken.clear();
    host.removeAll();
}

QHostAddress FleetNetwork::socketAddress(const QHostAddress &ip) const
{
    return options.ownAddresses ? ip : own;
}

QUdpSocket *FleetNetwork::sender(const QHostAddress &from)
{
    QSharedPointer<QUdpSocket> &socket = senders[from];
    if (!socket) {
        socket.reset(new QUdpSocket);
        if (!socket->bind(from, 0) || !FleetSockets::sendThrough(*socket, from)) {
            senders.remove(from);
            return nullptr;
        }
    }
    return socket.data();
}

bool FleetNetwork::send(const QHostAddress &from, const QByteArray &datagram)
{
    QUdpSocket *socket = sender(socketAddress(from));
    return socket
        && socket->writeDatagram(datagram, groupAddress(), FleetFrame::replyPort)
        == datagram.size();
}

bool FleetNetwork::claim(const QHostAddress &ip, int prefixLength, QString *error)
{
    if (taken.contains(ip)) {
        *error = QStringLiteral("%1 is taken").arg(ip.toString());
        return false;
    }
    if (options.ownAddresses && !host.add({{ip, prefixLength}}, error))
        return false;
    taken.insert(ip);
    return true;
}

bool FleetNetwork::release(const QHostAddress &ip, QString *error)
{
    taken.remove(ip);
    if (!options.ownAddresses)
        return true;
    senders.remove(ip);
    return host.remove(ip, error);
}

QHostAddress FleetNetwork::firstFreeOfPool() const
{
    if (options.poolFirst.isNull())
        return QHostAddress();
    const quint32 last = options.poolLast.toIPv4Address();
    for (quint32 ip = options.poolFirst.toIPv4Address(); ip <= last; ++ip) {
        const QHostAddress address(ip);
        if (!taken.contains(address))
            return address;
    }
    return QHostAddress();
}
