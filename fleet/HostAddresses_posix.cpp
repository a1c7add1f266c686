#include "HostAddresses.h"

#include <QStandardPaths>

namespace {

QString findIp()
{
    const QString found = QStandardPaths::findExecutable(QStringLiteral("ip"));
    return found.isEmpty() ? QStandardPaths::findExecutable(
               QStringLiteral("ip"), {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin")})
                           : found;
}

}

bool HostAddresses::change(
    Change change, const QString &interface, const QVector<HostAddress> &addresses, QString *error)
{
    const bool adding = change == Change::Add;
    const QString program = findIp();
    if (program.isEmpty()) {
        *error = failure(change, interface, addresses.first(),
            QStringLiteral("the program \"ip\" of iproute2 was not found"));
        return false;
    }
    QByteArray lines;
    for (const HostAddress &address : addresses) {
        lines += QStringLiteral("addr %1 %2/%3 dev %4\n")
                     .arg(QLatin1String(adding ? "add" : "del"), address.ip.toString())
                     .arg(address.prefixLength)
                     .arg(interface)
                     .toLocal8Bit();
    }
    const QString reason = run(program, {QStringLiteral("-batch"), QStringLiteral("-")}, lines);
    if (reason.isEmpty())
        return true;
    *error = failure(change, interface, addresses.first(), reason);
    return false;
}
