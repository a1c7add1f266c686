#include "FactoryTestsPanel.h"

#include "CVTableWidget.h"
#include "FactoryKeys.h"
#include "FactoryTestHost.h"
#include "FactoryTestList.h"
#include "FactoryTestTable.h"
#include "SameDevice.h"
#include "VorlynDeviceGenerationWidget.h"
#include "ZRNamedChild.h"

#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include <algorithm>

namespace {
enum Column { NameColumn, FunctionColumn, StateColumn, ColumnCount };

const QLatin1String nothing("-");

bool needsFunction(const FactoryTest &test)
{
    return *test.function != '\0';
}

// An empty list of functions is a device that has none of those that a test may need.
bool isFor(const FactoryTest &test, const VorlynDevice &device)
{
    return device.isValid()
        && (!needsFunction(test) || device.hasFunction(QString::fromLatin1(test.function)));
}
}

FactoryTestsPanel::FactoryTestsPanel(QWidget *parent) :
    VorlynDeviceContentWidget(parent),
    functionsLine(namedChild<QLineEdit>(this, "functionsLine")),
    testTable(namedChild<CVTableWidget>(this, "testTable")),
    openButton(namedChild<QPushButton>(this, "openButton")),
    generationWidget(nullptr)
{
    functionsLine->setReadOnly(true);
    functionsLine->setFrame(false);
    functionsLine->setFocusPolicy(Qt::ClickFocus);
    functionsLine->setStyleSheet(QStringLiteral("background: transparent;"));
    setUpTable();
    connect(openButton, &QPushButton::clicked, this, [this] { openTest(testTable->currentRow()); });
    setEnabled(false); // until there is a device
    FactoryTestsPanel::onLanguageChanged();
}

FactoryTestsPanel::~FactoryTestsPanel() = default;

void FactoryTestsPanel::setUpTable()
{
    FactoryTestTable::setUp(*testTable, ColumnCount);
    testTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    testTable->setSelectionMode(QAbstractItemView::SingleSelection);
    QPalette palette = testTable->palette(); // on which the states' colours can be read
    palette.setColor(QPalette::Highlight, QColor(214, 230, 247));
    palette.setColor(QPalette::HighlightedText, Qt::black);
    testTable->setPalette(palette);
    for (int row = 0; row < testTable->rowCount(); ++row) {
        auto *function = new QTableWidgetItem;
        function->setTextAlignment(Qt::AlignCenter);
        testTable->setItem(row, FunctionColumn, function);
    }
    testTable->setCurrentCell(0, NameColumn);
    ignoreHeldKeys(testTable);
    connect(testTable, &QTableWidget::currentCellChanged, this, &FactoryTestsPanel::updateButton);
    connect(testTable, &QTableWidget::activated, this,
        [this](const QModelIndex &index) { openTest(index.row()); });
}

void FactoryTestsPanel::setDevice(const VorlynDevice &device)
{
    if (!isSameDevice(device, device_))
        results.clear();
    VorlynDeviceContentWidget::setDevice(device);
    setEnabled(device.isValid());
    updateFunctions();
    updateRows();
}

void FactoryTestsPanel::setGenerationWidget(VorlynDeviceGenerationWidget *widget)
{
    generationWidget = widget;
}

void FactoryTestsPanel::onLanguageChanged()
{
    testTable->setHorizontalHeaderLabels({translate(QStringLiteral("Test Item")),
        translate(QStringLiteral("Device Function")), translate(QStringLiteral("Result"))});
    openButton->setText(translate(QStringLiteral("Open Test")));
    FactoryTestTable::showNames(*testTable);
    updateFunctions();
    updateRows();
}

int FactoryTestsPanel::result(int id) const
{
    return results.value(id, FactoryTestWaiting);
}

// As the record has them.
void FactoryTestsPanel::updateFunctions()
{
    const QString functions = device_.value(QStringLiteral("HdCuFun"));
    functionsLine->setText(QStringLiteral("%1: %2").arg(translate(QStringLiteral("Function ID")),
        functions.isEmpty() ? QString(nothing) : functions));
    functionsLine->setCursorPosition(0); // what is too long shows its beginning
}

void FactoryTestsPanel::updateRows()
{
    for (int row = 0; row < testTable->rowCount(); ++row)
        updateRow(row);
    updateButton();
}

void FactoryTestsPanel::updateRow(int row)
{
    const FactoryTest &test = factoryTests[row];
    const QString answer =
        isFor(test, device_) ? translate(QStringLiteral("Yes")) : translate(QStringLiteral("No"));
    testTable->item(row, FunctionColumn)->setText(needsFunction(test) ? answer : QString(nothing));
    FactoryTestTable::showState(*testTable, row, result(test.id));
}

void FactoryTestsPanel::updateButton()
{
    const int row = testTable->currentRow();
    openButton->setEnabled(row >= 0 && isFor(factoryTests[row], device_));
}

// The panel may be gone, or be about another device, when the operator has answered.
void FactoryTestsPanel::openTest(int row)
{
    if (row < 0 || !isFor(factoryTests[row], device_))
        return;
    const QPointer<FactoryTestsPanel> self(this);
    const VorlynDevice device = device_;
    const FactoryTest &test = factoryTests[row];
    FactoryTestHost host(device);
    host.setGenerationWidget(generationWidget);
    const int state = host.run(test);
    if (!self || !isSameDevice(device, device_))
        return;
    results[test.id] = state;
    updateRow(row);
    if (generationWidget)
        generationWidget->setResult(test.id, state);
    emit testFinished(test.id, state);
}

void FactoryTestsPanel::resizeEvent(QResizeEvent *event)
{
    VorlynDeviceContentWidget::resizeEvent(event);
    layOut();
}

// The functions and the button beside the table, which needs all of the height.
void FactoryTestsPanel::layOut()
{
    constexpr int margin = 10;
    constexpr int buttonWidth = 150;
    constexpr int lineHeight = 30;
    constexpr int widestTable = 700; // a name and its state are read as one line
    const int tableWidth = std::min(width() - buttonWidth - 3 * margin, widestTable);
    testTable->setGeometry(margin, margin, tableWidth, height() - 2 * margin);
    const int x = tableWidth + 2 * margin;
    functionsLine->setGeometry(x, margin, width() - margin - x, lineHeight);
    openButton->setGeometry(x, 2 * margin + lineHeight, buttonWidth, lineHeight);
}
