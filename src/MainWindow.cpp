#include "MainWindow.h"

#include "CVTableWidget.h"
#include "MediaButton.h"
#include "PostekPrinter.h"
#include "VorlynDeviceIPToolWidget.h"
#include "VorlynDeviceVideoView.h"
#include "VorlynDevicesWidget.h"
#include "VorlynSDK.h"
#include "VorlynSearchDialog.h"
#include "WindowHeaderWidget.h"
#include "ZRConfigure.h"
#include "ZRNamedChild.h"
#include "ZRNetworkDialog.h"
#include "ZRPrinterSettingsDialog.h"
#include "ZRScanCodePrinterDialog.h"
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
    header(namedChild<WindowHeaderWidget>(this, "header")),
    contentWidget(namedChild<VorlynDeviceIPToolWidget>(this, "contentWidget")),
    videoView(namedChild<VorlynDeviceVideoView>(this, "videoView")),
    devicesWidget(namedChild<VorlynDevicesWidget>(this, "devicesWidget")),
    currentRow(-1)
{
    setMinimumSize(800, 500);
    showMaximized();
    connectChildren();
    startSavedNetwork();

    contentWidget->setDevice(VorlynDevice());
    contentWidget->setDevicesWidget(devicesWidget);
    contentWidget->setVisible(true);
    focusContent();
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

// Without a usable interface the network starts all the same, on none: its threads go on trying.
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
    focusContent();
}

void MainWindow::focusContent()
{
    if (contentWidget)
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
    focusContent();
}

void MainWindow::onClickSettings()
{
    ZRSettingsDialog(nullptr).exec();
}

void MainWindow::onClickPrinterSettings()
{
    ZRPrinterSettingsDialog(nullptr).exec();
}

void MainWindow::onClickScanCode()
{
    ZRScanCodePrinterDialog(nullptr, PostekPrinter::printMR2XQRCode).exec();
}

void MainWindow::onCurrentCellChanged(int row, int column, int previousRow, int previousColumn)
{
    if (row == previousRow && column == previousColumn)
        return;

    const VorlynDevice device = devicesWidget->device(row);
    if (row == currentRow || row == -1) {
        // Another column of the same row: an open stream goes on, also one that failed, and one that
        // was stopped starts anew. No row leaves the stream, and currentRow, as they are.
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

// A click does no more than what the table does with it.
void MainWindow::onCellClicked(const QModelIndex &) { }

void MainWindow::onCellDoubleClicked(const QModelIndex &index)
{
    qDebug("index = %d, %d", index.row(), index.column());
    if (index.column() != addressColumn || index.row() < 0)
        return;
    const QString ip = devicesWidget->device(index.row()).ip();
    if (!ip.isEmpty())
        QDesktopServices::openUrl(QUrl(QStringLiteral("http://%1").arg(ip)));
}
