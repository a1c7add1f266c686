#include "HostAddresses.h"

#include <QProcess>
#include <QStandardPaths>

namespace {

constexpr int longestWaitMs = 60000;

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
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, {QStringLiteral("-batch"), QStringLiteral("-")});
    process.write(lines);
    process.closeWriteChannel();
    if (process.waitForFinished(longestWaitMs) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0)
        return true;
    const QString reason = QString::fromLocal8Bit(process.readAll()).simplified();
    *error = failure(
        change, interface, addresses.first(), reason.isEmpty() ? process.errorString() : reason);
    return false;
}
