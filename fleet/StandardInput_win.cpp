#include "StandardInput.h"

#include <windows.h>

#include <mutex>
#include <thread>

namespace {

std::mutex mutex;
StandardInput *receiver = nullptr; // null when there is none any more

// False when nobody listens any more.
bool hand(const QByteArray &bytes)
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (receiver)
        QMetaObject::invokeMethod(receiver, "take", Qt::QueuedConnection, Q_ARG(QByteArray, bytes));
    return receiver != nullptr;
}

// Blocks in the system's call, so nobody waits for it. A call of the C library's would keep its
// lock of the input, which the end of the program waits for.
void readInput()
{
    char bytes[4096];
    DWORD count = 0;
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    while (ReadFile(input, bytes, sizeof bytes, &count, nullptr) && count > 0) {
        if (!hand(QByteArray(bytes, int(count))))
            return;
    }
    hand(QByteArray());
}

}

// Files have no places here.
void StandardInput::claim() { }

StandardInput::StandardInput(QObject *parent) : QObject(parent)
{
    receiver = this;
    std::thread(readInput).detach();
}

StandardInput::~StandardInput()
{
    const std::lock_guard<std::mutex> lock(mutex);
    receiver = nullptr;
}
