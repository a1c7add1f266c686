#include "FirmwareUpgradePage.h"

#include "DialogCalls.h"
#include "VorlynDeviceUpgradeDialog.h"
#include "VorlynDevicesWidget.h"
#include "ZRAlertDialog.h"
#include "ZRLabel.h"
#include "ZRNamedChild.h"
#include "ZRText.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

FirmwareUpgradePage::FirmwareUpgradePage(QWidget *parent) :
    TickedDevicesPage(parent),
    fileLabel(namedChild<QLabel>(this, "fileLabel")),
    firmwareLabel(namedChild<ZRLabel>(this, "firmwareLabel")),
    selectButton(namedChild<QPushButton>(this, "selectButton")),
    upgradeButton(namedChild<QPushButton>(this, "upgradeButton")),
    hintLabel(namedChild<QLabel>(this, "hintLabel"))
{
    firmwareLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    firmwareLabel->setMargins(4, 0, 4, 0);
    firmwareLabel->setBorder(0, 1, QColor(176, 176, 176));
    firmwareLabel->setBackgroundColor(Qt::white);
    firmwareLabel->setFixedSize(360, 24);
    upgradeButton->setMinimumHeight(30);
    hintLabel->setWordWrap(true);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(10, 10, 10, 10);
    grid->setSpacing(10);
    grid->addWidget(fileLabel, 0, 0);
    grid->addWidget(firmwareLabel, 0, 1);
    grid->addWidget(selectButton, 0, 2);
    grid->addWidget(tickedLabel, 1, 0, 1, 2);
    grid->addWidget(upgradeButton, 1, 2);
    grid->addWidget(hintLabel, 2, 0, 1, 3);
    grid->setRowStretch(3, 1);
    grid->setColumnStretch(3, 1);

    connect(selectButton, &QPushButton::clicked, this, &FirmwareUpgradePage::onClickSelectButton);
    connect(upgradeButton, &QPushButton::clicked, this, &FirmwareUpgradePage::onClickUpgradeButton);
    FirmwareUpgradePage::onLanguageChanged();
}

void FirmwareUpgradePage::onLanguageChanged()
{
    TickedDevicesPage::onLanguageChanged();
    fileLabel->setText(translate(QStringLiteral("Firmware File")));
    selectButton->setText(translate(QStringLiteral("Select")));
    upgradeButton->setText(translate(QStringLiteral("Upgrade Firmware")));
    hintLabel->setText(translate(QStringLiteral("Firmware Upgrade Hint")));
}

void FirmwareUpgradePage::showTicked(int count)
{
    TickedDevicesPage::showTicked(count);
    upgradeButton->setEnabled(count > 0);
}

void FirmwareUpgradePage::onClickSelectButton()
{
    const QString path = chooseFile();
    if (path.isEmpty())
        return;
    firmwarePath = path;
    firmwareLabel->setText(fileNameOf(path));
    firmwareLabel->setToolTip(path);
}

void FirmwareUpgradePage::onClickUpgradeButton()
{
    if (firmwarePath.isEmpty()) {
        showToast(translate(QStringLiteral("Please select firmware file")));
        return;
    }
    VorlynDeviceUpgradeDialog dialog(nullptr);
    dialog.setFirmware(firmwarePath);
    dialog.setDevices(devicesWidget->selectedDevices());
    dialog.exec();
    if (dialog.hasRun()
        && ZRAlertDialog::alert(translate(QStringLiteral("Search Devices Again")))
            == QDialog::Accepted)
        emit searchRequested();
}
