#include "SmallDisk.h"

#include "HostProcess.h"

namespace {

// A disk in memory, of whole pages.
bool mount(const QString &options, const QString &folder)
{
    return HostProcess::run(
        "mount", {"-t", "tmpfs", "-o", options, "tmpfs", HostProcess::path(folder)});
}

}

SmallDisk::SmallDisk()
{
    mount("size=1m", path());
}

SmallDisk::~SmallDisk()
{
    HostProcess::run("umount", {HostProcess::path(path())});
}

bool SmallDisk::limit(int bytes)
{
    return mount("remount,size=" + QString::number(bytes), path());
}

bool SmallDisk::unlimit()
{
    return mount("remount,size=1m", path());
}
