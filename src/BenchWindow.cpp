#include "BenchWindow.h"

#include "CVTableWidget.h"
#include "DeviceFlows.h"
#include "FactoryTestsPanel.h"
#include "FirmwareUpgradePage.h"
#include "MediaButton.h"
#include "NetworkSettingsPage.h"
#include "TestLogFile.h"
#include "VorlynDeviceGenerationWidget.h"
#include "VorlynDeviceMPToolWidget.h"
#include "VorlynDeviceVideoView.h"
#include "VorlynDevicesWidget.h"
#include "WindowHeaderWidget.h"
#include "ZRAlertDialog.h"
#include "ZRConfigure.h"
#include "ZRDirectVideoView.h"
#include "ZRNamedChild.h"
#include "ZROpenGLVideoView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QTextEdit>
#include <QVBoxLayout>

namespace {
const int headerHeight = 26;
const int tableWidth = 400;
const int panelHeight = 446; // at first: all rows of the test tables, below the tabs
const int smallestPreview = 160; // in height

// By their index in the combo box.
const struct {
    const char *name; // in the settings
    const char *text; // a key
    ZRVideoView *(*make)(QWidget *parent);
} views[] = {
    {"direct", "Direct View",
        [](QWidget *parent) -> ZRVideoView * { return new ZRDirectVideoView(parent); }},
    {"opengl", "OpenGL View",
        [](QWidget *parent) -> ZRVideoView * { return new ZROpenGLVideoView(parent); }},
};
enum View { DirectView, OpenGLView };

View savedView()
{
    const QLatin1String openGL(views[OpenGLView].name);
    return ZRConfigure().benchView().compare(openGL, Qt::CaseInsensitive) == 0 ? OpenGLView
                                                                               : DirectView;
}

// A name for the log of a device's tests, without its suffix: "0256AB000001-20240319-142501".
QString logName(const VorlynDevice &device)
{
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const QString mac = device.mac().remove(QRegularExpression(QStringLiteral("[^0-9A-Za-z]")));
    return mac.isEmpty() ? time : QStringLiteral("%1-%2").arg(mac, time);
}

// Path of a file to write, which the user chooses; empty when there is no choice. The chosen kind
// gives a name its suffix that has none.
QString chooseLogFile(const QString &name)
{
    const QStringList kinds = {
        QStringLiteral("%1 (*.txt)").arg(ZRLocalize::translate(QStringLiteral("Text File"))),
        QStringLiteral("%1 (*.csv)").arg(ZRLocalize::translate(QStringLiteral("CSV File")))};
    QFileDialog files(nullptr);
    files.setAcceptMode(QFileDialog::AcceptSave);
    files.setNameFilters(kinds);
    const auto useSuffix = [&](const QString &kind) {
        files.setDefaultSuffix(
            kind == kinds.last() ? QStringLiteral("csv") : QStringLiteral("txt"));
    };
    QObject::connect(&files, &QFileDialog::filterSelected, &files, useSuffix);
    useSuffix(kinds.first());
    files.selectFile(name);
    return files.exec() == QDialog::Accepted ? files.selectedFiles().value(0) : QString();
}

// What a window grows by goes to the first.
QSplitter *makeSplitter(Qt::Orientation orientation, QWidget *first, QWidget *second)
{
    auto *splitter = new QSplitter(orientation);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(first);
    splitter->addWidget(second);
    splitter->setStretchFactor(0, 1);
    return splitter;
}
}

BenchWindow::BenchWindow(QWidget *parent) :
    QMainWindow(parent),
    header(namedChild<WindowHeaderWidget>(this, "header")),
    videoView(namedChild<VorlynDeviceVideoView>(this, "videoView")),
    devicesWidget(namedChild<VorlynDevicesWidget>(this, "devicesWidget")),
    tabs(namedChild<QTabWidget>(this, "tabs"))
{
    layOut();
    makePages();
    makeCorner();
    BenchWindow::onLanguageChanged();
    setMinimumSize(1280, 680); // a screen of 720 lines, less its bars
    showMaximized();

    showChosenView();
    connectTable();
    connectHeader();
    DeviceFlows::startSavedNetwork();
    setDevice(VorlynDevice());
    search();
}

