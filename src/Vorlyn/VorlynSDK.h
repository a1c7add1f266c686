#pragma once

#include "VorlynDevice.h"

#include <QList>
#include <QNetworkAddressEntry>
#include <QNetworkInterface>

class QJsonObject;
class VorlynSDKRecvThread;
class VorlynSDKSendThread;
class ZRHttpUtils;
class ZRThreadLocker;

// The one client of the cameras: JSON requests and replies in datagrams on a multicast group.
// The wire is told in docs/protocol.md.
// Thread: start, stop and the choice of network belong to the GUI thread. A command may run on any
// thread, but only one that blocks at a time, as each throws away the replies that are not its
// own; the modal dialogs keep this rule. Commands with a wait block for as long as 3 s, a Wi-Fi
// scan for 10 s.
// Results: 0 is success; -1 a refusal, a timeout or a cancelled wait.
class VorlynSDK
{
public:
    static void createInstance();
    // Null before createInstance() and after destroyInstance().
    static VorlynSDK *instance();
    static void destroyInstance();

    // Ethernet and Wi-Fi interfaces that are up and have an IPv4 address.
    static QList<QNetworkInterface> availableInterfaces();
    // Finds the saved interface and address, or else the best there is. False when it had to fall
    // back on something that was not asked for; from an empty list both stay as they were.
    static bool selectInterface(const QList<QNetworkInterface> &interfaces, const QString &name,
        const QString &ip, QNetworkInterface &interface, QNetworkAddressEntry &address);

    // Returns at once; the threads open their sockets and go on trying once a second. Not while
    // the network runs: stopNetwork() first.
    void startNetwork(const QNetworkInterface &interface, const QNetworkAddressEntry &address);
    // What is queued stays: requests go out by the next start.
    void stopNetwork();
    void currentNetwork(QNetworkInterface &interface, QNetworkAddressEntry &address) const;
    // MAC of the chosen interface without colons: "srcid" of requests, "destid" of replies.
    QString interfaceMacId() const;

    // Blocks until the reply to `id`, for `seconds` (without limit when not above 0) or until
    // cancelWait(). The caller owns the result; null when none came.
    QJsonObject *waitResponse(quint32 id, double seconds);
    QJsonObject *buildSearchRequest(quint32 id) const;
    // The oldest message that no wait or search has taken, null when there is none; any thread. The
    // caller owns it. Not while a blocking command runs: it would miss its reply.
    QJsonObject *takeMessage();
    // Ends the wait or search that is running; any thread. One that has not begun is not affected.
    void cancelWait();
    // Ends the upload that is running; any thread.
    void cancelUpload();

    // Blocks for the whole of `seconds`, or until cancelWait() when not above 0. Keeps the first
    // reply of each MAC, in order of arrival.
    void searchDevices(QVector<VorlynDevice> &devices, double seconds = 3);

    int setDeviceIp(const VorlynDevice &device, const QString &ip, const QString &netmask,
        const QString &gateway, const QString &dns1, const QString &dns2);
    int setDeviceDhcp(const QVector<VorlynDevice> &devices);
    int setDeviceMac(const VorlynDevice &device, const QString &mac);
    int setDeviceName(const QVector<VorlynDevice> &devices, const QString &name);
    int setDeviceP2p(const QVector<VorlynDevice> &devices, const QString &p2pid);
    int setDeviceFunctionId(const QVector<VorlynDevice> &devices, const QString &ids);
    int setDevicePTZ(const QVector<VorlynDevice> &devices, const QString &command);
    // Factory state, network settings included.
    int resetDevices(const QVector<VorlynDevice> &devices);
    // Sizes in megabytes, untouched without a reply. -1 when the total is below 1, whatever the
    // camera calls the result.
    int getDeviceSD(const VorlynDevice &device, int &total, int &free);
    // Appends the networks, whatever the result.
    int getDeviceWiFiList(const VorlynDevice &device, QVector<VorlynDeviceWiFiInfo> &networks);

    // These three don't wait: they return the id of the request.
    int setDeviceIRcut(const VorlynDevice &device, const QString &mode);
    int setDeviceColor(const VorlynDevice &device, bool on);
    int testDeviceMicrophone(const VorlynDevice &device);

    // Sends an image to the camera's web server and blocks until the transfer ends. Returns
    // "Result" of the reply, or -3 when it is no JSON object.
    int setDeviceFirmware(const VorlynDevice &device, const QString &path);

private:
    friend class VorlynSDKSendThread;
    friend class VorlynSDKRecvThread;
    Q_DISABLE_COPY(VorlynSDK)

    VorlynSDK();
    ~VorlynSDK();

    static bool selectAddressEntry(
        const QNetworkInterface &interface, const QString &ip, QNetworkAddressEntry &address);

    QJsonObject *buildRequest(const VorlynDevice &device, quint32 id, const QString &method,
        const QString &key, const QString &value) const;
    QJsonObject *buildRequest(const QVector<VorlynDevice> &devices, quint32 id,
        const QString &method, const QString &key, const QString &value) const;
    QJsonObject *buildEnvelope(quint32 id, const QString &method, const QStringList &targets) const;
    void post(QJsonObject *request);
    // The oldest entry of a queue, which the caller owns then; null when there is none.
    static QJsonObject *takeFirst(ZRThreadLocker *locker, QList<QJsonObject *> &queue);
    // For one device or a list. Returns the id.
    template <typename Target>
    quint32 sendRequest(const Target &target, const QString &method, const QString &key = QString(),
        const QString &value = QString());
    int waitResult(quint32 id);

    // Ids count from 0 with each startNetwork(), so a reply still queued from before can match.
    // Plain, as is `waiting`: one blocking command at a time is the rule that guards them.
    quint32 nextId;
    bool waiting; // true from the start of a wait until cancelWait()
    bool started;
    ZRHttpUtils *http; // of the running upload, not owned
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    // Each lock guards the queue after it; the two are never held together. The queues own their
    // entries.
    ZRThreadLocker *sendLocker;
    QList<QJsonObject *> sendQueue;
    ZRThreadLocker *recvLocker;
    QList<QJsonObject *> recvQueue;
    VorlynSDKSendThread *sendThread;
    VorlynSDKRecvThread *recvThread;
};
