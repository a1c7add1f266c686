#pragma once

#include <QMutex>
#include <QStringList>

// What happened, in order, from any thread: events of a stage, calls into a library.
class CallLog
{
public:
    void add(const QString &line)
    {
        QMutexLocker lock(&mutex);
        all.append(line);
    }

    QStringList lines() const
    {
        QMutexLocker lock(&mutex);
        return all;
    }

    // Lines that begin so.
    int count(const QString &beginning) const
    {
        int found = 0;
        for (const QString &line : lines())
            found += line.startsWith(beginning) ? 1 : 0;
        return found;
    }

    void clear()
    {
        QMutexLocker lock(&mutex);
        all.clear();
    }

private:
    mutable QMutex mutex;
    QStringList all;
};
