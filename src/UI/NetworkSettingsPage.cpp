#include "NetworkSettingsPage.h"

#include "VorlynDeviceIpSettingsWidget.h"
#include "ZRNamedChild.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <iterator>

namespace {
bool showAlike(const VorlynDevice &a, const VorlynDevice &b)
{
    using Value = QString (VorlynDevice::*)() const;
    static constexpr Value values[] = {&VorlynDevice::mac, &VorlynDevice::ipMode, &VorlynDevice::ip,
        &VorlynDevice::netmask, &VorlynDevice::gateway, &VorlynDevice::dns1, &VorlynDevice::dns2};
    return std::all_of(std::begin(values), std::end(values),
        [&](Value value) { return (a.*value)() == (b.*value)(); });
}
}

NetworkSettingsPage::NetworkSettingsPage(QWidget *parent) :
    TickedDevicesPage(parent),
    hintLabel(namedChild<QLabel>(this, "hintLabel"))
{
    hintLabel->setWordWrap(true);
    hintLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setEnabled(false); // until there is a device
    setTexts();
    makeForm();
}

void NetworkSettingsPage::setDevicesWidget(VorlynDevicesWidget *widget)
{
    TickedDevicesPage::setDevicesWidget(widget);
    form->setDevice(device_, widget);
}

void NetworkSettingsPage::setDevice(const VorlynDevice &device)
{
    const bool keepsInput = showAlike(device, device_);
    const Input before = input();
    TickedDevicesPage::setDevice(device);
    form->setDevice(device_, devicesWidget);
    if (keepsInput)
        setInput(before);
    setEnabled(device_.isValid());
}

void NetworkSettingsPage::onLanguageChanged()
{
    setTexts();
    const Input before = input();
    delete form;
    makeForm();
    setInput(before);
}

void NetworkSettingsPage::setTexts()
{
    TickedDevicesPage::onLanguageChanged();
    hintLabel->setText(translate(QStringLiteral("Network Settings Hint")));
}

void NetworkSettingsPage::makeForm()
{
    form = namedChild<VorlynDeviceIpSettingsWidget>(this, "form");
    for (const QPushButton *button : form->findChildren<QPushButton *>())
        connect(button, &QPushButton::clicked, this, &NetworkSettingsPage::written);
    form->setDevice(device_, devicesWidget);
    layOut();
    form->show();
}

NetworkSettingsPage::Input NetworkSettingsPage::input() const
{
    Input input = {form->findChild<QComboBox *>()->currentIndex(), {}};
    for (const QLineEdit *edit : form->findChildren<QLineEdit *>())
        input.texts.append(edit->text());
    return input;
}

void NetworkSettingsPage::setInput(const Input &input)
{
    form->findChild<QComboBox *>()->setCurrentIndex(input.mode);
    const QList<QLineEdit *> edits = form->findChildren<QLineEdit *>();
    for (int i = 0; i < edits.size(); ++i)
        edits[i]->setText(input.texts[i]);
}

void NetworkSettingsPage::resizeEvent(QResizeEvent *event)
{
    TickedDevicesPage::resizeEvent(event);
    layOut();
}

void NetworkSettingsPage::layOut()
{
    constexpr int margin = 10;
    constexpr int formWidth = 280;
    constexpr int hintWidth = 420;
    constexpr int lineHeight = 20;
    form->setGeometry(0, 0, formWidth, height());
    const int x = formWidth + margin;
    tickedLabel->setGeometry(x, margin, hintWidth, lineHeight);
    hintLabel->setGeometry(x, 3 * margin + lineHeight, hintWidth, 160);
}
