#include "VorlynSDK.h"

#include "VorlynJson.h"
#include "VorlynProtocol.h"
#include "VorlynSDKThreads.h"
#include "ZRThread.h"

#include <QScopedPointer>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

VorlynSDK *sdk = nullptr;

bool isIPv4(const QNetworkAddressEntry &entry)
{
    return entry.ip().protocol() == QAbstractSocket::IPv4Protocol;
}

// Saved addresses match any host of the same /24.
bool hasPrefix(const QNetworkAddressEntry &entry, const int (&bytes)[4])
{
    const quint32 ip = entry.ip().toIPv4Address();
    return isIPv4(entry) && int(ip >> 24) == bytes[0] && int(ip >> 16 & 0xff) == bytes[1]
        && int(ip >> 8 & 0xff) == bytes[2];
}

bool isPrivate(const QNetworkAddressEntry &entry)
{
    struct Range {
        quint32 network;
        int bits;
    };
    static constexpr Range ranges[] = {{0x0a000000, 8}, {0xac100000, 12}, {0xc0a80000, 16}};
    return isIPv4(entry)
        && std::any_of(std::begin(ranges), std::end(ranges), [&entry](const Range &range) {
               return entry.ip().isInSubnet(QHostAddress(range.network), range.bits);
           });
}

template <typename Predicate>
bool findEntry(const QNetworkInterface &interface, QNetworkAddressEntry &address, Predicate matches)
{
    const QList<QNetworkAddressEntry> entries = interface.addressEntries();
    const auto found = std::find_if(entries.begin(), entries.end(), matches);
    if (found == entries.end())
        return false;
    address = *found;
    return true;
}

bool isAvailable(const QNetworkInterface &interface)
{
    constexpr auto needed =
        QNetworkInterface::IsUp | QNetworkInterface::IsRunning | QNetworkInterface::CanMulticast;
    const QNetworkInterface::InterfaceType type = interface.type();
    const QList<QNetworkAddressEntry> entries = interface.addressEntries();
    return interface.isValid()
        && (type == QNetworkInterface::Ethernet || type == QNetworkInterface::Wifi)
        && (interface.flags() & needed) == needed
        && std::any_of(entries.begin(), entries.end(), isIPv4);
}

template <typename Thread> Thread *startThread(VorlynSDK *owner, const char *name)
{
    auto *thread = new Thread(owner);
    thread->setName(name);
    thread->start();
    return thread;
}

template <typename Thread> void endThread(Thread *&thread)
{
    if (!thread)
        return;
    thread->stop();
    thread->wait();
    delete thread;
    thread = nullptr;
}

// Point in time, in seconds, after which a wait ends; -1 is never.
double deadlineOf(double now, double seconds)
{
    return seconds > 0 ? now + seconds : -1;
}

bool isPast(double deadline, double now)
{
    return deadline >= 0 && now > deadline;
}

}

VorlynSDK::VorlynSDK() :
    nextId(0),
    waiting(false),
    started(false),
    http(nullptr),
    sendLocker(new ZRThreadLocker),
    recvLocker(new ZRThreadLocker),
    sendThread(nullptr),
    recvThread(nullptr)
{ }

VorlynSDK::~VorlynSDK()
{
    qDeleteAll(sendQueue);
    qDeleteAll(recvQueue);
    delete sendLocker;
    delete recvLocker;
}

void VorlynSDK::createInstance()
{
    destroyInstance();
    sdk = new VorlynSDK;
}

VorlynSDK *VorlynSDK::instance()
{
    return sdk;
}

void VorlynSDK::destroyInstance()
{
    if (!sdk)
        return;
    sdk->stopNetwork();
    delete sdk;
    sdk = nullptr;
}

QList<QNetworkInterface> VorlynSDK::availableInterfaces()
{
    QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    interfaces.erase(std::remove_if(interfaces.begin(), interfaces.end(), std::not_fn(isAvailable)),
        interfaces.end());
    return interfaces;
}

