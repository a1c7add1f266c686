#include "ThreadName.h"

#include <QString>

#include <windows.h>

// The call is younger than the oldest Windows that Qt runs on.
void ThreadName::set(const QString &name)
{
    using SetDescription = HRESULT(WINAPI *)(HANDLE, PCWSTR);
    const auto setDescription = reinterpret_cast<SetDescription>(reinterpret_cast<void *>(
        GetProcAddress(GetModuleHandleW(L"kernel32"), "SetThreadDescription")));
    if (setDescription)
        setDescription(GetCurrentThread(), reinterpret_cast<PCWSTR>(name.utf16()));
}
