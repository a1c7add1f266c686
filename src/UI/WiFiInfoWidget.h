#pragma once

#include "VorlynDevice.h"
#include "ZRLocalize.h"
#include "ZRWidget.h"

class QLabel;
class QListWidget;

// A title over the networks of a camera's last Wi-Fi scan, each with its signal.
class WiFiInfoWidget : public ZRWidget, public ZRLocalize
{
    Q_OBJECT

public:
    explicit WiFiInfoWidget(QWidget *parent);

    // GUI thread. From another thread nothing happens: the call that crosses over finds no target.
    void setInfos(QVector<VorlynDeviceWiFiInfo> infos);
    void onLanguageChanged() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

    QLabel *titleLabel;
    QListWidget *wifiList;
    QVector<VorlynDeviceWiFiInfo> infos;

private:
    void layOut();
};
