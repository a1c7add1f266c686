#include "VorlynDeviceMPToolWidget.h"

#include "QRLabelStrip.h"
#include "ZRConfigure.h"
#include "ZRPrinterSettingsDialog.h"
#include "ZRQRCode.h"

#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>

namespace {

constexpr struct {
    const char *name;
    QPrinter::Unit unit;
} units[] = {
    {"rect Millimeter", QPrinter::Millimeter},
    {"rect Point", QPrinter::Point},
    {"rect Inch", QPrinter::Inch},
    {"rect Pica", QPrinter::Pica},
    {"rect Didot", QPrinter::Didot},
    {"rect Cicero", QPrinter::Cicero},
    {"rect DevicePixel", QPrinter::DevicePixel},
};

bool askForSettings()
{
    return ZRPrinterSettingsDialog(nullptr).exec() == QDialog::Accepted;
}

bool chooseStrip(QRLabelStrip &strip)
{
    strip = QRLabelStrip::saved();
    if (strip.hasSize())
        return true;
    if (!askForSettings())
        return false;
    strip = QRLabelStrip::saved();
    return strip.hasSize();
}

void logRect(const char *name, const QRectF &rect)
{
    qDebug("%s = (%lf, %lf, %lf, %lf)", name, rect.x(), rect.y(), rect.width(), rect.height());
}

void logMargins(const char *prefix, const QMarginsF &margins)
{
    qDebug("%sleft = %lf, top = %lf, right = %lf, bottom = %lf", prefix, margins.left(),
        margins.top(), margins.right(), margins.bottom());
}

// Only the first two numbers are relied on.
void logStrip(const QRLabelStrip &strip)
{
    const QSize paper = strip.paperSize();
    qDebug("paperSize = (%d, %d), labelSize = (%d, %d), left = %d, top = %d, right = %d, "
           "bottom = %d, padding = %d",
        paper.width(), paper.height(), wholePart(strip.width), wholePart(strip.height),
        wholePart(strip.left), wholePart(strip.top), wholePart(strip.right),
        wholePart(strip.bottom), wholePart(strip.padding));
}

// A size that the printer refuses shows in the rectangles that it gives back.
void setPage(QPrinter &printer, const QSizeF &millimetres)
{
    printer.setPageSizeMM(millimetres);
    printer.setPageMargins(0, 0, 0, 0, QPrinter::Millimeter);
    printer.setFullPage(true);
    printer.setPaperSize(millimetres, QPrinter::Millimeter);
}

QMarginsF pageMargins(const QPrinter &printer)
{
    double left = 0, top = 0, right = 0, bottom = 0;
    printer.getPageMargins(&left, &top, &right, &bottom, QPrinter::DevicePixel);
    return QMarginsF(left, top, right, bottom);
}

void logPage(const QPrinter &printer, const QPainter &painter)
{
    for (const auto &row : units)
        logRect(row.name, printer.paperRect(row.unit));
    logMargins("", pageMargins(printer));
    logRect("paperRect", printer.paperRect(QPrinter::DevicePixel));
    logRect("pageRect", printer.pageRect(QPrinter::DevicePixel));
    const QRect view = painter.viewport();
    qDebug("viewport = (%d, %d, %d, %d)", view.x(), view.y(), view.width(), view.height());
}

void drawLabels(QPainter &painter, const QString &id, const QRLabelPlaces &places, int columns)
{
    for (int column = 0; column < columns; ++column) {
        const QRectF label = places.label(column);
        logRect("print QRCode on", label);
        if (places.canDraw(column)) {
            drawQRCode(&painter, id, int(label.x()), int(label.y()), int(label.width()),
                int(label.height()), places.codeSize, places.scale);
        }
    }
}

void printStrip(const QPrinterInfo &info, const QRLabelStrip &strip, const QString &id)
{
    logStrip(strip);
    QPrinter printer(info, QPrinter::ScreenResolution);
    setPage(printer, strip.paperSize());
    QPainter painter(&printer);
    logPage(printer, painter);
    const QRLabelPlaces places = strip.places(
        printer.pageRect(QPrinter::DevicePixel), printer.paperRect(QPrinter::DevicePixel));
    logMargins("margins ", places.margins);
    drawLabels(painter, id, places, strip.columns());
}

}

void VorlynDeviceMPToolWidget::onClickQRCodeButton()
{
    const QString id = device().p2pid();
    if (id.isEmpty()) {
        showHint(translate(QStringLiteral("Please set p2pid first")));
        return;
    }
    QRLabelStrip strip;
    if (!chooseStrip(strip))
        return;
    QPrinterInfo printer;
    const auto findSaved = [&] { return findPrinter(printer, ZRConfigure().printerName()); };
    // The sizes stay as they were read, whatever the dialog saves.
    if (findSaved() || (askForSettings() && findSaved()))
        printStrip(printer, strip, id);
}

bool VorlynDeviceMPToolWidget::findPrinter(QPrinterInfo &info, const QString &name)
{
    const QList<QPrinterInfo> printers = QPrinterInfo::availablePrinters();
    for (const QPrinterInfo &printer : printers) {
        if (printer.printerName().compare(name, Qt::CaseInsensitive) == 0) {
            info = printer;
            return true;
        }
    }
    return false;
}
