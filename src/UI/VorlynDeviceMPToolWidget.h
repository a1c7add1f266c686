#pragma once

#include "VorlynDeviceContentWidget.h"
#include "ZRLocalize.h"

#include <QColor>
#include <QPointer>

class PTZPad;
class QGridLayout;
class QLineEdit;
class QPrinterInfo;
class QPushButton;
class QTextEdit;
class QTimer;
class VorlynDeviceMPToolThread;
class WiFiInfoWidget;
class ZRLabel;
struct OperatorTest;

// The bench of a production line: identity, firmware, tests and label of one device, and a coloured
// log that is the only record of its tests.
// Thread: the GUI's. Slots with a test's name may also be called by the worker of an automatic run,
// which finds them by their names: they cross to the GUI thread by themselves. While a run is
// alive, the table that it found and all controls of the panel are disabled; log and Wi-Fi list
// stay readable.
class VorlynDeviceMPToolWidget : public VorlynDeviceContentWidget, public ZRLocalize
{
    Q_OBJECT

public:
    explicit VorlynDeviceMPToolWidget(QWidget *parent);
    // A run that is alive ends here: what it still asks of the GUI thread is thrown away. A camera
    // that turns is told to stop.
    ~VorlynDeviceMPToolWidget() override;

    // For the device that is on the bench already, what the operator has typed and the list of its
    // networks stay. Another one takes over after the last one has been told to stop turning.
    void setDevice(const VorlynDevice &device) override;
    void onLanguageChanged() override;

signals:
    // A run starts, and the operator will want to see and hear the device.
    void requestStartMedia();

private slots:
    void appendText(QString text, QColor color);

public slots:
    // Steps of a run, and the marks of a stretch of single tests.
    void autoTestStart();
    void autoTestStop();
    void manualTestStart();
    void manualTestStop();
    void autoTestAppVersion();
    void autoTestSDCard();
    void testSpeaker();
    void testMicrophone();
    void testWhiteLightOn();
    void testWhiteLightOff();
    void testIRCutDay();
    void testIRCutNight();
    void testIRCutAuto();
    void testStream();
    void loadWiFiInfo();

    void onClickMacSettingButton();
    void onClickNameSettingButton();
    void onClickIpSettingButton();
    void onClickP2PIdSettingButton();
    void onClickFunctionIdSettingButton();
    void onClickSelectButton();
    void onClickUpgradeButton();
    void onClickUpgradeAllButton();
    void onClickTestVersionButton();
    void onClickSpeakerButton();
    void onClickWhiteLightOnButton();
    void onClickWhiteLightOffButton();
    void onClickIRCutDayButton();
    void onClickIRCutNightButton();
    void onClickIRCutAutoButton();
    void onClickRestoreButton();
    void onClickStartTestButton();
    void onClickQRCodeButton();
    void setPTZ(QString cmd);

protected:
    VorlynDeviceMPToolThread *testThread; // owned; null before the first run
    QLineEdit *macEdit;
    QLineEdit *nameEdit;
    ZRLabel *firmwareLabel;
    ZRLabel *versionLabel;
    WiFiInfoWidget *wifiInfoWidget;
    QTextEdit *logEdit;
    QString firmwarePath; // empty until one is chosen

private:
    // What a control is of no use without.
    enum class Needs { Nothing, Device, WhiteLight, WiFi };
    using Click = void (VorlynDeviceMPToolWidget::*)();
    struct Control {
        QWidget *widget;
        Needs needs;
    };
    struct Caption {
        QWidget *widget;
        const char *property;
        const char *key; // for translate()
    };

    QLayout *makeDeviceColumn();
    QLayout *makeIdentity();
    QLayout *makeFirmware();
    QLayout *makeTestColumn();
    QLayout *makeSide();
    QWidget *makeLog();
    QWidget *makeGroup(const char *titleKey, QLayout *content);
    void addRow(QGridLayout *form, const char *captionKey, QWidget *value, QWidget *button);
    QPushButton *addButton(const char *name, const char *key, Click click, Needs needs);
    QLineEdit *addEdit(const char *name);
    QLineEdit *addValue(const char *name);
    ZRLabel *addFileLabel(const char *name);

    // How a run that is to end gets past the steps that need the GUI thread.
    enum class Crossings { Serve, Drop };
    void endRun(Crossings crossings);
    bool isRunAlive() const;
    void lockForRun();
    void unlockAfterRun();
    void freeTable();
    bool has(Needs need) const;
    void refreshControls();
    // The ticked devices, or else the one on the bench.
    QVector<VorlynDevice> chosenDevices() const;
    // The whole text of a file that the operator chooses. Empty when there is none; a file without
    // any gives the hint.
    QString askForText(const QString &hint);
    void showHint(const QString &text);

    // What stands in the log from there on.
    void colorFrom(int position, const QColor &color);
    void appendStart(const char *title);
    void judge(const OperatorTest &test);

    // The first queue of the system with that name, in any case.
    bool findPrinter(QPrinterInfo &info, const QString &name);

    QLineEdit *ipValue;
    QLineEdit *p2pIdValue;
    QLineEdit *functionIdValue;
    QLineEdit *versionValue; // the device's own
    QPushButton *startTestButton;
    PTZPad *pad;
    QVector<Control> controls;
    QVector<Caption> captions;
    QTimer *runTimer; // active while the controls are locked for a run
    QPointer<VorlynDevicesWidget> lockedTable; // by that run
    bool busy = false; // with a start, a question or a scan: no other start may begin inside
};
