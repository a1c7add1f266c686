#include "WrittenSettings.h"

#include <algorithm>

const QByteArray WrittenSettings::lineEnd = "\n";

// In the order of the keys.
QByteArray WrittenSettings::section(const QByteArray &name, const QByteArrayList &lines)
{
    const auto keyOf = [](const QByteArray &line) { return line.left(line.indexOf('=')); };
    QByteArrayList sorted = lines;
    std::sort(sorted.begin(), sorted.end(),
        [&](const QByteArray &a, const QByteArray &b) { return keyOf(a) < keyOf(b); });
    sorted.prepend('[' + name + ']');
    return sorted.join(lineEnd) + lineEnd;
}
