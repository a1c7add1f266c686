#pragma once

// Libraries of the system, loaded by name at run time. _win.cpp: LoadLibraryW and its like, for
// "name.dll" on the system's search path; _posix.cpp: dlopen, for "libname.so" beside the program.
// Thread: any. Each load() of a loaded library raises its reference count, each free() lowers it.
class SharedLibrary
{
public:
    using Handle = void *;
    using Symbol = void (*)(); // cast to the function's own type before use

    virtual ~SharedLibrary() = default;
    // Null when there is no such library. `name` is ASCII, without the system's prefix and suffix.
    virtual Handle load(const char *name) = 0;
    // Null when the library lacks it.
    virtual Symbol symbol(Handle library, const char *name) = 0;
    virtual void free(Handle library) = 0;

    static SharedLibrary &system();
};
