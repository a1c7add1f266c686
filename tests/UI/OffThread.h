#pragma once

#include <QElapsedTimer>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <functional>
#include <thread>

// A call on a thread that is not the GUI's. It must end by itself, with the help of the GUI
// thread's events if need be: the destructor handles them until it has.
class OffThread
{
public:
    explicit OffThread(std::function<void()> call) :
        thread([this, call] {
            call();
            done = true;
        })
    { }

    ~OffThread()
    {
        (void)QTest::qWaitFor([this] { return isDone(); }, patience);
        thread.join();
    }

    bool isDone() const { return done; }

    // The GUI thread stands still meanwhile.
    bool isDoneWithoutEvents() const
    {
        QElapsedTimer clock;
        clock.start();
        while (!done && !clock.hasExpired(patience))
            QThread::msleep(1);
        return done;
    }

private:
    static constexpr int patience = 20000; // milliseconds

    std::atomic<bool> done{false};
    std::thread thread; // the last one: it uses the others
};
