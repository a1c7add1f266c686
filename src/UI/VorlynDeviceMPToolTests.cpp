#include "VorlynDeviceMPToolWidget.h"

#include "DialogCalls.h"
#include "PTZPad.h"
#include "SdCardSize.h"
#include "TestLogColors.h"
#include "VorlynDeviceMPToolThread.h"
#include "VorlynDeviceWiFiInfoDialog.h"
#include "VorlynSDK.h"
#include "WiFiInfoWidget.h"
#include "ZRAlertDialog.h"
#include "ZRLabel.h"

#include <QScopedValueRollback>
#include <QThread>

// A test that the operator judges. The same title stands over the question and in the log.
struct OperatorTest {
    const char *title;
    bool (VorlynDevice::*isFor)() const; // null: any device, also none
    void (*command)(const VorlynDevice &device); // null: nothing is sent
};

namespace {
const char versionTitle[] = "Auto Test App Version Result";
const char sdCardTitle[] = "Auto Test SDCard Result";

// Nobody waits for the replies of these three.
void listen(const VorlynDevice &device)
{
    VorlynSDK::instance()->testDeviceMicrophone(device);
}

template <const char *mode> void switchIRCut(const VorlynDevice &device)
{
    VorlynSDK::instance()->setDeviceIRcut(device, mode);
}

template <bool on> void switchWhiteLight(const VorlynDevice &device)
{
    VorlynSDK::instance()->setDeviceColor(device, on);
}

constexpr char day[] = "day";
constexpr char night[] = "night";
constexpr char automatic[] = "auto";

// Speaker and microphone go by one command of the camera: it plays what it hears.
constexpr OperatorTest speaker = {"Test Speaker Result", &VorlynDevice::isValid, listen};
constexpr OperatorTest microphone = {"Test Microphone Result", &VorlynDevice::isValid, listen};
constexpr OperatorTest irCutDay = {
    "Test IR-cut Day Result", &VorlynDevice::isValid, switchIRCut<day>};
constexpr OperatorTest irCutNight = {
    "Test IR-cut Night Result", &VorlynDevice::isValid, switchIRCut<night>};
constexpr OperatorTest irCutAuto = {
    "Test IR-cut Auto Result", &VorlynDevice::isValid, switchIRCut<automatic>};
constexpr OperatorTest whiteLightOn = {
    "Test White Light On Result", &VorlynDevice::supportsPAC, switchWhiteLight<true>};
constexpr OperatorTest whiteLightOff = {
    "Test White Light Off Result", &VorlynDevice::supportsPAC, switchWhiteLight<false>};
constexpr OperatorTest stream = {"Test Video Audio Result", nullptr, nullptr};

// The head of a slot that shows something: on another thread than the panel's it has the panel's
// run the slot, waits until that is done and returns true.
bool crossed(QObject *panel, const char *slot)
{
    if (QThread::currentThread() == panel->thread())
        return false;
    QMetaObject::invokeMethod(panel, slot, Qt::BlockingQueuedConnection);
    return true;
}

QString banner(const char *title)
{
    return QStringLiteral("************************%1***********************")
        .arg(ZRLocalize::translate(title), 0, QLatin1Char(' '));
}

// Values are put in together with the words: a device may be called "%2".
QString entry(const char *title, const QString &value)
{
    return QStringLiteral("%1 : %2").arg(ZRLocalize::translate(title), value);
}

QString entry(const char *title, const QString &verdict, const QString &value)
{
    return QStringLiteral("%1 : %2 %3").arg(ZRLocalize::translate(title), verdict, value);
}

QString verdict(bool passed)
{
    return ZRLocalize::translate(passed ? "Pass" : "Failure");
}

QColor verdictColor(bool passed)
{
    return passed ? passColor : failureColor;
}

// Esc and closing the window are a failure.
bool operatorPasses(const char *title)
{
    return ZRAlertDialog::alert(ZRLocalize::translate(title), verdict(true), verdict(false))
        == QDialog::Accepted;
}

}

