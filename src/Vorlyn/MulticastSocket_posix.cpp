#include "MulticastSocket.h"

#include "VorlynProtocol.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace MulticastSocket {

static sockaddr_in endpoint(const char *address, unsigned short port)
{
    sockaddr_in result = {};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = inet_addr(address);
    result.sin_port = htons(port);
    return result;
}

template <typename Value> static int setOption(int socket, int option, const Value &value)
{
    return setsockopt(socket, IPPROTO_IP, option, &value, sizeof value);
}

static ip_mreq membership(const char *local)
{
    return {{inet_addr(VorlynProtocol::group)}, {inet_addr(local)}};
}

// A membership goes with its interface. One that was made anew under the address is joined here,
// which fails with EADDRINUSE while the old membership stands.
static bool keepMembership(int socket, const char *local)
{
    return setOption(socket, IP_ADD_MEMBERSHIP, membership(local)) == 0 || errno == EADDRINUSE;
}

// Not inherited by programs that are started: they would go on holding the port.
int open()
{
    return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

// A socket that is bound to an address of its own gets no group traffic, so a receiver is bound to
// the group.
int bind(int socket, const char *local, unsigned short port)
{
    const bool sender = port == VorlynProtocol::anyPort;
    const sockaddr_in name = endpoint(sender ? local : VorlynProtocol::group, port);
    return ::bind(socket, reinterpret_cast<const sockaddr *>(&name), sizeof name);
}

// Without the option, whatever any socket of the system has joined elsewhere comes in too.
int join(int socket, const char *local)
{
    const int result = setOption(socket, IP_MULTICAST_ALL, 0);
    return result < 0 ? result : setOption(socket, IP_ADD_MEMBERSHIP, membership(local));
}

int leave(int socket, const char *local)
{
    return setOption(socket, IP_DROP_MEMBERSHIP, membership(local));
}

int setSendTimeout(int socket, int seconds, int microseconds)
{
    const timeval value = {seconds, microseconds};
    return setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &value, sizeof value);
}

// The way out is chosen each time, as the interface may have been made anew in between.
int send(int socket, const char *local, const char *data, int size)
{
    const in_addr through = {inet_addr(local)};
    if (setOption(socket, IP_MULTICAST_IF, through) < 0)
        return -1;
    const sockaddr_in group = endpoint(VorlynProtocol::group, VorlynProtocol::requestPort);
    errno = 0;
    return int(
        ::sendto(socket, data, size, 0, reinterpret_cast<const sockaddr *>(&group), sizeof group));
}

int receive(int socket, const char *local, char *buffer, int size)
{
    constexpr int checkMilliseconds = 1000;
    pollfd waited = {socket, POLLIN, 0};
    while (poll(&waited, 1, checkMilliseconds) <= 0) {
        if (!keepMembership(socket, local))
            return -1;
    }
    errno = 0;
    return int(::recvfrom(socket, buffer, size, 0, nullptr, nullptr));
}

// A closed descriptor doesn't wake a receive() that blocks, and its number could be another file's
// by then; a socket that is shut down gives 0 bytes from now on.
void wake(int socket)
{
    shutdown(socket, SHUT_RD);
}

void release(int socket)
{
    ::close(socket);
}

void close(int socket)
{
    ::close(socket);
}

}
