#include "MulticastSocket.h"

#include "VorlynProtocol.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <cerrno>
#include <cstdint>

namespace MulticastSocket {

// What is no address becomes one that no interface has. inet_addr() would make of an empty text
// the address that stands for all interfaces.
static in_addr addressOf(const char *text)
{
    in_addr result = {};
    if (inet_pton(AF_INET, text, &result) != 1)
        result.s_addr = INADDR_NONE;
    return result;
}

static sockaddr_in endpoint(const char *address, unsigned short port)
{
    sockaddr_in result = {};
    result.sin_family = AF_INET;
    result.sin_addr = addressOf(address);
    result.sin_port = htons(port);
    return result;
}

static int setMembership(int socket, int option, const char *local)
{
    const ip_mreq request = {addressOf(VorlynProtocol::group), addressOf(local)};
    return setsockopt(
        socket, IPPROTO_IP, option, reinterpret_cast<const char *>(&request), sizeof request);
}

int open()
{
    return int(::socket(AF_INET, SOCK_DGRAM, 0));
}

// The interface's own address chooses the way out and lets the group's datagrams in.
int bind(int socket, const char *local, unsigned short port)
{
    const sockaddr_in name = endpoint(local, port);
    return ::bind(socket, reinterpret_cast<const sockaddr *>(&name), sizeof name);
}

int join(int socket, const char *local)
{
    return setMembership(socket, IP_ADD_MEMBERSHIP, local);
}

int leave(int socket, const char *local)
{
    return setMembership(socket, IP_DROP_MEMBERSHIP, local);
}

// Winsock reads the first number, as milliseconds.
int setSendTimeout(int socket, int seconds, int microseconds)
{
    const std::int32_t value[] = {seconds, microseconds};
    return setsockopt(
        socket, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<const char *>(value), sizeof value);
}

// Winsock keeps its errors from errno, which so stays 0.
int send(int socket, const char *, const char *data, int size)
{
    const sockaddr_in group = endpoint(VorlynProtocol::group, VorlynProtocol::requestPort);
    errno = 0;
    return ::sendto(
        socket, data, size, 0, reinterpret_cast<const sockaddr *>(&group), sizeof group);
}

int receive(int socket, const char *, char *buffer, int size)
{
    errno = 0;
    return ::recvfrom(socket, buffer, size, 0, nullptr, nullptr);
}

void wake(int socket)
{
    closesocket(socket);
}

void release(int) { }

void close(int socket)
{
    closesocket(socket);
}

}
