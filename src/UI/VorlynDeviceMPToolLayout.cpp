#include "PTZPad.h"
#include "VorlynDeviceMPToolWidget.h"
#include "WiFiInfoWidget.h"
#include "ZRLabel.h"
#include "ZRNamedChild.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>

namespace {
const int rowHeight = 24;
const int gap = 6;
const int startHeight = 80;
const int captionWidth = 104; // at least; so the two forms of the left column line up
const int valueWidth = 130; // at least; shows a MAC whole

const char startStyle[] =
    "QPushButton { font: bold 20px; color: white; background: #607d1e; border-radius: 4px; }"
    "QPushButton:hover { background: #6d8d24; }"
    "QPushButton:pressed { background: #4b6217; }"
    "QPushButton:focus { border: 2px solid #303437; }"
    "QPushButton:disabled { color: #7b7e74; background: #d3d6c9; }";

// Parts side by side or one above the other, without a frame.
template <class Layout> Layout *makeLayout()
{
    auto *layout = new Layout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(gap);
    return layout;
}

// To be read from two metres: at 96 dpi its capitals are about 5 mm high, a four-hundredth of that.
void setLogFont(QTextEdit *log)
{
    QFont font = log->font();
    font.setPixelSize(28);
    font.setBold(true);
    log->setFont(font);
}
}

VorlynDeviceMPToolWidget::VorlynDeviceMPToolWidget(QWidget *parent) :
    VorlynDeviceContentWidget(parent),
    testThread(nullptr),
    runTimer(new QTimer(this))
{
    auto *columns = new QHBoxLayout(this);
    columns->setContentsMargins(8, 4, 8, 8);
    columns->setSpacing(8);
    columns->addLayout(makeDeviceColumn(), 2);
    columns->addLayout(makeTestColumn());
    columns->addLayout(makeSide());
    columns->addWidget(makeLog(), 5);

    connect(runTimer, &QTimer::timeout, this, &VorlynDeviceMPToolWidget::unlockAfterRun);
    VorlynDeviceMPToolWidget::onLanguageChanged();
    refreshControls();
}

void VorlynDeviceMPToolWidget::onLanguageChanged()
{
    for (const Caption &caption : captions)
        caption.widget->setProperty(caption.property, translate(QLatin1String(caption.key)));
    startTestButton->setShortcut(Qt::Key_F5); // which a new text takes away
}

QLayout *VorlynDeviceMPToolWidget::makeDeviceColumn()
{
    auto *column = makeLayout<QVBoxLayout>();
    column->addWidget(makeGroup("Device", makeIdentity()));
    column->addWidget(makeGroup("Firmware", makeFirmware()));
    column->addStretch();
    return column;
}

QLayout *VorlynDeviceMPToolWidget::makeIdentity()
{
    using Panel = VorlynDeviceMPToolWidget;
    macEdit = addEdit("macEdit");
    nameEdit = addEdit("nameEdit");
    ipValue = addValue("ipValue");
    p2pIdValue = addValue("p2pIdValue");
    functionIdValue = addValue("functionIdValue");
    const struct {
        const char *caption;
        QWidget *value;
        const char *button;
        const char *buttonText;
        Click click;
    } rows[] = {
        {"Mac", macEdit, "macSettingButton", "Set", &Panel::onClickMacSettingButton},
        {"Device Name", nameEdit, "nameSettingButton", "Set", &Panel::onClickNameSettingButton},
        {"IP Address", ipValue, "ipSettingButton", "Set", &Panel::onClickIpSettingButton},
        {"P2P ID", p2pIdValue, "p2pIdSettingButton", "From File",
            &Panel::onClickP2PIdSettingButton},
        {"Function ID", functionIdValue, "functionIdSettingButton", "From File",
            &Panel::onClickFunctionIdSettingButton},
    };
    auto *form = makeLayout<QGridLayout>();
    QWidget *above = nullptr;
    for (const auto &row : rows) {
        QWidget *button = addButton(row.button, row.buttonText, row.click, Needs::Device);
        addRow(form, row.caption, row.value, button);
        setTabOrder(above, row.value);
        setTabOrder(row.value, button);
        above = button;
    }
    return form;
}

