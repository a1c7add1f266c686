#pragma once

// Puts a function of the test in the place of one that a system library exports. The program's
// objects, also those of its own libraries, reach such a function through a pointer of this name,
// which the linker then takes from the test.
#define REPLACE_IMPORT(function, replacement)                                                      \
    decltype(&::function) replaced_##function asm("__imp_" #function) = replacement
