#include "HostProcess.h"

#include <cstdio>

bool HostProcess::run(const QString &program, const QStringList &arguments)
{
    HostProcess process;
    const bool succeeded = process.start(program, arguments) && process.waitForSuccess();
    std::fputs(process.errors().constData(), stderr);
    return succeeded;
}
