#include "MainWindow.h"

#include "CVTableWidget.h"
#include "MediaButton.h"
#include "VorlynDeviceIPToolWidget.h"
#include "VorlynDeviceVideoView.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "VorlynSearchDialog.h"
#include "WindowHeaderWidget.h"
#include "ZRConfigure.h"
#include "ZRNetworkDialog.h"
#include "ZRSettingsDialog.h"

#include <QDesktopServices>
#include <QResizeEvent>
#include <QUrl>

namespace {
const int addressColumn = 3;
const int panelHeight = 400;
const int listWidth = 400;
}

MainWindow::MainWindow(QWidget *parent) :
    QMainWindow(parent),
    header(new WindowHeaderWidget(this)),
    contentWidget(new VorlynDeviceIPToolWidget(this)),
    videoView(new VorlynDeviceVideoView(this)),
    devicesWidget(new VorlynDevicesWidget(this)),
    currentRow(-1)
{
    header->setObjectName(QStringLiteral("header"));
    contentWidget->setObjectName(QStringLiteral("contentWidget"));
    videoView->setObjectName(QStringLiteral("videoView"));
    devicesWidget->setObjectName(QStringLiteral("devicesWidget"));

    setMinimumSize(800, 500);
    showMaximized();
    connectChildren();
    startSavedNetwork();

    contentWidget->setDevice(VorlynDevice());
    contentWidget->setDevicesWidget(devicesWidget);
    contentWidget->setVisible(true);
    contentWidget->setFocus(Qt::OtherFocusReason);
    onClickSearch();
}

MainWindow::~MainWindow()
{
    videoView->stop();
    if (VorlynSDK *sdk = VorlynSDK::instance())
        sdk->stopNetwork();
}

void MainWindow::connectChildren()
{
    CVTableWidget *table = devicesWidget->tableWidget();
    connect(table, &QTableWidget::currentCellChanged, this, &MainWindow::onCurrentCellChanged);
    connect(table, &QAbstractItemView::clicked, this, &MainWindow::onCellClicked);
    connect(table, &QAbstractItemView::doubleClicked, this, &MainWindow::onCellDoubleClicked);

    const struct {
        MediaButton *button;
        void (MainWindow::*slot)();
    } clicks[] = {
        {header->networkButton, &MainWindow::onClickNetwork},
        {header->searchButton, &MainWindow::onClickSearch},
        {header->settingsButton, &MainWindow::onClickSettings},
        {header->printerButton, &MainWindow::onClickPrinterSettings},
        {header->scanCodeButton, &MainWindow::onClickScanCode},
    };
    for (const auto &click : clicks)
        connect(click.button, &MediaButton::clicked, this, click.slot);
}

void MainWindow::startSavedNetwork()
{
    const ZRConfigure configure;
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK::selectInterface(VorlynSDK::availableInterfaces(), configure.networkName(),
        configure.networkIp(), interface, address);
    VorlynSDK::instance()->startNetwork(interface, address);
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    QWidget::keyPressEvent(event);
}

void MainWindow::focusInEvent(QFocusEvent *event)
{
    QMainWindow::focusInEvent(event);
    contentWidget->setFocus(Qt::OtherFocusReason);
}

// Each child is placed by the fresh geometry of the one before. bottom() and left() are QRect's:
// bottom() is one short of top plus height.
void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    const int w = width();
    const int h = height();
    header->setGeometry(2, 2, w - 4, 26);
    const int top = header->geometry().bottom();
    devicesWidget->setGeometry(w - listWidth, top, listWidth, h - panelHeight - top);
    videoView->setGeometry(0, top, devicesWidget->geometry().left(), h - panelHeight - top);
    if (contentWidget)
        contentWidget->setGeometry(0, videoView->geometry().bottom(), w, panelHeight);
}

void MainWindow::onClickNetwork()
{
    ZRNetworkDialog dialog(nullptr);
    dialog.setInterfaces(VorlynSDK::availableInterfaces());
    QNetworkInterface interface;
    QNetworkAddressEntry address;
    VorlynSDK *sdk = VorlynSDK::instance();
    if (sdk)
        sdk->currentNetwork(interface, address);
    dialog.setCurrentEntry(interface, address);
    if (dialog.exec() != QDialog::Accepted)
        return;
    dialog.selectedInterface(interface, address);
    if (sdk) {
        sdk->stopNetwork();
        sdk->startNetwork(interface, address);
        onClickSearch();
    }
}

void MainWindow::onClickSearch()
{
    videoView->stop();
    const int seconds = ZRConfigure().searchSeconds();

    VorlynSearchDialog dialog(nullptr);
    dialog.setSearchSeconds(seconds);
    dialog.start();
    if (dialog.exec() == QDialog::Accepted) {
        devicesWidget->setDevices(dialog.devices());
        devicesWidget->setCurrentCell(0, 2);
    }
    contentWidget->setFocus(Qt::OtherFocusReason);
}

void MainWindow::onClickSettings()
{
    ZRSettingsDialog(nullptr).exec();
}

void MainWindow::onClickPrinterSettings() {}

void MainWindow::onClickScanCode() {}

void MainWindow::onCurrentCellChanged(int row, int column, int previousRow, int previousColumn)
{
    if (row == previousRow && column == previousColumn)
        return;

    const VorlynDevice device = devicesWidget->device(row);
    if (row == currentRow || row == -1) {
        // Another column of the same row: a stream that runs goes on, one that failed starts anew.
        if (!videoView->isPlaying() && !device.rtspPath().isEmpty())
            videoView->play(device.rtspPath());
    } else {
        currentRow = row;
        videoView->stop();
        videoView->play(device.rtspPath());
    }
    if (contentWidget)
        contentWidget->setDevice(device);
}

void MainWindow::onCellClicked(const QModelIndex &) {}

void MainWindow::onCellDoubleClicked(const QModelIndex &index)
{
    qDebug("index = %d, %d", index.row(), index.column());
    if (index.column() != addressColumn || index.row() < 0)
        return;
    const QString ip = devicesWidget->device(index.row()).ip();
    if (!ip.isEmpty())
        QDesktopServices::openUrl(QUrl(QStringLiteral("http://%1").arg(ip)));
}
