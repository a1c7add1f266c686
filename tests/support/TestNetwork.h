#pragma once

#include <QNetworkAddressEntry>
#include <QNetworkInterface>
#include <QStringList>

// The private network that the NETWORK option of a test gives, and what goes over it.
namespace TestNetwork {

// A command as arguments of "nsenter", to run it among the cameras.
QStringList atCameras(const QStringList &command);
// Runs a program and tells whether it ended with 0: "ip link set veth-a down".
bool run(const QString &command);
// The same among the cameras.
bool runAtCameras(const QString &command);

QNetworkInterface interface(const QString &name);
// The entry of an address, which need not exist.
QNetworkAddressEntry entry(const QString &ip);

// A datagram of the cameras' protocol, made by hand: the header in front.
QByteArray frame(const QByteArray &json);

}
