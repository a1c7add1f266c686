#include "LoadedLibrary.h"

#include <QDir>

#include <windows.h>

SharedLibrary::Handle loadedLibrary(const QString &file)
{
    return GetModuleHandleW(QDir::toNativeSeparators(file).toStdWString().c_str());
}
