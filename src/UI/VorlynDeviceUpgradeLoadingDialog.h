#pragma once

#include "VorlynDevice.h"
#include "ZRProgressDialog.h"

class VorlynDeviceUpgradeDialog;
class VorlynSDK;

// The job of an upgrade, under a busy bar: uploads the firmware to one device after the other,
// waits for as long as 3 minutes until all are back, and hands what it saw to the upgrade dialog.
// In use: construct, setUpgradeDialog(), start(), exec(). A stop ends an upload or a wait at once,
// and what a short search sees is the result then.
class VorlynDeviceUpgradeLoadingDialog : public ZRProgressDialog
{
public:
    explicit VorlynDeviceUpgradeLoadingDialog(QWidget *parent);
    ~VorlynDeviceUpgradeLoadingDialog() override;

    void run() override;
    void cancel() override;

    // Not owned; its devices and firmware don't change while the job runs.
    void setUpgradeDialog(VorlynDeviceUpgradeDialog *dialog);
    // Puts each record of `latest` in place of that of the same MAC in `found`, or behind them all.
    static void mergeDevices(QVector<VorlynDevice> &found, const QVector<VorlynDevice> &latest);

protected:
    // The clock of the wait, in seconds, and how time is passed there. On the worker thread.
    virtual double now() const;
    virtual void pause(unsigned long milliseconds);
    // Seconds of a poll, and of the last search after a stop. On the worker thread.
    virtual double shortSearch() const;

private:
    // Returns how many devices took the firmware.
    int uploadToAll(VorlynSDK &sdk);
    // `latest` is what the last poll saw.
    void waitForRestart(VorlynSDK &sdk, QVector<VorlynDevice> &latest);
    bool areAllIn(const QVector<VorlynDevice> &found) const;
    void showResult(VorlynSDK &sdk, const QVector<VorlynDevice> &latest);
    void setSecondsLeft(int seconds);

    VorlynDeviceUpgradeDialog *upgradeDialog;
};
