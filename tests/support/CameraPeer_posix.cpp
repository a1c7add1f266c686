#include "CameraPeer.h"

#include "VorlynProtocol.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

namespace {

sockaddr_in endpoint(const char *address, unsigned short port)
{
    sockaddr_in result = {};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = inet_addr(address);
    result.sin_port = htons(port);
    return result;
}

template <typename Value> bool setOption(int socket, int level, int option, const Value &value)
{
    return setsockopt(socket, level, option, &value, sizeof value) == 0;
}

bool bindTo(int socket, const sockaddr_in &name)
{
    return bind(socket, reinterpret_cast<const sockaddr *>(&name), sizeof name) == 0;
}

int closed(int socket)
{
    close(socket);
    return -1;
}

int openRequests(const char *local)
{
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const ip_mreq group = {{inet_addr(VorlynProtocol::group)}, {inet_addr(local)}};
    const bool ready = setOption(socket, SOL_SOCKET, SO_REUSEADDR, 1)
        && bindTo(socket, endpoint(VorlynProtocol::group, VorlynProtocol::requestPort))
        && setOption(socket, IPPROTO_IP, IP_MULTICAST_ALL, 0)
        && setOption(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, group);
    return ready ? socket : closed(socket);
}

int openReplies(const char *local)
{
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool ready = bindTo(socket, endpoint(local, 0))
        && setOption(socket, IPPROTO_IP, IP_MULTICAST_IF, in_addr{inet_addr(local)});
    return ready ? socket : closed(socket);
}

bool enterCameras()
{
    const QByteArray path = "/proc/" + qgetenv("VORLYN_TEST_CAMERA_PID") + "/ns/net";
    const int space = open(path.constData(), O_RDONLY | O_CLOEXEC);
    const bool entered = setns(space, CLONE_NEWNET) == 0;
    close(space);
    return entered;
}

}

struct CameraPeer::Sockets {
    int requests = -1;
    int replies = -1;
};

CameraPeer::CameraPeer(const char *local, Side side) : sockets(new Sockets)
{
    // A socket stays in the network in which it was made; a thread can change over to it alone.
    std::thread([&] {
        if (side == Cameras && !enterCameras())
            return;
        sockets->requests = openRequests(local);
        sockets->replies = openReplies(local);
    }).join();
}

CameraPeer::~CameraPeer()
{
    close(sockets->requests);
    close(sockets->replies);
}

bool CameraPeer::isOpen() const
{
    return sockets->requests >= 0 && sockets->replies >= 0;
}

QByteArray CameraPeer::receive(int milliseconds)
{
    pollfd waited = {sockets->requests, POLLIN, 0};
    if (poll(&waited, 1, milliseconds) <= 0)
        return {};
    QByteArray datagram(65536, '\0');
    datagram.resize(int(recv(sockets->requests, datagram.data(), size_t(datagram.size()), 0)));
    return datagram;
}

bool CameraPeer::send(const QByteArray &datagram)
{
    const sockaddr_in group = endpoint(VorlynProtocol::group, VorlynProtocol::replyPort);
    return sendto(sockets->replies, datagram.constData(), size_t(datagram.size()), 0,
               reinterpret_cast<const sockaddr *>(&group), sizeof group)
        == datagram.size();
}
