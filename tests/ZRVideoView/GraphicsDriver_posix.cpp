#include "GraphicsDriver.h"

#include <dlfcn.h>
#include <link.h>

#include <cstring>

void keepGraphicsDriver()
{
    dl_iterate_phdr(
        [](dl_phdr_info *info, size_t, void *) {
            if (std::strstr(info->dlpi_name, "_dri.so")) {
                dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
            }
            return 0;
        },
        nullptr);
}
