#include "ZRThread.h"

#include "ThreadName.h"

#include <QDateTime>
#include <QMutex>
#include <QString>
#include <QThread>

#include <climits>

class ZRThreadPrivate : public QThread
{
public:
    explicit ZRThreadPrivate(ZRThread *owner) : owner(owner) { }
    ~ZRThreadPrivate() override = default;

    void run() override
    {
        if (!objectName().isEmpty())
            ThreadName::set(objectName());
        owner->run();
    }

    ZRThread *owner;
    QString name;
};

ZRThread::ZRThread() : d(new ZRThreadPrivate(this)), stopped(false) { }

ZRThread::~ZRThread()
{
    delete d;
    d = nullptr;
}

void ZRThread::stop()
{
    stopped = true;
}

bool ZRThread::isStopped() const
{
    return stopped;
}

void ZRThread::setName(const char *name)
{
    d->name = QString::fromLatin1(name);
}

bool ZRThread::start()
{
    stopped = false;
    if (!d->name.isEmpty())
        d->setObjectName(d->name);
    d->start(QThread::InheritPriority);
    return true;
}

bool ZRThread::isRunning() const
{
    return d->isRunning();
}

bool ZRThread::wait()
{
    return d->wait(ULONG_MAX);
}

void ZRThread::sleep(unsigned long milliseconds)
{
    QThread::msleep(milliseconds);
}

double ZRThread::currentSeconds()
{
    return QDateTime::currentMSecsSinceEpoch() / 1000.0;
}

ZRThreadLocker::ZRThreadLocker() : mutex(new QMutex(QMutex::NonRecursive)) { }

ZRThreadLocker::~ZRThreadLocker()
{
    delete mutex;
}

int ZRThreadLocker::lock()
{
    mutex->lock();
    return 0;
}

int ZRThreadLocker::unlock()
{
    mutex->unlock();
    return 0;
}
