#pragma once

#include "VorlynDevice.h"
#include "VorlynDeviceNetworkForm.h"
#include "ZRWidget.h"

class ZRLabel;

// The network settings form as a panel, 260 by 230 pixels at least. Set writes its one device; Set
// All writes every ticked device of the table, with consecutive addresses.
class VorlynDeviceIpSettingsWidget : public ZRWidget
{
    Q_OBJECT

public:
    explicit VorlynDeviceIpSettingsWidget(QWidget *parent);

    // The table is not owned; Set All needs it.
    void setDevice(const VorlynDevice &device, VorlynDevicesWidget *devicesWidget);

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void onComboBoxIndexChanged(int index);
    void onClickSetButton(bool checked);
    void onClickSetAllButton(bool checked);

private:
    // Shows what is wrong with the form, if anything is.
    bool check();

    VorlynDevice device;
    VorlynDevicesWidget *devicesWidget;
    ZRLabel *toast;
    VorlynDeviceNetworkForm form;
    QPushButton *setButton;
    QPushButton *setAllButton;
};
