#include "QueueSwitch.h"

#include <QByteArray>

#include <windows.h>

#include <winspool.h>

// Wine doesn't learn of queues that are stopped in this system, but keeps what it is told itself.
bool switchQueue(const QString &name, bool on)
{
    PRINTER_DEFAULTSW wishes = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    auto wide = name.toStdWString();
    HANDLE queue = nullptr;
    if (!OpenPrinterW(&wide[0], &queue, &wishes))
        return false;
    DWORD size = 0;
    GetPrinterW(queue, 2, nullptr, 0, &size);
    QByteArray block(int(size), '\0');
    auto *const bytes = reinterpret_cast<BYTE *>(block.data());
    bool done = GetPrinterW(queue, 2, bytes, size, &size);
    if (done) {
        auto *const printer = reinterpret_cast<PRINTER_INFO_2W *>(bytes);
        printer->Attributes &= ~DWORD(PRINTER_ATTRIBUTE_WORK_OFFLINE);
        printer->Attributes |= on ? 0 : PRINTER_ATTRIBUTE_WORK_OFFLINE;
        done = SetPrinterW(queue, 2, bytes, 0);
    }
    ClosePrinter(queue);
    return done;
}
