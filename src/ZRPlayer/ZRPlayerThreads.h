#pragma once

#include "ZRThread.h"

// How a stage of the player handles its threads, each in a field that is null while there is none.

// The field is set first: the thread's loops look at it.
template <class Thread, class Stage>
void startThread(Thread *&thread, Stage *stage, const char *name)
{
    thread = new Thread(stage);
    thread->setName(name);
    thread->start();
}

// Waits for the thread's end.
template <class Thread> void stopThread(Thread *&thread)
{
    if (!thread)
        return;
    thread->stop();
    thread->wait();
    delete thread;
    thread = nullptr;
}

// Condition of every loop of a stage.
inline bool goesOn(const ZRThread *thread)
{
    return thread && !thread->isStopped();
}
