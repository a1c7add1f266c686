#include "SocketFacts.h"

#include <QDir>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace {

template <typename Value> Value option(int socket, int level, int name)
{
    Value value = {};
    socklen_t size = sizeof value;
    getsockopt(socket, level, name, &value, &size);
    return value;
}

int milliseconds(int socket, int name)
{
    const auto time = option<timeval>(socket, SOL_SOCKET, name);
    return int(time.tv_sec * 1000 + time.tv_usec / 1000);
}

}

const bool SocketFacts::choosesWayOut = true;
const bool SocketFacts::cutsDatagrams = true;
const bool SocketFacts::namesErrors = true;
const bool SocketFacts::wakeCloses = false;

QByteArray SocketFacts::receiverAddress(const QByteArray &)
{
    return "239.255.255.250";
}

bool SocketFacts::isOpen(int socket)
{
    return fcntl(socket, F_GETFD) != -1;
}

SocketFacts::Name SocketFacts::nameOf(int socket)
{
    sockaddr_in name = {};
    socklen_t size = sizeof name;
    if (getsockname(socket, reinterpret_cast<sockaddr *>(&name), &size) != 0
        || name.sin_family != AF_INET)
        return {};
    return {ntohl(name.sin_addr.s_addr), ntohs(name.sin_port)};
}

int SocketFacts::boundTo(unsigned short port)
{
    for (const QString &name : QDir("/proc/self/fd").entryList(QDir::Files | QDir::System)) {
        if (boundPort(name.toInt()) == port)
            return name.toInt();
    }
    return -1;
}

QByteArray SocketFacts::wayOut(int socket)
{
    return inet_ntoa(option<in_addr>(socket, IPPROTO_IP, IP_MULTICAST_IF));
}

bool SocketFacts::hasData(int socket)
{
    int bytes = 0; // of the next datagram
    return ioctl(socket, FIONREAD, &bytes) == 0 && bytes > 0;
}

void SocketFacts::setNonBlocking(int socket)
{
    fcntl(socket, F_SETFL, O_NONBLOCK);
    shutdown(socket, SHUT_RD); // wakes the one that blocks
}

void SocketFacts::endReceiving(int socket)
{
    shutdown(socket, SHUT_RD);
}

QByteArrayList SocketFacts::options(int socket)
{
    const auto value = [socket](int level, int name) {
        return QByteArray::number(option<int>(socket, level, name));
    };
    return {"SO_REUSEADDR " + value(SOL_SOCKET, SO_REUSEADDR),
        "SO_SNDTIMEO " + QByteArray::number(milliseconds(socket, SO_SNDTIMEO)),
        "SO_RCVTIMEO " + QByteArray::number(milliseconds(socket, SO_RCVTIMEO)),
        "IP_MULTICAST_TTL " + value(IPPROTO_IP, IP_MULTICAST_TTL),
        "IP_MULTICAST_LOOP " + value(IPPROTO_IP, IP_MULTICAST_LOOP),
        "IP_MULTICAST_ALL " + value(IPPROTO_IP, IP_MULTICAST_ALL),
        "FD_CLOEXEC " + QByteArray::number(fcntl(socket, F_GETFD) & FD_CLOEXEC)};
}

// But for the time limit of sending and the last two, as the system has them.
QByteArrayList SocketFacts::optionsOfMembers()
{
    return {"SO_REUSEADDR 0", "SO_SNDTIMEO 1000", "SO_RCVTIMEO 0", "IP_MULTICAST_TTL 1",
        "IP_MULTICAST_LOOP 1", "IP_MULTICAST_ALL 0", "FD_CLOEXEC 1"};
}
