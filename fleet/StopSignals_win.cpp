#include "StopSignals.h"

#include <windows.h>

namespace {

StopSignals *receiver = nullptr;

// Runs on a thread of the system's own.
BOOL WINAPI handle(DWORD)
{
    QMetaObject::invokeMethod(receiver, "raised", Qt::QueuedConnection);
    return TRUE;
}

}

StopSignals::StopSignals(QObject *parent) : QObject(parent)
{
    receiver = this;
    SetConsoleCtrlHandler(handle, TRUE);
}

StopSignals::~StopSignals()
{
    SetConsoleCtrlHandler(handle, FALSE);
}
