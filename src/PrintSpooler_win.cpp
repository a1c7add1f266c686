#include "PrintSpooler.h"

#include <windows.h>

#include <winspool.h>

namespace {
PrintQueueInfo infoOf(const PRINTER_INFO_2W &printer)
{
    PrintQueueInfo info;
    info.offline = printer.Attributes & PRINTER_ATTRIBUTE_WORK_OFFLINE;
    info.network = printer.Attributes & PRINTER_ATTRIBUTE_NETWORK;
    if (printer.pDevMode) {
        info.yResolution = printer.pDevMode->dmYResolution;
    }
    return info;
}

class SystemSpooler : public PrintSpooler
{
public:
    Queue open(const char16_t *name) override
    {
        static_assert(sizeof(wchar_t) == sizeof(char16_t), "names are UTF-16");
        HANDLE printer = nullptr;
        auto *wide = reinterpret_cast<wchar_t *>(const_cast<char16_t *>(name));
        return OpenPrinterW(wide, &printer, nullptr) ? printer : nullptr;
    }

    bool read(Queue queue, PrintQueueInfo &info) override
    {
        DWORD size = 0;
        GetPrinterW(queue, 2, nullptr, 0, &size);
        auto *block = static_cast<BYTE *>(GlobalAlloc(GMEM_FIXED | GMEM_ZEROINIT, size));
        const bool filled = GetPrinterW(queue, 2, block, size, &size);
        if (filled) {
            info = infoOf(*reinterpret_cast<const PRINTER_INFO_2W *>(block));
        }
        GlobalFree(block);
        return filled;
    }

    void close(Queue queue) override { ClosePrinter(queue); }
};
}

PrintSpooler &PrintSpooler::system()
{
    static SystemSpooler spooler;
    return spooler;
}
