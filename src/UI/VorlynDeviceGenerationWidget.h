#pragma once

#include "VorlynDeviceContentWidget.h"
#include "ZRLocalize.h"

#include <QMap>

class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;

// The other panel of a production line: a table of the factory tests with the state of each, the
// networks of the device's Wi-Fi scan, and the three positions of its IR-cut filter. Who runs the
// tests reports here, by the methods below or, from any thread, by the slots' names. An empty
// record disables the panel.
// Tests and results are those of FactoryTestList.h.
class VorlynDeviceGenerationWidget : public VorlynDeviceContentWidget, public ZRLocalize
{
    Q_OBJECT

public:
    explicit VorlynDeviceGenerationWidget(QWidget *parent);
    ~VorlynDeviceGenerationWidget() override;

    // Another device (SameDevice.h) begins without results and without networks.
    void setDevice(const VorlynDevice &device) override;
    void onLanguageChanged() override;

    // GUI thread. A test that has no row is ignored.
    void setResult(int id, int state);
    // GUI thread. In place of those that show.
    void setWiFiInfos(QVector<VorlynDeviceWiFiInfo> infos);

private slots:
    // The SD card test; the sizes don't show.
    void updateSDCardResult(int result, int free, int total);
    void updateWiFiInfos();
    // GUI thread only, unlike the others. "on", in any case, is a pass.
    void updateMillimeterWave(QString status);
    // These block until the request is queued. The operator judges the picture.
    void testIRCutDay();
    void testIRCutNight();
    void testIRCutAuto();

protected:
    void resizeEvent(QResizeEvent *event) override;

    QTableWidget *testTable;
    QVector<int> testIds; // of each row
    QMap<int, int> testResults; // states by id
    QListWidget *wifiList;
    QVector<VorlynDeviceWiFiInfo> wifiInfos;

private:
    void setUpTable();
    void updateRow(int row);
    void updateRows();
    void switchIRCut(const char *slot, const QString &mode);
    void layOut();

    QLabel *wifiLabel;
    QPushButton *dayButton;
    QPushButton *nightButton;
    QPushButton *autoButton;
};
