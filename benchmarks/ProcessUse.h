#pragma once

#include <QtGlobal>

// What a process, with all its threads, takes of the machine.
namespace ProcessUse {

// CPU time in seconds, user and system, since the process began. Steps of 10 ms.
double cpuSeconds(qint64 pid);

struct Memory {
    double resident; // MiB, shared pages in full
    double proportional; // MiB, each shared page divided by those who share it
};
Memory memory(qint64 pid);

} // namespace ProcessUse
