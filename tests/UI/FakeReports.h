#pragma once

#include <QJsonObject>
#include <QMutex>
#include <QQueue>

// A queue of messages in place of the SDK's; any thread.
class FakeReports
{
public:
    void push(const QJsonObject &message)
    {
        const QMutexLocker lock(&mutex);
        messages.enqueue(message);
    }
    // A report of the camera "cam0" unless `more` says otherwise.
    void push(const char *function, const QJsonObject &more = {})
    {
        QJsonObject message = {{"method", "report"}, {"srcid", "cam0"}, {"function", function}};
        for (auto key = more.begin(); key != more.end(); ++key)
            message[key.key()] = key.value();
        push(message);
    }
    QJsonObject *take()
    {
        const QMutexLocker lock(&mutex);
        return messages.isEmpty() ? nullptr : new QJsonObject(messages.dequeue());
    }
    bool isEmpty()
    {
        const QMutexLocker lock(&mutex);
        return messages.isEmpty();
    }

private:
    QMutex mutex;
    QQueue<QJsonObject> messages;
};
