#include "PrintSpooler.h"

#include <QByteArray>
#include <QString>

#include <string>

// Two bytes a character, the low one first; an odd last byte is a character of its own.
static std::u16string wideReading(const QByteArray &bytes)
{
    std::u16string text;
    for (int i = 0; i < bytes.size(); i += 2) {
        const auto low = uchar(bytes.at(i));
        const auto high = i + 1 < bytes.size() ? uchar(bytes.at(i + 1)) : uchar(0);
        text.push_back(char16_t(low | high << 8));
    }
    return text;
}

int getPrinterStatus(const QString &name, double *dotSize, PrintSpooler &spooler)
{
    const PrintSpooler::Queue queue = spooler.open(wideReading(name.toUtf8()).c_str());
    PrintQueueInfo info;
    const bool known = spooler.read(queue, info);
    spooler.close(queue);
    if (!known) {
        return 0;
    }
    // A resolution may be negative, for a quality without a number, or 0, which gives infinity.
    *dotSize = info.yResolution ? 254.0 / *info.yResolution : 0.85;
    if (info.offline) {
        return 1;
    }
    return info.network ? 2 : 0;
}
