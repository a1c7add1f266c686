#include "SharedLibrary.h"

#include <QCoreApplication>
#include <QFile>

#include <dlfcn.h>

namespace {
class SystemLibrary : public SharedLibrary
{
public:
    Handle load(const char *name) override
    {
        const QString file = QCoreApplication::applicationDirPath() + "/lib" + name + ".so";
        return dlopen(QFile::encodeName(file).constData(), RTLD_NOW | RTLD_LOCAL);
    }

    Symbol symbol(Handle library, const char *name) override
    {
        return reinterpret_cast<Symbol>(dlsym(library, name));
    }

    void free(Handle library) override { dlclose(library); }
};
}

SharedLibrary &SharedLibrary::system()
{
    static SystemLibrary library;
    return library;
}
