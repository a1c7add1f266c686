#include "FactoryTestDialogs.h"

#include "PTZPad.h"
#include "SdCardSize.h"
#include "VorlynSDK.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
enum class Pass { Keep, Enable, Disable };
}

// What a reported word shows. Without a text, or a style sheet, the label keeps its own; the font
// goes with the style sheet.
struct FactoryStatus {
    const char *word; // in lower case; null: any
    const char *text;
    const char *styleSheet;
    Pass pass;
};

namespace {
constexpr QSize smallestDialog(520, 320);
constexpr QSize smallestAnswer(140, 44);
constexpr int smallPointSize = 13;
constexpr int largePointSize = 18;

constexpr char good[] = "color: green";
constexpr char bad[] = "color: red";

constexpr FactoryStatus fallTable[] = {
    {"on", nullptr, nullptr, Pass::Enable},
    {nullptr, nullptr, nullptr, Pass::Disable},
};

// A fall is shown as bad news and passes all the same: the sensor works.
constexpr FactoryStatus breeTable[] = {
    {"on", nullptr, nullptr, Pass::Enable},
    {"no body", "Nobody Bree", good, Pass::Enable},
    {"body", "Body Bree", good, Pass::Enable},
    {"fall", "Fall Bree", bad, Pass::Enable},
    {nullptr, "Detected Failure", bad, Pass::Disable},
};

constexpr FactoryStatus cryingTable[] = {
    {"on", "Crying is Detected", nullptr, Pass::Enable},
    {nullptr, "No Crying is Detected", nullptr, Pass::Keep},
};

constexpr FactoryStatus keyTable[] = {
    {"on", "Detected Success", good, Pass::Enable},
    {nullptr, "Detected Failure", bad, Pass::Disable},
};

constexpr FactoryStatus millimeterWaveTable[] = {
    {"on", "Detected Success", good, Pass::Enable},
    {"no body", "Nobody Bree", good, Pass::Enable},
    {"body", "Body Bree", good, Pass::Enable},
    {nullptr, "Detected Failure", bad, Pass::Disable},
};

// Three tests ask for the same.
constexpr char microphonePrompt[] = "Please Test Microphone";

constexpr char waiting[] = "Wait for Device";
constexpr char noReading[] = "No Reading";

const QLatin1String stopCommand("stop");

// A button that is disabled would hand its focus to the other answer, also in a window that is not
// active.
void setPassEnabled(QPushButton *passButton, bool enabled)
{
    QWidget *dialog = passButton->window();
    if (!enabled && dialog->focusWidget() == passButton)
        dialog->setFocus();
    passButton->setEnabled(enabled);
}

QString temperatureText(double temperature)
{
    return QStringLiteral("%1 %2").arg(
        ZRLocalize::translate("Current Temperature"), QString::number(temperature, 'f', 2));
}
}

FactoryTestDialog::FactoryTestDialog(QWidget *parent, const char *titleKey) :
    FactoryDialog(parent, titleKey),
    column(new QVBoxLayout(this))
{
    setMinimumSize(smallestDialog);
}

QLabel *FactoryTestDialog::addPrompt(const char *key)
{
    return addLabel("promptLabel", key, smallPointSize);
}

QLabel *FactoryTestDialog::addTask(const char *key)
{
    return addLabel("promptLabel", key, largePointSize);
}

QLabel *FactoryTestDialog::addStatus(const char *key)
{
    return addLabel("statusLabel", key, largePointSize);
}

void FactoryTestDialog::addControl(QWidget *control)
{
    column->addWidget(control, 1, Qt::AlignCenter);
}

QPushButton *FactoryTestDialog::addAnswers(bool passes)
{
    QPushButton *passButton = makePassButton();
    auto *answers = new QHBoxLayout;
    for (QPushButton *answer : {passButton, makeFailButton()}) {
        answer->setMinimumSize(smallestAnswer);
        setPointSize(answer, smallPointSize);
        answers->addWidget(answer, 0, Qt::AlignCenter);
    }
    column->addLayout(answers);
    passButton->setEnabled(passes);
    return passButton;
}

void FactoryTestDialog::showStatus(
    const FactoryStatus *table, const QString &status, QPushButton *passButton, QLabel *statusLabel)
{
    const FactoryStatus *row = table;
    while (row->word && status.compare(QLatin1String(row->word), Qt::CaseInsensitive) != 0)
        ++row;

    if (row->text)
        statusLabel->setText(ZRLocalize::translate(row->text));
    if (row->styleSheet) {
        statusLabel->setStyleSheet(row->styleSheet);
        statusLabel->setFont(QFont("Arial", largePointSize));
    }
    if (row->pass != Pass::Keep)
        setPassEnabled(passButton, row->pass == Pass::Enable);
}

QLabel *FactoryTestDialog::addLabel(const char *name, const char *key, int pointSize)
{
    auto *label = namedChild<QLabel>(this, name);
    label->setText(ZRLocalize::translate(key));
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    setPointSize(label, pointSize);
    column->addWidget(label, 1);
    return label;
}

FactoryBeepTestDialog::FactoryBeepTestDialog(QWidget *parent) : FactoryTestDialog(parent, title)
{
    addTask("Please Test Beep");
    addAnswers(true);
}

FactoryFallTestDialog::FactoryFallTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    promptLabel(addTask("Please Test Fall")),
    passButton(addAnswers(false))
{ }

void FactoryFallTestDialog::updateStatus(QString status)
{
    if (crossed("updateStatus", Q_ARG(QString, status)))
        return;
    showStatus(fallTable, status, passButton);
}

