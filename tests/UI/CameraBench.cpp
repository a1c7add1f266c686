#include "CameraBench.h"

#include "LogCatcher.h"
#include "TestNetwork.h"
#include "VorlynSDK.h"

#include <QJsonArray>
#include <QtTest>

CameraBench::CameraBench() : camera("10.77.0.2")
{
    LogCatcher log;
    VorlynSDK::createInstance();
    VorlynSDK::instance()->startNetwork(
        TestNetwork::interface("veth-a"), TestNetwork::entry("10.77.0.1"));
    // The last step of each of the two sockets.
    ready = QTest::qWaitFor(
        [&log] { return log.beginning("setsockopt SO_SNDTIMEO").size() == 2; }, 20000);
}

CameraBench::~CameraBench()
{
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->stopNetwork();
    VorlynSDK::destroyInstance();
}

bool CameraBench::isReady() const
{
    return ready && camera.isOpen();
}

QJsonObject CameraBench::request()
{
    return camera.receiveRequest();
}

QJsonObject CameraBench::answerNext(const QString &result, const QJsonObject &more)
{
    const QJsonObject next = request();
    return answer(next, result, more) ? next : QJsonObject();
}

bool CameraBench::answer(const QJsonObject &request, const QString &result, const QJsonObject &more)
{
    QJsonObject reply = more;
    reply["id"] = request["id"];
    reply["destid"] = request["srcid"];
    reply["result"] = result;
    return camera.reply(reply);
}

bool CameraBench::isQuiet()
{
    return camera.receive(CameraPeer::noTimeLost).isEmpty();
}

QStringList CameraBench::targets(const QJsonObject &request)
{
    QStringList ids;
    for (const QJsonValue &id : request["destarray"].toArray())
        ids.append(id.toString());
    return ids;
}
