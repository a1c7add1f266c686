#include "ModuleFile.h"

#include <dlfcn.h>

std::string moduleFile(const void *address)
{
    Dl_info info;
    return dladdr(address, &info) && info.dli_fname ? info.dli_fname : std::string();
}