FactoryBreeTestDialog::FactoryBreeTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    promptLabel(addPrompt("Please Test Bree")),
    statusLabel(addStatus(noReading)),
    passButton(addAnswers(false))
{ }

void FactoryBreeTestDialog::updateStatus(QString status)
{
    if (crossed("updateStatus", Q_ARG(QString, status)))
        return;
    showStatus(breeTable, status, passButton, statusLabel);
}

FactoryConfirmDialog::FactoryConfirmDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    statusLabel(addStatus(waiting))
{
    addAnswers(true);
}

void FactoryConfirmDialog::updateImage()
{
    if (crossed("updateImage"))
        return;
    statusLabel->setText(ZRLocalize::translate(microphonePrompt));
}

FactoryCryingDetectionDialog::FactoryCryingDetectionDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    statusLabel(addStatus(waiting)),
    passButton(addAnswers(false))
{ }

void FactoryCryingDetectionDialog::updateCryingStatus(QString status)
{
    if (crossed("updateCryingStatus", Q_ARG(QString, status)))
        return;
    showStatus(cryingTable, status, passButton, statusLabel);
}

FactoryExtTemperatureTestDialog::FactoryExtTemperatureTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    statusLabel(addStatus(waiting))
{
    addAnswers(true);
}

void FactoryExtTemperatureTestDialog::updateTemperature(double temperature)
{
    if (crossed("updateTemperature", Q_ARG(double, temperature)))
        return;
    statusLabel->setText(temperatureText(temperature));
}

FactoryImageTestDialog::FactoryImageTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    statusLabel(addStatus(waiting))
{
    addAnswers(true);
}

void FactoryImageTestDialog::updateImage()
{
    if (crossed("updateImage"))
        return;
    statusLabel->setText(ZRLocalize::translate(microphonePrompt));
}

FactoryKeyCallTestDialog::FactoryKeyCallTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    promptLabel(addPrompt("Please Test Key Call")),
    statusLabel(addStatus(waiting)),
    passButton(addAnswers(false))
{ }

void FactoryKeyCallTestDialog::updateStatus(QString status)
{
    if (crossed("updateStatus", Q_ARG(QString, status)))
        return;
    showStatus(keyTable, status, passButton, statusLabel);
}

FactoryKeyWordTestDialog::FactoryKeyWordTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    promptLabel(addPrompt("Please Test Key Word")),
    statusLabel(addStatus(waiting)),
    passButton(addAnswers(false))
{ }

void FactoryKeyWordTestDialog::updateStatus(QString status)
{
    if (crossed("updateStatus", Q_ARG(QString, status)))
        return;
    showStatus(keyTable, status, passButton, statusLabel);
}

FactoryMicrophoneTestDialog::FactoryMicrophoneTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    statusLabel(addStatus(waiting))
{
    addAnswers(true);
}

void FactoryMicrophoneTestDialog::updateMicrophone()
{
    if (crossed("updateMicrophone"))
        return;
    statusLabel->setText(ZRLocalize::translate(microphonePrompt));
}

FactoryMillimeterWaveDialog::FactoryMillimeterWaveDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    promptLabel(addPrompt("Please Test Millimeter Wave")),
    statusLabel(addStatus(waiting)),
    passButton(addAnswers(false))
{ }

void FactoryMillimeterWaveDialog::updateStatus(QString status)
{
    if (crossed("updateStatus", Q_ARG(QString, status)))
        return;
    showStatus(millimeterWaveTable, status, passButton, statusLabel);
}

FactoryPTZTestDialog::FactoryPTZTestDialog(QWidget *parent) : FactoryTestDialog(parent, title)
{
    auto *pad = namedChild<PTZPad>(this, "pad");
    addTask("Please Test PTZ");
    addControl(pad);
    addAnswers(true);
    connect(pad, &PTZPad::command, this, &FactoryPTZTestDialog::send);
}

// The pad's own stop for a button that is held until the end would come too late.
FactoryPTZTestDialog::~FactoryPTZTestDialog()
{
    if (moving)
        send(stopCommand);
}

void FactoryPTZTestDialog::setDevice(const VorlynDevice &device)
{
    this->device = device;
}

void FactoryPTZTestDialog::send(const QString &command)
{
    moving = command != stopCommand;
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->setDevicePTZ({device}, command);
}

FactorySDCardTestDialog::FactorySDCardTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    statusLabel(addStatus(waiting))
{
    addAnswers(true);
}

void FactorySDCardTestDialog::updateSDCard(int totalSize, int freeSize)
{
    if (crossed("updateSDCard", Q_ARG(int, totalSize), Q_ARG(int, freeSize)))
        return;
    statusLabel->setText(QStringLiteral("%1 %2").arg(
        ZRLocalize::translate("Test SDCard"), sdCardSizeText(totalSize, freeSize)));
}

FactorySpeakerTestDialog::FactorySpeakerTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    statusLabel(addStatus(waiting))
{
    addAnswers(true);
}

void FactorySpeakerTestDialog::updateSpeaker()
{
    if (crossed("updateSpeaker"))
        return;
    statusLabel->setText(ZRLocalize::translate("Please Test Speaker"));
}

FactoryTemperatureTestDialog::FactoryTemperatureTestDialog(QWidget *parent) :
    FactoryTestDialog(parent, title),
    statusLabel(addStatus(waiting))
{
    addAnswers(true);
}

void FactoryTemperatureTestDialog::updateTemperature(double temperature)
{
    if (crossed("updateTemperature", Q_ARG(double, temperature)))
        return;
    statusLabel->setText(QStringLiteral("%1\n%2").arg(
        ZRLocalize::translate("Check if the temperature in the upper right corner of the screen "
                              "matches the ambient temperature"),
        temperatureText(temperature)));
}
