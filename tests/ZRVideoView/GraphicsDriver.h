#pragma once

// Keeps OpenGL drivers loaded to the very end once they are there: what they hold for the life of
// the process would otherwise be taken for lost.
inline void keepGraphicsDriver();

#if __has_include(<link.h>)

#include <dlfcn.h>
#include <link.h>

#include <cstring>

inline void keepGraphicsDriver()
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

#else

inline void keepGraphicsDriver() { } // nobody counts there

#endif
