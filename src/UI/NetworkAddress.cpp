#include "NetworkAddress.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {
using Octets = std::array<int, 4>;

bool parse(const QString &text, Octets &octets)
{
    const int count = std::sscanf(
        text.toUtf8().constData(), "%d.%d.%d.%d", &octets[0], &octets[1], &octets[2], &octets[3]);
    return count == 4 && std::all_of(octets.begin(), octets.end(), [](int octet) {
        return quint32(octet) <= 255;
    });
}
}

bool isValidAddress(const QString &text)
{
    Octets octets;
    return parse(text, octets);
}

QString nextAddress(const QString &address)
{
    Octets octets;
    if (!parse(address, octets))
        return QStringLiteral("0.0.0.0");
    octets[3] = (octets[3] + 1) & 0xff;
    return QStringLiteral("%1.%2.%3.%4")
        .arg(octets[0])
        .arg(octets[1])
        .arg(octets[2])
        .arg(octets[3]);
}
