#include "DefaultPrinter.h"

#include <QPrinterInfo>

bool setDefaultPrinter(const QString &name)
{
    qputenv("LPDEST", name.toUtf8());
    const bool known = QPrinterInfo::availablePrinterNames().contains(name);
    return QPrinterInfo::defaultPrinterName() == (known ? name : QString());
}
