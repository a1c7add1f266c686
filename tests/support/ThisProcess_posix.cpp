#include "ThisProcess.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <ctime>

namespace {

// A field of /proc/self/status that is in kibibytes; in bytes.
qint64 statusField(const char *name)
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly))
        qFatal("%s can't be read", qPrintable(status.fileName()));
    const QRegularExpression field(
        QString("^%1:\\s*(\\d+) kB").arg(name), QRegularExpression::MultilineOption);
    return field.match(status.readAll()).captured(1).toLongLong() * 1024;
}

double secondsOf(clockid_t clock)
{
    timespec time;
    clock_gettime(clock, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

}

QByteArrayList ThisProcess::threadNames(const QByteArray &beginning)
{
    QByteArrayList names;
    const QDir tasks("/proc/self/task");
    for (const QString &id : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(tasks.filePath(id + "/comm"));
        if (!file.open(QIODevice::ReadOnly))
            continue; // it has just ended
        const QByteArray name = file.readAll().trimmed();
        if (name.startsWith(beginning))
            names.append(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

QByteArray ThisProcess::keptName(const QByteArray &name)
{
    return name.left(15);
}

int ThisProcess::openFiles()
{
    return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).size();
}

const int ThisProcess::filesOfLocks = 0;

qint64 ThisProcess::memory()
{
    return statusField("VmRSS");
}

qint64 ThisProcess::peakMemory()
{
    return statusField("VmHWM");
}

double ThisProcess::processorSeconds()
{
    return secondsOf(CLOCK_PROCESS_CPUTIME_ID);
}

double ThisProcess::threadProcessorSeconds()
{
    return secondsOf(CLOCK_THREAD_CPUTIME_ID);
}

bool ThisProcess::inWine()
{
    return false;
}
