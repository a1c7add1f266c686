#pragma once

#include <optional>

class QString;

// What the spooler tells of a print queue.
struct PrintQueueInfo {
    bool offline = false;
    bool network = false;
    std::optional<short> yResolution; // dots an inch as the device mode has them; without one, none
};

// The spooler's operations that a label needs. _win.cpp: the Windows spooler; _posix.cpp: the
// queues that Qt's print support lists.
// Thread: the GUI thread. A queue belongs to who opened it, until close().
class PrintSpooler
{
public:
    using Queue = void *;

    virtual ~PrintSpooler() = default;
    // `name` is UTF-16 up to a null. Null when there is no such queue; the others bear a null
    // queue.
    virtual Queue open(const char16_t *name) = 0;
    // False on failure, with `info` as it was.
    virtual bool read(Queue queue, PrintQueueInfo &info) = 0;
    virtual void close(Queue queue) = 0;

    static PrintSpooler &system();
};

// 1 when the queue is offline, 2 when it is a network queue, otherwise or on failure 0. `dotSize`
// is the size of the printer's dot in tenths of a millimetre and keeps its value on failure. The
// queue is looked up under the UTF-8 bytes of `name` read as UTF-16, so an ASCII name isn't found.
int getPrinterStatus(
    const QString &name, double *dotSize, PrintSpooler &spooler = PrintSpooler::system());
