#include "Workstation.h"

#include "SocketFacts.h"
#include "TestNetwork.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QNetworkDatagram>
#include <QNetworkInterface>
#include <QTest>

#include <algorithm>

namespace {

const QHostAddress group("239.255.255.250");
constexpr int longestWaitMs = 15000;

bool hasId(const Workstation::Reply &reply, int id)
{
    return reply.object().value("id") == id;
}

}

const char Workstation::srcid[] = "0200000000AA";

QJsonObject Workstation::Reply::object() const
{
    return QJsonDocument::fromJson(datagram.mid(8)).object();
}

Workstation::Workstation() : nextId(0)
{
    const char own[] = "10.77.0.1";
    const QNetworkInterface side = TestNetwork::interface("veth-a");
    if (!sender.bind(QHostAddress(own), 0))
        qFatal("no socket for requests");
    sender.setMulticastInterface(side);
    const QString listening = SocketFacts::receiverAddress(own);
    if (!receiver.bind(QHostAddress(listening), 5999, QUdpSocket::ShareAddress)
        || !receiver.joinMulticastGroup(group, side))
        qFatal("no socket for replies: %s", qPrintable(receiver.errorString()));
    receiver.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4 << 20);
    QObject::connect(&receiver, &QUdpSocket::readyRead, &receiver, [this] { read(); });
}

void Workstation::read()
{
    while (receiver.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = receiver.receiveDatagram();
        received.append(
            {datagram.data(), datagram.senderAddress(), QDateTime::currentMSecsSinceEpoch()});
    }
}

int Workstation::send(const QString &method, const QJsonArray &targets, const QJsonObject &more)
{
    QJsonObject request = more;
    request["id"] = nextId;
    request["method"] = method;
    request["srcid"] = srcid;
    request["destarray"] = targets;
    sendDatagram(TestNetwork::frame(QJsonDocument(request).toJson(QJsonDocument::Compact)));
    return nextId++;
}

void Workstation::sendDatagram(const QByteArray &datagram)
{
    if (sender.writeDatagram(datagram, group, 5888) != datagram.size())
        qFatal("can't send: %s", qPrintable(sender.errorString()));
}

QVector<Workstation::Reply> Workstation::await(
    int count, const std::function<bool(const Reply &)> &fits)
{
    const auto fitting = [&] { return std::count_if(received.begin(), received.end(), fits); };
    if (!QTest::qWaitFor([&] { return fitting() >= count; }, longestWaitMs))
        qWarning("%d replies of %d", int(fitting()), count);
    QVector<Reply> replies;
    std::copy_if(received.begin(), received.end(), std::back_inserter(replies), fits);
    return replies;
}

QVector<Workstation::Reply> Workstation::awaitId(int count, int id)
{
    return await(count, [id](const Reply &reply) { return hasId(reply, id); });
}

int Workstation::repliesTo(int id) const
{
    return int(std::count_if(
        received.begin(), received.end(), [id](const Reply &reply) { return hasId(reply, id); }));
}

QJsonObject Workstation::ask(const QString &method, const QString &target, const QJsonObject &more)
{
    const QVector<Reply> replies = awaitId(1, send(method, {target}, more));
    return replies.isEmpty() ? QJsonObject() : replies.first().object();
}
