#include "ThreadName.h"

#include <QString>

#include <windows.h>

// The call is younger than the oldest Windows that Qt runs on; the first that had it, had it in the
// second library alone.
void ThreadName::set(const QString &name)
{
    using SetDescription = HRESULT(WINAPI *)(HANDLE, PCWSTR);
    for (const wchar_t *library : {L"kernel32", L"kernelbase"}) {
        const auto setDescription = reinterpret_cast<SetDescription>(reinterpret_cast<void *>(
            GetProcAddress(GetModuleHandleW(library), "SetThreadDescription")));
        if (setDescription) {
            setDescription(GetCurrentThread(), reinterpret_cast<PCWSTR>(name.utf16()));
            return;
        }
    }
}
