#include "WrittenSettings.h"

const QByteArray WrittenSettings::lineEnd = "\r\n";

// New lines come last, a changed one keeps its place.
QByteArray WrittenSettings::section(const QByteArray &name, const QByteArrayList &lines)
{
    QByteArrayList written = lines;
    written.prepend('[' + name + ']');
    return written.join(lineEnd) + lineEnd;
}
