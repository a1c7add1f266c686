#pragma once

#include "FactoryDialog.h"

class QLabel;
class QListWidget;
class QProgressBar;

// The networks that a device's scan found, once they are there; a busy bar lies over the empty list
// before. The operator judges.
class FactoryWiFiTestDialog : public FactoryDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test WiFi";

    explicit FactoryWiFiTestDialog(QWidget *parent);

public slots:
    // The outcome of a scan, 0 when it worked, for the next updateWiFi(). It does not cross: a
    // caller on another thread queues it, by its name.
    void setInfos(int result, QVector<VorlynDeviceWiFiInfo> infos);
    void updateWiFi();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void placeControls();

    QLabel *titleLabel;
    QListWidget *wifiList;
    QProgressBar *progress;
    QPushButton *passButton;
    QPushButton *failButton;
    qint32 scanResult = 0;
    QVector<VorlynDeviceWiFiInfo> infos;
};
