#include "CameraPeer.h"
#include "MulticastSocket.h"
#include "SocketFacts.h"
#include "ThisProcess.h"
#include "VorlynProtocol.h"

#include <QScopeGuard>
#include <QtTest>

#include <cerrno>
#include <future>

using namespace VorlynProtocol;

static constexpr char local[] = "10.77.0.1";
static constexpr char absent[] = "10.77.0.99"; // no interface has it
static const int endOfReceiving = SocketFacts::wakeCloses ? -1 : 0;

class tst_MulticastSocket : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void boundAddresses();
    void options();
    void sendsThroughTheInterface();
    void receives();
    void wakeEndsABlockedReceive();
    void wakeEndsALaterReceive();
    void leaveEndsTheTraffic();
    void leaveAndJoin();
    void failures();
    void bindToAbsentAddress();
    void absentAddress();

private:
    int receiver;
    int sender;
    bool wasWoken; // the receiver
};

void tst_MulticastSocket::init()
{
    wasWoken = false;
    receiver = MulticastSocket::open();
    sender = MulticastSocket::open();
    QVERIFY(receiver > 0 && sender > 0);
    QCOMPARE(MulticastSocket::bind(receiver, local, replyPort), 0);
    QCOMPARE(MulticastSocket::bind(sender, local, anyPort), 0);
    for (const int socket : {receiver, sender}) {
        QCOMPARE(MulticastSocket::join(socket, local), 0);
        QCOMPARE(MulticastSocket::setSendTimeout(socket, 1, 0), 0);
    }
}

void tst_MulticastSocket::cleanup()
{
    if (!wasWoken)
        MulticastSocket::close(receiver);
    else
        MulticastSocket::release(receiver);
    MulticastSocket::wake(sender);
    MulticastSocket::release(sender);
    QVERIFY(!SocketFacts::isOpen(receiver));
    QVERIFY(!SocketFacts::isOpen(sender));
}

void tst_MulticastSocket::boundAddresses()
{
    QCOMPARE(SocketFacts::boundAddress(receiver), SocketFacts::receiverAddress(local));
    QCOMPARE(SocketFacts::boundPort(receiver), replyPort);
    QCOMPARE(SocketFacts::boundAddress(sender), QByteArray(local));
    QVERIFY(SocketFacts::boundPort(sender) != replyPort);
}

void tst_MulticastSocket::options()
{
    for (const int socket : {receiver, sender})
        QCOMPARE(SocketFacts::options(socket), SocketFacts::optionsOfMembers());
}

void tst_MulticastSocket::sendsThroughTheInterface()
{
    CameraPeer camera("10.77.0.2");
    errno = EBADF;
    QCOMPARE(MulticastSocket::send(sender, local, "text", 4), 4);
    QCOMPARE(errno, 0);
    QCOMPARE(camera.receive(), QByteArray("text"));
    QCOMPARE(SocketFacts::wayOut(sender), QByteArray(local));
}

void tst_MulticastSocket::receives()
{
    CameraPeer camera("10.77.0.2");
    char buffer[8] = {};
    QVERIFY(camera.send("text"));
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer), 4);
    QCOMPARE(QByteArray(buffer), QByteArray("text"));

    QVERIFY(camera.send("longer than the buffer"));
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer),
        SocketFacts::cutsDatagrams ? 8 : -1);

    errno = EBADF;
    QVERIFY(camera.send(""));
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer), 0);
    QCOMPARE(errno, 0);
}

void tst_MulticastSocket::wakeEndsABlockedReceive()
{
    auto received = std::async(std::launch::async, [this] {
        char byte = 0;
        return MulticastSocket::receive(receiver, local, &byte, 1);
    });
    // Longer than the membership is left unlooked at.
    QCOMPARE(received.wait_for(std::chrono::milliseconds(1500)), std::future_status::timeout);
    wasWoken = true;
    MulticastSocket::wake(receiver);
    QCOMPARE(received.wait_for(std::chrono::milliseconds(500)), std::future_status::ready);
    QCOMPARE(received.get(), endOfReceiving);
}

void tst_MulticastSocket::wakeEndsALaterReceive()
{
    wasWoken = true;
    MulticastSocket::wake(receiver);
    char byte = 0;
    errno = EBADF;
    QCOMPARE(MulticastSocket::receive(receiver, local, &byte, 1), endOfReceiving);
    QCOMPARE(errno, 0);
}

// The sender is still a member.
void tst_MulticastSocket::leaveEndsTheTraffic()
{
    if (ThisProcess::inWine())
        QSKIP("Wine lets in what another socket of the machine has joined");
    CameraPeer camera("10.77.0.2");
    QCOMPARE(MulticastSocket::leave(receiver, local), 0);
    QVERIFY(camera.send("unheard"));
    QCOMPARE(MulticastSocket::join(receiver, local), 0);
    QVERIFY(camera.send("heard"));
    char buffer[16] = {};
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer), 5);
}

void tst_MulticastSocket::leaveAndJoin()
{
    CameraPeer camera("10.77.0.2");
    QCOMPARE(MulticastSocket::leave(receiver, local), 0);
    QCOMPARE(MulticastSocket::join(receiver, local), 0);
    QVERIFY(camera.send("heard"));
    char buffer[16] = {};
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer), 5);
    QVERIFY(MulticastSocket::leave(receiver, "10.88.0.1") < 0);
}

void tst_MulticastSocket::failures()
{
    const int socket = MulticastSocket::open();
    const auto close = qScopeGuard([socket] { MulticastSocket::close(socket); });
    QVERIFY(MulticastSocket::bind(socket, local, replyPort) < 0); // taken
    QVERIFY(MulticastSocket::join(socket, "no address") < 0);
    QVERIFY(MulticastSocket::setSendTimeout(-1, 1, 0) < 0);
    QVERIFY(MulticastSocket::send(-1, local, "text", 4) < 0);
    QCOMPARE(errno != 0, SocketFacts::namesErrors);
    char byte = 0;
    QVERIFY(MulticastSocket::receive(-1, local, &byte, 1) < 0);
    QCOMPARE(errno != 0, SocketFacts::namesErrors);
}

void tst_MulticastSocket::bindToAbsentAddress()
{
    if (ThisProcess::inWine())
        QSKIP("Wine binds to an address that no interface has");
    const int socket = MulticastSocket::open();
    const auto close = qScopeGuard([socket] { MulticastSocket::close(socket); });
    QVERIFY(MulticastSocket::bind(socket, absent, anyPort) < 0);
}

void tst_MulticastSocket::absentAddress()
{
    const int socket = MulticastSocket::open();
    const auto close = qScopeGuard([socket] { MulticastSocket::close(socket); });
    QVERIFY(MulticastSocket::join(socket, absent) < 0);
    if (SocketFacts::choosesWayOut) {
        QVERIFY(MulticastSocket::send(socket, absent, "text", 4) < 0);
        QVERIFY(errno != 0);
    }
}

QTEST_GUILESS_MAIN(tst_MulticastSocket)
#include "tst_MulticastSocket.moc"
