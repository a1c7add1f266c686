#include "StopSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A handler may do little more than write: the other end is watched by the event loop.
int pipeEnds[2] = {-1, -1};

void handle(int)
{
    const char byte = 0;
    const ssize_t written = write(pipeEnds[1], &byte, 1);
    Q_UNUSED(written) // a full pipe has told already
}

void install(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

}

StopSignals::StopSignals(QObject *parent) : QObject(parent)
{
    if (pipe(pipeEnds) != 0)
        qFatal("no pipe for signals");
    for (int end : pipeEnds) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
    auto *notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char bytes[16];
        while (read(pipeEnds[0], bytes, sizeof bytes) > 0) { }
        emit raised();
    });
    install(SIGTERM, handle);
    install(SIGINT, handle);
    // A reader of the journal that goes away must not leave addresses behind.
    install(SIGPIPE, SIG_IGN);
}

StopSignals::~StopSignals()
{
    install(SIGTERM, SIG_DFL);
    install(SIGINT, SIG_DFL);
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}