void VorlynDeviceMPToolWidget::appendStart(const char *title)
{
    appendText(banner(title), bannerColor);
    appendText(entry("Name", device_.name()), passColor);
    appendText(entry("Mac", device_.mac()), passColor);
}

void VorlynDeviceMPToolWidget::judge(const OperatorTest &test)
{
    if (test.isFor && !(device_.*test.isFor)())
        return;
    if (test.command)
        test.command(device_);
    const QScopedValueRollback<bool> asking(busy, true);
    const bool passed = operatorPasses(test.title);
    appendText(entry(test.title, verdict(passed)), verdictColor(passed));
}

void VorlynDeviceMPToolWidget::autoTestStart()
{
    appendStart("Start Auto Test");
}

void VorlynDeviceMPToolWidget::autoTestStop()
{
    appendText(banner("End Auto Test"), bannerColor);
}

void VorlynDeviceMPToolWidget::manualTestStart()
{
    appendStart("Start Manual Test");
}

void VorlynDeviceMPToolWidget::manualTestStop()
{
    appendText(banner("End Manual Test"), bannerColor);
}

// For any record, also an empty one: no version chosen and no version there is a pass.
void VorlynDeviceMPToolWidget::autoTestAppVersion()
{
    if (crossed(this, __func__))
        return;
    const QString version = device_.version();
    const bool passed = versionLabel->text() == version;
    appendText(entry(versionTitle, verdict(passed), version), verdictColor(passed));
}

// Stays on the caller's thread, which waits for the camera and reads the record without a lock.
void VorlynDeviceMPToolWidget::autoTestSDCard()
{
    if (!device_.isValid())
        return;
    int total = 0;
    int free = 0;
    if (VorlynSDK::instance()->getDeviceSD(device_, total, free) < 0) {
        appendText(entry(sdCardTitle, verdict(false)), failureColor);
        return;
    }
    appendText(entry(sdCardTitle, verdict(true), sdCardSizeText(total, free)), passColor);
}

// Its result is the list on the panel; the log gets nothing.
void VorlynDeviceMPToolWidget::loadWiFiInfo()
{
    if (crossed(this, __func__) || !device_.supportsWIFI())
        return;
    VorlynDeviceWiFiInfoDialog dialog(nullptr);
    dialog.setDevice(device_);
    const QScopedValueRollback<bool> scanning(busy, true);
    if (startAndExec(dialog) == QDialog::Accepted)
        wifiInfoWidget->setInfos(dialog.wifiInfos());
}

void VorlynDeviceMPToolWidget::testSpeaker()
{
    if (!crossed(this, __func__))
        judge(speaker);
}

void VorlynDeviceMPToolWidget::testMicrophone()
{
    if (!crossed(this, __func__))
        judge(microphone);
}

void VorlynDeviceMPToolWidget::testWhiteLightOn()
{
    if (!crossed(this, __func__))
        judge(whiteLightOn);
}

void VorlynDeviceMPToolWidget::testWhiteLightOff()
{
    if (!crossed(this, __func__))
        judge(whiteLightOff);
}

void VorlynDeviceMPToolWidget::testIRCutDay()
{
    if (!crossed(this, __func__))
        judge(irCutDay);
}

void VorlynDeviceMPToolWidget::testIRCutNight()
{
    if (!crossed(this, __func__))
        judge(irCutNight);
}

void VorlynDeviceMPToolWidget::testIRCutAuto()
{
    if (!crossed(this, __func__))
        judge(irCutAuto);
}

void VorlynDeviceMPToolWidget::testStream()
{
    if (!crossed(this, __func__))
        judge(stream);
}

// The button is out of reach while a run is alive. Called all the same, it leads that run to its
// end first, which it could not from inside one of the run's questions: there it does nothing.
void VorlynDeviceMPToolWidget::onClickStartTestButton()
{
    if (busy)
        return;
    const QScopedValueRollback<bool> starting(busy, true);
    pad->finish(); // or its words would mix with the run's commands
    lockForRun();
    endRun(Crossings::Serve);
    emit requestStartMedia();
    testThread = new VorlynDeviceMPToolThread(this);
    testThread->start();
}
