#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <memory>

// The other end of the protocol with plain sockets and raw bytes: one camera that joined the group
// on its address. Opened in the cameras' network or, as the tests of one machine need it, in ours.
class CameraPeer
{
public:
    enum Side { Cameras, Workstation };
    static constexpr int noTimeLost = 300; // milliseconds, to see that nothing comes
    static constexpr int patience = 10000; // milliseconds, for what must come

    explicit CameraPeer(const char *local, Side side = Cameras);
    ~CameraPeer();
    CameraPeer(const CameraPeer &) = delete;
    CameraPeer &operator=(const CameraPeer &) = delete;

    // False when a socket could not be opened.
    bool isOpen() const;
    // The next datagram to the cameras; empty when none comes in time.
    QByteArray receive(int milliseconds = patience);
    // Its JSON.
    QJsonObject receiveRequest(int milliseconds = patience);
    // To the workstations, as it stands.
    bool send(const QByteArray &datagram);
    bool reply(const QByteArray &json);
    bool reply(const QJsonObject &object);

private:
    struct Sockets;
    std::unique_ptr<Sockets> sockets;
};
