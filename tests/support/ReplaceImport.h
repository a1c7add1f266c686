#pragma once

// The program's objects, also those of its own libraries, reach what another library exports
// through a pointer of this name, which the linker takes from the test if that has one.
#define IMPORT(name) "__imp_" name

// Puts a function of the test in the place of one of the system's.
#define REPLACE_IMPORT(function, replacement)                                                      \
    decltype(&::function) replaced_##function asm(IMPORT(#function)) = replacement
