#pragma once

#include "VorlynFrame.h"
#include "ZRThread.h"

#include <QString>

class QJsonObject;
class VorlynSDK;

// The two workers of VorlynSDK, which owns them. Each opens its own socket on the chosen address
// and opens it anew, once a second, for as long as that fails; nobody is told but the log.
// Thread: stop() comes from the owner's and reads the plain `socket` that the worker sets.

// Takes requests from the send queue and sends each once.
class VorlynSDKSendThread : public ZRThread
{
public:
    explicit VorlynSDKSendThread(VorlynSDK *sdk);
    ~VorlynSDKSendThread() override;

    void stop() override;
    void run() override;

private:
    int startSend();
    void sendRequests();
    bool sendRequest(const QJsonObject &request);

    int socket; // 0 when closed
    QString ip; // the address of the interface
    VorlynSDK *sdk;
    int woken; // the socket that stop() found, or 0; the owner's alone
};

// Puts the replies that are meant for this workstation on the reply queue.
class VorlynSDKRecvThread : public ZRThread
{
public:
    explicit VorlynSDKRecvThread(VorlynSDK *sdk);
    ~VorlynSDKRecvThread() override;

    void stop() override;
    void run() override;

private:
    int startRecv();
    void receiveReplies();
    void keepReply(const QByteArray &body);

    int socket; // 0 when closed
    VorlynSDK *sdk;
    int woken; // as above
};
