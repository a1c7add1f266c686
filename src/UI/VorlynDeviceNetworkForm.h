#pragma once

#include "VorlynDevice.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;
class VorlynDevicesWidget;

// The rows of the network settings form, children of the dialog or panel that shows it, with what
// both do alike: fill, place, check and write.
class VorlynDeviceNetworkForm
{
public:
    explicit VorlynDeviceNetworkForm(QWidget *host);

    void fill(const VorlynDevice &device);
    // In DHCP mode, index 0, the rows below the mode are disabled and keep their texts.
    void enableRows(int modeIndex);
    // The two buttons form the last row.
    void place(QPushButton *left, QPushButton *right);
    // The text to show to the operator, empty when the form may be written. DHCP always may.
    QString problem() const;
    // Runs the batch dialog: DHCP for all, or the address of the form for the first device and the
    // next one up for each later one, all else alike.
    void write(const QVector<VorlynDevice> &devices, VorlynDevicesWidget *devicesWidget) const;

    QLabel *modeLabel;
    QComboBox *modeComboBox;
    QLabel *ipLabel;
    QLabel *spareLabel1; // the spare ones have no text and no place
    QLabel *gatewayLabel;
    QLabel *netmaskLabel;
    QLabel *spareLabel2;
    QLineEdit *ipEdit;
    QLineEdit *gatewayEdit;
    QLineEdit *netmaskEdit;
    QLabel *dns1Label;
    QLineEdit *dns1Edit;
    QLabel *dns2Label;
    QLineEdit *dns2Edit;

private:
    bool isDhcp() const;
};
