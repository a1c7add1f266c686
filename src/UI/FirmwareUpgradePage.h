#pragma once

#include "TickedDevicesPage.h"

class QPushButton;
class ZRLabel;

// The supervised upgrade as a panel of the bench: a firmware file, and the dialog that brings it to
// the ticked devices and tells what came of each. It has no use for the current device.
class FirmwareUpgradePage : public TickedDevicesPage
{
    Q_OBJECT

public:
    explicit FirmwareUpgradePage(QWidget *parent);

    void onLanguageChanged() override;

signals:
    // After an upgrade: what the table shows is that of the search before.
    void searchRequested();

protected:
    void showTicked(int count) override;

private:
    void onClickSelectButton();
    void onClickUpgradeButton();

    QString firmwarePath; // empty until one is chosen
    QLabel *fileLabel;
    ZRLabel *firmwareLabel; // the file's name
    QPushButton *selectButton;
    QPushButton *upgradeButton;
    QLabel *hintLabel;
};
