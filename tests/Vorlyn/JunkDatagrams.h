#pragma once

#include "TestNetwork.h"
#include "VorlynProtocol.h"

#include <QtEndian>

#include <random>

// Random datagrams and mutations of a good reply, the same in each run.
class JunkDatagrams
{
public:
    explicit JunkDatagrams(unsigned seed) : random(seed) { }

    int below(int limit) { return int(random() % unsigned(limit)); }

    QByteArray next()
    {
        mutates = !mutates;
        return mutates ? mutation() : noise();
    }

    // With a length field that agrees, so that the rest is looked at.
    QByteArray nextWithLength()
    {
        const QByteArray bytes = next();
        return withLength(bytes.leftJustified(VorlynProtocol::lengthSize, '\0'));
    }

private:
    QByteArray mutation()
    {
        QByteArray bytes =
            TestNetwork::frame(R"({"destid":"0200000000AA","id":"0","mac":"AA","result":"success",)"
                               R"("WifiList":[{"wifiname":"n","Signal":5}],"totalsize":"1024"})");
        for (int changes = below(4); changes > 0; --changes)
            bytes[below(bytes.size())] = char(random());
        if (below(4) == 0)
            bytes.truncate(below(bytes.size() + 1));
        return bytes;
    }

    QByteArray noise()
    {
        using VorlynProtocol::maxDatagram;
        QByteArray bytes(below(8) ? below(64) : below(maxDatagram + 1), '\0');
        for (char &byte : bytes)
            byte = char(random());
        return below(2) ? withLength(bytes) : bytes;
    }

    static QByteArray withLength(QByteArray bytes)
    {
        if (bytes.size() >= VorlynProtocol::lengthSize)
            qToBigEndian(quint32(bytes.size()), bytes.data());
        return bytes;
    }

    std::mt19937 random;
    bool mutates = false;
};