QLayout *VorlynDeviceMPToolWidget::makeFirmware()
{
    using Panel = VorlynDeviceMPToolWidget;
    versionValue = addValue("versionValue");
    versionLabel = addFileLabel("versionLabel");
    QPushButton *version =
        addButton("testVersionButton", "Select", &Panel::onClickTestVersionButton, Needs::Nothing);
    firmwareLabel = addFileLabel("firmwareLabel");
    QPushButton *file =
        addButton("selectButton", "Select", &Panel::onClickSelectButton, Needs::Nothing);
    QPushButton *upgrade =
        addButton("upgradeButton", "Upgrade Firmware", &Panel::onClickUpgradeButton, Needs::Device);
    QPushButton *upgradeAll = addButton(
        "upgradeAllButton", "Upgrade All", &Panel::onClickUpgradeAllButton, Needs::Nothing);
    QPushButton *restore =
        addButton("restoreButton", "Restore", &Panel::onClickRestoreButton, Needs::Device);
    captions += {
        {version, "toolTip", "Version from File Name"},
        {upgrade, "toolTip", "Write to Ticked Devices"},
        {upgradeAll, "toolTip", "Upgrade All Ticked Devices"},
        {restore, "toolTip", "Write to Ticked Devices"},
    };

    auto *form = makeLayout<QGridLayout>();
    addRow(form, "Firmware Version", versionValue, nullptr);
    addRow(form, "Expected Version", versionLabel, version);
    addRow(form, "Firmware File", firmwareLabel, file);
    auto *actions = makeLayout<QHBoxLayout>();
    for (QPushButton *button : {upgrade, upgradeAll, restore})
        actions->addWidget(button);
    form->addLayout(actions, form->rowCount(), 0, 1, 3);
    return form;
}

QLayout *VorlynDeviceMPToolWidget::makeTestColumn()
{
    using Panel = VorlynDeviceMPToolWidget;

    auto *tests = makeLayout<QGridLayout>();
    startTestButton = addButton(
        "startTestButton", "Run Auto Test", &Panel::onClickStartTestButton, Needs::Device);
    startTestButton->setStyleSheet(QLatin1String(startStyle));
    startTestButton->setMinimumHeight(startHeight);
    tests->addWidget(startTestButton, 0, 0, 1, 2);

    const struct {
        const char *name;
        const char *key;
        Click click;
        Needs needs;
    } buttons[] = {
        {"manualTestStartButton", "Start Manual Test", &Panel::manualTestStart, Needs::Device},
        {"manualTestStopButton", "End Manual Test", &Panel::manualTestStop, Needs::Device},
        {"speakerButton", "Speaker", &Panel::onClickSpeakerButton, Needs::Device},
        {"microphoneButton", "Microphone", &Panel::testMicrophone, Needs::Device},
        {"whiteLightOnButton", "White Light On", &Panel::onClickWhiteLightOnButton,
            Needs::WhiteLight},
        {"whiteLightOffButton", "White Light Off", &Panel::onClickWhiteLightOffButton,
            Needs::WhiteLight},
        {"irCutDayButton", "IR-Cut Day", &Panel::onClickIRCutDayButton, Needs::Device},
        {"irCutNightButton", "IR-Cut Night", &Panel::onClickIRCutNightButton, Needs::Device},
        {"irCutAutoButton", "IR-Cut Auto", &Panel::onClickIRCutAutoButton, Needs::Device},
        {"streamButton", "Video and Audio", &Panel::testStream, Needs::Device},
    };
    int cell = 2; // of two columns, below the start button
    for (const auto &button : buttons) {
        tests->addWidget(
            addButton(button.name, button.key, button.click, button.needs), cell / 2, cell % 2);
        ++cell;
    }

    auto *label = makeLayout<QVBoxLayout>();
    label->addWidget(
        addButton("qrCodeButton", "Print QR Label", &Panel::onClickQRCodeButton, Needs::Device));

    auto *column = makeLayout<QVBoxLayout>();
    column->addWidget(makeGroup("Tests", tests));
    column->addWidget(makeGroup("Label", label));
    column->addStretch();
    return column;
}

