#pragma once

#include "VorlynDeviceContentWidget.h"
#include "ZRLocalize.h"

class QLabel;
class QLineEdit;
class QPushButton;
class ZRLabel;

// The bottom panel of the window: what is known of one device, and the four actions on it. An
// empty record disables the whole panel.
class VorlynDeviceIPToolWidget : public VorlynDeviceContentWidget, public ZRLocalize
{
public:
    explicit VorlynDeviceIPToolWidget(QWidget *parent);

    void setDevice(const VorlynDevice &device) override;
    void onLanguageChanged() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void onClickNameSetButton();
    void onClickIpSetButton();
    void onClickUpgradeButton();
    void onClickRestoreButton();
    void layOut();

    QLabel *titleLabel;
    QLabel *nameLabel;
    QLineEdit *nameEdit;
    QPushButton *nameSetButton;
    QLabel *ipLabel;
    QLabel *ipValueLabel;
    QPushButton *ipSetButton;
    QLabel *versionLabel;
    ZRLabel *versionValueLabel;
    QPushButton *upgradeButton;
    QPushButton *restoreButton;
};
