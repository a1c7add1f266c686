#pragma once

#include "FactoryTestDialogs.h"
#include "FactoryWiFiTestDialog.h"
#include "VorlynReport.h"

// What came of a test; any other number is a test that has not run, too.
enum FactoryTestState { FactoryTestWaiting, FactoryTestPassed, FactoryTestFailed };

// One test of the line: what it is about, and its dialog.
struct FactoryTest {
    using Report = VorlynReport::Function;

    int id;
    const char *title; // a key
    Report report; // the device's reports for it; None: the operator alone judges
    const char *slot; // of the dialog, for a report; null without reports
    const char *function; // what the device must have for it; empty: every device
    FactoryDialog *(*make)(QWidget *parent); // the caller owns it
};

template <class Dialog>
constexpr FactoryTest factoryTest(int id, FactoryTest::Report report = FactoryTest::Report::None,
    const char *slot = nullptr, const char *function = "")
{
    return {id, Dialog::title, report, slot, function,
        [](QWidget *parent) -> FactoryDialog * { return new Dialog(parent); }};
}

constexpr int factorySDCardTest = 6;
constexpr int factoryMillimeterWaveTest = 16;

// In the order of the work at the bench.
constexpr FactoryTest factoryTests[] = {
    factoryTest<FactoryImageTestDialog>(1, FactoryTest::Report::Image, "updateImage"),
    factoryTest<FactorySpeakerTestDialog>(2, FactoryTest::Report::Speaker, "updateSpeaker"),
    factoryTest<FactoryMicrophoneTestDialog>(
        3, FactoryTest::Report::Microphone, "updateMicrophone"),
    factoryTest<FactoryBeepTestDialog>(4),
    factoryTest<FactoryPTZTestDialog>(5),
    factoryTest<FactorySDCardTestDialog>(
        factorySDCardTest, FactoryTest::Report::SDCard, "updateSDCard"),
    factoryTest<FactoryWiFiTestDialog>(7, FactoryTest::Report::WiFi, "updateWiFi", "WIFI"),
    factoryTest<FactoryTemperatureTestDialog>(
        8, FactoryTest::Report::Temperature, "updateTemperature"),
    factoryTest<FactoryExtTemperatureTestDialog>(
        9, FactoryTest::Report::ExtTemperature, "updateTemperature"),
    factoryTest<FactoryCryingDetectionDialog>(
        10, FactoryTest::Report::Crying, "updateCryingStatus"),
    factoryTest<FactoryKeyWordTestDialog>(11, FactoryTest::Report::KeyWord, "updateStatus"),
    factoryTest<FactoryKeyCallTestDialog>(12, FactoryTest::Report::KeyCall, "updateStatus"),
    factoryTest<FactoryBreeTestDialog>(13, FactoryTest::Report::Bree, "updateStatus"),
    factoryTest<FactoryFallTestDialog>(14, FactoryTest::Report::Fall, "updateStatus"),
    factoryTest<FactoryMillimeterWaveDialog>(
        factoryMillimeterWaveTest, FactoryTest::Report::MillimeterWave, "updateStatus"),
    factoryTest<FactoryConfirmDialog>(15, FactoryTest::Report::Confirm, "updateImage"),
};
