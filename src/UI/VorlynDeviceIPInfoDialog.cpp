#include "VorlynDeviceIPInfoDialog.h"

#include "ZRLocalize.h"
#include "ZRNamedChild.h"

#include <QComboBox>
#include <QPushButton>

VorlynDeviceIPInfoDialog::VorlynDeviceIPInfoDialog(QWidget *parent) :
    ZRDialog(parent),
    devicesWidget(nullptr),
    form(this),
    setButton(namedChild<QPushButton>(this, "setButton")),
    cancelButton(namedChild<QPushButton>(this, "cancelButton"))
{
    setButton->setText(ZRLocalize::translate(QStringLiteral("Set")));
    cancelButton->setText(ZRLocalize::translate(QStringLiteral("Cancel")));
    setMinimumSize(260, 230);
    connect(form.modeComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &VorlynDeviceIPInfoDialog::onComboBoxIndexChanged);
    connect(setButton, &QPushButton::clicked, this, &VorlynDeviceIPInfoDialog::onClickSetButton);
    connect(
        cancelButton, &QPushButton::clicked, this, &VorlynDeviceIPInfoDialog::onClickCancelButton);
}

void VorlynDeviceIPInfoDialog::setDevice(
    const VorlynDevice &device, VorlynDevicesWidget *devicesWidget)
{
    this->device = device;
    this->devicesWidget = devicesWidget;
    form.fill(device);
}

void VorlynDeviceIPInfoDialog::onComboBoxIndexChanged(int index)
{
    form.enableRows(index);
}

void VorlynDeviceIPInfoDialog::onClickSetButton(bool)
{
    const QString problem = form.problem();
    if (!problem.isEmpty()) {
        showToast(problem, Qt::AlignHCenter | Qt::AlignBottom, 5, 5);
        return;
    }
    form.write({device}, devicesWidget);
    accept();
}

void VorlynDeviceIPInfoDialog::onClickCancelButton(bool)
{
    reject();
}

void VorlynDeviceIPInfoDialog::resizeEvent(QResizeEvent *event)
{
    ZRDialog::resizeEvent(event);
    form.place(setButton, cancelButton);
}
