#include "SmallDisk.h"

#include <algorithm>
#include <csignal>

#include <sys/resource.h>

namespace {

// No file of this process grows beyond the size.
bool limitFiles(rlim_t bytes)
{
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    return setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

}

SmallDisk::SmallDisk()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

SmallDisk::~SmallDisk()
{
    unlimit();
    std::signal(SIGXFSZ, SIG_DFL);
}

bool SmallDisk::limit(int bytes)
{
    return limitFiles(rlim_t(bytes));
}

bool SmallDisk::unlimit()
{
    return limitFiles(RLIM_INFINITY);
}
