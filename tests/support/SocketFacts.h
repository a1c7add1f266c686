#pragma once

#include <QByteArrayList>

// What the system knows of a socket of this process, and in what systems differ.
namespace SocketFacts {

// What a socket is bound to, in this machine's byte order; zeros when it isn't.
struct Name {
    quint32 ip = 0;
    quint16 port = 0;
};

bool isOpen(int socket);
Name nameOf(int socket);
// "10.77.0.1", or empty, and 0, when it isn't bound.
QByteArray boundAddress(int socket);
unsigned short boundPort(int socket);
// The socket of this process that is bound to a port, or -1.
int boundTo(unsigned short port);
// The address whose interface the group's datagrams leave through.
QByteArray wayOut(int socket);
// Whether a datagram waits that isn't an empty one.
bool hasData(int socket);

// From now on a receive() ends at once, with an error that is no reason for a new socket. One that
// blocks already may do so until a datagram comes.
void setNonBlocking(int socket);
void endReceiving(int socket);

// "SO_REUSEADDR 0"; times in milliseconds. The second one tells what those of the program have.
QByteArrayList options(int socket);
QByteArrayList optionsOfMembers();

// Where the program binds the receiver of an interface that has this address.
QByteArray receiverAddress(const QByteArray &local);
// Each send() chooses the interface it goes out through. Else the bound address has.
extern const bool choosesWayOut;
// Of a datagram that is longer than the buffer the beginning comes. Else there is an error.
extern const bool cutsDatagrams;
// errno tells what a call failed by, and then the program makes a new socket. Winsock's errors
// don't reach it.
extern const bool namesErrors;
// wake() closes the socket, at which a receive() fails. Else it gives 0 bytes.
extern const bool wakeCloses;

}
