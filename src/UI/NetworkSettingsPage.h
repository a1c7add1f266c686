#pragma once

#include "TickedDevicesPage.h"

class VorlynDeviceIpSettingsWidget;

// The network settings form as a panel of the bench, beside what its two buttons write to. An
// empty record disables it. What was typed stays until a record comes that is another device's, by
// its MAC, or has other network values.
class NetworkSettingsPage : public TickedDevicesPage
{
    Q_OBJECT

public:
    explicit NetworkSettingsPage(QWidget *parent);

    void setDevicesWidget(VorlynDevicesWidget *widget) override;
    void setDevice(const VorlynDevice &device) override;
    void onLanguageChanged() override;

signals:
    // A button has done its work, and the table may have changed.
    void written();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Input {
        int mode; // by its index
        QStringList texts; // in the form's order
    };

    void setTexts();
    // It takes its texts when it is made.
    void makeForm();
    Input input() const;
    void setInput(const Input &input);
    void layOut();

    QLabel *hintLabel;
    VorlynDeviceIpSettingsWidget *form = nullptr;
};
