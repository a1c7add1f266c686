#include "StreamFacts.h"

#include <windows.h>

namespace {

bool isWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll"), "wine_get_version");
}

}

// Under Wine the processor does what Direct3D is asked for.
const int StreamFacts::pace = 5;

// Wine makes a device of DXVA2 and has no decoder for it.
bool StreamFacts::hardwareGivesPictures()
{
    return !isWine();
}

bool StreamFacts::refusalIsTold()
{
    return !isWine();
}
