#include "ProcessUse.h"

#include <QFile>
#include <QString>

#include <unistd.h>

namespace {

QByteArray read(qint64 pid, const char *name)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(pid).arg(QLatin1String(name)));
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

// From a file of lines like "Pss:    1234 kB".
double mebibytes(const QByteArray &text, const QByteArray &key)
{
    for (const QByteArray &line : text.split('\n')) {
        if (line.startsWith(key))
            return line.mid(key.size()).simplified().split(' ').first().toDouble() / 1024;
    }
    return 0;
}

} // namespace

double ProcessUse::cpuSeconds(qint64 pid)
{
    const QByteArray line = read(pid, "stat");
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return 0;
    return (fields[11].toDouble() + fields[12].toDouble()) / sysconf(_SC_CLK_TCK);
}

ProcessUse::Memory ProcessUse::memory(qint64 pid)
{
    return {mebibytes(read(pid, "status"), "VmRSS:"), mebibytes(read(pid, "smaps_rollup"), "Pss:")};
}
