#include "DefaultPrinter.h"

#include <QString>

#include <windows.h>
#include <winspool.h>

#include <iterator>

// Of the user, who is the test's own.
bool setDefaultPrinter(const QString &name)
{
    const std::wstring device = QStringLiteral("%1,winspool,LPT1:").arg(name).toStdWString();
    WriteProfileStringW(L"windows", L"device", name.isEmpty() ? nullptr : device.c_str());
    wchar_t found[100] = L"";
    DWORD size = DWORD(std::size(found));
    const bool any = GetDefaultPrinterW(found, &size);
    return any ? QString::fromWCharArray(found) == name : name.isEmpty();
}
