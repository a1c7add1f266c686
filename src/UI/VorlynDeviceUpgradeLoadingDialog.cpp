#include "VorlynDeviceUpgradeLoadingDialog.h"

#include "VorlynDeviceUpgradeDialog.h"
#include "VorlynWait.h"
#include "ZRLocalize.h"
#include "ZRThread.h"

#include <algorithm>

namespace {
// Seconds, but for the pause.
constexpr int longestRestart = 180;
constexpr int pollPeriod = 10;
constexpr unsigned long pauseMilliseconds = 500; // the rate of the countdown
constexpr double finalSearch = 5;
}

VorlynDeviceUpgradeLoadingDialog::VorlynDeviceUpgradeLoadingDialog(QWidget *parent) :
    ZRProgressDialog(parent),
    upgradeDialog(nullptr)
{ }

VorlynDeviceUpgradeLoadingDialog::~VorlynDeviceUpgradeLoadingDialog()
{
    finishThread();
}

void VorlynDeviceUpgradeLoadingDialog::setUpgradeDialog(VorlynDeviceUpgradeDialog *dialog)
{
    upgradeDialog = dialog;
}

void VorlynDeviceUpgradeLoadingDialog::run()
{
    if (VorlynSDK *sdk = VorlynSDK::instance()) {
        QVector<VorlynDevice> latest;
        if (uploadToAll(*sdk) > 0)
            waitForRestart(*sdk, latest);
        showResult(*sdk, latest);
    }
    emit _close();
}

void VorlynDeviceUpgradeLoadingDialog::cancel()
{
    ZRProgressDialog::cancel();
    cancelVorlynWait();
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->cancelUpload();
}

int VorlynDeviceUpgradeLoadingDialog::uploadToAll(VorlynSDK &sdk)
{
    const QString upgrading = ZRLocalize::translate(QStringLiteral("Upgrading"));
    int sent = 0;
    for (const VorlynDevice &device : qAsConst(upgradeDialog->devices)) {
        if (isStopped())
            break;
        emit _setMessage(QStringLiteral("%1 %2").arg(upgrading, device.name()));
        if (sdk.setDeviceFirmware(device, upgradeDialog->firmware) >= 0)
            ++sent;
    }
    return sent;
}

// The clock is read before each pause, so a poll, and the end, can come half a second late.
void VorlynDeviceUpgradeLoadingDialog::waitForRestart(VorlynSDK &sdk, QVector<VorlynDevice> &latest)
{
    QVector<VorlynDevice> found;
    setSecondsLeft(longestRestart);
    const double start = now();
    double nextSearch = start + pollPeriod;
    while (!isStopped()) {
        const double time = now();
        if (time >= start + longestRestart)
            break;
        pause(pauseMilliseconds);
        setSecondsLeft(longestRestart - int(time - start));
        if (time < nextSearch)
            continue;
        sdk.searchDevices(latest, shortSearch());
        mergeDevices(found, latest);
        nextSearch += pollPeriod;
        if (areAllIn(found))
            break;
    }
}

void VorlynDeviceUpgradeLoadingDialog::setSecondsLeft(int seconds)
{
    emit _setMessage(QStringLiteral("%1 %2(s)")
                         .arg(ZRLocalize::translate(QStringLiteral("Waiting for Devices Restart")),
                             QString::number(seconds)));
}

bool VorlynDeviceUpgradeLoadingDialog::areAllIn(const QVector<VorlynDevice> &found) const
{
    const QVector<VorlynDevice> &devices = upgradeDialog->devices;
    return std::all_of(devices.cbegin(), devices.cend(),
        [&found](const VorlynDevice &device) { return containsDevice(found, device); });
}

// What earlier polls saw doesn't count. Where the last poll and the last search saw a device, the
// record of the poll stands.
void VorlynDeviceUpgradeLoadingDialog::showResult(
    VorlynSDK &sdk, const QVector<VorlynDevice> &latest)
{
    QVector<VorlynDevice> found;
    sdk.searchDevices(found, isStopped() ? shortSearch() : finalSearch);
    mergeDevices(found, latest);
    upgradeDialog->upgrades = found;
    upgradeDialog->updateUpgradeInfo();
}

void VorlynDeviceUpgradeLoadingDialog::mergeDevices(
    QVector<VorlynDevice> &found, const QVector<VorlynDevice> &latest)
{
    for (const VorlynDevice &device : latest) {
        const auto same = std::find_if(found.begin(), found.end(),
            [&device](const VorlynDevice &other) { return other.mac() == device.mac(); });
        if (same == found.end())
            found.append(device);
        else
            *same = device;
    }
}

double VorlynDeviceUpgradeLoadingDialog::now() const
{
    return ZRThread::currentSeconds();
}

void VorlynDeviceUpgradeLoadingDialog::pause(unsigned long milliseconds)
{
    ZRThread::sleep(milliseconds);
}

double VorlynDeviceUpgradeLoadingDialog::shortSearch() const
{
    return 0.2; // lets the countdown move, and a stop be quick
}
