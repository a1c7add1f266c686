#include "LoadedLibrary.h"

#include <QFile>

#include <dlfcn.h>

SharedLibrary::Handle loadedLibrary(const QString &file)
{
    void *library = dlopen(QFile::encodeName(file).constData(), RTLD_NOW | RTLD_NOLOAD);
    if (library)
        dlclose(library); // the reference that dlopen() took
    return library;
}
