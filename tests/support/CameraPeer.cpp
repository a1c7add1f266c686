#include "CameraPeer.h"

#include "TestNetwork.h"
#include "VorlynProtocol.h"

#include <QJsonDocument>

QJsonObject CameraPeer::receiveRequest(int milliseconds)
{
    return QJsonDocument::fromJson(receive(milliseconds).mid(VorlynProtocol::headerSize)).object();
}

bool CameraPeer::reply(const QByteArray &json)
{
    return send(TestNetwork::frame(json));
}

bool CameraPeer::reply(const QJsonObject &object)
{
    return reply(QJsonDocument(object).toJson(QJsonDocument::Compact));
}
