#include "ThisProcess.h"

#include "LoadedFunction_win.h"

#include <QString>

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>
#include <vector>

namespace {

// Empty on a Windows that keeps no names.
QByteArray nameOf(DWORD thread)
{
    using Description = HRESULT(WINAPI *)(HANDLE, PWSTR *);
    static const auto description =
        loadedFunction<Description>(L"kernelbase", "GetThreadDescription");
    const HANDLE handle = OpenThread(THREAD_QUERY_LIMITED_INFORMATION, FALSE, thread);
    PWSTR text = nullptr;
    if (handle && description)
        description(handle, &text);
    CloseHandle(handle);
    const QByteArray name = QString::fromWCharArray(text ? text : L"").toLatin1();
    LocalFree(text);
    return name;
}

PROCESS_MEMORY_COUNTERS memoryCounters()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters;
}

// FILETIME counts tenths of microseconds.
double secondsOf(const FILETIME &time)
{
    return (double(time.dwHighDateTime) * 4294967296.0 + double(time.dwLowDateTime)) / 1e7;
}

template <typename Times> double usedSeconds(Times times, HANDLE of)
{
    FILETIME begun, ended, kernel, user;
    times(of, &begun, &ended, &kernel, &user);
    return secondsOf(kernel) + secondsOf(user);
}

constexpr NTSTATUS tooSmall = NTSTATUS(0xc0000004);

// Of all processes, as Wine's GetProcessHandleCount() tells 0.
std::vector<char> handleTable()
{
    std::vector<char> bytes(1 << 16);
    ULONG size = 0;
    while (
        NtQuerySystemInformation(SystemHandleInformation, bytes.data(), ULONG(bytes.size()), &size)
        == tooSmall)
        bytes.resize(bytes.size() * 2);
    return bytes;
}

}

QByteArrayList ThisProcess::threadNames(const QByteArray &beginning)
{
    QByteArrayList names;
    const HANDLE threads = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL found = Thread32First(threads, &entry); found;
         found = Thread32Next(threads, &entry)) {
        if (entry.th32OwnerProcessID != GetCurrentProcessId())
            continue;
        const QByteArray name = nameOf(entry.th32ThreadID);
        if (name.startsWith(beginning))
            names.append(name);
    }
    CloseHandle(threads);
    std::sort(names.begin(), names.end());
    return names;
}

QByteArray ThisProcess::keptName(const QByteArray &name)
{
    return name;
}

int ThisProcess::openFiles()
{
    const std::vector<char> bytes = handleTable();
    const auto *table = reinterpret_cast<const SYSTEM_HANDLE_INFORMATION *>(bytes.data());
    return int(std::count_if(table->Handle, table->Handle + table->Count,
        [](const SYSTEM_HANDLE_ENTRY &entry) { return entry.OwnerPid == GetCurrentProcessId(); }));
}

const int ThisProcess::filesOfLocks = 5;

qint64 ThisProcess::memory()
{
    return qint64(memoryCounters().WorkingSetSize);
}

qint64 ThisProcess::peakMemory()
{
    return qint64(memoryCounters().PeakWorkingSetSize);
}

double ThisProcess::processorSeconds()
{
    return usedSeconds(GetProcessTimes, GetCurrentProcess());
}

double ThisProcess::threadProcessorSeconds()
{
    return usedSeconds(GetThreadTimes, GetCurrentThread());
}

bool ThisProcess::inWine()
{
    return loadedFunction<FARPROC>(L"ntdll", "wine_get_version");
}
