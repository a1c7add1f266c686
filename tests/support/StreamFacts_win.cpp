#include "StreamFacts.h"

#include "ThisProcess.h"

// Under Wine the processor does what Direct3D is asked for.
const int StreamFacts::pace = 5;

// Wine makes a device of DXVA2 and has no decoder for it.
bool StreamFacts::hardwareGivesPictures()
{
    return !ThisProcess::inWine();
}

bool StreamFacts::refusalIsTold()
{
    return !ThisProcess::inWine();
}
