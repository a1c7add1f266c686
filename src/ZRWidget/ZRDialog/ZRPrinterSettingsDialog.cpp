#include "ZRPrinterSettingsDialog.h"

#include "ZRConfigure.h"
#include "ZRForm.h"
#include "ZRLabelSettings.h"
#include "ZRNamedChild.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPrinterInfo>
#include <QPushButton>

namespace {
const int editWidth = 80;

int rowY(int row)
{
    return 10 + row * (ZRForm::rowHeight + 5);
}
}

ZRPrinterSettingsDialog::ZRPrinterSettingsDialog(QWidget *parent) :
    ZRDialog(parent),
    printerLabel(namedChild<QLabel>(this, "printerLabel")),
    printerCombo(namedChild<QComboBox>(this, "printerCombo")),
    widthLabel(namedChild<QLabel>(this, "widthLabel")),
    heightLabel(namedChild<QLabel>(this, "heightLabel")),
    columnLabel(namedChild<QLabel>(this, "columnLabel")),
    paddingLabel(namedChild<QLabel>(this, "paddingLabel")),
    leftLabel(namedChild<QLabel>(this, "leftLabel")),
    rightLabel(namedChild<QLabel>(this, "rightLabel")),
    topLabel(namedChild<QLabel>(this, "topLabel")),
    bottomLabel(namedChild<QLabel>(this, "bottomLabel")),
    widthEdit(namedChild<QLineEdit>(this, "widthEdit")),
    heightEdit(namedChild<QLineEdit>(this, "heightEdit")),
    columnEdit(namedChild<QLineEdit>(this, "columnEdit")),
    paddingEdit(namedChild<QLineEdit>(this, "paddingEdit")),
    leftEdit(namedChild<QLineEdit>(this, "leftEdit")),
    rightEdit(namedChild<QLineEdit>(this, "rightEdit")),
    topEdit(namedChild<QLineEdit>(this, "topEdit")),
    bottomEdit(namedChild<QLineEdit>(this, "bottomEdit")),
    saveButton(namedChild<QPushButton>(this, "saveButton"))
{
    setMinimumSize(470, 230);
    resize(470, 260); // a message has room under the button
    onLanguageChanged();
    const ZRConfigure configure;
    showNumbers(ZRLabelSettings::read(configure));
    connect(saveButton, &QPushButton::clicked, this, &ZRPrinterSettingsDialog::save);
    addPrinters(configure.printerName());
}

ZRPrinterSettingsDialog::~ZRPrinterSettingsDialog() = default;

std::array<ZRPrinterSettingsDialog::Size, 7> ZRPrinterSettingsDialog::sizes() const
{
    return {{
        {widthEdit, &ZRLabelSettings::width},
        {heightEdit, &ZRLabelSettings::height},
        {paddingEdit, &ZRLabelSettings::padding},
        {leftEdit, &ZRLabelSettings::left},
        {rightEdit, &ZRLabelSettings::right},
        {topEdit, &ZRLabelSettings::top},
        {bottomEdit, &ZRLabelSettings::bottom},
    }};
}

void ZRPrinterSettingsDialog::showNumbers(const ZRLabelSettings &settings)
{
    for (const Size &size : sizes())
        size.edit->setText(QString::number(settings.*size.value, 'g', 6));
    columnEdit->setText(QString::number(settings.column));
}

// Without the saved printer and a default one the first is chosen.
void ZRPrinterSettingsDialog::addPrinters(const QString &saved)
{
    const QStringList names = QPrinterInfo::availablePrinterNames();
    printerCombo->addItems(names);
    if (names.isEmpty())
        return; // where Windows has no default printer, Qt reads its name from anywhere
    for (const QString &name : {saved, QPrinterInfo::defaultPrinterName()}) {
        if (names.contains(name)) {
            printerCombo->setCurrentIndex(names.indexOf(name));
            return;
        }
    }
}

// Only the size is judged; a negative margin or no column at all is saved as it stands.
void ZRPrinterSettingsDialog::save()
{
    ZRLabelSettings settings;
    for (const Size &size : sizes())
        settings.*size.value = ZRForm::numberIn(size.edit);
    settings.column = columnEdit->text().toInt();
    if (settings.width <= 0.0 || settings.height <= 0.0) {
        showToast(translate("Please input correct size"), Qt::AlignHCenter | Qt::AlignBottom, 5, 5);
        return;
    }
    ZRConfigure configure;
    settings.write(configure);
    configure.setPrinterName(printerCombo->currentText());
    accept();
}

void ZRPrinterSettingsDialog::onLanguageChanged()
{
    const struct {
        QLabel *label;
        const char *text;
    } captions[] = {
        {printerLabel, "Printer"},
        {widthLabel, "Label Width"},
        {heightLabel, "Label Height"},
        {columnLabel, "Label Column"},
        {paddingLabel, "Label padding"},
        {leftLabel, "Label left padding"},
        {rightLabel, "Label right padding"},
        {topLabel, "Label top padding"},
        {bottomLabel, "Label bottom padding"},
    };
    for (const auto &caption : captions)
        caption.label->setText(translate(caption.text));
    saveButton->setText(translate("Save"));
}

void ZRPrinterSettingsDialog::resizeEvent(QResizeEvent *event)
{
    ZRDialog::resizeEvent(event);
    ZRForm::placeColumn(
        {
            {printerLabel, printerCombo, rowY(0), editWidth},
            {widthLabel, widthEdit, rowY(1), editWidth},
            {heightLabel, heightEdit, rowY(2), editWidth},
            {columnLabel, columnEdit, rowY(3), editWidth},
            {paddingLabel, paddingEdit, rowY(4), editWidth},
        },
        10);
    // The list takes the rest of its row, and more where its names need it.
    const int rest = width() - printerCombo->x() - 20;
    printerCombo->resize(qMax(rest, printerCombo->sizeHint().width()), ZRForm::rowHeight);
    ZRForm::placeColumn(
        {
            {leftLabel, leftEdit, rowY(1), editWidth},
            {rightLabel, rightEdit, rowY(2), editWidth},
            {topLabel, topEdit, rowY(3), editWidth},
            {bottomLabel, bottomEdit, rowY(4), editWidth},
        },
        widthEdit->x() + editWidth + 50);
    saveButton->setGeometry((width() - 120) / 2, rowY(4) + ZRForm::rowHeight + 30, 120, 25);
}
