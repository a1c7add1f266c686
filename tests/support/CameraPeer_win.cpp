#include "CameraPeer.h"

#include "HostProcess.h"

#include <QThread>

// The program camera-peer has them, outside of Wine. The test speaks with it from any thread, and
// it is one thread that holds it.
struct CameraPeer::Sockets {
    QThread thread;
    QObject place;
    std::unique_ptr<HostProcess> program;
    bool open = false;

    Sockets()
    {
        thread.start();
        place.moveToThread(&thread);
    }

    ~Sockets()
    {
        there([this] { program.reset(); });
        thread.quit();
        thread.wait();
    }

    template <typename Call> void there(Call call)
    {
        QMetaObject::invokeMethod(&place, call, Qt::BlockingQueuedConnection);
    }

    void start(const QStringList &arguments)
    {
        there([&] {
            program = std::make_unique<HostProcess>();
            if (!program->start(VORLYN_CAMERA_PEER, arguments))
                qFatal("%s", program->errors().constData());
            open = answer() == "true";
        });
    }

    // The answer to an order, a line; empty when none comes.
    QByteArray ask(const QByteArray &order)
    {
        QByteArray line;
        there([&] {
            program->write(order + '\n');
            line = answer();
        });
        return line;
    }

    QByteArray answer()
    {
        while (!program->canReadLine() && program->waitForReadyRead()) { }
        return program->readLine().trimmed();
    }
};

CameraPeer::CameraPeer(const char *local, Side side) : sockets(new Sockets)
{
    sockets->start({local, QString::number(side)});
}

CameraPeer::~CameraPeer() = default;

bool CameraPeer::isOpen() const
{
    return sockets->open;
}

QByteArray CameraPeer::receive(int milliseconds)
{
    return QByteArray::fromHex(sockets->ask("receive " + QByteArray::number(milliseconds)));
}

bool CameraPeer::send(const QByteArray &datagram)
{
    return sockets->ask("send " + datagram.toHex()) == "true";
}
