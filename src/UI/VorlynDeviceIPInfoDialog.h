#pragma once

#include "VorlynDevice.h"
#include "VorlynDeviceNetworkForm.h"
#include "ZRDialog.h"

// The network settings of one device as a modal form: construct, setDevice(), exec(). It closes
// when they have been sent, whatever the device answers.
class VorlynDeviceIPInfoDialog : public ZRDialog
{
    Q_OBJECT

public:
    explicit VorlynDeviceIPInfoDialog(QWidget *parent);

    // The table is not owned; it learns of the change.
    void setDevice(const VorlynDevice &device, VorlynDevicesWidget *devicesWidget);

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void onComboBoxIndexChanged(int index);
    void onClickSetButton(bool checked);
    void onClickCancelButton(bool checked);

private:
    VorlynDevice device;
    VorlynDevicesWidget *devicesWidget;
    VorlynDeviceNetworkForm form;
    QPushButton *setButton;
    QPushButton *cancelButton;
};
