#pragma once

#include "ZRThread.h"

class VorlynDeviceMPToolWidget;

// One automatic test run: the panel's test slots in their fixed order. It holds no state; a step
// that touches widgets crosses to the GUI thread and blocks this one until the operator answered.
class VorlynDeviceMPToolThread : public ZRThread
{
public:
    explicit VorlynDeviceMPToolThread(VorlynDeviceMPToolWidget *widget);
    ~VorlynDeviceMPToolThread() override;

    // Ends a pending wait for a reply, whose step then fails; the run goes on to its end.
    void stop() override;
    void run() override;

private:
    VorlynDeviceMPToolWidget *widget; // not owned
};
