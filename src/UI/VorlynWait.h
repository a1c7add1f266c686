#pragma once

#include "VorlynSDK.h"

// cancel() of every dialog whose job waits for a device: ends that wait, if there is an SDK.
inline void cancelVorlynWait()
{
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->cancelWait();
}
