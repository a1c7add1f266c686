#include "HostProcess.h"

#include <cstdio>

static bool succeeds(HostProcess &process, const QString &program, const QStringList &arguments)
{
    const bool succeeded = process.start(program, arguments) && process.waitForSuccess();
    std::fputs(process.errors().constData(), stderr);
    return succeeded;
}

bool HostProcess::run(const QString &program, const QStringList &arguments)
{
    HostProcess process;
    return succeeds(process, program, arguments);
}

QByteArray HostProcess::output(const QString &program, const QStringList &arguments)
{
    HostProcess process;
    return succeeds(process, program, arguments) ? process.readAll() : QByteArray();
}
