#pragma once

#include <string>

// The file, in UTF-8, of the library or program that holds this address, as it was loaded: the path
// may be a relative one. Empty when the system doesn't tell.
std::string moduleFile(const void *address);
