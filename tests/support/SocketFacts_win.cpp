#include "SocketFacts.h"

#include <winsock2.h>
#include <ws2tcpip.h>

namespace {

// Handles are multiples of four, counted from the start.
constexpr int handleStep = 4;
constexpr int highestHandle = 1 << 13;

int option(int socket, int level, int name)
{
    int value = -1;
    int size = sizeof value;
    getsockopt(SOCKET(socket), level, name, reinterpret_cast<char *>(&value), &size);
    return value;
}

}

const bool SocketFacts::choosesWayOut = false;
const bool SocketFacts::cutsDatagrams = false;
const bool SocketFacts::namesErrors = false;
const bool SocketFacts::wakeCloses = true;

QByteArray SocketFacts::receiverAddress(const QByteArray &local)
{
    return local;
}

bool SocketFacts::isOpen(int socket)
{
    return option(socket, SOL_SOCKET, SO_TYPE) == SOCK_DGRAM;
}

SocketFacts::Name SocketFacts::nameOf(int socket)
{
    sockaddr_in name = {};
    int size = sizeof name;
    if (getsockname(SOCKET(socket), reinterpret_cast<sockaddr *>(&name), &size) != 0
        || name.sin_family != AF_INET)
        return {};
    return {ntohl(name.sin_addr.s_addr), ntohs(name.sin_port)};
}

int SocketFacts::boundTo(unsigned short port)
{
    for (int handle = handleStep; handle < highestHandle; handle += handleStep) {
        if (boundPort(handle) == port)
            return handle;
    }
    return -1;
}

// The program leaves it to the address to which the socket is bound.
QByteArray SocketFacts::wayOut(int socket)
{
    const bool left = option(socket, IPPROTO_IP, IP_MULTICAST_IF) == 0;
    return left ? boundAddress(socket) : QByteArray("of an option");
}

bool SocketFacts::hasData(int socket)
{
    u_long bytes = 0;
    return ioctlsocket(SOCKET(socket), FIONREAD, &bytes) == 0 && bytes > 0;
}

void SocketFacts::setNonBlocking(int socket)
{
    u_long on = 1;
    ioctlsocket(SOCKET(socket), FIONBIO, &on);
}

void SocketFacts::endReceiving(int socket)
{
    shutdown(SOCKET(socket), SD_RECEIVE);
}

QByteArrayList SocketFacts::options(int socket)
{
    const auto value = [socket](int level, int name) {
        return QByteArray::number(option(socket, level, name));
    };
    return {"SO_REUSEADDR " + value(SOL_SOCKET, SO_REUSEADDR),
        "SO_SNDTIMEO " + value(SOL_SOCKET, SO_SNDTIMEO),
        "SO_RCVTIMEO " + value(SOL_SOCKET, SO_RCVTIMEO),
        "IP_MULTICAST_TTL " + value(IPPROTO_IP, IP_MULTICAST_TTL),
        "IP_MULTICAST_LOOP " + value(IPPROTO_IP, IP_MULTICAST_LOOP)};
}

// The program sets a second and no microseconds, of which Winsock takes the first number for
// milliseconds. All else is as the system has it.
QByteArrayList SocketFacts::optionsOfMembers()
{
    return {"SO_REUSEADDR 0", "SO_SNDTIMEO 1", "SO_RCVTIMEO 0", "IP_MULTICAST_TTL 1",
        "IP_MULTICAST_LOOP 1"};
}
