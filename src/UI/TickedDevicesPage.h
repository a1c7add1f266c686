#pragma once

#include "VorlynDeviceContentWidget.h"
#include "ZRLocalize.h"

class QLabel;
class QTimer;

// Base of the panels that write to the devices that are ticked in the table. Tells how many there
// are, for as long as it shows. GUI thread.
class TickedDevicesPage : public VorlynDeviceContentWidget, public ZRLocalize
{
public:
    explicit TickedDevicesPage(QWidget *parent);

    void onLanguageChanged() override;

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    // The number has changed, or a text that has it.
    virtual void showTicked(int count);

    QLabel *tickedLabel; // where it stands is up to the derived class

private:
    void look();

    int ticked = 0;
    QTimer *timer;
};