QLayout *VorlynDeviceMPToolWidget::makeSide()
{
    wifiInfoWidget = namedChild<WiFiInfoWidget>(this, "wifiInfoWidget");
    wifiInfoWidget->setMinimumSize(160, 100);
    auto *wifi = makeLayout<QVBoxLayout>();
    wifi->addWidget(wifiInfoWidget, 1);
    wifi->addWidget(addButton(
        "loadWiFiButton", "Load WiFi", &VorlynDeviceMPToolWidget::loadWiFiInfo, Needs::WiFi));

    pad = namedChild<PTZPad>(this, "ptzPad");
    connect(pad, &PTZPad::command, this, &VorlynDeviceMPToolWidget::setPTZ);
    controls.append({pad, Needs::Device});
    auto *middle = makeLayout<QGridLayout>();
    middle->addWidget(pad, 0, 0, Qt::AlignCenter);

    auto *side = makeLayout<QVBoxLayout>();
    side->addLayout(wifi, 1);
    side->addWidget(makeGroup("Pan and Tilt", middle));
    return side;
}

QWidget *VorlynDeviceMPToolWidget::makeLog()
{
    logEdit = namedChild<QTextEdit>(this, "logEdit");
    logEdit->setReadOnly(true);
    logEdit->setUndoRedoEnabled(false); // it would keep every line a second time
    setLogFont(logEdit);
    QPalette colors = logEdit->palette();
    colors.setColor(QPalette::Base, Qt::white);
    logEdit->setPalette(colors);
    auto *content = makeLayout<QVBoxLayout>();
    content->addWidget(logEdit);
    return makeGroup("Test Log", content);
}

QWidget *VorlynDeviceMPToolWidget::makeGroup(const char *titleKey, QLayout *content)
{
    auto *group = new QGroupBox(this);
    captions.append({group, "title", titleKey});
    content->setContentsMargins(gap, gap, gap, gap);
    group->setLayout(content);
    return group;
}

void VorlynDeviceMPToolWidget::addRow(
    QGridLayout *form, const char *captionKey, QWidget *value, QWidget *button)
{
    auto *caption = new QLabel(this);
    captions.append({caption, "text", captionKey});
    const int row = form->rowCount();
    form->addWidget(caption, row, 0);
    form->addWidget(value, row, 1);
    if (button)
        form->addWidget(button, row, 2);
    form->setColumnMinimumWidth(0, captionWidth);
    form->setColumnMinimumWidth(1, valueWidth);
    form->setColumnStretch(1, 1);
}

QPushButton *VorlynDeviceMPToolWidget::addButton(
    const char *name, const char *key, Click click, Needs needs)
{
    auto *button = namedChild<QPushButton>(this, name);
    button->setMinimumHeight(rowHeight);
    connect(button, &QPushButton::clicked, this, click);
    captions.append({button, "text", key});
    controls.append({button, needs});
    return button;
}

// A barcode scanner ends its code with Return; its next code then takes the place of the last.
QLineEdit *VorlynDeviceMPToolWidget::addEdit(const char *name)
{
    auto *edit = namedChild<QLineEdit>(this, name);
    connect(edit, &QLineEdit::returnPressed, edit, &QLineEdit::selectAll);
    controls.append({edit, Needs::Device});
    return edit;
}

// Only shown, but can be selected and copied.
QLineEdit *VorlynDeviceMPToolWidget::addValue(const char *name)
{
    auto *value = namedChild<QLineEdit>(this, name);
    value->setReadOnly(true);
    value->setFrame(false);
    value->setFocusPolicy(Qt::ClickFocus);
    value->setMinimumHeight(rowHeight);
    QPalette colors = value->palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    value->setPalette(colors);
    return value;
}

ZRLabel *VorlynDeviceMPToolWidget::addFileLabel(const char *name)
{
    auto *label = namedChild<ZRLabel>(this, name);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    label->setMargins(4, 0, 4, 0);
    label->setBorder(0, 1, QColor(176, 176, 176));
    label->setBackgroundColor(Qt::white);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    label->setFixedHeight(rowHeight);
    return label;
}
