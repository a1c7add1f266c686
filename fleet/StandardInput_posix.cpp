#include "StandardInput.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool isPassing(int error)
{
    return error == EINTR || error == EAGAIN;
}

}

void StandardInput::claim()
{
    const bool isClosed = fcntl(STDIN_FILENO, F_GETFD) < 0;
    if (isClosed && open("/dev/null", O_RDONLY) != STDIN_FILENO) // the lowest that is free
        qFatal("no /dev/null");
}

StandardInput::StandardInput(QObject *parent) : QObject(parent)
{
    // In the background of a terminal, reading then fails instead of stopping the program.
    std::signal(SIGTTIN, SIG_IGN);
    auto *notifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        char bytes[4096];
        const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
        if (count < 0 && isPassing(errno))
            return;
        notifier->setEnabled(count > 0);
        take(QByteArray(bytes, int(qMax<ssize_t>(count, 0))));
    });
}

StandardInput::~StandardInput()
{
    std::signal(SIGTTIN, SIG_DFL);
}
