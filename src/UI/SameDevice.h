#pragma once

#include "VorlynDevice.h"

// Whether both records are of one camera: a camera that has been given another MAC keeps its
// "srcid". Any thread.
inline bool isSameDevice(const VorlynDevice &a, const VorlynDevice &b)
{
    return a.mac() == b.mac() || (!a.srcid().isEmpty() && a.srcid() == b.srcid());
}
