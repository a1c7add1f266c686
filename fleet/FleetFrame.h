#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

// The frame of a datagram, both ways: four bytes total length (big-endian, these eight included),
// four bytes reserved, one JSON object in UTF-8.
namespace FleetFrame {

constexpr char group[] = "239.255.255.250";
constexpr quint16 requestPort = 5888;
constexpr quint16 replyPort = 5999;
constexpr int headerSize = 8;

// A request as it came, or the reason why it is none.
struct Request {
    QByteArray raw; // the JSON text
    QJsonObject object;
    QString problem; // empty for a good request
};

Request decode(const QByteArray &datagram);
// `lengthError` is added to the length field, for replies that lie about their size.
QByteArray encode(const QByteArray &json, int lengthError = 0);

}
