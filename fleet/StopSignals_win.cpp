#include "StopSignals.h"

#include <windows.h>

#include <mutex>

namespace {

StopSignals *receiver = nullptr;
std::mutex lifetime; // held for as long as the receiver lives

// Runs on a thread of the system's own. But for the two keys, the program is at its end when this
// returns.
BOOL WINAPI handle(DWORD event)
{
    QMetaObject::invokeMethod(receiver, "raised", Qt::QueuedConnection);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        std::lock_guard<std::mutex>{lifetime}; // until all is cleaned up
    return TRUE;
}

}

StopSignals::StopSignals(QObject *parent) : QObject(parent)
{
    lifetime.lock();
    receiver = this;
    SetConsoleCtrlHandler(handle, TRUE);
}

StopSignals::~StopSignals()
{
    lifetime.unlock(); // first: while a handler waits, the system changes no handlers
    SetConsoleCtrlHandler(handle, FALSE);
}
