#include "StandardInput.h"

#include <iostream>
#include <mutex>
#include <string>
#include <thread>

namespace {

std::mutex mutex;
StandardInput *receiver = nullptr; // null when there is none any more

// False when nobody listens any more.
bool hand(const QByteArray &text)
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (receiver && !text.isEmpty())
        QMetaObject::invokeMethod(receiver, "line", Qt::QueuedConnection, Q_ARG(QByteArray, text));
    return receiver != nullptr;
}

// Blocks in the system's call, so nobody waits for it.
void readLines()
{
    std::string text;
    while (std::getline(std::cin, text)) {
        if (!hand(QByteArray::fromStdString(text).trimmed()))
            return;
    }
}

}

// Files have no places here.
void StandardInput::claim() { }

StandardInput::StandardInput(QObject *parent) : QObject(parent)
{
    receiver = this;
    std::thread(readLines).detach();
}

StandardInput::~StandardInput()
{
    const std::lock_guard<std::mutex> lock(mutex);
    receiver = nullptr;
}
