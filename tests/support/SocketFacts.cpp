#include "SocketFacts.h"

#include <QHostAddress>

QByteArray SocketFacts::boundAddress(int socket)
{
    const Name name = nameOf(socket);
    return name.port ? QHostAddress(name.ip).toString().toLatin1() : QByteArray();
}

unsigned short SocketFacts::boundPort(int socket)
{
    return nameOf(socket).port;
}
