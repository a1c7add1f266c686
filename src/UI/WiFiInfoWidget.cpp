#include "WiFiInfoWidget.h"

#include "WiFiInfoText.h"
#include "ZRNamedChild.h"

#include <QLabel>
#include <QListWidget>
#include <QThread>

WiFiInfoWidget::WiFiInfoWidget(QWidget *parent) :
    ZRWidget(parent),
    titleLabel(namedChild<QLabel>(this, "titleLabel")),
    wifiList(namedChild<QListWidget>(this, "wifiList"))
{
    setBackgroundColor(Qt::white);
    setBorder(0, 1, QColor(176, 176, 176));
    wifiList->setStyleSheet(QStringLiteral("QListView { border: none; padding-left: 6px; }"));
    wifiList->setFocusPolicy(Qt::NoFocus); // only to be read
    WiFiInfoWidget::onLanguageChanged();
}

void WiFiInfoWidget::setInfos(QVector<VorlynDeviceWiFiInfo> infos)
{
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(
            this, "setInfos", Qt::QueuedConnection, Q_ARG(QVector<VorlynDeviceWiFiInfo>, infos));
        return;
    }
    this->infos = infos;
    wifiList->clear();
    for (const VorlynDeviceWiFiInfo &info : infos)
        wifiList->addItem(wifiInfoText(info));
    layOut();
}

void WiFiInfoWidget::onLanguageChanged()
{
    titleLabel->setText(translate(QStringLiteral("WiFi List")));
}

void WiFiInfoWidget::resizeEvent(QResizeEvent *event)
{
    ZRWidget::resizeEvent(event);
    layOut();
}

void WiFiInfoWidget::layOut()
{
    titleLabel->setGeometry(10, 0, width() - 10, 30);
    wifiList->setGeometry(1, 30, width() - 2, height() - 31);
}
