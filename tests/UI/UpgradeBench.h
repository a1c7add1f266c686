#pragma once

#include "CameraBench.h"
#include "FleetProcess.h"
#include "UpgradeTable.h"
#include "VorlynDeviceUpgradeDialog.h"

#include <QJsonArray>
#include <QTemporaryDir>

#include <array>
#include <memory>

// The cameras of a house, and the upgrade dialog with a firmware file of version 2.5.1 for them.
// Thread: the GUI's.
class UpgradeBench
{
public:
    struct Result {
        bool succeeded;
        const char *version;
    };
    // Entries of a scenario. The second camera refuses the file and the third breaks off; the
    // fourth comes back with another address and the fifth never. The first and the sixth do as
    // they should.
    static QJsonArray sixCameras();
    // What comes of them, in their order.
    static const std::array<Result, 6> sixResults;

    UpgradeBench();

    // True when so many cameras, with these entries of a scenario, listen, and so do we.
    bool open(int count, const QJsonArray &cameras);
    // Shows the dialog with all cameras, sorted. False when a search finds fewer.
    bool listAll();

    FleetProcess *fleet() const { return fleet_.get(); } // null before open()
    VorlynDeviceUpgradeDialog &dialog() { return dialog_; }
    const UpgradeTable &table() const { return table_; }

private:
    QTemporaryDir folder;
    CameraBench cameras;
    std::unique_ptr<FleetProcess> fleet_;
    int count = 0;
    VorlynDeviceUpgradeDialog dialog_;
    UpgradeTable table_;
};
