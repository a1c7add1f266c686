#pragma once

#include "ZRLocalize.h"

#include <QMainWindow>
#include <QVector>

class FirmwareUpgradePage;
class QComboBox;
class QLabel;
class QPushButton;
class QTabWidget;
class VorlynDevice;
class VorlynDeviceContentWidget;
class VorlynDeviceMPToolWidget;
class VorlynDeviceVideoView;
class VorlynDevicesWidget;
class WindowHeaderWidget;

// The workplace of a production line or a service bench: header, preview and device table, and
// under them the bench's panels as tabs. All panels work on the table's current device. As the
// table is, all but the production tool is out of reach while that tool's automatic run is alive:
// only one of them may wait for a device.
// Like the main window it owns the life of the network threads: the constructor starts them and
// runs a first search, and returns when that search's dialog closes; the destructor stops them.
class BenchWindow : public QMainWindow, public ZRLocalize
{
public:
    explicit BenchWindow(QWidget *parent = nullptr);
    ~BenchWindow() override;

    void onLanguageChanged() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Page {
        VorlynDeviceContentWidget *panel;
        const char *title; // a key
    };

    void layOut();
    void makePages();
    void makeCorner();
    template <class Panel> Panel *addPage(const char *name, const char *title);
    void connectTable();
    void connectHeader();
    void search();
    void onCurrentCellChanged(int row, int column, int previousRow, int previousColumn);
    void setDevice(const VorlynDevice &device);
    void refreshPages();
    void startMedia();
    void onViewChosen(int index);
    void showChosenView();
    void onTabChanged();
    void saveLog();
    void lockForRun(bool locked);

    WindowHeaderWidget *header;
    VorlynDeviceVideoView *videoView;
    VorlynDevicesWidget *devicesWidget;
    QTabWidget *tabs;
    QVector<Page> pages; // in the order of the tabs
    VorlynDeviceMPToolWidget *productionTool;
    QWidget *corner; // beside the tabs
    QLabel *viewLabel;
    QComboBox *viewComboBox;
    QPushButton *saveLogButton;
    int currentRow = -1; // whose stream is shown
};
