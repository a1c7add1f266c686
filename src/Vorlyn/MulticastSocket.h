#pragma once

// The system's datagram calls, as the camera protocol needs them: on the group, and through the
// one interface that has the IPv4 address `local` (dotted text). _win.cpp: Winsock 2;
// _posix.cpp: BSD sockets.
// Thread: a socket belongs to the thread that opened it; only wake() comes from another.
// Errors: a negative result. send() and receive() set errno: 0 when the system names no error.
namespace MulticastSocket {

int open();
// For group traffic to `port`, or, with VorlynProtocol::anyPort, for sending.
int bind(int socket, const char *local, unsigned short port);
int join(int socket, const char *local);
int leave(int socket, const char *local);
int setSendTimeout(int socket, int seconds, int microseconds);

// Both give the bytes carried over.
int send(int socket, const char *local, const char *data, int size);
// Blocks until a datagram comes, without limit.
int receive(int socket, const char *local, char *buffer, int size);

// Ends a receive() that blocks now or that follows. After it, release() takes the place of close().
void wake(int socket);
void release(int socket);
void close(int socket);

}
