#include "TickedDevicesPage.h"

#include "VorlynDevicesWidget.h"
#include "ZRNamedChild.h"

#include <QLabel>
#include <QTimer>

namespace {
const int lookMs = 150; // the table tells nobody of its ticks
}

TickedDevicesPage::TickedDevicesPage(QWidget *parent) :
    VorlynDeviceContentWidget(parent),
    tickedLabel(namedChild<QLabel>(this, "tickedLabel")),
    timer(new QTimer(this))
{
    timer->setInterval(lookMs);
    connect(timer, &QTimer::timeout, this, &TickedDevicesPage::look);
}

void TickedDevicesPage::onLanguageChanged()
{
    showTicked(ticked);
}

void TickedDevicesPage::showEvent(QShowEvent *event)
{
    VorlynDeviceContentWidget::showEvent(event);
    look();
    timer->start();
}

void TickedDevicesPage::hideEvent(QHideEvent *event)
{
    timer->stop();
    VorlynDeviceContentWidget::hideEvent(event);
}

void TickedDevicesPage::showTicked(int count)
{
    tickedLabel->setText(QStringLiteral("%1: %2").arg(
        translate(QStringLiteral("Ticked Devices")), QString::number(count)));
}

void TickedDevicesPage::look()
{
    const int count = devicesWidget ? devicesWidget->selectedDevices().size() : 0;
    if (count == ticked)
        return;
    ticked = count;
    showTicked(ticked);
}
