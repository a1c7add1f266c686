#pragma once

#include <QtGlobal>

class QMutex;
class ZRThreadPrivate;

// A worker thread as a small object with one job: no meta-object, a virtual run() and a
// cooperative stop flag.
// Owner: calls stop(), wait() and then deletes, in that order; the destructor does neither.
// Thread: run() is on the new thread, stop() may come from any thread, all else from the owner's.
class ZRThread
{
public:
    ZRThread();
    virtual ~ZRThread();

    // Raises the stop flag and returns at once. A worker that blocks in a system call overrides
    // it to break that call too, calling the base first.
    virtual void stop();
    virtual void run() = 0;

    bool isStopped() const;
    // Name of the thread in a debugger; ASCII, null gives an empty name. Before start() only.
    void setName(const char *name);
    // Clears the stop flag first, so a stop() that came earlier is lost. Always true.
    bool start();
    bool isRunning() const;
    // Waits without limit. Never from the worker itself.
    bool wait();

    static void sleep(unsigned long milliseconds);
    // Wall-clock time in seconds: a change of the system clock moves the deadlines made of it.
    static double currentSeconds();

private:
    Q_DISABLE_COPY(ZRThread)

    ZRThreadPrivate *d;
    // A plain byte on purpose: a late read costs one further pass of the worker's loop.
    bool stopped;
};

// A non-recursive mutex, for any thread: locking it twice on one thread deadlocks.
class ZRThreadLocker
{
public:
    ZRThreadLocker();
    virtual ~ZRThreadLocker();

    int lock(); // always 0
    int unlock(); // always 0

private:
    Q_DISABLE_COPY(ZRThreadLocker)

    QMutex *mutex;
};
