#include "TestNetwork.h"

#include <QDebug>
#include <QProcess>

namespace TestNetwork {

bool run(const QString &command)
{
    QStringList words = command.split(' ');
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(words.takeFirst(), words);
    return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

bool runAtCameras(const QString &command)
{
    return run("nsenter -t " + qEnvironmentVariable("VORLYN_TEST_CAMERA_PID") + " -n " + command);
}

QNetworkInterface interface(const QString &name)
{
    return QNetworkInterface::interfaceFromName(name);
}

QNetworkAddressEntry entry(const QString &ip)
{
    QNetworkAddressEntry result;
    result.setIp(QHostAddress(ip));
    return result;
}

}
