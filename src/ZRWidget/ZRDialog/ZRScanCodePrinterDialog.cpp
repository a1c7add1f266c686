#include "ZRScanCodePrinterDialog.h"

#include "ZRConfigure.h"
#include "ZRForm.h"
#include "ZRLabelSettings.h"
#include "ZRNamedChild.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

#include <cstdio>

namespace {

// One of these is in the code of every product. In the order of their claim on a scanned text.
const QLatin1String modelCodes[] = {QLatin1String("KVMR2G"), QLatin1String("KVNR2G")};
constexpr int modelCodeLength = 6;

bool isProductCode(const QString &code)
{
    return code.contains(modelCodes[0]) || code.contains(modelCodes[1]);
}

// The scanner types behind the code of the label before, which stays in the field. Behind the place
// of that one's own model code there is only the new one's.
QString newestCode(const QString &text)
{
    for (const QLatin1String &modelCode : modelCodes) {
        const int at = text.indexOf(modelCode, modelCodeLength);
        if (at > 0)
            return text.mid(at);
    }
    return text;
}

// Counts up to five digits behind the first dash, or at the start when there is none, and drops
// what follows them.
QString nextSerial(const QString &serial)
{
    const int digits = serial.indexOf(QLatin1Char('-')) + 1;
    int number = 0;
    std::sscanf(serial.mid(digits).toUtf8().constData(), "%5d", &number);
    return serial.left(digits) + QString::asprintf("%05d", number + 1);
}

}

ZRScanCodePrinterDialog::ZRScanCodePrinterDialog(QWidget *parent, PrintLabel printLabel) :
    ZRDialog(parent),
    titleLabel(namedChild<QLabel>(this, "titleLabel")),
    scanEdit(namedChild<QLineEdit>(this, "scanEdit")),
    modelLabel(namedChild<QLabel>(this, "modelLabel")),
    modelEdit(namedChild<QLineEdit>(this, "modelEdit")),
    snLabel(namedChild<QLabel>(this, "snLabel")),
    snEdit(namedChild<QLineEdit>(this, "snEdit")),
    leftLabel(namedChild<QLabel>(this, "leftLabel")),
    topLabel(namedChild<QLabel>(this, "topLabel")),
    leftEdit(namedChild<QLineEdit>(this, "leftEdit")),
    topEdit(namedChild<QLineEdit>(this, "topEdit")),
    printLabel(printLabel)
{
    setMinimumSize(500, 360);
    onLanguageChanged();
    showMargins();
}

ZRScanCodePrinterDialog::~ZRScanCodePrinterDialog() = default;

void ZRScanCodePrinterDialog::showMargins()
{
    const ZRLabelSettings settings = ZRLabelSettings::read(ZRConfigure());
    leftEdit->setText(QString::number(settings.left, 'g', 6));
    topEdit->setText(QString::number(settings.top, 'g', 6));
}

void ZRScanCodePrinterDialog::saveMargins()
{
    ZRConfigure configure;
    ZRLabelSettings settings = ZRLabelSettings::read(configure);
    settings.left = ZRForm::numberIn(leftEdit);
    settings.top = ZRForm::numberIn(topEdit);
    settings.write(configure);
}

// No key goes on to the base: the scanner's carriage return closes nothing and presses no button,
// nor does Esc. The margins are saved at each carriage return, whatever comes of it.
void ZRScanCodePrinterDialog::keyPressEvent(QKeyEvent *event)
{
    if (event->text() != QLatin1String("\r"))
        return;
    const QString code = newestCode(scanEdit->text());
    saveMargins();
    if (isProductCode(code)) {
        if (!hasModelAndSerial())
            return;
        print(code);
    }
    scanEdit->setText(code);
}

bool ZRScanCodePrinterDialog::hasModelAndSerial()
{
    const struct {
        const QLineEdit *edit;
        const char *problem;
    } needed[] = {
        {modelEdit, "Please set model first"},
        {snEdit, "Please set SN first"},
    };
    for (const auto &need : needed) {
        if (need.edit->text().isEmpty()) {
            showToast(translate(need.problem), Qt::AlignHCenter | Qt::AlignBottom, 5, 5);
            return false;
        }
    }
    return true;
}

// A label that failed keeps its serial for the next try, and nothing shows.
void ZRScanCodePrinterDialog::print(const QString &code)
{
    QString sn = snEdit->text();
    if (printLabel(code, modelEdit->text(), sn))
        snEdit->setText(nextSerial(sn));
}

void ZRScanCodePrinterDialog::onLanguageChanged()
{
    titleLabel->setText(translate("Scan code"));
    titleLabel->setFont(QFont("Arial", 16, QFont::Bold));
    modelLabel->setText(QStringLiteral("%1:").arg(translate("Product Model")));
    snLabel->setText(QStringLiteral("%1:").arg(translate("Product SN")));
    leftLabel->setText(translate("Label left padding"));
    topLabel->setText(translate("Label top padding"));
    scanEdit->setFont(QFont("Arial", 16));
}

void ZRScanCodePrinterDialog::resizeEvent(QResizeEvent *event)
{
    ZRDialog::resizeEvent(event);
    const int scanWidth = 440;
    titleLabel->adjustSize();
    titleLabel->setGeometry(80, 10, qMax(titleLabel->width(), scanWidth), ZRForm::rowHeight);
    ZRForm::placeColumn(
        {
            {modelLabel, modelEdit, 75, 200},
            {snLabel, snEdit, 105, 200},
            {leftLabel, leftEdit, 150, 80},
            {topLabel, topEdit, 180, 80},
        },
        20);
    scanEdit->setGeometry(30, 245, scanWidth, 50);
}
