#pragma once

#include "VorlynDevice.h"
#include "ZRDialog.h"

class QPushButton;
class QTableWidget;

// An upgrade of several devices with a line for each: what is to be upgraded, then what came of it.
// In use: construct, setFirmware(), setDevices(), show; the button starts the upgrade. The device
// table is told nothing, a new search is what brings the new versions there.
class VorlynDeviceUpgradeDialog : public ZRDialog
{
    Q_OBJECT

public:
    explicit VorlynDeviceUpgradeDialog(QWidget *parent);
    ~VorlynDeviceUpgradeDialog() override;

    // The version that a firmware file is named after: 1.2.3 of C:/fw/1.2.3.bin.
    static QString firmwareBaseName(const QString &path);

    // True once an upgrade has been started, whatever came of it.
    bool hasRun() const { return hasRun_; }

public slots:
    // Returns when the upgrade has ended, or the operator has ended it.
    void startUpgrade();
    // One line each, in order, with no result yet.
    void setDevices(QVector<VorlynDevice> devices);
    void setFirmware(QString firmware);
    // The devices as they were seen after the upgrade; fills the results in.
    void setUpgrades(QVector<VorlynDevice> upgrades);

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void setupTableWidget();
    // From another thread it acts when the GUI thread's event loop next runs.
    void updateUpgradeInfo();
    // The last entry with the device's MAC, or null. It lives as long as the caller's list.
    const VorlynDevice *findDevice(QVector<VorlynDevice> upgrades, VorlynDevice device);

private:
    // The job reads what is to be done, writes `upgrades` and asks for the update.
    friend class VorlynDeviceUpgradeLoadingDialog;

    void updateButton();

    QString firmware; // path of the file
    QVector<VorlynDevice> devices;
    QVector<VorlynDevice> upgrades;
    QTableWidget *tableWidget;
    QPushButton *upgradeButton;
    bool hasRun_ = false;
};
