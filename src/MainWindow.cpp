#include "MainWindow.h"

#include "CVTableWidget.h"
#include "DeviceFlows.h"
#include "MediaButton.h"
#include "VorlynDeviceIPToolWidget.h"
#include "VorlynDeviceVideoView.h"
#include "VorlynDevicesWidget.h"
#include "WindowHeaderWidget.h"
#include "ZRNamedChild.h"

#include <QResizeEvent>

namespace {
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
    DeviceFlows::startSavedNetwork();

    contentWidget->setDevice(VorlynDevice());
    contentWidget->setDevicesWidget(devicesWidget);
    contentWidget->setVisible(true);
    focusContent();
    onClickSearch();
}

MainWindow::~MainWindow()
{
    videoView->stop();
    DeviceFlows::stopNetwork();
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
    if (DeviceFlows::chooseNetwork())
        onClickSearch();
}

void MainWindow::onClickSearch()
{
    DeviceFlows::search(*videoView, *devicesWidget);
    focusContent();
}

void MainWindow::onClickSettings()
{
    DeviceFlows::openSettings();
}

void MainWindow::onClickPrinterSettings()
{
    DeviceFlows::openPrinterSettings();
}

void MainWindow::onClickScanCode()
{
    DeviceFlows::openScanCode();
}

void MainWindow::onCurrentCellChanged(int row, int column, int previousRow, int previousColumn)
{
    if (row == previousRow && column == previousColumn)
        return;

    const VorlynDevice device = devicesWidget->device(row);
    DeviceFlows::showStream(*videoView, device, row, currentRow);
    if (contentWidget)
        contentWidget->setDevice(device);
}

// A click does no more than what the table does with it.
void MainWindow::onCellClicked(const QModelIndex &) { }

void MainWindow::onCellDoubleClicked(const QModelIndex &index)
{
    DeviceFlows::openDevicePage(*devicesWidget, index);
}
