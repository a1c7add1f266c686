#include "HostAddresses.h"

#include <QNetworkInterface>
#include <QProcess>

#include <algorithm>

namespace {

bool contains(const QVector<HostAddress> &addresses, const QHostAddress &ip)
{
    return std::any_of(addresses.begin(), addresses.end(),
        [&](const HostAddress &address) { return address.ip == ip; });
}

QVector<HostAddress> without(QVector<HostAddress> addresses, const QVector<HostAddress> &others)
{
    const auto end = std::remove_if(addresses.begin(), addresses.end(),
        [&](const HostAddress &address) { return contains(others, address.ip); });
    addresses.erase(end, addresses.end());
    return addresses;
}

QNetworkInterface findInterface(const QString &name)
{
    for (const QNetworkInterface &candidate : QNetworkInterface::allInterfaces()) {
        if (candidate.name() == name || candidate.humanReadableName() == name)
            return candidate;
    }
    return QNetworkInterface();
}

}

HostAddresses::HostAddresses(const QString &interface) : interface(interface) { }

HostAddresses::~HostAddresses()
{
    removeAll();
}

QStringList HostAddresses::interfaces()
{
    QStringList names;
    for (const QNetworkInterface &candidate : QNetworkInterface::allInterfaces())
        names.append(candidate.humanReadableName());
    return names;
}

bool HostAddresses::exists() const
{
    return findInterface(interface).isValid();
}

QVector<HostAddress> HostAddresses::present() const
{
    QVector<HostAddress> addresses;
    for (const QNetworkAddressEntry &entry : findInterface(interface).addressEntries()) {
        if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol)
            addresses.append({entry.ip(), entry.prefixLength()});
    }
    return addresses;
}

bool HostAddresses::has(const QHostAddress &ip) const
{
    return contains(present(), ip);
}

bool HostAddresses::add(const QVector<HostAddress> &addresses, QString *error)
{
    const QVector<HostAddress> missing = without(addresses, present());
    if (missing.isEmpty())
        return true;
    const bool good = change(Change::Add, interface, missing, error);
    // Of a failed row of additions the first ones may have been made.
    const QVector<HostAddress> made =
        good ? missing : without(missing, without(missing, present()));
    if (good) {
        added += made;
    } else if (!made.isEmpty()) {
        QString ignored;
        change(Change::Remove, interface, made, &ignored);
    }
    return good;
}

QString HostAddresses::run(
    const QString &program, const QStringList &arguments, const QByteArray &input)
{
    constexpr int longestWaitMs = 60000;
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!input.isEmpty())
        process.write(input);
    process.closeWriteChannel();
    if (process.waitForFinished(longestWaitMs) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0)
        return QString();
    const QString reason = QString::fromLocal8Bit(process.readAll()).simplified();
    return reason.isEmpty() ? process.errorString() : reason;
}

QString HostAddresses::failure(
    Change change, const QString &interface, const HostAddress &address, const QString &reason)
{
    return QString(QLatin1String(change == Change::Add ? "can't add %1/%2 to %3: %4"
                                                       : "can't remove %1/%2 from %3: %4"))
        .arg(address.ip.toString())
        .arg(address.prefixLength)
        .arg(interface, reason);
}

bool HostAddresses::remove(const QHostAddress &ip, QString *error)
{
    const auto found = std::find_if(
        added.begin(), added.end(), [&](const HostAddress &address) { return address.ip == ip; });
    if (found == added.end())
        return true;
    const QVector<HostAddress> leaving{*found};
    added.erase(found);
    const QVector<HostAddress> staying = without(present(), leaving);
    return change(Change::Remove, interface, leaving, error) && restore(staying, error);
}

// A system may drop the other addresses of a subnet with its first one.
bool HostAddresses::restore(const QVector<HostAddress> &wanted, QString *error)
{
    const QVector<HostAddress> lost = without(wanted, present());
    return lost.isEmpty() || change(Change::Add, interface, lost, error);
}

void HostAddresses::removeAll()
{
    if (added.isEmpty())
        return;
    const QVector<HostAddress> before = present();
    const QVector<HostAddress> staying = without(before, added);
    // Last added first, so that none goes together with an earlier one.
    QVector<HostAddress> leaving = without(added, without(added, before));
    std::reverse(leaving.begin(), leaving.end());
    added.clear();
    QString error;
    if (!change(Change::Remove, interface, leaving, &error) || !restore(staying, &error))
        qWarning("%s", qPrintable(error));
}
