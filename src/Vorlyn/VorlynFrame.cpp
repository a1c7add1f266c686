#include "VorlynFrame.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

using namespace VorlynProtocol;

static_assert(lengthSize == sizeof(quint32), "the length field is a 32-bit integer");

QByteArray buildFrame(const QByteArray &json)
{
    QByteArray header(headerSize, '\0');
    qToBigEndian(quint32(headerSize + json.size()), header.data());
    return header + json;
}

VorlynFrameReader::VorlynFrameReader()
{
    reset();
}

void VorlynFrameReader::reset()
{
    std::memset(reading, 0, sizeof reading);
    std::memset(message, 0, sizeof message);
    count = 0;
    length = 0;
}

char *VorlynFrameReader::buffer()
{
    return reading;
}

bool VorlynFrameReader::accept(int size)
{
    const int copied = qBound(0, size, maxDatagram);
    std::copy_n(reading, copied, message);
    count += quint32(copied);
    length = qFromBigEndian<quint32>(reading);
    if (length != count)
        return false;
    if (length < quint32(maxDatagram))
        message[length] = '\0';
    count = 0;
    return true;
}

QByteArray VorlynFrameReader::body() const
{
    const int end = int(qMin(length, quint32(maxDatagram)));
    return QByteArray(message + headerSize, qMax(end - headerSize, 0));
}
