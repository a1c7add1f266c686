#pragma once

#include "SharedLibrary.h"

#include <QString>

// What this process has loaded from a file, for SharedLibrary's operations; null when it hasn't. It
// takes no reference.
SharedLibrary::Handle loadedLibrary(const QString &file);
