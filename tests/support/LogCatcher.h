#pragma once

#include <QMutex>
#include <QStringList>

// Takes Qt's log for as long as it lives. Any thread may log meanwhile. One at a time.
class LogCatcher
{
public:
    LogCatcher()
    {
        current() = this;
        previous = qInstallMessageHandler(handler);
    }

    ~LogCatcher()
    {
        qInstallMessageHandler(previous);
        current() = nullptr;
    }

    QStringList lines() const
    {
        QMutexLocker lock(&mutex);
        return caught;
    }

    int count(const QString &part) const { return lines().filter(part).size(); }

private:
    Q_DISABLE_COPY(LogCatcher)

    static LogCatcher *&current()
    {
        static LogCatcher *catcher = nullptr;
        return catcher;
    }

    static void handler(QtMsgType, const QMessageLogContext &, const QString &message)
    {
        QMutexLocker lock(&current()->mutex);
        current()->caught.append(message);
    }

    mutable QMutex mutex;
    QStringList caught;
    QtMessageHandler previous;
};
