#include "QueueSwitch.h"

#include "HostProcess.h"

bool switchQueue(const QString &name, bool on)
{
    return HostProcess::run(on ? "cupsenable" : "cupsdisable", {name});
}
