#include "StreamFacts.h"

// As cameras have it.
const int StreamFacts::pace = 25;

// There is no device of the type that the player asks for, and it goes on without.
bool StreamFacts::hardwareGivesPictures()
{
    return true;
}

bool StreamFacts::refusalIsTold()
{
    return true;
}