// The panels go first: an automatic run that is alive still waits for its device.
BenchWindow::~BenchWindow()
{
    devicesWidget->removeEventFilter(this);
    delete tabs;
    videoView->stop();
    DeviceFlows::stopNetwork();
}

void BenchWindow::layOut()
{
    videoView->setMinimumSize(smallestPreview * 16 / 9, smallestPreview);
    devicesWidget->setMinimumWidth(tableWidth);
    auto *top = makeSplitter(Qt::Horizontal, videoView, devicesWidget);
    auto *split = makeSplitter(Qt::Vertical, top, tabs);
    split->setSizes({panelHeight, panelHeight}); // more goes to the preview

    header->setFixedHeight(headerHeight);
    auto *all = new QWidget(this);
    auto *column = new QVBoxLayout(all);
    column->setContentsMargins(2, 2, 2, 2);
    column->setSpacing(0);
    column->addWidget(header);
    column->addWidget(split, 1);
    setCentralWidget(all);
}

template <class Panel> Panel *BenchWindow::addPage(const char *name, const char *title)
{
    auto *panel = namedChild<Panel>(tabs, name);
    panel->setDevicesWidget(devicesWidget);
    pages.append({panel, title});
    tabs->addTab(panel, QString());
    return panel;
}

void BenchWindow::makePages()
{
    productionTool = addPage<VorlynDeviceMPToolWidget>("productionTool", "Production Tool");
    connect(productionTool, &VorlynDeviceMPToolWidget::requestStartMedia, this,
        &BenchWindow::startMedia);
    const QRegularExpression writes(QStringLiteral("SettingButton$"));
    for (const QPushButton *button : productionTool->findChildren<QPushButton *>(writes))
        connect(button, &QPushButton::clicked, this, &BenchWindow::refreshPages); // after its work
    auto *testTable = addPage<VorlynDeviceGenerationWidget>("testTable", "Test Table");
    auto *factoryTests = addPage<FactoryTestsPanel>("factoryTests", "Factory Tests");
    factoryTests->setGenerationWidget(testTable);
    auto *network = addPage<NetworkSettingsPage>("networkSettings", "Network Settings");
    connect(network, &NetworkSettingsPage::written, this, &BenchWindow::refreshPages);
    auto *upgrade = addPage<FirmwareUpgradePage>("firmwareUpgrade", "Firmware Upgrade");
    connect(upgrade, &FirmwareUpgradePage::searchRequested, this, &BenchWindow::search);
    connect(tabs, &QTabWidget::currentChanged, this, &BenchWindow::onTabChanged);
}

void BenchWindow::makeCorner()
{
    corner = namedChild<QWidget>(this, "corner");
    viewLabel = namedChild<QLabel>(corner, "viewLabel");
    viewComboBox = namedChild<QComboBox>(corner, "viewComboBox");
    saveLogButton = namedChild<QPushButton>(corner, "saveLogButton");
    for (const auto &view : views)
        viewComboBox->addItem(QString::fromLatin1(view.text));
    viewComboBox->setCurrentIndex(savedView());
    connect(viewComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &BenchWindow::onViewChosen);
    connect(saveLogButton, &QPushButton::clicked, this, &BenchWindow::saveLog);

    auto *row = new QHBoxLayout(corner);
    row->setContentsMargins(0, 0, 8, 2);
    row->addWidget(viewLabel);
    row->addWidget(viewComboBox);
    row->addSpacing(16);
    row->addWidget(saveLogButton);
    tabs->setCornerWidget(corner);
}

void BenchWindow::onLanguageChanged()
{
    for (int i = 0; i < pages.size(); ++i)
        tabs->setTabText(i, translate(QString::fromLatin1(pages[i].title)));
    viewLabel->setText(translate(QStringLiteral("Video View")));
    for (int i = 0; i < viewComboBox->count(); ++i)
        viewComboBox->setItemText(i, translate(QString::fromLatin1(views[i].text)));
    saveLogButton->setText(translate(QStringLiteral("Save Log")));
    saveLogButton->setToolTip(translate(QStringLiteral("Save Log Hint")));
}

