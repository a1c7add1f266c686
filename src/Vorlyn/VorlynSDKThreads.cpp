#include "VorlynSDKThreads.h"

#include "MulticastSocket.h"
#include "VorlynJson.h"
#include "VorlynSDK.h"

#include <QJsonDocument>
#include <QScopedPointer>

#include <cerrno>

using namespace VorlynProtocol;

namespace {

QByteArray textOf(const QNetworkAddressEntry &address)
{
    return address.ip().toString().toLatin1();
}

int discard(int &socket)
{
    MulticastSocket::close(socket);
    socket = 0;
    return -1;
}

// A socket that has joined the group, or -1.
int openMember(int &socket, const QByteArray &ip, unsigned short port)
{
    socket = MulticastSocket::open();
    if (socket < 0)
        return -1;

    int result = MulticastSocket::bind(socket, ip, port);
    if (result < 0) {
        qDebug("bind socket port %d failure", port);
        return discard(socket);
    }
    qDebug("bind socket port %d -> %d", port, result);

    result = MulticastSocket::join(socket, ip);
    if (result < 0) {
        qDebug("setsockopt ZR_IP_ADD_MEMBERSHIP %s, %s failure", group, ip.constData());
        return discard(socket);
    }
    qDebug("setsockopt ZR_IP_ADD_MEMBERSHIP %s, %s -> %d", group, ip.constData(), result);

    constexpr int seconds = 1;
    constexpr int microseconds = 0;
    result = MulticastSocket::setSendTimeout(socket, seconds, microseconds);
    if (result < 0) {
        qDebug("setsockopt SO_SNDTIMEO %d:%d failure", seconds, microseconds);
        return discard(socket);
    }
    qDebug("setsockopt SO_SNDTIMEO %d:%d -> %d", seconds, microseconds, result);
    return socket;
}

void leaveGroup(int &socket, const QByteArray &ip)
{
    if (socket <= 0)
        return;
    MulticastSocket::leave(socket, ip);
    discard(socket);
}

// Of a thread that may be about to open its socket. Returns the one that it has, or 0.
int wake(int socket)
{
    if (socket != 0)
        MulticastSocket::wake(socket);
    return socket;
}

// Of a thread that has ended. It may have opened its socket after it was asked to stop.
void closeLast(int socket, int woken)
{
    if (socket <= 0)
        return;
    if (socket == woken)
        MulticastSocket::release(socket);
    else
        MulticastSocket::close(socket);
}

// Errors that leave the socket as it is: none named, and those of a call that would have blocked.
bool isPassing(int error)
{
    return error == 0 || error == EAGAIN || error == EWOULDBLOCK;
}

}

VorlynSDKSendThread::VorlynSDKSendThread(VorlynSDK *sdk) : socket(0), sdk(sdk), woken(0) { }

VorlynSDKSendThread::~VorlynSDKSendThread()
{
    closeLast(socket, woken);
}

void VorlynSDKSendThread::stop()
{
    ZRThread::stop();
    woken = wake(socket);
}

void VorlynSDKSendThread::run()
{
    while (!isStopped()) {
        if (socket <= 0 && startSend() < 0) {
            leaveGroup(socket, textOf(sdk->address));
            sleep(retryMilliseconds);
            continue;
        }
        sendRequests();
    }
}

int VorlynSDKSendThread::startSend()
{
    ip = sdk->address.ip().toString();
    return openMember(socket, ip.toLatin1(), anyPort);
}

void VorlynSDKSendThread::sendRequests()
{
    while (!isStopped()) {
        const QScopedPointer<QJsonObject> request(
            VorlynSDK::takeFirst(sdk->sendLocker, sdk->sendQueue));
        if (!request) {
            sleep(sendPollMilliseconds);
        } else if (!sendRequest(*request)) {
            leaveGroup(socket, textOf(sdk->address));
            return;
        }
    }
}

// False when the socket is of no more use. The request is not sent again in any case.
bool VorlynSDKSendThread::sendRequest(const QJsonObject &request)
{
    const QByteArray json = QJsonDocument(request).toJson(QJsonDocument::Compact);
    qDebug("send %s", json.constData());

    const QByteArray local = ip.toLatin1();
    const QByteArray frame = buildFrame(json);
    const int sent = MulticastSocket::send(socket, local, frame.constData(), frame.size());
    const int error = errno;
    if (sent > 0 || isPassing(error))
        return true;
    qDebug("send to ret = %d, errno = %d", sent, error);
    return false;
}

VorlynSDKRecvThread::VorlynSDKRecvThread(VorlynSDK *sdk) : socket(0), sdk(sdk), woken(0) { }

VorlynSDKRecvThread::~VorlynSDKRecvThread()
{
    closeLast(socket, woken);
}

void VorlynSDKRecvThread::stop()
{
    ZRThread::stop();
    woken = wake(socket);
}

void VorlynSDKRecvThread::run()
{
    while (!isStopped()) {
        if (socket <= 0 && startRecv() < 0) {
            leaveGroup(socket, textOf(sdk->address));
            sleep(retryMilliseconds);
            continue;
        }
        receiveReplies();
    }
}

int VorlynSDKRecvThread::startRecv()
{
    return openMember(socket, textOf(sdk->address), replyPort);
}

void VorlynSDKRecvThread::receiveReplies()
{
    const QByteArray local = textOf(sdk->address);
    VorlynFrameReader reader;
    while (!isStopped()) {
        const int size = MulticastSocket::receive(socket, local, reader.buffer(), maxDatagram);
        const int error = errno;
        if (size > 0) {
            if (reader.accept(size))
                keepReply(reader.body());
        } else if (!isPassing(error)) {
            qDebug("recvfrom ret = %d, errno = %d", size, error);
            leaveGroup(socket, textOf(sdk->address));
            return;
        }
    }
}

void VorlynSDKRecvThread::keepReply(const QByteArray &body)
{
    sdk->recvLocker->lock();
    const QJsonObject object = QJsonDocument::fromJson(body).object();
    if (!object.isEmpty() && stringOf(object, "destid") == sdk->interfaceMacId()) {
        sdk->recvQueue.append(new QJsonObject(object));
        qDebug("recv %s", body.constData());
    }
    sdk->recvLocker->unlock();
}
