#include "FactoryWiFiTestDialog.h"

#include "WiFiInfoText.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"

#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>

namespace {
constexpr int titlePointSize = 14;
constexpr int listPointSize = 12;

// Centred in the half of a dialog that begins at `left`.
void placeAnswer(QPushButton *button, int left, int half, int top)
{
    button->adjustSize();
    const int width = button->width() + 20;
    button->setGeometry(left + (half - width) / 2, top, width, 30);
}
}

FactoryWiFiTestDialog::FactoryWiFiTestDialog(QWidget *parent) :
    FactoryDialog(parent, title),
    titleLabel(namedChild<QLabel>(this, "titleLabel")),
    wifiList(namedChild<QListWidget>(this, "wifiList")),
    progress(namedChild<QProgressBar>(this, "progress")),
    passButton(makePassButton()),
    failButton(makeFailButton())
{
    // setInfos() is queued by this name.
    qRegisterMetaType<QVector<VorlynDeviceWiFiInfo>>("QVector<VorlynDeviceWiFiInfo>");
    titleLabel->setText(ZRLocalize::translate("Loading WiFi Info"));
    titleLabel->setAlignment(Qt::AlignCenter);
    setPointSize(titleLabel, titlePointSize);
    setPointSize(wifiList, listPointSize);
    wifiList->setVisible(false);
    progress->setRange(0, 0); // busy
    progress->setTextVisible(false);
    setMinimumSize(300, 200);
    resize(420, 440);
}

void FactoryWiFiTestDialog::setInfos(int result, QVector<VorlynDeviceWiFiInfo> infos)
{
    scanResult = result;
    this->infos = infos;
}

void FactoryWiFiTestDialog::updateWiFi()
{
    if (crossed("updateWiFi"))
        return;
    progress->hide();
    wifiList->show();
    wifiList->clear();
    titleLabel->setText(
        ZRLocalize::translate(scanResult == 0 ? title : "Unable to search WiFi list"));
    for (const VorlynDeviceWiFiInfo &info : infos)
        wifiList->addItem(wifiInfoText(info));
    placeControls();
}

void FactoryWiFiTestDialog::resizeEvent(QResizeEvent *event)
{
    FactoryDialog::resizeEvent(event);
    placeControls();
}

void FactoryWiFiTestDialog::placeControls()
{
    const int answersTop = height() - 50;
    placeAnswer(passButton, 0, width() / 2, answersTop);
    placeAnswer(failButton, width() / 2, width() / 2, answersTop);

    titleLabel->setGeometry(0, 10, width(), 40);
    const int titleBottom = titleLabel->y() + titleLabel->height();
    const int band = answersTop - titleBottom - 20;
    wifiList->setGeometry(10, titleBottom + 10, width() - 20, band);
    // As far as the right edge.
    progress->setGeometry(30, titleBottom + 10 + (band - 5) / 2, width() - 30, 5);
}
