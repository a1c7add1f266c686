#include "TestNetwork.h"

#include "HostProcess.h"

#include <QtEndian>

namespace TestNetwork {

QStringList atCameras(const QStringList &command)
{
    return QStringList{"-t", qEnvironmentVariable("VORLYN_TEST_CAMERA_PID"), "-n"} + command;
}

bool run(const QString &command)
{
    QStringList words = command.split(' ');
    const QString program = words.takeFirst();
    return HostProcess::run(program, words);
}

bool runAtCameras(const QString &command)
{
    return HostProcess::run("nsenter", atCameras(command.split(' ')));
}

QNetworkInterface interface(const QString &name)
{
    // On Windows a name is one of its own, and the one that "ip" gave is the human one.
    for (const QNetworkInterface &found : QNetworkInterface::allInterfaces()) {
        if (found.humanReadableName() == name)
            return found;
    }
    return QNetworkInterface();
}

QNetworkAddressEntry entry(const QString &ip)
{
    QNetworkAddressEntry result;
    result.setIp(QHostAddress(ip));
    return result;
}

QByteArray frame(const QByteArray &json)
{
    QByteArray header(8, '\0');
    qToBigEndian(quint32(8 + json.size()), header.data());
    return header + json;
}

}
