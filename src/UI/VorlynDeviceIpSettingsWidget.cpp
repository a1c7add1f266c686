#include "VorlynDeviceIpSettingsWidget.h"

#include "VorlynDevicesWidget.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"
#include "ZRToastLabel.h"

#include <QComboBox>
#include <QPushButton>

VorlynDeviceIpSettingsWidget::VorlynDeviceIpSettingsWidget(QWidget *parent) :
    ZRWidget(parent),
    devicesWidget(nullptr),
    toast(nullptr),
    form(this),
    setButton(namedChild<QPushButton>(this, "setButton")),
    setAllButton(namedChild<QPushButton>(this, "setAllButton"))
{
    setButton->setText(ZRLocalize::translate(QStringLiteral("Set")));
    setAllButton->setText(ZRLocalize::translate(QStringLiteral("Set All")));
    setMinimumSize(260, 230);
    connect(form.modeComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &VorlynDeviceIpSettingsWidget::onComboBoxIndexChanged);
    connect(
        setButton, &QPushButton::clicked, this, &VorlynDeviceIpSettingsWidget::onClickSetButton);
    connect(setAllButton, &QPushButton::clicked, this,
        &VorlynDeviceIpSettingsWidget::onClickSetAllButton);
}

void VorlynDeviceIpSettingsWidget::setDevice(
    const VorlynDevice &device, VorlynDevicesWidget *devicesWidget)
{
    this->device = device;
    this->devicesWidget = devicesWidget;
    form.fill(device);
}

void VorlynDeviceIpSettingsWidget::onComboBoxIndexChanged(int index)
{
    form.enableRows(index);
}

void VorlynDeviceIpSettingsWidget::onClickSetButton(bool)
{
    if (check())
        form.write({device}, devicesWidget);
}

void VorlynDeviceIpSettingsWidget::onClickSetAllButton(bool)
{
    if (check())
        form.write(devicesWidget->selectedDevices(), devicesWidget);
}

bool VorlynDeviceIpSettingsWidget::check()
{
    const QString problem = form.problem();
    if (problem.isEmpty())
        return true;
    ZRToastLabel::remove(toast);
    toast = ZRToastLabel::show(this, problem, Qt::AlignHCenter | Qt::AlignBottom, 5, 5,
        [this] { ZRToastLabel::remove(toast); });
    return false;
}

void VorlynDeviceIpSettingsWidget::resizeEvent(QResizeEvent *event)
{
    ZRWidget::resizeEvent(event);
    form.place(setButton, setAllButton);
}
