#include "HostProcess.h"

#include <QProcess>

#include <utility>

struct HostProcess::Link {
    QProcess process;
    QByteArray failure; // of the start
};

HostProcess::HostProcess() : link(new Link)
{
    connect(&link->process, &QProcess::readyReadStandardOutput, this, &HostProcess::readyRead);
}

HostProcess::~HostProcess()
{
    link->process.disconnect(this);
    kill();
}

QString HostProcess::path(const QString &file)
{
    return file;
}

bool HostProcess::start(const QString &program, const QStringList &arguments)
{
    link->process.start(program, arguments);
    const bool started = link->process.waitForStarted(patience);
    if (!started)
        link->failure = link->process.errorString().toLocal8Bit() + '\n';
    return started;
}

bool HostProcess::isRunning() const
{
    return link->process.state() != QProcess::NotRunning;
}

qint64 HostProcess::processId() const
{
    return link->process.processId();
}

bool HostProcess::write(const QByteArray &input)
{
    link->process.write(input);
    return link->process.waitForBytesWritten(patience);
}

void HostProcess::closeInput()
{
    link->process.closeWriteChannel();
}

bool HostProcess::canReadLine() const
{
    return link->process.canReadLine();
}

QByteArray HostProcess::readLine()
{
    return link->process.readLine();
}

QByteArray HostProcess::readAll()
{
    return link->process.readAllStandardOutput();
}

QByteArray HostProcess::errors()
{
    return std::exchange(link->failure, {}) + link->process.readAllStandardError();
}

bool HostProcess::waitForReadyRead(int milliseconds)
{
    return link->process.waitForReadyRead(milliseconds);
}

void HostProcess::terminate()
{
    link->process.terminate();
}

void HostProcess::kill()
{
    link->process.kill();
    link->process.waitForFinished(patience);
}

bool HostProcess::waitForSuccess(int milliseconds)
{
    QProcess &process = link->process;
    if (isRunning() && !process.waitForFinished(milliseconds))
        return false;
    return process.error() != QProcess::FailedToStart
        && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}
