#pragma once

#include <QtGlobal>

// Begins the definition of a function that programs find in the library by its name. WINPSK_CALL is
// the calling convention, and comes from the build.
#define WINPSK_ENTRY extern "C" Q_DECL_EXPORT int WINPSK_CALL
