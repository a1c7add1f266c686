#include "VorlynDeviceNetworkForm.h"

#include "NetworkAddress.h"
#include "VorlynDeviceIpSettingsDialog.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
using Form = VorlynDeviceNetworkForm;
enum Mode { Dhcp, Static };

// In their order on the screen, which is also that of the Tab key.
const struct {
    const char *caption;
    QLabel *Form::*label;
    const char *labelName;
    QLineEdit *Form::*edit;
    const char *editName;
    QString (VorlynDevice::*value)() const;
} rows[] = {
    {"IP Address", &Form::ipLabel, "ipLabel", &Form::ipEdit, "ipEdit", &VorlynDevice::ip},
    {"Netmask", &Form::netmaskLabel, "netmaskLabel", &Form::netmaskEdit, "netmaskEdit",
        &VorlynDevice::netmask},
    {"Gateway", &Form::gatewayLabel, "gatewayLabel", &Form::gatewayEdit, "gatewayEdit",
        &VorlynDevice::gateway},
    {"Dns1", &Form::dns1Label, "dns1Label", &Form::dns1Edit, "dns1Edit", &VorlynDevice::dns1},
    {"Dns2", &Form::dns2Label, "dns2Label", &Form::dns2Edit, "dns2Edit", &VorlynDevice::dns2},
};

// The third check reads the address again: a gateway goes out as typed, as the name servers do.
const struct {
    QLineEdit *Form::*edit;
    const char *message;
} checks[] = {
    {&Form::ipEdit, "Please input valid ip address"},
    {&Form::netmaskEdit, "Please input valid netmask"},
    {&Form::ipEdit, "Please input valid gateway"},
};

const int leftX = 10;
const int rightX = 140;
const int columnWidth = 110;
const int rowPitch = 30;

void placeRow(int row, QWidget *left, QWidget *right, int rightWidth, int height)
{
    const int y = 10 + rowPitch * row;
    left->setGeometry(leftX, y, columnWidth, height);
    right->setGeometry(rightX, y, rightWidth, height);
}
}

VorlynDeviceNetworkForm::VorlynDeviceNetworkForm(QWidget *host) :
    modeLabel(namedChild<QLabel>(host, "modeLabel")),
    modeComboBox(namedChild<QComboBox>(host, "modeComboBox")),
    spareLabel1(namedChild<QLabel>(host, "spareLabel1")),
    spareLabel2(namedChild<QLabel>(host, "spareLabel2"))
{
    modeLabel->setText(ZRLocalize::translate(QStringLiteral("IP Mode")));
    modeComboBox->setMinimumWidth(columnWidth);
    modeComboBox->addItem(ZRLocalize::translate(QStringLiteral("DHCP")));
    modeComboBox->addItem(ZRLocalize::translate(QStringLiteral("Static")));
    for (const auto &row : rows) {
        this->*row.label = namedChild<QLabel>(host, row.labelName);
        (this->*row.label)->setText(ZRLocalize::translate(QLatin1String(row.caption)));
        this->*row.edit = namedChild<QLineEdit>(host, row.editName);
    }
    enableRows(modeComboBox->currentIndex());
}

void VorlynDeviceNetworkForm::fill(const VorlynDevice &device)
{
    for (const auto &row : rows)
        (this->*row.edit)->setText((device.*row.value)());
    const bool dhcp = device.ipMode().compare(QLatin1String("DHCP"), Qt::CaseInsensitive) == 0;
    modeComboBox->setCurrentIndex(dhcp ? Dhcp : Static);
    enableRows(modeComboBox->currentIndex()); // the combo box tells of changes only
}

void VorlynDeviceNetworkForm::enableRows(int modeIndex)
{
    for (const auto &row : rows) {
        (this->*row.label)->setEnabled(modeIndex != Dhcp);
        (this->*row.edit)->setEnabled(modeIndex != Dhcp);
    }
}

void VorlynDeviceNetworkForm::place(QPushButton *left, QPushButton *right)
{
    modeComboBox->adjustSize();
    int i = 0;
    placeRow(i++, modeLabel, modeComboBox, modeComboBox->width(), 20);
    for (const auto &row : rows)
        placeRow(i++, this->*row.label, this->*row.edit, columnWidth, 20);
    placeRow(i, left, right, columnWidth, 25);
}

QString VorlynDeviceNetworkForm::problem() const
{
    if (isDhcp())
        return QString();
    for (const auto &check : checks) {
        if (!isValidAddress((this->*check.edit)->text()))
            return ZRLocalize::translate(QLatin1String(check.message));
    }
    return QString();
}

void VorlynDeviceNetworkForm::write(
    const QVector<VorlynDevice> &devices, VorlynDevicesWidget *devicesWidget) const
{
    VorlynDeviceIpSettingsDialog dialog(nullptr);
    if (isDhcp()) {
        dialog.setDhcpDevices(devices);
    } else {
        const int count = devices.size();
        const auto sameForAll = [count](const QLineEdit *edit) {
            return QVector<QString>(count, edit->text());
        };
        QVector<QString> addresses;
        for (QString address = ipEdit->text(); addresses.size() < count;
             address = nextAddress(address))
            addresses.append(address);
        dialog.setStaticDevices(devices, addresses, sameForAll(netmaskEdit),
            sameForAll(gatewayEdit), sameForAll(dns1Edit), sameForAll(dns2Edit));
    }
    dialog.setDevicesWidget(devicesWidget);
    dialog.start();
    dialog.exec();
}

bool VorlynDeviceNetworkForm::isDhcp() const
{
    return modeComboBox->currentIndex() == Dhcp;
}
