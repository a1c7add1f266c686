#include "HostAddresses.h"

#include <QElapsedTimer>
#include <QNetworkAddressEntry>
#include <QThread>
#include <QUdpSocket>

namespace {

// Empty when there is none of this length.
QString netmask(const HostAddress &address)
{
    QNetworkAddressEntry entry;
    entry.setIp(address.ip);
    entry.setPrefixLength(address.prefixLength);
    return entry.netmask().toString();
}

QStringList netshArguments(bool adding, const QString &interface, const HostAddress &address)
{
    QStringList arguments{QStringLiteral("interface"), QStringLiteral("ipv4"),
        QLatin1String(adding ? "add" : "delete"), QStringLiteral("address"),
        QStringLiteral("name=") + interface, QStringLiteral("address=") + address.ip.toString(),
        QStringLiteral("store=active")};
    if (adding) {
        arguments << QStringLiteral("mask=") + netmask(address)
                  << QStringLiteral("skipassource=true");
    }
    return arguments;
}

// A new address is of use once the system has seen, within seconds, that no other computer has it.
QString awaitUse(const QHostAddress &ip)
{
    constexpr int longestCheckMs = 10000;
    constexpr int pollMs = 50;
    QElapsedTimer clock;
    clock.start();
    while (!QUdpSocket().bind(ip)) {
        if (clock.hasExpired(longestCheckMs))
            return QStringLiteral("it can't be used, another computer may have it");
        QThread::msleep(pollMs);
    }
    return QString();
}

}

bool HostAddresses::change(
    Change change, const QString &interface, const QVector<HostAddress> &addresses, QString *error)
{
    const bool adding = change == Change::Add;
    const auto complain = [&](const HostAddress &address, const QString &reason) {
        *error = failure(change, interface, address, reason);
        return false;
    };
    for (const HostAddress &address : addresses) {
        const QString reason =
            run(QStringLiteral("netsh"), netshArguments(adding, interface, address));
        if (!reason.isEmpty())
            return complain(address, reason);
    }
    // After all of them: the system looks at them side by side.
    for (const HostAddress &address : adding ? addresses : QVector<HostAddress>()) {
        const QString reason = awaitUse(address.ip);
        if (!reason.isEmpty())
            return complain(address, reason);
    }
    return true;
}
