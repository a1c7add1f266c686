#pragma once

#include <QDataStream>
#include <QDir>
#include <QFile>

inline quint32 hashOfQtText(const char *text)
{
    quint32 hash = 0;
    for (; *text; ++text) {
        hash = (hash << 4) + uchar(*text);
        const quint32 high = hash & 0xf0000000;
        hash = (hash ^ (high >> 24)) & ~high;
    }
    return hash;
}

// Makes the file of Qt's Chinese texts in a folder, in Qt's form for compiled ones, with one text
// of the file dialog in it. False when it can't be written.
inline bool writeQtTexts(const QString &folder, const char *source, const QString &text)
{
    QByteArray message;
    QDataStream fields(&message, QIODevice::WriteOnly);
    fields << quint8(3) << text << quint8(6) << source << quint8(7) << "QFileDialog" << quint8(1);

    QFile file(folder + "/qtbase_zh_CN.qm");
    if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly))
        return false;
    file.write(QByteArray::fromHex("3cb86418caef9c95cd211cbf60a1bddd"));
    QDataStream parts(&file);
    parts << quint8(0x42) << quint32(8) << hashOfQtText(source) << quint32(0);
    parts << quint8(0x69) << message;
    return file.flush();
}
