#include "VorlynDeviceIPToolWidget.h"

#include "DialogCalls.h"
#include "VorlynDeviceIPInfoDialog.h"
#include "VorlynDeviceSettingsDialog.h"
#include "ZRAlertDialog.h"
#include "ZRLabel.h"
#include "ZRNamedChild.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
// A row of three below `above`. A value in an edit field is as high as a button.
void placeRow(const QWidget *above, QWidget *caption, QWidget *value, bool isEdit, QWidget *button)
{
    const int y = above->geometry().bottom();
    caption->setGeometry(10, y + 10, 120, 30);
    const int valueX = caption->geometry().right() + 10;
    if (isEdit)
        value->setGeometry(valueX, y + 13, 150, 24);
    else
        value->setGeometry(valueX, y + 10, 150, 30);
    button->setGeometry(value->geometry().right() + 10, y + 13, 130, 24);
}
}

VorlynDeviceIPToolWidget::VorlynDeviceIPToolWidget(QWidget *parent) :
    VorlynDeviceContentWidget(parent),
    titleLabel(namedChild<QLabel>(this, "titleLabel")),
    nameLabel(namedChild<QLabel>(this, "nameLabel")),
    nameEdit(namedChild<QLineEdit>(this, "nameEdit")),
    nameSetButton(namedChild<QPushButton>(this, "nameSetButton")),
    ipLabel(namedChild<QLabel>(this, "ipLabel")),
    ipValueLabel(namedChild<QLabel>(this, "ipValueLabel")),
    ipSetButton(namedChild<QPushButton>(this, "ipSetButton")),
    versionLabel(namedChild<QLabel>(this, "versionLabel")),
    versionValueLabel(namedChild<ZRLabel>(this, "versionValueLabel")),
    upgradeButton(namedChild<QPushButton>(this, "upgradeButton")),
    restoreButton(namedChild<QPushButton>(this, "restoreButton"))
{
    versionValueLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    versionValueLabel->setCursor(Qt::PointingHandCursor); // a click does nothing all the same

    const struct {
        QPushButton *button;
        void (VorlynDeviceIPToolWidget::*slot)();
    } clicks[] = {
        {nameSetButton, &VorlynDeviceIPToolWidget::onClickNameSetButton},
        {ipSetButton, &VorlynDeviceIPToolWidget::onClickIpSetButton},
        {upgradeButton, &VorlynDeviceIPToolWidget::onClickUpgradeButton},
        {restoreButton, &VorlynDeviceIPToolWidget::onClickRestoreButton},
    };
    for (const auto &click : clicks)
        connect(click.button, &QPushButton::clicked, this, click.slot);
    VorlynDeviceIPToolWidget::onLanguageChanged();
}

void VorlynDeviceIPToolWidget::setDevice(const VorlynDevice &device)
{
    VorlynDeviceContentWidget::setDevice(device);
    setEnabled(device.isValid());
    nameEdit->setText(device.name());
    ipValueLabel->setText(
        device.isValid() ? QStringLiteral("%1(%2)").arg(device.ip(), device.ipMode()) : QString());
    versionValueLabel->setText(device.version());
}

void VorlynDeviceIPToolWidget::onLanguageChanged()
{
    titleLabel->setText(translate(QStringLiteral("Device Settings")));
    nameLabel->setText(translate(QStringLiteral("Device Name")));
    nameSetButton->setText(translate(QStringLiteral("Set")));
    ipLabel->setText(translate(QStringLiteral("IP Address")));
    ipSetButton->setText(translate(QStringLiteral("Set")));
    versionLabel->setText(translate(QStringLiteral("Firmware Version")));
    upgradeButton->setText(translate(QStringLiteral("Upgrade Firmware")));
    restoreButton->setText(translate(QStringLiteral("Restore")));
    layOut();
}

void VorlynDeviceIPToolWidget::resizeEvent(QResizeEvent *event)
{
    VorlynDeviceContentWidget::resizeEvent(event);
    layOut();
}

void VorlynDeviceIPToolWidget::layOut()
{
    titleLabel->adjustSize();
    titleLabel->setGeometry(10, 10, titleLabel->width(), 30);
    placeRow(titleLabel, nameLabel, nameEdit, true, nameSetButton);
    placeRow(nameLabel, ipLabel, ipValueLabel, false, ipSetButton);
    placeRow(ipLabel, versionLabel, versionValueLabel, false, upgradeButton);
    const QRect above = upgradeButton->geometry();
    restoreButton->setGeometry(above.left(), above.bottom() + 13, 130, 24);
}

void VorlynDeviceIPToolWidget::onClickNameSetButton()
{
    const QString name = nameEdit->text();
    if (name.isEmpty()) {
        showToast(translate(QStringLiteral("Please Input Name")),
            Qt::AlignHCenter | Qt::AlignBottom, 5, 5);
        return;
    }
    writeDevices<VorlynDeviceNameSettingsDialog>(devicesWidget, {device_}, {name});
}

void VorlynDeviceIPToolWidget::onClickIpSetButton()
{
    VorlynDeviceIPInfoDialog dialog(nullptr);
    dialog.setDevice(device_, devicesWidget);
    dialog.exec();
}

void VorlynDeviceIPToolWidget::onClickUpgradeButton()
{
    const QString path = chooseFile();
    if (!path.isEmpty())
        writeDevices<VorlynDeviceFirmwareSettingsDialog>(devicesWidget, {device_}, {path});
}

void VorlynDeviceIPToolWidget::onClickRestoreButton()
{
    if (ZRAlertDialog::alert(translate(QStringLiteral("Restore Device"))) != QDialog::Accepted)
        return;
    VorlynDeviceRestoreSettingsDialog dialog(nullptr);
    dialog.setDevices({device_});
    startAndExec(dialog);
}
