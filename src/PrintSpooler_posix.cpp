#include "PrintSpooler.h"

#include <QPrinterInfo>

#include <memory>

namespace {
class SystemSpooler : public PrintSpooler
{
public:
    Queue open(const char16_t *name) override
    {
        auto queue =
            std::make_unique<QPrinterInfo>(QPrinterInfo::printerInfo(QString::fromUtf16(name)));
        return queue->isNull() ? nullptr : queue.release();
    }

    // A stopped queue is offline. One that lists a single resolution has a device mode with it; of
    // several, the print support doesn't tell which is set.
    bool read(Queue queue, PrintQueueInfo &info) override
    {
        const auto *printer = static_cast<const QPrinterInfo *>(queue);
        if (!printer) {
            return false;
        }
        info.offline = printer->state() == QPrinter::Error;
        info.network = printer->isRemote();
        const QList<int> resolutions = printer->supportedResolutions();
        if (resolutions.size() == 1) {
            info.yResolution = short(resolutions.first());
        }
        return true;
    }

    void close(Queue queue) override { delete static_cast<QPrinterInfo *>(queue); }
};
}

PrintSpooler &PrintSpooler::system()
{
    static SystemSpooler spooler;
    return spooler;
}
