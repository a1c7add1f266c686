#include "VorlynDeviceMPToolThread.h"

#include "VorlynDeviceMPToolWidget.h"
#include "VorlynWait.h"

namespace {
// All of them are reached, whatever came of those before and whether or not the run was stopped.
constexpr void (VorlynDeviceMPToolWidget::*steps[])() = {
    &VorlynDeviceMPToolWidget::autoTestStart,
    &VorlynDeviceMPToolWidget::autoTestAppVersion,
    &VorlynDeviceMPToolWidget::autoTestSDCard,
    &VorlynDeviceMPToolWidget::loadWiFiInfo,
    &VorlynDeviceMPToolWidget::testSpeaker,
    &VorlynDeviceMPToolWidget::testIRCutNight,
    &VorlynDeviceMPToolWidget::testIRCutDay,
    &VorlynDeviceMPToolWidget::testWhiteLightOn,
    &VorlynDeviceMPToolWidget::testWhiteLightOff,
    &VorlynDeviceMPToolWidget::autoTestStop,
};
}

VorlynDeviceMPToolThread::VorlynDeviceMPToolThread(VorlynDeviceMPToolWidget *widget) :
    widget(widget)
{ }

VorlynDeviceMPToolThread::~VorlynDeviceMPToolThread() = default;

void VorlynDeviceMPToolThread::stop()
{
    ZRThread::stop();
    cancelVorlynWait();
}

void VorlynDeviceMPToolThread::run()
{
    for (const auto step : steps)
        (widget->*step)();
}
