#include "VorlynDeviceMPToolWidget.h"

#include "DialogCalls.h"
#include "PTZPad.h"
#include "SameDevice.h"
#include "VorlynDeviceIPInfoDialog.h"
#include "VorlynDeviceMPToolThread.h"
#include "VorlynDeviceSettingsDialog.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "WiFiInfoWidget.h"
#include "ZRAlertDialog.h"
#include "ZRLabel.h"
#include "ZRText.h"

#include <QCoreApplication>
#include <QFile>
#include <QLineEdit>
#include <QScrollBar>
#include <QTextEdit>
#include <QThread>
#include <QTimer>

namespace {
const int runPollMs = 50;
const int toolTipLength = 200;

// Empty for a file that can't be read. The text may hold anything, zeros too.
QString wholeText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    const QByteArray bytes = file.readAll();
    return QString::fromUtf8(bytes.constData(), bytes.size());
}

// Text that the operator has typed into the edit of a device gives way to another device only.
void refresh(QLineEdit *edit, const QString &text, bool sameDevice)
{
    if (!sameDevice || !edit->isModified())
        edit->setText(text);
}

// Any text as itself, never as HTML, and not more of it than a screen takes.
QString toolTipOf(const QString &text)
{
    const bool whole = text.size() <= toolTipLength;
    const QString shown = whole ? text : text.left(toolTipLength) + QChar(0x2026);
    return text.isEmpty() ? QString() : Qt::convertFromPlainText(shown, Qt::WhiteSpaceNormal);
}

template <class Value> void showText(Value *value, const QString &text, const QString &toolTip)
{
    value->setText(text);
    value->setToolTip(toolTipOf(toolTip));
}

void showValue(QLineEdit *value, const QString &text)
{
    showText(value, text, text);
    value->setCursorPosition(0);
}
}

VorlynDeviceMPToolWidget::~VorlynDeviceMPToolWidget()
{
    endRun(Crossings::Drop);
    freeTable();
    pad->finish();
}

void VorlynDeviceMPToolWidget::setDevice(const VorlynDevice &device)
{
    const bool sameDevice = isSameDevice(device, device_);
    if (!sameDevice) {
        pad->finish();
        wifiInfoWidget->setInfos({});
    }
    VorlynDeviceContentWidget::setDevice(device);
    refresh(macEdit, device_.mac(), sameDevice);
    refresh(nameEdit, device_.name(), sameDevice);
    showValue(ipValue,
        device_.isValid() ? QStringLiteral("%1(%2)").arg(device_.ip(), device_.ipMode())
                          : QString());
    showValue(p2pIdValue, device_.p2pid());
    showValue(functionIdValue, device_.value(QStringLiteral("HdCuFun")));
    showValue(versionValue, device_.version());
    refreshControls();
}

// A crossing that is thrown away lets the worker go on, to the next one. Those of the run that
// wait for a reply begin at any time, so each of them is then told to stop.
void VorlynDeviceMPToolWidget::endRun(Crossings crossings)
{
    if (!testThread)
        return;
    testThread->stop();
    while (isRunAlive()) {
        if (crossings == Crossings::Serve) {
            QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
        } else {
            testThread->stop();
            QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
        }
        ZRThread::sleep(1);
    }
    testThread->wait();
    delete testThread;
    testThread = nullptr;
}

bool VorlynDeviceMPToolWidget::isRunAlive() const
{
    return testThread && testThread->isRunning();
}

// A table that is disabled already is somebody else's to enable.
void VorlynDeviceMPToolWidget::lockForRun()
{
    freeTable();
    if (devicesWidget && devicesWidget->isEnabled()) {
        lockedTable = devicesWidget;
        lockedTable->setEnabled(false);
    }
    runTimer->start(runPollMs);
    refreshControls();
}

void VorlynDeviceMPToolWidget::unlockAfterRun()
{
    if (busy || isRunAlive())
        return;
    runTimer->stop();
    freeTable();
    refreshControls();
}

void VorlynDeviceMPToolWidget::freeTable()
{
    if (lockedTable)
        lockedTable->setEnabled(true);
    lockedTable.clear();
}

bool VorlynDeviceMPToolWidget::has(Needs need) const
{
    switch (need) {
    case Needs::Nothing:
        return true;
    case Needs::Device:
        return device_.isValid();
    case Needs::WhiteLight:
        return device_.isValid() && device_.supportsPAC();
    case Needs::WiFi:
        return device_.isValid() && device_.supportsWIFI();
    }
    return false;
}

void VorlynDeviceMPToolWidget::refreshControls()
{
    const bool idle = !runTimer->isActive();
    for (const Control &control : controls)
        control.widget->setEnabled(idle && has(control.needs));
}

QVector<VorlynDevice> VorlynDeviceMPToolWidget::chosenDevices() const
{
    const QVector<VorlynDevice> ticked = devicesWidget->selectedDevices();
    return ticked.isEmpty() ? QVector<VorlynDevice>{device_} : ticked;
}

QString VorlynDeviceMPToolWidget::askForText(const QString &hint)
{
    const QString path = chooseFile();
    if (path.isEmpty())
        return QString();
    const QString text = wholeText(path);
    if (text.isEmpty())
        showHint(hint);
    return text;
}

void VorlynDeviceMPToolWidget::showHint(const QString &text)
{
    showToast(text, Qt::AlignHCenter | Qt::AlignBottom, 5, 5);
}

