#pragma once

#include "FactoryReportThread.h"
#include "VorlynDevice.h"

class FactoryDialog;
class VorlynDeviceGenerationWidget;

struct FactoryTest;

// Runs the tests of one device on the bench: opens a test's dialog and brings the device's reports
// to it. They come from the SDK's queue on a thread that lives as long as the dialog. What came
// before the dialog opened counts for nothing.
// GUI thread. No other blocking command may run meanwhile, as both would take the other's messages;
// the dialogs are modal. Dialogs without reports, which may send commands themselves, have no
// thread.
class FactoryTestHost
{
public:
    explicit FactoryTestHost(const VorlynDevice &device);

    // A widget that shows what is reported to an open dialog, too. The operator's answer is the
    // caller's to show. Not owned; it outlives an open dialog. Null for none.
    void setGenerationWidget(VorlynDeviceGenerationWidget *widget);
    // In place of the SDK's queue.
    void setSource(const FactoryReportThread::Source &source);

    // Blocks, handling events, until the operator has answered: FactoryTestPassed or
    // FactoryTestFailed.
    int run(const FactoryTest &test);

private:
    int runWithReports(const FactoryTest &test, FactoryDialog &dialog);
    void show(const VorlynReport &report) const;

    const VorlynDevice device;
    VorlynDeviceGenerationWidget *generationWidget = nullptr;
    FactoryReportThread::Source source;
};