void BenchWindow::connectTable()
{
    CVTableWidget *table = devicesWidget->tableWidget();
    connect(table, &QTableWidget::currentCellChanged, this, &BenchWindow::onCurrentCellChanged);
    connect(table, &QAbstractItemView::doubleClicked, this,
        [this](const QModelIndex &index) { DeviceFlows::openDevicePage(*devicesWidget, index); });
    devicesWidget->installEventFilter(this);
}

void BenchWindow::connectHeader()
{
    connect(header->networkButton, &MediaButton::clicked, this, [this] {
        if (DeviceFlows::chooseNetwork())
            search();
    });
    connect(header->searchButton, &MediaButton::clicked, this, &BenchWindow::search);
    connect(header->settingsButton, &MediaButton::clicked, this, &DeviceFlows::openSettings);
    connect(header->printerButton, &MediaButton::clicked, this, &DeviceFlows::openPrinterSettings);
    connect(header->scanCodeButton, &MediaButton::clicked, this, &DeviceFlows::openScanCode);
}

void BenchWindow::search()
{
    DeviceFlows::search(*videoView, *devicesWidget);
    for (QCheckBox *box : devicesWidget->findChildren<QCheckBox *>())
        connect(box, &QCheckBox::clicked, this, &BenchWindow::refreshPages, Qt::UniqueConnection);
    tabs->currentWidget()->setFocus(Qt::OtherFocusReason);
}

void BenchWindow::onCurrentCellChanged(int row, int column, int previousRow, int previousColumn)
{
    if (row == previousRow && column == previousColumn)
        return;
    const VorlynDevice device = devicesWidget->device(row);
    DeviceFlows::showStream(*videoView, device, row, currentRow);
    setDevice(device);
}

void BenchWindow::setDevice(const VorlynDevice &device)
{
    for (const Page &page : qAsConst(pages))
        page.panel->setDevice(device);
}

// A panel writes its record back to the table as a whole, tick included: so none may keep one that
// is older than another panel's write. The P2P id alone stays as the production tool has it, which
// is not the table's text.
void BenchWindow::refreshPages()
{
    const VorlynDevice device = devicesWidget->device(devicesWidget->tableWidget()->currentRow());
    VorlynDevice onBench = device;
    if (device.index == productionTool->device().index)
        onBench.setP2pid(productionTool->device().p2pid());
    for (const Page &page : qAsConst(pages))
        page.panel->setDevice(page.panel == productionTool ? onBench : device);
}

// Anew also when the device plays already: a connection that was lost looks like one that stands.
void BenchWindow::startMedia()
{
    const QString path = productionTool->device().rtspPath();
    if (!path.isEmpty())
        DeviceFlows::startStream(*videoView, path);
}

void BenchWindow::onViewChosen(int index)
{
    ZRConfigure().setBenchView(QString::fromLatin1(views[index].name));
    videoView->setVideoView(views[index].make(videoView));
}

// The preview is made with the direct view.
void BenchWindow::showChosenView()
{
    if (viewComboBox->currentIndex() != DirectView)
        videoView->setVideoView(views[viewComboBox->currentIndex()].make(videoView));
}

void BenchWindow::onTabChanged()
{
    saveLogButton->setEnabled(tabs->currentWidget() == productionTool);
    refreshPages();
}

void BenchWindow::saveLog()
{
    const TestLogFile file(*productionTool->findChild<QTextEdit *>("logEdit")->document());
    QString problem;
    do {
        const QString path = chooseLogFile(logName(productionTool->device()));
        if (path.isEmpty())
            return;
        problem = file.write(path);
    } while (!problem.isEmpty()
        && ZRAlertDialog::alert(QStringLiteral("%1\n%2").arg(
               translate(QStringLiteral("Log not saved, choose another file")), problem))
            == QDialog::Accepted);
}

// The production tool disables the table for as long as its run is alive.
bool BenchWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::EnabledChange)
        lockForRun(!devicesWidget->isEnabled());
    return QMainWindow::eventFilter(watched, event);
}

// The bar's tabs only: a panel that has no device is disabled, and is to stay so.
void BenchWindow::lockForRun(bool locked)
{
    header->setEnabled(!locked);
    corner->setEnabled(!locked);
    for (int i = 0; i < pages.size(); ++i)
        tabs->tabBar()->setTabEnabled(i, !locked || pages[i].panel == productionTool);
}
