#include "LogRecorder.h"

#include <QMutex>

namespace {

QMutex mutex;
QStringList recorded;
QtMessageHandler previous = nullptr;

void record(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    {
        QMutexLocker locker(&mutex);
        recorded.append(message);
    }
    previous(type, context, message);
}

}

LogRecorder::LogRecorder()
{
    clear();
    previous = qInstallMessageHandler(record);
}

LogRecorder::~LogRecorder()
{
    qInstallMessageHandler(previous);
}

QStringList LogRecorder::lines() const
{
    QMutexLocker locker(&mutex);
    return recorded;
}

int LogRecorder::count(const QString &line) const
{
    return lines().count(line);
}

QStringList LogRecorder::beginning(const QString &text) const
{
    QStringList found;
    for (const QString &line : lines()) {
        if (line.startsWith(text))
            found.append(line);
    }
    return found;
}

void LogRecorder::clear()
{
    QMutexLocker locker(&mutex);
    recorded.clear();
}
