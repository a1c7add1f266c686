#pragma once

#include <QMainWindow>

class QModelIndex;
class VorlynDeviceContentWidget;
class VorlynDeviceVideoView;
class VorlynDevicesWidget;
class WindowHeaderWidget;

// The one window: header, preview, device table and the panel of the chosen device. It owns the
// life of the network threads: the constructor starts them and runs a first search, and returns
// when that search's dialog closes; the destructor stops them.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void onCurrentCellChanged(int row, int column, int previousRow, int previousColumn);
    void onCellClicked(const QModelIndex &index);
    void onCellDoubleClicked(const QModelIndex &index);
    void onClickNetwork();
    void onClickSearch();
    void onClickSettings();
    void onClickPrinterSettings();
    void onClickScanCode();
    void connectChildren();
    void focusContent(); // so that keys reach the panel

    WindowHeaderWidget *header;
    VorlynDeviceContentWidget *contentWidget;
    VorlynDeviceVideoView *videoView;
    VorlynDevicesWidget *devicesWidget;
    int currentRow; // whose stream is shown
};
