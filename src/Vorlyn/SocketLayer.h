#pragma once

// Start and end of the system's sockets, once a process, around all use of them.
// _win.cpp: Winsock 2.2. _posix.cpp: nothing to do, the same numbers for the log.
// Thread: the main thread. A failed start is told and nothing more; sockets then fail later.
namespace SocketLayer {

// Versions have the minor number in the high byte; `result` is 0 on success.
struct Status {
    int highVersion;
    int version;
    int result;
};

Status start();
void stop();

}