bool VorlynSDK::selectAddressEntry(
    const QNetworkInterface &interface, const QString &ip, QNetworkAddressEntry &address)
{
    int bytes[4] = {};
    std::sscanf(ip.toLatin1(), "%d.%d.%d.%d", &bytes[0], &bytes[1], &bytes[2], &bytes[3]);
    const auto isSaved = [&bytes](
                             const QNetworkAddressEntry &entry) { return hasPrefix(entry, bytes); };
    return (bytes[0] != 0 && findEntry(interface, address, isSaved))
        || findEntry(interface, address, isPrivate);
}

bool VorlynSDK::selectInterface(const QList<QNetworkInterface> &interfaces, const QString &name,
    const QString &ip, QNetworkInterface &interface, QNetworkAddressEntry &address)
{
    const auto accepts = [&](const QNetworkInterface &candidate) {
        if (!selectAddressEntry(candidate, ip, address))
            return false;
        interface = candidate;
        return true;
    };

    const auto named = std::find_if(interfaces.begin(), interfaces.end(),
        [&name](const QNetworkInterface &one) { return one.humanReadableName() == name; });
    if (!name.isEmpty() && named != interfaces.end() && accepts(*named))
        return true;
    if (std::any_of(interfaces.begin(), interfaces.end(), accepts))
        return true;
    if (interfaces.isEmpty())
        return false;

    interface = interfaces.first();
    const QList<QNetworkAddressEntry> entries = interface.addressEntries();
    if (!entries.isEmpty())
        address = entries.first();
    return false;
}

void VorlynSDK::startNetwork(
    const QNetworkInterface &interface, const QNetworkAddressEntry &address)
{
    nextId = 0;
    this->interface = interface;
    this->address = address;
    sendThread = startThread<VorlynSDKSendThread>(this, "VorlynSDKSendThread");
    recvThread = startThread<VorlynSDKRecvThread>(this, "VorlynSDKRecvThread");
    started = true;
}

void VorlynSDK::stopNetwork()
{
    endThread(recvThread);
    endThread(sendThread);
    started = false;
}

void VorlynSDK::currentNetwork(QNetworkInterface &interface, QNetworkAddressEntry &address) const
{
    interface = this->interface;
    address = this->address;
}

QString VorlynSDK::interfaceMacId() const
{
    return interface.hardwareAddress().remove(':');
}

void VorlynSDK::post(QJsonObject *request)
{
    sendLocker->lock();
    sendQueue.append(request);
    sendLocker->unlock();
}

QJsonObject *VorlynSDK::takeFirst(ZRThreadLocker *locker, QList<QJsonObject *> &queue)
{
    locker->lock();
    QJsonObject *first = queue.isEmpty() ? nullptr : queue.takeFirst();
    locker->unlock();
    return first;
}

QJsonObject *VorlynSDK::waitResponse(quint32 id, double seconds)
{
    double now = ZRThread::currentSeconds();
    const double deadline = deadlineOf(now, seconds);
    waiting = true;
    while (!isPast(deadline, now)) { // without a sleep, for as long as a wait lasts
        QScopedPointer<QJsonObject> reply(takeFirst(recvLocker, recvQueue));
        if (reply && quint32(idOf(*reply)) == id)
            return reply.take();
        now = ZRThread::currentSeconds();
        if (!waiting)
            break;
    }
    return nullptr;
}

QJsonObject *VorlynSDK::takeMessage()
{
    return takeFirst(recvLocker, recvQueue);
}

void VorlynSDK::cancelWait()
{
    waiting = false;
}

void VorlynSDK::searchDevices(QVector<VorlynDevice> &devices, double seconds)
{
    devices.clear();
    const quint32 id = nextId++;
    post(buildSearchRequest(id));

    const double deadline = deadlineOf(ZRThread::currentSeconds(), seconds);
    waiting = true;
    while (!isPast(deadline, ZRThread::currentSeconds())) {
        const QScopedPointer<QJsonObject> reply(takeFirst(recvLocker, recvQueue));
        if (!reply) {
            ZRThread::sleep(VorlynProtocol::searchPollMilliseconds);
        } else if (quint32(idOf(*reply)) == id) {
            VorlynDevice device;
            device.fromJson(*reply);
            if (device.isValid() && !containsDevice(devices, device))
                devices.append(device);
        }
        if (!waiting)
            break;
    }
}
