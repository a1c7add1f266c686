#pragma once

#include <QMutex>
#include <QStringList>

// Takes Qt's log for as long as it lives and passes on what is more than a diagnosis: warnings and
// a test's own figures. Any thread may log, also while it comes or goes. One at a time.
class LogCatcher
{
public:
    LogCatcher()
    {
        clear();
        previous = qInstallMessageHandler(take);
    }

    ~LogCatcher() { qInstallMessageHandler(previous); }

    QStringList lines() const
    {
        QMutexLocker lock(&mutex);
        return caught;
    }

    int count(const QString &line) const { return lines().count(line); }

    // Lines that begin so.
    QStringList beginning(const QString &text) const
    {
        QStringList found;
        for (const QString &line : lines()) {
            if (line.startsWith(text))
                found.append(line);
        }
        return found;
    }

    void clear()
    {
        QMutexLocker lock(&mutex);
        caught.clear();
    }

private:
    Q_DISABLE_COPY(LogCatcher)

    static void take(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        {
            QMutexLocker lock(&mutex);
            caught.append(message);
        }
        if (type != QtDebugMsg)
            previous(type, context, message);
    }

    static inline QMutex mutex;
    static inline QStringList caught;
    static inline QtMessageHandler previous = nullptr;
};
