#include "TestNetwork.h"

#include <QProcess>
#include <QtEndian>

namespace TestNetwork {

static bool runProgram(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

QStringList atCameras(const QStringList &command)
{
    return QStringList{"-t", qEnvironmentVariable("VORLYN_TEST_CAMERA_PID"), "-n"} + command;
}

bool run(const QString &command)
{
    QStringList words = command.split(' ');
    const QString program = words.takeFirst();
    return runProgram(program, words);
}

bool runAtCameras(const QString &command)
{
    return runProgram("nsenter", atCameras(command.split(' ')));
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

QByteArray frame(const QByteArray &json)
{
    QByteArray header(8, '\0');
    qToBigEndian(quint32(8 + json.size()), header.data());
    return header + json;
}

}
