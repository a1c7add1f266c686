#pragma once

#include <QNetworkAddressEntry>
#include <QNetworkInterface>

// The private network that the NETWORK option of a test gives.
namespace TestNetwork {

// Runs a program and tells whether it ended with 0: "ip link set veth-a down".
bool run(const QString &command);
// The same among the cameras.
bool runAtCameras(const QString &command);

QNetworkInterface interface(const QString &name);
// The entry of an address, which need not exist.
QNetworkAddressEntry entry(const QString &ip);

}
