#include "FleetFrame.h"

#include <QJsonDocument>
#include <QtEndian>

namespace {

struct EnvelopeKey {
    const char *name;
    bool (*accepts)(const QJsonValue &);
    const char *problem;
};

// What a camera has to find in a request before it can answer it.
constexpr EnvelopeKey envelope[] = {
    {"id", [](const QJsonValue &v) { return v.isDouble(); }, "\"id\" is no number"},
    {"method", [](const QJsonValue &v) { return v.isString(); }, "\"method\" is no text"},
    {"srcid", [](const QJsonValue &v) { return v.isString(); }, "\"srcid\" is no text"},
    {"destarray", [](const QJsonValue &v) { return v.isArray(); }, "\"destarray\" is no array"},
};

QString envelopeProblem(const QJsonObject &object)
{
    for (const EnvelopeKey &key : envelope) {
        if (!key.accepts(object.value(QLatin1String(key.name))))
            return QString::fromLatin1(key.problem);
    }
    return QString();
}

}

FleetFrame::Request FleetFrame::decode(const QByteArray &datagram)
{
    Request request;
    if (datagram.size() < headerSize) {
        request.problem = QStringLiteral("%1 bytes, shorter than a header").arg(datagram.size());
        return request;
    }
    const quint32 length = qFromBigEndian<quint32>(datagram.constData());
    if (length != quint32(datagram.size())) {
        request.problem = QStringLiteral("the length field says %1, the datagram has %2 bytes")
                              .arg(length)
                              .arg(datagram.size());
        return request;
    }
    request.raw = datagram.mid(headerSize);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(request.raw, &error);
    if (error.error != QJsonParseError::NoError)
        request.problem = QStringLiteral("no JSON: ") + error.errorString();
    else if (!document.isObject())
        request.problem = QStringLiteral("no JSON object");
    else
        request.problem = envelopeProblem(request.object = document.object());
    return request;
}

QByteArray FleetFrame::encode(const QByteArray &json, int lengthError)
{
    QByteArray datagram(headerSize, '\0');
    qToBigEndian<quint32>(quint32(json.size() + headerSize + lengthError), datagram.data());
    return datagram + json;
}
