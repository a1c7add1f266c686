#pragma once

#include <QString>

// What is used of an SD card and what it holds, as "3.5 / 29.6992(GB)", from a camera's megabytes.
// Six significant digits, not a fixed number of decimals. Any thread.
inline QString sdCardSizeText(int totalMegabytes, int freeMegabytes)
{
    const auto gigabytes = [](qint64 megabytes) {
        return QString::number(megabytes * 0.0009765625, 'g', 6);
    };
    return QStringLiteral("%1 / %2(GB)")
        .arg(gigabytes(qint64(totalMegabytes) - freeMegabytes), gigabytes(totalMegabytes));
}