void VorlynDeviceMPToolWidget::appendText(QString text, QColor color)
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(
            this, "appendText", Qt::QueuedConnection, Q_ARG(QString, text), Q_ARG(QColor, color));
        return;
    }
    // Lines that are selected would take the colour, so nothing is selected meanwhile. Neither that
    // nor the new line moves what is being read, unless it is the end, or what is selected.
    QScrollBar *bar = logEdit->verticalScrollBar();
    const int place = bar->value();
    const bool isAtEnd = place == bar->maximum();
    QTextCursor selected = logEdit->textCursor();
    const int anchor = selected.anchor();
    const int position = selected.position();
    logEdit->moveCursor(QTextCursor::End);
    const int end = logEdit->textCursor().position();
    logEdit->setTextColor(color);
    logEdit->append(text);
    if (Qt::mightBeRichText(text)) // which has taken colours of its own
        colorFrom(end, color);
    if (anchor != position) {
        selected.setPosition(anchor);
        selected.setPosition(position, QTextCursor::KeepAnchor);
    }
    logEdit->setTextCursor(selected);
    bar->setValue(isAtEnd ? bar->maximum() : place);
}

void VorlynDeviceMPToolWidget::colorFrom(int position, const QColor &color)
{
    QTextCursor cursor(logEdit->document());
    cursor.setPosition(position);
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    QTextCharFormat format;
    format.setForeground(color);
    cursor.mergeCharFormat(format);
}

void VorlynDeviceMPToolWidget::onClickMacSettingButton()
{
    const QString mac = macEdit->text();
    if (mac.isEmpty())
        showHint(translate(QStringLiteral("Please Input Mac Address")));
    else
        writeDevices<VorlynDeviceMacSettingsDialog>(devicesWidget, {device_}, {mac});
}

void VorlynDeviceMPToolWidget::onClickNameSettingButton()
{
    const QString name = nameEdit->text();
    if (name.isEmpty())
        showHint(translate(QStringLiteral("Please Input Name")));
    else
        writeDevices<VorlynDeviceNameSettingsDialog>(devicesWidget, {device_}, {name});
}

void VorlynDeviceMPToolWidget::onClickIpSettingButton()
{
    VorlynDeviceIPInfoDialog dialog(nullptr);
    dialog.setDevice(device_, devicesWidget);
    dialog.exec();
}

// The device gets the text as it stands, and so does the table; the bench keeps the id in it, which
// is what the label shows.
void VorlynDeviceMPToolWidget::onClickP2PIdSettingButton()
{
    const QString text = askForText(translate(QStringLiteral("Please Select P2PID File")));
    if (text.isEmpty()
        || writeDevices<VorlynDeviceP2PSettingsDialog>(devicesWidget, {device_}, {text})
            != QDialog::Accepted)
        return;
    device_.setP2pid(parseDid(text));
    setDevice(device_);
}

void VorlynDeviceMPToolWidget::onClickFunctionIdSettingButton()
{
    const QString text = askForText(translate(QStringLiteral("Please Select FunctionId File")));
    if (!text.isEmpty())
        writeDevices<VorlynDeviceFunctionIdSettingsDialog>(devicesWidget, {device_}, {text});
}

void VorlynDeviceMPToolWidget::onClickSelectButton()
{
    const QString path = chooseFile();
    if (path.isEmpty())
        return;
    firmwarePath = path;
    showText(firmwareLabel, fileNameOf(path), path);
}

void VorlynDeviceMPToolWidget::onClickTestVersionButton()
{
    const QString path = chooseFile();
    if (!path.isEmpty())
        showText(versionLabel, fileBaseNameOf(path), path);
}

void VorlynDeviceMPToolWidget::onClickUpgradeButton()
{
    if (firmwarePath.isEmpty()) {
        showHint(translate(QStringLiteral("Please select firmware file")));
        return;
    }
    const QVector<VorlynDevice> devices = chosenDevices();
    writeDevices<VorlynDeviceFirmwareSettingsDialog>(
        devicesWidget, devices, QVector<QString>(devices.size(), firmwarePath));
}

// Unlike the upgrade with the chosen file: it asks for a file of its own, and without a tick it has
// no device at all.
void VorlynDeviceMPToolWidget::onClickUpgradeAllButton()
{
    const QString path = chooseFile();
    if (path.isEmpty())
        return;
    const QVector<VorlynDevice> devices = devicesWidget->selectedDevices();
    writeDevices<VorlynDeviceFirmwareSettingsDialog>(
        devicesWidget, devices, QVector<QString>(devices.size(), path));
}

void VorlynDeviceMPToolWidget::onClickSpeakerButton()
{
    testSpeaker();
}

void VorlynDeviceMPToolWidget::onClickWhiteLightOnButton()
{
    testWhiteLightOn();
}

void VorlynDeviceMPToolWidget::onClickWhiteLightOffButton()
{
    testWhiteLightOff();
}

void VorlynDeviceMPToolWidget::onClickIRCutDayButton()
{
    testIRCutDay();
}

void VorlynDeviceMPToolWidget::onClickIRCutNightButton()
{
    testIRCutNight();
}

void VorlynDeviceMPToolWidget::onClickIRCutAutoButton()
{
    testIRCutAuto();
}

void VorlynDeviceMPToolWidget::onClickRestoreButton()
{
    if (ZRAlertDialog::alert(translate(QStringLiteral("Restore"))) != QDialog::Accepted)
        return;
    VorlynDeviceRestoreSettingsDialog dialog(nullptr);
    dialog.setDevices(chosenDevices());
    startAndExec(dialog);
}

void VorlynDeviceMPToolWidget::setPTZ(QString cmd)
{
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->setDevicePTZ({device_}, cmd);
}
