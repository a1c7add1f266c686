#include "VorlynDeviceGenerationWidget.h"

#include "CVTableWidget.h"
#include "FactoryTestList.h"
#include "FactoryTestTable.h"
#include "SameDevice.h"
#include "VorlynSDK.h"
#include "WiFiInfoText.h"
#include "ZRNamedChild.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QThread>

#include <algorithm>

VorlynDeviceGenerationWidget::VorlynDeviceGenerationWidget(QWidget *parent) :
    VorlynDeviceContentWidget(parent),
    testTable(namedChild<CVTableWidget>(this, "testTable")),
    wifiList(namedChild<QListWidget>(this, "wifiList")),
    wifiLabel(namedChild<QLabel>(this, "wifiLabel")),
    dayButton(namedChild<QPushButton>(this, "dayButton")),
    nightButton(namedChild<QPushButton>(this, "nightButton")),
    autoButton(namedChild<QPushButton>(this, "autoButton"))
{
    setUpTable();
    wifiList->setFocusPolicy(Qt::ClickFocus);
    connect(dayButton, &QPushButton::clicked, this, &VorlynDeviceGenerationWidget::testIRCutDay);
    connect(
        nightButton, &QPushButton::clicked, this, &VorlynDeviceGenerationWidget::testIRCutNight);
    connect(autoButton, &QPushButton::clicked, this, &VorlynDeviceGenerationWidget::testIRCutAuto);
    setEnabled(false); // until there is a device
    VorlynDeviceGenerationWidget::onLanguageChanged();
}

VorlynDeviceGenerationWidget::~VorlynDeviceGenerationWidget() = default;

void VorlynDeviceGenerationWidget::setUpTable()
{
    FactoryTestTable::setUp(*testTable, 2);
    testTable->setFocusPolicy(Qt::ClickFocus); // unasked, no row looks chosen
    for (const FactoryTest &test : factoryTests)
        testIds.append(test.id);
}

void VorlynDeviceGenerationWidget::setDevice(const VorlynDevice &device)
{
    const bool isOther = !isSameDevice(device, device_);
    VorlynDeviceContentWidget::setDevice(device);
    setEnabled(device.isValid());
    if (isOther) {
        testResults.clear();
        setWiFiInfos({});
    }
    updateRows();
}

void VorlynDeviceGenerationWidget::onLanguageChanged()
{
    testTable->setHorizontalHeaderLabels(
        {translate(QStringLiteral("Test Item")), translate(QStringLiteral("Result"))});
    FactoryTestTable::showNames(*testTable);
    updateRows();
    wifiLabel->setText(translate(QStringLiteral("WiFi List")));
    dayButton->setText(translate(QStringLiteral("IR-cut Day")));
    nightButton->setText(translate(QStringLiteral("IR-cut Night")));
    autoButton->setText(translate(QStringLiteral("IR-cut Auto")));
}

void VorlynDeviceGenerationWidget::setResult(int id, int state)
{
    const int row = testIds.indexOf(id);
    if (row < 0)
        return;
    testResults[id] = state;
    updateRow(row);
}

void VorlynDeviceGenerationWidget::setWiFiInfos(QVector<VorlynDeviceWiFiInfo> infos)
{
    wifiInfos = infos;
    updateWiFiInfos();
}

void VorlynDeviceGenerationWidget::updateRows()
{
    for (int row = 0; row < testIds.size(); ++row)
        updateRow(row);
}

void VorlynDeviceGenerationWidget::updateRow(int row)
{
    FactoryTestTable::showState(*testTable, row, testResults[testIds[row]]);
}

void VorlynDeviceGenerationWidget::updateSDCardResult(int result, int free, int total)
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "updateSDCardResult", Qt::QueuedConnection,
            Q_ARG(int, result), Q_ARG(int, free), Q_ARG(int, total));
        return;
    }
    setResult(factorySDCardTest, result);
}

void VorlynDeviceGenerationWidget::updateWiFiInfos()
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "updateWiFiInfos", Qt::QueuedConnection);
        return;
    }
    wifiList->clear();
    for (const VorlynDeviceWiFiInfo &info : qAsConst(wifiInfos))
        wifiList->addItem(wifiInfoText(info));
}

void VorlynDeviceGenerationWidget::updateMillimeterWave(QString status)
{
    const bool isOn = status.compare(QLatin1String("on"), Qt::CaseInsensitive) == 0;
    setResult(factoryMillimeterWaveTest, isOn ? FactoryTestPassed : FactoryTestFailed);
}

void VorlynDeviceGenerationWidget::testIRCutDay()
{
    switchIRCut("testIRCutDay", QStringLiteral("day"));
}

void VorlynDeviceGenerationWidget::testIRCutNight()
{
    switchIRCut("testIRCutNight", QStringLiteral("night"));
}

void VorlynDeviceGenerationWidget::testIRCutAuto()
{
    switchIRCut("testIRCutAuto", QStringLiteral("auto"));
}

// The body of `slot`.
void VorlynDeviceGenerationWidget::switchIRCut(const char *slot, const QString &mode)
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, slot, Qt::BlockingQueuedConnection);
        return;
    }
    if (device_.isValid())
        VorlynSDK::instance()->setDeviceIRcut(device_, mode);
}

void VorlynDeviceGenerationWidget::resizeEvent(QResizeEvent *event)
{
    VorlynDeviceContentWidget::resizeEvent(event);
    layOut();
}

// Table, networks and buttons side by side.
void VorlynDeviceGenerationWidget::layOut()
{
    constexpr int margin = 10;
    constexpr int buttonWidth = 150;
    constexpr int lineHeight = 30;
    constexpr int widestTable = 600; // a name and its state are read as one line
    const int listsWidth = width() - buttonWidth - 4 * margin;
    const int tableWidth = std::min(listsWidth * 3 / 5, widestTable);
    testTable->setGeometry(margin, margin, tableWidth, height() - 2 * margin);

    const int wifiX = tableWidth + 2 * margin;
    const int wifiWidth = listsWidth - tableWidth;
    wifiLabel->setGeometry(wifiX, margin, wifiWidth, lineHeight);
    wifiList->setGeometry(
        wifiX, margin + lineHeight, wifiWidth, height() - 2 * margin - lineHeight);

    int y = margin;
    for (QPushButton *button : {dayButton, nightButton, autoButton}) {
        button->setGeometry(width() - margin - buttonWidth, y, buttonWidth, lineHeight);
        y += lineHeight + margin;
    }
}
