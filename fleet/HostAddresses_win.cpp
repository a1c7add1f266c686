#include "HostAddresses.h"

#include <QProcess>

namespace {

constexpr int longestWaitMs = 60000;

QString netmask(int prefixLength)
{
    return QHostAddress(quint32(0xffffffffull << (32 - prefixLength))).toString();
}

}

bool HostAddresses::change(
    Change change, const QString &interface, const QVector<HostAddress> &addresses, QString *error)
{
    const bool adding = change == Change::Add;
    for (const HostAddress &address : addresses) {
        QStringList arguments{QStringLiteral("interface"), QStringLiteral("ipv4"),
            QLatin1String(adding ? "add" : "delete"), QStringLiteral("address"),
            QStringLiteral("name=") + interface, QStringLiteral("address=") + address.ip.toString(),
            QStringLiteral("store=active")};
        if (adding) {
            arguments << QStringLiteral("mask=") + netmask(address.prefixLength)
                      << QStringLiteral("skipassource=true");
        }
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral("netsh"), arguments);
        if (process.waitForFinished(longestWaitMs) && process.exitStatus() == QProcess::NormalExit
            && process.exitCode() == 0)
            continue;
        *error = QStringLiteral("can't %1 %2 on %3: %4")
                     .arg(QLatin1String(adding ? "add" : "remove"), address.ip.toString(),
                         interface, QString::fromLocal8Bit(process.readAll()).simplified());
        return false;
    }
    return true;
}
